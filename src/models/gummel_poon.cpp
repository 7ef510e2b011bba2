#include "models/gummel_poon.h"

#include <algorithm>
#include <cmath>

#include "base/flags_class.h"
#include "models/junctions.h"
#include "models/out_of_range.h"
#include "models/silicon.h"

// ---- temperature

namespace {

double inverse(double x) { return x > 0 ? 1 / x : 0; }  // 0 stands for infinite

}  // namespace

void gummel_poon_constants(double* r, const math_cnst_class& math_cnst) {
    const double kq = math_cnst.boltzmann / math_cnst.q, temp = r[bjt::temp], tnom = r[bjt::tnom];
    const double vt = kq * temp, area = r[bjt::area];
    r[bjt::vt] = vt;
    const double growth = r[bjt::eg] / (kq * tnom) - r[bjt::eg] / vt + r[bjt::xti] * std::log(temp / tnom);
    const double gain = std::pow(temp / tnom, r[bjt::xtb]);
    r[bjt::is_t] = r[bjt::is] * std::exp(growth);
    r[bjt::bf_t] = r[bjt::bf] * gain;
    r[bjt::br_t] = r[bjt::br] * gain;
    r[bjt::ise_t] = r[bjt::ise] * std::exp(growth / r[bjt::ne]) / gain;
    r[bjt::isc_t] = r[bjt::isc] * std::exp(growth / r[bjt::nc]) / gain;
    // exp(230) is 1e100, which no saturation current needs.
    r[bjt::x_max] = r[bjt::is_t] > 0 ? std::min(std::log(r[bjt::i_max] / r[bjt::is_t]), 230.0) : 230.0;

    const silicon si{math_cnst, temp, tnom};
    const auto adjust = [&](bjt::parm vj, bjt::parm m, bjt::parm cj, bjt::parm vj_t, bjt::parm cj_t) {
        r[vj_t] = temp == tnom ? r[vj] : std::max(si.potential(r[vj]), std::min(r[vj], 0.1));
        r[cj_t] = r[cj] * std::max(si.capacitance_factor(r[vj], r[vj_t], r[m]), 0.0);
    };
    adjust(bjt::vje, bjt::mje, bjt::cje, bjt::vje_t, bjt::cje_t);
    adjust(bjt::vjc, bjt::mjc, bjt::cjc, bjt::vjc_t, bjt::cjc_t);
    adjust(bjt::vjs, bjt::mjs, bjt::cjs, bjt::vjs_t, bjt::cjs_t);
    const auto beyond = [&](bjt::parm vj_t, bjt::parm m, bjt::parm f1) {
        depletion d{0, r[vj_t], r[m], r[bjt::fc], 0, 0, 0};
        prepare(d);
        r[f1] = d.f1;
        r[f1 + 1] = d.f2;
        r[f1 + 2] = d.f3;
    };
    beyond(bjt::vje_t, bjt::mje, bjt::f1e);
    beyond(bjt::vjc_t, bjt::mjc, bjt::f1c);

    r[bjt::is_a] = r[bjt::is_t] * area;
    r[bjt::ise_a] = r[bjt::ise_t] * area;
    r[bjt::isc_a] = r[bjt::isc_t] * area;
    r[bjt::itf_a] = std::max(r[bjt::itf] * area, 0.0);
    r[bjt::vt_f] = r[bjt::nf] * vt;
    r[bjt::vt_r] = r[bjt::nr] * vt;
    r[bjt::vt_e] = r[bjt::ne] * vt;
    r[bjt::vt_c] = r[bjt::nc] * vt;
    r[bjt::g_bf] = inverse(r[bjt::bf_t]);
    r[bjt::g_br] = inverse(r[bjt::br_t]);
    r[bjt::g_kf] = inverse(r[bjt::ikf] * area);
    r[bjt::g_kr] = inverse(r[bjt::ikr] * area);
    r[bjt::g_af] = inverse(r[bjt::vaf]);
    r[bjt::g_ar] = inverse(r[bjt::var]);
    r[bjt::g_tf] = inverse(1.44 * r[bjt::vtf]);
}

// ---- evaluation

