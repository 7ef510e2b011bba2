#!/usr/bin/env python3
"""The limits that element files tell (#= limit ...) are those of their models: a value that breaks one is told by
`tnl check`, and the run stops with a text of the model.

    tests/cli/model_limits.py TNL FOLDER FAMILY VALUES

VALUES: how many values break each limit. With one, what check says is read from the run that stops, which saves a
process for each.
"""
import json
import pathlib
import re
import subprocess
import sys

FILES = {"angles.txt": "2\n1e-3\n2e-3\n"}  # that examples name

tnl, work = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2])
most = int(sys.argv[4])
work.mkdir(parents=True, exist_ok=True)
for file, text in FILES.items():
    (work / file).write_text(text, encoding="ascii")
NAME = re.compile(r"(?<![\w.])[A-Za-z_]\w*")
SCALES = {"k": "e3", "u": "e-6", "m": "e-3", "M": "e6", "n": "e-9", "p": "e-12", "f": "e-15"}


def number(text):
    return float(text[:-1] + SCALES[text[-1]] if text[-1] in SCALES else text)


def run(*words):
    done = subprocess.run([tnl, *words], cwd=work, capture_output=True, text=True, check=False, timeout=60)
    return done.returncode, done.stdout, done.stderr


def deck(sheet, values):
    """With the element of the first example, these values in place of its own."""
    words = sheet["examples"][0].split()
    words = [w for w in words if w.split("=")[0] not in values] + [f"{k}={v:.12g}" for k, v in values.items()]
    if sheet["family"] == "x":
        diagram(sheet, words)
        return
    nodes = [w.split("=")[1] for w in words if w.split("=")[0] in terminals(sheet, "node")]
    sensed = [w.split("=")[1] for w in words if w.split("=")[0] in terminals(sheet, "sensed node")]
    reference = nodes[0] if nodes else "a"
    lines = ["title: t", "begin_circuit", f"refnode {reference}", f"eelement name=R_1 type=r p={reference} n=b_1"]
    lines += [f"eelement name=R_{n} type=r p={reference} n={n}" for n in {*nodes, *sensed} - {reference}]
    if sheet["family"] == "e":
        lines += [f"gelement name=B_{w.split('=')[1]} type=const y={w.split('=')[1]}"
                  for w in words if w.split("=")[0] in terminals(sheet, "variable")]
        lines += [f"delement name=D_{w.split('=')[1]} type=dsrc y={w.split('=')[1]}"
                  for w in words if w.split("=")[0] in terminals(sheet, "digital node")]
    lines += [" ".join(words), "end_circuit", "begin_solve", "solve_type startup", "end_solve", "end_cf", ""]
    (work / "d.in").write_text("\n".join(lines), encoding="ascii")


def diagram(sheet, words):
    given = dict(w.split("=") for w in words[1:])
    outputs = {o["name"] for o in sheet["outputs"]}
    inputs = {given[t] for t in terminals(sheet, "variable") if t not in outputs}
    network = []
    if sheet["group"] == "electrical":
        p, n = given["p"], given["n"]
        inputs -= {p, n}
        network = [f"x_refnode {n}", f"xelement name=R_1 type=e_r p={p} n={n} i=i_1"]
    lines = ["title: t", "begin_circuit", "xelement name=C_1 type=const y=x_1", "xelement name=I_1 type=intgrtr x=x_1 y=y_1"]
    lines += [f"xelement name=C_{n} type=const y={n}" for n in inputs]
    lines += [*network, " ".join(words), "end_circuit", "begin_solve", "solve_type trns",
              "method: RK4=yes t_end=1m delt_const_x=0.5m", "end_solve", "end_cf", ""]
    (work / "d.in").write_text("\n".join(lines), encoding="ascii")


def terminals(sheet, kind):
    return [t["name"] for t in sheet["terminals"] if t["kind"] == kind]


faults = n_tried = 0
for sheet in json.loads(run("describe", "--all", "--json")[1]):
    if sheet["family"] != sys.argv[3] or not sheet["rules"]["limits"]:
        continue
    given = {p["name"]: number(p["default"]) for p in [*sheet["parameters"], *sheet["start_values"]]
             if p.get("kind") != "text"}
    whole = {p["name"] for p in sheet["parameters"] if p["kind"] == "integer"}
    whole |= {p["name"] for p in sheet["start_values"] if sheet["family"] == "d"}
    given |= {k: number(v) for k, v in (w.split("=") for w in sheet["examples"][0].split()[1:]) if k in given}
    deck(sheet, {})
    sound = run("run", "d.in")[1].splitlines()[:4]
    for text in sheet["rules"]["limits"]:
        limit = text.replace("[k+1]", "2").replace("[k]", "1")
        condition = limit.partition(" if ")
        name = NAME.findall(condition[0])[0]
        others = {"per": 1e-3, "pw": 0.5e-3} if "per" in condition[0] and "pw" in condition[0] else {}
        near = [float(x) for x in re.findall(r"(?<![\w.])-?\d[\d.e-]*(?![\w.])", limit)]
        near += [eval(side, {}, {**given, **others}) for side in re.split(r" (?:[<>!]=?|if) ", condition[0])]
        tried = 0
        for x in sorted({y for z in near for y in (z, z * 1.001, z * 0.999, -z, z - 1, z + 1)} | {0.0, -1.0}):
            x = round(x) if name in whole else x
            values = {**given, **others, name: float(f"{x:.12g}")}
            is_rounded = re.search("[<>]=", limit) and any(abs(x - z) <= 1e-9 * abs(z) for z in near)
            if is_rounded or eval(condition[0], {}, values) or (condition[2] and not eval(condition[2], {}, values)):
                continue
            tried += 1
            if tried > most:
                break
            deck(sheet, {**others, name: x})
            run_ = run("run", "d.in")
            # Behind a stop a run tells what check says.
            told = [line for line in (run_[1] + run_[2]).splitlines() if f"does not take {name}=" in line]
            if most > 1:
                told = [f for f in json.loads(run("check", "--json", "d.in")[1]) if f["code"] == "bad-value"]
            if not told or run_[0] == 0 or run_[1].splitlines()[:4] == sound:
                faults += 1
                print(f"{sheet['name']}: {text}: {name}={x}: check says {told}, the run {run_[0]}:\n{run_[1]}{run_[2]}")
        n_tried += min(tried, most)
        if tried == 0:
            faults += 1
            print(f"{sheet['name']}: {text}: nothing breaks it")
print(f"{n_tried} values tried, {faults} faults")
sys.exit(1 if faults or n_tried == 0 else 0)
