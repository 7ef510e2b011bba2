// examples_diagram_test.cpp -- the block diagrams of examples/ against the formulas of their stories.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <numbers>
#include <string>
#include <vector>

#include "whole_run.h"

namespace {
whole_run example(const std::string& name) {
    return whole_run(read_file(std::string(TARNEL_EXAMPLES) + "/" + name + "/deck.in"));
}

using matrix = std::array<std::array<double, 4>, 4>;
matrix product(const matrix& a, const matrix& b) {
    matrix c{};
    for (std::size_t i = 0; i < 4; ++i)
        for (std::size_t j = 0; j < 4; ++j)
            for (std::size_t k = 0; k < 4; ++k) c[i][j] += a[i][k] * b[k][j];
    return c;
}
// exp(a t): the series of a small part of the time, squared up.
matrix exponential(matrix a, double t) {
    constexpr int n_squares = 20;
    for (auto& row : a)
        for (double& x : row) x *= t / (1 << n_squares);
    matrix sum{}, term{};
    for (std::size_t i = 0; i < 4; ++i) sum[i][i] = term[i][i] = 1;
    for (int k = 1; k <= 8; ++k) {
        term = product(term, a);
        for (std::size_t i = 0; i < 4; ++i)
            for (std::size_t j = 0; j < 4; ++j) sum[i][j] += (term[i][j] /= k);
    }
    for (int k = 0; k < n_squares; ++k) sum = product(sum, sum);
    return sum;
}
using state = std::array<double, 4>;  // integral, current, speed, 1
state after(const state& x, double load, double t) {
    const matrix a = {{{0, 0, -6.6, 660},
                       {500, -250, -50 - 150, 15000},  // u = 0.3 (100 - w) + the integral
                       {0, 100, -0.1, -1000 * load},
                       {0, 0, 0, 0}}};
    const matrix e = exponential(a, t);
    state y{};
    for (std::size_t i = 0; i < 4; ++i)
        for (std::size_t j = 0; j < 4; ++j) y[i] += e[i][j] * x[j];
    return y;
}
}  // namespace

TEST(examples_diagram, dc_drive_follows_the_exponential_of_its_matrix) {
    const whole_run run = example("dc_drive");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("wave.dat");
    ASSERT_GT(rows.size(), 4000u);
    const state start = {0, 0, 0, 1}, at_load = after(start, 0, 0.2);
    for (std::size_t k = 0; k < rows.size(); k += 7) {
        const double t = rows[k][0];
        // The load rises within 1 us, so its middle counts.
        const state x = t <= 0.2 + 1e-6 ? after(start, 0, t) : after(at_load, 0.5, t - 0.2 - 0.5e-6);
        EXPECT_NEAR(rows[k][2], x[2], 2e-4) << t;
        EXPECT_NEAR(rows[k][3], x[1], 5e-4) << t;
        EXPECT_NEAR(rows[k][4], 0.3 * (100 - x[2]) + x[0], 2e-4) << t;
    }
    // At rest the torque balances friction and load, and the voltage resistance and emf.
    EXPECT_NEAR(rows.back()[3], (1e-4 * 100 + 0.5) / 0.1, 0.05);
    EXPECT_NEAR(rows.back()[4], 0.5 * 5.1 + 10, 0.05);
}

TEST(examples_diagram, buck_sampled_holds_its_set_point_with_one_step_of_the_diagram_a_period) {
    const whole_run run = example("buck_sampled");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("wave.dat");
    for (const auto& [from, load] : {std::array{9e-3, 10.0}, {19e-3, 5.0}}) {
        double v = 0, duty = 0, least = 1, most = 0;
        int n = 0;
        for (const auto& row : rows)
            if (row[0] > from && row[0] <= from + 1e-3) {
                ++n;
                v += row[1];
                duty += row[3];
                least = std::min(least, row[3]);
                most = std::max(most, row[3]);
            }
        ASSERT_GT(n, 200);
        // The controller sees the lowest point of a ripple of (1 - d) v T^2 / (8 L C) = 29 mV.
        EXPECT_NEAR(v / n, 12 + 0.029 / 2, 5e-3) << from;
        EXPECT_NEAR(duty / n, (12.5 + 0.01 * 12 / load) / 24.5, 1e-3) << from;
        EXPECT_LT(most - least, 1e-3) << from;
    }
    // It is held between two steps: a multiple of 20 us, or the step of the circuit before.
    double last = rows[0][3];
    int n_changes = 0;
    for (const auto& row : rows) {
        if (row[3] == last) continue;
        last = row[3];
        ++n_changes;
        const double phase = std::fmod(row[0] + 1e-6, 20e-6);
        EXPECT_LT(phase, 7e-6) << row[0];  // rows are 4 us apart
    }
    EXPECT_GT(n_changes, 200);
}

