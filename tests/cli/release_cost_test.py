#!/usr/bin/env python3
"""The script behind docs/scale.md counts what installations really ask for."""
import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

SCRIPT = sys.argv[1]


class ReleaseCost(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.root = pathlib.Path(self.folder.name)
        updates = self.root / "site/quillomat/updates"
        (updates / "images").mkdir(parents=True)
        (updates / "main.json").write_text(json.dumps({"version": "2", "otaImages": ["a.png", "b.png", "c.png"]}))
        for name in ("a", "b", "c"):
            (updates / "images" / f"{name}.png").write_bytes(bytes(1_000_000))

    def run_script(self, *more):
        return subprocess.run([sys.executable, SCRIPT, str(self.root / "site"), *more], capture_output=True, text=True,
                              check=True).stdout

    def rows(self, *more):
        lines = [line for line in self.run_script(*more).splitlines() if line.startswith("| everybody")]
        return [[cell.strip() for cell in line.strip("|").split("|")] for line in lines]

    def test_aLaunchIsOneRequestAndAnUpdateThreeMoreAndThePictures(self):
        launch, update = self.rows()
        self.assertEqual(launch[1], "1")
        self.assertEqual(update[1], str(1 + 3 + 3))
        self.assertEqual(launch[3], "1 M")

    def test_bytesAreThoseOfThePicturesAndALittleMore(self):
        update = self.rows("--installations", "1")[1]
        value, unit = update[2].split()
        self.assertEqual(unit, "MB")
        self.assertTrue(3.1 < float(value) < 3.3, update)

    def test_picturesThatInstallationsHoldAreNotFetched(self):
        (self.root / "resources/images").mkdir(parents=True)
        for name in ("a", "b"):
            (self.root / f"resources/images/{name}.png").write_bytes(b"")
        update = self.rows("--installed", str(self.root / "resources"))[1]
        self.assertEqual(update[1], str(1 + 3 + 1))

    def test_thePeakIsTheHoursAverageTimesTheFactor(self):
        launch = self.rows("--installations", "3600", "--peak-factor", "7")[0]
        self.assertEqual(launch[5], "7 /s")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
