// Electrical elements that read digital nodes: switches, and converters from digital to analog.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "halt_throws.h"
#include "model_unit.h"

namespace {

#define EXPECT_REL(a, b, tolerance) EXPECT_NEAR(a, b, std::abs(b) * (tolerance))

constexpr int level_0 = 0, level_1 = 1, unknown = 2;

// ---- switches

TEST(switch_d, is_on_at_1_alone_and_acts_one_step_after_its_node) {
    model_unit u("switch_d");
    u.r("r_on") = 0.5;
    u.prepare();
    u.x.v = {1, 0, 0};
    for (const int s : {level_1, level_0, unknown, level_1}) {  // the node may change during a step: nothing happens
        u.x.dvar[0] = s;
        u.trns();
        EXPECT_REL(u.x.f[0], 1e-6, 1e-14);
    }
    u.call(&flags_class::save_history);
    EXPECT_EQ(u.r("on_o"), 1);
    for (const int s : {level_0, unknown}) {
        u.x.dvar[0] = s;
        u.trns();
        EXPECT_EQ(u.x.f[0], 2);
    }
    u.call(&flags_class::save_history);
    u.call(&flags_class::save_history);  // a second call, at an earlier time, changes nothing
    EXPECT_EQ(u.r("on_o"), 0);
    u.trns();
    EXPECT_REL(u.x.f[0], 1e-6, 1e-14);
}

TEST(switch_d, follows_its_node_at_once_in_dc_and_start_up_and_is_off_at_first) {
    for (const auto mode : {&flags_class::dc, &flags_class::startup}) {
        model_unit u("switch_d");
        u.prepare();
        u.x.v = {1, 0, 0};
        const double current[] = {1e-6, 100, 1e-6};  // unknown counts as 0
        for (const int s : {level_1, level_0, level_1, unknown}) {
            u.x.dvar[0] = s;
            u.call(mode, &flags_class::function);
            EXPECT_REL(u.x.f[0], current[s], 1e-14);
            EXPECT_EQ(u.r("on_o"), s == level_1 ? 1 : 0);
        }
        u.x.dvar[0] = level_1;
        u.call(mode, &flags_class::function);
        u.prepare();  // a sweep point: the state stays
        EXPECT_EQ(u.r("on_o"), 1);
        u.call(&flags_class::init_guess);
        EXPECT_EQ(u.r("on_o"), 0);
    }
}

TEST(switch_d, has_the_curve_of_the_other_switches) {
    model_unit d("switch_d"), g("switch_g1");
    for (model_unit* u : {&d, &g}) {
        u->r("r_on") = 0.25;
        u->r("v_on") = 0.7;
        u->prepare();
    }
    d.x.dvar[0] = level_1;
    g.x.vr[0] = 1;
    for (const double v : {-3.0, 0.0, 0.3, 0.7, 0.70008, 2.0}) {
        d.x.v = g.x.v = {v, 0, 0};
        d.dc();
        g.dc();
        EXPECT_EQ(d.x.f, g.x.f);
        EXPECT_EQ(d.jac.dfdv[0][0], g.jac.dfdv[0][0]);
    }
    d.x.v = {2.7, 0, 0};
    d.dc();
    EXPECT_REL(d.x.f[0], 8.0, 1e-14);  // (2.7 - 0.7) / 0.25
}

TEST(switch_d, keeps_the_stored_state_at_the_bias_point_of_small_signals) {
    model_unit u("switch_d");
    u.prepare();
    u.x.v = {1, 0, 0};
    u.x.dvar[0] = level_1;
    u.call(&flags_class::dc, &flags_class::ac, &flags_class::function, &flags_class::jacobian);
    EXPECT_REL(u.x.f[0], 1e-6, 1e-14);
    EXPECT_EQ(u.r("on_o"), 0);
}

TEST(switch_d, tells_a_change_of_its_state_and_nothing_else) {
    model_unit u("switch_d");
    u.prepare();
    const auto told = [&](int s) {
        u.x.dvar[0] = s;
        u.flags.forget_events();
        u.call(&flags_class::save_history);
        EXPECT_EQ(u.flags.event_acts, 0);
        return u.flags.event == 1;
    };
    EXPECT_FALSE(told(level_0));
    EXPECT_FALSE(told(unknown));
    EXPECT_TRUE(told(level_1));
    EXPECT_FALSE(told(level_1));
    EXPECT_TRUE(told(unknown));
}

TEST(switch_d, refuses_impossible_values) {
    model_unit u("switch_d");
    u.r("v_on") = -1;
    EXPECT_HALT(u.prepare(), "switch_d.ebe: v_on < 0 ?!\n");
    u.r("v_on") = 0;
    u.prepare();
    u.r("r_on") = 0;
    EXPECT_HALT(u.prepare(), "switch_d.ebe: ron  =  0 ?!\n");
}

// Terminals c, a, b at 1, 3, 7 V: with 0.5 ohm and 4 ohm the currents are known.
void expect_joined_to_a(const model_unit& u, bool a) {
    const double i_a = (3 - 1) / (a ? 0.5 : 4), i_b = (7 - 1) / (a ? 4 : 0.5);
    EXPECT_EQ(u.x.f[1], i_a);
    EXPECT_EQ(u.x.f[2], i_b);
    EXPECT_EQ(u.x.f[0], -(i_a + i_b));
}

TEST(spdt1, joins_its_common_terminal_to_a_at_1_and_else_to_b_one_step_later) {
    model_unit u("spdt1");
    u.r("r_on") = 0.5;
    u.r("r_off") = 4;
    u.prepare();
    u.x.v = {1, 3, 7, 0};
    u.trns();
    expect_joined_to_a(u, false);
    for (const int s : {level_1, level_0, level_1, unknown, level_1}) {
        const bool before = u.r("on_o") > 0.5;
        u.x.dvar[0] = s;
        u.trns();
        expect_joined_to_a(u, before);
        u.call(&flags_class::save_history);
        EXPECT_EQ(u.r("on_o"), s == level_1 ? 1 : 0);
        u.trns();
        expect_joined_to_a(u, s == level_1);
    }
    u.call(&flags_class::outvar_prm);
    EXPECT_EQ(u.r("va_o"), -2);
    EXPECT_EQ(u.r("vb_o"), -6);
    u.call(&flags_class::init_guess);
    EXPECT_EQ(u.r("on_o"), 0);
}

TEST(spdt1, follows_its_node_at_once_in_dc_and_start_up) {
    for (const auto mode : {&flags_class::dc, &flags_class::startup}) {
        model_unit u("spdt1");
        u.r("r_on") = 0.5;
        u.r("r_off") = 4;
        u.prepare();
        u.x.v = {1, 3, 7, 0};
        for (const int s : {level_1, level_0, level_1, unknown}) {
            u.x.dvar[0] = s;
            u.call(mode, &flags_class::function);
            expect_joined_to_a(u, s == level_1);
        }
    }
}

TEST(spdt1, refuses_resistances_that_are_too_small) {
    for (const char* word : {"r_on", "r_off"}) {
        model_unit u("spdt1");
        u.r(word) = 0.9e-9;
        EXPECT_HALT(u.prepare(), "spdt1.ebe: r too small!\n");
        u.r(word) = 1e-9;
        u.prepare();
    }
}

// ---- converters

// The voltage without load in dc, time and start-up: that at which no current flows. r_out of 0.5 ohm.
double no_load_voltage(model_unit& u) {
    u.x.v = {10, 4, 0};
    double v = 0;
    for (const auto mode : {&flags_class::dc, &flags_class::trns, &flags_class::startup}) {
        u.call(mode, &flags_class::function, &flags_class::jacobian);
        EXPECT_EQ(u.x.f[1], -u.x.f[0]);
        EXPECT_EQ(u.jac.dfdv[0][0], 2);
        EXPECT_EQ(u.jac.dfdv[0][1], -2);
        const double here = 6 - u.x.f[0] / 2;
        if (mode != &flags_class::dc) {
            EXPECT_EQ(here, v);
        }
        v = here;
    }
    return v;
}

TEST(dac1, is_high_at_1_alone_behind_its_resistance) {
    model_unit u("dac1");
    u.r("v_low") = -1;
    u.r("v_high") = 3;
    u.r("r_out") = 0.5;
    u.prepare();
    const double volts[] = {-1, 3, -1};
    for (const int s : {level_0, level_1, unknown, level_1, level_0}) {
        u.x.dvar[0] = s;
        EXPECT_EQ(no_load_voltage(u), volts[s]);
    }
    u.call(&flags_class::outvar_prm);
    EXPECT_EQ(u.r("v_o"), 6);
}

TEST(dac4, gives_its_reference_times_the_code_by_15) {
    model_unit u("dac4");
    u.r("v_ref") = 30;
    u.r("r_out") = 0.5;
    u.prepare();
    for (int code = 0; code < 16; ++code) {
        for (int k = 0; k < 4; ++k)
            u.x.dvar[static_cast<std::size_t>(k)] = (code >> k) % 2 ? level_1 : code % 3 ? 0 : 2;
        EXPECT_NEAR(no_load_voltage(u), 2 * code, 1e-13);
    }
}

TEST(dac8, gives_its_reference_times_the_code_by_255) {
    model_unit u("dac8");
    u.r("v_ref") = -510;
    u.r("r_out") = 0.5;
    u.prepare();
    for (int code = 0; code < 256; ++code) {
        for (int k = 0; k < 8; ++k)
            u.x.dvar[static_cast<std::size_t>(k)] = (code >> k) % 2 ? level_1 : code % 5 ? 0 : 2;
        EXPECT_NEAR(no_load_voltage(u), -2 * code, 1e-12);
    }
}

TEST(dac8, has_its_lowest_bit_first) {
    model_unit u("dac8");
    u.r("v_ref") = 255;
    u.r("r_out") = 0.5;
    u.prepare();
    for (std::size_t k = 0; k < 8; ++k) {
        u.x.dvar.assign(9, level_0);
        u.x.dvar[k] = level_1;
        EXPECT_NEAR(no_load_voltage(u), 1 << k, 1e-12) << k;
    }
}

TEST(converters_to_analog, refuse_an_output_resistance_that_is_too_small) {
    for (const char* name : {"dac1", "dac1a", "dac4", "dac8"}) {
        model_unit u(name);
        u.r("r_out") = 1e-9;
        EXPECT_HALT(u.prepare(), std::string(name) + ".ebe: r_out too small!\n");
        u.r("r_out") = 1.1e-9;
        u.prepare();
    }
}

// ---- dac1a: 1 V to 5 V within 4 us up and 8 us down

struct sloping : model_unit {
    sloping() : model_unit("dac1a") {
        r("v_low") = 1;
        r("v_high") = 5;
        r("dt1") = 4e-6;
        r("dt2") = 8e-6;
        r("r_out") = 0.5;
        prepare();
        call(&flags_class::init_guess);
    }
    double at(double t, int s) {
        flags.time_given = t;
        x.dvar[0] = s;
        x.v = {0, 0, 0};
        trns();
        return -x.f[0] / 2;
    }
    void accept(double t, int s) {
        flags.time_given = t;
        x.dvar[0] = s;
        call(&flags_class::save_history);
    }
    double next_break(double t) {
        flags.time_given = t;
        flags.time_nextbreak = flags.t_end = 1e9;
        call(&flags_class::nexttime);
        return flags.time_nextbreak;
    }
};

TEST(dac1a, rises_and_falls_in_straight_lines_from_the_accepted_point_that_sees_the_change) {
    sloping u;
    EXPECT_EQ(u.at(1e-6, level_1), 1);  // not within the step
    u.accept(1e-6, level_1);
    for (const double d : {0.0, 1e-6, 2e-6, 3.5e-6, 4e-6, 9e-6})
        EXPECT_NEAR(u.at(1e-6 + d, level_1), std::min(1 + d * 1e6, 5.0), 1e-9) << d;
    u.accept(9e-6, level_1);
    EXPECT_EQ(u.at(9e-6, level_1), 5);
    u.accept(10e-6, unknown);  // counts as 0
    for (const double d : {0.0, 2e-6, 7e-6, 8e-6, 9e-6})
        EXPECT_NEAR(u.at(10e-6 + d, unknown), std::max(5 - d * 0.5e6, 1.0), 1e-9) << d;
}

TEST(dac1a, has_a_break_at_the_end_of_each_slope_and_no_other) {
    sloping u;
    EXPECT_EQ(u.next_break(0), 1e9);
    u.accept(1e-6, level_1);
    EXPECT_NEAR(u.next_break(1e-6), 5e-6, 1e-15);
    EXPECT_NEAR(u.next_break(4e-6), 5e-6, 1e-15);
    EXPECT_EQ(u.next_break(u.next_break(4e-6)), 1e9);
    EXPECT_EQ(u.next_break(6e-6), 1e9);
}

TEST(dac1a, turns_back_from_the_value_that_it_has_reached) {
    sloping u;
    u.accept(0, level_1);
    u.accept(3e-6, level_0);  // at 4 V
    EXPECT_NEAR(u.at(3e-6, level_0), 4, 1e-9);
    EXPECT_NEAR(u.next_break(3e-6), 9e-6, 1e-15);  // 3 V of 4 V in 8 us
    EXPECT_NEAR(u.at(5e-6, level_0), 3, 1e-9);
    u.accept(5e-6, level_1);
    EXPECT_NEAR(u.next_break(5e-6), 7e-6, 1e-15);
    EXPECT_NEAR(u.at(6e-6, level_1), 4, 1e-9);
    EXPECT_EQ(u.at(8e-6, level_1), 5);
}

TEST(dac1a, bears_points_at_falling_times_and_a_time_that_begins_anew) {
    sloping u;
    u.accept(2e-6, level_1);  // a step that comes to nothing,
    u.accept(1e-6, level_1);  // and the one that takes its place
    EXPECT_NEAR(u.at(2e-6, level_1), 2, 1e-9);
    EXPECT_NEAR(u.next_break(1e-6), 5e-6, 1e-15);
    u.accept(7e-6, level_1);
    EXPECT_EQ(u.at(0, level_1), 5);  // a further run, from the state of the last
    EXPECT_EQ(u.next_break(0), 1e9);
}

TEST(dac1a, follows_its_node_at_once_in_dc_and_start_up_and_is_low_at_first) {
    for (const auto mode : {&flags_class::dc, &flags_class::startup}) {
        sloping u;
        u.x.v = {0, 0, 0};
        for (const int s : {level_1, level_0, level_1, unknown, level_1}) {
            u.x.dvar[0] = s;
            u.call(mode, &flags_class::function);
            EXPECT_EQ(-u.x.f[0] / 2, s == level_1 ? 5 : 1);
        }
        EXPECT_EQ(u.at(0, level_1), 5);
        EXPECT_EQ(u.next_break(0), 1e9);
        u.prepare();  // a sweep point: the state stays
        EXPECT_EQ(u.at(0, level_1), 5);
        u.call(&flags_class::init_guess);
        EXPECT_EQ(u.at(0, level_1), 1);
    }
}

TEST(dac1a, refuses_slopes_that_take_no_time) {
    for (const char* word : {"dt1", "dt2"}) {
        model_unit u("dac1a");
        u.r(word) = 0;
        EXPECT_HALT(u.prepare(), "dac1a.ebe: dt1 or dt2 too small!\n");
        u.r(word) = 1e-12;
        u.prepare();
    }
}

TEST(small_signal_spdt, is_open_without_a_bias_point) {
    ac_unit u("spdt");
    u.v = {1, 2, 3, 0};
    u.ac(1);
    for (const auto& f : u.f) EXPECT_EQ(f, 0.0);
}

}  // namespace
