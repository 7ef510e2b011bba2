// How far the voltages of junctions and gates may move in one step.
#include "models/voltage_limits.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

constexpr double vt = 0.025;

double pn(double v_new, double v_old) {
    pnlimit(v_new, vt, v_old);
    return v_new;
}

TEST(pnlimit, leaves_alone_what_is_at_or_below_50_vt) {
    for (const double v : {-1e6, -1.0, 0.0, 0.7, 49.9 * vt, 50 * vt}) {
        EXPECT_EQ(pn(v, 0), v);
        EXPECT_EQ(pn(v, -10), v);
        EXPECT_EQ(pn(v, 100), v);
    }
}

TEST(pnlimit, leaves_alone_what_is_within_2_vt_of_the_last_voltage) {
    EXPECT_EQ(pn(1.5, 1.5 - 1.9 * vt), 1.5);
    EXPECT_EQ(pn(1.5, 1.5 + 1.9 * vt), 1.5);
    EXPECT_NE(pn(1.5, 1.5 - 2.1 * vt), 1.5);
}

TEST(pnlimit, goes_by_the_logarithm_of_the_step_beyond) {
    EXPECT_DOUBLE_EQ(pn(5, 0.7), 0.7 + vt * std::log(1 + 4.3 / vt));
    EXPECT_DOUBLE_EQ(pn(5, 0), vt * std::log(1 + 5 / vt));
    EXPECT_DOUBLE_EQ(pn(5, -3), vt * std::log(5 / vt));
    EXPECT_DOUBLE_EQ(pn(1.5, 4), 50 * vt);  // falling
}

struct limited {
    double v;
    int n;
};
limited pn_counted(double v_new, double v_old, double v_crit = 0.6) {
    int n = 0;
    pnlimit_ngspice(v_new, v_old, vt, v_crit, n);
    return {v_new, n};
}

TEST(pnlimit_ngspice, counts_every_change_and_nothing_else) {
    const struct {
        double v_new, v_old, expected;
        int n;
    } cases[] = {
        {0.6, 0, 0.6, 0},                                      // at the critical voltage
        {0.7, 0.69, 0.7, 0},                                   // near the last one
        {5, 0.7, 0.7 + vt * (std::log(4.3 / vt - 2) + 2), 1},  // up
        {0.7, 2, 2 - vt * (std::log(2 + 1.3 / vt) + 2), 1},    // down, above the critical voltage
        {5, 0, vt * std::log(5 / vt), 1},                      // from the blocked side
        {5, -3, vt * std::log(5 / vt), 1},                     // from the blocked side
        {-1.5, 0.6, -1.5, 0},
        {-1.6, 0.6, -1.6, 0},  // floor -v_old - 1
        {-1.7, 0.6, -1.6, 1},
        {-1e6, 0.6, -1.6, 1},  //
        {-5, -2, -5, 0},
        {-6, -2, -5, 1},  // floor 2 v_old - 1
        {-1, 0, -1, 0},
        {-1.001, 0, -1, 1},  //
        {-0.5, -100, -0.5, 0},
        {0, -100, 0, 0},  //
    };
    for (const auto& c : cases) {
        const limited l = pn_counted(c.v_new, c.v_old);
        EXPECT_DOUBLE_EQ(l.v, c.expected) << c.v_new << " from " << c.v_old;
        EXPECT_EQ(l.n, c.n) << c.v_new << " from " << c.v_old;
    }
}

TEST(pnlimit_ngspice, adds_to_the_count_that_is_there) {
    int n = 3;
    double v = 5;
    pnlimit_ngspice(v, 0.7, vt, 0.6, n);
    EXPECT_EQ(n, 4);
}

TEST(devfetlim3, has_a_bound_for_each_state_of_the_channel_and_each_direction) {
    const double v_to = 1;
    const struct {
        double v_new, v_old, expected;
    } cases[] = {
        // fully on: v_old = 6, v_tsthi = 12, v_tstlo = 8
        {17, 6, 17},
        {18, 6, 18},
        {30, 6, 18},
        {5, 6, 5},
        {4.5, 6, 4.5},
        {4.4, 6, 4.4},
        {2, 6, 3},
        {-100, 6, 3},
        // a long way down that ends above the switching range: v_old = 40, v_tsthi = 80, v_tstlo = 42
        {20, 40, 20},
        {4.5, 40, 4.5},
        {4.4, 40, 4.4},
        {0, 40, 3},
        // near the threshold
        {10, 2, 5},
        {4.9, 2, 4.9},
        {1, 2, 1},
        {-3, 2, 0.5},
        {9, 1, 5},
        {0, 1, 0.5},
        // off: v_old = -4, v_tsthi = 12, v_tstlo = 8
        {-16, -4, -16},
        {-17, -4, -16},
        {-1, -4, -1},
        {1.5, -4, 1.5},
        {9, -4, 1.5},
        // no step is none
        {6, 6, 6},
        {2, 2, 2},
        {-4, -4, -4},
    };
    for (const auto& c : cases) {
        double v = c.v_new;
        devfetlim3(v, c.v_old, v_to);
        EXPECT_DOUBLE_EQ(v, c.expected) << c.v_new << " from " << c.v_old;
    }
}

TEST(devfetlim3, holds_a_step_from_far_below_the_threshold_by_its_length_downwards_alone) {
    // v_old = -20, v_to = 1: v_tstlo = (42 + 2)/2 + 2 = 24 reaches beyond the edge at 1.5, which alone binds.
    double v = 1.4;
    devfetlim3(v, -20, 1);
    EXPECT_EQ(v, 1.4);
    // A step down is held at v_tsthi = 44.
    v = -100;
    devfetlim3(v, -20, 1);
    EXPECT_EQ(v, -64);
}

TEST(devlimvds3, holds_the_drain_within_three_times_its_voltage) {
    const struct {
        double v_new, v_old, expected;
    } cases[] = {
        {14, 4, 14}, {20, 4, 14},   {3, 4, 3}, {1, 4, 2},     {-50, 4, 2},    {3.5, 3.5, 3.5}, {100, 3.5, 12.5},
        {5, 3, 4},   {3.9, 3, 3.9}, {1, 3, 1}, {-2, 3, -0.5}, {-2, -1, -0.5}, {-2, -2, -0.5},  {10, -2, 4},
    };
    for (const auto& c : cases) {
        double v = c.v_new;
        devlimvds3(v, c.v_old);
        EXPECT_DOUBLE_EQ(v, c.expected) << c.v_new << " from " << c.v_old;
    }
}

}  // namespace
