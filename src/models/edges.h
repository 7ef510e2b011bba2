// edges.h -- waves of straight lines between corners: clocks, pulses, triangles, point lists.
#pragma once

struct flags_class;

// A wave by its corners. t ascends; two equal times are a jump, and at that time the later value holds. Times are
// measured from t0. The arrays are lent: parameters of a unit, a data file, or an edge_store.
struct edge_list {
    int n = 0;                  // corners, at least 1
    const double* t = nullptr;  // [n] s
    const double* y = nullptr;  // [n]
    double t0 = 0.0;            // s, origin
    double per = 0.0;           // s; 0 or less: once, with y[n - 1] from the last corner on
    bool repeat_before = true;  // a repeated wave runs before t0 as well; false: it holds y[0] until t0
};
// A repeated list begins with t = 0 and ends with t = per.

// Room for the corners that a wave makes from its parameters; lives as long as the list is used.
template <int n_max>
struct corner_store {
    double t[n_max], y[n_max];
};
using edge_store = corner_store<8>;
constexpr int max_toggles = 20;                          // of a list of edges
using toggle_store = corner_store<4 * max_toggles + 6>;  // twice as many, two more, and both ends of a period

// Low until t0, then per period t1 + t2: a rise within dt1, high for the rest of t1, a fall within dt2, low for the
// rest of t2. All in s; dt1 <= t1, dt2 <= t2.
edge_list clock_edges(edge_store& s, double t1, double t2, double dt1, double dt2, double t0, double low, double high);
// y1 until td, a rise within tr to y2 for pw, a fall within tf, y1 until per; per of 0: a single pulse.
edge_list pulse_edges(edge_store& s, double y1, double y2, double td, double tr, double tf, double pw, double per);
// y1 until t0, then y2, reached within dt.
edge_list step_edges(edge_store& s, double y1, double y2, double t0, double dt);
// y_min at t0, y_max half a period later, straight between.
edge_list triangle_edges(edge_store& s, double per, double t0, double y_min, double y_max);
// The same with y_max `rise` later; rise from 0 to per.
edge_list peak_edges(edge_store& s, double rise, double per, double t0, double y_min, double y_max);
// One of two clocks that are never high together: low for td from t0 on, then as clock_edges. The other one has t1 and
// t2 by turns and begins at t0 + t1. td + dt1 <= t1, dt2 <= t2.
edge_list dead_time_edges(edge_store& s, double t1, double t2, double dt1, double dt2, double td, double t0, double low,
                          double high);
// A trapezoid between -a and a, 0 at t0 and rising there; it stays at each end for the share `flat` of half a period.
edge_list trapezoid_edges(edge_store& s, double per, double t0, double a, double flat);
// y1 until t[0], then y2, and so on by turns at n times, n <= max_toggles; tr and tf are the lengths of the edges to y2
// and to y1.
edge_list toggle_edges(toggle_store& s, int n, const double* t, double y1, double y2, double tr, double tf);
// High for t_w from t0 on, the rise within its first dt, the fall within another dt; low for the rest of the period.
edge_list firing_edges(edge_store& s, double t_w, double dt, double per, double t0, double low, double high);
// A period that begins with y_first at t0 and changes to y_other and back by turns at n angles, degrees, n <=
// max_toggles, by edges of the length dt. half_wave: the angles are those of its first half, and the second half is the
// first one with the levels changed over. A period that does not end with the level it began with has one edge more, at
// its beginning, and with half_wave at its half.
edge_list pwm_edges(toggle_store& s, int n, const double* angle, bool half_wave, double y_first, double y_other,
                    double dt, double per, double t0);
// n points (t, y) as they stand, end values outside; nothing is copied.
edge_list point_edges(int n, const double* t, const double* y);

// True if there is a corner, times ascend (equal ones are a jump), and a period is not shorter than its corners. False
// for NaN.
bool edges_in_order(const edge_list& e);

// The value at time t. A time that is before a corner by no more than its own rounding counts as the corner; the last
// 1e-10 s of a period count as the beginning of the next one (less in periods below 100 ns).
double edge_value(const edge_list& e, double t);

// The slope of the line at t, at a corner of the one behind it; 0 outside the corners.
double edge_slope(const edge_list& e, double t);

// The first corner that lies more than eps, s, ahead of t, so never the corner that t stands on; infinity: none is
// left.
double edge_next(const edge_list& e, double t, double eps);

// True if the wave jumps at its corner at time t.
bool edge_jumps(const edge_list& e, double t);

// One hundredth of the shortest line between corners, s: the eps that parts neighbouring corners. 0 for a wave that
// jumps, so that a step which ends just before a jump does not pass over it.
double edge_eps(const edge_list& e);

// The answer of a source under nexttime: the next corner after time_given; without one, time_nextbreak stays.
void edge_break(const edge_list& e, double eps, flags_class* flags);
// The same for n waves at once, at any time: the first corner of all; without one, nextbreak stays.
void edge_break(int n, const edge_list* waves, double eps, double time, double& nextbreak);
