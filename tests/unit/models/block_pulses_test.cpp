// General monostables.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "block_unit.h"
#include "halt_throws.h"

namespace {

const char* const monostables[] = {"monostable", "monostable_1", "monostable_1a"};

block_unit pulse_of(const std::string& name, double t_w) {
    block_unit u(name);
    u.r("t_w") = t_w;
    u.prepare();
    u.guess();
    return u;
}

// An accepted point of a run that is under way.
void accept(block_unit& u, double time, double x, int step = 5) {
    u.flags.iter_trns_1 = step;
    u.vr("x") = x;
    u.accept(time);
}

TEST(monostable, gives_a_pulse_of_its_width_from_the_accepted_edge_on) {
    for (const char* name : monostables) {
        SCOPED_TRACE(name);
        block_unit u = pulse_of(name, 2);
        u.r("x_low") = -3;
        u.r("x_high") = 5;
        u.prepare();
        accept(u, 1, 0.9);
        EXPECT_EQ(u.output(1), -3);
        EXPECT_EQ(u.next_break(1), 1e9) << "no pulse, no break";
        accept(u, 1.5, 1.1);  // through the middle, 1
        EXPECT_EQ(u.output(1.5), 5);
        EXPECT_EQ(u.r("on_o"), 1);
        EXPECT_EQ(u.next_break(1.5), 3.5);
        EXPECT_EQ(u.next_break(3.25), 3.5);
        EXPECT_EQ(u.output(3.499), 5);
        EXPECT_EQ(u.output(3.5), -3) << "over at its end";
        EXPECT_EQ(u.next_break(3.5), 1e9);
        accept(u, 3.5, 1.1);
        EXPECT_EQ(u.r("on_o"), 0);
        EXPECT_EQ(u.output(3.6), -3);
    }
}

TEST(monostable, does_not_start_in_a_step_that_is_tried) {
    for (const char* name : monostables) {
        block_unit u = pulse_of(name, 2);
        accept(u, 1, 0);
        u.vr("x") = 1;
        for (int trial = 0; trial < 3; ++trial) EXPECT_EQ(u.output(1.5), 0) << name;
        u.next_break(1);
        accept(u, 1.2, 0);
        EXPECT_EQ(u.output(1.3), 0) << name;
    }
}

TEST(monostable, hears_the_edges_that_it_is_told_to) {
    for (const char* name : monostables)
        for (const int rise : {0, 1}) {
            block_unit u = pulse_of(name, 0.25);
            u.i("active_pos_edge") = rise;
            u.i("active_neg_edge") = 1 - rise;
            u.prepare();
            accept(u, 0, 0);
            accept(u, 1, 1);
            EXPECT_EQ(u.output(1.1), rise) << name;
            accept(u, 2, 1);
            EXPECT_EQ(u.output(2.1), 0) << name;
            accept(u, 3, 0);
            EXPECT_EQ(u.output(3.1), 1 - rise) << name;
        }
}

TEST(monostable, takes_an_edge_within_the_pulse_as_its_name_says) {
    for (const char* name : monostables) {
        const bool anew = std::string(name) != "monostable";
        block_unit u = pulse_of(name, 2);
        accept(u, 0, 0);
        accept(u, 1, 1);
        accept(u, 1.5, 0);
        accept(u, 2, 1);
        EXPECT_EQ(u.next_break(2), anew ? 4 : 3) << name;
        EXPECT_EQ(u.output(2.9), 1) << name;
        EXPECT_EQ(u.output(3.1), anew ? 1 : 0) << name;
        EXPECT_EQ(u.output(4), 0) << name;
    }
}

TEST(monostable, hears_an_edge_at_the_very_end_of_its_pulse) {
    block_unit u = pulse_of("monostable", 2);
    accept(u, 0, 0);
    accept(u, 1, 1);
    accept(u, 2, 0);
    accept(u, 3, 1);
    EXPECT_EQ(u.next_break(3), 5);
}

// A signal that is high from the start has not risen.
TEST(monostable, has_no_edge_before_the_first_point_of_a_run_and_is_low_in_dc_and_start_up) {
    for (const char* name : monostables) {
        block_unit u = pulse_of(name, 2);
        accept(u, 0, 1, 0);
        EXPECT_EQ(u.output(0.1), 0) << name;
        accept(u, 1, 0, 1);
        accept(u, 2, 1, 2);
        EXPECT_EQ(u.output(2.1), 1) << name;
        for (const auto analysis : {&flags_class::dc, &flags_class::startup}) {
            u.vr("y") = 0;
            u.call(analysis, &flags_class::function);
            EXPECT_EQ(u.x.f[0], 0) << name;
        }
        u.guess();
        EXPECT_EQ(u.output(2.1), 0) << name;
    }
}

// The end is met by the sum of a time and a step, which rounding may put on either side of it.
TEST(monostable, is_over_at_an_end_that_rounding_moved) {
    block_unit u = pulse_of("monostable", 1e-6);
    accept(u, 999.0, 0);
    accept(u, 1000.1, 1);
    const double end = u.r("t_stop");
    for (const double time : {std::nextafter(end, 0), end, std::nextafter(end, 1e9)}) {
        EXPECT_EQ(u.output(time), 0);
        EXPECT_EQ(u.next_break(time), 1e9);
    }
    EXPECT_EQ(u.output(end - 0.01e-6), 1);
}

TEST(monostable, tells_of_its_edge_and_of_the_jump_at_its_end) {
    block_unit u = pulse_of("monostable", 2);
    accept(u, 0, 0);
    accept(u, 1, 2);
    EXPECT_EQ(u.flags.event, 1);
    EXPECT_EQ(u.flags.event_acts, 0);
    EXPECT_EQ(u.flags.event_share, 0.25);  // the middle, 0.5, on the way from 0 to 2
    for (const int heeded : {0, 1}) {
        u.flags.event_restart = heeded;
        u.flags.break_jumps = 0;
        u.next_break(1);
        EXPECT_EQ(u.flags.break_jumps, heeded);
    }
}

TEST(monostable, refuses_edges_and_levels_without_sense) {
    for (const std::string name : monostables) {
        const auto expect_refused = [&](int rise, int fall, const char* text) {
            block_unit u(name);
            u.i("active_pos_edge") = rise;
            u.i("active_neg_edge") = fall;
            EXPECT_HALT(u.prepare(), name + ".gbe: check " + text + ". Halting...\n");
        };
        expect_refused(2, 0, "active_pos_edge");
        expect_refused(1, -1, "active_neg_edge");
        expect_refused(1, 1, "active_neg_edge/active_pos_edge");
        expect_refused(0, 0, "active_neg_edge/active_pos_edge");
        block_unit levels(name), width(name);
        levels.r("x_low") = 1;
        EXPECT_HALT(levels.prepare(), name + ".gbe: check x_low/x_high. Halting...\n");
        width.r("t_w") = 0;
        EXPECT_HALT(width.prepare(), name + ".gbe: check t_w. Halting...\n");
    }
}

TEST(monostable_1a, traces_what_it_stores_and_asks_for_where_the_debug_flag_is_on) {
    for (const std::string name : {"monostable_1", "monostable_1a"}) {
        block_unit u = pulse_of(name, 2);
        accept(u, 0, 0);
        const auto heard = [&] {
            return run_and_listen([&] {
                       accept(u, 0.5, 1);
                       u.next_break(0.75);
                   })
                .text;
        };
        EXPECT_EQ(heard(), "");
        u.flags.flag_debug_int = 1;
        EXPECT_EQ(heard(), name == "monostable_1" ? ""
                                                  : "monostable_1a.gbe: save_history: t=0.5\n"
                                                    "monostable_1a.gbe: nexttime: time_nextbreak=2.5\n");
    }
}

}  // namespace
