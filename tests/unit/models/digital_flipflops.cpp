// Flip-flops against tables written by hand.
#include <gtest/gtest.h>

#include <map>

#include "digital_one.h"
#include "halt_throws.h"

namespace {

using found = std::vector<levels_at>;

// What a row of a table says of q: a level, or that it stays or turns over.
enum class next { q0, q1, same, other };
bool state_after(next n, bool q) { return n == next::q1 || (n == next::same && q) || (n == next::other && !q); }

// Texts of one element.
struct flip_flop {
    const char* name;
    std::vector<std::string> words;  // inputs, in order
    char clk_before, clk_now;        // at the edge that counts; of one without a clock any
    const char* no_dc;
    const char* both;
    const char* wrong_state;
};
const flip_flop all[] = {
    {"dff",
     {"d", "clk", "s", "r"},
     '0',
     '1',
     "dff: dc not allowed. Halting...\n",
     "dff: cannot have set and reset = 1. Halting...\n",
     "dff: wrong condition 1. Halting...\n"},
    {"dff1",
     {"d", "clk", "s", "r"},
     '1',
     '0',
     "dff1: dc not allowed. Halting...\n",
     "dff1: cannot have set and reset = 1. Halting...\n",
     "dff1: wrong condition 1. Halting...\n"},
    {"jkff",
     {"j", "k", "clk", "s", "r"},
     '0',
     '1',
     "jkff: dc not allowed. Halting...\n",
     "jkff: cannot have set and reset=1. Halting...\n",
     "jkff: wrong condition 1. Halting...\n"},
    {"jkff1",
     {"j", "k", "clk", "s", "r"},
     '1',
     '0',
     "jkff1: dc not allowed. Halting...\n",
     "jkff1: cannot have set and reset=1. Halting...\n",
     "jkff1: wrong condition 1. Halting...\n"},
    {"rsff1",
     {"s", "r"},
     '0',
     '1',
     "rsff1: dc not allowed. Halting...\n",
     "rsff1: cannot have set and reset = 1. Halting...\n",
     "rsff1: wrong condition 1. Halting...\n"},
    {"rsff2",
     {"s", "r", "clk"},
     '0',
     '1',
     "rsff2.dbe: dc not allowed.\n  Halting...\n",
     "rsff2.dbe: r = s = 1 is not allowed\n",
     "rsff2.dbe: wrong condition 1\n"},
};

class every_flip_flop : public ::testing::TestWithParam<flip_flop> {
protected:
    bool has(const std::string& word) const {
        const auto& w = GetParam().words;
        return std::find(w.begin(), w.end(), word) != w.end();
    }
    // One at rest with this q.
    digital_one at_rest(bool q) const {
        digital_one u(GetParam().name);
        u.r("td_fall") = 3e-9;
        u.r("td_rise") = 5e-9;
        u.prepare();
        u.st("q0") = q;
        u.settled_inputs(levels({}));
        u.startup();
        return u;
    }
    // All inputs: those given, the others 0; the clock, if not given, as before its edge.
    std::string levels(std::map<std::string, char> given) const {
        if (has("clk") && !given.contains("clk")) given["clk"] = GetParam().clk_before;
        std::string text;
        for (const std::string& w : GetParam().words) text += given.contains(w) ? given[w] : '0';
        return text;
    }
    std::string after_edge(std::map<std::string, char> given) const {
        given["clk"] = GetParam().clk_now;
        return levels(given);
    }
    // What is planned when the inputs go from one to the other with q at rest, and what comes of it.
    void expect_change(bool q, const std::string& before, const std::string& now, bool q_now) const {
        digital_one u = at_rest(q);
        u.settled_inputs(before);
        u.inputs(now);
        u.schedule(1e-6);
        const std::string text = line(GetParam().name, ": ", before, " to ", now, " with q ", q ? 1 : 0);
        EXPECT_EQ(u.outputs(), q ? "10" : "01") << text;
        EXPECT_EQ(u.x.stbl, q == q_now ? 1 : 0) << text;
        EXPECT_EQ(u.x.dstate, q == q_now ? 0 : q_now ? 1 : 2) << text;
        if (q == q_now) return;
        EXPECT_EQ(u.x.t_next, 1e-6 + (q_now ? 5e-9 : 3e-9)) << text;
        u.process(u.x.t_next);
        EXPECT_EQ(u.outputs(), q_now ? "10" : "01") << text;
        EXPECT_EQ(u.x.stbl, 1);
        EXPECT_EQ(u.x.dstate, 0);
    }
    // Inputs that bring q to the level.
    std::string bringing(bool q) const {
        if (has("d")) return after_edge({{"d", q ? '1' : '0'}});
        if (has("j")) return after_edge({{"j", q ? '1' : '0'}, {"k", q ? '0' : '1'}});
        return after_edge({{"s", q ? '1' : '0'}, {"r", q ? '0' : '1'}});
    }
};
INSTANTIATE_TEST_SUITE_P(, every_flip_flop, ::testing::ValuesIn(all),
                         [](const auto& f) { return std::string(f.param.name); });

TEST_P(every_flip_flop, takes_its_inputs_at_the_edge_by_its_table) {
    struct row {
        char a, b;
        next q;
    };
    const row d_rows[] = {{'0', '0', next::q0}, {'1', '0', next::q1}, {'x', '0', next::q0}};
    const row jk_rows[] = {{'0', '0', next::same},  {'0', '1', next::q0},   {'1', '0', next::q1},
                           {'1', '1', next::other}, {'x', '0', next::same}, {'x', '1', next::q0},
                           {'0', 'x', next::same},  {'1', 'x', next::q1},   {'x', 'x', next::same}};
    const row rs_rows[] = {{'0', '0', next::same}, {'0', '1', next::q0},  {'1', '0', next::q1},
                           {'x', '0', next::same}, {'x', '1', next::q0},  {'0', 'x', next::same},
                           {'1', 'x', next::q1},   {'x', 'x', next::same}};
    const auto expect = [&](const auto& rows, const char* a, const char* b) {
        for (const row& w : rows)
            for (const bool q : {false, true}) {
                std::map<std::string, char> given{{a, w.a}};
                if (b) given[b] = w.b;
                expect_change(q, levels(given), after_edge(given), state_after(w.q, q));
            }
    };
    if (has("d"))
        expect(d_rows, "d", nullptr);
    else if (has("j"))
        expect(jk_rows, "j", "k");
    else
        expect(rs_rows, "s", "r");
}

TEST_P(every_flip_flop, sees_an_edge_only_from_not_there_to_known) {
    if (!has("clk")) return;
    const bool falling = GetParam().clk_now == '0';
    for (const char before : {'0', '1', 'x'})
        for (const char now : {'0', '1', 'x'}) {
            const bool edge = falling ? before == '1' && now == '0' : before != '1' && now == '1';
            for (const bool q : {false, true}) {
                std::map<std::string, char> given;
                const std::string set = bringing(!q);  // what it would take at an edge
                for (std::size_t k = 0; k < set.size(); ++k) given[GetParam().words[k]] = set[k];
                given["clk"] = before;
                const std::string was = levels(given);
                given["clk"] = now;
                expect_change(q, was, levels(given), edge ? !q : q);
            }
        }
}

TEST_P(every_flip_flop, is_set_and_cleared_without_a_clock_where_it_can_be) {
    if (GetParam().words.size() < 4) return;
    for (const char clk : {'0', '1', 'x'})
        for (const bool q : {false, true}) {
            const auto with = [&](char s, char r) { return levels({{"clk", clk}, {"s", s}, {"r", r}}); };
            expect_change(q, with('0', '0'), with('1', '0'), true);
            expect_change(q, with('0', '0'), with('0', '1'), false);
            expect_change(q, with('0', '0'), with('x', '0'), q);
            expect_change(q, with('0', '0'), with('0', 'x'), q);
            expect_change(q, with('0', '0'), with('1', 'x'), true);
            expect_change(q, with('0', '0'), with('x', '1'), false);
        }
    // they win over an edge
    for (const bool q : {false, true})
        for (const bool forced : {false, true}) {
            std::string now = bringing(!forced), before = levels({});
            now[now.size() - (forced ? 2 : 1)] = '1';
            expect_change(q, before, now, forced);
        }
}

TEST_P(every_flip_flop, stops_at_set_and_reset_together) {
    const bool at_edge = std::string(GetParam().name) == "rsff2";
    digital_one u = at_rest(false);
    u.settled_inputs(levels({{"s", '1'}, {"r", '1'}}));
    if (at_edge) {
        u.schedule(1e-6);  // no edge
        EXPECT_EQ(u.x.stbl, 1);
        u.inputs(after_edge({{"s", '1'}, {"r", '1'}}));
    }
    EXPECT_HALT(u.schedule(1e-6), GetParam().both);
    if (at_edge) return;
    digital_one w = at_rest(false);
    w.inputs(bringing(true));
    w.schedule(1e-6);
    w.settled_inputs(levels({{"s", '1'}, {"r", '1'}}));
    EXPECT_HALT(w.process(w.x.t_next), GetParam().both);
}

TEST_P(every_flip_flop, delivers_what_was_planned_but_for_set_and_reset_of_the_moment) {
    const bool forced = has("s") && std::string(GetParam().name) != "rsff2";
    for (const bool plan : {false, true}) {
        digital_one u = at_rest(!plan);
        u.inputs(bringing(plan));
        u.schedule(1e-6);
        digital_one v = u, w = u;
        u.settled_inputs(levels({}));
        u.process(u.x.t_next);
        EXPECT_EQ(u.outputs(), plan ? "10" : "01");
        v.settled_inputs(levels({{"s", '1'}}));
        v.process(v.x.t_next);
        EXPECT_EQ(v.outputs(), plan || forced ? "10" : "01");
        w.settled_inputs(levels({{"r", '1'}}));
        w.process(w.x.t_next);
        EXPECT_EQ(w.outputs(), plan && !forced ? "10" : "01");
    }
}

TEST_P(every_flip_flop, with_a_change_on_its_way_sees_no_edge) {
    if (!has("clk")) return;
    digital_one u = at_rest(false);
    // An edge that sets, and one that clears 4 ns behind it: the rise takes 5 ns.
    std::string back = bringing(false);
    back[static_cast<std::size_t>(std::find(GetParam().words.begin(), GetParam().words.end(), "clk") -
                                  GetParam().words.begin())] = GetParam().clk_before;
    EXPECT_EQ(run_in_time(u, {{10e-9, bringing(true)}, {12e-9, back}, {14e-9, bringing(false)}}, 1e-6),
              (found{{10e-9 + 5e-9, "10"}}));
}

TEST_P(every_flip_flop, without_delay_changes_at_the_edge) {
    digital_one u = at_rest(false);
    u.r("td_fall") = u.r("td_rise") = 0;
    std::string idle = levels({});
    EXPECT_EQ(run_in_time(u, {{10e-9, bringing(true)}, {20e-9, idle}, {30e-9, bringing(false)}}, 1e-6),
              (found{{10e-9, "10"}, {30e-9, "01"}}));
}

TEST_P(every_flip_flop, begins_at_rest_or_with_a_change_on_its_way) {
    for (const int q0 : {0, 1, 2}) {
        digital_one u(GetParam().name);
        u.st("q0") = q0;
        u.startup();
        EXPECT_EQ(u.outputs(), q0 == 1 ? "10" : "01");
        EXPECT_EQ(u.x.stbl, 1);
        EXPECT_EQ(u.x.dstate, 0);
    }
    for (const bool rises : {false, true}) {
        digital_one u = at_rest(false);
        u.flags.time_given = 2e-6;
        u.st("st") = rises ? 1 : 2;
        u.startup();
        EXPECT_EQ(u.outputs(), rises ? "01" : "10");
        EXPECT_EQ(u.x.stbl, 0);
        EXPECT_EQ(u.x.dstate, rises ? 1 : 2);
        EXPECT_EQ(u.x.t_next, 2e-6 + (rises ? 5e-9 : 3e-9));
        u.process(u.x.t_next);
        EXPECT_EQ(u.outputs(), rises ? "10" : "01");
    }
    for (const int wrong : {-1, 3}) {
        digital_one u(GetParam().name);
        u.st("st") = wrong;
        EXPECT_HALT(u.startup(), GetParam().wrong_state);
    }
}

TEST_P(every_flip_flop, begins_a_run_from_nothing_with_q0_and_looks_at_set_and_reset_at_once) {
    for (const int q0 : {0, 1})
        for (const char force : {'0', 's', 'r'}) {
            if (force != '0' && GetParam().words.size() == 3) continue;  // acts at an edge alone
            digital_one u(GetParam().name);
            u.prepare();
            u.st("q0") = q0;
            u.flags.time_given = 2e-6;
            u.guess();
            EXPECT_EQ(u.outputs(), q0 == 1 ? "10" : "01");
            EXPECT_EQ(u.x.stbl, 0);
            EXPECT_EQ(u.x.t_next, 2e-6);
            u.settled_inputs(levels({{std::string(1, force), '1'}}));
            u.process(u.x.t_next);
            EXPECT_EQ(u.outputs(), force == 's' || (force == '0' && q0 == 1) ? "10" : "01");
            EXPECT_EQ(u.x.stbl, 1);
        }
}

TEST_P(every_flip_flop, stops_at_dc_a_wrong_state_and_delays_below_0) {
    digital_one u(GetParam().name);
    EXPECT_HALT(u.dc(), GetParam().no_dc);
    u.settled_inputs(levels({}));
    for (const int wrong : {-1, 0, 3}) {
        u.x.dstate = wrong;
        EXPECT_HALT(u.process(0), GetParam().wrong_state);
    }
    u.r("td_fall") = -1e-9;
    EXPECT_HALT(u.prepare(), std::string(GetParam().name) + ".dbe: check td_fall, td_rise. Halting...\n");
}

TEST(jkff1, traces_its_state_when_asked) {
    digital_one u("jkff1");
    u.settled_inputs("10100");
    u.startup();
    u.inputs("10000");
    u.schedule(0);
    u.flags.flag_debug_int = 1;
    const console_run told = run_and_listen([&] { u.process(1e-9); });
    EXPECT_FALSE(told.stopped);
    EXPECT_EQ(told.text, "jkff1: val_out=1\n");
}

TEST(dff, divides_by_two_with_its_complement_as_data) {
    digital_one u("dff");
    u.prepare();
    u.settled_inputs("1000");
    u.startup();
    std::string q;
    for (int k = 1; k <= 6; ++k) {
        const std::string d(1, u.outputs()[1]);
        run_in_time(u, {{k * 1e-6, d + "100"}, {k * 1e-6 + 5e-7, d + "000"}}, (k + 1) * 1e-6);
        q += u.outputs()[0];
    }
    EXPECT_EQ(q, "101010");
}

}  // namespace
