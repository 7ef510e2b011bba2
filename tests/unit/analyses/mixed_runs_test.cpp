// Digital elements beside a circuit: links in both directions, steps around events, start-up, solution files.
#include <gtest/gtest.h>

#include <cmath>

#include "whole_run.h"

namespace {
std::string block(const std::string& type, const std::string& cards, const std::string& files = "") {
    return "begin_solve\nsolve_type " + type + "\n" + cards + "method: offset_dgtl=0\n" + files + "end_solve\n";
}
std::string file(const std::string& name, const std::string& variables, const std::string& control = "") {
    return "begin_output\nfilename " + name + " limit_lines=1000000\nvariables: " + variables + "\n" + control +
           "end_output\n";
}
std::string mixed_deck(const std::string& circuit, const std::string& blocks) {
    return "title: mixed\nbegin_circuit\nrefnode 0\n" + circuit + "end_circuit\n" + blocks + "end_cf\n";
}

// A clock drives an RC low-pass of 1 us through a converter of 1 ohm: 0 and 5 V.
const std::string driven_rc =
    "delement name=K type=clock y=ck t1=2u t2=3u\n"
    "eelement name=D type=dac1 p=a n=0 s=ck v_low=0 v_high=5 r_out=1\n"
    "eelement name=R type=r p=a n=b r=999\neelement name=C type=c p=b n=0 c=1n\n"
    "outvar: v=nodev_of_b ck=dvar_of_ck\n";

// Its voltage from 0 V.
double rc_voltage(double t) {
    double v = 0.0, now = 0.0;
    for (int k = 0; now < t; ++k) {
        const double end = std::min(t, now + (k % 2 == 0 ? 2e-6 : 3e-6)), target = k % 2 == 0 ? 5.0 : 0.0;
        v = target + (v - target) * std::exp(-(end - now) / 1e-6);
        now = end;
    }
    return v;
}
}  // namespace

TEST(mixed_runs, a_clock_drives_a_circuit_whose_steps_end_just_before_and_just_behind_its_edges) {
    const whole_run run(
        mixed_deck(driven_rc, block("trns", "method: back_euler=yes t_start=0 t_end=20u delt_const=30n delt_min=1n\n",
                                    file("v.dat", "v") + file("ck.dat", "ck"))));
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("v.dat");
    for (const auto& row : rows) EXPECT_NEAR(row[1], rc_voltage(row[0]), 0.1) << row[0];
    int n_before = 0, n_behind = 0;
    for (const auto& row : rows) {
        n_before += std::fabs(row[0] - 1.9995e-6) < 1e-12;
        n_behind += std::fabs(row[0] - 2.001e-6) < 1e-12 || std::fabs(row[0] - 5.001e-6) < 1e-12;
    }
    EXPECT_EQ(n_before, 1) << "half of delt_min before the first edge";
    EXPECT_EQ(n_behind, 2) << "delt_min behind the first two edges";
    EXPECT_EQ(rows.back()[0], 2e-5);
    EXPECT_EQ(run.rows("ck.dat").size(), 2u + 2 * 7);
}

TEST(mixed_runs, second_order_rules_stay_so_across_edges_where_events_are_heeded) {
    const auto error = [](const std::string& rule, const char* delt) {
        const whole_run run(mixed_deck(
            driven_rc, block("trns", "method: " + rule + " t_start=0 t_end=9u delt_const=" + delt + " delt_min=1p\n",
                             file("v.dat", "v"))));
        EXPECT_FALSE(run.stopped) << run.text;
        const auto rows = run.rows("v.dat");
        return std::fabs(rows.back()[1] - rc_voltage(rows.back()[0]));
    };
    const double coarse = error("trapezoidal=yes event_restart=yes", "200n"),
                 fine = error("trapezoidal=yes event_restart=yes", "50n");
    EXPECT_LT(coarse, 0.02);
    EXPECT_LT(fine, coarse / 9) << "a quarter of the step, a sixteenth of the error";
}

