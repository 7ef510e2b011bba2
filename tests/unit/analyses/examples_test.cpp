// examples_test.cpp -- the decks of examples/ against the formulas of their stories.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "whole_run.h"

namespace {
constexpr double pi = std::numbers::pi;

whole_run example(const std::string& name) {
    return whole_run(read_file(std::string(TARNEL_EXAMPLES) + "/" + name + "/deck.in"));
}

// Rows with t_from <= t <= t_to, the time in column 0; never empty.
table between(const table& rows, double t_from, double t_to) {
    table part;
    for (const auto& row : rows)
        if (row[0] >= t_from - 1e-12 && row[0] <= t_to + 1e-12) part.push_back(row);
    EXPECT_GT(part.size(), 10u);
    return part.empty() ? table{std::vector<double>(10, NAN)} : part;
}

// Mean over the time of the rows, by trapezoids.
double mean(const table& rows, std::size_t column) {
    double sum = 0.0;
    for (std::size_t i = 1; i < rows.size(); ++i)
        sum += (rows[i][0] - rows[i - 1][0]) * (rows[i][column] + rows[i - 1][column]) / 2;
    return sum / (rows.back()[0] - rows.front()[0]);
}

double lowest(const table& rows, std::size_t column) {
    double x = INFINITY;
    for (const auto& row : rows) x = std::min(x, row[column]);
    return x;
}
double highest(const table& rows, std::size_t column) {
    double x = -INFINITY;
    for (const auto& row : rows) x = std::max(x, row[column]);
    return x;
}
double ripple(const table& rows, std::size_t column) { return highest(rows, column) - lowest(rows, column); }

#define EXPECT_WITHIN(part, got, wanted) EXPECT_NEAR(got, wanted, (part)*std::fabs(wanted))
}  // namespace

TEST(examples, rc_step_follows_the_exponential) {
    const whole_run run = example("rc_step");
    ASSERT_FALSE(run.stopped) << run.text;
    for (const auto& row : between(run.rows("wave.dat"), 0, 5e-3)) {
        EXPECT_NEAR(row[1], 10 * (1 - std::exp(-row[0] / 1e-3)), 5e-5);
        EXPECT_NEAR(row[2], 0.01 * std::exp(-row[0] / 1e-3), 5e-8);
    }
}

TEST(examples, rlc_step_overshoots_and_decays_as_its_damping_says) {
    const whole_run run = example("rlc_step");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = between(run.rows("wave.dat"), 0, 5e-3);
    const double r = 20, l = 10e-3, c = 1e-6, a = r / (2 * l), w = std::sqrt(1 / (l * c) - a * a);
    const table first = between(rows, 0, 1.5 * pi / w), second = between(rows, 2 * pi / w, 3.5 * pi / w);
    const double overshoot = highest(first, 1) - 10;
    EXPECT_WITHIN(1e-3, overshoot, 10 * std::exp(-a * pi / w));
    EXPECT_WITHIN(2e-3, (highest(second, 1) - 10) / overshoot, std::exp(-2 * pi * a / w));
    const auto peak = std::max_element(first.begin(), first.end(), [](auto& x, auto& y) { return x[1] < y[1]; });
    EXPECT_NEAR((*peak)[0], pi / w, 2.1e-6);  // a step is 2 us
}

// The capacitor is charged to the peak less two diodes and discharged by the load for all but the angle of conduction.
TEST(examples, rectifier_ripple_is_the_charge_taken_between_two_peaks) {
    const whole_run run = example("rectifier");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = between(run.rows("wave.dat"), 0.08, 0.1);
    const double top = 16.97 - 2 * 0.7, f = 50, c = 4700e-6, r = 20;
    EXPECT_WITHIN(5e-3, highest(rows, 2), top);
    const double dv = ripple(rows, 2), current = mean(rows, 2) / r;
    const double conducting = std::acos(1 - dv / 16.97) / pi;
    EXPECT_WITHIN(0.03, dv, current / (2 * f * c) * (1 - conducting));
    double charge = 0.0;  // what the source gives in a period, both half waves, is what the load takes
    for (std::size_t i = 1; i < rows.size(); ++i) charge += (rows[i][0] - rows[i - 1][0]) * std::fabs(rows[i][3]);
    EXPECT_WITHIN(2e-3, charge, current / f);
}

