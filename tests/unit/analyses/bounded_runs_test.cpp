// bounded_runs_test.cpp -- runs that would never end come to a stop that says why, with the rows up to there.
#include <gtest/gtest.h>

#include <cmath>

#include "whole_run.h"

namespace {
const std::string startup = "solve_type startup\n";
std::string trns(const std::string& settings) {
    return "solve_type trns\ninitial_sol previous\nmethod: " + settings + "\n";
}
const std::string too_small = "solve_trns: no convergence even with\n  the smallest time step.\n";

// 10 V come onto 1 mH and 10 ohm at once, by a switch whose control rises within 1 ns.
const std::string closing_switch =
    "eelement name=V1 type=vsrcdc p=in n=0 vdc=10\ngelement name=G1 type=step y=g y1=0 y2=1 t0=10u dt1=1n\n"
    "eelement name=S1 type=switch_g1 p=in n=a g=g r_on=1m\neelement name=L1 type=l p=a n=b l=1m\n"
    "eelement name=R1 type=r p=b n=0 r=10\noutvar: i=i_of_L1\n";

std::string example_deck(const std::string& name) {
    return read_file(std::string(TARNEL_EXAMPLES) + "/" + name + "/deck.in");
}
std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    if (at == std::string::npos) throw std::runtime_error("no " + from);
    return text.replace(at, from.size(), to);
}

// Completed to t_end, or stopped at the smallest step with the rows that came before.
void expect_end(const whole_run& run, const std::string& file, double t_end) {
    const table rows = run.rows(file);
    ASSERT_FALSE(rows.empty()) << run.text;
    for (std::size_t i = 1; i < rows.size(); ++i) ASSERT_GE(rows[i][0], rows[i - 1][0]);
    if (run.stopped)
        EXPECT_NE(run.text.find(too_small), std::string::npos) << run.text;
    else
        EXPECT_NEAR(rows.back()[0], t_end, 0.01 * t_end) << run.text;
}
}  // namespace

// The jump of the inductor's voltage is an error that no step makes smaller than 20 tolerances.
TEST(bounded_runs, a_step_of_trbdf2_that_stays_rejected_at_delt_min_stops_the_run) {
    for (const int itmax : {0, 3, 20}) {
        const whole_run run(deck_text{closing_switch,
                                      "i",
                                      {startup, trns("trbdf2=yes trbdf2_tolr=1e-8 t_end=100u delt_const=1u "
                                                     "itmax_trbdf2=" +
                                                     std::to_string(itmax))}}
                                .str());
        ASSERT_TRUE(run.stopped) << run.text;
        const std::size_t at = run.text.find(too_small + "  iter_tr=");
        ASSERT_NE(at, std::string::npos) << run.text;
        // Tries on the way down to delt_min, the first one there, and its repetitions.
        const int tries = std::stoi(run.text.substr(at + too_small.size() + 10));
        const std::string n = std::to_string(tries);
        EXPECT_EQ(
            run.text.find("  iter_tr=" + n + "\n  iter_trbdf2=" + n + "\n  number_reject=" + n + "\n  iter_trns_1="),
            at + too_small.size())
            << run.text;
        EXPECT_GT(tries, itmax);
        EXPECT_LT(tries, itmax + 25);
        const table rows = run.rows("out2.dat");
        ASSERT_GT(rows.size(), 5u);
        EXPECT_NEAR(rows.back()[0], 10e-6, 2e-9);
    }
}

TEST(bounded_runs, flyback_under_trbdf2_ends) {
    const whole_run run(
        replaced(example_deck("flyback"), "gear2=yes event_restart=yes t_end=8m", "trbdf2=yes t_end=0.2m"));
    expect_end(run, "out.dat", 0.2e-3);
}

// The diode's current ends within nanoseconds when the switch closes, and no step that the test accepts spans that.
TEST(bounded_runs, flyback_under_trbdf2_completes_where_it_heeds_events) {
    const whole_run run(replaced(example_deck("flyback"), "gear2=yes", "trbdf2=yes"));
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("out.dat");
    EXPECT_NEAR(rows.back()[0], 8e-3, 1e-6);
    EXPECT_NEAR(rows.back()[1], 24 * 0.5 * 0.4 / 0.6, 0.05);  // Vin n D/(1 - D), and half the ripple
}

