// The bipolar transistor against its closed form, its own differences and what must hold at any voltage.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <random>

#include "halt_throws.h"
#include "model_unit.h"
#include "models/gummel_poon.h"

namespace {

#define EXPECT_REL(a, b, tolerance) EXPECT_NEAR(a, b, std::abs(b) * (tolerance))

enum { c, b, e, s };

struct transistor : model_unit {
    explicit transistor(const char* name, const std::map<std::string, double>& parms = {}, int pol = 1)
        : model_unit(name) {
        for (const auto& [word, value] : parms) r(word) = value;
        x.iparm[1] = pol;
        prepare();
    }
    // Emitter and substrate at 0 V, without gmin.
    void at(double vbe, double vbc) {
        x.v = {vbe - vbc, vbe, 0, 0, 0};
        flags.gmin = 0;
        dc();
    }
    double f(int j) const { return x.f[static_cast<std::size_t>(j)]; }
};

constexpr const char* both[] = {"bjt_spice_5", "bjt_spice_6"};

// Closed form, with vt = 1.3806226e-23 300.15 / 1.6021918e-19 V and without gmin.
TEST(bipolar, has_the_currents_of_the_ideal_transistor) {
    for (const char* name : both) {
        transistor q(name);
        q.at(0.7, -4.3);
        EXPECT_REL(q.f(c), 5.6746834464e-05, 1e-9);
        EXPECT_REL(q.f(b), 5.6746834454e-07, 1e-9);
        EXPECT_EQ(q.f(e), -(q.f(c) + q.f(b) + q.f(s)));
        EXPECT_EQ(q.f(s), 0);
    }
}

TEST(bipolar, has_the_currents_of_early_effect_high_injection_and_leakage) {
    const struct {
        double vbe, vbc, ic, ib, qb;
    } points[] = {{0.7, -4.3, 6.1281261764e-05, 5.7500138402e-07, 0.92600630},
                  {0.8, -1.2, 2.2717388375e-03, 2.7158733522e-05, 1.19321240},
                  {0.75, 0.6, 3.7106493471e-04, 5.1297904010e-06, 1.05039665}};
    for (const char* name : both)
        for (const auto& p : points) {
            transistor q(name, {{"vaf", 50}, {"ikf", 0.01}, {"ise", 1e-14}, {"ne", 2}});
            q.at(p.vbe, p.vbc);
            EXPECT_REL(q.f(c), p.ic, 1e-9);
            EXPECT_REL(q.f(b), p.ib, 1e-9);
            const double vt = q.r("vt"), i_f = 1e-16 * std::expm1(p.vbe / vt), i_r = 1e-16 * std::expm1(p.vbc / vt);
            EXPECT_REL((i_f - i_r) / (q.f(c) + i_r), p.qb, 1e-8);  // br is 1
        }
}

// The operating point of 10 V, 430 kilohm to the base and 1 kilohm to the collector, by bisection.
TEST(bipolar, finds_the_operating_point_of_a_common_emitter_circuit) {
    for (const char* name : both) {
        transistor q(name, {{"vaf", 50}});
        double vb = 0.6, vc = 5;
        for (int i = 0; i < 60; ++i) {
            q.at(vb, vb - vc);
            double** g = q.jac.dfdv;
            const double fb = q.f(b) + (vb - 10) / 430e3, fc = q.f(c) + (vc - 10) / 1e3;
            const double bb = g[b][b] + 1 / 430e3, bc = g[b][c], cb = g[c][b], cc = g[c][c] + 1e-3;
            const double det = bb * cc - bc * cb;
            const double db = (fb * cc - fc * bc) / det;
            vb -= std::max(-0.05, std::min(0.05, db));
            vc -= (fc * bb - fb * cb) / det;
        }
        EXPECT_REL(vb, 0.793897522, 1e-9);
        EXPECT_REL(vc, 7.568944642, 1e-9);
        q.at(vb, vb - vc);
        EXPECT_REL(q.f(c), 2.431055358e-03, 1e-9);
        EXPECT_REL(q.f(b), 2.140954065e-05, 1e-9);
    }
}

const std::map<std::string, double> all_effects = {
    {"is", 2e-15}, {"bf", 220},     {"br", 4},      {"nf", 1.01}, {"nr", 1.02},   {"vaf", 70},    {"var", 12},
    {"ikf", 0.08}, {"ikr", 0.02},   {"ise", 3e-14}, {"ne", 1.7},  {"isc", 2e-14}, {"nc", 1.9},    {"cje", 12e-12},
    {"vje", 0.72}, {"mje", 0.35},   {"cjc", 4e-12}, {"vjc", 0.6}, {"mjc", 0.4},   {"cjs", 3e-12}, {"vjs", 0.7},
    {"mjs", 0.5},  {"tf", 350e-12}, {"xtf", 5},     {"vtf", 4},   {"itf", 0.05},  {"tr", 60e-9},  {"xtb", 1.5}};

TEST(bipolar, mirrors_everything_for_pnp) {
    for (const char* name : both) {
        transistor npn(name, all_effects), pnp(name, all_effects, -1);
        npn.x.v = {3, 0.71, 0.02, -1, 0};
        pnp.x.v = {-3, -0.71, -0.02, 1, 0};
        npn.dc();
        pnp.dc();
        for (int j = 0; j < 8; ++j) {
            EXPECT_EQ(npn.f(j), -pnp.f(j)) << j;
            for (int k = 0; k < 4; ++k) EXPECT_EQ(npn.jac.dfdv[j][k], pnp.jac.dfdv[j][k]) << j << ' ' << k;
        }
        pnp.call(&flags_class::outvar_prm);
        EXPECT_EQ(pnp.r("ic_o"), pnp.f(c));
        EXPECT_EQ(pnp.r("ib_o"), pnp.f(b));
        EXPECT_EQ(pnp.r("vbe_o"), -0.71 - -0.02);
        EXPECT_EQ(pnp.r("vce_o"), -3 - -0.02);
        pnp.call(&flags_class::init_guess);
        EXPECT_EQ(pnp.x.v, (std::vector<double>{0, -0.6, 0, 0, 0}));
    }
}

TEST(bipolar, multiplies_currents_and_charges_by_its_area) {
    for (const char* name : both) {
        auto large = all_effects;
        large["area"] = 3;
        transistor one(name, all_effects), three(name, large);
        for (transistor* q : {&one, &three}) {
            q->flags.gmin = 0;
            q->x.v = {0.3, 0.76, 0, -1, 0};
            q->dc();
        }
        for (int j = 0; j < 8; ++j) EXPECT_NEAR(three.f(j), 3 * one.f(j), 1e-13 * std::abs(3 * one.f(e + j / 4 * 4)));
    }
}

TEST(bipolar, has_gmin_across_each_junction) {
    transistor q("bjt_spice_5");
    const auto currents = [&](double gmin) {
        q.flags.gmin = gmin;
        q.x.v = {3, 0.2, 0.1, -1, 0};
        q.dc();
        return q.x.f;
    };
    const auto with = currents(1e-3), without = currents(0);
    EXPECT_NEAR(with[c] - without[c], 1e-3 * (3 - 0.2) + 1e-3 * (3 + 1), 1e-15);
    EXPECT_NEAR(with[b] - without[b], 1e-3 * (0.2 - 3) + 1e-3 * (0.2 - 0.1), 1e-15);
    EXPECT_NEAR(with[s] - without[s], 1e-3 * (-1 - 3), 1e-15);
}

// ---- charges

TEST(bipolar, has_the_charges_of_its_layers_and_of_the_transit) {
    transistor q("bjt_spice_5", {{"cje", 2e-12}, {"cjc", 1e-12}, {"cjs", 3e-12}, {"tf", 1e-10}, {"tr", 1e-8}});
    const auto layer = [](double c0, double vj, double m, double v) {
        return c0 * vj / (1 - m) * (1 - std::pow(1 - v / vj, 1 - m));
    };
    q.x.v = {2, 0.3, 0, -1, 0};
    q.trns();
    const double vt = q.r("vt"), i_f = 1e-16 * std::expm1(0.3 / vt), i_r = 1e-16 * std::expm1(-1.7 / vt);
    const double qe = layer(2e-12, 0.75, 0.33, 0.3) + 1e-10 * i_f;
    const double qc = layer(1e-12, 0.75, 0.33, -1.7) + 1e-8 * i_r;
    const double q_sub = 3e-12 * -3.0;  // mjs is 0: the capacitance is constant
    EXPECT_REL(q.f(4 + b), qe + qc, 1e-12);
    EXPECT_REL(q.f(4 + s), q_sub, 1e-12);
    EXPECT_REL(q.f(4 + c), -qc - q_sub, 1e-12);
    EXPECT_REL(q.f(4 + e), -qe, 1e-12);
}

TEST(bipolar, has_a_substrate_charge_that_is_straight_from_0_volt_on) {
    transistor q("bjt_spice_5", {{"cjs", 1e-12}, {"vjs", 0.8}, {"mjs", 0.4}});
    q.x.v = {0, 0, 0, 0.6, 0};
    q.dc();
    EXPECT_REL(q.f(4 + s), 1e-12 * (0.6 + 0.4 / (2 * 0.8) * 0.36), 1e-12);
    q.x.v = {0, 0, 0, -2, 0};
    q.dc();
    EXPECT_REL(q.f(4 + s), 1e-12 * 0.8 / 0.6 * (1 - std::pow(1 + 2 / 0.8, 0.6)), 1e-12);
}

TEST(bipolar, has_a_transit_time_that_rises_with_current_and_collector_voltage) {
    transistor q("bjt_spice_5", {{"tf", 1e-10}, {"xtf", 4}, {"vtf", 2}, {"itf", 1e-3}});
    q.at(0.78, -1);
    const double i = 1e-16 * std::expm1(0.78 / q.r("vt"));
    const double share = i / (i + 1e-3);
    EXPECT_REL(q.f(4 + b), 1e-10 * i * (1 + 4 * share * share * std::exp(-1 / (1.44 * 2))), 1e-12);
    EXPECT_EQ(q.f(4 + c), 0);
}

TEST(bipolar, does_not_heed_xcjc_and_ptf) {
    auto other = all_effects;
    other["xcjc"] = 0.3;
    other["ptf"] = 30;
    transistor q("bjt_spice_5", all_effects), p("bjt_spice_5", other);
    q.at(0.7, -2);
    p.at(0.7, -2);
    EXPECT_EQ(q.x.f, p.x.f);
}

// ---- temperature

TEST(bipolar, follows_the_temperature_by_the_published_laws) {
    auto hot = all_effects;
    hot["temp"] = 360;
    transistor q("bjt_spice_5", hot);
    const double kq = 1.3806226e-23 / 1.6021918e-19, vt = kq * 360, vt_nom = kq * 300.15, tau = 360 / 300.15;
    const double growth = 1.11 / vt_nom - 1.11 / vt + 3 * std::log(tau);
    EXPECT_REL(q.r("vt"), vt, 1e-15);
    EXPECT_REL(q.r("is_t"), 2e-15 * std::exp(growth), 1e-13);
    EXPECT_REL(q.r("bf_t"), 220 * std::pow(tau, 1.5), 1e-13);
    EXPECT_REL(q.r("br_t"), 4 * std::pow(tau, 1.5), 1e-13);
    EXPECT_REL(q.r("ise_t"), 3e-14 * std::exp(growth / 1.7) / std::pow(tau, 1.5), 1e-13);
    EXPECT_REL(q.r("isc_t"), 2e-14 * std::exp(growth / 1.9) / std::pow(tau, 1.5), 1e-13);
    // (T/Tnom) vj - 3 vt ln(T/Tnom) - (T/Tnom) Eg(Tnom) + Eg(T), and 1 + m (4e-4 dT + 1 - vj(T)/vj) from 300.15 K
    const auto gap = [](double t) { return 1.16 - 7.02e-4 * t * t / (t + 1108); };
    const auto check = [&](const char* vj, const char* vj_t, const char* cj, const char* cj_t, const char* m) {
        const double v = q.r(vj), v_t = tau * v - 3 * vt * std::log(tau) - tau * gap(300.15) + gap(360);
        EXPECT_REL(q.r(vj_t), v_t, 1e-12);
        EXPECT_REL(q.r(cj_t), q.r(cj) * (1 + q.r(m) * (4e-4 * (360 - 300.15) + 1 - v_t / v)), 1e-12);
    };
    check("vje", "vje_t", "cje", "cje_t", "mje");
    check("vjc", "vjc_t", "cjc", "cjc_t", "mjc");
    check("vjs", "vjs_t", "cjs", "cjs_t", "mjs");
    // The same temperature told as nominal changes nothing.
    hot["tnom"] = 360;
    transistor same("bjt_spice_5", hot);
    EXPECT_EQ(same.r("is_t"), 2e-15);
    EXPECT_EQ(same.r("vje_t"), 0.72);
    EXPECT_EQ(same.r("cjc_t"), 4e-12);
}

TEST(bipolar, keeps_its_potentials_above_0_when_it_is_very_hot) {
    auto hot = all_effects;
    hot["temp"] = 800;
    transistor q("bjt_spice_5", hot);
    EXPECT_EQ(q.r("vjc_t"), 0.1);
    q.at(0.5, -3);
    for (int j = 0; j < 8; ++j) EXPECT_TRUE(std::isfinite(q.f(j)));
}

// ---- derivatives and robustness

std::map<std::string, double> random_parameters(std::mt19937& rng) {
    std::uniform_real_distribution<double> unit(0, 1);
    const struct {
        const char* word;
        double low, high;
    } ranges[] = {{"vaf", 1, 100},       {"var", 2, 30},        {"ikf", 1e-4, 0.1},    {"ikr", 1e-4, 0.1},
                  {"ise", 1e-15, 1e-12}, {"isc", 1e-15, 1e-12}, {"cje", 1e-13, 1e-11}, {"cjc", 1e-13, 1e-11},
                  {"cjs", 1e-13, 1e-11}, {"tf", 1e-12, 1e-9},   {"tr", 1e-12, 1e-9},   {"xtf", 0.1, 10},
                  {"vtf", 1, 10},        {"itf", 1e-3, 1},      {"area", 0.1, 10},     {"mjs", 0.2, 0.5}};
    std::map<std::string, double> parms = {{"temp", 250 + 200 * unit(rng)}, {"nf", 1 + 0.1 * unit(rng)}};
    for (const auto& r : ranges)
        if (unit(rng) < 0.75) parms[r.word] = r.low * std::pow(r.high / r.low, unit(rng));
    return parms;
}

// Against central differences; what these do not resolve are last digits of the largest function.
TEST(bipolar, has_the_derivatives_of_its_functions_at_random_biases_and_temperatures) {
    std::mt19937 rng(15);
    std::uniform_real_distribution<double> volt(-0.9, 0.9);
    constexpr double h = 1e-6;
    for (int trial = 0; trial < 1000; ++trial) {
        transistor q(both[trial % 2], random_parameters(rng), trial % 4 < 2 ? 1 : -1);
        for (double& v : q.x.v) v = volt(rng);
        q.trns();
        const std::vector<double> jac = q.jac.store;
        for (int k = 0; k < 4; ++k) {
            const auto f_at = [&](double dv) {
                const model_numbers kept = q.x;
                q.x.v[static_cast<std::size_t>(k)] += dv;
                q.call(&flags_class::dc, &flags_class::function);
                const std::vector<double> f = q.x.f;
                q.x = kept;
                return f;
            };
            const auto above = f_at(h), below = f_at(-h);
            for (int first : {0, 4}) {
                double largest = 0, steepest = 0;
                for (int j = first; j < first + 4; ++j) {
                    largest = std::max(largest, std::abs(q.f(j)));
                    for (int m = 0; m < 4; ++m) steepest = std::max(steepest, std::abs(q.jac.dfdv[j][m]));
                }
                for (int j = first; j < first + 4; ++j) {
                    const auto jj = static_cast<std::size_t>(j);
                    EXPECT_NEAR(q.jac.dfdv[j][k], (above[jj] - below[jj]) / (2 * h),
                                1e-7 * steepest + 4 * std::numeric_limits<double>::epsilon() * largest / h)
                        << "function " << j << ", terminal " << k << ", trial " << trial;
                }
            }
        }
        EXPECT_EQ(jac, q.jac.store);
    }
}

TEST(bipolar, has_currents_and_charges_that_sum_to_0) {
    std::mt19937 rng(16);
    std::uniform_real_distribution<double> volt(-2, 2);
    for (int trial = 0; trial < 1000; ++trial) {
        transistor q(both[trial % 2], random_parameters(rng), trial % 4 < 2 ? 1 : -1);
        for (double& v : q.x.v) v = volt(rng);
        q.trns();
        EXPECT_EQ(q.f(e), -(q.f(c) + q.f(b) + q.f(s)));
        EXPECT_EQ(q.f(4 + e), -(q.f(4 + c) + q.f(4 + b) + q.f(4 + s)));
    }
}

TEST(bipolar, has_numbers_at_any_voltage_up_to_a_million_volt) {
    std::mt19937 rng(17);
    std::uniform_real_distribution<double> decade(-3, 6);
    for (int trial = 0; trial < 5000; ++trial) {
        transistor q(both[trial % 2], random_parameters(rng), trial % 4 < 2 ? 1 : -1);
        for (double& v : q.x.v) v = rng() % 5 == 0 ? 0 : (rng() % 2 ? 1 : -1) * std::pow(10, decade(rng));
        q.trns();
        for (int j = 0; j < 8; ++j) {
            EXPECT_TRUE(std::isfinite(q.f(j))) << trial;
            for (int k = 0; k < 4; ++k) EXPECT_TRUE(std::isfinite(q.jac.dfdv[j][k])) << trial;
        }
    }
}

TEST(bipolar, answers_an_iterate_that_ran_away_with_an_infinite_current) {
    constexpr double infinite = std::numeric_limits<double>::infinity();
    for (const double v : {1e101, -1e300, infinite}) {
        transistor q("bjt_spice_5", all_effects);
        for (const int jac_num : {0, 1}) {
            q.x.iparm[0] = jac_num;
            q.x.v = {v, 0.7, 0, 0, 0};
            q.dc();
            EXPECT_EQ(q.f(c), infinite);
            EXPECT_EQ(q.f(e), -infinite);
            for (int j = 0; j < 8; ++j)
                for (int k = 0; k < 4; ++k) EXPECT_TRUE(std::isfinite(q.jac.dfdv[j][k]));
        }
    }
}

// The width of the base at 0.01 of that at rest, the root at its least argument, the exponent at its limit, the edge of
// each layer: functions and slopes meet from both sides.
TEST(bipolar, is_continuous_in_value_and_slope_at_its_guards) {
    const double vt = 1.3806226e-23 / 1.6021918e-19 * 300.15;
    const struct {
        std::map<std::string, double> parms;
        double vbe, vbc;
        bool moves_base;  // else the collector
    } edges[] = {
        {{{"vaf", 0.5}}, 0.6, 0.5 * 0.99, false},                                            // width of the base
        {{{"vaf", 2}, {"var", 0.7}, {"ikf", 0.01}}, 0.7 * 0.99, 0, true},                    // the same, by the emitter
        {{{"is", 1e-3}, {"ikr", 3.9e-3}}, 0.1, vt * std::log(1 - 0.9999 * 3.9 / 4), false},  // argument of the root
        {{}, std::log(10 / 1e-16) * vt, -1, true},                                           // exponents
        {{}, 0.2, std::log(10 / 1e-16) * vt, false},
        {{{"cje", 1e-12}}, 0.375, -1, true},  // layers
        {{{"cjc", 1e-12}}, 0.1, 0.375, false},
    };
    for (const auto& edge : edges)
        for (const char* name : both) {
            transistor below(name, edge.parms), above(name, edge.parms);
            ASSERT_TRUE(std::isfinite(edge.vbc)) << "no such edge";
            const double h = 1e-9;
            below.at(edge.vbe - (edge.moves_base ? h : 0), edge.vbc - h);
            above.at(edge.vbe + (edge.moves_base ? h : 0), edge.vbc + (edge.moves_base ? -h : h));
            for (int first : {0, 4}) {
                double size = 0, steep = 0;
                for (int j = first; j < first + 4; ++j) {
                    size = std::max(size, std::abs(above.f(j)));
                    for (int k = 0; k < 4; ++k) steep = std::max(steep, std::abs(above.jac.dfdv[j][k]));
                }
                for (int j = first; j < first + 4; ++j) {
                    EXPECT_NEAR(below.f(j), above.f(j), 1e-6 * size + 4 * h * steep) << name << ' ' << j;
                    for (int k = 0; k < 4; ++k)
                        EXPECT_NEAR(below.jac.dfdv[j][k], above.jac.dfdv[j][k], 1e-5 * steep)
                            << name << ' ' << j << ' ' << k;
                }
            }
        }
}

TEST(bipolar, keeps_the_base_charge_above_0_beyond_its_guards) {
    // At vbc = vaf the published width is 0, beyond it negative; ic stays positive.
    transistor q("bjt_spice_5", {{"vaf", 0.5}, {"br", 1e9}});
    for (const double vbc : {0.499, 0.5, 0.501, 0.55}) {
        q.at(0.7, vbc);
        EXPECT_GT(q.f(c), 0) << vbc;
        EXPECT_TRUE(std::isfinite(q.f(c)));
    }
    // A saturation current above a quarter of ikr leaves the root no argument in reverse.
    transistor p("bjt_spice_5", {{"is", 1e-3}, {"ikf", 1e-3}, {"ikr", 1e-3}, {"br", 1e9}, {"bf", 1e9}});
    p.at(-1, -2);
    EXPECT_TRUE(std::isfinite(p.f(c)));
    p.at(0.1, -2);
    EXPECT_GT(p.f(c), 0);
}

TEST(bipolar, has_the_derivatives_of_its_functions_beyond_its_guards) {
    const struct {
        std::map<std::string, double> parms;
        double vbe, vbc;
    } points[] = {{{{"is", 1e-3}, {"ikf", 1e-3}, {"ikr", 1e-3}}, -0.05, -0.06},  // no argument of the root
                  {{{"vaf", 0.5}, {"var", 2}}, 0.6, 0.55}};                      // no width of the base
    for (const auto& p : points) {
        constexpr double h = 1e-6;
        transistor q("bjt_spice_5", p.parms), above("bjt_spice_5", p.parms), below("bjt_spice_5", p.parms);
        q.at(p.vbe, p.vbc);
        above.at(p.vbe + h, p.vbc + h);
        below.at(p.vbe - h, p.vbc - h);
        EXPECT_REL(q.jac.dfdv[c][b], (above.f(c) - below.f(c)) / (2 * h), 1e-5);
        above.at(p.vbe, p.vbc + h);
        below.at(p.vbe, p.vbc - h);
        EXPECT_REL(-q.jac.dfdv[c][c], (above.f(c) - below.f(c)) / (2 * h), 1e-5);
    }
}

TEST(bipolar, takes_its_jacobian_from_differences_if_told_so) {
    transistor formula("bjt_spice_5", all_effects), numeric("bjt_spice_5", all_effects);
    numeric.x.iparm[0] = 1;
    for (transistor* q : {&formula, &numeric}) {
        q->x.v = {1.5, 0.65, 0, -1, 0};
        q->trns();
    }
    EXPECT_EQ(formula.x.f, numeric.x.f);
    bool differs = false;
    for (int j = 0; j < 8; ++j)
        for (int k = 0; k < 4; ++k) {
            const double g = formula.jac.dfdv[j][k], d = numeric.jac.dfdv[j][k];
            // A step of 1 mV in an exponential: half of 1 mV / vt. A quarter of a per cent of the largest in the row.
            double largest = 0;
            for (int m = 0; m < 4; ++m) largest = std::max(largest, std::abs(formula.jac.dfdv[j][m]));
            EXPECT_NEAR(d, g, 0.025 * largest) << j << ' ' << k;
            differs = differs || d != g;
        }
    EXPECT_TRUE(differs);
    // The temperature is adjusted anew at each evaluation.
    numeric.r("is_a") = 0;
    numeric.trns();
    EXPECT_NEAR(numeric.jac.dfdv[b][b], formula.jac.dfdv[b][b], 0.025 * formula.jac.dfdv[b][b]);
}

// ---- the counted form

TEST(bjt_spice_6, counts_capped_exponentials_on_passes_with_derivatives) {
    transistor q("bjt_spice_6"), plain("bjt_spice_5");
    const double edge = std::log(10 / 1e-16) * q.r("vt");
    const auto count = [&](transistor& t, double vbe, double vbc, bool jacobian) {
        t.x.v = {vbe - vbc, vbe, 0, 0, 0};
        t.flags.n_limit = 0;
        t.flags.dc = t.flags.function = 1;
        t.flags.jacobian = jacobian;
        t.call();
        t.flags.init_flags();
        return t.flags.n_limit;
    };
    EXPECT_EQ(count(q, 0.999 * edge, 0, true), 0);
    EXPECT_EQ(count(q, 1.001 * edge, 0, true), 1);
    EXPECT_EQ(count(q, 1.001 * edge, 1.2 * edge, true), 2);
    EXPECT_EQ(count(q, 0.5, 1.2 * edge, true), 1);
    EXPECT_EQ(count(q, 1.001 * edge, 0, false), 0);
    EXPECT_EQ(count(plain, 1.001 * edge, 0, true), 0);
    // The count adds to that of others, and the functions are those of bjt_spice_5.
    q.flags.n_limit = 4;
    q.at(1.1 * edge, -1);
    EXPECT_EQ(q.flags.n_limit, 5);
    plain.at(1.1 * edge, -1);
    for (int j = 0; j < 8; ++j) EXPECT_NEAR(q.f(j), plain.f(j), 1e-13 * std::abs(plain.f(j)));
}

// ---- where parameters stand

TEST(bipolar, has_its_parameters_where_the_model_reads_them) {
    const library_lists& l = installed_ebes().list;
    for (const char* name : both) {
        const int entry = l.find(name);
        ASSERT_EQ(l.rprm.count(entry), bjt::n_parms);
        const std::map<std::string, int> places = {{"area", bjt::area},   {"xti", bjt::xti},     {"temp", bjt::temp},
                                                   {"vt", bjt::vt},       {"f3c", bjt::f3c},     {"i_max", bjt::i_max},
                                                   {"vce_o", bjt::vce_o}, {"vjs_t", bjt::vjs_t}, {"g_tf", bjt::g_tf},
                                                   {"mjc", bjt::mjc},     {"ptf", bjt::ptf},     {"vaf", bjt::vaf}};
        for (const auto& [word, place] : places) EXPECT_EQ(l.rprm.find(entry, word), place) << word;
    }
}

// ---- its small-signal form, and the resistance of its leads

TEST(bjt_spice_2, has_slopes_and_capacitances_of_the_bias_point) {
    transistor q("bjt_spice_5", all_effects);
    q.at(0.7, -2);
    ac_unit a("bjt_spice_2");
    a.ebe_jac = &q.jac;
    a.ac(1e8);
    for (int j = 0; j < 4; ++j)
        for (int k = 0; k < 4; ++k)
            EXPECT_EQ(a.jac.dfdv[j][k], std::complex<double>(q.jac.dfdv[j][k], 1e8 * q.jac.dfdv[4 + j][k]));
}

TEST(r_area, is_a_resistance_over_an_area_that_is_never_0) {
    const struct {
        double r, area, g;
    } cases[] = {{10, 4, 0.4}, {2e-6, 1, 5e5},   {0, 1, 1e6}, {1e-6, 2, 1e6},
                 {-3, 1, 1e6}, {0.9e-6, 1, 1e6}, {1, 0, 0},   {0, 0, 1e6}};
    for (const auto& t : cases) {
        model_unit u("r_area");
        u.r("r") = t.r;
        u.r("area") = t.area;
        u.prepare();
        EXPECT_DOUBLE_EQ(u.r("g"), t.g);
        u.x.v = {3, 1, 0};
        u.dc();
        EXPECT_DOUBLE_EQ(u.x.f[0], 2 * t.g);
        ac_unit a("r_area");
        a.r("r") = t.r;
        a.r("area") = t.area;
        a.ac(100);
        EXPECT_DOUBLE_EQ(a.jac.dfdv[1][0].real(), -t.g);
        u.call(&flags_class::outvar_prm);
        EXPECT_EQ(u.r("v_o"), 2);
    }
}

}  // namespace
