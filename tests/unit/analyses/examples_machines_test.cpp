// The decks of examples/ with machines as electrical elements, against the formulas of their stories.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

#include "whole_run.h"

namespace {
constexpr double pi = std::numbers::pi;
using number = std::complex<double>;

whole_run example(const std::string& name) {
    return whole_run(read_file(std::string(TARNEL_EXAMPLES) + "/" + name + "/deck.in"));
}

// Mean by trapezoids, lowest and highest of a column over from <= t <= to.
struct summary {
    double mean = 0, low = INFINITY, high = -INFINITY;
};
summary of(const table& rows, std::size_t column, double from, double to) {
    summary s;
    double time = 0;
    for (std::size_t k = 1; k < rows.size(); ++k) {
        if (rows[k - 1][0] < from - 1e-9 || rows[k][0] > to + 1e-9) continue;
        const double h = rows[k][0] - rows[k - 1][0];
        s.mean += 0.5 * h * (rows[k][column] + rows[k - 1][column]);
        time += h;
        s.low = std::min({s.low, rows[k][column], rows[k - 1][column]});
        s.high = std::max({s.high, rows[k][column], rows[k - 1][column]});
    }
    EXPECT_GT(time, 0);
    s.mean /= time;
    return s;
}
}  // namespace

TEST(examples, induction_start_comes_to_rest_at_the_slip_of_its_equivalent_circuit) {
    const whole_run run = example("induction_start");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("wave.dat");  // rpm te ia pe pm
    const double w = 100 * pi;
    struct point {
        number is, ir;
        double torque;
    };
    const auto at = [&](double slip) {
        const number jxm(0, w * 69.31e-3), rotor(0.816 / slip, w * 2e-3);
        const number is = 150.0 / (number(0.435, w * 2e-3) + jxm * rotor / (jxm + rotor)),
                     ir = is * jxm / (jxm + rotor);
        return point{is, ir, 1.5 * std::norm(ir) * 0.816 / slip / (w / 2)};
    };
    double low = 0.001, high = 0.2;  // the torque rises with the slip there
    for (int k = 0; k < 100; ++k) {
        const double slip = 0.5 * (low + high);
        (at(slip).torque < 12 ? low : high) = slip;
    }
    const point rest = at(low);
    EXPECT_NEAR(of(rows, 1, 0.75, 0.8).mean, 1500, 0.05);
    EXPECT_NEAR(of(rows, 1, 1.16, 1.2).mean, 1500 * (1 - low), 0.5);
    EXPECT_NEAR(of(rows, 2, 1.16, 1.2).mean, 12, 0.02);
    EXPECT_NEAR(of(rows, 3, 1.16, 1.2).high, std::abs(rest.is), 0.02 * std::abs(rest.is));
    const double heat = 1.5 * (0.435 * std::norm(rest.is) + 0.816 * std::norm(rest.ir));
    EXPECT_NEAR(of(rows, 4, 1.16, 1.2).mean, of(rows, 5, 1.16, 1.2).mean + heat, 5);
    EXPECT_LT(of(rows, 2, 0, 0.1).low, 0);
    EXPECT_NEAR(of(rows, 3, 0, 0.1).high, 88, 2);  // as the story says
}

TEST(examples, dc_chopper_has_the_current_of_its_load_and_the_voltage_of_its_pulses) {
    const whole_run run = example("dc_chopper");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("wave.dat");  // rpm ia duty
    const double w = of(rows, 1, 0.95, 1).mean * pi / 30, i = (20 + 0.01 * w) / 1.2, d = 0.6;
    const summary got = of(rows, 2, 0.95, 1);
    EXPECT_NEAR(got.mean, i, 0.1);
    EXPECT_GT(got.low, 5);  // it never stops
    const double v = d * (240 - 0.01 * i) - (1 - d) * (0.7 + 0.01 * i);
    EXPECT_NEAR(1.2 * w, v - 0.5 * i, 0.1);
    EXPECT_NEAR(got.high - got.low, (240 - v) * d * 1e-3 / 5e-3, 0.2);
    EXPECT_LT(of(rows, 2, 0, 0.7).high, 60);  // the start
}