namespace {

// i = is (exp(v/vt) - 1) and its slope, a straight line from x_max vt on.
struct branch {
    double i, g;
};
branch transport(double v, double vt, double is, double x_max, int* n_limit) {
    double e, de;
    if (n_limit)
        exp_cap_1a(v, e, de, vt, x_max, *n_limit);
    else {
        exp_lmt_1(v / vt, e, de, x_max);
        de /= vt;
    }
    return {is * (e - 1), is * de};
}
// What recombines in a junction.
branch leakage(double v, double vt, double is, double x_max) {
    branch l{0, 0};
    if (is != 0) junction_exponential(v, vt, is, x_max, 0, l.i, l.g);
    return l;
}

// The base charge over that at rest. Where the widths that the voltages leave the base would reach 0, and where the
// root would lose its argument, both go on with their slope and stay above 0.
struct base_charge {
    double q, be, bc;
};
base_charge base_charge_at(const double* r, double be, double bc, const branch& f, const branch& b) {
    constexpr double least_width = 1e-2, least_square = 1e-4, least_root = 1e-2;
    const double width = 1 - bc * r[bjt::g_af] - be * r[bjt::g_ar];
    const bool wide = width >= least_width;
    const double q1 = wide ? 1 / width : (2 - width / least_width) / least_width;
    const double slope = wide ? q1 * q1 : 1 / (least_width * least_width);
    const double q1_be = slope * r[bjt::g_ar], q1_bc = slope * r[bjt::g_af];
    if (r[bjt::g_kf] == 0 && r[bjt::g_kr] == 0) return {q1, q1_be, q1_bc};

    const double square = 1 + 4 * (f.i * r[bjt::g_kf] + b.i * r[bjt::g_kr]);
    double root, d_root;  // and its slope by the square
    if (square >= least_square) {
        root = std::sqrt(square);
        d_root = 0.5 / root;
    } else {
        const double by = 1 / (1 + (least_square - square) / (2 * least_square));
        root = least_root * by;
        d_root = 0.5 / least_root * by * by;
    }
    const double half = 0.5 * (1 + root), by_q2 = 2 * q1 * d_root;
    return {q1 * half, q1_be * half + by_q2 * f.g * r[bjt::g_kf], q1_bc * half + by_q2 * b.g * r[bjt::g_kr]};
}

// The charge that runs through the base forward: tf (1 + argument) i/qb, with the argument xtf (i/(i + itf))^2
// exp(vbc/(1.44 vtf)).
gummel_poon_part transit(const double* r, double bc, const branch& f, const base_charge& q) {
    constexpr double x_most = 50;  // of the exponent, which goes on as a straight line
    double i = f.i, i_be = f.g, i_bc = 0;
    if (r[bjt::xtf] != 0) {
        double argument = r[bjt::xtf], by_i = 0, by_bc = 0;
        if (r[bjt::g_tf] != 0) {
            double e, de;
            exp_lmt_1(bc * r[bjt::g_tf], e, de, x_most);
            by_bc = argument * de * r[bjt::g_tf];
            argument *= e;
        }
        if (r[bjt::itf_a] != 0) {
            const double forward = std::max(f.i, 0.0), sum = forward + r[bjt::itf_a], share = forward / sum;
            by_i = argument * 2 * share * r[bjt::itf_a] / (sum * sum);
            argument *= share * share;
            by_bc *= share * share;
        }
        i = f.i * (1 + argument);
        i_be = f.g * (1 + argument + f.i * by_i);
        i_bc = f.i * by_bc;
    }
    const double charge = r[bjt::tf] * i / q.q, by = r[bjt::tf] / q.q, less = charge / q.q;
    return {charge, by * i_be - less * q.be, by * i_bc - less * q.bc, 0};
}

}  // namespace

gummel_poon_point gummel_poon_at(const double* r, int pol, const double* v, double gmin, int* n_limit) {
    const double be = pol * (v[bjt::b] - v[bjt::e]), bc = pol * (v[bjt::b] - v[bjt::c]),
                 sc = pol * (v[bjt::s] - v[bjt::c]);
    const double x_max = r[bjt::x_max];
    const branch f = transport(be, r[bjt::vt_f], r[bjt::is_a], x_max, n_limit);
    const branch b = transport(bc, r[bjt::vt_r], r[bjt::is_a], x_max, n_limit);
    const branch le = leakage(be, r[bjt::vt_e], r[bjt::ise_a], x_max);
    const branch lc = leakage(bc, r[bjt::vt_c], r[bjt::isc_a], x_max);
    const base_charge q = base_charge_at(r, be, bc, f, b);

    gummel_poon_point p;
    const double by_q = 1 / q.q, through = (f.i - b.i) * by_q;
    const double i_bc = b.i * r[bjt::g_br] + lc.i + gmin * bc, g_bc = b.g * r[bjt::g_br] + lc.g + gmin;
    const double i_sc = gmin * sc;
    p.ic = {through - i_bc - i_sc, (f.g - through * q.be) * by_q, (-b.g - through * q.bc) * by_q - g_bc, -gmin};
    p.ib = {f.i * r[bjt::g_bf] + le.i + gmin * be + i_bc, f.g * r[bjt::g_bf] + le.g + gmin, g_bc, 0};
    p.is = {i_sc, 0, 0, gmin};

    const depletion layer_e{r[bjt::cje_t], r[bjt::vje_t], r[bjt::mje], r[bjt::fc],
                            r[bjt::f1e],   r[bjt::f2e],   r[bjt::f3e]};
    const depletion layer_c{r[bjt::cjc_t], r[bjt::vjc_t], r[bjt::mjc], r[bjt::fc],
                            r[bjt::f1c],   r[bjt::f2c],   r[bjt::f3c]};
    const depletion layer_s{r[bjt::cjs_t], r[bjt::vjs_t], r[bjt::mjs], 0, 0, 1, 1};  // straight from 0 V on
    const double area = r[bjt::area];
    double q_e, c_e, q_c, c_c, q_s, c_s;
    depletion_charge(layer_e, be, q_e, c_e);
    depletion_charge(layer_c, bc, q_c, c_c);
    depletion_charge(layer_s, sc, q_s, c_s);
    q_c = area * q_c + r[bjt::tr] * b.i;
    c_c = area * c_c + r[bjt::tr] * b.g;
    p.qb = {area * q_e + q_c, area * c_e, c_c, 0};
    if (r[bjt::tf] != 0) {
        const gummel_poon_part t = transit(r, bc, f, q);
        p.qb.value += t.value;
        p.qb.be += t.be;
        p.qb.bc += t.bc;
    }
    p.qs = {area * q_s, 0, 0, area * c_s};
    p.qc = {-q_c - p.qs.value, 0, -c_c, -p.qs.sc};
    return p;
}

