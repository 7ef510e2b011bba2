// Whole runs with digital elements: alone, and beside a circuit under one clock.
#include <gtest/gtest.h>

#include <cmath>

#include "whole_run.h"

namespace {
// Digital files of a deck with one transient; levels without an offset.
std::string logic_deck(const std::string& circuit, const std::string& variables, const std::string& cards,
                       const std::string& control = "", const std::string& type = "trns") {
    const std::string reference = circuit.find("eelement") == std::string::npos ? "" : "refnode 0\n";
    return "title: logic\nbegin_circuit\n" + reference + circuit + "end_circuit\nbegin_solve\nsolve_type " + type +
           "\n" + cards + "method: offset_dgtl=0\nbegin_output\nfilename out.dat\nvariables: " + variables + "\n" +
           control + "end_output\nend_solve\nend_cf\n";
}
// Rows where the level of the column changes: time and new level.
table edges(const table& rows, std::size_t column = 1) {
    table all;
    for (std::size_t i = 1; i < rows.size(); ++i)
        if (rows[i][column] != rows[i - 1][column]) all.push_back({rows[i][0], rows[i][column]});
    return all;
}
// Row files have 7 digits; an event comes by the epsilon of the clock late, and each one hands it on.
void expect_times(const table& edges, const std::vector<double>& wanted) {
    ASSERT_EQ(edges.size(), wanted.size());
    for (std::size_t i = 0; i < wanted.size(); ++i)
        EXPECT_NEAR(edges[i][0], wanted[i], 2e-7 * wanted[i] + 1.01e-13 * (double(i) + 2)) << i;
}
const std::string one_and_zero = "delement name=ONE type=dsrc y=one y0=1\ndelement name=ZERO type=dsrc y=zero\n";
}  // namespace

TEST(digital_runs, edges_of_a_clock_come_at_its_half_periods_and_a_gate_follows_after_its_delay) {
    const whole_run run(logic_deck(one_and_zero + "delement name=K type=clock y=ck t1=1u t2=1u\n"
                                                  "delement name=G type=and_2 a=ck b=one y=y td_rise=10n td_fall=20n\n"
                                                  "outvar: ck=dvar_of_ck y=dvar_of_y\n",
                                   "ck y", "method: t_start=0 t_end=10u\n"));
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("out.dat");
    expect_times(edges(rows, 1), {1e-6, 2e-6, 3e-6, 4e-6, 5e-6, 6e-6, 7e-6, 8e-6, 9e-6});
    // With first guesses the gate begins at 0 with a rise on its way.
    expect_times(edges(rows, 2),
                 {1e-8, 1.02e-6, 2.01e-6, 3.02e-6, 4.01e-6, 5.02e-6, 6.01e-6, 7.02e-6, 8.01e-6, 9.02e-6});
    EXPECT_EQ(rows.back()[0], 1e-5) << "a row at the end";
    EXPECT_EQ(rows.back()[1], 0) << "the edge at the end is none of this run";
}

TEST(digital_runs, each_event_has_a_row_of_old_levels_and_one_of_new_ones_at_one_time) {
    const whole_run run(logic_deck("delement name=K type=clock y=ck t1=1u t2=1u\noutvar: ck=dvar_of_ck\n", "ck",
                                   "method: t_start=0 t_end=3.5u\n"));
    EXPECT_EQ(run.file("out.dat"),
              " 0.000000e+00   1 \n 1.000000e-06   1 \n 1.000000e-06   0 \n 2.000000e-06   0 \n 2.000000e-06   1 \n"
              " 3.000000e-06   1 \n 3.000000e-06   0 \n 3.500000e-06   0 \n");
}

TEST(digital_runs, an_offset_lifts_each_column_above_the_one_before) {
    const std::string deck = logic_deck(one_and_zero + "outvar: a=dvar_of_one b=dvar_of_zero c=dvar_of_one\n", "a b c",
                                        "method: t_start=0 t_end=1u\n");
    const whole_run plain(deck);
    EXPECT_EQ(plain.file("out.dat"), " 0.000000e+00   1   0   1 \n 1.000000e-06   1   0   1 \n");
    std::string with_default = deck;
    with_default.erase(with_default.find("method: offset_dgtl=0\n"), 22);
    const whole_run lifted(with_default);
    EXPECT_EQ(lifted.file("out.dat").substr(0, 57), " 0.000000e+00  1.000000e+00  2.000000e+00  5.000000e+00 \n");
}

