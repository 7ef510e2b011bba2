// Results computed from the row files of their block: wiring, spans, stops. Numbers against formulas.
#include "output/postproc.h"

#include <gtest/gtest.h>

#include <cmath>

#include "../whole_run.h"
#include "dc_fixture.h"
#include "settings/postproc_plan.h"

namespace {
std::string output(const std::string& file, const std::string& variables, const std::string& control = "",
                   const std::string& options = "") {
    return "begin_output\nfilename " + file + " " + options + "\nvariables: " + variables + "\n" +
           (control.empty() ? "" : "control: " + control + "\n") + "end_output\n";
}

// Variables u, a ramp of 1/s that begins at 0, and w = 2 u + 1; the results r of a calc_pf and a of a calc_avg.
const std::string ramp =
    "gelement name=B1 type=const y=one k=1\ngelement name=B2 type=intgrtr x=one y=u\n"
    "gelement name=B3 type=linear_1 x=u y=w c0=1 c1=2\n"
    "gelement name=P1 type=calc_avg x=u\ngelement name=P2 type=calc_pf x1=u x2=w\n"
    "gelement name=P3 type=calc_avg_rms x=w\n";
const std::string outvars =
    "outvar: u=var_of_u w=var_of_w a=avg_of_P1 p=pavg_of_P2 r1=rms1_of_P2 r2=rms2_of_P2 pf=pf_of_P2\n"
    "outvar: wa=avg_of_P3 wr=rms_of_P3\n";

// From 0 to 1 s in ten steps, begun at a solution, so that the first row is one.
std::string block_from(const std::string& times, const std::string& outputs) {
    return "begin_solve\nsolve_type trns\ninitial_sol previous\nmethod: trapezoidal=yes delt_const=0.1 " + times +
           "\n" + outputs + "end_solve\n";
}
std::string deck(const std::string& circuit_block, const std::string& outputs, const std::string& more_blocks = "") {
    return "title: test\nbegin_circuit\n" + circuit_block +
           "end_circuit\nbegin_solve\nsolve_type startup\nend_solve\n" + block_from("t_end=1", outputs) + more_blocks +
           "end_cf\n";
}
// The stop of a run of the ramp with these outputs, behind its progress.
std::string stop_of(const std::string& outputs, const std::string& circuit_block = ramp + outvars) {
    const whole_run run(deck(circuit_block, outputs));
    EXPECT_TRUE(run.stopped);
    for (const std::string_view last : {"iter_trns=0 time=0\n", "system matrix size is 3 x 3\n"})
        if (const std::size_t end = run.text.rfind(last); end != std::string::npos)
            return run.text.substr(end + last.size());
    return run.text;
}
const std::string rows = output("rows.dat", "u w");

// A composite as calc_avg is, of another name, with other variables or outputs.
std::string composite(const std::string& name, const std::string& flags, const std::string& vars,
                      const std::string& out) {
    const std::string body = vars == "x" ? "pp_in_1 name=pp x=x" : "pp_in_2 name=pp x1=x1 x2=x2";
    return "gce name=" + name + " " + flags + "\nbegin_dc\nmainvars: " + vars + "\nauxvars:\nxvars:\noutvar: " + out +
           "\nbias:\nstparms:\nigparms:\niparms:\nsparms:\nrparms:\nrparms_derived:\ngbe type=" + body +
           "\nend_dc\nC:\nendC\nbegin_ac\noutvar_ac:\nend_ac\nendgce\n";
}
}  // namespace