TEST(mixed_runs, a_converter_from_analog_to_digital_switches_at_the_step_behind_its_threshold) {
    const whole_run run(
        mixed_deck("eelement name=V type=pwl20 p=a n=0 t1=0 v1=0 t2=10u v2=10\n"
                   "eelement name=R type=r p=a n=0 r=1k\n"
                   "delement name=A type=adc1 x=a y=over v_high=8 td=50n\n"
                   "outvar: v=nodev_of_a over=dvar_of_over\n",
                   block("trns", "method: back_euler=yes t_start=0 t_end=10u delt_const=100n\n",
                         file("v.dat", "v") + file("over.dat", "over"))));
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("over.dat");
    double t_rise = 0.0;
    for (std::size_t i = 1; i < rows.size(); ++i)
        if (rows[i][1] == 1 && rows[i - 1][1] == 0) t_rise = rows[i][0];
    EXPECT_GT(t_rise, 4e-6 + 50e-9 - 1e-12) << "the ramp passes 4 V at 4 us";
    EXPECT_LT(t_rise, 4e-6 + 50e-9 + 101e-9 + 1e-12);
}

// A relaxation oscillator: RC charged through a converter that follows a comparator with hysteresis made of two levels.
TEST(mixed_runs, a_loop_through_both_sides_oscillates_at_the_period_of_its_thresholds) {
    const std::string circuit =
        "eelement name=D type=dac1 p=a n=0 s=q v_low=0 v_high=3 r_out=1m\n"
        "eelement name=R type=r p=a n=b r=1k\neelement name=C type=c p=b n=0 c=1n\n"
        "delement name=HI type=adc1 x=b y=hi v_high=4 td=1n\ndelement name=LO type=adc1 x=b y=lo v_high=2 td=1n\n"
        "delement name=NL type=not a=lo y=below td_rise=1n td_fall=1n\n"
        "delement name=F type=rsff1 s=below r=hi q=q qb=qb\n"
        "outvar: v=nodev_of_b q=dvar_of_q\n";
    const whole_run run(mixed_deck(
        circuit,
        block("trns", "method: back_euler=yes t_start=0 t_end=30u delt_const=5n delt_min=10p\n", file("q.dat", "q"))));
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("q.dat");
    std::vector<double> rises;
    for (std::size_t i = 1; i < rows.size(); ++i)
        if (rows[i][1] == 1 && rows[i - 1][1] == 0 && rows[i][0] > 5e-6) rises.push_back(rows[i][0]);
    ASSERT_GT(rises.size(), 10u);
    // From 1 to 2 V towards 3 V, and back towards 0 V: RC ln 2 each; comparators, inverter and flip-flop take 2 to 3 ns
    // each time, and each threshold is seen up to a step late.
    const double period = (rises.back() - rises.front()) / static_cast<double>(rises.size() - 1);
    EXPECT_NEAR(period, 2 * 1e-6 * std::log(2.0), 30e-9);
}

TEST(mixed_runs, an_unknown_level_counts_as_low_for_a_converter) {
    const whole_run run(
        mixed_deck("delement name=I type=not a=x y=y\ndelement name=J type=not a=y y=x\n"
                   "eelement name=D type=dac1 p=a n=0 s=x v_low=1 v_high=5 r_out=1\n"
                   "eelement name=R type=r p=a n=0 r=1e9\noutvar: v=nodev_of_a x=dvar_of_x\n",
                   block("startup", "", file("v.dat", "v") + file("x.dat", "x"))));
    ASSERT_FALSE(run.stopped) << run.text;
    EXPECT_EQ(run.file("x.dat"), "  2 \n");
    EXPECT_NEAR(run.rows("v.dat")[0][0], 1.0, 1e-6);
}

