// Blocks that remember accepted points: comparators, samplers, means; and the search for a crossing.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "block_unit.h"
#include "halt_throws.h"

namespace {

// ---- crossings ----

double t_next(double t1, double t0, double y1, double y0, double now, double guard = 0.01, double look_ahead = 5) {
    double t;
    get_t_next(t1, t0, y1, y0, now, guard, look_ahead, t);
    return t;
}

TEST(get_t_next, stops_a_guard_before_the_zero_of_the_straight_line) {
    EXPECT_DOUBLE_EQ(t_next(1, 0, 2, 3, 1), 3 - 0.01);      // falls by 1 a second
    EXPECT_DOUBLE_EQ(t_next(1, 0, -2, -3, 1), 3 - 0.01);    // rises
    EXPECT_DOUBLE_EQ(t_next(1, 0.5, 2, 3, 1.5), 2 - 0.01);  // seen from later
}

TEST(get_t_next, is_two_guards_ahead_of_the_time_when_the_zero_is_that_near) {
    EXPECT_EQ(t_next(1, 0, 0.375, 1.375, 1, 0.25), 1.5);  // zero at 1.375
    EXPECT_EQ(t_next(1, 0, 0.5, 1.5, 1, 0.25), 1.5);      // at 1.5: just as near
    EXPECT_EQ(t_next(1, 0, 0.75, 1.75, 1, 0.25), 1.5);    // at 1.75: a guard before it
    EXPECT_EQ(t_next(1, 0, 1.0, 2.0, 1, 0.25), 1.75);
}

TEST(get_t_next, looks_ahead_by_default_when_no_zero_is_in_view) {
    EXPECT_EQ(t_next(1, 0, -1, 1, 1), 6);  // on opposite sides
    EXPECT_EQ(t_next(1, 0, 0, 1, 1), 6);   // on zero
    EXPECT_EQ(t_next(1, 0, 1, 0, 1), 6);
    EXPECT_EQ(t_next(1, 0, 3, 2, 1), 6);             // going away: the zero is in the past
    EXPECT_EQ(t_next(1, 0, 2, 2 + 0.99e-10, 1), 6);  // flat
    EXPECT_EQ(t_next(1, 0, 2, 3, 4), 9);             // the zero has passed
}

TEST(sample_pair, keeps_the_two_newest_times_in_order_whatever_comes) {
    double s[4] = {};
    const sample_pair p{s};
    p.take(10, 1);
    p.take(20, 2);
    EXPECT_EQ(s[0], 20);
    EXPECT_EQ(s[1], 2);
    EXPECT_EQ(s[2], 10);
    EXPECT_EQ(s[3], 1);
    p.take(15, 1.5);  // the step to 2 was rejected
    EXPECT_EQ(s[0], 15);
    EXPECT_EQ(s[1], 1.5);
    EXPECT_EQ(s[3], 1);
    p.take(5, 0.5);  // a run that begins anew
    EXPECT_EQ(s[1], 0.5);
    EXPECT_LE(s[3], 0.5);
}

// ---- comparators ----

TEST(cmprtr_2, compares_with_its_threshold_and_inverts) {
    block_unit u("cmprtr_2");
    u.r("x_low") = -1;
    u.r("x_high") = 4;
    u.r("x_th") = 2;
    u.prepare();
    u.vr("x") = 2.5;
    EXPECT_EQ(u.output(0), 4);
    u.vr("x") = 2;
    EXPECT_EQ(u.output(0), -1);
    u.i("invert") = 1;
    EXPECT_EQ(u.output(0), 4);
}

TEST(cmprtr_2, looks_ahead_by_default_until_it_has_two_samples_and_then_foresees_the_crossing) {
    block_unit u("cmprtr_2");
    u.r("x_th") = 2;
    u.r("dt_guard") = 1e-3;
    u.r("dt_default") = 0.25;
    u.prepare();
    u.guess();
    u.flags.iter_trns_1 = -1;
    u.vr("x") = 99;
    u.accept(-1);  // not in a transient: no sample
    EXPECT_EQ(u.r("ts1"), 0);
    const double x[] = {0.5, 1.0};
    for (int i = 0; i < 2; ++i) {
        u.flags.iter_trns_1 = i;
        u.vr("x") = x[i];
        u.accept(1.0 + i);
        EXPECT_EQ(u.next_break(1.0 + i), 1.25 + i);
    }
    u.flags.iter_trns_1 = 2;
    EXPECT_EQ(u.r("s1"), 1.0);
    EXPECT_EQ(u.r("ts1"), 2.0);
    EXPECT_EQ(u.r("s0"), 0.5);
    EXPECT_EQ(u.r("ts0"), 1.0);
    EXPECT_DOUBLE_EQ(u.next_break(2.0), 4.0 - 1e-3);
    u.guess();
    EXPECT_EQ(u.r("s1"), 0);
    EXPECT_EQ(u.r("ts1"), 0);
}

TEST(cmprtr_hyst_1, changes_its_state_at_accepted_points_only) {
    block_unit u("cmprtr_hyst_1");
    u.r("g_low") = -1;
    u.r("g_high") = 1;
    u.r("x_low") = 10;
    u.r("x_high") = 20;
    u.prepare();
    u.guess();
    const struct {
        double x, before, after;  // output before and after the point with x is accepted
    } path[] = {{0, 10, 10}, {0.99, 10, 10}, {1.5, 10, 20}, {-0.99, 20, 20}, {-1.5, 20, 10}, {0.5, 10, 10}};
    double t = 0;
    for (const auto& p : path) {
        u.vr("x") = p.x;
        EXPECT_EQ(u.output(t), p.before) << p.x;
        u.accept(t += 0.1);
        EXPECT_EQ(u.output(t), p.after) << p.x;
    }
}

TEST(cmprtr_hyst_1, follows_its_input_at_once_in_dc_and_start_up_without_keeping_it) {
    block_unit u("cmprtr_hyst_1");
    u.prepare();
    u.vr("x") = 3;
    u.vr("y") = 0;
    u.dc();
    EXPECT_EQ(u.x.f[0], -1);
    u.startup();
    EXPECT_EQ(u.x.f[0], -1);
    u.trns();
    EXPECT_EQ(u.x.f[0], 0);
    EXPECT_EQ(u.r("on_o"), 0);
}

TEST(cmprtr_hyst_1, waits_for_the_threshold_that_it_has_not_crossed) {
    block_unit u("cmprtr_hyst_1");
    u.r("g_low") = -1;
    u.r("g_high") = 1;
    u.r("dt_guard") = 1e-3;
    u.r("dt_default") = 0.25;
    u.prepare();
    u.guess();
    const auto pass = [&](double x, double t) {
        u.vr("x") = x;
        u.accept(t);
    };
    u.flags.iter_trns_1 = 5;
    pass(-3, 1);
    pass(-2, 2);
    EXPECT_DOUBLE_EQ(u.next_break(2), 5 - 1e-3);  // off, rising: reaches 1 at 5
    pass(2, 3);                                   // on
    pass(1, 4);
    EXPECT_DOUBLE_EQ(u.next_break(4), 6 - 1e-3);  // falling: reaches -1 at 6
}

TEST(cmprtr_hyst_1, refuses_thresholds_in_the_wrong_order) {
    block_unit u("cmprtr_hyst_1");
    u.r("g_low") = 0.5;
    EXPECT_HALT(u.prepare(), "cmprtr_hyst_1.gbe: g_low <= g_high?\n");
}

// ---- sampler ----

TEST(sampler1, takes_its_input_at_samples_and_holds_it_in_between) {
    block_unit u("sampler1");
    u.r("t_smp") = 0.5;
    u.r("t0") = 0.25;
    u.prepare();
    u.guess();
    u.vr("x") = 7;
    EXPECT_EQ(u.output(0.1), 0);
    u.accept(0.1);  // no sample
    EXPECT_EQ(u.output(0.1), 0);
    EXPECT_EQ(u.output(0.25), 7);
    EXPECT_EQ(u.output(0.3), 0);  // not yet accepted
    u.accept(0.2504);             // within a thousandth of the period
    u.vr("x") = 8;
    EXPECT_EQ(u.output(0.3), 7);
    EXPECT_EQ(u.output(0.2506), 7);
    EXPECT_EQ(u.output(0.7495), 8);
    EXPECT_EQ(u.output(-0.25), 8);
}

TEST(sampler1, names_the_next_sample_and_a_whole_period_when_it_stands_on_one) {
    block_unit u("sampler1");
    u.r("t_smp") = 0.5;
    u.r("t0") = 0.25;
    u.prepare();
    EXPECT_DOUBLE_EQ(u.next_break(0.3), 0.75);
    EXPECT_DOUBLE_EQ(u.next_break(0.75), 1.25);
    EXPECT_DOUBLE_EQ(u.next_break(0.7497), 1.25);
    EXPECT_DOUBLE_EQ(u.next_break(0.0), 0.25);
    EXPECT_DOUBLE_EQ(u.next_break(-0.4), -0.25);
    EXPECT_DOUBLE_EQ(u.next_break(1e9 + 0.1), 1e9 + 0.25);
}

TEST(sampler1, names_every_sample_ahead_where_events_are_heeded) {
    block_unit u("sampler1");
    u.r("t_smp") = 1e-3;
    u.prepare();
    u.flags.event_restart = 1;
    EXPECT_DOUBLE_EQ(u.next_break(0.9995e-3), 1e-3) << "a point this near is no sample there";
    EXPECT_DOUBLE_EQ(u.next_break(1e-3), 2e-3);
    EXPECT_DOUBLE_EQ(u.next_break(1e-3 - 1e-13), 2e-3) << "the same but for rounding";
}

TEST(sampler1, does_not_drift_over_many_samples) {
    block_unit u("sampler1");
    u.r("t_smp") = 0.1;
    u.prepare();
    double t = 0;
    for (int i = 0; i < 100000; ++i) t = u.next_break(t);
    EXPECT_NEAR(t, 10000, 1e-9);
}

TEST(sampler1, refuses_dc_and_a_period_without_length) {
    block_unit u("sampler1");
    u.prepare();
    EXPECT_HALT(u.dc(), "sampler1: DC not allowed\n");
    u.r("t_smp") = 0;
    EXPECT_HALT(u.prepare(), "sampler1.gbe: check t_smp. Halting...\n");
}

// ---- means ----

// Runs a signal through the block with accepted points every h.
template <class F>
double mean_at(block_unit& u, F signal, double t_end, double h) {
    u.prepare();
    u.flags.time_given = 0;
    u.guess();
    const int n = static_cast<int>(std::lround(t_end / h));
    for (int i = 1; i < n; ++i) {
        u.vr("x") = signal(h * i);
        u.accept(h * i);
    }
    u.vr("x") = signal(t_end);
    return u.output(t_end);
}

TEST(means, of_a_sine_over_whole_periods_are_its_offset_and_its_root_mean_square) {
    const auto wave = [](double t) { return 0.5 + 3 * std::sin(2 * std::numbers::pi * 50 * t); };
    block_unit average("average"), rms("rms");
    EXPECT_NEAR(mean_at(average, wave, 0.1, 1e-5), 0.5, 1e-9);
    EXPECT_NEAR(mean_at(rms, wave, 0.1, 1e-5), std::sqrt(0.25 + 4.5), 1e-9);
}

TEST(means, begin_anew_with_every_period) {
    block_unit u("average");
    u.r("per") = 0.02;
    const auto ramp = [](double t) { return t; };
    // from 0.08 on, rectangles that end at each point
    EXPECT_NEAR(mean_at(u, ramp, 0.095, 1e-3), 0.5 * (0.081 + 0.095), 1e-12);
}

TEST(means, divide_by_the_lower_bound_of_the_time_at_first) {
    block_unit average("average"), rms("rms");
    for (block_unit* u : {&average, &rms}) {
        u->prepare();
        u->guess();
        u->vr("x") = 4;
    }
    EXPECT_NEAR(average.output(0.25e-3), 4 * 0.25, 1e-12);
    EXPECT_NEAR(rms.output(0.25e-3), 4 * 0.5, 1e-12);
    EXPECT_NEAR(average.output(2e-3), 4, 1e-12);
    EXPECT_NEAR(rms.output(2e-3), 4, 1e-12);
}

TEST(means, are_those_of_a_constant_in_dc_and_start_up) {
    block_unit average("average"), rms("rms");
    average.vr("x") = rms.vr("x") = -4;
    for (const auto mode : {&flags_class::dc, &flags_class::startup}) {
        average.call(mode, &flags_class::function);
        rms.call(mode, &flags_class::function);
        EXPECT_EQ(average.x.f[0], 4);
        EXPECT_EQ(rms.x.f[0], -4);
    }
}

}  // namespace
