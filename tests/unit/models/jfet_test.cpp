// Junction field effect transistors against the published channel and gate junctions.
#include "fet_checks.h"
#include "halt_throws.h"

namespace {

constexpr double vt = 2.586418638e-02;  // V, k T/q at 300.15 K

double drain_current(const std::string& name, double vgs, double vds, int level = 1) {
    model_unit u(name);
    u.r("lambda") = 0.02;
    u.r("is") = 0;  // gate currents apart
    u.flags.gmin = 0;
    if (name == "jfet_spice_1") u.x.iparm[2] = level;
    u.prepare();
    return functions_at(u, {vds, vgs, 0, 0})[0];
}

TEST(jfet, has_the_current_of_the_publication) {
    for (const std::string name : {"jfet_spice_1", "jfet_spice_2"}) {
        EXPECT_REL(drain_current(name, 0, 5), 4.4e-04, 1e-9) << name;
        EXPECT_REL(drain_current(name, -1, 0.5), 7.575e-05, 1e-9) << name;
        EXPECT_REL(drain_current(name, -1, 5), 1.1e-04, 1e-9) << name;
        EXPECT_EQ(drain_current(name, -2.5, 5), 0) << name;
    }
}

// Source on 10 kOhm, gate on ground, drain on 20 V: id = 1e-4 A at vgs = -1, by hand. Bisection in the source voltage.
TEST(jfet, biases_itself_through_its_source_resistor) {
    for (const std::string name : {"jfet_spice_1", "jfet_spice_2"}) {
        model_unit u(name);
        u.r("is") = 0;
        u.flags.gmin = 0;
        u.prepare();
        double low = 0, high = 10;
        for (int k = 0; k < 100; ++k) {
            const double s = (low + high) / 2;
            (functions_at(u, {20, 0, s, 0})[2] + s / 10e3 > 0 ? high : low) = s;
        }
        EXPECT_NEAR(low, 1, 1e-12);
    }
}

TEST(jfet, has_a_smooth_channel_with_the_limits_of_the_published_one) {
    const double saturated = drain_current("jfet_spice_1", -0.5, 20),
                 smooth = drain_current("jfet_spice_1", -0.5, 20, 2);
    EXPECT_REL(smooth, saturated, 1e-10);
    EXPECT_REL(drain_current("jfet_spice_1", -0.5, 1e-6, 2), drain_current("jfet_spice_1", -0.5, 1e-6), 1e-6);
    // between them: beta (1 + lambda vds) u^2 tanh(2 vds/u)
    EXPECT_REL(drain_current("jfet_spice_1", -0.5, 1, 2), 1e-4 * 1.02 * 2.25 * std::tanh(2 / 1.5), 1e-12);
}

TEST(jfet, has_no_other_level) {
    model_unit u("jfet_spice_1");
    u.x.iparm[2] = 3;
    EXPECT_HALT(u.prepare(), "jfet_spice_1.ebe: level = 3?\n");
    u.x.iparm[2] = 0;
    EXPECT_HALT(u.prepare(), "jfet_spice_1.ebe: level = 0?\n");
}

TEST(jfet, has_gate_junctions_to_drain_and_to_source) {
    for (const std::string name : {"jfet_spice_1", "jfet_spice_2"}) {
        model_unit u(name);
        u.r("area") = 2;
        u.r("n_em") = 1.5;
        u.prepare();
        u.flags.gmin = 0;
        set_voltages(u, {-0.1, 0.5, 0, 0});
        u.dc();
        const double to_source = 2e-14 * std::expm1(0.5 / (1.5 * vt)), to_drain = 2e-14 * std::expm1(0.6 / (1.5 * vt));
        EXPECT_REL(u.x.f[1], to_source + to_drain, 1e-8) << name;
        // gmin stands across both
        model_unit with(name);
        with.flags.gmin = 1e-3;
        with.r("is") = 0;
        with.r("beta") = 0;
        with.prepare();
        with.flags.gmin = 1e-3;
        set_voltages(with, {3, 1, 0, 0});
        with.flags.dc = with.flags.function = 1;
        with.call();
        EXPECT_REL(with.x.f[0], 2e-3, 1e-12) << name;
        EXPECT_REL(with.x.f[1], 1e-3 - 2e-3, 1e-12) << name;
        EXPECT_REL(with.x.f[2], -1e-3, 1e-12) << name;
    }
}

// is_T = is exp(1.11/vt_nom - 1.11/vt); pb and c by the band gap 1.16 - 7.02e-4 T^2/(T + 1108), worked out by hand.
TEST(jfet_spice_1, follows_its_temperature) {
    model_unit u("jfet_spice_1");
    u.r("temp") = 350;
    u.r("cgs") = 2e-12;
    u.prepare();
    const double vt_350 = vt * 350 / 300.15;
    EXPECT_REL(u.r("is_t"), 1e-14 * std::exp(1.11 / vt - 1.11 / vt_350), 1e-7);
    const auto gap = [](double t) { return 1.16 - 7.02e-4 * t * t / (t + 1108); };
    const double pb = 350 / 300.15 - 3 * vt_350 * std::log(350 / 300.15) - 350 / 300.15 * gap(300.15) + gap(350);
    EXPECT_REL(u.r("pb_t"), pb, 1e-8);
    EXPECT_REL(u.r("cgs_t"), 2e-12 * (1 + 0.5 * (4e-4 * 49.85 - (pb - 1))), 1e-8);
    // at its own temperature nothing moves
    u.r("temp") = u.r("tnom") = 320;
    u.prepare();
    EXPECT_EQ(u.r("pb_t"), 1);
    EXPECT_EQ(u.r("cgs_t"), 2e-12);
    EXPECT_REL(u.r("is_t"), 1e-14, 1e-15);
}

TEST(jfet_spice_1, warns_of_negative_capacitances_and_takes_the_factor_1) {
    model_unit u("jfet_spice_1");
    u.r("cgs") = 1e-12;
    u.r("m") = 0.9;
    u.r("pb") = 0.2;
    u.r("temp") = 200;
    const console_run heard = run_and_listen([&] { u.prepare(); });
    EXPECT_FALSE(heard.stopped);
    EXPECT_EQ(heard.text, "   Temperature-adjusted capacitances are negative!\n   making factor  =  1..\n");
    EXPECT_EQ(u.r("cgs_t"), 1e-12);
}

TEST(jfet_spice_1, has_depletion_charges_of_its_gate) {
    model_unit u("jfet_spice_1");
    u.r("area") = 3;
    u.r("cgs") = 1e-12;
    u.r("cgd") = 2e-12;
    u.prepare();
    const std::vector<double> f = functions_at(u, {1, -4, 0, 0});
    const double qgs = 3e-12 * 2 * (1 - std::sqrt(1 + 4.0)), qgd = 6e-12 * 2 * (1 - std::sqrt(1 + 5.0));
    EXPECT_REL(f[3], -qgd, 1e-12);
    EXPECT_REL(f[4], qgs + qgd, 1e-12);
    EXPECT_REL(f[5], -qgs, 1e-12);
}

class jfets : public ::testing::TestWithParam<int> {
protected:
    // 1, 2: level of jfet_spice_1; 3: jfet_spice_2; random parameters
    model_unit random_unit(std::mt19937& rng) const {
        model_unit u(GetParam() == 3 ? "jfet_spice_2" : "jfet_spice_1");
        u.r("lambda") = random_in(rng, 0, 0.05);
        u.r("vto") = random_in(rng, -3, 1);
        u.r("beta") = random_in(rng, 1e-4, 1e-3);
        u.r("n_em") = random_in(rng, 1, 2);
        u.r("temp") = random_in(rng, 250, 400);
        u.x.iparm[1] = rng() % 2 ? 1 : -1;
        if (GetParam() < 3) {
            u.x.iparm[2] = GetParam();
            u.r("cgs") = 1e-12;
            u.r("cgd") = 3e-12;
            u.r("m") = random_in(rng, 0.3, 0.6);
        }
        u.prepare();
        return u;
    }
};
INSTANTIATE_TEST_SUITE_P(, jfets, ::testing::Values(1, 2, 3));

TEST_P(jfets, have_the_derivatives_of_their_functions_in_every_region) {
    std::mt19937 rng(7);
    int close = 0, all = 0;
    for (int trial = 0; trial < 1000; ++trial) {
        model_unit u = random_unit(rng);
        four v = {};
        for (std::size_t k = 0; k < 3; ++k) v[k] = random_in(rng, -4, 4);
        if (trial % 3 == 0) v[1] = u.x.iparm[1] * -std::abs(v[1]) + v[2];  // cut off or controlled
        close += expect_derivatives(u, v, 1e-6, 1e-16);
        all += u.jac.n_f * 3;
        set_voltages(u, v);
        u.dc();
        expect_balance(u);
    }
    EXPECT_GT(close, all * 9 / 10);
}

TEST_P(jfets, are_finite_for_any_voltages) {
    std::mt19937 rng(8);
    for (int k = 0; k < 3; ++k) {
        model_unit u = random_unit(rng);
        expect_finite_everywhere(u, static_cast<unsigned>(k));
    }
}

TEST_P(jfets, exchange_drain_and_source) {
    std::mt19937 rng(9);
    for (int trial = 0; trial < 100; ++trial) {
        model_unit u = random_unit(rng);
        if (GetParam() < 3) u.r("cgd") = u.r("cgs");
        u.prepare();
        const double a = random_in(rng, -2, 2), b = random_in(rng, -2, 2), c = random_in(rng, -2, 2);
        const std::vector<double> one = functions_at(u, {a, b, c, 0}), other = functions_at(u, {c, b, a, 0});
        for (std::size_t j = 0; j < static_cast<std::size_t>(u.jac.n_f); j += 3) {
            EXPECT_NEAR(one[j], other[j + 2], 1e-12 * largest_of_its_kind(one, j, 3));
            EXPECT_NEAR(one[j + 1], other[j + 1], 1e-12 * largest_of_its_kind(one, j, 3));
        }
    }
}

TEST_P(jfets, have_a_mirror_image) {
    std::mt19937 rng(10);
    for (int trial = 0; trial < 100; ++trial) {
        model_unit u = random_unit(rng);
        const four v = {random_in(rng, -2, 2), random_in(rng, -2, 2), random_in(rng, -2, 2), 0};
        u.x.iparm[1] = 1;
        const std::vector<double> n = functions_at(u, v);
        u.x.iparm[1] = -1;
        const std::vector<double> p = functions_at(u, {-v[0], -v[1], -v[2], 0});
        for (std::size_t j = 0; j < n.size(); ++j) EXPECT_EQ(n[j], -p[j]);
    }
}

// At cut-off, at the change to saturation and at vds = 0.
TEST_P(jfets, have_no_jump_in_current_or_slope) {
    model_unit u(GetParam() == 3 ? "jfet_spice_2" : "jfet_spice_1");
    if (GetParam() < 3) u.x.iparm[2] = GetParam();
    u.r("lambda") = 0.03;
    u.prepare();
    constexpr double h = 1e-7;
    const four borders[] = {{3, -2, 0, 0}, {1.2, -0.8, 0, 0}, {0, -0.5, 0, 0}, {-1.2, -2, 0, 0}};
    for (const four& v : borders)
        for (std::size_t k = 0; k < 3; ++k) {
            four below = v, above = v;
            below[k] -= h;
            above[k] += h;
            set_voltages(u, below);
            u.dc();
            const std::vector<double> f = u.x.f, jac = u.jac.store;
            set_voltages(u, above);
            u.dc();
            for (std::size_t j = 0; j < 3; ++j) {
                EXPECT_NEAR(f[j], u.x.f[j], 1e-9);
                for (std::size_t t = 0; t < 3; ++t) EXPECT_NEAR(jac[j * 3 + t], u.jac.dfdv[j][t], 1e-9);
            }
        }
}

TEST(jfet_spice_1, has_the_same_derivatives_from_differences) {
    std::mt19937 rng(11);
    for (int trial = 0; trial < 50; ++trial) {
        model_unit u("jfet_spice_1");
        u.r("cgs") = u.r("cgd") = 1e-12;
        u.r("temp") = 330;
        u.x.iparm[2] = 1 + trial % 2;
        u.prepare();
        set_voltages(u, {random_in(rng, 0, 5), random_in(rng, -3, 0), 0, 0});
        u.dc();
        const std::vector<double> formulas = u.jac.store, f = u.x.f;
        u.x.iparm[0] = 1;
        u.dc();
        EXPECT_EQ(u.x.f, f);
        double largest = 0;
        for (int j = 0; j < 6; ++j)
            for (int k = 0; k < 3; ++k) {
                const double exact = formulas[static_cast<std::size_t>(u.jac.offset(kind_v, j, k))];
                EXPECT_NEAR(u.jac.dfdv[j][k], exact, j < 3 ? 5e-7 : 3e-15);
                largest = std::max(largest, std::abs(u.jac.dfdv[j][k] - exact));
            }
        EXPECT_GT(largest, 0);  // they do come from differences
    }
}

TEST(jfet_spice_1, shows_its_channel_and_its_voltages) {
    model_unit u("jfet_spice_1");
    u.x.iparm[1] = -1;
    u.prepare();
    set_voltages(u, {-5, 1, 0, 0});
    u.call(&flags_class::outvar_prm);
    EXPECT_REL(u.r("id_o"), -1e-4, 1e-12);
    EXPECT_EQ(u.r("vgs_o"), 1);
    EXPECT_EQ(u.r("vds_o"), -5);
}

TEST(r_jfet, may_be_nothing) {
    model_unit u("r_jfet");
    u.prepare();
    EXPECT_REL(u.r("g"), 1e6, 1e-15);
    u.r("r") = 10;
    u.r("area") = 4;
    u.prepare();
    EXPECT_REL(u.r("g"), 0.4, 1e-15);
}

}  // namespace