TEST(mixed_startup, both_sides_find_the_levels_and_voltages_that_hold_each_other) {
    const std::string circuit =
        "eelement name=V type=vsrcdc p=in n=0 vdc=5\neelement name=R0 type=r p=in n=0 r=1k\n"
        "delement name=A type=adc1 x=in y=x v_high=5\ndelement name=I type=not a=x y=y\n"
        "eelement name=D type=dac1 p=out n=0 s=y v_low=1 v_high=4 r_out=1\neelement name=R type=r p=out n=0 r=1e9\n"
        "outvar: out=nodev_of_out x=dvar_of_x y=dvar_of_y\n";
    const whole_run run(mixed_deck(circuit, block("startup", "", file("v.dat", "out") + file("d.dat", "x y"))));
    ASSERT_FALSE(run.stopped) << run.text;
    EXPECT_EQ(run.file("d.dat"), "  1   0 \n");
    EXPECT_NEAR(run.rows("v.dat")[0][0], 1.0, 1e-6);
    // A sweep finds them anew at each point.
    const whole_run swept(mixed_deck(circuit, block("startup", "vary_parm vdc_of_V type table 0 1 4 5\n",
                                                    file("v.dat", "out") + file("d.dat", "x y"))));
    ASSERT_FALSE(swept.stopped) << swept.text;
    EXPECT_EQ(swept.file("d.dat"), "  0   1 \n  0   1 \n  1   0 \n  1   0 \n");
    EXPECT_NEAR(swept.rows("v.dat")[0][0], 4.0, 1e-6);
}

TEST(mixed_startup, two_sides_that_contradict_each_other_are_told) {
    const std::string circuit =
        "delement name=A type=adc1 x=out y=x v_high=5\ndelement name=I type=not a=x y=y\n"
        "eelement name=D type=dac1 p=out n=0 s=y v_low=0 v_high=5 r_out=1\neelement name=R type=r p=out n=0 r=1e9\n"
        "outvar: out=nodev_of_out\n";
    const whole_run run(mixed_deck(circuit, block("startup", "", file("v.dat", "out"))));
    EXPECT_TRUE(run.stopped);
    EXPECT_NE(run.text.find("solve_startup: did not converger after 20 mixed passes.\n"
                            "solve_startup: analog passes did not converge.\n  Halting...\n"),
              std::string::npos)
        << run.text;
    const whole_run fewer(mixed_deck(circuit, block("startup", "method: n_pass_mixed=0\n", file("v.dat", "out"))));
    EXPECT_NE(fewer.text.find("solve_startup: did not converger after 0 mixed passes.\n"), std::string::npos)
        << fewer.text;
}

TEST(mixed_startup, logic_that_contradicts_itself_is_told) {
    const std::string circuit = "delement name=I type=not a=y y=y\noutvar: y=dvar_of_y\n";
    const auto run = [&](const std::string& cards) {
        return whole_run("title: ring\nbegin_circuit\n" + circuit + "end_circuit\n" +
                         block("startup", cards, file("d.dat", "y")) + "end_cf\n");
    };
    EXPECT_EQ(run("").file("d.dat"), "  2 \n") << "from unknown it stays so";
    const whole_run set = run("set_dgtl y=1\nmethod: n_pass_dgtl=7\n");
    EXPECT_TRUE(set.stopped);
    EXPECT_NE(set.text.find("solve_startup: did not converge after\n   7 passes. Halting...\n"), std::string::npos)
        << set.text;
}

TEST(mixed_startup, start_values_of_flip_flops_come_from_the_deck_and_the_block) {
    const std::string circuit =
        "delement name=ZERO type=dsrc y=zero\ndelement name=K type=clock y=ck t1=1u t2=1u\n"
        "delement name=F type=dff d=zero clk=ck s=zero r=zero q=q qb=qb q0=1\noutvar: q=dvar_of_q qb=dvar_of_qb\n";
    const auto levels = [&](const std::string& cards) {
        return whole_run("title: start\nbegin_circuit\n" + circuit + "end_circuit\n" +
                         block("startup", cards, file("d.dat", "q qb")) + "end_cf\n")
            .file("d.dat");
    };
    EXPECT_EQ(levels(""), "  1   0 \n");
    EXPECT_EQ(levels("set_dstparm q0_of_F 0\n"), "  0   1 \n");
}

