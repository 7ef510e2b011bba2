#!/usr/bin/env python3
"""The rows of deck.in, by a plain scan over all units in each event: python3 plain_scan.py writes them to expect/.

Each element is a few lines that follow its description. A level is 0, 1 or 2 (unknown); times are seconds.
"""
import math
import os
import re

HERE = os.path.dirname(os.path.abspath(__file__))
EPSILON = 1e-13
T_END = 300e-9
SCALE = {"": 1.0, "n": 1e-9, "u": 1e-6, "m": 1e-3, "k": 1e3, "M": 1e6}
TRUTH = {
    "and_2": lambda a, b: a & b,
    "or_2": lambda a, b: a | b,
    "nand_2": lambda a, b: 1 - (a & b),
    "nor_2": lambda a, b: 1 - (a | b),
    "xor": lambda a, b: a ^ b,
}
FLIP_FLOPS = {"dff", "dff1", "jkff", "jkff1", "rsff1", "rsff2"}
BITS = {"counter_2": 2, "counter_4": 4, "counter_8": 8, "counter_4_gnrl": 4, "counter_8_gnrl": 8}
level = {}


def number(text):
    digits, scale = re.fullmatch(r"([-\d.]+)([numkM]?)", text).groups()
    return float(digits) * SCALE[scale]


def share(seed, n):
    """splitmix64 at place n of a sequence, as a share from 0 to 1."""
    mask = (1 << 64) - 1
    z = ((seed << 32 | n) + 0x9E3779B97F4A7C15) & mask
    z = ((z ^ (z >> 30)) * 0xBF58476D1CE4E5B9) & mask
    z = ((z ^ (z >> 27)) * 0x94D049BB133111EB) & mask
    return ((z ^ (z >> 31)) >> 11) * 2.0**-53


class Unit:
    def __init__(self, words):
        self.words = words
        self.kind = words["type"]
        self.t_next = None  # None: nothing is pending
        self.state = 0

    def value(self, word, default=0.0):
        return number(self.words[word]) if word in self.words else default

    def whole(self, word, default=0):
        return int(self.value(word, default))

    def get(self, word):
        return level.get(self.words[word], 2)

    def put(self, word, y):
        level[self.words[word]] = y

    def fall(self):
        return self.value("td_fall", 1e-9)

    def rise(self):
        return self.value("td_rise", 1e-9)

    def inputs(self):
        outputs = r"name|type|y|q|qb|y\d" + (r"|q\d" if self.kind in BITS else "")
        return [v for k, v in self.words.items() if not re.fullmatch(outputs, k)]

    # ---- what elements make of their inputs
    def gate(self):
        a = self.get("a")
        if self.kind == "not":
            return 2 if a == 2 else 1 - a
        b = self.get("b")
        return 2 if 2 in (a, b) else TRUTH[self.kind](a, b)

    def selected(self):
        a, b = self.get("s0"), self.get("s1")
        n = None if 2 in (a, b) else a + 2 * b
        if self.kind == "mux_4_to_1":
            return {"y": 2 if n is None else self.get(f"d{n}")}
        return {f"y{k}": 2 if n is None else self.get("d") if k == n else 0 for k in range(4)}

    def bits(self):
        return sum((self.get(f"q{k}") == 1) << k for k in range(int(self.kind[-1])))

    def put_number(self, x):
        self.x = x
        for k in range(BITS[self.kind]):
            self.put(f"q{k}", x >> k & 1)

    def put_state(self, q):
        self.q = q
        self.put("q", q)
        self.put("qb", 1 - q)

    # ---- the three calls
    def begin(self):
        kind = self.kind
        if kind in TRUTH:
            self.put("y", 0)
            self.state, self.t_next = 1, self.rise()
        elif kind == "not":
            self.put("y", 1)
            self.state, self.t_next = 3, self.fall()
        elif kind in ("clock", "clock1"):
            if kind == "clock":
                self.t1, self.t2 = self.value("t1"), self.value("t2")
            else:
                self.t1 = self.value("duty") / self.value("f_hz")
                self.t2 = (1 - self.value("duty")) / self.value("f_hz")
            period = self.t1 + self.t2
            m = math.fmod(0.0 - self.value("t0"), period)
            self.first = m <= self.t1
            self.put("y", self.whole("pol", 1) if self.first else 1 - self.whole("pol", 1))
            self.t_next = (self.t1 if self.first else period) - m
        elif kind == "clock_random":
            self.first, self.drawn = True, 1
            self.put("y", 1)
            self.t_next = share(self.whole("seed"), 0) * self.value("t1")
        elif kind == "dsrc":
            self.edges = [self.value(f"t{k + 1}") for k in range(self.whole("n_edges"))]
            self.put("y", self.whole("y0"))
            self.t_next = self.edges[0] if self.edges else None
        elif kind in FLIP_FLOPS:
            self.plan = self.whole("q0")
            self.put_state(self.plan)
            self.t_next = 0.0
        elif kind in BITS:
            self.low, self.high = self.whole("state_begin"), self.whole("state_end", 2 ** BITS[kind] - 1)
            self.plan = self.whole("q_sv", self.whole("n0"))
            self.put_number(self.plan)
            self.t_next = 0.0
        elif kind in ("mux_4_to_1", "demux_1_to_4"):
            self.held = {y: 0 for y in self.selected()}  # what an unknown output was before
            for y in self.held:
                self.put(y, 0)
            self.t_next = self.rise()
        elif kind.startswith("decimal"):
            self.shown = self.bits()
            self.t_next = self.value("td")

    def fire(self, now):
        kind = self.kind
        self.t_next = None
        if kind in TRUTH:
            self.put("y", self.gate())
            self.state = 0
        elif kind == "not":
            self.put("y", 1 if self.state < 3 else 0 if self.state < 5 else 2)
            self.state = 0
        elif kind in ("clock", "clock1"):
            self.put("y", 1 - self.get("y"))
            self.t_next = now + (self.t2 if self.first else self.t1)
            self.first = not self.first
        elif kind == "clock_random":
            self.put("y", 1 - self.get("y"))
            self.first = not self.first
            self.t_next = now + share(self.whole("seed"), self.drawn) * self.value("t1" if self.first else "t2")
            self.drawn += 1
        elif kind == "dsrc":
            self.state += 1
            self.put("y", (self.whole("y0") + self.state) % 2)
            if self.state < len(self.edges):
                self.t_next = self.edges[self.state]
        elif kind in FLIP_FLOPS:
            forced = kind != "rsff2" and (self.get("s") == 1 or self.get("r") == 1)
            self.put_state(int(self.get("s") == 1) if forced else self.plan)
        elif kind in BITS:
            self.put_number(self.low if self.get("r") == 1 else self.plan)
        elif kind.startswith("decimal"):
            self.shown = self.bits()
        else:
            for y, x in self.selected().items():
                self.put(y, x)
                if x != 2:
                    self.held[y] = x

    def react(self, now, old):
        kind = self.kind
        if kind in TRUTH or kind == "not":
            y, x = self.get("y"), self.gate()
            if y == x:
                return
            assert x != 2  # no gate of the deck loses its level
            self.state = (2 if y == 2 else 1) if x else (4 if y == 2 else 3)
            self.t_next = now + (self.rise() if x else self.fall())
        elif kind in FLIP_FLOPS:
            q, s, r = self.q, self.get("s") == 1, self.get("r") == 1
            if kind != "rsff2" and (s or r):
                assert not (s and r)
                q = int(s)
            elif kind != "rsff1" and self.edge(old, falling=kind in ("dff1", "jkff1")):
                if kind.startswith("dff"):
                    q = int(self.get("d") == 1)
                else:
                    a, b = (s, r) if kind == "rsff2" else (self.get("j") == 1, self.get("k") == 1)
                    q = 1 - q if a and b else 1 if a else 0 if b else q
            if q != self.q:
                self.plan = q
                self.t_next = now + (self.rise() if q else self.fall())
        elif kind in BITS:
            x = self.x
            if self.get("r") == 1:
                x = self.low
            elif self.edge(old):
                x += 1 if self.get("up") == 1 else -1
                x = self.low if x > self.high else self.high if x < self.low else x
            if x != self.x:
                self.plan = x
                self.t_next = now + max(self.fall() if self.x & ~x else 0, self.rise() if x & ~self.x else 0)
        elif kind.startswith("decimal"):
            if self.bits() != self.shown:
                self.t_next = now + self.value("td")
        else:
            delays = [
                self.fall() if x == 0 or (x == 2 and self.held[y] == 1) else self.rise()
                for y, x in self.selected().items()
                if self.get(y) != x
            ]
            if delays:
                self.t_next = now + max(delays)

    def edge(self, old, falling=False):
        now, before = self.get("clk"), old.get(self.words["clk"], 2)
        return now == 0 and before == 1 if falling else now == 1 and before != 1


