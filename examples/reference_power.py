#!/usr/bin/env python3
"""Expected rows of the examples of drives and converters with control, found without the simulator.

    reference_power.py EXAMPLE ROWS > expect/...

As reference.py: ROWS is a row file of a run, of which the times alone are read; the other columns come from the state
equations, written down by hand.
"""
import cmath
import math
import sys

from reference import follow, inverted, synchronous_inductances, times


def pmsm_vector(t_end):
    """In the frame of the magnets, where transforms there and back leave no trace."""
    rs, ld, lq, lam, p, j = 1.2, 8.5e-3, 9.5e-3, 0.175, 4, 0.8e-3

    def rate(t, x):
        i_d, i_q, wm, xw, xd, xq = x
        ew = min(max((t - 0.01) * 4000, 0), 200) - wm
        ref = min(max(0.2 * ew + xw, -12), 12)
        ed, eq, we = -i_d, ref - i_q, p * wm
        ud = 17 * ed + xd - we * lq * i_q
        uq = 19 * eq + xq + we * (ld * i_d + lam)
        te = 1.5 * p * (lam * i_q + (ld - lq) * i_d * i_q)
        load = 3 * min(max((t - 0.1) / 10e-6, 0), 1)
        return [(ud - rs * i_d + we * lq * i_q) / ld, (uq - rs * i_q - we * (ld * i_d + lam)) / lq, (te - load) / j,
                8 * ew, 2400 * ed, 2400 * eq], [wm, te, i_q, i_d]
    return follow(rate, [0.0] * 6, t_end, 2e-6)


def induction_inverter(t_end):
    """The machine in the frame of its stator, its phases at the rails that sines and triangle choose."""
    rs, rr, lm, p, j = 0.435, 0.816, 69.31e-3, 2, 0.089
    ls = lr = 2e-3 + lm
    det = ls * lr - lm * lm
    m, m3, turn = 1.154700538, 0.192450090, 2 * math.pi

    def rate(t, x):
        fs, fr, wm = x
        tri = 4 * abs((t / 400e-6) % 1 - 0.5)
        tri = 1 - tri
        third = m3 * math.sin(turn * 150 * t)
        legs = [270 if m * math.sin(turn * 50 * t - k * turn / 3) + third > tri else -270 for k in range(3)]
        u = 2 / 3 * (legs[0] + legs[1] * cmath.exp(1j * turn / 3) + legs[2] * cmath.exp(-1j * turn / 3))
        i_s, i_r = (lr * fs - lm * fr) / det, (ls * fr - lm * fs) / det
        te = 1.5 * p * (fs.conjugate() * i_s).imag
        return [u - rs * i_s, -rr * i_r + 1j * p * wm * fr, (te - 0.8106e-3 * wm * wm) / j], [wm]
    return follow(rate, [0j, 0j, 0.0], t_end, 2e-6)


def direct_torque_control(t_end):
    """The machine in the frame of its stator; each 4 us the levels choose the voltage that turns and moves its flux."""
    rs, rr, lm, p, j = 0.435, 0.816, 69.31e-3, 2, 0.089
    ls = lr = 2e-3 + lm
    det = ls * lr - lm * lm
    control = {"flux": 1, "torque": 0, "u": 0j, "steps": 0}

    def seen(t, x):
        fs, fr, wm, z = x
        i_s = (lr * fs - lm * fr) / det
        e = 100 - wm
        wish = 1.8 * e + z
        return i_s, 1.5 * p * (fs.conjugate() * i_s).imag, e, wish, min(max(wish, -20), 20)

    def rate(t, x):
        fs, fr, wm, z = x
        i_s, te, e, wish, te_ref = seen(t, x)
        load = 10 if t >= 0.5 - 1e-9 else 0
        return [control["u"] - rs * i_s, -rr * (ls * fr - lm * fs) / det + 1j * p * wm * fr, (te - load) / j,
                9 * e + 5 * (te_ref - wish)], [wm]

    def keep(t, x):
        control["steps"] += 1
        if control["steps"] % 4:
            return x
        _, te, _, _, te_ref = seen(t, x)
        miss, flux_miss = te_ref - te, 0.9 - abs(x[0])
        if abs(flux_miss) > 0.01:
            control["flux"] = int(flux_miss > 0)
        if abs(miss) > 0.5:
            control["torque"] = 1 if miss > 0 else -1
        elif miss * control["torque"] <= 0:
            control["torque"] = 0
        ahead = control["torque"] * (1 if control["flux"] else 2)
        sector = round(cmath.phase(x[0]) / (math.pi / 3))
        control["u"] = 360 * cmath.exp(1j * (sector + ahead) * math.pi / 3) if ahead else 0j
        return x
    return follow(rate, [0j, 0j, 0.0, 0.0], t_end, 1e-6, keep)


