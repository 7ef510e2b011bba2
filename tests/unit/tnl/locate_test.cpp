#include "tnl/check/explain_stop.h"

#include <gtest/gtest.h>

#include <ostream>

#include "tnl/check/check_deck.h"

using namespace cli;

namespace {

constexpr const char* text =
    "title: t R1\n"                                   // 1
    "# a comment\n"                                   // 2
    "greal a=1k\n"                                    // 3
    "begin_circuit\n"                                 // 4
    "refnode 0\n"                                     // 5
    "eelement name=V1 type=vsrcdc p=in n=0 vdc=1x\n"  // 6
    "eelement name=R1 type=rr p=in\n"                 // 7
    "+ n=out r=1k\n"                                  // 8
    "eelement name=R2 type=r p=out n=0 wrong=2\n"     // 9
    "eelement name=R2 type=r p=out n=0\n"             // 10
    "outvar: v=v_of_R1 w=q_of_R2\n"                   // 11
    "outvar: u=v_of_R9 n=nodev_of_q\n"                // 12
    "mystery 1\n"                                     // 13
    "end_circuit\n"                                   // 14
    "begin_solve\n"                                   // 15
    "solve_type dc\n"                                 // 16
    "method: norm_2=1e-9 t_end=1\n"                   // 17
    "end_solve\n"                                     // 18
    "begin_solve\n"                                   // 19
    "vary_parm r_of_R2 from\n"                        // 20
    "mystery 2\n"                                     // 21
    "begin_output\n"                                  // 22
    "filename f.dat\n"                                // 23
    "variables: v nobody\n"                           // 24
    "end_output\n"                                    // 25
    "end_solve\n"                                     // 26
    "end_cf\n";

struct stop_row {
    const char* name;        // of the case
    const char* said;        // the last lines of the simulator
    std::vector<int> lines;  // of the deck
};

void PrintTo(const stop_row& s, std::ostream* out) { *out << s.name; }

const stop_row stops[] = {
    {"whole_line",
     "set_values_1 (eelu): string <q> not found.\n   Check this line:\neelement name=R2 type=r p=out n=0\n",
     {10}},
    {"element_name",
     "cct_class: (eelement) node name not found.\n   node name is w\n   eelement name is V1\n   Halting...\n",
     {6}},
    {"value", "check double string: <1x>\n  (brackets are not part of the string)\n  Halting...\n", {6}},
    {"unticked", "eelu:set_values_1: some word has not been ticked.\n   word: wrong\n", {9}},
    {"circuit_leftover", "ccmain: illegal statement in circuit section?\n  Check line starting with: mystery\n", {13}},
    {"solve_leftover",
     "main: illegal statement in a solve section?\n  Check solve section number 1\n"
     "  Check line starting with: mystery\n  Halting...\n",
     {21}},
    {"method_word",
     "solve_class: An unknown keyword is found\n  in the method card.\n  The word is: t_end\n  Halting...\n",
     {17}},
    {"output_word", "solve_class: _of_ not found.\n   Check this outvar: nobody\n   Halting...\n", {24}},
    {"repeated",
     "check_word_repeat_1: \n   The string <R2> is repeated.\n   i = 2  j = 3\n   Message from the calling routine:\n",
     {9, 10}},
    {"unknown_quantity", "eelu_class: outvar not found\n   name is q\n   Halting...\n", {11}},
    {"unknown_instance", "cct_class: cct_ov_flag = IGL_CLEAR\n", {12}},
    {"reference", "cct_class: reference node not found.\n", {5}},
    {"unknown_node", "cct_class: ect node name not found.\n   Check outvars of type nodev_of_xxx.\n", {12}},
    {"title", "circuit_file: title: not found. Halting...\n", {1}},
    {"kind_of_statement", "solve_class: <to> not found in\n   vary_parm statement. Halting..\n", {20}},
    {"nothing_named", "circuit_file: end_cf not found. Halting...\n", {}},
    {"another_word", "check double string: <elsewhere>\n", {}},
    {"no_text", "", {}},
};

std::vector<int> lines_found(const char* said, const deck_view& deck) {
    std::vector<int> lines;
    for (const int i : find_statements(said, deck, {})) lines.push_back(deck.statements.where(i, 0).line + 1);
    return lines;
}

}  // namespace

