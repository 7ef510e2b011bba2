#include <gtest/gtest.h>

#include "tnl/deck/deck_view.h"
#include "tnl/results/rows.h"

using namespace cli;

TEST(format_rows, shows_first_and_last_of_many_and_says_how_many) {
    std::string text;
    for (int i = 0; i <= 100; ++i) text += std::to_string(i) + "\n";
    result_table table = read_result_table(text, "t");
    table.columns[0].name = "x";
    EXPECT_EQ(format_rows(table, 3), "             x\n  0.000000e+00\n  5.000000e+01\n  1.000000e+02\n3 of 101 rows\n");
}

TEST(format_rows, says_nothing_when_all_rows_are_shown) {
    EXPECT_EQ(format_rows(read_result_table("1 2\n\n3 4\n", "t"), 3),
              "            c1            c2\n  1.000000e+00  2.000000e+00\n\n  3.000000e+00  4.000000e+00\n");
}

TEST(format_rows, counts_over_all_curves) {
    const std::string text = format_rows(read_result_table("1\n2\n3\n\n4\n5\n6\n", "t"), 2);
    EXPECT_EQ(text.substr(text.rfind('\n', text.size() - 2) + 1), "4 of 6 rows\n");
}

TEST(format_rows, widens_a_column_for_a_long_name) {
    result_table table = read_result_table("1 2\n", "t");
    table.columns[1].name = "current_of_winding_3";
    EXPECT_EQ(format_rows(table, 3), "            c1 current_of_winding_3\n  1.000000e+00         2.000000e+00\n");
}

TEST(written_files, have_the_columns_of_their_block) {
    const deck_view deck =
        view_deck("d",
                  "title: t\nbegin_circuit\nend_circuit\n"
                  "begin_solve\nsolve_type dc\nbegin_output\nfilename a.dat\nvariables: v\n+ w\nend_output\n"
                  "begin_output\nfilename s.sol\nvariables: solution\nend_output\nend_solve\n"
                  "begin_solve\nbegin_output\nfilename b.dat limit_lines=5\nvariables: v\nend_output\n"
                  "solve_type trns\nend_solve\nend_cf\nbegin_solve\nfilename late.dat\nend_solve\n");
    const auto files = written_files(deck);
    ASSERT_EQ(files.size(), 3u);
    EXPECT_EQ(files[0].columns, (std::vector<std::string>{"v", "w"}));
    EXPECT_FALSE(files[1].rows);
    EXPECT_EQ(files[2].columns, (std::vector<std::string>{"time", "v"}));
}
