#!/usr/bin/env python3
# The tables of tools/bench.sh from Google Benchmark's JSON: the workloads (Mpixel/s, medians,
# with ratios), the width sweep, and every speed target with its worst case, met or missed.
# Usage: bench_table.py COMPOSITING.json SWEEP.json "MACHINE" GCC-VERSION
import json
import sys

table_json, sweep_json, machine, compiler = sys.argv[1:5]
ops = ["paint", "blend", "paint_const", "paint_colour", "print"]
loads = ["sprite64", "disc24", "disc40", "disc47", "smooth256", "noise256", "frame640",
         "frame1080", "line40"]
impls = ["vell", "vell_avx2", "vell_sse2", "vell_scalar", "pixman", "sdl2", "memcpy"]
paths = ["vell", "vell_avx2", "vell_sse2"]


def read(path):
    data = json.load(open(path))
    rate = {}  # (op, workload) -> impl -> Mpixel/s
    for b in data["benchmarks"]:
        if b.get("aggregate_name") == "median" or b.get("repetitions") == 1:
            impl, op, load = b["run_name"].split("/")
            rate.setdefault((op, load), {})[impl] = b["items_per_second"] / 1e6
    return rate, data["benchmarks"][0].get("repetitions")


rate, repetitions = read(table_json)
sweep, sweep_repetitions = read(sweep_json)
width = {load: int(load[1:4]) for _, load in sweep}
width.update({"disc24": 24, "disc40": 40, "disc47": 47, "sprite64": 64, "line40": 40})


def other(r):  # the better of pixman and SDL2, else the scalar loop
    return max(r.get("pixman", 0), r.get("sdl2", 0)) or r.get("vell_scalar", 0)


def ratio(r, impl):
    return r[impl] / other(r) if impl in r and other(r) else float("nan")


impls = [i for i in impls if any(i in r for r in rate.values())]
paths = [p for p in paths if any(p in r for r in sweep.values())]
rows = sorted(rate, key=lambda k: (ops.index(k[0]), loads.index(k[1])))
print("Mpixel/s, median of %s runs, one core of %s; the library built by GCC %s as the DLL is"
      % (repetitions, machine, compiler))
print("| op/workload | " + " | ".join(impls) + " | vell : best other | sse2 : best other |"
      " memcpy : vell |")
print("|---" + "|--:" * (len(impls) + 3) + "|")
for op, load in rows:
    r = rate[(op, load)]
    cells = ["%.0f" % r[i] if i in r else "" for i in impls]
    copy = "%.2f" % (r["memcpy"] / r["vell"]) if "memcpy" in r else ""
    print("| %s/%s | %s | %.1fx | %.1fx | %s |" % (op, load, " | ".join(cells), ratio(r, "vell"),
                                                 ratio(r, "vell_sse2"), copy))
print("best other: the better of pixman and SDL2 (for paint_colour and print pixman's "
      "over_n_8_0565); for paint_const the scalar loop\n")

print("Width sweep: noisy alpha, 256 rows, x = 128 / 129; Mpixel/s of the run-time path and each "
      "path's ratio to the best other, the worse of the two x (median of %s runs)"
      % sweep_repetitions)
head = ["paint " + p for p in paths] + ["blend " + p for p in paths] + \
       ["paint_colour " + p for p in paths]
print("| width | paint vell Mpixel/s | best other | " + " | ".join(head) + " |")
print("|--:" * (len(head) + 3) + "|")
for w in sorted(set(width[l] for _, l in sweep)):
    at = lambda op: [sweep[(op, "w%03d%s" % (w, x))] for x in "au"]
    cells = ["%.1fx" % min(ratio(r, p) for r in at(op))
             for op in ["paint", "blend", "paint_colour"] for p in paths]
    print("| %d | %.0f / %.0f | %.0f / %.0f | %s |" % (
        w, *(r["vell"] for r in at("paint")), *(other(r) for r in at("paint")), " | ".join(cells)))
print()

print("Worst width of each path in the sweep (ratio to the best other, width, x):")
groups = [("1-7", 1, 7), ("8-31", 8, 31), ("32-256", 32, 256)]
for op in ["paint", "blend", "paint_colour"]:
    for p in paths:
        parts = []
        for name, lo, hi in groups:
            got = [(ratio(r, p), l) for (o, l), r in sweep.items() if o == op and
                   lo <= width[l] <= hi]
            worst = min(got)
            parts.append("%s: %.1fx (%d%s)" % (name, worst[0], width[worst[1]],
                                                "u" if worst[1][-1] == "u" else "a"))
        print("  %-13s %-10s %s" % (op, p, ", ".join(parts)))
print()

# The targets: (text, cases, want). A case is one (op, workload) measurement and the ratio
# that counts for it.
everything = dict(rate)
everything.update(sweep)


def cases(op, lo, hi, impl="vell", only=None):
    return [(ratio(r, impl), l) for (o, l), r in everything.items()
            if o == op and l in width and lo <= width[l] <= hi and (only is None or only(l))]


noisy = lambda l: l.startswith("w") or l == "noise256"
sized = lambda l: not l.startswith("w")
targets = [
    ("paint, noisy alpha, widths 32-256, >= 8x the best other",
     cases("paint", 32, 9999, only=noisy), 8),
    ("paint, noisy alpha, widths 8-31, >= 4x the best other", cases("paint", 8, 31, only=noisy), 4),
    ("paint, round sprites 40-64 wide, >= 8x the best other",
     cases("paint", 32, 64, only=sized), 8),
    ("paint, round sprite 24 wide, >= 4x the best other", cases("paint", 24, 24, only=sized), 4),
    ("blend, widths 32-256, >= 10x the best other", cases("blend", 32, 9999), 10),
    ("blend, widths 8-31, >= 4x the best other", cases("blend", 8, 31), 4),
    ("paint_colour, widths 8 up, >= 4x pixman's over_n_8_0565", cases("paint_colour", 8, 9999),
     4),
    ("print, >= 4x pixman's over_n_8_0565", cases("print", 0, 9999), 4),
    ("paint, SSE2, every workload, >= 3x the best other",
     [(ratio(rate[k], "vell_sse2"), k[1]) for k in rows if k[0] == "paint"], 3),
    ("blend, SSE2, every workload, >= 2.5x the best other",
     [(ratio(rate[k], "vell_sse2"), k[1]) for k in rows if k[0] == "blend"], 2.5),
]
# Nothing slower than SSE2: every wider path against the SSE2 loop at the same size.
slower = [(everything[k][p] / everything[k]["vell_sse2"], "%s/%s %s" % (k[0], k[1], p))
          for k in everything for p in paths if p != "vell_sse2" and p in everything[k] and
          "vell_sse2" in everything[k]]
if slower:
    targets.append(("every path >= SSE2, every op, workload and width", slower, 1))
for text, got, want in targets:
    worst = min(got)
    print("%-58s worst %.2fx (%s): %s" % (text, worst[0], worst[1],
                                          "met" if worst[0] >= want else "MISSED"))
for load in ["frame640", "frame1080"]:
    r = rate[("paint", load)]
    print("%-58s memcpy %.2fx the paint: %s" % ("paint of " + load + " within 2x of memcpy",
                                               r["memcpy"] / r["vell"],
                                               "met" if r["memcpy"] <= 2 * r["vell"] else "MISSED"))
