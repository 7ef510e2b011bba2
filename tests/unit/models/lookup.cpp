// Tables over axes, curves, and levels that change at the times of a list.
#include "models/lookup.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "block_unit.h"
#include "halt_throws.h"
#include "models/toggles.h"

namespace {

// ---- tables over axes ----

// The literal way: along the last axis first, point by point.
double literal(const data_table& t, int axis, std::size_t at_point, int value, const double* first, const double* last,
               const double* x) {
    const std::size_t k = static_cast<std::size_t>(axis);
    if (k == t.n.size()) return t.y[at_point * static_cast<std::size_t>(t.n_y) + static_cast<std::size_t>(value)];
    const int n = t.n[k];
    const auto on_point = [&](int i) {
        return literal(t, axis + 1, at_point * static_cast<std::size_t>(n) + static_cast<std::size_t>(i), value, first,
                       last, x);
    };
    const double to = n == 1 ? 0 : std::clamp((x[k] - first[k]) / (last[k] - first[k]), 0.0, 1.0) * (n - 1);
    const int i = std::min(static_cast<int>(to), n - 1);
    return i == n - 1 ? on_point(i) : on_point(i) + (to - i) * (on_point(i + 1) - on_point(i));
}

data_table random_table(const std::vector<int>& n, int n_y, std::mt19937& rng) {
    std::uniform_real_distribution<double> number(-2, 2);
    data_table t{{}, {}, n, n_y};
    int total = n_y;
    for (const int k : n) total *= k;
    for (int i = 0; i < total; ++i) t.y.push_back(number(rng));
    return t;
}

TEST(lookup, is_straight_along_every_axis_and_clamped_outside) {
    std::mt19937 rng(1);
    std::uniform_real_distribution<double> number(-4, 4);
    for (int trial = 0; trial < 2000; ++trial) {
        const int n_axes = 1 + trial % 4, n_y = trial % 3 == 0 ? 3 : 1;
        std::vector<int> n;
        for (int k = 0; k < n_axes; ++k) n.push_back(1 + static_cast<int>(rng() % 4));
        const data_table t = random_table(n, n_y, rng);
        double first[4], last[4], x[4], y[3], dydx[12];
        for (int k = 0; k < n_axes; ++k) {
            first[k] = number(rng);
            last[k] = number(rng);  // axes run up or down
            x[k] = number(rng);
        }
        lookup(t, first, last, x, y, dydx);
        for (int j = 0; j < n_y; ++j) {
            EXPECT_NEAR(y[j], literal(t, 0, 0, j, first, last, x), 1e-12);
            for (int k = 0; k < n_axes; ++k) {
                constexpr double h = 1e-7;
                double moved[4];
                std::copy(x, x + n_axes, moved);
                moved[k] = x[k] + h;
                const double above = literal(t, 0, 0, j, first, last, moved);
                moved[k] = x[k] - h;
                const double below = literal(t, 0, 0, j, first, last, moved);
                const double step = n[static_cast<std::size_t>(k)] > 1 ? std::fabs(last[k] - first[k]) : 1;
                EXPECT_NEAR(dydx[j * n_axes + k], (above - below) / (2 * h), 1e-6 + 1e-6 / step / step);
            }
        }
        double alone[3];
        lookup(t, first, last, x, alone, nullptr);
        EXPECT_TRUE(std::equal(y, y + n_y, alone));
    }
}

TEST(lookup, gives_the_points_themselves) {
    std::mt19937 rng(2);
    const data_table t = random_table({3, 4, 2}, 1, rng);
    const double first[] = {-1, 5, 0}, last[] = {1, 2, 1};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 4; ++j)
            for (int k = 0; k < 2; ++k) {
                const double x[] = {-1.0 + i, 5.0 - j, 0.0 + k};
                double y;
                lookup(t, first, last, x, &y, nullptr);
                EXPECT_EQ(y, t.y[static_cast<std::size_t>((i * 4 + j) * 2 + k)]);
            }
}

TEST(lookup, of_no_number_is_none) {
    const data_table t{{}, {1, 2}, {2}, 1};
    const double first = 0, last = 1, x = std::nan("");
    double y;
    lookup(t, &first, &last, &x, &y, nullptr);
    EXPECT_TRUE(std::isnan(y));
}

TEST(lookup_axes, end_at_their_number_of_points_less_1_where_nothing_is_given) {
    const data_table t{{}, {}, {5, 1, 3}, 1};
    const double first[] = {0, 0, 2}, end[] = {-1000, 0, 7};
    double last[3];
    lookup_axes("table", t, first, end, last);
    EXPECT_EQ(last[0], 4);
    EXPECT_EQ(last[1], 0);  // one point: any axis
    EXPECT_EQ(last[2], 7);
    const double same[] = {0, 0, 7};
    EXPECT_HALT(lookup_axes("table", t, same, end, last), "table: check x3_begin, x3_end. Halting...\n");
}