TEST(postproc_1, writes_the_results_in_the_order_of_the_variables) {
    const whole_run run(deck(ramp + outvars, rows + output("a.dat", "a") + output("b.dat", "wr pf a p r2 r1 wa")));
    ASSERT_FALSE(run.stopped) << run.text;
    // Trapezoids on the squares of a line from x to y in n steps: (x^2 + x y + y^2)/3 + (y - x)^2/(6 n^2).
    const double rms_u = std::sqrt(1 / 3.0 + 1 / 600.0), rms_w = std::sqrt(13 / 3.0 + 4 / 600.0),
                 p = 2 * (1 / 3.0 + 1 / 600.0) + 0.5;
    EXPECT_EQ(run.file("a.dat"), " 5.000000e-01 \n");
    const table b = run.rows("b.dat");
    ASSERT_EQ(b.size(), 1u);
    const std::vector<double> expected = {rms_w, p / (rms_u * rms_w), 0.5, p, rms_w, rms_u, 2};
    ASSERT_EQ(b[0].size(), expected.size());
    for (std::size_t j = 0; j < expected.size(); ++j) EXPECT_NEAR(b[0][j], expected[j], 1e-6 * expected[j]) << j;
}

TEST(postproc_1, measures_the_span_of_its_own_file_with_both_ends) {
    const whole_run run(deck(ramp + outvars, rows + output("a.dat", "a", "out_tstart=0.2 out_tend=0.6") +
                                                 output("b.dat", "a", "out_tstart=0.7")));
    ASSERT_FALSE(run.stopped) << run.text;
    EXPECT_EQ(run.file("a.dat"), " 4.000000e-01 \n");
    EXPECT_EQ(run.file("b.dat"), " 8.500000e-01 \n");
}

TEST(postproc_1, gives_zero_of_one_row) {
    const whole_run run(deck(ramp + outvars, rows + output("a.dat", "a wr pf", "out_tstart=0.95 out_tend=1.01")));
    ASSERT_FALSE(run.stopped) << run.text;
    EXPECT_EQ(run.file("a.dat"), " 0.000000e+00  0.000000e+00  0.000000e+00 \n");
}

TEST(postproc_1, stands_before_or_behind_the_file_that_it_measures_and_is_no_matter_of_limit_lines) {
    const whole_run run(deck(ramp + outvars, output("a.dat", "a", "", "limit_lines=0") + rows));
    ASSERT_FALSE(run.stopped) << run.text;
    EXPECT_EQ(run.file("a.dat"), " 5.000000e-01 \n");
}

TEST(postproc_1, measures_files_of_all_output_variables_and_of_outputs_of_elements) {
    const whole_run all(deck(ramp + outvars, output("a.dat", "a") + output("all.dat", "all_outvars")));
    ASSERT_FALSE(all.stopped) << all.text;
    EXPECT_EQ(all.file("a.dat"), " 5.000000e-01 \n");
    EXPECT_EQ(all.rows("all.dat")[0].size(), 3u);  // results are left out
    // y of B2 is the variable u.
    const whole_run of_element(
        deck(ramp + "outvar: y=y_of_B2 a=avg_of_P1\n", output("y.dat", "y") + output("a.dat", "a")));
    ASSERT_FALSE(of_element.stopped) << of_element.text;
    EXPECT_EQ(of_element.file("a.dat"), " 5.000000e-01 \n");
}

TEST(postproc_1, takes_the_first_file_and_for_two_variables_the_first_with_both) {
    // coarse.dat has u every 0.5 s of the steps, so a product of its rows with those of w would stop.
    const std::string coarse = output("coarse.dat", "u", "fixed_interval=0.49");
    const whole_run run(deck(ramp + outvars, coarse + rows + output("b.dat", "p")));
    ASSERT_FALSE(run.stopped) << run.text;
    EXPECT_NEAR(run.rows("b.dat")[0][0], 2 * (1 / 3.0 + 1 / 600.0) + 0.5, 1e-6);
    // In files of their own with the same rows.
    const whole_run two(deck(ramp + outvars, output("u.dat", "u") + output("w.dat", "w") + output("b.dat", "p")));
    ASSERT_FALSE(two.stopped) << two.text;
    EXPECT_EQ(two.file("b.dat"), run.file("b.dat"));
    EXPECT_EQ(stop_of(coarse + output("w.dat", "w") + output("b.dat", "p")),
              "postproc_1: n_new = 11, n_old = 3 ? Halting...\n");
    // u at 0.6, 0.8, 1.0 s and w at 0.5 to 1.0 s; u at 0.3 to 0.9 s and w at 0.2 to 0.8 s.
    EXPECT_EQ(stop_of(output("u.dat", "u", "fixed_interval=0.19") + output("w.dat", "w", "out_tstart=0.45") +
                      output("b.dat", "p", "out_tstart=0.45")),
              "postproc_1: n_new = 6, n_old = 3 ? Halting...\n");
    EXPECT_EQ(stop_of(output("u.dat", "u", "fixed_interval=0.19 out_tstart=0.05") +
                      output("w.dat", "w", "fixed_interval=0.19 out_tstart=0.15") +
                      output("b.dat", "p", "out_tstart=0.15 out_tend=0.95")),
              "postproc_1: the rows of two columns stand at different times. Halting...\n");
}

