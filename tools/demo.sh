#!/usr/bin/env bash
# Builds the demo (x86_64) and runs it under wine64, installing what it needs first.
# With DISPLAY set it shows on that screen; otherwise it runs on a private 16-bit Xvfb screen.
# Its log, a screenshot and (on the private sound server) a recording are left in build/demo.
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
    vell_start_xvfb DISPLAY 16
    own_screen=yes
fi
# Sound goes to the user's own sound server when there is one, else to a private null sink,
# whose monitor is recorded to build/demo/sound.wav.
own_sink=no
if ! pactl info >/dev/null 2>&1; then
    vell_start_pulse && own_sink=yes
fi

out=$VELL_BUILD/demo
mkdir -p "$out"
rm -f "$out/VellDemo.log"
vell_log "running the demo for $seconds s on display $DISPLAY"
rm -f "$out/screenshot.png" "$out/sound.wav"
if [ "$own_sink" = yes ]; then
    parec -d vell_sink.monitor --rate=22050 --channels=1 --format=s16le --file-format=wav \
        "$out/sound.wav" &
    VELL_CLEANUP+=("kill $!")
fi
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
if [ "$own_sink" = yes ]; then
    sleep 0.5
    vell_cleanup_last # stops the recording
    [ -s "$out/sound.wav" ] && echo "sound: $out/sound.wav (what the demo played; peak" \
        "$(sox "$out/sound.wav" -n stat 2>&1 | awk '/Maximum amplitude/ { print $3 }') of full scale)"
fi
exit $status
