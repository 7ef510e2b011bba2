#include "tnl/elements/planned_files.h"

#include <gtest/gtest.h>

using namespace cli;

namespace {

installed_libraries libraries() {
    installed_libraries all;
    const auto add = [&](std::string_view form_file, const std::string& name, const std::string& text) {
        for (int i = 0; i < n_libraries; ++i)
            if (library_forms[i].file == form_file) {
                all.library[i].position[name] = static_cast<int>(all.library[i].entries.size());
                all.library[i].entries.push_back({name, text});
            }
    };
    add("eels.aux", "r",
        "ece name=r\n#: Resistor\n#. r ohm resistance\n#. tc1 1/K linear coefficient\n#. k_scale - factor\n"
        "#. i A current\noutvar: i=cur(p)_of_r v=v_o_of_r p=pwr_elec_of_r\nendece\n");
    add("eels.aux", "bare", "ece name=bare\noutvar: i=cur(p)_of_x v=v_o_of_x p=pwr_elec_of_x vm=nodev_of_m\nendece\n");
    add("gels.aux", "lag", "gce name=lag\n#. tau s time constant\nendgce\n");
    return all;
}

deck_view deck_of(const std::string& block) {
    return view_deck("deck.in",
                     "title: t\nbegin_circuit\nrefnode 0\neelement name=R1 type=r p=a n=0\n"
                     "eelement name=B1 type=bare p=a n=0\ngelement name=G1 type=lag x=x y=y\n"
                     "eelement name=U1 type=nowhere p=a n=0\n"
                     "outvar: va=nodev_of_a i1=i_of_R1 v1=v_of_R1 pw=pwr_elec_of_R1\n"
                     "outvar: ib=i_of_B1 vb=v_of_B1 pb=p_of_B1 mb=vm_of_B1 y=var_of_y vac=nodev_ac_of_a\n"
                     "end_circuit\nbegin_solve\n" +
                         block + "end_solve\nend_cf\n");
}

std::string unit(const std::string& word) { return unit_of_column(deck_of("solve_type dc\n"), libraries(), word); }

}  // namespace

TEST(units, columns_of_the_analysis_have_those_of_its_axis) {
    EXPECT_EQ(unit("time"), "s");
    EXPECT_EQ(unit("frequency"), "Hz");
    EXPECT_EQ(unit("harmonic"), "");
}

TEST(units, an_output_variable_has_that_of_what_it_stands_for) {
    EXPECT_EQ(unit("va"), "V");
    EXPECT_EQ(unit("vac"), "V");
    EXPECT_EQ(unit("pw"), "W");
    EXPECT_EQ(unit("i1"), "A");
    EXPECT_EQ(unit("y"), "");
}

TEST(units, a_swept_parameter_has_that_of_its_description) {
    EXPECT_EQ(unit("r_of_R1"), "ohm");
    EXPECT_EQ(unit("tc1_of_R1"), "1/K");
    EXPECT_EQ(unit("k_scale_of_R1"), "");
    EXPECT_EQ(unit("tau_of_G1"), "s");
}

TEST(units, without_a_description_the_definition_of_an_output_tells_where_it_can) {
    EXPECT_EQ(unit("ib"), "A");
    EXPECT_EQ(unit("pb"), "W");
    EXPECT_EQ(unit("mb"), "V");
    EXPECT_EQ(unit("vb"), "");
}

TEST(units, magnitude_and_phase_of_a_small_signal) {
    EXPECT_EQ(unit("mag_of_vac"), "V");
    EXPECT_EQ(unit("phase_of_vac"), "deg");
}

TEST(units, nothing_is_made_up_for_words_that_nothing_explains) {
    for (const char* word : {"nobody", "q_of_R1", "r_of_nobody", "r_of_U1", "_of_", "", "mag_of_mag_of_"})
        EXPECT_EQ(unit(word), "") << word;
}

