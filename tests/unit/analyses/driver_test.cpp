// driver_test.cpp -- what a block does around its solves.
#include <gtest/gtest.h>

#include "whole_run.h"

namespace {
const std::string diode =
    "eelement name=V1 type=vsrcdc p=in n=0 vdc=1\neelement name=R1 type=r p=in n=a r=1k\n"
    "eelement name=D1 type=diode_spice_1 p=a n=0\noutvar: va=nodev_of_a\n";

// Iterations of each solve, by the lines that write_rhs2 makes.
std::vector<int> iterations(const std::string& text) {
    std::vector<int> n;
    std::istringstream in(text);
    for (std::string l; std::getline(in, l);) {
        if (l.find("norm_rhs_2=") == std::string::npos) continue;
        if (l.starts_with("0 ")) n.push_back(0);
        ++n.back();
    }
    return n;
}
std::vector<int> iterations_of_grid(const std::string& type) {
    const deck_text deck{diode,
                         "va",
                         {"solve_type " + type +
                          "\nmethod: chk_only_rhs2=yes norm_2=1e-9 write_rhs2=yes gmin_step=no\n"
                          "vary_parm vdc_of_V1 type table 5 5\nvary_parm r_of_R1 type table 1k 100\n"}};
    const whole_run run(deck.str());
    EXPECT_EQ(run.rows("out1.dat").size(), 4u) << run.text;
    return iterations(run.text);
}
std::string output(const std::string& file, const std::string& what) {
    return "begin_output\nfilename " + file + "\nvariables: " + what + "\nend_output\n";
}
}  // namespace

// The third point has the values of the first.
TEST(grid, of_dc_starts_a_curve_where_the_curve_before_it_started) {
    const std::vector<int> n = iterations_of_grid("dc");
    ASSERT_EQ(n.size(), 4u);
    EXPECT_EQ(n[2], 1) << "the first point's solution";
}
TEST(grid, of_startup_starts_every_point_from_the_point_before) {
    const std::vector<int> n = iterations_of_grid("startup");
    ASSERT_EQ(n.size(), 4u);
    EXPECT_GT(n[2], 1);
    EXPECT_EQ(n[3], n[1]) << "from the same point to the same point";
}

TEST(grid, parts_its_curves_in_every_file_of_the_block) {
    const deck_text deck{diode,
                         "va",
                         {"solve_type dc\nvary_parm vdc_of_V1 type table 1 2 3\nvary_parm r_of_R1 type table 1k 2k\n" +
                          output("p.dat", "parms") + output("all.dat", "all_nodes")}};
    const whole_run run(deck.str());
    EXPECT_FALSE(run.stopped) << run.text;
    EXPECT_EQ(run.file("p.dat").substr(0, 13), "\n\neelement V1");
    std::istringstream in(run.file("all.dat"));
    std::string shape;
    for (std::string l; std::getline(in, l);) shape += l.empty() ? '-' : 'x';
    EXPECT_EQ(shape, "xx-xx-xx");
}

TEST(unknown_solve_type, solves_nothing_says_nothing_and_writes_what_stands) {
    const std::string solution = "method: chk_only_rhs2=yes norm_2=1e-9\n";
    const deck_text deck{
        diode,
        "va",
        {"solve_type dc\n" + solution + output("s1.dat", "solution") + output("p1.dat", "parms"),
         "solve_type dcc\n" + solution + output("s2.dat", "solution") + output("p2.dat", "parms"), "solve_type dc\n"}};
    const whole_run run(deck.str());
    const std::string size = "mat::set_mat_2: system matrix size is 3 x 3\n";
    EXPECT_EQ(run.text, size + size + "TARNEL: Program completed.\n");
    EXPECT_EQ(run.file("out2.dat"), "");
    EXPECT_NE(run.file("s1.dat"), "");
    EXPECT_EQ(run.file("s2.dat"), run.file("s1.dat"));
    EXPECT_EQ(run.file("p2.dat"), run.file("p1.dat"));
}
