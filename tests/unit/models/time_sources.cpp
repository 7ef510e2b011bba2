// Sources in time, and what they answer when asked for the next break.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "halt_throws.h"
#include "model_unit.h"

namespace {

constexpr double degree = 0.017453292519943295;

struct sample {
    double t, u;
};

// The source's voltage (current) at its time: row 2 of a voltage source is v(p) - v(n) - u, in start-up row 5.
double voltage(model_unit& u, double t) {
    u.flags.time_given = t;
    u.x.v = {2.5, 1, 0};
    u.x.aux[0] = 0.3;
    u.x.auxs[0] = -0.4;
    u.dc();
    const double dc = 1.5 - u.x.f[2];
    EXPECT_EQ(u.x.f[0], 0.3);
    EXPECT_EQ(u.x.f[1], -0.3);
    u.trns();
    EXPECT_EQ(1.5 - u.x.f[2], dc);
    u.startup();
    EXPECT_EQ(u.x.f[3], -0.4);
    EXPECT_EQ(u.x.f[4], 0.4);
    EXPECT_EQ(1.5 - u.x.f[5], dc);
    return dc;
}

double current(model_unit& u, double t) {
    u.flags.time_given = t;
    u.dc();
    const double dc = u.x.f[0];
    EXPECT_EQ(u.x.f[1], -dc);
    u.trns();
    EXPECT_EQ(u.x.f[0], dc);
    u.startup();
    EXPECT_EQ(u.x.f[0], dc);
    return dc;
}

double next_break(model_unit& u, double t) {
    u.flags.time_given = t;
    u.flags.time_nextbreak = u.flags.t_end = 1e9;
    u.call(&flags_class::nexttime);
    EXPECT_GT(u.flags.time_nextbreak, t);
    return u.flags.time_nextbreak;
}

// The breaks from t on.
void expect_breaks(model_unit& u, double t, const std::vector<double>& breaks) {
    for (const double b : breaks) {
        t = next_break(u, t);
        EXPECT_NEAR(t, b, 1e-15);
    }
}

TEST(vsrcac, is_a_sine_about_a_constant_at_all_times) {
    model_unit u("vsrcac");
    u.r("a") = 3;
    u.r("k_scale") = 2;
    u.r("f_hz") = 50;
    u.r("phi") = 30;
    u.r("t0") = 0.001;
    u.r("vdc") = 0.5;
    u.prepare();
    for (const double t : {-0.02, 0.0, 0.001, 0.0071, 3.3})
        EXPECT_NEAR(voltage(u, t), 0.5 + 6 * std::sin(2 * std::acos(-1.0) * 50 * (t - 0.001) + 30 * degree), 1e-11);
    u.x.v = {7, 3, 0};
    u.call(&flags_class::outvar_prm);
    EXPECT_EQ(u.r("v_o"), 4);
}

TEST(vsrcac_ramp, grows_between_its_two_times_which_are_breaks) {
    model_unit u("vsrcac_ramp");
    u.r("a") = 4;
    u.r("phi") = 90;
    u.r("f_hz") = 0;  // the sine stands at 1
    u.r("vdc") = 1;
    u.r("t_ramp_1") = 0.25;
    u.r("t_ramp_2") = 0.75;
    u.prepare();
    for (const auto& [t, v] : {sample{0, 1}, {0.25, 1}, {0.375, 2}, {0.5, 3}, {0.75, 5}, {2, 5}})
        EXPECT_NEAR(voltage(u, t), v, 1e-14) << t;
    expect_breaks(u, 0, {0.25, 0.75});
    EXPECT_EQ(next_break(u, 0.75), 1e9);
}

TEST(vsrcac_ramp, has_no_ramp_between_equal_times_and_refuses_a_wrong_order) {
    model_unit u("vsrcac_ramp");
    u.r("phi") = 90;
    u.r("f_hz") = 0;
    u.r("t_ramp_1") = u.r("t_ramp_2") = 1;
    u.prepare();
    EXPECT_NEAR(voltage(u, 0), 1, 1e-14);
    u.r("t_ramp_2") = 0.5;
    EXPECT_HALT(u.prepare(), "vsrcac_ramp: t_ramp_1 > t_ramp_2? Halting...\n");
}

TEST(vsrc_1, follows_its_variable) {
    model_unit u("vsrc_1");
    u.r("k") = 3;
    u.x.vr[0] = 0.5;
    EXPECT_EQ(voltage(u, 0), 1.5);
    EXPECT_EQ(u.jac.dfdvr[2][0], -3);
    EXPECT_EQ(u.jac.dfdvr[5][0], -3);
}

TEST(isrc_1, drives_its_variable_from_the_first_terminal_to_the_second) {
    model_unit u("isrc_1");
    u.r("k") = 3;
    u.x.vr[0] = 0.5;
    EXPECT_EQ(current(u, 0), 1.5);
    EXPECT_EQ(u.jac.dfdvr[0][0], 3);
    EXPECT_EQ(u.jac.dfdvr[1][0], -3);
}

const std::vector<sample> pulse_samples = {{0, -1},     {0.5, -1}, {0.5625, 1}, {0.625, 3}, {1.125, 3}, {1.1875, 2},
                                           {1.375, -1}, {1.9, -1}, {2.5, -1},   {2.625, 3}, {4.5625, 1}};
const std::vector<double> pulse_breaks = {0.5, 0.625, 1.125, 1.375, 2.5, 2.625, 3.125, 3.375, 4.5};

template <class F>
void expect_pulses(const std::string& name, const char* level, F value) {
    model_unit u(name);
    u.r(std::string(level) + "1") = -1;
    u.r(std::string(level) + "2") = 3;
    u.r("td") = 0.5;
    u.r("tr") = 0.125;
    u.r("pw") = 0.5;
    u.r("tf") = 0.25;
    u.r("per") = 2;
    u.prepare();
    for (const auto& [t, y] : pulse_samples) EXPECT_EQ(value(u, t), y) << t;
    expect_breaks(u, -3, pulse_breaks);
    u.r("per") = 0.8;
    EXPECT_HALT(u.prepare(), name + ".ebe: check tr, tf, pw, per. Halting...\n");
    u.r("per") = 2;
    u.r("tr") = -0.1;
    EXPECT_HALT(u.prepare(), name + ".ebe: check tr, tf, pw, per. Halting...\n");
}

TEST(vpulse, makes_voltage_pulses_with_breaks_at_their_corners) { expect_pulses("vpulse", "v", voltage); }
TEST(ipulse, makes_current_pulses_with_breaks_at_their_corners) { expect_pulses("ipulse", "i", current); }

TEST(pwl20, runs_straight_between_its_points_and_jumps_where_two_have_one_time) {
    model_unit u("pwl20");
    u.x.iparm[0] = 4;
    for (const auto& [word, value] : std::vector<std::pair<const char*, double>>{
             {"t1", 1}, {"v1", 2}, {"t2", 3}, {"v2", 6}, {"t3", 3}, {"v3", -1}, {"t4", 4}, {"v4", 0}, {"k_scale", 10}})
        u.r(word) = value;
    u.prepare();
    for (const auto& [t, y] : {sample{0, 20}, {1, 20}, {2, 40}, {3, -10}, {3.5, -5}, {4, 0}, {99, 0}})
        EXPECT_EQ(voltage(u, t), y) << t;
    expect_breaks(u, -1, {1, 3, 4});
    EXPECT_EQ(next_break(u, 4), 1e9);
}

TEST(pwl20, takes_all_twenty_points) {
    model_unit u("pwl20");
    u.x.iparm[0] = 20;
    for (int i = 1; i <= 20; ++i) {
        u.r("t" + std::to_string(i)) = i;
        u.r("v" + std::to_string(i)) = i * i;
    }
    u.prepare();
    EXPECT_EQ(voltage(u, 19.5), 0.5 * (361 + 400));
    EXPECT_EQ(voltage(u, 30), 400);
    expect_breaks(u, 18.5, {19, 20});
}

TEST(pwl20, refuses_a_wrong_number_of_points_and_times_that_go_back) {
    for (const int n : {0, -1, 21, 2000000000}) {
        model_unit u("pwl20");
        u.x.iparm[0] = n;
        EXPECT_HALT(u.prepare(), "pwl20.ebe: check n_pts. Halting...\n");
    }
    model_unit u("pwl20");
    u.r("t1") = 1;
    EXPECT_HALT(u.prepare(), "pwl20.ebe: times must ascend. Halting...\n");
}

TEST(clock, has_the_breaks_and_levels_of_its_shares) {
    model_unit u("clock");
    u.r("t1") = 0.5;
    u.r("t2") = 1.5;
    u.r("dt1") = 0.125;
    u.r("dt2") = 0.25;
    u.r("t0") = 0.25;
    u.r("v_low") = -2;
    u.r("v_high") = 6;
    u.prepare();
    EXPECT_EQ(u.r("per"), 2);
    for (const auto& [t, y] : {sample{0.25, -2},
                               {0.3125, 2},
                               {0.375, 6},
                               {0.75, 6},
                               {0.875, 2},
                               {1, -2},
                               {2.25, -2},
                               {2.375, 6},
                               {-1.5, 6},
                               {-0.5, -2}})
        EXPECT_EQ(voltage(u, t), y) << t;
    expect_breaks(u, -1.75, {-1.625, -1.25, -1, 0.25, 0.375, 0.75, 1, 2.25, 2.375});
}

TEST(clock, refuses_edges_longer_than_their_shares) {
    model_unit u("clock");
    u.r("dt1") = 0.6e-3;
    EXPECT_HALT(u.prepare(), "clock.ebe: dt1.gt.t1 ?!\n");
    u.r("dt1") = 1e-6;
    u.r("dt2") = 0.6e-3;
    EXPECT_HALT(u.prepare(), "clock.ebe: dt2.gt.t2 ?!\n");
    for (const char* word : {"t1", "t2", "dt1", "dt2"}) u.r(word) = 0;
    EXPECT_HALT(u.prepare(), "clock.ebe: check t1, t2, dt1, dt2. Halting...\n");
}

TEST(triangle_1, is_symmetric_and_breaks_at_both_ends) {
    model_unit u("triangle_1");
    u.r("per") = 2;
    u.r("t0") = 0.5;
    u.r("v_min") = -1;
    u.r("v_max") = 3;
    u.prepare();
    for (const auto& [t, y] : {sample{0.5, -1}, {1, 1}, {1.5, 3}, {2, 1}, {-0.5, 3}}) EXPECT_EQ(voltage(u, t), y) << t;
    expect_breaks(u, 0, {0.5, 1.5, 2.5, 3.5});
    u.r("per") = 0;
    EXPECT_HALT(u.prepare(), "triangle_1.ebe: check per. Halting...\n");
}

TEST(r_time, changes_at_its_time_which_is_a_break) {
    model_unit u("r_time");
    u.r("r1") = 2;
    u.r("r2") = 0.5;
    u.r("t_sw") = 0.3;
    u.prepare();
    const auto conductance = [&](double t) {
        u.x.v = {4, 1, 0};
        const double i = current(u, t);
        EXPECT_EQ(i, 3 * u.jac.dfdv[0][0]);
        return u.jac.dfdv[0][0];
    };
    EXPECT_EQ(conductance(0.2999), 0.5);
    EXPECT_EQ(conductance(0.3), 2);
    EXPECT_EQ(conductance(0.1 + 0.2), 2);
    expect_breaks(u, 0, {0.3});
    EXPECT_EQ(next_break(u, 0.3), 1e9);
    u.r("r2") = 1e-9;
    EXPECT_HALT(u.prepare(), "r_time.ebe: r too small!\nr_time.ebe: r1=2\nr_time.ebe: r2=1e-09\n");
}

TEST(nexttime, is_answered_by_the_elements_that_limit_the_step_alone) {
    const ebes_class& lib = installed_ebes();
    for (int e = 0; e < lib.n(); ++e) {
        model_unit u(lib.list.entry.str(e));
        u.prepare();
        const model_numbers before = u.x;
        const double t = lib.list.entry.str(e) == "clock_pwl20" ? 0 : -1;  // that one stops before time 0
        u.flags.time_given = t;
        u.flags.time_nextbreak = 1e9;
        u.call(&flags_class::nexttime);
        EXPECT_EQ(u.x, before) << lib.list.entry[e];
        if (lib.flag.limit_tstep[static_cast<std::size_t>(e)])
            EXPECT_GT(u.flags.time_nextbreak, t) << lib.list.entry[e];
        else
            EXPECT_EQ(u.flags.time_nextbreak, 1e9) << lib.list.entry[e];
    }
}

}  // namespace
