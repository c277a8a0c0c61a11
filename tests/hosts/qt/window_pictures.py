#!/usr/bin/env python3
"""Photographs every screen of the window, for the documents and for looking at.

Usage: window_pictures.py WINDOW-PROGRAM SOURCE-DIR OUTPUT-DIR [--size 360x740] [--appearance light|dark]
       [--language de] [--factor 1.5] [--text 1.5] [--font FAMILY] [--software]
       [--prefix NAME]
"""
import argparse
import pathlib
import shutil
import subprocess
import tempfile
import time

import window_session

DISPLAY = "2400x1700x24"


def arguments():
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("source", type=pathlib.Path)
    parser.add_argument("output", type=pathlib.Path)
    parser.add_argument("--size", default="360x740", help="in points")
    parser.add_argument("--appearance", default="light")
    parser.add_argument("--language", default="en")
    parser.add_argument("--factor", type=float, default=1.0, help="device pixels for a point")
    parser.add_argument("--text", type=float, default=1.0, help="of the ordinary size")
    parser.add_argument("--font", help="the family that stands for the desktop's sans")
    parser.add_argument("--software", action="store_true", help="without OpenGL")
    parser.add_argument("--row", default="Phones, in perspective")
    parser.add_argument("--mockup", default="phone-tilted.png")
    parser.add_argument("--screens", help="a folder with the screens' sources, in place of those in the program")
    parser.add_argument("--prefix", default="")
    return parser.parse_args()


FONTS = """<?xml version="1.0"?><!DOCTYPE fontconfig SYSTEM "fonts.dtd"><fontconfig>
<include ignore_missing="yes">/etc/fonts/fonts.conf</include>
<match target="pattern"><test name="family"><string>sans-serif</string></test>
<edit name="family" mode="prepend" binding="strong"><string>{}</string></edit></match></fontconfig>"""
TEXTS = {"de": {"Options": "Optionen", "Left screenshot": "Linker Screenshot", "Background": "Hintergrund",
                "Choose": "Auswählen", "Yes": "Ja", "No": "Nein", "Save": "Sichern", "Dismiss": "Schließen",
                "Import Mockup": "Mockup importieren", "Cancel": "Abbrechen", "Thanks!": "Danke!", "Glare": "Glanz",
                "Import Tutorial": "Anleitung zum Importieren"}}


class Album:
    def __init__(self, wish, folder):
        width, height = (round(float(side) * wish.factor) for side in wish.size.split("x"))
        environment = {"QT_SCALE_FACTOR": str(wish.factor), "LC_ALL": "de_DE.UTF-8" if wish.language == "de" else "C.UTF-8",
                       "LANGUAGE": wish.language, "TZ": "UTC"}
        if wish.font:
            (folder / "fonts.conf").write_text(FONTS.format(wish.font))
            environment["FONTCONFIG_FILE"] = str(folder / "fonts.conf")
        if wish.software:
            environment["QT_QUICK_BACKEND"] = "software"
        self.wish, self.texts = wish, TEXTS.get(wish.language, {})
        options = ["--resources", str(wish.source / "resources"), "--appearance", wish.appearance,
                   "--text-scale", str(wish.text)]
        if wish.screens:
            options += ["--screens", wish.screens]
        self.session = window_session.Session(wish.program, folder / "visit", *options,
                                              size=(width, height), environment=environment)

    def t(self, text):
        return self.texts.get(text, text)

    def shoot(self, name):
        time.sleep(0.8)
        # The pointer is no part of the picture, nor is what it hovers over.
        subprocess.run(["xdotool", "mousemove", "2399", "1699"], check=True)
        time.sleep(0.6)
        self.session.shoot(self.wish.output / f"{self.wish.prefix}{name}.png")

    def press(self, name):
        self.session.press(self.t(name))

    def expect(self, name, seconds=15):
        return self.session.expect(self.t(name), seconds)


def visit(wish, folder):
    album = Album(wish, folder)
    session = album.session
    try:
        samples = wish.source / "resources/samples"
        (session.pictures / "Holiday").mkdir()
        for index, name in enumerate(("screenshot.png", "screenshot-2.png", "background.jpg", "screenshot-tablet.png",
                                      "screenshot-wide.png")):
            shutil.copy(samples / name, session.pictures)
        album.expect("Options")
        album.shoot("list")
        album.press("Options")
        album.expect("Dismiss")
        album.shoot("sheet")
        album.press("Import Mockup")
        album.expect("Cancel")
        album.shoot("documents")
        album.press("Cancel")
        session.expect_gone(album.t("Cancel"))
        session.press(wish.row)
        session.expect(wish.mockup)
        album.shoot("gallery")
        session.press(wish.mockup)
        album.expect("Save")
        album.shoot("editor-empty")
        album.press("Left screenshot")
        album.expect("Cancel")
        album.shoot("photos")
        session.press("screenshot.png")
        session.expect_gone(album.t("Cancel"))
        album.press("Background")
        album.expect("Cancel")
        session.press("background.jpg")
        album.expect("Choose")
        album.shoot("crop")
        album.press("Choose")
        album.expect("Yes")
        album.shoot("question")
        album.press("Yes")
        session.expect_gone(album.t("Yes"))
        album.press("Glare")
        album.shoot("editor")
        album.press("Save")
        album.expect("Thanks!", 60)
        album.shoot("saved")
    finally:
        session.close()


if __name__ == "__main__":
    window_session.rerun_privately(DISPLAY)
    wanted = arguments()
    wanted.output.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory(prefix="quillomat-pictures-") as scratch:
        visit(wanted, pathlib.Path(scratch))
