// The periodic steady state: numbers known from mathematics, chains of blocks, texts.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>

#include "whole_run.h"

namespace {
// A source of 1 V at a through 1k into 1u at b.
std::string rc(const std::string& source = "type=vsrcac a=1 f_hz=1k") {
    return "eelement name=V1 p=a n=0 " + source +
           "\neelement name=R1 type=r p=a n=b r=1k\neelement name=C1 type=c p=b n=0 c=1u\n"
           "outvar: vb=nodev_of_b i=i_of_R1\n";
}
std::string ssw(const std::string& method, const std::string& cards = "") {
    return "solve_type ssw\n" + cards + "method: " + method + "\n";
}
const std::string to_1e15 = " ssw_frequency=1k ssw_ndiv=100 ssw_chk_rhs2=yes ssw_chk_spice=no ssw_norm=1e-15";

whole_run run_of(const std::string& circuit, const std::string& variables, const std::vector<std::string>& blocks,
                 const std::string& before = "") {
    return whole_run(deck_text{circuit, variables, blocks, before}.str());
}

// The fundamental of a column over equal steps of one period: modulus, and phase in degrees against a sine.
std::complex<double> fundamental(const table& rows, double f, std::size_t column = 1) {
    std::complex<double> sum = 0;
    for (std::size_t k = 1; k < rows.size(); ++k)
        sum += rows[k][column] * std::exp(std::complex<double>(0, -2 * M_PI * f * rows[k][0]));
    return sum * 2.0 / double(rows.size() - 1) * std::complex<double>(0, 1);
}

bool says(const whole_run& run, const std::string& text) { return run.text.find(text) != std::string::npos; }
double number_behind(const whole_run& run, const std::string& text) {
    const std::size_t at = run.text.rfind(text);
    return at == std::string::npos ? NAN : std::stod(run.text.substr(at + text.size()));
}

// x'' - mu (1 - x^2) x' + x = 0 for mu = 1
const std::string van_der_pol =
    "gelement name=I1 type=intgrtr x=y y=x\ngelement name=M1 type=mult_2a x1=x x2=x y=x2\n"
    "gelement name=L1 type=linear_1 x=x2 y=u c0=1 c1=-1\ngelement name=M2 type=mult_2a x1=u x2=y y=uy\n"
    "gelement name=S1 type=sum_2 x1=uy x2=x y=dy k1=1 k2=-1\ngelement name=I2 type=intgrtr x=dy y=y\n"
    "outvar: x=var_of_x y=var_of_y\n";
std::string of_van_der_pol(const std::string& method) {
    return ssw("ssw_period=6.5 ssw_known_period=no " + method, "set_igparm y_ig_of_I1=2\n");
}
}  // namespace

// ---- linear circuits

// Backward Euler has the gain 1/(1 + rc (1 - exp(-jwh))/h); a linear circuit needs one step of Newton's method.
TEST(periodic, rc_under_a_sine_by_back_euler_is_found_in_two_shots) {
    const whole_run run = run_of(rc(), "vb", {ssw("back_euler=yes" + to_1e15)});
    ASSERT_FALSE(run.stopped) << run.text;
    EXPECT_TRUE(says(run, "mat::set_mat_2: system matrix size is 11 x 11\n"));
    EXPECT_TRUE(says(run, "solve_ssw: calling solve_ssw_1 for one more trns step\n"));
    EXPECT_TRUE(says(run, "solve_ssw ends, slv->ssw_iter_newton=1\n"));
    EXPECT_LT(number_behind(run, "ssw_iter_newton=1, rhs_ssw_norm="), 1e-20);
    const table rows = run.rows("out1.dat");
    ASSERT_EQ(rows.size(), 101u);
    const std::complex<double> v = fundamental(rows, 1000);
    EXPECT_NEAR(std::abs(v), 0.1564409, 5.1e-8);
    EXPECT_NEAR(std::arg(v) * 180 / M_PI, -79.2041, 5.1e-5);
    EXPECT_NEAR(rows[0][1], -0.1536720, 1e-7);
    EXPECT_NEAR(rows.back()[1], rows[0][1], 1e-6);
    EXPECT_NEAR(rows.back()[0], 1e-3, 1e-12);
}

