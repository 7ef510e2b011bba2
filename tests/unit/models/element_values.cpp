// Elements against their formulas and published numbers.
#include <gtest/gtest.h>

#include <cmath>

#include "halt_throws.h"
#include "model_unit.h"

namespace {

#define EXPECT_REL(a, b, tolerance) EXPECT_NEAR(a, b, std::abs(b) * (tolerance))

TEST(r, has_the_conductance_of_its_temperature) {
    model_unit u("r");
    u.r("r") = 2;
    u.r("k_scale") = 1000;
    u.r("tc1") = 0.01;
    u.r("tc2") = 1e-4;
    u.r("temp") = 310.15;
    u.prepare();
    EXPECT_REL(u.r("g"), 1 / (2000 * (1 + 0.1 + 0.01)), 1e-15);
    u.x.v = {3, 1, 0};
    u.dc();
    EXPECT_REL(u.x.f[0], 2 * u.r("g"), 1e-15);  // positive: from the first terminal into the element
    EXPECT_EQ(u.x.f[1], -u.x.f[0]);
    u.call(&flags_class::outvar_prm);
    EXPECT_EQ(u.r("v_o"), 2.0);
}

TEST(r, stops_when_it_is_too_small) {
    model_unit u("r");
    u.r("r") = 1e-9;
    EXPECT_HALT(u.prepare(), "r.ebe: r too small!\nr.ebe: r=1e-09\nr.ebe: k_scale=1\n");
    u.r("r") = 1.000001e-9;
    u.prepare();
    ac_unit a("r");
    a.r("r") = 0;
    EXPECT_HALT(a.ac(1), "r.sse: r too small!\n  Halting...\n");
}

TEST(r_pot, divides_at_its_wiper) {
    model_unit u("r_pot");
    u.r("r") = 100;
    u.r("a") = 0.2;
    u.prepare();
    u.x.v = {10, 4, 0, 0};
    u.dc();
    EXPECT_REL(u.x.f[0], 6.0 / 20, 1e-14);
    EXPECT_REL(u.x.f[2], -4.0 / 80, 1e-14);
    EXPECT_REL(u.x.f[1], 4.0 / 80 - 6.0 / 20, 1e-14);
}

TEST(r_pot, keeps_away_from_its_ends) {
    model_unit u("r_pot");
    u.r("a") = 0.9e-6;
    EXPECT_HALT(u.prepare(), "r_pot: a is too small!\n");
    u.r("a") = 1 - 0.9e-6;
    EXPECT_HALT(u.prepare(), "r_pot: a is too large!\n");
    u.r("a") = 1e-6;
    u.prepare();
    u.r("a") = 1 - 1e-6;
    u.prepare();
}

TEST(c, leaves_its_charge_to_the_integrator_and_holds_its_voltage_in_start_up) {
    model_unit u("c");
    u.r("c") = 2e-6;
    u.r("k_scale") = 3;
    u.x.stparm[0] = 0.25;
    u.x.v = {5, 1, 0};
    u.x.auxs[0] = 0.7;
    u.trns();
    EXPECT_EQ(u.x.f[0], 0);
    EXPECT_EQ(u.x.f[1], 0);
    EXPECT_REL(u.x.f[2], 24e-6, 1e-15);
    EXPECT_EQ(u.x.f[3], -u.x.f[2]);
    EXPECT_REL(u.x.locv[0], 24e-6, 1e-15);
    EXPECT_EQ(u.x.locv[1], -u.x.locv[0]);
    u.startup();
    EXPECT_EQ(u.x.f[4], 0.7);
    EXPECT_EQ(u.x.f[5], -0.7);
    EXPECT_EQ(u.x.f[6], 4 - 0.25);
}

TEST(c, does_not_touch_the_charges_that_the_periodic_solver_owns) {
    model_unit u("c");
    u.x.v = {5, 1, 0};
    u.x.locv = {7, 8, 0};
    u.call(&flags_class::trns, &flags_class::ssw, &flags_class::function);
    EXPECT_EQ(u.x.locv, (std::vector<double>{7, 8, 0}));
}

TEST(l, has_its_current_as_state_and_hands_it_over_from_start_up) {
    model_unit u("l");
    u.r("l") = 0.5;
    u.r("k_scale") = 2;
    u.x.stparm[0] = 3;
    u.x.v = {7, 1, 0};
    u.x.aux[0] = 0.4;
    u.trns();
    EXPECT_EQ(u.x.f[0], 0.4);
    EXPECT_EQ(u.x.f[1], -0.4);
    EXPECT_EQ(u.x.f[2], 6.0);  // di/dt
    u.x.auxs[0] = 1.5;
    u.startup();
    EXPECT_EQ(u.x.f[5], -1.5);
    EXPECT_EQ(u.x.aux[0], 1.5);
}

TEST(vsrcdc, ramps_from_zero_to_its_value_but_not_in_start_up) {
    model_unit u("vsrcdc");
    u.r("vdc") = 5;
    u.r("k_scale") = 2;
    u.r("t_ramp_1") = 1;
    u.r("t_ramp_2") = 3;
    u.prepare();
    u.x.v = {4, 1, 0};
    u.x.aux[0] = 0.3;
    u.x.auxs[0] = 0.6;
    const auto value = [&](double t) {
        u.flags.time_given = t;
        u.trns();
        return 3 - u.x.f[2];
    };
    EXPECT_EQ(value(0), 0);
    EXPECT_EQ(value(1), 0);
    EXPECT_EQ(value(1.5), 2.5);
    EXPECT_EQ(value(3), 10);
    EXPECT_EQ(value(9), 10);
    EXPECT_EQ(u.x.f[0], 0.3);
    EXPECT_EQ(u.x.f[1], -0.3);
    u.flags.time_given = 0;
    u.startup();
    EXPECT_EQ(u.x.f[3], 0.6);
    EXPECT_EQ(u.x.f[4], -0.6);
    EXPECT_EQ(u.x.f[5], 3 - 10.0);
    u.r("t_ramp_1") = 4;
    EXPECT_HALT(u.prepare(), "vsrcdc: t_ramp_1 > t_ramp_2? Halting...\n");
}

TEST(vsrcdc, has_its_full_value_from_the_start_without_a_ramp) {
    model_unit u("vsrcdc");
    u.r("vdc") = 5;
    u.prepare();
    u.dc();
    EXPECT_EQ(u.x.f[2], -5);
    u.x.igparm[0] = 2;
    u.call(&flags_class::init_guess);
    EXPECT_EQ(u.x.v[1], 2);
    EXPECT_EQ(u.x.v[0], 7);
}

TEST(isrcac, is_a_sine_about_a_constant) {
    model_unit u("isrcac");
    u.r("idc") = 0.5;
    u.r("a") = 3;
    u.r("k_scale") = 2;
    u.r("f_hz") = 50;
    u.r("phi") = 30;
    u.r("t0") = 0.001;
    u.prepare();
    u.flags.time_given = 0.001;
    u.dc();
    EXPECT_REL(u.x.f[0], 0.5 + 6 * 0.5, 1e-14);
    u.flags.time_given = 0.001 + 1.0 / 150;  // a third of the period on: 30 + 120 degrees
    u.trns();
    EXPECT_REL(u.x.f[0], 0.5 + 6 * 0.5, 1e-12);
    EXPECT_EQ(u.x.f[1], -u.x.f[0]);
}

TEST(controlled_sources, follow_what_they_sense_in_dc_and_start_up) {
    model_unit vcvs("vcvs"), vccs("vccs"), ccvs("ccvs"), cccs("cccs"), ammeter("ammeter");
    vcvs.r("k") = 3;
    vcvs.x.v = {10, 1, 0};
    vcvs.x.vind = {2, 0.5, 0};
    vcvs.x.aux[0] = 0.1;
    vcvs.dc();
    EXPECT_EQ(vcvs.x.f[0], 0.1);
    EXPECT_EQ(vcvs.x.f[2], 9 - 4.5);
    vcvs.startup();
    EXPECT_EQ(vcvs.x.f[5], 9 - 4.5);
    vccs.r("gm") = 2;
    vccs.x.vind = {2, 0.5, 0};
    vccs.dc();
    EXPECT_EQ(vccs.x.f[0], 3);
    EXPECT_EQ(vccs.x.f[1], -3);
    ccvs.r("rm") = 4;
    ccvs.x.v = {10, 1, 0};
    ccvs.x.curind[0] = 0.5;
    ccvs.dc();
    EXPECT_EQ(ccvs.x.f[2], 9 - 2);
    ccvs.startup();
    EXPECT_EQ(ccvs.x.f[5], 9 - 2);
    cccs.r("k") = 5;
    cccs.x.curind[0] = 0.5;
    cccs.startup();
    EXPECT_EQ(cccs.x.f[0], 2.5);
    ammeter.x.v = {3, 1, 0};
    ammeter.x.aux[0] = 0.2;
    ammeter.dc();
    EXPECT_EQ(ammeter.x.f[0], 0.2);
    EXPECT_EQ(ammeter.x.f[2], 2);
}

// ---- switches

TEST(switch_e, keeps_its_state_through_a_transient_step_and_moves_it_at_accepted_points) {
    model_unit u("switch_e");
    u.prepare();
    u.x.v = {1, 0, 0};
    u.x.vind = {1, 0, 0};
    u.trns();
    EXPECT_REL(u.x.f[0], 1e-6, 1e-14);  // still off: 1 V over 1 megohm
    u.call(&flags_class::save_history);
    EXPECT_EQ(u.r("on_o"), 1);
    u.trns();
    EXPECT_REL(u.x.f[0], 100, 1e-14);
    u.x.vind = {0.5, 0, 0};  // not above the threshold
    u.trns();
    EXPECT_REL(u.x.f[0], 100, 1e-14);
    u.call(&flags_class::save_history);
    EXPECT_EQ(u.r("on_o"), 0);
}

TEST(switch_e, follows_its_control_at_once_in_dc_and_start_up) {
    model_unit u("switch_e");
    u.prepare();
    u.x.v = {1, 0, 0};
    u.x.vind = {1, 0, 0};
    u.dc();
    EXPECT_REL(u.x.f[0], 100, 1e-14);
    EXPECT_EQ(u.r("on_o"), 1);
    u.x.vind = {0, 0, 0};
    u.startup();
    EXPECT_REL(u.x.f[0], 1e-6, 1e-14);
    EXPECT_EQ(u.r("on_o"), 0);
    u.r("on_o") = 1;
    u.call(&flags_class::init_guess);
    EXPECT_EQ(u.r("on_o"), 0);
}

TEST(switch_e, when_on_has_two_lines_that_meet_and_blocks_reverse_current) {
    model_unit u("switch_e");
    u.r("v_on") = 0.8;
    u.prepare();
    u.x.vind = {1, 0, 0};
    const auto current = [&](double v) {
        u.x.v = {v, 0, 0};
        u.dc();
        return u.x.f[0];
    };
    EXPECT_REL(current(1), 20, 1e-12);
    const double knee = 0.8 / 0.9999;
    EXPECT_NEAR(current(knee), current(std::nextafter(knee, 0)), 1e-10);
    EXPECT_REL(current(-1), -0.01, 1e-12);  // a ten-thousandth of the conductance
}

TEST(switch_e, refuses_impossible_values) {
    model_unit u("switch_e");
    u.r("v_on") = -1;
    EXPECT_HALT(u.prepare(), "switch_e.ebe: v_on < 0 ?!\n");
    u.r("v_on") = 0;
    u.prepare();
    u.r("r_on") = 0;
    EXPECT_HALT(u.prepare(), "switch_e.ebe: ron  =  0 ?!\n");
}

// ---- diodes

struct point {
    double v, i;
};

TEST(diode, meets_the_operating_point_of_one_volt_and_a_kilohm) {
    model_unit u("diode");
    u.r("is") = 1e-12;
    u.r("vt") = 0.026;
    u.prepare();
    u.x.v = {0.5197360089, 0, 0};
    u.dc();
    EXPECT_REL(u.x.f[0], 4.8026399115e-04, 1e-8);  // ten digits of the voltage leave eight of the current
    EXPECT_REL(u.x.f[0], (1 - 0.5197360089) / 1000, 1e-8);
}

TEST(diode, goes_on_as_the_tangent_above_its_largest_current) {
    model_unit u("diode");
    u.prepare();
    const double is = u.r("is"), vt = u.r("vt"), v_max = vt * std::log(10 / is);
    u.x.v = {v_max + 1, 0, 0};
    u.dc();
    EXPECT_REL(u.x.f[0], 10 + 10 / vt - is, 1e-12);
    EXPECT_REL(u.jac.dfdv[0][0], 10 / vt, 1e-12);
    u.call(&flags_class::init_guess);
    EXPECT_EQ(u.x.v[0], 0.6);
    EXPECT_EQ(u.x.v[1], 0);
}

TEST(diode_r, has_two_lines_equal_at_the_knee) {
    model_unit u("diode_r");
    u.prepare();
    EXPECT_NEAR(u.r("v_knee"), 0.700000007, 5e-16 + 1e-9 * 0.7);
    u.x.v = {0.7920792079, 0, 0};
    u.dc();
    EXPECT_REL(u.x.f[0], 9.2079207921, 1e-8);  // 10 V behind 1 ohm
    const double knee = u.r("v_knee");
    u.x.v = {knee, 0, 0};
    u.dc();
    EXPECT_NEAR(u.x.f[0], knee * 1e-6, 1e-12);
    u.x.v = {-5, 0, 0};
    u.dc();
    EXPECT_REL(u.x.f[0], -5e-6, 1e-14);
}

TEST(diode_r, refuses_resistances_that_are_too_small_or_in_the_wrong_order) {
    for (const auto& [on, off] : {std::pair{0.9e-9, 1e6}, {0.01, 0.9e-9}, {1.0, 1.0}, {2.0, 1.0}}) {
        model_unit u("diode_r");
        u.r("r_on") = on;
        u.r("r_off") = off;
        EXPECT_HALT(u.prepare(), "diode_r: r too small!\n");
    }
}

TEST(diode_spice_1, has_the_published_currents) {
    model_unit u("diode_spice_1");
    u.prepare();
    EXPECT_REL(u.r("vt"), 2.586418638e-02, 1e-9);
    for (const auto& [v, i] :
         {point{0.6, 1.1879745100e-04}, {0.7, 5.6746834471e-03}, {-0.05, -5.8553119e-14}, {-1.0, -1.0100000e-12}}) {
        u.x.v = {v, 0, 0};
        u.dc();
        EXPECT_REL(u.x.f[0], i, v == -0.05 ? 1e-8 : 1e-9) << v;
    }
    for (const auto& [v, g] : {point{0.6, 4.5931254e-03}, {0.7, 2.1940313e-01}}) {
        u.x.v = {v, 0, 0};
        u.dc();
        EXPECT_REL(u.jac.dfdv[0][0], g, 2e-8);
    }
    u.x.v = {0.6928681430, 0, 0};  // 5 V behind 1 k
    u.dc();
    EXPECT_REL(u.x.f[0], 4.3071318570e-03, 1e-8);
}

TEST(diode_spice_1, has_the_published_saturation_current_at_350_kelvin) {
    model_unit u("diode_spice_1");
    u.r("temp") = 350;
    u.prepare();
    EXPECT_REL(u.r("is_t"), 7.1586116556e-12, 1e-9);
    u.r("n_em") = 1.5;
    u.prepare();
    EXPECT_REL(u.r("is_t"), 6.1390208e-12, 1e-8);
}

TEST(diode_spice_1, breaks_down_as_its_formula_says) {
    model_unit u("diode_spice_1");
    u.r("bv") = 5;
    u.prepare();
    u.x.v = {-5.1, 0, 0};
    u.dc();
    EXPECT_REL(u.x.f[0], -7.51085227e-12, 1e-9);
    u.r("ibv") = 1e-3;
    u.r("area") = 2;
    u.prepare();
    u.x.v = {-5, 0, 0};
    u.dc();
    EXPECT_REL(u.x.f[0], -2e-3 - 5e-12, 1e-12);
    u.r("ibv") = 0;
    u.prepare();
    u.dc();
    EXPECT_REL(u.x.f[0], -2 * 1e-14 * 5 / u.r("vt") - 5e-12, 1e-12);
}

TEST(diode_spice_1, has_the_published_charges_and_capacitances) {
    model_unit u("diode_spice_1");
    u.r("cj0") = 1e-12;
    u.prepare();
    struct charge {
        double v, q, c;
    };
    for (const auto& [v, q, c] : {charge{-5, -2.8989794856e-12, 4.0824829046e-13},
                                  {0.4, 4.5080666152e-13, 1.2909944487e-12},
                                  {0.7, 8.9691342135e-13, 1.6970562748e-12}}) {
        u.x.v = {v, 0, 0};
        u.trns();
        EXPECT_REL(u.x.f[2], q, 1e-9);
        EXPECT_EQ(u.x.f[3], -u.x.f[2]);
        EXPECT_REL(u.jac.dfdv[2][0], c, 1e-9);
    }
    u.r("tt") = 1e-9;
    u.r("cj0") = 0;
    u.prepare();
    u.x.v = {0.6, 0, 0};
    u.trns();
    EXPECT_REL(u.x.f[2], 1e-9 * (1.1879745100e-04 - 0.6e-12), 1e-9);
}

TEST(diode_spice_1, multiplies_current_and_charge_by_its_area) {
    model_unit one("diode_spice_1"), three("diode_spice_1");
    for (model_unit* u : {&one, &three}) u->r("cj0") = 1e-12;
    three.r("area") = 3;
    for (model_unit* u : {&one, &three}) {
        u->prepare();
        u->flags.gmin = 0;
        u->x.v = {0.55, 0, 0};
        u->trns();
    }
    EXPECT_REL(three.x.f[0], 3 * one.x.f[0], 1e-14);
    EXPECT_REL(three.x.f[2], 3 * one.x.f[2], 1e-14);
}

TEST(diode_spice_1, takes_its_jacobian_from_differences_if_told_so) {
    model_unit u("diode_spice_1");
    u.r("cj0") = 1e-12;
    u.x.iparm[0] = 1;
    u.prepare();
    u.x.v = {0.6, 0, 0};
    u.trns();
    const double numeric = u.jac.dfdv[0][0], f = u.x.f[0];
    u.x.v = {0.601, 0, 0};
    u.trns();
    EXPECT_REL(numeric, (u.x.f[0] - f) / 0.001, 1e-9);
    EXPECT_REL(numeric, 4.5931254e-03, 0.03);  // a forward difference over 1 mV
    EXPECT_LT(std::abs(numeric / 4.5931254e-03 - 1), 0.03);
    EXPECT_GT(std::abs(numeric / 4.5931254e-03 - 1), 0.01);
}

TEST(diode_spice_1, stops_where_voltages_in_range_give_no_number) {
    model_unit u("diode_spice_1");
    u.r("cj0") = 1e-12;
    u.r("fc") = 3;  // a root of a negative number beyond vj
    u.prepare();
    u.x.v = {2, 0.5, 0};
    EXPECT_HALT(u.dc(), "vd=1.5, Halting...\n");
    model_unit cold("diode_spice_1");
    cold.r("temp") = -300;
    cold.prepare();
    cold.x.v = {1, 0, 0};
    EXPECT_HALT(cold.dc(), "vd=1, Halting...\n");
}

TEST(diode_spice_1, answers_an_iterate_that_ran_away_with_an_infinite_current) {
    for (const double numeric : {0, 1})
        for (const double far : {2e100, 1.49e166, double(INFINITY), double(NAN)})
            for (const double sign : {1, -1}) {
                model_unit u("diode_spice_1");
                u.x.iparm[0] = static_cast<int>(numeric);
                u.r("cj0") = 1e-12;
                u.r("tt") = 1e-9;
                u.prepare();
                u.x.v = {sign * far, 0, 0};
                u.trns();
                EXPECT_EQ(u.x.f[0], std::isnan(far) ? INFINITY : sign * INFINITY) << far;
                EXPECT_EQ(u.x.f[1], -u.x.f[0]);
                EXPECT_EQ(u.x.f[2], 0);
                for (double d : u.jac.store) EXPECT_TRUE(std::isfinite(d));
                EXPECT_GT(u.jac.dfdv[0][0], 0);
            }
    // Within the range, too, where an intermediate leaves it: exp(1000/vt) times a saturation current of 0.
    model_unit none("diode_spice_1");
    none.r("is") = 0;
    none.prepare();
    none.x.v = {1000, 0, 0};
    none.dc();
    EXPECT_EQ(none.x.f[0], INFINITY);
}

TEST(diode_spice_1, has_no_charge_at_any_voltage_without_cj0_and_tt) {
    model_unit u("diode_spice_1");
    u.prepare();
    for (const double v : {0.0, 0.7, -3.0, 1e90, -1e90}) {
        u.x.v = {v, 0, 0};
        u.trns();
        EXPECT_TRUE(std::isfinite(u.x.f[0])) << v;
        EXPECT_EQ(u.x.f[2], 0) << v;
        EXPECT_EQ(u.jac.dfdv[2][0], 0) << v;
    }
    u.r("fc") = 3;  // nor does a parameter of the charge matter then
    u.prepare();
    u.x.v = {2, 0, 0};
    u.trns();
    EXPECT_EQ(u.x.f[2], 0);
}

// i = is (exp(v/(n vt)) - 1) + gmin v - ibv exp(-(bv + v)/(n vt)), times area but for gmin, below 0 V.
TEST(diode_spice_1, has_one_continuous_breakdown_curve_if_told_so) {
    model_unit u("diode_spice_1");
    u.x.iparm[1] = 1;
    u.r("bv") = 5;
    u.r("ibv") = 1e-3;
    u.r("area") = 2;
    u.r("n_em") = 1.5;
    u.prepare();
    const double vte = 1.5 * 1.3806226e-23 * 300.15 / 1.6021918e-19;
    const auto current = [&](double v) {
        u.x.v = {v, 0, 0};
        u.dc();
        return u.x.f[0];
    };
    for (const double v : {-0.01, -0.2, -1.0, -4.0, -4.9, -4.99999, -5.0, -5.00001, -5.1, -5.3})
        EXPECT_REL(current(v), 2e-14 * std::expm1(v / vte) + 1e-12 * v - 2e-3 * std::exp(-(5 + v) / vte), 1e-9) << v;
    EXPECT_REL(current(-5), -2e-3 - 2e-14 - 5e-12, 1e-14);
    // No jump where the printed branches meet, and the derivative is that of the curve.
    for (const double v : {-0.0, -5 * vte, -5.0}) {
        const double below = current(std::nextafter(v, -10) - 1e-12), above = current(v + 1e-12);
        EXPECT_NEAR(below, above, 2e-10 * (std::abs(above) + 1e-10)) << v;
        const double h = 1e-6, slope = (current(v + h) - current(v - h)) / (2 * h);
        current(v);
        EXPECT_REL(u.jac.dfdv[0][0], slope, 1e-6);
    }
    // Forward it is the plain diode.
    model_unit plain("diode_spice_1");
    plain.r("n_em") = 1.5;
    plain.r("area") = 2;
    plain.prepare();
    plain.x.v = {0.7, 0, 0};
    plain.dc();
    EXPECT_EQ(current(0.7), plain.x.f[0]);
    // ibv 0 stands for is bv/vt.
    u.r("ibv") = 0;
    u.prepare();
    EXPECT_REL(current(-5), -2 * 1e-14 * 5 / (vte / 1.5) - 2e-14 - 5e-12, 1e-12);
    // Far below the exponent is a straight line, and differences agree with the formulas.
    EXPECT_TRUE(std::isfinite(current(-1e6)));
    u.x.iparm[0] = 1;
    u.r("ibv") = 1e-3;
    u.prepare();
    current(-5.05);
    const double numeric = u.jac.dfdv[0][0];
    EXPECT_REL(numeric, (current(-5.049) - current(-5.05)) / 1e-3, 1e-9);
}

TEST(diode_spice_1, keeps_its_printed_breakdown_branches_by_default) {
    model_unit u("diode_spice_1");
    EXPECT_EQ(u.x.iparm[1], 0);
    u.r("bv") = 5;
    u.r("ibv") = 1e-3;
    u.prepare();
    const auto current = [&](double v) {
        u.x.v = {v, 0, 0};
        u.dc();
        return u.x.f[0];
    };
    EXPECT_REL(current(-4.999), -1e-14 - 4.999e-12, 1e-12);
    EXPECT_REL(current(-5), -1e-3 - 5e-12, 1e-12);
    EXPECT_REL(current(-5.1), -7.51085227e-12, 1e-9);
}

// ---- numeric Jacobian

void linear_functions(int*, double*, double* v, double* vind, double* curind, double*, double*, double* f, flags_class*,
                      math_cnst_class*) {
    f[0] = 2 * v[0] - 3 * v[1] + 4 * vind[1];
    f[1] = 5 * curind[0] + v[1];
}

TEST(dfdx_e, differs_over_every_group_and_writes_the_listed_rows_only) {
    ebes_class lib;
    lib.list.entry.add("x");
    const auto add = [](word_list& list, std::initializer_list<const char*> names) {
        for (const char* n : names) list.pool.add(n);
        list.close_entry();
    };
    add(lib.list.node, {"p", "n"});
    add(lib.list.ind_node, {"cp", "cn"});
    add(lib.list.ind_branch, {"br"});
    lib.list.close_rows();
    lib.func.first_f = {0, 2};
    ebes1_class jac;
    jac.initialise(lib, 0);
    for (double* d : {jac.delv, jac.delv + 1, jac.delvind, jac.delvind + 1, jac.delcurind}) *d = 0.5;
    double v[] = {1, 2}, vind[] = {3, 4}, curind[] = {5};
    const int all[] = {0, 1}, second[] = {1};
    dfdx_e(linear_functions, nullptr, nullptr, v, vind, curind, nullptr, nullptr, nullptr, nullptr, &jac, 1, second);
    EXPECT_EQ(jac.dfdv[0][0], 0);
    EXPECT_EQ(jac.dfdv[1][1], 1);
    EXPECT_EQ(jac.dfdcurind[1][0], 5);
    dfdx_e(linear_functions, nullptr, nullptr, v, vind, curind, nullptr, nullptr, nullptr, nullptr, &jac, 2, all);
    EXPECT_EQ(jac.dfdv[0][0], 2);
    EXPECT_EQ(jac.dfdv[0][1], -3);
    EXPECT_EQ(jac.dfdvind[0][0], 0);
    EXPECT_EQ(jac.dfdvind[0][1], 4);
    EXPECT_EQ(v[0], 1);
}

// ---- small signals

TEST(small_signal_forms, have_the_admittances_of_their_elements) {
    using number = std::complex<double>;
    const double w = 2 * M_PI * 50;
    ac_unit r("r"), c("c"), l("l"), y("branch_y");
    r.r("r") = 4;
    r.ac(w);
    EXPECT_EQ(r.jac.dfdv[0][0], number(0.25, 0));
    c.r("c") = 2e-6;
    c.ac(w);
    EXPECT_NEAR(std::abs(c.jac.dfdv[0][0] - number(0, w * 2e-6)), 0, 1e-18);
    l.r("l") = 3e-3;
    l.v = {{1, 0}, {0, 0}, {0, 0}};
    l.aux[0] = 1.0 / number(0, w * 3e-3);
    l.ac(w);
    EXPECT_NEAR(std::abs(l.f[2]), 0, 1e-15);
    y.r("g") = 0.1;
    y.r("c") = 1e-3;
    y.ac(w);
    EXPECT_NEAR(std::abs(y.jac.dfdv[1][0] + number(0.1, w * 1e-3)), 0, 1e-16);
}

TEST(small_signal_forms, of_sources_have_amplitude_and_angle) {
    ac_unit v("vsrc_ac"), i("isrc_ac");
    for (ac_unit* u : {&v, &i}) {
        u->r("a_ac") = 2;
        u->r("ph_ac") = 90;
        u->ac(1);
    }
    EXPECT_NEAR(std::abs(v.f[2] + std::complex<double>(0, 2)), 0, 1e-15);
    EXPECT_NEAR(std::abs(i.f[0] - std::complex<double>(0, 2)), 0, 1e-15);
    EXPECT_NEAR(std::abs(i.f[1] + std::complex<double>(0, 2)), 0, 1e-15);
}

TEST(small_signal_forms, of_diodes_take_slope_and_capacitance_from_the_bias_point) {
    model_unit d("diode_spice_1");
    d.r("cj0") = 1e-12;
    d.r("tt") = 1e-9;
    d.prepare();
    d.x.v = {0.6, 0, 0};
    d.dc();
    const double id = d.x.f[0] - 1e-12 * 0.6, w = 1e6;
    ac_unit a("diode_spice_1");
    a.ebe_jac = &d.jac;
    a.ac(w);
    const double g = (id + 1e-14) / d.r("vt");
    EXPECT_REL(a.jac.dfdv[0][0].real(), g + 1e-12, 1e-12);
    EXPECT_REL(a.jac.dfdv[0][0].imag(), w * (1e-12 * (1 - 0.5 * 1.5 + 0.5 * 0.6) / std::pow(0.5, 1.5) + 1e-9 * g),
               1e-9);
    ac_unit r("diode_r");
    r.ebe_jac = &d.jac;
    r.ac(w);
    EXPECT_EQ(r.jac.dfdv[0][0].imag(), 0);
    ac_unit open("diode_r");
    open.ac(w);
    EXPECT_EQ(open.jac.dfdv[0][0], 0.0);
}

}  // namespace
