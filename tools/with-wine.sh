#!/usr/bin/env bash
# Runs one command in the Windows test environment of a build, as tools/test.sh sets it up: the
# build's Wine prefixes, a private 16-bit Xvfb screen (and the 24-bit one), a private PulseAudio
# null sink; all stopped again afterwards. A first word ending in .exe is run under the build's
# Wine. For example:
#   bash tools/with-wine.sh win64 ctest --preset win64 -R text_tests --output-on-failure
#   bash tools/with-wine.sh win64 build/win64/bin/text_tests.exe --gtest_filter='*Editor*'
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
build=${1:?usage: tools/with-wine.sh win32|win64 COMMAND...}
shift
[ -n "${VELL_WINE_OF[$build]:-}" ] || { vell_log "no such Windows build: $build"; exit 2; }
vell_wine_prefix "$build" && vell_plain_prefix "$build" || exit 1
vell_start_xvfb DISPLAY 16
vell_start_xvfb VELL_DISPLAY24 24
if vell_start_pulse; then export VELL_EXPECT_SOUND=1; fi
if [[ "${1:-}" == *.exe ]]; then set -- "$VELL_WINE" "$@"; fi
status=0
"$@" || status=$?
exit $status
