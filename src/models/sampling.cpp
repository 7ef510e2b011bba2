#include "models/sampling.h"

#include <algorithm>
#include <cmath>

#include "base/halt.h"
#include "base/memory.h"

namespace {
// Told before pages are touched that the machine would not have in the end.
void needs_room(const char* who, int n, double bytes_each) {
    if (!fits_in_memory(n * bytes_each))
        halt({line(who, ": there is not enough memory for ", n, " values."), "  Halting..."});
}
}  // namespace

double sample_times::number(double t) const { return std::floor((t - t0) / period + 1e-6); }

double sample_times::next(double t) const {
    const double t_next = t0 + (number(t) + 1.0) * period;
    return t_next > t ? t_next : std::nextafter(t, HUGE_VAL);
}

void discrete_filter::clear() const {
    std::fill(x_old, x_old + n_a, 0.0);
    std::fill(y_old, y_old + std::max(n_b, 1), 0.0);
}

double discrete_filter::value(double x) const {
    double sum = a[0] * x;
    for (int k = 1; k <= n_a; ++k) sum += a[k] * x_old[k - 1];
    for (int k = 1; k <= n_b; ++k) sum -= b[k] * y_old[k - 1];
    return b ? sum / b[0] : sum;
}

void discrete_filter::take(double x) const {
    const double y = value(x);
    for (int k = n_a - 1; k > 0; --k) x_old[k] = x_old[k - 1];
    for (int k = n_b - 1; k > 0; --k) y_old[k] = y_old[k - 1];
    if (n_a > 0) x_old[0] = x;
    y_old[0] = y;
}

void sliding_mean::resize(int n) {
    if (q_.size() == static_cast<std::size_t>(n)) return;
    needs_room("sliding_mean", n, sizeof(double));
    q_.assign(static_cast<std::size_t>(n), 0.0);
    clear();
}

void sliding_mean::clear() {
    filled_ = oldest_ = 0;
    mean_ = 0.0;
    n_last = -1e300;
}

void sliding_mean::take(double q) {
    if (filled_ < q_.size()) {
        q_[filled_++] = q;
    } else {
        q_[oldest_] = q;
        oldest_ = oldest_ + 1 < q_.size() ? oldest_ + 1 : 0;
    }
    // Anew each time: a running sum would keep the rounding of samples that have long gone.
    double sum = 0.0;
    for (std::size_t i = 0; i < filled_; ++i) sum += q_[i];
    mean_ = sum / static_cast<double>(filled_);
}

int mean_slots::take() {
    if (slot.size() >= static_cast<std::size_t>(std::max(limit, 0))) return -1;
    slot.emplace_back();
    return static_cast<int>(slot.size()) - 1;
}

void delay_line::resize(int n_points) {
    if (t_.size() == static_cast<std::size_t>(n_points)) return;
    needs_room("delay_line", n_points, 2 * sizeof(double));
    t_.assign(static_cast<std::size_t>(n_points), 0.0);
    x_ = t_;
    n_ = oldest_ = 0;
}

void delay_line::clear(double t_start) {
    n_ = oldest_ = 0;
    t_start_ = t_start;
}

bool delay_line::take(double t, double x, double td) {
    while (n_ > 0 && t_[place(n_ - 1)] > t) --n_;  // given by a step that was taken back
    if (n_ > 0 && t_[place(n_ - 1)] == t) return true;
    // The newest point at or before t - td is the last one that is needed.
    while (n_ > 1 && t_[place(1)] <= t - td) {
        oldest_ = place(1);
        --n_;
    }
    if (n_ == t_.size()) return false;
    t_[place(n_)] = t;
    x_[place(n_)] = x;
    ++n_;
    return true;
}

double delay_line::at(double t) const {
    // Rounding of t - td is not to put the value of the start behind it.
    if (n_ == 0 || t < t_start_ - 1e-9 * std::fabs(t_[place(n_ - 1)] - t_start_)) return 0.0;
    std::size_t i = 0;  // from the oldest on: the points needed by the present step lie there
    while (i < n_ && t_[place(i)] < t) ++i;
    if (i == 0) return x_[place(0)];
    if (i == n_) return x_[place(n_ - 1)];
    const std::size_t p = place(i - 1), q = place(i);
    return x_[p] + (x_[q] - x_[p]) * ((t - t_[p]) / (t_[q] - t_[p]));
}