TEST(mixed_solutions, a_run_goes_on_from_the_previous_block_as_if_it_had_not_ended) {
    const std::string method = "method: back_euler=yes delt_const=20n delt_min=1n t_start=";
    table all, whole_v;
    {
        const whole_run whole(
            mixed_deck(driven_rc, block("trns", method + "0 t_end=14u\n", file("v.dat", "v") + file("ck.dat", "ck"))));
        whole_v = whole.rows("v.dat");
        all = whole.rows("ck.dat");
    }
    const whole_run parts(
        mixed_deck(driven_rc, block("trns", method + "0 t_end=6u\n", file("v1.dat", "v") + file("ck1.dat", "ck")) +
                                  block("trns", "initial_sol previous\n" + method + "6u t_end=14u\n",
                                        file("v2.dat", "v") + file("ck2.dat", "ck"))));
    ASSERT_FALSE(parts.stopped) << parts.text;
    EXPECT_NEAR(parts.rows("v2.dat").back()[1], whole_v.back()[1], 1e-3);
    const table second = parts.rows("ck2.dat");
    // Edges behind 6 us: 7, 10, 12 us.
    ASSERT_EQ(second.size(), 8u);
    for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(second[second.size() - 2 - i], all[all.size() - 2 - i]);
}

TEST(mixed_solutions, a_solution_file_holds_levels_states_and_the_times_of_events) {
    const std::string method = "method: back_euler=yes delt_const=20n delt_min=1n t_start=0 t_end=";
    const std::string circuit = driven_rc + "delement name=I type=not a=ck y=i td_rise=2u td_fall=2u\n";
    const whole_run run(
        mixed_deck(circuit, block("trns", method + "6u\n", file("ck1.dat", "ck") + file("end.dat", "solution")) +
                                block("trns", "initial_sol file filename=end.dat\n" + method + "7u\n",
                                      file("v2.dat", "v") + file("ck2.dat", "ck"))));
    ASSERT_FALSE(run.stopped) << run.text;
    const std::string text = run.file("end.dat");
    // At 6 us: the clock is in its second 1 until 7 us; the inverter, pending since 5 us, fires at 7 us, too.
    EXPECT_NE(text.find("dbeu->val_nd:\n1\n"), std::string::npos) << text;
    EXPECT_NE(text.find("dbeu->stable:\n0\n0\n"), std::string::npos) << text;
    EXPECT_NE(text.find("dbeu->tschdl_rel:\n 1.000000e-06\n 1.000000e-06\n"), std::string::npos) << text;
    // The new run begins at 0: the next edge comes at 1 us.
    const table rows = run.rows("ck2.dat");
    ASSERT_GE(rows.size(), 3u);
    EXPECT_EQ(rows[0][1], 1);
    EXPECT_NEAR(rows[1][0], 1e-6, 1e-12);
    EXPECT_EQ(rows[2][1], 0);
}

TEST(mixed_runs, a_file_of_fixed_interval_brings_analog_rows_at_events) {
    const whole_run run(
        mixed_deck(driven_rc, block("trns", "method: back_euler=yes t_start=0 t_end=3u delt_const=100n delt_min=1n\n",
                                    file("v.dat", "v", "control: fixed_interval=1n\n") + file("ck.dat", "ck"))));
    ASSERT_FALSE(run.stopped) << run.text;
    int n = 0;
    for (const auto& row : run.rows("v.dat")) n += std::fabs(row[0] - 2e-6) < 1e-13;
    EXPECT_EQ(n, 1) << "at the edge itself";
}

