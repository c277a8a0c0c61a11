#!/usr/bin/env python3
"""Fails when a test's source file is named in no CMakeLists.txt: a test that is not built cannot fail."""
import pathlib
import sys

root = pathlib.Path(sys.argv[1])
named = "\n".join(
    file.read_text() for file in root.rglob("CMakeLists.txt") if "build" not in file.relative_to(root).parts
)
unbuilt = [
    file.relative_to(root).as_posix() for file in sorted((root / "tests").rglob("*_test.cpp")) if file.name not in named
]
print("\n".join(f"{file}: is named in no CMakeLists.txt" for file in unbuilt) or "every test is built")
sys.exit(1 if unbuilt else 0)
