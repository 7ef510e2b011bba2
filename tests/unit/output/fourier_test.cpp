#include "output/fourier.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>

#include "halt_throws.h"
#include "output/row_writers.h"
#include "time_fixture.h"

namespace {
std::size_t at(int i) { return static_cast<std::size_t>(i); }
const double pi = std::acos(-1.0);
using wave = std::function<double(double)>;

std::string fourier_file(const std::string& control, const std::string& variables = "vout") {
    return out_block("filename f.dat fourier=yes limit_lines=0\nvariables: " + variables + "\ncontrol: " + control +
                     "\n");
}

// A block with one Fourier file, and the signal at these times as vout.
block_run summed(const std::string& control, const std::vector<double>& times, const wave& x) {
    block_run r = with_blocks(trns_cards + fourier_file(control));
    open_out_files(r.slv, r.c);
    for (double t : times) {
        vout(r.c) = x(t);
        write_trns(r.slv, r.c, rows_analog, t);
    }
    return r;
}

std::vector<double> steps(double from, double to, int n) {
    std::vector<double> t;
    for (int i = 0; i <= n; ++i) t.push_back(from + i * (to - from) / n);
    return t;
}

double amplitude(const block_run& r, int k) {
    const out_file& f = r.slv.out.files[0];
    return std::hypot(f.sums.cosine.at(at(k)), f.sums.sine.at(at(k))) / (0.5 * f.period_fourier);
}

std::string report(block_run& r) {
    return run_and_listen([&] {
               write_fourier(r.slv);
               close_out_files(r.slv);
           })
        .text;
}

// The middle rows of the sticks: value of column 0 at each harmonic.
std::vector<double> stick_heights(const std::string& text) {
    std::istringstream in(text);
    std::vector<double> all;
    for (double k, a; in >> k >> a;)
        if (k == std::floor(k)) all.push_back(a);
    return all;
}

// A sine and its third harmonic.
double two_tones(double t) { return std::sin(2 * pi * t) + 0.3 * std::sin(6 * pi * t + 0.4); }
// The mean of two points 2 pi k / n apart on a circle lies nearer to its centre.
double shrunk(int k, int n) { return std::cos(pi * k / n); }
}  // namespace

TEST(fourier, of_two_tones_gives_their_amplitudes_as_the_mean_of_each_step_sees_them) {
    const temp_folder folder;
    const block_run r = summed("n_fourier=4 out_tend=1", steps(0, 1, 1000), two_tones);
    EXPECT_NEAR(amplitude(r, 1), 0.9999950652, 5e-11);
    EXPECT_NEAR(amplitude(r, 3), 0.2999866761, 5e-11);
    EXPECT_NEAR(amplitude(r, 1), shrunk(1, 1000), 1e-13);
    EXPECT_NEAR(amplitude(r, 3), 0.3 * shrunk(3, 1000), 1e-13);
    EXPECT_LT(amplitude(r, 2), 1e-15);
    EXPECT_LT(amplitude(r, 0), 2e-15);
}

TEST(fourier, of_a_span_that_ends_a_tolerance_behind_the_run_is_the_same) {
    const temp_folder folder;
    const block_run r = summed("n_fourier=3", steps(0, 1, 1000), two_tones);
    EXPECT_EQ(r.slv.out.files[0].out_tend, 1.0 + 1e-13);
    EXPECT_NEAR(amplitude(r, 1), 0.9999950652, 5e-11);
    EXPECT_NEAR(amplitude(r, 3), 0.2999866761, 5e-11);
    EXPECT_LT(amplitude(r, 2), 1e-12);
}

TEST(fourier, report_has_three_rows_a_harmonic_and_a_distortion_a_column) {
    const temp_folder folder;
    block_run r = summed("n_fourier=3 out_tend=1", steps(0, 1, 1000), two_tones);
    const std::string console = report(r);
    const std::string text = read_file("f.dat");
    const std::string zero = " 0.000000e+00 \n", noise = text.substr(14 + 15 + 14, 14);
    EXPECT_EQ(text.substr(0, 14 + 15), "-1.000000e-04 " + zero);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 12);
    EXPECT_NE(text.find(" 9.999000e-01 " + zero + " 1.000000e+00  9.999951e-01 \n 1.000100e+00 " + zero),
              std::string::npos);
    EXPECT_NE(text.find(" 2.999900e+00 " + zero + " 3.000000e+00  2.999867e-01 \n 3.000100e+00 " + zero),
              std::string::npos);
    EXPECT_LT(std::abs(std::stod(noise)), 1e-14);

    const std::string head = "file no=0 variable no=0 thd (%)=";
    ASSERT_EQ(console.substr(0, head.size()), head);
    EXPECT_NEAR(std::stod(console.substr(head.size())), 100 * 0.3 * shrunk(3, 1000) / shrunk(1, 1000), 1e-8);
    EXPECT_EQ(std::count(console.begin(), console.end(), '\n'), 1);
}

