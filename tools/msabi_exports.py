#!/usr/bin/env python3
"""Writes the Microsoft-ABI exports of VellBase.dll from include/VellBase.h.

Visual Studio clients name and call the DLL's functions the Microsoft way. clang prints both
manglings of every function of the header (GCC's, as MinGW exports them, and Microsoft's, for
i686 and x86_64); from them this script writes, into base/:

  msabi_i686.def, msabi_x86_64.def  the extra exports of each DLL: "<Microsoft name>" = <target>
  msabi_adapters.cpp                the adapters where the conventions differ

Each function of the header gets one rule, or the script fails:
  - plain members, destructors and free functions: the Microsoft name is an alias of GCC's;
  - constructors: an adapter that constructs and returns the object (Microsoft returns `this`);
  - members returning a class by value: an adapter taking `this` first and the result pointer
    second (GCC passes them the other way round), returning the result pointer;
  - variadic members: a hand-written adapter msabi_<Class>_<name> (base/TVellBase.cpp), since the
    arguments a Microsoft client passes differ in size (long double is a double there).
Anything else (virtual or static members, long double parameters, free functions returning a
class, exported data, extern "C" blocks, ...) has no rule and stops it.

  python3 tools/msabi_exports.py          rewrite the files
  python3 tools/msabi_exports.py --check  fail when they differ from what the header gives
                                         (whitespace aside: see main)
Needs clang++, MinGW-w64's headers and Wine's (libwine-dev) as the Microsoft target's SDK.
"""
import json
import os
import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
HEADER = os.path.join(ROOT, "include", "VellBase.h")
WINE = "/usr/include/wine/wine"
# Wine 8's winnt.h defines functions that clang knows as built-in Microsoft intrinsics.
WINE_CLASHES = ["_InterlockedCompareExchange128", "_InterlockedAnd64",
                "_InterlockedCompareExchangePointer", "_InterlockedExchangeAdd64",
                "_InterlockedExchangePointer", "_InterlockedIncrement64",
                "_InterlockedDecrement64", "_InterlockedOr64", "_InterlockedXor64"]
ARCHES = {"i686": "i686", "x86_64": "x86_64"}
VARIADIC_ADAPTED = {"TVellBase::DebugOut"}


def fail(message):
    sys.exit("msabi_exports: " + message)


def clang_args(arch, abi):
    args = ["clang++", "--target=%s-%s" % (arch, "w64-windows-gnu" if abi == "gnu" else
                                            "pc-windows-msvc"),
            "-std=c++17", "-fsyntax-only", "-Wno-ignored-attributes", "-Xclang", "-ast-dump=json"]
    if abi == "ms":
        resource = subprocess.run(["clang", "-print-resource-dir"], capture_output=True,
                                  text=True, check=True).stdout.strip()
        args += ["-nostdinc", "-isystem", WINE + "/msvcrt", "-isystem", WINE + "/windows",
                 "-isystem", resource + "/include"]
        args += ["-D%s=wine%s" % (name, name) for name in WINE_CLASHES]
    return args + ["-x", "c++", HEADER]


def header_decls(arch, abi):
    """The top-level declarations of the header itself (not of what it includes), as JSON."""
    proc = subprocess.Popen(clang_args(arch, abi), stdout=subprocess.PIPE,
                            stderr=subprocess.PIPE, text=True, bufsize=1 << 20)
    kept, current, ours = [], [], False
    marker = '        "file": "%s"' % HEADER
    for line in proc.stdout:  # top-level declarations are indented by 4 spaces
        if line.startswith("    {"):
            current = [line]
            continue
        current.append(line)
        if not ours and line.startswith(marker):
            ours = True  # the header's first own declaration; its includes come before it
        if line.startswith("    }") and ours:
            kept += current
    errors = proc.stderr.read()
    if proc.wait() != 0:
        fail("clang could not read the header for %s-%s:\n%s" % (arch, abi, errors))
    decls = json.loads("[" + "".join(kept).rstrip().rstrip(",") + "]")
    foreign = re.findall(r'"file": "([^"]+)"', json.dumps(decls))
    if any(f not in (HEADER, "<built-in>") for f in foreign):
        fail("unexpected declarations from %s after the header's own" % foreign)
    return decls


