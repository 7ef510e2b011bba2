// integration_test.cpp -- the constants of the rules.
#include "analyses/integration.h"

#include <gtest/gtest.h>

TEST(find_trns_constants, differentiates_a_parabola_exactly_with_gear2) {
    solve_class slv;
    slv.now.delt = 0.3;
    slv.now.delt_old_2 = 0.2;
    slv.now.flag_gear_var = 1;
    find_trns_constants(slv);
    // x = t^2 + 2t + 5 at t, t - h, t - h - h1: derivative 2t + 2
    const double t = 1.7;
    auto x = [](double s) { return s * s + 2 * s + 5; };
    const double slope =
        slv.now.cnst_gear_2 * x(t) - slv.now.cnst_gear_0 * x(t - 0.3) + slv.now.cnst_gear_1 * x(t - 0.5);
    EXPECT_NEAR(slope, 2 * t + 2, 1e-12);
}

TEST(find_trns_constants, of_equal_steps_are_those_of_fixed_gear2) {
    solve_class slv;
    slv.now.delt = slv.now.delt_old_2 = 0.25;
    slv.now.flag_gear_fixed = 1;
    find_trns_constants(slv);
    EXPECT_DOUBLE_EQ(slv.now.cnst_gear_0, 8.0);
    EXPECT_DOUBLE_EQ(slv.now.cnst_gear_1, 2.0);
    EXPECT_DOUBLE_EQ(slv.now.cnst_gear_2, 6.0);
    slv.now.flag_gear_fixed = 0;
    slv.now.flag_gear_var = 1;
    find_trns_constants(slv);
    EXPECT_DOUBLE_EQ(slv.now.cnst_gear_0, 8.0);
    EXPECT_DOUBLE_EQ(slv.now.cnst_gear_1, 2.0);
    EXPECT_DOUBLE_EQ(slv.now.cnst_gear_2, 6.0);
}

TEST(find_trns_constants, of_one_step_methods_are_one_and_two_over_the_step) {
    solve_class slv;
    slv.now.delt = 0.5;
    slv.now.flag_be = slv.now.flag_trz = 1;
    find_trns_constants(slv);
    EXPECT_EQ(slv.now.cnst_be, 2.0);
    EXPECT_EQ(slv.now.cnst_trz, 4.0);
}

TEST(find_trns_constants, of_trbdf2_are_exact_for_a_parabola_and_match_the_trapezoidal_stage) {
    solve_class slv;
    slv.now.delt = 0.4;
    slv.now.flag_bdf2 = 1;
    slv.method.trbdf2_gamma = 0.5857864376269049;
    find_trns_constants(slv);
    const double g = slv.method.trbdf2_gamma, h = slv.now.delt;
    auto x = [](double s) { return 3 * s * s - s; };
    const double slope = slv.now.cnst_bdf2_0 * x(h) - slv.now.cnst_bdf2_1 * x(g * h) + slv.now.cnst_bdf2_2 * x(0);
    EXPECT_NEAR(slope, 6 * h - 1, 1e-12);
    EXPECT_NEAR(slv.now.cnst_bdf2_0, 2 / (g * h), 1e-12);  // one matrix serves both stages
}
