#include "models/toggles.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/flags_class.h"

namespace {
// How far the rounding of a time and of its distance from the origin can take it away from a change, s.
double rounding(const toggle_list& w, double t) {
    return 4 * std::numeric_limits<double>::epsilon() * (std::fabs(t) + std::fabs(w.t0) + w.per);
}

// Where t stands: the begin of the part of the period that it is in, the level there, and the changes that are past.
struct toggle_place {
    double begin;
    bool high;
    int passed;
};
toggle_place place_of(const toggle_list& w, double t) {
    const double tol = rounding(w, t), part = w.part();
    double k = std::floor((t - w.t0 + tol) / part);
    double phase = t - (w.t0 + k * part);
    if (phase + tol >= part) {  // the quotient was rounded down
        k += 1;
        phase = t - (w.t0 + k * part);
    }
    const bool high = w.half_wave && std::fmod(k, 2.0) != 0;
    return {w.t0 + k * part, high, static_cast<int>(std::upper_bound(w.t, w.t + w.n, phase + tol) - w.t)};
}
}  // namespace

toggle_list toggles_of(const data_table& table, double t0, double per, bool half_wave) {
    return {table.n_points(), table.x.data(), t0, per, half_wave};
}

bool toggles_in_order(const toggle_list& w) {
    if (!(w.per > 0) || w.n < 1 || !(w.t[0] >= 0)) return false;
    for (int i = 1; i < w.n; ++i)
        if (!(w.t[i] > w.t[i - 1])) return false;
    return w.t[w.n - 1] < w.part();
}

bool toggle_high(const toggle_list& w, double t) {
    const toggle_place p = place_of(w, t);
    return p.high != (p.passed % 2 != 0);
}

double toggle_next(const toggle_list& w, double t) {
    const toggle_place p = place_of(w, t);
    if (p.passed < w.n) return p.begin + w.t[p.passed];
    // Where the next part begins the level may stay: a period of an even number of changes, a half of an odd one. So
    // does it where the part begins with a change that turns it back.
    const double end = p.begin + w.part();
    const bool turns = (w.n % 2 != 0) != w.half_wave;
    if (turns != (w.t[0] == 0)) return end;
    return end + (w.t[0] > 0 ? w.t[0] : w.n > 1 ? w.t[1] : w.part());
}

void toggle_break(const toggle_list& w, flags_class* flags) {
    flags->time_nextbreak = toggle_next(w, flags->time_given);
    flags->break_jumps = flags->event_restart ? 1 : 0;
}
