#!/usr/bin/env python3
# The picture of tools/bench.sh's width sweep: paint and blend, Mpixel/s against the sprite's
# width, each of this library's paths beside pixman and SDL2. At each width the worse of the two
# positions (x = 128 and 129) counts, as in the tables. Needs matplotlib (python3-matplotlib).
# Usage: bench_plot.py SWEEP.json OUT.png "MACHINE"
import json
import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402 (after the back end is chosen)
from matplotlib.ticker import FixedLocator, LogLocator, NullLocator, ScalarFormatter  # noqa: E402

sweep_json, out, machine = sys.argv[1:4]
rate = {}  # (impl, op, width, position) -> Mpixel/s
data = json.load(open(sweep_json))
for b in data["benchmarks"]:
    if b.get("aggregate_name") == "median" or b.get("repetitions") == 1:
        impl, op, load = b["run_name"].split("/")
        rate[(impl, op, int(load[1:4]), load[4])] = b["items_per_second"] / 1e6
repetitions = data["benchmarks"][0].get("repetitions")

lines = [("vell", "this library, the widest path here", "#c0392b", "-"),
         ("vell_avx2", "this library, AVX2", "#e67e22", "-"),
         ("vell_sse2", "this library, SSE2", "#d4ac0d", "-"),
         ("pixman", "pixman", "#2471a3", "--"),
         ("sdl2", "SDL2", "#7d3c98", "--")]
ops = [("paint", "Paint: per-pixel alpha"), ("blend", "Blend: per-pixel alpha, opacity 100")]
figure, axes = plt.subplots(1, 2, figsize=(11, 5), sharey=True)
for axis, (op, title) in zip(axes, ops):
    for impl, label, colour, style in lines:
        widths = sorted({w for (i, o, w, _) in rate if i == impl and o == op})
        if not widths:
            continue
        worse = [min(rate[(impl, op, w, p)] for p in "au" if (impl, op, w, p) in rate)
                 for w in widths]
        axis.plot(widths, worse, style, color=colour, label=label, linewidth=1.6,
                  marker=".", markersize=4)
    axis.set_title(title, fontsize=11)
    axis.set_xscale("log", base=2)
    axis.set_yscale("log")
    axis.xaxis.set_major_locator(FixedLocator([1, 2, 4, 8, 16, 32, 64, 128, 256]))
    axis.xaxis.set_major_formatter(ScalarFormatter())
    axis.xaxis.set_minor_locator(NullLocator())
    axis.yaxis.set_major_locator(LogLocator(subs=(1, 2, 5)))
    axis.yaxis.set_major_formatter(ScalarFormatter())
    axis.yaxis.set_minor_locator(NullLocator())
    axis.set_xlabel("sprite width, pixels (256 rows)")
    axis.grid(True, which="both", color="#dddddd", linewidth=0.6)
axes[0].set_ylabel("Mpixel/s (log scale)")
handles, labels = axes[0].get_legend_handles_labels()
figure.legend(handles, labels, loc="lower center", ncol=len(labels), fontsize=9, frameon=False)
figure.suptitle("Width sweep, noisy alpha onto 5:6:5, one core of %s; median of %s runs, the "
                "worse of x = 128 and 129" % (machine, repetitions), fontsize=10)
figure.tight_layout(rect=(0, 0.06, 1, 1))
figure.savefig(out, dpi=90)
