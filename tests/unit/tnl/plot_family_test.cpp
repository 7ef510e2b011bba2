// Families of curves from a dc block with several sweeps.
#include <gtest/gtest.h>

#include "temp_folder.h"
#include "tnl/plot/plot_runs.h"

namespace {

using namespace cli;

struct sweep_words {
    std::string name, unit, values;
};

// A run of one row file: a source drives the gate, another one the drain.
struct run_on_disk {
    temp_folder inside;
    run_on_disk(const std::string& columns, const std::string& rows, const std::vector<sweep_words>& sweeps,
                const sweep_words& steps, const std::string& state = "complete") {
        std::filesystem::create_directories("a.run");
        const auto written = [](const sweep_words& s) {
            return R"({"name": ")" + s.name + R"(", "unit": ")" + s.unit + R"(", "values": [)" + s.values + "]}";
        };
        std::string all;
        for (const sweep_words& s : sweeps) all += (all.empty() ? "" : ", ") + written(s);
        write_file("a.run/a.dat", rows);
        write_file("a.run/run.json", R"({"title": "t", "state": ")" + state +
                                         R"(", "files": [{"path": "a.dat", "kind": "dc", "columns": [)" + columns +
                                         R"(], "sweeps": [)" + all + R"(], "steps": )" + written(steps) + "}]}");
    }
};

const sweep_words gate{"vdc_of_VG", "V", "1, 2"}, drain{"vdc_of_VD", "V", "0, 5"};
const std::string id = R"({"name": "id", "unit": "A"})", vds = R"({"name": "vds", "unit": "V"})",
                  vgs = R"({"name": "vgs", "unit": "V"})";

plot picture(const std::vector<std::string>& words = {}) {
    std::vector<std::string> all{"a.run"};
    all.insert(all.end(), words.begin(), words.end());
    const plotted_runs runs = open_plotted(all, {});
    return plot_of_rows(runs.sources, runs.choice);
}
std::string text_of(const plot& p) {
    std::string text = p.x_quantity;
    for (const plot_panel& panel : p.panels) {
        text += " [" + panel.quantity;
        for (const plot_series& s : panel.series) text += "|" + s.name;
        text += "]";
    }
    return text;
}

TEST(family, curves_are_named_by_the_outer_value_and_stand_over_the_inner_one) {
    const run_on_disk disk(id + "," + vds, "1 0\n2 5\n\n3 0\n4 5\n", {gate}, drain);
    const plot p = picture();
    EXPECT_EQ(text_of(p), "vds [id|vdc_of_VG = 1 V|vdc_of_VG = 2 V]") << "vds shows the steps, behind another column";
    EXPECT_EQ(p.panels[0].series[1].x, (std::vector<double>{0, 5}));
    EXPECT_EQ(p.panels[0].series[1].y, (std::vector<double>{3, 4}));
}

TEST(family, a_column_that_shows_the_outer_value_gives_it_its_name_and_is_not_drawn) {
    const run_on_disk disk(vgs + "," + id + R"(, {"name": "vdc_of_VD", "unit": "V"},)" + vds,
                           "1 1 0 0\n1 2 5 5\n\n2 3 0 0\n2 4 5 5\n", {gate}, drain);
    EXPECT_EQ(text_of(picture()), "vdc_of_VD [id|vgs = 1 V|vgs = 2 V]");
}

TEST(family, without_a_column_for_the_inner_value_the_first_that_varies_is_below) {
    const run_on_disk disk(id + R"(, {"name": "p", "unit": "W"})", "1 7\n2 8\n\n3 9\n4 6\n", {gate}, drain);
    EXPECT_EQ(text_of(picture()), "id [p|vdc_of_VG = 1 V|vdc_of_VG = 2 V]");
}

TEST(family, several_outer_sweeps_all_tell_their_values) {
    const run_on_disk disk(vds + "," + id, "0 1\n5 2\n\n0 3\n5 4\n\n0 5\n5 6\n\n0 7\n5 8\n",
                           {{"temp_of_M1", "K", "300, 300, 350, 350"}, {"r_of_R1", "ohm", "1e3, 2200, 1e3, 2200"}},
                           drain);
    EXPECT_EQ(text_of(picture()),
              "vds [id|temp_of_M1 = 300 K, r_of_R1 = 1 kohm|temp_of_M1 = 300 K, r_of_R1 = 2.2 kohm|temp_of_M1 = 350 K, "
              "r_of_R1 = 1 kohm|temp_of_M1 = 350 K, r_of_R1 = 2.2 kohm]");
}

TEST(family, sweeps_in_step_leave_no_blank_line_and_are_parted_by_the_number_of_their_rows) {
    const run_on_disk disk(vds + "," + id, "0 1\n5 2\n0 3\n5 4\n", {gate}, drain);
    EXPECT_EQ(text_of(picture()), "vds [id|vdc_of_VG = 1 V|vdc_of_VG = 2 V]");
}

TEST(family, of_many_curves_the_first_and_the_last_are_named) {
    std::string rows, values;
    for (int k = 1; k <= 12; ++k) {
        const std::string y = std::to_string(k);
        rows += "0 " + y + "\n5 " + y + ".5\n\n";
        values += (k > 1 ? ", " : "") + y;
    }
    const run_on_disk disk(vds + "," + id, rows, {{"vdc_of_VG", "V", values}}, drain);
    const plot p = picture();
    EXPECT_EQ(text_of(p), "vds [id|vdc_of_VG = 1 V|||||||||||vdc_of_VG = 12 V]");
    const std::string svg = draw_svg(p);
    EXPECT_NE(svg.find("vdc_of_VG = 1 V<"), std::string::npos);
    EXPECT_NE(svg.find("vdc_of_VG = 12 V<"), std::string::npos);
    EXPECT_NE(svg.find("... and 10 more"), std::string::npos);
    // The sample of a name has the style of its curve: that of number 11, once in the legend and once in the frame.
    const std::string style = "stroke=\"#56b4e9\"";
    const std::size_t first = svg.find(style);
    EXPECT_NE(svg.find(style, first + 1), std::string::npos);
    const std::string drawn = draw_in_terminal(p, {80, 20, false, false});
    EXPECT_NE(drawn.find("2 of 12 curves are named"), std::string::npos);
    EXPECT_NE(drawn.find("vdc_of_VG = 12 V"), std::string::npos);
}

// Names come from the record, or there are none.
TEST(family, rows_that_are_not_those_of_the_record_are_not_named_by_it) {
    const std::string three = "0 1\n5 2\n\n0 3\n5 4\n\n0 5\n5 6\n", names = vds + "," + id;
    {
        const run_on_disk more(names, three, {gate}, drain);
        EXPECT_EQ(text_of(picture()), "vds [id|id (curve 1)|id (curve 2)|id (curve 3)]");
    }
    const sweep_words four{"vdc_of_VG", "V", "1, 2, 3, 4"};
    {
        const run_on_disk fewer(names, three, {four}, drain);
        EXPECT_EQ(text_of(picture()), "vds [id|id (curve 1)|id (curve 2)|id (curve 3)]") << "one is missing: which?";
    }
    const run_on_disk stopped(names, three, {four}, drain, "stopped");
    EXPECT_EQ(text_of(picture()), "vds [id|vdc_of_VG = 1 V|vdc_of_VG = 2 V|vdc_of_VG = 3 V]");
}

}  // namespace
