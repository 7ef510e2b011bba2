// sampling.h -- blocks that act at equal distances of time: sample times, discrete filters, sliding means.
#pragma once
#include <vector>

// Samples at t0 + n period, before t0 alike; s. A time within a millionth of the period before a sample counts as the
// sample's, so that a step which ends there by rounding is one with it.
struct sample_times {
    double t0, period;              // period > 0
    double number(double t) const;  // n of the last sample at or before t
    double next(double t) const;    // the first sample behind it; strictly ahead of t
};

// (a[0] + a[1]/z + ... + a[n_a]/z^n_a) / (b[0] + b[1]/z + ... + b[n_b]/z^n_b) on samples of x, as it stands in a unit's
// parameters (Oppenheim and Schafer, Discrete-Time Signal Processing, direct form I). No b: the denominator is 1.
struct discrete_filter {
    int n_a, n_b;
    const double* a;  // [n_a + 1]
    const double* b;  // [n_b + 1], b[0] not 0; or null, and n_b = 0
    double* x_old;    // [n_a] samples of x, newest first
    double* y_old;    // [n_b, at least 1] of y; the newest is what the block holds
    void clear() const;
    double slope() const { return a[0] / (b ? b[0] : 1.0); }  // of the value by x
    double value(double x) const;                             // that y takes for a new sample x
    void take(double x) const;                                // and moves on to
};

// The mean of the last n samples; until there are n, of those there are, and 0 of none.
class sliding_mean {
public:
    void resize(int n);  // drops the samples if n is another one
    void clear();
    void take(double q);
    double mean() const { return mean_; }
    bool empty() const { return filled_ == 0; }
    double n_last = -1e300;  // number of the newest sample

private:
    std::vector<double> q_;
    std::size_t filled_ = 0, oldest_ = 0;
    double mean_ = 0.0;
};

// The sliding means of all blocks of a kind, by slots that they take when they are prepared.
struct mean_slots {
    int limit = 10;  // slots that there may be
    std::vector<sliding_mean> slot;
    // The next free slot, or -1 if there would be more than the limit.
    int take();
    bool has(int i) const { return i >= 0 && static_cast<std::size_t>(i) < slot.size(); }
    sliding_mean& operator[](int i) { return slot[static_cast<std::size_t>(i)]; }
};

// The past of a signal as far as a delay needs it: accepted points in a ring that never grows.
class delay_line {
public:
    void resize(int n_points);  // drops the points if n_points is another number
    void clear(double t_start);
    // Keeps x at time t; points behind t go, and those that a delay of td does not reach any more. A point at t itself
    // stays: what comes again at its time is a step that was tried in vain. False if there is no room.
    bool take(double t, double x, double td);
    // x at time t, straight between points and constant outside of them; 0 before the start of the run.
    double at(double t) const;

private:
    std::size_t place(std::size_t i) const {
        const std::size_t k = oldest_ + i;
        return k < t_.size() ? k : k - t_.size();
    }
    std::vector<double> t_, x_;
    std::size_t n_ = 0, oldest_ = 0;
    double t_start_ = 0.0;
};

// The delays of all blocks of a kind, by the number of the unit.
struct delay_lines {
    std::vector<delay_line> line;
    // Makes room for unit i.
    delay_line& prepare(int i) {
        if (line.size() <= static_cast<std::size_t>(i)) line.resize(static_cast<std::size_t>(i) + 1);
        return line[static_cast<std::size_t>(i)];
    }
    delay_line& operator[](int i) { return line[static_cast<std::size_t>(i)]; }
};
