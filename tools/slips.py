#!/usr/bin/env python3
"""Plants slips in the sources one at a time and records which tests catch each.

A slip is a small edit of the kind a developer makes by mistake (tools/slips.txt lists them). For
each one this script edits the file, builds the host tests and the x86_64 Windows test programs,
runs them, writes the file back and notes every test that failed. It ends with the slips no test
caught and, for each test, the slips only it caught: a test that catches nothing any other test
does not is a candidate for merging or removal, one that catches nothing at all cannot fail.

Run it in the Windows test environment, on a tree whose builds tools/test.sh has made:
    bash tools/with-wine.sh win64 python3 tools/slips.py [--only N,N-M...] [LIST]
The report goes to standard output and to build/slips.md. The sources are always written back,
also when the script is interrupted; the files a slip touches must have no uncommitted changes.
"""
import argparse
import collections
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
WIN_TARGETS = ["VellBase", "base_tests", "display_tests", "sound_tests", "image_tests",
               "text_tests", "long_run_tests", "switch_tests", "vell_demo", "vell_minimal"]
# The packaging routes and the font maker build whole projects: too slow to run for every slip.
WIN_SKIPPED = "client_|fontmaker"


def read_slips(path):
    """Blocks of '== FILE: what the slip is', then '-' lines (the text as it stands, unique in
    the file) and '+' lines (the text with the slip)."""
    slips, current = [], None
    for line in path.read_text().splitlines():
        if line.startswith("== "):
            file, _, what = line[3:].partition(": ")
            current = {"file": file, "what": what, "old": [], "new": []}
            slips.append(current)
        elif current and line.startswith(("-", "+")):
            current["old" if line[0] == "-" else "new"].append(line[1:])
    for s in slips:
        s["old"], s["new"] = "\n".join(s["old"]), "\n".join(s["new"])
    return slips


def run(command, timeout=900):
    try:
        done = subprocess.run(command, cwd=ROOT, capture_output=True, text=True, errors="replace",
                              timeout=timeout)
        return done.returncode, done.stdout + done.stderr
    except subprocess.TimeoutExpired as e:
        return -1, (e.stdout or b"").decode(errors="replace") + "\n(timed out)"


def failures():
    """The names of the tests that failed; a program that failed without naming a test (it
    crashed or hung) counts as a whole."""
    status, out = run(["cmake", "--build", "--preset", "host", "--target", "vell_host_tests"])
    if status != 0:
        return None
    status, out = run(["cmake", "--build", "--preset", "win64", "--target", *WIN_TARGETS])
    if status != 0:
        return None
    failed = set()
    _, out = run([str(ROOT / "build/host/bin/vell_host_tests"), "--gtest_brief=1"])
    failed |= {"host " + n for n in re.findall(r"^\[  FAILED  \] (\S+\.\S+)", out, re.M)}
    _, out = run(["ctest", "--preset", "win64", "-E", WIN_SKIPPED], timeout=1800)
    # ctest prints each failed program's output under its result line.
    for program, body in re.findall(r"Test +#\d+: (\S+) \.*\*\*\*[^\n]*\n(.*?)"
                                    r"(?=\n *(?:\d+/\d+ Test|Start +\d+:)|\n\d+% tests|\Z)",
                                    out, re.S):
        program = program.replace("_depth24", "")  # display_tests on the 24-bit screen
        names = set(re.findall(r"^\[  FAILED  \] (\S+\.\S+)", body, re.M))
        # A program that crashed or hung names no failed test: the one it was running is blamed.
        running = re.findall(r"^\[ RUN      \] (\S+)", body, re.M)
        if not names and running and f"[       OK ] {running[-1]}" not in body:
            names = {running[-1] + " (the program crashed or hung in it)"}
        failed |= {program + " " + n for n in names} or {program + " (the whole program)"}
    return failed


def all_tests():
    """Every test of the programs run, from the sources: "PROGRAM Suite.Name" ("host ..." for
    the host program)."""
    def named(files):
        found = set()
        for f in files:
            text = (ROOT / f).read_text()
            found |= {a + "." + b for a, b in re.findall(r"^TEST(?:_F)?\((\w+), (\w+)\)", text, re.M)}
        return found
    host = re.search(r"add_executable\(vell_host_tests(.*?)\)",
                     (ROOT / "tests/host/CMakeLists.txt").read_text(), re.S).group(1).split()
    tests = {"host " + n for n in named("tests/host/" + f for f in host)}
    win = (ROOT / "tests/win/CMakeLists.txt").read_text()
    for program, files in re.findall(r"^vell_win_test\((\w+) ([^)]*)\)", win, re.M):
        tests |= {program + " " + n for n in named("tests/win/" + f for f in files.split())}
    return tests


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("list", nargs="?", default=ROOT / "tools/slips.txt", type=pathlib.Path)
    parser.add_argument("--only", help="the slips to plant, by number (1 is the first)")
    args = parser.parse_args()
    slips = list(enumerate(read_slips(args.list), 1))
    if args.only:
        wanted = set()
        for part in args.only.split(","):
            first, _, last = part.partition("-")
            wanted |= set(range(int(first), int(last or first) + 1))
        slips = [(n, s) for n, s in slips if n in wanted]
    for n, s in slips:
        text = (ROOT / s["file"]).read_text()
        if text.count(s["old"]) != 1:
            sys.exit(f"slip {n} ({s['file']}): its text is not in the file exactly once")
        if run(["git", "diff", "--quiet", "--", s["file"]])[0] != 0:
            sys.exit(f"{s['file']} has uncommitted changes: commit or stash them first")

    base = failures()
    if base is None or base:
        sys.exit(f"the unchanged tree does not build or pass: {sorted(base or [])}")
    caught = {}
    for n, s in slips:
        path = ROOT / s["file"]
        original = path.read_text()
        try:
            path.write_text(original.replace(s["old"], s["new"]))
            caught[n] = failures()
        finally:
            path.write_text(original)
        found = "does not build" if caught[n] is None else ", ".join(sorted(caught[n])) or "-"
        print(f"{n}. {s['file']}: {s['what']}: {found}", flush=True)
    failures()  # the builds as the sources are again

    by_test = collections.defaultdict(list)
    for n, tests in caught.items():
        for t in tests or []:
            by_test[t.split(" (")[0]].append(n)
    lines = ["| slip | caught by |", "|---|---|"]
    for n, s in slips:
        found = caught[n]
        lines.append(f"| {n}. `{s['file']}`: {s['what']} | "
                     + ("does not build" if found is None else "<br>".join(sorted(found)) or
                        "**nobody**") + " |")
    never = sorted(all_tests() - set(by_test))
    lines += ["", "Tests that caught no slip: " + (", ".join(never) or "none"), "",
              "Slips only one test caught, by test:", ""]
    for t in sorted(by_test):
        alone = [n for n in by_test[t] if len(caught[n]) == 1]
        lines.append(f"- {t}: {len(by_test[t])} caught, alone {alone or 'none'}")
    report = "\n".join(lines)
    (ROOT / "build/slips.md").write_text(report + "\n")
    print("\n" + report)


if __name__ == "__main__":
    main()
