// General blocks against their formulas.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>

#include "block_unit.h"
#include "halt_throws.h"

namespace {

constexpr double pi = std::numbers::pi;

// ---- algebra ----

struct value_case {
    std::string name;
    std::vector<std::pair<std::string, double>> parameters;
    std::vector<double> inputs;
    double y;
};

TEST(algebra_blocks, give_their_formulas_in_all_analyses) {
    const value_case cases[] = {
        {"const", {{"k", -2.5}}, {}, -2.5},
        {"linear_1", {{"c0", 3}, {"c1", -2}}, {4}, -5},
        {"sum_2", {{"k0", 0.5}, {"k1", 2}, {"k2", -3}}, {5, 7}, 0.5 + 10 - 21},
        {"sum_2", {}, {5, 7}, 12},
        {"sum_3", {{"k0", 1}, {"k1", 2}, {"k2", 3}, {"k3", 4}}, {5, 6, 7}, 1 + 10 + 18 + 28},
        {"sub_2", {}, {5, 7}, -2},
        {"multscl", {{"k", -3}}, {5}, -15},
        {"mult_2a", {{"k", 0.5}}, {6, -7}, -21},
        {"divscl", {{"k", 8}}, {4}, 0.5},
        {"abs", {}, {-3}, 3},
        {"abs", {}, {3}, 3},
        {"abs", {}, {0}, 0},
        {"sqrt", {{"k", 3}}, {16}, 12},
        {"sqrt", {{"k", 3}}, {-16}, 0},
        {"sqrt", {{"k", 3}}, {0}, 0},
        {"sine", {{"a", 2}, {"k", pi}, {"ph", pi / 3}}, {0.5}, 1},
        {"cosine", {{"a", 2}, {"k", pi}, {"ph", pi / 3}}, {1}, -1},
        {"lmtr", {{"x_min", -2}, {"x_max", 5}}, {7}, 5},
        {"lmtr", {{"x_min", -2}, {"x_max", 5}}, {-7}, -2},
        {"lmtr", {{"x_min", -2}, {"x_max", 5}}, {4.5}, 4.5},
        {"mux", {}, {3, 4, 0.49}, 3},
        {"mux", {}, {3, 4, 0.51}, 4},
        {"mux", {{"x_high", 10}}, {3, 4, 4.9}, 3},
        {"and_2", {{"y_low", -1}, {"y_high", 7}}, {1, 1}, 7},
        {"and_2", {{"y_low", -1}, {"y_high", 7}}, {1, 0}, -1},
        {"and_2", {{"y_low", -1}, {"y_high", 7}}, {0, 1}, -1},
        {"or_2", {{"x_high", 10}}, {4.9, 5.1}, 1},
        {"or_2", {{"x_high", 10}}, {4.9, 4.9}, 0},
        {"or_2", {{"x_low", -10}, {"x_high", 10}}, {0.1, -9}, 1},
        {"not", {{"y_low", 2}, {"y_high", 3}}, {0}, 3},
        {"not", {{"y_low", 2}, {"y_high", 3}}, {1}, 2},
        {"cmprtr", {{"x_low", -1}, {"x_high", 6}}, {2, 1}, 6},
        {"cmprtr", {{"x_low", -1}, {"x_high", 6}}, {1, 2}, -1},
        {"cmprtr", {{"x_low", -1}, {"x_high", 6}}, {2, 2}, -1},
    };
    for (const value_case& c : cases) {
        block_unit u(c.name);
        for (const auto& [word, value] : c.parameters) u.r(word) = value;
        u.prepare();
        std::copy(c.inputs.begin(), c.inputs.end(), u.x.vr.begin());
        u.x.vr[c.inputs.size()] = 0.25;  // the output: f is what it lacks
        for (const auto mode : {&flags_class::dc, &flags_class::trns, &flags_class::startup}) {
            u.call(mode, &flags_class::function);
            EXPECT_NEAR(0.25 - u.x.f[0], c.y, 1e-12) << c.name;
        }
    }
}

TEST(algebra_blocks, refuse_parameters_without_sense) {
    block_unit d("divscl"), l("lmtr"), lag("lag_1"), f0("filter_z0_p1"), f1("filter_z1_p1"), f2("filter_z2_p2");
    d.r("k") = 0;
    l.r("x_min") = 2;
    lag.r("tau") = 0;
    f0.r("b1") = 0;
    f1.r("b1") = 0;
    f2.r("b2") = 0;
    EXPECT_HALT(d.prepare(), "divscl.gbe: k = 0 ?!\n");
    EXPECT_HALT(l.prepare(), "lmtr.gbe: x_min > x_max ?!\n");
    EXPECT_HALT(lag.prepare(), "lag_1.gbe: tau = 0 ?!\n");
    EXPECT_HALT(f0.prepare(), "filter_z0_p1.gbe: b1 = 0 ?!\n");
    EXPECT_HALT(f1.prepare(), "filter_z1_p1.gbe: b1 = 0 ?!\n");
    EXPECT_HALT(f2.prepare(), "filter_z2_p2.gbe: b2 = 0 ?!\n");
}

TEST(abs, tells_its_first_guess_only_when_internals_are_traced) {
    block_unit u("abs");
    u.vr("x") = -1.5;
    EXPECT_EQ(run_and_listen([&] { u.guess(); }).text, "");
    u.flags.flag_debug_int = 1;
    EXPECT_EQ(run_and_listen([&] { u.guess(); }).text, "abs.gbe (init): x=-1.5\n");
}

// ---- sources in time ----

TEST(srcac, is_a_sine_wave_also_before_its_origin) {
    block_unit u("srcac");
    u.r("a") = 3;
    u.r("f_hz") = 10;
    u.r("phi") = 30;
    u.r("t0") = 0.01;
    u.r("dc") = 5;
    u.prepare();
    for (const double t : {-0.02, 0.0, 0.01, 0.0234})
        EXPECT_NEAR(u.output(t), 5 + 3 * std::sin(2 * pi * 10 * (t - 0.01) + pi / 6), 1e-12);
}

struct wave_case {
    std::string name;
    std::vector<std::pair<std::string, double>> parameters;
    std::vector<std::pair<double, double>> points;  // time, value
    std::vector<double> breaks;                     // answers from time 0 on, each asked at the one before
};

TEST(waves, stand_at_their_corners_and_name_each_of_them) {
    const wave_case cases[] = {
        {"clock",
         {{"t1", 3e-3}, {"t2", 7e-3}, {"dt1", 1e-3}, {"dt2", 2e-3}, {"g_low", 1}, {"g_high", 5}},
         {{0, 1},
          {0.5e-3, 3},
          {1e-3, 5},
          {2e-3, 5},
          {3e-3, 5},
          {4e-3, 3},
          {5e-3, 1},
          {9e-3, 1},
          {10.25e-3, 2},
          {-6e-3, 3}},
         {1e-3, 3e-3, 5e-3, 10e-3, 11e-3, 13e-3, 15e-3, 20e-3, 21e-3}},
        {"pulse",
         {{"y1", 1}, {"y2", 3}, {"td", 1e-3}, {"tr", 1e-3}, {"tf", 2e-3}, {"pw", 4e-3}},
         {{0, 1}, {1e-3, 1}, {1.5e-3, 2}, {2e-3, 3}, {6e-3, 3}, {7e-3, 2}, {8e-3, 1}, {1, 1}},
         {1e-3, 2e-3, 6e-3, 8e-3, 1e9}},
        {"pulse",
         {{"tr", 1e-3}, {"tf", 1e-3}, {"pw", 1e-3}, {"per", 5e-3}},
         {{0.5e-3, 0.5}, {4e-3, 0}, {5.5e-3, 0.5}, {6.5e-3, 1}, {-1.5e-3, 0}},
         {1e-3, 2e-3, 3e-3, 5e-3, 6e-3, 7e-3}},
        {"step",
         {{"y1", 2}, {"y2", -2}, {"t0", 1e-3}, {"dt1", 2e-3}},
         {{0, 2}, {2e-3, 0}, {3e-3, -2}, {1, -2}},
         {1e-3, 3e-3, 1e9}},
        {"triangle_1",
         {{"per", 4e-3}, {"t0", 1e-3}, {"y_min", -1}, {"y_max", 3}},
         {{1e-3, -1}, {2e-3, 1}, {3e-3, 3}, {4e-3, 1}, {5e-3, -1}, {0, 1}, {-1e-3, 3}},
         {1e-3, 3e-3, 5e-3, 7e-3, 9e-3}},
        {"pwl_file", {}, {{-1, 1}, {-0.2, 1.5}, {0.1, -1}, {0.35, 1}, {0.6, 3}, {9, 3}}, {0.1, 0.6, 1e9}},
    };
    for (const wave_case& c : cases) {
        block_unit u(c.name);
        for (const auto& [word, value] : c.parameters) u.r(word) = value;
        u.prepare();
        for (const auto& [t, y] : c.points) EXPECT_NEAR(u.output(t), y, 1e-9) << c.name << " at " << t;
        double t = 0;
        for (const double expected : c.breaks) {
            t = u.next_break(t);
            EXPECT_NEAR(t, expected, 1e-12) << c.name;
        }
    }
}

TEST(pwl20, runs_through_the_points_that_count) {
    block_unit u("pwl20");
    u.i("n_pts") = 3;
    u.r("t1") = 1;
    u.r("t2") = 2;
    u.r("t3") = 4;
    u.r("t4") = 1;  // no longer one of them
    u.r("y1") = 5;
    u.r("y2") = 7;
    u.r("y3") = -1;
    u.prepare();
    EXPECT_EQ(u.output(0), 5);
    EXPECT_EQ(u.output(1.5), 6);
    EXPECT_EQ(u.output(3), 3);
    EXPECT_EQ(u.output(9), -1);
    EXPECT_EQ(u.next_break(0), 1);
    EXPECT_EQ(u.next_break(1), 2);
    EXPECT_EQ(u.next_break(4), 1e9);
}

TEST(waves, refuse_corners_out_of_order) {
    const auto prepare = [](const std::string& name, const std::vector<std::pair<std::string, double>>& parameters,
                            int n_pts = 2) {
        block_unit u(name);
        for (const auto& [word, value] : parameters) u.r(word) = value;
        if (name == "pwl20") u.i("n_pts") = n_pts;
        u.prepare();
    };
    EXPECT_HALT(prepare("clock", {{"dt1", 0.6e-3}}), "clock.gbe: dt1.gt.t1 ?!\n");
    EXPECT_HALT(prepare("clock", {{"dt2", 0.6e-3}}), "clock.gbe: dt2.gt.t2 ?!\n");
    EXPECT_HALT(prepare("clock", {{"g_high", -1}}), "clock.gbe: g_high.lt.0.0 ?!\n");
    EXPECT_HALT(prepare("clock", {{"dt1", 0}}), "clock.gbe: check t1, t2, dt1, dt2. Halting...\n");
    EXPECT_HALT(prepare("clock", {{"dt2", -1e-6}}), "clock.gbe: check t1, t2, dt1, dt2. Halting...\n");
    EXPECT_HALT(prepare("pulse", {{"tr", -1}}), "pulse.gbe: check tr, tf, pw, per. Halting...\n");
    EXPECT_HALT(prepare("pulse", {{"per", 1e-4}}), "pulse.gbe: check tr, tf, pw, per. Halting...\n");
    EXPECT_HALT(prepare("step", {{"dt1", -1}}), "step.gbe: check dt1. Halting...\n");
    EXPECT_HALT(prepare("triangle_1", {{"per", 0}}), "triangle_1.gbe: check per. Halting...\n");
    EXPECT_HALT(prepare("pwl20", {{"t1", 1}}), "pwl20.gbe: times must ascend. Halting...\n");
    EXPECT_HALT(prepare("pwl20", {}, 0), "pwl20.gbe: check n_pts. Halting...\n");
    EXPECT_HALT(prepare("pwl20", {}, 21), "pwl20.gbe: check n_pts. Halting...\n");
}

// ---- states ----

TEST(states, are_held_at_their_start_values_in_start_up_and_guessed_where_there_is_a_guess) {
    for (const std::string name : {"intgrtr", "lag_1", "filter_z0_p1"}) {
        block_unit u(name);
        u.prepare();
        u.st("y0") = 0.75;
        u.vr("x") = 9;
        u.vr("y") = 2;
        u.startup();
        EXPECT_EQ(u.x.f[0], 1.25) << name;
        EXPECT_EQ(u.jac.dfdvr[0][0], 0) << name;
        EXPECT_EQ(u.jac.dfdvr[0][1], 1) << name;
        if (name == "filter_z0_p1") continue;
        u.ig("y_ig") = -4;
        u.guess();
        EXPECT_EQ(u.vr("y"), -4) << name;
    }
    block_unit f("filter_z2_p2");
    f.prepare();
    f.st("z10") = 3;
    f.st("z20") = 5;
    f.aux("z1") = 4;
    f.aux("z2") = 4;
    f.startup();
    EXPECT_EQ(f.x.f[1], 1);
    EXPECT_EQ(f.x.f[2], -1);
}

TEST(intgrtr, has_the_row_of_its_derivative) {
    block_unit u("intgrtr");
    u.r("k") = 3;
    u.prepare();
    u.vr("x") = 2;
    u.vr("y") = 100;
    u.trns();
    EXPECT_EQ(u.x.f[0], 6);
    u.dc();
    EXPECT_EQ(u.x.f[0], 6);
}

// Backward Euler by hand on the model's own row: a step of h = tau/100 divides the distance from 1 by 1.01.
TEST(lag_1, follows_a_step_as_the_recursion_by_hand) {
    block_unit u("lag_1");
    u.r("tau") = 1e-3;
    u.prepare();
    u.vr("x") = 1;
    u.vr("y") = 0;
    const double h = 1e-5;
    for (int i = 0; i < 100; ++i) {
        const double y_old = u.vr("y");
        for (int newton = 0; newton < 2; ++newton) {
            u.trns();
            u.vr("y") -= (u.vr("y") - y_old - h * u.x.f[0]) / (1 - h * u.jac.dfdvr[0][1]);
        }
    }
    EXPECT_NEAR(u.vr("y"), 0.630288787671, 1e-12);
}

// The transfer at s from the block's own linear system: outputs and states solve (row = 0, or row = s state).
std::complex<double> transfer(block_unit& u, std::complex<double> s) {
    u.trns();
    const int n = u.jac.n_aux + 1, out = 1;
    const function_table& t = u.lib.func;
    const int first = t.first_f[static_cast<std::size_t>(u.e)];
    std::vector<std::vector<std::complex<double>>> a(static_cast<std::size_t>(n));
    for (int j = 0; j < n; ++j) {
        auto& row = a[static_cast<std::size_t>(j)];
        row.push_back(u.jac.dfdvr[j][out]);
        for (int k = 0; k < u.jac.n_aux; ++k) row.push_back(u.jac.dfdaux[j][k]);
        row.push_back(-u.jac.dfdvr[j][0]);  // right-hand side for x = 1
        const auto k = static_cast<std::size_t>(first + j);
        if (t.flag_ddt[k])
            row[static_cast<std::size_t>(t.ddt_var_flag[k] == kind_gaux ? t.ddt_var_number[k] + 1 : 0)] -= s;
    }
    for (int p = 0; p < n; ++p) {  // elimination without need of pivots: the first column of row 0 is 1 or the state
        for (int j = p + 1; j < n; ++j) {
            const auto factor = a[j][p] / a[p][p];
            for (int k = p; k <= n; ++k) a[j][k] -= factor * a[p][k];
        }
    }
    std::vector<std::complex<double>> x(static_cast<std::size_t>(n));
    for (int p = n; p-- > 0;) {
        auto sum = a[p][n];
        for (int k = p + 1; k < n; ++k) sum -= a[p][k] * x[k];
        x[p] = sum / a[p][p];
    }
    return x[0];
}

TEST(filters, have_the_transfer_of_their_coefficients) {
    const double a0 = 2, a1 = -0.3, a2 = 0.7, b0 = 1.5, b1 = 0.4, b2 = 0.25;
    for (const std::complex<double> s : {std::complex<double>(0, 0.1), {0, 3}, {0.5, 40}, {2, 0}}) {
        block_unit z0("filter_z0_p1"), z1("filter_z1_p1"), z2("filter_z2_p2"), lag("lag_1");
        for (block_unit* u : {&z0, &z1, &z2}) {
            u->r("a0") = a0;
            u->r("b0") = b0;
            u->r("b1") = b1;
        }
        z1.r("a1") = z2.r("a1") = a1;
        z2.r("a2") = a2;
        z2.r("b2") = b2;
        lag.r("k") = 3;
        lag.r("tau") = 0.2;
        for (block_unit* u : {&z0, &z1, &z2, &lag}) u->prepare();
        EXPECT_LT(std::abs(transfer(z0, s) - a0 / (b0 + b1 * s)), 1e-12);
        EXPECT_LT(std::abs(transfer(z1, s) - (a0 + a1 * s) / (b0 + b1 * s)), 1e-12);
        EXPECT_LT(std::abs(transfer(z2, s) - (a0 + a1 * s + a2 * s * s) / (b0 + b1 * s + b2 * s * s)), 1e-12);
        EXPECT_LT(std::abs(transfer(lag, s) - 3.0 / (1.0 + 0.2 * s)), 1e-12);
    }
}

TEST(filters, show_the_derived_constant_of_their_strictly_proper_part) {
    block_unit u("filter_z1_p1");
    u.r("a0") = 2;
    u.r("a1") = 3;
    u.r("b0") = 5;
    u.r("b1") = 4;
    u.prepare();
    EXPECT_DOUBLE_EQ(u.r("c1"), 2.0 / 4 - 3.0 * 5 / 16);
}

// ---- frames ----

// What the block's output variable number k would be, all variables of the block standing at what they are.
double output_of(block_unit& u, int row) {
    u.call(&flags_class::dc, &flags_class::function);
    const int out = u.jac.n_vr - u.jac.n_f + row;
    return u.x.vr[static_cast<std::size_t>(out)] - u.x.f[static_cast<std::size_t>(row)];
}

TEST(abc_to_dq0_1, sees_a_balanced_system_as_constants_of_its_amplitude) {
    block_unit u("abc_to_dq0_1");
    const double amplitude = 3, shift = 0.4, zero = 0.5;
    for (const double th : {0.0, 1.0, 2.5, -4.0}) {
        u.vr("th") = th;
        u.vr("a") = amplitude * std::cos(th + shift) + zero;
        u.vr("b") = amplitude * std::cos(th + shift - 2 * pi / 3) + zero;
        u.vr("c") = amplitude * std::cos(th + shift + 2 * pi / 3) + zero;
        EXPECT_NEAR(output_of(u, 0), amplitude * std::cos(shift), 1e-12);
        EXPECT_NEAR(output_of(u, 1), amplitude * std::sin(shift), 1e-12);
        EXPECT_NEAR(output_of(u, 2), zero, 1e-12);
    }
}

TEST(dq0_to_abc_1, is_the_inverse_of_abc_to_dq0_1) {
    block_unit to("abc_to_dq0_1"), from("dq0_to_abc_1");
    for (const double th : {0.3, -2.0, 5.0}) {
        from.vr("th") = to.vr("th") = th;
        from.vr("d") = 1.5;
        from.vr("q") = -0.25;
        from.vr("zero") = 0.125;
        to.vr("a") = output_of(from, 0);
        to.vr("b") = output_of(from, 1);
        to.vr("c") = output_of(from, 2);
        EXPECT_NEAR(output_of(to, 0), 1.5, 1e-12);
        EXPECT_NEAR(output_of(to, 1), -0.25, 1e-12);
        EXPECT_NEAR(output_of(to, 2), 0.125, 1e-12);
    }
}

// The loop, integrated with small explicit steps, must come to the frequency and angle of the phases.
TEST(pll_1a, locks_to_three_phases_of_another_frequency_and_angle) {
    block_unit u("pll_1a");
    u.prepare();
    const double w = 2 * pi * 51, shift = 1.0, h = 1e-5;
    double angle = shift;
    for (int i = 0; i < 40000; ++i) {
        angle = shift + w * h * i;
        u.vr("a") = std::cos(angle);
        u.vr("b") = std::cos(angle - 2 * pi / 3);
        u.vr("c") = std::cos(angle + 2 * pi / 3);
        u.trns();
        u.vr("w") -= u.x.f[0];  // row of w: w less its value
        u.trns();
        u.vr("th") += h * u.x.f[1];
        u.aux("z") += h * u.x.f[2];
    }
    EXPECT_NEAR(u.vr("w"), w, 1e-2);
    EXPECT_NEAR(std::remainder(u.vr("th") - (angle + w * h), 2 * pi), 0, 1e-3);
}

TEST(pll_1a, is_held_in_start_up_and_refuses_dc) {
    block_unit u("pll_1a");
    u.prepare();
    EXPECT_HALT(u.dc(), "pll_1a: dc not implemented. Halting...\n");
    u.st("th0") = 0.5;
    u.st("z0") = 7;
    u.ig("th_ig") = 2;
    u.guess();
    EXPECT_EQ(u.vr("th"), 2);
    u.aux("z") = 10;
    u.startup();
    EXPECT_EQ(u.x.f[1], 1.5);
    EXPECT_EQ(u.x.f[2], 3);
}

// ---- user functions ----

TEST(user_function, evaluates_its_table_of_formulas) {
    const int ip[] = {1, 0, 0};
    const double r[] = {3, 4, 0.5, 0, 0, 0};
    const double x[] = {2, 5, 7};
    double y[2];
    user_function(1, 0, 1, x, 1, y, nullptr, ip, r);
    EXPECT_EQ(y[0], 2.0 * 3 * 2 + 4);
    const int ip_0[] = {0, 0, 0};
    user_function(1, 0, 1, x, 1, y, nullptr, ip_0, r);
    EXPECT_EQ(y[0], 0.5 * 3 * 2 + 4);
    user_function(2, 0, 2, x, 1, y, nullptr, ip, r);
    EXPECT_EQ(y[0], 3 * 4 / 0.25 * 2 * 5);
    user_function(3, 0, 3, x, 1, y, nullptr, ip, r);
    EXPECT_EQ(y[0], 3 * 4 / 0.25 * 2 * 5 + (1 - 3) * 4 / 0.25 * 2 * 7);
    user_function(4, 0, 3, x, 1, y, nullptr, ip, r);
    EXPECT_DOUBLE_EQ(y[0], 2.0 / (3 * 5) + 0.5 * 1 * 7);
    const double at_rest[] = {2, -0.0099, 7};
    user_function(4, 0, 3, at_rest, 1, y, nullptr, ip, r);
    EXPECT_DOUBLE_EQ(y[0], 1 + 3.5);
    user_function(5, 2.9, 2, x, 2, y, nullptr, ip, r);
    EXPECT_EQ(y[0], 2);
    EXPECT_EQ(y[1], 0);
    user_function(5, 3.1, 2, x, 2, y, nullptr, ip, r);
    EXPECT_EQ(y[0], 0);
    EXPECT_EQ(y[1], 5);
}

TEST(user_function, multiplies_its_first_formula_in_single_precision) {
    const int ip[] = {1, 0, 0};
    const double r[] = {0.1, 0, 0, 0, 0, 0}, x[] = {0.3};
    double y[1];
    user_function(1, 0, 1, x, 1, y, nullptr, ip, r);
    EXPECT_EQ(y[0], static_cast<double>(2.0f * 0.1f * 0.3f));
    EXPECT_NE(y[0], 2.0 * 0.1 * 0.3);
}

TEST(user_function, has_partial_derivatives_of_every_formula) {
    const int ip[] = {1, 0, 0};
    const double r[] = {3, 4, 0.5, 0, 0, 0};
    for (const int n : {2, 3, 4, 5}) {
        const int n_y = n == 5 ? 2 : 1;
        double x[] = {2, 5, 7}, y[2], d[6], above[2], below[2];
        user_function(n, 1, 3, x, n_y, y, d, ip, r);
        for (int j = 0; j < 3; ++j) {
            const double h = 1e-6, kept = x[j];
            x[j] = kept + h;
            user_function(n, 1, 3, x, n_y, above, nullptr, ip, r);
            x[j] = kept - h;
            user_function(n, 1, 3, x, n_y, below, nullptr, ip, r);
            x[j] = kept;
            for (int i = 0; i < n_y; ++i) EXPECT_NEAR(d[i * 3 + j], (above[i] - below[i]) / (2 * h), 1e-5) << n;
        }
    }
}

TEST(user_function, stops_for_formulas_that_do_not_exist_at_the_first_call) {
    for (int n = 6; n <= 10; ++n) {
        block_unit u("user_function_1_1");
        u.i("n_given") = n;
        u.prepare();
        EXPECT_HALT(u.dc(), "user_function: n_given=" + std::to_string(n) + " is not implemented. Halting..\n");
    }
    for (const int n : {-1, 0, 11}) {
        block_unit u("user_function_1_1");
        u.i("n_given") = n;
        EXPECT_HALT(u.dc(), "user_function: Check n_given. Halting...\n");
    }
}

TEST(user_function, stops_for_a_formula_that_needs_more_inputs_or_outputs_than_the_block_has) {
    block_unit one("user_function_1_1"), two("user_function_2_1");
    one.i("n_given") = 2;
    two.i("n_given") = 5;
    EXPECT_HALT(one.dc(), "user_function: Check n_given. Halting...\n");
    EXPECT_HALT(two.dc(), "user_function: Check n_given. Halting...\n");
}

TEST(user_function_2_1, has_the_row_of_its_formula) {
    block_unit u("user_function_2_1");
    u.i("n_given") = 2;
    u.r("r1") = 3;
    u.r("r2") = 4;
    u.r("r3") = 0.5;
    u.vr("x1") = 2;
    u.vr("x2") = 5;
    u.vr("y1") = 1;
    u.dc();
    EXPECT_DOUBLE_EQ(u.x.f[0], 1 - 480);
    EXPECT_DOUBLE_EQ(u.jac.dfdvr[0][0], -240);
    EXPECT_DOUBLE_EQ(u.jac.dfdvr[0][1], -96);
    EXPECT_EQ(u.jac.dfdvr[0][2], 1);
}

}  // namespace
