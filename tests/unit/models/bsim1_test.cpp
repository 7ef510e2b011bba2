// BSIM1 against its published equations: check numbers, borders of its regions, charges, limiting.
#include "fet_checks.h"
#include "halt_throws.h"

namespace {

// The device of the check numbers; the defaults are its electrical parameters.
model_unit check_device() {
    model_unit u("mos_bsim1");
    u.r("w") = 10e-6;
    u.r("l") = 2e-6;
    u.r("is") = 0;
    u.flags.gmin = 0;
    u.prepare();
    return u;
}
double drain_current(model_unit& u, double vgs, double vds, double vbs) {
    return functions_at(u, {vds, vgs, 0, vbs})[0];
}

// Every parameter that can matter, with junctions and overlaps.
model_unit random_device(std::mt19937& rng) {
    model_unit u("mos_bsim1");
    const std::pair<const char*, std::pair<double, double>> ranges[] = {
        {"vfb", {-1, -0.7}},   {"k1", {0.5, 1}},     {"k2", {0, 0.1}},      {"eta", {0, 0.03}},
        {"x2mz", {-5, 20}},    {"x2e", {-.01, .01}}, {"x3e", {-.005, 0}},   {"u0", {0.02, 0.1}},
        {"x2u0", {-.01, .01}}, {"u1", {0.05, 0.3}},  {"x2u1", {-.02, .02}}, {"x3u1", {-.02, .02}},
        {"mus", {500, 900}},   {"x2ms", {-5, 20}},   {"x3ms", {0, 30}},     {"n0", {0.8, 2}},
        {"nb", {-.1, .1}},     {"nd", {-.1, .1}},    {"lvfb", {-.05, .05}}, {"wk1", {-.1, .1}},
        {"temp", {250, 400}},  {"dl", {0, 0.5}},     {"cgdo", {0, 3e-10}},  {"cgso", {0, 3e-10}},
        {"cgbo", {0, 3e-10}}};
    for (const auto& [word, range] : ranges) u.r(word) = random_in(rng, range.first, range.second);
    u.r("w") = 10e-6;
    u.r("l") = 2e-6;
    u.r("xpart") = 0.5 * static_cast<double>(rng() % 3);
    u.r("cj") = 1e-4;
    u.r("cjsw") = 2e-10;
    u.r("ad") = u.r("as") = 2e-11;
    u.r("pd") = 2e-5;
    u.r("ps") = 3e-5;
    u.x.iparm[1] = rng() % 2 ? 1 : -1;
    u.prepare();
    return u;
}

TEST(mos_bsim1, has_the_currents_of_the_publication) {
    model_unit u = check_device();
    EXPECT_REL(drain_current(u, 3, 0.5, 0), 3.7659418521e-04, 1e-9);
    EXPECT_REL(drain_current(u, 3, 5, 0), 7.8466339442e-04, 1e-9);
    EXPECT_REL(drain_current(u, 3, 5, -2), 4.9865660819e-04, 1e-9);
    EXPECT_EQ(drain_current(u, 0.5, 5, 0), 0);  // n0 is 200: nothing below the threshold
}

// vth 0.58692286 at (vds 0.5, vbs 0), 0.54192286 at (5, 0), 1.15498116 at (5, -2): no current below, some above.
TEST(mos_bsim1, has_the_published_threshold_and_saturation_voltage) {
    model_unit u = check_device();
    const four at[] = {{0.5, 0.58692286, 0, 0}, {5, 0.54192286, 0, 0}, {5, 1.15498116, 0, -2}};
    for (const four& v : at) {
        EXPECT_EQ(drain_current(u, v[1] - 1e-8, v[0], v[3]), 0);
        EXPECT_GT(drain_current(u, v[1] + 1e-8, v[0], v[3]), 0);
    }
    // vdsat 1.77660757 of (3, 0.5, 0) holds at its own threshold; here eta is 0, so that one threshold serves all vds
    u.r("eta") = 0;
    u.r("vfb") = -0.9 - 0.005;
    u.prepare();
    set_voltages(u, {1.77660757 - 1e-7, 3, 0, 0});
    u.dc();
    EXPECT_GT(u.jac.dfdv[0][0], 1e-12);
    set_voltages(u, {1.77660757 + 1e-7, 3, 0, 0});
    u.dc();
    EXPECT_LT(u.jac.dfdv[0][0], 1e-13 + u.flags.gmin);
}

TEST(mos_bsim1, has_geometry_in_its_parameters) {
    model_unit u = check_device();
    const double plain = drain_current(u, 3, 5, -1);
    // the same effective device by other means
    u.r("vfb") = -0.9 - 0.2 / 2 - 0.3 / 10;
    u.r("lvfb") = 0.2;
    u.r("wvfb") = 0.3;
    u.r("mus") = 600 - 50.0 / 2;
    u.r("lmus") = 50;
    u.r("l") = 2.5e-6;
    u.r("dl") = 0.5;
    u.r("w") = 10.25e-6;
    u.r("dw") = 0.25;
    u.prepare();
    EXPECT_REL(drain_current(u, 3, 5, -1), plain, 1e-12);
}

TEST(mos_bsim1, stops_without_a_channel) {
    model_unit u("mos_bsim1");
    u.r("dl") = 100.5;
    EXPECT_HALT(u.prepare(), "mos_bsim1: leff1 < 0 !!\n");
    u.r("dl") = 0;
    u.r("dw") = 101;
    EXPECT_HALT(u.prepare(), "mos_bsim1: weff1 < 0 !!\n");
    u.r("dw") = 0;
    u.r("xpart") = 0.4;
    EXPECT_HALT(u.prepare(), "mos_bsim1.ebe: xpart = 0.4?\n");
}

TEST(mos_bsim1, has_the_published_subthreshold_current) {
    model_unit u = check_device();
    u.r("n0") = 1.5;
    u.r("nb") = -0.1;
    u.r("nd") = 0.05;
    u.prepare();
    const double vt = u.r("vt_e"), beta0 = 600 * 3.453e-13 / 0.025e-4 * 5;
    for (const double vgs : {0.2, 0.4, 0.5}) {
        const double vth = -0.15 + 0.9 * std::sqrt(1.75) - 0.05 * 1.75 - 0.01 * 2, n = 1.5 + 0.1 + 0.1;
        const double i_exp = beta0 * vt * vt * std::exp(1.8) * std::exp((vgs - vth) / (n * vt)) * -std::expm1(-2 / vt);
        const double i_limit = beta0 / 2 * 9 * vt * vt;
        EXPECT_REL(drain_current(u, vgs, 2, -1), i_exp * i_limit / (i_exp + i_limit), 1e-9);
    }
    // far above the threshold it is its limit
    model_unit without = check_device();
    EXPECT_REL(drain_current(u, 3, 5, 0) - drain_current(without, 3, 5, 0), beta0 * 4.5 * vt * vt, 1e-6);
    u.r("n0") = 200;
    u.prepare();
    EXPECT_EQ(drain_current(u, 0.5, 2, -1), 0);
}

// q of the publication at vbs = 0: vth0 = vfb + phi + k1 sqrt(phi), a 1.30048850, c_ox w l = 2.7624e-14 F.
TEST(mos_bsim1, has_the_published_charges_in_saturation) {
    const double c = 3.453e-13 / 0.025e-4 * 20e-8, k1s = 0.9 * std::sqrt(0.75), e = 3 + 0.15 - k1s;
    const double g = 1 - 1 / (1.744 + 0.8364 * 0.75), a = 1 + g * 0.9 / (2 * std::sqrt(0.75));
    for (const double xpart : {0.0, 0.5, 1.0}) {
        model_unit u = check_device();
        u.r("xpart") = xpart;
        u.prepare();
        const std::vector<double> f = functions_at(u, {5, 3, 0, 0});
        EXPECT_REL(f[5], c * (3 + 0.15 - e / (3 * a)), 1e-12);
        EXPECT_REL(f[7], c * (-k1s + (1 - a) * e / (3 * a)), 1e-12);
        const double drain = xpart == 0 ? 0.4 : xpart == 0.5 ? 0.5 : 0;
        EXPECT_NEAR(f[4], -drain * 2 / 3 * c * e, 1e-12 * c);
        EXPECT_NEAR(f[6], -(1 - drain) * 2 / 3 * c * e, 1e-12 * c);
        // at vds = 0 both ends have one half
        const std::vector<double> even = functions_at(u, {0, 3, 0, 0});
        EXPECT_REL(even[4], -c * e / 2, 1e-12);
        EXPECT_REL(even[6], -c * e / 2, 1e-12);
    }
}

// fF, of drain, gate, source and bulk against one driven terminal: imaginary parts of the currents of ngspice 39 over
// w, for
//   M1 d g s b NM L=2u W=10u
//   .model NM NMOS(LEVEL=4 VFB=-0.9 PHI=0.75 K1=0.9 K2=0.05 ETA=0.01 MUZ=600 MUS=600 U0=0.05 U1=0.1 TOX=0.025 VDD=5
//   + N0=200 JS=1e-4 PB=0.8 PBSW=0.8 MJ=0.5 MJSW=0.33 TEMP=27)     xpart 0; with XPART=1: xpart 1
//   .ac lin 1 1e6 1e6
TEST(mos_bsim1, has_the_capacitances_of_another_simulator) {
    const struct {
        double xpart;
        four v;
        std::size_t driven;
        four c;
    } cases[] = {{0, {5, 3, 0, 0}, 1, {-7.3664, 20.5436, -11.0496, -2.1276}},
                 {0, {5, 3, 0, -1}, 3, {-2.5058, -2.0732, -3.7587, 8.3377}},
                 {0, {0.5, 3, 0, -1}, 1, {-13.6392, 27.3634, -13.6632, -0.0610}},
                 {0, {0.5, 3, 0, -1}, 0, {10.1357, -11.9303, 4.5877, -2.7931}},
                 {0, {0.5, 3, 0, -1}, 3, {-4.4785, -0.0724, -4.5749, 9.1257}},
                 {0, {1.7, 3, 0, 0}, 0, {2.2880, -2.2519, 0.6406, -0.6767}},
                 {0, {2, 0.3, 0, -1}, 3, {0, -8.0199, 0, 8.0199}},
                 {0, {2, -3, 0, -1}, 1, {0, 27.6240, 0, -27.6240}},
                 {1, {5, 3, 0, -1}, 1, {0, 20.1628, -18.4160, -1.7468}},
                 {1, {0.5, 3, 0, 0}, 1, {-13.4630, 27.4451, -13.9283, -0.0538}},
                 {1, {0.5, 3, 0, 0}, 0, {23.8615, -12.2321, -7.9538, -3.6756}},
                 {1, {0.5, 3, 0, -1}, 3, {-4.1832, -0.0724, -4.8701, 9.1257}},
                 {1, {1.7, 3, 0, 0}, 3, {-0.9915, -1.5964, -9.2387, 11.8266}}};
    for (const auto& at : cases) {
        model_unit u = check_device();
        u.r("xpart") = at.xpart;
        u.prepare();
        set_voltages(u, at.v);
        u.dc();
        for (std::size_t j = 0; j < 4; ++j)
            EXPECT_NEAR(u.jac.dfdv[4 + j][at.driven] * 1e15, at.c[j], 1e-4) << at.xpart << ' ' << at.v[0] << ' ' << j;
    }
}

TEST(mos_bsim1, has_the_published_charges_below_the_threshold) {
    model_unit u = check_device();
    const double c = 3.453e-13 / 0.025e-4 * 20e-8;
    EXPECT_REL(functions_at(u, {2, -3, 0, -1})[5], c * (-3 + 0.9 + 1), 1e-12);  // accumulation: vgs - vfb - vbs
    const double x = 0.3 + 0.9 + 1;
    EXPECT_REL(functions_at(u, {2, 0.3, 0, -1})[5], c * 0.81 / 2 * (std::sqrt(1 + 4 * x / 0.81) - 1), 1e-12);
    for (const double vgs : {-3.0, 0.3}) {
        const std::vector<double> f = functions_at(u, {2, vgs, 0, -1});
        EXPECT_EQ(f[4], 0);
        EXPECT_EQ(f[5], -f[7]);
    }
}

TEST(mos_bsim1, has_the_derivatives_of_its_functions_in_every_region) {
    std::mt19937 rng(21);
    int close = 0;
    for (int trial = 0; trial < 1000; ++trial) {
        model_unit u = random_device(rng);
        four v = {random_in(rng, -6, 6), random_in(rng, -6, 6), random_in(rng, -6, 6), 0};
        const double pol = u.x.iparm[1], lower = std::min(pol * v[0], pol * v[2]);
        v[3] = pol * (lower + random_in(rng, -5, trial % 4 ? 0.2 : 0.7));
        if (trial % 5 == 0) v[1] = pol * (lower + random_in(rng, 0, 1));  // about the threshold
        u.call(&flags_class::init_guess);
        u.r("kept") = 0;
        close += expect_derivatives(u, v, 1e-6, 1e-16, 4e-5);
        set_voltages(u, v);
        u.call(&flags_class::dc, &flags_class::function);
        expect_balance(u);
    }
    EXPECT_GT(close, 1000 * 32 * 9 / 10);
}

TEST(mos_bsim1, is_finite_for_any_voltages) {
    std::mt19937 rng(22);
    for (unsigned k = 0; k < 5; ++k) {
        model_unit u = random_device(rng);
        if (k == 0) u.r("k1") = 0;
        if (k == 1) u.r("n0") = 200;
        u.prepare();
        expect_finite_everywhere(u, k);
    }
}

TEST(mos_bsim1, exchanges_drain_and_source) {
    std::mt19937 rng(23);
    for (int trial = 0; trial < 200; ++trial) {
        model_unit u = random_device(rng);
        u.r("cgdo") = u.r("cgso");
        u.r("ps") = u.r("pd");
        u.prepare();
        const four v = {random_in(rng, -3, 3), random_in(rng, -3, 3), random_in(rng, -3, 3), random_in(rng, -3, 3)};
        const std::vector<double> one = functions_at(u, v), other = functions_at(u, {v[2], v[1], v[0], v[3]});
        const std::size_t partner[] = {2, 1, 0, 3, 6, 5, 4, 7};
        for (std::size_t j = 0; j < 8; ++j)
            EXPECT_NEAR(one[j], other[partner[j]], 1e-12 * largest_of_its_kind(one, j, 4));
    }
}

TEST(mos_bsim1, has_a_mirror_image) {
    std::mt19937 rng(24);
    for (int trial = 0; trial < 200; ++trial) {
        model_unit u = random_device(rng);
        const four v = {random_in(rng, -3, 3), random_in(rng, -3, 3), random_in(rng, -3, 3), random_in(rng, -3, 3)};
        u.x.iparm[1] = 1;
        const std::vector<double> n = functions_at(u, v);
        u.x.iparm[1] = -1;
        const std::vector<double> p = functions_at(u, {-v[0], -v[1], -v[2], -v[3]});
        for (std::size_t j = 0; j < 8; ++j) EXPECT_EQ(n[j], -p[j]);
    }
}

// Currents and their slopes at the change to saturation, at the threshold, at vdd, at vds = 0 and where the root of the
// body voltage ends; charges have no jump there, nor at flat band.
TEST(mos_bsim1, has_no_jump_at_its_borders) {
    for (const bool subthreshold : {false, true}) {
        model_unit u = check_device();
        u.r("eta") = 0;
        u.r("x3ms") = 10;
        u.r("x2ms") = 5;
        u.r("mus") = 650;
        if (subthreshold) u.r("n0") = 1.3;
        u.prepare();
        const double vth = -0.15 + 0.9 * std::sqrt(0.75) - 0.05 * 0.75;
        const double e = 3 - vth, g = 1 - 1 / (1.744 + 0.8364 * 0.75), a = 1 + g * 0.45 / std::sqrt(0.75);
        const double vdsat = 2 * e / a / (1 + std::sqrt(1 + 2 * 0.05 * e / a));
        const four borders[] = {{vdsat, 3, 0, 0},
                                {2, vth, 0, 0},
                                {5, 3, 0, 0},
                                {0, 3, 0, -1},
                                {0, 0.4, 0, 0},
                                {1, 3, 0, 0.375},
                                {2, -0.9, 0, 0},
                                {2, -0.15 + 0.9 * std::sqrt(0.75), 0, 0},
                                {(3 + 0.15 - 0.9 * std::sqrt(0.75)) / a, 3, 0, 0}};
        constexpr double h = 1e-8;
        for (const four& v : borders)
            for (std::size_t k = 0; k < 4; ++k) {
                four below = v, above = v;
                below[k] -= h;
                above[k] += h;
                u.r("kept") = 0;
                set_voltages(u, below);
                u.dc();
                const std::vector<double> f = u.x.f, jac = u.jac.store;
                u.r("kept") = 0;
                set_voltages(u, above);
                u.dc();
                for (int j = 0; j < 8; ++j)
                    EXPECT_NEAR(f[static_cast<std::size_t>(j)], u.x.f[static_cast<std::size_t>(j)],
                                j < 4 ? 4e-11 : 1e-20);
                for (int j = 0; j < 4; ++j)
                    for (int t = 0; t < 4; ++t)
                        EXPECT_NEAR(jac[static_cast<std::size_t>(u.jac.offset(kind_v, j, t))], u.jac.dfdv[j][t], 5e-10)
                            << "function " << j << ", terminal " << t << ", v " << v[0] << ' ' << v[1] << ' ' << v[3];
            }
    }
}

TEST(mos_bsim1, has_an_output_conductance_above_0) {
    for (const double n0 : {200.0, 1.4}) {
        model_unit u = check_device();
        u.r("n0") = n0;
        u.prepare();
        for (double vgs = 0.7; vgs < 5; vgs += 0.1)
            for (double vds = -5.05; vds < 5.1; vds += 0.1)
                for (double vbs = -3; vbs <= 0; vbs += 0.5) {
                    u.r("kept") = 0;
                    const double vs = std::max(0.0, -vds);
                    set_voltages(u, {vds + vs, vgs + vs, vs, vbs});
                    u.flags.dc = u.flags.jacobian = 1;
                    u.call();
                    const double g = u.jac.dfdv[0][0];
                    // below the threshold it may be 0
                    EXPECT_TRUE(vgs > 1.5 ? g > 0 : g >= 0) << vgs << ' ' << vds << ' ' << vbs;
                }
    }
}

TEST(mos_bsim1, has_the_same_derivatives_from_differences) {
    std::mt19937 rng(25);
    for (int trial = 0; trial < 50; ++trial) {
        model_unit u = random_device(rng);
        const double pol = u.x.iparm[1];
        set_voltages(u, {pol * random_in(rng, 0, 5), pol * random_in(rng, 1, 5), 0, pol * random_in(rng, -3, -0.5)});
        u.dc();
        const std::vector<double> formulas = u.jac.store, f = u.x.f;
        u.x.iparm[0] = 1;
        u.dc();
        EXPECT_EQ(u.x.f, f);
        double largest = 0;
        for (int j = 0; j < 8; ++j)
            for (int k = 0; k < 4; ++k) {
                const double exact = formulas[static_cast<std::size_t>(u.jac.offset(kind_v, j, k))];
                EXPECT_NEAR(u.jac.dfdv[j][k], exact, j < 4 ? 1e-5 : 1e-16);
                largest = std::max(largest, std::abs(u.jac.dfdv[j][k] - exact));
            }
        EXPECT_GT(largest, 0);
    }
}

TEST(mos_bsim1, has_charges_that_know_no_path) {
    std::mt19937 rng(26);
    model_unit u = random_device(rng);
    const four v = {1, 2, 0, -1};
    const std::vector<double> first = functions_at(u, v);
    for (int k = 0; k < 100; ++k) {
        set_voltages(u, {random_in(rng, -5, 5), random_in(rng, -5, 5), random_in(rng, -5, 5), random_in(rng, -5, 5)});
        u.trns();
    }
    EXPECT_EQ(functions_at(u, v), first);
}

TEST(mos_bsim1, limits_a_step_and_goes_on_in_a_straight_line) {
    model_unit u = check_device();
    set_voltages(u, {1, 0, 0, 0});
    u.call(&flags_class::dc, &flags_class::newton_first, &flags_class::function, &flags_class::jacobian);
    // From below the threshold a gate may rise to vt0 + 0.5, and takes the drain with it: vgd stays at -2.
    const double vt0 = u.r("vt0_e");
    const std::vector<double> there = functions_at(u, {vt0 + 2.5, vt0 + 0.5, 0, 0});
    set_voltages(u, {10, 8, 0, 0});
    u.flags.n_limit = 0;
    u.flags.dc = u.flags.function = u.flags.jacobian = 1;
    u.call();
    EXPECT_EQ(u.flags.n_limit, 1);
    for (int j = 0; j < 8; ++j) {
        const double straight = there[static_cast<std::size_t>(j)] + u.jac.dfdv[j][1] * (8 - vt0 - 0.5) +
                                u.jac.dfdv[j][0] * (10 - vt0 - 2.5);
        EXPECT_NEAR(u.x.f[static_cast<std::size_t>(j)], straight, 1e-12 * std::abs(straight) + 1e-25);
    }
    // Without derivatives nothing is limited, and nothing is kept.
    const std::vector<double> far = functions_at(u, {10, 8, 0, 0});
    EXPECT_NE(far[0], u.x.f[0] + 1);
    model_unit fresh = check_device();
    EXPECT_EQ(functions_at(fresh, {10, 8, 0, 0}), far);
    // The first iterate of a solve has none before it.
    set_voltages(u, {10, 8, 0, 0});
    u.flags.init_flags();
    u.flags.n_limit = 0;
    u.call(&flags_class::dc, &flags_class::newton_first, &flags_class::function, &flags_class::jacobian);
    EXPECT_EQ(u.x.f, far);
}

TEST(mos_bsim1, limits_the_bulk_and_an_exchanged_channel) {
    model_unit u = check_device();
    set_voltages(u, {-1, 0, 0, -2});
    u.call(&flags_class::dc, &flags_class::newton_first, &flags_class::function, &flags_class::jacobian);
    set_voltages(u, {-10, -1, 0, 5});
    u.flags.dc = u.flags.function = u.flags.jacobian = 1;
    u.flags.n_limit = 0;
    u.call();
    EXPECT_EQ(u.flags.n_limit, 1);
    // vgd was 1 and rises to 9: near the threshold, so it stops at vt0 + 4; then vds = vgs - vgd, held at -4.
    EXPECT_NEAR(u.r("vds_k"), -4, 1e-12);
    EXPECT_NEAR(u.r("vgs_k") - u.r("vds_k"), u.r("vt0_e") + 4, 1e-12);
    // vbd was -1: from below 0, vt ln(vbd/vt) of the new one, 5 + 4
    const double vt = u.r("vt_e");
    EXPECT_NEAR(u.r("vbs_k") - u.r("vds_k"), vt * std::log(9 / vt), 1e-12);
}

// 5 V behind 2 kOhm at the drain, the gate at 3 V: Newton from 0, with and without limiting.
TEST(mos_bsim1, comes_to_the_same_point_with_and_without_limits) {
    double drain[2];
    for (const bool limited : {true, false}) {
        model_unit u = check_device();
        u.r("n0") = 1.4;
        u.prepare();
        double v = 0;
        int counted = 0, k = 0;
        for (; k < 200; ++k) {
            u.flags.init_flags();
            u.flags.n_limit = 0;
            u.flags.dc = u.flags.function = u.flags.jacobian = 1;
            u.flags.newton_first = limited ? k == 0 : 1;
            // the gate's node comes up with the first step
            set_voltages(u, {v, k == 0 ? 0.0 : 3.0, 0, 0});
            u.call();
            const double f = u.x.f[0] + (v - 5) / 2e3, step = -f / (u.jac.dfdv[0][0] + 1 / 2e3);
            v += step;
            counted += u.flags.n_limit;
            if (k > 0 && std::abs(step) < 1e-13 && u.flags.n_limit == 0) break;
        }
        EXPECT_LT(k, 100);
        EXPECT_EQ(counted > 0, limited);
        drain[limited] = v;
    }
    EXPECT_NEAR(drain[0], drain[1], 1e-11);
}

TEST(mos_bsim1, has_junctions_from_bulk_to_drain_and_source) {
    model_unit u = check_device();
    u.r("js") = 1e-4;
    u.r("ad") = 1e-10;
    u.r("is") = 2e-14;
    u.r("cj") = 1e-4;
    u.r("pb") = 0.9;
    u.r("cjsw") = 1e-10;
    u.r("pd") = 4e-5;
    u.r("vfb") = 20;  // no channel
    u.prepare();
    const double vt = u.r("vt_e");
    const std::vector<double> f = functions_at(u, {0, 0, 0, 0.4}), zero = functions_at(u, {0, 0, 0, 0});
    EXPECT_REL(f[0], -1e-14 * std::expm1(0.4 / vt), 1e-9);
    EXPECT_REL(f[2], -2e-14 * std::expm1(0.4 / vt), 1e-9);
    EXPECT_EQ(zero[0], 0);
    const std::vector<double> back = functions_at(u, {3, 0, 0, 0});
    const double bottom = 1e-14 * 0.9 * 2 * (1 - std::sqrt(1 + 3 / 0.9)),
                 wall = 4e-15 * 0.8 / 0.67 * (1 - std::pow(1 + 3 / 0.8, 0.67));
    EXPECT_REL(back[4], -(bottom + wall), 1e-12);
}

TEST(mos_bsim1, shows_its_channel_and_its_voltages) {
    model_unit u = check_device();
    set_voltages(u, {6, 4, 1, 1});
    u.call(&flags_class::outvar_prm);
    EXPECT_REL(u.r("id_o"), 7.8466339442e-04, 1e-9);
    EXPECT_EQ(u.r("vgs_o"), 3);
    EXPECT_EQ(u.r("vds_o"), 5);
    set_voltages(u, {1, 4, 6, 1});
    u.call(&flags_class::outvar_prm);
    EXPECT_REL(u.r("id_o"), -7.8466339442e-04, 1e-9);
}

TEST(mos_r, is_a_value_or_squares_of_a_sheet_or_nothing) {
    model_unit u("mos_r");
    u.prepare();
    EXPECT_REL(u.r("g"), 1e6, 1e-15);
    u.r("rsh") = 30;
    u.r("sq") = 2;
    u.prepare();
    EXPECT_REL(u.r("g"), 1.0 / 60, 1e-15);
    u.r("r") = 10;
    u.r("area") = 4;
    u.prepare();
    EXPECT_REL(u.r("g"), 0.4, 1e-15);
    ac_unit a("mos_r");
    a.r("rsh") = 30;
    a.r("sq") = 2;
    a.v = {6, 0, 0};
    a.ac(1);
    EXPECT_REL(a.f[0].real(), 0.1, 1e-15);
}

}  // namespace
