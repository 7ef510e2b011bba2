// Small signals in pictures.
#include "tnl/plot/plot_ac.h"

#include <gtest/gtest.h>

#include <cmath>

#include "temp_folder.h"
#include "tnl/common/exit_status.h"
#include "tnl/plot/plot_runs.h"

namespace {

using namespace cli;

// One decade a row: the magnitude falls by ten, the phase by 45 degrees; two curves of a sweep.
struct run_on_disk {
    temp_folder inside;
    run_on_disk() {
        std::filesystem::create_directories("a.run");
        write_file("a.run/ac.dat",
                   "1 0 1 2 30 0.5\n10 -45 0.1 2 30 0.5\n100 -90 0 2 30 0.5\n\n"
                   "1 0 10 2 30 0.5\n10 -45 1 2 30 0.5\n100 -90 0.1 2 30 0.5\n");
        write_file("a.run/n.dat", "1 3 0\n10 0 -2\n100 -4 0\n1000 0 0\n");
        write_file("a.run/run.json", R"({"title": "t", "state": "complete", "files": [
 {"path": "ac.dat", "kind": "ac", "rows": 6, "curves": 2, "columns": [{"name": "frequency", "unit": "Hz"},
  {"name": "phase_of_v", "unit": "deg"}, {"name": "mag_of_v", "unit": "V"}, {"name": "mag_of_i", "unit": "A"},
  {"name": "phase_of_i", "unit": "deg"}, {"name": "p", "unit": "W"}],
  "sweeps": [{"name": "r_of_R1", "unit": "ohm", "values": [10, 2200]}]},
 {"path": "n.dat", "kind": "nyquist", "rows": 4, "curves": 1, "columns": [{"name": "frequency", "unit": "Hz"},
  {"name": "real_of_l", "unit": ""}, {"name": "imag_of_l", "unit": ""}]}]})");
    }
};

plot picture(const std::vector<std::string>& words, const plot_wish& wish = {}) {
    std::vector<std::string> all{"a.run"};
    all.insert(all.end(), words.begin(), words.end());
    const plotted_runs runs = open_plotted(all, wish);
    return plot_of_rows(runs.sources, runs.choice);
}
std::string panels_of(const plot& p) {
    std::string text;
    for (const plot_panel& panel : p.panels) {
        text += "[" + panel.quantity + "|" + panel.unit;
        for (const plot_series& s : panel.series) text += "|" + s.name;
        text += "]";
    }
    return text;
}

TEST(bode, magnitudes_in_decibel_stand_above_phases_over_a_logarithmic_frequency) {
    const run_on_disk disk;
    plot_wish wish;
    wish.file = "ac.dat";
    const plot p = picture({}, wish);
    EXPECT_TRUE(p.log_x);
    EXPECT_EQ(p.x_quantity, "frequency");
    EXPECT_EQ(panels_of(p),
              "[|dB|mag_of_v (r_of_R1 = 10 ohm)|mag_of_v (r_of_R1 = 2.2 kohm)|mag_of_i (r_of_R1 = 10 ohm)|mag_of_i "
              "(r_of_R1 = 2.2 kohm)]"
              "[|deg|phase_of_v (r_of_R1 = 10 ohm)|phase_of_v (r_of_R1 = 2.2 kohm)|phase_of_i (r_of_R1 = 10 "
              "ohm)|phase_of_i (r_of_R1 "
              "= 2.2 kohm)][p|W|r_of_R1 = 10 ohm|r_of_R1 = 2.2 kohm]");
    const plot_series& first = p.panels[0].series[0];
    ASSERT_EQ(first.y.size(), 2u);  // no magnitude, no place in dB
    EXPECT_DOUBLE_EQ(first.y[0], 0);
    EXPECT_DOUBLE_EQ(first.y[1], -20);
    EXPECT_DOUBLE_EQ(p.panels[0].series[1].y[2], -20);
}

