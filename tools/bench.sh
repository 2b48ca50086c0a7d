#!/usr/bin/env bash
# Measures the compositing speed of the library (see the README's "Compositing speed"):
#   1. builds the native benchmark (bench/, Google Benchmark) in build/bench, Release, without
#      sanitizers, and runs it on one core: this library's loops on each path, pixman, SDL2 and
#      memcpy, every benchmark repeated VELL_BENCH_REPETITIONS times (default 9) in random order;
#      writes build/bench/compositing.json and prints a table of Mpixel/s (medians) with the
#      ratios the speed targets are about;
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
vell_log "building the benchmark in $out"
cmake -S . -B "$out" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_C_COMPILER=clang \
    -DCMAKE_CXX_COMPILER=clang++ -DVELL_WERROR=ON -DVELL_BUILD_TESTS=OFF -DVELL_BUILD_TOOLS=OFF \
    -DVELL_BUILD_BENCH=ON >/dev/null
cmake --build "$out" --target vell_bench >"$out/build.log" 2>&1 || { cat "$out/build.log"; exit 1; }

core=$(($(nproc) - 1))
vell_log "running it on core $core ($(uptime | sed 's/.*load/load/'))"
taskset -c "$core" "$out/bin/vell_bench" --benchmark_repetitions="${VELL_BENCH_REPETITIONS:-9}" \
    --benchmark_enable_random_interleaving=true --benchmark_min_time=0.05 \
    --benchmark_report_aggregates_only=true --benchmark_out="$out/compositing.json" \
    --benchmark_out_format=json >/dev/null 2>&1

# The table: one row per op and workload, Mpixel/s per implementation, then the ratios, and the
# speed targets with the worst ratio over the workloads.
python3 - "$out/compositing.json" "$(lscpu | sed -n 's/^Model name: *//p'), $(nproc) cores" <<'EOF'
import json, sys
data = json.load(open(sys.argv[1]))
ops = ["paint", "blend", "paint_const", "paint_colour", "print"]
loads = ["sprite64", "smooth256", "noise256", "frame640", "frame1080", "line40"]
impls = ["vell", "vell_avx2", "vell_sse2", "vell_scalar", "pixman", "sdl2", "memcpy"]
rate = {}  # (op, workload) -> impl -> Mpixel/s
for b in data["benchmarks"]:
    if b.get("aggregate_name") == "median" or b.get("repetitions") == 1:
        impl, op, load = b["run_name"].split("/")
        rate.setdefault((op, load), {})[impl] = b["items_per_second"] / 1e6
impls = [i for i in impls if any(i in r for r in rate.values())]
rows = sorted(rate, key=lambda k: (ops.index(k[0]), loads.index(k[1])))

def ratio(r, impl):  # against the better of pixman and SDL2, else the scalar loop
    other = max(r.get("pixman", 0), r.get("sdl2", 0)) or r["vell_scalar"]
    return r[impl] / other

print("Mpixel/s, median of %s runs, one core of %s" % (data["benchmarks"][0].get("repetitions"),
                                                       sys.argv[2]))
print("| op/workload | " + " | ".join(impls) + " | vell : best other | sse2 : best other |"
      " memcpy : vell |")
print("|---" + "|--:" * (len(impls) + 3) + "|")
for op, load in rows:
    r = rate[(op, load)]
    cells = ["%.0f" % r[i] if i in r else "" for i in impls]
    copy = "%.2f" % (r["memcpy"] / r["vell"]) if "memcpy" in r else ""
    print("| %s/%s | %s | %.1fx | %.1fx | %s |" % (op, load, " | ".join(cells), ratio(r, "vell"),
                                                 ratio(r, "vell_sse2"), copy))
print("best other: the better of pixman and SDL2; for print and the library-only ops the scalar "
      "loop\n")
targets = [("paint, run-time path, >= 8x the best other", "paint", "vell", 8),
           ("paint, SSE2, >= 3x the best other", "paint", "vell_sse2", 3),
           ("blend, run-time path, >= 6x the best other", "blend", "vell", 6),
           ("blend, SSE2, >= 2.5x the best other", "blend", "vell_sse2", 2.5),
           ("print, run-time path, >= 4x the scalar loop", "print", "vell", 4)]
for text, op, impl, want in targets:
    worst = min((ratio(rate[k], impl), k[1]) for k in rows if k[0] == op)
    print("%-50s worst %.1fx (%s): %s" % (text, worst[0], worst[1],
                                          "met" if worst[0] >= want else "MISSED"))
for load in ["frame640", "frame1080"]:
    r = rate[("paint", load)]
    print("%-50s memcpy %.2fx the paint: %s" % ("paint of " + load + " within 2x of memcpy",
                                               r["memcpy"] / r["vell"],
                                               "met" if r["memcpy"] <= 2 * r["vell"] else "MISSED"))
EOF

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