METHODS = ("CXXMethodDecl", "CXXConstructorDecl", "CXXDestructorDecl", "CXXConversionDecl")
PLAIN_MEMBERS = ("FieldDecl", "AccessSpecDecl", "FullComment")


def functions(decls):
    """(qualified name, declaration, class name or None) of every function the header declares."""
    for decl in decls:
        kind = decl.get("kind")
        if kind == "FunctionDecl":
            yield decl["name"], decl, None
        elif kind == "CXXRecordDecl":
            for member in decl.get("inner", []):
                if member.get("isImplicit") or member.get("explicitlyDeleted"):
                    continue
                if member["kind"] in METHODS:
                    yield decl["name"] + "::" + member["name"], member, decl["name"]
                elif member["kind"] not in PLAIN_MEMBERS and not member["kind"].endswith("Attr"):
                    fail("%s: no rule for a member %s" % (decl["name"], member["kind"]))
        elif kind != "FullComment" and not kind.endswith("Attr"):
            fail("no rule for a %s at the header's top level" % kind)


def ms_name(decl):
    name = decl["mangledName"]
    if decl["kind"] == "CXXDestructorDecl":  # clang names the complete destructor; clients call ??1
        name = re.sub(r"^\?\?_D", "??1", name)
        name = re.sub(r"XXZ$", "@XZ", name)
    return name


def rule(qualified, decl):
    kind, ms = decl["kind"], decl["mangledName"]
    if decl.get("virtual") or decl.get("storageClass") == "static" or decl.get("pure"):
        fail("%s: virtual and static members have no rule" % qualified)
    if "long double" in decl["type"]["qualType"]:
        fail("%s: long double differs in size between the two ABIs" % qualified)
    if decl.get("variadic"):
        if qualified not in VARIADIC_ADAPTED:
            fail("%s: a variadic function with no hand-written adapter" % qualified)
        return "variadic"
    if kind == "CXXConstructorDecl":
        return "constructor"
    if kind == "FunctionDecl":
        if re.search(r"@@Y[A-Z]\?A", ms):  # a class returned by value: not known to agree
            fail("%s: no rule for a free function returning a class" % qualified)
        return "alias"
    if kind == "CXXDestructorDecl":
        return "alias"
    if kind != "CXXMethodDecl":
        fail("%s: no rule for a %s" % (qualified, kind))
    # Microsoft marks a class returned by value with ?A after the access and calling convention.
    if re.search(r"@@Q(E?)[A-D][A-Z]\?A", ms):
        return "struct-return"
    if not re.search(r"@@Q(E?)[A-D][A-Z]", ms):
        fail("%s: an unexpected Microsoft name %s" % (qualified, ms))
    return "alias"


def params(decl):
    return [p["type"]["qualType"] for p in decl.get("inner", []) if p["kind"] == "ParmVarDecl"]


def adapter(qualified, decl, cls, kind, index):
    types = params(decl)
    name = "msabi_%s_%s" % (cls, "ctor%d" % index if kind == "constructor" else decl["name"])
    formals = "".join(", %s a%d" % (t, i) for i, t in enumerate(types))
    actuals = ", ".join("a%d" % i for i in range(len(types)))
    if kind == "constructor":
        return name, ("extern \"C\" VELL_MS_MEMBER %s *%s(%s *self%s) {\n"
                      "    return new (self) %s(%s);\n}\n" % (cls, name, cls, formals, cls,
                                                             actuals))
    result = decl["type"]["qualType"].split("(")[0].strip()
    return name, ("extern \"C\" VELL_MS_MEMBER %s *%s(%s *self, %s *result%s) {\n"
                  "    *result = self->%s(%s);\n    return result;\n}\n" %
                  (result, name, cls, result, formals, decl["name"], actuals))


