// silicon.h -- potentials in silicon at a temperature, and the capacitances of their depletion layers. (Nagel 1975;
// Vladimirescu and Liu, UCB/ERL M80/7, 1980.)
#pragma once
#include <cmath>

#include "base/math_cnst_class.h"

// On the way from tnom, at which parameters hold, to temp, both in K, over the temperature of the published constants.
struct silicon {
    const math_cnst_class& math_cnst;
    double temp, tnom;
    static constexpr double t_ref = 300.15;

    static double gap(double t) { return 1.16 - 7.02e-4 * t * t / (t + 1108); }  // eV
    // What a potential has more at t than in proportion to t, V.
    double excess(double t) const {
        return -3 * (math_cnst.boltzmann / math_cnst.q) * t * std::log(t / t_ref) + gap(t) - gap(t_ref) * t / t_ref;
    }
    double at_reference(double v) const { return (v - excess(tnom)) * t_ref / tnom; }
    // Of a potential v at tnom that at temp, V; hot ones fall below 0, where no layer is described.
    double potential(double v) const { return temp == tnom ? v : temp / t_ref * at_reference(v) + excess(temp); }
    // Factor on the capacitance of a layer of grading m whose potential goes from v to v_temp.
    double capacitance_factor(double v, double v_temp, double m) const {
        if (temp == tnom) return 1;
        const double v_ref = at_reference(v);
        const auto growth = [&](double t, double u) { return 1 + m * (4e-4 * (t - t_ref) - (u - v_ref) / v_ref); };
        return growth(temp, v_temp) / growth(tnom, v);
    }
};