TEST(postproc_1, refuses_append_and_a_span_without_length) {
    const std::string file = output("a.dat", "a", "", "append=yes");
    const whole_run run(deck(ramp + outvars, rows + output("a.dat", "a"), block_from("t_end=1", rows + file)));
    EXPECT_TRUE(run.stopped);
    EXPECT_TRUE(run.text.ends_with("postproc_1: append not allowed. Halting...\n")) << run.text;
    EXPECT_EQ(run.file("a.dat"), " 5.000000e-01 \n");  // of the first block
    EXPECT_EQ(stop_of(rows + output("a.dat", "a", "out_tstart=0.5 out_tend=0.5")),
              "postproc_1: t_start = t_end? Halting...\n");
}

TEST(postproc_1, needs_the_measured_variable_in_a_file_of_the_block) {
    const std::string in_files = "postproc_1: could not find var_of_w in any output file. Halting...\n";
    EXPECT_EQ(stop_of(output("u.dat", "u") + output("a.dat", "wa")), in_files);
    EXPECT_EQ(stop_of(output("u.dat", "u") + output("a.dat", "p")), in_files);
    // Harmonics, and values that are not of an output variable, are no rows of it.
    EXPECT_TRUE(
        stop_of(output("w.dat", "w", "n_fourier=3", "fourier=yes") + output("a.dat", "wa")).ends_with(in_files));
    EXPECT_EQ(stop_of(output("w.dat", "all_nodes") + output("a.dat", "wa")), in_files);
    // A file of another block does not count.
    const whole_run run(deck(ramp + outvars, rows, block_from("t_end=1", output("a.dat", "wa"))));
    EXPECT_TRUE(run.text.ends_with(in_files)) << run.text;
}

TEST(postproc_1, needs_an_output_variable_of_what_it_measures) {
    EXPECT_EQ(stop_of(output("u.dat", "u") + output("a.dat", "wa"), ramp + "outvar: u=var_of_u wa=avg_of_P3\n"),
              "postproc_1: could not find var_of_w in the outvar statement. Halting...\n");
}

TEST(postproc_1, needs_rows_over_the_whole_span) {
    EXPECT_EQ(stop_of(output("rows.dat", "u w", "out_tstart=0.4") + output("a.dat", "a")),
              "check_trns_1: t[0] is too far from t_start.\n");
    EXPECT_EQ(stop_of(output("rows.dat", "u w", "out_tend=0.4") + output("a.dat", "a")),
              "check_trns_1: t[n-1] is too far from t_end.\n");
    EXPECT_EQ(stop_of(rows + output("a.dat", "a", "out_tstart=0.5 out_tend=0.3")),  // no row at all
              "check_trns_1: t[0] is too far from t_start.\n");
}

