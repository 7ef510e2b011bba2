#include "base/scientific.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {
std::string fast(double x) {
    char text[scientific_width + 1] = {};
    return put_scientific(x, text) ? std::string(text) : "none";
}
std::string slow(double x) {
    char text[64];
    std::snprintf(text, sizeof text, "%13.6e", x);
    return text;
}
double any_magnitude(std::mt19937_64& rng) {
    const double mantissa = 1.0 + std::uniform_real_distribution<double>(0, 1)(rng);
    const double x = std::ldexp(mantissa, static_cast<int>(rng() % 265) - 132);
    return rng() % 2 ? x : -x;
}
}  // namespace

TEST(put_scientific, has_the_bytes_of_printf_for_numbers_of_all_sizes_that_it_takes) {
    std::mt19937_64 rng(1);
    for (int i = 0; i < 300000; ++i) {
        const double x = any_magnitude(rng);
        ASSERT_EQ(fast(x), slow(x));
    }
}

TEST(put_scientific, is_right_or_silent_on_both_sides_of_a_rounding) {
    std::mt19937_64 rng(2);
    int n_taken = 0, n = 0;
    for (int power = -39; power <= 39; ++power)
        for (int i = 0; i < 500; ++i) {
            // Halfway between two numbers of seven digits, as near as doubles come, and the neighbours.
            const unsigned digits = 1000000 + static_cast<unsigned>(rng() % 9000000);
            const double middle = std::stod(std::to_string(digits) + "5e" + std::to_string(power - 7));
            for (double x : {std::nextafter(middle, 0), middle, std::nextafter(middle, 1e300)}) {
                const std::string text = fast(x);
                ++n;
                if (text == "none") continue;
                ++n_taken;
                ASSERT_EQ(text, slow(x));
            }
        }
    EXPECT_GT(n_taken, n * 9 / 10) << "only ties are left";
}

TEST(put_scientific, carries_into_the_exponent) {
    for (int power = -39; power <= 39; ++power) {
        const double ten = std::stod("1e" + std::to_string(power));
        double x = ten;
        for (int i = 0; i < 20; ++i) x = std::nextafter(x, 0);
        for (int i = 0; i < 40; ++i, x = std::nextafter(x, 1e300)) ASSERT_EQ(fast(x), slow(x));
        for (double part : {0.99999994, 0.99999996, 0.9999999, 0.9999995})
            ASSERT_EQ(fast(part * ten), slow(part * ten));
    }
}

TEST(put_scientific, takes_whole_numbers_and_both_zeros) {
    for (double x : {0.0, -0.0, 1.0, -1.0, 2.0, 10.0, 1e6, 1e7, 1e22, -1e15, 123456.0, 9999999.0, 0.5, -0.125})
        EXPECT_EQ(fast(x), slow(x));
}

TEST(put_scientific, leaves_ties_and_far_numbers_to_others) {
    const double inf = std::numeric_limits<double>::infinity();
    for (double x : {1234567.5, -12345675.0, 4000000.5, 1e41, 1e-41, 1e300, 5e-324, inf, -inf,
                     std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(fast(x), "none") << x;
}
