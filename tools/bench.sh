#!/usr/bin/env bash
# Measures the compositing speed of the library (docs/performance.md):
#   1. builds the native benchmark (bench/, Google Benchmark) in build/bench (preset bench) with
#      GCC and the flags the DLL is built with (RelWithDebInfo: -O2, and the per-file -mavx2 and
#      -mavx512bw -mavx512vl of the AVX2 and AVX-512 loops), without sanitizers, and runs it on
#      one core: this library's loops on each path, pixman, SDL2 and memcpy, every benchmark
#      repeated VELL_BENCH_REPETITIONS times (default 9) in random order, then the width sweep
#      (widths 1 to 256, VELL_SWEEP_REPETITIONS times, default 5, with a shorter minimum time);
#      writes build/bench/compositing.json and sweep.json and prints a table of Mpixel/s
#      (medians), the sweep's summary and each speed target with its worst case, and draws the
#      sweep (paint and blend against the width, each path beside pixman and SDL2) in
#      build/bench/sweep.png;
#   2. builds bench/win/paint_call.cpp for each Windows build in build/bench-<build> (presets
#      bench-win32 and bench-win64) and runs it under Wine on a 16-bit screen: what a whole Paint
#      call on the back buffer costs beyond its loop (VELL_BENCH_WINE=0 skips this part).
# Measure on an otherwise idle machine: other work on the same cores changes the numbers.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
cd "$VELL_ROOT"

VELL_PACKAGES+=(libpixman-1-dev libsdl2-dev python3-matplotlib)
vell_install_packages

# Built through the presets bench, bench-win32 and bench-win64 (CMakePresets.json), in build/.
# preset PRESET: configures and builds one, showing the build's output only when it fails.
preset() {
    local dir=build/$1
    mkdir -p "$dir"
    { cmake --preset "$1" && cmake --build --preset "$1"; } >"$dir/build.log" 2>&1 ||
        { cat "$dir/build.log"; exit 1; }
}
out=build/bench
vell_log "building the benchmark in $out (GCC, as the DLL)"
preset bench

core=$(($(nproc) - 1))
bench() { # bench JSON REPETITIONS MIN-TIME FILTER
    taskset -c "$core" "$out/bin/vell_bench" --benchmark_repetitions="$2" \
        --benchmark_enable_random_interleaving=true --benchmark_min_time="$3" \
        --benchmark_filter="$4" --benchmark_report_aggregates_only=true \
        --benchmark_out="$out/$1" --benchmark_out_format=json >/dev/null 2>&1
}
vell_log "running it on core $core ($(uptime | sed 's/.*load/load/'))"
bench compositing.json "${VELL_BENCH_REPETITIONS:-9}" 0.05 '^[^/]*/[^/]*/[^w]'
vell_log "the width sweep on core $core ($(uptime | sed 's/.*load/load/'))"
bench sweep.json "${VELL_SWEEP_REPETITIONS:-5}" 0.01 '/w[0-9]'

machine="$(lscpu | sed -n 's/^Model name: *//p'), $(nproc) cores"
python3 tools/bench_table.py "$out/compositing.json" "$out/sweep.json" "$machine" \
    "$(g++ -dumpfullversion)"
# Debian's Python, which has Debian's matplotlib (another python3 may come first in PATH).
/usr/bin/python3 tools/bench_plot.py "$out/sweep.json" "$out/sweep.png" "$machine"
vell_log "the sweep's picture: $out/sweep.png (docs/performance-sweep.png shows the last one)"

[ "${VELL_BENCH_WINE:-1}" = 1 ] || exit 0
builds=(win64)
[ "$VELL_WIN32" = 1 ] && builds=(win32 win64)
vell_start_xvfb DISPLAY 16
for b in "${builds[@]}"; do
    dir=build/bench-$b
    vell_log "timing Paint calls under Wine: the $b build in $dir"
    preset "bench-$b"
    vell_wine_prefix "$b"
    "$VELL_WINE" "$dir/bin/vell_paint_call.exe"
    VELL_SIMD=sse2 "$VELL_WINE" "$dir/bin/vell_paint_call.exe" # what the oldest processors get
done
