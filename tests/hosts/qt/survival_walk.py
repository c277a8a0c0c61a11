#!/usr/bin/env python3
"""What a window must outlive: a documents folder that goes away, a close or a killed display in the middle of a save,
files from elsewhere (the system's dialogue, the clipboard). Whatever happens, the pictures folder holds whole files only.

Usage: survival_walk.py WINDOW-PROGRAM SOURCE-DIR (status 77: something needed is not installed)
"""
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time
import zlib

import window_session

MOCKUP = "upright.png"


def is_whole(png):
    """Every chunk's checksum holds, the last one is the end, and all rows are there."""
    if png[:8] != b"\x89PNG\r\n\x1a\n":
        return False
    at, pixels, size = 8, b"", None
    while at + 12 <= len(png):
        length = int.from_bytes(png[at:at + 4], "big")
        body = png[at + 4:at + 8 + length]
        if int.from_bytes(png[at + 8 + length:at + 12 + length], "big") != zlib.crc32(body):
            return False
        if body[:4] == b"IHDR":
            size = (int.from_bytes(body[4:8], "big"), int.from_bytes(body[8:12], "big"), 4 if body[13] == 6 else 3)
        pixels += body[4:] if body[:4] == b"IDAT" else b""
        at += 12 + length
        if body[:4] == b"IEND":
            return at == len(png) and len(zlib.decompress(pixels)) == size[1] * (1 + size[0] * size[2])
    return False


def large_catalogue(source, folder):
    """The tests' catalogue, its first frame's canvas so large that its saving takes a while."""
    shutil.copytree(source / "tests/fixtures/catalogue", folder)
    document = json.loads((folder / "main.json").read_text())
    record = document["editInfo"][MOCKUP]
    for key, value in record.items():
        if key in ("frameWidth", "frameHeight", "finalFrameWidth", "finalFrameHeight") or key.startswith("F"):
            record[key] = value * 15
    (folder / "main.json").write_text(json.dumps(document))
    return folder


def open_editor(session):
    session.expect("Options")
    row = next(name for name in session.names() if name not in ("Options", "Selection", "Quillomat"))
    session.click(row)
    session.click(MOCKUP)
    session.expect("Preview")
    return row


def pictures_of(session):
    return sorted(path for path in session.pictures.iterdir() if path.name != "shot.png")


def ended(session, seconds=20):
    try:
        session.program.wait(seconds)
    except subprocess.TimeoutExpired:
        raise AssertionError("the program does not end") from None


def documents_folder_vanishes(program, source, folder):
    session = window_session.Session(program, folder, "--resources", str(source / "tests/fixtures/catalogue"),
                                     "--reduce-motion")
    try:
        session.expect("Options")
        shutil.rmtree(session.documents)
        row = open_editor(session)
        session.click("Save")
        session.expect("Thanks!", 30)
        session.press("Thanks!")
        session.expect(row)
        session.press("Options")
        session.press("Get Import Location")
        session.expect_gone("Get Import Location")
        assert session.program.poll() is None
        saved = pictures_of(session)
        assert len(saved) == 1 and is_whole(saved[0].read_bytes()), saved
    finally:
        session.close()


def closed_in_the_middle_of_a_save(program, resources, folder, delay):
    """The save is over before the wish to close is heard: the picture is there, whole, and nothing else."""
    session = window_session.Session(program, folder, "--resources", str(resources), "--reduce-motion")
    try:
        open_editor(session)
        session.click("Save")
        time.sleep(delay)
        session.key("ctrl+q")
        ended(session)
        assert session.program.returncode == 0, session.program.returncode
        left = pictures_of(session)
        assert len(left) == 1 and left[0].name.startswith("Mockup "), left
        assert is_whole(left[0].read_bytes()), left
    finally:
        session.close()


def display_killed_in_the_middle_of_a_save(program, resources, folder, delay):
    server, environment = window_session.start_display("1400x1000x24")
    usual = os.environ["DISPLAY"]
    os.environ["DISPLAY"] = environment["DISPLAY"]
    try:
        session = window_session.Session(program, folder, "--resources", str(resources), "--reduce-motion")
        try:
            open_editor(session)
            session.click("Save")
            time.sleep(delay)
            server.kill()
            ended(session)
            for left in pictures_of(session):
                assert left.name.startswith("Mockup ") and is_whole(left.read_bytes()), left
        finally:
            session.close()
    finally:
        os.environ["DISPLAY"] = usual
        server.kill()
        server.wait()


def copy(format, data):
    """On the clipboard, by a program of its own that keeps offering it."""
    subprocess.run(["xclip", "-selection", "clipboard", "-target", format], input=data, check=True,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def place_in_the_dialogue(session, name):
    """The toolkit's own dialogue lists files by labels; the picker behind it has buttons."""
    for node in session.nodes():
        if node.name == name and node.getRole() == session.atspi.ROLE_LABEL:
            return session.middle(node)
    return None


def pasted_and_browsed(program, source, folder):
    session = window_session.Session(program, folder, "--resources", str(source / "tests/fixtures/catalogue"),
                                     "--reduce-motion", environment={"QT_QPA_PLATFORMTHEME": "none"})
    shot = source / "resources/samples/screenshot.png"
    try:
        shutil.copy(shot, session.pictures / "shot.png")
        open_editor(session)
        # Without a pick under way a paste is nobody's.
        copy("image/png", shot.read_bytes())
        session.key("ctrl+v")
        time.sleep(0.5)
        session.expect("Left screenshot")
        assert session.find("Browse files") is None

        for format, data in (("image/png", shot.read_bytes()), ("text/uri-list", f"file://{shot}\r\n".encode())):
            copy(format, data)
            session.click("Left screenshot")
            session.expect("Browse files")
            time.sleep(0.4)
            session.key("ctrl+v")
            session.expect_gone("Browse files")

        session.click("Left screenshot")
        session.click("Browse files")
        session.expect("Open")
        x, y = session.wait_for(lambda: place_in_the_dialogue(session, "shot.png"), "the file in the dialogue")
        subprocess.run(["xdotool", "mousemove", str(x), str(y), "click", "1"], check=True)
        time.sleep(0.3)
        session.click("Open")
        session.expect_gone("Browse files")
        session.expect("Left screenshot")
    finally:
        session.close()


def main(program, source, scratch):
    resources = large_catalogue(source, scratch / "large")
    documents_folder_vanishes(program, source, scratch / "vanish")
    print("a documents folder that vanished")
    pasted_and_browsed(program, source, scratch / "elsewhere")
    print("pictures from elsewhere")
    for number, delay in enumerate((0, 0.05, 0.15, 0.4)):
        closed_in_the_middle_of_a_save(program, resources, scratch / f"closed-{number}", delay)
        display_killed_in_the_middle_of_a_save(program, resources, scratch / f"killed-{number}", delay)
        print(f"closed, and the display killed, {delay:.2f} s after the press")


if __name__ == "__main__":
    if shutil.which("xclip") is None:
        print("skipped: not installed: xclip")
        sys.exit(77)
    window_session.rerun_privately()
    with tempfile.TemporaryDirectory(prefix="quillomat-survival-") as folder:
        main(sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(folder))
