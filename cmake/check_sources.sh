#!/usr/bin/env bash
# The checks of the sources that ctest runs with the host tests (cmake/checks.cmake), from the
# top of the repository:
#   check_sources.sh format CLANG-FORMAT  every tracked C++ file as clang-format writes it
#   check_sources.sh readme               the README shows demo/minimal.cpp whole, unchanged
set -euo pipefail
case "$1" in
format)
    git ls-files -z '*.h' '*.cpp' | xargs -0 "$2" --dry-run --Werror || {
        echo "not formatted: run git ls-files '*.h' '*.cpp' | xargs $2 -i" >&2
        exit 1
    } ;;
readme)
    # From the include of the header to the end of the file, or of the README's code block.
    diff -u <(sed -n '/^#include "VellBase.h"/,$p' demo/minimal.cpp) \
        <(sed -n '/^#include "VellBase.h"/,/^```$/p' README.md | sed '$d') || {
        echo "README.md: its minimal client differs from demo/minimal.cpp" >&2
        exit 1
    } ;;
*)
    echo "usage: check_sources.sh format CLANG-FORMAT | readme" >&2
    exit 2 ;;
esac
