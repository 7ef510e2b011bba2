// examples_logic_test.cpp -- the decks with logic of examples/ against the formulas of their stories.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <set>
#include <string>
#include <vector>

#include "whole_run.h"

namespace {
std::string deck_of(const std::string& name) {
    return read_file(std::string(TARNEL_EXAMPLES) + "/" + name + "/deck.in");
}
std::string with(std::string deck, const std::string& what, const std::string& instead) {
    const std::size_t at = deck.find(what);
    EXPECT_NE(at, std::string::npos) << what;
    return at == std::string::npos ? deck : deck.replace(at, what.size(), instead);
}

// Levels of a file whose columns are 2 apart, behind the time.
table levels(const whole_run& run, const std::string& file) {
    table rows = run.rows(file);
    for (auto& row : rows)
        for (std::size_t k = 1; k < row.size(); ++k) {
            row[k] -= 2 * static_cast<double>(k - 1);
            EXPECT_TRUE(row[k] == 0 || row[k] == 1) << file << " at " << row[0];
        }
    return rows;
}
// Rows in which the column has just come to this level; the other columns are those of the same time.
table edges(const table& rows, std::size_t column, double to) {
    table all;
    for (std::size_t i = 1; i < rows.size(); ++i)
        if (rows[i][column] == to && rows[i - 1][column] != to) all.push_back(rows[i]);
    return all;
}
std::vector<double> times(const table& rows) {
    std::vector<double> t;
    for (const auto& row : rows) t.push_back(row[0]);
    return t;
}
// Rows have 7 digits, and an event comes 0.1 ps late.
void expect_times(const std::vector<double>& got, const std::vector<double>& wanted) {
    ASSERT_EQ(got.size(), wanted.size());
    for (std::size_t i = 0; i < wanted.size(); ++i) EXPECT_NEAR(got[i], wanted[i], 2e-11) << i;
}
}  // namespace

TEST(examples_logic, counter_decode_counts_modulo_16_at_each_rise_of_its_clock) {
    const whole_run run(deck_of("counter_decode"));
    ASSERT_FALSE(run.stopped) << run.text;
    const table falls = edges(levels(run, "levels.dat"), 1, 0);
    ASSERT_EQ(falls.size(), 39u);  // the one at the end is none of the run
    for (std::size_t k = 0; k < falls.size(); ++k) {
        const auto& row = falls[k];
        const int n = static_cast<int>(k + 1) % 16;
        EXPECT_EQ(row[2] + 2 * row[3] + 4 * row[4] + 8 * row[5], n) << row[0];
        EXPECT_EQ(row[6], n == 10) << row[0];
        EXPECT_EQ(row[7], n == 15) << row[0];
    }
}

// A bit rises 3 ns behind the clock and falls 4 ns behind it; an and gate takes 2 ns, an inverter 1 ns.
TEST(examples_logic, counter_decode_gives_one_pulse_in_16_periods_and_no_glitch) {
    const whole_run run(deck_of("counter_decode"));
    const table rows = levels(run, "levels.dat");
    expect_times(times(edges(rows, 6, 1)), {959e-9, 2559e-9});   // 9 to 10: bit, inverter, two gates
    expect_times(times(edges(rows, 6, 0)), {1058e-9, 2658e-9});  // 10 to 11: bit 0 rises alone
    expect_times(times(edges(rows, 7, 1)), {1457e-9, 3057e-9});  // 14 to 15: bit 0 rises alone
    expect_times(times(edges(rows, 7, 0)), {1558e-9, 3158e-9});  // 15 to 0
    ASSERT_EQ(rows.back()[0], 4e-6);
}