def read_deck():
    units, variables, files = [], {}, []
    with open(os.path.join(HERE, "deck.in"), encoding="ascii") as deck:
        for line in deck.read().replace("\n+", " ").split("\n"):
            words = line.replace("=", " ").split()
            if not words:
                continue
            if words[0] == "delement":
                units.append(Unit(dict(zip(words[1::2], words[2::2]))))
            elif words[0] == "outvar:":
                variables.update(zip(words[1::2], words[2::2]))
            elif words[0] == "filename":
                files.append([words[1], [], []])
            elif words[0] == "variables:":
                files[-1][1] = [variables[w].split("_of_") for w in words[1:]]
    return units, files


def main():
    units, files = read_deck()
    named = {u.words["name"]: u for u in units}

    def write_rows(t):
        for _, variables, rows in files:
            text = f"{t:13.6e} "
            for quantity, name in variables:
                u = named[name]
                if quantity == "dec_o":
                    text += f"{u.shown:13.6e} "
                else:
                    text += f"{u.state if quantity == 'state' else u.get(quantity):3d} "
            rows.append(text + "\n")

    for u in units:
        u.begin()
    write_rows(0.0)
    while True:
        now = 2 * T_END
        for u in units:  # the epsilon moves with the search
            if u.t_next is not None and u.t_next < now:
                now = u.t_next + EPSILON
        if now >= T_END:
            break
        write_rows(now)
        old = dict(level)
        for u in units:
            if u.t_next is not None and u.t_next <= now:
                u.fire(now)
        write_rows(now)
        for u in units:
            if u.t_next is None and any(level.get(n, 2) != old.get(n, 2) for n in u.inputs()):
                u.react(now, old)
    write_rows(T_END)
    os.makedirs(os.path.join(HERE, "expect"), exist_ok=True)
    for name, _, rows in files:
        with open(os.path.join(HERE, "expect", name), "w", encoding="ascii") as out:
            out.writelines(rows)


if __name__ == "__main__":
    main()
