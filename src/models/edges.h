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
struct edge_store {
    double t[8], y[8];
};

// Low until t0, then per period t1 + t2: a rise within dt1, high for the rest of t1, a fall within dt2, low for the
// rest of t2. All in s; dt1 <= t1, dt2 <= t2.
edge_list clock_edges(edge_store& s, double t1, double t2, double dt1, double dt2, double t0, double low, double high);
// y1 until td, a rise within tr to y2 for pw, a fall within tf, y1 until per; per of 0: a single pulse.
edge_list pulse_edges(edge_store& s, double y1, double y2, double td, double tr, double tf, double pw, double per);
// y1 until t0, then y2, reached within dt.
edge_list step_edges(edge_store& s, double y1, double y2, double t0, double dt);
// y_min at t0, y_max half a period later, straight between.
edge_list triangle_edges(edge_store& s, double per, double t0, double y_min, double y_max);
// n points (t, y) as they stand, end values outside; nothing is copied.
edge_list point_edges(int n, const double* t, const double* y);

// True if there is a corner, times ascend (equal ones are a jump), and a period is not shorter than its corners. False
// for NaN.
bool edges_in_order(const edge_list& e);

// The value at time t. A time that is before a corner by no more than its own rounding counts as the corner; the last
// 1e-10 s of a period count as the beginning of the next one (less in periods below 100 ns).
double edge_value(const edge_list& e, double t);

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
