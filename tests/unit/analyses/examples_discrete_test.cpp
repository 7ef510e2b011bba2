// examples_discrete_test.cpp -- sampled controllers among general blocks, of examples/, against the formulas of their
// stories.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>

#include "whole_run.h"

namespace {
// The motor: di/dt = (u - r i - k w)/l, dw/dt = (k i - load - b w)/j. Of two real poles p, q of its matrix a,
// exp(a t) = (e^(p t) (a - q) - e^(q t) (a - p))/(p - q) (Sylvester).
struct motor {
    double i = 0, w = 0;
    void go(double u, double load, double t) {
        constexpr double r = 1, l = 2e-3, k = 0.05, j = 5e-5, b = 1e-5;
        const double a11 = -r / l, a12 = -k / l, a21 = k / j, a22 = -b / j;
        const double half = 0.5 * (a11 + a22), root = std::sqrt(half * half - (a11 * a22 - a12 * a21));
        const double p = half + root, q = half - root, ep = std::exp(p * t), eq = std::exp(q * t);
        const double one = (p * eq - q * ep) / (p - q), by_a = (ep - eq) / (p - q);
        // where it would come to rest
        const double det = r * b + k * k, i_end = (b * u + k * load) / det, w_end = (k * u - r * load) / det;
        const double di = i - i_end, dw = w - w_end;
        i = i_end + one * di + by_a * (a11 * di + a12 * dw);
        w = w_end + one * dw + by_a * (a21 * di + a22 * dw);
    }
};
}  // namespace

TEST(examples_discrete, digital_pid_follows_its_difference_equation) {
    const whole_run run(read_file(std::string(TARNEL_EXAMPLES) + "/digital_pid/deck.in"));
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("wave.dat");
    ASSERT_GT(rows.size(), 1900u);
    constexpr double kp = 0.15, ki = 7.5, kd = 0.3e-3, t_smp = 1e-3;
    motor m;
    double u = 0, found = 0, sum = 0, e_last = 0, t = 0, lowest = 50, highest_u = 0;
    std::size_t row = 0;
    int n_compared = 0;
    for (int n = 0; n < 200; ++n) {
        const double sample = (n + 0.5) * t_smp;
        for (; row < rows.size() && rows[row][0] < sample - 1e-6; ++row) {
            if (std::abs(rows[row][0] - (sample - t_smp)) < 1e-6) continue;  // the voltage jumps there
            if (std::abs(rows[row][0] - 0.1) < 1e-6) continue;
            motor at = m;
            const double t_row = rows[row][0];
            if (t < 0.1 && t_row > 0.1) {
                at.go(u, 0, 0.1 - t);
                at.go(u, 0.05, t_row - 0.1);
            } else {
                at.go(u, t >= 0.1 ? 0.05 : 0, t_row - t);
            }
            EXPECT_NEAR(rows[row][1], at.w, 2e-3) << t_row;  // seven digits of time, at up to 1400 rad/s^2
            EXPECT_NEAR(rows[row][2], at.i, 2e-3) << t_row;
            EXPECT_NEAR(rows[row][3], u, 2e-4) << t_row;
            ++n_compared;
        }
        if (t < 0.1 && sample > 0.1) {
            m.go(u, 0, 0.1 - t);
            t = 0.1;
        }
        m.go(u, t >= 0.1 ? 0.05 : 0, sample - t);
        t = sample;
        // proportional, integral and derivative by themselves
        const double e = (t > 5e-3 ? 50 : 0) - m.w;
        sum += e;
        u = found;
        found = kp * e + ki * t_smp * sum + kd / t_smp * (e - e_last);
        e_last = e;
        if (t > 0.1) lowest = std::min(lowest, m.w);
        highest_u = std::max(highest_u, u);
    }
    EXPECT_GT(n_compared, 1500);
    EXPECT_NEAR(highest_u, 22.9, 0.05);
    EXPECT_NEAR(50 - lowest, 4.5, 0.05);
}

TEST(examples_discrete, digital_pid_has_no_error_that_stays) {
    const whole_run run(read_file(std::string(TARNEL_EXAMPLES) + "/digital_pid/deck.in"));
    const table rows = run.rows("wave.dat");
    ASSERT_FALSE(rows.empty());
    // At rest k i = load + b w and u = r i + k w.
    for (const auto& row : rows)
        if ((row[0] > 0.095 && row[0] < 0.1) || row[0] > 0.195) {
            const double i = ((row[0] > 0.1 ? 0.05 : 0) + 1e-5 * 50) / 0.05;
            EXPECT_NEAR(row[1], 50, 0.06);
            EXPECT_NEAR(row[2], i, 0.01);
            EXPECT_NEAR(row[3], i + 0.05 * 50, 0.01);
        }
}
