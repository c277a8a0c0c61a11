#!/usr/bin/env python3
"""Every option of the window's programs stands in their manual page, and no other does; each program has a page."""
import pathlib
import re
import subprocess
import sys
import unittest

PACKAGING, PROGRAMS = pathlib.Path(sys.argv[1]), sys.argv[2:]


def options_of(program):
    told = subprocess.run([program, "--help"], capture_output=True, text=True, check=True).stdout
    return set(re.findall(r"(?<![\w-])--([a-z][a-z-]+)", told))


class WindowManual(unittest.TestCase):
    def setUp(self):
        self.page = (PACKAGING / "quillomat-app.1").read_text()

    def test_programsHaveOptions(self):
        for program in PROGRAMS:
            self.assertLessEqual({"appearance", "reduce-motion", "screens", "frame-log", "documents", "help"},
                                 options_of(program))

    def test_everyOptionStandsInThePageAndNoOther(self):
        documented = {one or other for one, other in re.findall(r"Fl -([a-z][a-z-]+)|, -([a-z][a-z-]+)", self.page)}
        for program in PROGRAMS:
            self.assertEqual(documented, options_of(program), program)

    def test_everyOptionIsDescribedOnce(self):
        items = re.findall(r"^\.It Fl (?:. , )?-([a-z-]+)", self.page, re.MULTILINE)
        self.assertEqual(len(items), len(set(items)))
        self.assertEqual(set(items), options_of(PROGRAMS[0]))

    def test_everyProgramHasAPage(self):
        for program in PROGRAMS:
            page = PACKAGING / (pathlib.Path(program).name + ".1")
            self.assertTrue(page.exists(), page)
            self.assertIn(pathlib.Path(program).name, self.page)

    def test_wrongOptionIsWrongUsage(self):
        for program in PROGRAMS:
            told = subprocess.run([program, "--no-such-option"], capture_output=True, text=True)
            self.assertEqual(told.returncode, 2)
            self.assertIn(pathlib.Path(program).name + ": ", told.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
