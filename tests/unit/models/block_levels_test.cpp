// General comparators, and samplers with a control input.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "block_unit.h"
#include "halt_throws.h"

namespace {

block_unit begun(const std::string& name) {
    block_unit u(name);
    u.prepare();
    u.guess();
    return u;
}

void accept(block_unit& u, double time, int step) {
    u.flags.iter_trns_1 = step;
    u.accept(time);
}

// Output number k of a block in an analysis; f is output - g.
double output_in(block_unit& u, int flags_class::*analysis, int k = 0) {
    const auto row = static_cast<std::size_t>(k);
    const std::size_t out = u.x.vr.size() - u.x.f.size() + row;  // both have a spare place
    u.x.vr[out] = 0;
    u.call(analysis, &flags_class::function);
    return -u.x.f[row];
}
double output_at(block_unit& u, double time, int k = 0) {
    u.flags.time_given = time;
    return output_in(u, &flags_class::trns, k);
}

// ---- comparators of two variables ----

TEST(general_cmprtr_1, compares_two_variables_in_all_analyses) {
    for (const char* name : {"cmprtr_1", "cmprtr_1a", "cmprtr_1b"}) {
        block_unit u = begun(name);
        u.r("x_low") = -1;
        u.r("x_high") = 4;
        for (const auto& [x1, x2] : std::vector<std::pair<double, double>>{{1, 2}, {2, 2}, {2, 1}, {-3, -4}})
            for (const auto analysis : {&flags_class::dc, &flags_class::trns, &flags_class::startup}) {
                u.vr("x1") = x1;
                u.vr("x2") = x2;
                EXPECT_EQ(output_in(u, analysis), x1 > x2 ? 4 : -1) << name << x1;
            }
    }
}

TEST(general_cmprtr_1b, has_the_reverse_at_its_second_output) {
    block_unit u = begun("cmprtr_1b");
    u.r("x_low") = -1;
    for (const double x1 : {1.0, 2.0, 3.0}) {
        u.vr("x1") = x1;
        u.vr("x2") = 2;
        EXPECT_EQ(output_at(u, 0, 0), x1 > 2 ? 1 : -1);
        EXPECT_EQ(output_at(u, 0, 1), x1 > 2 ? -1 : 1);
    }
}

TEST(general_cmprtr_1c, changes_along_a_tangent_hyperbolic) {
    block_unit u = begun("cmprtr_1c");
    u.r("x_low") = -2;
    u.r("x_high") = 6;
    u.r("k") = 3;
    u.prepare();
    u.vr("x2") = 1;
    for (const double d : {-5.0, -0.7, -0.1, 0.0, 0.2, 0.9, 5.0}) {
        u.vr("x1") = 1 + d;
        u.vr("y") = 0.5;
        u.trns();
        const double share = 1 / (1 + std::exp(-6 * d));  // (1 + tanh z)/2 is a logistic function of 2 z
        EXPECT_NEAR(0.5 - u.x.f[0], -2 + 8 * share, 1e-9) << d;
        EXPECT_NEAR(u.jac.dfdvr[0][0], -8 * 6 * share * (1 - share), 1e-9) << d;
        EXPECT_EQ(u.jac.dfdvr[0][1], -u.jac.dfdvr[0][0]);
        EXPECT_EQ(u.jac.dfdvr[0][2], 1);
    }
}

// A straight line through the last two samples reaches the level at t = 4.
template <class Set>
void expect_foreseen(block_unit& u, double x_at_1, double x_at_2, Set set) {
    const double guard = u.r("dt_guard") = 1e-3, usual = u.r("dt_default") = 0.25;
    u.flags.iter_trns_1 = -1;
    EXPECT_EQ(u.next_break(0), usual) << "no sample";
    set(x_at_1);
    accept(u, 1, 0);
    EXPECT_EQ(u.next_break(1), 1 + usual) << "one sample";
    set(x_at_2);
    accept(u, 2, 1);
    EXPECT_EQ(u.next_break(2), 2 + usual) << "two samples, not before the next step";
    u.flags.iter_trns_1 = 2;
    EXPECT_NEAR(u.next_break(2), 4 - guard, 1e-12);
    EXPECT_NEAR(u.next_break(3.9995), 3.9995 + 2 * guard, 1e-12) << "never nearer than two guards";
    EXPECT_EQ(u.next_break(5), 5 + usual) << "a crossing of the past";
    set(x_at_1);
    accept(u, 3, 2);
    EXPECT_EQ(u.next_break(3), 3 + usual) << "it goes away from the level";
}

TEST(general_comparators, foresee_their_crossing_on_a_straight_line) {
    for (const char* name : {"cmprtr_1", "cmprtr_1a", "cmprtr_1b", "cmprtr_1c"}) {
        SCOPED_TRACE(name);
        block_unit c = begun(name);
        expect_foreseen(c, 9, 6, [&](double x) {
            c.vr("x1") = x + 100;
            c.vr("x2") = 100;
        });
    }
    block_unit h = begun("cmprtr_hyst_2");  // low: the upper threshold
    h.r("g_high") = 10;
    h.prepare();
    expect_foreseen(h, 1, 4, [&](double x) {
        h.vr("x1") = x - 7;
        h.vr("x2") = -7;
    });
    block_unit moving = begun("cmprtr_hyst_2b");  // x stands, the threshold comes down to it
    moving.vr("g_low") = -1;
    expect_foreseen(moving, 9, 6, [&](double x) { moving.vr("g_high") = x; });
    for (const char* name : {"sampler2", "sampler3"}) {
        SCOPED_TRACE(name);
        block_unit s = begun(name);
        s.r("x_low") = 6;
        s.r("x_high") = 8;
        s.prepare();
        expect_foreseen(s, 1, 3, [&](double x) { s.x.vr[1] = x; });
    }
}

TEST(general_comparators, tell_an_event_where_their_input_passes_the_level) {
    block_unit u = begun("cmprtr_1");
    u.vr("x1") = -3;
    accept(u, 1, 0);
    u.flags.forget_events();
    u.vr("x1") = -1;
    accept(u, 2, 1);
    EXPECT_EQ(u.flags.event, 0);
    u.vr("x1") = 3;
    accept(u, 3, 2);
    EXPECT_EQ(u.flags.event, 1);
    EXPECT_EQ(u.flags.event_acts, 1);
    EXPECT_EQ(u.flags.event_share, 0.25);  // from -1 to 3
}

TEST(general_comparators, trace_what_they_store_and_ask_for_where_the_debug_flag_is_on) {
    block_unit u = begun("cmprtr_1a");
    const auto heard = [&] {
        return run_and_listen([&] {
                   accept(u, 0.5, 3);
                   u.next_break(0.75);
               })
            .text;
    };
    EXPECT_EQ(heard(), "");
    u.flags.flag_debug_int = 1;
    EXPECT_EQ(heard(), "cmprtr_1a.xbe: save_history: t=0.5\ncmprtr_1a.xbe: nexttime: time_nextbreak_x=0.751\n");
    block_unit silent = begun("cmprtr_1");
    silent.flags.flag_debug_int = 1;
    EXPECT_EQ(run_and_listen([&] { accept(silent, 0.5, 3); }).text, "");
}

// ---- hysteresis ----

// Blocks with the band from -1 to 2; the quantity that they compare with it.
struct band_unit {
    block_unit u;
    explicit band_unit(const std::string& name) : u(name) {
        if (name == "cmprtr_hyst_2b") {
            u.vr("g_low") = -1;
            u.vr("g_high") = 2;
        } else {
            u.r("g_low") = -1;
            u.r("g_high") = 2;
            u.vr("x2") = 30;
        }
        u.prepare();
        u.guess();
    }
    void set(double x) {
        if (u.name == "cmprtr_hyst_2b")
            u.vr("x") = x;
        else
            u.vr("x1") = 30 + x;
    }
};

TEST(general_hysteresis, changes_at_accepted_points_only) {
    for (const char* name : {"cmprtr_hyst_2", "cmprtr_hyst_2b"}) {
        SCOPED_TRACE(name);
        band_unit b(name);
        struct point {
            double x;
            int before, after;
        };
        int step = 0;
        for (const auto& [x, before, after] : {point{0, 0, 0},
                                               {1.9, 0, 0},
                                               {2.1, 0, 1},
                                               {0, 1, 1},
                                               {-0.9, 1, 1},
                                               {-1.1, 1, 0},
                                               {5, 0, 1},
                                               {-5, 1, 0},
                                               {1.9, 0, 0}}) {
            b.set(x);
            for (int trial = 0; trial < 3; ++trial)
                EXPECT_EQ(output_at(b.u, step), before) << x << ", a step that is tried does not change it";
            accept(b.u, step, step);
            EXPECT_EQ(output_at(b.u, step), after) << x;
            EXPECT_EQ(b.u.r("on_o"), after);
            ++step;
        }
    }
}

TEST(general_hysteresis, follows_its_input_at_once_in_dc_and_start_up_without_keeping_it) {
    for (const char* name : {"cmprtr_hyst_2", "cmprtr_hyst_2b"}) {
        band_unit b(name);
        for (const auto analysis : {&flags_class::dc, &flags_class::startup})
            for (const double x : {0.0, 2.5, 0.1}) {
                b.set(x);
                EXPECT_EQ(output_in(b.u, analysis), x > 2) << name;
            }
        b.set(2.5);
        EXPECT_EQ(output_at(b.u, 0), 0) << name;
    }
}

// A point that a break asked for lies dt_guard short of the crossing.
TEST(general_hysteresis, has_met_a_threshold_a_millionth_of_its_band_before_it) {
    for (const char* name : {"cmprtr_hyst_2", "cmprtr_hyst_2b"}) {
        band_unit b(name);
        int step = 0;
        const auto after = [&](double x) {
            b.set(x);
            accept(b.u, step, step);
            return output_at(b.u, step++);
        };
        EXPECT_EQ(after(2 - 3.3e-6), 0) << name;
        EXPECT_EQ(after(2 - 2.7e-6), 1) << name;
        EXPECT_EQ(after(-1 + 3.3e-6), 1) << name;
        EXPECT_EQ(after(-1 + 2.7e-6), 0) << name;
    }
}

TEST(general_hysteresis, tells_where_it_met_its_threshold) {
    for (const char* name : {"cmprtr_hyst_2", "cmprtr_hyst_2b"}) {
        band_unit b(name);
        b.set(1);
        accept(b.u, 0, 0);
        b.set(6);
        accept(b.u, 1, 1);
        EXPECT_EQ(b.u.flags.event, 1) << name;
        EXPECT_EQ(b.u.flags.event_acts, 0) << name;
        EXPECT_NEAR(b.u.flags.event_share, 0.2, 1e-6) << name;  // 2 on the way from 1 to 6
        b.u.flags.forget_events();
        b.set(-5);
        accept(b.u, 2, 2);
        EXPECT_NEAR(b.u.flags.event_share, 7.0 / 11, 1e-6) << name;
    }
}

TEST(general_cmprtr_hyst_2b, follows_thresholds_that_move) {
    block_unit u = begun("cmprtr_hyst_2b");
    const auto at = [&](double x, double g_low, double g_high, int step) {
        u.vr("x") = x;
        u.vr("g_low") = g_low;
        u.vr("g_high") = g_high;
        accept(u, step, step);
        return output_at(u, step);
    };
    EXPECT_EQ(at(0, -1, 1, 0), 0);
    EXPECT_EQ(at(0, -2, -0.5, 1), 1);
    EXPECT_EQ(at(0, -0.2, 1, 2), 1);
    EXPECT_EQ(at(0, 0.2, 1, 3), 0);
    EXPECT_EQ(at(0, 0.2, -0.2, 4), 1) << "thresholds that have crossed";
    EXPECT_EQ(at(-0.3, 0.2, -0.2, 5), 0);
}

TEST(general_levels, refuse_thresholds_and_levels_in_the_wrong_order) {
    block_unit h("cmprtr_hyst_2"), c("cmprtr_1c");
    h.r("g_low") = 0.5;
    EXPECT_HALT(h.prepare(), "cmprtr_hyst_2.gbe: g_low <= g_high?\n");
    c.r("k") = 0;
    EXPECT_HALT(c.prepare(), "cmprtr_1c.gbe: check k. Halting...\n");
    for (const std::string name : {"sampler2", "sampler3"}) {
        block_unit u(name);
        u.r("x_low") = 1;
        EXPECT_HALT(u.prepare(), name + ".gbe: check x_low, x_high. Halting...\n");
    }
}

// ---- samplers with a control input ----

TEST(general_sampler2, follows_while_its_hold_input_is_low_and_holds_the_last_accepted_value) {
    block_unit u = begun("sampler2");
    struct point {
        double x, h, y;
    };
    int step = 0;
    for (const auto& [x, h, y] :
         {point{3, 1, 0}, {4, 0, 4}, {5, 0, 5}, {6, 0.51, 5}, {7, 1, 5}, {8, 0.5, 8}, {9, 0.6, 8}}) {
        u.vr("x") = x;
        u.vr("h") = h;
        EXPECT_EQ(output_at(u, step), y) << x;
        u.trns();
        EXPECT_EQ(u.jac.dfdvr[0][0], h > 0.5 ? 0 : -1);
        EXPECT_EQ(u.jac.dfdvr[0][1], 0);
        accept(u, step, step);
        ++step;
    }
    u.vr("x") = 100;  // a step that is tried and given up
    u.vr("h") = 0;
    EXPECT_EQ(output_at(u, step), 100);
    u.vr("h") = 1;
    EXPECT_EQ(output_at(u, step), 8);
}

TEST(general_sampler3, takes_a_sample_where_its_clock_rises_and_nowhere_else) {
    block_unit u = begun("sampler3");
    struct point {
        double x, g, y;
    };
    int step = 0;
    for (const auto& [x, g, y] :
         {point{2, 1, 2}, {3, 1, 2}, {4, 0, 2}, {5, 0.4, 2}, {6, 0.6, 6}, {7, 0.9, 6}, {8, 0, 6}}) {
        u.vr("x") = x;
        u.vr("g") = g;
        EXPECT_EQ(output_at(u, step), y) << x;
        EXPECT_EQ(output_at(u, step), y) << x << ", again";
        accept(u, step, step);
        ++step;
    }
    u.vr("x") = 100;  // a step that is tried and given up
    u.vr("g") = 1;
    EXPECT_EQ(output_at(u, step), 100);
    u.trns();
    EXPECT_EQ(u.jac.dfdvr[0][0], -1);
    u.vr("g") = 0;
    EXPECT_EQ(output_at(u, step), 6);
    u.guess();
    EXPECT_EQ(output_at(u, step), 0);
}

TEST(general_sampler3, tells_an_event_where_its_value_jumps) {
    block_unit u = begun("sampler3");
    u.vr("x") = 7;
    accept(u, 0, 0);
    u.vr("g") = 2;
    accept(u, 1, 1);
    EXPECT_EQ(u.flags.event, 1);
    EXPECT_EQ(u.flags.event_acts, 1);
    EXPECT_EQ(u.flags.event_share, 0.25);  // the level 0.5 on the way from 0 to 2
    u.flags.forget_events();
    accept(u, 2, 2);
    EXPECT_EQ(u.flags.event, 0);
}

}  // namespace