// A half wave of the current ends where it began: V/Z sin(wt - phi) + K exp(-t R/L) - 1.4 V/R, with the other sign in
// the next one.
TEST(examples, rectifier_power_of_the_inductor_is_that_of_its_closed_form) {
    const whole_run run = example("rectifier_power");
    ASSERT_FALSE(run.stopped) << run.text;
    const double r = 20.02, l = 0.2, w = 100 * pi, top = 325.27, drop = 1.4;
    const double z = std::hypot(r, w * l), phi = std::atan2(w * l, r),
                 begin = 2 * std::sin(phi) / (1 - std::exp(-0.01 * r / l));
    const int n = 20000;
    double power = 0, square = 0, fundamental_c = 0, fundamental_s = 0;
    for (int k = 0; k < n; ++k) {
        const double t = (k + 0.5) * 0.01 / n;
        const double i = top / z * (std::sin(w * t - phi) + begin * std::exp(-t * r / l)) - drop / r;
        power += top * std::sin(w * t) * i / n;
        square += i * i / n;
        fundamental_c += 2 * i * std::cos(w * t) / n;
        fundamental_s += 2 * i * std::sin(w * t) / n;
    }
    const std::vector<double> with = run.rows("with_inductor.dat").at(0);  // power, effective current, pf, thd
    EXPECT_WITHIN(3e-4, with[0], power);
    EXPECT_WITHIN(3e-4, with[1], std::sqrt(square));
    EXPECT_WITHIN(3e-4, with[2], power / (top / std::sqrt(2.0) * std::sqrt(square)));
    // Harmonics beyond 40 are not in the distortion: 3e-3 of it.
    const double first = (fundamental_c * fundamental_c + fundamental_s * fundamental_s) / 2;
    EXPECT_NEAR(with[3], std::sqrt(square / first - 1), 0.015);
    EXPECT_LT(with[3], std::sqrt(square / first - 1));
}

// The load has the power that the diodes leave of it; pulses of current make the factor.
TEST(examples, rectifier_power_of_the_capacitor_is_less_of_more_current) {
    const whole_run run = example("rectifier_power");
    ASSERT_FALSE(run.stopped) << run.text;
    const std::vector<double> with = run.rows("with_capacitor.dat").at(0);
    const table rows = between(run.rows("wave.dat"), 0.18, 0.2);
    double power = 0, square = 0;
    for (std::size_t k = 1; k < rows.size(); ++k) {
        const double h = (rows[k][0] - rows[k - 1][0]) / 0.02;
        power += h * (rows[k][1] * rows[k][3] + rows[k - 1][1] * rows[k - 1][3]) / 2;
        square += h * (rows[k][3] * rows[k][3] + rows[k - 1][3] * rows[k - 1][3]) / 2;
    }
    EXPECT_WITHIN(1e-6, with[0], power);
    EXPECT_WITHIN(1e-6, with[1], std::sqrt(square));
    EXPECT_WITHIN(1e-5, with[2], power / std::sqrt(square) / (325.27 / std::sqrt(2.0)));
    // pf = cos(phi_1)/sqrt(1 + thd^2), where the shift of the fundamental takes little.
    const double shift = with[2] * std::sqrt(1 + with[3] * with[3]);
    EXPECT_GT(shift, 0.95);
    EXPECT_LT(shift, 1.0);
}

TEST(examples, buck_open_gives_the_duty_ratio_and_the_ripple_of_theory) {
    const whole_run run = example("buck_open");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = between(run.rows("wave.dat"), 4.9e-3, 5e-3);
    const double period = 20e-6, d = 0.5, l = 100e-6, c = 47e-6, vin = 24, r = 5;
    const double v = d * vin / (1 + 1e-3 / r);  // 1 milliohm in either state
    EXPECT_WITHIN(1e-4, mean(rows, 1), v);
    EXPECT_WITHIN(1e-3, mean(rows, 2), v / r);
    const double di = (vin - v) * d * period / l;
    EXPECT_WITHIN(5e-3, ripple(rows, 2), di);
    EXPECT_WITHIN(2e-2, ripple(rows, 1), di * period / (8 * c));
}

TEST(examples, buck_control_holds_its_set_point_through_load_and_reference_steps) {
    const whole_run run = example("buck_control");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("wave.dat");
    for (const auto& [from, to, v, current] :
         {std::array{9e-3, 10e-3, 12.0, 1.2}, {19e-3, 20e-3, 12.0, 2.4}, {29e-3, 30e-3, 15.0, 3.0}}) {
        const table part = between(rows, from, to);
        EXPECT_NEAR(mean(part, 2), v, 0.01) << from;
        EXPECT_NEAR(mean(part, 3), current, 0.02) << from;
        // Volt-seconds of the inductor: d (vin - r i) - (1 - d) (0.5 + r i) = v
        EXPECT_NEAR(mean(part, 4), (v + 0.5 + 0.01 * current) / 24.5, 1e-3) << from;
    }
    EXPECT_LT(lowest(between(rows, 10e-3, 11e-3), 2), 11);          // the load step is felt,
    EXPECT_NEAR(mean(between(rows, 14e-3, 14.5e-3), 2), 12, 0.03);  // and made good in 4 ms
}