TEST(examples_diagram, filter_degree_6_is_the_sum_of_the_exponentials_of_its_poles) {
    using complex = std::complex<double>;
    const whole_run run = example("filter_degree_6");
    ASSERT_FALSE(run.stopped) << run.text;
    const double w = 2000 * std::numbers::pi;
    std::array<complex, 6> poles;
    for (std::size_t k = 0; k < 6; ++k)
        poles[k] = std::polar(1e3, std::numbers::pi * static_cast<double>(2 * k + 7) / 12);
    const auto transfer = [&](complex s, std::size_t but = 6) {  // without the factor of one pole
        complex y = 1e18;
        for (std::size_t k = 0; k < 6; ++k)
            if (k != but) y /= s - poles[k];
        return y;
    };
    const table rows = run.rows("wave.dat");
    ASSERT_GT(rows.size(), 990u);
    double least = 10, most = -10;
    for (const auto& row : rows) {
        const double t = row[0];
        double y = transfer(0).real() + (0.5 * transfer({0, w}) * std::exp(complex(0, w * t))).imag();
        for (std::size_t k = 0; k < 6; ++k) {
            const complex p = poles[k];
            y += (transfer(p, k) * (1.0 / p + 0.5 * w / (p * p + w * w)) * std::exp(p * t)).real();
        }
        EXPECT_NEAR(row[2], y, 2e-6) << t;
        if (t < 19e-3) continue;
        least = std::min(least, row[3]);
        most = std::max(most, row[3]);
    }
    EXPECT_NEAR(std::abs(0.5 * transfer({0, w})), 0.5 / std::sqrt(1 + std::pow(w / 1e3, 12)), 1e-12);
    EXPECT_NEAR((most - least) / 2, 0.5 / std::hypot(1, w / 1e3), 1e-3);
}

TEST(examples_diagram, bouncing_ball_hits_the_ground_at_shrinking_intervals) {
    const whole_run run = example("bouncing_ball");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("wave.dat");
    constexpr double g = 9.81, step = 1e-4;
    double hit = std::sqrt(2 / g), speed = 0.8 * std::sqrt(2 * g), highest = 0;
    int n = 0;
    for (std::size_t i = 1; i < rows.size(); ++i) {
        highest = std::max(highest, n > 0 ? rows[i][1] : 0);
        if (!(rows[i][2] > rows[i - 1][2] + 0.1)) continue;  // the speed jumps upwards
        // A reset comes up to a step late, and the fall goes on until then: the speeds grow by up to 0.8 g of a step.
        EXPECT_GE(rows[i][0], hit - 1e-9);
        EXPECT_LE(rows[i][0], hit + ++n * 4 * step) << n;
        EXPECT_NEAR(rows[i][2], speed, n * 2e-3);
        EXPECT_NEAR(rows[i][1], 0, 1e-9);
        if (n > 1) {
            EXPECT_NEAR(highest, speed * speed / 0.64 / (2 * g), 2e-3);
        }
        hit += 2 * speed / g;
        speed *= 0.8;
        highest = 0;
    }
    EXPECT_EQ(n, 4);
}

