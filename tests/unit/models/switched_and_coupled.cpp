// Switches and thyristors driven by blocks, meters for blocks, transformers, and the capacitor that can be sensed.
#include <gtest/gtest.h>

#include <cmath>

#include "halt_throws.h"
#include "model_unit.h"

namespace {

#define EXPECT_REL(a, b, tolerance) EXPECT_NEAR(a, b, std::abs(b) * (tolerance))

TEST(switch_g1, acts_one_step_after_its_control) {
    model_unit u("switch_g1");
    u.r("g_high") = 10;
    u.r("r_on") = 0.5;
    u.prepare();
    u.x.v = {1, 0, 0};
    for (const double g : {9.0, 0.0, 9.0}) {  // the control may move during a step: nothing happens
        u.x.vr[0] = g;
        u.trns();
        EXPECT_REL(u.x.f[0], 1e-6, 1e-14);
    }
    u.call(&flags_class::save_history);
    EXPECT_EQ(u.r("on_o"), 1);
    u.x.vr[0] = 5;  // half of g_high is not above it
    u.trns();
    EXPECT_EQ(u.x.f[0], 2);
    u.call(&flags_class::save_history);
    u.call(&flags_class::save_history);  // a second call, at an earlier time, changes nothing
    EXPECT_EQ(u.r("on_o"), 0);
    u.trns();
    EXPECT_REL(u.x.f[0], 1e-6, 1e-14);
}

TEST(switch_g1, follows_its_control_at_once_in_dc_and_start_up_and_is_off_at_first) {
    model_unit u("switch_g1");
    u.prepare();
    u.x.v = {1, 0, 0};
    u.x.vr[0] = 1;
    u.dc();
    EXPECT_REL(u.x.f[0], 100, 1e-14);
    EXPECT_EQ(u.r("on_o"), 1);
    u.prepare();  // a sweep point: the state stays
    EXPECT_EQ(u.r("on_o"), 1);
    u.call(&flags_class::init_guess);
    EXPECT_EQ(u.r("on_o"), 0);
    u.startup();
    EXPECT_EQ(u.r("on_o"), 1);
}

TEST(switch_g1, blocks_reverse_current_even_without_a_forward_drop) {
    model_unit u("switch_g1");
    u.prepare();
    u.x.vr[0] = 1;
    u.x.v = {-1, 0, 0};
    u.dc();
    EXPECT_REL(u.x.f[0], -0.01, 1e-12);
}

TEST(switch_g1, refuses_impossible_values) {
    model_unit u("switch_g1");
    u.r("v_on") = -1;
    EXPECT_HALT(u.prepare(), "switch_g1.ebe: v_on < 0 ?!\n");
    u.r("v_on") = 0;
    u.prepare();
    u.r("r_on") = 0;
    EXPECT_HALT(u.prepare(), "switch_g1.ebe: ron  =  0 ?!\n");
}

struct thyristor : model_unit {
    thyristor() : model_unit("thyristor_g") {
        r("r_on") = 0.5;
        r("r_off") = 1e5;
        r("g_high") = 4;
        prepare();
    }
    void at(double v, double g) {
        x.v = {v, 0, 0};
        x.vr[0] = g;
    }
    void accept() { call(&flags_class::save_history); }
    bool on() const { return x.iparm[0] != 0; }
};

TEST(thyristor_g, fires_above_half_the_high_level_with_positive_voltage_and_holds_until_the_voltage_is_gone) {
    struct step {
        double v, g;
        bool on;
    };
    thyristor u;
    EXPECT_EQ(u.r("g_trig"), 2);
    for (const step& s : {step{5, 0, false},
                          {5, 2, false},
                          {-5, 4, false},
                          {0, 4, false},
                          {5, 2.1, true},
                          {5, 0, true},
                          {1e-3, 0, true},
                          {0, 4, false},
                          {5, 0, false},
                          {5, 4, true},
                          {-1, 4, false}}) {
        u.at(s.v, s.g);
        u.accept();
        EXPECT_EQ(u.on(), s.on) << s.v << ' ' << s.g;
        EXPECT_EQ(u.r("on_o"), s.on ? 1 : 0);
        EXPECT_EQ(u.r("v_last"), s.v);
    }
}

TEST(thyristor_g, never_changes_its_state_during_a_step) {
    thyristor u;
    for (const double v : {5.0, -5.0, 0.0, 100.0})
        for (const double g : {0.0, 4.0}) {
            u.at(v, g);
            u.trns();
            EXPECT_FALSE(u.on());
            EXPECT_REL(u.x.f[0], v / 1e5, 1e-14);
            EXPECT_EQ(u.x.f[1], -u.x.f[0]);
        }
    u.at(5, 4);
    u.accept();
    for (const double v : {5.0, -5.0, 0.0}) {
        u.at(v, 0);
        u.trns();
        EXPECT_TRUE(u.on());
        EXPECT_EQ(u.x.f[0], 2 * v);
        EXPECT_EQ(u.jac.dfdv[0][0], 2);
        EXPECT_EQ(u.jac.dfdv[0][1], -2);
        EXPECT_EQ(u.jac.dfdv[1][0], -2);
        EXPECT_EQ(u.jac.dfdv[1][1], 2);
    }
}

TEST(thyristor_g, takes_its_start_up_state_from_the_gate_alone) {
    thyristor u;
    u.at(-3, 4);
    u.startup();
    EXPECT_TRUE(u.on());
    EXPECT_EQ(u.x.f[0], -6);
    u.at(-3, 2);
    u.startup();
    EXPECT_FALSE(u.on());
    u.at(5, 4);
    u.accept();
    u.call(&flags_class::init_guess);
    EXPECT_FALSE(u.on());
    EXPECT_EQ(u.r("v_last"), 0);
    EXPECT_EQ(u.r("on_o"), 0);
}

TEST(thyristor_g, refuses_dc_and_resistances_that_are_too_small) {
    thyristor u;
    EXPECT_HALT(u.dc(), "thyristor_g: DC not allowed.\n   Halting...\n");
    for (const char* word : {"r_on", "r_off"}) {
        model_unit small("thyristor_g");
        small.r(word) = 0.9e-9;
        EXPECT_HALT(small.prepare(), "thyristor_g: r too small!\n");
        small.r(word) = 1e-9;
        small.prepare();
    }
}

TEST(ammeter_fb, is_a_short_and_gives_its_current_to_a_variable) {
    model_unit u("ammeter_fb");
    u.r("k") = 10;
    u.x.v = {3, 1, 0};
    u.x.aux[0] = 0.5;
    u.x.auxs[0] = 0.25;
    u.x.vr[0] = 7;
    const auto expect_rows = [&](std::size_t first, double i) {
        EXPECT_EQ(u.x.f[first], i);
        EXPECT_EQ(u.x.f[first + 1], -i);
        EXPECT_EQ(u.x.f[first + 2], 2);
        EXPECT_EQ(u.x.f[first + 3], 7 - 10 * i);
    };
    u.dc();
    expect_rows(0, 0.5);
    u.trns();
    expect_rows(0, 0.5);
    u.startup();
    expect_rows(4, 0.25);
}

TEST(voltmeter_fb, gives_its_voltage_to_a_variable_in_every_analysis) {
    model_unit u("voltmeter_fb");
    u.r("k") = 10;
    u.x.vind = {3, 1, 0};
    u.x.vr[0] = 7;
    for (const auto m : {&flags_class::dc, &flags_class::trns, &flags_class::startup}) {
        u.x.f[0] = 0;
        u.call(m, &flags_class::function, &flags_class::jacobian);
        EXPECT_EQ(u.x.f[0], 7 - 20);
    }
    EXPECT_EQ(u.jac.dfdvr[0][0], 1);
    EXPECT_EQ(u.jac.dfdvind[0][0], -10);
    EXPECT_EQ(u.jac.dfdvind[0][1], 10);
}

// ---- transformers

TEST(xfmr, has_current_slopes_that_give_back_the_voltages_through_its_inductances) {
    model_unit u("xfmr");
    const double l1 = 2e-3, l2 = 8e-3, k = 0.75, m = 3e-3;
    u.r("l1") = l1;
    u.r("l2") = l2;
    u.r("k") = k;
    u.prepare();
    EXPECT_REL(u.r("m_d"), m, 1e-14);
    u.x.v = {5, 1, -2, 1, 0};
    u.x.aux = {0.3, -0.2, 0};
    for (const auto mode : {&flags_class::dc, &flags_class::trns}) {
        u.x.f.assign(u.x.f.size(), 0);
        u.call(mode, &flags_class::function);
        EXPECT_EQ(u.x.f[0], 0.3);
        EXPECT_EQ(u.x.f[1], -0.3);
        EXPECT_EQ(u.x.f[2], -0.2);
        EXPECT_EQ(u.x.f[3], 0.2);
        EXPECT_REL(l1 * u.x.f[4] + m * u.x.f[5], 4.0, 1e-13);
        EXPECT_REL(m * u.x.f[4] + l2 * u.x.f[5], -3.0, 1e-13);
    }
}

TEST(xfmr, holds_its_currents_in_start_up_and_hands_them_over) {
    model_unit u("xfmr");
    u.prepare();
    u.x.stparm = {2, 3};
    u.x.auxs = {0.5, -0.25, 0};
    u.startup();
    EXPECT_EQ(u.x.f[6], 0.5);
    EXPECT_EQ(u.x.f[7], -0.5);
    EXPECT_EQ(u.x.f[8], -0.25);
    EXPECT_EQ(u.x.f[9], 0.25);
    EXPECT_EQ(u.x.f[10], 0.5 - 2);
    EXPECT_EQ(u.x.f[11], -0.25 - 3);
    EXPECT_EQ(u.x.aux[0], 0.5);
    EXPECT_EQ(u.x.aux[1], -0.25);
}

TEST(xfmr, refuses_a_coupling_of_one_and_more) {
    for (const double k : {1.0, 1.5, -1.0, std::nan("")}) {
        model_unit u("xfmr");
        u.r("k") = k;
        EXPECT_HALT(u.prepare(), "xfmr.ebe: k.ge.1 is not allowed. Halting...\n");
    }
    model_unit u("xfmr");
    u.r("k") = -0.999999;
    u.prepare();
    u.r("l2") = 0;
    EXPECT_HALT(u.prepare(), "xfmr.ebe: check l1, l2. Halting...\n");
}

TEST(xfmr_2w_ideal, has_equal_volts_per_turn_and_no_power_of_its_own) {
    model_unit u("xfmr_2w_ideal");
    u.r("w1") = 100;
    u.r("w2") = 25;
    // 8 V and 2 V, 0.5 A and -2 A: the rows are fulfilled, and the power sums to 0
    u.x.v = {9, 1, 3, 1, 0};
    u.x.aux = {0.5, -2, 0};
    u.x.auxs = {0.5, -2, 0};
    u.trns();
    EXPECT_EQ(u.x.f[4], 0);
    EXPECT_EQ(u.x.f[5], 0);
    double power = 0;
    for (std::size_t j = 0; j < 4; ++j) power += u.x.v[j] * u.x.f[j];
    EXPECT_EQ(power, 0);
    u.startup();
    EXPECT_EQ(u.x.f[10], 0);
    EXPECT_EQ(u.x.f[11], 0);
    u.x.v[0] = 10;
    u.x.aux[0] = 1;
    u.dc();
    EXPECT_EQ(u.x.f[4], 25);
    EXPECT_EQ(u.x.f[5], 50);
}

// ---- what the older elements share with them

TEST(c1, has_its_voltage_as_state_and_its_current_as_first_unknown) {
    model_unit u("c1");
    u.r("c") = 2;
    u.r("k_scale") = 0.25;
    u.prepare();
    u.x.stparm[0] = 1.5;
    u.x.v = {5, 1, 0};
    u.x.aux = {0.3, 3.5, 0};
    u.trns();
    EXPECT_EQ(u.x.f[0], 0.3);
    EXPECT_EQ(u.x.f[1], -0.3);
    EXPECT_REL(u.x.f[2], 0.6, 1e-15);  // dv/dt = i/C
    EXPECT_EQ(u.x.f[3], -0.5);
    u.x.auxs = {0.7, 2, 0};
    u.startup();
    EXPECT_EQ(u.x.f[4], 0.7);
    EXPECT_EQ(u.x.f[5], -0.7);
    EXPECT_EQ(u.x.f[6], 0.5);
    EXPECT_EQ(u.x.f[7], -2);
    EXPECT_EQ(u.x.aux[0], 0.7);
    EXPECT_EQ(u.x.aux[1], 2);
    u.r("c") = 0;
    EXPECT_HALT(u.prepare(), "c1.ebe: c too small!\n");
}

TEST(l, refuses_to_be_zero) {
    model_unit u("l");
    u.prepare();
    u.r("k_scale") = 0;
    EXPECT_HALT(u.prepare(), "l.ebe: l too small!\n");
}

// ---- small-signal forms

using number = std::complex<double>;

TEST(small_signal_xfmr, has_the_voltages_of_its_reactances) {
    ac_unit u("xfmr");
    u.r("l1") = 2e-3;
    u.r("l2") = 8e-3;
    u.r("k") = 0.75;
    const number i1{1, 2}, i2{-3, 0.5}, jw{0, 1000};
    u.aux = {i1, i2, 0};
    u.v = {jw * (2e-3 * i1 + 3e-3 * i2), 0, jw * (3e-3 * i1 + 8e-3 * i2), 0, 0};
    u.ac(1000);
    EXPECT_NEAR(std::abs(u.f[4]), 0, 1e-12);
    EXPECT_NEAR(std::abs(u.f[5]), 0, 1e-12);
    EXPECT_EQ(u.f[0], i1);
    EXPECT_EQ(u.f[3], -i2);
}

TEST(small_signal_c1, has_the_current_of_its_susceptance) {
    ac_unit u("c1");
    u.r("c") = 2e-6;
    u.v = {number{3, 1}, 1, 0};
    u.aux = {number{0, 1000} * 2e-6 * number{2, 1}, 0};
    u.ac(1000);
    EXPECT_NEAR(std::abs(u.f[2]), 0, 1e-15);
}

TEST(small_signal_meters, give_their_reading_to_the_blocks) {
    ac_unit a("ammeter_fb"), v("voltmeter_fb"), s("vsrc_1"), i("isrc_1"), t("xfmr_2w_ideal");
    a.r("k") = 3;
    a.aux[0] = {1, 2};
    a.vr[0] = {3, 7};
    a.ac(1);
    EXPECT_EQ(a.f[3], (number{0, 1}));
    v.r("k") = 2;
    v.vind = {number{1, 2}, number{0, 1}, 0};
    v.vr[0] = {2, 5};
    v.ac(1);
    EXPECT_EQ(v.f[0], (number{0, 3}));
    s.r("k") = 2;
    s.v = {number{5, 0}, number{1, 0}, 0};
    s.vr[0] = {2, 1};
    s.ac(1);
    EXPECT_EQ(s.f[2], (number{0, -2}));
    i.r("k") = 2;
    i.vr[0] = {2, 1};
    i.ac(1);
    EXPECT_EQ(i.f[0], (number{4, 2}));
    EXPECT_EQ(i.f[1], (number{-4, -2}));
    t.r("w1") = 4;
    t.v = {8, 0, 2, 0, 0};
    t.aux = {0.5, -2, 0};
    t.ac(1);
    EXPECT_EQ(t.f[4], number{});
    EXPECT_EQ(t.f[5], number{});
}

}  // namespace
