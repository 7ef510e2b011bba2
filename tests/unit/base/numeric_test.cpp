#include "base/numeric.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "halt_throws.h"

namespace {

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan_value = std::numeric_limits<double>::quiet_NaN();

// Value and slope of the capped exponentials, by name, as functions of x with vt = 0.5 and cap = 2.
struct pair {
    double y, dy;
};
constexpr double vt = 0.5, cap = 2.0, edge = cap * vt;

template <class F>
pair value_of(F f, double x) {
    pair p{};
    f(x, p.y, p.dy);
    return p;
}
const auto cap_1 = [](double x, double& y, double& dy) { exp_cap_1(x, y, dy, vt, cap); };
const auto cap_4 = [](double x, double& y, double& dy) { exp_cap_4(1 / vt, x, y, dy, cap); };
const auto cap_5 = [](double x, double& y, double& dy) { exp_cap_5(x, y, dy, vt, cap); };

}  // namespace

TEST(compare_double, is_exact_and_gives_one_or_zero) {
    const double one = 1.0, above = std::nextafter(1.0, 2.0);
    EXPECT_EQ(compare_double_gt(above, one), 1);
    EXPECT_EQ(compare_double_gt(one, one), 0);
    EXPECT_EQ(compare_double_ge(one, one), 1);
    EXPECT_EQ(compare_double_ge(one, above), 0);
    EXPECT_EQ(compare_double_lt(one, above), 1);
    EXPECT_EQ(compare_double_lt(one, one), 0);
    EXPECT_EQ(compare_double_le(one, one), 1);
    EXPECT_EQ(compare_double_le(above, one), 0);
    EXPECT_EQ(compare_double_eq(one, one), 1);
    EXPECT_EQ(compare_double_eq(one, above), 0);
}

TEST(compare_double_eq_1, includes_the_tolerance) {
    EXPECT_EQ(compare_double_eq_1(1.0, 1.5, 0.5), 1);
    EXPECT_EQ(compare_double_eq_1(1.5, 1.0, 0.5), 1);
    EXPECT_EQ(compare_double_eq_1(1.0, 1.75, 0.5), 0);
}

TEST(int_twins, have_the_truth_tables_of_logic) {
    for (int a = 0; a < 2; ++a)
        for (int b = 0; b < 2; ++b) {
            EXPECT_EQ(and_2a(a, b), a * b);
            EXPECT_EQ(or_2a(a, b), a + b - a * b);
            EXPECT_EQ(xor_2a(a, b), (a + b) % 2);
            EXPECT_EQ(not_2(a), 1 - a);
            EXPECT_EQ(compare_int_gt(a, b) + compare_int_lt(a, b) + compare_int_eq(a, b), 1);
            EXPECT_EQ(compare_int_ge(a, b), 1 - compare_int_lt(a, b));
            EXPECT_EQ(compare_int_le(a, b), 1 - compare_int_gt(a, b));
        }
}

TEST(round_1, rounds_half_away_from_zero) {
    EXPECT_EQ(round_1(2.5), 3);
    EXPECT_EQ(round_1(-2.5), -3);
    EXPECT_EQ(round_1(2.4), 2);
    EXPECT_EQ(round_1(-2.4), -2);
    EXPECT_EQ(round_1(0.0), 0);
    EXPECT_EQ(round_1(1e30), std::numeric_limits<int>::max());
    EXPECT_EQ(round_1(-inf), std::numeric_limits<int>::min());
    EXPECT_EQ(round_1(nan_value), 0);
}

TEST(power_int, multiplies_out_and_refuses_negative_powers) {
    EXPECT_EQ(power_int(3, 4), 81.0);
    EXPECT_EQ(power_int(-2, 3), -8.0);
    EXPECT_EQ(power_int(0, 0), 1.0);
    EXPECT_TRUE(run_and_listen([] { power_int(2, -1); }).stopped);
}

TEST(limit_x, passes_its_limits_with_slope_one) {
    double y, dy;
    for (const double x : {-1.0, 0.5, 2.0}) {
        limit_x(x, -1, 2, y, dy);
        EXPECT_EQ(y, x);
        EXPECT_EQ(dy, 1.0);
        EXPECT_EQ(limit_x_1(x, -1, 2), x);
    }
    limit_x(2.1, -1, 2, y, dy);
    EXPECT_EQ(y, 2.0);
    EXPECT_EQ(dy, 0.0);
    limit_x(-1.1, -1, 2, y, dy);
    EXPECT_EQ(y, -1.0);
    EXPECT_EQ(dy, 0.0);
    EXPECT_EQ(limit_x_1(5, -1, 2), 2.0);
    EXPECT_EQ(limit_x_1(-5, -1, 2), -1.0);
}

