// Small signals of explicit blocks in whole runs: each form against its transfer function, loops against formulas.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <functional>

#include "whole_run.h"

namespace {
using number = std::complex<double>;
const double pi = std::acos(-1.0);

std::string diagram(const std::string& circuit, const std::string& frequencies, const std::string& outputs,
                    const std::string& cards = "", const std::string& before = "") {
    return "title: test\n" + before + "begin_circuit\n" + circuit + "end_circuit\nbegin_solve\nsolve_type ac\n" +
           frequencies + "\n" + cards + outputs + "end_solve\nend_cf\n";
}
std::string rows_of(const std::string& variables) {
    return "begin_output\nfilename o.dat\nvariables: " + variables + "\nend_output\n";
}

using response = std::function<number(double)>;  // of w, rad/s

// The amplitude of the variable y of a diagram at frequencies from 1 Hz to 100 kHz.
void expect_response(const std::string& circuit, const response& formula, double relative = 1e-6) {
    const whole_run run(diagram(circuit + "outvar: y=xvar_ac_of_y\n", "vary_freq from 1 to 100k type log n_points 11",
                                rows_of("mag_of_y phase_of_y")));
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("o.dat");
    ASSERT_EQ(rows.size(), 11u);
    for (std::size_t k = 0; k < rows.size(); ++k) {
        const double f = std::pow(10.0, 0.5 * static_cast<double>(k));
        EXPECT_NEAR(rows[k][0], f, 1e-6 * f);
        const number found = std::polar(rows[k][1], rows[k][2] * pi / 180), wanted = formula(2 * pi * f);
        EXPECT_LE(std::abs(found - wanted), relative * std::abs(wanted)) << f << " Hz: " << found << ' ' << wanted;
    }
}

const std::string source = "xelement name=S type=const y=u a_ac=2 ph_ac=30\n";
const number amplitude = std::polar(2.0, pi / 6);

number s_of(double w) { return {0.0, w}; }
// exp(-i turn) by its parts.
number late(double turn) { return {std::cos(turn), -std::sin(turn)}; }
}  // namespace

TEST(explicit_ac, each_form_has_its_transfer_function) {
    const struct {
        const char* element;
        response of;
    } forms[] = {
        {"type=multscl x=u y=y k=-3", [](double) { return number(-3); }},
        {"type=deg_to_rad x=u y=y", [](double) { return number(pi / 180); }},
        {"type=lmtr x=u y=y x_min=-1 x_max=1", [](double) { return number(1); }},
        {"type=sum_2 x1=u x2=u y=y k1=3 k2=-7 k0=5", [](double) { return number(-4); }},
        {"type=sum_3 x1=u x2=u x3=u y=y k1=3 k2=-7 k3=0.5", [](double) { return number(-3.5); }},
        {"type=intgrtr x=u y=y k=500", [](double w) { return 500.0 / s_of(w); }},
        {"type=intgrtr2 x=u y=y k=-2", [](double w) { return -2.0 / s_of(w); }},
        {"type=intgrtr_2 x=u y=y k=7 hi=3", [](double w) { return 7.0 / s_of(w); }},
        {"type=delay_2 x=u y=y td=130u", [](double w) { return late(w * 130e-6); }},
        {"type=filter_z0_p1 x=u y=y a0=3 b0=2 b1=1m", [](double w) { return 3.0 / (2.0 + 1e-3 * s_of(w)); }},
        {"type=filter_z1_p1 x=u y=y a0=3 a1=2m b0=2 b1=0.1m",
         [](double w) { return (3.0 + 2e-3 * s_of(w)) / (2.0 + 1e-4 * s_of(w)); }},
        {"type=d_filter_z0_p1 x=u y=y a0=0.1 b0=1 b1=-0.9 t_smp=100u",
         [](double w) { return 0.1 / (1.0 - 0.9 * late(w * 1e-4)); }},
        {"type=d_filter_z0_p2 x=u y=y a0=0.02 b0=1.1 b1=-1.7 b2=0.72 t_smp=100u",
         [](double w) { return 0.02 / (1.1 - 1.7 * late(w * 1e-4) + 0.72 * late(w * 2e-4)); }},
        {"type=d_filter_z1 x=u y=y a0=0.5 a1=0.25 t_smp=30u", [](double w) { return 0.5 + 0.25 * late(w * 30e-6); }},
        {"type=d_filter_z1_p1 x=u y=y a0=1.1 a1=-1 b0=1.3 b1=-1.2 t_smp=70u",
         [](double w) { return (1.1 - late(w * 70e-6)) / (1.3 - 1.2 * late(w * 70e-6)); }},
    };
    for (const auto& f : forms) {
        SCOPED_TRACE(f.element);
        expect_response(source + "xelement name=F " + f.element + "\n", [&](double w) { return amplitude * f.of(w); });
    }
}

