// Turbines, the exciter, and estimates of machines in whole runs, against linear models and closed forms.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

#include "whole_run.h"

namespace {
constexpr double pi = std::numbers::pi;
using number = std::complex<double>;

table rows_of(const std::string& circuit, const std::string& variables, const std::string& method) {
    deck_text deck{circuit, variables};
    deck.blocks = {"solve_type startup\n", "solve_type trns\ninitial_sol previous\nmethod: trapezoidal=yes " + method +
                                               " itmax_trns=1000000 norm_2=1e-9\n"};
    const whole_run run(deck.str());
    EXPECT_FALSE(run.stopped) << run.text;
    table rows = run.rows("out2.dat");
    if (rows.empty()) rows.emplace_back(10, NAN);
    return rows;
}

// The complex amplitude of a variable of a circuit that a source of 1 at 0 degrees drives, about its dc solution.
number small_signal(const std::string& circuit, const std::string& outvar, double hertz) {
    const whole_run run("title: t\nbegin_circuit\n" + circuit + "outvar: y=" + outvar +
                        "\nend_circuit\nbegin_solve\nsolve_type dc\nend_solve\nbegin_solve\nsolve_type ac\n"
                        "initial_sol previous\nset_freq " +
                        std::to_string(hertz) +
                        "\nbegin_output\nfilename ac.dat\nvariables: mag_of_y phase_of_y\nend_output\nend_solve\n"
                        "end_cf\n");
    EXPECT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("ac.dat");
    if (rows.size() != 1) return NAN;
    return std::polar(rows[0][1], rows[0][2] * pi / 180);
}
const std::string source = "gelement name=S type=srcac y=u a=0 dc=0.5 a_ac=1\n";
}  // namespace

TEST(turbines, step_as_their_lags_say) {
    const table rows = rows_of(
        "gelement name=U type=const y=u k=1\ngelement name=G type=turbine_gnrl x=u y=p k=2 share=0.3 tau1=0.3 tau2=7\n"
        "gelement name=H type=turbine_hp x=u y=h share=0.4 tau=0.25\noutvar: p=var_of_p h=var_of_h r=r_of_G\n",
        "p h r", "t_end=10 delt_const=2m");
    ASSERT_GT(rows.size(), 4000U);
    for (const auto& row : rows) {
        const double fast = std::exp(-row[0] / 0.3), slow = std::exp(-row[0] / 7);
        const double first = 1 - fast, second = 1 - (7 * slow - 0.3 * fast) / 6.7;
        EXPECT_NEAR(row[1], 2 * (0.3 * first + 0.7 * second), 1e-5) << row[0];
        EXPECT_NEAR(row[2], 0.4 * (1 - std::exp(-row[0] / 0.25)), 1e-5) << row[0];
        EXPECT_NEAR(row[3], 2 * second, 1e-5);
    }
}

TEST(turbines, begin_where_they_are_told_and_have_their_transfer_function) {
    const table rows = rows_of(
        "gelement name=U type=const y=u k=0.6\ngelement name=G type=turbine_gnrl x=u y=p h0=0.6 r0=0.6\n"
        "gelement name=H type=turbine_hp x=u y=h y0=0.18\noutvar: p=var_of_p h=var_of_h\n",
        "p h", "t_end=1 delt_const=10m");
    for (const auto& row : rows) {
        EXPECT_NEAR(row[1], 0.6, 1e-8);
        EXPECT_NEAR(row[2], 0.18, 1e-8);
    }
    for (const double hertz : {0.01, 0.2, 3.0}) {
        const number s(0, 2 * pi * hertz);
        const number g = (1.0 + 0.3 * 7.0 * s) / ((1.0 + 0.3 * s) * (1.0 + 7.0 * s));
        EXPECT_LT(
            std::abs(small_signal(source + "gelement name=G type=turbine_gnrl x=u y=p\n", "y_ac_of_G", hertz) - g),
            1e-5 * std::abs(g));
        const number h = 0.3 / (1.0 + 0.3 * s);
        EXPECT_LT(std::abs(small_signal(source + "gelement name=H type=turbine_hp x=u y=h\n", "y_ac_of_H", hertz) - h),
                  1e-5 * std::abs(h));
    }
}

// The loop of exciter and feedback within the ceilings: k_a g/(1 + k_a g s k_f/(1 + s t_f)), g the lags.
TEST(exc_rotor, has_the_transfer_function_of_its_loop_within_the_ceilings_and_none_behind_them) {
    const std::string words = " k_a=4 t_a=0.05 k_e=1.2 t_e=0.5 k_f=0.1 t_f=0.8";
    for (const double hertz : {0.02, 0.5, 4.0}) {
        const number s(0, 2 * pi * hertz), g = 4.0 / ((1.0 + 0.05 * s) * (1.2 + 0.5 * s));
        const number whole = g / (1.0 + g * 0.1 * s / (1.0 + 0.8 * s));
        const number found =
            small_signal(source + "gelement name=E type=exc_rotor x=u y=e" + words + "\n", "y_ac_of_E", hertz);
        EXPECT_LT(std::abs(found - whole), 1e-5 * std::abs(whole)) << hertz;
        EXPECT_EQ(small_signal(source + "gelement name=E type=exc_rotor x=u y=e" + words + " v_max=1.9\n", "y_ac_of_E",
                               hertz),
                  0.0);
    }
}

