// levels.h -- comparators: thresholds, and the crossings that they foresee.
#pragma once
#include "base/flags_class.h"
#include "models/block_functions.h"

// Two thresholds. Each is met `margin` before it is reached: a millionth of the band, so that the point that a break
// asked for, just short of the threshold, has met it.
struct hysteresis {
    double low, high, margin;

    static double margin_of(double low, double high) { return 1.0e-6 * (high - low); }
    // What meets the threshold ahead.
    double met(bool on) const { return on ? low + margin : high - margin; }
    double ahead(bool on) const { return on ? low : high; }
    bool next_on(double x, bool on) const { return x >= met(false) || (on && x > met(true)); }
};

// The same state as a number: 0 and 1, and none while the first accepted point is still to come.
constexpr double no_state = -1.0;

// ---- explicit blocks ----

inline void x_take(const sample_pair& last, double x, const flags_class* flags) {
    if (flags->iter_trns_x >= 0) last.take(x, flags->time_given_x);
}
inline double x_next_break(const sample_pair& last, double level, double dt_guard, double dt_default,
                           const flags_class* flags) {
    return last.next_break(level, dt_guard, dt_default, flags->time_given_x, flags->iter_trns_x);
}
