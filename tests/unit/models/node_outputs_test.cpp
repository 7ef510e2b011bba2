// Logic, comparators and samplers on node voltages: elements that drive one node.
#include <gtest/gtest.h>

#include <cmath>

#include "halt_throws.h"
#include "model_unit.h"

namespace {

struct truth {
    std::string name;
    bool of[2][2];  // by a, b
};
const truth table[] = {{"and_2", {{false, false}, {false, true}}}, {"nand_2", {{true, true}, {true, false}}},
                       {"or_2", {{false, true}, {true, true}}},    {"nor_2", {{true, false}, {false, false}}},
                       {"xor_2", {{false, true}, {true, false}}},  {"not", {{true, true}, {false, false}}}};

TEST(logic_elements, have_their_truth_tables_behind_their_output_resistance) {
    for (const truth& t : table)
        for (const bool a : {false, true})
            for (const bool b : {false, true}) {
                model_unit u(t.name);
                u.r("v_low") = -1;
                u.r("v_high") = 4;
                u.r("r_out") = 0.25;
                u.prepare();
                u.x.vind[0] = a ? 2.001 : 2.0;  // half of v_high is not above it
                if (t.name != "not") u.x.vind[1] = b ? 9 : -9;
                u.x.v[0] = 1;
                for (const auto mode : {&flags_class::dc, &flags_class::trns, &flags_class::startup}) {
                    u.call(mode, &flags_class::function, &flags_class::jacobian);
                    EXPECT_EQ(u.x.f[0], t.of[a][b] ? -12 : 8) << t.name << a << b;
                    EXPECT_EQ(u.jac.dfdv[0][0], 4);
                }
                u.call(&flags_class::outvar_prm);
                EXPECT_EQ(u.r("v_o"), 1);
            }
}

TEST(node_outputs, refuse_an_output_without_resistance) {
    for (const std::string name :
         {"and_2", "nand_2", "or_2", "nor_2", "xor_2", "not", "cmprtr_1", "cmprtr_2", "sampler2"})
        for (const double r : {0.0, 1e-9, -1.0, static_cast<double>(NAN)}) {
            model_unit u(name);
            u.r("r_out") = r;
            EXPECT_HALT(u.prepare(), name + ".ebe: r_out too small!\n");
        }
}

// A unit in a transient, to which accepted points are given.
struct in_time : model_unit {
    explicit in_time(const std::string& name) : model_unit(name) {
        r("r_out") = 1;
        r("dt_guard") = 1e-6;
        r("dt_default") = 0.1;
        prepare();
        call(&flags_class::init_guess);
    }
    double output(double t) {
        flags.time_given = t;
        trns();
        return x.v[0] - x.f[0];
    }
    void accept(double t) {
        flags.time_given = t;
        ++flags.iter_trns_1;
        flags.forget_events();
        call(&flags_class::save_history);
    }
    double next(double t) {
        flags.time_given = t;
        flags.time_nextbreak = 1e9;
        call(&flags_class::nexttime);
        return flags.time_nextbreak;
    }
};

TEST(comparators, foresee_the_crossing_on_a_straight_line_and_stop_short_of_it) {
    in_time two("cmprtr_1"), one("cmprtr_2");
    one.r("v_th") = 2;
    two.x.vind[1] = 2;
    for (in_time* u : {&two, &one}) {
        u->x.vind[0] = -1;  // three below
        u->accept(1);
        EXPECT_EQ(u->next(1), 1.1);
        u->accept(1);  // a second call at the same time
        u->x.vind[0] = 1;
        u->accept(2);  // one below: crosses half a second later
        EXPECT_NEAR(u->next(2), 2.5 - 1e-6, 1e-14);
        EXPECT_EQ(u->output(2.4), 0);
        u->x.vind[0] = 2;
        EXPECT_EQ(u->output(2.5), 0);
        u->x.vind[0] = 2.125;
        EXPECT_EQ(u->output(2.5), 5);
        u->flags.event_restart = 1;
        u->accept(2.5625);
        EXPECT_EQ(u->flags.event, 1);
        EXPECT_EQ(u->flags.event_acts, 1);
        EXPECT_NEAR(u->flags.event_share, 1 / 1.125, 1e-15);
        EXPECT_EQ(u->next(2.5625), 2.6625);  // samples on opposite sides show no crossing
    }
    one.x.iparm[0] = 1;
    EXPECT_EQ(one.output(3), 0);
    one.x.vind[0] = 1;
    EXPECT_EQ(one.output(3), 5);
}

TEST(comparators, compare_at_once_in_dc_and_start_up) {
    in_time u("cmprtr_1");
    u.x.vind = {2, 1, 0};
    u.dc();
    EXPECT_EQ(u.x.f[0], -5);
    u.x.vind = {1, 1, 0};
    u.startup();
    EXPECT_EQ(u.x.f[0], 0);
}

TEST(sampler2, follows_while_its_input_is_low_and_holds_the_last_accepted_value_while_it_is_high) {
    in_time u("sampler2");
    u.x.vind = {3, 0, 0};
    EXPECT_EQ(u.output(0), 3);
    EXPECT_EQ(u.jac.dfdvind[0][0], -1);
    u.accept(1);
    u.x.vind[0] = 4;
    EXPECT_EQ(u.output(1.5), 4);
    u.x.vind = {7, 1, 0};
    EXPECT_EQ(u.output(2), 3);  // what was accepted, not what was tried
    EXPECT_EQ(u.jac.dfdvind[0][0], 0);
    u.accept(2);
    EXPECT_EQ(u.flags.event, 1);
    u.x.vind = {8, 2, 0};
    EXPECT_EQ(u.output(3), 3);
    u.x.vind[1] = 0.5;  // the threshold itself is not above it
    EXPECT_EQ(u.output(3), 8);
    u.call(&flags_class::init_guess);
    u.x.vind[1] = 1;
    EXPECT_EQ(u.output(0), 0);
}

TEST(sampler2, has_the_change_of_its_hold_input_as_break) {
    in_time u("sampler2");
    u.x.vind = {3, 0.125, 0};
    u.accept(1);
    EXPECT_EQ(u.next(1), 1.1);
    u.x.vind[1] = 0.25;
    u.accept(2);
    u.accept(2);
    EXPECT_NEAR(u.next(2), 4 - 1e-6, 1e-14);
}

}  // namespace
