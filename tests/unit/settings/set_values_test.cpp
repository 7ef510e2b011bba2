#include <gtest/gtest.h>

#include <cmath>

#include "block_fixture.h"
#include "halt_throws.h"

namespace {
using ints = std::vector<int>;
const std::string trns = "solve_type trns\nmethod: back_euler=yes t_end=1 delt_const=1m\n";

// The first words of the statements of block 0 that nobody claimed.
std::vector<std::string> unclaimed(const block_run& r) {
    std::vector<std::string> list;
    for (int i = r.c.cf.n_begin_solve[0] + 1; i < r.c.cf.n_end_solve[0]; ++i)
        if (!r.c.cf.used[static_cast<std::size_t>(i)]) list.emplace_back(r.c.cf.text.word(i, 0));
    return list;
}
std::vector<std::string> names(const out_file& file) {
    std::vector<std::string> list;
    for (const out_var& v : file.vars) list.push_back(v.name);
    return list;
}
}  // namespace

TEST(set_values, reads_the_type_wherever_it_stands) {
    const struct {
        const char* word;
        truefalse solve_class::*flag;
        int code;
        const char* more;
    } types[] = {{"dc", &solve_class::dc, 1, ""},
                 {"ac", &solve_class::ac, 2, "set_freq 50\n"},
                 {"trns", &solve_class::trns, 3, "method: back_euler=yes t_end=1 delt_const=1m\n"},
                 {"startup", &solve_class::startup, 4, ""}};
    for (const auto& t : types) {
        const block_run r = read_cards(std::string(t.more) + "solve_type " + t.word + "\n");
        EXPECT_EQ(r.slv.*t.flag, int_T) << t.word;
        EXPECT_EQ(r.slv.solve_type, t.code) << t.word;
        EXPECT_EQ(r.slv.dc + r.slv.ac + r.slv.trns + r.slv.startup + r.slv.ssw, 1) << t.word;
        EXPECT_EQ(unclaimed(r), std::vector<std::string>{}) << t.word;
    }
}

TEST(set_values, of_an_unknown_type_reads_the_block_and_leaves_all_types_off) {
    const block_run r = read_cards("solve_type noise\nmethod: norm_2=1\n" + out_block("filename a\nvariables: vout\n"));
    EXPECT_EQ(r.slv.dc + r.slv.ac + r.slv.trns + r.slv.startup + r.slv.ssw, 0);
    EXPECT_EQ(r.slv.solve_type, solve_none);
    EXPECT_EQ(r.slv.method.norm_2, 1.0);
    EXPECT_EQ(r.slv.out.files.size(), 1u);
}

TEST(set_values, leaves_statements_that_it_does_not_know_unmarked) {
    const block_run r = read_cards("solve_type dc\nsolve_type ac\nstray words\n" +
                                   out_block("filename a\nvariables: vout\nanything goes\nmethod: nonsense=1\n") +
                                   "end_output\nfilename b\n");
    EXPECT_EQ(unclaimed(r), (std::vector<std::string>{"solve_type", "stray", "end_output", "filename"}));
}

TEST(set_values, starts_from_a_guess_unless_told_otherwise) {
    EXPECT_TRUE(read_cards("solve_type dc\n").slv.task.init_initialize);
    const block_run previous = read_cards("solve_type dc\ninitial_sol previous\n");
    EXPECT_TRUE(previous.slv.task.init_previous);
    EXPECT_FALSE(previous.slv.task.init_initialize);
    const block_run file = read_cards("solve_type dc\ninitial_sol file filename=sol.dat\n");
    EXPECT_TRUE(file.slv.task.init_file);
    EXPECT_EQ(file.slv.task.init_sol_path, "sol.dat");
}

