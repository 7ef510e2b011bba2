#include "output/postproc_values.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <functional>
#include <random>
#include <vector>

namespace {
using list = std::vector<double>;
constexpr double pi = 3.141592653589793;

struct points {
    list t, x;
};
points sampled(double from, double to, int n, const std::function<double(double)>& f) {
    points s;
    for (int i = 0; i <= n; ++i) {
        s.t.push_back(from + (to - from) * i / n);
        s.x.push_back(f(s.t.back()));
    }
    return s;
}
double sine(double t) { return std::sin(2 * pi * t); }

// The harmonic of the polygon through the points by a sum over small parts of every piece.
std::complex<double> slow_harmonic(const list& t, const list& x, int k) {
    const double w = 2 * pi * k / (t.back() - t.front());
    const int n_parts = 4000;
    std::complex<double> sum = 0;
    for (std::size_t i = 0; i + 1 < t.size(); ++i)
        for (int j = 0; j < n_parts; ++j) {
            const double part = (j + 0.5) / n_parts, at = t[i] + part * (t[i + 1] - t[i]);
            sum += (x[i] + part * (x[i + 1] - x[i])) * std::polar(1.0, -w * at) * (t[i + 1] - t[i]) / double(n_parts);
        }
    return sum;
}
double slow_thd(const list& t, const list& x) {
    double sum = 0;
    for (int k = 2; k <= 40; ++k) sum += std::norm(slow_harmonic(t, x, k));
    return std::sqrt(sum) / std::abs(slow_harmonic(t, x, 1));
}
}  // namespace

TEST(postproc_values, are_trapezoids_on_values_squares_and_products) {
    EXPECT_EQ(postproc_avg(list{0, 1, 2}, list{0, 1, 0}), 0.5);
    EXPECT_EQ(postproc_rms(list{0, 1}, list{0, 1}), std::sqrt(0.5));
    EXPECT_EQ(postproc_pavg(list{0, 1}, list{0, 1}, list{2, 4}), 2.0);
    // Steps of any length: 2 for 1 s, then down to 0 in 3 s.
    EXPECT_EQ(postproc_avg(list{10, 11, 14}, list{2, 2, 0}), (2 + 3) / 4.0);
}

TEST(postproc_values, are_zero_of_one_point_none_and_a_span_of_zero) {
    for (const auto& [t, x] : {points{{}, {}}, points{{1}, {5}}, points{{1, 1}, {5, 7}}}) {
        EXPECT_EQ(postproc_avg(t, x), 0);
        EXPECT_EQ(postproc_rms(t, x), 0);
        EXPECT_EQ(postproc_pavg(t, x, x), 0);
        EXPECT_EQ(postproc_thd(t, x), 0);
    }
}

// The trapezoid over whole periods of a sampled wave is exact for every harmonic below the rate of sampling.
TEST(postproc_values, of_sine_triangle_and_square_have_their_closed_forms) {
    const points s = sampled(0.25, 2.25, 400, [](double t) { return 3 + 4 * sine(t); });
    EXPECT_NEAR(postproc_avg(s.t, s.x), 3, 1e-13);
    EXPECT_NEAR(postproc_rms(s.t, s.x), std::sqrt(9 + 8), 1e-13);
    const points c = sampled(0.25, 2.25, 400, [](double t) { return std::sin(2 * pi * t - pi / 3); });
    EXPECT_NEAR(postproc_pavg(s.t, s.x, c.x), 0.5 * 4 * std::cos(pi / 3), 1e-13);
    // A triangle of n straight steps up and down: the trapezoid on its squares gives 1/3 + 1/(6 n^2) of the peak's.
    const int n = 10;
    points triangle;
    for (int i = 0; i <= 2 * n; ++i) {
        triangle.t.push_back(i);
        triangle.x.push_back(i <= n ? double(i) / n : 2 - double(i) / n);
    }
    EXPECT_NEAR(postproc_rms(triangle.t, triangle.x), std::sqrt(1 / 3.0 + 1 / (6.0 * n * n)), 1e-15);
    // Jumps within no time: 2 for 0.3 s, -1 for 0.7 s.
    const list t = {0, 0.3, 0.3, 1}, x = {2, 2, -1, -1};
    EXPECT_NEAR(postproc_avg(t, x), 0.6 - 0.7, 1e-15);
    EXPECT_NEAR(postproc_rms(t, x), std::sqrt(0.3 * 4 + 0.7), 1e-15);
}

TEST(postproc_thd, of_a_fundamental_and_a_third_is_their_ratio) {
    const points s = sampled(0, 1, 1000, [](double t) { return sine(t) + 0.3 * std::sin(6 * pi * t + 0.4); });
    EXPECT_NEAR(postproc_thd(s.t, s.x), 0.3, 2e-5);
    // To the digits: harmonic k of a polygon through n points of a sine is (sin(y)/y)^2 of it, y = k pi/n.
    const auto part = [](double y) { return std::pow(std::sin(y) / y, 2); };
    EXPECT_NEAR(postproc_thd(s.t, s.x), 0.3 * part(3 * pi / 1000) / part(pi / 1000), 1e-12);
}

TEST(postproc_thd, of_a_sine_is_as_small_as_the_sampling_allows) {
    const points s = sampled(0, 1, 1000, sine), coarse = sampled(0, 1, 20, sine);
    EXPECT_LT(postproc_thd(s.t, s.x), 1e-12);
    // Of 20 points harmonics 19, 21 and 39 appear, as 1/19^2, 1/21^2 and 1/39^2 of the fundamental.
    EXPECT_NEAR(postproc_thd(coarse.t, coarse.x),
                std::sqrt(std::pow(19.0, -4) + std::pow(21.0, -4) + std::pow(39.0, -4)), 1e-12);
}

TEST(postproc_thd, of_a_square_wave_is_that_of_its_harmonics_up_to_40) {
    const list t = {0, 0.5, 0.5, 1}, x = {1, 1, -1, -1};
    double sum = 0;
    for (int k = 3; k < 40; k += 2) sum += 1.0 / (k * k);
    EXPECT_NEAR(postproc_thd(t, x), std::sqrt(sum), 1e-13);
    EXPECT_NEAR(std::sqrt(sum), std::sqrt(pi * pi / 8 - 1), 0.014);  // 0.4834 with all of them
}

TEST(postproc_thd, does_not_care_where_the_period_begins) {
    const auto wave = [](double t) { return sine(t) + 0.2 * std::cos(10 * pi * t) - 0.7; };
    const points a = sampled(0, 1, 500, wave), b = sampled(100.3, 101.3, 500, wave);
    EXPECT_NEAR(postproc_thd(a.t, a.x), postproc_thd(b.t, b.x), 1e-10);
}

TEST(postproc_thd, equals_the_slow_sum_on_random_polygons_with_unequal_steps) {
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> any(-1, 1), step(0.001, 1);
    for (int trial = 0; trial < 10; ++trial) {
        points s{{any(rng)}, {any(rng)}};
        for (int i = 0; i < 12; ++i) {
            s.t.push_back(s.t.back() + step(rng));
            s.x.push_back(any(rng));
        }
        EXPECT_NEAR(postproc_thd(s.t, s.x) / slow_thd(s.t, s.x), 1, 1e-6);
    }
}

TEST(postproc_thd, of_a_constant_is_zero_where_the_fundamental_is) {
    EXPECT_EQ(postproc_thd(list{0, 1, 2}, list{0, 0, 0}), 0);
}
