#!/usr/bin/env python3
"""A whole visit in a real window: choose, pick, crop, blur, glare, save; the saved file is compared byte for byte with
what the command renders. On the way every control must be in the accessibility tree under its name.

Usage: window_walk.py WINDOW-PROGRAM COMMAND SOURCE-DIR (status 77: something needed is not installed)
"""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import time

import window_session

MOCKUP = "upright.png"


def rendered(command, source, session, folder, crop):
    output = folder / "rendered.png"
    subprocess.run([command, "--documents", str(session.documents), "--resources",
                    str(source / "tests/fixtures/catalogue"), "render", MOCKUP, "-s", str(folder / "shot.png"), "-b",
                    str(folder / "background.jpg"), "--crop", crop, "--blur", "--glare", "-o", str(output)],
                   check=True)
    return output.read_bytes()


def saved(session):
    def look():
        found = sorted(session.pictures.glob("Mockup *.png"))
        return found[-1] if found else None
    return session.wait_for(look, "saved picture", 30)


def names_of_the_editor(session):
    for name in ("Back", "Left screenshot", "Background", "Glare", "Save", "Options", "Preview"):
        session.expect(name)
    # One screen: there is nothing to put on the right.
    session.expect("Right screenshot", enabled=False)


def crop_by_hand(session):
    """Wheel and drag, then the arrow keys; the window says where the picture stands now."""
    session.click("Background")
    session.press("background.jpg")
    session.expect("Choose")
    session.expect("Cancel")
    time.sleep(0.5)
    middle = (180, 370)
    session.wheel(middle, 4)
    session.drag(middle, (120, 340))
    session.key("Right", "Right", "Up")
    time.sleep(0.5)
    for node in session.nodes():
        part = re.fullmatch(r"(\d+),(\d+),(\d+),(\d+)", node.description or "")
        if part:
            return part.group(0)
    raise AssertionError("the editing step does not say which part of the picture it shows")


def walk(program, command, source, folder):
    samples = source / "resources/samples"
    for name, sample in (("shot.png", "screenshot.png"), ("background.jpg", "background.jpg")):
        shutil.copy(samples / sample, folder / name)
    session = window_session.Session(program, folder / "visit", "--resources",
                                     str(source / "tests/fixtures/catalogue"), "--reduce-motion")
    try:
        for name in ("shot.png", "background.jpg"):
            shutil.copy(folder / name, session.pictures)

        # The list and its sheet; the keyboard reaches what the mouse does.
        session.expect("Options")
        session.press("Options")
        for name in ("Import Mockup", "Import Tutorial", "Get Import Location", "Browse Mockups",
                     "Support this free app", "Dismiss"):
            session.expect(name)
        session.key("Escape")
        session.expect_gone("Dismiss")

        row = "Phones"
        session.click(row)
        session.click(MOCKUP)
        names_of_the_editor(session)

        # A pick that is turned away changes nothing on the screen.
        session.click("Left screenshot")
        session.expect("Browse files")
        session.press("Cancel")
        session.expect_gone("Browse files")
        session.click("Left screenshot")
        session.click("shot.png")
        session.expect_gone("Browse files")

        crop = crop_by_hand(session)
        session.key("Return")
        session.expect("No")
        session.press("Yes")
        session.expect_gone("Yes")
        session.press("Glare")
        session.click("Save")
        session.expect("Thanks!", 30)
        picture = saved(session).read_bytes()
        session.key("Return")
        session.expect(row)

        assert crop != "0,0,0,0"
        assert picture == rendered(command, source, session, folder, crop), "the window saved another picture"
        print(f"crop {crop}: {len(picture)} bytes, the same as the command's")
    finally:
        session.close()


if __name__ == "__main__":
    window_session.rerun_privately()
    with tempfile.TemporaryDirectory(prefix="quillomat-walk-") as scratch:
        walk(sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3]), pathlib.Path(scratch))
