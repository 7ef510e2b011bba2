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

// ---- general blocks ----

// A comparator without memory of a quantity that goes through 0: it looks for the crossing, and jumps with it.
struct crossing {
    sample_pair last;
    double dt_guard, dt_default;  // s, as sample_pair::next_break has them
    // What it does beside its output; true: that was all that the call asked for.
    bool acts(double x, flags_class* flags) const {
        if (flags->init_guess) {
            last.clear();
        } else if (flags->save_history) {
            if (flags->iter_trns_1 >= 1 && (*last.s > 0.0) != (x > 0.0)) flags->tell_event(*last.s, x, true);
            if (flags->iter_trns_1 >= 0) last.take(x, flags->time_given);
        } else if (flags->nexttime) {
            flags->time_nextbreak = last.next_break(0.0, dt_guard, dt_default, flags);
        } else {
            return false;
        }
        return true;
    }
};

// A comparator with hysteresis: its state changes at accepted points only, and acts behind them.
struct latched_level {
    hysteresis band;
    sample_pair last;
    double& on;  // 1 or 0
    double dt_guard, dt_default;
    // As crossing::acts().
    bool acts(double x, flags_class* flags) const {
        const bool now_on = on > 0.5, next_on = band.next_on(x, now_on);
        if (flags->init_guess) {
            last.clear();
            on = 0.0;
        } else if (flags->save_history || flags->reset) {
            if (next_on != now_on) {
                const double level = band.met(now_on);
                flags->tell_event(flags->iter_trns_1 >= 1 ? *last.s - level : 0.0, x - level, false);
            }
            on = next_on ? 1.0 : 0.0;
            if (flags->save_history && flags->iter_trns_1 >= 0) last.take(x, flags->time_given);
        } else if (flags->nexttime) {
            flags->time_nextbreak = last.next_break(band.ahead(now_on), dt_guard, dt_default, flags);
        } else {
            return false;
        }
        return true;
    }
    // DC and start-up follow x at once.
    bool is_on(double x, const flags_class* flags) const { return flags->trns ? on > 0.5 : band.next_on(x, on > 0.5); }
};

// ---- explicit blocks ----

// The same state as a number: 0 and 1, and none while the first accepted point is still to come.
constexpr double no_state = -1.0;

inline void x_take(const sample_pair& last, double x, const flags_class* flags) {
    if (flags->iter_trns_x >= 0) last.take(x, flags->time_given_x);
}
inline double x_next_break(const sample_pair& last, double level, double dt_guard, double dt_default,
                           const flags_class* flags) {
    return last.next_break(level, dt_guard, dt_default, flags->time_given_x, flags->iter_trns_x);
}