// The trapezoidal rule has 1/(1 + rc 2/h j tan(wh/2)).
TEST(periodic, rc_under_a_sine_by_the_trapezoidal_rule_converges_by_the_share_of_a_step) {
    const whole_run run = run_of(rc(), "vb", {ssw("trapezoidal=yes" + to_1e15)});
    const double shots = number_behind(run, "slv->ssw_iter_newton=");
    EXPECT_TRUE(shots == 3 || shots == 4) << run.text;
    const table rows = run.rows("out1.dat");
    const std::complex<double> v = fundamental(rows, 1000);
    EXPECT_NEAR(std::abs(v), 0.1571263, 5.1e-8);
    EXPECT_NEAR(std::arg(v) * 180 / M_PI, -80.9599, 5.1e-5);
    EXPECT_NEAR(rows[0][1], -0.1551745, 1e-7);
    EXPECT_NEAR(rows.back()[1], rows[0][1], 1e-6);
}

// Between 0 and 1 at half a period of half a time constant each, with edges of 1 ns.
TEST(periodic, rc_under_a_square_wave_swings_between_the_known_ends) {
    const double low = 1 / (1 + std::exp(0.5)), high = 1 / (1 + std::exp(-0.5));
    for (const auto& [rule, tolerance] : {std::pair{"trapezoidal", 1e-3}, std::pair{"back_euler", 1e-2}}) {
        const whole_run run = run_of(rc("type=vpulse v1=0 v2=1 tr=1n tf=1n pw=0.5m per=1m"), "vb",
                                     {ssw(std::string(rule) + "=yes ssw_frequency=1k ssw_ndiv=100 delt_min=1p")});
        double least = 1, largest = 0;
        for (const auto& row : run.rows("out1.dat")) {
            least = std::min(least, row[1]);
            largest = std::max(largest, row[1]);
        }
        EXPECT_NEAR(least, low, tolerance) << rule;
        EXPECT_NEAR(largest, high, tolerance) << rule;
    }
}

// A step of backward Euler multiplies a disturbance by 1/(1 + h/rc).
TEST(periodic, multipliers_are_the_factors_by_which_disturbances_die) {
    const whole_run run = run_of(rc(), "vb", {ssw("back_euler=yes" + to_1e15)});
    EXPECT_NEAR(number_behind(run, "solve_ssw: stable, largest multiplier="), std::pow(1.01, -100), 1e-9);
    const whole_run trapezoidal = run_of(rc(), "vb", {ssw("trapezoidal=yes" + to_1e15)});
    EXPECT_NEAR(number_behind(trapezoidal, "solve_ssw: stable, largest multiplier="),
                std::pow(0.995 / 1.005, 99) / 1.01, 1e-9);
}

TEST(periodic, several_periods_of_a_source_may_make_one_shot) {
    const whole_run run = run_of(rc(), "vb", {ssw("back_euler=yes ssw_period_mult=3" + to_1e15)});
    const table rows = run.rows("out1.dat");
    ASSERT_EQ(rows.size(), 301u) << run.text;
    EXPECT_NEAR(rows[0][1], -0.1536720, 1e-7);
    EXPECT_NEAR(rows[100][1], rows[200][1], 1e-7);
    EXPECT_NEAR(number_behind(run, "largest multiplier="), std::pow(1.01, -300), 1e-9);
}

// Of the wave's 101 points the Fourier sums are those of a polygon, and so are the mean squares.
TEST(periodic, fourier_files_and_results_are_those_of_the_period) {
    const whole_run run("title: test\nbegin_circuit\nrefnode 0\n" + rc() +
                        "eelement name=M type=voltmeter_fb p=b n=0 y=y\ngelement name=P type=calc_avg_rms x=y\n"
                        "outvar: y=var_of_y rms=rms_of_P avg=avg_of_P\nend_circuit\nbegin_solve\n" +
                        ssw("back_euler=yes" + to_1e15) +
                        "begin_output\nfilename y.dat\nvariables: y\nend_output\n"
                        "begin_output\nfilename f.dat fourier=yes\nvariables: vb\ncontrol: n_fourier=3\nend_output\n"
                        "begin_output\nfilename p.dat\nvariables: rms avg\nend_output\nend_solve\nend_cf\n");
    ASSERT_FALSE(run.stopped) << run.text;
    const table harmonics = run.rows("f.dat"), results = run.rows("p.dat");
    ASSERT_EQ(harmonics.size(), 12u);
    EXPECT_NEAR(harmonics[4][1], 0.1564409, 2e-4);
    EXPECT_NEAR(harmonics[7][1], 0, 1e-6);
    ASSERT_EQ(results.size(), 1u);
    EXPECT_NEAR(results[0][0], 0.1564409 / std::sqrt(2.0), 1e-4);
    EXPECT_NEAR(results[0][1], 0, 1e-6);
}

