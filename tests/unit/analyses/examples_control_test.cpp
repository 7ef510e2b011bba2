// The decks of examples/ with controllers that stand ready, against the numbers of their stories.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "whole_run.h"

namespace {
whole_run example(const std::string& name) {
    return whole_run(read_file(std::string(TARNEL_EXAMPLES) + "/" + name + "/deck.in"));
}
}  // namespace

TEST(examples, droop_inverters_share_their_load_by_the_slopes_of_their_frequencies) {
    const whole_run run = example("droop_inverters");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("wave.dat");  // p1 p2 w1 w2
    ASSERT_GT(rows.size(), 900U);
    const auto last_before = [&](double t) {
        return *(std::find_if(rows.begin(), rows.end(), [&](const auto& row) { return row[0] > t; }) - 1);
    };
    const double w0 = 100 * std::numbers::pi;
    for (const auto& [row, load] : {std::pair{last_before(0.49), 30.0}, std::pair{rows.back(), 15.0}}) {
        EXPECT_NEAR(row[1] / row[2], 2, 2e-4);
        EXPECT_NEAR(row[3], w0 - 1e-4 * row[1], 2e-4);
        EXPECT_NEAR(row[4], w0 - 2e-4 * row[2], 2e-4);
        EXPECT_NEAR(row[1] + row[2], 1.5 * 325 * 325 / load, 0.01 * 1.5 * 325 * 325 / load);
        EXPECT_LT(row[1] + row[2], 1.5 * 325 * 325 / load);
    }
    // Just behind the step it is the coils that share: one as much as the other.
    const std::vector<double> before = last_before(0.4995), behind = last_before(0.503);
    EXPECT_NEAR(behind[1] - before[1], behind[2] - before[2], 0.03 * (behind[1] - before[1]));
}

TEST(examples, grid_following_dip_holds_its_current_and_comes_back) {
    const whole_run run = example("grid_following_dip");
    ASSERT_FALSE(run.stopped) << run.text;
    double longest = 0, back = 0;
    for (const auto& row : run.rows("wave.dat")) {  // ia ga p id iq
        const double t = row[0], i = std::hypot(row[4], row[5]);
        longest = std::max(longest, i);
        if (t > 0.05 && t < 0.1) {
            EXPECT_NEAR(i, 1e4 / (1.5 * 325), 1e-3);
            EXPECT_NEAR(row[3], 1e4, 1);
        }
        if (t > 0.11 && t < 0.25) {
            EXPECT_NEAR(i, 25, 0.01) << t;
        }
        if (t > 0.22 && t < 0.25) {
            EXPECT_NEAR(row[3], 1.5 * 162.5 * 25, 1) << t;
        }
        if (t > 0.2501 && std::fabs(row[3] - 1e4) > 100) back = t;
    }
    EXPECT_LT(longest, 25.01);
    EXPECT_GT(longest, 24.9);
    EXPECT_LT(back, 0.28);
}