// ---- functions and derivatives

void gummel_poon_functions(const gummel_poon_point& p, int pol, double* f) {
    const auto terminals = [pol](const gummel_poon_part& c, const gummel_poon_part& b, const gummel_poon_part& s,
                                 double* to) {
        to[bjt::c] = pol * c.value;
        to[bjt::b] = pol * b.value;
        to[bjt::s] = pol * s.value;
        to[bjt::e] = -(to[bjt::c] + to[bjt::b] + to[bjt::s]);
    };
    terminals(p.ic, p.ib, p.is, f);
    terminals(p.qc, p.qb, p.qs, f + 4);
}

void gummel_poon_functions_anew(const double* rparm, int pol, const double* v, double gmin,
                                const math_cnst_class& math_cnst, double* f) {
    double own[bjt::n_parms];
    std::copy_n(rparm, static_cast<int>(bjt::n_parms), own);
    gummel_poon_constants(own, math_cnst);
    gummel_poon_functions(gummel_poon_at(own, pol, v, gmin), pol, f);
}

// pol stands twice in each and drops out.
void gummel_poon_derivatives(const gummel_poon_point& p, double** dfdv) {
    const auto terminals = [](const gummel_poon_part& c, const gummel_poon_part& b, const gummel_poon_part& s,
                              double** to) {
        const auto row = [](const gummel_poon_part& x, double* d) {
            d[bjt::c] = -(x.bc + x.sc);
            d[bjt::b] = x.be + x.bc;
            d[bjt::e] = -x.be;
            d[bjt::s] = x.sc;
        };
        row(c, to[bjt::c]);
        row(b, to[bjt::b]);
        row(s, to[bjt::s]);
        for (int k = 0; k < 4; ++k) to[bjt::e][k] = -(to[bjt::c][k] + to[bjt::b][k] + to[bjt::s][k]);
    };
    terminals(p.ic, p.ib, p.is, dfdv);
    terminals(p.qc, p.qb, p.qs, dfdv + 4);
}

// ---- the element

namespace {

bool is_number(const gummel_poon_point& p) {
    double sum = 0;
    for (const gummel_poon_part* x : {&p.ic, &p.ib, &p.qc, &p.qb, &p.qs}) sum += x->value + x->be + x->bc + x->sc;
    return std::isfinite(sum);
}

}  // namespace

bool gummel_poon_element(bool counted, int pol, double* rparm, double* v, double* f, double** dfdv, flags_class* flags,
                         const math_cnst_class& math_cnst) {
    if (flags->one_time_parms) {
        gummel_poon_constants(rparm, math_cnst);
    } else if (flags->dc || flags->trns || flags->startup) {
        int uncounted = 0;
        int* const n_limit = !counted ? nullptr : flags->jacobian ? &flags->n_limit : &uncounted;
        const gummel_poon_point p = gummel_poon_at(rparm, pol, v, flags->gmin, n_limit);
        if (!voltages_in_range<4>(v) || !is_number(p)) {
            answer_out_of_range(4, 8, f, dfdv, flags);
            return false;
        }
        if (flags->function) gummel_poon_functions(p, pol, f);
        if (flags->jacobian) gummel_poon_derivatives(p, dfdv);
    } else if (flags->init_guess) {
        v[bjt::c] = v[bjt::e] = v[bjt::s] = 0;
        v[bjt::b] = pol * rparm[bjt::vbe_ig];
    } else if (flags->outvar_prm) {
        const gummel_poon_point p = gummel_poon_at(rparm, pol, v, flags->gmin);
        rparm[bjt::ic_o] = pol * p.ic.value;
        rparm[bjt::ib_o] = pol * p.ib.value;
        rparm[bjt::vbe_o] = v[bjt::b] - v[bjt::e];
        rparm[bjt::vce_o] = v[bjt::c] - v[bjt::e];
    }
    return true;
}
