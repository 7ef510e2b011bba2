#include "output/postproc_values.h"

#include <array>
#include <cmath>

#include "base/math_cnst_class.h"

namespace {
double span_of(samples t) { return t.size() < 2 ? 0.0 : t.back() - t.front(); }

// The trapezoid on the values that `at` gives at point i, over the span.
template <class F>
double average(samples t, F at) {
    const double span = span_of(t);
    if (span == 0.0) return 0.0;
    double sum = 0.0;
    for (std::size_t i = 0; i + 1 < t.size(); ++i) sum += 0.5 * (at(i) + at(i + 1)) * (t[i + 1] - t[i]);
    return sum / span;
}
}  // namespace

double postproc_avg(samples t, samples x) {
    return average(t, [&](std::size_t i) { return x[i]; });
}

double postproc_rms(samples t, samples x) {
    return std::sqrt(average(t, [&](std::size_t i) { return x[i] * x[i]; }));
}

double postproc_pavg(samples t, samples x, samples y) {
    return average(t, [&](std::size_t i) { return x[i] * y[i]; });
}

// The cosine and the sine of harmonic k are power k of those of the first, so a point costs one of each.
double postproc_thd(samples t, samples x) {
    constexpr std::size_t n_harmonics = 40;
    const double span = span_of(t);
    if (span == 0.0) return 0.0;
    const double w_1 = math_cnst_class{}.twopi / span;
    std::array<double, n_harmonics> cosine{}, sine{};
    std::array<double, n_harmonics> cos_u, sin_u, cos_old{}, sin_old{};
    for (std::size_t i = 0; i < t.size(); ++i) {
        const double u_1 = w_1 * (t[i] - t[0]);
        const double c_1 = std::cos(u_1), s_1 = std::sin(u_1);
        double c = 1.0, s = 0.0;
        for (std::size_t k = 0; k < n_harmonics; ++k) {
            const double c_next = c * c_1 - s * s_1;
            s = c * s_1 + s * c_1;
            c = c_next;
            cos_u[k] = c;
            sin_u[k] = s;
        }
        const double h = i > 0 ? t[i] - t[i - 1] : 0.0;
        if (h > 0.0) {
            const double slope = (x[i] - x[i - 1]) / h;
            for (std::size_t k = 0; k < n_harmonics; ++k) {
                const double by_w = 1.0 / (w_1 * static_cast<double>(k + 1));
                cosine[k] += by_w * (x[i] * sin_u[k] - x[i - 1] * sin_old[k] + slope * by_w * (cos_u[k] - cos_old[k]));
                sine[k] += by_w * (x[i - 1] * cos_old[k] - x[i] * cos_u[k] + slope * by_w * (sin_u[k] - sin_old[k]));
            }
        }
        cos_old = cos_u;
        sin_old = sin_u;
    }
    double sum = 0.0;
    for (std::size_t k = 1; k < n_harmonics; ++k) sum += cosine[k] * cosine[k] + sine[k] * sine[k];
    const double first = std::hypot(cosine[0], sine[0]);
    return first == 0.0 ? 0.0 : std::sqrt(sum) / first;
}
