// Selectors and converters against tables written by hand.
#include <gtest/gtest.h>

#include "digital_one.h"
#include "halt_throws.h"
#include "models/digital_outputs.h"

namespace {

using found = std::vector<levels_at>;
const char levels[] = {'0', '1', 'x'};

digital_one selector(const char* name) {
    digital_one u(name);
    u.r("td_fall") = 3e-9;
    u.r("td_rise") = 5e-9;
    u.prepare();
    return u;
}

// ---- mux_4_to_1: d0 d1 d2 d3 s0 s1

std::string all_mux_inputs(int n) {
    std::string s;
    for (int k = 0; k < 6; ++k, n /= 3) s += levels[n % 3];
    return s;
}
char mux_output(const std::string& in) {
    const char s0 = in[4], s1 = in[5];
    if (s0 == '0' && s1 == '0') return in[0];
    if (s0 == '1' && s1 == '0') return in[1];
    if (s0 == '0' && s1 == '1') return in[2];
    if (s0 == '1' && s1 == '1') return in[3];
    return 'x';
}

TEST(mux_4_to_1, gives_the_numbered_input_and_is_unknown_only_by_that_and_the_number) {
    for (int n = 0; n < 729; ++n) {
        digital_one u = selector("mux_4_to_1");
        u.settled_inputs(all_mux_inputs(n));
        u.startup();
        EXPECT_EQ(u.outputs(), std::string(1, mux_output(all_mux_inputs(n)))) << all_mux_inputs(n);
        EXPECT_EQ(u.x.stbl, 1);
    }
}

TEST(mux_4_to_1, goes_from_each_level_to_each_after_the_delay_of_its_direction) {
    const auto one_input = [](char level) {
        return std::string(1, level) + "xx000";
    };  // s0 s1 of 0 0; d3 does not count
    for (const char from : levels)
        for (const char to : levels) {
            digital_one u = selector("mux_4_to_1");
            u.settled_inputs(one_input(from));
            u.startup();
            u.inputs(one_input(to));
            u.schedule(1e-6);
            EXPECT_EQ(u.x.stbl, from == to ? 1 : 0);
            EXPECT_EQ(u.x.dstate, from == to ? 0 : 1);
            if (from == to) continue;
            const bool fall = to == '0' || (to == 'x' && from == '1');
            EXPECT_EQ(u.x.t_next, 1e-6 + (fall ? 3e-9 : 5e-9)) << from << to;
            EXPECT_EQ(u.outputs(), std::string(1, from));
            u.process(u.x.t_next);
            EXPECT_EQ(u.outputs(), std::string(1, to));
            EXPECT_EQ(u.x.stbl, 1);
        }
}

TEST(mux_4_to_1, takes_no_notice_of_a_pulse_shorter_than_its_delay) {
    digital_one u = selector("mux_4_to_1");
    u.settled_inputs("010000");
    u.startup();
    EXPECT_EQ(run_in_time(u, {{10e-9, "010010"}, {14e-9, "010000"}}, 1e-6), found{});
    EXPECT_EQ(run_in_time(u, {{100e-9, "010010"}, {120e-9, "010001"}}, 1e-6),
              (found{{100e-9 + 5e-9, "1"}, {120e-9 + 3e-9, "0"}}));
    u.r("td_fall") = u.r("td_rise") = 0;
    EXPECT_EQ(run_in_time(u, {{200e-9, "010010"}, {220e-9, "01001x"}}, 1e-6), (found{{200e-9, "1"}, {220e-9, "x"}}));
}

// ---- demux_1_to_4: d s0 s1

std::string demux_outputs(const std::string& in) {
    if (in[1] == 'x' || in[2] == 'x') return "xxxx";
    std::string y = "0000";
    y[static_cast<std::size_t>((in[1] == '1' ? 1 : 0) + (in[2] == '1' ? 2 : 0))] = in[0];
    return y;
}

TEST(demux_1_to_4, gives_its_input_to_the_numbered_output_and_0_to_the_others) {
    const std::pair<const char*, const char*> table[] = {
        {"000", "0000"}, {"100", "1000"}, {"110", "0100"}, {"101", "0010"}, {"111", "0001"}, {"011", "0000"},
        {"x00", "x000"}, {"x11", "000x"}, {"1x0", "xxxx"}, {"10x", "xxxx"}, {"0xx", "xxxx"}};
    for (const auto& [in, out] : table) {
        digital_one u = selector("demux_1_to_4");
        u.settled_inputs(in);
        u.startup();
        EXPECT_EQ(u.outputs(), out) << in;
        EXPECT_EQ(u.x.stbl, 1);
        EXPECT_EQ(demux_outputs(in), out);
    }
}

TEST(demux_1_to_4, goes_from_each_of_its_states_to_each_at_once_for_all_outputs) {
    for (int from = 0; from < 27; ++from)
        for (int to = 0; to < 27; ++to) {
            const std::string a{levels[from % 3], levels[from / 3 % 3], levels[from / 9]};
            const std::string b{levels[to % 3], levels[to / 3 % 3], levels[to / 9]};
            const std::string before = demux_outputs(a), behind = demux_outputs(b);
            digital_one u = selector("demux_1_to_4");
            u.settled_inputs(a);
            u.startup();
            u.inputs(b);
            u.schedule(1e-6);
            ASSERT_EQ(u.outputs(), before);
            ASSERT_EQ(u.x.stbl, before == behind ? 1 : 0) << a << b;
            if (before == behind) continue;
            double delay = 0;
            for (std::size_t k = 0; k < 4; ++k)
                if (before[k] != behind[k])
                    delay = std::max(delay, behind[k] == '0' || (behind[k] == 'x' && before[k] == '1') ? 3e-9 : 5e-9);
            EXPECT_EQ(u.x.t_next, 1e-6 + delay) << a << b;
            u.process(u.x.t_next);
            EXPECT_EQ(u.outputs(), behind);
            EXPECT_EQ(u.x.stbl, 1);
        }
}

TEST(demux_1_to_4, takes_no_notice_of_a_pulse_shorter_than_its_delay) {
    digital_one u = selector("demux_1_to_4");
    u.settled_inputs("100");
    u.startup();
    EXPECT_EQ(run_in_time(u, {{10e-9, "110"}, {14e-9, "100"}, {30e-9, "000"}, {32e-9, "100"}}, 1e-6), found{});
    u.r("td_fall") = u.r("td_rise") = 0;
    EXPECT_EQ(run_in_time(u, {{50e-9, "110"}}, 1e-6), (found{{50e-9, "0100"}}));
}

TEST(selectors, begin_at_rest_or_with_outputs_of_0_and_a_change_on_its_way) {
    for (const std::string name : {"mux_4_to_1", "demux_1_to_4"}) {
        const bool mux = name == "mux_4_to_1";
        const std::string zero = mux ? "0" : "0000", high = mux ? "100000" : "100", result = mux ? "1" : "1000";
        for (const bool guess : {false, true}) {
            digital_one u = selector(name.c_str());
            u.settled_inputs(high);
            u.flags.time_given = 2e-6;
            u.st("st") = guess ? 0 : 1;
            guess ? u.guess() : u.startup();
            EXPECT_EQ(u.outputs(), zero);
            EXPECT_EQ(u.x.stbl, 0);
            EXPECT_EQ(u.x.t_next, 2e-6 + 5e-9);
            u.process(u.x.t_next);
            EXPECT_EQ(u.outputs(), result);
            EXPECT_EQ(u.x.stbl, 1);
            EXPECT_EQ(u.x.dstate, 0);
        }
        digital_one u = selector(name.c_str());
        const std::string wrong_state = name + ": wrong condition 1. Halting...\n";
        for (const int wrong : {-1, 2}) {
            u.st("st") = wrong;
            EXPECT_HALT(u.startup(), wrong_state);
            u.x.dstate = wrong;
            EXPECT_HALT(u.process(0), wrong_state);
        }
        EXPECT_HALT(u.dc(), name + ": dc not allowed. Halting.\n");
        u.r("td_fall") = -1;
        EXPECT_HALT(u.prepare(), name + ".dbe: check td_fall, td_rise. Halting...\n");
    }
}

// ---- adc1

struct one_bit : digital_one {
    explicit one_bit(double v_high = 5) : digital_one("adc1") {
        r("v_high") = v_high;
        r("td") = 4e-9;
        prepare();
    }
    void see(double v) { x.val_anlg[0] = v; }
};

TEST(adc1, is_1_above_half_its_high_voltage_in_dc_start_up_and_a_first_guess) {
    for (const auto mode : {&flags_class::dc, &flags_class::startup, &flags_class::init_guess})
        for (const double v_high : {5.0, 0.0, -2.0}) {
            one_bit u(v_high);
            EXPECT_EQ(u.r("v_th"), v_high / 2);
            for (const double above : {-1.0, -1e-9, 0.0, 1e-9, 1.0}) {
                u.see(v_high / 2 + above);
                u.call(mode);
                EXPECT_EQ(u.outputs(), above > 0 ? "1" : "0");
                EXPECT_EQ(u.x.stbl, 1);
                EXPECT_EQ(u.x.dstate, 0);
            }
        }
}

TEST(adc1, delivers_a_change_after_its_delay_as_it_was_planned) {
    one_bit u;
    u.startup();
    u.see(2.4);
    u.schedule(1e-6);
    EXPECT_EQ(u.x.stbl, 1);
    u.see(2.6);
    u.schedule(2e-6);
    EXPECT_EQ(u.outputs(), "0");
    EXPECT_EQ(u.x.stbl, 0);
    EXPECT_EQ(u.x.dstate, 1);
    EXPECT_EQ(u.x.t_next, 2e-6 + 4e-9);
    u.see(0);  // gone again by then
    u.process(u.x.t_next);
    EXPECT_EQ(u.outputs(), "1");
    EXPECT_EQ(u.x.stbl, 1);
    u.schedule(3e-6);
    EXPECT_EQ(u.x.stbl, 0);
    u.process(u.x.t_next);
    EXPECT_EQ(u.outputs(), "0");
    u.r("td") = 0;
    u.see(3);
    u.schedule(4e-6);
    EXPECT_EQ(u.x.t_next, 4e-6);
}

TEST(adc1, that_never_began_delivers_its_first_level_as_a_change) {
    one_bit u;
    u.schedule(0);
    EXPECT_EQ(u.outputs(), "x");
    EXPECT_EQ(u.x.stbl, 0);
    u.process(u.x.t_next);
    EXPECT_EQ(u.outputs(), "0");
}

// ---- adc4

TEST(adc4, gives_the_nearest_code_and_the_ends_beyond_them) {
    digital_one u("adc4");
    u.r("v_ref") = 30;  // 2 V a step
    u.prepare();
    for (const auto mode : {&flags_class::dc, &flags_class::startup, &flags_class::init_guess})
        for (int code = 0; code < 16; ++code)
            for (const double off : {-0.99, 0.0, 0.99}) {
                u.x.val_anlg[0] = 2 * code + off;
                u.call(mode);
                std::string q;
                for (const int weight : {1, 2, 4, 8}) q += code / weight % 2 ? '1' : '0';
                EXPECT_EQ(u.outputs(), q) << 2 * code + off;
                EXPECT_EQ(u.x.stbl, 1);
            }
    for (const double v : {-1e300, -7.0, 0.99}) {
        u.x.val_anlg[0] = v;
        u.dc();
        EXPECT_EQ(u.outputs(), "0000");
    }
    for (const double v : {29.01, 31.0, 1e300}) {
        u.x.val_anlg[0] = v;
        u.dc();
        EXPECT_EQ(u.outputs(), "1111");
    }
}

TEST(adc4, half_way_between_two_levels_takes_the_lower_one) {
    for (int code = 0; code < 15; ++code) EXPECT_EQ(nearest_code(code + 0.5, 15, 4), code);
    EXPECT_EQ(nearest_code(0.5, 1, 1), 0);  // one bit is adc1
    EXPECT_EQ(nearest_code(0.500001, 1, 1), 1);
    EXPECT_EQ(nearest_code(std::nan(""), 1, 4), 0);
}

TEST(adc4, gives_back_what_dac4_made_of_a_code) {
    digital_one a("adc4");
    model_unit d("dac4");
    a.prepare();
    d.prepare();
    for (int code = 0; code < 16; ++code) {
        for (int k = 0; k < 4; ++k) d.x.dvar[static_cast<std::size_t>(k)] = code >> k & 1;
        d.x.v = {0, 0, 0};
        d.dc();
        a.x.val_anlg[0] = -d.x.f[0];  // 1 ohm
        a.dc();
        std::string q;
        for (int k = 0; k < 4; ++k) q += code >> k & 1 ? '1' : '0';
        EXPECT_EQ(a.outputs(), q);
    }
}

TEST(adc4, delivers_all_bits_of_a_change_at_once_after_its_delay) {
    digital_one u("adc4");
    u.r("v_ref") = 15;
    u.r("td") = 4e-9;
    u.prepare();
    u.x.val_anlg[0] = 7;
    u.startup();
    EXPECT_EQ(u.outputs(), "1110");
    u.x.val_anlg[0] = 7.4;
    u.schedule(1e-6);
    EXPECT_EQ(u.x.stbl, 1);
    u.x.val_anlg[0] = 8;
    u.schedule(1e-6);
    EXPECT_EQ(u.x.t_next, 1e-6 + 4e-9);
    EXPECT_EQ(u.outputs(), "1110");
    u.x.val_anlg[0] = 3;
    u.process(u.x.t_next);
    EXPECT_EQ(u.outputs(), "0001");
    EXPECT_EQ(u.x.stbl, 1);
    u.r("td") = 0;
    u.schedule(2e-6);
    EXPECT_EQ(u.x.t_next, 2e-6);
    u.process(2e-6);
    EXPECT_EQ(u.outputs(), "1100");
}

TEST(converters_to_digital, refuse_delays_below_0_and_no_voltage) {
    for (const std::string name : {"adc1", "adc4", "decimal_4", "decimal_8"}) {
        digital_one u(name);
        u.r("td") = -1e-9;
        EXPECT_HALT(u.prepare(), name + ".dbe: check td. Halting...\n");
    }
    for (const double wrong : {0.0, -1.0, std::nan("")}) {
        digital_one u("adc4");
        u.r("v_ref") = wrong;
        EXPECT_HALT(u.prepare(), "adc4.dbe: v_ref too small!\n");
    }
}

// ---- decimal_4, decimal_8

TEST(decimals, are_the_number_of_their_bits_with_unknown_ones_as_0) {
    struct row {
        const char* name;
        const char* in;
        double number;
    };
    for (const row& w :
         {row{"decimal_4", "0000", 0}, row{"decimal_4", "1000", 1}, row{"decimal_4", "0100", 2},
          row{"decimal_4", "0010", 4}, row{"decimal_4", "0001", 8}, row{"decimal_4", "1111", 15},
          row{"decimal_4", "1x1x", 5}, row{"decimal_4", "xxxx", 0}, row{"decimal_8", "00000000", 0},
          row{"decimal_8", "00001000", 16}, row{"decimal_8", "00000001", 128}, row{"decimal_8", "11111111", 255},
          row{"decimal_8", "10100101", 165}, row{"decimal_8", "x111x111", 238}}) {
        digital_one u(w.name);
        u.prepare();
        u.settled_inputs(w.in);
        u.startup();
        EXPECT_EQ(u.r("dec_o"), w.number) << w.in;
        EXPECT_EQ(u.x.stbl, 1);
    }
}

TEST(decimals, follow_after_their_delay_with_the_bits_of_that_time) {
    digital_one u("decimal_4");
    u.r("td") = 4e-9;
    u.prepare();
    u.settled_inputs("1000");
    u.startup();
    u.inputs("1x00");
    u.schedule(1e-6);
    EXPECT_EQ(u.x.stbl, 1);  // the number is the same
    u.inputs("0110");
    u.schedule(1e-6);
    EXPECT_EQ(u.x.stbl, 0);
    EXPECT_EQ(u.x.t_next, 1e-6 + 4e-9);
    EXPECT_EQ(u.r("dec_o"), 1);
    u.inputs("0111");
    u.process(u.x.t_next);
    EXPECT_EQ(u.r("dec_o"), 14);
    EXPECT_EQ(u.x.stbl, 1);
    u.r("td") = 0;
    u.inputs("0000");
    u.schedule(2e-6);
    EXPECT_EQ(u.x.t_next, 2e-6);
    u.inputs("0111");  // gone before it fires
    u.process(2e-6);
    EXPECT_EQ(u.r("dec_o"), 14);
}

TEST(decimals, begin_a_run_from_nothing_with_a_look_at_their_bits_on_its_way_and_refuse_dc) {
    for (const std::string name : {"decimal_4", "decimal_8"}) {
        digital_one u(name);
        u.r("td") = 4e-9;
        u.flags.time_given = 2e-6;
        u.guess();
        EXPECT_EQ(u.x.stbl, 0);
        EXPECT_EQ(u.x.t_next, 2e-6 + 4e-9);
        u.settled_inputs(name == "decimal_4" ? "0100" : "01000000");
        u.process(u.x.t_next);
        EXPECT_EQ(u.r("dec_o"), 2);
        EXPECT_HALT(u.dc(), name + ": dc not allowed\n");
    }
}

}  // namespace
