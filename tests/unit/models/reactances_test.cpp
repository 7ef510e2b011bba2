// Capacitors and inductors that are given per unit, by impedance, as a crystal, with a delay or by an angle; sources
// controlled by several quantities or by a slope.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "halt_throws.h"
#include "model_unit.h"

namespace {

const double pi = std::acos(-1.0);
#define EXPECT_REL(a, b, tolerance) EXPECT_NEAR(a, b, std::abs(b) * (tolerance))

using values = std::vector<std::pair<const char*, double>>;
model_unit unit_with(const std::string& name, const values& words) {
    model_unit u(name);
    for (const auto& [word, value] : words) u.r(word) = value;
    u.prepare();
    return u;
}

// Two elements with the same unknowns must do the same in every analysis.
void expect_same_element(model_unit& a, const std::string& name, const values& words) {
    model_unit b = unit_with(name, words);
    std::mt19937 rng(1);
    std::uniform_real_distribution<double> number(-2, 2);
    for (const auto mode : {&flags_class::dc, &flags_class::trns, &flags_class::startup}) {
        for (auto x : {&model_numbers::v, &model_numbers::aux, &model_numbers::auxs, &model_numbers::stparm})
            for (std::size_t k = 0; k < (a.x.*x).size(); ++k) (b.x.*x)[k] = (a.x.*x)[k] = number(rng);
        for (model_unit* u : {&a, &b}) {
            std::fill(u->jac.store.begin(), u->jac.store.end(), 0.0);
            u->call(mode, &flags_class::function, &flags_class::jacobian);
        }
        EXPECT_EQ(a.x.aux, b.x.aux);
        for (std::size_t k = 0; k < a.x.f.size(); ++k) EXPECT_REL(a.x.f[k], b.x.f[k], 1e-15);
        for (std::size_t k = 0; k < a.x.locv.size(); ++k) EXPECT_REL(a.x.locv[k], b.x.locv[k], 1e-15);
        ASSERT_EQ(a.jac.store.size(), b.jac.store.size());
        for (std::size_t k = 0; k < a.jac.store.size(); ++k) EXPECT_REL(a.jac.store[k], b.jac.store[k], 1e-15);
    }
}

TEST(derived_capacitors, are_capacitors_of_what_their_words_give) {
    const auto expect = [](const char* name, const values& words, double farad) {
        model_unit u = unit_with(name, words);
        EXPECT_REL(u.r("c_o"), farad, 1e-15);
        expect_same_element(u, "c", {{"c", u.r("c_o")}});
    };
    expect("c_pu", {{"c_pu", 0.3}, {"z_base", 200}, {"w_base", 377}}, 0.3 / (377 * 200.0));
    expect("c_z", {{"z", 100}, {"f_hz", 1e3}}, 1 / (2 * pi * 1e3 * 100));
    expect("c_crystal", {{"f_s", 1e6}, {"q", 2e4}, {"r_s", 50}}, 1 / (2 * pi * 1e6 * 2e4 * 50));
}

TEST(derived_inductors, are_inductors_of_what_their_words_give) {
    const auto expect = [](const char* name, const values& words, double henry) {
        model_unit u = unit_with(name, words);
        EXPECT_REL(u.r("l_o"), henry, 1e-15);
        expect_same_element(u, "l", {{"l", u.r("l_o")}});
    };
    expect("l_pu", {{"l_pu", 0.3}, {"z_base", 200}, {"w_base", 377}}, 0.3 * 200 / 377);
    expect("l_z", {{"z", 100}, {"f_hz", 1e3}}, 100 / (2 * pi * 1e3));
    expect("l_crystal", {{"f_s", 1e6}, {"q", 2e4}, {"r_s", 50}}, 2e4 * 50 / (2 * pi * 1e6));
}

TEST(derived_reactances, refuse_words_that_give_none) {
    const auto expect = [](const char* name, const values& words, const std::string& text) {
        EXPECT_HALT(unit_with(name, words), text + "\n");
    };
    for (const std::string name : {"c_pu", "l_pu", "c_pu_sync", "l_pu_sync"})
        for (const char* word : {"w_base", "z_base"})
            for (const double x : {0.0, -1.0, static_cast<double>(NAN)})
                expect(name.c_str(), {{word, x}}, name + ".ebe: check w_base, z_base. Halting...");
    for (const std::string name : {"c_z", "l_z"})
        for (const char* word : {"f_hz", "z"})
            expect(name.c_str(), {{word, 0}}, name + ".ebe: check f_hz, z. Halting...");
    for (const std::string name : {"c_crystal", "l_crystal"})
        for (const char* word : {"f_s", "q", "r_s"})
            expect(name.c_str(), {{word, 0}}, name + ".ebe: check f_s, q, r_s. Halting...");
    expect("l_pu", {{"l_pu", 0}}, "l_pu.ebe: l_pu too small!");
    expect("l_pu_sync", {{"l_pu", 0}}, "l_pu_sync.ebe: l_pu too small!");
}

TEST(crystal, has_its_resonance_where_its_words_say) {
    model_unit c = unit_with("c_crystal", {{"f_s", 32768}, {"q", 7e4}, {"r_s", 35e3}}),
               l = unit_with("l_crystal", {{"f_s", 32768}, {"q", 7e4}, {"r_s", 35e3}});
    EXPECT_REL(1 / (2 * pi * std::sqrt(l.r("l_o") * c.r("c_o"))), 32768.0, 1e-14);
    EXPECT_REL(std::sqrt(l.r("l_o") / c.r("c_o")), 7e4 * 35e3, 1e-14);
}

// ---- one of two pairs

TEST(pairs, carry_the_reactance_at_the_chosen_one_and_nothing_at_the_other) {
    for (const int indx : {1, 2}) {
        const std::size_t on = indx == 1 ? 0 : 2, off = 2 - on;
        model_unit c("c_pu_sync"), l("l_pu_sync");
        for (model_unit* u : {&c, &l}) {
            u->x.iparm[0] = indx;
            u->r("w_base") = 2;
            u->prepare();
            u->x.v[on] = 5;
            u->x.v[on + 1] = 2;
            u->x.v[off] = 7;
            u->x.stparm[0] = 0.5;
            u->x.aux[0] = 4;
            u->x.auxs[0] = 3;
            u->trns();
        }
        EXPECT_EQ(c.x.f[4 + on], 1.5);  // 3 V on 0.5 F
        EXPECT_EQ(c.x.f[5 + on], -1.5);
        EXPECT_EQ(c.x.f[4 + off], 0);
        EXPECT_EQ(c.x.f[5 + off], 0);
        EXPECT_EQ(c.x.locv[on], 1.5);
        EXPECT_EQ(c.x.locv[off], 0);
        EXPECT_EQ(l.x.f[on], 4);
        EXPECT_EQ(l.x.f[on + 1], -4);
        EXPECT_EQ(l.x.f[off], 0);
        EXPECT_EQ(l.x.f[4], 6);  // 3 V on 0.5 H
        c.startup();
        EXPECT_EQ(c.x.f[8 + on], 3);
        EXPECT_EQ(c.x.f[9 + on], -3);
        EXPECT_EQ(c.x.f[8 + off], 0);
        EXPECT_EQ(c.x.f[12], 2.5);
        l.startup();
        EXPECT_EQ(l.x.f[5 + on], 3);
        EXPECT_EQ(l.x.f[5 + off], 0);
        EXPECT_EQ(l.x.f[9], 2.5);
        EXPECT_EQ(l.x.aux[0], 3);
        c.call(&flags_class::outvar_prm);
        EXPECT_EQ(c.r("v_o"), 3);
    }
}

TEST(pairs, tell_their_number_if_asked_to_and_refuse_any_but_1_and_2) {
    for (const std::string name : {"c_pu_sync", "l_pu_sync"}) {
        model_unit u(name);
        const auto heard = [&] {
            return run_and_listen([&] {
                       u.flags.flag_debug_int = u.x.iparm[0] == 2;
                       u.flags.one_time_parms = 1;
                       u.call();
                       u.flags.init_flags();
                   })
                .text;
        };
        EXPECT_EQ(heard(), "");
        u.x.iparm[0] = 2;
        EXPECT_EQ(heard(), name + ": indx=2\n");
        u.flags.flag_debug_int = 0;
        for (const int indx : {0, 3, -1}) {
            u.x.iparm[0] = indx;
            EXPECT_HALT(u.prepare(), name + ".ebe: check indx. Halting...\n");
        }
    }
}

// ---- with a delay

TEST(c_delay, keeps_its_charge_until_its_time_and_is_a_capacitor_behind_it) {
    model_unit u = unit_with("c_delay", {{"c", 2}, {"k_scale", 0.5}, {"t_delay", 0.3}});
    u.x.stparm[0] = 3;
    u.x.v = {5, 1, 0};
    for (const double t : {0.0, 0.3, 0.1 + 0.2}) {
        u.flags.time_given = t;
        u.trns();
        EXPECT_EQ(u.x.f[2], 3) << t;
        EXPECT_EQ(u.x.f[3], -3);
        EXPECT_EQ(u.x.locv[0], 3);
        EXPECT_EQ(u.jac.dfdv[2][0], 0);
    }
    u.flags.time_given = 0.3001;
    u.trns();
    EXPECT_EQ(u.x.f[2], 4);
    EXPECT_EQ(u.x.locv[1], -4);
    EXPECT_EQ(u.jac.dfdv[2][0], 1);
}

TEST(c_delay, has_its_time_as_break_and_no_other_one) {
    model_unit u = unit_with("c_delay", {{"t_delay", 0.3}});
    const auto next = [&](double t) {
        u.flags.time_given = t;
        u.flags.time_nextbreak = 9;
        u.call(&flags_class::nexttime);
        return u.flags.time_nextbreak;
    };
    EXPECT_EQ(next(0), 0.3);
    EXPECT_EQ(next(0.2999), 0.3);
    EXPECT_EQ(next(0.3), 9);
    EXPECT_EQ(next(1), 9);
}

TEST(c_delay, is_open_in_a_start_up_before_its_time_and_holds_its_voltage_from_then_on) {
    model_unit u = unit_with("c_delay", {{"t_delay", 0.3}});
    u.x.stparm[0] = 3;
    u.x.v = {5, 1, 0};
    u.x.auxs[0] = 0.25;
    u.flags.time_given = 0;
    u.startup();
    EXPECT_EQ(u.x.f[6], 0.25);
    EXPECT_EQ(u.jac.dfdauxs[6][0], 1);
    EXPECT_EQ(u.jac.dfdv[6][0], 0);
    u.flags.time_given = 0.3;
    u.startup();
    EXPECT_EQ(u.x.f[4], 0.25);
    EXPECT_EQ(u.x.f[6], 1);
    EXPECT_EQ(u.jac.dfdauxs[6][0], 0);
    EXPECT_EQ(u.jac.dfdv[6][1], -1);
}

// ---- by an angle

TEST(l_theta, has_the_flux_of_its_angle_as_state_and_is_a_short_in_dc) {
    model_unit u = unit_with("l_theta", {{"l0", 3}, {"l2", 1}, {"ph", 0.25}});
    u.x.vr[0] = 0.5;
    const double l = 3 + std::cos(1.25);
    u.x.v = {5, 1, 0};
    u.x.aux = {2, 7, 0};
    for (const bool in_time : {false, true}) {
        in_time ? u.trns() : u.dc();
        EXPECT_EQ(u.x.f[0], 2);
        EXPECT_EQ(u.x.f[1], -2);
        EXPECT_EQ(u.x.f[2], 4);
        EXPECT_REL(u.x.f[3], 7 - 2 * l, 1e-15);
    }
    EXPECT_REL(u.jac.dfdvr[3][0], 2 * 2 * std::sin(1.25), 1e-14);
    u.x.stparm[0] = 1.5;
    u.x.auxs = {2, 6, 0};
    u.startup();
    EXPECT_EQ(u.x.f[6], 0.5);
    EXPECT_REL(u.x.f[7], 6 - 2 * l, 1e-15);
    EXPECT_EQ(u.x.aux[0], 2);
    EXPECT_EQ(u.x.aux[1], 6);
    u.call(&flags_class::outvar_prm);
    EXPECT_REL(u.r("l_o"), l, 1e-15);
}

TEST(l_theta, refuses_an_inductance_that_could_vanish) {
    for (const double l2 : {1e-3, -1e-3, 2.0, static_cast<double>(NAN)})
        EXPECT_HALT(unit_with("l_theta", {{"l2", l2}}), "l_theta.ebe: check l0, l2. Halting...\n");
    EXPECT_HALT(unit_with("l_theta", {{"l0", 0}}), "l_theta.ebe: check l0, l2. Halting...\n");
    unit_with("l_theta", {{"l2", -0.999e-3}});
}

// ---- controlled by several

TEST(controlled_by_several, are_the_sums_of_what_they_sense) {
    model_unit e = unit_with("vcvs_2v", {{"k1", 2}, {"k2", -3}});
    e.x.vind = {5, 1, 4, 2, 0};
    model_unit h = unit_with("ccvs_2", {{"rm1", 10}, {"rm2", 0.5}});
    h.x.curind = {0.25, 3, 0};
    for (const auto& [unit, u] : {std::pair{&e, 2.0 * 4 - 3.0 * 2}, std::pair{&h, 4.0}}) {
        unit->x.v = {7, 1, 0};
        unit->x.aux[0] = 0.3;
        unit->x.auxs[0] = 0.4;
        unit->dc();
        EXPECT_EQ(unit->x.f[0], 0.3);
        EXPECT_EQ(unit->x.f[2], 6 - u);
        unit->trns();
        EXPECT_EQ(unit->x.f[2], 6 - u);
        unit->startup();
        EXPECT_EQ(unit->x.f[3], 0.4);
        EXPECT_EQ(unit->x.f[5], 6 - u);
    }
    model_unit f = unit_with("cccs_5", {{"k1", 1}, {"k2", 2}, {"k3", 3}, {"k4", 4}, {"k5", 5}});
    f.x.curind = {1, 10, 100, 1000, 10000, 0};
    f.startup();
    EXPECT_EQ(f.x.f[0], 54321);
    EXPECT_EQ(f.x.f[1], -54321);
}

TEST(ccvs_ddt1, ties_the_slope_of_the_sensed_current_to_its_voltage) {
    model_unit u = unit_with("ccvs_ddt1", {{"k", 0.5}});
    u.x.v = {7, 1, 0};
    u.x.aux = {0.3, 4, 0};
    u.x.curind[0] = 1.5;
    u.trns();
    EXPECT_EQ(u.x.f[0], 0.3);
    EXPECT_EQ(u.x.f[2], 12);  // the slope of ic, A/s
    EXPECT_EQ(u.x.f[3], 2.5);
    u.x.auxs = {0.25, 2, 0};
    u.startup();
    EXPECT_EQ(u.x.f[4], 0.25);
    EXPECT_EQ(u.x.f[6], 6);
    EXPECT_EQ(u.x.f[7], 0.5);
    EXPECT_EQ(u.x.aux[1], 2);
    EXPECT_HALT(unit_with("ccvs_ddt1", {{"k", 0}}), "ccvs_ddt1.ebe: k too small!\n");
}

}  // namespace
