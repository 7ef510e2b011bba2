#include "tnl/results/waveform.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>

namespace {

using namespace cli;

constexpr double pi = 3.14159265358979323846;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

samples sampled(const std::function<double(double)>& f, double from, double to, int n) {
    samples s;
    for (int i = 0; i <= n; ++i) {
        s.t.push_back(from + (to - from) * i / n);
        s.x.push_back(f(s.t.back()));
    }
    return s;
}

// Steps of very different lengths, as the simulator takes them.
samples unevenly_sampled(const std::function<double(double)>& f, double from, double to, int n) {
    std::mt19937 rng(1);
    std::uniform_real_distribution<double> exponent(-3, 0);
    std::vector<double> t{0};
    for (int i = 0; i < n; ++i) t.push_back(t.back() + std::pow(10, exponent(rng)));
    samples s;
    for (const double x : t) {
        s.t.push_back(from + (to - from) * x / t.back());
        s.x.push_back(f(s.t.back()));
    }
    s.t.back() = to;
    return s;
}

// Between 0 and 1 with jumps, n periods of length 1, high in the first part of each.
samples pulses(double duty, int n) {
    samples s;
    for (int k = 0; k < n; ++k)
        for (const auto& [t, x] : {std::pair{0.0, 0.0}, {0.0, 1.0}, {duty, 1.0}, {duty, 0.0}, {1.0, 0.0}}) {
            s.t.push_back(k + t);
            s.x.push_back(x);
        }
    return s;
}

std::string fault_of(const std::function<void()>& f) {
    try {
        f();
    } catch (const measure_error& e) {
        return e.what();
    }
    return "";
}

TEST(waveform, integral_average_and_rms_are_exact_for_straight_lines) {
    const samples ramp{{0, 0.1, 1, 3}, {0, 0.2, 2, 6}};  // x = 2 t: avg 3, rms^2 = 4 * 9 / 3
    EXPECT_DOUBLE_EQ(integral(ramp), 9);
    EXPECT_DOUBLE_EQ(average(ramp), 3);
    EXPECT_DOUBLE_EQ(rms(ramp), std::sqrt(12.0));
    EXPECT_DOUBLE_EQ(slope(ramp), 2);
    const samples one{{5}, {-4}};
    EXPECT_EQ(average(one), -4);
    EXPECT_EQ(rms(one), 4);
}

TEST(waveform, a_sine_has_no_average_and_an_rms_of_its_amplitude_over_root_two) {
    const samples s = unevenly_sampled([](double t) { return 3 * std::sin(2 * pi * 50 * t); }, 0, 0.1, 20000);
    EXPECT_NEAR(average(s), 0, 1e-5);
    EXPECT_NEAR(rms(s), 3 / std::sqrt(2.0), 1e-5);
    EXPECT_NEAR(greatest(s), 3, 1e-4);
    EXPECT_NEAR(least(s), -3, 1e-4);
}

TEST(waveform, a_window_has_interpolated_borders) {
    const samples w{{0, 1, 2, 4}, {0, 10, 10, 30}};
    const samples part = clip(w, 0.5, 3);
    EXPECT_EQ(part.t, (std::vector<double>{0.5, 1, 2, 3}));
    EXPECT_EQ(part.x, (std::vector<double>{5, 10, 10, 20}));
    EXPECT_EQ(clip(w, 1, 2).t, (std::vector<double>{1, 2}));
    EXPECT_EQ(clip(w, 1.25, 1.5).x, (std::vector<double>{10, 10}));
    EXPECT_EQ(clip(w, 0.5, 0.5).x, (std::vector<double>{5}));
    EXPECT_DOUBLE_EQ(average(clip(w, 0, 2)), 7.5);
}

TEST(waveform, a_window_ends_before_a_jump_and_begins_behind_one) {
    const samples w{{0, 1, 1, 2}, {0, 0, 8, 8}};
    EXPECT_EQ(average(clip(w, 0, 1)), 0);
    EXPECT_EQ(average(clip(w, 1, 2)), 8);
    EXPECT_EQ(average(clip(w, 0, 2)), 4);
    EXPECT_EQ(value_at(w, 1), 8);
    EXPECT_EQ(value_at(w, 0.999), 0);
}

TEST(waveform, a_window_beyond_the_rows_is_refused_unless_by_less_than_a_row_and_a_hundredth) {
    const samples w{{1, 2}, {0, 1}};
    EXPECT_EQ(clip(w, 1, 2.0000009).t.back(), 2);
    EXPECT_EQ(clip(w, 0.991, 2).t.front(), 1);
    EXPECT_NE(fault_of([&] { clip(w, 1, 2.011); }), "");
    const samples fine{{1, 1.001, 1.999, 2}, {0, 0, 1, 1}};
    EXPECT_EQ(clip(fine, 0.9991, 2.0009).t.back(), 2);
    EXPECT_NE(fault_of([&] { clip(fine, 1, 2.0011); }), "");
    EXPECT_NE(fault_of([&] { clip(fine, 0.9989, 2); }), "");
    EXPECT_EQ(fault_of([&] { clip(w, 1, 3); }), "3 lies outside the rows, which go from 1 to 2");
    EXPECT_EQ(fault_of([&] { clip(w, 0, 2); }), "0 lies outside the rows, which go from 1 to 2");
    EXPECT_EQ(fault_of([&] { clip(w, 2, 1); }), "the window from 2 to 1 is empty");
    EXPECT_EQ(fault_of([&] { clip(w, nan, 2); }), "the window from nan to 2 is empty");
    EXPECT_NE(fault_of([&] { value_at(w, nan); }), "");
}

TEST(waveform, crossings_are_interpolated_and_touches_are_none) {
    const samples w{{0, 1, 2, 3, 4, 5, 6, 7}, {-1, 3, -1, 0, -1, 0, 0, 1}};
    const std::vector<crossing> all = crossings(w, 0);
    ASSERT_EQ(all.size(), 3u);
    EXPECT_DOUBLE_EQ(all[0].t, 0.25);
    EXPECT_TRUE(all[0].rises);
    EXPECT_DOUBLE_EQ(all[1].t, 1.75);
    EXPECT_FALSE(all[1].rises);
    EXPECT_EQ(all[2].t, 5);  // where it came to the level
    EXPECT_EQ(crossings(samples{{0, 1, 2}, {0, 1, 0}}, 0).size(), 0u);
    EXPECT_EQ(nth_crossing(w, 0, 2, edge::rise), 5);
    EXPECT_DOUBLE_EQ(nth_crossing(w, 0, -1, edge::fall), 1.75);
    EXPECT_EQ(fault_of([&] { nth_crossing(w, 0, 2, edge::fall); }),
              "crossing 2 of level 0 does not exist: there is 1 falling crossing");
    EXPECT_NE(fault_of([&] { nth_crossing(w, 0, 0, edge::any); }), "");
}

TEST(waveform, period_and_duty_of_pulses) {
    for (const double d : {0.1, 0.5, 0.37}) {
        const samples w = pulses(d, 5);
        EXPECT_NEAR(duty(w, 0.5), d, 1e-12);
        EXPECT_NEAR(period(w, 0.5), 1, 1e-12);
    }
    const samples w = pulses(0.5, 1);
    EXPECT_EQ(fault_of([&] { period(w, 0.5); }),
              "a period needs two rising crossings of level 0.5; there is 1 from 0 to 1");
}

TEST(waveform, rise_time_of_an_exponential_is_its_time_constant_times_ln_9) {
    const double tau = 1e-3;
    const samples up = unevenly_sampled([&](double t) { return 5 - 5 * std::exp(-t / tau); }, 0, 20 * tau, 20000);
    EXPECT_NEAR(rise_time(up, 5), tau * std::log(9.0), 1e-6 * tau);
    const samples down = unevenly_sampled([&](double t) { return 2 + 5 * std::exp(-t / tau); }, 0, 20 * tau, 20000);
    EXPECT_NEAR(fall_time(down, 2), tau * std::log(9.0), 1e-6 * tau);
    EXPECT_NEAR(settling_time(up, 5, 0.02), tau * std::log(50.0), 1e-5 * tau);
    EXPECT_NE(fault_of([&] { fall_time(up, 5); }), "");
    EXPECT_NE(fault_of([&] { rise_time(down, 2); }), "");
    EXPECT_EQ(overshoot(up, up.x.back()), 0);
}

TEST(waveform, a_jump_rises_in_no_time_and_a_level_wave_not_at_all) {
    const samples jump{{0, 1, 1, 2}, {0, 0, 1, 1}};
    EXPECT_EQ(rise_time(jump, 1), 0);
    EXPECT_EQ(settling_time(jump, 1, 0.01), 1);
    EXPECT_EQ(fault_of([&] {
                  rise_time(samples{{0, 1}, {2, 2}}, 2);
              }),
              "there is no step: the wave begins at its last value, 2; choose the window or give the last value");
    EXPECT_EQ(fault_of([&] { settling_time(jump, 5, 0.01); }), "the wave does not settle to 5 before the end");
}

// Up to 5, a dip by 1, and back by straight lines: 10 % of the dip are left where the last line passes 4.9.
TEST(waveform, settles_from_the_step_that_the_window_shows) {
    const samples w{{0, 1, 2, 3, 5, 6}, {0, 5, 5, 4, 5, 5}};
    EXPECT_NEAR(settling_time(clip(w, 2, 6), 5, 0.1), 2.8, 1e-12);
    EXPECT_NEAR(settling_time(clip(w, 2.5, 6), 5, 0.1), 2.3, 1e-12);
    EXPECT_NEAR(settling_time(w, 5, 0.1), 4, 1e-12) << "of the whole record 10 % are 0.5";
    EXPECT_EQ(fault_of([&] { settling_time(clip(w, 1, 2), 5, 0.1); }), "there is no step: the wave stays at 5");
}

TEST(waveform, overshoot_of_a_damped_second_order_step) {
    for (const double z : {0.2, 0.5, 0.7}) {
        const double wd = std::sqrt(1 - z * z);
        const auto step = [&](double t) {
            return 1 - std::exp(-z * t) * (std::cos(wd * t) + z / wd * std::sin(wd * t));
        };
        const double wanted = std::exp(-pi * z / wd);
        EXPECT_NEAR(overshoot(sampled(step, 0, 200, 400000), 1), wanted, 1e-6);
        EXPECT_NEAR(overshoot(sampled([&](double t) { return 3 - 2 * step(t); }, 0, 200, 400000), 1), wanted, 1e-6);
    }
}

TEST(waveform, distortion_of_square_triangle_and_sine) {
    samples square, triangle;
    for (int k = 0; k < 3; ++k) {
        const double t = k;
        for (const double x : {t, t, t + 0.5, t + 0.5, t + 1}) square.t.push_back(x);
        for (const double x : {-1.0, 1.0, 1.0, -1.0, -1.0}) square.x.push_back(x + 7);
        for (const double x : {t, t + 0.5}) triangle.t.push_back(x);
        for (const double x : {-1.0, 1.0}) triangle.x.push_back(x);
    }
    triangle.t.push_back(3);
    triangle.x.push_back(-1);
    EXPECT_NEAR(distortion(square, 1), std::sqrt(pi * pi / 8 - 1), 1e-9);
    EXPECT_NEAR(distortion(triangle, 1), std::sqrt(std::pow(pi, 4) / 96 - 1), 1e-9);
    EXPECT_NEAR(distortion(square, 1, 5), std::sqrt(1.0 / 9 + 1.0 / 25), 1e-9);
    for (const int k : {1, 2, 3, 7, 101}) {
        const double odd = k % 2;
        EXPECT_NEAR(harmonic_amplitude(square, 1, k), odd * 4 / (pi * k), 1e-11) << k;
        EXPECT_NEAR(harmonic_amplitude(triangle, 1, k), odd * 8 / (pi * pi * k * k), 1e-11) << k;
    }
    EXPECT_NEAR(harmonic_amplitude(square, 1, 0), 7, 1e-12);
    const samples sine = unevenly_sampled([](double t) { return std::sin(2 * pi * t) + 4; }, 0, 3, 100000);
    EXPECT_NEAR(harmonic_amplitude(sine, 1, 1), 1, 1e-6);
    EXPECT_LT(distortion(sine, 1), 1e-3);
}

TEST(waveform, harmonics_are_those_of_the_last_whole_periods) {
    // Another wave stands before the last two periods of length 1.
    const auto f = [](double t) { return t < 0.6 ? 100.0 : 2 * std::cos(2 * pi * t) + 0.5 * std::sin(6 * pi * t); };
    const samples s = sampled(f, 0, 2.6, 260000);
    EXPECT_NEAR(harmonic_amplitude(s, 1, 1), 2, 1e-6);
    EXPECT_NEAR(harmonic_amplitude(s, 1, 3), 0.5, 1e-6);
    EXPECT_NEAR(distortion(s, 1), 0.25, 1e-6);
    EXPECT_EQ(fault_of([&] { distortion(s, 0.1); }), "the window of 2.6 is shorter than one period of frequency 0.1");
    EXPECT_NE(fault_of([&] { distortion(s, 0); }), "");
    EXPECT_NE(fault_of([&] { distortion(samples{{0, 1}, {3, 3}}, 1); }), "");
}

TEST(waveform, samples_that_are_no_numbers_are_not_hidden) {
    const samples w{{0, 1, 2}, {0, nan, 2}};
    EXPECT_TRUE(std::isnan(least(w)) && std::isnan(greatest(w)) && std::isnan(average(w)) && std::isnan(rms(w)));
    EXPECT_TRUE(std::isnan(overshoot(w, 2)));
    EXPECT_TRUE(std::isnan(distortion(w, 1)));
    EXPECT_EQ(crossings(w, 1).size(), 0u);
}

}  // namespace
