#include "tnl/results/result_table.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tnl/common/exit_status.h"

namespace {

using namespace cli;

TEST(result_table, blank_lines_part_the_curves) {
    const result_table t = read_result_table("1 2\n 3  4 \n\n\n5 6\n", "f");
    ASSERT_EQ(t.n_rows(), 3u);
    ASSERT_EQ(t.n_curves(), 2u);
    EXPECT_EQ(t.first_row[1], 2u);
    EXPECT_EQ(t.at(2, 1), 6);
    EXPECT_EQ(t.columns[1].name, "c2");
}

TEST(result_table, a_last_line_without_its_end_is_dropped) {
    const result_table t = read_result_table("1 2\n3 4\n5 6.1", "f");
    EXPECT_EQ(t.n_rows(), 2u);
    EXPECT_EQ(t.n_curves(), 1u);
}

TEST(result_table, signs_exponents_and_numbers_out_of_range_are_read) {
    const result_table t = read_result_table("+1.5e+00 -2E-3\nnan -inf\n1e999 1e-999\n", "f");
    EXPECT_EQ(t.at(0, 0), 1.5);
    EXPECT_EQ(t.at(0, 1), -0.002);
    EXPECT_TRUE(std::isnan(t.at(1, 0)));
    EXPECT_EQ(t.at(1, 1), -HUGE_VAL);
    EXPECT_EQ(t.at(2, 0), HUGE_VAL);
    EXPECT_EQ(t.at(2, 1), 0);
}

TEST(result_table, an_empty_text_has_no_rows) {
    for (const char* text : {"", "\n\n", "1 2"}) {
        const result_table t = read_result_table(text, "f");
        EXPECT_EQ(t.n_rows(), 0u);
        EXPECT_EQ(t.n_curves(), 0u);
    }
}

TEST(result_table, a_fault_is_told_with_its_line) {
    const auto fault = [](const char* text) {
        try {
            read_result_table(text, "f.dat");
        } catch (const file_error& e) {
            return std::string(e.what());
        }
        return std::string();
    };
    EXPECT_EQ(fault("1 2\n1 x\n"), "f.dat:2: not a row of numbers");
    EXPECT_EQ(fault("1 2\n\n1 2 3\n"), "f.dat:3: a row of 3 numbers among rows of 2");
}

TEST(result_table, columns_are_found_by_name_and_by_number) {
    result_table t = read_result_table("1 2 3\n", "f");
    t.columns = {{"time", "s"}, {"vout", "V"}, {"i1", "A"}};
    EXPECT_EQ(find_column(t, "vout"), 1);
    EXPECT_EQ(find_column(t, "3"), 2);
    EXPECT_EQ(find_column(t, "4"), -1);
    EXPECT_EQ(find_column(t, "0"), -1);
    EXPECT_EQ(find_column(t, "2x"), -1);
}

// A sweep around all frequencies writes its curves without a line between them.
TEST(result_table, rows_part_where_the_first_column_begins_anew) {
    const auto parts = [](const std::string& text, open_curve open = {}) {
        result_table t = read_result_table(text, "f");
        const bool at_first = split_at_restarts(t, open);
        std::string all = at_first ? "anew" : "";
        for (const std::size_t row : t.first_row) all += " " + std::to_string(row);
        return all;
    };
    EXPECT_EQ(parts("1 0\n10 0\n100 0\n1 0\n10 0\n100 0\n"), " 0 3 6");
    EXPECT_EQ(parts("9 0\n1 0\n9 0\n1 0\n\n9 0\n1 0\n9 0\n"), " 0 2 4 6 7");
    EXPECT_EQ(parts("5 0\n5 1\n5 2\n\n5 3\n"), " 0 3 4");  // one frequency
    EXPECT_EQ(parts("5 0\n"), " 0 1");
    EXPECT_EQ(parts(""), " 0");
    EXPECT_EQ(parts("1 0\n2 0\n", {1, true}), "anew 0 2");
    EXPECT_EQ(parts("1 0\n2 0\n1 0\n", {1, false}), " 0 2 3");
    EXPECT_EQ(parts("3 0\n1 0\n2 0\n", {1, false}), " 0 1 3");
}

}  // namespace
