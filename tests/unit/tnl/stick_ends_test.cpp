// Sticks whose axis does not reach down to zero.
#include <gtest/gtest.h>

#include <cmath>
#include <regex>

#include "tnl/plot/plot_rows.h"

using namespace cli;

namespace {

plot plot_of(const std::string& rows, std::optional<double> lo, std::optional<double> hi) {
    static result_table t;
    t = read_result_table(rows, "t.dat");
    t.columns = {{"harmonic", ""}, {"v", "V"}};
    t.kind = "fourier";
    plot_choice choice;
    choice.y = {{"", lo, hi}};
    return plot_of_rows({{&t, "", 0, {1}, {}}}, choice);
}

std::vector<double> finite(const std::vector<double>& values) {
    std::vector<double> some;
    for (const double v : values)
        if (std::isfinite(v)) some.push_back(v);
    return some;
}

// y of the first points of the sticks' path and of the frame's lower edge, px.
struct feet_of_picture {
    std::vector<double> feet;
    double floor = 0, ceiling = 0;
};
feet_of_picture feet(const plot& p) {
    const std::string svg = draw_svg(p);
    feet_of_picture out;
    std::smatch frame, path;
    EXPECT_TRUE(std::regex_search(
        svg, frame,
        std::regex("<rect x=\"[0-9.]+\" y=\"([0-9.]+)\" width=\"[0-9.]+\" height=\"([0-9.]+)\" fill=\"none\"")));
    out.ceiling = std::stod(frame[1]);
    out.floor = out.ceiling + std::stod(frame[2]);
    EXPECT_TRUE(std::regex_search(svg, path, std::regex("<path d=\"([^\"]+)\" fill=\"none\" stroke=\"#0072b2\"")));
    const std::string d = path[1];
    const std::regex move("M[0-9.]+ ([0-9.]+)");
    for (std::sregex_iterator i(d.begin(), d.end(), move), end; i != end; ++i) out.feet.push_back(std::stod((*i)[1]));
    return out;
}

}  // namespace

TEST(stick_ends, values_that_the_axis_does_not_show_have_no_stick) {
    const plot p = plot_of("0 1\n1 10\n2 4\n3 30\n", 5.0, 20.0);
    EXPECT_EQ(finite(p.panels[0].series[0].y), (std::vector<double>{10, 20}));
    const plot below = plot_of("0 -1\n1 -10\n2 4\n3 -30\n", -20.0, -5.0);
    EXPECT_EQ(finite(below.panels[0].series[0].y), (std::vector<double>{-10, -20}));
    const plot around = plot_of("0 1\n1 -10\n2 30\n", -5.0, 20.0);
    EXPECT_EQ(finite(around.panels[0].series[0].y), (std::vector<double>{1, -5, 20}));
}

TEST(stick_ends, sticks_begin_within_the_frame) {
    const feet_of_picture above = feet(plot_of("0 1\n1 10\n2 8\n", 5.0, 20.0));
    ASSERT_EQ(above.feet.size(), 2u);
    for (const double y : above.feet) EXPECT_NEAR(y, above.floor, 0.11);
    const feet_of_picture below = feet(plot_of("0 -1\n1 -10\n2 -8\n", -20.0, -5.0));
    ASSERT_EQ(below.feet.size(), 2u);
    for (const double y : below.feet) EXPECT_NEAR(y, below.ceiling, 0.11);
}

TEST(stick_ends, an_axis_of_which_one_end_is_given_begins_where_the_sticks_do) {
    const axis y = y_axis(plot_of("0 3\n1 10\n2 8\n", {}, 20.0).panels[0], 5);
    EXPECT_EQ(y.lo, 0);
    EXPECT_EQ(y.hi, 20);
    EXPECT_EQ(y_axis(plot_of("0 -3\n1 -10\n", -20.0, {}).panels[0], 5).hi, 0);
}

TEST(stick_ends, the_terminal_draws_within_its_panel) {
    const std::string text = draw_in_terminal(plot_of("0 1\n1 10\n2 8\n", 5.0, 20.0), {60, 20, false, false});
    EXPECT_NE(text.find('*'), std::string::npos) << text;
}
