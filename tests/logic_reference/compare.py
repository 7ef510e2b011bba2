#!/usr/bin/env python3
"""Runs the decks of this folder and compares each edge of their levels, by name, level and time to 0.1 ns, with those
that Icarus Verilog (iverilog, vvp) found for the same circuit in NAME.v. Where it is installed, NAME.edges is made anew
first and must not have changed.

usage: compare.py TNL WORK"""
import pathlib
import shutil
import subprocess
import sys

tnl, work = sys.argv[1], pathlib.Path(sys.argv[2])
here = pathlib.Path(__file__).parent
shutil.rmtree(work, ignore_errors=True)
work.mkdir(parents=True)


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True, timeout=60).stdout


def reference(text):
    edges = [line.split() for line in text.splitlines() if "finish" not in line]
    return sorted((round(float(time), 1), name, level) for time, name, level in edges)


def edges_of(name):
    output_of(tnl, "run", "-q", str(here / f"{name}.in"), "-o", str(work / name))
    deck = (here / f"{name}.in").read_text(encoding="ascii").splitlines()
    columns = next(line for line in deck if line.startswith("variables:")).split()[1:]
    rows = [line.split() for line in (work / name / "levels.dat").read_text(encoding="ascii").splitlines()]
    edges = []
    for before, row in zip(rows, rows[1:]):
        for k, column in enumerate(columns, 1):
            if row[k] != before[k]:
                edges.append((round(float(row[0]) * 1e9, 1), column, row[k]))
    return sorted(edges)


faults = 0
names = sorted(path.stem for path in here.glob("*.v"))
for name in names:
    wanted = reference((here / f"{name}.edges").read_text(encoding="ascii"))
    if shutil.which("iverilog"):
        output_of("iverilog", "-o", str(work / f"{name}.vvp"), str(here / f"{name}.v"))
        if reference(output_of("vvp", "-n", str(work / f"{name}.vvp"))) != wanted:
            faults += 1
            print(f"{name}.edges is not what {name}.v gives")
    got = edges_of(name)
    if got != wanted or len(wanted) < 50:
        faults += 1
        print(f"{name}: {len(got)} edges against {len(wanted)}; in one alone: {sorted(set(got) ^ set(wanted))[:5]}")
    else:
        print(f"{name}: {len(got)} edges are equal")
sys.exit(1 if faults or len(names) != 3 else 0)