TEST(bode, a_small_signal_is_both_its_columns_and_an_expression_of_them_two_new_ones) {
    const run_on_disk disk;
    EXPECT_EQ(panels_of(picture({"v"})),
              "[mag_of_v|dB|r_of_R1 = 10 ohm|r_of_R1 = 2.2 kohm][phase_of_v|deg|r_of_R1 = 10 ohm|r_of_R1 = 2.2 kohm]");
    EXPECT_EQ(panels_of(picture({"mag_of_v"})), "[mag_of_v|dB|r_of_R1 = 10 ohm|r_of_R1 = 2.2 kohm]");
    const plot p = picture({"z = v/i"});
    EXPECT_EQ(panels_of(p),
              "[mag_of_z|dB|r_of_R1 = 10 ohm|r_of_R1 = 2.2 kohm][phase_of_z|deg|r_of_R1 = 10 ohm|r_of_R1 = 2.2 kohm]");
    EXPECT_NEAR(p.panels[0].series[1].y[0], 20 * std::log10(5), 1e-9);
    EXPECT_NEAR(p.panels[1].series[1].y[2], -120, 1e-9);
    EXPECT_EQ(panels_of(picture({"db(v/i)"})), "[db(v/i)|dB|r_of_R1 = 10 ohm|r_of_R1 = 2.2 kohm]");
    EXPECT_THROW(picture({"v", "nobody"}), usage_error);
}

TEST(bode, axes_are_linear_when_asked) {
    const run_on_disk disk;
    plot_wish wish;
    wish.linear_x = wish.linear_y = true;
    const plot p = picture({"v"}, wish);
    EXPECT_FALSE(p.log_x);
    EXPECT_EQ(panels_of(p),
              "[mag_of_v|V|r_of_R1 = 10 ohm|r_of_R1 = 2.2 kohm][phase_of_v|deg|r_of_R1 = 10 ohm|r_of_R1 = 2.2 kohm]");
    EXPECT_DOUBLE_EQ(p.panels[0].series[1].y[0], 10);
    plot_wish log;
    log.choice.log_y = true;
    const plot q = picture({"v", "i"}, log);
    EXPECT_TRUE(q.panels[0].log);
    for (const plot_panel& panel : q.panels) EXPECT_EQ(panel.log, panel.unit != "deg");
    plot_wish over;
    over.x = "mag_of_v";
    EXPECT_FALSE(picture({"mag_of_i"}, over).log_x);
}

TEST(bode, a_window_ends_on_the_straight_line_over_the_logarithm) {
    const run_on_disk disk;
    plot_wish wish;
    wish.choice.from = std::sqrt(10);
    const plot p = picture({"phase_of_v"}, wish);
    EXPECT_DOUBLE_EQ(p.panels[0].series[0].x[0], std::sqrt(10));
    EXPECT_NEAR(p.panels[0].series[0].y[0], -22.5, 1e-9);
}

TEST(bode, a_sweep_without_blank_lines_has_its_curves_and_one_at_one_frequency_stands_over_its_values) {
    const run_on_disk disk;
    const std::string record = R"({"files": [{"path": "ac.dat", "kind": "ac", "columns": [{"name": "frequency",
 "unit": "Hz"}, {"name": "mag_of_v", "unit": "V"}], "sweeps": [{"name": "r_of_R1", "unit": "ohm", "values": [10, 20]}]}]})";
    std::filesystem::create_directories("b.run");
    write_file("b.run/run.json", record);
    write_file("b.run/ac.dat", "1 1\n10 1\n1 10\n10 0.1\n");
    const auto drawn = [] {
        const plotted_runs runs = open_plotted({"b.run"}, {});
        return plot_of_rows(runs.sources, runs.choice);
    };
    EXPECT_EQ(panels_of(drawn()), "[mag_of_v|dB|r_of_R1 = 10 ohm|r_of_R1 = 20 ohm]");
    write_file("b.run/ac.dat", "5 1\n5 10\n");
    const plot p = drawn();
    EXPECT_EQ(panels_of(p), "[mag_of_v|dB|mag_of_v]");
    EXPECT_EQ(p.x_quantity, "r_of_R1");
    EXPECT_FALSE(p.log_x);
    EXPECT_EQ(p.panels[0].series[0].x, (std::vector<double>{10, 20}));
    EXPECT_EQ(p.panels[0].series[0].y, (std::vector<double>{0, 20}));
}

