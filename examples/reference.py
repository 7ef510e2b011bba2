#!/usr/bin/env python3
"""Expected rows of the examples, found without the simulator.

    reference.py EXAMPLE ROWS > expect/...
    reference.py EXAMPLE > expect/out.dat       of small signals
    reference.py EXAMPLE > expect/levels.dat    of logic alone

ROWS is a row file of a run; its times alone are read. The other columns come from here: closed forms where there are
some, else the state equations of the circuit, written down by hand for each state of its switches, and followed by the
midpoint rule in steps finer than those of the run. Rows over frequency are transfer functions, written down by hand.
"""
import cmath
import math
import sys


def follow(rate, x, t_end, h, keep=lambda t, x: x):
    """Points (t, values to show) of dx/dt = rate(t, x)[0], shown as rate(t, x)[1]; keep holds x in its range."""
    points, n = [], int(round(t_end / h)) + 2
    for k in range(n):
        t = k * h
        d, shown = rate(t, x)
        points.append((t, shown))
        mid = [a + 0.5 * h * b for a, b in zip(x, d)]
        d, _ = rate(t + 0.5 * h, mid)
        x = keep(t + h, [a + h * b for a, b in zip(x, d)])
    return points, h


def steady(rate, x, period, h):
    """The same over a period that ends where it begins: Newton's method, derivatives by differences."""
    def ended(x):
        for k in range(round(period / h)):
            d, _ = rate(k * h, x)
            d, _ = rate((k + 0.5) * h, [a + 0.5 * h * b for a, b in zip(x, d)])
            x = [a + h * b for a, b in zip(x, d)]
        return x
    for _ in range(8):
        end = ended(x)
        columns = []
        for j in range(len(x)):
            moved = list(x)
            moved[j] += 1e-6
            columns.append([(a - b) / 1e-6 for a, b in zip(ended(moved), end)])
        step = solved([[float(i == j) - columns[j][i] for j in range(len(x))] for i in range(len(x))],
                      [a - b for a, b in zip(end, x)])
        x = [a + b for a, b in zip(x, step)]
        if max(abs(b) for b in step) < 1e-9:
            break
    return follow(rate, x, period, h)


def solved(a, b):
    """x of a x = b by elimination."""
    rows = [row + [y] for row, y in zip(a, b)]
    for j in range(len(b)):
        pivot = max(range(j, len(b)), key=lambda i: abs(rows[i][j]))
        rows[j], rows[pivot] = rows[pivot], rows[j]
        for i in range(len(b)):
            if i != j:
                rows[i] = [y - rows[i][j] / rows[j][j] * z for y, z in zip(rows[i], rows[j])]
    return [row[-1] / row[j] for j, row in enumerate(rows)]


def current_not_below_0(t, x):
    return [max(x[0], 0.0)] + x[1:]


def is_on(t, period, t_on, edge):
    """A clock that is at 0 at its origin; the switch acts at half the height of an edge."""
    return edge / 2 <= t % period < t_on + edge / 2


def rc_step(t):
    e = math.exp(-t / 1e-3)
    return 10 * (1 - e), 0.01 * e


def rlc_step(t):
    r, l, c = 20.0, 10e-3, 1e-6
    a = r / (2 * l)
    w = math.sqrt(1 / (l * c) - a * a)
    e = math.exp(-a * t)
    return 10 * (1 - e * (math.cos(w * t) + a / w * math.sin(w * t))), 10 / (w * l) * e * math.sin(w * t)


def rectifier(t_end):
    def rate(t, x):
        drive = abs(16.97 * math.sin(2 * math.pi * 50 * t)) - 2 * 0.7 - x[0]
        i = max(drive, 0.0) / (2 * 0.01)
        return [(i - x[0] / 20) / 4700e-6], [x[0]]
    return follow(rate, [0.0], t_end, 1e-6)


