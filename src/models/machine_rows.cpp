#include "models/machine_rows.h"

namespace {
// A slope that changes with alpha and beta of the voltages by these.
void by_phases(double* by_v, double alpha, double beta) {
    by_v[0] = 2.0 / 3.0 * alpha;
    by_v[1] = -alpha / 3.0 + beta * one_by_root_3;
    by_v[2] = -alpha / 3.0 - beta * one_by_root_3;
}

template <class Point>
void add_phases(Point& p, const stationary& i) {
    const phases x = to_phases(i);
    p.current[0] = x.a;
    p.current[1] = x.b;
    p.current[2] = x.c;
}
template <class Point>
void add_phases_by(Point& p, int state, const stationary& i) {
    const phases x = to_phases(i);
    p.current_by[0][state] = x.a;
    p.current_by[1][state] = x.b;
    p.current_by[2][state] = x.c;
}
// Currents id, iq of a rotor at the electrical angle of cosine c and sine s, by the angle of the shaft.
template <class Point>
void add_turned(Point& p, const turning& i, double c, double s, double pairs, int angle) {
    const stationary x = turned_back(i, c, s);
    add_phases(p, x);
    add_phases_by(p, angle, {-pairs * x.beta, pairs * x.alpha});
}
stationary stator_voltages(const double* v) { return to_stationary({v[0], v[1], v[2]}); }
}  // namespace

machine_point<3, 6, 4> point_of(const induction_machine& m, const double* v, const double* x, double tl) {
    enum { ds, qs, dr, qr, wm };
    machine_point<3, 6, 4> p;
    const stationary u = stator_voltages(v);
    const induction_machine::fluxes flux = {x[ds], x[qs], x[dr], x[qr]};
    const induction_machine::currents i = m.currents_of(flux);
    const double by_det = 1.0 / m.determinant(), own_s = (m.llr + m.lm) * by_det, own_r = (m.lls + m.lm) * by_det,
                 other = -m.lm * by_det, pairs = m.mech.pairs, w_slip = -pairs * x[wm];
    m.slopes(u.alpha, u.beta, 0.0, tl, x, p.slope);
    add_phases(p, {i.ds, i.qs});
    add_phases_by(p, ds, {own_s, 0.0});
    add_phases_by(p, qs, {0.0, own_s});
    add_phases_by(p, dr, {other, 0.0});
    add_phases_by(p, qr, {0.0, other});
    for (int axis = 0; axis < 2; ++axis) {
        const int stator = ds + axis, rotor = dr + axis;
        p.slope_by[stator][stator] = -m.rs * own_s;
        p.slope_by[stator][rotor] = -m.rs * other;
        p.slope_by[rotor][stator] = -m.rr * other;
        p.slope_by[rotor][rotor] = -m.rr * own_r;
    }
    p.slope_by[dr][qr] = w_slip;
    p.slope_by[qr][dr] = -w_slip;
    p.slope_by[dr][wm] = -pairs * x[qr];
    p.slope_by[qr][wm] = pairs * x[dr];
    by_phases(p.slope_by_v[ds], 1.0, 0.0);
    by_phases(p.slope_by_v[qs], 0.0, 1.0);
    // The cross product of stator and rotor flux.
    const double k = 1.5 * pairs * other;
    p.torque = m.torque(flux, i);
    p.torque_by[ds] = k * x[qr];
    p.torque_by[qs] = -k * x[dr];
    p.torque_by[dr] = -k * x[qs];
    p.torque_by[qr] = k * x[ds];
    p.turn(m.mech, tl, x[wm]);
    return p;
}

machine_point<3, 4, 2> point_of(const brushless_machine& m, const double* v, const double* x, double tl) {
    enum { ia, ib, wm, th };
    machine_point<3, 4, 2> p;
    const brushless_machine::flux_shape s = m.shape_at(x[th]);
    const double pairs = m.mech.pairs, by_w = m.lam * pairs, per_l = 1.0 / m.ls;
    const double f[] = {s.a.f, s.b.f, s.c.f}, df[] = {pairs * s.a.df, pairs * s.b.df, pairs * s.c.df};
    const double mean_f = (f[0] + f[1] + f[2]) / 3.0, mean_df = (df[0] + df[1] + df[2]) / 3.0;
    m.slopes({v[0], v[1], v[2]}, tl, x, p.slope);
    p.torque = m.torque(s, x[ia], x[ib]);
    for (int k = ia; k <= ib; ++k) {
        p.current[k] = x[k];
        p.current_by[k][k] = 1.0;
        p.current[2] -= x[k];
        p.current_by[2][k] = -1.0;
        p.slope_by[k][k] = -m.rs * per_l;
        p.slope_by[k][wm] = -by_w * (f[k] - mean_f) * per_l;
        p.slope_by[k][th] = -by_w * x[wm] * (df[k] - mean_df) * per_l;
        for (int t = 0; t < 3; ++t) p.slope_by_v[k][t] = ((t == k ? 1.0 : 0.0) - 1.0 / 3.0) * per_l;
        p.torque_by[k] = by_w * (f[k] - f[2]);
        p.torque_by[th] += by_w * (df[k] - df[2]) * x[k];
    }
    p.turn(m.mech, tl, x[wm]);
    return p;
}

