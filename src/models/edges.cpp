#include "models/edges.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "base/flags_class.h"

namespace {
struct corner {
    double t, y;
};

// An empty list over a store, and a corner at its end.
template <class Store>
edge_list empty_list(const Store& s) {
    edge_list e;
    e.t = s.t;
    e.y = s.y;
    return e;
}
template <class Store>
void add(edge_list& e, Store& s, const corner& c) {
    s.t[e.n] = c.t;
    s.y[e.n++] = c.y;
}

// Each corner goes to its place at once: a clock is made anew in every evaluation.
template <class... Corner>
edge_list stored(edge_store& s, const Corner&... corners) {
    edge_list e = empty_list(s);
    (add(e, s, corners), ...);
    return e;
}

edge_list repeated(edge_list e, double per, double t0) {
    e.t0 = t0;
    e.per = per;
    return e;
}

bool repeats(const edge_list& e, double from_origin) { return e.per > 0 && (e.repeat_before || from_origin >= 0); }

// How far the rounding of t and of its distance from the origin can take a time away from a corner, s.
double rounding(const edge_list& e, double t) {
    return 4 * std::numeric_limits<double>::epsilon() * (std::fabs(t) + std::fabs(e.t0));
}

// Time within the list: from the origin, or within the period. Just before the end of a period it is below 0 by what is
// missing to it, so that distances stay exact.
double phase(const edge_list& e, double t) {
    double p = t - e.t0;
    if (!repeats(e, p)) return p;
    p = std::fmod(p, e.per);
    if (p < 0) p += e.per;
    if (e.per - p <= std::min(1e-10, 1e-3 * e.per)) p -= e.per;
    return p;
}

// The number of corners at or before p.
int passed(const edge_list& e, double p) { return static_cast<int>(std::upper_bound(e.t, e.t + e.n, p) - e.t); }
}  // namespace

edge_list clock_edges(edge_store& s, double t1, double t2, double dt1, double dt2, double t0, double low, double high) {
    return repeated(
        stored(s, corner{0, low}, corner{dt1, high}, corner{t1, high}, corner{t1 + dt2, low}, corner{t1 + t2, low}),
        t1 + t2, t0);
}

edge_list pulse_edges(edge_store& s, double y1, double y2, double td, double tr, double tf, double pw, double per) {
    // A pulse that fills its period may pass its end by rounding.
    const auto held = [per](double t) { return t > per && t <= per * (1 + 1e-9) ? per : t; };
    edge_list e = stored(s, corner{0, y1}, corner{tr, y2}, corner{held(tr + pw), y2}, corner{held(tr + pw + tf), y1},
                         corner{per, y1});
    if (!(per > 0)) e.n = 4;
    e.repeat_before = false;
    return repeated(e, per, td);
}

edge_list step_edges(edge_store& s, double y1, double y2, double t0, double dt) {
    edge_list e = stored(s, corner{0, y1}, corner{dt, y2});
    e.t0 = t0;
    return e;
}

edge_list triangle_edges(edge_store& s, double per, double t0, double y_min, double y_max) {
    return peak_edges(s, 0.5 * per, per, t0, y_min, y_max);
}

edge_list peak_edges(edge_store& s, double rise, double per, double t0, double y_min, double y_max) {
    return repeated(stored(s, corner{0, y_min}, corner{rise, y_max}, corner{per, y_min}), per, t0);
}

edge_list dead_time_edges(edge_store& s, double t1, double t2, double dt1, double dt2, double td, double t0, double low,
                          double high) {
    return repeated(stored(s, corner{0, low}, corner{td, low}, corner{td + dt1, high}, corner{t1, high},
                           corner{t1 + dt2, low}, corner{t1 + t2, low}),
                    t1 + t2, t0);
}

edge_list trapezoid_edges(edge_store& s, double per, double t0, double a, double flat) {
    const double half = 0.5 * per, rise = half * (1 - flat);
    return repeated(
        stored(s, corner{0, -a}, corner{rise, a}, corner{half, a}, corner{half + rise, -a}, corner{per, -a}), per,
        t0 - 0.5 * rise);
}

edge_list toggle_edges(toggle_store& s, int n, const double* t, double y1, double y2, double tr, double tf) {
    edge_list e = empty_list(s);
    for (int k = 0; k < n; ++k) {
        add(e, s, {t[k], k % 2 ? y2 : y1});
        add(e, s, {t[k] + (k % 2 ? tf : tr), k % 2 ? y1 : y2});
    }
    return e;
}

edge_list firing_edges(edge_store& s, double t_w, double dt, double per, double t0, double low, double high) {
    edge_list e = pulse_edges(s, low, high, t0, dt, dt, t_w - dt, per);
    e.repeat_before = true;
    return e;
}

