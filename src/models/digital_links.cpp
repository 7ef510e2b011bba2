#include "models/digital_links.h"

#include <cmath>
#include <limits>

int binary_code(const int* dvar, int n) {
    int code = 0;
    for (int k = 0; k < n; ++k)
        if (dvar[k] == 1) code += 1 << k;
    return code;
}

double output_slope::value(double t) const {
    const double to = *on ? high : low;
    if (!*moving || t >= end()) return to;
    if (t <= *t_from) return *u_from;
    return *u_from + (to - *u_from) * ((t - *t_from) / (end() - *t_from));
}

double output_slope::end() const {
    if (!*moving) return std::numeric_limits<double>::lowest();
    const double to = *on ? high : low, whole = std::fabs(high - low);
    // With equal levels, which a sweep may bring, what is left is a jump.
    return *t_from + (whole > 0.0 ? (*on ? dt_rise : dt_fall) * (std::fabs(to - *u_from) / whole) : 0.0);
}

void output_slope::settle(bool level) const {
    *on = level ? 1 : 0;
    *moving = 0;
}

void output_slope::take(bool level, double t) const {
    if (*moving && t < *t_from) *t_from = t;
    if (level != (*on != 0)) {
        *u_from = value(t);
        *t_from = t;
        *on = level ? 1 : 0;
        *moving = 1;
    } else if (t > end()) {
        // Not at the end itself, so that a step that is tried again finds the slope.
        *moving = 0;
    }
}