machine_point<3, 4, 2> point_of(const magnet_machine& m, const double* v, const double* x, double tl) {
    enum { id, iq, wm, th };
    machine_point<3, 4, 2> p;
    const double pairs = m.mech.pairs, we = pairs * x[wm], c = std::cos(pairs * x[th]), s = std::sin(pairs * x[th]);
    const turning u = turned(stator_voltages(v), c, s);
    add_turned(p, {x[id], x[iq]}, c, s, pairs, th);
    add_phases_by(p, id, {c, s});
    add_phases_by(p, iq, {-s, c});
    p.slope[id] = (u.d - m.rs * x[id] + we * m.lq * x[iq]) / m.ld;
    p.slope[iq] = (u.q - m.rs * x[iq] - we * (m.ld * x[id] + m.lam)) / m.lq;
    p.slope_by[id][id] = -m.rs / m.ld;
    p.slope_by[id][iq] = we * m.lq / m.ld;
    p.slope_by[id][wm] = pairs * m.lq * x[iq] / m.ld;
    p.slope_by[id][th] = pairs * u.q / m.ld;
    p.slope_by[iq][id] = -we * m.ld / m.lq;
    p.slope_by[iq][iq] = -m.rs / m.lq;
    p.slope_by[iq][wm] = -pairs * (m.ld * x[id] + m.lam) / m.lq;
    p.slope_by[iq][th] = -pairs * u.d / m.lq;
    by_phases(p.slope_by_v[id], c / m.ld, s / m.ld);
    by_phases(p.slope_by_v[iq], -s / m.lq, c / m.lq);
    const double k = 1.5 * pairs;
    p.torque = k * (m.lam + (m.ld - m.lq) * x[id]) * x[iq];
    p.torque_by[id] = k * (m.ld - m.lq) * x[iq];
    p.torque_by[iq] = k * (m.lam + (m.ld - m.lq) * x[id]);
    p.turn(m.mech, tl, x[wm]);
    return p;
}

machine_point<5, 7, 5> point_of(const wound_field_machine& m, const double* v, const double* x, double tl) {
    enum { fds, fqs, ffd, fkd, fkq, wm, th, fp = 3, fn = 4 };
    machine_point<5, 7, 5> p;
    const double pairs = m.mech.pairs, we = pairs * x[wm], c = std::cos(pairs * x[th]), s = std::sin(pairs * x[th]);
    const turning u = turned(stator_voltages(v), c, s);
    // Fluxes to currents, by axis; in the order of the states.
    const double* const gd = m.gd;
    const double* const gq = m.gq;
    const double by_flux[5][5] = {{gd[0], 0.0, gd[1], gd[2], 0.0},
                                  {0.0, gq[0], 0.0, 0.0, gq[1]},
                                  {gd[1], 0.0, gd[3], gd[4], 0.0},
                                  {gd[2], 0.0, gd[4], gd[5], 0.0},
                                  {0.0, gq[1], 0.0, 0.0, gq[2]}};
    const double r[5] = {m.rs, m.rs, m.rfd, m.rkd, m.rkq};
    double i[5] = {};
    for (int j = 0; j < 5; ++j)
        for (int k = 0; k < 5; ++k) {
            i[j] += by_flux[j][k] * x[k];
            p.slope_by[j][k] = -r[j] * by_flux[j][k];
        }
    for (int j = 0; j < 5; ++j) p.slope[j] = -r[j] * i[j];
    p.slope[fds] += u.d + we * x[fqs];
    p.slope[fqs] += u.q - we * x[fds];
    p.slope[ffd] += m.n_f * (v[fp] - v[fn]);
    p.slope_by[fds][fqs] += we;
    p.slope_by[fqs][fds] -= we;
    p.slope_by[fds][wm] = pairs * x[fqs];
    p.slope_by[fqs][wm] = -pairs * x[fds];
    p.slope_by[fds][th] = pairs * u.q;
    p.slope_by[fqs][th] = -pairs * u.d;
    by_phases(p.slope_by_v[fds], c, s);
    by_phases(p.slope_by_v[fqs], -s, c);
    p.slope_by_v[ffd][fp] = m.n_f;
    p.slope_by_v[ffd][fn] = -m.n_f;
    const double k_f = 1.5 * m.n_f, k_t = 1.5 * pairs;
    add_turned(p, {i[fds], i[fqs]}, c, s, pairs, th);
    p.current[fp] = k_f * i[ffd];
    p.current[fn] = -p.current[fp];
    p.torque = k_t * (x[fds] * i[fqs] - x[fqs] * i[fds]);
    for (int k = 0; k < 5; ++k) {
        add_phases_by(p, k, turned_back({by_flux[fds][k], by_flux[fqs][k]}, c, s));
        p.current_by[fp][k] = k_f * by_flux[ffd][k];
        p.current_by[fn][k] = -p.current_by[fp][k];
        p.torque_by[k] = k_t * (x[fds] * by_flux[fqs][k] - x[fqs] * by_flux[fds][k]);
    }
    p.torque_by[fds] += k_t * i[fqs];
    p.torque_by[fqs] -= k_t * i[fds];
    p.turn(m.mech, tl, x[wm]);
    return p;
}