TEST(set_values, of_the_next_block_forgets_the_one_before) {
    block_run r = prepared(solve_block("solve_type dc\ninitial_sol previous\nset_parm r_of_R1=5\nmethod: norm_2=1\n"
                                       "vary_parm r_of_R2 type table 1 2\n" +
                                       out_block("filename a\nvariables: all_nodes\n")) +
                           solve_block("solve_type dc\n"));
    read_block(r, 0);
    EXPECT_EQ(r.slv.task.n_sweep, 2);
    read_block(r, 1);
    EXPECT_EQ(r.slv.index_solve, 1);
    EXPECT_EQ(r.slv.task.n_sweep, 1);
    EXPECT_EQ(r.slv.method.norm_2, 1e-10);
    EXPECT_TRUE(r.slv.out.files.empty() && r.slv.task.vary.empty() && r.slv.task.set_parm.empty());
    EXPECT_EQ(r.slv.out.i_file_all_nodes, -1);
    EXPECT_TRUE(r.slv.task.init_initialize && !r.slv.task.init_previous);
}

TEST(set_values, resets_t_start_in_a_block_that_gives_none) {
    block_run r = prepared(solve_block(trns + "method: t_start=3\n") + solve_block(trns));
    read_block(r, 0);
    EXPECT_EQ(r.flags.t_start, 3.0);
    EXPECT_EQ(r.flags.t_end, 1.0);
    read_block(r, 1);
    EXPECT_EQ(r.flags.t_start, 0.0);
}

TEST(damping, of_the_second_stage_follows_the_first_when_only_that_is_given) {
    const block_run r = read_cards("solve_type dc\nmethod: dmp_k=0.3 dmp_newt_max=70\n");
    EXPECT_EQ(r.slv.method.dmp_k2, 0.3);
    EXPECT_EQ(r.slv.method.dmp_newt_max2, 70);
    const block_run both = read_cards("solve_type dc\nmethod: dmp_k=0.3 dmp_k2=0.1 dmp_newt_max2=90\n");
    EXPECT_EQ(both.slv.method.dmp_k2, 0.1);
    EXPECT_EQ(both.slv.method.dmp_newt_max2, 90);
}

TEST(chk_only, switches_every_other_test_off) {
    const block_run r =
        read_cards("solve_type dc\nmethod: chk_only_rhs2=yes chk_rhsinf=yes chk_delx_all=yes chk_rhs2=no\n");
    EXPECT_TRUE(r.slv.method.chk_rhs2);
    EXPECT_FALSE(r.slv.method.chk_spice || r.slv.method.chk_rhsinf || r.slv.method.chk_delx_all ||
                 r.slv.method.chk_delx_sprt);
    EXPECT_TRUE(r.slv.method.chk_cnvrg);
    const block_run volt = read_cards("solve_type dc\nmethod: chk_only_delx_volt=yes\n");
    EXPECT_TRUE(volt.slv.method.chk_delx_volt && volt.slv.method.chk_delx_sprt)
        << "a voltage test is a separate-step test";
    EXPECT_FALSE(volt.slv.method.chk_spice || volt.slv.method.chk_rhs2);
}

TEST(step_norms, of_voltages_or_kcl_switch_separate_tests_and_prints_on) {
    EXPECT_TRUE(read_cards("solve_type dc\nmethod: chk_delx_kcl=yes\n").slv.method.chk_delx_sprt);
    EXPECT_TRUE(read_cards("solve_type dc\nmethod: write_delx_volt=yes\n").slv.method.write_delx_sprt);
    EXPECT_FALSE(read_cards("solve_type dc\n").slv.method.write_delx_sprt);
}

TEST(time_steps, default_to_fractions_of_delt_const) {
    const block_run r = read_cards(trns);
    EXPECT_DOUBLE_EQ(r.slv.method.delt_min, 2e-7);
    EXPECT_DOUBLE_EQ(r.slv.method.delt_max, 1e-2);
    EXPECT_EQ(r.slv.now.delt, 1e-3);
    const block_run given = read_cards(trns + "method: delt_min=1u delt_max=5m\n");
    EXPECT_DOUBLE_EQ(given.slv.method.delt_min, 1e-6);
    EXPECT_DOUBLE_EQ(given.slv.method.delt_max, 5e-3);
}

TEST(time_steps, of_the_explicit_side_default_likewise) {
    block_run r = prepared(solve_block(trns + "method: Heun=yes delt_const_x=40m\n"));
    r.c.cct.flag_x_mixed = r.c.cct.flag_integrator_x = true;
    read_block(r);
    EXPECT_DOUBLE_EQ(r.slv.method.delt_min_x, 8e-6);
    EXPECT_DOUBLE_EQ(r.slv.method.delt_max_x, 0.4);
}

