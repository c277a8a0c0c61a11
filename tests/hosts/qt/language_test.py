#!/usr/bin/env python3
"""Every text that the window can show is translated: those of the scene, as the toolkit's own collector finds them, and
those of the core, as they stand in its sources.

Usage: language_test.py LUPDATE SOURCE-DIR TRANSLATION (status 77: something needed is not installed)
"""
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

COLLECTOR, SOURCE, TRANSLATION = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
# The same in both languages.
ALIKE = {"Ok", "OK", "Option", "Screenshot"}
STRING = r'"((?:[^"\\]|\\.)*)"'
SHOWN = [  # how the core's sources give a text to the screen
    rf"AlertController>\(\s*{STRING}(?:,\s*{STRING})?",
    rf"addAction\(\s*{STRING}",
    rf"showDeleteAlert\((?:result\s*\?\s*)?{STRING}",
    rf"(?<=:) {STRING} \+ result\.reason",
    rf"\btitle = {STRING}",
    rf"\btext = {STRING}",
    rf'"creator"[^;]*?{STRING} \+',
]


def messages(path):
    """(context, text) to its translation; None where it is not finished."""
    found = {}
    for context in xml.etree.ElementTree.parse(path).getroot().iter("context"):
        for message in context.iter("message"):
            translation = message.find("translation")
            finished = translation is not None and "type" not in translation.attrib and translation.text
            found[context.findtext("name"), message.findtext("source")] = translation.text if finished else None
    return found


def texts_of_the_core():
    found = set()
    for folder in ("catalogue", "editor"):
        for path in (SOURCE / folder).glob("*.cpp"):
            for pattern in SHOWN:
                for match in re.finditer(pattern, path.read_text()):
                    found |= {text.replace("\\n", "\n") for text in match.groups() if text}
    return found


class Language(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.translated = messages(TRANSLATION)
        with tempfile.TemporaryDirectory() as folder:
            collected = pathlib.Path(folder) / "collected.ts"
            subprocess.run([COLLECTOR, "-silent", "-no-obsolete", "-extensions", "qml,cpp,h", "-I", SOURCE, SOURCE / "resources/screens",
                            SOURCE / "hosts/qt", "-ts", collected], check=True, stdout=subprocess.DEVNULL)
            cls.collected = set(messages(collected))

    def test_collectorFindsTheScenesTexts(self):
        self.assertIn(("EditorPage", "Left screenshot"), self.collected)
        self.assertIn(("PickerFrame", "Browse files"), self.collected)

    def test_sceneWritesNoTextThatTheCollectorPassesBy(self):
        bare = re.compile(r'\b(?:text|name|title|label|hint|description): *"[A-Z]')
        found = {f"{path.name}: {line.strip()}" for path in (SOURCE / "resources/screens").rglob("*.qml")
                 for line in path.read_text().splitlines() if bare.search(line)}
        self.assertEqual(found, {'Main.qml: title: "Quillomat"'})

    def test_everyTextOfTheSceneIsTranslated(self):
        missing = [key for key in self.collected if self.translated.get(key) is None]
        self.assertEqual(sorted(missing), [])

    def test_nothingIsTranslatedThatNobodyShows(self):
        idle = [key for key in self.translated if key[0] != "Core" and key not in self.collected]
        self.assertEqual(sorted(idle), [])

    def test_coreSpeaksToTheScreenWhereItIsLookedFor(self):
        found = texts_of_the_core()
        for text in ("Selection", "Options", "Import Mockup", "Blur background Image?", "Thanks!", "Enter A Number",
                     "Downloading Files", "Update Available", "Delete Mockup"):
            self.assertIn(text, found)

    def test_everyTextOfTheCoreIsTranslated(self):
        translated = {source for (context, source), text in self.translated.items() if context == "Core" and text}
        patterns = {text[:-2] for text in translated if text.endswith("%1")}
        missing = [text for text in texts_of_the_core() if text not in translated and text not in patterns]
        self.assertEqual(sorted(missing), [])

    def test_translationsKeepTheirPlaces(self):
        for (context, source), text in self.translated.items():
            if text is not None:
                self.assertEqual(sorted(re.findall(r"%\d", source)), sorted(re.findall(r"%\d", text)), source)
                self.assertEqual(source.count("\n"), text.count("\n"), source)

    def test_translationsAreInTheOtherLanguage(self):
        same = {source for (_, source), text in self.translated.items() if text == source}
        self.assertEqual(same, ALIKE & same)


if __name__ == "__main__":
    if not pathlib.Path(COLLECTOR).exists():
        print("skipped: not installed: lupdate")
        sys.exit(77)
    unittest.main(argv=sys.argv[:1], verbosity=2)
