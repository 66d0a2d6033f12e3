#!/usr/bin/env python3
"""check_exports.py LIBRARY SRC: fails when the library exports a name that no installed header shows.

Every exported symbol of Cordel's must be reachable from the public headers: no component of its
qualified name may be `detail`, and every other component must be a name an installed header
spells out.
"""
import pathlib
import re
import subprocess
import sys

library, src = sys.argv[1], pathlib.Path(sys.argv[2])
words = set()
for header in (src / "Cordel").rglob("*.h"):
    if "detail" not in header.parts:
        words.update(re.findall(r"[A-Za-z_]\w*", header.read_text(errors="replace")))

def without_templates(name):
    depth, out = 0, []
    for c in name:
        depth += c == "<"
        if depth == 0:
            out.append(c)
        depth -= c == ">"
    return "".join(out)

problems = []
listing = subprocess.run(["nm", "-D", "--defined-only", "-C", library], check=True, capture_output=True, text=True)
for line in listing.stdout.splitlines():
    symbol = line.split(" ", 2)[-1]
    symbol = re.sub(r"^(typeinfo name for|typeinfo for|vtable for|VTT for|guard variable for) ", "", symbol)
    if not symbol.startswith("Cordel::"):
        continue
    name = without_templates(symbol.split("(", 1)[0]).replace("[abi:cxx11]", "")
    for part in name.split("::"):
        if part == "detail" or (re.fullmatch(r"[A-Za-z_]\w*", part) and part not in words):
            problems.append(symbol)
            break

if problems:
    print("Exported but not public:\n  " + "\n  ".join(sorted(set(problems))))
    sys.exit(1)