def buck_open(t_end):
    def rate(t, x):
        i, v = x
        u = (24.0 if is_on(t, 20e-6, 10e-6, 10e-9) else 0.0) - 1e-3 * i
        return [(u - v) / 100e-6 if i > 0 or u > v else 0.0, (i - v / 5) / 47e-6], [v, i]
    return follow(rate, [0.0, 0.0], t_end, 10e-9, current_not_below_0)


def sync_buck_losses(t_end):
    """The losses of a period heat the junction during the next one."""
    h, period = 10e-9, 10e-6
    i, v, z1, z2, energy, heat, points = 5.0, 11.9, 0.0, 0.0, 0.0, 0.0, []
    for k in range(int(round(t_end / h)) + 2):
        points.append((k * h, [v, 323.15 + z1 + z2]))
        n = k % 1000
        if n == 0:
            heat, energy = energy / period, 0.0
        on, dead = 20 <= n < 270, n < 20 or 270 <= n < 290
        blocked = 48.8 + 0.01 * i  # beside the diode of the lower switch

        def u(i):
            return 48.0 - 0.02 * i if on else -0.8 - 0.01 * i if dead else -0.02 * i
        i_mid, v_mid = i + 0.5 * h * (u(i) - v) / 22e-6, v + 0.5 * h * (i - v / 2.4) / 47e-6
        if n == 20:
            energy += 2e-6 * i * blocked / 48
        if n == 270:
            energy += (5e-6 + 2e-6 * (i - 5)) * blocked / 48
        energy += h * (0.02 * i_mid * i_mid if on else 2e-6 * (48 - u(i_mid)) ** 2)  # channel and diode, 1 Mohm each
        i, v = i + h * (u(i_mid) - v_mid) / 22e-6, v + h * (i_mid - v_mid / 2.4) / 47e-6
        z1 += h * (0.5 * heat - z1) / 100e-6
        z2 += h * (1.5 * heat - z2) / 600e-6
    return points, h


def buck_control(t_end):
    def rate(t, x):
        i, v, ui = x
        err = (12.0 if t < 20e-3 else 15.0) - v
        duty = min(max(0.01 * err + ui, 0.0), 0.95)
        p = t / 20e-6 % 1
        on = duty > (2 * p if p < 0.5 else 2 - 2 * p)
        u = (24.0 if on else -0.5) - 10e-3 * i
        load = 0.1 if t < 10e-3 else 0.2
        return [(u - v) / 470e-6 if i > 0 or u > v else 0.0, (i - v * load) / 22e-6, 65 * err], [v, duty]
    return follow(rate, [0.0, 0.0, 0.0], t_end, 10e-9, current_not_below_0)


def boost(t_end):
    def rate(t, x):
        i, v = x
        on = is_on(t, 20e-6, 12e-6, 10e-9)
        u = 12 - 1e-3 * i - (0 if on else v)
        return [u / 200e-6 if i > 0 or u > 0 else 0.0, ((0 if on else i) - v / 30) / 22e-6], [v, i]
    return follow(rate, [0.0, 12.0], t_end, 10e-9, current_not_below_0)


def flyback(t_end):
    def rate(t, x):  # the magnetising current, seen from the first winding; perfect coupling
        i, v = x
        if is_on(t, 20e-6, 8e-6, 10e-9):
            return [(24 - 1e-3 * i) / 100e-6, -v / 4 / 100e-6], [v]
        out = 2 * i
        return [-2 * (v + 1e-3 * out) / 100e-6 if i > 0 else 0.0, (out - v / 4) / 100e-6], [v]
    return follow(rate, [0.0, 0.0], t_end, 10e-9, current_not_below_0)


def rectifier_3ph(t_end):
    def rate(t, x):
        phases = [325.27 * math.sin(2 * math.pi * (50 * t - k / 3)) for k in range(3)]
        vd = max(phases) - min(phases) - 2 * (0.7 + 0.01 * x[0])
        return [(vd - 20 * x[0]) / 20e-3], [vd, x[0]]
    return follow(rate, [0.0], t_end, 2e-6)