TEST(min_and_max, give_ties_to_the_bound) {
    double y, dy;
    min_x(1, 2, y, dy);
    EXPECT_EQ(y, 1.0);
    EXPECT_EQ(dy, 1.0);
    min_x(2, 2, y, dy);
    EXPECT_EQ(y, 2.0);
    EXPECT_EQ(dy, 0.0);
    min_x(3, 2, y, dy);
    EXPECT_EQ(y, 2.0);
    EXPECT_EQ(dy, 0.0);
    max_x(3, 2, y, dy);
    EXPECT_EQ(y, 3.0);
    EXPECT_EQ(dy, 1.0);
    max_x(2, 2, y, dy);
    EXPECT_EQ(dy, 0.0);
    max_x(1, 2, y, dy);
    EXPECT_EQ(y, 2.0);
    EXPECT_EQ(dy, 0.0);
}

TEST(exp_cap, is_the_exponential_up_to_the_cap) {
    for (const double x : {-3.0, 0.0, 0.7, edge}) {
        EXPECT_DOUBLE_EQ(value_of(cap_1, x).y, std::exp(x / vt));
        EXPECT_DOUBLE_EQ(value_of(cap_1, x).dy, std::exp(x / vt) / vt);
        EXPECT_DOUBLE_EQ(value_of(cap_4, x).y, std::exp(x / vt));
        EXPECT_DOUBLE_EQ(value_of(cap_4, x).dy, std::exp(x / vt) / vt);
        EXPECT_DOUBLE_EQ(value_of(cap_5, x).y, std::exp(x / vt));
        EXPECT_DOUBLE_EQ(value_of(cap_5, x).dy, std::exp(x / vt) / vt);
    }
}

TEST(exp_cap, goes_on_as_the_tangent_and_exp_cap_5_as_the_chord) {
    const double e = std::exp(cap);
    for (const double x : {1.5, 10.0, 1e4}) {
        EXPECT_DOUBLE_EQ(value_of(cap_1, x).y, e + e / vt * (x - edge));
        EXPECT_DOUBLE_EQ(value_of(cap_1, x).dy, e / vt);
        EXPECT_DOUBLE_EQ(value_of(cap_4, x).y, value_of(cap_1, x).y);
        EXPECT_DOUBLE_EQ(value_of(cap_4, x).dy, value_of(cap_1, x).dy);
        EXPECT_DOUBLE_EQ(value_of(cap_5, x).y, e * x / edge);
        EXPECT_DOUBLE_EQ(value_of(cap_5, x).dy, e / edge);
    }
}

TEST(exp_cap, joins_at_the_cap_in_value_and_but_for_the_chord_in_slope) {
    const double above = std::nextafter(edge, 2.0);
    const auto jump = [&](const auto& f) {
        const pair a = value_of(f, edge), b = value_of(f, above);
        return pair{std::fabs(b.y - a.y), std::fabs(b.dy - a.dy)};
    };
    EXPECT_LT(jump(cap_1).y, 1e-13);
    EXPECT_LT(jump(cap_1).dy, 1e-13);
    EXPECT_LT(jump(cap_4).y, 1e-13);
    EXPECT_LT(jump(cap_4).dy, 1e-13);
    EXPECT_LT(jump(cap_5).y, 1e-13);
    EXPECT_NEAR(jump(cap_5).dy, std::exp(cap) * (1 / vt - 1 / edge), 1e-12);
}

TEST(exp_cap, counts_the_exponentials_that_were_capped) {
    double y, dy;
    int n = 0;
    exp_cap_1a(edge, y, dy, vt, cap, n);
    exp_cap_5a(edge, y, dy, vt, cap, n);
    EXPECT_EQ(n, 0);
    exp_cap_1a(2, y, dy, vt, cap, n);
    EXPECT_EQ(n, 1);
    EXPECT_EQ(y, value_of(cap_1, 2).y);
    exp_cap_5a(2, y, dy, vt, cap, n);
    EXPECT_EQ(n, 2);
    EXPECT_EQ(y, value_of(cap_5, 2).y);
}

TEST(exp_lmt, is_the_tangent_beyond_its_cap) {
    double y, dy;
    exp_lmt_1(3, y, dy, 3);
    EXPECT_EQ(y, std::exp(3.0));
    EXPECT_EQ(dy, y);
    exp_lmt_1(5, y, dy, 3);
    EXPECT_DOUBLE_EQ(y, 3 * std::exp(3.0));
    EXPECT_EQ(dy, std::exp(3.0));
    EXPECT_EQ(exp_lmt(5, 3), y);
    EXPECT_EQ(exp_lmt(1, 3), std::exp(1.0));
    EXPECT_TRUE(std::isfinite(exp_lmt(1e9, 80)));
}

