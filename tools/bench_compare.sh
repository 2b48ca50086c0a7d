#!/usr/bin/env bash
# Whether a change made the loops slower: this tree's benchmark against an earlier commit's.
#   bash tools/bench_compare.sh COMMIT [ROUNDS]
# Builds the benchmark of COMMIT in a detached git worktree (build/compare/src) and this tree's
# (preset bench), both as tools/bench.sh builds it, then runs this library's benchmarks of each in
# turn, ROUNDS times (default 4), alternating which goes first, on one core: a slow spell of a
# shared machine then falls on both. A single run of tools/bench.sh moves by up to a third from one
# run to the next on a virtual machine; the alternating medians settle within a few percent.
# Prints, for each path and operation, the geometric mean of the old time over the new one (above
# 1: this tree is faster) with its spread, the benchmarks that lost most, and each version's worst
# ratio of a wider path to SSE2 (tools/bench_compare.py). Measure on an otherwise idle machine.
# VELL_COMPARE_INSTRUCTIONS="NAME..." also counts, with callgrind, the instructions that one
# iteration of each named benchmark (e.g. vell_sse2/paint/disc47), with what the benchmark
# framework does around it, executes in either version: a count that no other work on the machine
# changes (valgrind has no AVX-512).
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
cd "$VELL_ROOT"
commit=$(git rev-parse --short "${1:?usage: tools/bench_compare.sh COMMIT [ROUNDS]}")
rounds=${2:-4}
VELL_PACKAGES+=(libpixman-1-dev libsdl2-dev valgrind)
vell_install_packages

out=build/compare
src=$out/src
rm -rf "$out/runs" && mkdir -p "$out/runs"
git worktree remove --force "$src" >/dev/null 2>&1 || rm -rf "$src"
git worktree add --detach "$src" "$commit" >/dev/null
VELL_CLEANUP+=("git -C '$VELL_ROOT' worktree remove --force '$src'")
vell_log "building the benchmark of $commit in $src and of this tree (preset bench)"
for dir in "$src" .; do
    (cd "$dir" && cmake -S . -B build/bench -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DCMAKE_C_COMPILER=gcc -DCMAKE_CXX_COMPILER=g++ -DVELL_WERROR=ON -DVELL_BUILD_TESTS=OFF \
        -DVELL_BUILD_TOOLS=OFF -DVELL_BUILD_BENCH=ON >/dev/null &&
        cmake --build build/bench --target vell_bench >/dev/null) ||
        { vell_log "the benchmark of $dir does not build"; exit 1; }
done

declare -A binary=([old]="$src/build/bench/bin/vell_bench" [new]=build/bench/bin/vell_bench)
core=$(($(nproc) - 1))
for ((r = 1; r <= rounds; r++)); do
    order=(old new)
    ((r % 2)) || order=(new old)
    for who in "${order[@]}"; do
        vell_log "round $r of $rounds: $who ($(uptime | sed 's/.*load/load/'))"
        for part in "main 0.05 ^vell[^/]*/[^/]*/[^w]" "sweep 0.01 ^vell[^/]*/(paint|blend)/w[0-9]"; do
            set -- $part
            taskset -c "$core" "${binary[$who]}" --benchmark_repetitions=3 \
                --benchmark_enable_random_interleaving=true --benchmark_min_time="$2" \
                --benchmark_filter="$3" --benchmark_report_aggregates_only=true \
                --benchmark_out="$out/runs/$1-$who-$r.json" --benchmark_out_format=json >/dev/null 2>&1
        done
    done
done
python3 tools/bench_compare.py "$out/runs" "$commit"

# Instructions of one iteration: the run of the benchmark less the run of none (the set-up).
count() {
    valgrind --tool=callgrind --callgrind-out-file=/dev/null "$1" --benchmark_filter="$2" \
        --benchmark_min_time=0 --benchmark_repetitions=1 2>&1 >/dev/null |
        sed -n 's/.*Collected : //p' || true
}
[ -n "${VELL_COMPARE_INSTRUCTIONS:-}" ] && vell_log "counting instructions (callgrind)"
for name in ${VELL_COMPARE_INSTRUCTIONS:-}; do
    for who in old new; do
        declare "n_$who=$(($(count "${binary[$who]}" "^$name\$") - $(count "${binary[$who]}" '^$')))"
    done
    echo "$name: $n_old instructions at $commit, $n_new now"
done