def inverter_spwm(t_end):
    def rate(t, x):
        p = (t - 0.02 / 84) * 1050 % 1
        tri = 1 - 4 * p if p < 0.5 else 4 * p - 3
        sign = 1 if 0.8 * math.sin(2 * math.pi * 50 * t) > tri else -1
        return [(100 * sign - (10 + 0.02) * x[0]) / 20e-3], [x[0]]
    return follow(rate, [0.0], t_end, 0.2e-6)


def inverter_3ph(t_end):
    def rate(t, x):
        legs = [300.0 if (t - k / 150) % 0.02 < 0.01 else 0.0 for k in range(3)]
        return [(v - sum(legs) / 3 - (10 + 0.01) * i) / 20e-3 for v, i in zip(legs, x)], x[:2]
    return follow(rate, [0.0, 0.0, 0.0], t_end, 1e-6)


def thyristor_phase(angle):
    def value(t):
        p = 360 * 50 * t % 180
        return [abs(325.27 * math.sin(math.radians(p))) if p > angle else 0.0]
    return value


def pll(t_end):
    def rate(t, x):
        grid, th, z = x
        e = math.sin(grid - th)
        w = 100 * math.pi + 100 * e + z
        return [2 * math.pi * (50 if t < 0.2 else 52), w, 5000 * e], [w / (2 * math.pi), grid - th]
    return follow(rate, [math.pi / 3, 0.0, 0.0], t_end, 10e-6)


def dc_drive(t_end):
    def rate(t, x):
        z, i, w = x
        e = 100 - w
        u = 0.3 * e + z
        load = 0.5 * min(max((t - 0.2) / 1e-6, 0.0), 1.0)
        return [6.6 * e, (u - 0.5 * i - 0.1 * w) / 2e-3, (0.1 * i - 1e-4 * w - load) / 1e-3], [w, i, u]
    return follow(rate, [0.0, 0.0, 0.0], t_end, 1e-6)


def buck_sampled(t_end):
    period, held = 20e-6, {"n": 0, "integral": 0.0, "duty": 0.12}

    def sample(t, x):
        n = int(t / period + 1e-6)
        if n > held["n"]:
            e = 12.0 - x[1]
            held["n"] = n
            held["integral"] += 65 * period * e
            held["duty"] = min(max(0.01 * e + held["integral"], 0.0), 0.95)
        return current_not_below_0(t, x)

    def rate(t, x):
        i, v = x
        p = t / period % 1
        on = held["duty"] > (2 * p if p < 0.5 else 2 - 2 * p)
        u = (24.0 if on else -0.5) - 10e-3 * i
        load = 0.1 if t < 10e-3 else 0.2
        return [(u - v) / 470e-6 if i > 0 or u > v else 0.0, (i - v * load) / 22e-6], [v, held["duty"]]
    return follow(rate, [0.0, 0.0], t_end, 10e-9, sample)


def filter_degree_6(t):
    """Residues of the poles of filter and signal: 1 from t = 0 on, and 0.5 sin(w t)."""
    w, poles = 2000 * math.pi, [1e3 * cmath.exp(1j * math.pi * (2 * k + 7) / 12) for k in range(6)]

    def answer(filter_poles, gain):
        def shaped(s, but=None):
            y = gain
            for p in filter_poles:
                y /= s - p if p != but else 1
            return y
        y = shaped(0) + (0.5 * shaped(1j * w) * cmath.exp(1j * w * t)).imag
        return (y + sum(shaped(p, p) * (1 / p + 0.5 * w / (p * p + w * w)) * cmath.exp(p * t) for p in filter_poles)).real
    return [1 + 0.5 * math.sin(w * t), answer(poles, 1e18), answer([-1e3], 1e3)]


def bouncing_ball(t):
    """Parabolas: each begins on the ground with 0.8 of the speed that the one before came down with."""
    g, v, begin = 9.81, math.sqrt(2 * 9.81), math.sqrt(2 / 9.81)
    if t < begin:
        return [1 - g / 2 * t * t, -g * t]
    v *= 0.8
    while t >= begin + 2 * v / g:
        begin += 2 * v / g
        v *= 0.8
    t -= begin
    return [v * t - g / 2 * t * t, v - g * t]


