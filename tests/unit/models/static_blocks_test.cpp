// Blocks without memory against their formulas: functions of one to three variables, gates, transforms of three phases.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "block_unit.h"
#include "halt_throws.h"

namespace {

constexpr double pi = std::numbers::pi;

struct value_case {
    std::string name;
    std::vector<std::pair<std::string, double>> parameters;
    std::vector<double> inputs, outputs;
};

// The outputs that make all functions 0, in each analysis.
void expect_outputs(const value_case& c) {
    SCOPED_TRACE(c.name);
    block_unit u(c.name);
    for (const auto& [word, value] : c.parameters) u.r(word) = value;
    u.prepare();
    ASSERT_EQ(c.inputs.size() + c.outputs.size() + 1, u.x.vr.size());
    std::copy(c.inputs.begin(), c.inputs.end(), u.x.vr.begin());
    std::copy(c.outputs.begin(), c.outputs.end(), u.x.vr.begin() + static_cast<std::ptrdiff_t>(c.inputs.size()));
    for (const auto mode : {&flags_class::dc, &flags_class::trns, &flags_class::startup}) {
        u.call(mode, &flags_class::function);
        for (int k = 0; k < u.lib.func.n_func(u.e); ++k) EXPECT_NEAR(u.x.f[static_cast<std::size_t>(k)], 0, 1e-12) << k;
    }
}

TEST(static_blocks, give_their_formulas_in_all_analyses) {
    const double huge = 1e6;
    const value_case cases[] = {
        {"acos_deg", {}, {0.5}, {60}},
        {"acos_deg", {}, {-1.5}, {180}},
        {"acos_rad", {}, {-0.5}, {2 * pi / 3}},
        {"acos_rad", {}, {7}, {0}},
        {"asin_deg", {}, {-0.5}, {-30}},
        {"asin_rad", {}, {0.5}, {pi / 6}},
        {"asin_rad", {}, {3}, {pi / 2}},
        {"atan2_deg", {}, {1, 1}, {45}},
        {"atan2_deg", {}, {-1, -1}, {-135}},
        {"atan2_deg", {}, {0, 0}, {0}},
        {"atan2_rad", {}, {2, 0}, {pi / 2}},
        {"atan2_rad", {}, {0, -3}, {pi}},
        {"ceil", {}, {-1.2}, {-1}},
        {"ceil", {}, {1.2}, {2}},
        {"floor", {}, {-1.2}, {-2}},
        {"floor", {}, {1.2}, {1}},
        {"int_nearest", {}, {-1.5}, {-2}},
        {"int_nearest", {}, {1.49}, {1}},
        {"fmod", {}, {7.5, 2}, {1.5}},
        {"fmod", {}, {-7.5, 2}, {-1.5}},
        {"mult_3a", {{"k", 0.5}}, {2, -3, 4}, {-12}},
        {"poly_4", {{"c0", 1}, {"c1", 2}, {"c2", 3}, {"c3", 4}, {"c4", 5}}, {2}, {1 + 4 + 12 + 32 + 80}},
        {"rad_to_deg", {}, {pi / 3}, {60}},
        {"reciprocal", {{"k", -6}}, {4}, {-1.5}},
        {"tanh", {{"k", 3}, {"a", 2}}, {std::log(2.0)}, {3 * 15.0 / 17}},  // (16 - 1)/(16 + 1)
        {"tanh", {{"k", 3}}, {-huge}, {-3}},
        {"tanh", {{"k", 3}}, {huge}, {3}},
        {"div_2", {{"k", 2}}, {6, -4}, {-3}},
        {"max_2", {}, {3, -4}, {3}},
        {"max_2", {}, {-4, 3}, {3}},
        {"min_2", {}, {3, -4}, {-4}},
        {"min_2", {}, {2, 2}, {2}},
        // Phases 2 cos 0.3 and so on; 2 cos(0.3 - 120 deg), 2 cos(0.3 + 120 deg).
        {"abc_to_alphabeta",
         {},
         {2 * std::cos(0.3) + 5, 2 * std::cos(0.3 - 2 * pi / 3) + 5, 2 * std::cos(0.3 + 2 * pi / 3) + 5},
         {2 * std::cos(0.3), 2 * std::sin(0.3)}},
        {"abc_to_alphabeta_1",
         {},
         {2 * std::cos(0.3), 2 * std::cos(0.3 - 2 * pi / 3), 2 * std::cos(0.3 + 2 * pi / 3)},
         {std::sqrt(6.0) * std::cos(0.3), std::sqrt(6.0) * std::sin(0.3)}},
        {"abc_to_alphabeta_2",
         {},
         {2 * std::cos(0.3), 2 * std::cos(0.3 - 2 * pi / 3)},
         {2 * std::cos(0.3), 2 * std::sin(0.3)}},
        {"abc_to_alphabeta_3",
         {},
         {2 * std::cos(0.3) - 2 * std::cos(0.3 - 2 * pi / 3),
          2 * std::cos(0.3 - 2 * pi / 3) - 2 * std::cos(0.3 + 2 * pi / 3)},
         {2 * std::cos(0.3), 2 * std::sin(0.3)}},
        // From an axis at 1.1: the vector lies at 0.3 - 1.1.
        {"abctodq",
         {},
         {2 * std::cos(0.3), 2 * std::cos(0.3 - 2 * pi / 3), 2 * std::cos(0.3 + 2 * pi / 3), 1.1},
         {2 * std::cos(-0.8), 2 * std::sin(-0.8)}},
        {"abc_to_dq_2",
         {},
         {2 * std::cos(0.3), 2 * std::cos(0.3 - 2 * pi / 3), 2 * std::cos(0.3 + 2 * pi / 3), std::cos(1.1),
          std::sin(1.1)},
         {2 * std::cos(-0.8), 2 * std::sin(-0.8)}},
        {"abc_to_dq0_2",
         {{"phi", 60}},
         {2 * std::cos(0.3) + 5, 2 * std::cos(0.3 - 2 * pi / 3) + 5, 2 * std::cos(0.3 + 2 * pi / 3) + 5},
         {2 * std::cos(0.3 - pi / 3), 2 * std::sin(0.3 - pi / 3), 5}},
        {"dq_to_abc",
         {},
         {2 * std::cos(0.4), 2 * std::sin(0.4), 1.1},
         {2 * std::cos(1.5), 2 * std::cos(1.5 - 2 * pi / 3), 2 * std::cos(1.5 + 2 * pi / 3)}},
        {"dq0_to_abc_2",
         {{"phi", -90}},
         {2 * std::cos(0.4), 2 * std::sin(0.4), 7},
         {2 * std::cos(0.4 - pi / 2) + 7, 2 * std::cos(0.4 - pi / 2 - 2 * pi / 3) + 7,
          2 * std::cos(0.4 - pi / 2 + 2 * pi / 3) + 7}},
    };
    for (const value_case& c : cases) expect_outputs(c);
}

TEST(static_blocks, of_logic_have_their_tables) {
    const struct {
        std::string name;
        int n;
        unsigned table;  // bit k: high where the inputs are the bits of k
    } gates[] = {{"and_3", 3, 0x80}, {"or_3", 3, 0xFE}, {"nand_2", 2, 0x7}, {"nor_2", 2, 0x1}, {"xor_2", 2, 0x6}};
    for (const auto& g : gates)
        for (unsigned k = 0; k < 1U << g.n; ++k) {
            std::vector<double> inputs;
            for (int i = 0; i < g.n; ++i) inputs.push_back(k >> i & 1U ? 5.1 : 4.9);
            expect_outputs({g.name,
                            {{"x_low", -10}, {"x_high", 20}, {"y_low", -1}, {"y_high", 7}},
                            inputs,
                            {g.table >> k & 1U ? 7.0 : -1.0}});
        }
}

TEST(static_blocks, of_logic_refuse_levels_without_a_middle) {
    for (const std::string name : {"and_3", "or_3", "nand_2", "nor_2", "xor_2"}) {
        block_unit u(name);
        u.r("x_low") = 1;
        const std::string text = run_and_listen([&] { u.prepare(); }).text;
        EXPECT_NE(text.find(name + ".gbe: x_high="), std::string::npos) << text;
    }
}

TEST(static_blocks, that_divide_hold_their_divisor_away_from_zero) {
    for (const double x : {0.0, 1e-40, -1e-40}) {
        const double held = std::copysign(1e-30, x);
        for (const std::string name : {"reciprocal", "div_2"}) {
            block_unit u(name);
            u.vr(name == "div_2" ? "x2" : "x") = x;
            if (name == "div_2") u.vr("x1") = 3;
            u.trns();
            EXPECT_EQ(-u.x.f[0], name == "div_2" ? 3 / held : x == 0 ? 0 : 1 / held) << name << x;
        }
    }
}

TEST(fmod_block, counts_a_small_divisor_as_1e_10_and_tells_it_once_a_run) {
    block_unit u("fmod");
    u.guess();
    u.vr("x1") = 1.00000000005;
    u.vr("x2") = -4;
    EXPECT_NEAR(u.output(0), std::fmod(1.00000000005, 1e-10), 1e-25);
    const auto told = [&] { return run_and_listen([&] { u.accept(0), u.accept(1); }).text; };
    EXPECT_EQ(told(), "fmod/gbe: limiting x2 to 1.0e-10.\n");
    EXPECT_EQ(told(), "");
    u.guess();
    u.vr("x2") = 1e-10;
    EXPECT_EQ(told(), "");
}

TEST(frames_that_turn, have_the_angle_of_their_frequency) {
    block_unit u("dq0_to_abc_2");
    u.r("f_hz") = 50;
    u.r("t0") = 1e-3;
    u.r("phi") = 30;
    u.vr("d") = 2;
    // 5 ms behind t0 it has gone 90 degrees.
    EXPECT_NEAR(u.output(6e-3), 2 * std::cos(2 * pi / 3), 1e-12);
}

// dx/dt by way of a copy of x: the copy is x, and what its slope is to be is y.
TEST(ddt_block, has_the_slope_of_its_input_and_rests_in_dc) {
    block_unit u("ddt");
    u.vr("x") = 3;
    u.vr("y") = 7;
    u.aux("z") = 2.5;
    u.trns();
    EXPECT_EQ(u.x.f[0], 2.5 - 3);
    EXPECT_EQ(u.x.f[1], 7);  // dz/dt
    u.dc();
    EXPECT_EQ(u.x.f[1], 7);  // 0 in dc: so is y
    ac_block small("ddt");
    small.vr[0] = {1, 2};
    small.ac(100);
    EXPECT_EQ(small.f[0], -std::complex<double>(0, 100) * std::complex<double>(1, 2));
}

}  // namespace
