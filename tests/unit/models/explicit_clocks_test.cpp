// Explicit blocks that are waves of time: values by their definitions, corners, faults.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <vector>

#include "explicit_unit.h"
#include "halt_throws.h"

namespace {

void algebra_at(explicit_unit& u, double time) {
    u.flags.time_given_x = time;
    u.algebra();
}

using settings = std::vector<std::pair<const char*, double>>;

explicit_unit prepared(const char* name, const settings& values) {
    explicit_unit u(name);
    for (const auto& [word, value] : values) {
        if (u.lib.list.iprm.find(u.e, word) >= 0)
            u.i(word) = static_cast<int>(value);
        else if (u.lib.list.rprm.find(u.e, word) >= 0)
            u.r(word) = value;
        else
            u.vr(word) = value;
    }
    u.prepare();
    return u;
}

double fold(double t, double per) { return t - std::floor(t / per) * per; }

// From y0 to y1 between from and from + length.
double ramp(double p, double from, double length, double y0, double y1) {
    return p < from ? y0 : p < from + length ? y0 + (y1 - y0) * (p - from) / length : y1;
}
// The wave of a clock after its definition, p within the period.
double clock_wave(double p, double t1, double dt1, double dt2, double low, double high) {
    return p < t1 ? ramp(p, 0, dt1, low, high) : ramp(p, t1, dt2, high, low);
}
// Levels that are turned over at ascending times; `before`: the level before the first.
double toggled(double p, const std::vector<double>& times, double dt, double before, double other) {
    for (const double t : times) {
        if (p < t) return before;
        if (p < t + dt) return ramp(p, t, dt, before, other);
        std::swap(before, other);
    }
    return before;
}

// A block that repeats itself: output k at a time, and the corners of a period, ascending from t0.
struct periodic {
    const char* name;
    settings values;
    double per, t0;
    std::vector<double> corners;
    std::function<double(double, int)> value;
};

constexpr double per = 1e-3, t1 = 3e-4, t2 = 7e-4, dt1 = 2e-5, dt2 = 4e-5, t0 = 1.3e-4, td = 5e-5, low = 0.5, high = 4;
const settings clock_values = {{"t1", t1}, {"t2", t2},     {"dt1", dt1},    {"dt2", dt2},
                               {"t0", t0}, {"x_low", low}, {"x_high", high}};
settings with(settings values, const settings& more) {
    values.insert(values.end(), more.begin(), more.end());
    return values;
}
settings without(settings values, const std::string& word) {
    std::erase_if(values, [&](const auto& v) { return v.first == word; });
    return values;
}
double firing(double p) { return p < 1e-4 ? ramp(p, 0, 1e-5, low, high) : ramp(p, 1e-4, 1e-5, high, low); }
double triangle(double p, double rise) { return p < rise ? ramp(p, 0, rise, -2, 3) : ramp(p, rise, per - rise, 3, -2); }
const settings pwm_values = {{"f_hz", 1000}, {"t0", t0}, {"dt1", 1e-5}, {"x_low", low}, {"x_high", high}};
const settings angles = {{"a1", 36}, {"a2", 90}, {"a3", 180}};

std::vector<double> with_ends(const std::vector<double>& edges, double length) {
    std::vector<double> all;
    for (const double t : edges) all.insert(all.end(), {t, t + length});
    return all;
}
// The beginning of a period is a corner, too.
periodic pattern(const char* name, const settings& values, const std::vector<double>& edges, bool ends_high) {
    std::vector<double> corners = with_ends(edges, 1e-5);
    if (corners[0] > 0) corners.insert(corners.begin(), 0);
    return {name, with(with(pwm_values, angles), values), per, t0, corners, [=](double t, int) {
                return toggled(fold(t - t0, per), edges, 1e-5, ends_high ? high : low, ends_high ? low : high);
            }};
}

const std::vector<periodic> waves = {
    {"clock",
     clock_values,
     per,
     t0,
     {0, dt1, t1, t1 + dt2},
     [](double t, int) { return clock_wave(fold(t - t0, per), t1, dt1, dt2, low, high); }},
    {"clock2",
     with(clock_values, {{"td", td}}),
     per,
     t0,
     {0, dt2, td, td + dt1, t1, t1 + dt2, t1 + td, t1 + td + dt1},
     [](double t, int k) {
         const double p = fold(t - t0 - (k ? t1 : 0), per), share = k ? t2 : t1;
         return p < share ? ramp(p, td, dt1, low, high) : ramp(p, share, dt2, high, low);
     }},
    // The fall of one lasts into the dead time of the other, and its rise begins with the fall's end.
    {"clock2",
     with(clock_values, {{"td", dt2}}),
     per,
     t0,
     {0, dt2, dt2 + dt1, t1, t1 + dt2, t1 + dt2 + dt1},
     [](double t, int k) {
         const double p = fold(t - t0 - (k ? t1 : 0), per), share = k ? t2 : t1;
         return p < share ? ramp(p, dt2, dt1, low, high) : ramp(p, share, dt2, high, low);
     }},
    {"clock_1",
     with(without(without(clock_values, "t1"), "t2"), {{"per", per}, {"duty_cycle", 0.3}}),
     per,
     t0,
     {0, dt1, t1, t1 + dt2},
     [](double t, int) { return clock_wave(fold(t - t0, per), t1, dt1, dt2, low, high); }},
    {"clock_3",
     clock_values,
     per,
     t0,
     {},  // its corners: below
     [](double t, int k) { return clock_wave(fold(t - t0 - k * per / 3, per), t1, dt1, dt2, low, high); }},
    {"clock_gnrl",
     {{"t1", 3e-4}, {"t2", 6e-4}, {"dt1", 4e-5}, {"dt2", 6e-5}, {"td", t0}, {"x_low", low}, {"x_high", high}},
     per,
     t0,
     {0, 4e-5, 3.4e-4, 4e-4},
     [](double t, int) { return t < t0 ? low : clock_wave(fold(t - t0, per), 3.4e-4, 4e-5, 6e-5, low, high); }},
    {"clock_delay_1",
     with(clock_values, {{"theta_delay", 72}}),
     per,
     t0 + 2e-4,
     {0, dt1, t1, t1 + dt2},
     [](double t, int) { return clock_wave(fold(t - t0 - 2e-4, per), t1, dt1, dt2, low, high); }},
    {"clock_thyr",
     {{"f_hz", 1000}, {"t_w", 1e-4}, {"dt1", 1e-5}, {"t0", t0}, {"x_low", low}, {"x_high", high}, {"x", 54}},
     per,
     t0 + 1.5e-4,
     {0, 1e-5, 1e-4, 1.1e-4},
     [](double t, int) { return firing(fold(t - t0 - 1.5e-4, per)); }},
    {"clock_thyr_1",
     {{"f_hz", 1000}, {"t_w", 1e-4}, {"dt1", 1e-5}, {"t0", t0}, {"x_low", low}, {"x_high", high}, {"x", 54}},
     per,
     t0 + 1.5e-4,
     {0, 1e-5, 1e-4, 1.1e-4, 5e-4, 5.1e-4, 6e-4, 6.1e-4},
     [](double t, int k) { return firing(fold(t - t0 - 1.5e-4 - k * 5e-4, per)); }},
    {"clock_trz",
     {{"per", per}, {"t0", t0}, {"a", 3}, {"flat", 0.6}},
     per,
     t0 - 1e-4,
     {0, 2e-4, 5e-4, 7e-4},
     [](double t, int) {
         const double p = fold(t - t0, per), q = p < 5e-4 ? p : p - 5e-4;
         return (p < 5e-4 ? 3 : -3) * std::min({1.0, q / 1e-4, (5e-4 - q) / 1e-4});
     }},
    {"pulse",
     {{"y1", low}, {"y2", high}, {"td", t0}, {"tr", 4e-5}, {"tf", 6e-5}, {"pw", 3e-4}, {"per", per}},
     per,
     t0,
     {0, 4e-5, 3.4e-4, 4e-4},
     [](double t, int) { return t < t0 ? low : clock_wave(fold(t - t0, per), 3.4e-4, 4e-5, 6e-5, low, high); }},
    {"triangle_1",
     {{"per", per}, {"t0", t0}, {"y_min", -2}, {"y_max", 3}},
     per,
     t0,
     {0, 5e-4},
     [](double t, int) { return triangle(fold(t - t0, per), 5e-4); }},
    {"triangle_2",
     {{"tr", 8e-4}, {"tf", 2e-4}, {"t0", t0}, {"y_min", -2}, {"y_max", 3}},
     per,
     t0,
     {0, 8e-4},
     [](double t, int) { return triangle(fold(t - t0, per), 8e-4); }},
    {"triangle_2a",
     {{"tr", 8e-4}, {"tf", 2e-4}, {"phi", 90}, {"y_min", -2}, {"y_max", 3}},
     per,
     -2.5e-4,
     {0, 8e-4},
     [](double t, int) { return triangle(fold(t + 2.5e-4, per), 8e-4); }},
    {"triangle_3",
     {{"per", per}, {"dt_fall", 1e-4}, {"t0", t0}, {"y_min", -2}, {"y_max", 3}},
     per,
     t0,
     {0, 9e-4},
     [](double t, int) { return triangle(fold(t - t0, per), 9e-4); }},
    // What each half and period begins with is told by `start` or follows from the number of angles.
    pattern("pwm20_1", {{"n_pts", 2}, {"start", 1}}, {1e-4, 2.5e-4}, true),
    pattern("pwm20_1", {{"n_pts", 3}, {"start", 0}}, {0, 1e-4, 2.5e-4, 5e-4}, true),
    pattern("pwm20_2", {{"n_pts", 0}, {"start", 0}}, {0, 5e-4}, true),
    pattern("pwm20_2", {{"n_pts", 1}, {"start", 0}, {"a1", 90}}, {2.5e-4, 7.5e-4}, false),
    pattern("pwm20_2", {{"n_pts", 2}, {"start", 1}}, {0, 1e-4, 2.5e-4, 5e-4, 6e-4, 7.5e-4}, false),
};

const periodic repeated_points = {
    "clock_pwl20",
    {{"n_pts", 5},
     {"t2", 2e-4},
     {"t3", 2e-4},
     {"t4", 7e-4},
     {"t5", 1e-3},
     {"y1", 1},
     {"y2", 2},
     {"y3", -1},
     {"y4", 4},
     {"y5", 1}},
    per,
    0,
    {0, 2e-4, 7e-4},
    [](double t, int) {
        const double p = fold(t, per);
        return p < 2e-4 ? ramp(p, 0, 2e-4, 1, 2) : p < 7e-4 ? ramp(p, 2e-4, 5e-4, -1, 4) : ramp(p, 7e-4, 3e-4, 4, 1);
    }};

// Corners of three waves at thirds of a period.
std::vector<double> corners_of(const periodic& w) {
    if (std::string(w.name) != "clock_3") return w.corners;
    std::vector<double> all;
    for (int k = 0; k < 3; ++k)
        for (const double c : {0.0, dt1, t1, t1 + dt2}) all.push_back(fold(c + k * per / 3, per));
    std::sort(all.begin(), all.end());
    return all;
}

TEST(explicit_clocks, have_the_values_of_their_definitions) {
    std::mt19937 rng(1);
    for (const periodic& w : waves) {
        explicit_unit u = prepared(w.name, w.values);
        std::uniform_real_distribution<double> time(-5e-3, 5e-3);
        for (int trial = 0; trial < 500; ++trial) {
            const double t = time(rng);
            for (int k = 0; k < u.n_outputs(); ++k)
                ASSERT_NEAR(u.output_at(t, k), w.value(t, k), 1e-7) << w.name << ' ' << t;
        }
    }
    explicit_unit u = prepared(repeated_points.name, repeated_points.values);
    std::uniform_real_distribution<double> time(0, 5e-3);
    for (int trial = 0; trial < 500; ++trial) {
        const double t = time(rng);
        ASSERT_NEAR(u.output_at(t), repeated_points.value(t, 0), 1e-7) << t;
    }
}

// Visits the corners of `count` periods from `first` on.
void expect_corners(const periodic& w, int first, int count) {
    explicit_unit u = prepared(w.name, w.values);
    const std::vector<double> corners = corners_of(w);
    const auto at = [&](int k, double corner) {
        return static_cast<double>(static_cast<long double>(w.t0) + k * static_cast<long double>(w.per) + corner);
    };
    double t = at(first, 0.5 * (corners[0] + corners[1]));
    bool begun = false;
    for (int k = first; k < first + count; ++k)
        for (const double corner : corners) {
            if (!begun && corner <= corners[0]) continue;
            begun = true;
            const double next = u.next_break(t);
            ASSERT_GT(next, t) << w.name;
            ASSERT_NEAR(next, at(k, corner), 1e-12) << w.name << ", period " << k << ", corner " << corner;
            t = next;
        }
}

TEST(explicit_clocks, visit_every_corner_and_nothing_else_also_after_a_million_periods) {
    for (const periodic& w : waves) {
        expect_corners(w, 0, 50);
        expect_corners(w, 1000000, 50);
    }
    expect_corners(repeated_points, 0, 50);
    expect_corners(repeated_points, 1000000, 50);
}

TEST(explicit_clocks, do_not_drift_over_a_million_periods) { expect_corners(waves[0], 0, 1000000); }

TEST(explicit_clocks, hold_on_a_corner_the_value_that_follows) {
    for (const double dt_fall : {0.0, 1e-4}) {
        explicit_unit u = prepared("triangle_3", {{"dt_fall", dt_fall}, {"y_min", -2}, {"y_max", 3}});
        for (int k = 0; k < 1000; ++k) EXPECT_NEAR(u.output_at(u.next_break(k * 1e-3 - 1e-5)), -2, 1e-6) << k;
    }
}

// Their corners once and no more.
void expect_breaks(explicit_unit& u, const std::vector<double>& breaks) {
    double t = -1;
    for (const double b : breaks) {
        t = u.next_break(t);
        EXPECT_NEAR(t, b, 1e-15);
    }
    EXPECT_EQ(u.next_break(t), 1e9) << "nothing is left";
}

TEST(explicit_pulse, without_a_period_comes_once) {
    explicit_unit u = prepared("pulse", {{"td", 0.5}, {"tr", 0.25}, {"pw", 1}, {"tf", 0.5}, {"y1", 1}, {"y2", 5}});
    expect_breaks(u, {0.5, 0.75, 1.75, 2.25});
    EXPECT_EQ(u.output_at(0), 1);
    EXPECT_EQ(u.output_at(0.625), 3);
    EXPECT_EQ(u.output_at(1), 5);
    EXPECT_EQ(u.output_at(1e6), 1);
}

TEST(explicit_pulse20, changes_at_each_of_its_times) {
    explicit_unit u = prepared(
        "pulse20",
        {{"n_pts", 3}, {"t1", 1}, {"t2", 2}, {"t3", 4}, {"tr", 0.5}, {"tf", 0.25}, {"y1", -1}, {"y2", 3}, {"t4", 0.1}});
    expect_breaks(u, {1, 1.5, 2, 2.25, 4, 4.5});
    for (const auto& [t, y] : std::vector<std::pair<double, double>>{
             {0, -1}, {1, -1}, {1.25, 1}, {1.5, 3}, {2.125, 1}, {2.25, -1}, {3.9, -1}, {4.25, 1}, {5, 3}, {1e9, 3}})
        EXPECT_EQ(u.output_at(t), y) << t;
}

TEST(explicit_pulse20, takes_all_twenty_times) {
    explicit_unit u("pulse20");
    u.i("n_pts") = 20;
    u.r("tr") = u.r("tf") = 0;
    for (int k = 1; k <= 20; ++k) u.r("t" + std::to_string(k)) = k;
    u.prepare();
    for (int k = 0; k <= 20; ++k) EXPECT_EQ(u.output_at(k + 0.5), k % 2) << k;
    EXPECT_EQ(u.next_break(18.5), 19);
    EXPECT_EQ(u.next_break(20), 1e9);
}

TEST(explicit_pwm20, takes_all_twenty_angles) {
    for (const char* name : {"pwm20_1", "pwm20_2"}) {
        explicit_unit u(name);
        u.i("n_pts") = 20;
        u.r("f_hz") = 1.0 / 360;  // an angle is its time
        u.r("dt1") = u.r("x_low") = 0;
        for (int k = 1; k <= 20; ++k) u.r("a" + std::to_string(k)) = 9 * k - 5;
        u.prepare();
        const bool half_wave = u.name == "pwm20_2";
        for (int k = 0; k <= 20; ++k)
            EXPECT_EQ(u.output_at(9 * k - 1.5 + 360), k == 0 && half_wave ? 1 : k % 2) << name << k;
        for (int k = 1; k <= 20 && half_wave; ++k) EXPECT_EQ(u.output_at(180 + 9 * k - 1.5), 1 - k % 2) << k;
    }
}

TEST(explicit_pwl20, runs_straight_between_its_points) {
    explicit_unit u =
        prepared("pwl20", {{"n_pts", 4}, {"t1", 1}, {"y1", 2}, {"t2", 3}, {"y2", 6}, {"t3", 3}, {"y3", -1}, {"t4", 4}});
    for (const auto& [t, y] :
         std::vector<std::pair<double, double>>{{0, 2}, {1, 2}, {2, 4}, {3, -1}, {3.5, -0.5}, {4, 0}, {99, 0}})
        EXPECT_EQ(u.output_at(t), y) << t;
    expect_breaks(u, {1, 3, 4});
}

TEST(explicit_pwl_file, runs_straight_between_the_points_of_its_file) {
    explicit_unit u("pwl_file");
    u.dp.xbe.table = {{{9}, {9}}, {{1, 3, 3, 4}, {2, 6, -1, 0}}};
    u.dp.xbe.of_unit = {1};
    for (const auto& [t, y] : std::vector<std::pair<double, double>>{{0, 2}, {2, 4}, {3, -1}, {3.5, -0.5}, {99, 0}})
        EXPECT_EQ(u.output_at(t), y) << t;
    expect_breaks(u, {1, 3, 4});
}

TEST(explicit_step, changes_once) {
    explicit_unit u = prepared("step", {{"y1", 1}, {"y2", 2}, {"t0", 3}, {"dt1", 0.5}});
    for (const auto& [t, y] :
         std::vector<std::pair<double, double>>{{-1e9, 1}, {3, 1}, {3.25, 1.5}, {3.5, 2}, {1e9, 2}})
        EXPECT_EQ(u.output_at(t), y) << t;
    expect_breaks(u, {3, 3.5});
}

TEST(explicit_pwl10_xy, is_a_curve_with_its_slopes_and_no_break) {
    explicit_unit u =
        prepared("pwl10_xy", {{"n_pts", 3}, {"x1", -1}, {"y1", 2}, {"x2", 1}, {"y2", 6}, {"x3", 2}, {"y3", 5}});
    struct point {
        double x, y, slope;
    };
    for (const auto& [x, y, slope] : {point{-3, 2, 0}, {-0.5, 3, 2}, {0.5, 5, 2}, {1.5, 5.5, -1}, {7, 5, 0}}) {
        u.vr("x") = x;
        EXPECT_EQ(u.output_at(0.3), y) << x;
        algebra_at(u, 0.3);
        EXPECT_EQ(u.x.fh[0], 0);
        EXPECT_EQ(u.jac.dhdvr[0][0], -slope) << x;
    }
    EXPECT_EQ(u.next_break(0), 1e9);
}

TEST(explicit_clock_thyr, follows_its_angle_around_the_period_and_beyond) {
    explicit_unit u = prepared("clock_thyr", {{"f_hz", 50}, {"t_w", 2e-3}, {"dt1", 0}});
    for (const double x : {-90.0, 0.0, 170.0, 350.0, 359.0, 800.0}) {
        u.vr("x") = x;
        const double fire = fold(x / 360 * 0.02, 0.02);
        for (const double after : {1e-6, 1e-3, 1.999e-3})
            EXPECT_EQ(u.output_at(0.1 + fire + after), 1) << x << ' ' << after;
        for (const double after : {-1e-6, 2.001e-3, 0.01})
            EXPECT_EQ(u.output_at(0.1 + fire + after), 0) << x << ' ' << after;
        EXPECT_NEAR(u.next_break(0.1 + fire + 1e-6), 0.1 + fire + 2e-3, 1e-14);
    }
}

// ---- by the angle of a rotor ----

constexpr double degree = 0.017453292519943295;

TEST(explicit_bldc_clock_1, steps_through_the_six_pairs_of_switches) {
    explicit_unit u = prepared("bldc_clock_1", {{"k", 2}, {"phi", 10}, {"x_low", -1}});
    const int upper[] = {0, 0, 1, 1, 2, 2}, lower[] = {1, 2, 2, 0, 0, 1};  // from 30 degrees on, sectors of 60
    for (int sector = -6; sector < 12; ++sector)
        for (const double within : {0.01, 30.0, 59.99}) {
            u.vr("th") = (30 + 60 * sector + within - 10) * degree / 2;
            u.output_at(0);
            for (int phase = 0; phase < 3; ++phase) {
                const int s = (sector + 6) % 6;
                EXPECT_EQ(u.x.vr[1 + static_cast<std::size_t>(phase)], upper[s] == phase ? 1 : -1) << sector;
                EXPECT_EQ(u.x.vr[4 + static_cast<std::size_t>(phase)], lower[s] == phase ? 1 : -1) << sector;
            }
        }
}

TEST(explicit_bldc_trz, has_three_trapezoids_120_degrees_apart) {
    explicit_unit u = prepared("bldc_trz", {{"k", 3}, {"phi", -20}, {"a", 5}});
    const auto phase_a = [](double angle) {
        const double a = fold(angle, 360);
        return a < 30 ? a / 30 : a < 150 ? 1 : a < 210 ? (180 - a) / 30 : a < 330 ? -1 : (a - 360) / 30;
    };
    for (double angle = -400; angle < 800; angle += 7.3) {
        u.vr("th") = (angle + 20) * degree / 3;
        for (int k = 0; k < 3; ++k) EXPECT_NEAR(u.output_at(0, k), 5 * phase_a(angle - 120 * k), 1e-9) << angle;
    }
}

TEST(explicit_srm_logic, enables_each_phase_within_its_window_of_every_pitch) {
    explicit_unit u = prepared("srm_logic", {{"n_rotor", 4}, {"th_on", -5}, {"th_off", 25}});
    for (double angle = -200; angle < 400; angle += 0.7) {
        u.vr("th") = angle * degree;
        for (int k = 0; k < 3; ++k)
            EXPECT_EQ(u.output_at(0, k), fold(angle - 30 * k + 5, 90) < 30) << angle << ' ' << k;
    }
}

// ---- faults ----

TEST(explicit_clocks, refuse_parameters_that_make_no_wave) {
    struct fault {
        const char* name;
        settings values;
        const char* text;
    };
    const std::vector<fault> faults = {
        {"clock", {{"dt1", 0.6e-3}}, "clock.xbe: dt1.gt.t1 ?!"},
        {"clock", {{"dt2", 0.6e-3}}, "clock.xbe: dt2.gt.t2 ?!"},
        {"clock", {{"x_high", -1}}, "clock.xbe: x_high.lt.0.0 ?!"},
        {"clock", {{"dt1", 0}}, "clock.xbe: check t1, t2, dt1, dt2. Halting..."},
        {"clock2", {{"dt1", 0.6e-3}}, "clock2.xbe: dt1.gt.t1 ?!"},
        {"clock2", {{"td", 0.5e-3}}, "clock2.xbe: check t1, t2, dt1, dt2, td. Halting..."},
        {"clock2", {{"td", -1e-9}}, "clock2.xbe: check t1, t2, dt1, dt2, td. Halting..."},
        {"clock2", {{"t1", 1e-4}, {"dt2", 2e-4}}, "clock2.xbe: check t1, t2, dt1, dt2, td. Halting..."},
        {"clock_1", {{"duty_cycle", 0}}, "clock_1.xbe: duty_cycle.le.0.0 ?!"},
        {"clock_1", {{"x_high", -1}}, "clock_1.xbe: x_high.lt.0.0 ?!"},
        {"clock_1", {{"duty_cycle", 1}}, "clock_1.xbe: check per, duty_cycle, dt1, dt2. Halting..."},
        {"clock_1", {{"per", -1}}, "clock_1.xbe: check per, duty_cycle, dt1, dt2. Halting..."},
        {"clock_3", {{"dt2", 0.6e-3}}, "clock_3.xbe: dt2.gt.t2 ?!"},
        {"clock_3", {{"dt2", 0}}, "clock_3.xbe: check t1, t2, dt1, dt2. Halting..."},
        {"clock_gnrl", {{"t2", -1e-9}}, "clock_gnrl.xbe: check t1, t2, dt1, dt2. Halting..."},
        {"clock_gnrl",
         {{"t1", 0}, {"t2", 0}, {"dt1", 0}, {"dt2", 0}},
         "clock_gnrl.xbe: check t1, t2, dt1, dt2. Halting..."},
        {"clock_pwl20", {{"n_pts", 1}}, "clock_pwl20.xbe: check n_pts. Halting..."},
        {"clock_pwl20", {{"n_pts", 21}}, "clock_pwl20.xbe: check n_pts. Halting..."},
        {"clock_pwl20", {{"t1", 1e-9}}, "clock_pwl20.xbe: t1 must be 0"},
        {"clock_pwl20", {{"y2", 1}}, "clock_pwl20.xbe: v_1 and v_n must be the same!"},
        {"clock_pwl20", {{"t2", 0}}, "clock_pwl20.xbe: check t1 to t20. Halting..."},
        {"clock_pwl20", {{"n_pts", 3}, {"t3", 0.5e-3}}, "clock_pwl20.xbe: check t1 to t20. Halting..."},
        {"clock_delay_1",
         {{"theta_delay", 400}},
         "clock_delay_1.xbe: theta_delay=400\n  must be from 0 to below 360. Halting..."},
        {"clock_delay_1", {{"dt1", 0.6e-3}}, "clock_delay_1.xbe: dt1.gt.t1 ?!"},
        {"clock_delay_1", {{"dt1", 0}}, "clock_delay_1.xbe: check t1, t2, dt1, dt2. Halting..."},
        {"clock_thyr", {{"t_w", 0.03}}, "clock_thyr.xbe: check f_hz, t_w, dt1. Halting..."},
        {"clock_thyr", {{"f_hz", 0}}, "clock_thyr.xbe: check f_hz, t_w, dt1. Halting..."},
        {"clock_thyr_1", {{"dt1", 2e-3}}, "clock_thyr_1.xbe: check f_hz, t_w, dt1. Halting..."},
        {"clock_trz", {{"flat", 1.1}}, "clock_trz.xbe: check per, flat. Halting..."},
        {"clock_trz", {{"per", 0}}, "clock_trz.xbe: check per, flat. Halting..."},
        {"pulse", {{"per", 0.1e-3}}, "pulse.xbe: check tr, tf, pw, per. Halting..."},
        {"pulse20", {{"n_pts", 0}}, "pulse20.xbe: check n_pts. Halting..."},
        {"pulse20", {{"n_pts", 21}}, "pulse20.xbe: check n_pts. Halting..."},
        {"pulse20", {{"n_pts", 2}, {"t2", 0.5e-6}}, "pulse20.xbe: edges must follow each other. Halting..."},
        {"pwl10_xy", {{"n_pts", 11}}, "pwl10_xy.xbe: check n_pts. Halting..."},
        {"pwl10_xy", {{"x1", 1}}, "pwl10_xy.xbe: x must ascend. Halting..."},
        {"pwl20", {{"n_pts", 0}}, "pwl20.xbe: check n_pts. Halting..."},
        {"pwl20", {{"t1", 1}}, "pwl20.xbe: times must ascend. Halting..."},
        {"step", {{"dt1", -1}}, "step.xbe: check dt1. Halting..."},
        {"triangle_1", {{"per", 0}}, "triangle_1.xbe: check per. Halting..."},
        {"triangle_2", {{"tr", 0}, {"tf", 0}}, "triangle_2.xbe: check tr, tf. Halting..."},
        {"triangle_2a", {{"tf", -1e-9}}, "triangle_2a.xbe: check tr, tf. Halting..."},
        {"triangle_3", {{"dt_fall", 2e-3}}, "triangle_3.xbe: check per, dt_fall. Halting..."},
        {"pwm20_1", {{"n_pts", 21}}, "pwm20_1.xbe: check n_pts. Halting..."},
        {"pwm20_1", {{"a2", 361}}, "pwm20_1.xbe: check f_hz, dt1, a1 to a20. Halting..."},
        {"pwm20_1", {{"a1", 180}}, "pwm20_1.xbe: check f_hz, dt1, a1 to a20. Halting..."},
        {"pwm20_2", {{"n_pts", 1}, {"a1", 181}}, "pwm20_2.xbe: check f_hz, dt1, a1 to a20. Halting..."},
        {"pwm20_2", {{"f_hz", 0}}, "pwm20_2.xbe: check f_hz, dt1, a1 to a20. Halting..."},
        {"pwm20_2", {{"n_pts", -1}}, "pwm20_2.xbe: check n_pts. Halting..."},
        {"srm_logic", {{"n_rotor", 0}}, "srm_logic.xbe: check n_rotor. Halting..."},
        {"srm_logic", {{"th_on", 30}}, "srm_logic.xbe: check th_on, th_off. Halting..."},
        {"srm_logic", {{"th_off", 91}}, "srm_logic.xbe: check th_on, th_off. Halting..."},
    };
    for (const fault& f : faults) {
        SCOPED_TRACE(f.text);
        EXPECT_HALT(prepared(f.name, f.values), std::string(f.text) + "\n");
    }
}

TEST(explicit_clock_pwl20, stops_before_time_0) {
    explicit_unit u = prepared("clock_pwl20", {});
    EXPECT_HALT(u.output_at(-1e-9), "clock_pwl20.xbe: time_given < 0 ?\n");
    EXPECT_HALT(u.next_break(-1e-9), "clock_pwl20.xbe: time_given < 0 ?\n");
    EXPECT_EQ(u.output_at(0), 0);
}

}  // namespace