// ---- unknown periods

// The period of mu = 1 is 6.66328686; the rule's error falls with the square of the step. Of the multipliers one is 1,
// and Liouville's formula gives the other as exp of the integral of 1 - x^2.
TEST(periodic, van_der_pol_finds_its_period_and_a_multiplier_of_one) {
    double period[2];
    for (int k = 0; k < 2; ++k) {
        const whole_run run =
            run_of(van_der_pol, "x y", {of_van_der_pol("trapezoidal=yes ssw_ndiv=" + std::to_string(500 << k))});
        ASSERT_FALSE(run.stopped) << run.text;
        period[k] = number_behind(run, "solve_ssw: period=");
        const table rows = run.rows("out1.dat");
        EXPECT_NEAR(rows.back()[0], period[k], 1e-6);
        double integral = 0;
        for (std::size_t i = 1; i < rows.size(); ++i)
            integral +=
                (rows[i][0] - rows[i - 1][0]) * (1 - (rows[i][1] * rows[i][1] + rows[i - 1][1] * rows[i - 1][1]) / 2);
        EXPECT_NEAR(number_behind(run, "stable, largest multiplier="), std::exp(integral), 5e-6);
        const std::size_t first = run.text.find("multiplier: re=");
        ASSERT_NE(first, std::string::npos);
        EXPECT_NEAR(std::stod(run.text.substr(first + 15)), 1, 5e-4);
    }
    EXPECT_NEAR(period[1], 6.66328686, 1e-4);
    EXPECT_NEAR((4 * period[1] - period[0]) / 3, 6.66328686, 2e-6);
}

// An unknown period is held where a state moves fastest; what guesses leave open is known behind the first step.
TEST(periodic, an_oscillation_is_found_from_a_solution_as_well_as_from_guesses) {
    const whole_run run =
        run_of(van_der_pol, "x y",
               {of_van_der_pol("back_euler=yes ssw_ndiv=2000"),
                ssw("ssw_period=6.6 ssw_known_period=no back_euler=yes delt_const=3.25m", "initial_sol previous\n")});
    ASSERT_FALSE(run.stopped) << run.text;
    const std::size_t second = run.text.find("solve_ssw ends");
    const double first_period = std::stod(run.text.substr(run.text.find("period=") + 7));
    EXPECT_NEAR(number_behind(run, "solve_ssw: period="), first_period, 2e-6) << second;
}

// ---- chains of blocks

TEST(periodic, each_block_of_a_chain_starts_from_the_last_one_with_new_parameters) {
    std::vector<std::string> blocks = {ssw("back_euler=yes" + to_1e15)};
    for (const char* c : {"0.5u", "0.25u"})
        blocks.push_back(
            ssw("back_euler=yes" + to_1e15, "initial_sol previous\nset_parm c_of_C1=" + std::string(c) + "\n"));
    const whole_run run = run_of(rc(), "vb", blocks);
    ASSERT_FALSE(run.stopped) << run.text;
    for (const auto& [file, tau] :
         {std::pair{"out1.dat", 1e-3}, std::pair{"out2.dat", 5e-4}, std::pair{"out3.dat", 2.5e-4}}) {
        const std::complex<double> z = std::exp(std::complex<double>(0, -2 * M_PI / 100));
        EXPECT_NEAR(std::abs(fundamental(run.rows(file), 1000)), 1 / std::abs(1.0 + tau * (1.0 - z) / 1e-5), 1e-6);
    }
}

TEST(periodic, a_transient_and_a_search_that_go_on_from_it_stay_on_it) {
    const whole_run run =
        run_of(rc(), "vb i",
               {ssw("back_euler=yes" + to_1e15),
                "solve_type trns\ninitial_sol previous\nmethod: back_euler=yes delt_const=10u t_end=2m\n",
                ssw("back_euler=yes" + to_1e15, "initial_sol previous\n")});
    ASSERT_FALSE(run.stopped) << run.text;
    const table period = run.rows("out1.dat"), more = run.rows("out2.dat");
    ASSERT_EQ(more.size(), 201u);
    for (std::size_t k = 0; k < more.size(); ++k) {
        EXPECT_NEAR(more[k][1], period[k % 100][1], 2e-7) << k;
        EXPECT_NEAR(more[k][2], period[k % 100][2], 2e-10) << k;
    }
    EXPECT_TRUE(says(run, "solve_ssw ends, slv->ssw_iter_newton=0\n")) << run.text;
}

