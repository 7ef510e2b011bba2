#include "tnl/results/response.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace cli {

namespace {

constexpr int most_turns = 1000;         // of a phase
constexpr double smallest_least = 0.05;  // a peak that rises further above its row is not known

double db_of(double x) { return 20 * std::log10(x); }

std::string from_to(const response& r) {
    const auto text = [](double x) {
        char t[32];
        return std::string(t, std::to_chars(t, t + sizeof t, x, std::chars_format::general, 7).ptr);
    };
    return " from " + text(r.mag.t.front()) + " to " + text(r.mag.t.back());
}

// Where the magnitude passes half the power of the peak on its two sides; 0 below where it does not. Between two rows
// sqrt((peak/|x|)^2 - 1), which a resonance has straight, is a straight line over the logarithm of the frequency.
struct band {
    double below = 0, above = 0;
};
band band_of(const response& r, const response_peak& peak) {
    const std::span<const double> t = r.mag.t, x = r.mag.x;
    const auto off = [&](std::size_t k) { return std::sqrt(std::max(0.0, (peak.mag / x[k]) * (peak.mag / x[k]) - 1)); };
    const auto passage = [&](std::size_t inner, std::size_t outer) {
        const double g = off(inner), share = (1 - g) / (off(outer) - g);
        return t[inner] * std::pow(t[outer] / t[inner], share);
    };
    band b;
    std::size_t k = peak.row;
    while (k + 1 < x.size() && off(k + 1) < 1) ++k;
    if (k + 1 == x.size() || !(off(k + 1) >= 1))
        throw measure_error("the magnitude does not fall 3 dB below its peak behind it," + from_to(r));
    b.above = passage(k, k + 1);
    for (k = peak.row; k > 0 && off(k - 1) < 1;) --k;
    if (k > 0 && off(k - 1) >= 1) b.below = passage(k, k - 1);
    return b;
}

// Least value of the cubic through (0, 0) and three points, near 0; false where it has none between the first two.
bool find_least(const double (&u)[3], const double (&y)[3], double& at, double& least) {
    const double f01 = y[0] / u[0], f12 = (y[1] - y[0]) / (u[1] - u[0]), f012 = (f12 - f01) / u[1];
    const double c = ((((y[2] - y[1]) / (u[2] - u[1]) - f12) / (u[2] - u[0])) - f012) / u[2];
    if (!(f012 > 0)) return false;
    at = (u[0] - f01 / f012) / 2;  // of the parabola through the nearer ones
    for (int k = 0; k < 8; ++k) {
        const double slope = f01 + f012 * (2 * at - u[0]) + c * (3 * at * at - 2 * at * (u[0] + u[1]) + u[0] * u[1]);
        const double bend = 2 * f012 + c * (6 * at - 2 * (u[0] + u[1]));
        if (!(bend > 0)) return false;
        at -= slope / bend;
    }
    least = at * (f01 + (at - u[0]) * (f012 + c * (at - u[1])));
    return at >= std::min(u[0], u[1]) && at <= std::max(u[0], u[1]);
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
    const response_peak row{t[i], x[i], i};
    if (i == 0 || i + 1 == x.size() || !(x[i - 1] > 0 && x[i + 1] > 0) || !(t[i - 1] < t[i] && t[i] < t[i + 1]))
        return row;
    if (2 * std::min(x[i - 1], x[i + 1]) * std::min(x[i - 1], x[i + 1]) < x[i] * x[i])
        throw measure_error(
            "the rows around the peak are too far apart, a neighbour lies 3 dB below; max(mag(x)) is the "
            "greatest row," +
            from_to(r));
    // 1/|x|^2 of a resonance is nearly a parabola around its peak; a fourth row tells how far it is none.
    const auto far = [&](std::size_t k) { return std::log(t[k] / t[i]); };
    const auto rise = [&](std::size_t k) { return (x[i] / x[k]) * (x[i] / x[k]) - 1; };
    const double back = i >= 2 ? x[i - 2] : 0, forth = i + 2 < x.size() ? x[i + 2] : 0;
    if (!(std::max(back, forth) > 0)) return row;
    const std::size_t fourth = back > forth ? i - 2 : i + 2;
    const double u[3] = {far(i - 1), far(i + 1), far(fourth)}, y[3] = {rise(i - 1), rise(i + 1), rise(fourth)};
    double top = 0, least = 0;
    if (!find_least(u, y, top, least) || !(1 + least > smallest_least)) return row;
    return {t[i] * std::exp(top), x[i] / std::sqrt(1 + least), i};
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
