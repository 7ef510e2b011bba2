#include "tnl/plot/plot_thin.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>

namespace {

using namespace cli;

TEST(thinner, keeps_extremes_ends_and_order_of_a_long_noise) {
    std::mt19937 rng(1);
    std::normal_distribution<double> noise;
    constexpr int n = 200000, n_bins = 100;
    std::vector<double> y(n);
    for (double& v : y) v = noise(rng);
    y[77777] = 50;  // one spike in one row
    thinner thin(make_axis(0, n - 1, 5), n_bins);
    for (int i = 0; i < n; ++i) thin.add(i, y[static_cast<std::size_t>(i)]);
    thin.finish();
    EXPECT_LE(thin.x.size(), 4u * (n_bins + 1));
    EXPECT_TRUE(std::is_sorted(thin.x.begin(), thin.x.end()));
    EXPECT_EQ(thin.x.front(), 0);
    EXPECT_EQ(thin.x.back(), n - 1);
    EXPECT_EQ(*std::max_element(thin.y.begin(), thin.y.end()), 50);
    EXPECT_EQ(*std::min_element(thin.y.begin(), thin.y.end()), *std::min_element(y.begin(), y.end()));
    for (std::size_t i = 0; i < thin.x.size(); ++i) EXPECT_EQ(thin.y[i], y[static_cast<std::size_t>(thin.x[i])]);
    // Every column has the extremes of its rows.
    for (int b = 0; b < n_bins; ++b) {
        const int from = static_cast<int>(std::ceil((n - 1.0) * b / n_bins)),
                  to = static_cast<int>((n - 1.0) * (b + 1) / n_bins);
        const double most = *std::max_element(y.begin() + from, y.begin() + to);
        double kept = -INFINITY;
        for (std::size_t i = 0; i < thin.x.size(); ++i)
            if (thin.x[i] >= from && thin.x[i] < to) kept = std::max(kept, thin.y[i]);
        EXPECT_EQ(kept, most) << b;
    }
}

TEST(thinner, leaves_short_curves_as_they_are) {
    thinner thin(make_axis(0, 10, 5), 1000);
    for (int i = 0; i <= 10; ++i) thin.add(i, i * i);
    thin.finish();
    ASSERT_EQ(thin.x.size(), 11u);
    for (std::size_t i = 0; i < 11; ++i) EXPECT_EQ(thin.y[i], static_cast<double>(i * i));
}

TEST(thinner, turns_what_is_not_finite_into_one_gap) {
    thinner thin(make_axis(0, 10, 5), 1000);
    const double y[] = {NAN, 1, 2, NAN, INFINITY, -INFINITY, 3, 4, NAN};
    for (int i = 0; i < 9; ++i) thin.add(i, y[i]);
    thin.add(NAN, 5);
    thin.finish();
    ASSERT_EQ(thin.y.size(), 5u);
    EXPECT_EQ(thin.y[1], 2);
    EXPECT_TRUE(std::isnan(thin.y[2]));
    EXPECT_EQ(thin.y[3], 3);
}

TEST(thinner, stays_short_for_rows_that_alternate_with_gaps) {
    thinner thin(make_axis(0, 1e5, 5), 50);
    for (int i = 0; i < 100000; ++i) thin.add(i, i % 2 ? NAN : i);
    thin.finish();
    EXPECT_LE(thin.x.size(), 5u * 51);
    EXPECT_EQ(thin.y.back(), 99998);
}

TEST(thinner, leaves_out_what_a_log_axis_cannot_show) {
    thinner thin(make_log_axis(1, 1000, 5), 100);
    for (const double x : {-1.0, 0.0, 1.0, 10.0}) thin.add(x, x);
    thin.finish();
    EXPECT_EQ(thin.x, (std::vector<double>{1, 10}));
}

TEST(drop_retraced, draws_a_circle_once_that_is_run_through_a_thousand_times) {
    std::vector<double> x, y;
    for (int i = 0; i < 360000; ++i) {
        x.push_back(std::cos(i * M_PI / 180));
        y.push_back(std::sin(i * M_PI / 180));
    }
    drop_retraced(make_axis(-1, 1, 5), make_axis(-1, 1, 5), 5000, x, y);
    EXPECT_LE(x.size(), 5000u);
    std::set<int> angles;
    for (std::size_t i = 0; i < x.size(); ++i)
        if (std::isfinite(y[i])) angles.insert(static_cast<int>(std::lround(std::atan2(y[i], x[i]) * 180 / M_PI)));
    EXPECT_GE(angles.size(), 360u);
}

TEST(drop_retraced, covers_the_area_that_lines_without_pattern_fill) {
    std::mt19937 rng(1);
    std::uniform_real_distribution<double> any(0, 1);
    std::vector<double> x(300000), y(300000);
    for (double& v : x) v = any(rng);
    for (double& v : y) v = 0.25 + 0.5 * any(rng);
    drop_retraced(make_axis(0, 1, 5), make_axis(0, 1, 5), 20000, x, y);
    EXPECT_LE(x.size(), 20000u);
    double covered = 0;
    for (std::size_t i = 1; i < x.size(); ++i)
        if (std::isfinite(y[i])) {
            covered += x[i] > x[i - 1] && y[i] == y[i - 1] ? x[i] - x[i - 1] : 0;
            EXPECT_GT(y[i], 0.24);
            EXPECT_LT(y[i], 0.76);
        }
    EXPECT_NEAR(covered / 256, 0.5, 0.01);  // lines 1/256 apart
}

TEST(bends, keeps_corners_and_drops_points_on_lines) {
    std::vector<double> x, y;
    for (int i = 0; i <= 100; ++i) x.push_back(i), y.push_back(i < 50 ? i : 100 - i);
    const std::vector<bool> kept = bends(x, y, 0, x.size(), 0.1);
    for (std::size_t i = 0; i < kept.size(); ++i) EXPECT_EQ(kept[i], i == 0 || i == 50 || i == 100) << i;
}

TEST(bends, keeps_a_way_back_on_the_same_line) {
    const std::vector<double> x{0, 0, 0, 0}, y{0, 10, -5, 1};
    EXPECT_EQ(bends(x, y, 0, 4, 0.1), (std::vector<bool>{true, true, true, true}));
}

}  // namespace
