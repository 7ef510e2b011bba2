#include "tnl/run/row_count.h"

#include <gtest/gtest.h>

#include "temp_folder.h"

using namespace cli;

namespace {
row_count count_of(const std::string& text) {
    const temp_folder here;
    write_file("rows.dat", text);
    return count_rows("rows.dat");
}
double last_of(const std::string& text) {
    const temp_folder here;
    write_file("rows.dat", text);
    return last_time("rows.dat");
}
}  // namespace

TEST(row_count, blank_lines_part_curves_and_are_no_rows) {
    const row_count c = count_of(" 1 2 \n 2 3 \n\n \t\n 3 4 \n\n");
    EXPECT_EQ(c.rows, 3);
    EXPECT_EQ(c.curves, 2);
    EXPECT_EQ(c.columns, 2);
    EXPECT_EQ(c.last, 3);
}

TEST(row_count, a_row_that_was_cut_does_not_count) {
    const row_count c = count_of(" 1 2 \n 2 3 \n 3.0000");
    EXPECT_EQ(c.rows, 2);
    EXPECT_EQ(c.last, 2);
}

TEST(row_count, rows_across_the_blocks_that_are_read_count_once) {
    // 3 rows in some 200 kB each, so that line ends lie on both sides of every block.
    const std::string wide(200000, ' ');
    const row_count c = count_of("1" + wide + "5\n2" + wide + "6\n3" + wide + "7\n");
    EXPECT_EQ(c.rows, 3);
    EXPECT_EQ(c.columns, 2);
    EXPECT_EQ(c.curves, 1);
    EXPECT_EQ(c.last, 3);
}

TEST(row_count, a_file_that_is_not_there_or_empty_has_none) {
    EXPECT_EQ(count_rows("/nowhere/rows.dat").rows, 0);
    const row_count c = count_of("");
    EXPECT_EQ(c.rows, 0);
    EXPECT_EQ(c.curves, 0);
}

TEST(last_time, is_the_first_number_of_the_last_complete_row) {
    EXPECT_EQ(last_of(" 1.0e-3 2 \n 2.5e-3 3 \n 3.0e"), 2.5e-3);
    EXPECT_EQ(last_of(" 1.0e-3 2 \n"), 1e-3);
    EXPECT_EQ(last_of(repeated(" 1 2 \n", 10000) + " 7 8 \n"), 7);
}

TEST(last_time, of_a_file_without_a_row_is_below_0) {
    EXPECT_EQ(last_time("/nowhere/rows.dat"), -1);
    for (const char* text : {"", "1 2", "\n", "x\n"}) EXPECT_EQ(last_of(text), -1) << text;
}