TEST(ssw, takes_its_end_from_the_period_whatever_the_card_says) {
    block_run r = prepared(
        solve_block("solve_type ssw\nmethod: ssw_frequency=50 t_start=1 t_end=9 trapezoidal=yes ssw_period_mult=3\n"));
    for (int& allowed : r.c.lib.ebes.flag.allow_ssw) allowed = 1;
    read_block(r);
    EXPECT_TRUE(r.slv.ssw);
    EXPECT_EQ(r.slv.solve_type, 8);
    EXPECT_DOUBLE_EQ(r.slv.method.delt_const, 0.02 / 100);
    EXPECT_DOUBLE_EQ(r.slv.method.ssw_period, 0.06);
    EXPECT_DOUBLE_EQ(r.flags.t_end, 1.06);
}

TEST(output_block, has_the_listed_defaults) {
    const block_run r = read_cards("solve_type dc\n" + out_block("filename a.dat\nvariables: vout\n"));
    const out_file& f = r.slv.out.files.at(0);
    EXPECT_EQ(f.path, "a.dat");
    EXPECT_EQ(f.limit_lines, 100000);
    EXPECT_TRUE(f.output_hz);
    EXPECT_FALSE(f.append || f.fourier || f.nyquist || f.flag_fixed_interval);
    EXPECT_EQ(f.sweep_format, 0);
    EXPECT_EQ(f.n_fourier, 2);
    EXPECT_EQ(f.delta_phase, 200.0);
    EXPECT_EQ(f.data_type, out_analog);
}

TEST(output_block, reads_its_options_at_even_positions) {
    const block_run r =
        read_cards("solve_type dc\n" + out_block("variables: vout\nfilename append append=yes limit_lines=twenty "
                                                 "output_hz=no sweep_format=normal\n"));
    const out_file& f = r.slv.out.files.at(0);
    EXPECT_EQ(f.path, "append");
    EXPECT_TRUE(f.append);
    EXPECT_EQ(f.limit_lines, 20);
    EXPECT_FALSE(f.output_hz);
    EXPECT_EQ(f.sweep_format, 1);
}

TEST(output_block, accepts_a_limit_of_no_lines) {
    EXPECT_EQ(read_cards("solve_type dc\n" + out_block("filename a limit_lines=0\nvariables: vout\n"))
                  .slv.out.files.at(0)
                  .limit_lines,
              0);
}

TEST(output_block, takes_variables_globals_swept_items_and_small_signal_words) {
    const block_run r =
        read_cards("solve_type dc\n" +
                   out_block("filename a\nvariables: vout ra r_of_R2 vdc_of_V1 glbl_of_half phase_of_iv mag_of_iv\n") +
                   "vary_parm r_of_R2 type table 1 2\nvary_parm glbl_of_half type table 1 2\n"
                   "vary_parm_sync vdc_of_V1 type table 1 2\n");
    ints prefixes, indices;
    for (const out_var& v : r.slv.out.files.at(0).vars) {
        prefixes.push_back(v.prefix);
        if (v.prefix >= prefix_global) indices.push_back(v.index);
    }
    EXPECT_EQ(prefixes, (ints{0, 3, 4, 5, 4, 1, 2}));
    EXPECT_EQ(indices, (ints{0, 0, 0, 1}));
    EXPECT_EQ(r.slv.out.files[0].vars[0].kind, ov_nodev);
    EXPECT_EQ(r.slv.out.files[0].vars[5].kind, ov_aux);
    EXPECT_EQ(r.slv.out.files[0].vars[5].i_ov, 1);
}

TEST(output_block, knows_no_swept_item_of_a_statement_that_stands_inside_it) {
    EXPECT_HALT(
        read_cards("solve_type dc\n" + out_block("filename a\nvary_parm r_of_R2 type table 1 2\nvariables: r_of_R2\n")),
        "solve_class: syntax problem in output variables?\n   Check this outvar: r_of_R2\n   Halting...\n");
    const block_run r =
        read_cards("solve_type dc\n" + out_block("filename a\nvary_parm r_of_R2 type table 1 2\nvariables: vout\n") +
                   out_block("filename b\nvariables: r_of_R2\n") + "vary_parm r_of_R2 type table 3 4\n");
    EXPECT_EQ(r.slv.out.files.at(1).vars.at(0).index, 0);
}