TEST(fourier, mean_of_a_constant_is_its_value) {
    const temp_folder folder;
    block_run r = summed("n_fourier=0 out_tend=1", steps(0, 1, 8), [](double) { return 2.5; });
    EXPECT_EQ(report(r), "file no=0 variable no=0 thd (%)=nan\n") << "no fundamental";
    EXPECT_EQ(read_file("f.dat"),
              "-1.000000e-04  0.000000e+00 \n 0.000000e+00  2.500000e+00 \n 1.000000e-04  0.000000e+00 \n");
}

TEST(fourier, distortion_of_one_harmonic_is_none_and_of_silence_no_number) {
    const temp_folder folder;
    block_run tone = summed("n_fourier=1", steps(0, 1, 8), [](double t) { return std::sin(2 * pi * t); });
    EXPECT_EQ(report(tone), "file no=0 variable no=0 thd (%)=0\n");
    block_run silence = summed("n_fourier=3", steps(0, 1, 8), [](double) { return 0.0; });
    EXPECT_EQ(report(silence), "file no=0 variable no=0 thd (%)=nan\n");
}

TEST(fourier, numbers_files_among_all_files_and_columns_from_0) {
    const temp_folder folder;
    block_run r = with_blocks(trns_cards + out_block("filename a.dat\nvariables: vout\n") +
                              fourier_file("n_fourier=1", "vout gw"));
    open_out_files(r.slv, r.c);
    const double one_period[] = {0, 1, 0, -1, 0};
    for (int i = 0; i < 5; ++i) {
        vout(r.c) = one_period[i];
        for (double& v : r.c.gbeu.val_vr) v = 3 * one_period[i];
        write_trns(r.slv, r.c, rows_analog, 0.25 * i);
    }
    EXPECT_EQ(report(r), "file no=1 variable no=0 thd (%)=0\nfile no=1 variable no=1 thd (%)=0\n");
    const std::string text = read_file("f.dat");
    // Steps of +1 and -1: means 0.5 0.5 -0.5 -0.5 at phases pi/2 pi 3pi/2 2pi, so both sums are 0.25, the root 0.3536.
    EXPECT_NE(text.find(" 1.000000e+00  7.071068e-01  2.121320e+00 \n"), std::string::npos) << text;
}

TEST(fourier_file, holds_nothing_until_the_report) {
    const temp_folder folder;
    block_run r = summed("fixed_interval=1u", steps(0, 1, 10000), two_tones);
    EXPECT_EQ(read_file("f.dat"), "");
    report(r);
    EXPECT_EQ(stick_heights(read_file("f.dat")).size(), 2u) << "limit_lines 0 does not count sticks";
}

TEST(fourier, sums_nothing_outside_its_span) {
    const temp_folder folder;
    // Two whole periods of 0.25 s in the span; before and behind it the signal is something else.
    const auto gated = [](double t) { return t < 0.25 || t > 0.75 ? 1e6 : std::cos(8 * pi * t); };
    const block_run r = summed("n_fourier=2 out_tstart=0.25 out_tend=0.75", steps(0, 1, 400), gated);
    EXPECT_NEAR(amplitude(r, 2), shrunk(2, 200), 1e-12);
    EXPECT_LT(amplitude(r, 0) + amplitude(r, 1), 1e-12);
}

TEST(fourier, cuts_the_intervals_across_both_ends_of_the_span_on_their_straight_lines) {
    const temp_folder folder;
    // On a straight line the trapezoid is exact: the mean over 0.15 .. 0.65 is the value in the middle.
    const wave ramp = [](double t) { return 3 + 10 * t; };
    for (const std::vector<double>& times : {std::vector<double>{0, 0.2, 0.5, 0.9}, {0, 0.15, 0.65, 1}, {0, 1}}) {
        block_run r = summed("n_fourier=0 out_tstart=0.15 out_tend=0.65", times, ramp);
        EXPECT_NEAR(0.5 * amplitude(r, 0), 7.0, 1e-12);
        report(r);
    }
}

TEST(fourier, of_a_run_that_starts_inside_the_span_sums_from_its_first_point) {
    const temp_folder folder;
    const block_run r = summed("n_fourier=0 out_tstart=0.25 out_tend=0.75", {0.5, 0.75}, [](double) { return 4.0; });
    EXPECT_NEAR(0.5 * amplitude(r, 0), 2.0, 1e-12) << "half of the span has no signal";
}