// From 11 to 12 one half of 15 ends as the other begins. Where the first gate ends late and begins early, both overlap
// by 3 ns, which the gate behind them passes on if its own delay is shorter, and absorbs otherwise.
TEST(examples_logic, counter_decode_has_a_glitch_where_gates_end_later_than_they_begin) {
    const std::string late = with(deck_of("counter_decode"), "y=low3 td_fall=2n", "y=low3 td_fall=5n");
    const whole_run run(late);
    const table rows = levels(run, "levels.dat");
    // Clock at 1150 ns, bits at 1154 ns, the halves at 1156 ns and 1159 ns.
    expect_times(times(edges(rows, 7, 1)), {1158e-9, 1457e-9, 2758e-9, 3057e-9});
    expect_times(times(edges(rows, 7, 0)), {1161e-9, 1558e-9, 2761e-9, 3158e-9});
    for (const auto& row : edges(rows, 1, 0))
        EXPECT_EQ(row[7], row[2] + 2 * row[3] + 4 * row[4] + 8 * row[5] == 15) << "half a period later it is right";
    const whole_run slow(with(late, "y=is15 td_fall=2n td_rise=2n", "y=is15 td_fall=2n td_rise=4n"));
    expect_times(times(edges(levels(slow, "levels.dat"), 7, 1)), {1459e-9, 3059e-9});
}

TEST(examples_logic, shift_register_goes_through_all_15_states_of_its_polynomial) {
    const whole_run run(deck_of("shift_register"));
    ASSERT_FALSE(run.stopped) << run.text;
    const table falls = edges(levels(run, "levels.dat"), 1, 0);
    ASSERT_EQ(falls.size(), 31u);
    std::vector<int> a{1, 1, 1, 1};  // what went in, the last one last: a[n] = a[n-3] + a[n-4] modulo 2
    std::set<std::vector<int>> seen;
    for (std::size_t k = 0; k < falls.size(); ++k) {
        a.push_back(a[a.size() - 3] ^ a[a.size() - 4]);
        const std::vector<int> state(a.rbegin(), a.rbegin() + 4);
        for (std::size_t j = 0; j < 4; ++j) EXPECT_EQ(falls[k][2 + j], state[j]) << "q" << j << " at " << falls[k][0];
        if (k < 15) {
            seen.insert(state);
        } else {
            EXPECT_TRUE(std::equal(falls[k].begin() + 2, falls[k].end(), falls[k - 15].begin() + 2)) << falls[k][0];
        }
    }
    EXPECT_EQ(seen.size(), 15u);
    EXPECT_EQ(seen.count({0, 0, 0, 0}), 0u);
}

TEST(examples_logic, dead_time_leg_never_has_both_switches_on_and_waits_between_them) {
    const whole_run run(deck_of("dead_time_leg"));
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = levels(run, "levels.dat");
    for (const auto& row : rows) EXPECT_FALSE(row[2] == 1 && row[3] == 1) << row[0];
    const auto wait = [&](std::size_t falls, std::size_t rises) {  // from a fall to the next rise
        std::vector<double> all;
        const std::vector<double> begins = times(edges(rows, rises, 1));
        for (const double t : times(edges(rows, falls, 0)))
            if (const auto next = std::upper_bound(begins.begin(), begins.end(), t); next != begins.end())
                all.push_back(*next - t);
        return all;
    };
    // 2 us less the fall of 20 ns; the low side has the 10 ns of its inverter before either. Rows of 39 ms are 10 ns
    // apart.
    const std::vector<double> to_low = wait(2, 3), to_high = wait(3, 2);
    ASSERT_GE(to_low.size(), 4u);
    ASSERT_GE(to_high.size(), 4u);
    for (const double t : to_low) EXPECT_NEAR(t, 1.99e-6, 1.1e-8);
    for (const double t : to_high) EXPECT_NEAR(t, 1.97e-6, 1.1e-8);
}

