// Clocks and lists of edges against their times.
#include <gtest/gtest.h>

#include "digital_one.h"
#include "halt_throws.h"
#include "models/digital_clocks.h"

namespace {

// The level that a start-up or a first guess at time t puts out, and when the next edge comes.
levels_at begin(digital_one& u, double t, bool guess = false) {
    u.flags.time_given = t;
    guess ? u.guess() : u.startup();
    EXPECT_EQ(u.x.stbl, 0);
    return {u.x.t_next, u.outputs()};
}

TEST(digital_clock, has_two_phases_from_its_origin_on) {
    for (const bool guess : {false, true})
        for (const int pol : {0, 1}) {
            digital_one u("clock");
            u.i("pol") = pol;
            u.r("t1") = 2e-6;
            u.r("t2") = 6e-6;
            u.r("t0") = 1e-6;
            u.prepare();
            const std::string first = pol ? "1" : "0", second = pol ? "0" : "1";
            struct start {
                double t;
                bool in_first;
                double next;
            };
            for (const start& s : {start{1e-6, true, 3e-6}, start{2e-6, true, 3e-6}, start{3.5e-6, false, 9e-6},
                                   start{8.5e-6, false, 9e-6}, start{9.5e-6, true, 11e-6}}) {
                const levels_at now = begin(u, s.t, guess);
                EXPECT_EQ(now.levels, s.in_first ? first : second) << s.t;
                EXPECT_NEAR(now.t, s.next, 1e-18) << s.t;
                EXPECT_EQ(u.x.lparm[0], s.in_first ? 1 : 0);
            }
            EXPECT_EQ(u.r("per"), 8e-6);
            // edges at the end of each phase, in turns
            begin(u, 1e-6, guess);
            const std::vector<levels_at> edges = run_in_time(u, {}, 20e-6);
            ASSERT_EQ(edges.size(), 5U);
            for (std::size_t k = 0; k < 5; ++k) {
                EXPECT_NEAR(edges[k].t, (k % 2 ? 9e-6 : 3e-6) + static_cast<double>(k / 2) * 8e-6, 1e-18);
                EXPECT_EQ(edges[k].levels, k % 2 ? first : second);
            }
            EXPECT_EQ(u.x.stbl, 0);
        }
}

TEST(digital_clock, exactly_at_the_end_of_its_first_phase_stays_there_for_an_instant) {
    digital_one u("clock");
    u.r("t1") = 0.5;
    u.r("t2") = 0.25;
    EXPECT_EQ(begin(u, 0.5), (levels_at{0.5, "1"}));
    EXPECT_EQ(u.x.lparm[0], 1);
}

TEST(digital_clock, before_its_origin_has_a_first_phase_that_lasts_until_that_of_the_origin_ends) {
    digital_one u("clock");
    u.r("t1") = 0.5;
    u.r("t2") = 0.25;
    u.r("t0") = 1;
    EXPECT_EQ(begin(u, 0.5), (levels_at{1.5, "1"}));
    EXPECT_EQ(begin(u, 0.0), (levels_at{0.75, "1"}));  // a whole period further back
}

TEST(digital_clock, refuses_what_it_cannot_do) {
    digital_one u("clock");
    EXPECT_HALT(u.dc(), "clock.dbe: dc not allowed.\n  Halting...\n");
    EXPECT_HALT(u.schedule(0), "clock.dbe: cannot be scheduled! Halting...\n");
    for (const char* word : {"t1", "t2"})
        for (const double wrong : {0.0, -1.0, std::nan("")}) {
            digital_one w("clock");
            w.r(word) = wrong;
            EXPECT_HALT(w.prepare(), "clock.dbe: check t1, t2. Halting...\n");
        }
}

TEST(digital_clock1, has_a_frequency_and_a_duty) {
    for (const int pol : {0, 1}) {
        digital_one u("clock1");
        u.i("pol") = pol;
        u.r("f_hz") = 4;
        u.r("duty") = 0.25;
        u.r("t0") = 1;
        u.prepare();
        const std::string first = pol ? "1" : "0", second = pol ? "0" : "1";
        EXPECT_EQ(begin(u, 1), (levels_at{1.0625, first}));
        EXPECT_EQ(begin(u, 1.125, true), (levels_at{1.25, second}));
        EXPECT_EQ(run_in_time(u, {}, 1.6),
                  (std::vector<levels_at>{{1.25, first}, {1.3125, second}, {1.5, first}, {1.5625, second}}));
        EXPECT_EQ(u.r("per"), 0.25);
    }
}

TEST(digital_clock1, refuses_what_it_cannot_do) {
    digital_one u("clock1");
    EXPECT_HALT(u.dc(), "clock1.dbe: dc not allowed.\n  Halting...\n");
    EXPECT_HALT(u.schedule(0), "clock1.dbe: cannot be scheduled! Halting...\n");
    for (const double wrong : {0.0, 1.0, -0.1, std::nan("")}) {
        digital_one w("clock1");
        w.r("duty") = wrong;
        EXPECT_HALT(w.prepare(), "clock1.dbe: check f_hz, duty. Halting...\n");
    }
    u.r("f_hz") = 0;
    EXPECT_HALT(u.prepare(), "clock1.dbe: check f_hz, duty. Halting...\n");
}

// ---- random phases

// splitmix64 as published gives these numbers one after the other from the state 1234567.
TEST(random_share, is_the_published_generator_at_a_place_of_its_sequence) {
    // first outputs for the seed 1234567: 6457827717110365317, 3203168211198807973
    EXPECT_EQ(random_share(0, 1234567), static_cast<double>(6457827717110365317u >> 11) * 0x1p-53);
}

TEST(random_share, is_even_between_0_and_1) {
    constexpr int n = 100000;
    double sum = 0, squares = 0, lowest = 1, highest = 0;
    for (unsigned k = 0; k < n; ++k) {
        const double s = random_share(7, k);
        sum += s;
        squares += s * s;
        lowest = std::min(lowest, s);
        highest = std::max(highest, s);
    }
    EXPECT_NEAR(sum / n, 0.5, 0.004);  // four standard deviations of 1/sqrt(12 n)
    EXPECT_NEAR(squares / n, 1.0 / 3, 0.004);
    EXPECT_GE(lowest, 0);
    EXPECT_LT(highest, 1);
    EXPECT_LT(lowest, 1e-3);
    EXPECT_GT(highest, 0.999);
}

std::vector<levels_at> random_edges(int seed, int unit) {
    digital_one u("clock_random");
    u.i_unit = unit;
    u.i("seed") = seed;
    u.r("t1") = 2e-6;
    u.r("t2") = 1e-6;
    u.prepare();
    begin(u, 5e-6);
    begin(u, 5e-6);  // a further pass of a start-up changes nothing
    return run_in_time(u, {}, 105e-6);
}

TEST(digital_clock_random, has_phases_of_a_random_share_of_their_time) {
    for (const int unit : {0, 3}) {
        const std::vector<levels_at> edges = random_edges(7, unit);
        ASSERT_GT(edges.size(), 50U);
        double t = 5e-6;
        for (std::size_t k = 0; k < edges.size(); ++k) {
            EXPECT_EQ(edges[k].levels, k % 2 ? "1" : "0");
            const double share = random_share(7, static_cast<unsigned>(k));
            EXPECT_NEAR(edges[k].t - t, share * (k % 2 ? 1e-6 : 2e-6), 1e-15);
            t = edges[k].t;
        }
    }
}

TEST(digital_clock_random, is_the_same_for_one_seed_and_of_its_own_without_one) {
    EXPECT_EQ(random_edges(7, 0), random_edges(7, 1));
    EXPECT_NE(random_edges(7, 0), random_edges(8, 0));
    EXPECT_EQ(random_edges(0, 1), random_edges(0, 1));
    EXPECT_NE(random_edges(0, 0), random_edges(0, 1));
}

TEST(digital_clock_random, refuses_what_it_cannot_do) {
    digital_one u("clock_random");
    EXPECT_HALT(u.dc(), "clock_random.dbe: dc not allowed.\n  Halting...\n");
    EXPECT_HALT(u.schedule(0), "clock_random: cannot be scheduled! Halting...\n");
    u.r("t2") = 0;
    EXPECT_HALT(u.prepare(), "clock_random.dbe: check t1, t2. Halting...\n");
}

// ---- lists of edges

digital_one source(int y0, std::initializer_list<double> t) {
    digital_one u("dsrc");
    u.i("y0") = y0;
    u.i("n_edges") = static_cast<int>(t.size());
    std::copy(t.begin(), t.end(), u.x.rparm.begin());
    u.prepare();
    return u;
}

TEST(dsrc, turns_over_at_each_of_its_times_and_rests_behind_the_last) {
    for (const int y0 : {0, 1}) {
        digital_one u = source(y0, {1e-6, 3e-6, 3.5e-6});
        const std::string a = y0 ? "1" : "0", b = y0 ? "0" : "1";
        EXPECT_EQ(begin(u, 0), (levels_at{1e-6, a}));
        EXPECT_EQ(u.x.dstate, 0);
        EXPECT_EQ(run_in_time(u, {}, 2e-6), (std::vector<levels_at>{{1e-6, b}}));
        EXPECT_EQ(u.x.dstate, 1);
        EXPECT_EQ(run_in_time(u, {}, 1), (std::vector<levels_at>{{3e-6, a}, {3.5e-6, b}}));
        EXPECT_EQ(u.x.dstate, 3);
        EXPECT_EQ(u.x.stbl, 1);
    }
}

TEST(dsrc, begins_where_the_run_does_with_an_edge_of_that_time_still_to_come) {
    for (const bool guess : {false, true}) {
        digital_one u = source(0, {1e-6, 3e-6, 4e-6});
        EXPECT_EQ(begin(u, 1e-6, guess), (levels_at{1e-6, "0"}));
        EXPECT_EQ(begin(u, 2e-6, guess), (levels_at{3e-6, "1"}));
        EXPECT_EQ(u.x.dstate, 1);
        u.flags.time_given = 5e-6;
        guess ? u.guess() : u.startup();
        EXPECT_EQ(u.outputs(), "1");
        EXPECT_EQ(u.x.stbl, 1);
        EXPECT_EQ(u.x.dstate, 3);
    }
}

TEST(dsrc, without_edges_is_a_constant) {
    for (const int y0 : {0, 1}) {
        digital_one u = source(y0, {});
        u.guess();
        EXPECT_EQ(u.outputs(), y0 ? "1" : "0");
        EXPECT_EQ(u.x.stbl, 1);
    }
}

TEST(dsrc, takes_as_many_edges_as_it_has_room_for_and_only_in_their_order) {
    digital_one u("dsrc");
    u.i("n_edges") = 20;
    for (int k = 0; k < 20; ++k) u.x.rparm[static_cast<std::size_t>(k)] = 1 + k;
    u.prepare();
    begin(u, 0);
    EXPECT_EQ(run_in_time(u, {}, 100).size(), 20U);
    u.r("t20") = 18.9;
    EXPECT_HALT(u.prepare(), "dsrc.dbe: times must ascend. Halting...\n");
    u.i("n_edges") = 19;
    u.prepare();
    for (const int wrong : {-1, 21}) {
        u.i("n_edges") = wrong;
        EXPECT_HALT(u.prepare(), "dsrc.dbe: check n_edges. Halting...\n");
    }
    EXPECT_HALT(u.dc(), "dsrc.dbe: dc not allowed.\n  Halting...\n");
    EXPECT_HALT(u.schedule(0), "dsrc: cannot be scheduled! Halting...\n");
}

TEST(dsrc1, does_nothing_at_all) {
    for (const auto mode : {&flags_class::dc, &flags_class::startup, &flags_class::init_guess,
                            &flags_class::one_time_parms, &flags_class::process, &flags_class::schedule}) {
        digital_one u("dsrc1");
        const digital_numbers before = u.x;
        u.call(mode);
        EXPECT_EQ(u.x, before);
        EXPECT_EQ(u.outputs(), "x");
    }
}

}  // namespace