def induction_vf(t_end):
    """The machine in the frame that turns with the voltage: u = A, ws and wr are the speeds of the frame against stator
    and rotor."""
    rs, rr, lm, p, j = 0.435, 0.816, 69.31e-3, 2, 0.089
    ls = lr = 2e-3 + lm
    det = ls * lr - lm * lm
    before = 25 * (1 - math.exp(-5))

    def frequency(t):
        return 25 * (1 - math.exp(-t / 0.2)) if t < 1 else 50 - (50 - before) * math.exp(-(t - 1) / 0.2)

    def rate(t, x):
        fs, fr, wm = x
        f = frequency(t)
        i_s, i_r = (lr * fs - lm * fr) / det, (ls * fr - lm * fs) / det
        te = 1.5 * p * (fs.conjugate() * i_s).imag
        ws = 2 * math.pi * f
        load = 8 if t >= 1.8 else 0
        return [5 + 3 * f - rs * i_s - 1j * ws * fs, -rr * i_r - 1j * (ws - p * wm) * fr, (te - load) / j], [f, wm, te]
    return follow(rate, [0j, 0j, 0.0], t_end, 20e-6)


def induction_start(t_end):
    """Currents as states, in the frame of the rotor."""
    rs, rr, l, lm, p, j = 0.435, 0.816, 71.31e-3, 69.31e-3, 2, 0.089
    det = l * l - lm * lm

    def rate(t, x):
        i_s, i_r, wm, th = x
        turn = cmath.exp(1j * p * th)
        us = 150 * cmath.exp(100j * math.pi * t) / turn - rs * i_s - 1j * p * wm * (l * i_s + lm * i_r)
        ur = -rr * i_r
        te = 1.5 * p * lm * (i_s * i_r.conjugate()).imag
        load = 12 if t >= 0.8 else 0
        return ([(l * us - lm * ur) / det, (l * ur - lm * us) / det, (te - load) / j, wm],
                [30 / math.pi * wm, te, (turn * i_s).real])
    return follow(rate, [0j, 0j, 0.0, 0.0], t_end, 5e-6)


def dc_chopper(t_end):
    def rate(t, x):
        i, wm = x
        duty, p = min(0.05 + 1.1 * t, 0.6), t / 1e-3 % 1
        u = (240.0 if duty > (2 * p if p < 0.5 else 2 - 2 * p) else -0.7) - 0.51 * i - 1.2 * wm
        load = 20 if t >= 0.7 else 5
        return [u / 5e-3 if i > 0 or u > 0 else 0.0, (1.2 * i - load - 0.01 * wm) / 0.1], [wm, duty]
    return follow(rate, [0.0, 0.0], t_end, 0.5e-6, current_not_below_0)


def times(a, x):
    return [sum(b * y for b, y in zip(row, x)) for row in a]


def inverted(a):
    n = len(a)
    return list(zip(*(solved(a, [float(i == k) for i in range(n)]) for k in range(n))))


def synchronous_inductances():
    """Of the stator in d and q, the field, the dampers in d and q; H."""
    md, mq = 60e-3, 30e-3
    return [[3e-3 + md, 0, md, md, 0], [0, 3e-3 + mq, 0, 0, mq], [md, 0, 5e-3 + md, md, 0], [md, 0, md, 3e-3 + md, 0],
            [0, mq, 0, 0, 3e-3 + mq]]