TEST(mixed_runs, a_digital_word_switches_and_a_code_sets_a_voltage) {
    const whole_run run(mixed_deck(
        "delement name=ONE type=dsrc y=one y0=1\ndelement name=ZERO type=dsrc y=zero\n"
        "delement name=K type=clock y=ck t1=0.5u t2=0.5u pol=0\n"
        "delement name=N type=counter_4 clk=ck r=zero up=one q0=q0 q1=q1 q2=q2 q3=q3\n"
        "eelement name=D type=dac4 p=a n=0 q0=q0 q1=q1 q2=q2 q3=q3 v_ref=15\neelement name=R type=r p=a n=0 r=1e9\n"
        "outvar: v=nodev_of_a\n",
        block("trns", "method: back_euler=yes t_start=0 t_end=20u delt_const=50n delt_min=1n\n", file("v.dat", "v"))));
    ASSERT_FALSE(run.stopped) << run.text;
    int n_checked = 0;
    for (const auto& row : run.rows("v.dat")) {
        const double in_period = std::fmod(row[0] + 0.5e-6, 1e-6);
        if (row[0] < 1e-6 || in_period < 0.1e-6 || in_period > 0.9e-6) continue;
        EXPECT_NEAR(row[1], static_cast<int>((row[0] + 0.5e-6) / 1e-6) % 16, 1e-5) << row[0];
        ++n_checked;
    }
    EXPECT_GT(n_checked, 200);
}

// Another run than the one that wrote the file knows its levels alone.
TEST(mixed_solutions, another_run_goes_on_with_clocks_and_flip_flops_and_doubts_counters) {
    const std::string clocks =
        "delement name=Z type=dsrc y=zero\ndelement name=ONE type=dsrc y=one y0=1\n"
        "delement name=K type=clock y=ck t1=2u t2=3u\n"
        "delement name=F type=dff d=one clk=ck s=zero r=zero q=q qb=qb td_rise=4u td_fall=4u\n"
        "outvar: ck=dvar_of_ck q=dvar_of_q\n";
    const std::string counter =
        "delement name=N type=counter_4 clk=ck r=zero up=one q0=q0 q1=q1 q2=q2 q3=q3 td_rise=4u td_fall=4u\n";
    const auto deck = [](const std::string& circuit, const std::string& cards, const std::string& files) {
        return "title: solution\nbegin_circuit\n" + circuit + "end_circuit\n" + block("trns", cards, files) +
               "end_cf\n";
    };
    // At 6 us the clock is in its second 1 until 7 us, and q, for which the edge at 5 us asks, rises at 9 us.
    const auto solution_of = [&](const std::string& circuit) {
        return whole_run(deck(circuit, "method: t_start=0 t_end=6u\n", file("end.dat", "solution"))).file("end.dat");
    };
    const auto from = [&](const std::string& circuit, const std::string& solution) {
        const temp_folder outside;
        std::ofstream("end.dat") << solution;
        const std::string path = std::filesystem::absolute("end.dat");
        const whole_run run(deck(circuit, "initial_sol file filename=" + path + "\nmethod: t_start=0 t_end=10u\n",
                                 file("levels.dat", "ck q")));
        EXPECT_FALSE(run.stopped) << run.text;
        return std::pair(run.text, run.rows("levels.dat"));
    };
    const auto [text, rows] = from(clocks, solution_of(clocks));
    EXPECT_EQ(text.find("warning: digital"), std::string::npos) << text;
    std::vector<double> edges_of_clock, edges_of_q;
    for (std::size_t i = 1; i < rows.size(); ++i) {
        if (rows[i][1] != rows[i - 1][1]) edges_of_clock.push_back(rows[i][0]);
        if (rows[i][2] != rows[i - 1][2]) edges_of_q.push_back(rows[i][0]);
    }
    ASSERT_EQ(edges_of_clock.size(), 4u);
    const double wanted[] = {1e-6, 4e-6, 6e-6, 9e-6};
    for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(edges_of_clock[i], wanted[i], 1e-11) << i;
    ASSERT_EQ(edges_of_q.size(), 1u);
    EXPECT_NEAR(edges_of_q[0], 3e-6, 1e-11);

    EXPECT_NE(from(clocks + counter, solution_of(clocks + counter))
                  .first.find("warning: digital elements have events pending\n"
                              "  whose outcome the solution file does not hold.\n  Their next levels may be wrong.\n"),
              std::string::npos);
}
