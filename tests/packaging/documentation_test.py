#!/usr/bin/env python3
"""Every command and option of the program stands in its manual page and in the three shells' completions, and the other
way round: what they offer exists."""
import pathlib
import re
import subprocess
import sys
import unittest

PROGRAM, PACKAGING = sys.argv[1], pathlib.Path(sys.argv[2])


def help_of(*words):
    return subprocess.run([PROGRAM, *words, "--help"], capture_output=True, text=True, check=True).stdout


def options_in_help(text):
    return set(re.findall(r"(?<![\w-])--([a-z][a-z-]+)", text))


def commands_in_help():
    after = re.split(r"subcommands:", help_of(), flags=re.IGNORECASE)[1]
    return set(re.findall(r"^  ([a-z]+)\s", after, re.MULTILINE))


class Documentation(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.commands = commands_in_help()
        cls.options = options_in_help(help_of())
        for command in cls.commands:
            cls.options |= options_in_help(help_of(command))
        cls.page = (PACKAGING / "quillomat.1").read_text()
        cls.completions = {name: (PACKAGING / "completions" / name).read_text()
                           for name in ("quillomat.bash", "_quillomat", "quillomat.fish")}

    def test_theProgramHasCommandsAndOptions(self):
        self.assertIn("render", self.commands)
        self.assertIn("screenshot", self.options)

    def test_everyCommandStandsInTheManualPageAndNoOther(self):
        self.assertEqual(set(re.findall(r"^\.It Cm ([a-z]+)", self.page, re.MULTILINE)), self.commands)

    def test_everyOptionStandsInTheManualPageAndNoOther(self):
        documented = set(re.findall(r"Fl -([a-z][a-z-]+)|, -([a-z][a-z-]+)", self.page))
        self.assertEqual({a or b for a, b in documented}, self.options)

    def test_everyCommandIsCompletedInEveryShell(self):
        bash = re.search(r'local commands="([^"]*)"', self.completions["quillomat.bash"]).group(1)
        self.assertEqual(set(bash.split()), self.commands)
        zsh = re.findall(r"^ {12}['\"]([a-z]+):", self.completions["_quillomat"], re.MULTILINE)
        self.assertEqual(set(zsh), self.commands)
        fish = re.search(r"^set -l commands (.*)$", self.completions["quillomat.fish"], re.MULTILINE).group(1)
        self.assertEqual(set(fish.split()), self.commands)

    def test_everyOptionIsCompletedInEveryShellAndNoOther(self):
        bash = set(re.findall(r"--([a-z][a-z-]+)", self.completions["quillomat.bash"]))
        self.assertEqual(bash, self.options)
        zsh = set(re.findall(r"(?<=--)[a-z][a-z-]+", self.completions["_quillomat"]))
        self.assertEqual(zsh, self.options)
        fish = set(re.findall(r" -l ([a-z][a-z-]+)(?= -|$)", self.completions["quillomat.fish"], re.MULTILINE))
        self.assertEqual(fish - {"commands", "given", "words", "mockups"}, self.options)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
