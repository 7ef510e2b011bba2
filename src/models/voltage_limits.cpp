#include "models/voltage_limits.h"

#include <algorithm>
#include <cmath>

void pnlimit(double& v_new, double vt, double v_old) {
    const double v_crit = 50 * vt;
    if (v_new <= v_crit || std::fabs(v_new - v_old) <= 2 * vt) return;
    if (v_old < 0) {
        v_new = vt * std::log(v_new / vt);
        return;
    }
    const double a = 1 + (v_new - v_old) / vt;
    v_new = a >= 0 ? v_old + vt * std::log(a) : v_crit;
}

void pnlimit_ngspice(double& v_new, double v_old, double vt, double v_crit, int& n_limit) {
    if (v_new > v_crit && std::fabs(v_new - v_old) > 2 * vt) {
        const double u = (v_new - v_old) / vt;
        if (v_old <= 0)
            v_new = vt * std::log(v_new / vt);
        else if (u <= 0)
            v_new = v_old - (std::log(2 - u) + 2) * vt;
        else
            v_new = v_old + (std::log(u - 2) + 2) * vt;
        ++n_limit;
    } else if (v_new < 0) {
        const double floor = v_old <= 0 ? 2 * v_old - 1 : -v_old - 1;
        if (v_new >= floor) return;
        v_new = floor;
        ++n_limit;
    }
}

void devfetlim3(double& v_new, double v_old, double v_to) {
    const double v_tsthi = std::fabs(2 * (v_old - v_to)) + 2, v_tstlo = v_tsthi / 2 + 2, v_on = v_to + 3.5;
    const bool rising = v_new > v_old;
    if (v_old >= v_on) {  // fully on
        if (rising)
            v_new = std::min(v_new, v_old + v_tsthi);
        else if (v_new >= v_on)
            v_new = std::max(v_new, v_old - v_tstlo);
        else
            v_new = std::max(v_new, v_to + 2);
    } else if (v_old >= v_to) {  // near the threshold
        v_new = rising ? std::min(v_new, v_to + 4) : std::max(v_new, v_to - 0.5);
    } else if (!rising) {  // off
        v_new = std::max(v_new, v_old - v_tsthi);
    } else {
        const double v_edge = v_to + 0.5;
        v_new = v_new <= v_edge ? std::min(v_new, v_old + v_tstlo) : v_edge;
    }
}

void devlimvds3(double& v_new, double v_old) {
    const bool rising = v_new > v_old;
    if (v_old >= 3.5)
        v_new = rising ? std::min(v_new, 3 * v_old + 2) : std::max(v_new, 2.0);
    else
        v_new = rising ? std::min(v_new, 4.0) : std::max(v_new, -0.5);
}
