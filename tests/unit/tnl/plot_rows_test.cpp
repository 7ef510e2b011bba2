#include "tnl/plot/plot_rows.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace cli;

result_table table_of(const std::string& text, std::vector<record_column> columns, const std::string& kind = "trns") {
    result_table t = read_result_table(text, "t.dat");
    t.columns = std::move(columns);
    t.kind = kind;
    return t;
}
plot plot_all(const result_table& t, const plot_choice& choice = {}) {
    const int x = x_column_of(t);
    return plot_of_rows({{&t, "", x, drawn_columns(t, x), {}}}, choice);
}

const std::vector<record_column> four{{"time", "s"}, {"v1", "V"}, {"i1", "A"}, {"v2", "V"}};

TEST(plot_of_rows, puts_each_unit_into_a_panel_of_its_own) {
    const plot p = plot_all(table_of("0 1 2 3\n1 4 5 6\n", four));
    ASSERT_EQ(p.panels.size(), 2u);
    EXPECT_EQ(p.x_quantity, "time");
    EXPECT_EQ(p.x_unit, "s");
    EXPECT_EQ(p.panels[0].unit, "V");
    EXPECT_EQ(p.panels[0].quantity, "");
    ASSERT_EQ(p.panels[0].series.size(), 2u);
    EXPECT_EQ(p.panels[0].series[1].name, "v2");
    EXPECT_EQ(p.panels[0].series[1].y, (std::vector<double>{3, 6}));
    EXPECT_EQ(p.panels[1].unit, "A");
    EXPECT_EQ(p.panels[1].quantity, "i1");
}

// A reference of 15 beside a duty cycle, and a carrier that is as large as the cycle.
TEST(plot_of_rows, parts_columns_without_a_unit_whose_sizes_differ) {
    const std::vector<record_column> columns{{"time", "s"}, {"vref", ""}, {"duty", ""}, {"carrier", ""}, {"zero", ""}};
    const result_table t = table_of("0 15 0.2 0 0\n1 15 0.4 1 0\n", columns);
    const plot p = plot_all(t);
    ASSERT_EQ(p.panels.size(), 2u);
    ASSERT_EQ(p.panels[0].series.size(), 1u);
    EXPECT_EQ(p.panels[0].quantity, "vref");
    ASSERT_EQ(p.panels[1].series.size(), 3u);
    EXPECT_EQ(p.panels[1].series[0].name, "duty");
    EXPECT_EQ(p.panels[1].series[1].name, "carrier");

    plot_choice logarithmic;
    logarithmic.log_y = true;
    EXPECT_EQ(plot_all(t, logarithmic).panels.size(), 1u) << "a logarithmic axis shows all sizes";
}

TEST(plot_of_rows, puts_columns_together_as_it_is_told) {
    plot_choice choice;
    choice.panels = {{"i1", "v1"}};
    const plot p = plot_all(table_of("0 1 2 3\n1 4 5 6\n", four), choice);
    ASSERT_EQ(p.panels.size(), 2u);
    ASSERT_EQ(p.panels[0].series.size(), 2u);
    EXPECT_EQ(p.panels[0].series[0].name, "v1");
    EXPECT_EQ(p.panels[0].series[1].name, "i1");
    EXPECT_EQ(p.panels[0].unit, "") << "V and A";
    EXPECT_EQ(p.panels[1].quantity, "v2");
}

TEST(plot_of_rows, ends_lines_at_the_ends_of_the_y_axis) {
    plot_choice choice;
    choice.y = {{"v", 5.0, 30.0}};
    const plot p = plot_all(table_of("0 0\n1 10\n2 20\n3 60\n4 0\n5 10\n", {{"time", "s"}, {"v", "V"}}), choice);
    const plot_series& s = p.panels[0].series[0];
    const std::vector<double> x{0.5, 1, 2, 2.25, 3, 3.5, 3.5 + 5.0 / 12, 4, 4.5, 5},
        y{5, 10, 20, 30, NAN, 30, 5, NAN, 5, 10};
    ASSERT_EQ(s.x.size(), x.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
        EXPECT_NEAR(s.x[i], x[i], 1e-12);
        EXPECT_TRUE(std::isnan(y[i]) ? std::isnan(s.y[i]) : s.y[i] == y[i]) << i;
    }
    const axis a = y_axis(p.panels[0], 5);
    EXPECT_EQ(a.lo, 5);
    EXPECT_EQ(a.hi, 30);
    EXPECT_EQ(x_axis(p, 5).lo, 0) << "the time axis shows the whole run";
    choice.y = {{"nix", 0.0, 1.0}};
    EXPECT_THROW(plot_all(table_of("0 0\n1 10\n", {{"time", "s"}, {"v", "V"}}), choice), std::exception);
}

