#!/usr/bin/env bash
# Runs every test of the project on this machine, installing what it needs first:
#   - formatting check of the sources (clang-format), and the README's client against
#     demo/minimal.cpp;
#   - host build: platform-free unit tests with AddressSanitizer/UBSan, fuzz targets (bounded);
#   - win32 build (i686, VellBase.dll as shipped): compiled and linked warning-free, not run;
#   - win64 build: the Windows test programs, run under wine64 on a 16-bit Xvfb screen with a
#     private PulseAudio null sink.
# Ends with one line "tests: N passed, M failed".
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
cd "$VELL_ROOT"

vell_install_packages

passed=0
failed=0
# Runs one ctest preset and adds its counts to the totals.
run_ctest() {
    local out status=0
    out=$(mktemp)
    ctest --preset "$1" "${@:2}" 2>&1 | tee "$out" || status=$?
    local line
    line=$(grep -E '^[0-9]+% tests passed, [0-9]+ tests? failed out of [0-9]+' "$out" | tail -n 1 || true)
    rm -f "$out"
    if [ -z "$line" ]; then
        failed=$((failed + 1))
        vell_log "ctest --preset $1 reported no result"
        return 0
    fi
    local bad total
    bad=$(sed -E 's/.* ([0-9]+) tests? failed out of ([0-9]+).*/\1/' <<<"$line")
    total=$(sed -E 's/.* failed out of ([0-9]+).*/\1/' <<<"$line")
    passed=$((passed + total - bad))
    failed=$((failed + bad))
    [ "$status" -eq 0 ] || [ "$bad" -gt 0 ] || failed=$((failed + 1))
}

vell_log "checking the formatting"
if ! git ls-files -z '*.h' '*.cpp' | xargs -0 clang-format --dry-run --Werror; then
    vell_log "clang-format: some files are not formatted (run: git ls-files '*.h' '*.cpp' | xargs clang-format -i)"
    failed=$((failed + 1))
fi

# The README shows demo/minimal.cpp whole: they must not drift apart.
if ! diff <(sed -n '/^#include "VellBase.h"/,/^}/p' demo/minimal.cpp) \
    <(sed -n '/^```cpp/,/^```/p' README.md | sed -n '/^#include "VellBase.h"/,/^}/p') >/dev/null; then
    vell_log "README: the minimal client differs from demo/minimal.cpp"
    failed=$((failed + 1))
fi

for preset in host win32 win64; do
    vell_log "building $preset"
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset"
done

vell_log "host tests"
run_ctest host -j2

vell_log "Windows tests under wine64"
vell_wine_prefix
vell_plain_prefix
vell_start_xvfb DISPLAY 16
vell_start_xvfb VELL_DISPLAY24 24
# The sound tests record what they play: with a sound server up they must not skip.
if vell_start_pulse; then export VELL_EXPECT_SOUND=1; fi
run_ctest win64

echo "tests: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