class stop_texts : public testing::TestWithParam<stop_row> {};
TEST_P(stop_texts, lead_to_the_statement) {
    EXPECT_EQ(lines_found(GetParam().said, view_deck("deck.in", text)), GetParam().lines);
}
INSTANTIATE_TEST_SUITE_P(find_statements, stop_texts, testing::ValuesIn(stops),
                         [](const auto& of) { return std::string(of.param.name); });

TEST(find_statements, typeless_and_nameless_elements_are_found_without_a_word_in_the_text) {
    const deck_view deck = view_deck("d",
                                     "title: t\nbegin_circuit\neelement name=A p=1\neelement type=r p=1\n"
                                     "eelement type=ground_dummy c=1\nend_circuit\nend_cf\n");
    EXPECT_EQ(lines_found("cct_class: type not found. Halting..\n", deck), (std::vector<int>{3}));
    EXPECT_EQ(lines_found("eelu_class: name not found. Halting..\n", deck), (std::vector<int>{4}));
}

TEST(find_statements, the_block_that_sets_or_reads_a_parameter_is_found_by_its_target) {
    const deck_view deck = view_deck("deck.in",
                                     "title: t\nbegin_circuit\neelement name=R1 type=r p=a n=0\n"
                                     "gelement name=S type=set_rparm x=x element=R9 parm=r\n"
                                     "gelement name=G type=get_rparm y=y element=R1 parm=q\nend_circuit\nend_cf\n");
    EXPECT_EQ(lines_found("cct_class::set_rparm_1: element not identified in\n   one of the set_rparm type gbe.\n"
                          "   element name is: R9\n   Halting...\n",
                          deck),
              (std::vector<int>{4}));
    EXPECT_EQ(lines_found("cct_class::get_rparm_1: parameter not identified in\n   one of the get_rparm type gbe.\n"
                          "   parameter name is: q\n",
                          deck),
              (std::vector<int>{5}));
}

TEST(find_statements, only_the_last_lines_of_a_long_text_count) {
    std::string said = "check double string: <1x>\n";
    for (int i = 0; i < 100; ++i) said += "gmin_step_dc_1: iter_gmin=1\n";
    EXPECT_TRUE(find_statements(said, view_deck("d", text), {}).empty());
}

namespace {

const installed_libraries& installed() {
    static const installed_libraries all = read_installed(TARNEL_SHARE);
    return all;
}

std::string explained(const std::string& said, const std::string& deck_text) {
    const deck_view deck = view_deck("my.in", deck_text);
    return explain_stop(said, check_deck(deck, installed()), needs_of(deck, installed()));
}

std::string good_deck(const std::string& elements, const std::string& block) {
    return "title: t\nbegin_circuit\nrefnode 0\neelement name=V1 type=vsrcdc p=a n=0 vdc=1\n" + elements +
           "outvar: v=nodev_of_a\nend_circuit\nbegin_solve\nsolve_type dc\n" + block +
           "begin_output\nfilename f.dat\nvariables: v\nend_output\nend_solve\nend_cf\n";
}

}  // namespace

TEST(explain_stop, shows_place_caret_and_near_names_of_an_unknown_type) {
    EXPECT_EQ(explained("cct_class: eels_name not found\n", good_deck("eelement name=R1 type=rr p=a n=0\n", "")),
              "  my.in:5:23: error: no element type rr is installed for eelement; near names: r\n"
              "    eelement name=R1 type=rr p=a n=0\n"
              "                          ^\n"
              "    advice: tnl list shows the types that are installed\n");
}

TEST(explain_stop, shows_the_word_that_the_text_names_where_the_check_finds_nothing) {
    EXPECT_EQ(explained("r.ebe: r too small!\nr.ebe: r=5\nr.ebe: k_scale=1\n",
                        good_deck("eelement name=R1 type=r p=a n=0 r=4\neelement name=R2 type=r p=a n=0 r=5\n", "")),
              "  my.in:6:35:\n"
              "    eelement name=R2 type=r p=a n=0 r=5\n"
              "                                      ^\n"
              "  meaning: A parameter of an element has a value that its model does not allow.\n"
              "  advice: tnl describe TYPE; look at scale letters: m is 1e-3, M is 1e6\n");
}

