// examples_steady_test.cpp -- the periodic steady states of examples/ against formulas, integrations of their own, and
// transients.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "whole_run.h"

namespace {
constexpr double pi = std::numbers::pi;

std::string deck_of(const std::string& name) {
    return read_file(std::string(TARNEL_EXAMPLES) + "/" + name + "/deck.in");
}
whole_run example(const std::string& name) { return whole_run(deck_of(name)); }

std::string transient(const std::string& cards, const std::string& variables) {
    return "begin_solve\nsolve_type trns\n" + cards + "\nbegin_output\nfilename trns.dat\nvariables: " + variables +
           "\nend_output\nend_solve\nend_cf\n";
}
// The circuit of an example with a transient in place of its blocks; a transient behind its blocks.
whole_run circuit_in_time(const std::string& name, const std::string& cards, const std::string& variables) {
    const std::string deck = deck_of(name);
    return whole_run(deck.substr(0, deck.find("begin_solve")) + transient(cards, variables));
}
whole_run example_going_on(const std::string& name, const std::string& cards, const std::string& variables) {
    const std::string deck = deck_of(name);
    return whole_run(deck.substr(0, deck.rfind("end_cf")) + transient(cards, variables));
}

// Mean over the time of the rows, by trapezoids.
double mean(const table& rows, std::size_t column) {
    double sum = 0.0;
    for (std::size_t i = 1; i < rows.size(); ++i)
        sum += (rows[i][0] - rows[i - 1][0]) * (rows[i][column] + rows[i - 1][column]) / 2;
    return sum / (rows.back()[0] - rows.front()[0]);
}
double ripple(const table& rows, std::size_t column) {
    const auto [low, high] = std::minmax_element(
        rows.begin(), rows.end(), [column](const auto& a, const auto& b) { return a[column] < b[column]; });
    return (*high)[column] - (*low)[column];
}

// Rows have 7 digits.
void expect_same_values(const std::vector<double>& a, const std::vector<double>& b, std::size_t n_columns) {
    for (std::size_t j = 1; j <= n_columns; ++j) EXPECT_NEAR(a[j], b[j], 1e-6 * std::fabs(b[j])) << j;
}

#define EXPECT_WITHIN(part, got, wanted) EXPECT_NEAR(got, wanted, (part)*std::fabs(wanted))
}  // namespace

TEST(examples_steady, buck_steady_has_mean_and_ripple_of_theory) {
    const whole_run run = example("buck_steady");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("wave.dat");
    ASSERT_GT(rows.size(), 400u);
    const double period = 20e-6, d = 0.4, l = 100e-6, c = 470e-6, vin = 24, r = 4;
    const double v = d * vin / (1 + 1e-3 / r), di = (vin - v) * d * period / l;
    EXPECT_WITHIN(1e-5, mean(rows, 1), v);
    EXPECT_WITHIN(1e-4, mean(rows, 2), v / r);
    // The step of 50 ns behind an edge has the mean of the slopes, so that a half of it is missing.
    EXPECT_NEAR(ripple(rows, 2), di, 25e-9 * vin / l);
    EXPECT_WITHIN(5e-3, ripple(rows, 1), di * period / (8 * c));  // a row each 50 ns, and 5 mV of ripple
    expect_same_values(rows.front(), rows.back(), 2);
}

// Time constants of 2 RC = 3.8 ms: in 75 ms the start is forgotten to the ninth digit.
TEST(examples_steady, buck_steady_is_where_a_transient_ends) {
    std::vector<double> found;
    {
        const whole_run run = example("buck_steady");
        ASSERT_FALSE(run.stopped) << run.text;
        found = run.rows("wave.dat").back();
    }
    const whole_run run = circuit_in_time("buck_steady",
                                          "initial_sol initialize\nmethod: trapezoidal=yes t_end=75m delt_const=0.05u "
                                          "itmax_trns=10000000",
                                          "vout il\ncontrol: out_tstart=74.99m");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("trns.dat");
    ASSERT_GT(rows.size(), 10u) << run.text;
    expect_same_values(found, rows.back(), 2);
}

