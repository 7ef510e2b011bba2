#include "tnl/view/view_columns.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "tnl/common/exit_status.h"

namespace {

using namespace cli;

TEST(view_column, extremes_of_any_rows_equal_those_found_one_by_one_while_it_grows) {
    std::mt19937 rng(1);
    for (const std::size_t most : {1u, 15u, 16u, 17u, 255u, 256u, 257u, 5000u}) {
        view_column column;
        std::vector<double> all;
        std::normal_distribution<double> value;
        for (std::size_t i = 0; i < most; ++i) {
            const double x = rng() % 7 == 0 ? std::nan("") : rng() % 97 == 0 ? -HUGE_VAL : value(rng);
            append_value(column, x);
            all.push_back(x);
            if (i % 37 != 0 && i + 1 != most) continue;
            for (int trial = 0; trial < 5; ++trial) {
                const std::size_t begin = rng() % all.size(), end = begin + rng() % (all.size() - begin + 1);
                double lo = HUGE_VAL, hi = -HUGE_VAL;
                for (std::size_t j = begin; j < end; ++j) {
                    if (all[j] < lo) lo = all[j];
                    if (all[j] > hi) hi = all[j];
                }
                const min_max m = extremes(column, begin, end);
                ASSERT_EQ(m.lo, lo) << begin << " " << end << " of " << all.size();
                ASSERT_EQ(m.hi, hi) << begin << " " << end << " of " << all.size();
            }
        }
    }
}

TEST(view_column, the_pyramid_takes_little_memory_beside_the_values) {
    view_column column;
    for (int i = 0; i < 100000; ++i) append_value(column, i);
    std::size_t nodes = 0;
    for (const std::vector<min_max>& level : column.level) nodes += level.size();
    EXPECT_LT(static_cast<double>(nodes * sizeof(min_max)), 100000 * sizeof(double) / 7.0);
    EXPECT_EQ(column.level.size(), 4u);  // 6250, 390, 24, 1
}

view_rows rows_of(std::string_view text) {
    view_rows rows;
    append_lines(rows, parse_lines(text, "f", 1));
    return rows;
}

// 1: never falls, 2: never rises, 3: constant, 0: to and fro.
int way(const view_rows& rows, std::size_t curve, std::size_t column) {
    const view_curve::course& c = rows.curves[curve].columns[column];
    return (c.ascending ? 1 : 0) + (c.descending ? 2 : 0);
}

TEST(view_rows, text_in_pieces_gives_the_same_rows_and_curves_as_the_whole) {
    std::mt19937 rng(2);
    for (int trial = 0; trial < 200; ++trial) {
        std::vector<std::string> lines;
        for (int i = 0; i < 60; ++i)
            lines.push_back(rng() % 5 == 0 ? (rng() % 2 ? "\n" : "  \r\n")
                                           : std::to_string(rng() % 9) + " " + std::to_string(i) + "\n");
        std::string whole, piece;
        view_rows grown;
        for (const std::string& line : lines) {
            whole += line;
            piece += line;
            if (rng() % 4 != 0) continue;
            append_lines(grown, parse_lines(piece, "f", grown.n_lines + 1));
            piece.clear();
        }
        append_lines(grown, parse_lines(piece, "f", grown.n_lines + 1));
        const view_rows once = rows_of(whole);
        ASSERT_EQ(grown.n, once.n);
        ASSERT_EQ(grown.n_lines, 60);
        ASSERT_EQ(grown.curves.size(), once.curves.size());
        for (std::size_t k = 0; k < once.curves.size(); ++k) {
            EXPECT_EQ(grown.curves[k].first, once.curves[k].first);
            EXPECT_EQ(grown.curves[k].n, once.curves[k].n);
            for (std::size_t j = 0; j < 2; ++j) EXPECT_EQ(way(grown, k, j), way(once, k, j));
        }
        for (std::size_t j = 0; j < 2; ++j) EXPECT_EQ(grown.columns[j].values, once.columns[j].values);
    }
}

TEST(view_rows, a_sweep_over_frequencies_has_the_same_curves_in_any_pieces) {
    std::string text;
    for (int sweep = 0; sweep < 7; ++sweep)
        for (const char* f : {"1", "3", "10", "30"}) text += std::string(f) + " " + std::to_string(sweep) + "\n";
    std::mt19937 rng(3);
    for (int trial = 0; trial < 50; ++trial) {
        view_rows rows;
        for (std::size_t at = 0; at < text.size();) {
            std::size_t end = text.find('\n', std::min(at + rng() % 40, text.size() - 1)) + 1;
            view_lines lines = parse_lines(std::string_view(text).substr(at, end - at), "f", rows.n_lines + 1);
            part_sweeps(lines, rows);
            append_lines(rows, lines);
            at = end;
        }
        ASSERT_EQ(rows.curves.size(), 7u);
        for (std::size_t k = 0; k < 7; ++k) {
            EXPECT_EQ(rows.curves[k].first, 4 * k);
            EXPECT_EQ(rows.curves[k].n, 4u);
        }
    }
}

TEST(view_rows, each_curve_knows_whether_its_columns_rise_or_fall) {
    const view_rows rows = rows_of("1 5\n1 4\n2 4\n\n3 0\n1 0\n\n1 1\n2 nan\n1 2\n\nnan 1\n\n4 1\n");
    ASSERT_EQ(rows.curves.size(), 5u);
    const int axis[] = {1, 2, 0, 0, 3}, other[] = {2, 3, 0, 3, 3};
    for (std::size_t k = 0; k < 5; ++k) {
        EXPECT_EQ(way(rows, k, 0), axis[k]) << k;
        EXPECT_EQ(way(rows, k, 1), other[k]) << k;
    }
}

TEST(view_rows, the_axis_is_the_first_column_or_that_which_varies_within_the_curves_of_a_sweep) {
    EXPECT_EQ(axis_column(rows_of("1 5\n2 6\n")), 0);
    EXPECT_EQ(axis_column(rows_of("1 5\n1 6\n")), 0);
    EXPECT_EQ(axis_column(rows_of("1 5\n1 6\n\n2 5\n2 6\n")), 1);
    EXPECT_EQ(axis_column(rows_of("5\n6\n")), -1);
    EXPECT_EQ(axis_column(view_rows()), 0);
}

TEST(view_rows, a_fault_in_a_later_piece_is_told_with_its_line_of_the_file) {
    view_rows rows = rows_of("1 2\n3 4\n");
    const auto fault = [&](const char* text) {
        try {
            append_lines(rows, parse_lines(text, "f.dat", rows.n_lines + 1));
        } catch (const file_error& e) {
            return std::string(e.what());
        }
        return std::string();
    };
    EXPECT_EQ(fault("5 6\n7 x\n"), "f.dat:4: not a row of numbers");
    EXPECT_EQ(fault("1 2 3\n"), "f.dat:3: a row of 3 numbers among rows of 2");
    EXPECT_EQ(rows.n, 2u);
}

}  // namespace