// The row before anything is solved: a source of 12 V that it shows at 0, a charge that truly begins there.
TEST(plot_of_rows, leaves_out_a_guess_that_lies_apart_from_the_solutions) {
    result_table t = table_of("0 0 0\n1 12 2\n2 12 3.6\n3 12 4.9\n", {{"time", "s"}, {"vin", "V"}, {"vc", "V"}});
    EXPECT_EQ(plot_all(t).panels[0].series[0].x.front(), 0) << "a row that is a solution stays";
    t.begins_with_guess = true;
    const plot p = plot_all(t);
    EXPECT_EQ(p.panels[0].series[0].x, (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(p.panels[0].series[1].x, (std::vector<double>{0, 1, 2, 3}));
}

TEST(plot_of_rows, stacks_a_panel_for_each_column) {
    plot_choice choice;
    choice.stack = true;
    const plot p = plot_all(table_of("0 1 2 3\n1 4 5 6\n", four), choice);
    ASSERT_EQ(p.panels.size(), 3u);
    EXPECT_EQ(p.panels[2].quantity, "v2");
    EXPECT_EQ(p.panels[2].unit, "V");
}

TEST(plot_of_rows, overlays_runs_and_names_them) {
    const result_table a = table_of("0 1 2 3\n1 4 5 6\n", four), b = table_of("0 7 8 9\n2 7 8 9\n", four);
    const plot p = plot_of_rows({{&a, "a.run", 0, {1}, {}}, {&b, "b.run", 0, {1}, {}}}, {});
    ASSERT_EQ(p.panels.size(), 1u);
    EXPECT_EQ(p.panels[0].quantity, "v1");
    EXPECT_EQ(p.panels[0].series[0].name, "v1 (a.run)");
    EXPECT_EQ(p.panels[0].series[1].name, "v1 (b.run)");
    EXPECT_EQ(p.panels[0].series[1].x.back(), 2);
}

TEST(plot_of_rows, names_the_curves_of_a_sweep_by_the_column_that_tells_them_apart) {
    const std::vector<record_column> columns{{"r_of_RL", "ohm"}, {"a", ""}, {"vout", "V"}};
    const result_table t = table_of("1e5 0 1\n1e5 1 2\n\n200 0 3\n200 1 4\n", columns, "dc");
    EXPECT_EQ(sweep_column_of(t), 0);
    EXPECT_EQ(x_column_of(t), 1);
    const plot p = plot_all(t);
    ASSERT_EQ(p.panels.size(), 1u);
    ASSERT_EQ(p.panels[0].series.size(), 2u);
    EXPECT_EQ(p.panels[0].quantity, "vout");
    EXPECT_EQ(p.panels[0].series[0].name, "r_of_RL = 100 kohm");
    EXPECT_EQ(p.panels[0].series[1].name, "r_of_RL = 200 ohm");
}

TEST(plot_of_rows, numbers_the_curves_when_nothing_tells_them_apart) {
    const plot p = plot_all(table_of("0 1\n1 2\n\n0 3\n1 4\n", {{"a", ""}, {"vout", "V"}}, "dc"));
    EXPECT_EQ(p.panels[0].series[1].name, "vout (curve 2)");
}

TEST(plot_of_rows, cuts_lines_at_the_edges_of_the_window) {
    plot_choice choice;
    choice.from = 0.5;
    choice.to = 2.25;
    const plot p = plot_all(table_of("0 0\n1 10\n2 20\n3 40\n", {{"time", "s"}, {"v", "V"}}), choice);
    const plot_series& s = p.panels[0].series[0];
    EXPECT_EQ(s.x, (std::vector<double>{0.5, 1, 2, 2.25}));
    EXPECT_EQ(s.y, (std::vector<double>{5, 10, 20, 25}));
    choice.from = 1.25;
    choice.to = 1.5;  // between two rows
    const plot q = plot_all(table_of("0 0\n1 10\n2 20\n3 40\n", {{"time", "s"}, {"v", "V"}}), choice);
    EXPECT_EQ(q.panels[0].series[0].y, (std::vector<double>{12.5, 15}));
}

TEST(plot_of_rows, makes_sticks_of_harmonics) {
    const plot p =
        plot_all(table_of("-1e-4 0\n0 5\n1e-4 0\n0.9999 0\n1 80\n1.0001 0\n1.000000e+04 0\n1.000000e+04 7\n"
                          "1.000000e+04 0\n",
                          {{"harmonic", ""}, {"v", "V"}}, "fourier"));
    ASSERT_EQ(p.panels.size(), 1u);
    EXPECT_EQ(p.panels[0].form, panel_form::sticks);
    EXPECT_EQ(p.panels[0].series[0].x, (std::vector<double>{0, 1, 1e4}));
    EXPECT_EQ(p.panels[0].series[0].y, (std::vector<double>{5, 80, 7}));
}

TEST(plot_of_rows, gives_columns_with_two_values_lanes_when_asked) {
    const result_table t = table_of("0 0 5 1\n1 1 5 2\n2 1 0 3\n", {{"time", "s"}, {"q", ""}, {"g", "V"}, {"v", "V"}});
    plot_choice choice;
    EXPECT_EQ(plot_all(t, choice).panels.size(), 2u);
    choice.logic = true;
    const plot p = plot_all(t, choice);
    ASSERT_EQ(p.panels.size(), 2u);
    EXPECT_EQ(p.panels[0].form, panel_form::logic);
    ASSERT_EQ(p.panels[0].series.size(), 2u);
    // Held until the row that changes it: the edge is upright.
    EXPECT_EQ(p.panels[0].series[0].x, (std::vector<double>{0, 1, 1, 2}));
    EXPECT_EQ(p.panels[0].series[0].y, (std::vector<double>{0, 0, 1, 1}));
    EXPECT_EQ(p.panels[0].series[1].y, (std::vector<double>{1, 1, 1, 0}));
    EXPECT_EQ(p.panels[1].quantity, "v");
}

TEST(plot_of_rows, counts_rows_when_there_is_one_column) {
    const plot p = plot_all(table_of("5\n6\n", {{"v", "V"}}));
    EXPECT_EQ(p.x_quantity, "row");
    EXPECT_EQ(p.panels[0].series[0].x, (std::vector<double>{1, 2}));
}

TEST(plot_of_rows, keeps_little_of_many_rows_and_the_spike_among_them) {
    result_table t;
    t.kind = "trns";
    t.columns = {{"time", "s"}, {"v", "V"}};
    constexpr std::size_t n = 300000;
    for (std::size_t i = 0; i < n; ++i) {
        t.values.push_back(1e-6 * static_cast<double>(i));
        t.values.push_back(i == 123456 ? 99 : static_cast<double>(i % 7));
    }
    t.first_row = {0, n};
    const plot p = plot_of_rows({{&t, "", 0, {1}, {}}}, {}, 500);
    const plot_series& s = p.panels[0].series[0];
    EXPECT_LE(s.x.size(), 2004u);
    EXPECT_EQ(*std::max_element(s.y.begin(), s.y.end()), 99);
}

TEST(x_axis, reaches_the_round_number_that_a_run_stops_short_of) {
    plot p;
    p.x_unit = "s";
    p.panels.push_back({"v", "V", panel_form::lines, false, {{"v", {0, 0.02999}, {0, 1}}}});
    EXPECT_DOUBLE_EQ(x_axis(p, 6).hi, 0.03);
    p.panels[0].series[0].x[1] = 0.0273;
    EXPECT_DOUBLE_EQ(x_axis(p, 6).hi, 0.0273);
}

TEST(y_axis, takes_a_wave_that_differs_in_its_last_digit_as_constant) {
    plot_panel panel{"v", "V", panel_form::lines, false, {{"v", {0, 1}, {5, 5.000001}}}};
    const axis a = y_axis(panel, 5);
    EXPECT_LT(a.lo, 4.6);
    EXPECT_GT(a.hi, 5.4);
}

}  // namespace
