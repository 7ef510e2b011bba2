#include "models/compact_mosfet.h"

#include <algorithm>
#include <limits>

#include "models/junctions.h"

namespace {
// Beyond the range of numbers there is no solution, and the solver sees it at once.
void infinite(double v, double& i) { i = std::copysign(std::numeric_limits<double>::infinity(), v); }
}  // namespace

void cool_temperature(double t, double& held, double& dt) {
    constexpr double low = 150, high = 700, corner = 20;  // K
    held = std::clamp(t, low, high);
    dt = t > low && t < high ? 1 : 0;
    if (std::fabs(t - low) < corner) {
        const double into = t - (low - corner);
        held = low + into * into / (4 * corner);
        dt = into / (2 * corner);
    } else if (std::fabs(t - high) < corner) {
        const double left = high + corner - t;
        held = high - left * left / (4 * corner);
        dt = left / (2 * corner);
    }
}

void cool_func_1(double x, double k, double& f, double& df) {
    constexpr double x_max = 60, e_max = 1.1420073898156842e26;  // exp(60)
    f = df = 0;
    if (x <= 0 || k == 0) return;
    const double kx = k * x;
    if (kx <= x_max) {
        const double e = std::expm1(kx);
        f = x - e / k;
        df = -e;
    } else {
        f = x - (e_max * (1 + kx - x_max) - 1) / k;
        df = 1 - e_max;
    }
}

void cool_QCdg1(const cool_gate_charge& p, double v, double& q, double& c) {
    const double width = p.v_2 - p.v_1, overlap = p.c_0 - p.c_res;
    if (v <= p.v_1) {
        q = p.c_0 * v;
        c = p.c_0;
    } else if (v < p.v_2) {
        const double over = v - p.v_1;
        q = p.c_0 * v - overlap * over * over / (2 * width);
        c = p.c_0 - overlap * over / width;
    } else {
        q = overlap * 0.5 * (p.v_1 + p.v_2) + p.c_res * v;
        c = p.c_res;
    }
}

void cool_QCds1(const cool_output_charge& p, double v, double& q, double& c) {
    double f, df;
    cool_func_1(v, -1 / p.v_c, f, df);
    q = p.c_0 * v - (p.c_0 - p.c_res) * f;
    c = p.c_0 - (p.c_0 - p.c_res) * df;
}

void cool_Rd0(const cool_resistance& p, double t, double& r, double& dr) {
    const double varying = p.r0 * (1 - p.a) * std::pow(t / p.t_nom, p.e);
    r = p.r0 * p.a + varying;
    dr = varying * p.e / t;
}
double cool_Rd0_1(const cool_resistance& p, double t) {
    double r, dr;
    cool_Rd0(p, t, r, dr);
    return r;
}

void cool_CF(const cool_power_law& p, double v, double& f, double& df) {
    f = df = 0;
    if (v <= 0) return;
    double n, dn;
    limit_x((v - p.v_ref) * p.k + 2, 1.2, 3, n, dn);
    const double log_v = std::log(v / p.v_ref);
    f = p.scale * std::exp(n * log_v);
    if (f != 0) df = f * (n / v + dn * p.k * log_v);
}
double cool_CF_1(const cool_power_law& p, double v) {
    double f, df;
    cool_CF(p, v, f, df);
    return f;
}

void cool_overdrive(double v, double v_s, double& over, double& dover) {
    const double x = v / v_s;
    if (x > 50) {
        over = v;
        dover = 1;
    } else if (x > 25) {
        const double e = std::exp(-x);
        over = v_s * (x + e);
        dover = 1 - e;
    } else {
        const double e = std::exp(x);
        over = v_s * std::log1p(e);
        dover = e / (1 + e);
    }
}

void cool_I0(const cool_channel& p, double t, double& i, double& di) {
    i = p.i_ref * std::pow(t / p.t_nom, p.e_i);
    di = i * p.e_i / t;
}
double cool_I0_1(const cool_channel& p, double t) {
    double i, di;
    cool_I0(p, t, i, di);
    return i;
}

void cool_Ig(const cool_channel& p, double vg, double t, double& i, double& dg, double& dt, double& over,
             double& dover) {
    double i_0, di_0, f, df;
    cool_I0(p, t, i_0, di_0);
    cool_overdrive(vg - p.v_th - p.tc_th * (t - p.t_nom), p.v_s, over, dover);
    cool_CF({1, p.v_ref, p.k_n}, over, f, df);
    i = i_0 * f;
    dg = i_0 * df * dover;
    dt = di_0 * f - dg * p.tc_th;
}
double cool_Ig_1(const cool_channel& p, double vg, double t) {
    double i, dg, dt, over, dover;
    cool_Ig(p, vg, t, i, dg, dt, over, dover);
    return i;
}

void cool_J(const cool_channel& p, double vg, double vd, double t, double& j, double& dg, double& dd, double& dt) {
    double held, dheld, ig, ig_g, ig_t, over, dover, th, dth;
    cool_temperature(t, held, dheld);
    cool_Ig(p, vg, held, ig, ig_g, ig_t, over, dover);
    const double knee = p.v_k0 + p.k_k * over, u = vd / knee;
    tanh_1(u, th, dth);
    const double shape = th * (1 + p.lambda * vd * th);
    const double shape_u = dth * (1 + 2 * p.lambda * vd * th);
    const double shape_over = -shape_u * u / knee * p.k_k * dover;  // in the gate voltage
    j = ig * shape;
    dg = ig_g * shape + ig * shape_over;
    dd = ig * (shape_u / knee + p.lambda * th * th);
    dt = (ig_t * shape - ig * shape_over * p.tc_th) * dheld;
    if (std::isfinite(j + dg + dd + dt)) return;
    infinite(vd, j);
    dg = dt = 0;
    dd = 1;
}
double cool_J_1(const cool_channel& p, double vg, double vd, double t) {
    double j, dg, dd, dt;
    cool_J(p, vg, vd, t, j, dg, dd, dt);
    return j;
}

void cool_body_diode(const cool_diode& p, const math_cnst_class& math_cnst, double v, double t, double gmin, double& i,
                     double& g, double& dt) {
    double held, dheld;
    cool_temperature(t, held, dheld);
    const double per_k = math_cnst.boltzmann / math_cnst.q;  // V/K
    const double vt = per_k * held, vt_nom = per_k * p.t_nom, vte = p.n_em * vt;
    const double is_t = p.is * std::pow(held / p.t_nom, p.xti / p.n_em) * std::exp(p.eg / vt_nom - p.eg / vt);
    const double x_max = std::log(p.i_max / is_t), x = v / vte;
    junction_exponential(v, vte, is_t, x_max, gmin, i, g);
    // The same on the tangent: there is_t exp(x_max) is i_max at any temperature, and x_max moves with is_t.
    const double is_de = (g - gmin) * vte, rate = (p.xti / p.n_em + p.eg / vt) / held;  // A, 1/K
    dt = ((is_de - is_t) * rate - is_de * x / held) * dheld;
    if (std::isfinite(i + g + dt)) return;
    infinite(v, i);
    g = 1;
    dt = 0;
}
