#!/usr/bin/env bash
# Runs every test of the project on this machine, installing what it needs first:
#   - formatting check of the sources (clang-format), the README's client against
#     demo/minimal.cpp, and the generated Microsoft-ABI exports against the header;
#   - host build: platform-free unit tests with AddressSanitizer/UBSan, fuzz targets (bounded);
#   - the two Windows builds, win32 (i686, VellBase.dll as shipped) under 32-bit Wine and win64
#     (x86_64) under wine64: the same test programs, on a 16-bit Xvfb screen with a private
#     PulseAudio null sink, each build in its own Wine prefixes. Where this machine cannot run
#     32-bit programs the win32 build is only compiled (its Microsoft-ABI client linked and checked).
# Prints each build's count, then one line "tests: N passed, M failed, K skipped" that sums them (a
# test that could not run here, or whose cases skipped themselves, counts as skipped), and the
# size of the tests against the rest of the code.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
cd "$VELL_ROOT"

vell_install_packages

passed=0
failed=0
skipped=0
# Runs one ctest preset and adds its counts to the totals.
run_ctest() {
    local out status=0
    out=$(mktemp)
    ctest --preset "$1" "${@:2}" 2>&1 | tee "$out" || status=$?
    local line
    line=$(grep -E '^[0-9]+% tests passed, [0-9]+ tests? failed out of [0-9]+' "$out" | tail -n 1 || true)
    if [ -z "$line" ]; then
        rm -f "$out"
        failed=$((failed + 1))
        vell_log "ctest --preset $1 reported no result"
        return 0
    fi
    local bad total skip
    bad=$(sed -E 's/.* ([0-9]+) tests? failed out of ([0-9]+).*/\1/' <<<"$line")
    total=$(sed -E 's/.* failed out of ([0-9]+).*/\1/' <<<"$line")
    # ctest counts a skipped test among the passed ones and lists it as "(Skipped)".
    skip=$(grep -cE '^[[:space:]]*[0-9]+ - .* \(Skipped\)$' "$out" || true)
    passed=$((passed + total - bad - skip))
    failed=$((failed + bad))
    skipped=$((skipped + skip))
    rm -f "$out"
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

# The Microsoft names the DLLs export are generated from the header: they must not drift apart.
python3 tools/msabi_exports.py --check || failed=$((failed + 1))

builds=(win64)
[ "$VELL_WIN32" = 1 ] && builds=(win32 win64)
# The Wine prefixes are made (the first time, about 15 s each) while the code compiles; what went
# wrong is shown before the tests would run in them.
prefix_log=$VELL_BUILD/prefixes.log
mkdir -p "$VELL_BUILD"
(status=0 jobs=()
for b in "${builds[@]}"; do
    vell_make_prefix "$VELL_BUILD/wine/$b" "${VELL_WINE_OF[$b]}" yes &
    jobs+=($!)
    vell_make_prefix "$VELL_BUILD/wine-plain/$b" "${VELL_WINE_OF[$b]}" no &
    jobs+=($!)
done
for job in "${jobs[@]}"; do wait "$job" || status=1; done
exit $status) >"$prefix_log" 2>&1 &
prefix_job=$!

for preset in host win32 win64; do
    vell_log "building $preset"
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset"
done

declare -A counts
count() { # count NAME CTEST-ARGS...: runs ctest and remembers NAME's own count
    local p=$passed f=$failed s=$skipped
    run_ctest "$@"
    counts[$1]="$((passed - p)) passed, $((failed - f)) failed, $((skipped - s)) skipped"
}

vell_log "host tests"
count host -j2

if ! wait "$prefix_job"; then
    cat "$prefix_log" >&2
    vell_log "the Wine prefixes could not be made: the Windows tests cannot run"
    exit 1
fi
vell_start_xvfb DISPLAY 16
vell_start_xvfb VELL_DISPLAY24 24
# The sound tests record what they play: with a sound server up they must not skip.
if vell_start_pulse; then export VELL_EXPECT_SOUND=1; fi
for b in "${builds[@]}"; do
    vell_log "Windows tests of the $b build under ${VELL_WINE_OF[$b]}"
    vell_wine_prefix "$b" && vell_plain_prefix "$b" || exit 1
    count "$b"
done

# Where the i686 build cannot run, its Microsoft-ABI client is still linked and its imports checked;
# its other tests count as skipped.
if [ "$VELL_WIN32" != 1 ]; then
    vell_log "the i686 Microsoft-ABI client, linked and checked only"
    p=$passed f=$failed s=$skipped
    VELL_WIN32=0 run_ctest win32 -R client_msabi
    n=$(ctest --preset win32 -N | sed -nE 's/^Total Tests: ([0-9]+)$/\1/p')
    n=$((${n:-0} - (passed - p) - (failed - f) - (skipped - s)))
    skipped=$((skipped + n))
    counts[win32]="$((passed - p)) passed, $((failed - f)) failed, $((skipped - s)) skipped (this machine cannot run 32-bit programs: only the Microsoft-ABI client was linked and checked)"
    builds=(win32 "${builds[@]}")
fi
for name in host "${builds[@]}"; do echo "$name: ${counts[$name]}"; done
echo "tests: $passed passed, $failed failed, $skipped skipped"
# Tests are kept to a third of the code or so, never over 40% (code lines as cloc counts them).
test_lines=$(cloc --quiet --csv tests | awk -F, '$2 == "SUM" { print $5 }')
code_lines=$(cloc --quiet --csv --exclude-dir=tests,build,.git --exclude-lang=Markdown,JSON,YAML . |
    awk -F, '$2 == "SUM" { print $5 }')
echo "test code: $test_lines lines, $((100 * test_lines / code_lines))% of the code ($code_lines lines)"
[ "$failed" -eq 0 ]
