// The loss meter, and the thermal chains behind it.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>

#include "block_unit.h"
#include "halt_throws.h"

namespace {

#define EXPECT_REL(a, b, tolerance) EXPECT_NEAR(a, b, std::abs(b) * (tolerance))

// ---- loss_meter

struct meter : block_unit {
    meter() : block_unit("loss_meter") {
        i("n_pts") = 3;
        r("i1") = 10, r("i2") = 20, r("i3") = 40;
        r("e_on1") = 1e-3, r("e_on2") = 3e-3, r("e_on3") = 9e-3;
        r("e_off1") = 2e-3, r("e_off2") = 3e-3, r("e_off3") = 5e-3;
        r("e_rr") = 1e-3, r("i_rr") = 20;
        r("v_ref") = 600;
        begin();
    }
    void begin() {
        prepare();
        guess();
    }
    void at(double t, double v, double current) {
        vr("x1") = v;
        vr("x2") = current;
        accept(t);
    }
};

TEST(loss_meter, has_the_energy_of_a_trapezoid_of_current_at_a_constant_voltage) {
    meter u;
    // 2 V; 0 to 30 A in 1 ms, 30 A for 2 ms, down to 0 in 3 ms: the charge is 15 + 60 + 45 mAs
    u.at(0, 2, 0);
    u.at(1e-3, 2, 30);
    u.at(3e-3, 2, 30);
    u.at(6e-3, 2, 0);
    EXPECT_REL(u.r("e_cond_o"), 2 * 120e-3, 1e-12);
    EXPECT_REL(u.output(6e-3), 2 * 120e-3 / 6e-3, 1e-12);
    EXPECT_EQ(u.r("n_sw_o"), 0);
}

TEST(loss_meter, takes_voltage_and_current_as_straight_lines_between_the_points) {
    meter u;
    u.at(1, 1, 10);
    u.at(1.5, 3, 40);
    // integral of (1 + 4 t)(10 + 60 t) over 0.5 s
    EXPECT_REL(u.r("e_cond_o"), 10 * 0.5 + 100 * 0.125 + 240 * 0.125 / 3, 1e-12);
}

TEST(loss_meter, takes_the_energies_of_switching_from_its_table_at_the_blocked_voltage) {
    meter u;
    double t = 0;
    const auto once = [&](double v, double i_on, double i_off) {
        u.at(t += 1e-3, v, 0);
        u.at(t += 1e-9, 0, i_on);
        u.at(t += 1e-3, 0, i_off);
        u.at(t += 1e-9, v, 0);
    };
    once(600, 15, 30);
    EXPECT_REL(u.r("e_on_o"), 2e-3, 1e-12);
    EXPECT_REL(u.r("e_off_o"), 4e-3, 1e-12);
    once(300, 5, 60);  // half the voltage; from 0 to the first point, and on beyond the last one
    EXPECT_REL(u.r("e_on_o"), 2e-3 + 0.25e-3, 1e-12);
    EXPECT_REL(u.r("e_off_o"), 4e-3 + 3.5e-3, 1e-12);
    EXPECT_EQ(u.r("n_sw_o"), 4);
    EXPECT_EQ(u.r("e_rr_o"), 0);
    EXPECT_NEAR(u.r("e_cond_o"), 0, 1e-12);
    u.r("k_v") = 2;
    u.begin();
    once(300, 20, 20);
    EXPECT_REL(u.r("e_on_o"), 3e-3 / 4, 1e-12);
}

TEST(loss_meter, has_no_energy_where_the_current_goes_through_the_diode_and_that_of_its_recovery_where_it_blocks) {
    meter u;
    u.at(1e-3, 600, 0);
    u.at(1e-3 + 1e-9, -1, -30);  // the load takes the voltage away
    EXPECT_EQ(u.r("e_on_o"), 0);
    u.at(2e-3, -1, -30);
    EXPECT_REL(u.r("e_cond_o"), 30 * 1e-3, 1e-9);
    u.at(2e-3 + 1e-9, 300, 0);
    EXPECT_REL(u.r("e_rr_o"), 1e-3 * 1.5 * 0.5, 1e-12);
    EXPECT_EQ(u.r("e_off_o"), 0);
}

TEST(loss_meter, has_no_energy_of_switching_off_where_the_voltage_rises_without_a_current) {
    meter u;
    u.at(0, 0, 30);
    u.at(1e-6, 5, 0);
    u.at(2e-6, 300, 0);
    EXPECT_EQ(u.r("e_off_o"), 0);
    EXPECT_EQ(u.r("n_sw_o"), 1);
}

TEST(loss_meter, counts_from_its_level_of_voltage_on) {
    meter u;
    u.at(0, 59, 0);  // 0.1 v_ref is 60 V
    u.at(1e-9, 0, 10);
    EXPECT_EQ(u.r("n_sw_o"), 0);
    u.r("v_th") = 50;
    u.begin();
    u.at(0, 59, 0);
    u.at(1e-9, 0, 10);
    EXPECT_EQ(u.r("n_sw_o"), 1);
}

TEST(loss_meter, gives_the_mean_power_of_the_last_whole_span_and_breaks_at_its_ends) {
    meter u;
    u.r("t_avg") = 1e-3;
    u.begin();
    EXPECT_REL(u.next_break(0), 1e-3, 1e-12);
    EXPECT_REL(u.next_break(1e-3), 2e-3, 1e-12);
    EXPECT_REL(u.next_break(1.5e-3), 2e-3, 1e-12);
    u.at(0, 1, 0);
    u.at(0.5e-3, 1, 10);
    EXPECT_EQ(u.output(0.5e-3), 0);
    u.at(1e-3, 1, 10);
    EXPECT_REL(u.output(1e-3), (0.5 * 10 * 0.5e-3 + 10 * 0.5e-3) / 1e-3, 1e-12);
    u.at(1.7e-3, 1, 10);
    EXPECT_REL(u.output(1.7e-3), 7.5, 1e-12);
    u.at(2e-3, 1, 10);
    EXPECT_REL(u.output(2e-3), 10, 1e-12);
}

TEST(loss_meter, takes_back_what_a_repeated_step_has_added) {
    meter u, plain;
    const auto both = [&](double t, double v, double i) {
        u.at(t, v, i);
        plain.at(t, v, i);
    };
    both(0, 600, 0);
    both(1e-6, 0, 20);
    u.at(9e-6, 600, 0);  // a step that is not accepted
    u.at(5e-6, 1, 25);   // nor is this one
    both(3e-6, 1, 20);
    u.at(3e-6, 1, 20);  // the same point once more
    both(4e-6, 600, 0);
    for (const char* word : {"e_cond_o", "e_on_o", "e_off_o", "n_sw_o", "p_o"})
        EXPECT_EQ(u.r(word), plain.r(word)) << word;
}

TEST(loss_meter, begins_anew_with_each_run) {
    meter u;
    u.at(1, 2, 10);
    u.at(3, 2, 10);
    u.at(0, 2, 10);
    EXPECT_EQ(u.r("e_cond_o"), 0);
    u.at(1, 2, 10);
    EXPECT_REL(u.output(1), 20, 1e-12);
}

TEST(loss_meter, is_the_product_in_dc_and_start_up) {
    for (const auto mode : {&block_unit::dc, &block_unit::startup}) {
        meter u;
        u.vr("x1") = 2;
        u.vr("x2") = -3;
        (u.*mode)();
        EXPECT_EQ(u.x.f[0], 6);
        EXPECT_EQ(u.jac.dfdvr[0][0], 3);
        EXPECT_EQ(u.jac.dfdvr[0][1], -2);
        EXPECT_EQ(u.jac.dfdvr[0][2], 1);
    }
}

TEST(loss_meter, refuses_impossible_values) {
    const auto refused = [](const char* word, double value, const std::string& what) {
        meter u;
        if (u.lib.list.iprm.find(u.e, word) >= 0)
            u.i(word) = static_cast<int>(value);
        else
            u.r(word) = value;
        EXPECT_HALT(u.prepare(), "loss_meter.gbe: check " + what + ". Halting...\n");
    };
    refused("n_pts", 0, "n_pts, i1");
    refused("n_pts", 5, "n_pts, i1");
    refused("i1", 0, "n_pts, i1");
    refused("i3", 20, "i1, i2, i3, i4");
    refused("n_pts", 4, "i1, i2, i3, i4");
    refused("v_ref", 0, "v_ref, i_rr");
    refused("i_rr", 0, "v_ref, i_rr");
    refused("t_avg", -1, "t_avg");
}

// ---- thermal chains

TEST(thermal_foster, has_the_rows_of_its_stages) {
    block_unit u("thermal_foster");
    u.r("r1") = 0.5, u.r("tau1") = 2, u.r("r2") = 0.25, u.r("tau2") = 4, u.r("t_amb") = 300;
    u.prepare();
    u.x.vr = {10, 330, 0};
    u.x.aux = {3, 2, 0.5, 0.25, 0};
    u.trns();
    EXPECT_EQ(u.x.f[0], 330 - 300 - 5.75);
    EXPECT_EQ(u.x.f[1], (5.0 - 3) / 2);
    EXPECT_EQ(u.x.f[2], (2.5 - 2) / 4);
    EXPECT_EQ(u.x.f[3], -0.5);  // not in use: fades with its time constant of 1 s
    EXPECT_EQ(u.x.f[4], -0.25);
    u.startup();
    for (std::size_t k = 0; k < 4; ++k) EXPECT_EQ(u.x.f[k + 1], u.x.aux[k]);
    u.r("tau4") = 0;
    EXPECT_HALT(u.prepare(), "thermal_foster.gbe: check tau. Halting...\n");
}

TEST(thermal_cauer, has_the_heat_flows_of_its_nodes) {
    block_unit u("thermal_cauer");
    u.i("n_stages") = 3;
    u.r("r1") = 0.5, u.r("r2") = 0.25, u.r("r3") = 2;
    u.r("c1") = 4, u.r("c2") = 8, u.r("c3") = 16;
    u.r("t_amb") = 300;
    u.prepare();
    u.x.vr = {10, 330, 0};
    u.x.aux = {20, 17, 15, 1, 0};
    u.trns();
    EXPECT_EQ(u.x.f[0], 10);
    EXPECT_EQ(u.x.f[1], (10 - 3 / 0.5) / 4);
    EXPECT_EQ(u.x.f[2], (3 / 0.5 - 2 / 0.25) / 8);
    EXPECT_EQ(u.x.f[3], (2 / 0.25 - 15.0 / 2) / 16);
    EXPECT_EQ(u.x.f[4], -1);
    u.startup();
    for (std::size_t k = 0; k < 4; ++k) EXPECT_EQ(u.x.f[k + 1], u.x.aux[k]);
}

TEST(thermal_cauer, refuses_impossible_values) {
    for (const int n : {0, 5}) {
        block_unit u("thermal_cauer");
        u.i("n_stages") = n;
        EXPECT_HALT(u.prepare(), "thermal_cauer.gbe: check n_stages. Halting...\n");
    }
    for (const char* word : {"r2", "c2"}) {
        block_unit u("thermal_cauer");
        u.r(word) = 0;
        u.prepare();  // the second stage is not in use
        u.i("n_stages") = 2;
        EXPECT_HALT(u.prepare(), "thermal_cauer.gbe: check r, c. Halting...\n");
    }
}

// Impedances at w, rad/s, from a source of x = 1: f = y - Z.
std::complex<double> impedance(ac_block& u, double w) {
    u.vr[0] = 1;
    u.vr[1] = 0;
    u.ac(w);
    return -u.f[0];
}

TEST(thermal_chains, have_the_impedance_of_their_network_in_small_signals) {
    const std::complex<double> jw{0, 3};
    ac_block foster("thermal_foster");
    foster.rparm = {0.5, 0.25, 0, 0, 2, 0.1, 1, 1};
    EXPECT_LT(std::abs(impedance(foster, 3) - (0.5 / (1.0 + jw * 2.0) + 0.25 / (1.0 + jw * 0.1))), 1e-14);
    ac_block cauer("thermal_cauer");
    cauer.iparm[0] = 2;
    cauer.rparm = {0.5, 0.25, 1, 1, 0.2, 4, 1, 1};
    const std::complex<double> second = 1.0 / (jw * 4.0 + 1 / 0.25);
    EXPECT_LT(std::abs(impedance(cauer, 3) - 1.0 / (jw * 0.2 + 1.0 / (0.5 + second))), 1e-14);
}

}  // namespace