TEST(examples, boost_gives_one_over_one_minus_d) {
    const whole_run run = example("boost");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = between(run.rows("wave.dat"), 11.9e-3, 12e-3);
    const double period = 20e-6, d = 0.6, l = 200e-6, c = 22e-6, vin = 12, r = 30;
    const double v = vin / (1 - d) / (1 + 1e-3 / r / ((1 - d) * (1 - d)));
    EXPECT_WITHIN(1e-3, mean(rows, 1), v);
    EXPECT_WITHIN(2e-3, mean(rows, 2), v / r / (1 - d));
    EXPECT_WITHIN(5e-3, ripple(rows, 2), vin * d * period / l);
    EXPECT_WITHIN(1e-2, ripple(rows, 1), v / r * d * period / c);
}

TEST(examples, flyback_gives_turns_ratio_times_d_over_one_minus_d) {
    const whole_run run = example("flyback");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = between(run.rows("wave.dat"), 7.94e-3, 8e-3);
    const double period = 20e-6, d = 0.4, turns = 0.5, vin = 24, r = 4, c = 100e-6, l2 = 25e-6;
    const double v = vin * turns * d / (1 - d);
    EXPECT_WITHIN(5e-3, mean(rows, 1), v);
    // The capacitor alone feeds the load while the switch is on, and helps again while the diode current is below it.
    const double i_least = v / r / (1 - d) - v * (1 - d) * period / l2 / 2, short_of = std::max(0.0, v / r - i_least);
    EXPECT_WITHIN(1e-2, ripple(rows, 1), (v / r * d * period + short_of * short_of * l2 / (2 * v)) / c);
    EXPECT_WITHIN(5e-3, mean(rows, 3), v / r);                        // the diode carries the load current
    EXPECT_WITHIN(1e-2, mean(rows, 2) * vin, v * v / r);              // power in is power out
    EXPECT_WITHIN(1e-2, highest(rows, 3), highest(rows, 2) / turns);  // ampere-turns go on
}

TEST(examples, rectifier_3ph_gives_three_root_three_over_pi) {
    const whole_run run = example("rectifier_3ph");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = between(run.rows("wave.dat"), 0.04, 0.06);
    const double vm = 325.27, i = mean(rows, 3), drop = 2 * (0.7 + 0.01 * i);
    EXPECT_WITHIN(2e-4, mean(rows, 1), 3 * std::sqrt(3.0) / pi * vm - drop);
    EXPECT_WITHIN(1e-3, highest(rows, 1), std::sqrt(3.0) * vm - drop);
    EXPECT_WITHIN(2e-3, lowest(rows, 1), 1.5 * vm - drop);
    EXPECT_WITHIN(1e-3, i, mean(rows, 1) / 20);
    double square = 0.0;  // blocks of 120 degrees: rms current of a phase is sqrt(2/3) of the direct current
    for (std::size_t k = 1; k < rows.size(); ++k) square += (rows[k][0] - rows[k - 1][0]) * rows[k][4] * rows[k][4];
    EXPECT_WITHIN(5e-3, std::sqrt(square / 0.02), std::sqrt(2.0 / 3.0) * i);
}

