// junctions.h -- pn junctions: current, depletion charge, temperature. (Nagel 1975; Antognetti and Massobrio 1988,
// chapters 1 to 4.)
#pragma once
#include <cmath>

#include "base/numeric.h"

struct math_cnst_class;

// ---- what every device makes its junctions of

// is (exp(v/vte) - 1) + gmin v and its slope, a straight line above the exponent x_max. vte = n k T/q, V.
inline void junction_exponential(double v, double vte, double is, double x_max, double gmin, double& i, double& g) {
    double e, de;
    exp_lmt_1(v / vte, e, de, x_max);
    i = is * (e - 1) + gmin * v;
    g = is * de / vte + gmin;
}

// Charge of a depletion layer: c_0 integrated over (1 - v/vj)^(-m), straight in v from fc vj on.
struct depletion {
    double c_0, vj, m, fc;  // F at 0 V; V; grading, not 1; share of vj
    double f1, f2, f3;      // of the charge beyond fc vj; from prepare
};
void prepare(depletion& d);
// (1 - v/vj)^(-m); most junctions are abrupt.
inline double grading_power(double a, double m) { return m == 0.5 ? 1 / std::sqrt(a) : std::pow(a, -m); }
// Charge, C, and its slope, F. Without a capacitance both are 0 at any voltage.
inline __attribute__((always_inline)) void depletion_charge(const depletion& d, double v, double& q, double& c) {
    q = c = 0;
    if (d.c_0 == 0) return;
    const double v_edge = d.fc * d.vj;
    if (v < v_edge) {
        const double a = 1 - v / d.vj, s = grading_power(a, d.m);
        q = d.c_0 * (d.vj / (1 - d.m) * (1 - a * s));
        c = d.c_0 * s;
    } else {
        q = d.c_0 * (d.f1 + (d.f3 * (v - v_edge) + d.m / (2 * d.vj) * (v * v - v_edge * v_edge)) / d.f2);
        c = d.c_0 * ((d.f3 + d.m * v / d.vj) / d.f2);
    }
}

// ---- the junction diode

// Parameters as in the element, then what is derived from them.
struct junction_diode {
    double area, bv, eg, ibv, is, n_em, tnom, tt, xti, temp, i_max;
    depletion layer;    // without area
    bool bv_cont;       // breakdown as one continuous curve
    double vt, vt_nom;  // V, kT/q at temp and tnom
    double is_t;        // A, saturation current at temp
    double x_max;       // limit of the exponent
};
void adjust_to_temperature(junction_diode& d, const math_cnst_class& math_cnst);
// Current in A and its slope in S; gmin, S, stands across the junction. With bv_cont the breakdown is a curve of its
// own below 0 V, -ibv area exp(-(bv + v)/(n_em vt)), added to the forward curve, which then has no branches: at v = -bv
// it is -ibv area, and the sum has no jump.
void junction_breakdown(junction_diode d, double v, double gmin, double& i, double& g);  // v <= -bv, or bv_cont
inline __attribute__((always_inline)) void junction_current(const junction_diode& d, double v, double gmin, double& i,
                                                            double& g) {
    const double vte = d.n_em * d.vt, is = d.is_t * d.area;
    if (d.bv_cont || (v < 0 && v <= -d.bv)) {
        double i_b, g_b;
        junction_breakdown(d, v, gmin, i_b, g_b);
        i = i_b;
        g = g_b;
    } else if (v < 0 && v <= -5 * vte) {
        i = gmin * v - is;
        g = gmin;
    } else {
        junction_exponential(v, vte, is, d.x_max, gmin, i, g);
    }
}
// The same with exponentials that count where they are capped, and go on as tangents or, with chord, as lines through
// the origin.
void junction_current_counted(const junction_diode& d, bool chord, double v, double gmin, int& n_limit, double& i,
                              double& g);
// Depletion charge and that of the transit time, C, and its slope in F; id, gd: current and slope without gmin. What
// has the factor cj0 0 or tt 0 is 0 at any voltage.
inline __attribute__((always_inline)) void junction_charge(const junction_diode& d, double v, double id, double gd,
                                                           double& q, double& c) {
    double charge = 0, slope = 0;
    if (d.area != 0) {
        depletion_charge(d.layer, v, charge, slope);
        charge *= d.area;
        slope *= d.area;
    }
    if (d.tt != 0) {
        charge += d.tt * id;
        slope += d.tt * gd;
    }
    q = charge;
    c = slope;
}
inline bool junction_in_range(const double* v) { return std::fabs(v[0]) <= 1e100 && std::fabs(v[1]) <= 1e100; }
bool junction_ran_away(junction_diode d, const double* v, double& i, double& g, double& q, double& c);
// Both at the voltages v[0] and v[1] of the terminals. An iterate beyond 1e100 V, or where a formula leaves the range
// of numbers, is answered with an infinite current: the solver takes that for a norm that is too large. False if
// voltages in range give no number: some parameter is wrong.
inline __attribute__((always_inline)) bool junction_at(const junction_diode& d, const double* v, double gmin, double& i,
                                                       double& g, double& q, double& c) {
    const double vd = v[0] - v[1];
    junction_current(d, vd, gmin, i, g);
    junction_charge(d, vd, i - gmin * vd, g - gmin, q, c);
    return (junction_in_range(v) && std::isfinite(i + g + q + c)) || junction_ran_away(d, v, i, g, q, c);
}
