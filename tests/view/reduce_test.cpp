#include "tnl/view/view_reduce.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace {

using namespace cli;

view_rows rows_of(const std::vector<std::pair<double, double>>& points) {
    result_table table;
    table.columns.resize(2);
    for (const auto& [x, y] : points) table.values.insert(table.values.end(), {x, y});
    table.first_row.push_back(points.size());
    view_rows rows;
    append_lines(rows, {table, static_cast<long long>(points.size()), false, false});
    return rows;
}

// Steps of very different lengths, as a simulator with step control makes them; some are zero.
std::vector<std::pair<double, double>> random_points(std::size_t n, std::mt19937& rng) {
    std::vector<std::pair<double, double>> points;
    double x = 0;
    for (std::size_t i = 0; i < n; ++i) {
        points.emplace_back(x, rng() % 50 == 0 ? std::nan("") : static_cast<double>(rng() % 1000));
        x += rng() % 9 == 0 ? 0 : std::exp2(static_cast<double>(rng() % 12)) / 64;
    }
    return points;
}

struct four {
    double first = std::nan(""), last = std::nan(""), lo = HUGE_VAL, hi = -HUGE_VAL;
    bool is_empty = true;

    void add(double y) {
        if (is_empty) first = y;
        last = y;
        is_empty = false;
        if (y < lo) lo = y;
        if (y > hi) hi = y;
    }
};
bool same(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

TEST(reduce, in_each_pixel_first_last_least_and_greatest_value_are_those_of_all_rows) {
    std::mt19937 rng(3);
    for (int trial = 0; trial < 60; ++trial) {
        const auto points = random_points(2000 + rng() % 3000, rng);
        const view_rows rows = rows_of(points);
        view_window window;
        window.columns = {1};
        window.points = 1 + rng() % 100;
        const double end = points.back().first;
        if (trial % 2) window.from = end * (rng() % 40) / 100.0;
        if (trial % 3) window.to = end * static_cast<double>(60 + rng() % 50) / 100.0;
        const reduced_rows out = reduce(rows, window);
        ASSERT_TRUE(std::is_sorted(out.x.begin(), out.x.end()));
        ASSERT_LE(out.x.size(), 4 * window.points + 2);

        const double from = window.from.value_or(0), to = window.to.value_or(end);
        double x0 = HUGE_VAL, x1 = -HUGE_VAL;
        for (const auto& [x, y] : points)
            if (x >= from && x <= to) {
                x0 = std::min(x0, x);
                x1 = std::max(x1, x);
            }
        const auto pixel = [&](double x) {
            std::size_t b = 0;
            while (b + 1 < window.points &&
                   x >= x0 + static_cast<double>(b + 1) / static_cast<double>(window.points) * (x1 - x0))
                ++b;
            return b;
        };
        std::vector<four> all(window.points), shown(window.points);
        for (const auto& [x, y] : points)
            if (x >= from && x <= to) all[pixel(x)].add(y);
        for (std::size_t i = 0; i < out.x.size(); ++i)
            if (out.x[i] >= x0 && out.x[i] <= x1) shown[pixel(out.x[i])].add(out.y[0][i]);
        for (std::size_t b = 0; b < window.points; ++b) {
            ASSERT_EQ(shown[b].is_empty, all[b].is_empty);
            ASSERT_TRUE(same(shown[b].first, all[b].first) && same(shown[b].last, all[b].last)) << b;
            ASSERT_EQ(shown[b].lo, all[b].lo);
            ASSERT_EQ(shown[b].hi, all[b].hi);
        }
    }
}

TEST(reduce, few_rows_stand_there_as_they_are_with_one_more_on_each_side) {
    const view_rows rows = rows_of({{0, 5}, {1, 6}, {2, 7}, {3, 8}, {4, 9}});
    view_window window;
    window.columns = {1};
    window.from = 1.5;
    window.to = 2.5;
    const reduced_rows out = reduce(rows, window);
    EXPECT_TRUE(out.whole);
    EXPECT_EQ(out.x, (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(out.y[0], (std::vector<double>{6, 7, 8}));
    EXPECT_EQ(out.lo, 0);
    EXPECT_EQ(out.hi, 4);
    EXPECT_EQ(out.n_curve, 5u);
}

TEST(reduce, a_view_between_two_rows_has_both_and_one_beside_the_curve_its_nearest) {
    const view_rows rows = rows_of({{0, 5}, {1, 6}, {2, 7}});
    view_window window;
    window.columns = {1};
    window.from = 1.2;
    window.to = 1.3;
    EXPECT_EQ(reduce(rows, window).x, (std::vector<double>{1, 2}));
    window.from = 7;
    window.to = 8;
    EXPECT_EQ(reduce(rows, window).x, (std::vector<double>{2}));
    window.from = 2;  // upside down
    window.to = 1;
    EXPECT_NO_FATAL_FAILURE(reduce(rows, window));
}

TEST(reduce, a_falling_axis_gives_what_the_same_rows_in_reverse_order_give) {
    std::mt19937 rng(4);
    auto points = random_points(3000, rng);
    for (auto& [x, y] : points)
        if (std::isnan(y)) y = 0;
    const view_rows up = rows_of(points);
    std::reverse(points.begin(), points.end());
    const view_rows down = rows_of(points);
    ASSERT_TRUE(down.curves[0].columns[0].descending);
    view_window window;
    window.columns = {1};
    window.points = 50;
    window.from = points.front().first / 3;
    const reduced_rows a = reduce(up, window), b = reduce(down, window);
    EXPECT_FALSE(b.row_axis);
    EXPECT_EQ(a.x, b.x);
    EXPECT_EQ(a.y, b.y);
}

TEST(reduce, an_axis_to_and_fro_or_a_wish_gives_numbers_of_rows) {
    const view_rows fro = rows_of({{0, 5}, {1, 6}, {0.5, 7}}), up = rows_of({{0, 5}, {1, 6}});
    view_window window;
    window.columns = {0, 1};
    EXPECT_TRUE(reduce(fro, window).row_axis);
    EXPECT_EQ(reduce(fro, window).x, (std::vector<double>{0, 1, 2}));
    EXPECT_EQ(reduce(fro, window).y[0], (std::vector<double>{0, 1, 0.5}));
    EXPECT_FALSE(reduce(up, window).row_axis);
    window.axis = -1;
    EXPECT_TRUE(reduce(up, window).row_axis);
}

TEST(reduce, another_column_than_the_first_may_be_the_axis) {
    const view_rows rows = rows_of({{7, 0}, {7, 1}, {8, 2}});
    view_window window;
    window.columns = {0};
    window.axis = 1;
    window.from = 1.5;
    EXPECT_EQ(reduce(rows, window).x, (std::vector<double>{1, 2}));
    EXPECT_EQ(reduce(rows, window).y[0], (std::vector<double>{7, 8}));
    EXPECT_EQ(values_at(rows, window, 1.5)[0], 7.5);
}

TEST(reduce, a_curve_that_is_not_there_is_empty) {
    const view_rows rows = rows_of({{0, 5}});
    view_window window;
    window.columns = {1};
    window.curve = 3;
    EXPECT_TRUE(reduce(rows, window).x.empty());
    EXPECT_TRUE(reduce(view_rows(), window).x.empty());
    EXPECT_TRUE(std::isnan(values_at(rows, window, 0)[0]));
}

TEST(reduce, an_endless_axis_does_no_harm) {
    std::vector<std::pair<double, double>> points;
    for (int i = 0; i < 100; ++i) points.emplace_back(i == 0 ? -HUGE_VAL : i == 99 ? HUGE_VAL : i, i);
    view_window window;
    window.columns = {1};
    window.points = 5;
    const reduced_rows out = reduce(rows_of(points), window);
    EXPECT_LE(out.x.size(), 22u);
    EXPECT_EQ(out.y[0].front(), 0);
    EXPECT_EQ(out.y[0].back(), 99);
}

TEST(values_at, stands_on_the_straight_line_and_behind_a_step) {
    const view_rows rows = rows_of({{0, 0}, {1, 10}, {1, 20}, {3, 30}});
    view_window window;
    window.columns = {1, 0};
    EXPECT_EQ(values_at(rows, window, 0.25), (std::vector<double>{2.5, 0.25}));
    EXPECT_EQ(values_at(rows, window, 1)[0], 20);
    EXPECT_EQ(values_at(rows, window, 2)[0], 25);
    EXPECT_EQ(values_at(rows, window, 3)[0], 30);
    EXPECT_TRUE(std::isnan(values_at(rows, window, 3.1)[0]));
    EXPECT_TRUE(std::isnan(values_at(rows, window, -0.1)[0]));
}

TEST(values_at, finds_rows_of_a_falling_axis) {
    const view_rows rows = rows_of({{3, 30}, {1, 10}, {0, 0}});
    view_window window;
    window.columns = {1};
    EXPECT_EQ(values_at(rows, window, 2)[0], 20);
    EXPECT_EQ(values_at(rows, window, 0)[0], 0);
}

}  // namespace