// Bipolar modulation by a sine of m and a triangle n times as fast: harmonic 1 is m Vdc, harmonic n is 4/pi J0(m pi/2)
// Vdc, harmonics n - 2 and n + 2 are 4/pi J2(m pi/2) Vdc (the double Fourier series of Bowes and Bird).
TEST(examples, inverter_spwm_has_the_harmonics_of_sine_triangle_modulation) {
    const whole_run run = example("inverter_spwm");
    ASSERT_FALSE(run.stopped) << run.text;
    const table sticks = run.rows("fourier.dat");
    ASSERT_EQ(sticks.size(), 3u * 26u) << run.text;
    auto volts = [&](std::size_t k) { return sticks[3 * k + 1][1]; };
    auto amperes = [&](std::size_t k) { return sticks[3 * k + 1][2]; };
    const double m = 0.8, vdc = 100, w = 2 * pi * 50, l = 20e-3, r = 10;
    EXPECT_WITHIN(2e-3, volts(1), m * vdc);
    EXPECT_WITHIN(5e-3, volts(21), 4 / pi * std::cyl_bessel_j(0, m * pi / 2) * vdc);
    EXPECT_WITHIN(5e-3, volts(19), 4 / pi * std::cyl_bessel_j(2, m * pi / 2) * vdc);
    EXPECT_WITHIN(5e-3, volts(23), 4 / pi * std::cyl_bessel_j(2, m * pi / 2) * vdc);
    for (std::size_t k = 2; k < 16; ++k) EXPECT_LT(volts(k), 0.05) << k;
    for (const std::size_t k : {1u, 19u, 21u, 23u})
        EXPECT_WITHIN(5e-3, amperes(k), volts(k) / std::hypot(r, w * static_cast<double>(k) * l)) << k;
    double sum = 0;
    for (std::size_t k = 2; k < 26; ++k) sum += volts(k) * volts(k);
    const std::string words = "variable no=0 thd (%)=";
    const std::size_t at = run.text.find(words);
    ASSERT_NE(at, std::string::npos) << run.text;
    EXPECT_WITHIN(1e-5, std::stod(run.text.substr(at + words.size())), 100 * std::sqrt(sum) / volts(1));
}

TEST(examples, thyristor_phase_average_falls_with_the_firing_angle) {
    const whole_run run = example("thyristor_phase");
    ASSERT_FALSE(run.stopped) << run.text;
    for (const int angle : {30, 60, 90, 120}) {
        const table rows = between(run.rows("wave_" + std::to_string(angle) + ".dat"), 0, 20e-3);
        EXPECT_WITHIN(4e-3, mean(rows, 1), 325.27 / pi * (1 + std::cos(angle * pi / 180))) << angle;
    }
}

// Near lock the loop is s^2 + k s + ki: 70.7 rad/s, damping 1/sqrt(2).
TEST(examples, pll_locks_to_frequency_and_phase) {
    const whole_run run = example("pll");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("wave.dat");
    for (const auto& [from, to, hz] : {std::array{0.199, 0.2, 50.0}, {0.49, 0.5, 52.0}})
        for (const auto& row : rows)
            if (row[0] > from && row[0] <= to) {
                EXPECT_NEAR(row[1], hz, 2e-3);
                EXPECT_NEAR(row[2], 0, 1e-4);
                EXPECT_NEAR(row[3], row[4], 1e-4);  // the wave of the loop lies on phase a
            }
    const double s = 50, w = 50, t_peak = pi / 4 / w;  // real and imaginary part of the roots
    const double error = 2 * pi * 2 / w * std::exp(-s * t_peak) * std::sin(w * t_peak);
    EXPECT_WITHIN(5e-3, highest(between(rows, 0.2, 0.5), 2), error);
}

TEST(examples, sync_buck_losses_heats_its_junction_by_what_its_story_adds_up) {
    const whole_run run = example("sync_buck_losses");
    ASSERT_FALSE(run.stopped) << run.text;
    double v = 12.0, i = 5.0;
    for (int k = 0; k < 20; ++k) {
        i = v / 2.4;
        v = (2.5 * 48 - 0.4 * (0.8 + 0.01 * i) - 9.6 * 0.02 * i) / 10;
    }
    const double swing = (48 - 0.02 * i - v) * 2.5e-6 / 22e-6, low = i - swing / 2, high = i + swing / 2;
    const double e_on = 2e-6 * low * (48.8 + 0.01 * low) / 48;  // 10 uJ at 5 A, 40 uJ at 20 A
    const double e_off = (5e-6 + 2e-6 * (high - 5)) * (48.8 + 0.01 * high) / 48;
    const double conduction = 0.02 * (i * i + swing * swing / 12) * 2.5e-6;
    const double power = (e_on + e_off + conduction) * 1e5;

    const table wave = between(run.rows("wave.dat"), 4.98e-3, 4.99e-3), heat = run.rows("heat.dat");
    EXPECT_WITHIN(1e-3, mean(wave, 1), v);
    EXPECT_WITHIN(1e-3, mean(wave, 2), i);
    EXPECT_WITHIN(5e-3, ripple(wave, 2), swing);
    EXPECT_WITHIN(1e-2, heat.back()[1], power);
    EXPECT_NEAR(heat.back()[2], 323.15 + 2 * power, 0.05);
    const auto& before = heat[heat.size() - 11];  // ten periods
    EXPECT_WITHIN(5e-3, heat.back()[4] - before[4], 10 * e_on);
    EXPECT_WITHIN(5e-3, heat.back()[5] - before[5], 10 * e_off);
}
