#!/usr/bin/env bash
# A module sees the headers of the modules it names and no others: what geometry may include compiles with geometry's
# include roots, a header of the views does not.
set -u
compiler=$1 roots=$2
compiles() {
    printf '#include "%s"\nint main() {}\n' "$1" |
        "$compiler" -std=c++20 -x c++ -fsyntax-only -I"$roots/geometry" -I"$roots/platform_foundation" - 2>/dev/null
}
compiles geometry/Quad.h || { echo "a declared include does not compile"; exit 1; }
compiles platform/foundation/Geometry.h || { echo "a declared include does not compile"; exit 1; }
compiles platform/views/View.h && { echo "an undeclared include compiles"; exit 1; }
echo "undeclared includes do not compile"
