#!/usr/bin/env bash
# Runs every test of the project on this machine, installing what it needs first:
#   - host build: platform-free unit tests with AddressSanitizer/UBSan, fuzz targets (bounded),
#     and the checks of the sources (cmake/checks.cmake: clang-format, the README's client against
#     demo/minimal.cpp, the generated Microsoft-ABI exports against the header);
#   - the two Windows builds, win32 (i686, VellBase.dll as shipped) under 32-bit Wine and win64
#     (x86_64) under wine64: the same test programs, on a 16-bit Xvfb screen with a private
#     PulseAudio null sink, each build in its own Wine prefixes. Where this machine cannot run
#     32-bit programs the win32 build is only compiled (its Microsoft-ABI client linked and checked).
# Everything runs through ctest (ctest --preset NAME alone runs the same tests). Prints each build's
# count, then one line "tests: N passed, M failed, K skipped" that sums them (a test that could not
# run here, or whose cases skipped themselves, counts as skipped), and the size of the tests
# against the rest of the code.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
cd "$VELL_ROOT"

vell_install_packages

passed=0
failed=0
skipped=0
# The counts "passed failed skipped" of a ctest JUnit file. ctest writes a test it could not start
# (its program missing, a fixture it needs failed) as "notrun", as it writes one that skipped
# itself; only the latter (SKIP_RETURN_CODE, SKIP_REGULAR_EXPRESSION) and disabled ones count as
# skipped here, the others as failed, as ctest itself counts them.
junit_counts() {
    python3 - "$1" <<'EOF'
import sys
import xml.etree.ElementTree as ET

counts = {"run": 0, "fail": 0, "skip": 0}
for case in ET.parse(sys.argv[1]).getroot().iter("testcase"):
    status, skip = case.get("status"), case.find("skipped")
    if status == "notrun" and skip is not None and skip.get("message", "").startswith("SKIP_"):
        status = "skip"
    counts["skip" if status == "disabled" else status if status in counts else "fail"] += 1
print(counts["run"], counts["fail"], counts["skip"])
EOF
}
# Runs one ctest preset and adds its counts, read from its JUnit output, to the totals.
run_ctest() {
    local junit=$VELL_BUILD/$1/junit.xml status=0 counts p f s
    rm -f "$junit"
    ctest --preset "$1" --output-junit "$junit" "${@:2}" || status=$?
    if ! counts=$(junit_counts "$junit" 2>/dev/null); then
        failed=$((failed + 1))
        vell_log "ctest --preset $1 wrote no results ($junit)"
        return 0
    fi
    read -r p f s <<<"$counts"
    passed=$((passed + p))
    failed=$((failed + f))
    skipped=$((skipped + s))
    # ctest failing with no failed test (no tests found, say) counts as one failure.
    [ "$status" -eq 0 ] || [ "$f" -gt 0 ] || failed=$((failed + 1))
}

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
# The sound tests need a sound server, and the switch test records what plays: with one up they
# must not skip.
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
# Tests are kept to between a quarter and a third of the code (code lines as cloc counts them;
# documents, presets and lists such as tools/slips.txt are not code).
test_lines=$(cloc --quiet --csv tests | awk -F, '$2 == "SUM" { print $5 }')
code_lines=$(cloc --quiet --csv --exclude-dir=tests,build,.git --exclude-lang=Markdown,JSON,YAML,Text . |
    awk -F, '$2 == "SUM" { print $5 }')
share=$((100 * test_lines / code_lines))
echo "test code: $test_lines lines, $share% of the code ($code_lines lines)$([ "$share" -le 33 ] ||
    echo ": over the third asked")"
[ "$failed" -eq 0 ]
