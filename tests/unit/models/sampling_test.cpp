// Sample times, discrete filters, sliding means and delays.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "models/sampling.h"

namespace {

TEST(sample_times, counts_samples_from_their_origin_and_before_it) {
    const sample_times s = {0.5e-3, 1e-3};
    EXPECT_EQ(s.number(0.5e-3), 0);
    EXPECT_EQ(s.number(1.49e-3), 0);
    EXPECT_EQ(s.number(1.5e-3), 1);
    EXPECT_EQ(s.number(0.49e-3), -1);
    EXPECT_EQ(s.number(-0.5e-3), -1);
}

TEST(sample_times, takes_a_time_that_misses_a_sample_by_rounding_for_the_sample) {
    const sample_times s = {0, 0.1};
    double t = 0;
    for (int n = 1; n < 100000; ++n) {
        t += 0.1;  // loses digits all the way
        EXPECT_EQ(s.number(t), n);
    }
}

TEST(sample_times, names_a_next_sample_that_lies_ahead_and_is_the_next_one) {
    const sample_times s = {0.3, 0.7};
    std::mt19937 rng(1);
    std::uniform_real_distribution<double> time(-5, 5);
    for (int trial = 0; trial < 1000; ++trial) {
        const double t = time(rng), next = s.next(t);
        EXPECT_GT(next, t);
        EXPECT_LE(next - t, 0.7 * (1 + 1e-6));
        EXPECT_NEAR(std::remainder(next - 0.3, 0.7), 0, 1e-12);
        EXPECT_EQ(s.number(next), s.number(t) + 1);
    }
    EXPECT_GT(s.next(1e16), 1e16);  // where doubles are two apart
}

// y[n] = (a0 x[n] + a1 x[n - 1] + a2 x[n - 2] - b1 y[n - 1] - b2 y[n - 2])/b0, from whole arrays.
TEST(discrete_filter, equals_its_recursion_on_random_samples) {
    std::mt19937 rng(2);
    std::uniform_real_distribution<double> number(-1, 1);
    for (int n_a = 0; n_a <= 2; ++n_a)
        for (int n_b = 0; n_b <= 2; ++n_b) {
            double a[3], b[3], x_old[2], y_old[2], x[30], y[30];
            for (double& c : a) c = number(rng);
            for (double& c : b) c = 0.4 * number(rng);
            b[0] = n_b > 0 ? 1.5 : 1;
            const discrete_filter w = {n_a, n_b, a, n_b > 0 ? b : nullptr, x_old, y_old};
            w.clear();
            EXPECT_EQ(w.slope(), a[0] / b[0]);
            for (int n = 0; n < 30; ++n) {
                x[n] = number(rng);
                y[n] = a[0] * x[n];
                for (int k = 1; k <= n_a && k <= n; ++k) y[n] += a[k] * x[n - k];
                for (int k = 1; k <= n_b && k <= n; ++k) y[n] -= b[k] * y[n - k];
                y[n] /= b[0];
                EXPECT_NEAR(w.value(x[n]), y[n], 1e-14);
                EXPECT_NEAR(w.value(x[n] + 1) - w.value(x[n]), w.slope(), 1e-14);
                w.take(x[n]);
                EXPECT_NEAR(y_old[0], y[n], 1e-14);
            }
        }
}

TEST(sliding_mean, is_that_of_the_samples_there_are_until_it_is_full_and_then_of_the_last_ones) {
    sliding_mean m;
    m.resize(3);
    EXPECT_TRUE(m.empty());
    EXPECT_EQ(m.mean(), 0);
    const double q[] = {3, 5, 10, 0, -4, 1};
    const double mean[] = {3, 4, 6, 5, 2, -1};
    for (int i = 0; i < 6; ++i) {
        m.take(q[i]);
        EXPECT_DOUBLE_EQ(m.mean(), mean[i]);
    }
    m.resize(3);
    EXPECT_FALSE(m.empty());  // of the same size: it stays
    m.resize(4);
    EXPECT_TRUE(m.empty());
}

TEST(sliding_mean, keeps_no_rounding_of_samples_that_have_gone) {
    sliding_mean m;
    m.resize(2);
    for (const double q : {1e20, 1.0, 2.0}) m.take(q);
    EXPECT_EQ(m.mean(), 1.5);
}

TEST(mean_slots, are_as_many_as_their_limit) {
    mean_slots s;
    s.limit = 2;
    EXPECT_EQ(s.take(), 0);
    EXPECT_EQ(s.take(), 1);
    EXPECT_EQ(s.take(), -1);
}

TEST(delay_line, is_straight_between_points_and_0_before_the_start) {
    delay_line d;
    d.resize(10);
    d.clear(0);
    EXPECT_EQ(d.at(0), 0);
    for (const double t : {1.0, 2.0, 4.0}) ASSERT_TRUE(d.take(t, 10 * t, 10));
    EXPECT_EQ(d.at(-0.1), 0);
    EXPECT_EQ(d.at(0), 10);  // from the start to the first point, its value
    EXPECT_EQ(d.at(0.5), 10);
    EXPECT_EQ(d.at(1), 10);
    EXPECT_DOUBLE_EQ(d.at(1.25), 12.5);
    EXPECT_EQ(d.at(2), 20);
    EXPECT_DOUBLE_EQ(d.at(3.5), 35);
    EXPECT_EQ(d.at(4), 40);
    EXPECT_EQ(d.at(9), 40);
}

// Against all points of a long signal, with the few that fit into the ring.
TEST(delay_line, gives_in_a_small_ring_what_all_points_would_give) {
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> step(0.01, 0.2);
    const double td = 1;
    std::vector<double> t = {0.0}, x = {0.3};
    delay_line d;
    d.resize(102);
    d.clear(0);
    ASSERT_TRUE(d.take(t[0], x[0], td));
    for (int n = 1; n < 5000; ++n) {
        t.push_back(t.back() + step(rng));
        x.push_back(std::sin(t.back()));
        ASSERT_TRUE(d.take(t.back(), x.back(), td));
        for (const double ahead : {0.0, 0.05, 0.1, 0.5}) {
            const double then = t.back() + ahead - td;
            const auto after = static_cast<std::size_t>(std::lower_bound(t.begin(), t.end(), then) - t.begin());
            if (then < 0)
                EXPECT_EQ(d.at(then), 0);
            else if (after == 0)
                EXPECT_EQ(d.at(then), x[0]);
            else
                EXPECT_NEAR(d.at(then),
                            std::lerp(x[after - 1], x[after], (then - t[after - 1]) / (t[after] - t[after - 1])),
                            1e-14);
        }
    }
}

TEST(delay_line, forgets_points_behind_a_later_one_and_keeps_the_first_at_a_time) {
    delay_line d;
    d.resize(10);
    d.clear(0);
    for (const double t : {1.0, 2.0, 3.0}) ASSERT_TRUE(d.take(t, t, 10));
    ASSERT_TRUE(d.take(2.5, 7, 10));
    ASSERT_TRUE(d.take(2.5, 99, 10));
    EXPECT_EQ(d.at(2.5), 7);
    EXPECT_EQ(d.at(3), 7);
    EXPECT_EQ(d.at(2.25), 4.5);
}

TEST(delay_line, tells_when_its_ring_is_full) {
    delay_line d;
    d.resize(2);
    d.clear(0);
    EXPECT_TRUE(d.take(0, 0, 1));
    EXPECT_TRUE(d.take(0.5, 0, 1));
    EXPECT_FALSE(d.take(0.9, 0, 1));
    EXPECT_TRUE(d.take(1.6, 0, 1));
}

}  // namespace