TEST(output_block, of_all_nodes_has_every_node_but_the_reference) {
    const block_run r = read_cards("solve_type dc\n" + out_block("filename a\nvariables: all_nodes\n"));
    EXPECT_EQ(names(r.slv.out.files.at(0)), (std::vector<std::string>{"in", "out"}));
    EXPECT_EQ(r.slv.out.i_file_all_nodes, 0);
    EXPECT_TRUE(r.slv.out.files[0].all_nodes);
}

TEST(output_block, of_all_outvars_leaves_out_what_an_analog_row_cannot_hold) {
    block_run r = prepared(solve_block("solve_type dc\n" + out_block("filename a\nvariables: all_outvars\n")));
    r.c.ov.kind[0] = ov_dvar;
    r.c.ov.kind[1] = ov_nodev_ac;
    r.c.ov.kind[2] = ov_postproc;
    read_block(r);
    EXPECT_EQ(names(r.slv.out.files.at(0)), (std::vector<std::string>{"p2", "r2", "np", "vin"}));
    EXPECT_EQ(r.slv.out.files[0].data_type, out_analog);
}

TEST(output_block, is_digital_when_its_first_variable_is) {
    block_run r = prepared(solve_block("solve_type startup\n" + out_block("filename a\nvariables: vout iv\n") +
                                       out_block("filename b\nvariables: iv vout\n")));
    r.c.ov.kind[0] = ov_dvar;
    read_block(r);
    EXPECT_EQ(r.slv.out.files.at(0).data_type, out_digital);
    EXPECT_EQ(r.slv.out.files.at(1).data_type, out_analog);
}

TEST(output_block, of_a_reserved_word_is_found_again_by_its_number) {
    const block_run r =
        read_cards("solve_type dc\n" + out_block("filename a\nvariables: vout\n") +
                   out_block("filename b\nvariables: solution\n") + out_block("filename c\nvariables: parms\n"));
    EXPECT_EQ(r.slv.out.i_file_solution, 1);
    EXPECT_EQ(r.slv.out.i_file_parms, 2);
    EXPECT_EQ(r.slv.out.i_file_solution_ac, -1);
    EXPECT_EQ(r.slv.out.files.at(1).content, out_solution);
    EXPECT_EQ(r.slv.out.files.at(2).content, out_parms);
}

TEST(control, times_default_to_those_of_the_run) {
    const block_run r = read_cards(trns + "method: t_start=0.5\n" + out_block("filename a\nvariables: vout\n") +
                                   out_block("filename b\nvariables: vout\ncontrol: out_tstart=0.6 out_tend=0.7 "
                                             "fixed_interval=1m what=ever\n"));
    EXPECT_EQ(r.slv.out.files.at(0).out_tstart, 0.5);
    EXPECT_EQ(r.slv.out.files.at(0).out_tend, 1.0 + 1e-13);
    EXPECT_EQ(r.slv.out.files.at(1).out_tstart, 0.6);
    EXPECT_EQ(r.slv.out.files.at(1).out_tend, 0.7);
    EXPECT_TRUE(r.slv.out.files.at(1).flag_fixed_interval);
    EXPECT_EQ(r.slv.out.files.at(1).fixed_interval, 1e-3);
}

TEST(control, keys_of_other_types_are_ignored) {
    const block_run r =
        read_cards("solve_type dc\n" + out_block("filename a\nvariables: vout\ncontrol: out_tstart=5 min_phase=1\n"));
    EXPECT_EQ(r.slv.out.files.at(0).out_tstart, 0.0);
    EXPECT_FALSE(r.slv.out.files.at(0).flag_min_phase);
}

TEST(fourier_file, drops_a_fixed_interval_and_spaces_its_harmonics_over_the_span) {
    const block_run r =
        read_cards(trns + out_block("filename a fourier=yes\nvariables: vout\n"
                                    "control: fixed_interval=1m out_tstart=0.2 out_tend=0.7 n_fourier=3\n"));
    const out_file& f = r.slv.out.files.at(0);
    EXPECT_FALSE(f.flag_fixed_interval);
    EXPECT_TRUE(r.slv.out.flag_fourier);
    ASSERT_EQ(f.omega_fourier.size(), 4u);
    EXPECT_EQ(f.omega_fourier[0], 0.0);
    EXPECT_NEAR(f.omega_fourier[3], 3 * 2 * std::acos(-1.0) / 0.5, 1e-12);
}

