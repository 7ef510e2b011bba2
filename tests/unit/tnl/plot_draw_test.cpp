#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>

#include "tnl/common/exit_status.h"
#include "tnl/common/text_width.h"
#include "tnl/plot/plot.h"

namespace {

using namespace cli;

plot one_panel(std::vector<plot_series> series) {
    plot p;
    p.title = "t";
    p.x_quantity = "x";
    p.panels.push_back({series.size() == 1 ? "y" : "", "", panel_form::lines, false, std::move(series)});
    return p;
}
plot line_up() { return one_panel({{"up", {0, 1, 2}, {0, 1, 2}}}); }

struct svg_element {
    std::string name;
    std::map<std::string, std::string> attribute;
    std::string text;
    double number(const std::string& key) const { return std::stod(attribute.at(key)); }
};

std::vector<svg_element> elements_of(const std::string& svg) {
    std::vector<svg_element> out;
    for (std::size_t at = 0; (at = svg.find('<', at)) != std::string::npos;) {
        const std::size_t end = svg.find('>', at);
        const std::string tag = svg.substr(at + 1, end - at - 1);
        at = end;
        if (tag[0] == '/') continue;
        svg_element e{tag.substr(0, tag.find(' ')), {}, svg.substr(end + 1, svg.find('<', end) - end - 1)};
        for (std::size_t from = e.name.size(), eq; (eq = tag.find("=\"", from)) != std::string::npos;) {
            const std::size_t close = tag.find('"', eq + 2);
            e.attribute[tag.substr(from + 1, eq - from - 1)] = tag.substr(eq + 2, close - eq - 2);
            from = close + 1;
        }
        out.push_back(std::move(e));
    }
    return out;
}

// The first path in the colour of the first series, cut into its commands with their numbers.
std::vector<std::pair<char, std::vector<double>>> first_path(const std::string& svg) {
    std::vector<std::pair<char, std::vector<double>>> out;
    for (const svg_element& e : elements_of(svg)) {
        if (e.name != "path" || e.attribute.at("stroke") != "#0072b2") continue;
        const std::string& d = e.attribute.at("d");
        for (const char* at = d.c_str(); *at;) {
            if (std::isalpha(static_cast<unsigned char>(*at))) {
                out.push_back({*at++, {}});
                continue;
            }
            char* behind = nullptr;
            out.back().second.push_back(std::strtod(at, &behind));
            at = behind > at ? behind : at + 1;
        }
        break;
    }
    return out;
}

TEST(draw_in_terminal, plain_text_rises_from_left_to_right) {
    const std::string text = draw_in_terminal(line_up(), {60, 8, false, false});
    std::vector<std::size_t> column;  // of the first mark in each row of the frame
    std::size_t from = 0;
    for (std::size_t end; (end = text.find('\n', from)) != std::string::npos; from = end + 1) {
        const std::string row = text.substr(from, end - from);
        if (const std::size_t at = row.find('*'); at != std::string::npos) column.push_back(at);
    }
    EXPECT_GE(column.size(), 7u);
    EXPECT_TRUE(std::is_sorted(column.rbegin(), column.rend()));
    EXPECT_EQ(text.find('\x1b'), std::string::npos);
    for (const char c : text) EXPECT_TRUE(static_cast<unsigned char>(c) < 0x80);
}

TEST(draw_in_terminal, bears_points_that_are_not_finite_and_no_points) {
    plot p = line_up();
    p.panels[0].series[0].y = {NAN, INFINITY, 1};
    EXPECT_FALSE(draw_in_terminal(p, {40, 8, true, true}).empty());
    p.panels[0].series.clear();
    EXPECT_FALSE(draw_in_terminal(p, {40, 8, true, true}).empty());
    p.panels.clear();
    EXPECT_FALSE(draw_in_terminal(p, {40, 8, true, true}).empty());
}

TEST(draw_in_terminal, keeps_to_the_width_with_long_names_many_series_and_panels) {
    plot p = line_up();
    p.title = std::string(300, 't');
    for (int k = 0; k < 50; ++k)
        p.panels[0].series.push_back({"a_very_long_name_of_a_series_" + std::to_string(k), {0, 1}, {0, double(k)}});
    p.panels.push_back(p.panels[0]);
    for (const int columns : {40, 80, 200})
        for (const bool utf8 : {false, true}) {
            const std::string text = draw_in_terminal(p, {columns, 20, utf8, false});
            std::size_t from = 0;
            for (std::size_t end; (end = text.find('\n', from)) != std::string::npos; from = end + 1)
                EXPECT_LE(n_characters(text.substr(from, end - from)), columns) << text.substr(from, end - from);
        }
}

TEST(draw_in_terminal, names_no_control_characters) {
    plot p = line_up();
    p.title = "\x1b[2J";
    p.panels[0].series[0].name = "a\tb\x07";
    const std::string text = draw_in_terminal(p, {60, 8, true, false});
    for (const char c : text) EXPECT_TRUE(c == '\n' || static_cast<unsigned char>(c) >= ' ');
}

TEST(draw_svg, breaks_the_line_at_points_that_are_not_finite_and_escapes_words) {
    plot p = one_panel({{"s", {0, 1, 2, 3, 4}, {0, 1, NAN, 1, 2}}});
    p.title = "a < b & c";
    const std::string svg = draw_svg(p);
    EXPECT_NE(svg.find("a &lt; b &amp; c"), std::string::npos);
    EXPECT_EQ(svg.find("nan"), std::string::npos);
    int begins = 0;
    for (const auto& [command, numbers] : first_path(svg)) begins += command == 'M';
    EXPECT_EQ(begins, 2);
}

TEST(draw_svg, breaks_the_line_where_a_log_axis_has_no_place) {
    plot p = one_panel({{"s", {1, 10, 0, -5, 100, 20}, {0, 1, 2, 3, 4, 5}}});
    p.log_x = true;
    int begins = 0;
    for (const auto& [command, numbers] : first_path(draw_svg(p))) begins += command == 'M';
    EXPECT_EQ(begins, 2);
}

TEST(draw_svg, gives_the_same_bytes_for_the_same_curves) { EXPECT_EQ(draw_svg(line_up()), draw_svg(line_up())); }

TEST(draw_svg, puts_points_to_their_places) {
    const std::string svg = draw_svg(one_panel({{"s", {0, 1}, {0, 1}}}), {720, 440});
    const std::vector<svg_element> elements = elements_of(svg);
    const auto frame = std::find_if(elements.begin(), elements.end(),
                                    [](const svg_element& e) { return e.name == "rect" && e.attribute.count("x"); });
    ASSERT_NE(frame, elements.end());
    const auto path = first_path(svg);
    ASSERT_EQ(path.size(), 2u);
    ASSERT_EQ(path[1].first, 'l');
    const double height = frame->number("height");
    EXPECT_NEAR(path[0].second.at(0), frame->number("x"), 0.11);
    EXPECT_NEAR(path[1].second.at(0), frame->number("width"), 0.21);
    EXPECT_NEAR(path[0].second.at(1), frame->number("y") + height * (1 - 0.05 / 1.1), 0.11);  // a twentieth stays free
    EXPECT_NEAR(path[1].second.at(1), -height / 1.1, 0.21);
}

TEST(draw_svg, names_twelve_series_and_counts_the_others) {
    std::vector<plot_series> many;
    for (int k = 0; k < 42; ++k) many.push_back({"s" + std::to_string(k), {0, 1}, {0, double(k)}});
    const std::string svg = draw_svg(one_panel(many));
    EXPECT_NE(svg.find(">s11</text>"), std::string::npos);
    EXPECT_EQ(svg.find(">s12</text>"), std::string::npos);
    EXPECT_NE(svg.find(">... and 30 more</text>"), std::string::npos);
}

TEST(draw_svg, draws_sticks_from_zero) {
    plot p;
    p.panels.push_back({"v", "V", panel_form::sticks, false, {{"v", {0, 1, 3}, {1, 80, -20}}}});
    const std::string svg = draw_svg(p);
    const auto path = first_path(svg);
    ASSERT_EQ(path.size(), 6u);
    const double foot = path[0].second.at(1);
    const double signs[] = {-1, -1, 1};  // downwards is positive
    for (std::size_t k = 0; k < 3; ++k) {
        EXPECT_EQ(path[2 * k].first, 'M');
        EXPECT_EQ(path[2 * k].second.at(1), foot);
        EXPECT_EQ(path[2 * k + 1].first, 'v');
        EXPECT_GT(path[2 * k + 1].second.at(0) * signs[k], 0);
    }
}

TEST(draw_svg, stays_small_for_many_points_and_for_many_series) {
    plot p = one_panel({});
    for (int k = 0; k < 60; ++k) {
        plot_series s{"s", {}, {}};
        for (int i = 0; i < 20000; ++i) s.x.push_back(i), s.y.push_back((i * (k + 7919)) % 1009);
        p.panels[0].series.push_back(std::move(s));
    }
    EXPECT_LT(draw_svg(p).size(), 500000u);
}

TEST(draw_svg, refuses_a_height_that_the_panels_do_not_fit_into) {
    plot p = line_up();
    for (int k = 0; k < 20; ++k) p.panels.push_back(p.panels[0]);
    EXPECT_THROW(draw_svg(p, {720, 300}), usage_error);
    EXPECT_NE(draw_svg(p).find("<svg"), std::string::npos);
}

TEST(draw_svg, bears_no_panel_no_series_and_bytes_that_are_no_text) {
    plot p;
    EXPECT_NE(draw_svg(p).find("</svg>"), std::string::npos);
    p = one_panel({});
    EXPECT_NE(draw_svg(p).find("no values to show"), std::string::npos);
    p.title = "\xff\xc3(\xed\xa0\x80 \xc3\xa4";
    EXPECT_NE(draw_svg(p).find("?\?(?\?? \xc3\xa4"), std::string::npos);
}

// Boxes of all words of a picture must not touch; words turned by a right angle have their own margin.
TEST(draw_svg, words_never_overlap) {
    struct box {
        double x0, x1, y0, y1;
        std::string text;
    };
    for (const double size : {1e-12, 1e-3, 1.0, 999.0, 1e5, 1e300})
        for (const double offset : {0.0, 1.0, 100.0})
            for (const int n_series : {1, 2, 12, 40})
                for (const int width : {200, 720}) {
                    plot p;
                    p.title = "a long title of a deck that goes on and on and on, until nobody reads it any more";
                    p.x_quantity = "time";
                    p.x_unit = "s";
                    for (const char* unit : {"V", "A", "rad/s"}) {
                        plot_panel panel{n_series == 1 ? "voltage_of_the_second_winding_of_transformer_3" : "",
                                         unit,
                                         panel_form::lines,
                                         false,
                                         {}};
                        for (int k = 0; k < n_series; ++k)
                            panel.series.push_back({"name_of_series_number_" + std::to_string(k * 1000),
                                                    {size * offset, size * (offset + 1)},
                                                    {size * (offset + k), -size}});
                        p.panels.push_back(std::move(panel));
                    }
                    const std::string svg = draw_svg(p, {width, 0});
                    std::vector<box> boxes;
                    for (const svg_element& e : elements_of(svg)) {
                        if (e.name != "text" || e.attribute.count("transform")) continue;
                        const std::string& text = e.text;
                        const double font = e.attribute.count("font-weight") ? 18 : 13;
                        const double x = e.number("x"), y = e.number("y"), w = font * text_width(text);
                        const auto anchor = e.attribute.find("text-anchor");
                        const std::string end = anchor == e.attribute.end() ? "start" : anchor->second;
                        const double x0 = end == "middle" ? x - w / 2 : end == "end" ? x - w : x;
                        boxes.push_back({x0, x0 + w, y - 0.75 * font, y + 0.2 * font, text});
                        EXPECT_GE(x0, 0) << text;
                        EXPECT_LE(x0 + w, width) << text << " offset " << offset << " size " << size;
                    }
                    for (std::size_t i = 0; i < boxes.size(); ++i)
                        for (std::size_t j = 0; j < i; ++j) {
                            const box &a = boxes[i], &b = boxes[j];
                            EXPECT_FALSE(a.x0 < b.x1 && b.x0 < a.x1 && a.y0 < b.y1 && b.y0 < a.y1)
                                << a.text << " over " << b.text << ", size " << size << ", width " << width;
                        }
                }
}

TEST(shortened, leaves_out_the_middle_between_whole_characters) {
    EXPECT_EQ(shortened_to("abcdefghij", 10), "abcdefghij");
    EXPECT_EQ(shortened_to("abcdefghijk", 9), "abc...ijk");
    EXPECT_EQ(shortened_to("\xc3\xa4\xc3\xb6\xc3\xbc\xc3\xa4\xc3\xb6\xc3\xbc", 5), "\xc3\xa4...\xc3\xbc");
    EXPECT_EQ(shortened_to("abc", 0), "...");
    EXPECT_LE(text_width(shortened(std::string(500, 'm'), 12)), 12);
}

}  // namespace
