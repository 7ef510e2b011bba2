// Explicit comparators and samplers.
#include <gtest/gtest.h>

#include <vector>

#include "explicit_unit.h"
#include "halt_throws.h"

namespace {

void algebra_at(explicit_unit& u, double time) {
    u.flags.time_given_x = time;
    u.algebra();
}

explicit_unit begun(const char* name) {
    explicit_unit u(name);
    u.prepare();
    u.guess();
    return u;
}

TEST(explicit_cmprtr_2, compares_with_its_threshold_in_either_sense) {
    explicit_unit u = begun("cmprtr_2");
    u.r("x_low") = -3;
    u.r("x_high") = 5;
    u.r("x_th") = 2;
    for (const int invert : {0, 1}) {
        u.i("invert") = invert;
        for (const double x : {-1e9, 1.999, 2.0, 2.001, 1e9}) {
            u.vr("x") = x;
            EXPECT_EQ(u.output_at(0), (x > 2) != (invert == 1) ? 5 : -3) << x;
            u.vr("y") = 1.5;
            algebra_at(u, 0);
            EXPECT_EQ(u.x.fh[0], 1.5 - ((x > 2) != (invert == 1) ? 5 : -3));
            EXPECT_EQ(u.jac.dhdvr[0][1], 1);
        }
    }
}

// A straight line through the last two samples reaches the level at t = 4.
template <class Set>
void expect_foreseen(explicit_unit& u, double x_at_1, double x_at_2, Set set) {
    const double guard = u.r("dt_guard") = 1e-3, dflt = u.r("dt_default") = 0.25;
    u.flags.iter_trns_x = -1;
    EXPECT_EQ(u.next_break(0), dflt) << "no sample";
    set(x_at_1);
    u.accept(1, 0);
    EXPECT_EQ(u.next_break(1), 1 + dflt) << "one sample";
    set(x_at_2);
    u.accept(2, 1);
    EXPECT_EQ(u.next_break(2), 2 + dflt) << "two samples, not before the next step";
    u.flags.iter_trns_x = 2;
    EXPECT_NEAR(u.next_break(2), 4 - guard, 1e-12);
    EXPECT_NEAR(u.next_break(3.9995), 3.9995 + 2 * guard, 1e-12) << "never nearer than two guards";
    EXPECT_EQ(u.next_break(5), 5 + dflt) << "a crossing of the past";
    set(x_at_1);
    u.accept(3, 2);
    EXPECT_EQ(u.next_break(3), 3 + dflt) << "it goes away from the level";
}

TEST(explicit_comparators, foresee_their_crossing_on_a_straight_line) {
    explicit_unit u = begun("cmprtr_2");
    u.r("x_th") = 7;
    expect_foreseen(u, 1, 3, [&](double x) { u.vr("x") = x; });
    for (const char* name : {"cmprtr_1", "cmprtr_1a", "cmprtr_1b"}) {
        explicit_unit c = begun(name);
        expect_foreseen(c, 9, 6, [&](double x) {
            c.vr("x1") = x + 100;
            c.vr("x2") = 100;
        });
    }
    for (const char* name : {"cmprtr_hyst_1", "cmprtr_hyst_1a"}) {  // low: the upper threshold
        explicit_unit h = begun(name);
        h.r("g_high") = 10;
        h.prepare();
        expect_foreseen(h, 1, 4, [&](double x) { h.vr("x") = x; });
    }
    explicit_unit moving = begun("cmprtr_hyst_2b");  // x stands, the threshold comes down to it
    moving.vr("g_low") = -1;
    expect_foreseen(moving, 9, 6, [&](double x) { moving.vr("g_high") = x; });
    for (const char* name : {"sampler2", "sampler3"}) {
        explicit_unit s = begun(name);
        s.r("x_low") = 6;
        s.r("x_high") = 8;
        s.prepare();
        expect_foreseen(s, 1, 3, [&](double x) { s.x.vr[1] = x; });
    }
}

TEST(explicit_comparators, take_no_sample_before_the_first_step) {
    explicit_unit u = begun("cmprtr_2");
    u.vr("x") = 5;
    u.accept(1, -1);
    EXPECT_EQ(u.r("s1"), 0);
    EXPECT_EQ(u.r("ts1"), 0);
    u.accept(2, 0);
    EXPECT_EQ(u.r("s1"), 5);
    EXPECT_EQ(u.r("ts1"), 2);
    u.guess();
    EXPECT_EQ(u.r("s1"), 0);
    EXPECT_EQ(u.r("ts1"), 0);
}

TEST(explicit_cmprtr_1, compares_two_variables) {
    for (const char* name : {"cmprtr_1", "cmprtr_1a"}) {
        explicit_unit u = begun(name);
        u.r("x_low") = -1;
        for (const auto& [x1, x2] : std::vector<std::pair<double, double>>{{1, 2}, {2, 2}, {2, 1}, {-3, -4}}) {
            u.vr("x1") = x1;
            u.vr("x2") = x2;
            EXPECT_EQ(u.output_at(0), x1 > x2 ? 1 : -1) << name;
        }
    }
}

TEST(explicit_cmprtr_1b, has_the_reverse_at_its_second_output) {
    explicit_unit u = begun("cmprtr_1b");
    u.r("x_low") = -1;
    for (const double x1 : {1.0, 2.0, 3.0}) {
        u.vr("x1") = x1;
        u.vr("x2") = 2;
        EXPECT_EQ(u.output_at(0, 0), x1 > 2 ? 1 : -1);
        EXPECT_EQ(u.output_at(0, 1), x1 > 2 ? -1 : 1);
    }
}

TEST(explicit_comparators, trace_what_they_store_and_ask_for_where_the_debug_flag_is_on) {
    for (const std::string name : {"cmprtr_1a", "cmprtr_hyst_1a"}) {
        explicit_unit u = begun(name.c_str());
        const auto heard = [&] {
            return run_and_listen([&] {
                       u.accept(0.5, 3);
                       u.next_break(0.75);
                   })
                .text;
        };
        EXPECT_EQ(heard(), "");
        u.flags.flag_debug_int = 1;
        EXPECT_EQ(heard(), name + ".xbe: save_history: t=0.5\n" + name + ".xbe: nexttime: time_nextbreak_x=0.751\n");
    }
    explicit_unit silent = begun("cmprtr_1");
    silent.flags.flag_debug_int = 1;
    EXPECT_EQ(run_and_listen([&] { silent.accept(0.5, 3); }).text, "");
}

// The band from -1 to 2, whatever the block: its output after each accepted point, and within the step before it.
void expect_hysteresis(explicit_unit& u) {
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
        u.vr("x") = x;
        for (int trial = 0; trial < 3; ++trial)
            EXPECT_EQ(u.output_at(step), before) << x << ", a step does not change it";
        u.accept(step, step);
        EXPECT_EQ(u.output_at(step), after) << x;
        ++step;
    }
}