TEST(fourier_file, has_as_many_harmonics_as_the_memory_holds) {
    const block_run r =
        read_cards("solve_type trns\nmethod: t_end=1 delt_const=1m\n" +
                   out_block("filename f.dat fourier=yes\nvariables: vout\ncontrol: n_fourier=200000\n"));
    EXPECT_EQ(r.slv.out.files[0].n_fourier, 200001);
    EXPECT_EQ(r.slv.out.files[0].omega_fourier.size(), 200001u);
}

TEST(nyquist_file, passes_with_phase_and_magnitude_of_one_variable) {
    const block_run r = read_cards("solve_type ac\nset_freq 50\n" +
                                   out_block("filename a nyquist=yes\nvariables: phase_of_vout mag_of_vout\n"));
    EXPECT_TRUE(r.slv.out.files.at(0).nyquist);
}

TEST(frequencies, are_given_in_hertz_and_kept_in_radians_per_second) {
    const double two_pi = 2 * std::acos(-1.0);
    const block_run one = read_cards("solve_type ac\nset_freq 1k\n");
    ASSERT_EQ(one.slv.task.n_freq, 1);
    EXPECT_DOUBLE_EQ(one.slv.task.freq_array[0], two_pi * 1000);
    const block_run log = read_cards("solve_type ac\nvary_freq from 1 to 1k type log n_points 4\n");
    ASSERT_EQ(log.slv.task.n_freq, 4);
    EXPECT_NEAR(log.slv.task.freq_array[2], two_pi * 100, 1e-9);
    const block_run table = read_cards("solve_type ac\nvary_freq type table 5 7\n");
    ASSERT_EQ(table.slv.task.n_freq, 2);
    EXPECT_DOUBLE_EQ(table.slv.task.freq_array[1], two_pi * 7);
    const block_run linear = read_cards("solve_type ac\nvary_freq from 1 to 3 type linear n_points 3\n");
    EXPECT_DOUBLE_EQ(linear.slv.task.freq_array.at(1), two_pi * 2);
}

TEST(set_values, halts_on_statements_beyond_the_limits_of_a_solve_card) {
    std::string many = "method:";
    for (int i = 0; i < 50; ++i) many += " norm_2=1";
    EXPECT_TRUE(run_and_listen([&] { read_cards("solve_type dc\n" + many + "\n"); }).stopped);
}

TEST(set_values, refuses_words_that_end_too_early_without_reading_beyond_them) {
    for (const char* cards : {"solve_type\n",
                              "solve_type dc\ninitial_sol\n",
                              "solve_type dc\ninitial_sol file filename\n",
                              "solve_type dc\nvary_parm\n",
                              "solve_type dc\nvary_parm r_of_R1\n",
                              "solve_type dc\nvary_parm r_of_R1 type\n",
                              "solve_type dc\nvary_parm r_of_R1 from\n",
                              "solve_type dc\nvary_parm r_of_R1 from 1 to\n",
                              "solve_type dc\nvary_parm r_of_R1 from 1 to 2 type\n",
                              "solve_type dc\nvary_parm_sync\n",
                              "solve_type dc\nvary_parm r_of_R1 from 1 to 2 type linear n_points\n",
                              "solve_type ac\nset_freq\n",
                              "solve_type ac\nvary_freq\n",
                              "solve_type ac\nvary_freq type\n",
                              "solve_type dc\nset_parm _of_=1\n",
                              "solve_type dc\nset_parm glbl_of_=1\n",
                              "solve_type dc\nmethod: norm_2=\nvary_parm _of_\n",
                              "solve_type dc\nbegin_output\nfilename\nvariables: vout\nend_output\n",
                              "solve_type dc\nbegin_output\nfilename a append\nvariables: vout\nend_output\n",
                              "solve_type dc\nbegin_output\nbegin_output\nend_output\n"})
        EXPECT_TRUE(run_and_listen([&] { read_cards(cards); }).stopped) << cards;
}