// The dead time takes 2 us x 10 kHz x 200 V against the sign of the current: a square wave of 4 V in phase with it.
TEST(examples_logic, dead_time_leg_loses_the_voltage_of_its_dead_time) {
    const whole_run run(deck_of("dead_time_leg"));
    ASSERT_FALSE(run.stopped) << run.text;
    const double r = 10, wl = 2 * std::numbers::pi * 50 * 10e-3, lost = 4 / std::numbers::pi * 2e-6 * 10e3 * 200;
    const double a = r * r + wl * wl, b = r * lost, c = lost * lost - 80 * 80;
    const double amperes = (std::sqrt(b * b - a * c) - b) / a;
    EXPECT_NEAR(amperes, 7.167, 1e-3);
    const table sticks = run.rows("harmonics.dat");
    ASSERT_EQ(sticks.size(), 18u);
    EXPECT_NEAR(sticks[4][1], amperes, 3e-3 * amperes);
    EXPECT_NEAR(sticks[10][2], lost / 3, 0.01 * lost / 3) << "third harmonic of the square wave, V";
    EXPECT_LT(sticks[4][1], 0.95 * 80 / std::hypot(r, wl)) << "of a leg without dead time";
}

TEST(examples_logic, peak_current_ends_each_pulse_at_the_set_current_and_the_delays) {
    const whole_run run(deck_of("peak_current"));
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("wave.dat");
    const double period = 10e-6, l = 100e-6, r = 2, vin = 24;
    std::vector<double> on = times(edges(levels(run, "levels.dat"), 3, 1));
    const std::vector<double> off = times(edges(levels(run, "levels.dat"), 3, 0));
    ASSERT_EQ(on.size(), 5u);
    ASSERT_EQ(off.size(), 5u);
    for (std::size_t k = 0; k < 5; ++k) {
        EXPECT_NEAR(on[k], 1.95e-3 + static_cast<double>(k) * period + 10e-9, 2e-9);  // the clock, the flip-flop
        double v = 0, highest = 0;
        for (const auto& row : rows)
            if (row[0] > on[k] && row[0] < on[k] + 9e-6 && row[1] > highest) highest = row[1], v = row[2];
        // 20 ns of the comparator and 10 ns of the flip-flop; it looks once in 20 ns, and the switch acts in the step
        // behind its edge, one of 1 ns.
        EXPECT_GT(highest, 5 + (vin - v) / l * 30e-9 - 1e-5);
        EXPECT_LT(highest, 5 + (vin - v) / l * 52e-9);
    }
    double charge = 0, v = 0, time = 0;
    for (std::size_t k = 1; k < rows.size(); ++k)
        if (rows[k][0] <= 1.99e-3 + 1e-9) {
            const double h = rows[k][0] - rows[k - 1][0];
            charge += h * (rows[k][1] + rows[k - 1][1]) / 2;
            v += h * (rows[k][2] + rows[k - 1][2]) / 2;
            time += h;
        }
    v /= time;
    EXPECT_NEAR(charge / time, v / r, 2e-3 * v / r);
    double found = vin / 2;  // v/r is the peak less half the ripple
    for (int k = 0; k < 100; ++k) {
        const double peak = 5 + (vin - found) / l * 40e-9;
        found = r * (peak - (vin - found) * found / vin * period / (2 * l));
    }
    EXPECT_NEAR(found, 9.439, 1e-3);
    EXPECT_NEAR(v, found, 2e-3 * found);
}

TEST(examples_logic, sigma_delta_has_as_many_ones_as_its_input_is_of_the_reference) {
    for (const int tenths : {1, 2, 3, 4, 5, 6, 7, 8, 9}) {
        const double v = tenths / 10.0;
        const whole_run run(with(deck_of("sigma_delta"), "vdc=0.3", "vdc=0." + std::to_string(tenths)));
        ASSERT_FALSE(run.stopped) << run.text;
        const table falls = edges(levels(run, "bits.dat"), 1, 0);
        ASSERT_GE(falls.size(), 999u);
        int n = 0;
        for (const auto& row : falls) n += row[2] == 1;
        EXPECT_NEAR(n, v * static_cast<double>(falls.size()), 1.5) << v;
        // What is left in the integrator: up by v a period from no more than 0, down by 1 - v from no less than 0; the
        // fed-back voltage comes 2 ns late, and the comparator has looked 5 ns and a step before.
        for (const auto& row : run.rows("wave.dat")) {
            EXPECT_LE(row[1], v + 0.06) << v << " at " << row[0];
            EXPECT_GE(row[1], v - 1 - 0.06) << v << " at " << row[0];
        }
    }
}