edge_list pwm_edges(toggle_store& s, int n, const double* angle, bool half_wave, double y_first, double y_other,
                    double dt, double per, double t0) {
    edge_list e = empty_list(s);
    double level = y_first, other = y_other;
    const auto toggle = [&](double t) {
        add(e, s, {t, level});
        add(e, s, {t + dt, other});
        std::swap(level, other);
    };
    const bool begins_with_edge = (n % 2 == 0) == half_wave;
    if (begins_with_edge) {
        std::swap(level, other);
        toggle(0);
    } else {
        add(e, s, {0, level});
    }
    for (int k = 0; k < n; ++k) toggle(angle[k] / 360 * per);
    if (half_wave) {
        if (begins_with_edge) toggle(0.5 * per);
        for (int k = 0; k < n; ++k) toggle((0.5 + angle[k] / 360) * per);
    }
    add(e, s, {per, level});
    return repeated(e, per, t0);
}

edge_list point_edges(int n, const double* t, const double* y) {
    edge_list e;
    e.n = n;
    e.t = t;
    e.y = y;
    return e;
}

bool edges_in_order(const edge_list& e) {
    if (e.n < 1) return false;
    for (int i = 1; i < e.n; ++i)
        if (!(e.t[i] >= e.t[i - 1])) return false;
    return !(e.per > 0) || e.t[e.n - 1] <= e.per;
}

double edge_value(const edge_list& e, double t) {
    double p = phase(e, t);
    if (p < 0 && repeats(e, t - e.t0)) p = 0;
    int i = passed(e, p);
    if (i < e.n && e.t[i] - p <= rounding(e, t)) {
        p = e.t[i];
        i = passed(e, p);
    }
    if (i == 0) return e.y[0];
    if (i == e.n) return e.y[e.n - 1];
    return e.y[i - 1] + (e.y[i] - e.y[i - 1]) * ((p - e.t[i - 1]) / (e.t[i] - e.t[i - 1]));
}

double edge_slope(const edge_list& e, double t) {
    double p = phase(e, t);
    if (p < 0 && repeats(e, t - e.t0)) p = 0;
    const int i = passed(e, p);
    return i == 0 || i == e.n ? 0 : (e.y[i] - e.y[i - 1]) / (e.t[i] - e.t[i - 1]);
}

double edge_next(const edge_list& e, double t, double eps) {
    const double p = phase(e, t), ahead = std::max(eps, rounding(e, t));
    const bool repeated = repeats(e, t - e.t0);
    const int i = passed(e, (repeated ? std::max(p, 0.0) : p) + ahead);
    if (i < e.n) return repeated ? t + (e.t[i] - p) : e.t0 + e.t[i];
    if (!repeated) return std::numeric_limits<double>::infinity();
    // The list ends with the period, on which t stands: the first corner of the next one that is far enough.
    const int j = std::min(passed(e, p + ahead - e.per), e.n - 1);
    return t + (e.per + e.t[j] - p);
}

double edge_eps(const edge_list& e) {
    double shortest = 0;
    for (int i = 1; i < e.n; ++i) {
        const double d = e.t[i] - e.t[i - 1];
        if (d == 0 && e.y[i] != e.y[i - 1]) return 0;
        if (d > 0 && (shortest == 0 || d < shortest)) shortest = d;
    }
    return 0.01 * shortest;
}

bool edge_jumps(const edge_list& e, double t) {
    const double p = phase(e, t), tol = rounding(e, t);
    const bool repeated = repeats(e, t - e.t0);
    const int first = static_cast<int>(std::lower_bound(e.t, e.t + e.n, p - tol) - e.t), end = passed(e, p + tol);
    // On the end of a period, whose phase is next to 0, the last value before stands at the end of the list.
    if (repeated && std::fabs(p) <= tol)
        return e.y[end > 0 ? end - 1 : 0] != e.y[std::min(passed(e, e.per - tol - tol), e.n - 1)];
    return first < end && e.y[first] != e.y[end - 1];
}

void edge_break(const edge_list& e, double eps, flags_class* flags) {
    const double t = edge_next(e, flags->time_given, eps);
    if (!std::isfinite(t)) return;
    flags->time_nextbreak = t;
    flags->break_jumps = flags->event_restart && edge_jumps(e, t) ? 1 : 0;
}

void edge_break(int n, const edge_list* waves, double eps, double time, double& nextbreak) {
    double first = std::numeric_limits<double>::infinity();
    for (int i = 0; i < n; ++i) first = std::min(first, edge_next(waves[i], time, eps));
    if (std::isfinite(first)) nextbreak = first;
}