TEST(tables, must_be_there) {
    for (const char* name : {"lut_file_1_to_3", "lut_file_2_to_1", "lut_file_3_to_1", "lut_file_4_to_1", "src_table_1",
                             "pwl_file_xy_1", "pwm_file_1", "pwm_file_2"}) {
        block_unit u(name);
        u.dp.gbe.of_unit = {-1};
        EXPECT_HALT(u.prepare(), std::string(name) + ".gbe: i_file=-1\n  Halting...\n");
        u.dp.gbe.of_unit.clear();
        EXPECT_HALT(u.prepare(), std::string(name) + ".gbe: i_file=-1\n  Halting...\n");
    }
}

TEST(lut_blocks, give_the_values_of_their_files_in_all_analyses) {
    block_unit u("lut_file_2_to_1");
    u.dp.gbe.table = {data_table{{}, {0, 1, 2, 10, 11, 12}, {2, 3}, 1}};
    u.r("x1_begin") = 1;
    u.r("x1_end") = 2;
    u.prepare();
    u.vr("x1") = 1.25;
    u.vr("x2") = 1.5;
    for (const auto mode : {&flags_class::dc, &flags_class::trns, &flags_class::startup}) {
        u.call(mode, &flags_class::function, &flags_class::jacobian);
        EXPECT_NEAR(-u.x.f[0], 2.5 + 1.5, 1e-14);
        EXPECT_NEAR(u.jac.dfdvr[0][0], -10, 1e-13);
        EXPECT_NEAR(u.jac.dfdvr[0][1], -1, 1e-14);
    }
    block_unit three("lut_file_1_to_3");
    three.dp.gbe.table = {data_table{{}, {0, 1, 2, 10, 21, 32}, {2}, 3}};
    three.prepare();
    three.vr("x") = 0.5;
    three.dc();
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(-three.x.f[static_cast<std::size_t>(k)], 5.0 + 6.0 * k, 1e-14) << k;
    u.r("x1_end") = 1;
    EXPECT_HALT(u.prepare(), "lut_file_2_to_1.gbe: check x1_begin, x1_end. Halting...\n");
}

// ---- curves ----

TEST(pwl_file_xy_1, is_straight_between_its_points) {
    block_unit u("pwl_file_xy_1");  // (-0.5, 1) (0.1, 2), a jump to -1, (0.6, 3)
    u.prepare();
    const double points[][3] = {{-9, 1, 0},  {-0.5, 1, 1 / 0.6}, {-0.2, 1.5, 1 / 0.6}, {0.1, -1, 8}, {0.35, 1, 8},
                                {0.6, 3, 0}, {9, 3, 0}};
    for (const auto& [x, y, slope] : points) {
        u.vr("x") = x;
        u.vr("y") = 0;
        u.dc();
        EXPECT_NEAR(-u.x.f[0], y, 1e-12) << x;
        EXPECT_NEAR(-u.jac.dfdvr[0][0], slope, 1e-12) << x;
    }
    EXPECT_EQ(u.next_break(0), 1e9);
}

TEST(src_table_1, follows_its_table_and_breaks_at_its_corners) {
    block_unit u("src_table_1");
    u.prepare();
    const double points[][2] = {{-1, 1}, {-0.2, 1.5}, {0.1, -1}, {0.35, 1}, {0.6, 3}, {9, 3}};
    for (const auto& [t, y] : points) EXPECT_NEAR(u.output(t), y, 1e-12) << t;
    EXPECT_NEAR(u.next_break(-0.4), 0.1, 1e-12);
    EXPECT_NEAR(u.next_break(0.1), 0.6, 1e-12);
    EXPECT_EQ(u.next_break(0.6), 1e9);
    EXPECT_HALT(u.output(std::nan("")), "src_table_1.gbe: time loop did not end.\n  Halting...\n");
}

// ---- levels ----

TEST(toggles, turn_the_level_over_period_by_period) {
    const data_table times{{0.1, 0.3, 0.35}, {}};
    const toggle_list w = toggles_of(times, 1.0, 0.5, false);
    ASSERT_TRUE(toggles_in_order(w));
    // Odd: high until the period ends.
    for (const double period : {0.0, 1.0, -7.0, 1e6}) {
        const double t = 1 + 0.5 * period;
        EXPECT_FALSE(toggle_high(w, t));
        EXPECT_FALSE(toggle_high(w, t + 0.099));
        EXPECT_TRUE(toggle_high(w, t + 0.1));
        EXPECT_FALSE(toggle_high(w, t + 0.3));
        EXPECT_TRUE(toggle_high(w, t + 0.35));
        EXPECT_TRUE(toggle_high(w, t + 0.499));
        double at = t;
        for (const double next : {0.1, 0.3, 0.35, 0.5, 0.6}) {
            at = toggle_next(w, at);
            EXPECT_NEAR(at, t + next, 1e-9);
        }
    }
    // An even number ends low, so the end of a period is no change.
    const toggle_list even{2, times.x.data(), 0, 0.5, false};
    EXPECT_NEAR(toggle_next(even, 0.3), 0.6, 1e-15);
}

