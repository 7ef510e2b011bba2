// Switches that conduct both ways and their gates, the thyristor with a holding current, averaged cells, the bridge of
// six switches.
#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "halt_throws.h"
#include "model_unit.h"

namespace {

#define EXPECT_REL(a, b, tolerance) EXPECT_NEAR(a, b, std::abs(b) * (tolerance))

// ---- thyristor_g_2

struct latching_thyristor : model_unit {
    latching_thyristor() : model_unit("thyristor_g_2") {
        r("r_on") = 0.5;
        r("r_off") = 1e6;
        r("v_on") = 1;
        r("i_h") = 0.2;
        prepare();
    }
    bool accept(double v, double g) {
        x.v = {v, 0, 0};
        x.vr[0] = g;
        call(&flags_class::save_history);
        EXPECT_EQ(r("on_o"), x.iparm[0]);
        return x.iparm[0] != 0;
    }
    double current(double v) {
        x.v = {v, 0, 0};
        trns();
        EXPECT_EQ(x.f[1], -x.f[0]);
        return x.f[0];
    }
};

TEST(thyristor_g_2, has_a_forward_voltage_when_on_and_blocks_both_ways_when_off) {
    latching_thyristor u;
    EXPECT_REL(u.current(5), 5e-6, 1e-12);
    EXPECT_REL(u.current(-5), -5e-6, 1e-12);
    EXPECT_TRUE(u.accept(5, 1));
    EXPECT_REL(u.current(5), (5 - 1) / 0.5, 1e-12);
    EXPECT_REL(u.current(0.5), 0.5e-6, 1e-12);
    EXPECT_REL(u.current(-5), -5e-6, 1e-12);
}

TEST(thyristor_g_2, turns_off_below_its_holding_current_once_the_gate_is_low) {
    latching_thyristor u;
    EXPECT_FALSE(u.accept(5, 0.5));  // half of g_high is not above it
    EXPECT_TRUE(u.accept(5, 0.6));
    EXPECT_TRUE(u.accept(1.05, 0.6));   // 0.1 A, but the gate is high
    EXPECT_TRUE(u.accept(1.11, 0));     // 0.22 A
    EXPECT_TRUE(u.accept(1.1001, 0));   // just above 0.2 A
    EXPECT_FALSE(u.accept(1.0999, 0));  // just below
    EXPECT_FALSE(u.accept(5, 0));
    EXPECT_FALSE(u.accept(-5, 1));
    EXPECT_FALSE(u.accept(0, 1));
    EXPECT_TRUE(u.accept(5, 1));
    EXPECT_FALSE(u.accept(-1, 1));  // the gate does not hold it against a reverse voltage
}

TEST(thyristor_g_2, takes_its_start_up_state_from_the_gate_and_forgets_all_at_a_first_guess) {
    latching_thyristor u;
    u.x.v = {5, 0, 0};
    u.x.vr[0] = 1;
    u.startup();
    EXPECT_REL(u.x.f[0], 8, 1e-12);
    u.call(&flags_class::init_guess);
    EXPECT_EQ(u.x.iparm[0], 0);
    EXPECT_EQ(u.r("i_last"), 0);
    EXPECT_REL(u.current(5), 5e-6, 1e-12);
}

TEST(thyristor_g_2, refuses_dc_and_impossible_resistances) {
    latching_thyristor u;
    EXPECT_HALT(u.dc(), "thyristor_g_2: DC not allowed.\n");
    for (const auto& [r_on, r_off] : {std::pair{0.9e-9, 1e6}, {0.01, 0.9e-9}, {1.0, 1.0}, {std::nan(""), 1e6}}) {
        model_unit small("thyristor_g_2");
        small.r("r_on") = r_on;
        small.r("r_off") = r_off;
        EXPECT_HALT(small.prepare(), "thyristor_g_2: ron or roff too small!\n");
    }
}

// ---- spdt

TEST(spdt, joins_its_common_terminal_to_a_while_its_control_is_high_one_step_later) {
    model_unit u("spdt");
    u.r("r_on") = 0.5;
    u.r("g_high") = 10;
    u.prepare();
    u.x.v = {3, 1, -1, 0};
    u.x.vr[0] = 6;
    u.trns();
    EXPECT_REL(u.x.f[2], -8, 1e-12);  // c to b
    u.call(&flags_class::save_history);
    u.x.vr[0] = 5;
    u.trns();
    EXPECT_REL(u.x.f[1], -4, 1e-12);  // c to a
    EXPECT_REL(u.x.f[2], -4e-6, 1e-9);
    EXPECT_EQ(u.x.f[0], -(u.x.f[1] + u.x.f[2]));
    u.call(&flags_class::save_history);
    EXPECT_EQ(u.r("on_o"), 0);
}

TEST(spdt, follows_its_control_at_once_in_dc_and_start_up_and_refuses_resistances_that_are_too_small) {
    for (const auto mode : {&model_unit::dc, &model_unit::startup}) {
        model_unit u("spdt");
        u.prepare();
        u.x.vr[0] = 1;
        (u.*mode)();
        EXPECT_EQ(u.r("on_o"), 1);
        u.x.vr[0] = 0;
        (u.*mode)();
        EXPECT_EQ(u.r("on_o"), 0);
    }
    for (const char* word : {"r_on", "r_off"}) {
        model_unit u("spdt");
        u.r(word) = 0.9e-9;
        EXPECT_HALT(u.prepare(), "spdt.ebe: r too small!\n");
    }
}

// ---- averaged cells

// Voltages c, a, b; the currents are the means of a switch that takes c through r_on to a for the share d.
void expect_means(model_unit& u, double d_a, double r_on) {
    const double vc = 7, va = 24, vb = 2;
    u.x.v = {vc, va, vb, 0};
    u.trns();
    const double i = (vc - d_a * va - (1 - d_a) * vb) / r_on;
    EXPECT_REL(u.x.f[0], i, 1e-12);
    EXPECT_REL(u.x.f[1], -d_a * i, 1e-12);
    EXPECT_REL(u.x.f[2], -(1 - d_a) * i, 1e-12);
    u.call(&flags_class::outvar_prm);
    EXPECT_REL(u.r("d_o"), d_a, 1e-12);
    EXPECT_EQ(u.r("va_o"), vc - va);
    EXPECT_EQ(u.r("vb_o"), vc - vb);
}

TEST(averaged_cells, divide_voltage_and_current_by_the_duty_that_is_held_between_delt_and_1_less_delt) {
    for (const bool buck : {true, false}) {
        model_unit u(buck ? "spdt_buck" : "spdt_boost");
        u.r("r_on") = 0.1;
        u.r("delt") = 0.02;
        u.prepare();
        for (const auto& [x, d] : {std::pair{0.3, 0.3}, {0.0, 0.02}, {-5.0, 0.02}, {1.0, 0.98}, {7.0, 0.98}}) {
            u.x.vr[0] = x;
            expect_means(u, buck ? d : 1 - d, 0.1);
            if (x != d) {
                for (int j = 0; j < 3; ++j) EXPECT_EQ(u.jac.dfdvr[j][0], 0);
            }
        }
    }
}

TEST(averaged_cells, take_up_the_heat_of_their_resistance_and_nothing_else) {
    model_unit u("spdt_buck");
    u.r("r_on") = 0.1;
    u.prepare();
    u.x.vr[0] = 0.4;
    u.x.v = {9, 24, 1, 0};
    u.trns();
    double power = 0;
    for (std::size_t k = 0; k < 3; ++k) power += u.x.v[k] * u.x.f[k];
    EXPECT_REL(power, 0.1 * u.x.f[0] * u.x.f[0], 1e-12);
}

TEST(averaged_cells, refuse_dc_and_impossible_values) {
    struct texts {
        const char *type, *dc, *delt;
    };
    for (const texts& t : {texts{"spdt_boost", "spdt_boost: DC not allowed.\n", "spdt_boost.ece: delt is too small!\n"},
                           texts{"spdt_buck", "spdt_buck.ebe: DC not allowed.\n", "spdt_buck: delt is too small!\n"}}) {
        const std::string name = t.type;
        const auto refused = [&](const char* word, double value, const std::string& text) {
            model_unit u(name);
            u.r(word) = value;
            EXPECT_HALT(u.prepare(), text);
        };
        model_unit u(name);
        u.prepare();
        EXPECT_HALT(u.dc(), t.dc);
        refused("delt", 0.9e-6, t.delt);
        refused("delt", std::nan(""), t.delt);
        refused("delt", 0.5, name + ".ebe: check delt. Halting...\n");
        refused("r_on", 0, name + ".ebe: r too small!\n");
        u.r("delt") = 1e-6;
        u.prepare();
    }
}

// ---- switch_bi

struct both_ways : model_unit {
    bool digital;
    explicit both_ways(const std::string& name = "switch_bi") : model_unit(name), digital(name.ends_with("_d")) {
        r("r_on") = 0.5;
        prepare();
        call(&flags_class::init_guess);
    }
    void command(int level) {
        if (digital)
            x.dvar[0] = level;
        else
            x.vr[0] = level;
    }
    bool accept(double t, int level) {
        flags.time_given = t;
        command(level);
        call(&flags_class::save_history);
        return r("on_o") > 0.5;
    }
    double next(double t) {
        flags.time_given = t;
        flags.time_nextbreak = 1e9;
        call(&flags_class::nexttime);
        return flags.time_nextbreak;
    }
    double current(double v) {
        x.v = {v, 0, 0};
        trns();
        EXPECT_EQ(x.f[1], -x.f[0]);
        return x.f[0];
    }
};

TEST(switch_bi, conducts_both_ways_and_passes_zero_without_a_step) {
    for (const char* name : {"switch_bi", "switch_bi_d"}) {
        both_ways u(name);
        EXPECT_TRUE(u.accept(0, 1));
        for (const double v : {5.0, 1e-9, 0.0, -1e-9, -5.0}) {
            EXPECT_EQ(u.current(v), v / 0.5);
            EXPECT_EQ(u.jac.dfdv[0][0], 2);
            EXPECT_EQ(u.jac.dfdv[0][1], -2);
        }
        EXPECT_FALSE(u.accept(1e-6, 0));
        EXPECT_REL(u.current(-5), -5e-6, 1e-12);
    }
}

TEST(switch_bi, has_its_drop_in_both_directions_or_blocks_one) {
    both_ways u;
    u.r("v_on") = 1;
    u.prepare();
    u.accept(0, 1);
    EXPECT_REL(u.current(3), 4, 1e-12);
    EXPECT_REL(u.current(-3), -4, 1e-12);
    EXPECT_REL(u.current(0.9), 0.9e-6, 1e-12);
    EXPECT_REL(u.current(-0.9), -0.9e-6, 1e-12);
    const double knee = 1e6 / (1e6 - 0.5);  // where both lines meet
    EXPECT_NEAR(u.current(knee * (1 + 1e-12)), u.current(knee * (1 - 1e-12)), 1e-11);
    u.x.iparm[0] = 0;
    EXPECT_REL(u.current(3), 4, 1e-12);
    EXPECT_REL(u.current(-3), -3e-6, 1e-12);
}

TEST(switch_bi, closes_its_delay_after_the_command_and_opens_at_once) {
    both_ways u;
    u.r("t_delay") = 2e-6;
    u.prepare();
    EXPECT_EQ(u.next(0), 1e9);
    EXPECT_FALSE(u.accept(1e-6, 1));
    EXPECT_REL(u.next(1e-6), 3e-6, 1e-15);
    EXPECT_FALSE(u.accept(2.5e-6, 1));
    EXPECT_REL(u.next(2.5e-6), 3e-6, 1e-15);
    EXPECT_TRUE(u.accept(3e-6, 1));
    EXPECT_EQ(u.next(3e-6), 1e9);
    EXPECT_FALSE(u.accept(4e-6, 0));
    EXPECT_FALSE(u.accept(5e-6, 1));
    EXPECT_FALSE(u.accept(6e-6, 0));  // a command that is shorter than the delay closes nothing
    EXPECT_EQ(u.next(6e-6), 1e9);
    EXPECT_FALSE(u.accept(9e-6, 0));
}

TEST(switch_bi, begins_again_where_a_step_is_repeated) {
    both_ways u;
    u.r("t_delay") = 2e-6;
    u.prepare();
    u.accept(1e-6, 0);
    EXPECT_FALSE(u.accept(2e-6, 1));  // of a step that is not accepted
    EXPECT_FALSE(u.accept(1.5e-6, 0));
    EXPECT_EQ(u.next(1.5e-6), 1e9);
    EXPECT_FALSE(u.accept(1.6e-6, 1));
    EXPECT_REL(u.next(1.6e-6), 3.6e-6, 1e-15);
    EXPECT_TRUE(u.accept(3.6e-6, 1));
    EXPECT_FALSE(u.accept(5e-6, 0));  // again one that is not: the switch has not been opened
    EXPECT_TRUE(u.accept(4e-6, 1));
    EXPECT_TRUE(u.accept(4e-6, 1));  // the same point once more
    EXPECT_TRUE(u.accept(1e-7, 1));  // a further run, from its own beginning on
}

TEST(switch_bi, waits_no_longer_than_its_delay_in_a_run_that_begins_before_the_last_one_ended) {
    both_ways u;
    u.r("t_delay") = 2e-6;
    u.prepare();
    u.accept(1.0, 1);
    u.accept(1.0 + 1e-6, 1);
    EXPECT_FALSE(u.accept(0, 1));
    EXPECT_REL(u.next(0), 2e-6, 1e-15);
    EXPECT_TRUE(u.accept(2e-6, 1));
}

TEST(switch_bi, inverts_its_command_and_is_open_while_a_level_is_unknown) {
    for (const char* name : {"switch_bi", "switch_bi_d"}) {
        both_ways u(name);
        u.x.iparm[1] = 1;
        EXPECT_TRUE(u.accept(0, 0));
        EXPECT_FALSE(u.accept(1e-6, 1));
        if (!u.digital) continue;
        for (const int invert : {0, 1}) {
            u.x.iparm[1] = invert;
            EXPECT_FALSE(u.accept(2e-6, 2));
        }
    }
}

TEST(switch_bi, follows_its_command_at_once_in_dc_and_start_up) {
    for (const char* name : {"switch_bi", "switch_bi_d"})
        for (const auto mode : {&model_unit::dc, &model_unit::startup}) {
            both_ways u(name);
            u.r("t_delay") = 1e-6;
            u.prepare();
            u.x.v = {-3, 0, 0};
            u.command(1);
            (u.*mode)();
            EXPECT_EQ(u.x.f[0], -6);
            EXPECT_TRUE(u.accept(0, 1));  // and it stays so
            u.command(0);
            (u.*mode)();
            EXPECT_EQ(u.r("on_o"), 0);
        }
}

TEST(switch_bi, refuses_impossible_values) {
    for (const std::string name : {"switch_bi", "switch_bi_d"}) {
        const auto refused = [&](const char* word, double value, const std::string& text) {
            model_unit u(name);
            u.r(word) = value;
            EXPECT_HALT(u.prepare(), text);
        };
        refused("r_on", 0.9e-9, name + ": r too small!\n");
        refused("r_off", 0.01, name + ": r too small!\n");
        refused("v_on", -1, name + ".ebe: v_on < 0 ?!\n");
        refused("t_delay", -1e-9, name + ".ebe: t_delay < 0 ?!\n");
        refused("t_delay", std::nan(""), name + ".ebe: t_delay < 0 ?!\n");
    }
}

// ---- bridge_3ph_1

struct bridge : model_unit {
    bridge() : model_unit("bridge_3ph_1") {
        r("r_on") = 0.5;
        r("r_d") = 0.25;
        r("v_d") = 1;
        prepare();
    }
    void gates(std::initializer_list<int> closed) {
        for (std::size_t k = 0; k < 6; ++k) x.vr[k] = 0;
        for (const int k : closed) x.vr[static_cast<std::size_t>(k) - 1] = 1;
    }
};

// Terminals dp dn a b c are 0 to 4.
TEST(bridge_3ph_1, has_switches_1_3_5_at_the_positive_side_and_4_6_2_at_the_negative_one) {
    constexpr std::array<int, 6> from = {0, 4, 0, 2, 0, 3}, to = {2, 1, 3, 1, 4, 1};
    for (int k = 1; k <= 6; ++k) {
        bridge u;
        u.gates({k});
        const auto p = static_cast<std::size_t>(from[static_cast<std::size_t>(k) - 1]);
        const auto n = static_cast<std::size_t>(to[static_cast<std::size_t>(k) - 1]);
        u.x.v = {2, 0, 2,
                 2, 2, 0};  // 2 V across switch k, and where it stands beside a diode no more than 2 V backwards
        u.x.v[n] = 0;
        u.trns();
        EXPECT_NEAR(u.x.f[p], 0, 1e-4) << k;  // not yet
        u.call(&flags_class::save_history);
        EXPECT_EQ(u.r("on" + std::to_string(k) + "_o"), 1);
        u.trns();
        EXPECT_NEAR(u.x.f[p], 4, 1e-4) << k;
        EXPECT_NEAR(u.x.f[n], -4, 1e-4) << k;
    }
}

TEST(bridge_3ph_1, has_a_diode_the_other_way_beside_each_switch) {
    bridge u;
    u.x.v = {0, 0, 3, 0, -3, 0};  // a above dp, c below dn
    u.trns();
    EXPECT_NEAR(u.x.f[2], (3 - 1) / 0.25, 1e-4);
    EXPECT_NEAR(u.x.f[4], -(3 - 1) / 0.25, 1e-4);
    EXPECT_NEAR(u.x.f[3], 0, 1e-4);
}

TEST(bridge_3ph_1, follows_its_gates_at_once_in_dc_and_start_up) {
    for (const auto mode : {&model_unit::dc, &model_unit::startup}) {
        bridge u;
        u.gates({1, 6});
        u.x.v = {10, 0, 9, 1, 5, 0};
        (u.*mode)();
        EXPECT_NEAR(u.x.f[2], -2, 1e-4);
        EXPECT_NEAR(u.x.f[3], 2, 1e-4);
        u.call(&flags_class::init_guess);
        EXPECT_EQ(u.r("on1_o"), 0);
        EXPECT_EQ(u.r("on6_o"), 0);
    }
}

TEST(bridge_3ph_1, refuses_impossible_values) {
    const auto refused = [](const char* word, double value, const std::string& text) {
        model_unit u("bridge_3ph_1");
        u.r(word) = value;
        EXPECT_HALT(u.prepare(), text);
    };
    refused("g_high", -1, "bridge_3ph_1: g_high < 0? Halting...\n");
    refused("v_on", -1, "bridge_3ph_1.ebe: v_on < 0 ?!\n");
    refused("r_on", 0, "bridge_3ph_1.ebe: ron  =  0 ?!\n");
    refused("r_d", 0.9e-9, "bridge_3ph_1: r too small!\n");
}

}  // namespace
