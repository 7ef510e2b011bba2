#include <cmath>

#include "models/model_functions.h"
#include "run/math_cnst_class.h"
#include "run/numeric.h"

// xti is divided by the emission coefficient, eg is not; the exponent limit has neither it nor the area.
void adjust_to_temperature(junction_diode& d, const math_cnst_class& math_cnst) {
    d.vt = math_cnst.boltzmann * d.temp / math_cnst.q;
    d.vt_nom = math_cnst.boltzmann * d.tnom / math_cnst.q;
    d.f1 = d.vj / (1 - d.m) * (1 - std::pow(1 - d.fc, 1 - d.m));
    d.f2 = std::pow(1 - d.fc, 1 + d.m);
    d.f3 = 1 - d.fc * (1 + d.m);
    d.is_t = d.is * std::pow(d.temp / d.tnom, d.xti / d.n_em) * std::exp(d.eg / d.vt_nom - d.eg / d.vt);
    d.x_max = std::log(d.i_max / d.is_t);
}

void junction_current(const junction_diode& d, double v, double gmin, double& i, double& g) {
    const double vte = d.n_em * d.vt, is = d.is_t * d.area;
    double e, de;
    if (v > -d.bv || v >= 0) {
        if (v >= 0 || v > -5 * vte) {
            exp_lmt_1(v / vte, e, de, d.x_max);
            i = is * (e - 1) + gmin * v;
            g = is * de / vte + gmin;
        } else {
            i = gmin * v - is;
            g = gmin;
        }
    } else if (v < -d.bv) {
        exp_lmt_1(-(d.bv + v) / d.vt, e, de, d.x_max);
        i = -is * (e + d.bv / d.vt) + gmin * v;
        g = is * de / d.vt + gmin;
    } else {
        const double ibv = d.ibv == 0 ? d.is * d.bv / d.vt : d.ibv;
        i = gmin * v - ibv * d.area;
        g = gmin;
    }
}

void junction_charge(const junction_diode& d, double v, double id, double gd, double& q, double& c) {
    const double v_edge = d.fc * d.vj;
    if (v < v_edge) {
        const double a = 1 - v / d.vj, s = std::pow(a, -d.m);
        q = d.vj / (1 - d.m) * (1 - a * s);
        c = s;
    } else {
        q = d.f1 + (d.f3 * (v - v_edge) + d.m / (2 * d.vj) * (v * v - v_edge * v_edge)) / d.f2;
        c = (d.f3 + d.m * v / d.vj) / d.f2;
    }
    q = d.area * d.cj0 * q + d.tt * id;
    c = d.area * d.cj0 * c + d.tt * gd;
}