TEST(periodic, a_solution_file_carries_states_and_currents_over) {
    const whole_run first("title: test\nbegin_circuit\nrefnode 0\n" + rc() + "end_circuit\nbegin_solve\n" +
                          ssw("back_euler=yes" + to_1e15) +
                          "begin_output\nfilename s.dat\nvariables: solution\nend_output\nend_solve\nbegin_solve\n" +
                          ssw("back_euler=yes ssw_chk_spice=no ssw_chk_rhs2=yes ssw_norm=1e-12 ssw_frequency=1k",
                              "initial_sol file filename s.dat\n") +
                          "begin_output\nfilename v.dat\nvariables: vb\nend_output\nend_solve\nend_cf\n");
    ASSERT_FALSE(first.stopped) << first.text;
    EXPECT_TRUE(says(first, "solve_ssw ends, slv->ssw_iter_newton=0\n")) << first.text;
    EXPECT_NEAR(first.rows("v.dat")[0][1], -0.1536720, 2e-7);
}

// At the end of a period a sine is at its mean, and a junction with next to no charge at that mean's bias.
TEST(periodic, small_signals_are_those_about_the_end_of_the_period) {
    const auto response = [](const std::string& first, const std::string& a) {
        const whole_run run(
            "title: test\nbegin_circuit\nrefnode 0\neelement name=V1 type=vsrcac p=a n=0 f_hz=1k vdc=2 a_ac=1 a=" + a +
            "\neelement name=R1 type=r p=a n=b\neelement name=D1 type=diode p=b n=0\n"
            "eelement name=C1 type=c p=b n=0 c=1p\noutvar: v=nodev_ac_of_b\nend_circuit\nbegin_solve\n" +
            first +
            "end_solve\nbegin_solve\nsolve_type ac\nset_freq 1\nbegin_output\nfilename v.dat\n"
            "variables: mag_of_v\nend_output\nend_solve\nend_cf\n");
        EXPECT_FALSE(run.stopped) << run.text;
        const table rows = run.rows("v.dat");
        return rows.empty() ? NAN : rows[0][1];
    };
    const double at_bias = response("solve_type dc\n", "0");
    EXPECT_NEAR(response(ssw("back_euler=yes ssw_frequency=1k ssw_ndiv=200"), "1"), at_bias, 1e-4 * at_bias);
}

// ---- tests of convergence and stops

TEST(periodic, no_shot_at_all_warns_and_writes_the_period_from_where_it_stands) {
    const whole_run run = run_of(rc(), "vb", {ssw("back_euler=yes ssw_frequency=1k ssw_itmax_newton=0")});
    EXPECT_EQ(run.text,
              "solve_class: gmin stepping can only be used\n  for DC and trns. Resetting l_gmin_step to F.\n"
              "mat::set_mat_2: system matrix size is 11 x 11\nsolve_ssw: convergence not reached.\n"
              "  This is a warning only.\nsolve_ssw: calling solve_ssw_1 for one more trns step\n"
              "solve_ssw ends, slv->ssw_iter_newton=0\nTARNEL: Program completed.\n");
    const table rows = run.rows("out1.dat");
    ASSERT_EQ(rows.size(), 101u);
    EXPECT_EQ(rows[0][1], 0);
    // A transient's first step from nothing: 1.01 v = 0.01 sin(wh).
    EXPECT_NEAR(rows[1][1], 0.01 * std::sin(2 * M_PI * 0.01) / 1.01, 1e-9);
}

// The test of changes needs a shot before; with the other one on as well, that one alone decides the first shot.
TEST(periodic, the_test_of_changes_never_passes_at_the_first_shot) {
    const std::string at_rest = "type=vsrcdc vdc=0";
    const auto shots = [&](const std::string& tests) {
        const whole_run run = run_of(rc(at_rest), "vb", {ssw("back_euler=yes ssw_frequency=1k " + tests)});
        return number_behind(run, "slv->ssw_iter_newton=");
    };
    EXPECT_EQ(shots(""), 1);
    EXPECT_EQ(shots("ssw_chk_spice=yes ssw_chk_rhs2=yes"), 0);
    EXPECT_EQ(shots("ssw_chk_spice=no ssw_chk_rhs2=yes"), 0);
    EXPECT_EQ(shots("ssw_chk_spice=no"), 0);
}

