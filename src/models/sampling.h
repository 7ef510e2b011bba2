// sampling.h -- blocks that act at equal distances of time: sample times, discrete filters, sliding means.
#pragma once
#include <vector>

// Samples at t0 + n period, before t0 alike; s. A time within a millionth of the period before a sample counts as the
// sample's, so that a step which ends there by rounding is one with it.
struct sample_times {
    double t0, period;              // period > 0
    double number(double t) const;  // n of the last sample at or before t
    double next(double t) const;    // the first sample behind it; strictly ahead of t
    // Whether a sample comes at time t, where that of number n_last was taken, or none (none_yet) since `begin`. It
    // comes once, at the first point that is not before its time.
    bool due(double t, double n_last, double begin) const;
    static constexpr double none_yet = -1e300;
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
    double sum_a() const;  // numerator and denominator for values that stand
    double sum_b() const;
    double slope() const { return a[0] / (b ? b[0] : 1.0); }  // of the value by x
    double value(double x) const;                             // that y takes for a new sample x
    void take(double x) const;                                // and moves on to
};

// A discrete filter among steps that may be taken back: a sample that such a step has taken goes when a time before it
// comes. `form` has one place more behind x_old and y_old than it tells, for the sample that has left it.
struct sampled_filter {
    discrete_filter form;
    sample_times times;
    double* n_last;  // number of the newest sample, or none_yet
    void clear() const;
    void settle(double x, double y, double t) const;  // x and y have stood for long at time t
    // y at time t with x there, and its slope by x; begin: of the run, s.
    double value(double x, double t, double begin, double& slope) const;
    // A converged point; true if y is another one from there on.
    bool take(double x, double t, double begin) const;

private:
    bool in_vain(double t) const { return times.number(t) == *n_last - 1.0; }
    int n_y() const { return form.n_b > 1 ? form.n_b : 1; }
};

// The mean of the last n samples; until there are n, of those there are, and 0 of none.
class sliding_mean {
public:
    void resize(int n);  // drops the samples if n is another one
    void clear();
    void take(double q);
    double mean() const { return mean_; }
    bool empty() const { return filled_ == 0; }
    double n_last = sample_times::none_yet;  // number of the newest sample

    // Among steps that may be taken back: a sample that such a step has taken does not count when a time before it
    // comes.
    bool empty_at(double t, const sample_times& times) const;
    double mean_at(double t, const sample_times& times) const;
    // Takes q as the sample at a converged point, if one is due there; true if the mean is another one from there on.
    bool take_at(double t, double q, const sample_times& times, double begin);

private:
    bool in_vain(double t, const sample_times& times) const { return times.number(t) == n_last - 1.0; }
    void take_back();

    std::vector<double> q_;
    std::size_t filled_ = 0, oldest_ = 0;
    double mean_ = 0.0;
    struct {
        double q = 0.0, mean = 0.0, n_last = sample_times::none_yet;
        std::size_t filled = 0, oldest = 0;
    } before_;  // the newest sample; q: what stood in its place
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
    // x at time t - td for a step that ends at time t with x there: straight from the last point before t to that end.
    // slope: of the value by x.
    double at_step(double t, double td, double x, double& slope) const;

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
