// Sources that are modulated, driven from outside, or run along points and edges; corners over many periods.
#include <gtest/gtest.h>

#include <cmath>

#include "halt_throws.h"
#include "model_unit.h"

namespace {

const double pi = std::acos(-1.0);

// The voltage of a source in all analyses, its terminals at 0.
double voltage(model_unit& u, double t) {
    u.flags.time_given = t;
    u.dc();
    const double dc = -u.x.f[2];
    u.trns();
    EXPECT_EQ(-u.x.f[2], dc);
    u.startup();
    EXPECT_EQ(-u.x.f[5], dc);
    return dc;
}
double current(model_unit& u, double t) {
    u.flags.time_given = t;
    u.trns();
    EXPECT_EQ(u.x.f[1], -u.x.f[0]);
    return u.x.f[0];
}
double next_break(model_unit& u, double t) {
    u.flags.time_given = t;
    u.flags.time_nextbreak = 1e9;
    u.call(&flags_class::nexttime);
    EXPECT_GT(u.flags.time_nextbreak, t);
    return u.flags.time_nextbreak;
}

using values = std::vector<std::pair<std::string, double>>;
model_unit unit_with(const std::string& name, const values& words, int n_pts = 0) {
    model_unit u(name);
    for (const auto& [word, value] : words) u.r(word) = value;
    if (n_pts != 0) u.x.iparm[0] = n_pts;
    u.prepare();
    return u;
}

// Breaks one after the other, each asked for at the one before, are the corners of all periods, with their levels.
void expect_corners(model_unit& u, const values& corners, double per, double t0, int n_per) {
    double t = t0 - 0.25 * per;
    while (next_break(u, t) < t0 - 1e-9 * per) t = next_break(u, t);
    for (int n = 0; n < n_per; ++n)
        for (const auto& [at, level] : corners) {
            t = next_break(u, t);
            const double corner = t0 + n * per + std::stod(at);
            ASSERT_NEAR(t, corner, 1e-12) << "period " << n;
            ASSERT_NEAR(voltage(u, t), level, 1e-7);  // 0.15 s to the last digit, on an edge of 0.4 GV/s
        }
}

TEST(vsrc_am, is_a_carrier_of_a_modulated_amplitude) {
    model_unit u = unit_with("vsrc_am", {{"a", 2}, {"m", 0.8}, {"fc_hz", 1e5}, {"fm_hz", 1e3}});
    for (const double t : {0.0, 2.5e-6, 0.25e-3, 1.2345e-3, -0.7e-3})
        EXPECT_NEAR(voltage(u, t), 2 * (1 + 0.8 * std::sin(2 * pi * 1e3 * t)) * std::sin(2 * pi * 1e5 * t), 1e-11);
    EXPECT_NEAR(voltage(u, 0.2525e-3), 2 * (1 + 0.8 * std::cos(2 * pi * 2.5e-3)), 1e-9);  // near the crest
}

TEST(vsrc_fm, is_a_sine_of_a_swinging_phase) {
    model_unit u = unit_with("vsrc_fm", {{"a", 3}, {"m", 5}, {"fc_hz", 1e5}, {"fm_hz", 1e3}});
    for (const double t : {0.0, 2.5e-6, 0.25e-3, 1.2345e-3, -0.7e-3})
        EXPECT_NEAR(voltage(u, t), 3 * std::sin(2 * pi * 1e5 * t + 5 * std::sin(2 * pi * 1e3 * t)), 1e-10);
    // Where the modulation rises fastest the frequency is fc + m fm.
    const double d = 1e-9;
    EXPECT_NEAR((voltage(u, d) - voltage(u, -d)) / (2 * d) / (2 * pi * 3), 1e5 + 5 * 1e3, 0.05);
}

TEST(vsrc_1a, is_a_line_of_its_variable) {
    model_unit u = unit_with("vsrc_1a", {{"k", 3}, {"k0", -0.5}});
    u.x.vr[0] = 2;
    EXPECT_EQ(voltage(u, 0), 5.5);
    EXPECT_EQ(u.jac.dfdvr[2][0], -3);
    EXPECT_EQ(u.jac.dfdvr[5][0], -3);
}

TEST(vsrc_x, follows_an_explicit_variable) {
    model_unit u = unit_with("vsrc_x", {{"k", 3}});
    u.x.xvr[0] = 2;
    EXPECT_EQ(voltage(u, 0), 6);
}

TEST(vpulse20, toggles_at_its_times_within_its_edges) {
    const values words = {{"v1", -1},  {"v2", 3},   {"tr", 0.125}, {"tf", 0.25}, {"t1", 0.5},
                          {"t2", 1.0}, {"t3", 2.0}, {"t4", 4.0},   {"t5", 9.0}};
    model_unit u = unit_with("vpulse20", words, 5);
    for (const auto& [t, y] : std::vector<std::pair<double, double>>{{-1, -1},
                                                                     {0.5, -1},
                                                                     {0.5625, 1},
                                                                     {0.625, 3},
                                                                     {1, 3},
                                                                     {1.125, 1},
                                                                     {1.25, -1},
                                                                     {2, -1},
                                                                     {2.125, 3},
                                                                     {4.125, 1},
                                                                     {9.125, 3},
                                                                     {99, 3}})
        EXPECT_EQ(voltage(u, t), y) << t;
    double t = -2;
    for (const double corner : {0.5, 0.625, 1.0, 1.25, 2.0, 2.125, 4.0, 4.25, 9.0, 9.125})
        EXPECT_NEAR(t = next_break(u, t), corner, 1e-15);
    EXPECT_EQ(next_break(u, t), 1e9);
}

TEST(vpulse20, takes_all_twenty_edges_and_refuses_others_and_edges_that_overlap) {
    values words = {{"tr", 0.5}, {"tf", 0.5}};
    for (int k = 1; k <= 20; ++k) words.emplace_back("t" + std::to_string(k), k);
    model_unit u = unit_with("vpulse20", words, 20);
    EXPECT_EQ(voltage(u, 20.25), 0.5);
    EXPECT_EQ(voltage(u, 19.5), 1);
    EXPECT_EQ(next_break(u, 20), 20.5);
    for (const int n : {-1, 21}) EXPECT_HALT(unit_with("vpulse20", {}, n), "vpulse20.ebe: check n_pts. Halting...\n");
    words[0].second = 1.5;
    EXPECT_HALT(unit_with("vpulse20", words, 20), "vpulse20.ebe: edges must follow each other. Halting...\n");
}

TEST(triangle_2, has_its_corners_over_many_periods) {
    model_unit u = unit_with("triangle_2", {{"tr", 40e-6}, {"tf", 10e-6}, {"t0", 7e-6}, {"v_min", -2}, {"v_max", 6}});
    expect_corners(u, {{"0", -2}, {"40e-6", 6}}, 50e-6, 7e-6, 3000);
    EXPECT_NEAR(voltage(u, 27e-6), 2, 1e-10);
    EXPECT_NEAR(voltage(u, 52e-6), 2, 1e-10);
    EXPECT_NEAR(voltage(u, 2e-6), 2, 1e-10);  // before t0
    EXPECT_HALT(unit_with("triangle_2", {{"tr", 0}, {"tf", 0}}), "triangle_2.ebe: check tr, tf. Halting...\n");
    EXPECT_HALT(unit_with("triangle_2", {{"tr", -1e-3}, {"tf", 2e-3}}), "triangle_2.ebe: check tr, tf. Halting...\n");
}

TEST(triangle_3, has_its_corners_over_many_periods) {
    model_unit u = unit_with("triangle_3", {{"per", 50e-6}, {"dt_fall", 10e-9}, {"v_min", 0}, {"v_max", 4}});
    expect_corners(u, {{"0", 0}, {"49.99e-6", 4}}, 50e-6, 0, 3000);
    EXPECT_NEAR(voltage(u, 24.995e-6), 2, 1e-10);
    EXPECT_NEAR(voltage(u, 49.995e-6), 2, 1e-6);
    model_unit jump = unit_with("triangle_3", {{"per", 1}, {"dt_fall", 0}});
    EXPECT_NEAR(voltage(jump, 0.999999), 0.999998, 1e-12);
    EXPECT_EQ(voltage(jump, 1), -1);
    for (const values& words : {values{{"per", 0}}, {{"dt_fall", -1e-6}}, {{"dt_fall", 2e-3}}})
        EXPECT_HALT(unit_with("triangle_3", words), "triangle_3.ebe: check per, dt_fall. Halting...\n");
}

const values hump = {{"t2", 1e-3}, {"v2", 10}, {"t3", 3e-3}, {"v3", 10}, {"t4", 4e-3}};

TEST(clock_pwl20, repeats_its_points_and_has_their_corners_over_many_periods) {
    model_unit u = unit_with("clock_pwl20", hump, 4);
    double t = 0;
    for (int n = 0; n < 2000; ++n)
        for (const auto& [at, level] : std::vector<std::pair<double, double>>{{1e-3, 10}, {3e-3, 10}, {4e-3, 0}}) {
            t = next_break(u, t);
            ASSERT_NEAR(t, n * 4e-3 + at, 1e-12);
            ASSERT_NEAR(voltage(u, t), level, 1e-8);
            ASSERT_NEAR(voltage(u, t + 0.5e-3), at == 1e-3 ? 10 : 5, 1e-8);
        }
}

TEST(clock_pwl20, refuses_what_is_no_period_and_times_before_0) {
    const auto refuses = [](values words, int n_pts, const char* text) {
        values all = hump;
        all.insert(all.end(), words.begin(), words.end());
        EXPECT_HALT(unit_with("clock_pwl20", all, n_pts), std::string("clock_pwl20.ebe: ") + text + "\n");
    };
    for (const int n : {1, -1, 21}) refuses({}, n, "check n_pts. Halting...");
    refuses({{"t1", 0.1}}, 4, "t1 must be 0");
    refuses({{"v4", 1}}, 4, "v_1 and v_n must be the same!");
    refuses({{"t3", 0.5e-3}}, 4, "check t1 to t20. Halting...");
    refuses({{"t2", 0}, {"t3", 0}, {"t4", 0}}, 4, "check t1 to t20. Halting...");
    model_unit u = unit_with("clock_pwl20", hump, 4);
    u.flags.time_given = -1e-9;
    EXPECT_HALT(u.trns(), "clock_pwl20.ebe: time_given < 0 ?.\n");
    EXPECT_HALT(u.dc(), "clock_pwl20.ebe: time_given < 0 ?.\n");
    EXPECT_HALT(u.call(&flags_class::nexttime), "clock_pwl20.ebe: time_given < 0 ?.\n");
}

TEST(isrc_pwl20, is_a_current_along_its_points) {
    model_unit u = unit_with(
        "isrc_pwl20",
        {{"t1", 1}, {"i1", 2}, {"t2", 3}, {"i2", 6}, {"t3", 3}, {"i3", -1}, {"t4", 4}, {"i4", 0}, {"k_scale", 10}}, 4);
    for (const auto& [t, y] :
         std::vector<std::pair<double, double>>{{0, 20}, {1, 20}, {2, 40}, {3, -10}, {3.5, -5}, {4, 0}, {99, 0}})
        EXPECT_EQ(current(u, t), y) << t;
    EXPECT_EQ(next_break(u, 0), 1);
    EXPECT_EQ(next_break(u, 1), 3);
    EXPECT_EQ(next_break(u, 3), 4);
    EXPECT_EQ(next_break(u, 4), 1e9);
    for (const int n : {-1, 21})
        EXPECT_HALT(unit_with("isrc_pwl20", {}, n), "isrc_pwl20.ebe: check n_pts. Halting...\n");
    EXPECT_HALT(unit_with("isrc_pwl20", {{"t1", 1}}), "isrc_pwl20.ebe: times must ascend. Halting...\n");
}

}  // namespace
