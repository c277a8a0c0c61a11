#!/usr/bin/env python3
"""A catalogue folder (main.json, images/) is whole: rows, galleries, definitions and pictures belong together."""
import json
import pathlib
import struct
import sys
import unittest

FOLDER = pathlib.Path(sys.argv[1])
CORNERS = [corner + axis for corner in ("topLeft", "topRight", "bottomLeft", "bottomRight") for axis in "XY"]
MARKER = 10


def png_size(path):
    with open(path, "rb") as file:
        head = file.read(26)
    assert head[:8] == b"\x89PNG\r\n\x1a\n", f"{path.name} is no PNG"
    return struct.unpack(">II", head[16:24]), head[25]


def stripped(name):
    return name.replace("-large", "")


class Catalogue(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.document = json.loads((FOLDER / "main.json").read_text(encoding="utf-8"))
        cls.definitions = cls.document["editInfo"]
        cls.images = FOLDER / "images"

    def screens(self, definition):
        return ["", "2"] if definition.get("doubleImage") else [""]

    def test_versionIsText(self):
        self.assertRegex(self.document["version"], r"^\d+(\.\d+)*$")

    def test_everyRowHasAGalleryAndAPreview(self):
        for row in self.document["tableItems"]:
            self.assertIn(row["typeLabel"], self.document["viewInfo"])
            self.assertTrue(row["descLabel"])
            png_size(self.images / row["previewImage"])
        rows = [row["typeLabel"] for row in self.document["tableItems"]]
        self.assertEqual(sorted(rows), sorted(self.document["viewInfo"]))

    def test_importsHaveAnEmptyGalleryOfTheirOwn(self):
        self.assertEqual(self.document["viewInfo"]["Imported"], {"images": []})
        self.assertEqual(self.document["tableItems"][-1]["typeLabel"], "Imported")

    def test_everyMockupOfAGalleryHasADefinitionAndAPicture(self):
        names = [name for entry in self.document["viewInfo"].values() for name in entry["images"]]
        self.assertTrue(names)
        self.assertEqual(len(names), len(set(names)))
        for name in names:
            self.assertIn(name, self.definitions)
            # The preview of screen 1 is found under the name without the marker.
            self.assertIn(stripped(name), self.definitions)
            self.assertRegex(name, r"^[a-z0-9-]+\.png$")
            png_size(self.images / stripped(name))

    def test_everyPictureHasTransparency(self):
        for name in self.definitions:
            self.assertEqual(png_size(self.images / stripped(name))[1], 6, name)

    def test_builtInMockupsCarryNoCredit(self):
        for name, definition in self.definitions.items():
            self.assertNotIn("creator", definition, name)

    def test_cornersAreWholeNumbersInsideTheCanvas(self):
        for name, definition in self.definitions.items():
            for screen in self.screens(definition):
                for corner in CORNERS:
                    value = definition["F" + corner + screen]
                    self.assertIs(type(value), int, name)
                    edge = definition["finalFrameWidth" if corner.endswith("X") else "finalFrameHeight"]
                    self.assertTrue(0 <= value + MARKER <= edge, f"{name}: {corner}{screen}")

    def test_previewCornersFollowTheFullSizeOnesToAPoint(self):
        for name, definition in self.definitions.items():
            width, height = definition["finalFrameWidth"], definition["finalFrameHeight"]
            fit = 300 / max(width, height)
            origin = {"X": (300 - width * fit) / 2, "Y": (300 - height * fit) / 2}
            for screen in self.screens(definition):
                source = definition if screen else self.definitions[stripped(name)]
                for corner in CORNERS:
                    expected = origin[corner[-1]] + (definition["F" + corner + screen] + MARKER) * fit
                    self.assertLess(abs(source[corner + screen] + MARKER - expected), 1.0, f"{name}: {corner}{screen}")

    def test_glarePicturesExistAndLieOnTheCanvas(self):
        for name, definition in self.definitions.items():
            if not definition["overlay"]:
                continue
            png_size(self.images / definition["overlay"])
            self.assertLessEqual(definition["glareX"] + definition["glareWidth"], definition["finalFrameWidth"], name)
            self.assertLessEqual(definition["glareY"] + definition["glareHeight"], definition["finalFrameHeight"], name)

    def test_everyKindOfFrameIsThere(self):
        def box_height(definition):
            ys = [definition[f"F{corner}Y"] for corner in ("topLeft", "topRight", "bottomLeft", "bottomRight")]
            return max(ys) - min(ys)
        every = self.definitions.values()
        self.assertTrue(any("-large" in name for name in self.definitions))
        self.assertTrue(any(d.get("doubleImage") for d in every))
        self.assertTrue(any(d.get("noCorner") for d in every))
        self.assertTrue(any(d["overlay"] for d in every))
        self.assertTrue(any(box_height(d) >= 2731 for d in every))

    def test_theSampleMockupIsInTheCatalogue(self):
        sample = FOLDER / "samples" / "mockup"
        if not sample.exists():
            self.skipTest("no samples beside this catalogue")
        name = sample.read_text().strip()
        name += "" if name.endswith(".png") else ".png"
        listed = [n for entry in self.document["viewInfo"].values() for n in entry["images"]]
        self.assertIn(name, listed)
        self.assertFalse(self.definitions[name].get("doubleImage"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
