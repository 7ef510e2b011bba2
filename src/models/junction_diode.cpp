#include <cmath>
#include <limits>

#include "base/math_cnst_class.h"
#include "models/junctions.h"

void prepare(depletion& d) {
    d.f1 = d.vj / (1 - d.m) * (1 - std::pow(1 - d.fc, 1 - d.m));
    d.f2 = std::pow(1 - d.fc, 1 + d.m);
    d.f3 = 1 - d.fc * (1 + d.m);
}

// xti is divided by the emission coefficient, eg is not; the exponent limit has neither it nor the area.
void adjust_to_temperature(junction_diode& d, const math_cnst_class& math_cnst) {
    d.vt = math_cnst.boltzmann * d.temp / math_cnst.q;
    d.vt_nom = math_cnst.boltzmann * d.tnom / math_cnst.q;
    prepare(d.layer);
    d.is_t = d.is * std::pow(d.temp / d.tnom, d.xti / d.n_em) * std::exp(d.eg / d.vt_nom - d.eg / d.vt);
    d.x_max = std::log(d.i_max / d.is_t);
}

namespace {
double breakdown_current(const junction_diode& d) { return (d.ibv == 0 ? d.is * d.bv / d.vt : d.ibv) * d.area; }

// exponential(x, e, de): e and its slope by x, beyond x_max as the form of the diode has it.
template <class F>
void current_of(const junction_diode& d, double v, double gmin, F exponential, double& i, double& g) {
    const double vte = d.n_em * d.vt, is = d.is_t * d.area;
    double e, de;
    if (v >= 0 || d.bv_cont || (v > -d.bv && v > -5 * vte)) {
        exponential(v / vte, e, de);
        i = is * (e - 1) + gmin * v;
        g = is * de / vte + gmin;
    } else if (v > -d.bv) {
        i = gmin * v - is;
        g = gmin;
    } else if (v < -d.bv) {
        exponential(-(d.bv + v) / d.vt, e, de);
        i = -is * (e + d.bv / d.vt) + gmin * v;
        g = is * de / d.vt + gmin;
    } else {
        i = gmin * v - breakdown_current(d);
        g = gmin;
    }
    if (d.bv_cont && v < 0) {
        exponential(-(d.bv + v) / vte, e, de);
        i -= breakdown_current(d) * e;
        g += breakdown_current(d) * de / vte;
    }
}
}  // namespace

void junction_breakdown(junction_diode d, double v, double gmin, double& i, double& g) {
    current_of(
        d, v, gmin, [&d](double x, double& e, double& de) { exp_lmt_1(x, e, de, d.x_max); }, i, g);
}

void junction_current_counted(const junction_diode& d, bool chord, double v, double gmin, int& n_limit, double& i,
                              double& g) {
    const auto exponential = [&](double x, double& e, double& de) {
        if (chord)
            exp_cap_5a(x, e, de, 1, d.x_max, n_limit);
        else
            exp_cap_1a(x, e, de, 1, d.x_max, n_limit);
    };
    current_of(d, v, gmin, exponential, i, g);
}

bool junction_ran_away(junction_diode d, const double* v, double& i, double& g, double& q, double& c) {
    if (junction_in_range(v)) {
        // An overflow comes before what follows from it; without a saturation current the exponential has no limit.
        const bool overflow = std::isinf(i) || std::isinf(d.x_max);
        if (!overflow && (std::isnan(i) || std::isnan(g) || std::isnan(q) || std::isnan(c))) return false;
    }
    // No solution is there, and the solver sees it at once.
    constexpr double infinite = std::numeric_limits<double>::infinity();
    i = v[0] - v[1] < 0 ? -infinite : infinite;
    g = 1;
    q = c = 0;
    return true;
}
