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
own_screen=no
if [ -z "${DISPLAY:-}" ]; then
    DISPLAY=$(vell_start_xvfb 16)
    export DISPLAY
    own_screen=yes
fi
# Sound goes to the user's own sound server when there is one, else to a private null sink.
pactl info >/dev/null 2>&1 || vell_start_pulse || true

out=$VELL_BUILD/demo
mkdir -p "$out"
rm -f "$out/VellDemo.log"
vell_log "running the demo for $seconds s on display $DISPLAY"
rm -f "$out/screenshot.png"
(cd "$out" && exec "$VELL_WINE" "$VELL_BUILD/win64/bin/VellDemo.exe" "$seconds") &
demo=$!
# The screenshot is taken half way through the run (Wine takes about two seconds to start).
sleep "$(awk -v s="$seconds" 'BEGIN { print 2 + s / 2 }')"
# On the private screen Wine's desktop shows the 640x480 display at the top left.
crop=()
[ "$own_screen" = yes ] && crop=(-crop 640x480+0+0 +repage)
import -display "$DISPLAY" -window root "${crop[@]}" "$out/screenshot.png" 2>/dev/null ||
    vell_log "no screenshot: ImageMagick's import failed"
status=0
wait "$demo" || status=$?

echo "demo log: $out/VellDemo.log"
[ -f "$out/VellDemo.log" ] && sed 's/^/  | /' "$out/VellDemo.log"
[ -f "$out/screenshot.png" ] && echo "screenshot: $out/screenshot.png"
exit $status
