#include "output/postproc_columns.h"

#include <gtest/gtest.h>

#include "halt_throws.h"
#include "temp_folder.h"

namespace {
using list = std::vector<double>;

trns_columns columns_of(const std::string& text, double from, double to, const std::vector<int>& columns) {
    write_file("a.dat", text);
    return file_trns_get_col("a.dat", from, to, columns);
}
const std::string rows =
    " 0.000000e+00  1.000000e+00 -1.000000e+00 \n 1.000000e+00  2.000000e+00 -2.000000e+00 \n\n"
    " 2.000000e+00  3.000000e+00 -3.000000e-300 \n   \n 3.000000e+00  4.000000e+00 -4.000000e+00 \n";
}  // namespace

TEST(file_trns_get_col, reads_the_rows_of_the_span_with_both_ends_and_passes_over_empty_lines) {
    const temp_folder folder;
    const trns_columns got = columns_of(rows, 1, 2, {2, 1});
    EXPECT_EQ(got.t, (list{1, 2}));
    ASSERT_EQ(got.x.size(), 2u);
    EXPECT_EQ(got.x[0], (list{-2, -3e-300}));
    EXPECT_EQ(got.x[1], (list{2, 3}));
    EXPECT_EQ(file_count_lines_trns_1("a.dat", 1, 2), 2u);
    EXPECT_EQ(file_count_lines_trns_1("a.dat", -1, 9), 4u);
    EXPECT_EQ(file_count_lines_trns_1("a.dat", 1.5, 1.7), 0u);
    EXPECT_TRUE(columns_of(rows, 1.5, 1.7, {1}).t.empty());
}

TEST(file_trns_get_col, reads_rows_without_a_last_newline_and_with_carriage_returns) {
    const temp_folder folder;
    EXPECT_EQ(columns_of("0 5\r\n1 6\r\n2 7", 0, 9, {1}).x[0], (list{5, 6, 7}));
}

TEST(file_trns_get_col, stops_at_a_row_with_fewer_columns) {
    const temp_folder folder;
    EXPECT_HALT(columns_of(rows, 0, 9, {3}), "file_trns_get_col: file a.dat has < 4 columns. Halting...\n");
    EXPECT_EQ(columns_of("0 1\n1 2 3\n", 1, 9, {2}).x[0], (list{3}));  // the row that has fewer is not looked at
}

TEST(file_trns_get_col, stops_at_what_is_no_number_and_at_no_file) {
    const temp_folder folder;
    EXPECT_HALT(columns_of("0 1\n\n1 2x\n", 0, 9, {1}),
                "file_trns_get_col: file a.dat, line 3: 2x is no number. Halting...\n");
    EXPECT_HALT(columns_of("time v\n0 1\n", 0, 9, {1}),
                "file_count_lines_trns_1: file a.dat, line 1: time is no number. Halting...\n");
    EXPECT_HALT(file_trns_get_col("b.dat", 0, 9, {1}),
                "file_count_lines_trns_1: file b.dat does not exist. Halting...\n");
}

TEST(check_trns_1, allows_the_ends_one_of_the_largest_steps_and_a_hundredth) {
    const list t = {0, 0.1, 0.3, 0.4};
    check_trns_1(0, 0.4, t);
    check_trns_1(-0.2, 0.6, t);
    check_trns_1(-0.2015, 0.6015, t);
    EXPECT_HALT(check_trns_1(-0.203, 0.4, t), "check_trns_1: t[0] is too far from t_start.\n");
    EXPECT_HALT(check_trns_1(0, 0.603, t), "check_trns_1: t[n-1] is too far from t_end.\n");
}

TEST(check_trns_1, passes_one_row_and_stops_at_none_and_at_times_that_fall) {
    check_trns_1(0, 100, {50});
    EXPECT_HALT(check_trns_1(0, 1, {}), "check_trns_1: t[0] is too far from t_start.\n");
    EXPECT_HALT(check_trns_1(0, 1, {0, 0.5, 1, 0, 0.5, 1}),
                "check_trns_1: the time falls from 1 to 0.\n  Halting...\n");
}

TEST(file_ac_get_col, reads_the_first_row_and_tells_whether_it_is_the_only_one) {
    const temp_folder folder;
    write_file("a.dat", "\n 5.000000e+01  1.000000e+00  9.000000e+01 \n\n");
    ac_columns got = file_ac_get_col("a.dat", {2, 1});
    EXPECT_TRUE(got.single);
    EXPECT_EQ(got.x, (list{90, 1}));
    EXPECT_HALT(file_ac_get_col("a.dat", {3}), "file_ac_get_col: file a.dat has < 4 columns. Halting...\n");
    write_file("a.dat", "50 1\n60 2\n");
    EXPECT_FALSE(file_ac_get_col("a.dat", {1}).single);
    write_file("a.dat", "\n");
    got = file_ac_get_col("a.dat", {1});
    EXPECT_FALSE(got.single);
    EXPECT_TRUE(got.x.empty());
}