TEST(periodic, changes_beyond_the_largest_norm_stop) {
    const whole_run run = run_of(rc(), "vb", {ssw("back_euler=yes ssw_frequency=1k norm_large=1e-9")});
    EXPECT_TRUE(run.stopped);
    EXPECT_TRUE(says(run, "ssw_iter_newton=1, rhs_ssw_norm=")) << run.text;
    EXPECT_TRUE(says(run, "solve_ssw: spice norm too large. Halting...\n")) << run.text;
}

// What is left behind a part k of a correction is 1/k of the change that it makes.
TEST(periodic, a_damped_shot_does_not_pass_for_a_settled_one) {
    const whole_run run = run_of(
        rc(), "vb",
        {ssw("back_euler=yes ssw_frequency=1k ssw_dmp=yes ssw_dmp_k=0.05 ssw_dmp_newt_max=100 ssw_itmax_newton=200")});
    ASSERT_FALSE(run.stopped) << run.text;
    EXPECT_NEAR(run.rows("out1.dat")[0][1], -0.1536720, 2e-4);
    for (const char* k : {"0", "1.5", "-1"}) {
        const whole_run none =
            run_of(rc(), "vb", {ssw(std::string("back_euler=yes ssw_frequency=1k ssw_dmp=yes ssw_dmp_k=") + k)});
        EXPECT_TRUE(says(none, "solve_class: ssw: ssw_dmp_k must be above 0 and at most 1.\n")) << none.text;
    }
}

TEST(periodic, a_shot_that_is_cut_off_finds_nothing) {
    const whole_run run = run_of(rc(), "vb", {ssw("back_euler=yes itmax_trns=50" + to_1e15)});
    EXPECT_EQ(run.text.find("stable"), std::string::npos) << run.text;
    EXPECT_TRUE(says(run,
                     "warning: solve_ssw_1: time_end not reached!\n  Increase itmax_trns in the method card.\n"
                     "solve_ssw: ssw_iter_newton=0, "));
    EXPECT_TRUE(says(run, "solve_ssw: convergence not reached.\n"));
    EXPECT_EQ(run.text.find("ssw_iter_newton=1,"), std::string::npos) << run.text;
}

TEST(periodic, numbers_that_make_no_period_are_refused) {
    for (const char* word :
         {"ssw_period=0", "ssw_period=-1m", "ssw_frequency=0", "ssw_period=1m ssw_ndiv=0", "ssw_period=1m ssw_ndiv=-5",
          "ssw_period=1m ssw_period_mult=0", "ssw_period=1m ssw_period_mult=-2", "ssw_period=1m delt_const=0"}) {
        const whole_run run = run_of(rc(), "vb", {ssw(std::string("back_euler=yes ") + word)});
        EXPECT_TRUE(run.stopped) << word;
        EXPECT_TRUE(says(run, " must be above 0.\n")) << run.text;
    }
}

TEST(periodic, an_oscillator_at_rest_is_not_taken_for_a_period) {
    const whole_run run = run_of(van_der_pol, "x y", {ssw("ssw_period=6.5 ssw_known_period=no back_euler=yes")});
    EXPECT_TRUE(run.stopped);
    EXPECT_TRUE(says(
        run, "solve_ssw: nothing moves at the start:\n   the circuit is at rest and has no period there. Halting...\n"))
        << run.text;
}

TEST(periodic, damped_shots_take_a_part_of_each_step) {
    const whole_run run =
        run_of(rc(), "vb", {ssw("back_euler=yes ssw_dmp=yes ssw_dmp_k=0.5 ssw_dmp_newt_max=2" + to_1e15)});
    const double first = number_behind(run, "ssw_iter_newton=0, rhs_ssw_norm=");
    EXPECT_NEAR(number_behind(run, "ssw_iter_newton=3, rhs_ssw_norm="), first / 8, first * 1e-9) << run.text;
    EXPECT_TRUE(says(run, "slv->ssw_iter_newton=4\n"));
}

TEST(periodic, a_circuit_without_states_has_no_steady_state_to_look_for) {
    const whole_run run =
        run_of("eelement name=V1 type=vsrcac p=a n=0\neelement name=R1 type=r p=a n=0\noutvar: v=nodev_of_a\n", "v",
               {ssw("back_euler=yes ssw_frequency=1k")});
    EXPECT_TRUE(run.stopped);
    EXPECT_TRUE(says(run, "solve_ssw: n_statevar = 0?!\n  Halting...\n")) << run.text;
}

