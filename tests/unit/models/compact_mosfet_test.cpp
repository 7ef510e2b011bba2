// The compact power MOSFET: its functions, their derivatives, its elements.
#include "models/compact_mosfet.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>

#include "halt_throws.h"
#include "model_unit.h"

namespace {

constexpr double exp_60 = 1.1420073898156842e26;
constexpr cool_channel channel = {120, 6, -0.03, 3.5, -7e-3, 0.1, 300.15, -1.5, 0.5, 0.35, 1e-3};
constexpr cool_gate_charge gate_charge = {2e-9, 5e-12, -2, 40};
constexpr cool_output_charge output_charge = {8e-9, 6e-11, 10};
constexpr cool_resistance drift = {0.04, 0.2, 2.4, 300.15};
constexpr cool_diode diode = {1e-11, 1.1, 1.11, 3, 300.15, 1e3};

#define EXPECT_REL(a, b, tolerance) EXPECT_NEAR(a, b, std::abs(b) * (tolerance))

// Value and slope of a function of one variable.
using curve = std::function<void(double, double&, double&)>;
double value_of(const curve& c, double x) {
    double y, dy;
    c(x, y, dy);
    return y;
}
double slope_of(const curve& c, double x) {
    double y, dy;
    c(x, y, dy);
    return dy;
}

TEST(cool_func_1, is_nothing_up_to_0_and_then_the_published_form) {
    const auto f = [](double k) { return [k](double x, double& y, double& dy) { cool_func_1(x, k, y, dy); }; };
    for (const double x : {-1e6, -1.0, 0.0}) {
        EXPECT_EQ(value_of(f(2), x), 0);
        EXPECT_EQ(slope_of(f(2), x), 0);
    }
    EXPECT_REL(value_of(f(2), 0.5), 0.5 - (std::exp(1.0) - 1) / 2, 1e-14);
    EXPECT_REL(slope_of(f(2), 0.5), 1 - std::exp(1.0), 1e-14);
    EXPECT_REL(value_of(f(2), 30), 30 - (exp_60 - 1) / 2, 1e-14);  // k x = 60
    EXPECT_REL(slope_of(f(2), 30), 1 - exp_60, 1e-14);
    EXPECT_REL(value_of(f(2), 31), 31 - (exp_60 * 3 - 1) / 2, 1e-14);  // the tangent, 2 further on
    EXPECT_REL(slope_of(f(2), 31), 1 - exp_60, 1e-14);
    EXPECT_REL(value_of(f(-0.1), 400), 390, 1e-14);  // the ramp that k below 0 makes: x - 1/|k| far away
    EXPECT_REL(slope_of(f(-0.1), 400), 1, 1e-14);
    EXPECT_EQ(value_of(f(0), 5), 0);
}

TEST(cool_temperature, is_the_node_between_170_and_680_and_held_outside_of_150_and_700) {
    for (const double t : {170.0, 230.0, 300.15, 450.0, 680.0}) {
        EXPECT_REL(value_of(cool_temperature, t), t, 1e-15);
        EXPECT_EQ(slope_of(cool_temperature, t), 1);
    }
    for (const double t : {-1e6, 0.0, 130.0}) EXPECT_EQ(value_of(cool_temperature, t), 150);
    for (const double t : {720.0, 1e6}) EXPECT_EQ(value_of(cool_temperature, t), 700);
    EXPECT_EQ(value_of(cool_temperature, 150), 155);  // 20^2/80 above the corner
    EXPECT_EQ(value_of(cool_temperature, 700), 695);
}

TEST(cool_Rd0, is_the_published_form) {
    double r, dr;
    cool_Rd0(drift, 300.15, r, dr);
    EXPECT_REL(r, 0.04, 1e-15);
    EXPECT_REL(dr, 0.04 * 0.8 * 2.4 / 300.15, 1e-14);
    cool_Rd0(drift, 400, r, dr);
    EXPECT_REL(r, 0.04 * (0.2 + 0.8 * std::pow(400 / 300.15, 2.4)), 1e-14);
    EXPECT_EQ(cool_Rd0_1(drift, 400), r);
}

TEST(cool_CF, is_a_power_whose_exponent_runs_from_1_2_to_3) {
    const cool_power_law p = {7, 6, -0.03};
    EXPECT_REL(cool_CF_1(p, 6), 7, 1e-14);
    EXPECT_REL(cool_CF_1(p, 12), 7 * std::pow(2, 2 - 0.18), 1e-14);
    EXPECT_REL(cool_CF_1(p, 60), 7 * std::pow(10, 1.2), 1e-14);  // 0.38 without a bound
    EXPECT_REL(cool_CF_1({7, 6, 0.5}, 0.06), 7 * std::pow(0.01, 1.2), 1e-14);
    EXPECT_REL(cool_CF_1({7, 6, 0.5}, 12), 7 * std::pow(2, 3), 1e-14);
    EXPECT_EQ(cool_CF_1(p, 0), 0);
    EXPECT_EQ(cool_CF_1(p, -1), 0);
}

TEST(cool_overdrive, is_ln_1_plus_exp_in_three_parts_that_meet) {
    const auto over = [](double v, double& y, double& dy) { cool_overdrive(v, 0.1, y, dy); };
    EXPECT_REL(value_of(over, 0), 0.1 * std::log(2), 1e-15);
    EXPECT_REL(value_of(over, -1), 0.1 * std::log1p(std::exp(-10)), 1e-14);
    EXPECT_EQ(value_of(over, 5.5), 5.5);
    EXPECT_EQ(value_of(over, -1e6), 0);
    for (const double border : {2.5, 5.0}) {
        EXPECT_REL(value_of(over, border + 1e-12), value_of(over, border) + 1e-12, 1e-14);
        EXPECT_REL(slope_of(over, border + 1e-12), slope_of(over, border), 1e-14);
    }
}

TEST(cool_QCdg1, has_a_linear_a_quadratic_and_a_cut_part_that_meet) {
    const auto q = [](double v, double& y, double& dy) { cool_QCdg1(gate_charge, v, y, dy); };
    EXPECT_REL(value_of(q, -10), -20e-9, 1e-14);
    EXPECT_REL(value_of(q, 19) - value_of(q, -2), 21 * (2e-9 + 1.0025e-9) / 2, 1e-13);  // half way down: a trapezium
    EXPECT_REL(slope_of(q, 19), 1.0025e-9, 1e-14);
    EXPECT_REL(value_of(q, 40) - value_of(q, -2), 42 * 1.0025e-9, 1e-13);
    EXPECT_REL(value_of(q, 400) - value_of(q, 40), 360 * 5e-12, 1e-12);
    for (const double border : {-2.0, 40.0}) {
        EXPECT_NEAR(value_of(q, border - 1e-9), value_of(q, border + 1e-9), 2e-9 * 2.1e-9);
        EXPECT_NEAR(slope_of(q, border - 1e-9), slope_of(q, border + 1e-9), 1e-18);
    }
}

TEST(cool_QCds1, falls_from_0_volts_on_by_an_exponential) {
    const auto q = [](double v, double& y, double& dy) { cool_QCds1(output_charge, v, y, dy); };
    EXPECT_REL(value_of(q, -3), -24e-9, 1e-14);
    EXPECT_REL(slope_of(q, 25), 6e-11 + 7.94e-9 * std::exp(-2.5), 1e-13);
    EXPECT_REL(value_of(q, 25), 25 * 6e-11 + 7.94e-9 * 10 * (1 - std::exp(-2.5)), 1e-13);
    EXPECT_REL(value_of(q, 400), 400 * 6e-11 + 79.4e-9, 1e-13);
    EXPECT_NEAR(slope_of(q, -1e-9), slope_of(q, 1e-9), 1e-17);
}

TEST(cool_J, is_the_saturation_current_far_above_the_knee_and_odd_in_the_drain_voltage) {
    // 4.5 V of overdrive: exponent 2.045; at 400 V the hyperbolic tangent is 1.
    const double at_nom = 120 * std::pow(0.75, 2.045) * 1.4;
    EXPECT_REL(cool_J_1(channel, 8, 400, 300.15), at_nom, 1e-12);
    // At 400.15 K 0.7 V less of threshold.
    const double hot = 120 * std::pow(400.15 / 300.15, -1.5) * std::pow(5.2 / 6, 2 + 0.03 * 0.8) * 1.4;
    EXPECT_REL(cool_J_1(channel, 8, 400, 400.15), hot, 1e-12);
    double j, dg, dd, dt;
    cool_J(channel, 8, 0, 300.15, j, dg, dd, dt);
    EXPECT_EQ(j, 0);
    EXPECT_EQ(dg, 0);
    EXPECT_EQ(dt, 0);
    EXPECT_REL(dd, at_nom / 1.4 / (0.5 + 0.35 * 4.5), 1e-12);  // a resistance of knee over current
    for (const double vd : {0.01, 1.0, 30.0}) EXPECT_EQ(cool_J_1(channel, 8, -vd, 350), -cool_J_1(channel, 8, vd, 350));
}

// Of all functions in all variables, at random points where the device works. Differences of fourth order; where those
// of two steps disagree a border of the curve lies between.
TEST(compact_mosfet, has_the_derivatives_of_its_functions_at_a_thousand_points_and_temperatures) {
    std::mt19937 rng(15);
    const auto any = [&](double low, double high) { return std::uniform_real_distribution<double>(low, high)(rng); };
    int n_compared = 0;
    const math_cnst_class math_cnst;
    const auto compare = [&](const char* what, double derivative, double h, double smallest,
                             const std::function<double(double)>& f) {
        const auto difference = [&](double s) { return (8 * (f(s) - f(-s)) - (f(2 * s) - f(-2 * s))) / (12 * s); };
        const double d_1 = difference(h), d_2 = difference(2 * h);
        if (std::abs(d_1 - d_2) > 1e-5 * std::abs(d_1) + smallest) return;
        ++n_compared;
        EXPECT_NEAR(derivative, d_1, 1e-6 * std::abs(d_1) + 2 * std::abs(d_1 - d_2) + smallest) << what;
    };
    const auto compare_curve = [&](const char* what, const curve& c, double x, double h, double smallest) {
        compare(what, slope_of(c, x), h, smallest, [&](double dx) { return value_of(c, x + dx); });
    };
    for (int trial = 0; trial < 1000; ++trial) {
        const double t = any(230, 450), vg = any(2.0, 15), vd = any(-10, 30), k = any(-3, 3), v = any(-3, 1);
        SCOPED_TRACE(line("t=", t, " vg=", vg, " vd=", vd, " k=", k, " v=", v));
        compare_curve("temperature", cool_temperature, any(100, 750), 1e-3, 1e-9);
        compare_curve(
            "func_1", [&](double x, double& y, double& dy) { cool_func_1(x, k, y, dy); }, any(-2, 5), 1e-4, 1e-9);
        compare_curve(
            "QCdg1", [](double x, double& y, double& dy) { cool_QCdg1(gate_charge, x, y, dy); }, any(-20, 80), 1e-3,
            1e-18);
        compare_curve(
            "QCds1", [](double x, double& y, double& dy) { cool_QCds1(output_charge, x, y, dy); }, any(-20, 80), 1e-3,
            1e-18);
        compare_curve(
            "Rd0", [](double x, double& y, double& dy) { cool_Rd0(drift, x, y, dy); }, t, 0.1, 1e-13);
        compare_curve(
            "CF",
            [&](double x, double& y, double& dy) {
                cool_CF({2, 6, 0.1 * k}, x, y, dy);
            },
            any(0.01, 30), 1e-4, 1e-9);
        compare_curve(
            "overdrive", [](double x, double& y, double& dy) { cool_overdrive(x, 0.1, y, dy); }, any(-1, 7), 1e-4,
            1e-10);
        compare_curve(
            "I0", [](double x, double& y, double& dy) { cool_I0(channel, x, y, dy); }, t, 0.1, 1e-10);
        double y, dg, dd, dt, over, dover;
        cool_Ig(channel, vg, t, y, dg, dt, over, dover);
        compare("Ig, gate", dg, 1e-3, 1e-9, [&](double dx) { return cool_Ig_1(channel, vg + dx, t); });
        compare("Ig, temperature", dt, 1e-2, 1e-10, [&](double dx) { return cool_Ig_1(channel, vg, t + dx); });
        cool_J(channel, vg, vd, t, y, dg, dd, dt);
        EXPECT_EQ(y, cool_J_1(channel, vg, vd, t));
        compare("J, gate", dg, 1e-3, 1e-9, [&](double dx) { return cool_J_1(channel, vg + dx, vd, t); });
        compare("J, drain", dd, 1e-3, 1e-9, [&](double dx) { return cool_J_1(channel, vg, vd + dx, t); });
        compare("J, temperature", dt, 1e-2, 1e-10, [&](double dx) { return cool_J_1(channel, vg, vd, t + dx); });
        const auto i_diode = [&](double at_v, double at_t) {
            double i, g, gt;
            cool_body_diode(diode, math_cnst, at_v, at_t, 1e-12, i, g, gt);
            return i;
        };
        double i, g, gt;
        cool_body_diode(diode, math_cnst, v, t, 1e-12, i, g, gt);
        const double rounding = 1e-14 + 1e-11 * std::abs(i);
        compare("diode, voltage", g, 1e-4, rounding, [&](double dx) { return i_diode(v + dx, t); });
        compare("diode, temperature", gt, 1e-2, rounding, [&](double dx) { return i_diode(v, t + dx); });
        // On the tangent, far above the cap.
        cool_body_diode(diode, math_cnst, v + 5, t, 1e-12, i, g, gt);
        compare("diode, tangent, voltage", g, 1e-4, 1e-4, [&](double dx) { return i_diode(v + 5 + dx, t); });
        compare("diode, tangent, temperature", gt, 1e-2, 1e-6, [&](double dx) { return i_diode(v + 5, t + dx); });
        if (HasFailure()) return;
    }
    EXPECT_GT(n_compared, 16500);  // of 17000
}

TEST(cool_body_diode, is_the_junction_diode_at_its_temperature) {
    // is (T/T0)^(xti/n) exp(eg/vt0 - eg/vt), with k/q of the published constants.
    const math_cnst_class math_cnst;
    const double per_k = 1.3806226e-23 / 1.6021918e-19, t = 400, vt = per_k * t;
    const double is_t = 1e-11 * std::pow(t / 300.15, 3 / 1.1) * std::exp(1.11 / (per_k * 300.15) - 1.11 / vt);
    double i, g, dt;
    cool_body_diode(diode, math_cnst, 0.6, t, 1e-3, i, g, dt);
    EXPECT_REL(i, is_t * (std::exp(0.6 / (1.1 * vt)) - 1) + 0.6e-3, 1e-12);
    cool_body_diode(diode, math_cnst, 3, t, 0, i, g, dt);  // the straight line behind i_max
    const double x_max = std::log(1e3 / is_t);
    EXPECT_REL(i, 1e3 * (1 + 3 / (1.1 * vt) - x_max) - is_t, 1e-12);
}

// ---- elements

// All functions, and derivatives by node, sensed node and own current, of a transient's call.
struct answer {
    std::vector<double> f, jac;
};
answer at(model_unit& u, const std::vector<double>& v, const std::vector<double>& vind, double current = 0) {
    std::copy(v.begin(), v.end(), u.x.v.begin());
    std::copy(vind.begin(), vind.end(), u.x.vind.begin());
    u.x.aux[0] = current;
    std::fill(u.jac.store.begin(), u.jac.store.end(), 0.0);
    u.trns();
    answer a{u.x.f, {}};
    for (int j = 0; j < u.jac.n_f; ++j) {
        a.jac.insert(a.jac.end(), u.jac.dfdv[j], u.jac.dfdv[j] + u.jac.n_nd);
        a.jac.insert(a.jac.end(), u.jac.dfdvind[j], u.jac.dfdvind[j] + u.jac.n_in);
        a.jac.insert(a.jac.end(), u.jac.dfdaux[j], u.jac.dfdaux[j] + u.jac.n_aux);
    }
    return a;
}

TEST(compact_mosfet, has_numeric_derivatives_near_the_analytic_ones) {
    std::mt19937 rng(7);
    const auto any = [&](double low, double high) { return std::uniform_real_distribution<double>(low, high)(rng); };
    for (const char* name : {"cool_vccs_1", "cool_vccs_2"}) {
        model_unit analytic(name), numeric(name);
        analytic.prepare();
        numeric.x.iparm[0] = 1;
        numeric.prepare();
        int n_near = 0, n = 0;
        for (int trial = 0; trial < 1000; ++trial) {
            const std::vector<double> v = {any(-5, 50), any(-1, 1)}, vind = {any(0, 15), any(230, 450)};
            const std::size_t n_in = std::string(name) == "cool_vccs_1" ? 2 : 0;
            const std::vector<double> in(vind.begin(), vind.begin() + static_cast<std::ptrdiff_t>(n_in));
            const answer a = at(analytic, v, in), b = at(numeric, v, in);
            EXPECT_EQ(a.f, b.f);
            for (std::size_t c = 0; c < a.jac.size(); ++c, ++n)
                n_near += std::abs(a.jac[c] - b.jac[c]) <= 0.01 * std::abs(a.jac[c]) + (n_in ? 1e-6 : 1e-15);
        }
        EXPECT_GT(n_near, 0.98 * n) << name;
    }
}

TEST(compact_mosfet, answers_any_voltage_and_temperature_up_to_a_million_with_finite_numbers) {
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> exponent(-3, 6);
    for (const char* name :
         {"cool_vccs_1", "cool_vccs_2", "cool_vccs_3", "cool_vccs_5", "cool_vcvs_1", "cool_vcvs_2", "cool_vcvs_3"}) {
        model_unit u(name);
        u.prepare();
        for (int trial = 0; trial < 5000; ++trial) {
            const auto any = [&] { return (rng() % 2 ? 1 : -1) * std::pow(10.0, exponent(rng)); };
            const std::vector<double> v = {any(), any()}, vind = {any(), any()};
            const std::size_t n_in = u.x.vind.size() - 1;
            const answer a = at(u, v, {vind.begin(), vind.begin() + static_cast<std::ptrdiff_t>(n_in)}, any());
            for (double x : a.f) ASSERT_TRUE(std::isfinite(x)) << name << ::testing::PrintToString(v);
            for (double x : a.jac) ASSERT_TRUE(std::isfinite(x)) << name << ::testing::PrintToString(v);
        }
    }
}

TEST(compact_mosfet, tells_the_solver_of_a_voltage_beyond_the_range_of_numbers_by_an_infinite_current) {
    for (const double v : {1e300, -1e300}) {
        model_unit u("cool_vccs_1");
        u.prepare();
        const answer a = at(u, {v, 0}, {1e300, 300});
        EXPECT_EQ(a.f[0], v * INFINITY);
        EXPECT_TRUE(std::isfinite(a.jac[0]));
        model_unit d("cool_vccs_5");
        d.prepare();
        if (v > 0) {
            EXPECT_EQ(at(d, {1e308, -1e308}, {300}).f[0], INFINITY);
        }
    }
}

TEST(cool_vcvs_1, is_the_drift_resistance_at_its_temperature) {
    model_unit u("cool_vcvs_1");
    u.prepare();
    const answer a = at(u, {2, 0.5}, {400}, 10);
    EXPECT_EQ(a.f[0], 10);
    EXPECT_EQ(a.f[1], -10);
    EXPECT_REL(a.f[2], 1.5 - 10 * 0.04 * (0.2 + 0.8 * std::pow(400 / 300.15, 2.4)), 1e-12);
}

TEST(cool_vcvs_2, gives_the_power_of_its_current_against_the_source_to_the_junction) {
    model_unit u("cool_vcvs_2");
    u.prepare();
    const answer a = at(u, {7, 6.5, 350, 1}, {2}, 3);
    EXPECT_EQ((std::vector<double>{a.f.begin(), a.f.begin() + 5}), (std::vector<double>{3, -3, -15, 15, 0.5}));
    u.call(&flags_class::outvar_prm);
    EXPECT_EQ(u.r("p_o"), 15);
    EXPECT_EQ(u.r("u_o"), 5);
    EXPECT_EQ(u.r("tj_o"), 349);
    u.call(&flags_class::init_guess);
    EXPECT_EQ(u.x.v[2], 300.15);
}

TEST(cool_vcvs_3, is_a_rise_and_a_resistance_to_heat) {
    model_unit u("cool_vcvs_3");
    u.r("r_th") = 0.5;
    u.r("t_rise") = 2;
    u.prepare();
    EXPECT_EQ(at(u, {350, 300}, {}, 90).f[2], 50 - 2 - 45);
}

void expect_refused(const char* name, const char* word, double value, const char* text) {
    EXPECT_HALT(
        [&] {
            model_unit u(name);
            u.r(word) = value;
            u.prepare();
        }(),
        text);
}
TEST(compact_mosfet, refuses_parameters_that_leave_no_curve) {
    expect_refused("cool_vccs_1", "v_ref", 0, "cool_vccs_1.ebe: v_ref or v_s too small!\n  v_ref=0\n  v_s=0.1\n");
    expect_refused("cool_vccs_1", "v_s", -1, "cool_vccs_1.ebe: v_ref or v_s too small!\n  v_ref=6\n  v_s=-1\n");
    expect_refused("cool_vccs_1", "t_nom", 0, "cool_vccs_1.ebe: t_nom too small!\n  t_nom=0\n");
    expect_refused("cool_vccs_1", "v_k0", 0, "cool_vccs_1.ebe: v_k0 or k_k too small!\n  v_k0=0\n  k_k=0.35\n");
    expect_refused("cool_vccs_1", "k_k", -1, "cool_vccs_1.ebe: v_k0 or k_k too small!\n  v_k0=0.5\n  k_k=-1\n");
    expect_refused("cool_vccs_2", "v_2", 0, "cool_vccs_2.ebe: v_2 too small!\n  v_1=0\n  v_2=0\n");
    expect_refused("cool_vccs_3", "v_c", 0, "cool_vccs_3.ebe: v_c too small!\n  v_c=0\n");
    expect_refused("cool_vccs_5", "i_s", 0, "cool_vccs_5.ebe: i_s or i_max too small!\n  i_s=0\n  i_max=1000\n");
    expect_refused("cool_vccs_5", "i_max", 0, "cool_vccs_5.ebe: i_s or i_max too small!\n  i_s=1e-11\n  i_max=0\n");
    expect_refused("cool_vccs_5", "n_em", 0, "cool_vccs_5.ebe: n_em or t_nom too small!\n  n_em=0\n  t_nom=300.15\n");
    expect_refused("cool_vcvs_1", "r0", -1, "cool_vcvs_1.ebe: r0 too small!\n  r0=-1\n");
    expect_refused("cool_vcvs_1", "t_nom", 0, "cool_vcvs_1.ebe: t_nom too small!\n  t_nom=0\n");
    expect_refused("cool_vcvs_3", "r_th", -1, "cool_vcvs_3.ebe: r_th too small!\n  r_th=-1\n");
}

}  // namespace
