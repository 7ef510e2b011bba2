// General sources: constants of machines, the rectified sine wave.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "block_unit.h"
#include "halt_throws.h"

namespace {

constexpr double pi = std::numbers::pi;

TEST(srcac_fwr, is_the_absolute_value_of_a_sine_wave_also_before_its_origin) {
    block_unit u("srcac_fwr");
    u.r("a") = -3;
    u.r("f_hz") = 10;
    u.r("phi") = 30;
    u.r("t0") = 0.01;
    u.prepare();
    for (const double t : {-0.02, 0.0, 0.01, 0.0234, 0.07})
        EXPECT_NEAR(u.output(t), std::fabs(3 * std::sin(2 * pi * 10 * (t - 0.01) + pi / 6)), 1e-12);
}

TEST(srcac_fwr, names_each_of_its_zeros) {
    block_unit u("srcac_fwr");
    u.r("f_hz") = 50;
    u.r("phi") = 90;
    u.r("t0") = 1e-3;
    u.prepare();
    double t = -30e-3;
    for (const double zero :
         {-24e-3, -14e-3, -4e-3, 6e-3, 16e-3, 26e-3}) {  // a quarter of 20 ms before 1 ms, and 10 ms apart
        t = u.next_break(t);
        EXPECT_NEAR(t, zero, 1e-16);
        EXPECT_NEAR(u.output(t), 0, 1e-12);
    }
}

TEST(srcac_fwr, does_not_drift_over_a_million_periods) {
    block_unit u("srcac_fwr");
    u.r("f_hz") = 512;  // half a period is a whole number of steps of a double
    u.prepare();
    double t = 0;
    for (int n = 1; n <= 2000000; ++n) {
        const double next = u.next_break(t);
        ASSERT_GT(next, t);
        ASSERT_EQ(next, n / 1024.0);
        t = next;
    }
}

TEST(srcac_fwr, refuses_to_stand_still) {
    block_unit u("srcac_fwr");
    u.r("f_hz") = 0;
    EXPECT_HALT(u.prepare(), "srcac_fwr.gbe: check f_hz. Halting...\n");
}

TEST(const_pi_1, is_a_multiple_of_pi) {
    block_unit u("const_pi_1");
    EXPECT_EQ(u.output(0), pi);
    u.r("k") = -1.5;
    EXPECT_NEAR(u.output(0), -4.71238898038469, 1e-14);
}

// A turbine generator of 835 MVA, 26 kV, 60 Hz, 2 poles (Krause, Wasynczuk and Sudhoff): its torque at rated power and
// the reactances in ohm of its data, xd = 1.8 per unit being 1.457 ohm.
TEST(const_syncmc, gives_the_bases_of_a_machine) {
    block_unit u("const_syncmc");
    u.r("power") = 835e6;
    u.r("v_rated") = 26e3;
    u.r("f_hz") = 60;
    u.r("k") = 1.8;
    u.i("n_base") = 3;
    u.prepare();
    EXPECT_NEAR(u.output(0), 1.457, 0.5e-3);
    u.r("k") = 1;
    u.i("n_base") = 5;
    u.prepare();
    EXPECT_NEAR(u.output(0) / 2.2149e6, 1, 1e-4);

    // 120 pi rad/s with 4 poles; sqrt(2/3) 300 V = 100 sqrt 6.
    const double w = 120 * pi, vb = 100 * std::sqrt(6), ib = 9000 / (1.5 * vb);
    const double base[] = {vb, ib, 10, vb / w, 9000 / (w / 2), 10 / w};
    u.r("power") = 9000;
    u.r("v_rated") = 300;
    u.r("poles") = 4;
    for (int k = 1; k <= 6; ++k) {
        u.i("n_base") = k;
        u.prepare();
        EXPECT_NEAR(u.output(0) / base[k - 1], 1, 1e-12) << k;
    }
}

TEST(const_tmech_turbine, is_power_over_the_speed_of_the_shaft) {
    block_unit u("const_tmech_turbine");
    u.r("power") = 325e6;  // a hydro turbine, 60 Hz, 64 poles: 11.781 rad/s
    u.r("f_hz") = 60;
    u.r("poles") = 64;
    u.prepare();
    EXPECT_NEAR(u.output(0), 325e6 / (3.75 * pi), 1e-6);
}

TEST(sources_of_machines, refuse_ratings_without_sense) {
    for (const int n_base : {0, 7}) {
        block_unit u("const_syncmc");
        u.i("n_base") = n_base;
        EXPECT_HALT(u.prepare(), "const_syncmc.gbe: check n_base. Halting...\n");
    }
    for (const char* word : {"power", "v_rated", "f_hz", "poles"}) {
        block_unit u("const_syncmc");
        u.r(word) = 0;
        EXPECT_HALT(u.prepare(), "const_syncmc.gbe: check power, v_rated, f_hz, poles. Halting...\n");
    }
    for (const char* word : {"f_hz", "poles"}) {
        block_unit u("const_tmech_turbine");
        u.r(word) = 0;
        EXPECT_HALT(u.prepare(), "const_tmech_turbine.gbe: check f_hz, poles. Halting...\n");
    }
}

}  // namespace
