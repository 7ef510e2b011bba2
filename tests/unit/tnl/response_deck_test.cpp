#include "tnl/elements/response_deck.h"

#include <gtest/gtest.h>

#include <set>

#include "tnl/common/exit_status.h"

namespace {

using namespace cli;

// A block with the variables x and y and these lines about its response.
element_sheet sheet_with(std::vector<std::string> response) {
    element_sheet s;
    s.family = "g";
    s.statement = "gelement";
    s.name = "lag_1";
    s.description = {"A lag"};
    s.examples = {"gelement name=B1 type=lag_1 x=v y=v_f tau=1m"};
    s.terminals = {{"x", "variable", "", "V", ""}, {"y", "variable", "", "", ""}};
    s.response = std::move(response);
    return s;
}

bool has_line(const response_deck& deck, const std::string& line) {
    return ("\n" + deck.text).find("\n" + line + "\n") != std::string::npos;
}

TEST(response_deck, the_block_stands_as_in_its_example_behind_what_drives_it) {
    const response_deck deck = response_of(sheet_with({"t_end=6m", "step y=v t0=0.5m"}));
    EXPECT_TRUE(has_line(deck, "title: A lag"));
    EXPECT_TRUE(has_line(deck, "gelement name=S1 type=step y=v t0=0.5m"));
    EXPECT_TRUE(has_line(deck, "gelement name=B1 type=lag_1 x=v y=v_f tau=1m"));
    EXPECT_TRUE(has_line(deck, "outvar: v=var_of_v v_f=var_of_v_f"));
    EXPECT_TRUE(has_line(deck, "method: back_euler=yes t_end=6m delt_const=3e-06"));
    EXPECT_TRUE(has_line(deck, "variables: v v_f"));
    EXPECT_EQ(deck.x, 0);
    ASSERT_EQ(deck.columns.size(), 3U);
    EXPECT_EQ(deck.columns[1], (record_column{"v", "V"}));
}

TEST(response_deck, a_line_of_its_type_stands_in_place_of_the_example) {
    const response_deck deck = response_of(sheet_with({"t_end=1 delt=1m", "step y=u", "lag_1 x=u y=w tau=0.1"}));
    EXPECT_EQ(deck.text.find("B1"), std::string::npos);
    EXPECT_TRUE(has_line(deck, "variables: u w"));
    EXPECT_TRUE(has_line(deck, "method: back_euler=yes t_end=1 delt_const=1m"));
}

TEST(response_deck, curves_over_a_variable_chosen_ones_lanes_and_files) {
    const response_deck deck =
        response_of(sheet_with({"t_end=1 x=v show=v_f,v lanes=yes", "file points.txt 2 ; 1 5 ; 2 6", "step y=v"}));
    EXPECT_TRUE(has_line(deck, "variables: v_f v"));
    EXPECT_EQ(deck.x, 2);
    EXPECT_TRUE(deck.lanes);
    ASSERT_EQ(deck.files.size(), 1U);
    EXPECT_EQ(deck.files[0].name, "points.txt");
    EXPECT_EQ(deck.files[0].text, "2 \n1 5 \n2 6 \n");
}

TEST(response_deck, an_element_without_such_lines_has_none) { EXPECT_TRUE(response_of(sheet_with({})).text.empty()); }

TEST(response_deck, wrong_lines_are_told) {
    EXPECT_THROW(response_of(sheet_with({"x=v", "step y=v"})), usage_error);
    EXPECT_THROW(response_of(sheet_with({"t_end=0", "step y=v"})), usage_error);
    EXPECT_THROW(response_of(sheet_with({"t_end=1", "step"})), usage_error);
    EXPECT_THROW(response_of(sheet_with({"t_end=1 x=w", "step y=v"})), usage_error);
    element_sheet s = sheet_with({"t_end=1", "step y=v"});
    s.examples.clear();
    EXPECT_THROW(response_of(s), usage_error);
}

// What has no picture: measuring points, links to parameters and to the explicit side.
TEST(response_deck, every_installed_block_has_one) {
    const std::set<std::string> without = {"pp_in_1",   "pp_in_2", "set_rparm", "get_rparm", "calc_avg", "calc_avg_rms",
                                           "calcac_pf", "calc_pf", "calc_rms",  "calc_thd",  "xtog"};
    for (const element_sheet& s : all_sheets(read_installed(TARNEL_SHARE))) {
        if (s.family != "g") continue;
        EXPECT_EQ(response_of(s).text.empty(), without.contains(s.name)) << s.name;
    }
}

}  // namespace