TEST(explain_stop, names_the_block_that_wrote_the_value_and_how_to_begin) {
    const std::string writer =
        "eelement name=R1 type=r p=a n=0 r=5\ngelement name=K type=const y=x k=1\n"
        "gelement name=S type=set_rparm x=x element=R1 parm=r\n";
    const std::string said = "r.ebe: r too small!\nr.ebe: r=0\nr.ebe: k_scale=1\n";
    const std::string shown = explained(said, good_deck(writer, ""));
    EXPECT_NE(shown.find("  meaning: A block set_rparm wrote a value"), std::string::npos) << shown;
    EXPECT_NE(shown.find("initial_sol previous"), std::string::npos) << shown;
    const std::string of_another = explained(said, good_deck(writer + "eelement name=R2 type=r p=a n=0 r=5\n", ""));
    EXPECT_NE(of_another.find("set_rparm"), std::string::npos) << of_another;
    EXPECT_EQ(explained(said, good_deck("eelement name=R1 type=r p=a n=0 r=5\n", "")).find("set_rparm"),
              std::string::npos);
}

TEST(explain_stop, shows_what_a_check_finds_where_the_text_names_nothing) {
    const std::string shown = explained("gauss_2: zero pivot in the last row!\n  (even after reordering)\n",
                                        good_deck("eelement name=V2 type=vsrcdc p=a n=0 vdc=2\n", ""));
    EXPECT_TRUE(shown.starts_with("  my.in:5:1: error: a loop of ideal voltage sources: V1, V2\n")) << shown;
}

TEST(explain_stop, lists_candidates_and_leaves_out_too_many) {
    const std::string two = "eelement name=R1 type=r p=a n=0\neelement name=R2 type=r p=a n=0\n";
    EXPECT_TRUE(
        explained("r: odd\n", good_deck(two, ""))
            .starts_with("  one of these statements:\n  my.in:5:1:\n    eelement name=R1 type=r p=a n=0\n    ^\n"
                         "  my.in:6:1:\n"));
    EXPECT_EQ(explained("r: odd\n", good_deck(two + "eelement name=R3 type=r p=a n=0\neelement name=R4 type=r p=a n=0\n"
                                                    "eelement name=R5 type=r p=a n=0\n",
                                              "")),
              "");
}

TEST(explain_stop, finds_the_output_block_whose_file_is_full) {
    const std::string shown = explained(
        "write_dc: limit_lines is exceeded.\n  index_solve = 0, i_file = 0\n  Halting...\n", good_deck("", ""));
    EXPECT_TRUE(shown.starts_with("  my.in:10:1:\n    filename f.dat\n    ^\n")) << shown;
    EXPECT_NE(shown.find("advice: filename NAME limit_lines=N"), std::string::npos);
}

TEST(places_of_stop, have_the_column_of_the_word) {
    const deck_view deck = view_deck("my.in", good_deck("eelement name=R1 type=r p=a n=0 r=1kk\n", ""));
    const std::vector<record_place> places =
        places_of_stop("check double string: <1kk>\n", check_deck(deck, installed()), {});
    ASSERT_EQ(places.size(), 1u);
    EXPECT_EQ(places[0].line, 5);
    EXPECT_EQ(places[0].column, 35);
    EXPECT_EQ(places[0].text, "eelement name=R1 type=r p=a n=0 r=1kk");
}

TEST(place_with_caret, shortens_what_does_not_fit_a_line_and_shows_no_control_characters) {
    const deck_view deck = view_deck("d", "title: " + std::string(300, 'x') + "\nab\x1b[31m c\n");
    EXPECT_EQ(place_with_caret(deck, 0), "d:1:1:\n  title: " + std::string(93, 'x') + " ...\n  ^");
    EXPECT_EQ(place_with_caret(deck, 1), "d:2:1:\n  ab?[31m c\n  ^");
}