TEST(explicit_hysteresis, changes_at_accepted_points_only) {
    for (const char* name : {"cmprtr_hyst_1", "cmprtr_hyst_1a", "cmprtr_hyst_2b"}) {
        SCOPED_TRACE(name);
        explicit_unit u(name);
        if (std::string(name) == "cmprtr_hyst_2b") {
            u.vr("g_low") = -1;
            u.vr("g_high") = 2;
        } else {
            u.r("g_low") = -1;
            u.r("g_high") = 2;
        }
        u.prepare();
        u.guess();
        expect_hysteresis(u);
    }
}

TEST(explicit_hysteresis, follows_its_input_at_once_until_the_first_accepted_point) {
    for (const char* name : {"cmprtr_hyst_1", "cmprtr_hyst_1a", "cmprtr_hyst_2b"}) {
        explicit_unit u(name);
        if (std::string(name) == "cmprtr_hyst_2b") {
            u.vr("g_low") = -0.5;
            u.vr("g_high") = 0.5;
        }
        u.prepare();
        u.guess();
        for (const double x : {0.0, 0.7, 0.1}) {
            u.vr("x") = x;
            EXPECT_EQ(u.output_at(0), x > 0.5) << name;
        }
        u.vr("x") = 0.7;
        u.accept(0.1, 0);
        u.vr("x") = 0;
        EXPECT_EQ(u.output_at(0.2), 1) << name;
        u.guess();
        EXPECT_EQ(u.output_at(0.2), 0) << name;
    }
}

// A point that a break asked for lies dt_guard short of the crossing.
TEST(explicit_hysteresis, has_met_a_threshold_a_millionth_of_its_band_before_it) {
    explicit_unit u = begun("cmprtr_hyst_1");
    u.vr("x") = 0.5 - 0.9e-6;
    u.accept(1, 1);
    EXPECT_EQ(u.output_at(1), 1);
    u.vr("x") = -0.5 + 1.1e-6;
    u.accept(2, 2);
    EXPECT_EQ(u.output_at(2), 1);
    u.vr("x") = -0.5 + 0.9e-6;
    u.accept(3, 3);
    EXPECT_EQ(u.output_at(3), 0);
    u.vr("x") = 0.5 - 1.1e-6;
    u.accept(4, 4);
    EXPECT_EQ(u.output_at(4), 0);
}

