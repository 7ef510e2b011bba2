// Roots of polynomials and how they are told apart.
#include "models/polynomial.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "halt_throws.h"

namespace {
using complex = std::complex<double>;

complex_poly product(const std::vector<complex>& roots, complex lead = 1.0) {
    complex_poly c = initialise_coeff_1();
    for (const complex& r : roots) compute_coeff_1(c, r);
    for (complex& a : c) a *= lead;
    return c;
}

TEST(products, come_from_their_roots) {
    EXPECT_EQ(product({}), (complex_poly{1.0}));
    EXPECT_EQ(product({2.0, -3.0}), (complex_poly{-6.0, 1.0, 1.0}));
    EXPECT_EQ(product({{1, 2}, {1, -2}}), (complex_poly{5.0, -2.0, 1.0}));
    EXPECT_EQ(poly_degree_1({1.0, 2.0, 0.0, 0.0}), 1);
    EXPECT_EQ(poly_degree_1({0.0, 0.0}), 0);
    EXPECT_EQ(poly_derivative({1.0, 2.0, 3.0, 4.0}, 2), (complex_poly{6.0, 24.0}));
    EXPECT_EQ(poly_value({1.0, 2.0, 3.0}, 2.0), 17.0);
}

TEST(laguer, finds_a_root_and_counts_its_steps) {
    int its = 0;
    const complex_poly a = product({1.0, 2.0, {3, 4}});
    EXPECT_LT(std::abs(laguer(a, 3, 0.0, its) - 1.0), 1e-12);
    EXPECT_GT(its, 1);
    EXPECT_LT(std::abs(laguer(a, 3, {3.1, 3.9}, its) - complex(3, 4)), 1e-12);
    EXPECT_EQ(laguer(a, 3, 1.0, its), 1.0);
    EXPECT_EQ(its, 1);
    EXPECT_EQ(laguer(product({0.0, 5.0}), 2, 0.0, its), 0.0);
}

TEST(laguer, leaves_a_point_without_slope) {
    int its = 0;  // s^4 + 1 at 0: both derivatives vanish
    const complex r = laguer({1.0, 0.0, 0.0, 0.0, 1.0}, 4, 0.0, its);
    EXPECT_LT(std::abs(std::pow(r, 4) + 1.0), 1e-12);
}

TEST(laguer, gives_up_after_80_steps) {
    int its = 0;
    EXPECT_HALT(laguer({1.0, std::nan(""), 1.0}, 2, 0.0, its), "laguer: too many iterations in laguer\n  Halting...\n");
    EXPECT_EQ(its, 81);
}

TEST(zroots, finds_random_roots_by_ascending_real_part) {
    std::mt19937 rng(1);
    std::uniform_real_distribution<double> number(-2, 2);
    for (const bool polish : {false, true})
        for (int trial = 0; trial < 200; ++trial) {
            std::vector<complex> roots;
            for (int n = 1 + trial % 9; n > 0; --n) {
                const complex r(number(rng), number(rng));
                if (n > 1 && trial % 2 == 0) {
                    roots.insert(roots.end(), {r, std::conj(r)});
                    --n;
                } else {
                    roots.push_back(trial % 2 == 0 ? complex(r.real()) : r);
                }
            }
            const std::vector<complex> found = zroots(product(roots, 3.0), polish);
            ASSERT_EQ(found.size(), roots.size());
            EXPECT_TRUE(
                std::is_sorted(found.begin(), found.end(), [](complex a, complex b) { return a.real() < b.real(); }));
            for (const complex& r : roots) {
                double least = 1e9;
                for (const complex& f : found) least = std::min(least, std::abs(f - r));
                EXPECT_LT(least, 1e-6) << trial;
            }
        }
}

TEST(zroots, makes_nearly_real_roots_real) {
    // The imaginary part is 3e-6 and 5e-6 of the real one.
    for (const complex& r : zroots(product({{-1, 3e-6}, {-1, -3e-6}}), false)) EXPECT_EQ(r.imag(), 0.0);
    for (const complex& r : zroots(product({{-1, 5e-6}, {-1, -5e-6}}), false)) EXPECT_NE(r.imag(), 0.0);
    for (const complex& r : zroots({0.0, 0.0, 0.0, 1.0}, true)) EXPECT_EQ(r, 0.0);
}

TEST(classify_roots, tells_single_and_multiple_real_roots_and_pairs) {
    const root_groups g = classify_roots(
        {-2.0, {-1.000001, 2}, {-1, -2.000001}, -1.0, {-1, 2}, {-1, -2}, -0.999999, 4.0, {5, 1e-9}, {5, -1e-9}}, 1e-5);
    ASSERT_EQ(g.real.size(), 4u);
    ASSERT_EQ(g.pair.size(), 1u);
    const double root[] = {-2, -0.9999995, 4, 5};
    const int power[] = {1, 2, 1, 2};
    for (std::size_t k = 0; k < 4; ++k) {
        EXPECT_NEAR(g.real[k].root.real(), root[k], 1e-9);
        EXPECT_EQ(g.real[k].power, power[k]);
    }
    EXPECT_EQ(g.pair[0].power, 2);
    EXPECT_LT(std::abs(g.pair[0].root - complex(-1, 2)), 1e-6);
}

TEST(classify_roots, of_a_product_are_one_double_and_one_single) {
    const root_groups g = classify_roots(zroots(product({-1.0, -1.0, -2.0}), true), 2e-5);
    ASSERT_EQ(g.real.size(), 2u);
    EXPECT_EQ(g.real[0].power, 1);
    EXPECT_EQ(g.real[1].power, 2);
}

TEST(classify_roots, stops_where_nearness_is_no_clear_matter) {
    // The one in the middle is near to both others, which are not near to each other.
    EXPECT_HALT(classify_roots({1.0, 0.0, 2.0}, 1.0),
                "classify_roots: n_root_real_check and n_r_root_1\n  are not equal!\n  n_root_real_check=2\n"
                "  n_r_root_1=1\n  Halting...\n");
    EXPECT_HALT(classify_roots({{1, 2}}, 1e-5),
                "classify_roots: n_root_imag_check and n_c_root_1\n  are not equal!\n  n_root_imag_check=0\n"
                "  n_c_root_1=1\n  Halting...\n");
}

TEST(n_by_d_1, takes_out_gain_and_constant) {
    const double n[] = {1, 2, 6}, d[] = {4, 10, 4};
    const poly_quotient q = n_by_d_1(2, 2, n, d);
    EXPECT_EQ(q.gain, 0.25);
    EXPECT_EQ(q.a0, 1.5);
    EXPECT_EQ(q.d, (std::vector<double>{1, 2.5, 1}));
    EXPECT_EQ(q.n, (std::vector<double>{0.25 - 1.5, 0.5 - 1.5 * 2.5}));
    EXPECT_EQ(n_by_d_1(1, 2, n, d).n, (std::vector<double>{0.25, 0.5}));
    EXPECT_EQ(n_by_d_1(1, 2, n, d).a0, 0);
}

TEST(n_by_d_1, refuses_what_is_no_quotient) {
    const double n[] = {1, 2, 0}, d[] = {4, 10, 4};
    EXPECT_HALT(n_by_d_1(2, 1, d, n),
                "n_by_d_1: degree_n > degree_d not allowed.\n  degree_n=2\n  degree_d=1\n"
                "  Halting...\n");
    EXPECT_HALT(n_by_d_1(2, 2, n, d), "n_by_d_1: coef_n[degree_n] is zero! Halting...\n");
    EXPECT_HALT(n_by_d_1(2, 2, d, n), "n_by_d_1: coef_d[degree_d] is zero! Halting...\n");
}

}  // namespace
