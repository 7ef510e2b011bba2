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
    const auto guess = [](const std::string& words, const std::string& control = "") {
        const std::string deck =
            "title: t\nbegin_circuit\nend_circuit\nbegin_solve\nsolve_type trns\nmethod: t_start=1m\n" + words +
            "\nbegin_output\nfilename a.dat\n" + control + "variables: x\nend_output\nend_solve\nend_cf\n";
        return planned_files(view_deck("t.in", deck), libraries()).front().begins_with_guess;
    };
    EXPECT_TRUE(guess(""));
    EXPECT_TRUE(guess("initial_sol initialize"));
    EXPECT_FALSE(guess("initial_sol previous"));
    EXPECT_FALSE(guess("", "control: out_tstart=2m\n"));
    EXPECT_TRUE(guess("", "control: out_tstart=0\n"));
    EXPECT_FALSE(guess("", "control: out_tstart=a_constant\n"));
}

TEST(planned_files, all_outvars_stands_for_the_variables_of_the_deck_that_a_row_can_hold) {
    const deck_view deck = deck_of("solve_type dc\nbegin_output\nfilename a.dat\nvariables: all_outvars\nend_output\n");
    const std::vector<record_file> files = planned_files(deck, libraries());
    ASSERT_EQ(files.size(), 1u);
    std::string names;
    for (const record_column& c : files[0].columns) names += c.name + " ";
    EXPECT_EQ(names, "va i1 v1 pw ib vb pb mb y ");
}