ADAPTERS_HEAD = """\
// Generated by tools/msabi_exports.py from include/VellBase.h: do not edit.
//
// Adapters for Microsoft-ABI (Visual Studio) clients, exported under the Microsoft names by
// base/msabi_<arch>.def. A Microsoft constructor returns the object; a member returning a class
// takes `this` first and the result pointer second and returns the result pointer.
#include "VellBase.h"

#include <new>

#if defined(__i386__)
#define VELL_MS_MEMBER __attribute__((thiscall))
#else
#define VELL_MS_MEMBER
#endif

"""


def generate(formatted=True):
    jobs = [(arch, abi) for arch in ARCHES for abi in ("gnu", "ms")]
    with ThreadPoolExecutor(max_workers=2) as pool:
        dumps = dict(zip(jobs, pool.map(lambda job: list(functions(header_decls(*job))), jobs)))
    files, adapters, counters = {}, {}, {}
    for arch in ARCHES:
        gnu, ms = dumps[(arch, "gnu")], dumps[(arch, "ms")]
        if [q for q, _, _ in gnu] != [q for q, _, _ in ms]:
            fail("the two ABIs see different functions in the header")
        lines = ["; Generated by tools/msabi_exports.py from include/VellBase.h: do not edit.",
                 "; The Microsoft names of the %s DLL's functions, beside GCC's." % arch,
                 "EXPORTS"]
        for (qualified, gdecl, cls), (_, mdecl, _) in zip(gnu, ms):
            kind = rule(qualified, mdecl)
            gcc = gdecl["mangledName"]
            if arch == "i686":
                gcc = gcc[1:]  # the symbol's leading underscore; the .def adds it back
            if kind == "alias":
                target = gcc
            elif kind == "variadic":
                target = "msabi_%s_%s" % (cls, gdecl["name"])
            else:
                key = (qualified, gcc)
                if key not in adapters:
                    index = counters[cls] = counters.get(cls, 0) + (kind == "constructor")
                    adapters[key] = adapter(qualified, gdecl, cls, kind, index)
                target = adapters[key][0]
            lines.append('"%s" = %s' % (ms_name(mdecl), target))
        files["base/msabi_%s.def" % arch] = "\n".join(lines) + "\n"
        if len(lines) == 3:
            fail("the header declares no function")
    # One adapter source for both builds (the GCC names of the two differ only in the underscore).
    unique = {}
    for (qualified, _), (name, code) in adapters.items():
        unique.setdefault(name, code)
    source = ADAPTERS_HEAD + "\n".join(unique.values())
    if formatted:
        source = subprocess.run(
            ["clang-format", "--assume-filename=" + os.path.join(ROOT, "base", "x.cpp")],
            input=source, capture_output=True, text=True, check=True).stdout
    files["base/msabi_adapters.cpp"] = source
    return files


def tokens(text):
    return re.sub(r"\s+", "", text)


def main():
    check = "--check" in sys.argv[1:]
    # Another version of clang-format breaks the adapters' lines elsewhere, and a check must not
    # fail on that while the header is unchanged. Formatting only moves whitespace (this
    # .clang-format sorts no includes and adds no braces), so the check compares the files without
    # any, unformatted; the format test holds the adapters to the repository's style.
    files = generate(formatted=not check)
    same = (lambda a, b: tokens(a) == tokens(b)) if check else (lambda a, b: a == b)
    stale = []
    for path, text in files.items():
        full = os.path.join(ROOT, path)
        old = open(full).read() if os.path.exists(full) else None
        if old is not None and same(old, text):
            continue
        stale.append(path)
        if not check:
            with open(full, "w") as f:
                f.write(text)
    if check and stale:
        fail("out of date with include/VellBase.h: %s (run python3 tools/msabi_exports.py)" %
             ", ".join(stale))
    exports = files["base/msabi_x86_64.def"].count("\n") - 3
    print("msabi_exports: %d functions, %s" % (exports, "checked" if check else "written"))


if __name__ == "__main__":
    main()
