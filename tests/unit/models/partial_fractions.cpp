// Transfer functions as sums of terms and as sections.
#include "models/partial_fractions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

#include "base/halt.h"
#include "halt_throws.h"

namespace {
using complex = std::complex<double>;
using poly = std::vector<double>;
constexpr double pi = std::numbers::pi;

poly times(const poly& a, const poly& b) {
    poly c(a.size() + b.size() - 1, 0.0);
    for (std::size_t i = 0; i < a.size(); ++i)
        for (std::size_t j = 0; j < b.size(); ++j) c[i + j] += a[i] * b[j];
    return c;
}
poly power(const poly& a, int n) { return n == 0 ? poly{1} : times(a, power(a, n - 1)); }
poly real_root(double r) { return {-r, 1}; }
poly pair_root(double re, double im) { return {re * re + im * im, -2 * re, 1}; }
complex value(const poly& c, complex s) {
    complex y = 0;
    for (std::size_t k = c.size(); k-- > 0;) y = y * s + c[k];
    return y;
}

filter_sections expand(const poly& n, const poly& d) {
    filter_sections f;
    const console_run heard = run_and_listen(
        [&] { f = expand_filter(static_cast<int>(n.size()) - 1, n.data(), static_cast<int>(d.size()) - 1, d.data()); });
    EXPECT_FALSE(heard.stopped) << heard.text;
    return f;
}
partial_fractions fractions(const poly& n, const poly& d) {
    return partial_fractions_1(static_cast<int>(n.size()) - 1, static_cast<int>(d.size()) - 1, n.data(), d.data());
}

// The sections against N/D along the axis of frequencies and beside it, at the size of the roots: relative to the value
// itself or a thousandth of the largest one.
void expect_response(const filter_sections& f, const poly& n, const poly& d, double size, double tolerance = 1e-8) {
    EXPECT_LE(f.section.size(), d.size() - 1);
    std::vector<complex> points;
    for (double w = 1e-2; w < 200; w *= 1.7)
        points.insert(points.end(), {{0.0, w * size}, {0.11 * w * size, w * size}});
    double largest = 0;
    for (const complex& s : points) largest = std::max(largest, std::abs(value(n, s) / value(d, s)));
    for (const complex& s : points) {
        const complex h = value(n, s) / value(d, s);
        EXPECT_LT(std::abs(filter_response(f, s) - h), tolerance * std::max(std::abs(h), 1e-3 * largest)) << s;
    }
}

TEST(partial_fractions, of_a_double_and_a_single_pole_are_known) {
    const poly n = {3, 1}, d = times(power({1, 1}, 2), {2, 1});  // (s + 3)/((s + 1)^2 (s + 2))
    const partial_fractions p = fractions(n, d);
    EXPECT_EQ(p.n_r_root_1, 2);
    EXPECT_EQ(p.n_c_root_1, 0);
    EXPECT_EQ(p.a0, 0);
    ASSERT_EQ(p.pp_power, (std::vector<int>{1, 1, 2}));
    const double root[] = {-2, -1, -1}, coef[] = {1, -1, 2};
    for (std::size_t k = 0; k < 3; ++k) {
        EXPECT_LT(std::abs(p.pp_root[k] - root[k]), 1e-7);
        EXPECT_LT(std::abs(p.pp_coef[k] - coef[k]), 1e-6);
        EXPECT_EQ(p.ppc_flag_real[k], 1);
        EXPECT_LT(std::abs(p.ppc_coef[k] - coef[k]), 1e-6);
    }

    const filter_sections f = expand(n, d);
    ASSERT_EQ(f.section.size(), 3u);
    EXPECT_EQ(f.a0, 0);
    for (std::size_t k = 0; k < 3; ++k) {
        EXPECT_EQ(f.section[k].order, 1);
        EXPECT_NEAR(f.section[k].r, root[k], 1e-14);
        EXPECT_NEAR(f.section[k].c, coef[k], 1e-12);
        EXPECT_EQ(f.section[k].kx, k == 2 ? 0 : 1);
        EXPECT_EQ(f.section[k].kp, k == 2 ? 1 : 0);
    }
}

TEST(partial_fractions, of_a_pair_come_with_conjugates_and_with_real_coefficients) {
    // (2 s + 10)/((s + 1)^2 + 9): (1 + 4/3 i... ) over each root, and 10 + 2 s over the pair.
    const partial_fractions p = fractions({10, 2}, pair_root(-1, 3));
    ASSERT_EQ(p.pp_root.size(), 2u);
    EXPECT_EQ(p.n_c_root_1, 1);
    EXPECT_LT(std::abs(p.pp_root[0] - complex(-1, 3)), 1e-14);
    EXPECT_LT(std::abs(p.pp_root[1] - complex(-1, -3)), 1e-14);
    const complex residue = complex(10 - 2, 6) / complex(0, 6);
    EXPECT_LT(std::abs(p.pp_coef[0] - residue), 1e-13);
    EXPECT_LT(std::abs(p.pp_coef[1] - std::conj(residue)), 1e-13);
    ASSERT_EQ(p.ppc_root.size(), 1u);
    EXPECT_EQ(p.ppc_flag_real[0], 0);
    EXPECT_LT(std::abs(p.ppc_coef[0] - complex(10, 2)), 1e-13);
}

TEST(partial_fractions, take_the_gain_out_and_a_constant_for_equal_degrees) {
    const poly n = {1, 0, 6}, d = {4, 10, 4};  // 1.5 + ..., D = 4 (s + 2)(s + 0.5)
    const partial_fractions p = fractions(n, d);
    EXPECT_EQ(p.gain, 0.25);
    EXPECT_EQ(p.a0, 1.5);
    const filter_sections f = expand(n, d);
    EXPECT_EQ(f.a0, 1.5);
    expect_response(f, n, d, 1, 1e-12);
}

TEST(partial_fractions, can_be_looked_at) {
    const partial_fractions p = fractions({3}, {4, 2});
    EXPECT_EQ(run_and_listen([&] { print_partial_fractions_1(p); }).text,
              "partial_fractions_1: gain=0.5, a0=0\npartial_fractions_1: pp_root, pp_power, pp_coef:\n  -2 0 1 1.5 0\n"
              "partial_fractions_1: ppc_flag_real,ppc_root,ppc_power,ppc_coef:\n  1 -2 0 1 1.5 0\n");
    EXPECT_EQ(run_and_listen([&] { print_poly_1({1.0, {2.5, -1}}); }).text, "  0 1 0\n  1 2.5 -1\n");
}

TEST(expand_filter, gives_sections_for_poles_of_any_kind_and_multiplicity) {
    struct case_of_poles {
        const char* name;
        poly n, d;
        std::size_t sections;
    };
    const poly p = pair_root(-0.3, 1.1);
    const case_of_poles cases[] = {
        {"one pole", {2}, {1, 4}, 1},
        {"equal degrees of 1", {2, 3}, {1, 4}, 1},
        {"double", {1}, power({1, 1}, 2), 2},
        {"triple", {1, 2}, power({1, 1}, 3), 3},
        {"fourfold", {1, 2}, power({0.7, 1}, 4), 4},
        {"ninefold", {1}, power({1, 1}, 9), 9},
        {"triple beside others", {5, 1, 2}, times(power({1, 1}, 3), times({3, 1}, p)), 5},
        {"pair", {1}, p, 1},
        {"double pair", {1, 1, 1, 1}, power(p, 2), 2},
        {"triple pair", {1, 0, 1}, power(p, 3), 3},
        {"fourfold pair and a pole", {1, 0, 1, 0, 0, 0, 0, 0, 0, 3}, times(power(p, 4), {2, 1}), 5},
        {"integrator", {3}, {0, 2}, 1},
        {"double integrator", {1, 1}, {0, 0, 2}, 2},
        {"triple integrator and a lag", {1, 2}, times({0, 0, 0, 1}, {1, 1}), 4},
        {"undamped", {1}, {1, 0, 1}, 1},
        {"double undamped", {1, 1}, power({1, 0, 1}, 2), 2},
        {"unstable", {1}, {-1, 1}, 1},
        {"all-pass", power({1, -1}, 3), power({1, 1}, 3), 3},
    };
    for (const case_of_poles& c : cases) {
        SCOPED_TRACE(c.name);
        const filter_sections f = expand(c.n, c.d);
        EXPECT_EQ(f.section.size(), c.sections);
        EXPECT_EQ(f.a0, c.n.size() == c.d.size() ? c.n.back() / c.d.back() : 0.0);
        expect_response(f, c.n, c.d, 1);
    }
}

TEST(expand_filter, makes_integrators_of_roots_at_zero) {
    const filter_sections f = expand({1, 1}, times({0, 0, 1}, {2, 1}));
    ASSERT_EQ(f.section.size(), 3u);
    int zeros = 0;
    for (const filter_section& s : f.section) zeros += s.order == 1 && s.r == 0 ? 1 : 0;
    EXPECT_EQ(zeros, 2);
}

TEST(expand_filter, leaves_out_what_adds_nothing) {
    const filter_sections f = expand({0, 3}, {0, 0, 1});  // 3 s/s^2
    ASSERT_EQ(f.section.size(), 1u);
    EXPECT_EQ(f.section[0].c, 3);
}

TEST(expand_filter, is_exact_for_butterworth_filters_up_to_degree_9) {
    for (const double wc : {1e-3, 1.0, 2 * pi * 50, 1e7})
        for (int degree = 1; degree <= 9; ++degree) {
            poly d = {1};
            for (int k = 0; k < degree / 2; ++k) {
                const double angle = pi * (2 * k + 1) / (2 * degree);
                d = times(d, pair_root(-wc * std::sin(angle), wc * std::cos(angle)));
            }
            if (degree % 2 != 0) d = times(d, {wc, 1});
            SCOPED_TRACE(degree);
            const filter_sections f = expand({d[0]}, d);
            EXPECT_EQ(f.section.size(), static_cast<std::size_t>((degree + 1) / 2));
            expect_response(f, {d[0]}, d, wc);
        }
}

TEST(expand_filter, holds_for_random_roots) {
    std::mt19937 rng(1);
    std::uniform_real_distribution<double> number(-3, 3);
    for (int trial = 0; trial < 300; ++trial) {
        const int degree = 1 + trial % 9;
        poly d = {1}, n;
        while (static_cast<int>(d.size()) <= degree) {
            const bool pair = number(rng) > 0 && static_cast<int>(d.size()) < degree;
            const poly f = pair ? pair_root(-0.2 - std::fabs(number(rng)), 0.2 + std::fabs(number(rng)))
                                : real_root(-0.1 - std::fabs(number(rng)));
            // Now and then a root comes twice.
            d = times(d, f);
            if (trial % 5 == 0 && static_cast<int>(d.size() + f.size()) <= degree + 2) d = times(d, f);
        }
        for (int k = 0; k <= degree - trial % 3 && k <= degree; ++k) n.push_back(number(rng));
        if (n.empty()) n = {1};
        const double scale = std::pow(10.0, trial % 7 - 3);  // rad/s
        for (std::size_t k = 0; k < d.size(); ++k) d[k] *= 2.5 * std::pow(scale, degree - static_cast<int>(k));
        for (std::size_t k = 0; k < n.size(); ++k) n[k] *= std::pow(scale, degree - static_cast<int>(k));
        SCOPED_TRACE(trial);
        expect_response(expand(n, d), n, d, scale, 1e-6);
    }
}

TEST(expand_filter, tells_slow_poles_apart) {
    const poly n = {1}, d = times({2e-6, 1}, {1e-6, 1});
    expect_response(expand(n, d), n, d, 1e-6);
}

TEST(expand_filter, takes_a_pair_with_a_tiny_imaginary_part_for_two_real_roots) {
    const poly n = {1}, d = times(pair_root(-1, 3e-6), {5, 1});
    const filter_sections f = expand(n, d);
    ASSERT_EQ(f.section.size(), 3u);
    for (const filter_section& s : f.section) EXPECT_EQ(s.order, 1);
    expect_response(f, n, d, 1);
}

TEST(expand_filter, makes_chains_of_close_roots_that_are_not_one) {
    for (const double apart : {1e-1, 4e-2, 1e-2, 4e-3, 1e-3, 1e-4, 1e-6})
        for (const int degree : {2, 5, 9}) {
            SCOPED_TRACE(line(apart, " ", degree));
            poly d = {1}, n = {1, -2};
            for (int k = 0; k < degree; ++k) d = times(d, {1 + apart * k, 1});
            expect_response(expand(n, d), n, d, 1, 1e-6);
        }
}

TEST(expand_filter, is_right_or_stops) {
    // Nine roots over 24 decades.
    std::mt19937 rng(1);
    std::uniform_real_distribution<double> number(-1, 1);
    int stops = 0;
    for (int trial = 0; trial < 100; ++trial) {
        SCOPED_TRACE(trial);
        poly d = {1}, n;
        while (d.size() < 10) {
            const double w = std::pow(10, 12 * number(rng));
            d = times(d, number(rng) > 0 && d.size() < 9 ? poly{w * w, 0.2 * w, 1} : poly{w, 1});
        }
        for (int k = 0; k < 9; ++k) n.push_back(number(rng) * d[k]);
        filter_sections f;
        const console_run heard = run_and_listen([&] { f = expand_filter(8, n.data(), 9, d.data()); });
        if (heard.stopped) {
            ++stops;
            EXPECT_EQ(heard.text.find("dp_class::xce_filter_1: the sections differ from N(s)/D(s)\n  by "), 0u);
            continue;
        }
        for (double w = 1e-12; w < 2e12; w *= 10) {
            const complex s = {w, w}, h = value(n, s) / value(d, s);
            EXPECT_LT(std::abs(filter_response(f, s) - h), 1e-4 * std::max(std::abs(h), 1e-2)) << w;
        }
    }
    EXPECT_GT(stops, 0);
    EXPECT_LT(stops, 50);
}

TEST(expand_filter, stops_at_numbers_out_of_range) {
    for (const poly& d : {poly{1e308, 1, 1e-308}, poly{1, 1, 1e-308}, poly{1e-200, 1, 1e200, 3}}) {
        const poly n = {1};
        EXPECT_HALT(expand_filter(0, n.data(), static_cast<int>(d.size()) - 1, d.data()),
                    "dp_class::xce_filter_1: no partial fractions. Halting...\n");
    }
    const poly n = {1}, d = {1, 1e200, 1};  // -1e-200 and -1e200
    EXPECT_EQ(expand_filter(0, n.data(), 2, d.data()).section.size(), 2u);
}

TEST(expand_filter, refuses_degrees_and_leading_zeros) {
    const poly n(11, 1.0), d(11, 1.0), zero(11, 0.0);
    const auto with = [&](int degree_n, int degree_d) { expand_filter(degree_n, n.data(), degree_d, d.data()); };
    EXPECT_HALT(with(-1, 2), "dp_class::xce_filter_1: check degree_n. Halting...\n");
    EXPECT_HALT(with(10, 9), "dp_class::xce_filter_1: check degree_n. Halting...\n");
    EXPECT_HALT(with(0, 0), "dp_class::xce_filter_1: check degree_d. Halting...\n");
    EXPECT_HALT(with(2, 10), "dp_class::xce_filter_1: check degree_d. Halting...\n");
    EXPECT_HALT(with(3, 2), "dp_class::xce_filter_1: degree_d < degree_n. Halting...\n");
    EXPECT_HALT(expand_filter(1, zero.data(), 2, d.data()),
                "partial_fractions_1: coef_n[degree_n] is zero! Halting...\n");
    EXPECT_HALT(expand_filter(1, n.data(), 2, zero.data()),
                "partial_fractions_1: coef_d[degree_d] is zero! Halting...\n");
    EXPECT_HALT(partial_fractions_1(2, 1, n.data(), d.data()),
                "partial_fractions_1: degree_n > degree_d not allowed.\n  degree_n=2\n  degree_d=1\n  Halting...\n");
}

}  // namespace