// Euler's method in steps of 5 us, far finer than the run's.
TEST(exc_rotor, answers_a_step_through_its_ceiling_as_its_equations_integrated_otherwise) {
    const table rows = rows_of(
        "gelement name=U type=pwl20 y=u n_pts=4 t1=0 y1=0.02 t2=1 y2=0.02 t3=1.1 y3=0 t4=3 y4=0\n"
        "gelement name=E type=exc_rotor x=u y=e k_a=200 t_a=0.05 v_min=-1 v_max=2 k_e=1 t_e=0.4 k_f=0.05 t_f=1 y0=0.5 "
        "z0=0.5\noutvar: e=var_of_e r=v_r_of_E f=v_f_of_E\n",
        "e r f", "t_end=2 delt_const=1m");
    const double h = 5e-6;
    double y = 0.5, z = 0.5, slow = 0.5, largest = 0;
    std::size_t k = 0;
    for (int n = 0; k < rows.size() && n < 1000000; ++n) {
        const double t = n * h, x = 0.02 * std::clamp((1.1 - t) / 0.1, 0.0, 1.0);
        const double back = 0.05 * (y - slow), limited = std::clamp(z, -1.0, 2.0);
        if (t > rows[k][0] - h / 2) {
            EXPECT_NEAR(rows[k][1], y, 2e-3) << t;
            EXPECT_NEAR(rows[k][3], back, 2e-4) << t;
            largest = std::max(largest, rows[k][2]);
            ++k;
        }
        z += h / 0.05 * (200 * (x - back) - z);
        y += h / 0.4 * (limited - y);
        slow += h * (y - slow);
    }
    EXPECT_EQ(k, rows.size());
    EXPECT_EQ(largest, 2);  // the ceiling
}

// Voltages of a flux that turns at w: rs i + dpsi/dt. Seen from the rotor it stands at its load angle.
TEST(calculators, find_the_flux_of_a_machine_from_its_voltages_and_currents) {
    const std::string circuit =
        "gelement name=UA type=srcac y=u_al a=98.5 f_hz=50 phi=180\ngelement name=UB type=srcac y=u_be a=98.5 f_hz=50 "
        "phi=90\n"
        "gelement name=IA type=srcac y=i_al a=0 f_hz=50\ngelement name=IB type=srcac y=i_be a=0 f_hz=50\n"
        "gelement name=C1 type=calculator_1 u_al=u_al u_be=u_be i_al=i_al i_be=i_be f_al=f_al f_be=f_be f_m=f_m th=th "
        "te=te rs=0.5 poles=4 f_al0=0.3135352379540\n"
        "gelement name=D type=const y=u_d k=-30\ngelement name=Q type=const y=u_q k=95\n"
        "gelement name=ID type=const y=i_d k=0\ngelement name=IQ type=const y=i_q k=10\n"
        "gelement name=W type=const y=w k=300\n"
        "gelement name=C2 type=calculator_2 u_d=u_d u_q=u_q i_d=i_d i_q=i_q w=w f_d=f_d f_q=f_q f_m=g_m th=angle te=tq "
        "rs=0.5 poles=4 f_d0=0.3 f_q0=0.1\n"
        "outvar: f=var_of_f_m th=var_of_th a=var_of_f_al d=var_of_f_d q=var_of_f_q angle=var_of_angle tq=var_of_tq\n";
    const table rows = rows_of(circuit, "f th a d q angle tq", "t_end=0.1 delt_const=10u");
    ASSERT_GT(rows.size(), 9000U);
    for (const auto& row : rows) {
        const double turn = 100 * pi * row[0];
        EXPECT_NEAR(row[1], 98.5 / (100 * pi), 2e-6);
        EXPECT_NEAR(std::remainder(row[2] - turn, 2 * pi), 0, 2e-5) << row[0];
        EXPECT_NEAR(row[3], 98.5 / (100 * pi) * std::cos(turn), 5e-6);
        // u_d = -w f_q and u_q = rs i_q + w f_d: it is at rest from the beginning on.
        EXPECT_NEAR(row[4], 0.3, 1e-7);
        EXPECT_NEAR(row[5], 0.1, 1e-7);
        EXPECT_NEAR(row[6], std::atan2(1, 3), 1e-6);
        EXPECT_NEAR(row[7], 3 * 0.3 * 10, 1e-6);
    }
}

// About a flux of 0.4 at the angle 0.5: the size moves with the part along it, the angle with the part across.
TEST(calculators, move_in_small_signals_as_a_flux_about_its_start_value) {
    const double hertz = 20, c = std::cos(0.5), s = std::sin(0.5);
    const whole_run run(
        "title: t\nbegin_circuit\ngelement name=S type=srcac y=u a=0 a_ac=1\ngelement name=Z type=const y=z k=0\n"
        "gelement name=I type=const y=i k=3\n"
        "gelement name=C type=calculator_1 u_al=u u_be=z i_al=i i_be=z f_al=a f_be=b f_m=m th=th te=te rs=0.5 poles=4 "
        "f_al0=" +
        std::to_string(0.4 * c) + " f_be0=" + std::to_string(0.4 * s) +
        "\noutvar: m=f_m_ac_of_C th=th_ac_of_C te=te_ac_of_C\nend_circuit\nbegin_solve\nsolve_type startup\nend_solve\n"
        "begin_solve\nsolve_type ac\ninitial_sol previous\nset_freq 20\nbegin_output\nfilename ac.dat\n"
        "variables: mag_of_m mag_of_th mag_of_te\nend_output\nend_solve\nend_cf\n");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("ac.dat");
    ASSERT_EQ(rows.size(), 1U);
    const double flux = 1 / (2 * pi * hertz);
    EXPECT_NEAR(rows[0][1], flux * c, 1e-5 * flux);
    EXPECT_NEAR(rows[0][2], flux * s / 0.4, 1e-5 * flux / 0.4);
    EXPECT_NEAR(rows[0][3], 0, 1e-9);  // a flux along the current has no torque with it
}