TEST(toggles, of_half_a_wave_are_exchanged_in_the_other_half) {
    const data_table times{{0.1, 0.2, 0.3}, {}};
    const toggle_list w = toggles_of(times, 0, 1, true);
    ASSERT_TRUE(toggles_in_order(w));
    for (double t = -2.0005; t < 2; t += 0.011) EXPECT_NE(toggle_high(w, t), toggle_high(w, t + 0.5)) << t;
    EXPECT_FALSE(toggle_high(w, 0));
    EXPECT_TRUE(toggle_high(w, 0.15));
    EXPECT_TRUE(toggle_high(w, 0.45));
    // High from 0.3 on and where the other half begins: no change at 0.5.
    EXPECT_TRUE(toggle_high(w, 0.5));
    EXPECT_NEAR(toggle_next(w, 0.3), 0.6, 1e-15);
    EXPECT_FALSE(toggles_in_order(toggles_of(times, 0, 0.6, true)));
}

TEST(toggles, answer_with_the_next_change_from_any_time) {
    std::mt19937 rng(1);
    std::uniform_real_distribution<double> number(0, 1);
    for (int trial = 0; trial < 300; ++trial) {
        data_table times;
        for (int k = 0; k < 1 + trial % 5; ++k) times.x.push_back(number(rng));
        if (trial % 7 == 0) times.x.push_back(0.0);
        std::sort(times.x.begin(), times.x.end());
        const toggle_list w = toggles_of(times, number(rng), (trial % 2 == 0 ? 1.0 : 2.0) + 1e-3, trial % 2 != 0);
        ASSERT_TRUE(toggles_in_order(w));
        double t = -3 + number(rng);
        for (int k = 0; k < 40; ++k) {
            const double next = toggle_next(w, t);
            ASSERT_GT(next, t);
            // No change between, seen by steps; at the change itself the new level.
            const bool before = toggle_high(w, t);
            for (int i = 1; i < 50; ++i) EXPECT_EQ(toggle_high(w, t + (next - t) * (i / 50.0)), before);
            const bool always = w.n == 1 && w.t[0] == 0;
            EXPECT_EQ(toggle_high(w, next) != before, !always) << trial;
            t = next;
        }
    }
}

TEST(toggles, need_times_within_their_period) {
    const data_table times{{0.1, 0.3}, {}}, same{{0.1, 0.1}, {}}, early{{-0.1, 0.1}, {}};
    EXPECT_TRUE(toggles_in_order(toggles_of(times, 0, 0.31, false)));
    EXPECT_FALSE(toggles_in_order(toggles_of(times, 0, 0.3, false)));
    EXPECT_FALSE(toggles_in_order(toggles_of(times, 0, 0, false)));
    EXPECT_FALSE(toggles_in_order(toggles_of(times, 0, std::nan(""), false)));
    EXPECT_FALSE(toggles_in_order(toggles_of(same, 0, 1, false)));
    EXPECT_FALSE(toggles_in_order(toggles_of(early, 0, 1, false)));
    EXPECT_FALSE(toggles_in_order(toggles_of({}, 0, 1, false)));
}

TEST(pwm_blocks, give_their_levels_and_break_at_changes) {
    block_unit u("pwm_file_1"), half("pwm_file_2");  // 50 us, 100 us, 200 us of 1 ms
    for (block_unit* b : {&u, &half}) {
        b->r("g_low") = -1;
        b->r("g_high") = 5;
        b->prepare();
        EXPECT_EQ(b->output(0), -1);
        EXPECT_EQ(b->output(60e-6), 5);
        EXPECT_EQ(b->output(150e-6), -1);
        EXPECT_EQ(b->output(300e-6), 5);
        EXPECT_NEAR(b->next_break(0), 50e-6, 1e-12);
    }
    EXPECT_EQ(u.output(900e-6), 5);
    EXPECT_EQ(half.output(560e-6), -1);
    EXPECT_EQ(half.output(620e-6), 5);
    EXPECT_EQ(half.output(900e-6), -1);
    half.flags.event_restart = 1;
    half.next_break(0);
    u.r("per") = 0.2e-3;
    EXPECT_HALT(u.prepare(), "pwm_file_1.gbe: check per and the times of the file. Halting...\n");
    half.r("per") = 0.4e-3;
    EXPECT_HALT(half.prepare(), "pwm_file_2.gbe: check per and the times of the file. Halting...\n");
}

}  // namespace