def synchronous_bus(t_end):
    """Currents as states: of the stator in d and q, of the field, of the dampers in d and q."""
    p, j, w, l = 2, 0.2, 100 * math.pi, synchronous_inductances()
    inverse = inverted(l)

    def rate(t, x):
        i, (wm, th, angle) = x[:5], x[5:]
        f = times(l, i)
        v = 100 * cmath.exp(1j * (w * t - p * th))
        u = [v.real - 0.05 * i[0] + p * wm * f[1], v.imag - 0.05 * i[1] - p * wm * f[0], 0.7 - 0.1 * i[2], -0.5 * i[3],
             -0.5 * i[4]]
        te = 1.5 * p * (f[0] * i[1] - f[1] * i[0])
        tl = -6 if t >= 2 else -2
        slip = wm - w / p
        return (times(inverse, u) + [(te - tl) / j, wm, math.degrees(p * slip)], [angle, wm, te, 1.5 * i[2]])
    return follow(rate, times(inverse, [0.3183, 0.0, 0.35, 0.3183, 0.0]) + [w / p, -math.pi / 4, 0.0], t_end, 20e-6)


def network_thyristor(t_end):
    """The thyristor turns on by its gate while its voltage is positive, and off with it."""
    state = {"on": False}

    def current(t, v):
        if not state["on"]:
            return (100 * math.sin(100 * math.pi * t) - v) / (1e6 + 5)
        return (100 * math.sin(100 * math.pi * t) - v) / (0.01 + 5)

    def rate(t, x):
        i = current(t, x[0])
        return [(i - x[0] / 200) / 220e-6], [x[0], i]

    def keep(t, x):
        fired = 7e-3 + 0.5e-6 < t % 20e-3 < 7.5015e-3
        positive = 100 * math.sin(100 * math.pi * t) - x[0] > 0
        state["on"] = (state["on"] or fired) and positive
        return x
    return follow(rate, [0.0], t_end, 0.5e-6, keep)