TEST(planned_files, have_the_kind_of_their_block_and_columns_with_units) {
    const deck_view deck = deck_of(
        "solve_type trns\nbegin_output\nfilename a.dat\nvariables: va i1\nend_output\n"
        "begin_output\nfilename h.dat\nvariables: va\ncontrol: fourier=yes\nend_output\n"
        "begin_output\nfilename s.dat\nvariables: solution\nend_output\n");
    const std::vector<record_file> files = planned_files(deck, libraries());
    ASSERT_EQ(files.size(), 3u);
    EXPECT_EQ(files[0].path, "a.dat");
    EXPECT_EQ(files[0].kind, "trns");
    ASSERT_EQ(files[0].columns.size(), 3u);
    EXPECT_EQ(files[0].columns[0].name, "time");
    EXPECT_EQ(files[0].columns[0].unit, "s");
    EXPECT_EQ(files[0].columns[2].name, "i1");
    EXPECT_EQ(files[0].columns[2].unit, "A");
    EXPECT_EQ(files[2].kind, "solution");
    EXPECT_FALSE(files[2].is_table());
    EXPECT_TRUE(files[2].columns.empty());
}

// The first row of a run in time that starts from nothing is no solution.
TEST(planned_files, tell_which_begin_with_a_guess) {
    std::string elements;
    const auto guess = [&](const std::string& words, const std::string& control = "") {
        const std::string deck =
            "title: t\nbegin_circuit\n" + elements + "end_circuit\nbegin_solve\nsolve_type trns\nmethod: t_start=1m\n" +
            words + "\nbegin_output\nfilename a.dat\n" + control + "variables: x\nend_output\nend_solve\nend_cf\n";
        return planned_files(view_deck("t.in", deck), libraries()).front().begins_with_guess;
    };
    EXPECT_TRUE(guess(""));
    EXPECT_TRUE(guess("initial_sol initialize"));
    EXPECT_FALSE(guess("initial_sol previous"));
    EXPECT_FALSE(guess("", "control: out_tstart=2m\n"));
    EXPECT_TRUE(guess("", "control: out_tstart=0\n"));
    EXPECT_FALSE(guess("", "control: out_tstart=a_constant\n"));
    elements = "xelement name=C type=const y=x\n";  // its states are what they begin with
    EXPECT_FALSE(guess(""));
    elements += "eelement name=R type=r p=a n=0\n";
    EXPECT_TRUE(guess(""));
}

TEST(planned_files, all_outvars_stands_for_the_variables_of_the_deck_that_a_row_can_hold) {
    const deck_view deck = deck_of("solve_type dc\nbegin_output\nfilename a.dat\nvariables: all_outvars\nend_output\n");
    const std::vector<record_file> files = planned_files(deck, libraries());
    ASSERT_EQ(files.size(), 1u);
    std::string names;
    for (const record_column& c : files[0].columns) names += c.name + " ";
    EXPECT_EQ(names, "va i1 v1 pw ib vb pb mb y ");
}

namespace {

std::string columns_text(const record_file& file) {
    std::string text = file.kind + ":";
    for (const record_column& c : file.columns) text += " " + c.name + (c.unit.empty() ? "" : "[" + c.unit + "]");
    return text;
}

record_file ac_file(const std::string& options, const std::string& variables, const std::string& sweep = "") {
    const deck_view deck = deck_of("solve_type ac\nset_freq 1k\n" + sweep + "begin_output\nfilename a.dat " + options +
                                   "\nvariables: " + variables + "\nend_output\n");
    return planned_files(deck, libraries()).front();
}

}  // namespace

TEST(planned_files, of_small_signals_have_frequency_magnitude_and_phase_with_units) {
    EXPECT_EQ(columns_text(ac_file("", "mag_of_vac phase_of_vac")),
              "ac: frequency[Hz] mag_of_vac[V] phase_of_vac[deg]");
    EXPECT_EQ(columns_text(ac_file("limit_lines=20 output_hz=no", "mag_of_ib pw")),
              "ac: frequency[rad/s] mag_of_ib[A] pw[W]");
}

TEST(planned_files, for_a_nyquist_plot_have_real_and_imaginary_part) {
    EXPECT_EQ(columns_text(ac_file("nyquist=yes", "phase_of_vac mag_of_vac")),
              "nyquist: frequency[Hz] real_of_vac[V] imag_of_vac[V]");
    EXPECT_EQ(columns_text(ac_file("nyquist=no", "phase_of_vac mag_of_vac")),
              "ac: frequency[Hz] phase_of_vac[deg] mag_of_vac[V]");
}

