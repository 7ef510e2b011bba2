#include "tnl/plot/plot_axis.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace cli;

std::vector<std::string> texts(const axis& a) {
    std::vector<std::string> out;
    for (const double t : a.ticks) out.push_back(a.tick_text(t));
    return out;
}
using words = std::vector<std::string>;

TEST(make_axis, has_round_ticks_inside_the_limits) {
    EXPECT_EQ(make_axis(-5, 5, 5).ticks, (std::vector<double>{-4, -2, 0, 2, 4}));
    EXPECT_EQ(texts(make_axis(-5, 5, 10)), (words{"-5", "-4", "-3", "-2", "-1", "0", "1", "2", "3", "4", "5"}));
}

TEST(make_axis, shows_small_and_large_values_with_the_prefix_of_the_unit) {
    const axis t = make_axis(0, 3e-3, 3, "s");
    EXPECT_EQ(texts(t), (words{"0", "1", "2", "3"}));
    EXPECT_EQ(axis_label("time", t), "time, ms");
    const axis v = make_axis(-4700, 4700, 5, "V");
    EXPECT_EQ(texts(v), (words{"-4", "-2", "0", "2", "4"}));
    EXPECT_EQ(axis_label("vout", v), "vout, kV");
    EXPECT_EQ(axis_label("", make_axis(0, 2e-5, 4, "s")), "us");
    EXPECT_EQ(axis_label("x", make_axis(0, 2, 4)), "x");
}

TEST(make_axis, keeps_the_unit_for_values_around_one) {
    EXPECT_EQ(make_axis(0, 0.5, 5, "s").scale.unit, "s");
    EXPECT_EQ(make_axis(0, 0.4, 5, "s").scale.unit, "ms");
    EXPECT_EQ(make_axis(0, 999, 5, "V").scale.unit, "V");
    EXPECT_EQ(make_axis(0, 1000, 5, "V").scale.unit, "kV");
}

TEST(make_axis, gives_units_without_prefixes_a_power_of_ten) {
    EXPECT_EQ(axis_label("speed", make_axis(0, 3000, 3, "rpm")), "speed, rpm");
    const axis a = make_axis(0, 3e6, 3, "rad/s");
    EXPECT_EQ(axis_label("speed", a), "speed, 1e6 rad/s");
    EXPECT_EQ(texts(a), (words{"0", "1", "2", "3"}));
    EXPECT_EQ(axis_label("x", make_axis(0, 2e-9, 3)), "x, 1e-9");
    EXPECT_EQ(axis_label("i", make_axis(0, 2e-20, 3, "A")), "i, 1e-21 A");
}

TEST(make_axis, bears_one_value_no_value_and_endless_ones) {
    for (const auto& [lo, hi] : {std::pair{0.0, 0.0},
                                 {5.0, 5.0},
                                 {-1e-300, 1e-300},
                                 {1e300, 1e300},
                                 {-1.7e308, 1.7e308},
                                 {0.0, 5e-324},
                                 {double(INFINITY), -double(INFINITY)},
                                 {double(NAN), 1.0}})
        for (const bool log : {false, true}) {
            const axis a = log ? make_log_axis(lo, hi, 5, "V") : make_axis(lo, hi, 5, "V");
            EXPECT_LT(a.lo, a.hi) << lo << ' ' << hi;
            EXPECT_GE(a.ticks.size(), 1u) << lo << ' ' << hi << ' ' << log;
            EXPECT_LT(a.ticks.size(), 20u);
            for (const double t : a.ticks) EXPECT_LT(a.tick_text(t).size(), 24u) << lo << ' ' << hi;
        }
}

TEST(make_axis, ticks_differ_in_their_text) {
    for (const double middle : {0.0, 1.0, 5e-3, 12345.0, 3e9})
        for (const double half : {1e-6, 1e-3, 0.3, 1.0, 70.0}) {
            const axis a =
                make_axis(middle - half * std::abs(middle + 1), middle + half * std::abs(middle + 1), 5, "V");
            const words w = texts(a);
            ASSERT_GE(w.size(), 2u);
            for (std::size_t i = 1; i < w.size(); ++i) EXPECT_NE(w[i], w[i - 1]) << middle << ' ' << half;
        }
}

TEST(make_log_axis, has_decades_with_prefixes) {
    const axis a = make_log_axis(10, 1e6, 8, "Hz");
    EXPECT_EQ(texts(a), (words{"10", "100", "1k", "10k", "100k", "1M"}));
    EXPECT_EQ(axis_label("frequency", a), "frequency, Hz");
    EXPECT_DOUBLE_EQ(a.place(10), 0);
    EXPECT_DOUBLE_EQ(a.place(1e6), 1);
    EXPECT_DOUBLE_EQ(a.place(100), 0.2);
    EXPECT_TRUE(std::isnan(a.place(0)));
    EXPECT_TRUE(std::isnan(a.place(-1)));
    EXPECT_EQ(a.minor.size(), 40u);  // 2 ... 9 in five decades
}

TEST(make_log_axis, names_more_ticks_in_one_decade_and_fewer_in_many) {
    EXPECT_EQ(texts(make_log_axis(1, 10, 5, "Hz")), (words{"1", "2", "5", "10"}));
    EXPECT_EQ(texts(make_log_axis(110, 140, 3, "Hz")), (words{"110", "120", "130", "140"}));
    EXPECT_LE(make_log_axis(1e-12, 1e12, 5, "Hz").ticks.size(), 6u);
    EXPECT_EQ(make_log_axis(1e-3, 1e9, 20).tick_text(1e6), "1e+06");
}

TEST(make_log_axis, has_no_tick_that_it_cannot_show) {
    for (const double lo : {1e-320, 1e-307, 1e-3, 1.0, 3.0, 1e300})
        for (const double ratio : {1.001, 1.5, 9.0, 90.0, 1e5, 1e300})
            for (const int n_ticks : {1, 3, 10}) {
                const axis a = make_log_axis(lo, lo * ratio, n_ticks, "V");
                for (const double t : a.ticks) {
                    EXPECT_TRUE(std::isfinite(a.place(t))) << lo << ' ' << ratio << ' ' << t;
                    EXPECT_FALSE(a.tick_text(t).empty());
                }
                if (std::isfinite(lo * ratio) && lo > 1e-300) {
                    EXPECT_GE(a.ticks.size(), 1u) << lo << ' ' << ratio << ' ' << n_ticks;
                }
            }
}

TEST(engineering_text, has_prefixes_between_femto_and_tera) {
    EXPECT_EQ(engineering_text(1e5), "100k");
    EXPECT_EQ(engineering_text(1.5e-3), "1.5m");
    EXPECT_EQ(engineering_text(-200), "-200");
    EXPECT_EQ(engineering_text(0), "0");
    EXPECT_EQ(engineering_text(999.99), "1k");
    EXPECT_EQ(engineering_text(1e20), "1e+20");
}

}  // namespace