TEST(explicit_ac, a_sine_in_time_is_a_source_of_its_own_amplitude) {
    expect_response("xelement name=S type=srcac y=y a=5 f_hz=50 phi=10 a_ac=3 ph_ac=-60\n",
                    [](double) { return std::polar(3.0, -pi / 3); });
    expect_response(
        "xelement name=S type=srcac y=u a=5 a_ac=1\nxelement name=T type=const y=v a_ac=2 ph_ac=90\n"
        "xelement name=A type=sum_2 x1=u x2=v y=y\n",
        [](double) { return number(1, 2); });
}

TEST(explicit_ac, a_filter_of_any_degree_is_its_quotient) {
    // Poles at -1000 (twice), -200 +- 3000i, -40000; numerator of degree 2.
    const number p = number(-200, 3000);
    const auto denominator = [&](number s) {
        return (s + 1000.0) * (s + 1000.0) * (s - p) * (s - std::conj(p)) * (s + 40000.0);
    };
    std::vector<double> d = {1};
    for (const auto& factor : {std::vector<double>{1000, 1}, std::vector<double>{1000, 1},
                               std::vector<double>{std::norm(p), 400, 1}, std::vector<double>{40000, 1}}) {
        std::vector<double> product(d.size() + factor.size() - 1, 0.0);
        for (std::size_t i = 0; i < d.size(); ++i)
            for (std::size_t j = 0; j < factor.size(); ++j) product[i + j] += d[i] * factor[j];
        d = product;
    }
    std::string text = "xelement name=F type=filter_1 x=u y=y degree_n=2 n0=1e15 n1=1e11 n2=3e7 degree_d=5";
    for (std::size_t k = 0; k < d.size(); ++k) {
        char coefficient[60];
        std::snprintf(coefficient, sizeof coefficient, " d%zu=%.17g", k, d[k]);
        text += coefficient;
    }
    expect_response(source + text + "\n", [&](double w) {
        const number s = s_of(w);
        return amplitude * (1e15 + 1e11 * s + 3e7 * s * s) / denominator(s);
    });
}

TEST(explicit_ac, a_filter_of_blocks_is_the_filter_of_one_block) {
    // 1/(1 + 2 z s/w0 + (s/w0)^2) by two integrators in a loop, and by filter_1.
    const double w0 = 2e3;
    const response second_order = [&](double w) {
        return amplitude / (1.0 + 2 * 0.3 * s_of(w) / w0 + s_of(w) * s_of(w) / (w0 * w0));
    };
    expect_response(source +
                        "xelement name=A type=sum_3 x1=u x2=y x3=v y=a k2=-1 k3=-0.6\n"
                        "xelement name=V type=intgrtr x=a y=v k=2k\nxelement name=Y type=intgrtr x=v y=y k=2k\n",
                    second_order);
    expect_response(source + "xelement name=F type=filter_1 x=u y=y degree_d=2 n0=1 d0=1 d1=0.3m d2=0.25u\n",
                    second_order);
}

namespace {
// A controller kp + ki/s, a delay, and a lag of 2 ms: from the error e to the value y.
const std::string open_loop =
    "xelement name=I type=intgrtr x=e y=i k=900\nxelement name=P type=sum_2 x1=e x2=i y=c k1=1.5\n"
    "xelement name=D type=delay_2 x=c y=d td=100u\nxelement name=L type=filter_z0_p1 x=d y=y a0=4 b1=2m\n";
number loop_gain(double w) { return (1.5 + 900.0 / s_of(w)) * late(w * 1e-4) * 4.0 / (1.0 + 2e-3 * s_of(w)); }
}  // namespace

TEST(explicit_ac, a_loop_has_its_loop_gain_and_closed_its_response) {
    expect_response("xelement name=S type=const y=e a_ac=1\n" + open_loop, loop_gain);
    expect_response(
        "xelement name=S type=const y=r a_ac=1\nxelement name=E type=sum_2 x1=r x2=y y=e k2=-1\n" + open_loop,
        [](double w) { return loop_gain(w) / (1.0 + loop_gain(w)); });
}

TEST(explicit_ac, outputs_of_elements_are_the_variables_they_make) {
    const whole_run run(diagram(source + "xelement name=F type=filter_z0_p1 x=u y=y b1=1\n"
                                         "outvar: f=y_ac_of_F y=xvar_ac_of_y s=y_ac_of_S\n",
                                "set_freq 1k", rows_of("mag_of_f phase_of_f mag_of_y phase_of_y mag_of_s phase_of_s")));
    const table rows = run.rows("o.dat");
    ASSERT_EQ(rows.size(), 1u) << run.text;
    EXPECT_EQ(rows[0][1], rows[0][3]);
    EXPECT_EQ(rows[0][2], rows[0][4]);
    EXPECT_NEAR(rows[0][5], 2, 1e-6);
    EXPECT_NEAR(rows[0][6], 30, 1e-5);
    EXPECT_NE(run.text.find("set_mat_2_ac: system matrix size is 2 x 2\n"), std::string::npos) << run.text;
}