TEST(postproc_1, reads_rows_of_earlier_blocks_in_a_file_that_goes_on) {
    const auto two = [&](const std::string& second_times, const std::string& variables) {
        return deck(ramp + outvars, output("rows.dat", variables),
                    block_from(second_times,
                               output("rows.dat", "u w", "", "append=yes") + output("a.dat", "a wa", "out_tstart=0")));
    };
    const whole_run run(two("t_start=1 t_end=2", "u w"));
    ASSERT_FALSE(run.stopped) << run.text;
    EXPECT_EQ(run.file("a.dat"), " 1.000000e+00  3.000000e+00 \n");
    const whole_run again(two("t_end=1", "u w"));
    EXPECT_TRUE(again.text.ends_with("check_trns_1: the time falls from 1 to 0.\n  Halting...\n")) << again.text;
    const whole_run narrow(two("t_start=1 t_end=2", "u"));
    EXPECT_TRUE(narrow.text.ends_with("file_trns_get_col: file rows.dat has < 3 columns. Halting...\n")) << narrow.text;
}

TEST(postproc_1, refuses_composites_that_it_does_not_know_or_that_lack_something) {
    const auto stop_with = [&](const std::string& entry, const std::string& statement, const std::string& variables) {
        const temp_folder folder;
        const console_run heard = run_here(
            deck(ramp + "outvar: u=var_of_u w=var_of_w\n" + statement, rows + output("a.dat", variables)), entry);
        EXPECT_TRUE(heard.stopped);
        return heard.text.substr(std::min(heard.text.find("postproc_1"), heard.text.size()));
    };
    const std::string trns = "postprocessor=yes";
    EXPECT_EQ(stop_with(composite("calc", trns, "x", "m=postproc_of_pp"),
                        "gelement name=Q type=calc x=u\noutvar: m=m_of_Q\n", "m"),
              "postproc_1: gels name = calc? Halting...\n");
    // One that calls a known one has its own name.
    const std::string caller =
        "gce name=mine\nbegin_dc\nmainvars: x\nauxvars:\nxvars:\noutvar: m=avg_of_c\nbias:\nstparms:\nigparms:\n"
        "iparms:\nsparms:\nrparms:\nrparms_derived:\ncallgce calc_avg name=c x=x\nend_dc\nC:\nendC\nbegin_ac\n"
        "outvar_ac:\nend_ac\nendgce\n";
    EXPECT_EQ(stop_with(caller, "gelement name=Q type=mine x=u\noutvar: m=m_of_Q\n", "m"),
              "postproc_1: gels name = mine? Halting...\n");
}

TEST(postproc_types, are_installed_with_as_many_variables_and_results) {
    const gels_class& gels = installed_libraries().gels;
    for (const postproc_type& t : postproc_types) {
        const int c = gels.find(t.name);
        ASSERT_GE(c, 0) << t.name;
        EXPECT_EQ(gels.list.vr.count(c), t.n_x) << t.name;
        ASSERT_EQ(gels.ov.count(c), t.n_results) << t.name;
        for (int j = 0; j < t.n_results; ++j) {
            const auto at = static_cast<std::size_t>(gels.ov.at(c, j));
            EXPECT_EQ(gels.ov.kind[at], t.ac ? ov_postproc_ac : ov_postproc) << t.name;
            EXPECT_EQ(gels.ov.index[at], j) << t.name;
        }
    }
}

TEST(type_of_result, halts_for_composites_of_known_names_that_lack_a_variable_or_have_a_result_too_many) {
    library_texts texts = installed_texts();
    texts.gmes.clear();  // they call installed blocks
    texts.gels = composite("calc_pf", "postprocessor=yes", "x", "p=postproc_of_pp") +
                 composite("calc_avg", "postprocessor=yes", "x", "avg=postproc_of_pp more=postproc_of_pp") +
                 composite("calcac_pf", "postprocessor=yes", "x1 x2", "pf=postproc_of_pp");
    circuit c = circuit_of(
        "title: test\nbegin_circuit\ngelement name=P type=calc_pf x=u\ngelement name=A type=calc_avg x=u\n"
        "gelement name=S type=calcac_pf x1=u x2=u\nend_circuit\nend_cf\n",
        libraries_of(texts));
    bind_statements(c);
    EXPECT_HALT(type_of_result(c, {0, 0}, false),
                "postproc_1: gels name = calc_pf needs 2 main variables and has 1\n  Halting...\n");
    EXPECT_EQ(type_of_result(c, {1, 0}, false).name, "calc_avg");
    EXPECT_HALT(type_of_result(c, {1, 1}, false),
                "postproc_1: gels name = calc_avg has no more than 1 results\n  Halting...\n");
    EXPECT_HALT(type_of_result(c, {2, 0}, false), "postproc_1: gels name = calcac_pf? Halting...\n");
}

