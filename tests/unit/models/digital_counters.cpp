// Counters against numbers counted by hand.
#include <gtest/gtest.h>

#include "digital_one.h"
#include "halt_throws.h"

namespace {

using found = std::vector<levels_at>;

struct counter_row {
    const char* name;
    int n_bits;
    const char* start;  // its word for the first number
};
const counter_row all[] = {{"counter_2", 2, "n0"},
                           {"counter_4", 4, "n0"},
                           {"counter_8", 8, "n0"},
                           {"counter_4_gnrl", 4, "q_sv"},
                           {"counter_8_gnrl", 8, "q_sv"}};

std::string bits(int x, int n) {
    std::string s;
    for (int k = 0; k < n; ++k, x /= 2) s += x % 2 ? '1' : '0';
    return s;
}

// Inputs are clk, r, up.
class every_counter : public ::testing::TestWithParam<counter_row> {
protected:
    int n_bits() const { return GetParam().n_bits; }
    bool bounded() const { return std::string(GetParam().start) == "q_sv"; }
    int top() const { return n_bits() == 2 ? 3 : n_bits() == 4 ? 15 : 255; }
    digital_one at_rest(int start) const {
        digital_one u(GetParam().name);
        u.r("td_fall") = 3e-9;
        u.r("td_rise") = 5e-9;
        u.prepare();
        u.st(GetParam().start) = start;
        u.settled_inputs("000");
        u.startup();
        return u;
    }
    void expect_step(int from, const std::string& before, const std::string& now, int to) const {
        digital_one u = at_rest(from);
        u.settled_inputs(before);
        u.inputs(now);
        u.schedule(1e-6);
        const std::string text = line(GetParam().name, " at ", from, ": ", before, " to ", now);
        EXPECT_EQ(u.outputs(), bits(from, n_bits())) << text;
        EXPECT_EQ(u.x.stbl, from == to ? 1 : 0) << text;
        if (from == to) return;
        const bool falls = (from & ~to) != 0, rises = (to & ~from) != 0;
        EXPECT_EQ(u.x.t_next, 1e-6 + (rises ? 5e-9 : falls ? 3e-9 : 0)) << text;  // the rise takes longer here
        EXPECT_EQ(u.x.dstate, 1);
        u.process(u.x.t_next);
        EXPECT_EQ(u.outputs(), bits(to, n_bits())) << text;
        EXPECT_EQ(u.x.stbl, 1);
        EXPECT_EQ(u.x.dstate, 0);
    }
};
INSTANTIATE_TEST_SUITE_P(, every_counter, ::testing::ValuesIn(all),
                         [](const auto& c) { return std::string(c.param.name); });

TEST_P(every_counter, goes_up_and_down_by_one_at_an_edge_and_around_at_the_ends) {
    for (int x = 0; x <= top(); ++x) {
        expect_step(x, "001", "101", x == top() ? 0 : x + 1);
        expect_step(x, "000", "100", x == 0 ? top() : x - 1);
        expect_step(x, "00x", "10x", x == 0 ? top() : x - 1);
    }
}

TEST_P(every_counter, sees_an_edge_only_from_not_1_to_1) {
    for (const char before : {'0', '1', 'x'})
        for (const char now : {'0', '1', 'x'})
            expect_step(2, {before, '0', '1'}, {now, '0', '1'}, before != '1' && now == '1' ? 3 : 2);
}

TEST_P(every_counter, is_set_back_whatever_the_clock) {
    for (const char clk : {'0', '1', 'x'}) {
        expect_step(2, {clk, '0', '1'}, {clk, '1', '1'}, 0);
        expect_step(0, {clk, '0', '1'}, {clk, '1', '1'}, 0);
        expect_step(2, {clk, '0', '1'}, {clk, 'x', '1'}, 2);
    }
    expect_step(2, "001", "111", 0);  // also at an edge
    expect_step(2, "001", "1x1", 3);
}

TEST_P(every_counter, is_set_back_where_the_reset_has_come_while_a_step_was_on_its_way) {
    digital_one u = at_rest(2);
    EXPECT_EQ(run_in_time(u, {{10e-9, "101"}, {12e-9, "111"}}, 1e-6), (found{{10e-9 + 5e-9, bits(0, n_bits())}}));
    digital_one w = at_rest(2);  // and not where it has gone again
    EXPECT_EQ(run_in_time(w, {{10e-9, "101"}, {12e-9, "111"}, {13e-9, "001"}}, 1e-6),
              (found{{10e-9 + 5e-9, bits(3, n_bits())}}));
}

TEST_P(every_counter, with_a_step_on_its_way_sees_no_edge) {
    digital_one u = at_rest(1);
    EXPECT_EQ(run_in_time(u, {{10e-9, "101"}, {11e-9, "001"}, {12e-9, "101"}, {20e-9, "001"}, {30e-9, "101"}}, 1e-6),
              (found{{10e-9 + 5e-9, bits(2, n_bits())}, {30e-9 + 5e-9, bits(3, n_bits())}}));
}

TEST_P(every_counter, takes_the_longer_delay_of_its_bits) {
    digital_one u = at_rest(0);
    u.r("td_fall") = 8e-9;
    EXPECT_EQ(run_in_time(u, {{10e-9, "101"}, {40e-9, "001"}, {50e-9, "101"}, {80e-9, "011"}}, 1e-6),
              (found{{10e-9 + 5e-9, bits(1, n_bits())},     // 0 to 1: a rise
                     {50e-9 + 8e-9, bits(2, n_bits())},     // 1 to 2: both
                     {80e-9 + 8e-9, bits(0, n_bits())}}));  // 2 to 0: a fall
}

TEST_P(every_counter, without_delay_counts_at_the_edge) {
    digital_one u = at_rest(top() - 1);
    u.r("td_fall") = u.r("td_rise") = 0;
    EXPECT_EQ(run_in_time(u, {{1e-9, "101"}, {2e-9, "001"}, {3e-9, "101"}, {4e-9, "000"}, {5e-9, "100"}}, 1e-6),
              (found{{1e-9, bits(top(), n_bits())}, {3e-9, bits(0, n_bits())}, {5e-9, bits(top(), n_bits())}}));
}

TEST_P(every_counter, begins_with_its_first_number_and_from_nothing_looks_at_the_reset_at_once) {
    for (const int start : {0, 1, top()}) {
        digital_one u = at_rest(start);
        EXPECT_EQ(u.outputs(), bits(start, n_bits()));
        EXPECT_EQ(u.x.stbl, 1);
        EXPECT_EQ(u.x.dstate, 0);
        for (const char r : {'0', '1', 'x'}) {
            u.flags.time_given = 2e-6;
            u.guess();
            EXPECT_EQ(u.outputs(), bits(start, n_bits()));
            EXPECT_EQ(u.x.stbl, 0);
            EXPECT_EQ(u.x.t_next, 2e-6);
            u.settled_inputs({'0', r, '1'});
            u.process(2e-6);
            EXPECT_EQ(u.outputs(), bits(r == '1' ? 0 : start, n_bits()));
            EXPECT_EQ(u.x.stbl, 1);
        }
    }
}

TEST_P(every_counter, stops_at_dc_at_delays_below_0_and_at_a_first_number_out_of_range) {
    const std::string name = GetParam().name;
    digital_one u(name);
    EXPECT_HALT(u.dc(), name + ": dc not allowed\n");
    u.r("td_rise") = -1e-9;
    EXPECT_HALT(u.prepare(), name + ".dbe: check td_fall, td_rise. Halting...\n");
    for (const bool guess : {false, true})
        for (const int wrong : {-1, top() + 1}) {
            digital_one w(name);
            w.st(GetParam().start) = wrong;
            const std::string text = !bounded()  ? ": the first number does not fit into the bits. Halting...\n"
                                     : wrong < 0 ? ": q_sv must be gt state_begin. Halting...\n"
                                                 : ": q_sv must be lt state_end. Halting...\n";
            EXPECT_HALT(guess ? w.guess() : w.startup(), name + text);
        }
}

// ---- between bounds

class counter_between_bounds : public every_counter {};
INSTANTIATE_TEST_SUITE_P(, counter_between_bounds, ::testing::Values(all[3], all[4]),
                         [](const auto& c) { return std::string(c.param.name); });

TEST_P(counter_between_bounds, goes_around_from_one_to_the_other_both_ways) {
    digital_one u(GetParam().name);
    u.r("td_fall") = u.r("td_rise") = 0;
    u.i("state_begin") = 3;
    u.i("state_end") = 6;
    u.st("q_sv") = 5;
    u.prepare();
    u.settled_inputs("001");
    u.startup();
    std::vector<levels_at> feed, expected;
    int k = 0;
    const auto step = [&](char up, int number) {
        feed.push_back({++k * 1e-6, {'1', '0', up}});
        expected.push_back({k * 1e-6, bits(number, n_bits())});
        feed.push_back({(k + 0.5) * 1e-6, {'0', '0', up}});
    };
    for (const int up : {6, 3, 4, 5, 6, 3}) step('1', up);
    for (const int down : {6, 5, 4, 3, 6}) step('0', down);
    feed.push_back({++k * 1e-6, "011"});
    expected.push_back({k * 1e-6, bits(3, n_bits())});
    EXPECT_EQ(run_in_time(u, feed, 1), expected);
}

TEST_P(counter_between_bounds, refuses_bounds_and_first_numbers_that_do_not_fit) {
    const std::string name = GetParam().name;
    digital_one u(name);
    const auto prepare = [&](int begin, int end) {
        u.i("state_begin") = begin;
        u.i("state_end") = end;
        u.prepare();
    };
    EXPECT_HALT(prepare(-1, 3), name + ": state_begin must be gt 0. Halting...\n");
    EXPECT_HALT(prepare(4, 3), name + ": state_begin must be lt state_end. Halting...\n");
    EXPECT_HALT(prepare(3, 3), name + ": state_begin must be lt state_end. Halting...\n");
    EXPECT_HALT(prepare(3, top() + 1), name + (n_bits() == 4 ? ": state_end must be lt 15. Halting...\n"
                                                             : ": state_end must be lt 255. Halting...\n"));
    prepare(0, top());
    prepare(3, 7);
    u.st("q_sv") = 2;
    EXPECT_HALT(u.startup(), name + ": q_sv must be gt state_begin. Halting...\n");
    u.st("q_sv") = 8;
    EXPECT_HALT(u.startup(), name + ": q_sv must be lt state_end. Halting...\n");
    for (const int good : {3, 7}) {
        u.st("q_sv") = good;
        u.startup();
        EXPECT_EQ(u.outputs(), bits(good, n_bits()));
    }
}

}  // namespace