def synchronous_exciter(t_end):
    """Currents as states: of the stator in d and q, field, dampers, and of the line, all seen from the rotor."""
    p, j, w, l = 2, 0.2, 100 * math.pi, synchronous_inductances()
    inverse = inverted(l)

    def rate(t, x):
        i, (line, wm, th, z, field, slow) = x[:5], x[5:]
        f = times(l, i)
        at_terminals = 60 * (line - (i[0] + 1j * i[1]))
        bus = 100 * cmath.exp(1j * (w * t - p * th))
        u = [at_terminals.real - 0.05 * i[0] + p * wm * f[1], at_terminals.imag - 0.05 * i[1] - p * wm * f[0],
             field - 0.1 * i[2], -0.5 * i[3], -0.5 * i[4]]
        te = 1.5 * p * (f[0] * i[1] - f[1] * i[0])
        tl = -8 if t >= 3 else -2
        miss = 100 - abs(at_terminals) - 2 / 0.5 * (field - slow)
        angle = math.degrees(math.remainder(p * th - w * t + math.pi / 2, 2 * math.pi))
        return (times(inverse, u) + [(bus - at_terminals - 0.1 * line) / 8e-3 - 1j * p * wm * line, (te - tl) / j, wm,
                                     (0.3 * miss - z) / 20e-3, (min(max(z, 0), 1.6) - field) / 0.1,
                                     (field - slow) / 0.5], [angle, abs(at_terminals), field, wm])
    at_rest = times(inverse, [0.3183, 0.0, 0.3448, 0.3183, 0.0])
    return follow(rate, at_rest + [5j / 3, w / p, -math.pi / 4, 0.5305, 0.5305, 0.5305], t_end, 20e-6)


def battery_charger(t_end):
    def voltage(soc):
        return 4 * (3.685 + 0.2156 * soc - 0.1178 * soc ** 2 + 0.3201 * soc ** 3 - 1.031 * math.exp(-35 * soc))

    def rate(t, x):
        # i = 40 (16.4 - v) with v = voltage + 0.1 i, held between 0 and 2 A
        i = min(max(40 * (16.4 - voltage(x[0])) / (1 + 40 * 0.1), 0), 2)
        return [i / (3600 * 2)], [voltage(x[0]) + 0.1 * i, i, x[0]]
    return follow(rate, [0.1], t_end, 0.25)


def active_front_end(t_end):
    """The bridge as its mean over a switching period, in the frame of the mains."""
    e, r, l, wl = 325.269, 0.1, 2e-3, 0.6283185

    def rate(t, x):
        i_d, i_q, xd, xq, xv, v = x
        ev = 750 - v
        ed, eq = min(max(0.3 * ev + xv, -80), 80) - i_d, -i_q
        ud = e - 6 * ed - xd + wl * i_q
        uq = -6 * eq - xq - wl * i_d
        md, mq = (u * v / 750 for u in (ud, uq))  # modulation is for 750 V
        load = v / (56.25 if t < 0.06 else 28.125)
        return [(e - r * i_d + wl * i_q - md) / l, (-r * i_q - wl * i_d - mq) / l, 300 * ed, 300 * eq, 20 * ev,
                (1.5 * (md * i_d + mq * i_q) / v - load) / 1e-3], [v]
    return follow(rate, [0, 0, 0, 0, 20, 750], t_end, 2e-6)


