// Diodes whose capped exponentials count, the one that limits its voltage, and their series element.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>

#include "halt_throws.h"
#include "model_unit.h"

namespace {

#define EXPECT_REL(a, b, tolerance) EXPECT_NEAR(a, b, std::abs(b) * (tolerance))

constexpr const char* counted[] = {"diode_spice_3", "diode_spice_3a"};

struct diode : model_unit {
    explicit diode(const char* name, const std::map<std::string, double>& parms = {}, int bv_cont = 0)
        : model_unit(name) {
        for (const auto& [word, value] : parms) r(word) = value;
        x.iparm[1] = bv_cont;
        prepare();
    }
    // One pass with derivatives; how many limits it counted.
    int pass(double v, bool first = false) {
        x.v = {v, 0, 0};
        flags.n_limit = 0;
        flags.dc = flags.function = flags.jacobian = 1;
        flags.newton_first = first;
        call();
        const int n = flags.n_limit;
        flags.init_flags();
        return n;
    }
    double unlimited(double v) {
        x.v = {v, 0, 0};
        call(&flags_class::dc, &flags_class::function);
        return x.f[0];
    }
};

TEST(counted_diodes, have_the_published_currents_and_charges) {
    for (const char* name : counted) {
        diode d(name);
        const auto expect = [&](double v, double i, double g) {
            d.pass(v, true);
            EXPECT_REL(d.x.f[0], i, 1e-7);
            EXPECT_EQ(d.x.f[1], -d.x.f[0]);
            if (g != 0) {
                EXPECT_REL(d.jac.dfdv[0][0], g, 1e-7);
            }
        };
        expect(0.6, 1.1879745100e-04, 4.5931254e-03);
        expect(0.7, 5.6746834471e-03, 2.1940313e-01);
        expect(-0.05, -5.8553119e-14, 0);
        expect(-1, -1.0100000e-12, 0);
        diode hot(name, {{"temp", 350}, {"n_em", 1.5}});
        EXPECT_REL(hot.r("is_t"), 6.1390208e-12, 1e-7);
        diode broken(name, {{"bv", 5}});
        broken.pass(-5.1, true);
        EXPECT_REL(broken.x.f[0], -7.51085227e-12, 1e-8);
        diode q(name, {{"cj0", 1e-12}});
        q.pass(-5, true);
        EXPECT_REL(q.x.f[2], -2.8989794856e-12, 1e-10);
        q.pass(0.7, true);
        EXPECT_REL(q.x.f[2], 8.9691342135e-13, 1e-10);
        EXPECT_REL(q.jac.dfdv[2][0], 1.6970562748e-12, 1e-10);
    }
}

// The plain diode's numbers wherever nothing is capped or limited.
TEST(counted_diodes, are_the_plain_diode_below_their_limits) {
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> volt(-8, 0.8);
    for (int trial = 0; trial < 1000; ++trial) {
        const std::map<std::string, double> parms = {
            {"bv", 6}, {"cj0", 1e-12}, {"tt", 1e-9}, {"temp", 250.0 + trial % 150}, {"area", 2}};
        const double v = volt(rng);
        diode plain("diode_spice_1", parms, trial % 2);
        plain.pass(v);
        for (const char* name : counted) {
            diode d(name, parms, trial % 2);
            if (d.pass(v, true) > 0) continue;
            EXPECT_EQ(d.x.f, plain.x.f) << name << ' ' << v;
            EXPECT_EQ(d.jac.store, plain.jac.store) << name << ' ' << v;
        }
    }
}

TEST(counted_diodes, count_an_exponential_beyond_its_limit_on_passes_with_derivatives) {
    for (const char* name : counted) {
        diode d(name, {{"bv", 5}});
        const double edge = d.r("x_max") * d.r("vt");
        EXPECT_EQ(d.pass(0.999 * edge, true), 0);
        EXPECT_EQ(d.pass(1.001 * edge, true), 1);
        EXPECT_EQ(d.pass(-5 - 0.999 * edge, true), 0);
        EXPECT_EQ(d.pass(-5 - 1.001 * edge, true), 1);
        d.flags.n_limit = 7;
        d.unlimited(1.001 * edge);
        EXPECT_EQ(d.flags.n_limit, 7);
    }
}

TEST(counted_diodes, go_on_beyond_the_limit_as_the_tangent_and_as_the_chord) {
    diode tangent("diode_spice_3"), chord("diode_spice_3a");
    const double vt = tangent.r("vt"), cap = tangent.r("x_max"), e = 10 / 1e-14, v = 1.3, gmin = tangent.flags.gmin;
    EXPECT_REL(tangent.unlimited(v), 1e-14 * (e * (1 + v / vt - cap) - 1) + gmin * v, 1e-12);
    EXPECT_REL(chord.unlimited(v), 1e-14 * (e * v / (cap * vt) - 1) + gmin * v, 1e-12);
    // In value the chord joins, in slope it does not.
    chord.pass(cap * vt * (1 - 1e-9), true);
    const double i = chord.x.f[0], g = chord.jac.dfdv[0][0];
    chord.pass(cap * vt * (1 + 1e-9), true);
    EXPECT_REL(chord.x.f[0], i, 1e-7);
    EXPECT_REL(chord.jac.dfdv[0][0], g / cap, 1e-6);
}

TEST(counted_diodes, stop_where_voltages_in_range_give_no_number_and_answer_what_ran_away) {
    for (const char* name : counted) {
        diode d(name, {{"m", 1}, {"cj0", 1e-12}});
        d.x.v = {-1, 0, 0};
        EXPECT_HALT(d.dc(), "vd=-1, Halting...\n");
        diode far(name);
        far.x.v = {1e101, 0, 0};
        far.dc();
        EXPECT_TRUE(std::isinf(far.x.f[0]));
        far.x.v = {-1e101, 0, 0};
        far.dc();
        EXPECT_TRUE(std::isinf(far.x.f[0]) && far.x.f[0] < 0);
        EXPECT_EQ(far.jac.dfdv[0][0], 1);
    }
}

TEST(counted_diodes, have_numbers_at_any_voltage_up_to_a_million_volt) {
    for (const char* name : counted)
        for (const int bv_cont : {0, 1}) {
            diode d(name, {{"bv", 50}, {"cj0", 1e-12}, {"tt", 1e-9}}, bv_cont);
            for (const double from : {0.0, 0.6, -1e6, 1e6})
                for (const double v : {-1e6, -51.0, -50.0, -1.0, 0.0, 0.8, 1e6}) {
                    d.pass(from, true);
                    d.pass(v);
                    for (const double f : d.x.f) EXPECT_TRUE(std::isfinite(f)) << from << ' ' << v;
                    for (const double g : d.jac.store) EXPECT_TRUE(std::isfinite(g)) << from << ' ' << v;
                }
        }
}

// ---- limiting

TEST(diode_spice_3a, limits_against_the_last_pass_with_derivatives_and_goes_on_in_a_straight_line) {
    diode d("diode_spice_3a", {{"cj0", 1e-12}, {"tt", 1e-9}});
    const double vt = d.r("vt"), v_crit = vt * std::log(vt / (std::sqrt(2.0) * 1e-14));
    EXPECT_REL(d.r("v_crit"), v_crit, 1e-14);
    EXPECT_EQ(d.pass(0.7, true), 0);
    EXPECT_EQ(d.pass(5), 1);
    const double vl = 0.7 + vt * (std::log(4.3 / vt - 2) + 2);
    EXPECT_REL(d.r("v_last"), vl, 1e-14);
    const std::vector<double> f = d.x.f;
    const double g = d.jac.dfdv[0][0], cap = d.jac.dfdv[2][0];
    diode at("diode_spice_1", {{"cj0", 1e-12}, {"tt", 1e-9}});
    at.pass(vl);
    EXPECT_REL(g, at.jac.dfdv[0][0], 1e-13);
    EXPECT_REL(cap, at.jac.dfdv[2][0], 1e-13);
    EXPECT_REL(f[0], at.x.f[0] + g * (5 - vl), 1e-13);
    EXPECT_EQ(f[1], -f[0]);
    EXPECT_REL(f[2], at.x.f[2] + cap * (5 - vl), 1e-13);
    // The next one is limited against the limited one; now the exponential is capped as well.
    EXPECT_EQ(d.pass(5), 2);
    EXPECT_GT(d.r("v_last"), vl);
    // Backwards: not below -v_last - 1, then not below 2 v_last - 1.
    d.pass(0.7, true);
    EXPECT_EQ(d.pass(-20), 1);
    EXPECT_DOUBLE_EQ(d.r("v_last"), -1.7);
    EXPECT_EQ(d.pass(-20), 1);
    EXPECT_DOUBLE_EQ(d.r("v_last"), 2 * -1.7 - 1);
}

TEST(diode_spice_3a, limits_breakdown_by_what_is_beyond_it) {
    diode d("diode_spice_3a", {{"bv", 5}});
    const double vt = d.r("vt"), v_crit = d.r("v_crit");
    EXPECT_GT(3, v_crit);
    d.pass(-5.7, true);
    EXPECT_EQ(d.pass(-8), 1);
    EXPECT_DOUBLE_EQ(d.r("v_last"), -5 - (0.7 + vt * (std::log(2.3 / vt - 2) + 2)));
}

TEST(diode_spice_3a, begins_each_solve_anew_and_limits_nothing_without_derivatives_or_at_a_bias_point) {
    diode d("diode_spice_3a");
    d.pass(0.7, true);
    const double free = d.unlimited(0.85);
    EXPECT_EQ(d.r("v_last"), 0.7);
    EXPECT_EQ(d.pass(0.85), 1);
    EXPECT_NE(d.x.f[0], free);
    EXPECT_EQ(d.pass(0.85, true), 0);
    EXPECT_EQ(d.x.f[0], free);
    EXPECT_EQ(d.r("v_last"), 0.85);
    d.x.v = {0.2, 0, 0};
    d.call(&flags_class::dc, &flags_class::ac, &flags_class::function, &flags_class::jacobian);
    EXPECT_EQ(d.r("v_last"), 0.85);
    d.call(&flags_class::init_guess);
    EXPECT_EQ(d.r("has_last"), 0);
    EXPECT_EQ(d.pass(0.95), 1);  // the cap alone
    EXPECT_EQ(d.r("v_last"), 0.95);
}

// Newton for 1 kilohm and 5 V, from any first guess. A point counts as found when nothing was limited.
TEST(diode_spice_3a, ends_at_the_point_of_the_diode_without_limits) {
    for (const char* name : {"diode_spice_1", "diode_spice_3", "diode_spice_3a"})
        for (const double start : {-30.0, -1.0, 0.0, 0.6, 0.75, 5.0, 40.0}) {
            diode d(name);
            double v = start;
            int n = 0, limits = 1;
            for (double step = 1; (std::abs(step) > 1e-13 || limits > 0) && n < 200; ++n) {
                limits = d.pass(v, n == 0);
                step = (d.x.f[0] - (5 - v) / 1e3) / (d.jac.dfdv[0][0] + 1e-3);
                v -= step;
            }
            EXPECT_LT(n, 200) << name << " from " << start;
            EXPECT_NEAR(v, 0.6928681430, 1e-9) << name << " from " << start;
            EXPECT_REL(d.x.f[0], 4.3071318570e-03, 1e-9) << name << " from " << start;
        }
}

TEST(diode_spice_3a, takes_fewer_passes_than_the_plain_diode) {
    const auto passes = [](const char* name) {
        diode d(name);
        double v = 0;
        int n = 0;
        for (double step = 1; std::abs(step) > 1e-12; ++n) {
            d.pass(v, n == 0);
            step = (d.x.f[0] - (5 - v) / 1e3) / (d.jac.dfdv[0][0] + 1e-3);
            v -= step;
        }
        return n;
    };
    EXPECT_LT(passes("diode_spice_3a"), passes("diode_spice_1"));
}

// A current above i_max: the iterates go on counting, for ever.
TEST(counted_diodes, count_at_an_operating_point_above_the_largest_current) {
    for (const char* name : counted) {
        diode d(name, {{"i_max", 1e-3}});
        double v = 0.6;
        int limits = 0;
        for (int n = 0; n < 100; ++n) {
            limits = d.pass(v, n == 0);
            v -= (d.x.f[0] - (5 - v) / 1e3) / (d.jac.dfdv[0][0] + 1e-3);
        }
        EXPECT_GT(limits, 0);
    }
}

TEST(diode_spice_3a, tells_its_voltages_when_it_is_asked) {
    diode d("diode_spice_3a", {{"bv", 5}});
    d.pass(0.7, true);
    const auto heard = [&](double v) {
        return run_and_listen([&] {
                   d.flags.flag_debug_int = 1;
                   d.pass(v);
                   d.flags.flag_debug_int = 0;
               })
            .text;
    };
    const std::string v_crit = line(d.r("v_crit")), vte = line(d.r("vt"));
    std::string text = heard(5);
    EXPECT_EQ(text, "diode_spice_3a.ebe: vd (fwd) before limiting: 5, vd_old=0.7, vte_tmpr=" + vte + ", vcrit_tmpr=" +
                        v_crit + "\ndiode_spice_3a.ebe: vd (fwd) after limiting: " + line(d.r("v_last")) +
                        "\ndiode_spice_3a.ebe: cd=" + line(d.x.f[0]) + ", gd=" + line(d.jac.dfdv[0][0]) + "\n");
    const std::string last = line(d.r("v_last"));
    text = heard(-7);
    EXPECT_EQ(text, "diode_spice_3a.ebe: vd (reverse) before limiting: -7, vd_old=" + last + ", vte_tmpr=" + vte +
                        ", vcrit_tmpr=" + v_crit + "\ndiode_spice_3a.ebe: cd=" + line(d.x.f[0]) +
                        ", gd=" + line(d.jac.dfdv[0][0]) + "\n");
    EXPECT_EQ(run_and_listen([&] { d.pass(0.3); }).text, "");
}

// ---- the series element

TEST(diode_r_spice_3, is_the_diode_of_two_lines_under_a_name_of_its_own) {
    model_unit u("diode_r_spice_3"), plain("diode_r");
    for (model_unit* d : {&u, &plain}) d->prepare();
    EXPECT_REL(u.r("v_knee"), 0.700000007, 1e-9);
    for (const double v : {-3.0, 0.5, 0.70000001, 2.0}) {
        for (model_unit* d : {&u, &plain}) {
            d->x.v = {v, 0, 0};
            d->dc();
        }
        EXPECT_EQ(u.x.f, plain.x.f);
        EXPECT_EQ(u.jac.store, plain.jac.store);
    }
    u.r("r_on") = 0.9e-9;
    EXPECT_HALT(u.prepare(), "diode_r_spice_3: r too small!\n");
}

}  // namespace