// The machine in the frame that turns with the voltage of its drive, by the classic rule of fourth order.
TEST(examples_diagram, induction_vf_turns_as_the_machine_in_the_frame_of_its_voltage) {
    const whole_run run = example("induction_vf");
    ASSERT_FALSE(run.stopped) << run.text;
    using complex = std::complex<double>;
    struct machine {
        complex fs, fr;
        double wm;
    };
    const auto frequency = [](double t) {
        const double before = 25 * (1 - std::exp(-5.0));
        return t < 1 ? 25 * (1 - std::exp(-t / 0.2)) : 50 - (50 - before) * std::exp(-(t - 1) / 0.2);
    };
    const auto torque = [](const machine& m) {
        const double l = 71.31e-3, lm = 69.31e-3;
        return 3 * (std::conj(m.fs) * (l * m.fs - lm * m.fr) / (l * l - lm * lm)).imag();
    };
    const auto rate = [&](double t, const machine& m) {
        const double l = 71.31e-3, lm = 69.31e-3, det = l * l - lm * lm, f = frequency(t);
        const complex j(0, 1), is = (l * m.fs - lm * m.fr) / det, ir = (l * m.fr - lm * m.fs) / det;
        const double w = 2 * std::numbers::pi * f;
        return machine{5 + 3 * f - 0.435 * is - j * w * m.fs, -0.816 * ir - j * (w - 2 * m.wm) * m.fr,
                       (torque(m) - (t >= 1.8 ? 8 : 0)) / 0.089};
    };
    const auto moved = [](const machine& m, double h, const machine& d) {
        return machine{m.fs + h * d.fs, m.fr + h * d.fr, m.wm + h * d.wm};
    };
    const table rows = run.rows("wave.dat");
    ASSERT_GT(rows.size(), 20000u);
    machine m{};
    double t = 0, worst_speed = 0, worst_torque = 0;
    for (const auto& row : rows) {
        while (t < row[0] - 1e-12) {
            const double h = std::min(1e-5, row[0] - t);
            const machine a = rate(t, m), b = rate(t + h / 2, moved(m, h / 2, a)),
                          c = rate(t + h / 2, moved(m, h / 2, b)), d = rate(t + h, moved(m, h, c));
            m = moved(moved(moved(moved(m, h / 6, a), h / 3, b), h / 3, c), h / 6, d);
            t += h;
        }
        worst_speed = std::max(worst_speed, std::fabs(row[2] - m.wm));
        worst_torque = std::max(worst_torque, std::fabs(row[3] - torque(m)));
    }
    EXPECT_LT(worst_speed, 1e-4 * 157);
    EXPECT_LT(worst_torque, 1e-4 * 30);
    EXPECT_NEAR(rows.back()[3], 8, 0.1);
}

TEST(examples_diagram, network_thyristor_has_the_rows_of_the_circuit_of_elements) {
    const std::string elements =
        "title: the same\nbegin_circuit\nrefnode 0\neelement name=V type=vsrcac p=a n=0 a=100 f_hz=50\n"
        "gelement name=G type=pulse y=fire td=7m pw=0.5m per=20m\neelement name=T type=thyristor_g p=a n=b g=fire\n"
        "eelement name=RS type=r p=b n=c r=5\neelement name=C type=c p=c n=0 c=220u\n"
        "eelement name=RL type=r p=c n=0 r=200\noutvar: vc=nodev_of_c it=i_of_T\nend_circuit\nbegin_solve\n"
        "solve_type trns\ninitial_sol initialize\nmethod: trapezoidal=yes t_end=100m delt_const=10u\nbegin_output\n"
        "filename wave.dat\nvariables: vc it\nend_output\nend_solve\nend_cf\n";
    table rows, other;
    {
        const whole_run run = example("network_thyristor");
        ASSERT_FALSE(run.stopped) << run.text;
        rows = run.rows("wave.dat");
    }
    {
        const whole_run run(elements);
        ASSERT_FALSE(run.stopped) << run.text;
        other = run.rows("wave.dat");
    }
    double worst = 0, worst_at_rest = 0, first_pulse = 0;
    std::size_t k = 0;
    for (const auto& row : rows) {
        while (k + 2 < other.size() && other[k + 1][0] < row[0]) ++k;
        const double part = (row[0] - other[k][0]) / std::max(1e-30, other[k + 1][0] - other[k][0]);
        const double off = std::fabs(row[2] - (other[k][1] + part * (other[k + 1][1] - other[k][1])));
        worst = std::max(worst, off);
        if (std::fabs(row[3]) < 1e-3) worst_at_rest = std::max(worst_at_rest, off);
        if (row[0] < 8e-3) first_pulse = std::max(first_pulse, row[3]);
    }
    // A thyristor acts a step after its event, and each of the two runs has steps of its own: 16 A for 10 us.
    // Of that the end of the pulse, 1.5 ms later, has what the 1.1 ms of resistance and capacitor leave.
    const double one_step = 16.2 * 10e-6 / 220e-6;
    EXPECT_LT(worst, one_step);
    EXPECT_LT(worst_at_rest, one_step * std::exp(-1.5 / 1.1));
    // Where it is fired the capacitor is empty: the source over the resistances, less what two steps take at most.
    const double top = 100 * std::sin(0.7 * std::numbers::pi) / 5.01;
    EXPECT_LE(first_pulse, top);
    EXPECT_GT(first_pulse, top - 2 * 0.19);
}