TEST(examples, synchronous_bus_comes_to_rest_at_the_angle_of_its_torque) {
    const whole_run run = example("synchronous_bus");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("wave.dat");  // angle te ia ifd pe
    const double w = 100 * pi, rs = 0.05, xd = w * 63e-3, xq = w * 33e-3, e = w * 60e-3 * 0.7 / 0.1;
    // vd = rs id - xq iq, vq = rs iq + xd id + e; the rotor is ahead of the bus by the angle.
    const auto torque = [&](double angle) {
        const double vd = 100 * std::sin(angle), vq = 100 * std::cos(angle), det = rs * rs + xd * xq;
        const double id = (rs * vd + xq * (vq - e)) / det, iq = (rs * (vq - e) - xd * vd) / det;
        return 1.5 * 2 / w * ((xd * id + e) * iq - xq * iq * id);
    };
    for (const auto& [from, to, tl] : {std::tuple{1.8, 2.0, -2.0}, {3.8, 4.0, -6.0}}) {
        double low = 0, high = 60 * pi / 180;  // the torque falls with the angle there
        for (int k = 0; k < 100; ++k) (torque(0.5 * (low + high)) > tl ? low : high) = 0.5 * (low + high);
        EXPECT_NEAR(of(rows, 1, from, to).mean, low * 180 / pi, 0.1);
        EXPECT_NEAR(of(rows, 2, from, to).mean, tl, 0.02);
        EXPECT_NEAR(of(rows, 4, from, to).mean, 1.5 * 0.7 / 0.1, 0.02);
    }
    double most = 0;
    for (int k = 0; k <= 180; ++k) most = std::min(most, torque(k * pi / 180));
    EXPECT_NEAR(most, -7.5, 0.05);  // as the story says
}

TEST(examples, direct_torque_control_keeps_torque_and_flux_in_their_bands) {
    const whole_run run = example("direct_torque_control");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("wave.dat");  // w te te_ref f f_al f_be ia
    double torque = 0, flux = 0, w_at_100ms = 0, w_at_400ms = 0;
    for (const auto& row : rows) {
        if (row[0] > 3e-3) torque = std::max(torque, std::fabs(row[2] - row[3]));
        if (row[0] > 0.21) flux = std::max(flux, std::fabs(row[4] - 0.9));
        if (row[0] < 0.1) w_at_100ms = row[1];
        if (row[0] < 0.4) w_at_400ms = row[1];
        EXPECT_NEAR(std::hypot(row[5], row[6]), row[4], 1e-5);
    }
    EXPECT_LT(torque, 0.5 + 0.8);
    EXPECT_GT(torque, 0.5);
    EXPECT_LT(flux, 0.01 + 0.0015);
    EXPECT_GT(flux, 0.01);
    EXPECT_NEAR((w_at_400ms - w_at_100ms) / 0.3, (20 - 0.1) / 0.089, 2);
    int n = 0;
    bool on = false;
    for (const auto& row : run.rows("gates.dat")) {
        n += on != (row[3] > 0.5);
        on = row[3] > 0.5;
    }
    EXPECT_NEAR(n / 2.0 / 0.02, 20e3, 3e3);
}

TEST(examples, synchronous_exciter_holds_the_voltage_and_the_machine_at_a_torque_beyond_its_first_field) {
    const whole_run run = example("synchronous_exciter");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("wave.dat");  // angle v_t e_fd ifd te v_r
    // Line and load as one source behind one impedance, seen from the rotor, whose q axis is ahead of the bus by the
    // angle: vd = rs id - xq iq, vq = rs iq + xd id + e.
    const double w = 100 * pi, rs = 0.05, xd = w * 63e-3, xq = w * 33e-3;
    const number line(0.1, w * 8e-3), part = 60.0 / (60.0 + line), z = line * part;
    struct rest {
        double te, v_t;
    };
    const auto at = [&](double angle, double e_fd) {
        const double e = w * 60e-3 * e_fd / 0.1, r = rs + z.real(), x = z.imag();
        const number v = 100.0 * part * number(std::sin(angle), std::cos(angle));
        // v - z (id + i iq) is the voltage at the terminals.
        const double det = r * r + (xd + x) * (xq + x), b = v.imag() - e;
        const double id = (r * v.real() + (xq + x) * b) / det, iq = (r * b - (xd + x) * v.real()) / det;
        return rest{3 / w * ((xd * id + e) * iq - xq * iq * id), std::abs(v - z * number(id, iq))};
    };
    for (const auto& [from, to, tl] : {std::tuple{2.8, 3.0, -2.0}, {6.8, 7.0, -8.0}}) {
        double e_fd = 1, angle = 0;
        for (int n = 0; n < 200; ++n) {
            double low = 0, high = pi / 2;  // the torque falls with the angle there
            for (int k = 0; k < 60; ++k) (at(0.5 * (low + high), e_fd).te > tl ? low : high) = 0.5 * (low + high);
            angle = low;
            e_fd += 0.05 * (0.3 * (100 - at(angle, e_fd).v_t) - e_fd);
        }
        EXPECT_NEAR(of(rows, 1, from, to).mean, angle * 180 / pi, 0.1);
        EXPECT_NEAR(of(rows, 2, from, to).mean, at(angle, e_fd).v_t, 0.02);
        EXPECT_NEAR(of(rows, 3, from, to).mean, e_fd, 0.003);
        EXPECT_NEAR(of(rows, 5, from, to).mean, tl, 0.03);
    }
    double most = 0;
    for (int k = 0; k <= 180; ++k) most = std::min(most, at(k * pi / 180, 0.492).te);
    EXPECT_GT(most, -8);  // the field before the step would lose the machine
    EXPECT_EQ(of(rows, 6, 3, 4).high, 1.6);
}
