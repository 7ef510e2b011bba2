#include "sparse/eigenvalues.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {
using complex = std::complex<double>;

double nearest(const std::vector<complex>& found, complex x) {
    double least = std::numeric_limits<double>::infinity();
    for (const complex& f : found) least = std::min(least, std::abs(f - x));
    return least;
}
}  // namespace

TEST(eigenvalues, of_a_triangle_are_its_diagonal_in_descending_order) {
    const auto found = eigenvalues({1, 5, -7, 0, -4, 2, 0, 0, 0.5}, 3);
    ASSERT_EQ(found.size(), 3u);
    EXPECT_NEAR(std::abs(found[0] - complex(-4)), 0, 1e-14);
    EXPECT_NEAR(std::abs(found[1] - complex(1)), 0, 1e-14);
    EXPECT_NEAR(std::abs(found[2] - complex(0.5)), 0, 1e-14);
}

TEST(eigenvalues, of_a_rotation_and_of_a_circle_of_exchanges_lie_on_the_unit_circle) {
    const auto turn = eigenvalues({0.6, -0.8, 0.8, 0.6}, 2);
    EXPECT_LT(nearest(turn, {0.6, 0.8}), 1e-15);
    EXPECT_LT(nearest(turn, {0.6, -0.8}), 1e-15);
    constexpr int n = 6;
    std::vector<double> a(n * n, 0.0);
    for (int i = 0; i < n; ++i) a[static_cast<std::size_t>(i * n + (i + 1) % n)] = 1;
    const auto roots = eigenvalues(a, n);
    ASSERT_EQ(roots.size(), 6u);
    for (int k = 0; k < n; ++k) EXPECT_LT(nearest(roots, std::polar(1.0, 2 * M_PI * k / n)), 1e-13);
}

// The companion of (x - 1)(x - 2) ... (x - 8).
TEST(eigenvalues, of_a_companion_matrix_are_the_roots_of_its_polynomial) {
    constexpr int n = 8;
    std::vector<double> p = {1};
    for (int k = 1; k <= n; ++k) {
        p.push_back(0);
        for (std::size_t i = p.size() - 1; i > 0; --i) p[i] -= k * p[i - 1];
    }
    std::vector<double> a(n * n, 0.0);
    for (int j = 0; j < n; ++j) a[static_cast<std::size_t>(j)] = -p[static_cast<std::size_t>(j + 1)];
    for (int i = 1; i < n; ++i) a[static_cast<std::size_t>(i * n + i - 1)] = 1;
    const auto found = eigenvalues(a, n);
    for (int k = 1; k <= n; ++k) EXPECT_LT(nearest(found, complex(k)), 1e-8) << k;
}

// Trace and determinant of random matrices, here of rows of any size.
TEST(eigenvalues, have_the_sum_and_the_sum_of_squares_of_the_matrix) {
    std::mt19937 random(7);
    std::normal_distribution<double> gauss;
    for (int trial = 0; trial < 40; ++trial) {
        const int n = 1 + trial;
        const auto at = [n](int i, int j) { return static_cast<std::size_t>(i * n + j); };
        std::vector<double> a(at(n, 0)), size(static_cast<std::size_t>(n));
        for (double& s : size) s = std::pow(10.0, 4 * gauss(random));
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j)
                a[at(i, j)] = gauss(random) * size[static_cast<std::size_t>(i)] / size[static_cast<std::size_t>(j)];
        double trace = 0, trace_2 = 0;
        for (int i = 0; i < n; ++i) {
            trace += a[at(i, i)];
            for (int j = 0; j < n; ++j) trace_2 += a[at(i, j)] * a[at(j, i)];
        }
        const auto found = eigenvalues(a, n);
        ASSERT_EQ(static_cast<int>(found.size()), n);
        complex sum = 0, sum_2 = 0;
        for (const complex& x : found) {
            sum += x;
            sum_2 += x * x;
        }
        EXPECT_NEAR(std::abs(sum - trace), 0, 1e-11 * n) << n;
        EXPECT_NEAR(std::abs(sum_2 - trace_2), 0, 1e-10 * n) << n;
        for (int i = 1; i < n; ++i)
            EXPECT_LE(std::abs(found[static_cast<std::size_t>(i)]),
                      std::abs(found[static_cast<std::size_t>(i - 1)]) * (1 + 1e-15));
    }
}

TEST(eigenvalues, of_nothing_and_of_zeros_are_none_and_zeros) {
    EXPECT_TRUE(eigenvalues({}, 0).empty());
    EXPECT_EQ(eigenvalues(std::vector<double>(9, 0.0), 3), std::vector<complex>(3));
    EXPECT_LT(std::abs(eigenvalues({0, 1, 0, 0, 0, 1, 0, 0, 0}, 3)[0]), 1e-5);
    EXPECT_TRUE(eigenvalues({1, std::nan(""), 0, 1}, 2).empty());
    EXPECT_TRUE(eigenvalues({1, std::numeric_limits<double>::infinity(), 0, 1}, 2).empty());
}
