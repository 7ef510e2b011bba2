// General blocks whose outputs are waves: against their explicit twins, which have tests of their own against the
// definitions; over a million periods; and the clock whose pulses are late by an angle.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "block_unit.h"
#include "explicit_unit.h"
#include "halt_throws.h"

namespace {

using settings = std::vector<std::pair<std::string, double>>;
struct twin {
    std::string name;
    settings reals;  // in the words of the general block
    std::vector<std::pair<std::string, int>> integers = {};
    double per = 1e-3;  // s, a length in which all happens
};

// Levels of general blocks are g_low and g_high where those of the twin are x_low and x_high.
std::string word_of_twin(const std::string& word) {
    return word == "g_low" ? "x_low" : word == "g_high" ? "x_high" : word;
}

const std::vector<twin> twins = {
    {"clock2",
     {{"t1", 0.3e-3}, {"t2", 0.7e-3}, {"dt1", 1e-5}, {"dt2", 2e-5}, {"td", 5e-5}, {"t0", 1e-4}, {"g_high", 5}}},
    {"clock_1", {{"per", 1e-3}, {"duty_cycle", 0.3}, {"dt1", 1e-5}, {"t0", 1e-4}, {"g_low", -1}}},
    {"clock_3", {{"t1", 0.3e-3}, {"t2", 0.7e-3}, {"dt1", 1e-5}, {"t0", 1e-4}, {"g_high", 5}}},
    {"clock_gnrl", {{"t1", 0.3e-3}, {"t2", 0.2e-3}, {"dt1", 1e-4}, {"dt2", 4e-4}, {"td", 1e-4}, {"g_low", 1}}},
    {"clock_pwl20", {{"t2", 0.2e-3}, {"y2", 5}, {"t3", 0.2e-3}, {"y3", 3}, {"t4", 1e-3}, {"y4", 0}}, {{"n_pts", 4}}},
    {"clock_delay_1", {{"t1", 0.3e-3}, {"t2", 0.7e-3}, {"theta_delay", 135}, {"t0", -2e-4}, {"g_high", 5}}},
    {"clock_thyr", {{"f_hz", 1000}, {"t_w", 1e-4}, {"dt1", 1e-5}, {"t0", 1e-4}, {"g_high", 5}}},
    {"clock_thyr_1", {{"f_hz", 1000}, {"t_w", 1e-4}, {"dt1", 1e-5}, {"t0", 1e-4}, {"g_low", -5}}},
    {"clock_trz", {{"per", 1e-3}, {"a", 2}, {"flat", 0.5}, {"t0", 1e-4}}},
    {"pulse20", {{"t1", 1e-4}, {"t2", 2e-4}, {"t3", 5e-4}, {"y1", 1}, {"y2", -2}, {"tr", 1e-5}}, {{"n_pts", 3}}},
    {"pwl10_xy", {{"x1", -1}, {"y1", 2}, {"x2", 0.5}, {"y2", -1}, {"x3", 1}, {"y3", 4}}, {{"n_pts", 3}}},
    {"triangle_2", {{"tr", 0.8e-3}, {"tf", 0.2e-3}, {"t0", 1e-4}, {"y_max", 3}}},
    {"triangle_2a", {{"tr", 0.8e-3}, {"tf", 0.2e-3}, {"phi", 200}, {"y_max", 3}}},
    {"triangle_3", {{"per", 1e-3}, {"dt_fall", 1e-5}, {"t0", 1e-4}, {"y_min", -3}}},
    {"pwm20_1", {{"f_hz", 1000}, {"a1", 20}, {"a2", 90}, {"a3", 300}, {"t0", 1e-4}, {"g_high", 5}}, {{"n_pts", 3}}},
    {"pwm20_2", {{"f_hz", 1000}, {"a1", 20}, {"a2", 90}, {"t0", 1e-4}, {"g_low", -5}}, {{"n_pts", 2}, {"start", 1}}},
    {"bldc_clock_1", {{"k", 2}, {"phi", 15}, {"g_high", 5}}},
    {"bldc_trz", {{"k", 2}, {"phi", 15}, {"a", 3}}},
    {"srm_logic", {{"th_on", 5}, {"th_off", 25}, {"g_low", -1}}, {{"n_rotor", 6}}},
};

block_unit prepared(const std::string& name, const settings& reals,
                    const std::vector<std::pair<std::string, int>>& integers = {}) {
    block_unit u(name);
    for (const auto& [word, value] : reals) u.r(word) = value;
    for (const auto& [word, value] : integers) u.i(word) = value;
    u.prepare();
    u.guess();
    return u;
}

TEST(block_clocks, have_the_waves_and_breaks_of_their_explicit_twins) {
    std::mt19937 rng(1);
    std::uniform_real_distribution<double> anywhere(0, 4e-3), input(-2, 2);
    for (const twin& w : twins) {
        SCOPED_TRACE(w.name);
        block_unit u = prepared(w.name, w.reals, w.integers);
        explicit_unit x(w.name);
        for (const auto& [word, value] : w.reals) x.r(word_of_twin(word)) = value;
        for (const auto& [word, value] : w.integers) x.i(word) = value;
        x.prepare();
        const int n_in = x.n_inputs(), n_out = x.n_outputs();
        ASSERT_EQ(n_out, u.lib.func.n_func(u.e));
        bool moves = false;
        for (int trial = 0; trial < 1000; ++trial) {
            const double t = trial % 3 ? anywhere(rng) : 1e-5 * trial;
            std::fill(u.x.vr.begin(), u.x.vr.end(), 0.0);
            for (int k = 0; k < n_in; ++k)
                u.x.vr[static_cast<std::size_t>(k)] = x.x.vr[static_cast<std::size_t>(k)] = input(rng);
            u.flags.time_given = t;
            u.trns();
            for (int k = 0; k < n_out; ++k) {
                const double y = -u.x.f[static_cast<std::size_t>(k)];
                ASSERT_EQ(y, x.output_at(t, k)) << t << ", output " << k;
                moves = moves || y != -u.x.f[0];
            }
            if (u.lib.flag.limit_tstep[static_cast<std::size_t>(u.e)]) {
                ASSERT_EQ(u.next_break(t), x.next_break(t)) << t;
            }
            moves = moves || trial > 0;
        }
        EXPECT_TRUE(moves);
    }
}

TEST(block_clocks, do_not_drift_over_a_million_periods) {
    // Corners of clock_1 with a period that no binary number is: 0, dt1, the fall and its end.
    const double per = 0.7e-5, duty = 0.3, dt = 1e-8;
    block_unit u = prepared("clock_1", {{"per", per}, {"duty_cycle", duty}, {"dt1", dt}, {"dt2", dt}});
    const double corners[] = {dt, duty * per, duty * per + dt, per};
    double t = 0;
    for (int k = 0; k < 1000000; ++k)
        for (const double corner : corners) {
            t = u.next_break(t);
            const double there = static_cast<double>(k * static_cast<long double>(per) + corner);
            ASSERT_NEAR(t, there, 1e-12) << k;
        }
}

TEST(block_clocks, refuse_parameters_that_make_no_wave) {
    const struct {
        const char* name;
        settings values;
        const char* text;
    } faults[] = {
        {"clock2", {{"dt1", 0.6e-3}}, "clock2.gbe: dt1.gt.t1 ?!"},
        {"clock2", {{"dt2", 0.6e-3}}, "clock2.gbe: dt2.gt.t2 ?!"},
        {"clock2", {{"g_high", -1}}, "clock2.gbe: g_high.lt.0.0 ?!"},
        {"clock_1", {{"duty_cycle", 0}}, "clock_1.gbe: duty_cycle.le.0.0 ?!"},
        {"clock_3", {{"dt1", 0.6e-3}}, "clock_3.gbe: dt1.gt.t1 ?!"},
        {"clock_gnrl", {{"t2", -1}}, "clock_gnrl.gbe: check t1, t2, dt1, dt2. Halting..."},
        {"clock_pwl20", {{"t1", 1e-4}}, "clock_pwl20.gbe: t1 must be 0"},
        {"clock_pwl20", {{"y1", 1}}, "clock_pwl20.gbe: v_1 and v_n must be the same!"},
        {"clock_delay_1", {{"theta_delay", 360}}, "clock_delay_1.gbe: theta_delay=360"},
        {"clock_delay_2", {{"dt1", 0.6e-3}}, "clock_delay_2.gbe: dt1.gt.t1 ?!"},
        {"clock_delay_2", {{"dt2", 0.6e-3}}, "clock_delay_2.gbe: dt2.gt.t2 ?!"},
        {"clock_delay_2", {{"g_high", -1}}, "clock_delay_2.gbe: g_high.lt.0.0 ?!"},
        {"clock_delay_2", {{"dt1", 0}}, "clock_delay_2.gbe: check t1, t2, dt1, dt2. Halting..."},
        {"clock_thyr", {{"f_hz", 0}}, "clock_thyr.gbe: check f_hz, t_w, dt1. Halting..."},
        {"clock_trz", {{"flat", 2}}, "clock_trz.gbe: check per, flat. Halting..."},
        {"triangle_2", {{"tr", -1}}, "triangle_2.gbe: check tr, tf. Halting..."},
        {"triangle_3", {{"per", 0}}, "triangle_3.gbe: check per, dt_fall. Halting..."},
        {"pwm20_1", {{"f_hz", 0}}, "pwm20_1.gbe: check f_hz, dt1, a1 to a20. Halting..."},
        {"srm_logic", {{"th_on", 50}}, "srm_logic.gbe: check th_on, th_off. Halting..."},
    };
    for (const auto& f : faults) {
        block_unit u(f.name);
        for (const auto& [word, value] : f.values) u.r(word) = value;
        const console_run heard = run_and_listen([&] { u.prepare(); });
        EXPECT_TRUE(heard.stopped) << f.text;
        EXPECT_EQ(heard.text.substr(0, heard.text.find('\n')), f.text);
    }
}

TEST(block_clock_pwl20, stops_before_time_0) {
    block_unit u = prepared("clock_pwl20", {});
    EXPECT_HALT(u.output(-1e-3), "clock_pwl20.gbe: time_given < 0 ?\n");
}

// ---- the clock that is late by an angle ----

// Periods of 1 ms from 0 on, pulses of 0.2 ms, edges of 1 us.
const settings late = {{"t1", 0.2e-3}, {"t2", 0.8e-3}};
void accept(block_unit& u, double t, double angle) {
    u.vr("x") = angle;
    u.accept(t);
}

TEST(block_clock_delay_2, holds_the_angle_that_each_period_had_at_its_beginning) {
    block_unit u = prepared("clock_delay_2", late);
    accept(u, 0, 90);  // a pulse from 0.25 ms to 0.451 ms
    u.vr("x") = 10;    // counts from the next period on
    EXPECT_EQ(u.output(0.1e-3), 0);
    EXPECT_EQ(u.output(0.3e-3), 1);
    EXPECT_EQ(u.output(0.46e-3), 0);
    EXPECT_NEAR(u.output(0.25e-3 + 0.5e-6), 0.5, 1e-9);
    accept(u, 0.3e-3, 10);
    EXPECT_EQ(u.output(0.35e-3), 1);
    accept(u, 1e-3, 180);
    u.vr("x") = 0;
    EXPECT_EQ(u.output(1.3e-3), 0);
    EXPECT_EQ(u.output(1.6e-3), 1);
}

TEST(block_clock_delay_2, has_breaks_at_corners_and_where_a_period_begins) {
    block_unit u = prepared("clock_delay_2", late);
    accept(u, 0, 90);
    std::vector<double> breaks;
    for (double t = 0; breaks.size() < 5;) breaks.push_back(t = u.next_break(t));
    const double expected[] = {0.25e-3, 0.251e-3, 0.45e-3, 0.451e-3, 1e-3};
    for (std::size_t k = 0; k < 5; ++k) EXPECT_NEAR(breaks[k], expected[k], 1e-15) << k;
}

TEST(block_clock_delay_2, ends_a_pulse_that_reaches_into_the_next_period) {
    block_unit u = prepared("clock_delay_2", late);
    accept(u, 0, 324);  // from 0.9 ms to 1.101 ms
    accept(u, 1e-3, 180);
    EXPECT_EQ(u.output(1.05e-3), 1);
    EXPECT_EQ(u.output(1.2e-3), 0);
    EXPECT_EQ(u.output(1.6e-3), 1);
    EXPECT_NEAR(u.next_break(1.05e-3), 1.1e-3, 1e-15);
    accept(u, 1.2e-3, 180);
    int held = 0;
    for (const delay_angles::slot& s : u.dp.clock_delay_2.slots) held += s.unit >= 0;
    EXPECT_EQ(held, 1);  // the pulse that is over is forgotten
}

TEST(block_clock_delay_2, forgets_the_period_of_a_step_that_is_taken_back) {
    block_unit u = prepared("clock_delay_2", late);
    accept(u, 0, 90);
    accept(u, 1e-3, 300);  // taken back
    accept(u, 0.9e-3, 0);
    accept(u, 1e-3, 90);
    u.vr("x") = 0;
    EXPECT_EQ(u.output(1.3e-3), 1);
    EXPECT_EQ(u.output(1.9e-3), 0);
}

TEST(block_clock_delay_2, stops_when_all_periods_that_may_be_held_are_taken) {
    block_unit u = prepared("clock_delay_2", late);
    for (delay_angles::slot& s : u.dp.clock_delay_2.slots) s.unit = 7;
    EXPECT_HALT(u.accept(0), "clock_delay_2: empty location not found (1). Halting...\n");
}

}  // namespace
