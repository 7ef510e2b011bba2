#include "tnl/results/waveform.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <complex>
#include <limits>

namespace cli {

namespace {

constexpr double beyond = 1e-6;  // of the span: what the rounding of printed numbers may miss
constexpr double pi = 3.14159265358979323846;

std::string text_of(double x) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, x, std::chars_format::general, 7).ptr};
}

// Where v stands between a and b, 0 to 1, and what stands there.
double part_of(double a, double b, double v, bool log) {
    return log && a > 0 && b > 0 ? std::log(v / a) / std::log(b / a) : (v - a) / (b - a);
}
double at_part(double a, double b, double part, bool log) {
    return log && a > 0 && b > 0 ? a * std::pow(b / a, part) : a + (b - a) * part;
}

// Value at t of the line between samples i and i + 1.
double between(const wave& w, std::size_t i, double t) {
    if (!(w.t[i + 1] > w.t[i])) return w.x[i + 1];
    return at_part(w.x[i], w.x[i + 1], part_of(w.t[i], w.t[i + 1], t, w.scales.log_t), w.scales.log_x);
}

double span_of(const wave& w) { return w.t.back() - w.t.front(); }

// What t may lie outside at an end with this distance between its two samples: a run ends, and rows of a fixed interval
// begin, up to a row beside the time that was asked for. Never more than a hundredth of the span.
double slack(const wave& w, double last_interval) {
    return std::max(beyond * span_of(w), std::min(last_interval, 0.01 * span_of(w)));
}

// t, moved to the first or last sample when it lies just outside.
double inside(const wave& w, double t) {
    const std::size_t n = w.t.size();
    const double first = n > 1 ? w.t[1] - w.t[0] : 0, last = n > 1 ? w.t[n - 1] - w.t[n - 2] : 0;
    const double before = w.scales.log_t ? beyond * w.t.front() : slack(w, first);
    const double behind = w.scales.log_t ? beyond * w.t.back() : slack(w, last);
    if (!(t >= w.t.front() - before && t <= w.t.back() + behind))
        throw measure_error(text_of(t) + " lies outside the rows, which go from " + text_of(w.t.front()) + " to " +
                            text_of(w.t.back()));
    return std::clamp(t, w.t.front(), w.t.back());
}

// The last sample at or before t.
std::size_t sample_before(const wave& w, double t) {
    return static_cast<std::size_t>(std::upper_bound(w.t.begin(), w.t.end(), t) - w.t.begin()) - 1;
}

}  // namespace

samples clip(const wave& w, double a, double b) {
    if (!(a <= b)) throw measure_error("the window from " + text_of(a) + " to " + text_of(b) + " is empty");
    a = inside(w, a);
    b = inside(w, b);
    samples part;
    part.scales = w.scales;
    if (a == b) {
        part.t = {a};
        part.x = {value_at(w, a)};
        return part;
    }
    const std::size_t first = sample_before(w, a);
    const std::size_t last = static_cast<std::size_t>(std::lower_bound(w.t.begin(), w.t.end(), b) - w.t.begin());
    part.t.reserve(last - first + 1);
    part.t.assign(w.t.begin() + static_cast<long>(first), w.t.begin() + static_cast<long>(last) + 1);
    part.x.assign(w.x.begin() + static_cast<long>(first), w.x.begin() + static_cast<long>(last) + 1);
    if (part.t.front() < a) part.x.front() = between(w, first, a);
    if (part.t.back() > b) part.x.back() = between(w, last - 1, b);
    part.t.front() = a;
    part.t.back() = b;
    return part;
}

double value_at(const wave& w, double t) {
    t = inside(w, t);
    const std::size_t i = sample_before(w, t);
    return w.t[i] == t ? w.x[i] : between(w, i, t);
}

double integral(const wave& w) {
    long double sum = 0;
    for (std::size_t i = 1; i < w.t.size(); ++i) sum += 0.5L * (w.x[i - 1] + w.x[i]) * (w.t[i] - w.t[i - 1]);
    return static_cast<double>(sum);
}

double average(const wave& w) { return span_of(w) > 0 ? integral(w) / span_of(w) : w.x.back(); }

namespace {

// The integral of the squares. Of a line from a to b over h it is h (a^2 + a b + b^2) / 3.
long double integral_of_squares(const wave& w, double zero) {
    long double sum = 0;
    for (std::size_t i = 1; i < w.t.size(); ++i) {
        const double a = w.x[i - 1] - zero, b = w.x[i] - zero;
        sum += static_cast<long double>(a * a + a * b + b * b) * (w.t[i] - w.t[i - 1]);
    }
    return sum / 3;
}

}  // namespace

double rms(const wave& w) {
    if (!(span_of(w) > 0)) return std::fabs(w.x.back());
    return static_cast<double>(std::sqrt(integral_of_squares(w, 0) / span_of(w)));
}