TEST(periodic, one_state_does_not_oscillate) {
    const whole_run run =
        run_of("gelement name=S type=const y=x\ngelement name=F type=lag_1 x=x y=y\noutvar: y=var_of_y\n", "y",
               {ssw("back_euler=yes ssw_frequency=1k ssw_known_period=no")});
    EXPECT_TRUE(run.stopped);
    EXPECT_TRUE(says(run, "solve_ssw: n_statevar < 2\n   is not allowed when period is not known.\n   Halting...\n"))
        << run.text;
}

TEST(periodic, a_period_that_shrinks_below_five_steps_stops) {
    // At rest nothing moves, and the first steps go astray.
    const whole_run run =
        run_of(van_der_pol, "x",
               {ssw("back_euler=yes ssw_period=1 ssw_known_period=no delt_const=0.19", "set_igparm y_ig_of_I1=2\n")});
    EXPECT_TRUE(run.stopped);
    EXPECT_TRUE(says(run, "solve_ssw: period too small.\n  period=")) << run.text;
}

TEST(periodic, an_integrator_alone_keeps_what_it_starts_with) {
    const whole_run run = run_of(
        "gelement name=S type=srcac y=x f_hz=1k\ngelement name=I type=intgrtr x=x y=y\ngelement name=F type=lag_1 x=y "
        "y=z\noutvar: y=var_of_y\n",
        "y", {ssw("back_euler=yes ssw_frequency=1k")});
    EXPECT_TRUE(run.stopped);
    EXPECT_TRUE(
        says(run,
             "solve_ssw: a period leaves some state as it was,\n   so that the circuit has no steady state of its "
             "own.\n   Check y\n   Halting...\n"))
        << run.text;
    // The charge between two capacitors in a row stays what it is.
    const whole_run row = run_of(
        "eelement name=V1 type=vsrcac p=a n=0 f_hz=1k\neelement name=R1 type=r p=a n=b\n"
        "eelement name=C1 type=c p=b n=m\neelement name=C2 type=c p=m n=0\noutvar: v=nodev_of_m\n",
        "v", {ssw("back_euler=yes ssw_frequency=1k")});
    EXPECT_TRUE(says(row, "a period leaves some state as it was")) << row.text;
}

TEST(periodic, a_state_with_two_derivatives_is_refused) {
    const whole_run run = run_of(
        "gelement name=S type=srcac y=x f_hz=1k\ngelement name=F type=lag_1 x=x y=y\n"
        "gelement name=G type=lag_1 x=x y=y tau=2m\ngelement name=M type=multscl x=z y=w\noutvar: y=var_of_y\n",
        "y", {ssw("back_euler=yes ssw_frequency=1k")});
    EXPECT_TRUE(run.stopped);
    EXPECT_TRUE(says(
        run, "solve_ssw: two elements give the derivative of y\n   in a periodic block a state has one. Halting...\n"))
        << run.text;
}

TEST(periodic, a_period_that_a_source_does_not_share_is_doubted) {
    const std::string doubt = "solve_ssw: the circuit does not repeat itself behind the period ";
    const auto doubts = [&](const std::string& source, const std::string& period) {
        const whole_run run = run_of(rc(source), "vb", {ssw("trapezoidal=yes ssw_ndiv=200 ssw_period=" + period)});
        EXPECT_FALSE(run.stopped) << run.text;
        return says(run, doubt);
    };
    const std::string clock = "type=clock t1=12u t2=8u dt1=10n dt2=10n", sine = "type=vsrcac f_hz=1k";
    EXPECT_FALSE(doubts(clock, "20u"));
    EXPECT_FALSE(doubts(clock, "60u"));
    EXPECT_TRUE(doubts(clock, "30u"));
    EXPECT_TRUE(doubts(clock, "20.02u"));
    EXPECT_FALSE(doubts(sine, "1m"));
    EXPECT_FALSE(doubts(sine, "2m"));
    EXPECT_TRUE(doubts(sine, "1.001m"));
    EXPECT_TRUE(doubts(sine, "0.5m"));
    EXPECT_FALSE(doubts("type=vpulse tr=1n tf=1n pw=0.5m per=1m", "1m"));
    EXPECT_TRUE(doubts("type=vsrcdc vdc=1 t_ramp_1=0.1m t_ramp_2=0.2m", "1m"));  // still to begin
}

