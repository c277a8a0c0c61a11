#!/usr/bin/env python3
"""The check of rooms must see a toolkit header in the core, a codec header in the editor, and a climbing include."""
import pathlib
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).parent))
from check_includes import faults  # noqa: E402

with tempfile.TemporaryDirectory() as folder:
    root = pathlib.Path(folder)
    for path, line in {
        "editor/A.cpp": "#include <QString>",
        "editor/B.cpp": "#include <png.h>",
        "editor/C.h": '#include "../app/Application.h"',
        "hosts/qt/D.cpp": "#include <QString>",
        "platform/graphics/codecs/PngReader.cpp": "#include <png.h>",
    }.items():
        file = root / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(line + "\n")
    found = faults(root)
    assert len(found) == 3, found
    assert [line.split(":")[0] for line in found] == ["editor/A.cpp", "editor/B.cpp", "editor/C.h"], found
print("the check sees all three faults and nothing else")