TEST(bounded_runs, a_switch_that_closes_under_trbdf2_completes_where_it_heeds_events) {
    const whole_run run(deck_text{closing_switch,
                                  "i",
                                  {startup, trns("trbdf2=yes trbdf2_tolr=1e-8 t_end=100u delt_const=1u "
                                                 "event_restart=yes")}}
                            .str());
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("out2.dat");
    EXPECT_LT(rows.size(), 400u);
    // The control has half its height 0.5 ns behind 10 us.
    for (const auto& row : rows)
        EXPECT_NEAR(row[1], row[0] < 10.0005e-6 ? 1e-5 : 1 - std::exp(-(row[0] - 10.0005e-6) / 1e-4), 3e-5) << row[0];
}

TEST(bounded_runs, a_three_phase_bridge_under_trbdf2_ends) {
    const whole_run run(replaced(example_deck("rectifier_3ph"), "back_euler=yes t_end=60m", "trbdf2=yes t_end=20m"));
    expect_end(run, "wave.dat", 20e-3);
}

TEST(bounded_runs, a_step_below_the_digits_of_the_time_stops) {
    const std::string rc =
        "eelement name=V1 type=vsrcdc p=in n=0 vdc=1\neelement name=R1 type=r p=in n=a r=1k\n"
        "eelement name=C1 type=c p=a n=0 c=1u\noutvar: v=nodev_of_a\n";
    for (const char* rule : {"back_euler", "trapezoidal", "gear2", "trbdf2", "back_euler_auto"}) {
        const whole_run run(
            deck_text{rc, "v", {startup, trns(std::string(rule) + "=yes t_start=1e6 t_end=1000001 delt_const=1e-11")}}
                .str());
        ASSERT_TRUE(run.stopped) << rule << run.text;
        EXPECT_NE(run.text.find("solve_trns: the time does not go on with\n  this step.\n  time_present=1000000\n"
                                "  delt=1e-11\n  iter_trns_1=0\n  Halting...\n"),
                  std::string::npos)
            << run.text;
        EXPECT_EQ(run.rows("out2.dat").size(), 1u);
    }
}

// Newton never finds this step, and each failure shortens it; nothing but the digits of the time is below.
TEST(bounded_runs, a_step_that_fails_without_a_smallest_one_stops) {
    const std::string charging =
        "eelement name=V1 type=vsrcdc p=in n=0 vdc=1\neelement name=R1 type=r p=in n=a r=1k\n"
        "eelement name=C1 type=c p=a n=0 c=1u\neelement name=D1 type=diode_r p=0 n=a\n"
        "outvar: v=nodev_of_a\n";
    for (const char* rule : {"trbdf2", "back_euler_auto"}) {
        const whole_run run(deck_text{charging,
                                      "v",
                                      {startup, trns(std::string(rule) + "=yes gmin_step=no t_start=1 t_end=2 "
                                                                         "delt_const=1m delt_min=0 itmax_newton=1 "
                                                                         "itmax_newton_first=1 itmax_stepred=1000")}}
                                .str());
        ASSERT_TRUE(run.stopped) << rule << run.text;
        EXPECT_NE(run.text.find("solve_trns: the time does not go on with\n  this step.\n  time_present=1\n"),
                  std::string::npos)
            << run.text;
    }
}

// Rates of 1e200 have an error whose square is no number.
TEST(bounded_runs, an_error_beyond_all_numbers_is_no_reason_to_accept_a_step) {
    const whole_run run(
        deck_text{"gelement name=K type=srcac y=x a=1e200 f_hz=1k\n"
                  "gelement name=L type=intgrtr x=x y=y\noutvar: v=var_of_y\n",
                  "v",
                  {startup, trns("trbdf2=yes t_end=1m delt_const=1u itmax_trbdf2=5 norm_2=1e300 "
                                 "norm_large=1e307")}}
            .str());
    ASSERT_TRUE(run.stopped) << run.text;
    EXPECT_NE(run.text.find(too_small), std::string::npos) << run.text;
    EXPECT_EQ(run.rows("out2.dat").size(), 1u);
}