TEST(digital_runs, a_counter_counts_edges_modulo_16_and_times_its_ends) {
    const whole_run run(
        logic_deck(one_and_zero + "delement name=K type=clock y=ck t1=50n t2=50n pol=0\n"
                                  "delement name=N type=counter_4 clk=ck r=zero up=one q0=q0 q1=q1 q2=q2 q3=q3\n"
                                  "outvar: ck=dvar_of_ck q0=dvar_of_q0 q1=dvar_of_q1 q2=dvar_of_q2 q3=dvar_of_q3\n",
                   "ck q0 q1 q2 q3", "method: t_start=0 t_end=4u\n"));
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("out.dat");
    int n_checked = 0;
    for (const auto& row : rows) {
        const double in_period = std::fmod(row[0] + 50e-9, 100e-9);  // since the last rising edge
        if (row[0] < 100e-9 || in_period < 2e-9) continue;
        EXPECT_EQ(row[2] + 2 * row[3] + 4 * row[4] + 8 * row[5], static_cast<int>((row[0] + 50e-9) / 100e-9) % 16)
            << row[0];
        ++n_checked;
    }
    EXPECT_GT(n_checked, 70);
}

TEST(digital_runs, a_run_without_a_pending_event_ends_with_a_row_at_its_end) {
    const whole_run run(logic_deck("delement name=S type=dsrc y=y n_edges=1 t1=3u\noutvar: y=dvar_of_y\n", "y",
                                   "method: t_start=1u t_end=9u\n"));
    EXPECT_EQ(run.file("out.dat"), " 1.000000e-06   0 \n 3.000000e-06   0 \n 3.000000e-06   1 \n 9.000000e-06   1 \n");
}

TEST(digital_runs, a_pulse_shorter_than_the_delay_is_absorbed_by_a_gate_and_delivered_by_an_inverter) {
    const whole_run run(logic_deck(one_and_zero + "delement name=S type=dsrc y=x n_edges=2 t1=1u t2=1.005u\n"
                                                  "delement name=G type=and_2 a=x b=one y=g td_rise=10n td_fall=10n\n"
                                                  "delement name=I type=not a=x y=i td_rise=10n td_fall=10n\n"
                                                  "outvar: g=dvar_of_g i=dvar_of_i\n",
                                   "g i", "set_dgtl i=1 g=0\nmethod: t_start=0.5u t_end=3u\n"));
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("out.dat");
    for (const auto& row : rows) EXPECT_EQ(row[1], 0);
    // The inverter begins with a fall that comes whatever its input, and stands at 0 when the pulse comes: a 1 at its
    // input asks for what stands. So the pulse is lost on it, and so is its end, which it sees and delivers.
    const table of_inverter = edges(rows, 2);
    ASSERT_FALSE(of_inverter.empty());
    EXPECT_EQ(of_inverter.back()[1], 1);
    EXPECT_NEAR(of_inverter.back()[0], 1.015e-6, 1e-12);
}

TEST(digital_runs, units_due_at_one_time_fire_together) {
    const whole_run run(
        logic_deck("delement name=A type=clock y=a t1=1u t2=1u\ndelement name=B type=clock y=b t1=1u t2=1u pol=0\n"
                   "outvar: a=dvar_of_a b=dvar_of_b\n",
                   "a b", "method: t_start=0 t_end=1.5u\n"));
    EXPECT_EQ(run.file("out.dat"),
              " 0.000000e+00   1   0 \n 1.000000e-06   1   0 \n 1.000000e-06   0   1 \n 1.500000e-06   0   1 \n");
}

TEST(digital_runs, unknown_levels_go_through_gates_until_a_known_one_comes) {
    // Two inverters in a ring stay unknown from start-up on; a set level makes one known.
    const std::string circuit =
        "delement name=S type=dsrc y=x n_edges=2 t1=1u t2=2u\n"
        "delement name=I type=not a=p y=q td_fall=1n td_rise=1n\ndelement name=J type=not a=q y=p td_fall=1n "
        "td_rise=1n\n"
        "delement name=G type=or_2 a=x b=q y=y td_rise=1n td_fall=1n\noutvar: q=dvar_of_q y=dvar_of_y\n";
    const auto levels = [&](const std::string& cards) {
        return whole_run(
                   "title: logic\nbegin_circuit\n" + circuit + "end_circuit\nbegin_solve\nsolve_type startup\n" +
                   cards +
                   "end_solve\nbegin_solve\nsolve_type trns\ninitial_sol previous\nmethod: offset_dgtl=0 t_start=0 "
                   "t_end=3u\nbegin_output\nfilename out.dat\nvariables: q y\nend_output\nend_solve\nend_cf\n")
            .file("out.dat");
    };
    EXPECT_EQ(levels(""),
              " 0.000000e+00   2   2 \n 1.000000e-06   2   2 \n 1.000000e-06   2   2 \n"
              " 2.000000e-06   2   2 \n 2.000000e-06   2   2 \n 3.000000e-06   2   2 \n")
        << "an input that is not known hides one that would decide";
    EXPECT_EQ(levels("set_dgtl p=1\n"),
              " 0.000000e+00   0   0 \n 1.000000e-06   0   0 \n 1.000000e-06   0   0 \n 1.001000e-06   0   0 \n"
              " 1.001000e-06   0   1 \n 2.000000e-06   0   1 \n 2.000000e-06   0   1 \n 2.001000e-06   0   1 \n"
              " 2.001000e-06   0   0 \n 3.000000e-06   0   0 \n");
}

