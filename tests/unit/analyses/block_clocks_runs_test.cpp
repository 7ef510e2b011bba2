// Waves over time in whole runs: several together, block after block, under sweeps. Their corners are points.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "whole_run.h"

namespace {

const std::string circuit =
    "gelement name=A type=clock y=a t1=3u t2=4u dt1=0.5u dt2=1u t0=0.2u\n"
    "gelement name=B type=triangle_2 y=b tr=5u tf=6u y_min=-1 y_max=2\n"
    "gelement name=C type=clock_delay_1 y=c t1=6u t2=7u dt1=0.1u dt2=0.1u theta_delay=90\n"
    "gelement name=D type=srcac_fwr y=d a=1 f_hz=29411.7647058824 phi=0\n"
    "gelement name=LAG type=lag_1 x=a y=e tau=3u\n"
    "outvar: a=var_of_a b=var_of_b c=var_of_c d=var_of_d e=var_of_e\n";

// Corners of the waves within (from, to): all by hand.
std::vector<double> corners(double from, double to) {
    std::vector<double> all;
    const auto add = [&](double t) {
        if (t > from + 1e-9 && t < to - 1e-9) all.push_back(t);
    };
    for (int n = -1; n < 400; ++n) {
        for (const double part : {0.0, 0.5e-6, 3e-6, 4e-6}) add(0.2e-6 + n * 7e-6 + part);
        for (const double part : {0.0, 5e-6}) add(n * 11e-6 + part);
        for (const double part : {3.25e-6, 3.35e-6, 9.25e-6, 9.35e-6}) add(n * 13e-6 + part);  // late by a quarter
        add(n * 17e-6);                                                                        // half a period of d
    }
    return all;
}

void expect_points_at_corners(const table& rows, double from, double to) {
    ASSERT_GT(rows.size(), 100U);
    EXPECT_GE(rows.back()[0], to * (1 - 1e-9));
    for (const double t : corners(from, to)) {
        double nearest = 1;
        for (const auto& row : rows) nearest = std::min(nearest, std::fabs(row[0] - t));
        EXPECT_LT(nearest, 1e-11) << t;
    }
}

}  // namespace

TEST(block_clock_runs, meet_all_their_corners_together_and_block_after_block) {
    for (const std::string rule :
         {"trapezoidal=yes", "back_euler=yes", "gear2=yes", "back_euler_auto=yes delt_min=1n"}) {
        SCOPED_TRACE(rule);
        deck_text deck{circuit, "a b c d e"};
        deck.blocks = {"solve_type startup\n",
                       "solve_type trns\ninitial_sol previous\nmethod: " + rule +
                           " t_end=0.4m delt_const=2.3u itmax_trns=100000\n",
                       "solve_type trns\ninitial_sol previous\nmethod: " + rule +
                           " t_start=0.4m t_end=0.9m delt_const=1.7u itmax_trns=100000\n"};
        const whole_run run(deck.str());
        ASSERT_FALSE(run.stopped) << run.text;
        const table first = run.rows("out2.dat"), second = run.rows("out3.dat");
        expect_points_at_corners(first, 0, 0.4e-3);
        expect_points_at_corners(second, 0.4e-3, 0.9e-3);
        for (const table* rows : {&first, &second})
            for (const auto& row : *rows) {
                const double p = row[0] / 11e-6 - std::floor(row[0] / 11e-6 + 1e-9);
                EXPECT_NEAR(row[2], p < 5.0 / 11 ? -1 + 3 * p * 11 / 5 : 2 - 3 * (p * 11 - 5) / 6, 2e-5) << row[0];
                EXPECT_NEAR(row[4], std::fabs(std::sin(std::acos(-1.0) * row[0] / 17e-6)), 2e-5) << row[0];
            }
    }
}

// In a sweep of dc the time stands, whatever the parameter of a clock.
TEST(block_clock_runs, stand_at_their_value_of_time_0_in_a_sweep) {
    deck_text deck{circuit, "a b d"};
    deck.blocks = {"solve_type dc\nvary_parm g_high_of_A from 1 to 3 type linear n_points 5\n"};
    const whole_run run(deck.str());
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("out1.dat");
    ASSERT_EQ(rows.size(), 5U);
    for (const auto& row : rows) {
        EXPECT_EQ(row[row.size() - 3], 0);  // 0.2 us before its rise
        EXPECT_EQ(row[row.size() - 2], -1);
        EXPECT_NEAR(row[row.size() - 1], 0, 1e-12);
    }
}
