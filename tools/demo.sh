#!/usr/bin/env bash
# Builds the demo and runs it under Wine, installing what it needs first. By default it runs the
# i686 build, VellBase.dll as it ships, under 32-bit Wine; --win64 runs the x86_64 build under
# wine64 instead (also the fallback where this machine cannot run 32-bit programs).
# With DISPLAY set it shows on that screen; otherwise it runs on a private 16-bit Xvfb screen.
# Its log, a screenshot and (on the private sound server) a recording are left in build/demo.
#   tools/demo.sh [--win64] [seconds]
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
cd "$VELL_ROOT"
build=win32
if [ "${1:-}" = --win64 ]; then
    build=win64
    shift
fi
seconds=${1:-3}

vell_install_packages
if [ "$build" = win32 ] && [ "$VELL_WIN32" != 1 ]; then
    vell_log "running the x86_64 build instead"
    build=win64
fi
cmake --preset "$build" >/dev/null
cmake --build --preset "$build" --target vell_demo VellBase

vell_wine_prefix "$build"
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
rm -f "$out/VellDemo.log" "$out/screenshot.png" "$out/sound.wav"
vell_log "running the $build demo for $seconds s on display $DISPLAY"
if [ "$own_sink" = yes ]; then
    # A small latency: with parec's default (two seconds) the idle null sink hands its monitor's
    # audio over in blocks that long, and when the demo's stream starts and the sink changes its
    # latency, the first block of sound never reaches the recording: the scene's opening sound
    # went missing from it although it played.
    parec --latency-msec=20 -d vell_sink.monitor --rate=22050 --channels=1 --format=s16le \
        --file-format=wav "$out/sound.wav" &
    VELL_CLEANUP+=("kill $!")
fi
(cd "$out" && exec "$VELL_WINE" "$VELL_BUILD/$build/bin/VellDemo.exe" "$seconds") &
demo=$!
# The screenshot is taken half way through the scene, counted from the demo's log line that opens
# it (Wine takes a few seconds to start, more on a busy machine).
for ((i = 0; i < 600; i++)); do
    grep -qs '^VellDemo: the scene opens' "$out/VellDemo.log" && break
    kill -0 "$demo" 2>/dev/null || break
    sleep 0.1
done
sleep "$(awk -v s="$seconds" 'BEGIN { print s / 2 }')"
# On the private screen Wine's desktop shows the 640x480 display at the top left.
crop=()
[ "$own_screen" = yes ] && crop=(-crop 640x480+0+0 +repage)
import -display "$DISPLAY" -window root "${crop[@]}" "$out/screenshot.png" 2>/dev/null ||
    vell_log "no screenshot: ImageMagick's import failed"
status=0
wait "$demo" || status=$?

echo "demo ($build build) log: $out/VellDemo.log"
[ -f "$out/VellDemo.log" ] && sed 's/^/  | /' "$out/VellDemo.log"
[ -f "$out/screenshot.png" ] && echo "screenshot: $out/screenshot.png"
if [ "$own_sink" = yes ]; then
    sleep 0.5
    vell_cleanup_last # stops the recording
    peak=$(sox "$out/sound.wav" -n stat 2>&1 | awk '/Maximum amplitude/ { print $3 }')
    # Sounds heard: stretches above 1% of full scale after at least 50 ms below it (sounds that
    # overlap count once). The demo logs how many it started.
    heard=$(sox "$out/sound.wav" -t dat - 2>/dev/null | awk '
        !/^;/ { a = $2 < 0 ? -$2 : $2
                if (a > 0.01) { if (quiet >= 1103) n++; quiet = 0 } else quiet++ }
        BEGIN { quiet = 1103 } END { print n + 0 }')
    started=$(sed -nE 's/^VellDemo: ([0-9]+) sounds? started.*/\1/p' "$out/VellDemo.log" 2>/dev/null)
    if awk -v p="${peak:-0}" 'BEGIN { exit !(p > 0.001) }'; then
        echo "sound: heard $heard separate sounds (the demo started ${started:-?}; overlapping ones sound as one), peak $peak of full scale: $out/sound.wav"
    else
        echo "sound: SILENT - nothing was heard on the private sound server ($out/sound.wav)"
        status=1
    fi
fi
exit $status
