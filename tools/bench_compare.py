# Summarises tools/bench_compare.sh's runs: RUNS-DIRECTORY OLD-COMMIT.
import collections
import glob
import json
import statistics
import sys

runs, commit = sys.argv[1], sys.argv[2]


def medians(who):
    """The median over the rounds of each benchmark's median, in ns."""
    times = collections.defaultdict(list)
    for path in glob.glob("%s/*-%s-*.json" % (runs, who)):
        for b in json.load(open(path))["benchmarks"]:
            if b.get("aggregate_name") == "median":
                times[b["run_name"]].append(b["real_time"])
    return {name: statistics.median(t) for name, t in times.items()}


old, new = medians("old"), medians("new")
speed = {name: old[name] / new[name] for name in old if name in new}
groups = collections.defaultdict(list)
for name, s in speed.items():
    impl, op = name.split("/")[:2]
    groups[(impl, "sweep" if name.split("/")[2].startswith("w") else "sizes", op)].append(s)
print("This tree against %s: old time / new time (above 1: faster now)" % commit)
print("| path | benchmarks | operation | count | geometric mean | lowest | highest |")
print("|---|---|---|---|---|---|---|")
for (impl, kind, op), s in sorted(groups.items()):
    print("| %s | %s | %s | %d | %.3f | %.3f | %.3f |" % (impl, kind, op, len(s),
                                                        statistics.geometric_mean(s), min(s), max(s)))
print("Lost most: " + ", ".join("%s %.3f" % (n, s) for n, s in sorted(speed.items(),
                                                                        key=lambda i: i[1])[:5]))
for who, times in (("old", old), ("new", new)):
    worst = min((times["vell_sse2/" + name.split("/", 1)[1]] / t, name)
                for name, t in times.items() if name.split("/")[0] in ("vell", "vell_avx2") and
                "vell_sse2/" + name.split("/", 1)[1] in times)
    print("%s: the worst wider path against SSE2: %.2fx (%s)" % (who, worst[0], worst[1]))