TEST(planned_files, of_swept_small_signals_tell_the_values_of_each_curve) {
    const record_file grid = ac_file("", "mag_of_vac",
                                     "vary_parm r_of_R1 type table 1k 2k\nvary_parm tau_of_G1 from 1 to 100 type log "
                                     "n_points 3\n");
    ASSERT_EQ(grid.sweeps.size(), 2u);
    EXPECT_EQ(grid.sweeps[0].name, "r_of_R1");
    EXPECT_EQ(grid.sweeps[0].unit, "ohm");
    EXPECT_EQ(grid.sweeps[0].values, (std::vector<double>{1e3, 1e3, 1e3, 2e3, 2e3, 2e3}));
    EXPECT_EQ(grid.sweeps[1].unit, "s");
    ASSERT_EQ(grid.sweeps[1].values.size(), 6u);
    EXPECT_DOUBLE_EQ(grid.sweeps[1].values[1], 10);
    EXPECT_DOUBLE_EQ(grid.sweeps[1].values[5], 100);

    const record_file sync = ac_file("", "mag_of_vac",
                                     "vary_parm_sync r_of_R1 type table 1 2\nvary_parm_sync tau_of_G1 type table 3 4\n"
                                     "vary_parm k_scale_of_R1 from 0 to 1 type linear div 0.5\n");
    ASSERT_EQ(sync.sweeps.size(), 3u);
    EXPECT_EQ(sync.sweeps[0].values, (std::vector<double>{1, 1, 1, 2, 2, 2}));
    EXPECT_EQ(sync.sweeps[1].values, (std::vector<double>{3, 3, 3, 4, 4, 4}));
    EXPECT_EQ(sync.sweeps[2].values, (std::vector<double>{0, 0.5, 1, 0, 0.5, 1}));

    EXPECT_TRUE(ac_file("", "mag_of_vac", "vary_parm r_of_R1 type table 1k nobody\n").sweeps.empty());
    EXPECT_TRUE(ac_file("", "mag_of_vac", "vary_parm r_of_R1 from 0 to 1 type log n_points 3\n").sweeps.empty());
    EXPECT_TRUE(ac_file("", "mag_of_vac").sweeps.empty());
}

TEST(planned_files, of_a_swept_dc_block_tell_what_each_curve_was_made_with_and_what_steps_along_it) {
    const auto file = [](const std::string& sweeps, const std::string& options = "") {
        return planned_files(deck_of("solve_type dc\n" + sweeps + "begin_output\nfilename a.dat " + options +
                                     "\nvariables: va\nend_output\n"),
                             libraries())
            .front();
    };
    const std::string outer = "vary_parm r_of_R1 type table 1k 2k\n", inner = "vary_parm tau_of_G1 type table 3 4 5\n";
    const record_file family = file(outer + inner);
    ASSERT_EQ(family.sweeps.size(), 1u);
    EXPECT_EQ(family.sweeps[0].name, "r_of_R1");
    EXPECT_EQ(family.sweeps[0].unit, "ohm");
    EXPECT_EQ(family.sweeps[0].values, (std::vector<double>{1e3, 2e3})) << "a value for each curve";
    EXPECT_EQ(family.steps.name, "tau_of_G1");
    EXPECT_EQ(family.steps.unit, "s");
    EXPECT_EQ(family.steps.values, (std::vector<double>{3, 4, 5})) << "a value for each row of a curve";

    const record_file three = file("vary_parm_sync tc1_of_R1 type table 6 7\n" + outer + inner);
    ASSERT_EQ(three.sweeps.size(), 2u);
    EXPECT_EQ(three.sweeps[0].values, (std::vector<double>{6, 6, 7, 7}));
    EXPECT_EQ(three.sweeps[1].values, (std::vector<double>{1e3, 2e3, 1e3, 2e3}));

    const record_file one = file(inner);
    EXPECT_TRUE(one.sweeps.empty());
    EXPECT_EQ(one.steps.name, "tau_of_G1");

    // Points beyond all counts are curves that are few.
    const record_file fine = file(outer + "vary_parm tau_of_G1 from 0 to 1 type linear n_points 2001\n");
    ASSERT_EQ(fine.sweeps.size(), 1u);
    EXPECT_TRUE(fine.steps.values.empty());

    EXPECT_TRUE(file("vary_parm r_of_R1 type table 1k nobody\n" + inner).sweeps.empty()) << "a word that tells nothing";
    EXPECT_TRUE(file(outer + inner, "append=yes").sweeps.empty()) << "rows of another block stand before";
    EXPECT_TRUE(file("").steps.name.empty());
}
