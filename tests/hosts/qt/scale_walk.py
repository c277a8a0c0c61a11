#!/usr/bin/env python3
"""Where a point is no whole number of pixels the preview is as sharp as elsewhere: a window at a fractional factor shows,
pixel for pixel, what a larger window at factor 1 shows whose preview covers as many pixels.

Usage: scale_walk.py WINDOW-PROGRAM SOURCE-DIR (status 77: something needed is not installed)
"""
import math
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

import window_session

FACTORS = ["1.25", "1.5", "1.75"]
POINTS = (363, 741)  # which no factor makes whole


def to_pixels(points, factor):
    return math.floor(points * float(factor) + 0.5)


def photograph(program, source, folder, factor, size, picture, backend, *options):
    """A visit up to a preview that is opaque all over; returns the preview's place in pixels."""
    environment = {"QT_SCALE_FACTOR": factor}
    if backend == "software":
        environment["QT_QUICK_BACKEND"] = "software"
    session = window_session.Session(program, folder, "--resources", str(source / "tests/fixtures/catalogue"),
                                     "--reduce-motion", *options, size=size, environment=environment)
    try:
        shutil.copy(source / "resources/samples/background.jpg", session.pictures)
        session.expect("Options")
        for name in ("Phones", "upright.png", "Background", "background.jpg", "Choose", "No"):
            session.press(name)
        session.expect_gone("No")
        time.sleep(0.8)
        session.shoot(picture)
        box = session.expect("Preview").queryComponent().getExtents(session.atspi.DESKTOP_COORDS)
        return [to_pixels(side, factor) for side in (box.x, box.y, box.width, box.height)]
    finally:
        session.close()


def cut(picture, place, side, out, shift=(0, 0)):
    corner = f"+{place[0] + shift[0]}+{place[1] + shift[1]}"
    subprocess.run(["convert", str(picture), "-crop", f"{side}x{side}{corner}", "+repage", str(out)], check=True)
    return out


def differing(one, other):
    told = subprocess.run(["compare", "-metric", "AE", str(one), str(other), "null:"], capture_output=True, text=True)
    return int(float(told.stderr.split()[0]))


def walk(program, source, folder, *options):
    for backend in ("hardware", "software"):
        # The preview is as wide as the window but for its margins.
        unscaled = photograph(program, source, folder / backend, "1", POINTS, folder / "plain.png", backend, *options)[2]
        margins = POINTS[0] - unscaled
        for factor in FACTORS:
            size = [to_pixels(side, factor) for side in POINTS]
            here = folder / f"{backend}-{factor}"
            place = photograph(program, source, here / "scaled", factor, size, folder / "scaled.png", backend, *options)
            side = to_pixels(unscaled, size[0] / POINTS[0])
            assert abs(side - place[2]) <= 2, f"{factor}: the preview is {place[2]} pixels wide"
            plain = photograph(program, source, here / "plain", "1", (side + margins, side + 400), folder / "plain.png",
                               backend, *options)
            assert plain[2] == side, f"{factor}: {plain[2]} pixels at factor 1, {side} here"
            reference = cut(folder / "plain.png", plain, side, folder / "plain-cut.png")
            # The place, too, may be a pixel away.
            shifts = [(x, y) for x in (0, -1, 1) for y in (0, -1, 1)]
            count = min(differing(cut(folder / "scaled.png", place, side, folder / "scaled-cut.png", shift), reference)
                        for shift in shifts)
            print(f"{backend}, {factor}: {side} x {side} pixels, {count} of them differ")
            assert count == 0, "the preview has been drawn between the pixels"


if __name__ == "__main__":
    window_session.rerun_privately()
    with tempfile.TemporaryDirectory(prefix="quillomat-scale-") as scratch:
        walk(sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(scratch), *sys.argv[3:])