TEST(periodic, steps_that_do_not_converge_tell_where) {
    const std::string diode =
        "eelement name=V1 type=vsrcac p=a n=0 a=5 f_hz=1k\neelement name=R1 type=r p=a n=b\n"
        "eelement name=D1 type=diode p=b n=c\neelement name=C1 type=c p=c n=0\neelement name=R2 type=r p=c n=0\n"
        "outvar: v=nodev_of_c\n";
    const std::string one = "itmax_newton=1 itmax_newton_first=1 ssw_frequency=1k ";
    const whole_run plain = run_of(diode, "v", {ssw(one + "back_euler=yes")});
    EXPECT_TRUE(
        says(plain, "solve_ssw_1: N-R iterations did not converge.\n  iter_trns=0\n  time=1e-05\n  Halting...\n"))
        << plain.text;
    const whole_run smallest = run_of(diode, "v", {ssw(one + "back_euler_auto=yes delt_min=5u")});
    EXPECT_TRUE(says(smallest,
                     "solve_ssw_1: no convergence even with\n  the smallest time step.\n  iter_trns=0\n  time=5e-06\n"
                     "  Halting...\n"))
        << smallest.text;
    const whole_run often = run_of(diode, "v", {ssw(one + "trapezoidal_auto=yes itmax_stepred=2")});
    EXPECT_TRUE(says(often,
                     "solve_ssw_1: iter_stepred has exceeded\n  itmax_stepred.\n  iter_stepred=3\n  itmax_stepred=2\n"
                     "  Halting...\n"))
        << often.text;
    const whole_run passes =
        run_of(diode, "v", {ssw("back_euler=yes ssw_frequency=1k itmax_trns=10 ssw_itmax_newton=1")});
    EXPECT_TRUE(says(passes, "warning: solve_ssw_1: time_end not reached!\n")) << passes.text;
}

// A rule that chooses its steps reaches the same wave; on a linear circuit it keeps its step.
TEST(periodic, rules_that_choose_their_steps_end_at_the_period) {
    const std::string rectifier =
        "eelement name=V1 type=vsrcac p=a n=0 a=10 f_hz=50\neelement name=D1 type=diode_r p=a n=b r_on=0.1 v_on=0\n"
        "eelement name=C1 type=c p=b n=0 c=100u\neelement name=R1 type=r p=b n=0 r=1k\noutvar: v=nodev_of_b\n";
    double mean[2];
    int k = 0;
    for (const char* rule : {"back_euler=yes ssw_ndiv=4000", "trapezoidal_auto=yes ssw_ndiv=2000 delt_max=50u"}) {
        const whole_run run = run_of(rectifier, "v", {ssw(std::string("ssw_frequency=50 ") + rule)});
        ASSERT_FALSE(run.stopped) << run.text;
        const table rows = run.rows("out1.dat");
        EXPECT_NEAR(rows.back()[0], 0.02, 1e-9);
        mean[k] = 0;
        for (std::size_t i = 1; i < rows.size(); ++i)
            mean[k] += (rows[i][0] - rows[i - 1][0]) / 0.02 * (rows[i][1] + rows[i - 1][1]) / 2;
        ++k;
    }
    EXPECT_NEAR(mean[0], mean[1], 2e-3 * mean[1]);
}

// ---- looking inside

TEST(periodic, debug_words_write_the_system_of_a_chosen_step) {
    const whole_run run = run_of("output ssw kcl ebce gbce smat\n" + rc(), "vb",
                                 {ssw("back_euler=yes wrt_debug_smat=yes iter_debug_trns=2" + to_1e15)});
    EXPECT_TRUE(run.stopped);
    for (const char* file :
         {"kcl.dat", "ebce1_ssw.dat", "smat.dat", "mat_ssw_lin.dat", "rhs_ssw_lin.dat", "svec_ssw_lin.dat"})
        EXPECT_FALSE(run.file(file).empty()) << file;
    const whole_run shots = run_of("output ssw\n" + rc(), "vb", {ssw("back_euler=yes" + to_1e15)});
    EXPECT_TRUE(says(shots, "solve_ssw: ssw_mat is\n  i=0  j=0  ssw_mat=")) << shots.text;
    EXPECT_TRUE(says(shots, "\n  i=1 rhs_ssw="));
}
