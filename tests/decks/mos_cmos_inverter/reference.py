# The inverter of deck.in, integrated by itself: currents of Shichman and Hodges, charges of Ward and Dutton from the
# inversion charge at both ends of the channel, trapezoidal rule with 1 ps and a Jacobian from differences.
from math import exp, sqrt

cox = 3.9 * 8.854214871e-12 / 25e-9


def layer(c0, m, v):  # charge of a reverse-biased junction, v from bulk to drain
    if v < 0.4:
        return c0 * 0.8 / (1 - m) * (1 - (1 - v / 0.8) ** (1 - m))
    f1 = 0.8 / (1 - m) * (1 - 0.5 ** (1 - m))
    return c0 * (f1 + ((1 - 0.5 * (1 + m)) * (v - 0.4) + m / 1.6 * (v * v - 0.16)) / 0.5 ** (1 + m))


def device(pol, vt0, kp, gamma, lam, w, cj, cjsw, a, p):
    phi, length = 0.65, 2e-6
    vt0 *= pol
    vfb = vt0 - phi - gamma * sqrt(phi)

    def at(d, g, s, b):  # currents into d, s; charges of d, g, s
        d, g, s = pol * (d - b), pol * (g - b), pol * (s - b)
        turned = d < s
        hi, lo = (s, d) if turned else (d, s)
        root = sqrt(phi + lo) if lo >= 0 else sqrt(phi) + lo / (2 * sqrt(phi))
        over = g - lo - vt0 - gamma * (root - sqrt(phi))
        vds = hi - lo
        i = 0.0
        if over > 0:
            u = min(vds, over)
            i = kp * w / length * (over - u / 2) * u * (1 + lam * vds)
        i = -i if turned else i
        surface = phi + lo if lo >= 0 else phi * phi / (phi - lo)
        fall = 1 if lo >= 0 else (phi / (phi - lo)) ** 2
        x = g - vfb
        q0 = x - surface - gamma * sqrt(surface)
        qn, qg = 0.0, x
        if q0 > 0:
            slope = fall * (1 + gamma / (2 * sqrt(surface)))
            q1 = max(q0 - slope * vds, 0)
            qn = -2 / 3 * (q0 * q0 + q0 * q1 + q1 * q1) / (q0 + q1)
            qg = x - surface - fall * (q0 + qn) / slope
        elif x > 0:
            qg = gamma * (sqrt(gamma * gamma / 4 + x) - gamma / 2)
        c, ov = cox * w * length, 300e-12 * w
        qd = c * qn / 2 + ov * (d - g) - layer(cj * a, 0.5, -d) - layer(cjsw * p, 0.33, -d)
        qs = c * qn / 2 + ov * (s - g) - layer(cj * a, 0.5, -s) - layer(cjsw * p, 0.33, -s)
        qg = c * qg + ov * (2 * g - d - s) + 200e-12 * length * g
        j = [1e-14 * (exp(-v / 2.586418638e-02) - 1) for v in (d, s)]
        return pol * (i - j[0]), pol * (-i - j[1]), pol * qd, pol * qg, pol * qs

    return at


n = device(1, 0.8, 50e-6, 0.4, 0.02, 10e-6, 300e-6, 500e-12, 40e-12, 28e-6)
p = device(-1, -0.9, 20e-6, 0.5, 0.03, 25e-6, 400e-6, 400e-12, 80e-12, 56e-6)


def v_in(t):
    for t0, v0, t1, v1 in ((1, 0, 1.2, 5), (1.2, 5, 5.2, 5), (5.2, 5, 5.4, 0)):
        if t0 * 1e-9 <= t <= t1 * 1e-9:
            return v0 + (v1 - v0) * (t * 1e9 - t0) / (t1 - t0)
    return 0.0


def rows(x, t):  # out, inner nodes of n and p: currents out of the node, charges
    out, nd, ns, pd, ps = x
    u = v_in(t)
    a, b = n(nd, u, ns, 0), p(pd, u, ps, 5)
    i = [(out - nd) / 10 + (out - pd) / 10, (nd - out) / 10 + a[0], ns / 10 + a[1], (pd - out) / 10 + b[0],
         (ps - 5) / 10 + b[1]]
    return i, [50e-15 * out, a[2], a[4], b[2], b[4]]


def solve(m, r):
    k = len(r)
    m = [row[:] + [b] for row, b in zip(m, r)]
    for c in range(k):
        best = max(range(c, k), key=lambda j: abs(m[j][c]))
        m[c], m[best] = m[best], m[c]
        for j in range(c + 1, k):
            f = m[j][c] / m[c][c]
            m[j] = [y - f * z for y, z in zip(m[j], m[c])]
    x = [0.0] * k
    for c in range(k - 1, -1, -1):
        x[c] = (m[c][k] - sum(m[c][j] * x[j] for j in range(c + 1, k))) / m[c][c]
    return x


h, n_steps = 1e-12, 10000
x = [5.0, 5.0, 0.0, 5.0, 5.0]
i_old, q_old = rows(x, 0)
for step in range(n_steps + 1):
    t = step * h
    if step > 0:
        for _ in range(20):
            def f(y):
                i, q = rows(y, t)
                return [2 / h * (c - d) + a + b for a, b, c, d in zip(i, i_old, q, q_old)]
            r = f(x)
            m = [[0.0] * 5 for _ in x]
            for k in range(5):
                y = x[:]
                y[k] += 1e-6
                for j, s in enumerate(f(y)):
                    m[j][k] = (s - r[j]) / 1e-6
            dx = solve(m, r)
            x = [a - b for a, b in zip(x, dx)]
            if max(map(abs, dx)) < 1e-10:
                break
        i_old, q_old = rows(x, t)
    if step % 50 == 0:
        print(f" {t:.6e}  {v_in(t):.6e}  {x[0]: .6e} ")