machine_point<4, 3, 2> point_of(const dc_machine& m, const double* v, const double* x, double tl) {
    enum { ia, ifd, wm };
    machine_point<4, 3, 2> p;
    p.slope[ia] = (v[0] - v[1] - m.ra * x[ia] - m.k * x[ifd] * x[wm]) / m.la;
    p.slope[ifd] = (v[2] - v[3] - m.rf * x[ifd]) / m.lf;
    p.slope_by[ia][ia] = -m.ra / m.la;
    p.slope_by[ia][ifd] = -m.k * x[wm] / m.la;
    p.slope_by[ia][wm] = -m.k * x[ifd] / m.la;
    p.slope_by[ifd][ifd] = -m.rf / m.lf;
    const double per_l[] = {1.0 / m.la, 1.0 / m.lf};
    for (int k = ia; k <= ifd; ++k) {
        p.current[2 * k] = x[k];
        p.current[2 * k + 1] = -x[k];
        p.current_by[2 * k][k] = 1.0;
        p.current_by[2 * k + 1][k] = -1.0;
        p.slope_by_v[k][2 * k] = per_l[k];
        p.slope_by_v[k][2 * k + 1] = -per_l[k];
    }
    p.torque = m.k * x[ifd] * x[ia];
    p.torque_by[ia] = m.k * x[ifd];
    p.torque_by[ifd] = m.k * x[ia];
    p.turn(m.mech, tl, x[wm]);
    return p;
}

void dc_machine_small_signals(double freq, const std::complex<double>* v, const std::complex<double>* aux,
                              const std::complex<double>* vr, std::complex<double>* f, ebac1_class* jac,
                              const ebes1_class* ebe_jac, const flags_class* flags) {
    struct group {
        double** bias;
        std::complex<double>** to;
        const std::complex<double>* x;
    };
    const group groups[] = {{ebe_jac ? ebe_jac->dfdv : nullptr, jac->dfdv, v},
                            {ebe_jac ? ebe_jac->dfdaux : nullptr, jac->dfdaux, aux},
                            {ebe_jac ? ebe_jac->dfdvr : nullptr, jac->dfdvr, vr}};
    enum kind { volt, unknown, variable };
    struct place {
        kind of;
        int row, column;
        bool is_own;  // the unknown that the row defines
    };
    constexpr place places[] = {{unknown, 0, 0, false},  {unknown, 1, 0, false}, {unknown, 2, 1, false},
                                {unknown, 3, 1, false},  {volt, 4, 0, false},    {volt, 4, 1, false},
                                {unknown, 4, 0, true},   {unknown, 4, 1, false}, {unknown, 4, 2, false},
                                {volt, 5, 2, false},     {volt, 5, 3, false},    {unknown, 5, 1, true},
                                {variable, 6, 0, false}, {unknown, 6, 0, false}, {unknown, 6, 1, false},
                                {unknown, 6, 2, true},   {variable, 7, 1, true}, {unknown, 7, 2, false}};
    std::complex<double> sum[8] = {};
    for (const place& c : places) {
        const group& g = groups[c.of];
        std::complex<double> by = g.bias ? g.bias[c.row][c.column] : c.is_own ? 1.0 : 0.0;
        if (g.bias && c.is_own && c.of == unknown) by -= std::complex<double>{0.0, freq};
        sum[c.row] += by * g.x[c.column];
        if (flags->jacobian) g.to[c.row][c.column] = by;
    }
    if (flags->function) std::copy_n(sum, 8, f);
}
