#include "tnl/results/response.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace cli {

namespace {

constexpr int most_turns = 1000;  // of a phase

double db_of(double x) { return 20 * std::log10(x); }

std::string from_to(const response& r) {
    const auto text = [](double x) {
        char t[32];
        return std::string(t, std::to_chars(t, t + sizeof t, x, std::chars_format::general, 7).ptr);
    };
    return " from " + text(r.mag.t.front()) + " to " + text(r.mag.t.back());
}

// Where the magnitude passes half the power of the peak on its two sides; 0 below where it does not.
struct band {
    double below = 0, above = 0;
};
band band_of(const response& r, const response_peak& peak) {
    band b;
    for (const crossing& c : crossings(r.mag, peak.mag / std::sqrt(2.0))) {
        if (c.t < peak.t && c.rises) b.below = c.t;
        if (c.t > peak.t && !c.rises && b.above == 0) b.above = c.t;
    }
    if (b.above == 0) throw measure_error("the magnitude does not fall 3 dB below its peak behind it," + from_to(r));
    return b;
}

}  // namespace

std::vector<double> unwrapped(std::vector<double> degrees) {
    double before = NAN;
    for (double& a : degrees) {
        if (!std::isfinite(a)) continue;
        if (std::isfinite(before)) a -= 360 * std::round((a - before) / 360);
        before = a;
    }
    return degrees;
}

response_peak peak_of(const response& r) {
    const std::span<const double> t = r.mag.t, x = r.mag.x;
    std::size_t i = x.size();
    for (std::size_t k = 0; k < x.size(); ++k)
        if (std::isfinite(x[k]) && (i == x.size() || x[k] > x[i])) i = k;
    if (i == x.size()) throw measure_error("no magnitude is a number" + from_to(r));
    const response_peak row{t[i], x[i]};
    if (i == 0 || i + 1 == x.size() || !(x[i - 1] > 0 && x[i + 1] > 0) || !(t[i - 1] < t[i] && t[i] < t[i + 1]))
        return row;
    // The parabola through the three, from the middle one: a u + b u^2.
    const double u = std::log(t[i - 1] / t[i]), v = std::log(t[i + 1] / t[i]);
    if (std::max(-u, v) > 2 * std::min(-u, v)) return row;  // it would rise far above rows at unequal distances
    const double p = std::log(x[i - 1] / x[i]), q = std::log(x[i + 1] / x[i]);
    const double b = (p / u - q / v) / (u - v), a = p / u - b * u;
    if (!(b < 0)) return row;
    const double top = std::clamp(-a / (2 * b), u, v);
    return {t[i] * std::exp(top), x[i] * std::exp(a * top + b * top * top)};
}

double bandwidth(const response& r, bool of_peak) {
    if (of_peak) {
        const band b = band_of(r, peak_of(r));
        return b.above - b.below;
    }
    for (const crossing& c : crossings(r.mag, r.mag.x.front() / std::sqrt(2.0)))
        if (!c.rises) return c.t;
    throw measure_error("the magnitude does not fall 3 dB below that of the lowest frequency," + from_to(r) +
                        "; bandwidth(x, peak) goes by its peak");
}

double quality(const response& r) {
    const response_peak peak = peak_of(r);
    const band b = band_of(r, peak);
    if (b.below == 0)
        throw measure_error("the magnitude does not fall 3 dB below its peak in front of it," + from_to(r));
    return peak.t / (b.above - b.below);
}

double crossover(const response& r, long long n) { return nth_crossing(r.mag, 1, n, edge::fall); }

double gain_margin(const response& r) {
    double margin = INFINITY;
    // Half turns of odd number between the least and the greatest phase; each as a crossing of its own.
    double lo = INFINITY, hi = -INFINITY;
    for (const double a : r.phase.x)
        if (std::isfinite(a)) lo = std::min(lo, a), hi = std::max(hi, a);
    const double first = std::floor((lo - 180) / 360), last = std::ceil((hi - 180) / 360);
    for (int k = 0; k < most_turns && first + k <= last; ++k)
        for (const crossing& c : crossings(r.phase, 180 + 360 * (first + k)))
            if (const double m = -db_of(value_at(r.mag, c.t)); std::abs(m) < std::abs(margin)) margin = m;
    if (!std::isfinite(margin))
        throw measure_error("the phase does not pass 180 degrees" + from_to(r) + ": there is no gain margin");
    return margin;
}

double phase_margin(const response& r) {
    double margin = INFINITY;
    for (const crossing& c : crossings(r.mag, 1))
        if (const double m = std::remainder(180 + value_at(r.phase, c.t), 360); std::abs(m) < std::abs(margin))
            margin = m;
    if (!std::isfinite(margin))
        throw measure_error("the magnitude does not pass 1 (0 dB)" + from_to(r) + ": there is no phase margin");
    return margin;
}

}  // namespace cli