TEST(postproc_1, refuses_variables_with_a_word_of_small_signals) {
    EXPECT_EQ(stop_of(rows + output("a.dat", "mag_of_a")), "postproc_1: cct_ov_flag != IGL_POSTPROC? Halting...\n");
}

TEST(postproc_1, files_have_no_harmonics_and_nothing_else_beside_the_results) {
    EXPECT_EQ(stop_of(rows + output("a.dat", "a", "", "fourier=yes")),
              "solve_class: wrong data type for Fourier\n   variable. Check output blocks. Halting...\n");
    EXPECT_EQ(stop_of(rows + output("a.dat", "u a")),
              "solve_class: postproc variables cannot stand beside\n   others in an output file. Halting...\n");
}

// ---- small signals: files as write_ac leaves them

namespace {
const std::string ac_circuit =
    "refnode 0\neelement name=V1 type=vsrcac p=a n=0 a_ac=10\neelement name=A1 type=ammeter_fb p=a n=b y=i\n"
    "eelement name=R1 type=r p=b n=0 r=2\neelement name=M1 type=voltmeter_fb p=a n=0 y=v\n"
    "gelement name=P1 type=calcac_pf x1=v x2=i\ngelement name=P2 type=calc_avg x=v\n";
const std::string ac_outvars = "outvar: v=var_ac_of_v i=var_ac_of_i pf=pf_of_P1 p=p_of_P1 s=s_of_P1\n";

// The block of these outputs, read; its files are those of
// the folder.
struct ac_block {
    temp_folder folder;
    circuit c;
    solve_class slv;
    flags_class flags;

    explicit ac_block(const std::string& outputs, const std::string& frequency = "set_freq 50\n",
                      const std::string& circuit_block = ac_circuit + ac_outvars) {
        c = circuit_of("title: test\nbegin_circuit\n" + circuit_block + "end_circuit\nbegin_solve\nsolve_type ac\n" +
                           frequency + outputs + "end_solve\nend_cf\n",
                       installed_libraries());
        const console_run heard = run_and_listen([&] {
            elaborate(c);
            classify(c);
            check_linear(c);
            method_default(slv, c, flags);
            set_values(slv, 0, c, flags);
        });
        EXPECT_FALSE(heard.stopped) << heard.text;
    }
};
const std::string both = output("vi.dat", "mag_of_v phase_of_v mag_of_i phase_of_i");
}  // namespace

TEST(postproc_1_ac, writes_power_factor_power_and_apparent_power_of_peak_values) {
    ac_block b(both + output("pf.dat", "s pf p"));
    write_file("vi.dat", " 5.000000e+01  1.000000e+01  1.000000e+01  4.000000e+00 -5.000000e+01 \n");
    postproc_1_ac(b.slv, b.c, 1);
    EXPECT_EQ(read_file("pf.dat"), " 2.000000e+01  5.000000e-01  1.000000e+01 \n");
}

TEST(postproc_1_ac, takes_each_variable_from_a_file_with_its_magnitude_and_phase) {
    // The first file lacks the phase of v; the phase of i stands before its magnitude.
    ac_block b(output("a.dat", "mag_of_v phase_of_i mag_of_i") + output("b.dat", "phase_of_v mag_of_v") +
               output("pf.dat", "p"));
    write_file("a.dat", "50 99 30 3\n");
    write_file("b.dat", "50 -30 2\n");
    postproc_1_ac(b.slv, b.c, 2);
    EXPECT_EQ(read_file("pf.dat"), " 1.500000e+00 \n");  // 0.5 2 3 cos(60 deg)
}