TEST(explicit_hysteresis, waits_for_the_lower_threshold_while_it_is_high) {
    explicit_unit u = begun("cmprtr_hyst_1");
    for (int step = 0; step < 2; ++step) {
        u.vr("x") = 3.5 - step;
        u.accept(step, step);
    }
    u.flags.iter_trns_x = 2;
    u.r("dt_default") = 10;
    EXPECT_NEAR(u.next_break(1), 4 - 1e-9, 1e-12);
}

TEST(explicit_cmprtr_hyst_2b, follows_thresholds_that_move) {
    explicit_unit u = begun("cmprtr_hyst_2b");
    const auto at = [&](double x, double g_low, double g_high, int step) {
        u.vr("x") = x;
        u.vr("g_low") = g_low;
        u.vr("g_high") = g_high;
        u.accept(step, step);
        return u.output_at(step);
    };
    EXPECT_EQ(at(0, -1, 1, 0), 0);
    EXPECT_EQ(at(0, -2, -0.5, 1), 1);
    EXPECT_EQ(at(0, -0.2, 1, 2), 1);
    EXPECT_EQ(at(0, 0.2, 1, 3), 0);
    EXPECT_EQ(at(0, 0.2, -0.2, 4), 1) << "thresholds that have crossed";
    EXPECT_EQ(at(-0.3, 0.2, -0.2, 5), 0);
}

TEST(explicit_sampler2, follows_while_its_hold_input_is_low_and_holds_the_last_accepted_value) {
    explicit_unit u = begun("sampler2");
    struct point {
        double x, h, y;
    };
    int step = 0;
    for (const auto& [x, h, y] :
         {point{3, 1, 0}, {4, 0, 4}, {5, 0, 5}, {6, 0.51, 5}, {7, 1, 5}, {8, 0.5, 8}, {9, 0.6, 8}}) {
        u.vr("x") = x;
        u.vr("h") = h;
        EXPECT_EQ(u.output_at(step), y) << x;
        algebra_at(u, step);
        EXPECT_EQ(u.x.fh[0], 0);
        EXPECT_EQ(u.jac.dhdvr[0][0], h > 0.5 ? 0 : -1);
        EXPECT_EQ(u.jac.dhdvr[0][1], 0);
        u.accept(step, step);
        ++step;
    }
    u.vr("x") = 100;  // a step that is tried and given up
    u.vr("h") = 0;
    EXPECT_EQ(u.output_at(step), 100);
    u.vr("h") = 1;
    EXPECT_EQ(u.output_at(step), 8);
}

TEST(explicit_sampler3, takes_a_sample_where_its_clock_rises) {
    explicit_unit u = begun("sampler3");
    struct point {
        double x, g, y;
    };
    int step = 0;
    for (const auto& [x, g, y] :
         {point{2, 1, 2}, {3, 1, 2}, {4, 0, 2}, {5, 0.4, 2}, {6, 0.6, 6}, {7, 0.9, 6}, {8, 0, 6}}) {
        u.vr("x") = x;
        u.vr("g") = g;
        EXPECT_EQ(u.output_at(step), y) << x;
        EXPECT_EQ(u.output_at(step), y) << x << ", again";
        u.accept(step, step);
        ++step;
    }
    u.vr("x") = 100;  // a step that is tried and given up
    u.vr("g") = 1;
    EXPECT_EQ(u.output_at(step), 100);
    algebra_at(u, step);
    EXPECT_EQ(u.jac.dhdvr[0][0], -1);
    u.vr("g") = 0;
    EXPECT_EQ(u.output_at(step), 6);
    u.guess();
    EXPECT_EQ(u.output_at(step), 0);
}

TEST(explicit_levels, refuse_thresholds_and_levels_in_the_wrong_order) {
    for (const std::string name : {"cmprtr_hyst_1", "cmprtr_hyst_1a"}) {
        explicit_unit u(name);
        u.r("g_low") = 0.5;
        EXPECT_HALT(u.prepare(), name + ".xbe: g_low <= g_high?\n");
    }
    for (const std::string name : {"sampler2", "sampler3"}) {
        explicit_unit u(name);
        u.r("x_low") = 1;
        EXPECT_HALT(u.prepare(), name + ".xbe: check x_low, x_high. Halting...\n");
    }
}

}  // namespace
