#!/usr/bin/env python3
"""No folder of src/ includes one behind it in the order of the road.

    tests/layers.py src
"""
import pathlib
import re
import sys

ROAD = """base deck library library/generate library/basic library/composite models elaborate sparse settings output analyses
run tnl/common tnl/deck tnl/elements tnl/check tnl/run tnl/results tnl/plot tnl/view tnl/cli""".split()
# The front end knows the simulator's readers and nothing of its solvers.
NOT_OF_THE_FRONT_END = ["models", "sparse", "output", "analyses", "run"]
OWN_INCLUDE = re.compile(r'^#include "([^"]+)/[^"/]+"', re.MULTILINE)


def faults_of(source):
    for path in sorted(source.rglob("*.[ch]*")):
        if path.suffix not in (".h", ".cpp") or path.name == "generate_main.cpp":  # a program, behind all of library/
            continue
        folder = path.parent.relative_to(source).as_posix()
        if folder not in ROAD:
            yield f"{path}: the folder {folder} is not in the order of {__file__}"
            continue
        for other in OWN_INCLUDE.findall(path.read_text(encoding="utf-8")):
            if other not in ROAD:
                yield f"{path}: includes a folder that is not there, {other}"
            elif ROAD.index(other) > ROAD.index(folder):
                yield f"{path}: {folder} stands before {other} and must not include it"
            elif folder.startswith("tnl/") and other in NOT_OF_THE_FRONT_END:
                yield f"{path}: the front end includes {other}"


faults = list(faults_of(pathlib.Path(sys.argv[1])))
print("\n".join(faults))
sys.exit(1 if faults else 0)
