#!/usr/bin/env bash
# Builds the demo (x86_64) and runs it under wine64, installing what it needs first.
# With DISPLAY set it shows on that screen; otherwise it runs on a private 16-bit Xvfb screen.
# Its log (and screenshot) are left in build/demo.
#   tools/demo.sh [seconds]
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
cd "$VELL_ROOT"
seconds=${1:-3}

vell_install_packages
cmake --preset win64 >/dev/null
cmake --build --preset win64 --target vell_demo VellBase

vell_wine_prefix
if [ -z "${DISPLAY:-}" ]; then
    DISPLAY=$(vell_start_xvfb 16)
    export DISPLAY
fi
# Sound goes to the user's own sound server when there is one, else to a private null sink.
pactl info >/dev/null 2>&1 || vell_start_pulse || true

out=$VELL_BUILD/demo
mkdir -p "$out"
rm -f "$out/VellDemo.log"
vell_log "running the demo for $seconds s on display $DISPLAY"
status=0
(cd "$out" && "$VELL_WINE" "$VELL_BUILD/win64/bin/VellDemo.exe" "$seconds") || status=$?

echo "demo log: $out/VellDemo.log"
[ -f "$out/VellDemo.log" ] && sed 's/^/  | /' "$out/VellDemo.log"
exit $status
