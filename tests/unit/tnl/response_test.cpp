// Small signals over frequency, held against closed forms on grids whose points hit nothing.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <functional>

#include "tnl/common/exit_status.h"
#include "tnl/results/measure.h"

namespace {

using namespace cli;
using complex_of = std::function<std::complex<double>(double f)>;

constexpr double pi = 3.14159265358979323846;

// Magnitude and phase as a row file of small signals has them; wrapped: the phase from -180 to 180.
result_table table_of(const complex_of& x, double from, double to, int n) {
    result_table t;
    t.path = "f.dat";
    t.kind = "ac";
    t.columns = {{"frequency", "Hz"}, {"mag_of_x", "V"}, {"phase_of_x", "deg"}};
    for (int i = 0; i < n; ++i) {
        const double f = from * std::pow(to / from, double(i) / (n - 1));
        const std::complex<double> v = x(f);
        t.values.insert(t.values.end(), {f, std::abs(v), std::arg(v) * 180 / pi});
    }
    t.first_row = {0, static_cast<std::size_t>(n)};
    return t;
}

double value_of(const std::string& text, const result_table& t) {
    return evaluate(parse_expression(text), t, 0).sides.at(0).value;
}
std::string text_in(const std::string& text, const result_table& t) {
    return text_of(evaluate(parse_expression(text), t, 0).sides.at(0));
}
std::string fault_of(const std::string& text, const result_table& t) {
    try {
        value_of(text, t);
    } catch (const std::runtime_error& e) {
        return e.what();
    }
    return "";
}
bool is_usage(const std::string& text, const result_table& t) {
    try {
        value_of(text, t);
    } catch (const usage_error&) {
        return true;
    } catch (const measure_error&) {
    }
    return false;
}

constexpr std::complex<double> i(0, 1);
// Corner at 1 kHz.
std::complex<double> low_pass(double f) { return 1.0 / (1.0 + i * f / 1e3); }
std::complex<double> second_order(double f, double q) {
    const double u = f / 1e3;
    return 1.0 / (1.0 - u * u + i * u / q);
}
// Three equal poles at 1 kHz: the phase passes -180 degrees where each has 60, at sqrt(3) kHz, with 1/8 of the gain.
std::complex<double> loop(double f, double gain) { return gain / std::pow(1.0 + i * f / 1e3, 3); }

TEST(response, magnitude_decibel_and_phase_of_a_row_and_between_rows) {
    result_table t = table_of(low_pass, 100, 10e3, 3);  // 100, 1000, 10000 Hz
    EXPECT_EQ(text_in("mag(x, 1k)", t), "0.7071068 V");
    EXPECT_EQ(text_in("db(x, 1k)", t), "-3.0103 dB");
    EXPECT_EQ(text_in("phase(x, 1k)", t), "-45 deg");
    EXPECT_EQ(text_in("at(db(x), 1k)", t), "-3.0103 dB");
    EXPECT_EQ(text_in("at(mag_of_x, 1k)", t), "0.7071068 V");
    EXPECT_NEAR(value_of("real(x, 1k)", t), 0.5, 1e-12);
    EXPECT_NEAR(value_of("imag(x, 1k)", t), -0.5, 1e-12);
    // Halfway between two rows over log f: the mean of their dB, and of their phases.
    const double f = std::sqrt(1e6 * 10);
    const std::string at = std::to_string(f);
    const double mean = 0.5 * (value_of("db(x, 1k)", t) + value_of("db(x, 10k)", t));
    EXPECT_NEAR(value_of("db(x, " + at + ")", t), mean, 1e-9);
    EXPECT_NEAR(value_of("at(db(x), " + at + ")", t), mean, 1e-9);
    EXPECT_NEAR(value_of("db(at(mag(x), " + at + "))", t), mean, 1e-9);
    EXPECT_NEAR(value_of("db(at(mag_of_x, " + at + "))", t), mean, 1e-9);
    EXPECT_NEAR(value_of("phase(x, " + at + ")", t), 0.5 * (-45 - 180 / pi * std::atan(10)), 1e-9);
    EXPECT_NEAR(value_of("cross(db(x), " + std::to_string(mean) + ")", t), f, 0.01);
    EXPECT_EQ(fault_of("db(x, 99)", t), "99 lies outside the rows, which go from 100 to 10000");
}

TEST(response, the_bandwidth_of_a_first_order_low_pass_is_its_corner) {
    // What is left is the bend of the curve between two rows: 10 points a decade 0.6 %, 50 points 0.03 %.
    EXPECT_NEAR(value_of("bandwidth(x)", table_of(low_pass, 7, 1e5, 42)), 1e3, 6);
    EXPECT_NEAR(value_of("bandwidth(x)", table_of(low_pass, 7, 1e5, 209)), 1e3, 0.3);
    EXPECT_EQ(text_in("bandwidth(x, low)", table_of(low_pass, 1, 1e6, 7)).substr(0, 2), "10");
    EXPECT_EQ(fault_of("bandwidth(x)", table_of(low_pass, 1, 900, 20)),
              "the magnitude does not fall 3 dB below that of the lowest frequency, from 1 to 900; bandwidth(x, peak) "
              "goes by its peak");
}

TEST(response, a_band_pass_has_its_bandwidth_around_the_peak_and_its_q) {
    for (const double q : {2.0, 10.0, 40.0}) {  // f0/q between the points of half power, exactly
        const auto band = [q](double f) { return 1.0 / (1.0 + i * q * (f / 1e3 - 1e3 / f)); };
        const result_table t = table_of(band, 93, 11e3, 401);  // 193 points a decade
        EXPECT_NEAR(value_of("bandwidth(x, peak)", t), 1e3 / q, 5e-3 * 1e3 / q) << q;
        EXPECT_NEAR(value_of("q(x)", t), q, 5e-3 * q) << q;
        EXPECT_NEAR(value_of("peak_freq(x)", t), 1e3, 0.2) << q;
        EXPECT_NEAR(value_of("peak(x)", t), 1, 1e-3) << q;
    }
}

TEST(response, the_peak_of_a_second_order_low_pass) {
    for (const double q : {1.0, 2.0, 5.0}) {
        const double u = std::sqrt(1 - 0.5 / (q * q)), top = q / std::sqrt(1 - 0.25 / (q * q));
        const result_table t = table_of([q](double f) { return second_order(f, q); }, 13, 17e3, 151);  // 48 a decade
        EXPECT_NEAR(value_of("peak(x)", t), top, 3e-3 * top) << q;
        EXPECT_NEAR(value_of("peak_freq(x)", t), 1e3 * u, 2e-3 * 1e3 * u) << q;
        EXPECT_EQ(text_in("db(peak(x))", t).substr(text_in("db(peak(x))", t).size() - 2), "dB");
    }
    // Points of half the power around the peak of 1/(1 - u^2 + i u/q): u^2 = 1 - 1/(2 q^2) -+ sqrt(1/q^2 - 1/(4 q^4)).
    const double middle = 0.98, side = std::sqrt(0.04 - 0.0004);
    const double q = std::sqrt(middle) / (std::sqrt(middle + side) - std::sqrt(middle - side));
    const result_table t = table_of([](double f) { return second_order(f, 5); }, 13, 17e3, 601);
    EXPECT_NEAR(q, 4.899, 1e-3);
    EXPECT_NEAR(value_of("q(x)", t), q, 2e-3 * q);
    EXPECT_EQ(fault_of("q(x)", table_of([](double f) { return second_order(f, 1); }, 10, 1e4, 60)),
              "the magnitude does not fall 3 dB below its peak in front of it, from 10 to 10000");
    EXPECT_EQ(fault_of("q(x)", table_of([](double f) { return i * f / (1e3 + i * f); }, 10, 1e4, 60)),
              "the magnitude does not fall 3 dB below its peak behind it, from 10 to 10000");
}

// A tank of q 49 on the grid of 159 rows a decade that a trial has used: 38.1 and 884 were told without a word.
TEST(response, a_resonance_is_told_right_or_not_at_all) {
    const double f0 = 5000.3, q = 49.117;
    const complex_of tank = [=](double f) { return 1000.0 / std::complex<double>(1, q * (f / f0 - f0 / f)); };
    EXPECT_EQ(fault_of("q(x)", table_of(tank, 300, 100e3, 201)).substr(0, 42),
              "the rows around the peak are too far apart");
    EXPECT_NE(fault_of("peak(x)", table_of(tank, 300, 100e3, 201)), "");
    for (const int n : {801, 2001, 20001}) {
        const result_table t = table_of(tank, 300, 100e3, n);
        EXPECT_NEAR(value_of("q(x)", t), q, 2e-3 * q) << n;
        EXPECT_NEAR(value_of("peak(x)", t), 1000, 1) << n;
        EXPECT_NEAR(value_of("peak_freq(x)", t), f0, 1e-4 * f0) << n;
    }
}

TEST(response, the_margins_of_a_loop_of_three_poles) {
    const double gain = 4;
    const double crossover = 1e3 * std::sqrt(std::cbrt(gain * gain) - 1);
    const double phase = 180 - 3 * 180 / pi * std::atan(crossover / 1e3);
    for (const auto& [n, near] : {std::pair{41, 0.01}, {201, 4e-4}}) {  // 10 and 50 points a decade
        const result_table t = table_of([=](double f) { return loop(f, gain); }, 11, 1.1e5, n);
        EXPECT_NEAR(value_of("crossover(x)", t), crossover, near * crossover) << n;
        EXPECT_NEAR(value_of("phase_margin(x)", t), phase, 60 * near) << n;
        EXPECT_NEAR(value_of("gain_margin(x)", t), 20 * std::log10(8 / gain), 20 * near) << n;
        EXPECT_EQ(text_in("phase_margin(x)", t).substr(text_in("phase_margin(x)", t).size() - 3), "deg");
        EXPECT_TRUE(evaluate(parse_expression("25 < phase_margin(x) < 29"), t, 0).holds);
    }
    // Beyond its limit, 8, both margins are below 0.
    const result_table unstable = table_of([](double f) { return loop(f, 20); }, 10, 1e5, 201);
    EXPECT_NEAR(value_of("gain_margin(x)", unstable), 20 * std::log10(8 / 20.0), 0.01);
    EXPECT_LT(value_of("phase_margin(x)", unstable), -20);
    // A loop that is measured with its sign: 1/(1 - x).
    const result_table inverted = table_of([=](double f) { return -loop(f, gain); }, 11, 1.1e5, 201);
    EXPECT_NEAR(value_of("phase_margin(-x)", inverted), phase, 0.03);
    EXPECT_NEAR(value_of("gain_margin(-x)", inverted), 20 * std::log10(8 / gain), 0.01);
}

TEST(response, a_crossing_that_does_not_exist_is_told) {
    const result_table one = table_of(low_pass, 10, 1e5, 41);
    EXPECT_EQ(fault_of("gain_margin(x)", one),
              "the phase does not pass 180 degrees from 10 to 100000: there is no gain margin");
    EXPECT_EQ(fault_of("phase_margin(x)", one),
              "the magnitude does not pass 1 (0 dB) from 10 to 100000: there is no phase margin");
    EXPECT_EQ(fault_of("crossover(x)", one), "crossing 1 of level 1 does not exist: there are 0 falling crossings");
    EXPECT_FALSE(is_usage("crossover(x)", one));
}

TEST(response, the_phase_is_unwrapped_whatever_turn_the_file_is_in) {
    // A delay of 1 ms: -360 degrees a kHz.
    const result_table t = table_of([](double f) { return std::exp(-i * 2.0 * pi * f * 1e-3); }, 100, 1e4, 2001);
    EXPECT_NEAR(value_of("phase(x, 1k)", t), -360, 1e-2);
    EXPECT_NEAR(value_of("phase(x, 10k)", t), -3600, 1e-6);
    EXPECT_NEAR(value_of("min(phase(x))", t), -3600, 1e-6);
    result_table gap = t;
    gap.values[3 * 700 + 2] = NAN;  // one row without a number
    EXPECT_NEAR(value_of("phase(x, 10k)", gap), -3600, 1e-6);
    // What comes first stays where the file has it.
    result_table turned = t;
    for (std::size_t k = 2; k < turned.values.size(); k += 3) turned.values[k] -= 720;
    EXPECT_NEAR(value_of("phase(x, 1k)", turned), -360 - 720, 1e-2);
    // A margin is counted from the nearest odd number of half turns.
    result_table late =
        table_of([](double f) { return loop(f, 4) * std::exp(-i * 2.0 * pi * f * 1e-3); }, 11, 1e5, 801);
    const double margin = value_of("phase_margin(x)", late);
    for (std::size_t k = 2; k < late.values.size(); k += 3) late.values[k] += 1080;
    EXPECT_NEAR(value_of("phase_margin(x)", late), margin, 1e-9);
    EXPECT_NEAR(margin, std::remainder(180 - 3 * 180 / pi * std::atan(1.2328) - 360 * 1.2328, 360), 0.2);
}

TEST(response, arithmetic_is_that_of_complex_numbers) {
    result_table t = table_of(low_pass, 100, 1e4, 5);
    t.columns.insert(t.columns.end(), {{"mag_of_j", "A"}, {"phase_of_j", "deg"}});
    std::vector<double> wider;
    for (std::size_t row = 0; row < 5; ++row) {
        wider.insert(wider.end(), t.values.begin() + static_cast<long>(3 * row),
                     t.values.begin() + static_cast<long>(3 * row) + 3);
        wider.insert(wider.end(), {0.5, 30});
    }
    t.values = wider;
    const std::complex<double> x = low_pass(1e3), j = std::polar(0.5, pi / 6);
    const std::pair<const char*, std::complex<double>> cases[] = {
        {"x/j", x / j},   {"x*j", x * j},    {"x+j", x + j},
        {"x-j", x - j},   {"-x", -x},        {"1-x", 1.0 - x},
        {"x-3", x - 3.0}, {"2*x", 2.0 * x},  {"1/(1+x)", 1.0 / (1.0 + x)},
        {"x^2", x * x},   {"x^-1", 1.0 / x}, {"-2*x", -2.0 * x}};
    for (const auto& [text, wanted] : cases) {
        EXPECT_NEAR(value_of("real(" + std::string(text) + ", 1k)", t), wanted.real(), 1e-12) << text;
        EXPECT_NEAR(value_of("imag(" + std::string(text) + ", 1k)", t), wanted.imag(), 1e-12) << text;
    }
    EXPECT_EQ(text_in("mag(x/j, 1k)", t), "1.414214 ohm");
    const row_values rows = evaluate_rows(parse_expression("x/j"), t, 0);
    ASSERT_EQ(rows.phase.size(), 5u);
    EXPECT_NEAR(rows.phase[2], -75, 1e-9);
    EXPECT_TRUE(is_usage("x^j", t));
    EXPECT_TRUE(evaluate_rows(parse_expression("db(x)"), t, 0).phase.empty());
}

TEST(response, real_and_imaginary_part_of_a_nyquist_file_make_one_too) {
    result_table t = table_of([](double f) { return loop(f, 4); }, 11, 1.1e5, 201);
    for (std::size_t k = 0; k < t.values.size(); k += 3) {
        const std::complex<double> v = std::polar(t.values[k + 1], t.values[k + 2] * pi / 180);
        t.values[k + 1] = v.real();
        t.values[k + 2] = v.imag();
    }
    t.kind = "nyquist";
    t.columns = {{"frequency", "Hz"}, {"real_of_x", "V"}, {"imag_of_x", "V"}};
    EXPECT_NEAR(value_of("gain_margin(x)", t), 20 * std::log10(2), 0.01);
    EXPECT_NEAR(value_of("min(phase(x))", t), -270 + 3 * 180 / pi * std::atan(1e3 / 1.1e5), 1e-6);
}

TEST(response, what_is_missing_is_told) {
    result_table t = table_of(low_pass, 10, 1e5, 41);
    t.columns[2].name = "phase_of_y";
    EXPECT_NEAR(value_of("bandwidth(x)", t), 1e3, 7);
    EXPECT_EQ(fault_of("phase(x, 1k)", t), "this needs phase_of_x, and f.dat does not have it");
    EXPECT_EQ(fault_of("gain_margin(2*x)", t), "this needs phase_of_x, and f.dat does not have it");
    EXPECT_EQ(fault_of("mag(1+x, 1k)", t), "this needs phase_of_x, and f.dat does not have it");
    EXPECT_EQ(fault_of("db(y, 1k)", t), "this needs mag_of_y, and f.dat does not have it");
    EXPECT_NEAR(value_of("phase(y, 1k)", t), -45, 0.1);
    EXPECT_TRUE(is_usage("phase(x, 1k)", t));
    EXPECT_NEAR(value_of("bandwidth(mag_of_x)", t), 1e3, 7);
    EXPECT_EQ(fault_of("gain_margin(mag_of_x)", t),
              "gain_margin takes a small signal: X where the file has mag_of_X and phase_of_X");
    EXPECT_EQ(fault_of("bandwidth(db(x))", t),
              "bandwidth takes a small signal: X where the file has mag_of_X and phase_of_X");
    EXPECT_EQ(fault_of("avg(x)", t),
              "avg takes values a row; those of a small signal x are mag(x), db(x) and phase(x)");
    EXPECT_EQ(fault_of("sqrt(x)", t),
              "sqrt takes values a row; those of a small signal x are mag(x), db(x) and phase(x)");
    EXPECT_EQ(fault_of("x", t),
              "x is a small signal, with magnitude and phase; measure it: db(x, 1k), phase(x, 1k), bandwidth(x)");
    EXPECT_EQ(fault_of("db(nobody, 1k)", t), "no column nobody in f.dat");
    EXPECT_NE(fault_of("bandwidth(x, high)", t), "");
}

TEST(response, windows_and_angular_frequencies) {
    result_table t = table_of([](double f) { return loop(f, 4); }, 11, 1.1e5, 201);
    t.columns[0].unit = "rad/s";
    EXPECT_EQ(text_in("crossover(x)", t).substr(text_in("crossover(x)", t).size() - 5), "rad/s");
    EXPECT_NEAR(value_of("peak(x, 1k, 10k)", t), 4 / std::pow(2, 1.5), 1e-3);
    EXPECT_NE(fault_of("crossover(x, 2k, 10k)", t), "");
    EXPECT_NEAR(value_of("max(mag(x), 1k, 10k)", t), 4 / std::pow(2, 1.5), 1e-3);
    result_table zero = t;
    zero.values[0] = 0;
    EXPECT_EQ(fault_of("bandwidth(x)", zero),
              "the first column, frequency, is no frequency: it does not rise or fall throughout above 0");
    EXPECT_NEAR(value_of("at(mag_of_x, 11.5)", zero), 4, 0.1);
}

}  // namespace