TEST(tanh_1, agrees_with_the_runtime_and_never_overflows) {
    double y, dy;
    for (double x = -400; x <= 400; x += 0.37) {
        tanh_1(x, y, dy);
        EXPECT_NEAR(y, std::tanh(x), 1e-15) << x;
        const double c = std::cosh(x);
        EXPECT_NEAR(dy, 1 / (c * c), 1e-15) << x;
    }
    for (const double x : {1e3, 1e300, inf}) {
        tanh_1(x, y, dy);
        EXPECT_EQ(y, 1.0);
        EXPECT_EQ(dy, 0.0);
        tanh_1(-x, y, dy);
        EXPECT_EQ(y, -1.0);
        EXPECT_EQ(dy, 0.0);
    }
    tanh_1(0, y, dy);
    EXPECT_EQ(y, 0.0);
    EXPECT_EQ(dy, 1.0);
}

TEST(tanh_2, steps_from_zero_to_one_at_its_place) {
    double y, dy;
    tanh_2(3, 3, 10, y, dy);
    EXPECT_EQ(y, 0.5);
    EXPECT_EQ(dy, 5.0);
    tanh_2(100, 3, 10, y, dy);
    EXPECT_EQ(y, 1.0);
    tanh_2(-100, 3, 10, y, dy);
    EXPECT_EQ(y, 0.0);
    tanh_2(3.1, 3, 10, y, dy);
    EXPECT_DOUBLE_EQ(y, 0.5 * (1 + std::tanh(1.0)));
}

TEST(divide, gives_one_point_more_than_parts) {
    const std::vector<double> lin = divide_linear(1, 2, 4);
    ASSERT_EQ(lin.size(), 5u);
    for (int i = 0; i < 5; ++i) EXPECT_DOUBLE_EQ(lin[static_cast<std::size_t>(i)], 1 + 0.25 * i);
    const std::vector<double> log = divide_log(1, 16, 4);
    ASSERT_EQ(log.size(), 5u);
    for (int i = 0; i < 5; ++i) EXPECT_NEAR(log[static_cast<std::size_t>(i)], std::pow(2, i), 1e-12);
    EXPECT_EQ(log[4], 16.0);
}

TEST(divide, names_what_it_refuses) {
    EXPECT_HALT(divide_linear(0, 1, 0), "divide_linear: n_div=0 is not allowed.\n");
    EXPECT_HALT(divide_linear(0, 1, -3), "divide_linear: n_div=-3 is not allowed.\n");
    EXPECT_HALT(divide_log(0, 10, 2),
                "divide_log: check x_start and x_end\ndivide_log: x_start=0\ndivide_log: x_end=10\n");
    EXPECT_HALT(divide_log(1, -10, 2),
                "divide_log: check x_start and x_end\ndivide_log: x_start=1\ndivide_log: x_end=-10\n");
}

TEST(interp, has_exact_ends) {
    const double a = 0.1, b = 0.7;  // a + (b - a) is not b in binary
    for (int n = 2; n < 40; ++n) {
        EXPECT_EQ(interp_linear(a, b, 0, n), a);
        EXPECT_EQ(interp_linear(a, b, n - 1, n), b);
        EXPECT_EQ(interp_log(a, b, 0, n), a);
        EXPECT_EQ(interp_log(a, b, n - 1, n), b);
    }
    EXPECT_EQ(interp_linear(a, b, 0, 1), a);
    EXPECT_DOUBLE_EQ(interp_linear(1, 2, 1, 5), 1.25);
    EXPECT_DOUBLE_EQ(interp_log(1, 100, 1, 3), 10.0);
}

TEST(interp_log, halts_at_every_point_unless_both_bounds_are_positive) {
    for (int i = 0; i < 3; ++i)
        EXPECT_HALT(interp_log(0, 10, i, 3),
                    "interp_log: check x_start and x_end\ninterp_log: x_start=0\ninterp_log: x_end=10\n");
    EXPECT_HALT(interp_log(1, -1, 0, 3),
                "interp_log: check x_start and x_end\ninterp_log: x_start=1\ninterp_log: x_end=-1\n");
}

TEST(interp_linear_1, goes_through_both_points) {
    double y;
    interp_linear_1(1, 1, 3, 10, 20, y);
    EXPECT_EQ(y, 10.0);
    interp_linear_1(3, 1, 3, 10, 20, y);
    EXPECT_EQ(y, 20.0);
    interp_linear_1(5, 1, 3, 10, 20, y);
    EXPECT_EQ(y, 30.0);
    EXPECT_HALT(interp_linear_1(0, 2, 2, 0, 1, y), "interp_linear_1: x1 = 2, x2 = 2\n");
}

