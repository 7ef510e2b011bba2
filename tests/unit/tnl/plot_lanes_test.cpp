#include "tnl/plot/plot_lanes.h"

#include <gtest/gtest.h>

#include "temp_folder.h"
#include "tnl/common/exit_status.h"
#include "tnl/plot/plot.h"
#include "tnl/plot/plot_runs.h"

namespace {

using namespace cli;

// clk changes each second; q counts its rises and is unknown before 1 s; en is high throughout.
result_table counter(int n = 8) {
    std::string rows = "0 0 2 2 1\n";
    for (int k = 1; k <= n; ++k) {
        const auto row = [&](int level, int count) {
            rows += std::to_string(k) + " " + std::to_string(level) + " " +
                    (count < 0 ? "2 2" : std::to_string(count & 1) + " " + std::to_string(count >> 1 & 1)) + " 1\n";
        };
        const auto count_at = [](int at) { return at == 0 ? -1 : (at - 1) / 2; };
        row((k - 1) % 2, count_at(k - 1));
        row(k % 2, count_at(k));
    }
    result_table t = read_result_table(rows, "d.dat");
    t.kind = "trns";
    t.digital = true;
    t.columns = {{"time", "s"}, {"clk", "", true}, {"q0", "", true}, {"q1", "", true}, {"en", "", true}};
    return t;
}

plot drawn(const result_table& t, plot_choice choice = {}, int n_bins = 1500) {
    return plot_of_rows({{&t, "", 0, {1, 2, 3, 4}, {}}}, choice, n_bins);
}

std::string stretches_text(const plot_series& s) {
    std::string text;
    for (const plot_stretch& x : s.stretches) {
        char part[80];
        std::snprintf(part, sizeof part, "%g-%g:%s ", x.from, x.to,
                      x.is == plot_stretch::value  ? x.text.c_str()
                      : x.is == plot_stretch::busy ? "busy"
                                                   : "?");
        text += part;
    }
    return text;
}

TEST(plot_lanes, levels_stand_on_lanes_without_being_asked_for_and_bits_are_a_number) {
    const result_table t = counter();
    const plot p = drawn(t);
    ASSERT_EQ(p.panels.size(), 1u);
    EXPECT_EQ(p.panels[0].form, panel_form::logic);
    ASSERT_EQ(p.panels[0].series.size(), 3u);
    EXPECT_EQ(p.panels[0].series[1].name, "q[1:0]");
    EXPECT_EQ(stretches_text(p.panels[0].series[1]), "0-1:? 1-3:0 3-5:1 5-7:2 7-8:3 ");
    EXPECT_EQ(stretches_text(p.panels[0].series[0]), "");
    const plot_series& clk = p.panels[0].series[0];
    ASSERT_GE(clk.x.size(), 4u);
    EXPECT_EQ(clk.y[0], 0);
    EXPECT_EQ(clk.x[1], 1);
    EXPECT_EQ(clk.y[1], 0);
    EXPECT_EQ(clk.x[2], 1);
    EXPECT_EQ(clk.y[2], 1);
}

TEST(plot_lanes, bits_have_lanes_of_their_own_if_wished_and_tell_where_they_are_unknown) {
    const result_table t = counter();
    plot_choice choice;
    choice.bits = true;
    const plot p = drawn(t, choice);
    ASSERT_EQ(p.panels[0].series.size(), 4u);
    EXPECT_EQ(p.panels[0].series[1].name, "q0");
    EXPECT_EQ(stretches_text(p.panels[0].series[1]), "0-1:? ");
}

// Rows of other events just before an edge, within a column of the picture, do not slant it.
TEST(plot_lanes, edges_stay_upright) {
    result_table t = read_result_table("0 0 0\n4.99 0 0\n4.99 0 1\n5 0 1\n5 1 1\n10 1 1\n", "d.dat");
    t.columns = {{"time", "s"}, {"a", "", true}, {"b", "", true}};
    t.digital = true;
    const plot_series a = plot_of_rows({{&t, "", 0, {1}, {}}}, {}, 100).panels[0].series[0];
    EXPECT_EQ(a.x, (std::vector<double>{0, 5, 5, 10}));
    EXPECT_EQ(a.y, (std::vector<double>{0, 0, 1, 1}));
}

TEST(plot_lanes, keep_to_the_window) {
    const result_table t = counter();
    plot_choice choice;
    choice.from = 3.5;
    choice.to = 6.5;
    const plot p = drawn(t, choice);
    EXPECT_EQ(stretches_text(p.panels[0].series[1]), "3.5-5:1 5-6.5:2 ");
    EXPECT_EQ(p.panels[0].series[0].x.front(), 3.5);
    EXPECT_EQ(p.panels[0].series[0].x.back(), 6.5);
    choice.from = 3.2;
    choice.to = 3.8;  // between two events
    const plot_series still = drawn(t, choice).panels[0].series[0];
    EXPECT_EQ(still.x, (std::vector<double>{3.2, 3.8}));
    EXPECT_EQ(still.y, (std::vector<double>{1, 1}));
    choice.from_zero = true;
    EXPECT_EQ(stretches_text(drawn(t, choice).panels[0].series[1]), "0-0.6:1 ");
}

TEST(plot_lanes, more_changes_than_a_picture_shows_are_a_busy_stretch) {
    const result_table t = counter(20000);
    const plot p = drawn(t, {}, 100);
    EXPECT_EQ(stretches_text(p.panels[0].series[1]), "0-20000:busy ");
    EXPECT_LE(p.panels[0].series[0].x.size(), 400u);
}

TEST(plot_lanes, a_short_spike_of_a_number_is_left_out) {
    result_table t = read_result_table("0 0 0\n5 0 0\n5 1 0\n5.001 1 0\n5.001 0 0\n10 0 0\n", "d.dat");
    t.columns = {{"time", "s"}, {"q0", "", true}, {"q1", "", true}};
    t.digital = true;
    const plot p = plot_of_rows({{&t, "", 0, {1, 2}, {}}}, {}, 100);
    EXPECT_EQ(stretches_text(p.panels[0].series[0]), "0-10:0 ");
}

TEST(plot_lanes, a_level_that_is_put_into_a_panel_is_a_line) {
    const result_table t = counter();
    plot_choice choice;
    choice.panels = {{"clk"}};
    const plot p = drawn(t, choice);
    ASSERT_EQ(p.panels.size(), 2u);
    EXPECT_EQ(p.panels[0].form, panel_form::lines);
    EXPECT_EQ(p.panels[0].series[0].name, "clk");
}

int count_of(const std::string& text, const std::string& what) {
    int n = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

TEST(plot_lanes, are_drawn_with_numbers_and_hatching) {
    const result_table t = counter();
    const std::string svg = draw_svg(drawn(t));
    for (const char* number : {">0</text>", ">1</text>", ">2</text>", ">3</text>"})
        EXPECT_GE(count_of(svg, std::string("font-size=\"11\"") + number), 1) << number;
    EXPECT_EQ(count_of(svg, "fill=\"#eeeeee\""), 1);
    EXPECT_EQ(count_of(svg, "stroke-linecap=\"round\""), 0);  // no dots at the edges
    plot_choice choice;
    choice.bits = true;
    EXPECT_EQ(count_of(draw_svg(drawn(t, choice)), "fill=\"#eeeeee\""), 2);
}

TEST(plot_lanes, are_drawn_in_plain_terminals) {
    const result_table t = counter();
    // 48 characters: changes at 1, 3, 5 and 7 s stand at 47/8, 3 * 47/8 ...
    EXPECT_EQ(draw_in_terminal(drawn(t), {60, 20, false, false}),
              "   clk +      *******     *******    *******     *******\n"
              "       |*******     *******     ******     *******     *\n"
              "       |\n"
              "q[1:0] +//////|     0     |    1     |     2     |  3\n"
              "       |//////|ooooooooooo|oooooooooo|ooooooooooo|ooooo\n"
              "       |\n"
              "    en +++++++++++++++++++++++++++++++++++++++++++++++++\n"
              "       |\n"
              "       |\n"
              "       ++-----------+-----------+----------+-----------+\n"
              "        0           2           4          6           8\n"
              "                            time, s\n");
}

// ---- an analog and a digital file of one run ----

struct mixed_run {
    temp_folder inside;
    mixed_run() {
        std::filesystem::create_directories("m.run");
        write_file("m.run/wave.dat", "0 1 5\n1 2 5\n2 3 5\n3 3 5\n4 3 5\n");
        write_file("m.run/logic.dat", "0 0 2\n2 0 2\n2 1 2\n4 1 3\n");
        write_file("m.run/start.dat", "1 5\n");
        run_record r;
        r.state = "complete";
        r.files = {{"start.dat", "startup", {{"vout", "V"}, {"il", "A"}}, 1, 1},
                   {"wave.dat", "trns", {{"time", "s"}, {"vout", "V"}, {"il", "A"}}, 5, 1},
                   {"logic.dat", "trns", {{"time", "s"}, {"gate", "", true}, {"busy", "", true}}, 4, 1}};
        r.files[2].digital = true;
        r.files[2].offset = 2;
        write_file("m.run/run.json", to_json(r));
    }
};

std::string panels_text(const std::vector<std::string>& words, plot_wish wish = {}) {
    const plotted_runs runs = open_plotted(words, wish);
    std::string text;
    for (const plot_panel& panel : plot_of_rows(runs.sources, runs.choice).panels) {
        text += text.empty() ? "" : " | ";
        for (const plot_series& s : panel.series) text += (&s == panel.series.data() ? "" : " ") + s.name;
    }
    for (const std::string& note : runs.notes) text += "\n" + note;
    return text;
}

TEST(mixed_plot, lanes_stand_below_the_curves_of_the_run) {
    const mixed_run run;
    EXPECT_EQ(panels_text({"m.run"}),
              "vout | il | gate busy\nm.run: shown is wave.dat, logic.dat; --file takes also start.dat");
    EXPECT_EQ(panels_text({"m.run", "gate", "vout"}),
              "vout | gate\nm.run: shown is wave.dat, logic.dat; --file takes also start.dat");
}

TEST(mixed_plot, lanes_of_a_short_part_of_the_run_are_shown_when_asked_for) {
    const mixed_run run;
    write_file("m.run/logic.dat", "3.5 0 2\n3.7 0 2\n3.7 1 2\n4 1 3\n");
    EXPECT_EQ(panels_text({"m.run"}), "vout | il\nm.run: shown is wave.dat; --file takes also start.dat, logic.dat");
    EXPECT_EQ(panels_text({"m.run", "gate", "vout"}).substr(0, 12), "vout | gate\n");
}

TEST(mixed_plot, a_file_or_columns_of_one_kind_stand_alone) {
    const mixed_run run;
    plot_wish wish;
    wish.file = "logic.dat";
    EXPECT_EQ(panels_text({"m.run"}, wish), "gate busy");
    EXPECT_EQ(panels_text({"m.run", "vout"}).substr(0, 4), "vout");
    EXPECT_EQ(panels_text({"m.run", "gate"}).substr(0, 5), "gate\n");
    EXPECT_THROW(panels_text({"m.run", "gate + vout"}), usage_error);
}

}  // namespace