TEST(nyquist, a_file_for_it_is_a_curve_with_equal_axes_and_the_point_of_stability) {
    const run_on_disk disk;
    plot_wish wish;
    wish.file = "n.dat";
    const plot p = picture({}, wish);
    EXPECT_EQ(panels_of(p), "[imaginary part of l||l]");
    EXPECT_EQ(p.x_quantity, "real part of l");
    EXPECT_TRUE(p.equal_axes);
    EXPECT_FALSE(p.log_x);
    ASSERT_EQ(p.marks.size(), 1u);
    EXPECT_EQ(p.marks[0].x, -1);
    ASSERT_EQ(p.panels[0].series[0].x.size(), 4u);
    EXPECT_NEAR(p.panels[0].series[0].x[2], -4, 1e-12);
    EXPECT_NEAR(p.panels[0].series[0].y[1], -2, 1e-12);
    for (const auto& [w, h] : {std::pair{600.0, 500.0}, {80.0, 40.0}, {100.0, 900.0}}) {
        const equal_axes a = equal_axes_in(p, w, h, 5, 5);
        EXPECT_NEAR((a.x.hi - a.x.lo) / w, (a.y.hi - a.y.lo) / h, 1e-12);
        for (const double x : {-4.0, -1.0, 3.0}) EXPECT_TRUE(x > a.x.lo && x < a.x.hi);
        for (const double y : {-2.0, 0.0}) EXPECT_TRUE(y > a.y.lo && y < a.y.hi);
    }
    const std::string svg = draw_svg(p);
    EXPECT_NE(svg.find(">-1</text>"), std::string::npos);
    EXPECT_NE(draw_in_terminal(p, {80, 20, false, false}).find("-1X"), std::string::npos);
    // Where a column is asked for, it is drawn over frequency.
    EXPECT_EQ(panels_of(picture({"real_of_l"})), "[real_of_l||real_of_l]");
    EXPECT_TRUE(picture({"real_of_l"}).log_x);
}

TEST(nyquist, any_small_signal_is_one_when_asked) {
    const run_on_disk disk;
    plot_wish wish;
    wish.nyquist = true;
    wish.file = "ac.dat";
    EXPECT_EQ(
        panels_of(picture({}, wish)),
        "[imaginary part||v (r_of_R1 = 10 ohm)|v (r_of_R1 = 2.2 kohm)|i (r_of_R1 = 10 ohm)|i (r_of_R1 = 2.2 kohm)]");
    const plot p = picture({"-v"}, wish);
    EXPECT_NEAR(p.panels[0].series[1].x[0], -10, 1e-9);
    EXPECT_NEAR(p.panels[0].series[1].y[2], 0.1, 1e-9);
    EXPECT_THROW(picture({"mag_of_v"}, wish), usage_error);
    wish.choice.from = -0.5;
    wish.choice.to = 2;
    EXPECT_TRUE(picture({"v"}, wish).marks.empty());
}

TEST(nyquist, a_curve_that_leaves_the_window_and_comes_back_is_not_joined_along_its_edge) {
    const run_on_disk disk;
    plot_wish wish;
    wish.file = "n.dat";
    wish.choice.from = -2;
    wish.choice.to = 5;
    const plot p = picture({}, wish);
    const std::vector<double>& x = p.panels[0].series[0].x;
    const std::vector<double>& y = p.panels[0].series[0].y;
    bool breaks = false;
    for (std::size_t i = 0; i + 1 < x.size(); ++i) {
        EXPECT_FALSE(x[i] == -2 && x[i + 1] == -2 && std::isfinite(y[i]) && std::isfinite(y[i + 1]));
        breaks = breaks || std::isnan(y[i]);
    }
    EXPECT_TRUE(breaks);
}

TEST(make_axis, has_parts_of_a_turn_for_angles_and_decades_for_decibels) {
    EXPECT_EQ(make_axis(-180, 0, 4, "deg").ticks, (std::vector<double>{-180, -135, -90, -45, 0}));
    EXPECT_EQ(make_axis(-370, 10, 4, "deg").ticks, (std::vector<double>{-360, -270, -180, -90, 0}));
    EXPECT_EQ(make_axis(-60, 0, 4, "deg").ticks, (std::vector<double>{-60, -45, -30, -15, 0}));
    EXPECT_EQ(make_axis(-2000, 0, 4, "deg").step, 360);
    EXPECT_EQ(make_axis(0, 10, 5, "deg").step, 2);
    EXPECT_EQ(make_axis(-100, 70, 4, "dB").ticks, (std::vector<double>{-80, -40, 0, 40}));
    EXPECT_EQ(make_axis(-50, 25, 4, "dB").ticks, (std::vector<double>{-40, -20, 0, 20}));
}

}  // namespace
