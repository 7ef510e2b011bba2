// fet_checks.h -- what the tests of field effect transistors ask of any of them.
#pragma once
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

#include "model_unit.h"

#define EXPECT_REL(a, b, tolerance) EXPECT_NEAR(a, b, std::abs(b) * (tolerance))

using four = std::array<double, 4>;  // terminals d g s b, or d g s and one spare

inline std::vector<double> functions_at(model_unit& u, const four& v) {
    std::copy(v.begin(), v.end(), u.x.v.begin());
    u.call(&flags_class::dc, &flags_class::function);
    return u.x.f;
}
inline void set_voltages(model_unit& u, const four& v) { std::copy(v.begin(), v.end(), u.x.v.begin()); }

inline double random_in(std::mt19937& rng, double a, double b) {
    return std::uniform_real_distribution<double>(a, b)(rng);
}

// The largest current of n terminals for a current, the largest charge for a charge.
inline double largest_of_its_kind(const std::vector<double>& f, std::size_t j, std::size_t n) {
    double largest = 0;
    for (std::size_t k = j < n ? 0 : n; k < (j < n ? n : 2 * n); ++k) largest = std::max(largest, std::abs(f[k]));
    return largest;
}

// Derivatives of all functions against central differences at v. Near a border of the formulas the differences with two
// steps differ from each other, and that much is allowed. Returns how many numbers were compared closely.
inline int expect_derivatives(model_unit& u, const four& v, double current, double charge, double tolerance = 2e-5) {
    const auto n_nd = static_cast<std::size_t>(u.jac.n_nd), n_f = static_cast<std::size_t>(u.jac.n_f);
    constexpr double digit = 2.2e-16 / 1e-5;  // the last one of a function that is a sum of others, over the step
    int close = 0;
    set_voltages(u, v);
    u.call(&flags_class::dc, &flags_class::jacobian);
    std::vector<double> table;
    for (std::size_t j = 0; j < n_f; ++j) table.insert(table.end(), u.jac.dfdv[j], u.jac.dfdv[j] + n_nd);
    for (std::size_t k = 0; k < n_nd; ++k) {
        const auto difference = [&](double h) {
            four at = v;
            at[k] = v[k] + h;
            const std::vector<double> above = functions_at(u, at);
            at[k] = v[k] - h;
            const std::vector<double> below = functions_at(u, at);
            std::vector<double> d;
            for (std::size_t j = 0; j < n_f; ++j) d.push_back((above[j] - below[j]) / (2 * h));
            return d;
        };
        const std::vector<double> d = difference(1e-5), d2 = difference(2e-5);
        for (std::size_t j = 0; j < n_f; ++j) {
            const double y = table[j * n_nd + k], scale = std::abs(y) + (j < n_nd ? current : charge);
            const double noise = std::abs(d[j] - d2[j]) + digit * largest_of_its_kind(u.x.f, j, n_nd);
            EXPECT_NEAR(y, d[j], tolerance * scale + 3 * noise) << "function " << j << ", terminal " << k << ", v "
                                                                << v[0] << ' ' << v[1] << ' ' << v[2] << ' ' << v[3];
            close += noise < tolerance * scale;
        }
    }
    return close;
}

// Currents of the terminals sum to 0, charges too, as far as rounding lets them.
inline void expect_balance(const model_unit& u) {
    const auto n = static_cast<std::size_t>(u.jac.n_nd), n_f = static_cast<std::size_t>(u.jac.n_f);
    for (std::size_t first = 0; first < n_f; first += n) {
        double sum = 0, size = 0;
        for (std::size_t j = first; j < first + n; ++j) {
            sum += u.x.f[j];
            size += std::abs(u.x.f[j]);
        }
        EXPECT_LE(std::abs(sum), 1e-15 * size) << "rows from " << first;
    }
}

// No NaN and no overflow, in functions and derivatives, for terminals up to 1e6 V of any sign, near each other and far
// apart.
inline void expect_finite_everywhere(model_unit& u, unsigned seed) {
    std::mt19937 rng(seed);
    for (int trial = 0; trial < 20000; ++trial) {
        four v;
        for (double& x : v) x = std::pow(10, random_in(rng, -12, 6)) * (rng() % 2 ? 1 : -1);
        if (trial % 5 == 0) v[2] = v[0];
        if (trial % 7 == 0) v[1] = v[0];
        set_voltages(u, v);
        u.call(&flags_class::dc, &flags_class::newton_first, &flags_class::function, &flags_class::jacobian);
        double sum = 0;
        for (const double x : u.x.f) sum += std::abs(x);
        for (const double x : u.jac.store) sum += std::abs(x);
        ASSERT_TRUE(std::isfinite(sum)) << v[0] << ' ' << v[1] << ' ' << v[2] << ' ' << v[3];
        expect_balance(u);
    }
    for (const double far : {1e101, 1e300, std::numeric_limits<double>::infinity()}) {
        set_voltages(u, {far, 0, 0, 0});
        u.dc();
        EXPECT_TRUE(std::isinf(u.x.f[0]));
    }
}
