#include "tnl/elements/element_sheet.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "installed_share.h"
#include "tnl/elements/element_pages.h"

namespace {

using namespace cli;

const library_entry valve = {
    "valve",
    "ece name=valve allow_ac=yes\n#@ water\n#: Valve | of a pipe\n#: q = k sqrt(dp) * open\n"
    "#> eelement name=X1 type=valve p=a n=b g=open k=3\n"
    "#. p - inlet\n#. n - outlet\n#. g - opening\n#. k m3/s flow at 1 bar\n#. q0 m3/s first flow\n"
    "#. q m3/s flow\n#. p bar pressure\n"
    "begin_dc\nmainnodes: p n\nauxnodes: inner\noutvar: q=cur(p)_of_v p=q_o_of_v g=var_of_g\n"
    "stparms: q0=1\nmain_var: g\nrparms: k=2\n+ \nend_dc\nendece\n"};
int eels() { return find_library(&library_form::begin, "ece"); }

std::vector<std::string> faults_without(std::string_view line) {
    library_entry entry = valve;
    const std::size_t at = entry.text.find(line);
    EXPECT_NE(at, std::string::npos) << line;
    entry.text.erase(at, line.size());
    return doc_faults(entry, eels());
}

TEST(element_sheet, has_the_words_of_the_entry_with_defaults_and_what_the_comments_say) {
    const element_sheet s = sheet_of(valve, eels());
    EXPECT_EQ(s.family, "e");
    EXPECT_EQ(s.statement, "eelement");
    EXPECT_EQ(s.group, "water");
    EXPECT_TRUE(s.small_signal);
    ASSERT_EQ(s.terminals.size(), 3U);
    EXPECT_EQ(s.terminals[2].word, "g");
    EXPECT_EQ(s.terminals[2].kind, "variable");
    ASSERT_EQ(s.parameters.size(), 1U);
    EXPECT_EQ(s.parameters[0].value, "2");
    EXPECT_EQ(s.parameters[0].unit, "m3/s");
    EXPECT_EQ(s.parameters[0].text, "flow at 1 bar");
    ASSERT_EQ(s.start_values.size(), 1U);
    EXPECT_EQ(s.start_values[0].value, "1");
}

TEST(element_sheet, of_a_terminal_and_an_output_of_one_name_each_has_its_own_line) {
    const element_sheet s = sheet_of(valve, eels());
    EXPECT_EQ(s.terminals[0].text, "inlet");
    ASSERT_EQ(s.outputs.size(), 3U);
    EXPECT_EQ(s.outputs[1].word, "p");
    EXPECT_EQ(s.outputs[1].text, "pressure");
    EXPECT_EQ(s.outputs[2].text, "opening");  // g=var_of_g says nothing new
}

TEST(element_sheet, faults_of_comments_are_words_without_a_line_lines_without_a_word_and_wrong_examples) {
    using lines = std::vector<std::string>;
    EXPECT_EQ(doc_faults(valve, eels()), lines{});
    EXPECT_EQ(faults_without("#. q0 m3/s first flow\n"), lines{"no line for q0 at its place"});
    EXPECT_EQ(faults_without(" pressure"), lines{"no text for p"});
    EXPECT_EQ(faults_without(" k=2"),
              (lines{"a line too much, or out of order: k",
                     "example with unknown word k: eelement name=X1 type=valve p=a n=b g=open k=3"}));
    EXPECT_EQ(faults_without(" n=b"), lines{"example without terminal n: eelement name=X1 type=valve p=a g=open k=3"});
    EXPECT_EQ(faults_without("#: Valve | of a pipe\n#: q = k sqrt(dp) * open\n"), lines{"no description"});
}

TEST(element_sheet, is_found_by_name_and_family) {
    std::vector<element_sheet> sheets{sheet_of(valve, eels()), sheet_of(valve, eels())};
    sheets[1].family = "g";
    EXPECT_EQ(find_sheets(sheets, "valve").size(), 2U);
    ASSERT_EQ(find_sheets(sheets, "g:valve").size(), 1U);
    EXPECT_EQ(find_sheets(sheets, "g:valve")[0], &sheets[1]);
    EXPECT_TRUE(find_sheets(sheets, "valv").empty());
}

TEST(element_pages, markdown_marks_are_written_so_that_they_show_as_themselves) {
    const std::string page = sheet_markdown(sheet_of(valve, eels()));
    EXPECT_NE(page.find("\nValve \\| of a pipe\n"), std::string::npos);
    EXPECT_NE(page.find("\n- q = k sqrt(dp) \\* open\n"), std::string::npos);
    EXPECT_NE(page.find("\n    eelement name=NAME type=valve p=.. n=.. g=.. [k=2 q0=1]\n"), std::string::npos);
}

TEST(element_pages, json_holds_the_words_of_every_part) {
    const element_sheet s = sheet_of(valve, eels());
    const auto list = nlohmann::json::parse(sheet_json({&s}));
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0]["terminals"][2]["kind"], "variable");
    EXPECT_EQ(list[0]["parameters"][0]["default"], "2");
    EXPECT_EQ(list[0]["outputs"][0]["unit"], "m3/s");
}

// The installed libraries: every word that a deck can write is described, once, and nothing else is.
TEST(installed_elements, are_described_word_by_word) {
    const installed_libraries libraries = read_installed(installed_share());
    int n = 0;
    for (int i = 0; i < n_libraries; ++i) {
        if (library_forms[i].statement.empty()) continue;
        for (const library_entry& entry : libraries.library[i].entries) {
            ++n;
            EXPECT_EQ(doc_faults(entry, i), std::vector<std::string>{}) << library_forms[i].begin << " " << entry.name;
            EXPECT_NE(sheet_of(entry, i).group, "") << entry.name;
        }
    }
    EXPECT_GE(n, 74);
}

TEST(element_sheet, joins_the_lines_of_a_sentence_on_its_page) {
    element_sheet s;
    s.name = "pi";
    s.family = "g";
    s.description = {"PI controller",
                     "u = kp x + z",
                     "dz/dt = ki x",
                     "Back-calculation holds the integral z",
                     "where u stays near the limit.",
                     "k_aw = 0: none,",
                     "as Astrom and",
                     "Hagglund say."};
    EXPECT_NE(sheet_markdown(s).find("- u = kp x + z\n- dz/dt = ki x\n- Back-calculation holds the integral z where u "
                                     "stays near the limit.\n- k_aw = 0: none, as Astrom and\n- Hagglund say.\n- "),
              std::string::npos)
        << sheet_markdown(s);
}

}  // namespace
