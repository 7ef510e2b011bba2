// Waves of straight lines: values, corners, and the next corner.
#include "models/edges.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "base/flags_class.h"

namespace {

constexpr double nan_value = std::numeric_limits<double>::quiet_NaN();

TEST(clock_edges, has_the_wave_that_its_shares_and_edges_describe) {
    const double t1 = 3e-4, t2 = 5e-4, dt1 = 2e-5, dt2 = 4e-5, t0 = 1.3e-4, low = -1, high = 4;
    const auto wave = [&](double t) {  // the definition, literally
        const double p = t - t0 - std::floor((t - t0) / (t1 + t2)) * (t1 + t2);
        if (p < dt1) return low + (high - low) * p / dt1;
        if (p < t1) return high;
        if (p < t1 + dt2) return high + (low - high) * (p - t1) / dt2;
        return low;
    };
    edge_store s;
    const edge_list e = clock_edges(s, t1, t2, dt1, dt2, t0, low, high);
    std::mt19937 rng(1);
    std::uniform_real_distribution<double> time(-5e-3, 5e-3);
    for (int trial = 0; trial < 2000; ++trial) {
        const double t = time(rng);
        EXPECT_NEAR(edge_value(e, t), wave(t), 1e-8) << t;
    }
}

TEST(clock_edges, counts_a_time_just_before_the_end_of_a_period_as_its_beginning) {
    edge_store s;
    const edge_list e = clock_edges(s, 1e-3, 1e-3, 0, 1e-4, 0, 2, 7);  // rises in a jump
    EXPECT_EQ(edge_value(e, 2e-3 - 0.9e-10), 7);
    EXPECT_EQ(edge_value(e, 2e-3 - 1.1e-10), 2);
    EXPECT_EQ(edge_value(e, 0), 7);
}

TEST(clock_edges, keeps_its_form_in_a_period_of_nanoseconds) {
    edge_store s;
    const edge_list e = clock_edges(s, 1e-9, 1e-9, 1e-10, 1e-10, 0, 0, 1);
    EXPECT_NEAR(edge_value(e, 2e-9 + 0.5e-10), 0.5, 1e-6);
    EXPECT_NEAR(edge_value(e, 1e-9 + 0.5e-10), 0.5, 1e-6);
    EXPECT_NEAR(edge_next(e, 1.95e-9, edge_eps(e)), 2e-9, 1e-18);
}

TEST(pulse_edges, waits_for_its_delay_and_then_repeats) {
    edge_store s;
    const edge_list e = pulse_edges(s, 1, 5, 2.0, 0.5, 0.25, 1.0, 4.0);
    for (const auto& [t, y] : std::vector<std::pair<double, double>>{{-7, 1},
                                                                     {0, 1},
                                                                     {2, 1},
                                                                     {2.25, 3},
                                                                     {2.5, 5},
                                                                     {3.5, 5},
                                                                     {3.625, 3},
                                                                     {3.75, 1},
                                                                     {5, 1},
                                                                     {6.25, 3},
                                                                     {8, 1},
                                                                     {10.25, 3}})
        EXPECT_EQ(edge_value(e, t), y) << t;
}

TEST(pulse_edges, without_a_period_is_a_single_pulse) {
    edge_store s;
    const edge_list e = pulse_edges(s, 1, 5, 2.0, 0.5, 0.25, 1.0, 0);
    EXPECT_EQ(edge_value(e, 3), 5);
    EXPECT_EQ(edge_value(e, 1e6), 1);
    EXPECT_EQ(edge_next(e, 3, 0), 3.5);
    EXPECT_EQ(edge_next(e, 3.75, 0), std::numeric_limits<double>::infinity());
}

TEST(pulse_edges, may_fill_its_period_to_the_last_digit) {
    for (int i = 1; i < 200; ++i) {
        const double per = 1e-3 / i, tr = 1e-7, tf = 3e-7;
        edge_store s;
        EXPECT_TRUE(edges_in_order(pulse_edges(s, 0, 1, 0, tr, tf, per - tr - tf, per))) << i;
    }
}

TEST(triangle_edges, is_lowest_at_its_origin_and_highest_half_a_period_later) {
    edge_store s;
    const edge_list e = triangle_edges(s, 2, 0.5, -3, 5);
    for (const auto& [t, y] :
         std::vector<std::pair<double, double>>{{0.5, -3}, {1.5, 5}, {2.5, -3}, {1, 1}, {2, 1}, {-0.5, 5}, {0, 1}})
        EXPECT_EQ(edge_value(e, t), y) << t;
}

TEST(step_edges, changes_once) {
    edge_store s;
    const edge_list e = step_edges(s, 1, 2, 3, 0.5);
    EXPECT_EQ(edge_value(e, -1e9), 1);
    EXPECT_EQ(edge_value(e, 3.25), 1.5);
    EXPECT_EQ(edge_value(e, 1e9), 2);
    EXPECT_EQ(edge_next(e, 0, edge_eps(e)), 3);
    EXPECT_EQ(edge_next(e, 3, edge_eps(e)), 3.5);
}

TEST(edge_value, has_the_later_value_at_a_jump_also_when_the_time_is_short_of_it_by_rounding) {
    const double t[] = {0, 0.3, 0.3, 1}, y[] = {0, 0, 1, 1};
    const edge_list e = point_edges(4, t, y);
    EXPECT_EQ(edge_value(e, 0.3), 1);
    EXPECT_EQ(edge_value(e, 0.1 + 0.2), 1);
    EXPECT_EQ(edge_value(e, std::nextafter(0.3, 0)), 1);
    EXPECT_EQ(edge_value(e, 0.2999999), 0);
}

TEST(edge_value, holds_the_end_values_outside_the_points) {
    const double t[] = {1, 2}, y[] = {3, 4};
    EXPECT_EQ(edge_value(point_edges(2, t, y), 0.5), 3);
    EXPECT_EQ(edge_value(point_edges(2, t, y), 1.25), 3.25);
    EXPECT_EQ(edge_value(point_edges(2, t, y), 9), 4);
    EXPECT_EQ(edge_value(point_edges(1, t, y), 9), 3);
}

TEST(edge_next, visits_every_corner_of_a_clock_and_nothing_else) {
    const double t1 = 3e-4, t2 = 5e-4, dt1 = 2e-5, dt2 = 4e-5, t0 = 1.3e-4, per = t1 + t2;
    for (const int first_period : {-3, 0, 1000000}) {  // up to 800 s
        edge_store s;
        const edge_list e = clock_edges(s, t1, t2, dt1, dt2, t0, 0, 1);
        double t = t0 + first_period * per;
        for (int k = first_period; k < first_period + 20; ++k)
            for (const double corner : {dt1, t1, t1 + dt2, per}) {
                const double next = edge_next(e, t, edge_eps(e));
                EXPECT_GT(next, t);
                EXPECT_NEAR(next, t0 + k * per + corner, 1e-15 + 1e-15 * std::abs(t));
                t = next;
            }
    }
}

TEST(edge_next, never_gives_the_corner_that_the_time_stands_on_within_eps) {
    edge_store s;
    const edge_list e = clock_edges(s, 1e-3, 1e-3, 1e-6, 1e-6, 0, 0, 1);
    const double eps = edge_eps(e);
    EXPECT_NEAR(eps, 1e-8, 1e-13);
    for (const double off : {-0.9e-8, -1e-12, 0.0, 1e-12, 0.9e-8}) {
        EXPECT_NEAR(edge_next(e, 1e-3 + off, eps), 1.001e-3, 1e-17) << off;
        EXPECT_NEAR(edge_next(e, 2e-3 + off, eps), 2.001e-3, 1e-17) << off;
    }
    EXPECT_NEAR(edge_next(e, 1e-3 - 1.1e-8, eps), 1e-3, 1e-17);
    EXPECT_NEAR(edge_next(e, 2e-3 - 1.1e-8, eps), 2e-3, 1e-17);
}

TEST(edge_next, takes_the_end_of_a_period_for_a_corner_that_a_time_just_before_it_stands_on) {
    edge_store s;
    const edge_list e = clock_edges(s, 1e-3, 1e-3, 1e-9, 1e-9, 0, 0, 1);
    EXPECT_NEAR(edge_next(e, 2e-3 - 0.9e-10, 0), 2e-3 + 1e-9, 1e-17);
    EXPECT_NEAR(edge_next(e, 2e-3 - 1.1e-10, 0), 2e-3, 1e-17);
}

TEST(edge_next, lies_strictly_ahead_for_any_list_at_any_time) {
    std::mt19937 rng(2);
    std::uniform_real_distribution<double> number(0, 1);
    for (int trial = 0; trial < 5000; ++trial) {
        std::vector<double> t = {0}, y = {number(rng)};
        const int n = 1 + static_cast<int>(6 * number(rng));
        for (int i = 0; i < n; ++i) {
            t.push_back(t.back() + (number(rng) < 0.3 ? 0 : std::pow(10, -9 * number(rng))));
            y.push_back(number(rng));
        }
        edge_list e = point_edges(n + 1, t.data(), y.data());
        e.t0 = 10 * number(rng) - 5;
        e.per = number(rng) < 0.5 ? 0 : t.back();
        e.repeat_before = number(rng) < 0.5;
        ASSERT_TRUE(edges_in_order(e));
        const double now = 100 * number(rng) - 50, eps = number(rng) < 0.5 ? 0 : edge_eps(e);
        const double next = edge_next(e, now, eps);
        EXPECT_GT(next, now);
        const double value = edge_value(e, now);
        EXPECT_GE(value, *std::min_element(y.begin(), y.end()));
        EXPECT_LE(value, *std::max_element(y.begin(), y.end()));
        if (std::isfinite(next)) {  // a straight line lies between now and there
            const double a = now + 0.3 * (next - now), b = now + 0.6 * (next - now);
            if (next - now > 1e-6) {
                const double slope_1 = (edge_value(e, b) - edge_value(e, a)) / (b - a);
                const double c = now + 0.9 * (next - now);
                EXPECT_NEAR(edge_value(e, c), edge_value(e, b) + slope_1 * (c - b), 1e-4);
            }
        }
    }
}

TEST(edges_in_order, refuses_what_is_no_wave) {
    const double up[] = {0, 1, 1, 2}, down[] = {0, 2, 1, 3}, odd[] = {0, nan_value, 1, 2};
    EXPECT_TRUE(edges_in_order(point_edges(4, up, up)));
    EXPECT_FALSE(edges_in_order(point_edges(4, down, up)));
    EXPECT_FALSE(edges_in_order(point_edges(4, odd, up)));
    EXPECT_FALSE(edges_in_order(point_edges(0, up, up)));
    edge_list e = point_edges(4, up, up);
    e.per = 1.9;
    EXPECT_FALSE(edges_in_order(e));
}

TEST(edge_eps, is_a_hundredth_of_the_shortest_line) {
    const double t[] = {0, 1, 1, 1.25, 2};
    EXPECT_EQ(edge_eps(point_edges(5, t, t)), 0.0025);
    const double y[] = {0, 1, 3, 3, 3};
    EXPECT_EQ(edge_eps(point_edges(5, t, y)), 0) << "jumps";
    EXPECT_EQ(edge_eps(point_edges(1, t, t)), 0);
}

TEST(edge_next, of_a_wave_that_jumps_is_the_jump_however_near_it_is) {
    edge_store s;
    const edge_list e = pulse_edges(s, 0, 1, 0, 0, 0, 0.5e-3, 1e-3);
    EXPECT_EQ(edge_next(e, 0.497e-3, edge_eps(e)), 0.5e-3);
    EXPECT_NEAR(edge_next(e, 1.999e-3, edge_eps(e)), 2e-3, 1e-18);
    EXPECT_NEAR(edge_next(e, 2e-3, edge_eps(e)), 2.5e-3, 1e-18);
}

TEST(edge_jumps, looks_at_no_value_behind_the_last_corner) {
    // The rounding of 1 ns is nothing beside a period of 40 ns, so that its end is no different from the last corner.
    edge_store s;
    edge_list e = pulse_edges(s, 0, 5, 1e-9, 1e-9, 1e-9, 8e-9, 40e-9);
    ASSERT_LT(e.n, 8);
    s.y[e.n] = 7;
    for (const int period : {0, 1, 2, 50}) EXPECT_FALSE(edge_jumps(e, 1e-9 + period * 40e-9)) << period;
    e = pulse_edges(s, 0, 5, 1e-9, 0, 1e-9, 8e-9, 40e-9);
    for (const double behind : {0.0, 5.0}) {
        s.y[e.n] = behind;
        EXPECT_TRUE(edge_jumps(e, 1e-9)) << "rises within no time, with " << behind << " behind";
    }
}

TEST(edge_slope, is_that_of_the_line_at_or_behind_a_time_in_every_period) {
    const double t[] = {0, 1, 1, 3, 4}, y[] = {0, 2, 5, 5, 0};
    edge_list e = point_edges(5, t, y);
    e.t0 = 0.5;
    for (const double per : {0.0, 4.0}) {
        e.per = per;
        for (const double period : per > 0 ? std::vector<double>{-8, 0, 400} : std::vector<double>{0}) {
            EXPECT_EQ(edge_slope(e, period + 0.5), 2);
            EXPECT_EQ(edge_slope(e, period + 1.4), 2);
            EXPECT_EQ(edge_slope(e, period + 1.5), 0);
            EXPECT_EQ(edge_slope(e, period + 3.5), -5);
            EXPECT_EQ(edge_slope(e, period + 4.4), -5);
        }
    }
    e.per = 0;
    EXPECT_EQ(edge_slope(e, 0.4), 0);
    EXPECT_EQ(edge_slope(e, 4.5), 0);
}

TEST(edge_break, of_several_waves_is_the_first_corner_of_all) {
    const double t[] = {0, 1}, late[] = {0.25, 3};
    const edge_list waves[] = {point_edges(2, late, t), point_edges(2, t, t)};
    double next = 77;
    for (const auto& [time, corner] :
         std::vector<std::pair<double, double>>{{-1, 0}, {0, 0.25}, {0.25, 1}, {1, 3}, {3, 77}}) {
        next = 77;
        edge_break(2, waves, 0, time, next);
        EXPECT_EQ(next, corner) << time;
    }
}

TEST(edge_break, leaves_the_answer_alone_when_no_corner_is_left) {
    const double t[] = {0, 1};
    flags_class flags;
    flags.time_nextbreak = 77;
    flags.time_given = 0.5;
    edge_break(point_edges(2, t, t), 0, &flags);
    EXPECT_EQ(flags.time_nextbreak, 1);
    flags.time_nextbreak = 77;
    flags.time_given = 1;
    edge_break(point_edges(2, t, t), 0, &flags);
    EXPECT_EQ(flags.time_nextbreak, 77);
}

}  // namespace
