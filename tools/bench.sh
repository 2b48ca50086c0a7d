#!/usr/bin/env bash
# Measures the compositing speed of the library (docs/performance.md):
#   1. builds the native benchmark (bench/, Google Benchmark) in build/bench with GCC and the
#      flags the DLL is built with (RelWithDebInfo: -O2, and the per-file -mavx2 and
#      -mavx512bw -mavx512vl of the AVX2 and AVX-512 loops), without sanitizers, and runs it on
#      one core: this library's loops on each path, pixman, SDL2 and memcpy, every benchmark
#      repeated VELL_BENCH_REPETITIONS times (default 9) in random order, then the width sweep
#      (widths 1 to 256, VELL_SWEEP_REPETITIONS times, default 5, with a shorter minimum time);
#      writes build/bench/compositing.json and sweep.json and prints a table of Mpixel/s
#      (medians), the sweep's summary and each speed target with its worst case;
#   2. builds bench/win/paint_call.cpp for each Windows build in build/bench-<build> and runs it
#      under Wine on a 16-bit screen: what a whole Paint call on the back buffer costs beyond its
#      loop (VELL_BENCH_WINE=0 skips this part).
# Measure on an otherwise idle machine: other work on the same cores changes the numbers.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
cd "$VELL_ROOT"

VELL_PACKAGES+=(libpixman-1-dev libsdl2-dev)
vell_install_packages

out=$VELL_BUILD/bench
vell_log "building the benchmark in $out (GCC, as the DLL)"
cmake -S . -B "$out" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=gcc \
    -DCMAKE_CXX_COMPILER=g++ -DVELL_WERROR=ON -DVELL_BUILD_TESTS=OFF -DVELL_BUILD_TOOLS=OFF \
    -DVELL_BUILD_BENCH=ON >/dev/null
cmake --build "$out" --target vell_bench >"$out/build.log" 2>&1 || { cat "$out/build.log"; exit 1; }

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

python3 "$VELL_ROOT/tools/bench_table.py" "$out/compositing.json" "$out/sweep.json" \
    "$(lscpu | sed -n 's/^Model name: *//p'), $(nproc) cores" "$(g++ -dumpfullversion)"

[ "${VELL_BENCH_WINE:-1}" = 1 ] || exit 0
builds=(win64)
[ "$VELL_WIN32" = 1 ] && builds=(win32 win64)
declare -A toolchain=([win32]=cmake/mingw-i686.cmake [win64]=cmake/mingw-x86_64.cmake)
vell_start_xvfb DISPLAY 16
for b in "${builds[@]}"; do
    dir=$VELL_BUILD/bench-$b
    vell_log "timing Paint calls under Wine: the $b build in $dir"
    if [ ! -f "$dir/CMakeCache.txt" ]; then # the toolchain is only read by a first configure
        cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
            -DCMAKE_TOOLCHAIN_FILE="${toolchain[$b]}" -DVELL_WERROR=ON -DVELL_BUILD_TESTS=OFF \
            -DVELL_BUILD_TOOLS=OFF -DVELL_BUILD_BENCH=ON >/dev/null
    fi
    cmake --build "$dir" --target vell_paint_call >"$dir/build.log" 2>&1 ||
        { cat "$dir/build.log"; exit 1; }
    vell_wine_prefix "$b"
    "$VELL_WINE" "$dir/bin/vell_paint_call.exe"
    VELL_SIMD=sse2 "$VELL_WINE" "$dir/bin/vell_paint_call.exe" # what the oldest processors get
done
