// block_history.cpp -- what blocks remember of accepted points.
#include <algorithm>
#include <cmath>

#include "base/flags_class.h"
#include "models/block_functions.h"
#include "models/sampling.h"

void get_t_next(double t1, double t0, double y1, double y0, double t_now, double dt_guard, double dt_default,
                double& t_next) {
    constexpr double flat = 1e-10;  // a smaller change of y shows no direction
    t_next = t_now + dt_default;
    if (!(y1 * y0 > 0.0 && std::fabs(y1 - y0) >= flat)) return;
    const double crossing = t1 - y1 / ((y1 - y0) / (t1 - t0));
    if (!(crossing > t_now)) return;
    t_next = crossing - t_now <= 2.0 * dt_guard ? t_now + 2.0 * dt_guard : crossing - dt_guard;
}

void sample_pair::take(double x, double time) const {
    if (time > s[1]) {
        s[2] = s[0];
        s[3] = s[1];
    } else if (!(time > s[3])) {
        s[2] = x;
        s[3] = time;
    }
    s[0] = x;
    s[1] = time;
}

double sample_pair::next_break(double level, double dt_guard, double dt_default, double time, int step) const {
    double t_next = time + dt_default;
    if (step > 1) get_t_next(s[1], s[3], s[0] - level, s[2] - level, time, dt_guard, dt_default, t_next);
    return t_next;
}

double sample_pair::next_break(double level, double dt_guard, double dt_default, const flags_class* flags) const {
    return next_break(level, dt_guard, dt_default, flags->time_given, flags->iter_trns_1);
}

void running_mean::clear(double time) const {
    s[0] = 0.0;
    s[1] = time;
    s[2] = 0.0;
}

void running_mean::take(double q, double time) const {
    constexpr double whole = 1.0 - 1e-9;  // a period that lacks no more than rounding is over
    if (time > s[1]) {
        s[0] += q * (time - s[1]);
        s[2] += time - s[1];
        if (per > 0.0 && s[2] >= per * whole) s[0] = s[2] = 0.0;
    }
    s[1] = time;  // a time that falls was given by a rejected step
}

void running_mean::mean(double q, double time, double& y, double& dy) const {
    const double since = std::max(time - s[1], 0.0), covered = std::max(s[2] + since, t_min);
    y = (q * since + s[0]) / covered;
    dy = since / covered;
}

double begin_of_run(const flags_class* flags) { return flags->iter_trns_1 >= 0 ? flags->t_start : flags->time_given; }

void kept_value::clear(double x, double time) const {
    s[0] = s[2] = x;
    s[1] = time;
}
bool kept_value::is_accepted(const flags_class* flags) const {
    return s[1] <= flags->time_present + flags->time_epsilon;
}
double kept_value::accepted(const flags_class* flags) const { return is_accepted(flags) ? s[0] : s[2]; }
void kept_value::take(double x, const flags_class* flags) const {
    s[2] = accepted(flags);
    s[0] = x;
    s[1] = flags->time_given;
}

void running_peak::clear() const {
    s[0] = -HUGE_VAL;
    s[1] = 0.0;
}
double running_peak::with(double x, double time) const {
    const bool goes_on = !(per > 0.0) || sample_times{begin, per}.number(time) == s[1];
    return goes_on ? std::max(s[0], x) : x;
}
void running_peak::take(double x, double time) const {
    s[0] = with(x, time);
    if (per > 0.0) s[1] = sample_times{begin, per}.number(time);
}
