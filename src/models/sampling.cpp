#include "models/sampling.h"

#include <algorithm>
#include <cmath>
#include <numeric>

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

bool sample_times::due(double t, double n_last, double begin) const {
    const double n = number(t);
    if (n_last == none_yet) return t0 + n * period >= begin - 1e-6 * period;
    return n > n_last || n < n_last - 1.0;  // far before it: time has begun anew
}

double discrete_filter::sum_a() const { return std::accumulate(a, a + n_a + 1, 0.0); }
double discrete_filter::sum_b() const { return b ? std::accumulate(b, b + n_b + 1, 0.0) : 1.0; }

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

void sampled_filter::clear() const {
    settle(0.0, 0.0, 0.0);
    *n_last = sample_times::none_yet;
}

void sampled_filter::settle(double x, double y, double t) const {
    if (form.n_a > 0) std::fill(form.x_old, form.x_old + form.n_a + 1, x);
    std::fill(form.y_old, form.y_old + n_y() + 1, y);
    *n_last = times.due(t, sample_times::none_yet, t) ? times.number(t) : sample_times::none_yet;
}

double sampled_filter::value(double x, double t, double begin, double& slope) const {
    const bool sampling = times.due(t, *n_last, begin);
    slope = sampling ? form.slope() : 0.0;
    return sampling ? form.value(x) : form.y_old[in_vain(t) ? 1 : 0];
}

bool sampled_filter::take(double x, double t, double begin) const {
    if (in_vain(t)) {
        if (form.n_a > 0) std::copy(form.x_old + 1, form.x_old + form.n_a + 1, form.x_old);
        std::copy(form.y_old + 1, form.y_old + n_y() + 1, form.y_old);
        *n_last -= 1.0;
        return false;
    }
    if (!times.due(t, *n_last, begin)) return false;
    const double before = form.y_old[0];
    if (form.n_a > 0) form.x_old[form.n_a] = form.x_old[form.n_a - 1];
    form.y_old[n_y()] = form.y_old[n_y() - 1];
    form.take(x);
    *n_last = times.number(t);
    return form.y_old[0] != before;
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
    n_last = sample_times::none_yet;
}

void sliding_mean::take_back() {
    if (filled_ > before_.filled)
        --filled_;
    else
        q_[before_.oldest] = before_.q;
    oldest_ = before_.oldest;
    mean_ = before_.mean;
    n_last = before_.n_last;
}

bool sliding_mean::empty_at(double t, const sample_times& times) const {
    return empty() || (in_vain(t, times) && before_.filled == 0);
}

double sliding_mean::mean_at(double t, const sample_times& times) const {
    return in_vain(t, times) ? before_.mean : mean_;
}

bool sliding_mean::take_at(double t, double q, const sample_times& times, double begin) {
    if (in_vain(t, times)) take_back();
    if (!times.due(t, n_last, begin)) return false;
    before_ = {q_[oldest_], mean_, n_last, filled_, oldest_};
    take(q);
    n_last = times.number(t);
    return before_.filled == 0 || mean_ != before_.mean;
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

double delay_line::at_step(double t, double td, double x, double& slope) const {
    const double then = t - td;
    slope = 0.0;
    std::size_t last = n_;  // behind the points before t: a point there is this one, or was tried in vain
    while (last > 0 && t_[place(last - 1)] >= t) --last;
    if (last == 0) return at(then);
    const double t_last = t_[place(last - 1)];
    if (then <= t_last) return at(then);
    slope = (then - t_last) / (t - t_last);
    return x_[place(last - 1)] + (x - x_[place(last - 1)]) * slope;
}
