#!/usr/bin/env python3
"""Fails when a header from outside is included in a room that does not wrap it, or an include climbs with "..".

Our own headers are kept in their rooms by the build itself (a module sees only the include roots of the modules it
names); headers of the system's include folder would be found from everywhere, so they are checked here.
"""
import pathlib
import re
import sys

# Header pattern -> where it may be included (path prefixes from the source root).
ROOMS = [
    (r"Q[A-Z]\w*(/.*)?|qt[a-z]+.*|QtQuick.*", ["hosts/qt/", "app/main", "tests/hosts/qt/", "benchmarks/"]),
    (r"nlohmann/.*", ["platform/foundation/Value.cpp"]),
    (r"CLI/.*", ["cli/"]),
    (r"curl/.*", ["platform/network/"]),
    (r"png\.h", ["platform/graphics/codecs/", "tests/platform/graphics/", "tests/support/", "tests/fuzz/", "benchmarks/"]),
    (r"(jpeglib|jerror|turbojpeg)\.h", ["platform/graphics/codecs/", "tests/platform/graphics/", "tests/support/", "benchmarks/"]),
    (r"webp/.*", ["platform/graphics/codecs/", "tests/platform/graphics/"]),
    (r"libheif/.*", ["platform/graphics/codecs/", "tests/platform/graphics/"]),
    (r"libexif/.*", ["platform/graphics/codecs/", "tests/platform/graphics/"]),
    (r"lcms2.*\.h", ["platform/graphics/codecs/", "tests/platform/graphics/", "benchmarks/"]),
    (r"(isa-l|igzip_lib|libdeflate)(/.*|\.h)", ["platform/graphics/codecs/", "tests/platform/graphics/", "benchmarks/"]),
    (r"zlib\.h", ["platform/graphics/codecs/", "platform/network/", "tests/platform/", "benchmarks/"]),
    (r"hwy/.*", ["platform/graphics/"]),
    (r"opencv2/.*|Magick.*|vips/.*", ["benchmarks/"]),
    (r"gtest/.*|gmock/.*", ["tests/"]),
    (r"benchmark/.*", ["benchmarks/"]),
]
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]', re.MULTILINE)


def faults(root):
    found = []
    for path in sorted(root.rglob("*")):
        relative = path.relative_to(root).as_posix()
        if path.suffix not in {".cpp", ".h"} or relative.startswith(("build/", ".")):
            continue
        for header in INCLUDE.findall(path.read_text(encoding="utf-8", errors="replace")):
            if ".." in header.split("/"):
                found.append(f"{relative}: includes {header}: name it from the source root")
            for pattern, rooms in ROOMS:
                if re.fullmatch(pattern, header) and not any(relative.startswith(room) for room in rooms):
                    found.append(f"{relative}: includes {header}, which belongs to {', '.join(rooms)}")
    return found


if __name__ == "__main__":
    found = faults(pathlib.Path(sys.argv[1]))
    print("\n".join(found) or "every header from outside stays in its room")
    sys.exit(1 if found else 0)