TEST(postproc_1_ac, needs_magnitude_and_phase_of_both_in_files_that_are_no_nyquist_curves) {
    const auto stop_with = [](const std::string& outputs, int i_file) {
        ac_block b(outputs);
        return run_and_listen([&] { postproc_1_ac(b.slv, b.c, i_file); }).text;
    };
    const std::string end = " in any output file. Halting...\n";
    EXPECT_EQ(stop_with(output("pf.dat", "pf"), 0), "postproc_1_ac: could not find mag_of_v" + end);
    EXPECT_EQ(stop_with(output("a.dat", "mag_of_v phase_of_v") + output("pf.dat", "pf"), 1),
              "postproc_1_ac: could not find mag_of_i" + end);
    EXPECT_EQ(stop_with(output("a.dat", "mag_of_v phase_of_v mag_of_i") + output("pf.dat", "pf"), 1),
              "postproc_1_ac: could not find phase_of_i" + end);
    EXPECT_EQ(stop_with(output("a.dat", "mag_of_v") + output("b.dat", "phase_of_v") + output("pf.dat", "pf"), 2),
              "postproc_1_ac: could not find phase_of_v" + end);
    EXPECT_EQ(stop_with(output("a.dat", "phase_of_v mag_of_v", "", "nyquist=yes") + output("pf.dat", "pf"), 1),
              "postproc_1_ac: could not find mag_of_v" + end);
}

TEST(postproc_1_ac, needs_output_variables_of_both_in_small_signals) {
    ac_block b(output("a.dat", "mag_of_v phase_of_v") + output("pf.dat", "pf"), "set_freq 50\n",
               ac_circuit + "outvar: v=var_ac_of_v pf=pf_of_P1\n");
    EXPECT_HALT(postproc_1_ac(b.slv, b.c, 1),
                "postproc_1_ac: could not find var_ac_of_i in the outvar statement. Halting...\n");
}

TEST(postproc_1_ac, needs_one_frequency_and_one_row) {
    ac_block sweep(both + output("pf.dat", "pf"), "vary_freq from 1 to 10 type linear n_points 2\n");
    EXPECT_HALT(postproc_1_ac(sweep.slv, sweep.c, 1),
                "postproc_1_ac: postproc_ac is allowed for a single frequency only\nHalting...\n");
    ac_block b(both + output("pf.dat", "pf"));
    for (const char* text : {"50 1 0 1 0\n50 1 0 1 0\n", ""}) {
        write_file("vi.dat", text);
        EXPECT_HALT(postproc_1_ac(b.slv, b.c, 1), "postproc_1_ac: expect vi.dat to have a single row. Halting...\n");
    }
    ac_block more(both + output("pf.dat", "pf", "", "append=yes"));
    EXPECT_HALT(postproc_1_ac(more.slv, more.c, 1), "postproc_1_ac: append not allowed. Halting...\n");
}

TEST(postproc_1_ac, refuses_variables_with_a_phase_or_magnitude_word_and_composites_that_it_does_not_know) {
    ac_block b(both + output("pf.dat", "mag_of_pf"));
    EXPECT_HALT(postproc_1_ac(b.slv, b.c, 1), "postproc_1_ac: cct_ov_flag != IGL_POSTPROC_AC? Halting...\n");
    library_texts texts = installed_texts();
    texts.gmes.clear();  // they call installed blocks
    texts.gels = composite("mine", "postprocessor_ac=yes", "x1 x2", "pf=postproc_ac_of_pp");
    circuit c = circuit_of("title: t\nbegin_circuit\ngelement name=P type=mine x1=u x2=u\nend_circuit\nend_cf\n",
                           libraries_of(texts));
    bind_statements(c);
    EXPECT_HALT(type_of_result(c, {0, 0}, true), "postproc_1_ac: gels name = mine? Halting...\n");
}
