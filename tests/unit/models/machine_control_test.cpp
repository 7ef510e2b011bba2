// Blocks of machine control against their formulas and the published table of direct torque control.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>

#include "block_unit.h"
#include "halt_throws.h"
#include "models/direct_torque.h"

namespace {

constexpr double pi = std::numbers::pi;

TEST(torque1, is_the_difference_of_two_products) {
    block_unit u("torque1");
    u.r("k") = 3;
    for (const auto& [word, value] : {std::pair{"a", 0.7}, {"b", -0.2}, {"x", 11.0}, {"y", 4.0}}) u.vr(word) = value;
    u.trns();
    EXPECT_NEAR(-u.x.f[0], 3 * (0.7 * 11 + 0.2 * 4), 1e-12);
    u.vr("te") = 25.5;
    u.trns();
    EXPECT_NEAR(u.x.f[0], 0, 1e-12);
}

TEST(eff_d, is_the_voltage_of_the_leakage_inductance) {
    block_unit u("eff_d");
    u.r("sigma") = 0.06;
    u.r("ls") = 0.071;
    u.r("poles") = 4;
    u.prepare();
    u.vr("w") = 300;
    u.vr("i") = -12;
    EXPECT_NEAR(u.output(0), 0.06 * 0.071 / 2 * 300 * -12, 1e-12);
    u.r("poles") = 0;
    EXPECT_HALT(u.prepare(), "eff_d.gbe: check poles. Halting...\n");
}

TEST(slip, adds_the_slip_to_the_speed_and_is_1_without_a_field) {
    block_unit u("slip");
    u.i("poles") = 6;
    u.r("tau_r") = 0.2;
    u.prepare();
    u.vr("x") = 4;
    u.vr("wm") = 50;
    for (const double field : {2.0, -0.5, 0.01}) {
        u.vr("f_r") = field;
        EXPECT_NEAR(u.output(0), 4 / (0.2 * field) + 150, 1e-9) << field;
    }
    u.vr("f_r") = 0.00999;
    EXPECT_NEAR(u.output(0), 151, 1e-12);
    u.r("tau_r") = 0;
    EXPECT_HALT(u.prepare(), "slip.gbe: check tau_r. Halting...\n");
}

// The rotor of 4 poles stands an eighth of a turn behind, so that the voltage of its field is that of the bus; then
// it runs ahead.
TEST(syncmc_delta, is_how_far_the_field_is_ahead_of_the_bus_without_whole_turns) {
    block_unit u("syncmc_delta");
    u.r("poles") = 4;
    u.r("phi") = 90;
    u.r("t0") = 1e-3;
    u.prepare();
    for (const double ahead : {0.0, 0.3, -2.9, 3.1})
        for (const double t : {0.0, 1e-3, 0.777, 30.0}) {
            u.vr("th") = -pi / 4 + (100 * pi * (t - 1e-3) + ahead) / 2;
            EXPECT_NEAR(u.output(t), ahead, 1e-9);
            u.vr("th") += 6 * pi;
            EXPECT_NEAR(u.output(t), ahead, 1e-9);
        }
    u.r("k") = 180 / pi;
    u.vr("th") = -pi / 4 + 0.1;
    EXPECT_NEAR(u.output(1e-3), 0.2 * 180 / pi, 1e-9);
    EXPECT_HALT(u.dc(), "syncmc_delta: dc not implemented\n");
}

// ---- flux and torque from voltages and currents ----

// A flux psi exp(j w t) at rest needs the voltage rs i + j w psi.
TEST(calculator_1, has_the_slopes_of_a_flux_that_turns_its_size_angle_and_torque) {
    block_unit u("calculator_1");
    u.r("rs") = 0.4;
    u.r("poles") = 6;
    u.prepare();
    const double psi = 0.9, w = 250, i_al = 7, i_be = -3;
    for (const double th : {-3.0, -1.0, 0.2, 2.5}) {
        const double f_al = psi * std::cos(th), f_be = psi * std::sin(th), te = 4.5 * (f_al * i_be - f_be * i_al);
        u.vr("u_al") = 0.4 * i_al - w * f_be;
        u.vr("u_be") = 0.4 * i_be + w * f_al;
        u.vr("i_al") = i_al;
        u.vr("i_be") = i_be;
        u.vr("f_al") = f_al;
        u.vr("f_be") = f_be;
        u.vr("f_m") = u.vr("th") = u.vr("te") = 0;
        u.trns();
        EXPECT_NEAR(u.x.f[0], -w * f_be, 1e-10);
        EXPECT_NEAR(u.x.f[1], w * f_al, 1e-10);
        EXPECT_NEAR(-u.x.f[2], psi, 1e-12);
        EXPECT_NEAR(-u.x.f[3], th, 1e-12);
        EXPECT_NEAR(-u.x.f[4], te, 1e-10);
    }
}

// The same flux seen from the rotor: it stands, and the voltages are those of the steady state.
TEST(calculator_2, has_the_slopes_of_the_same_flux_in_the_frame_of_the_rotor) {
    block_unit u("calculator_2");
    u.r("rs") = 0.4;
    u.r("poles") = 6;
    u.prepare();
    const double f_d = 0.5, f_q = -0.3, i_d = -2, i_q = 9, w = 250;
    for (const auto& [word, value] : {std::pair{"u_d", 0.4 * i_d - w * f_q},
                                      {"u_q", 0.4 * i_q + w * f_d},
                                      {"i_d", i_d},
                                      {"i_q", i_q},
                                      {"w", w},
                                      {"f_d", f_d},
                                      {"f_q", f_q}})
        u.vr(word) = value;
    u.trns();
    EXPECT_NEAR(u.x.f[0], 0, 1e-10);
    EXPECT_NEAR(u.x.f[1], 0, 1e-10);
    EXPECT_NEAR(-u.x.f[4], 4.5 * (f_d * i_q - f_q * i_d), 1e-10);
    u.vr("u_d") += 5;
    u.vr("u_q") -= 3;
    u.trns();
    EXPECT_NEAR(u.x.f[0], 5, 1e-10);
    EXPECT_NEAR(u.x.f[1], -3, 1e-10);
}

TEST(calculators, hold_their_flux_in_start_up_and_refuse_dc) {
    for (const std::string name : {"calculator_1", "calculator_2"}) {
        const bool turns = name == "calculator_2";
        const char* d = turns ? "f_d" : "f_al";
        block_unit u(name);
        u.prepare();
        u.st(turns ? "f_d0" : "f_al0") = 0.3;
        u.vr(d) = 1;
        u.vr(turns ? "u_d" : "u_al") = 77;
        u.startup();
        EXPECT_NEAR(u.x.f[0], 0.7, 1e-12) << name;
        EXPECT_EQ(u.jac.dfdvr[0][0], 0) << name;
        EXPECT_HALT(u.dc(), name + ": dc not implemented. Halting...\n");
        u.vr(d) = 0;  // no flux has no direction
        u.trns();
        for (const double row : u.x.f) EXPECT_TRUE(std::isfinite(row));
    }
}

// ---- direct torque control ----

// Takahashi and Noguchi 1986, table I: rows flux 1 and 0 with torque 1, 0, -1; columns sectors 1 to 6.
constexpr int published[6][6] = {{2, 3, 4, 5, 6, 1}, {7, 0, 7, 0, 7, 0}, {6, 1, 2, 3, 4, 5},
                                 {3, 4, 5, 6, 1, 2}, {0, 7, 0, 7, 0, 7}, {5, 6, 1, 2, 3, 4}};

TEST(user_f_dtc_1, is_the_published_table) {
    for (int row = 0; row < 6; ++row)
        for (int sector = 1; sector <= 6; ++sector)
            EXPECT_EQ(user_f_dtc_1(row < 3 ? 1 : 0, 1 - row % 3, sector), published[row][sector - 1]);
}

// Between a vector and the one without voltage that may follow it one leg switches.
TEST(user_f_dtc_1, takes_the_vector_without_voltage_that_is_one_leg_away) {
    for (const int flux : {0, 1})
        for (const int torque : {-1, 1})
            for (int sector = 1; sector <= 6; ++sector) {
                const int v = user_f_dtc_1(flux, torque, sector), none = user_f_dtc_1(flux, 0, sector);
                int n = 0;
                for (const int leg : {0, 1, 2}) n += leg_is_high(v, leg) != leg_is_high(none, leg);
                EXPECT_EQ(n, 1) << flux << torque << sector;
            }
}

// A second reason: along the flux the vector raises it or lowers it, across it the torque.
TEST(user_f_dtc_1, moves_flux_and_torque_where_their_levels_want_them) {
    for (double th = -10.05; th < 10; th += 0.1) {
        const int sector = flux_sector(th);
        EXPECT_LE(std::fabs(std::remainder(th - (sector - 1) * pi / 3, 2 * pi)), pi / 6 + 1e-9);
        for (const int flux : {0, 1})
            for (const int torque : {-1, 1}) {
                const int v = user_f_dtc_1(flux, torque, sector);
                const double a = leg_is_high(v, 0), b = leg_is_high(v, 1), c = leg_is_high(v, 2);
                const double alpha = (2 * a - b - c) / 3, beta = (b - c) / std::sqrt(3);
                const double along = alpha * std::cos(th) + beta * std::sin(th);
                const double across = beta * std::cos(th) - alpha * std::sin(th);
                EXPECT_GE(flux == 1 ? along : -along, -1e-9) << th;
                EXPECT_GT(torque * across, 0.3) << th;
            }
    }
}

TEST(flux_sector, is_one_of_six_whatever_the_angle) {
    for (const double th : {1e300, -1e300, 1e18, HUGE_VAL, -HUGE_VAL, std::nan("")}) {
        EXPECT_GE(flux_sector(th), 1) << th;
        EXPECT_LE(flux_sector(th), 6) << th;
    }
    for (int k = -20; k < 20; ++k) EXPECT_EQ(flux_sector(k * pi / 3 + 0.4), 1 + ((k % 6) + 6) % 6) << k;
}

// The gates of a unit at a point of a transient, as the number of the voltage vector.
int vector_of(block_unit& u) {
    for (const char* gate : {"ga", "gb", "gc"}) u.vr(gate) = 0;
    u.trns();
    constexpr int number[2][2][2] = {{{0, 5}, {3, 4}}, {{1, 6}, {2, 7}}};
    const auto high = [&](int k) {
        EXPECT_TRUE(u.x.f[static_cast<std::size_t>(k)] == 0 || u.x.f[static_cast<std::size_t>(k)] == -1);
        return u.x.f[static_cast<std::size_t>(k)] < -0.5;
    };
    return number[high(0)][high(1)][high(2)];
}
block_unit controlled(const std::string& name) {
    block_unit u(name);
    if (name != "dtc_4") {
        u.r("band_f") = 0.02;
        u.r("band_t") = 1;
        u.vr("f_ref") = 1;
        u.vr("f_m") = 1;
    }
    u.prepare();
    u.guess();
    return u;
}
// The vector behind an accepted point with these errors of flux and torque in the first sector.
int after(block_unit& u, double flux_error, double torque_error) {
    u.vr("f_m") = 1 - flux_error;
    u.vr("te") = -torque_error;
    const int before = u.r("vector_o") < 0 ? -1 : vector_of(u);
    u.accept(0);
    EXPECT_EQ(u.flags.event, vector_of(u) != before) << flux_error << ' ' << torque_error;
    u.flags.forget_events();
    return vector_of(u);
}

TEST(dtc_2, compares_flux_and_torque_with_bands_and_a_middle_level) {
    for (const char* name : {"dtc_2", "dtc_3"}) {
        SCOPED_TRACE(name);
        block_unit u = controlled(name);
        EXPECT_EQ(after(u, 0.01, 0.5), 7) << "within both bands: flux up, torque held";
        EXPECT_EQ(after(u, 0.01, 1.1), 2);
        EXPECT_EQ(after(u, -0.01, 0.1), 2) << "until the torque has come to its reference";
        EXPECT_EQ(after(u, -0.01, -0.1), 7);
        EXPECT_EQ(after(u, -0.021, -0.9), 0) << "too much flux: down, held";
        EXPECT_EQ(after(u, 0.01, -1.1), 5);
        EXPECT_EQ(after(u, 0.01, -0.1), 5);
        EXPECT_EQ(after(u, 0.01, 0.1), 0);
        EXPECT_EQ(after(u, 0.01, 5), 3);
        EXPECT_EQ(after(u, 0.021, -5), 6) << "from one side to the other";
    }
}

TEST(dtc_1, has_no_middle_level) {
    block_unit u = controlled("dtc_1");
    EXPECT_EQ(after(u, 0, 0), 2);
    EXPECT_EQ(after(u, 0, -0.9), 2);
    EXPECT_EQ(after(u, 0, -1.1), 6);
    EXPECT_EQ(after(u, -0.03, 0.9), 5);
    EXPECT_EQ(after(u, -0.01, 1.1), 3);
}

TEST(dtc_4, takes_its_levels_from_inputs) {
    block_unit u = controlled("dtc_4");
    for (int row = 0; row < 6; ++row)
        for (int sector = 1; sector <= 6; ++sector) {
            u.vr("d_f") = row < 3 ? 0.8 : 0.3;
            u.vr("d_t") = 1.3 * (1 - row % 3);
            u.vr("th") = (sector - 1) * pi / 3 + 0.5;
            u.accept(0);
            EXPECT_EQ(vector_of(u), published[row][sector - 1]);
        }
    u.dc();  // has an answer there
}

TEST(direct_torque, holds_its_vector_between_accepted_points) {
    block_unit u = controlled("dtc_2");
    u.vr("th") = pi / 3;
    EXPECT_EQ(vector_of(u), 0) << "before the first point: as the levels at the beginning and the angle say";
    EXPECT_EQ(after(u, 0.03, 3), 3);
    u.vr("th") = 3 * pi / 3;
    u.vr("te") = 9;
    for (int trial = 0; trial < 3; ++trial) EXPECT_EQ(vector_of(u), 3);
    u.guess();
    EXPECT_EQ(u.r("vector_o"), -1);
}

TEST(direct_torque, gives_the_levels_that_gates_have) {
    block_unit u = controlled("dtc_2");
    u.r("x_low") = -8;
    u.r("x_high") = 15;
    u.prepare();
    u.vr("te_ref") = 5;
    u.accept(0);  // vector 2: a and b
    u.trns();
    EXPECT_EQ(u.x.f[0], -15);
    EXPECT_EQ(u.x.f[1], -15);
    EXPECT_EQ(u.x.f[2], 8);
}

TEST(direct_torque, refuses_dc_and_values_without_sense) {
    for (const std::string name : {"dtc_1", "dtc_2", "dtc_3"}) {
        block_unit u = controlled(name);
        EXPECT_HALT(u.dc(), name + ": DC not implemented. Halting..\n");
        u.r("band_t") = -1;
        EXPECT_HALT(u.prepare(), name + ".gbe: check band_f, band_t. Halting...\n");
        block_unit levels(name);
        levels.r("x_low") = 1;
        EXPECT_HALT(levels.prepare(), name + ".gbe: check x_low/x_high. Halting...\n");
    }
    for (const int wrong : {-1, 2}) {
        block_unit u("dtc_3");
        u.i("i_f0") = wrong;
        EXPECT_HALT(u.prepare(), "dtc_3: i_f0 is out of range. i_f0=" + std::to_string(wrong) + "\n");
    }
    for (const int wrong : {-2, 2}) {
        block_unit u("dtc_3");
        u.i("i_t0") = wrong;
        EXPECT_HALT(u.prepare(), "dtc_3: i_t0 is out of range. i_t0=" + std::to_string(wrong) + "\n");
    }
}

TEST(dtc_3, begins_with_the_levels_that_it_is_given) {
    for (const int flux : {0, 1})
        for (const int torque : {-1, 0, 1}) {
            block_unit u("dtc_3");
            u.i("i_f0") = flux;
            u.i("i_t0") = torque;
            u.prepare();
            u.guess();
            u.vr("te") = -0.1 * torque;  // an error within the band, of the side that the level comes from
            EXPECT_EQ(vector_of(u), published[(flux ? 0 : 3) + 1 - torque][0]);
        }
}

}  // namespace