def droop_inverters(t_end):
    """Voltages and currents as vectors at rest; two coils meet at the load."""
    r, l, tau, w0 = 0.2, 2e-3, 0.02, 314.159265359

    def rate(t, x):
        i, power, th = x[0:2], x[2:4], x[4:6]  # of each inverter; power: active + j reactive, behind the filters
        w = [w0 - m * s.real for m, s in zip((1e-4, 2e-4), power)]
        e = [(325 - 1e-3 * s.imag) * cmath.exp(1j * a) for s, a in zip(power, th)]
        v = (30 if t < 0.5 else 15) * (i[0] + i[1])
        return ([(u - v - r * j) / l for u, j in zip(e, i)] +
                [(1.5 * u * j.conjugate() - s) / tau for u, j, s in zip(e, i, power)] + w,
                [power[0].real, power[1].real, *w])
    return follow(rate, [0j, 0j, 0j, 0j, 0.0, 0.0], t_end, 5e-6)


def grid_following_dip(t_end):
    """Voltages and currents as vectors at rest; the loop turns its own frame."""
    r, l, w0 = 0.1, 5e-3, 314.159265359

    def rate(t, x):
        i, z, zw, th = x
        away = min(max((t - 0.1) / 1e-4, 0), 1) - min(max((t - 0.25) / 1e-4, 0), 1)  # 1 in the dip
        grid = 325 * (1 - 0.5 * away) * cmath.exp(1j * (w0 * t - math.radians(10) * away))
        turn = cmath.exp(1j * th)
        e, idq = grid / turn, i / turn
        w = w0 + 0.4 * e.imag + zw
        error = min(max(2 / 3 * 1e4 / e.real, 0), 25) - idq
        want = 5 * error + z + 1j * w * l * idq + e
        u = want * min(1, 404 / abs(want))
        return ([(u * turn - grid - r * i) / l, 100 * error + 20 * (u - want), 26 * e.imag, w],
                [1.5 * (e * idq.conjugate()).real, idq.real, w])
    return follow(rate, [0j, 0j, 0.0, 0.0], t_end, 5e-6)


def brushless_six_step(t_end):
    """Phase by phase: at a rail while a switch is on, at the rail of a diode while the current goes on, else open."""
    rs, ls, lam, p, j, b, u = 0.3, 0.2e-3, 20e-3, 2, 0.3e-3, 0.1e-3, 48.0
    third = 2 * math.pi / 3

    def shape(angle):
        x = (angle / (math.pi / 6)) % 12
        return x if x < 1 else 1 if x < 5 else 6 - x if x < 7 else -1 if x < 11 else x - 12

    def legs(x):
        """For each phase its voltage, None for an open one."""
        currents, found = (x[0], x[1], -x[0] - x[1]), []
        for k, i in enumerate(currents):
            s = math.sin(x[3] - k * third)
            found.append(u if s > 0.5 else 0 if s < -0.5 else None if abs(i) < 1e-9 else 0 if i > 0 else u)
        return found

    def rate(t, x):
        i = (x[0], x[1], -x[0] - x[1])
        v, f = legs(x), [shape(x[3] - k * third) for k in range(3)]
        e = [lam * p * x[2] * y for y in f]
        on = [k for k in range(3) if v[k] is not None]
        neutral = sum(v[k] - e[k] - rs * i[k] for k in on) / max(len(on), 1)
        di = [(v[k] - neutral - e[k] - rs * i[k]) / ls if k in on and len(on) > 1 else 0 for k in range(3)]
        te = lam * p * sum(y * z for y, z in zip(f, i))
        load = 0.8 if t >= 0.15 else 0.2
        return [di[0], di[1], (te - load - b * x[2]) / j, p * x[2]], [x[2]]

    def keep(t, x, before={}):
        """A phase whose switches are off ends its current at 0."""
        i, old = [x[0], x[1], -x[0] - x[1]], before.get("i", (0, 0, 0))
        for k in range(3):
            if abs(math.sin(x[3] - k * third)) <= 0.5 and i[k] * old[k] < 0:
                rest = i[k]
                i[k] = 0
                i[(k + 1) % 3] += rest
        before["i"] = i
        return [i[0], i[1], x[2], x[3]]
    return follow(rate, [0.0, 0.0, 0.0, 0.0], t_end, 1e-6, keep)


def main():
    name, path = sys.argv[1:]
    times = [float(line.split()[0]) for line in open(path)]
    points, h = globals()[name](times[-1])
    for t in times:
        k = min(int(t / h), len(points) - 2)
        part = t / h - k
        row = [a + part * (b - a) for a, b in zip(points[k][1], points[k + 1][1])]
        print("".join(f"{x:13.6e} " for x in (t, *row)))


if __name__ == "__main__":
    main()
