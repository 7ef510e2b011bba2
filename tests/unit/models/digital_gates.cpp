// Gates against truth tables written by hand, and what becomes of pulses, delays and starts.
#include <gtest/gtest.h>

#include "digital_one.h"
#include "halt_throws.h"

namespace {

const char levels[] = {'0', '1', 'x'};

// Outputs for the inputs 00, 01, 10, 11; for one input 0, 1.
struct gate_row {
    const char* name;
    const char* truth;
};
const gate_row two_inputs[] = {
    {"and_2", "0001"}, {"or_2", "0111"}, {"nand_2", "1110"}, {"nor_2", "1000"}, {"xor", "0110"},
};

class gate_of_two : public ::testing::TestWithParam<gate_row> {
protected:
    char truth(char a, char b) const {
        if (a == 'x' || b == 'x') return 'x';  // also beside a level that would decide it
        return GetParam().truth[2 * (a - '0') + (b - '0')];
    }
    digital_one gate() const {
        digital_one u(GetParam().name);
        u.r("td_fall") = 3e-9;
        u.r("td_rise") = 5e-9;
        u.prepare();
        return u;
    }
    // Two inputs that give the output y.
    std::string inputs_for(char y) const {
        if (y == 'x') return "x1";
        for (const char a : {'0', '1'})
            for (const char b : {'0', '1'})
                if (truth(a, b) == y) return {a, b};
        return "";
    }
};
INSTANTIATE_TEST_SUITE_P(, gate_of_two, ::testing::ValuesIn(two_inputs),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(gate_of_two, has_its_truth_table_in_start_up) {
    for (const char a : levels)
        for (const char b : levels) {
            digital_one u = gate();
            u.settled_inputs({a, b});
            u.startup();
            EXPECT_EQ(u.outputs(), std::string(1, truth(a, b))) << a << b;
            EXPECT_EQ(u.x.stbl, 1);
            EXPECT_EQ(u.x.dstate, 0);
        }
}

TEST_P(gate_of_two, goes_from_each_level_to_each_after_the_delay_of_its_direction) {
    // By levels before and behind: what is pending, and for how many ns.
    struct change {
        char from, to;
        int state;
        double delay;
    };
    const change changes[] = {{'0', '1', 1, 5e-9}, {'x', '1', 2, 5e-9}, {'1', '0', 3, 3e-9},
                              {'x', '0', 4, 3e-9}, {'0', 'x', 5, 5e-9}, {'1', 'x', 6, 3e-9}};
    for (const char a : levels)
        for (const char b : levels)
            for (const change& c : changes) {
                if (truth(a, b) != c.to) continue;
                digital_one u = gate();
                u.settled_inputs(inputs_for('0'));  // so that what an unknown output held is 0
                u.startup();
                u.settled_inputs(inputs_for(c.from));
                u.startup();
                u.inputs({a, b});
                u.schedule(1e-6);
                EXPECT_EQ(u.outputs(), std::string(1, c.from)) << "not before its time";
                EXPECT_EQ(u.x.stbl, 0);
                EXPECT_EQ(u.x.dstate, c.state) << a << b << " from " << c.from;
                EXPECT_EQ(u.x.t_next, 1e-6 + c.delay);
                u.process(1e-6 + c.delay);
                EXPECT_EQ(u.outputs(), std::string(1, c.to));
                EXPECT_EQ(u.x.stbl, 1);
                EXPECT_EQ(u.x.dstate, 0);
            }
}

TEST_P(gate_of_two, stays_at_rest_where_its_output_does_not_change) {
    for (const char a : levels)
        for (const char b : levels)
            for (const char a2 : levels)
                for (const char b2 : levels) {
                    if (truth(a, b) != truth(a2, b2)) continue;
                    digital_one u = gate();
                    u.settled_inputs({a, b});
                    u.startup();
                    u.inputs({a2, b2});
                    u.schedule(1e-6);
                    EXPECT_EQ(u.x.stbl, 1);
                    EXPECT_EQ(u.x.dstate, 0);
                    EXPECT_EQ(u.outputs(), std::string(1, truth(a, b)));
                }
}

TEST_P(gate_of_two, takes_no_notice_of_a_pulse_shorter_than_its_delay) {
    const std::string low = inputs_for('0'), high = inputs_for('1'), unknown = "xx";
    digital_one u = gate();
    u.settled_inputs(low);
    u.startup();
    EXPECT_EQ(run_in_time(u, {{10e-9, high}, {14e-9, low}, {20e-9, unknown}, {24e-9, low}}, 1e-6),
              (std::vector<levels_at>{}));
    EXPECT_EQ(run_in_time(u, {{100e-9, high}, {106e-9, low}}, 1e-6),
              (std::vector<levels_at>{{100e-9 + 5e-9, "1"}, {106e-9 + 3e-9, "0"}}));
    u.settled_inputs(high);
    u.startup();
    EXPECT_EQ(run_in_time(u, {{10e-9, low}, {12e-9, high}}, 1e-6), (std::vector<levels_at>{}));
}

TEST_P(gate_of_two, delivers_what_its_inputs_give_when_the_delay_is_over) {
    digital_one u = gate();
    u.settled_inputs(inputs_for('0'));
    u.startup();
    // a rise is planned, and the inputs are unknown by then
    EXPECT_EQ(run_in_time(u, {{10e-9, inputs_for('1')}, {12e-9, "xx"}}, 1e-6),
              (std::vector<levels_at>{{10e-9 + 5e-9, "x"}}));
}

TEST_P(gate_of_two, without_delay_changes_at_the_time_of_its_inputs) {
    digital_one u(GetParam().name);
    u.r("td_fall") = u.r("td_rise") = 0;
    u.prepare();
    u.settled_inputs(inputs_for('0'));
    u.startup();
    EXPECT_EQ(run_in_time(u, {{10e-9, inputs_for('1')}, {20e-9, inputs_for('0')}, {30e-9, "x0"}}, 1e-6),
              (std::vector<levels_at>{{10e-9, "1"}, {20e-9, "0"}, {30e-9, "x"}}));
}

TEST_P(gate_of_two, with_unknown_inputs_keeps_the_value_that_it_had) {
    digital_one u = gate();
    u.settled_inputs(inputs_for('1'));
    u.startup();
    u.settled_inputs("xx");
    u.x.stbl_out[0] = 0;
    u.schedule(0);
    EXPECT_EQ(u.outputs(), "x");
    EXPECT_EQ(u.x.val_out[0], 1);
    EXPECT_EQ(u.x.stbl, 1);
}

TEST_P(gate_of_two, begins_with_a_change_under_way_where_that_is_asked_for) {
    digital_one u = gate();
    u.settled_inputs(inputs_for('1'));
    u.flags.time_given = 2e-6;
    u.st("st") = 1;
    u.startup();
    EXPECT_EQ(u.outputs(), "0");
    EXPECT_EQ(u.x.stbl, 0);
    EXPECT_EQ(u.x.dstate, 1);
    EXPECT_EQ(u.x.t_next, 2e-6 + 5e-9);
    u.st("st") = 3;
    u.startup();
    EXPECT_EQ(u.outputs(), "1");
    EXPECT_EQ(u.x.dstate, 3);
    EXPECT_EQ(u.x.t_next, 2e-6 + 3e-9);
    for (const int wrong : {-1, 2, 4, 5, 6, 7}) {
        u.st("st") = wrong;
        EXPECT_HALT(u.startup(), std::string(GetParam().name) + ": wrong condition in start-up\n");
    }
}

TEST_P(gate_of_two, begins_a_run_from_nothing_at_0_with_a_rise_under_way) {
    digital_one u = gate();
    u.st("st") = 3;  // of a start-up
    u.flags.time_given = 2e-6;
    u.guess();
    EXPECT_EQ(u.outputs(), "0");
    EXPECT_EQ(u.x.stbl, 0);
    EXPECT_EQ(u.x.dstate, 1);
    EXPECT_EQ(u.x.t_next, 2e-6 + 5e-9);
    u.settled_inputs("xx");
    u.process(2e-6 + 5e-9);
    EXPECT_EQ(u.outputs(), "x");
}

// ---- not

struct inverter : digital_one {
    explicit inverter(char a) : digital_one("not") {
        r("td_fall") = 3e-9;
        r("td_rise") = 5e-9;
        prepare();
        settled_inputs({a});
        startup();
    }
};

TEST(digital_not, has_its_truth_table) {
    EXPECT_EQ(inverter('0').outputs(), "1");
    EXPECT_EQ(inverter('1').outputs(), "0");
    EXPECT_EQ(inverter('x').outputs(), "x");
    EXPECT_EQ(inverter('x').x.stbl, 1);
}

TEST(digital_not, goes_from_each_level_to_each_after_the_delay_of_its_direction) {
    struct change {
        char from, to;  // of the input
        std::string y;
        int state;
        double delay;
    };
    const change changes[] = {{'1', '0', "1", 1, 5e-9}, {'x', '0', "1", 2, 5e-9}, {'0', '1', "0", 3, 3e-9},
                              {'x', '1', "0", 4, 3e-9}, {'1', 'x', "x", 5, 5e-9}, {'0', 'x', "x", 6, 3e-9}};
    for (const change& c : changes) {
        inverter u(c.from);
        u.inputs({c.to});
        u.schedule(1e-6);
        EXPECT_EQ(u.x.stbl, 0);
        EXPECT_EQ(u.x.dstate, c.state) << c.from << c.to;
        EXPECT_EQ(u.x.t_next, 1e-6 + c.delay);
        u.process(1e-6 + c.delay);
        EXPECT_EQ(u.outputs(), c.y);
        EXPECT_EQ(u.x.stbl, 1);
        EXPECT_EQ(u.x.dstate, 0);
    }
}

TEST(digital_not, delivers_a_pulse_shorter_than_its_delay_and_then_stays) {
    inverter u('0');
    EXPECT_EQ(run_in_time(u, {{10e-9, "1"}, {12e-9, "0"}}, 1e-6), (std::vector<levels_at>{{10e-9 + 3e-9, "0"}}));
    // until the input changes again
    EXPECT_EQ(run_in_time(u, {{100e-9, "1"}, {110e-9, "0"}}, 1e-6), (std::vector<levels_at>{{110e-9 + 5e-9, "1"}}));
}

TEST(digital_not, without_delay_changes_at_the_time_of_its_input) {
    inverter u('0');
    u.r("td_fall") = u.r("td_rise") = 0;
    EXPECT_EQ(run_in_time(u, {{10e-9, "1"}, {20e-9, "0"}, {30e-9, "x"}, {40e-9, "1"}}, 1e-6),
              (std::vector<levels_at>{{10e-9, "0"}, {20e-9, "1"}, {30e-9, "x"}, {40e-9, "0"}}));
}

TEST(digital_not, begins_a_run_from_nothing_at_1_with_a_fall_that_comes_whatever_the_input) {
    for (const char a : levels) {
        inverter u(a);
        u.flags.time_given = 2e-6;
        u.guess();
        EXPECT_EQ(u.outputs(), "1");
        EXPECT_EQ(u.x.dstate, 3);
        EXPECT_EQ(u.x.stbl, 0);
        EXPECT_EQ(u.x.t_next, 2e-6 + 3e-9);
        u.process(2e-6 + 3e-9);
        EXPECT_EQ(u.outputs(), "0");
        EXPECT_EQ(u.x.stbl, 1);
    }
}

TEST(digital_not, begins_with_a_change_under_way_where_that_is_asked_for) {
    inverter u('0');
    u.st("st") = 1;
    u.startup();
    EXPECT_EQ(u.outputs(), "0");
    EXPECT_EQ(u.x.dstate, 1);
    EXPECT_EQ(u.x.t_next, 5e-9);
    u.st("st") = 3;
    u.startup();
    EXPECT_EQ(u.outputs(), "1");
    EXPECT_EQ(u.x.dstate, 3);
    EXPECT_EQ(u.x.t_next, 3e-9);
    for (const int wrong : {-1, 2, 4}) {
        u.st("st") = wrong;
        EXPECT_HALT(u.startup(), "not: wrong condition in start-up\n");
    }
}

TEST(gates, refuse_dc_and_delays_below_0) {
    for (const std::string name : {"and_2", "or_2", "nand_2", "nor_2", "xor", "not"}) {
        digital_one u(name);
        EXPECT_HALT(u.dc(), name + ".dbe: dc not allowed.\n  Halting...\n");
        for (const char* word : {"td_fall", "td_rise"}) {
            digital_one w(name);
            for (const double wrong : {-1e-12, std::nan("")}) {
                w.r(word) = wrong;
                EXPECT_HALT(w.prepare(), name + ".dbe: check td_fall, td_rise. Halting...\n");
            }
        }
    }
}

}  // namespace
