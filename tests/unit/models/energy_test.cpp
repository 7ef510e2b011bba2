// Solar module and battery: published numbers, limits, derivatives of their own.
#include <gtest/gtest.h>

#include <cmath>

#include "halt_throws.h"
#include "model_unit.h"

namespace {

// Module of 54 cells at 800 W/m^2 and 25 degrees.
model_unit module() {
    model_unit u("solar_module_1b");
    u.r("g") = 800;
    u.prepare();
    return u;
}
double current(model_unit& u, double v) {
    u.x.v = {v + 1, 1, 0};
    u.trns();
    return u.x.f[0];
}

TEST(solar_module_1b, has_the_numbers_of_its_closed_form) {
    model_unit u = module();
    EXPECT_NEAR(u.r("i_ph"), 6.62, 1e-14);
    EXPECT_NEAR(u.r("n_kt"), 1.96362036, 1e-14);
    EXPECT_NEAR(u.r("v_oc"), 29.40470909, 5e-9);
    EXPECT_NEAR(current(u, 0), -6.62, 1e-13);
    EXPECT_NEAR(current(u, 24), -6.19782266, 5e-9);
    EXPECT_NEAR(current(u, u.r("v_oc")), 0, 1e-10);
    EXPECT_GT(current(u, 31), 0);
}

TEST(solar_module_1b, gives_its_data_sheet_at_1000_watt_and_the_reference_temperature) {
    model_unit u("solar_module_1b");
    u.r("ta") = -6.25;  // cells at 25 degrees
    u.prepare();
    EXPECT_NEAR(current(u, 0), -8.2, 1e-13);
    EXPECT_NEAR(current(u, 32.9), 0, 1e-10);
}

TEST(solar_module_1b, has_gmin_across_it_and_goes_on_as_a_tangent_from_exponent_50) {
    model_unit u = module();
    const double i = current(u, -10);
    u.flags.gmin = 0.5;
    EXPECT_NEAR(current(u, -10) - i, -5, 1e-9);
    u.flags.gmin = 0;
    const double w = u.r("n_kt"), at = current(u, 50 * w), slope = (current(u, 60 * w) - at) / (10 * w);
    EXPECT_NEAR((current(u, 1e4) - at) / (1e4 - 50 * w), slope, 1e-9 * slope);
    EXPECT_NEAR(slope, 6.62 * std::exp(50.0) / (w * u.r("e_oc")), 1e-9 * slope);
}

TEST(solar_module_1b, is_first_taken_at_its_open_circuit_voltage) {
    model_unit u = module();
    u.call(&flags_class::init_guess);
    EXPECT_EQ(u.x.v[0], u.r("v_oc"));
    u.r("g") = 0;
    u.prepare();
    u.call(&flags_class::init_guess);
    EXPECT_EQ(u.x.v[0], 0);
}

TEST(solar_module_1b, carries_gmin_alone_in_the_dark) {
    model_unit u("solar_module_1b");
    u.r("g") = 0;
    u.prepare();
    for (const double v : {-3.0, 0.0, 20.0, 40.0}) EXPECT_NEAR(current(u, v), 1e-12 * v, 1e-18);
}

TEST(solar_module_1b, refuses_values_without_a_curve) {
    const auto refuses = [](const char* word, double value, const char* text) {
        model_unit u("solar_module_1b");
        u.r(word) = value;
        EXPECT_HALT(u.prepare(), std::string("solar_module_1b.ebe: ") + text + "\n");
    };
    refuses("isc", 0, "check isc, n_em, n_cells. Halting...");
    refuses("n_em", -1, "check isc, n_em, n_cells. Halting...");
    refuses("n_cells", 0, "check isc, n_em, n_cells. Halting...");
    refuses("g", -1, "check g, ta, voc. Halting...");
    refuses("g", 1e-9, "check g, ta, voc. Halting...");  // the logarithm has taken all of voc
    refuses("voc", 0, "check g, ta, voc. Halting...");
    refuses("ta", -400, "check g, ta, voc. Halting...");
}

TEST(series_resistances, are_resistors_that_refuse_to_vanish) {
    for (const auto& [name, word, text] :
         {std::tuple{"solar_module_rs", "rs", "solar_module_rs.ebe: rs is too small!\n"},
          std::tuple{"battery_r", "r", "battery_r.ebe: r too small!\n"}}) {
        model_unit u(name);
        u.r(word) = 0.25;
        u.prepare();
        EXPECT_EQ(current(u, 3), 12);
        for (const double r : {0.0, 1e-9, -1.0}) {
            u.r(word) = r;
            EXPECT_HALT(u.prepare(), text);
        }
    }
}

TEST(battery_vsrc, has_the_published_curve_of_a_cell_and_charges_what_stands_at_its_side) {
    model_unit u("battery_vsrc");
    u.prepare();
    const auto voltage = [&](double soc) {
        u.x.v = {2, 2, soc + 2, 0};
        u.trns();
        return -u.x.f[3];
    };
    EXPECT_NEAR(voltage(0), 3.685 - 1.031, 1e-14);
    EXPECT_NEAR(voltage(1), 3.685 + 0.2156 - 0.1178 + 0.3201, 1e-14);
    EXPECT_NEAR(voltage(0.1), -1.031 * std::exp(-3.5) + 3.685 + 0.02156 - 0.001178 + 0.0003201, 1e-14);
    EXPECT_TRUE(std::isfinite(voltage(-1e3)));
    u.r("n_ser") = 4;
    EXPECT_NEAR(voltage(0), 4 * 2.654, 1e-13);
    u.x.aux[0] = 3;
    u.trns();
    EXPECT_EQ((std::vector<double>{u.x.f[0], u.x.f[1], u.x.f[2]}), (std::vector<double>{3, 0, -3}));
}

TEST(battery_c, holds_its_state_in_dc_and_start_up_and_moves_in_time_and_small_signals) {
    model_unit u("battery_c");
    u.r("ah") = 2;
    u.r("soc0") = 0.75;
    u.prepare();
    u.x.v = {0.5, 0.25, 0};
    u.x.aux = {3.6, 0.5, 0};
    u.dc();
    EXPECT_EQ(u.x.f[0], 3.6);
    EXPECT_EQ(u.x.f[2], -0.25);
    EXPECT_EQ(u.x.f[3], 0.25);
    u.trns();
    EXPECT_NEAR(u.x.f[2], 0.0005, 1e-18);  // 3.6 A of 7200 A s
    u.call(&flags_class::dc, &flags_class::ac, &flags_class::function, &flags_class::jacobian);
    EXPECT_NEAR(u.x.f[2], 0.0005, 1e-18);
    EXPECT_EQ(u.jac.dfdaux[2][1], 0);
    u.x.auxs = {1, 0.5, 0};
    u.startup();
    EXPECT_EQ(u.x.f[6], -0.25);
    EXPECT_EQ(u.x.f[7], 0.25);
    u.call(&flags_class::init_guess);
    EXPECT_EQ(u.x.aux[1], 0.75);
    EXPECT_EQ(u.x.v[0], 0.75);
    u.r("ah") = 0;
    EXPECT_HALT(u.prepare(), "battery_c.ebe: ah too small!\n");
}

}  // namespace