TEST(examples_steady, boost_steady_has_mean_and_ripple_of_theory) {
    const whole_run run = example("boost_steady");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("wave.dat");
    ASSERT_GT(rows.size(), 400u);
    const double period = 20e-6, d = 0.6, l = 200e-6, c = 1000e-6, vin = 12, r = 30;
    const double v = vin / (1 - d) / (1 + 1e-3 / r / ((1 - d) * (1 - d)));
    EXPECT_WITHIN(1e-5, mean(rows, 1), v);
    EXPECT_WITHIN(1e-4, mean(rows, 2), v / r / (1 - d));
    EXPECT_NEAR(ripple(rows, 2), vin * d * period / l, 25e-9 * v / l);  // as above
    EXPECT_WITHIN(5e-3, ripple(rows, 1), v / r * d * period / c);
    expect_same_values(rows.front(), rows.back(), 2);
}

// Of a difference from the steady state 1 - 0.9994^500 = 1/4 and more would have gone in 500 periods.
TEST(examples_steady, boost_steady_stays_in_a_transient_from_there) {
    const whole_run run = example_going_on("boost_steady",
                                           "initial_sol previous\nmethod: trapezoidal=yes t_end=10m delt_const=0.05u "
                                           "itmax_trns=10000000",
                                           "vout il\ncontrol: out_tstart=9.99m");
    ASSERT_FALSE(run.stopped) << run.text;
    const table found = run.rows("wave.dat"), rows = run.rows("trns.dat");
    ASSERT_GT(rows.size(), 10u) << run.text;
    expect_same_values(found.back(), rows.back(), 2);
}

namespace {
// The capacitor of rectifier_steady a half wave of 10 ms later, by the classic rule of fourth order.
double a_half_wave_later(double v, int n, std::vector<double>* points) {
    const auto rate = [](double t, double x) {
        const double current = std::max(std::fabs(16.97 * std::sin(100 * pi * t)) - 1.4 - x, 0.0) / 0.22;
        return (current - x / 50) / 10e-3;
    };
    const double h = 10e-3 / n;
    for (int k = 0; k < n; ++k) {
        if (points != nullptr) points->push_back(v);
        const double t = k * h, a = rate(t, v), b = rate(t + h / 2, v + h / 2 * a), c = rate(t + h / 2, v + h / 2 * b),
                     d = rate(t + h, v + h * c);
        v += h / 6 * (a + 2 * b + 2 * c + d);
    }
    return v;
}
}  // namespace

TEST(examples_steady, rectifier_steady_is_the_fixed_point_of_an_integration) {
    const whole_run run = example("rectifier_steady");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("wave.dat");
    ASSERT_EQ(rows.size(), 1001u);
    constexpr int n = 10000;
    double v = 15;
    for (int k = 0; k < 40; ++k) v = a_half_wave_later(v, n, nullptr);  // each leaves less than a half of the error
    std::vector<double> points;
    EXPECT_NEAR(a_half_wave_later(v, n, &points), v, 1e-9);
    // Steps of 20 us do not meet the corners of the current.
    for (std::size_t k = 0; k < 1000; ++k) EXPECT_NEAR(rows[k][2], points[k % 500 * 20], 5e-5) << k;
    // The multiplier of a period is the slope of the map of two half waves.
    const double up = a_half_wave_later(a_half_wave_later(v + 1e-5, n, nullptr), n, nullptr),
                 down = a_half_wave_later(a_half_wave_later(v - 1e-5, n, nullptr), n, nullptr);
    const std::string words = "stable, largest multiplier=";
    const std::size_t at = run.text.find(words);
    ASSERT_NE(at, std::string::npos) << run.text;
    // Conduction, which takes 0.22 ohm times 10000 uF, begins and ends in a step of 20 us in each half wave.
    const double multiplier = (up - down) / 2e-5;
    EXPECT_WITHIN(2 * 20e-6 / 2.2e-3, std::stod(run.text.substr(at + words.size())), multiplier);
    // What the load takes comes through the diodes, and the capacitor alone has it for less than a half wave.
    double charge = 0;
    for (std::size_t k = 1; k < rows.size(); ++k) charge += 20e-6 * std::fabs(rows[k][3]);
    const double current = mean(rows, 2) / 50;
    EXPECT_WITHIN(1e-3, charge, current * 20e-3);
    EXPECT_LT(ripple(rows, 2), current * 10e-3 / 10e-3);
    EXPECT_GT(ripple(rows, 2), 0.8 * current * 10e-3 / 10e-3);
}