def rectifier_power(path):
    """Power, effective current, power factor and distortion over one period of 20 ms at rest."""
    w, top, drop, n = 100 * math.pi, 325.27, 1.4, 20000
    if "inductor" in path:  # a half wave of the current, that begins where it ends
        r, l = 20.02, 0.2
        z, phi, tau = math.hypot(r, w * l), math.atan2(w * l, r), l / r
        begin = 2 * math.sin(phi) / (1 - math.exp(-0.01 / tau))

        def half(t):
            return top / z * (math.sin(w * t - phi) + begin * math.exp(-t / tau)) - drop / r
    else:
        def rate(t, x):
            i, v = x
            u = abs(top * math.sin(w * t)) - drop - 0.02 * i - v
            return [u / 1e-3 if i > 0 or u > 0 else 0.0, (i - v / 44) / 470e-6], [i]
        points, h = follow(rate, [0.0, 0.0], 0.2, 0.25e-6, current_not_below_0)
        first = round(0.18 / h)

        def half(t):
            return points[first + round(t / h)][1][0]
    p = c = 0.0
    a, b = [0.0] * 41, [0.0] * 41
    for k in range(n // 2):  # the other half wave is the same with the other sign
        t = (k + 0.5) * 0.02 / n
        i = half(t)
        p += 2 * top * math.sin(w * t) * i / n
        c += 2 * i * i / n
        for m in range(1, 41, 2):
            a[m] += i * math.cos(m * w * t)
            b[m] += i * math.sin(m * w * t)
    h = [math.hypot(x, y) for x, y in zip(a, b)]
    rms = math.sqrt(c)
    return p, rms, p / (top / math.sqrt(2) * rms), math.sqrt(sum(x * x for x in h[2:])) / h[1]


def buck_steady(_):
    def rate(t, x):
        i, v = x
        u = (24.0 if is_on(t, 20e-6, 8e-6, 10e-9) else 0.0) - 1e-3 * i
        return [(u - v) / 100e-6, (i - v / 4) / 470e-6], [v, i]
    return steady(rate, [2.0, 9.0], 20e-6, 4e-9)


def boost_steady(_):
    def rate(t, x):
        i, v = x
        on = is_on(t, 20e-6, 12e-6, 10e-9)
        return [(12 - 1e-3 * i - (0 if on else v)) / 200e-6, ((0 if on else i) - v / 30) / 1000e-6], [v, i]
    return steady(rate, [2.0, 30.0], 20e-6, 4e-9)


def rectifier_steady(_):
    def rate(t, x):
        i = max(abs(16.97 * math.sin(100 * math.pi * t)) - 2 * 0.7 - x[0], 0.0) / (0.2 + 2 * 0.01)
        return [(i - x[0] / 50) / 10e-3], [x[0]]
    return steady(rate, [15.0], 20e-3, 1e-6)


def current_mode(_):
    def bent(x):
        return math.sin(math.pi / 2 * min(max(x, -1.0), 1.0))

    def rate(t, x):
        i, v, q = x
        pulse = min(max(t / 20e-9, 0.0), 1.0, max((340e-9 - t) / 20e-9, 0.0))
        e = bent(1.5 * q + 3 * pulse - 1.5 * bent(50 * (i - 5)) - 1.5)
        return [(24 * (1 + q) / 2 - v) / 100e-6, (i - v / 2) / 1000e-6, (e - q) / 50e-9], [i, v, (1 + q) / 2]
    return steady(rate, [3.8, 9.0, -1.0], 20e-6, 2e-9)


def logic(t_end, level, gates, at_rise, shown):
    """Rows of levels, two for each time at which something happens; ns. The clock `ck` turns over each 50 ns.

    gates: output, delay of its rise, of its fall, function of the levels. What a gate gives behind its delay is what
    its inputs say then. at_rise(level): delay behind a rise of the clock, and the levels that change together.
    """
    due, waiting, rows = {50: ["ck"]}, set(), []

    def row(t):
        rows.append((t * 1e-9, *[level[n] + 2 * k for k, n in enumerate(shown)]))
    row(0)
    while min(due) < t_end:
        t = min(due)
        row(t)
        new = {}
        for event in due.pop(t):
            if event == "ck":
                new["ck"] = 1 - level["ck"]
                due.setdefault(t + 50, []).append("ck")
            elif isinstance(event, dict):
                new.update(event)
            else:
                new[event[0]] = event[3](level)
                waiting.remove(event[0])
        if new.get("ck") == 1:
            delay, change = at_rise(level)
            due.setdefault(t + delay, []).append(change)
        level.update(new)
        for gate in gates:
            wanted = gate[3](level)
            if wanted != level[gate[0]] and gate[0] not in waiting:
                waiting.add(gate[0])
                due.setdefault(t + (gate[1] if wanted else gate[2]), []).append(gate)
        row(t)
    row(t_end)
    return rows


def counter_decode():
    bits = ["q0", "q1", "q2", "q3"]

    def count(level):
        n = (sum(level[b] << k for k, b in enumerate(bits)) + 1) % 16
        new = {b: n >> k & 1 for k, b in enumerate(bits)}
        return (4 if any(new[b] < level[b] for b in bits) else 3), new

    def both(y, a, b):
        return y, 2, 2, lambda l: l[a] & l[b]

    def inverted(y, a):
        return y, 1, 1, lambda l: 1 - l[a]
    gates = [both("low3", "q0", "q1"), both("high3", "q2", "q3"), both("is15", "low3", "high3"), inverted("q0b", "q0"),
             inverted("q2b", "q2"), both("low2", "q0b", "q1"), both("high2", "q2b", "q3"), both("is10", "low2", "high2")]
    level = {n: 0 for n in ["ck"] + bits + [g[0] for g in gates]}
    level.update(q0b=1, q2b=1)
    return logic(4000, level, gates, count, ["ck"] + bits + ["is10", "is15"])


def shift_register():
    bits = ["q0", "q1", "q2", "q3"]
    level = {"ck": 0, "feed": 0, **{b: 1 for b in bits}}

    def shifted(level):
        return 3, dict(zip(bits, [level["feed"], level["q0"], level["q1"], level["q2"]]))
    return logic(3200, level, [("feed", 2, 2, lambda l: l["q3"] ^ l["q2"])], shifted, ["ck"] + bits)


def dead_time_leg(t_end):
    """A leg of two switches gives the sign of the current its way while both are off; v_on and r_on are left out."""
    points, h, i, turned = [], 20e-9, 0.0, [-1.0, -1.0]  # when pwm rose and fell
    pwm = None
    for k in range(int(t_end / h) + 2):
        t = k * h
        x = t / 100e-6 % 1
        above = 0.8 * math.sin(100 * math.pi * t) > (4 * x - 1 if x < 0.5 else 3 - 4 * x)
        if above != pwm:
            pwm = above
            turned[0 if pwm else 1] = t
        high = pwm and t >= turned[0] + 2.01e-6 or not pwm and t < turned[1] + 30e-9
        low = not pwm and t >= turned[1] + 2.02e-6 or pwm and t < turned[0] + 40e-9
        u = 100 if high else -100 if low else -math.copysign(100, i)
        points.append((t, [i]))
        new = i + h * (u - 10 * (i + 0.5 * h * (u - 10 * i) / 10e-3)) / 10e-3
        i = new if high or low or new * i > 0 else 0.0
    return points, h


def peak_current(t_end):
    points, h, i, v = [], 5e-9, 0.0, 0.0
    on, reached = False, None
    for k in range(int(t_end / h) + 2):
        t = k * h
        points.append((t, [i, v]))
        if k % 2000 == 2:  # the clock and the delay of the flip-flop
            on = True
        if on and i > 5 and reached is None:
            reached = t
        if reached is not None and t >= reached + 30e-9:
            on, reached = False, None

        def rate(i, v):
            return ((24.0 if on else 0.0) - v) / 100e-6, (i - v / 2) / 100e-6
        di, dv = rate(i, v)
        di, dv = rate(i + 0.5 * h * di, v + 0.5 * h * dv)
        i, v = max(i + h * di, 0.0), v + h * dv
    return points, h


def sigma_delta(t_end):
    """The integrator goes up by 0.3 V a period, and down by 0.7 V in a period in which a 1 is fed back."""
    points, h, x, bit = [], 1e-9, 0.0, 0
    for k in range(int(t_end / h) + 2):
        if k % 1000 == 500:
            next_bit = int(x > 1e-6)
        if k % 1000 == 502:
            bit = next_bit
        points.append((k * h, [x]))
        x += (0.3 - bit) * 1e-3
    return points, h


def parallel(*z):
    return 1 / sum(1 / x for x in z)


def lc_filter(s, r):
    """Of 100 uH into 25 uF and r in parallel."""
    return [1 / (1 + s * 100e-6 / r + s * s * 100e-6 * 25e-6)]


def loop_gain(s, _):
    """The averaged buck: D v1 = 12 V + rl il, v1 = 24 V - rg D il; its answer to d, times the controller and the delay."""
    il, rl, rg = 12 / 3, 20e-3, 0.1
    duty = (24 - math.sqrt(24 ** 2 - 4 * rg * il * (12 + rl * il))) / (2 * rg * il)
    v1 = 24 - rg * duty * il
    load = parallel(3, 10e-3 + 1 / (s * 100e-6))
    power = (v1 - duty * rg * il) * load / (rl + duty ** 2 * rg + s * 47e-6 + load)
    controller = 4000 / s * (1 + 70e-6 * s) ** 2 / ((1 + 1e-6 * s) * (1 + 2e-6 * s))
    return [power * controller * (1 - 1.25e-6 * s) / (1 + 1.25e-6 * s)]


def transformer_impedance(s, _):
    """Open, shorted; voltage of the open second winding, current of the shorted one, each for 1 A into the first."""
    ratio = 20 / 5
    series, magnetising, far = 0.5 + s * 20e-6, parallel(s * 5e-3, 10e3), 30e-3 + s * 1.25e-6
    shorted = parallel(magnetising, ratio ** 2 * far)
    return [series + magnetising, series + shorted, magnetising / ratio, shorted / ratio / far]


def digital_pid(t_wanted):
    """The motor moves by the exponential of its matrix between samples, which hold its voltage; exact."""
    r, l, k, j, b, period, load_at = 1, 2e-3, 0.05, 5e-5, 1e-5, 1e-3, 0.1

    def moved(x, u, load, h):
        term, sums = [h * (u - r * x[0] - k * x[1]) / l, h * (k * x[0] - load - b * x[1]) / j], list(x)
        for n in range(2, 40):
            sums = [s + y for s, y in zip(sums, term)]
            term = [h / n * (-r * term[0] - k * term[1]) / l, h / n * (k * term[0] - b * term[1]) / j]
        return sums
    t, n, x, u, u_new, e1, e2 = 0.0, 0, [0.0, 0.0], 0.0, 0.0, 0.0, 0.0
    while True:
        sample = 0.5e-3 + n * period
        end = min(t_wanted, sample, load_at if t < load_at else t_wanted)
        x = moved(x, u, 0.05 if t >= load_at else 0, end - t)
        t = end
        if t == t_wanted:
            return [x[1], x[0], u]
        if t == sample:
            e = (50 if t > 5e-3 else 0) - x[1]
            u, u_new = u_new, u_new + 0.4575 * e - 0.75 * e1 + 0.3 * e2
            e1, e2, n = e, e1, n + 1


def locked_loop(s, k):
    down = s * s + k * s + 5000
    return [(k * s + 5000) / down, s * s / down]


def state_variable(s, q):
    x = s / (2 * math.pi * 1000)
    down = x * x + x / q + 1
    return [1 / down, x / down, x * x / down]


# Of each example over frequency: from, to, points; the values of its sweep; the phase that no column reaches, if any.
small_signals = {
    "lc_filter": ((100, 100e3, 31), [1, 2, 4, 10, 20], None),
    "loop_gain": ((100, 1e6, 41), [None], 0),
    "transformer_impedance": ((1, 10e6, 36), [None], None),
    "locked_loop": ((1, 1000, 31), [50, 100, 200], None),
    "state_variable": ((10, 100e3, 21), [0.5, 1, 5], None),
}


def rows_over_frequency(name):
    """Magnitude and phase of each column; phases go on from row to row unless they stay below a limit."""
    (low, high, n), swept, below = small_signals[name]
    for value in swept:
        before = None
        for k in range(n):
            f = low * (high / low) ** (k / (n - 1))
            z = globals()[name](2j * math.pi * f, value)
            phases = [math.degrees(cmath.phase(x)) for x in z]
            if below is not None:
                phases = [p - 360 if p >= below else p for p in phases]
            elif before:
                phases = [p + 360 * round((b - p) / 360) for p, b in zip(phases, before)]
            before = phases
            columns = [x for x, p in zip(z, phases) for x in (abs(x), p)]
            yield (f, *([] if value is None else [value]), *columns)


def main():
    name, path = (sys.argv[1:] + [None])[:2]
    if name == "rectifier_power":
        print("".join(f"{x:13.6e} " for x in rectifier_power(path)))
        return
    if name in ("counter_decode", "shift_register"):
        for row in globals()[name]():
            print("".join(f"{x:13.6e} " for x in row))
        return
    if name in small_signals:
        for row in rows_over_frequency(name):
            print("".join(f"{x:13.6e} " for x in row))
        return
    times = [float(line.split()[0]) for line in open(path)]
    if name == "thyristor_phase":
        value = thyristor_phase(float(path.split("_")[-1].split(".")[0]))
    elif name in ("rc_step", "rlc_step", "bouncing_ball", "filter_degree_6", "digital_pid"):
        value = globals()[name]
    else:
        points, h = globals()[name](times[-1])

        def value(t):
            k = min(int(t / h), len(points) - 2)
            part = t / h - k
            return [a + part * (b - a) for a, b in zip(points[k][1], points[k + 1][1])]
    for t in times:
        print("".join(f"{x:13.6e} " for x in (t, *value(t))))


if __name__ == "__main__":
    main()