TEST(norms, keep_nan_wherever_it_stands) {
    const double first[] = {NAN, 1}, last[] = {1, NAN}, zero[] = {0, 0};
    for (const double* v : {first, last}) {
        double r;
        norm_2_avg(2, v, r);
        EXPECT_TRUE(std::isnan(r));
        norm_inf(2, v, r);
        EXPECT_TRUE(std::isnan(r));
        EXPECT_TRUE(std::isnan(norm_abs_diff_double(2, v, zero)));
    }
}

TEST(norms, follow_their_definitions) {
    const double v[] = {3, -4, 0, 0}, w[] = {3, 4, 1, 0};
    double r;
    norm_2_avg(4, v, r);
    EXPECT_EQ(r, 2.5);
    norm_2_avg(0, v, r);
    EXPECT_EQ(r, 0.0);
    norm_inf(4, v, r);
    EXPECT_EQ(r, 4.0);
    norm_inf(0, v, r);
    EXPECT_EQ(r, 0.0);
    EXPECT_EQ(norm_abs_diff_double(4, v, w), 8.0);
    const int a[] = {1, -2}, b[] = {1, 5};
    EXPECT_EQ(norm_abs_diff_int(2, a, b), 7);
    double d[4];
    diff_double_1(4, v, w, d);
    EXPECT_EQ(d[1], -8.0);
    EXPECT_EQ(d[2], -1.0);
}

TEST(sweep_grid, numbers_its_points_with_the_last_index_fastest) {
    const int m[] = {2, 3, 4};
    ASSERT_EQ(indx_to_ijk_nttl(3, m), 24);
    int flat = 0;
    for (int i = 0; i < 2; ++i)
        for (int j = 0; j < 3; ++j)
            for (int k = 0; k < 4; ++k, ++flat) {
                int ijk[3], back = -1;
                indx_to_ijk(3, m, flat, ijk);
                EXPECT_EQ(ijk[0], i);
                EXPECT_EQ(ijk[1], j);
                EXPECT_EQ(ijk[2], k);
                ijk_to_indx(3, m, back, ijk);
                EXPECT_EQ(back, flat);
            }
}

TEST(sweep_grid, refuses_indices_out_of_range_and_grids_without_dimensions) {
    const int m[] = {2, 3}, out[] = {1, 3}, below[] = {-1, 0}, huge[] = {100000, 100000};
    int i = 0;
    EXPECT_HALT(ijk_to_indx(2, m, i, out), "ijk_to_indx: i=1\n  i_in[i]=3\n  m[i]=3\n");
    EXPECT_HALT(ijk_to_indx(2, m, i, below), "ijk_to_indx: i=0\n  i_in[i]=-1\n  m[i]=2\n");
    EXPECT_TRUE(run_and_listen([&] { indx_to_ijk_nttl(0, m); }).stopped);
    EXPECT_TRUE(run_and_listen([&] { indx_to_ijk_nttl(2, huge); }).stopped);
    int ijk[2];
    EXPECT_TRUE(run_and_listen([&] { indx_to_ijk(0, m, 0, ijk); }).stopped);
    EXPECT_TRUE(run_and_listen([&] { ijk_to_indx(0, m, i, ijk); }).stopped);
}

TEST(ijk_init_vec, starts_each_curve_from_the_first_point_of_its_neighbour) {
    const int m[] = {2, 2, 3};
    // points 0..2: (0,0,*)   3..5: (0,1,*)   6..8: (1,0,*)   9..11: (1,1,*)
    EXPECT_EQ(ijk_init_vec(3, m), (std::vector<int>{-1, 0, 1, 0, 3, 4, 0, 6, 7, 6, 9, 10}));
    const int one[] = {4};
    EXPECT_EQ(ijk_init_vec(1, one), (std::vector<int>{-1, 0, 1, 2}));
}

TEST(rand_DoubleRange, stays_between_its_ends_and_fills_the_range) {
    double low = 10, high = -10, sum = 0;
    for (int i = 0; i < 10000; ++i) {
        const double x = rand_DoubleRange(-2, 6);
        low = std::min(low, x);
        high = std::max(high, x);
        sum += x;
    }
    EXPECT_GE(low, -2.0);
    EXPECT_LE(high, 6.0);
    EXPECT_LT(low, -1.9);
    EXPECT_GT(high, 5.9);
    EXPECT_NEAR(sum / 10000, 2.0, 0.2);
}

TEST(check_array_for_nan, names_the_first_place) {
    const double good[] = {1, inf}, bad[] = {1, nan_value, nan_value};
    check_array_for_nan_1(2, good, "m");
    EXPECT_FALSE(check_array_for_nan_2(2, good));
    EXPECT_TRUE(check_array_for_nan_2(3, bad));
    EXPECT_FALSE(check_array_for_nan_2(1, bad));
    EXPECT_HALT(check_array_for_nan_1(3, bad, "solve_dc"),
                "check_array_for_nan: NaN found. i = 1\n   message from calling routine:\n   solve_dc\n");
}