TEST(digital_runs, limits_of_passes_warn_and_keep_the_rows) {
    const whole_run run(logic_deck("delement name=K type=clock y=ck t1=1u t2=1u\noutvar: ck=dvar_of_ck\n", "ck",
                                   "method: t_start=0 t_end=1m itmax_trns=3\n"));
    EXPECT_FALSE(run.stopped);
    EXPECT_NE(run.text.find("warning: time_end not reached\n  in transient simulation.\n"
                            "  Increase itmax_trns in the method card.\n"),
              std::string::npos);
    EXPECT_EQ(run.rows("out.dat").size(), 7u);
}

TEST(digital_runs, blocks_are_refused_where_there_is_no_circuit) {
    const whole_run run(
        logic_deck("delement name=K type=clock y=ck\ngelement name=G type=const y=y\n"
                   "gelement name=H type=linear_1 x=y y=z\noutvar: ck=dvar_of_ck\n",
                   "ck", "method: t_start=0 t_end=1u\n"));
    EXPECT_TRUE(run.stopped);
    EXPECT_NE(run.text.find("find_n_dac: general elements are not allowed\n   in a purely digital circuit. Halting..."),
              std::string::npos)
        << run.text;
}

TEST(digital_runs, all_nodes_are_all_digital_nodes_and_states_are_numbers) {
    const whole_run all(
        logic_deck("delement name=K type=clock y=ck t1=1u t2=1u\n"
                   "delement name=I type=not a=ck y=i td_rise=10n td_fall=10n\n",
                   "all_nodes", "method: t_start=0 t_end=0.5u\n"));
    EXPECT_EQ(all.rows("out.dat").front().size(), 3u);
    const whole_run states(
        logic_deck("delement name=K type=clock y=ck t1=1u t2=1u\n"
                   "delement name=I type=not a=ck y=i td_rise=10n td_fall=10n\n"
                   "outvar: s=state_of_I\n",
                   "s", "method: t_start=0 t_end=1.5u\n"));
    // A fall at first, nothing, a rise behind the edge, nothing.
    EXPECT_EQ(states.file("out.dat"),
              " 0.000000e+00   3 \n 1.000010e-08   3 \n 1.000010e-08   0 \n 1.000000e-06   0 \n"
              " 1.000000e-06   0 \n 1.010000e-06   1 \n 1.010000e-06   0 \n 1.500000e-06   0 \n");
}

TEST(digital_runs, a_digital_variable_in_an_analog_file_and_the_other_way_round_stop_the_run) {
    const std::string circuit =
        "eelement name=V type=vsrcdc p=a n=0 vdc=1\ndelement name=K type=clock y=ck\n"
        "outvar: v=nodev_of_a ck=dvar_of_ck\n";
    const std::string cards = "method: t_start=0 t_end=1u delt_const=0.1u back_euler=yes\n";
    const whole_run analog(logic_deck(circuit, "v ck", cards));
    EXPECT_NE(analog.text.find("write_trns: Check output variables.\n  Some output variables has not been\n"
                               "  mapped to any system variable.\n  Halting...\n"),
              std::string::npos)
        << analog.text;
    const whole_run digital(logic_deck(circuit, "ck v", cards));
    EXPECT_NE(digital.text.find("assign_ov_dgtl: check output variables (digital)\n   Halting...\n"), std::string::npos)
        << digital.text;
}

TEST(digital_runs, values_of_digital_elements_are_tested_and_completed_before_the_run) {
    const whole_run run(logic_deck("delement name=X type=dsrc y=q n_edges=21\noutvar: q=dvar_of_q\n", "q",
                                   "method: t_start=0 t_end=1u\n"));
    EXPECT_NE(run.text.find("dsrc.dbe: check n_edges. Halting..."), std::string::npos) << run.text;
    // The threshold is the half of v_high.
    const whole_run adc(
        logic_deck("eelement name=V type=vsrcdc p=a n=0 vdc=3\neelement name=R type=r p=a n=0\n"
                   "delement name=A type=adc1 x=a y=q v_high=8\noutvar: q=dvar_of_q\n",
                   "q", "method: t_start=0 t_end=1u delt_const=0.1u back_euler=yes\n"));
    ASSERT_FALSE(adc.stopped) << adc.text;
    EXPECT_EQ(adc.rows("out.dat").back()[1], 0);
}