TEST(explicit_ac, a_diagram_without_a_source_stands_still) {
    const whole_run run(
        diagram("xelement name=S type=const y=u\nxelement name=F type=filter_z0_p1 x=u y=y\noutvar: y=xvar_ac_of_y\n",
                "set_freq 1k", rows_of("mag_of_y phase_of_y")));
    const table rows = run.rows("o.dat");
    ASSERT_EQ(rows.size(), 1u) << run.text;
    EXPECT_EQ(rows[0][1], 0.0);
}

namespace {
void expect_stop(const std::string& deck, const std::string& text) {
    const whole_run run(deck);
    EXPECT_TRUE(run.stopped) << deck;
    EXPECT_NE(run.text.find(text), std::string::npos) << run.text;
}
const std::string columns = rows_of("mag_of_y phase_of_y");
const std::string shown = "outvar: y=xvar_ac_of_y\n";
}  // namespace

TEST(explicit_ac, a_block_without_small_signals_is_named) {
    expect_stop(diagram(source + "xelement name=M type=mult_2 x1=u x2=u y=y\nxelement name=K type=multscl x=u y=z\n"
                                 "outvar: y=xvar_ac_of_z\n",
                        "set_freq 1k", columns),
                "ccmain: There are no AC statements in this xce: mult_2\n");
}

TEST(explicit_ac, a_network_of_explicit_blocks_is_refused) {
    expect_stop(diagram("x_refnode 0\nxelement name=V type=e_vsrcdc p=a n=0 i=i1 vdc=1\n"
                        "xelement name=R type=e_r p=a n=0 i=i2 r=1\n" +
                            source + "xelement name=K type=multscl x=u y=y\n" + shown,
                        "set_freq 1k", columns),
                "solve_class: x_cct elements are not allowed\n   in AC solve. Halting...\n");
}

TEST(explicit_ac, blocks_beside_a_circuit_are_refused) {
    expect_stop("title: test\nbegin_circuit\nrefnode 0\n" + source +
                    "xelement name=K type=multscl x=u y=y\neelement name=V type=vsrcac p=a n=0 a_ac=1\n"
                    "eelement name=R type=r p=a n=0 r=1\n" +
                    shown + "end_circuit\nbegin_solve\nsolve_type ac\nset_freq 1k\n" + columns + "end_solve\nend_cf\n",
                "solve_class: SSW/AC/DC/startup not allowed\n  for x-mixed circuit. Halting...\n");
}

TEST(explicit_ac, sweeps_of_a_diagram_are_refused) {
    expect_stop(diagram(source + "xelement name=K type=multscl x=u y=y\n" + shown, "set_freq 1k", columns,
                        "vary_parm glbl_of_k from 1 to 2 type linear n_points 2\n", "greal k=1\n"),
                "solve_class: vary_parm/vary_parm_sync are\n   not allowed with xelements. Halting...\n");
}

TEST(explicit_ac, an_integrator_has_no_solution_at_frequency_0) {
    expect_stop(diagram(source + "xelement name=I type=intgrtr x=u y=y\n" + shown, "set_freq 0", columns),
                "  Singular matrix? Halting...\n");
}

TEST(explicit_ac, forms_refuse_denominators_that_are_no_polynomial_of_their_degree) {
    expect_stop(diagram(source + "xelement name=F type=d_filter_z0_p2 x=u y=y b2=0\n" + shown, "set_freq 1k", columns),
                "d_filter_z0_p2.ssx: b2=0 ?!\n");
}

TEST(explicit_ac, degrees_that_a_block_sets_stay_within_the_coefficients) {
    for (const std::string degree : {"degree_n_of_F 10", "degree_n_of_F -1", "degree_d_of_F 2147483647"})
        expect_stop(diagram(source + "xelement name=F type=filter_1 x=u y=y\n" + shown, "set_freq 1k", columns,
                            "set_parm " + degree + "\n"),
                    "filter_1.ssx: check degree_n, degree_d. Halting...\n");
}

TEST(explicit_ac, patterns_are_dumped_on_demand) {
    const whole_run run(diagram("output xbce smat\n" + source + "xelement name=K type=multscl x=u y=y\n" + shown,
                                "set_freq 1k", columns));
    ASSERT_FALSE(run.stopped) << run.text;
    const std::string terms = run.file("xbce_c.dat");
    EXPECT_TRUE(terms.starts_with("mat_class\ni_xbau = 0, i_xbac = ")) << terms;
    EXPECT_TRUE(
        terms.ends_with("  f = 0, var_flag = 71, var_number = 1, row = 1, col = 1\n"
                        "  f = 0, var_flag = 71, var_number = 0, row = 1, col = 0\n"))
        << terms;
    EXPECT_EQ(run.file("xbce1_c.dat"), run.file("smat_c.dat"));
    EXPECT_NE(run.file("smat_c.dat"), "");
}