double slope(const wave& w) {
    if (!(span_of(w) > 0)) throw measure_error("the window has no extent");
    return (w.x.back() - w.x.front()) / span_of(w);
}

double least(const wave& w) {
    double m = w.x.front();
    for (const double x : w.x) m = x < m || std::isnan(x) ? x : m;
    return m;
}

double greatest(const wave& w) {
    double m = w.x.front();
    for (const double x : w.x) m = x > m || std::isnan(x) ? x : m;
    return m;
}

double middle(const wave& w) {
    double lo = INFINITY, hi = -INFINITY;
    for (const double x : w.x) lo = std::fmin(lo, x), hi = std::fmax(hi, x);
    return 0.5 * (lo + hi);
}

std::vector<crossing> crossings(const wave& w, double level) {
    std::vector<crossing> all;
    int side = 0;  // of the last sample off the level: -1 below, 1 above, 0 none yet
    double reached = 0;
    bool on_level = false;
    for (std::size_t i = 0; i < w.t.size(); ++i) {
        const double x = w.x[i];
        if (std::isnan(x)) {
            side = 0;
            on_level = false;
        } else if (x == level) {
            if (!on_level) reached = w.t[i];
            on_level = true;
        } else {
            const int now = x > level ? 1 : -1;
            if (side == -now) {
                const double part = part_of(w.x[i - 1], x, level, w.scales.log_x);
                all.push_back({on_level ? reached : at_part(w.t[i - 1], w.t[i], part, w.scales.log_t), now > 0});
            }
            side = now;
            on_level = false;
        }
    }
    return all;
}

double nth_crossing(const wave& w, double level, long long n, edge which) {
    std::vector<crossing> all = crossings(w, level);
    if (which != edge::any) std::erase_if(all, [&](const crossing& c) { return c.rises != (which == edge::rise); });
    const long long count = static_cast<long long>(all.size());
    const long long i = n > 0 ? n - 1 : count + n;
    if (n == 0 || i < 0 || i >= count) {
        const char* kind = which == edge::rise ? " rising" : which == edge::fall ? " falling" : "";
        throw measure_error("crossing " + std::to_string(n) + " of level " + text_of(level) +
                            " does not exist: there " + (count == 1 ? "is " : "are ") + std::to_string(count) + kind +
                            (count == 1 ? " crossing" : " crossings"));
    }
    return all[static_cast<std::size_t>(i)].t;
}

namespace {

// First and last rising crossing, and how many periods lie between.
struct whole_periods {
    double begin = 0, end = 0;
    std::size_t n = 0;
};

whole_periods periods_of(const wave& w, const std::vector<crossing>& all, double level) {
    whole_periods p;
    std::size_t n_rising = 0;
    for (const crossing& c : all) {
        if (!c.rises) continue;
        if (n_rising++ == 0) p.begin = c.t;
        p.end = c.t;
    }
    if (n_rising < 2 || !(p.end > p.begin))
        throw measure_error("a period needs two rising crossings of level " + text_of(level) + "; there " +
                            (n_rising == 1 ? "is " : "are ") + std::to_string(n_rising) + " from " +
                            text_of(w.t.front()) + " to " + text_of(w.t.back()));
    for (std::size_t i = 0; i < w.t.size(); ++i)
        if (std::isnan(w.x[i]) && w.t[i] >= p.begin && w.t[i] <= p.end)
            throw measure_error("the wave is unknown at " + text_of(w.t[i]) + ", among its periods from " +
                                text_of(p.begin) + " to " + text_of(p.end) + "; choose a window without it");
    p.n = n_rising - 1;
    return p;
}

}  // namespace

double period(const wave& w, double level) {
    const whole_periods p = periods_of(w, crossings(w, level), level);
    return (p.end - p.begin) / static_cast<double>(p.n);
}

double duty(const wave& w, double level) {
    const std::vector<crossing> all = crossings(w, level);
    const whole_periods p = periods_of(w, all, level);
    double above = 0, since = p.begin;
    for (const crossing& c : all) {
        if (c.t < p.begin || c.t > p.end) continue;
        if (c.rises)
            since = c.t;
        else
            above += c.t - since;
    }
    return above / (p.end - p.begin);
}

namespace {

double step_of(const wave& w, double last) {
    const double step = last - w.x.front();
    if (!(std::fabs(step) > 0))
        throw measure_error("there is no step: the wave begins at its last value, " + text_of(last) +
                            "; choose the window or give the last value");
    return step;
}

// The wave seen as a step from 0 to 1: first sample, and the value `last`.
samples unit_step(const wave& w, double last) {
    const double step = step_of(w, last), first = w.x.front();
    samples s{{w.t.begin(), w.t.end()}, {w.x.begin(), w.x.end()}};
    for (double& x : s.x) x = (x - first) / step;
    return s;
}

// From the last crossing of 10 % before the first of 90 % to that one.
double edge_time(const wave& w, double last) {
    const samples s = unit_step(w, last);
    double end = 0;
    bool found = false;
    for (const crossing& c : crossings(s, 0.9)) {
        if (!c.rises) continue;
        end = c.t;
        found = true;
        break;
    }
    if (!found && s.x.back() == 0.9) {
        end = s.t.back();
        found = true;
    }
    if (!found) throw measure_error("the wave does not reach 90 % of the step to " + text_of(last));
    double begin = s.t.front();
    for (const crossing& c : crossings(s, 0.1))
        if (c.rises && c.t <= end) begin = c.t;
    return end - begin;
}

}  // namespace