TEST(fourier, of_a_span_that_the_run_does_not_meet_is_nothing) {
    const temp_folder folder;
    const wave one = [](double) { return 1.0; };
    for (const char* span : {"out_tstart=2 out_tend=3", "out_tstart=-3 out_tend=-2", "out_tstart=0.8 out_tend=0.2"}) {
        block_run r = summed(span, steps(0, 1, 10), one);
        EXPECT_EQ(amplitude(r, 0), 0.0) << span;
        EXPECT_EQ(report(r), "file no=0 variable no=0 thd (%)=nan\n");
    }
}

TEST(fourier, takes_the_new_value_behind_two_points_at_one_time) {
    const temp_folder folder;
    // A step from 0 to 1 in the middle: two rows at 0.5, old value and new.
    block_run r = with_blocks(trns_cards + fourier_file("n_fourier=0 out_tend=1"));
    open_out_files(r.slv, r.c);
    for (const auto& [t, x] : {std::pair{0.0, 0.0}, {0.5, 0.0}, {0.5, 1.0}, {1.0, 1.0}}) {
        vout(r.c) = x;
        write_trns(r.slv, r.c, rows_all, t);
    }
    EXPECT_DOUBLE_EQ(0.5 * amplitude(r, 0), 0.5);
}

TEST(fourier, starts_anew_when_the_files_of_a_block_are_opened) {
    const temp_folder folder;
    block_run r = with_blocks(trns_cards + fourier_file("n_fourier=0 out_tend=1"));
    for (double level : {5.0, 7.0}) {
        open_out_files(r.slv, r.c);
        for (double t : {0.0, 0.3, 1.0, 1.2}) {
            vout(r.c) = level;
            write_trns(r.slv, r.c, rows_analog, t);
        }
        EXPECT_DOUBLE_EQ(0.5 * amplitude(r, 0), level);
        report(r);
    }
}

TEST(fourier, sums_of_random_points_equal_the_sums_over_the_polygon_in_the_span) {
    const temp_folder folder;
    std::mt19937 rng(1);
    std::uniform_real_distribution<double> number(0, 1);
    for (int trial = 0; trial < 50; ++trial) {
        const double t1 = 0.4 * number(rng), t2 = 0.6 + 0.4 * number(rng);
        std::vector<double> t, x;
        for (int i = 0; i < 2 + trial; ++i) t.push_back(number(rng));
        std::sort(t.begin(), t.end());
        for (std::size_t i = 0; i < t.size(); ++i) x.push_back(number(rng) - 0.5);
        block_run r = with_blocks(trns_cards + fourier_file("n_fourier=3"));
        out_file& f = r.slv.out.files[0];
        f.out_tstart = t1;
        f.out_tend = t2;
        open_out_files(r.slv, r.c);
        for (std::size_t i = 0; i < t.size(); ++i) {
            vout(r.c) = x[i];
            write_trns(r.slv, r.c, rows_analog, t[i]);
        }

        // The corners of the polygon in the span, the points at its ends put in.
        const auto polygon = [&](double s) {
            const std::size_t i = static_cast<std::size_t>(std::upper_bound(t.begin(), t.end(), s) - t.begin());
            return x[i - 1] + (x[i] - x[i - 1]) * (s - t[i - 1]) / (t[i] - t[i - 1]);
        };
        std::vector<std::pair<double, double>> corner;
        if (t.front() < t1 && t.back() > t1) corner.push_back({t1, polygon(t1)});
        for (std::size_t i = 0; i < t.size(); ++i)
            if (t[i] >= t1 && t[i] <= t2) corner.push_back({t[i], x[i]});
        if (t.front() < t2 && t.back() > t2) corner.push_back({t2, polygon(t2)});
        double power = 0;
        for (std::size_t i = 1; i < corner.size(); ++i)
            power += (std::pow(corner[i].second, 2) + std::pow(corner[i - 1].second, 2)) / 2 *
                     (corner[i].first - corner[i - 1].first);
        EXPECT_NEAR(f.sums.power[0], power, 1e-12);
        for (std::size_t k = 0; k < f.omega_fourier.size(); ++k) {
            double c = 0, s = 0;
            for (std::size_t i = 1; i < corner.size(); ++i) {
                const double h = corner[i].first - corner[i - 1].first;
                const double m = (corner[i].second + corner[i - 1].second) / 2 * h;
                c += m * std::cos(f.omega_fourier[k] * corner[i].first);
                s += m * std::sin(f.omega_fourier[k] * corner[i].first);
            }
            EXPECT_NEAR(f.sums.cosine[k], c, 1e-12);
            EXPECT_NEAR(f.sums.sine[k], s, 1e-12);
        }
    }
}
