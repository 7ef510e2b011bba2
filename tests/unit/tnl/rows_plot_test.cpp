#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "tnl/deck_view.h"
#include "tnl/plot.h"
#include "tnl/rows.h"

using namespace cli;

TEST(read_rows, blank_lines_part_curves) {
    const auto curves = read_rows(" 1.0e+00  2.0e+00 \n 3.0e+00  4.0e+00 \n\n 5.0e+00  6.0e+00 \n");
    ASSERT_EQ(curves.size(), 2u);
    EXPECT_EQ(curves[0], (curve{{1, 2}, {3, 4}}));
    EXPECT_EQ(curves[1], (curve{{5, 6}}));
    EXPECT_TRUE(read_rows("").empty());
    EXPECT_TRUE(read_rows("\n\n").empty());
}

TEST(format_rows, shows_first_and_last_of_many) {
    curve many;
    for (int i = 0; i <= 100; ++i) many.push_back({static_cast<double>(i)});
    EXPECT_EQ(format_rows({"x"}, {many}, 3), "             x\n  0.000000e+00\n  5.000000e+01\n  1.000000e+02\n");
}

TEST(format_rows, numbers_columns_whose_names_do_not_fit) {
    EXPECT_EQ(format_rows({"all_nodes"}, {{{1, 2}}}, 3),
              "            c1            c2\n  1.000000e+00  2.000000e+00\n");
}

TEST(row_files, have_the_columns_of_their_block) {
    const deck_view deck =
        view_deck("d",
                  "title: t\nbegin_circuit\nend_circuit\n"
                  "begin_solve\nsolve_type dc\nbegin_output\nfilename a.dat\nvariables: v\n+ w\nend_output\n"
                  "begin_output\nfilename s.sol\nvariables: solution\nend_output\nend_solve\n"
                  "begin_solve\nbegin_output\nfilename b.dat limit_lines=5\nvariables: v\nend_output\n"
                  "solve_type trns\nend_solve\nend_cf\nbegin_solve\nfilename late.dat\nend_solve\n");
    const auto files = row_files(deck);
    ASSERT_EQ(files.size(), 3u);
    EXPECT_EQ(files[0].columns, (std::vector<std::string>{"v", "w"}));
    EXPECT_FALSE(files[1].rows);
    EXPECT_EQ(files[2].columns, (std::vector<std::string>{"time", "v"}));
}

TEST(make_axis, has_round_ticks_inside_the_limits) {
    const axis a = make_axis(-5, 5, 5);
    EXPECT_EQ(a.ticks, (std::vector<double>{-4, -2, 0, 2, 4}));
    const axis b = make_axis(0.001, 0.0099, 4);
    ASSERT_EQ(b.ticks.size(), 4u);
    for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(b.ticks[i], 0.002 * (double(i) + 1), 1e-15);
}

TEST(make_axis, holds_one_value_no_value_and_endless_ones) {
    for (const auto& [lo, hi] : {std::pair{0.0, 0.0},
                                 {5.0, 5.0},
                                 {-1e-300, 1e-300},
                                 {1e300, 1e300},
                                 {double(INFINITY), -double(INFINITY)},
                                 {double(NAN), 1.0}}) {
        const axis a = make_axis(lo, hi, 5);
        EXPECT_LT(a.lo, a.hi);
        EXPECT_FALSE(a.ticks.empty());
        EXPECT_LT(a.ticks.size(), 20u);
    }
}

TEST(tick_text, is_as_precise_as_the_step) {
    EXPECT_EQ(tick_text(0.2, 0.2), "0.2");
    EXPECT_EQ(tick_text(-0.0, 0.2), "0.0");
    EXPECT_EQ(tick_text(2, 2), "2");
    EXPECT_EQ(tick_text(1e-15, 0.05), "0.00");
    EXPECT_EQ(tick_text(2e-9, 1e-9), "2e-09");
    EXPECT_EQ(tick_text(2e6, 1e6), "2e+06");
}

namespace {
plot line_up() { return {"t", "x", "y", {{"up", {0, 1, 2}, {0, 1, 2}}}}; }
}  // namespace

TEST(draw_in_terminal, plain_text_rises_from_left_to_right) {
    const std::string text = draw_in_terminal(line_up(), {40, 8, false, false});
    std::vector<std::size_t> column;  // of the first mark in each row of the frame
    std::size_t from = 0;
    for (std::size_t end; (end = text.find('\n', from)) != std::string::npos; from = end + 1) {
        const std::string row = text.substr(from, end - from);
        if (const std::size_t at = row.find('*'); at != std::string::npos) column.push_back(at);
    }
    EXPECT_EQ(column.size(), 8u);
    EXPECT_TRUE(std::is_sorted(column.rbegin(), column.rend()));
    EXPECT_EQ(text.find('\x1b'), std::string::npos);
    for (const char c : text) EXPECT_TRUE(static_cast<unsigned char>(c) < 0x80);
}

TEST(draw_in_terminal, bears_points_that_are_not_finite_and_no_points) {
    plot p = line_up();
    p.series[0].y = {NAN, INFINITY, 1};
    EXPECT_FALSE(draw_in_terminal(p, {40, 8, true, true}).empty());
    p.series.clear();
    EXPECT_FALSE(draw_in_terminal(p, {40, 8, true, true}).empty());
}

TEST(draw_svg, breaks_the_line_at_points_that_are_not_finite_and_escapes_words) {
    plot p{"a < b & c", "x", "y", {{"s", {0, 1, 2, 3}, {0, NAN, 1, 2}}}};
    const std::string svg = draw_svg(p);
    EXPECT_NE(svg.find("a &lt; b &amp; c"), std::string::npos);
    EXPECT_EQ(svg.find("nan"), std::string::npos);
    EXPECT_EQ(svg, draw_svg(p));
}
