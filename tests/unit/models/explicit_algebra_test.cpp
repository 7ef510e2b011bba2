// Explicit blocks that are plain functions of their inputs and of time.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "explicit_unit.h"
#include "halt_throws.h"

namespace {

constexpr double pi = std::numbers::pi;

struct value_case {
    std::string name;
    std::vector<std::pair<std::string, double>> parameters;
    std::vector<double> inputs;
    double y;
};

TEST(explicit_algebra, gives_its_formulas_evaluated_and_as_rows) {
    const value_case cases[] = {
        {"const", {{"k", -2.5}}, {}, -2.5},
        {"sum_2", {{"k0", 0.5}, {"k1", 2}, {"k2", -3}}, {5, 7}, 0.5 + 10 - 21},
        {"sum_2", {}, {5, 7}, 12},
        {"sum_3", {{"k0", 1}, {"k1", 2}, {"k2", 3}, {"k3", 4}}, {5, 6, 7}, 1 + 10 + 18 + 28},
        {"mult_2", {{"k", 0.5}}, {6, -7}, -21},
        {"lmtr", {{"x_min", -2}, {"x_max", 5}}, {7}, 5},
        {"lmtr", {{"x_min", -2}, {"x_max", 5}}, {-7}, -2},
        {"lmtr", {{"x_min", -2}, {"x_max", 5}}, {4.5}, 4.5},
        {"sine", {{"a", 2}, {"k", pi}, {"ph", pi / 3}}, {0.5}, 1},
        {"max_4", {}, {1, 4, -9, 3}, 4},
        {"max_4", {}, {-1, -4, -9, -0.5}, -0.5},
        {"div_2", {{"k", 3}}, {5, 2}, 7.5},
        {"div_2", {}, {5, -2}, -2.5},
        {"div_2", {}, {5, 0}, 5e30},
        {"div_2", {}, {5, -1e-40}, -5e30},
        {"multscl", {{"k", -3}}, {5}, -15},
        {"deg_to_rad", {}, {180}, pi},
        {"deg_to_rad", {}, {-30}, -pi / 6},
        {"ceil", {}, {1.1}, 2},
        {"ceil", {}, {-1.1}, -1},
        {"ceil", {}, {3}, 3},
        {"floor", {}, {1.9}, 1},
        {"floor", {}, {-1.1}, -2},
        {"int_nearest", {}, {1.4}, 1},
        {"int_nearest", {}, {1.5}, 2},
        {"int_nearest", {}, {-1.5}, -2},
        {"int_nearest", {}, {1e300}, 1e300},
        {"not", {{"y_low", 2}, {"y_high", 3}}, {0}, 3},
        {"not", {{"y_low", 2}, {"y_high", 3}}, {1}, 2},
    };
    for (const value_case& c : cases) {
        explicit_unit u(c.name);
        for (const auto& [word, value] : c.parameters) u.r(word) = value;
        u.prepare();
        EXPECT_NEAR(u.output(0, c.inputs), c.y, 1e-12 * std::max(1.0, std::abs(c.y))) << c.name;
        u.x.vr[c.inputs.size()] = 0.25;  // the row is what the output has too much
        u.algebra();
        EXPECT_NEAR(0.25 - u.x.fh[0], c.y, 1e-12 * std::max(1.0, std::abs(c.y))) << c.name;
    }
}

TEST(explicit_algebra, takes_the_first_of_equal_variables_for_the_largest) {
    explicit_unit u("max_4");
    u.x.vr = {1, 7, 7, 3, 0, 0};
    u.algebra();
    EXPECT_EQ(u.jac.dhdvr[0][1], -1);
    EXPECT_EQ(u.jac.dhdvr[0][2], 0);
}

TEST(explicit_logic, follows_its_truth_table_with_levels_of_its_own) {
    struct table {
        const char* name;
        bool at[4];  // of inputs 00, 01, 10, 11
    };
    for (const table& t : {table{"and_2", {false, false, false, true}}, table{"nand_2", {true, true, true, false}},
                           table{"or_2", {false, true, true, true}}, table{"nor_2", {true, false, false, false}},
                           table{"xor_2", {false, true, true, false}}})
        for (int i = 0; i < 4; ++i) {
            explicit_unit u(t.name);
            u.r("x_low") = -10;
            u.r("x_high") = 20;  // the middle is 5
            u.r("y_low") = -1;
            u.r("y_high") = 7;
            u.prepare();
            EXPECT_EQ(u.output(0, {i & 2 ? 5.1 : 4.9, i & 1 ? 5.1 : 4.9}), t.at[i] ? 7 : -1) << t.name << ' ' << i;
        }
}

TEST(explicit_logic, refuses_levels_without_a_middle_between_them) {
    for (const char* name : {"and_2", "nand_2", "or_2", "nor_2", "xor_2", "not"}) {
        explicit_unit u(name);
        u.r("x_low") = 2.5;
        EXPECT_HALT(u.prepare(), std::string(name) + ".xbe: x_high=1\n" + name +
                                     ".xbe: x_low=2.5\n  x_high must be above x_low. Halting...\n");
    }
}

TEST(explicit_sources, run_over_the_explicit_time) {
    explicit_unit u("srcac");
    u.r("a") = 3;
    u.r("f_hz") = 50;
    u.r("phi") = 30;
    u.r("t0") = 1e-3;
    u.r("dc") = 0.5;
    u.prepare();
    u.flags.time_given = 77;  // of the other side
    for (const double t : {0.0, 1e-3, 4e-3, 0.123})
        EXPECT_NEAR(u.output(t), 0.5 + 3 * std::sin(100 * pi * (t - 1e-3) + pi / 6), 1e-12);
    EXPECT_NEAR(u.output(1e-3), 2, 1e-12);  // 0.5 + 3 sin 30
}

TEST(explicit_sources, take_over_general_variables) {
    explicit_unit u("gtox");
    u.gvr("g") = 4.25;
    EXPECT_EQ(u.output(0), 4.25);
    u.vr("y") = 4;
    u.algebra();
    EXPECT_EQ(u.x.fh[0], -0.25);
    EXPECT_EQ(u.jac.dhdgvr[0][0], -1);
}

TEST(explicit_algebra, refuses_a_limiter_without_a_range) {
    explicit_unit u("lmtr");
    u.r("x_min") = 2;
    EXPECT_HALT(u.prepare(), "lmtr.xbe: x_min > x_max ?!\n");
}

// ---- tables ----

TEST(explicit_tables, are_straight_between_the_points_of_a_file) {
    explicit_unit u("lut_file_1_to_3");
    u.dp.xbe.table = {{{}, {0, 10, -1, 1, 30, -2, 4, 20, -4}, {3}, 3}};  // y1, y2, y3 of three points
    u.r("x1_begin") = 1;
    u.r("x1_end") = 5;  // points at 1, 3, 5
    u.prepare();
    const double cases[][4] = {{0, 0, 10, -1}, {1, 0, 10, -1},          {2, 0.5, 20, -1.5},
                               {3, 1, 30, -2}, {4.5, 3.25, 22.5, -3.5}, {9, 4, 20, -4}};
    for (const auto& c : cases) {
        u.output(0, {c[0]});
        for (int k = 0; k < 3; ++k) EXPECT_NEAR(u.x.vr[static_cast<std::size_t>(1 + k)], c[1 + k], 1e-12) << c[0];
    }
}

TEST(explicit_tables, follow_their_points_over_time_with_breaks_at_the_corners) {
    explicit_unit u("src_table_1");
    u.dp.xbe.table = {{{0.1, 0.2, 0.2, 0.5}, {1, 3, -1, 2}}};
    u.prepare();
    EXPECT_EQ(u.output(0), 1);
    EXPECT_NEAR(u.output(0.15), 2, 1e-12);
    EXPECT_EQ(u.output(0.2), -1);
    EXPECT_NEAR(u.output(0.3), 0, 1e-12);
    EXPECT_EQ(u.output(7), 2);
    double t = 0;
    for (const double corner : {0.1, 0.2, 0.5, 1e9}) EXPECT_EQ(t = u.next_break(t), corner);
    EXPECT_HALT(u.output(NAN), "src_table_1.xbe: time loop did not end.\n  Halting...\n");
}

TEST(explicit_tables, stop_without_a_table) {
    for (const char* name : {"lut_file_1_to_3", "src_table_1"}) {
        explicit_unit u(name);
        u.dp.xbe.of_unit = {-1};
        EXPECT_HALT(u.prepare(), std::string(name) + ".xbe: i_file=-1\n  Halting...\n");
    }
}

}  // namespace