double rise_time(const wave& w, double last) {
    if (step_of(w, last) < 0)
        throw measure_error("the wave falls, from " + text_of(w.x.front()) + " to " + text_of(last) +
                            "; choose the window, or use fall");
    return edge_time(w, last);
}

double fall_time(const wave& w, double last) {
    if (step_of(w, last) > 0)
        throw measure_error("the wave rises, from " + text_of(w.x.front()) + " to " + text_of(last) +
                            "; choose the window, or use rise");
    return edge_time(w, last);
}

double overshoot(const wave& w, double last) {
    const double step = step_of(w, last);
    const double beyond_last = ((step > 0 ? greatest(w) : least(w)) - last) / step;
    return beyond_last < 0 ? 0 : beyond_last;
}

double settling_time(const wave& w, double last, double tolerance) {
    double step = 0;
    for (const double x : w.x) step = std::fmax(step, std::fabs(x - last));
    if (!(step > 0)) throw measure_error("there is no step: the wave stays at " + text_of(last));
    const double band = step * tolerance;
    const auto is_off = [&](std::size_t i) { return !(std::fabs(w.x[i] - last) <= band); };
    std::size_t i = w.t.size() - 1;
    if (is_off(i)) throw measure_error("the wave does not settle to " + text_of(last) + " before the end");
    while (i > 0 && !is_off(i - 1)) --i;
    if (i == 0) return 0;
    const double a = w.x[i - 1], b = w.x[i];  // a outside the band, b inside
    if (std::isnan(a)) return w.t[i] - w.t.front();
    const double border = a > last ? last + band : last - band;
    return w.t[i - 1] + (w.t[i] - w.t[i - 1]) * std::clamp((border - a) / (b - a), 0.0, 1.0) - w.t.front();
}

namespace {

// The last whole periods of f0 that fit.
samples last_periods(const wave& w, double f0) {
    if (!(f0 > 0 && std::isfinite(f0))) throw measure_error("a frequency must be above 0");
    const double n = std::floor(span_of(w) * f0 * (1 + beyond));
    if (!(n >= 1))
        throw measure_error("the window of " + text_of(span_of(w)) + " is shorter than one period of frequency " +
                            text_of(f0));
    return clip(w, std::max(w.t.front(), w.t.back() - n / f0), w.t.back());
}

// 2/T times the integral of x exp(-j w t), by parts: the jumps of a straight line's end values, and its slope. The
// factor sin(u)/u tends to 1 for short lines without loss of digits.
std::complex<double> fourier(const wave& w, double omega) {
    const std::complex<double> j(0, 1);
    const double t0 = w.t.front(), length = span_of(w);
    std::complex<long double> sum = 0;
    for (std::size_t i = 1; i < w.t.size(); ++i) {
        const double u = 0.5 * omega * (w.t[i] - w.t[i - 1]);
        const double sinc = u > 1e-5 ? std::sin(u) / u : 1 - u * u / 6;
        const double middle = omega * (0.5 * (w.t[i] - t0) + 0.5 * (w.t[i - 1] - t0));
        const double part = (w.x[i] - w.x[i - 1]) * sinc;
        sum += std::complex<long double>(part * std::cos(middle), -part * std::sin(middle));
    }
    const std::complex<double> ends = w.x.back() * std::polar(1.0, -omega * length) - w.x.front();
    return 2 / length * (j / omega) * (ends - std::complex<double>(sum));
}

}  // namespace

double harmonic_amplitude(const wave& w, double f0, int k) {
    const samples part = last_periods(w, f0);
    return k == 0 ? average(part) : std::abs(fourier(part, 2 * pi * f0 * k));
}

double distortion(const wave& w, double f0, int n_harmonics) {
    const samples part = last_periods(w, f0);
    const double first = std::abs(fourier(part, 2 * pi * f0));
    double rest = 0;  // twice the mean square
    if (n_harmonics >= 2) {
        for (int k = 2; k <= n_harmonics; ++k) rest += std::norm(fourier(part, 2 * pi * f0 * k));
    } else {
        const double all = static_cast<double>(integral_of_squares(part, average(part)) / span_of(part));
        rest = 2 * all - first * first;
        if (rest < 0) rest = 0;
    }
    if (first <= 1e-12 * rms(part)) throw measure_error("there is no harmonic of " + text_of(f0));
    return std::sqrt(rest) / first;
}

}  // namespace cli
