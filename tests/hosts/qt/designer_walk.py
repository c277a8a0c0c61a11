#!/usr/bin/env python3
"""The designer's program: the measuring panel shows values and takes numbers, and a marker follows the mouse.

Usage: designer_walk.py DESIGNER-PROGRAM SOURCE-DIR (status 77: something needed is not installed)
"""
import pathlib
import re
import subprocess
import sys
import tempfile
import time

import window_session


def value_of(session, prefix):
    def look():
        for name in session.names():
            found = re.fullmatch(re.escape(prefix) + r": (-?\d+)", name)
            if found:
                return found
        return None
    return int(session.wait_for(look, f"value {prefix}").group(1))


def walk(program, source, folder):
    session = window_session.Session(program, folder / "visit", "--resources",
                                     str(source / "tests/fixtures/catalogue"), "--reduce-motion", size=(400, 900))
    try:
        session.expect("Options")
        row = "Phones"
        session.click(row)
        session.click("upright.png")
        session.expect("Preview")
        left, top = value_of(session, "TX"), value_of(session, "TY")

        # A number, typed into the panel's question.
        session.click(f"TX: {left}")
        session.expect("OK")
        subprocess.run(["xdotool", "type", str(left + 7)], check=True)
        time.sleep(0.3)
        session.press("OK")
        session.expect(f"TX: {left + 7}")

        # The top-left marker, dragged: points of the root are the preview's extent over 360.
        box = session.expect("Preview").queryComponent().getExtents(session.atspi.DESKTOP_COORDS)
        zoom = box.width / 360
        # The container is 300 points wide about the middle of the room above the core's own tools.
        start = (round(box.x + (30 + left + 7 + 10) * zoom), round(box.y + ((740 - 72) / 2 - 150 + top + 10) * zoom))
        session.drag(start, (start[0] + round(20 * zoom), start[1] + round(30 * zoom)))
        time.sleep(0.5)
        moved = (value_of(session, "TX") - left - 7, value_of(session, "TY") - top)
        assert abs(moved[0] - 20) <= 1 and abs(moved[1] - 30) <= 1, moved
        print("the marker moved by", moved)
    finally:
        session.close()


if __name__ == "__main__":
    window_session.rerun_privately()
    with tempfile.TemporaryDirectory(prefix="quillomat-designer-") as scratch:
        walk(sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(scratch))
