// events_test.cpp -- event_restart: the order of a rule over jumps, against what the circuits do in closed form.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstdio>
#include <functional>
#include <numbers>

#include "whole_run.h"

namespace {
constexpr double pi = std::numbers::pi;

std::string number(double x) {
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", x);
    return text;
}

// y' = (aim - y)/tau from y0 for a time t.
double toward(double aim, double y0, double t, double tau) { return aim + (y0 - aim) * std::exp(-t / tau); }

struct circuit_with_events {
    std::string lines;                    // writes y
    double t_end, h;                      // s
    std::function<double(double)> exact;  // y at a time
    std::string settings = "";            // beside rule and step
    double tolr = 1e-4;                   // of TR-BDF2 at h, in the units of the state
    std::string start = "initial_sol previous\n";
};

// Largest error of y over all rows that lie apart from a jump; NaN if the run stops.
double error_of(const circuit_with_events& c, const std::string& rule, double h, bool restart) {
    std::string settings = rule + "=yes t_end=" + number(c.t_end) + " delt_const=" + number(h) +
                           " delt_min=" + number(1e-5 * c.h) + " " + c.settings;
    if (rule == "trbdf2")
        settings += " delt_max=" + number(2 * h) + " trbdf2_tolr=" + number(c.tolr * std::pow(h / c.h, 3));
    if (rule == "trapezoidal_auto") settings += " delt_max=" + number(h);
    if (restart) settings += " event_restart=yes";
    const whole_run run(
        deck_text{c.lines, "y", {"solve_type startup\n", "solve_type trns\n" + c.start + "method: " + settings + "\n"}}
            .str());
    if (run.stopped) return NAN;
    double error = 0.0;
    const table rows = run.rows("out2.dat");
    EXPECT_NEAR(rows.back()[0], c.t_end, 2 * h);
    for (std::size_t i = 1; i < rows.size(); ++i) error = std::max(error, std::fabs(rows[i][1] - c.exact(rows[i][0])));
    return error;
}

// Half the step gives a quarter of the error with the word, and half of a far larger one without.
void expect_second_order(const circuit_with_events& c, const std::string& rule, bool first_without = true) {
    const double with = error_of(c, rule, c.h, true), with_half = error_of(c, rule, c.h / 2, true);
    EXPECT_GT(with / with_half, 3.4) << rule << ": " << with << " " << with_half;
    EXPECT_LT(with / with_half, 4.7) << rule << ": " << with << " " << with_half;
    if (!first_without) return;
    const double without = error_of(c, rule, c.h, false), without_half = error_of(c, rule, c.h / 2, false);
    EXPECT_LT(without / without_half, 2.8) << rule << ": " << without << " " << without_half;
    EXPECT_GT(without_half, 10 * with_half) << rule;
}
const char* const fixed_rules[] = {"trapezoidal", "gear2"};
const char* const all_rules[] = {"trapezoidal", "gear2", "trapezoidal_auto", "trbdf2"};

// A lag of 1 ms behind a comparator with hysteresis that drives it: up until y reaches 0.5, down until -0.5, and so on.
// A threshold counts as reached a millionth of the band before it.
circuit_with_events relay() {
    circuit_with_events c{
        "gelement name=C1 type=cmprtr_hyst_1 x=y y=u g_low=-0.5 g_high=0.5 x_low=1 x_high=-1\n"
        "gelement name=L1 type=lag_1 x=u y=y tau=1m\noutvar: y=var_of_y\n",
        10e-3, 40e-6, nullptr, "norm_2=1u"};
    c.exact = [](double t) {
        const double tau = 1e-3, th = 0.5 - 1e-6;
        double y = 0, aim = 1;
        for (;;) {
            const double until = tau * std::log((aim - y) / (aim - aim * th));
            if (t <= until) return toward(aim, y, t, tau);
            t -= until;
            y = aim * th;
            aim = -aim;
        }
    };
    return c;
}

// A synchronous converter from 24 V whose switches follow a clock of 20 us; the control passes half its height in the
// middle of an edge of 10 ns.
namespace buck {
constexpr double vin = 24, l = 100e-6, c = 47e-6, r = 5, g_on = 1 / 10e-3, g_off = 1 / 1e9, period = 20e-6, on = 8e-6;
using state = std::array<double, 2>;  // A in the inductor, V on the capacitor
state advance(state x, bool high, double t) {
    const double g1 = high ? g_on : g_off, g2 = high ? g_off : g_on, drop = 1 / (g1 + g2);
    const double a11 = -drop / l, a12 = -1 / l, a21 = 1 / c, a22 = -1 / (r * c), u = vin * g1 * drop / l;
    const double det = a11 * a22 - a12 * a21, mean = (a11 + a22) / 2;
    const state rest{-u * a22 / det, u * a21 / det}, d{x[0] - rest[0], x[1] - rest[1]};
    const std::complex<double> w = std::sqrt(std::complex<double>(mean * mean - det));
    const double e = std::exp(mean * t), ch = e * std::cosh(w * t).real(), sh = e * (std::sinh(w * t) / w).real();
    return {rest[0] + (ch + sh * (a11 - mean)) * d[0] + sh * a12 * d[1],
            rest[1] + sh * a21 * d[0] + (ch + sh * (a22 - mean)) * d[1]};
}
double current_at(double t) {
    const double late = 5e-9;
    state x = advance({3, 9}, false, std::min(t, late));
    bool high = true;
    for (double from = late; from < t; high = !high) {
        const double to = from + (high ? on : period - on);
        x = advance(x, high, std::min(t, to) - from);
        from = to;
    }
    return x[0];
}
const std::string lines =
    "eelement name=V1 type=vsrcdc p=in n=0 vdc=24\n"
    "gelement name=CLK type=clock y=g t1=8u t2=12u dt1=10n dt2=10n\n"
    "gelement name=INV type=linear_1 x=g y=gn c0=1 c1=-1\n"
    "eelement name=S1 type=switch_g1 p=in n=sw g=g r_on=10m r_off=1e9\n"
    "eelement name=S2 type=switch_g1 p=0 n=sw g=gn r_on=10m r_off=1e9\n"
    "eelement name=L1 type=l p=sw n=out l=100u i0=3\neelement name=C1 type=c p=out n=0 c=47u v0=9\n"
    "eelement name=R1 type=r p=out n=0 r=5\noutvar: y=i_of_L1\n";
}  // namespace buck

// An RC of 1 ms behind a switch that is on while a sine of 50 Hz is above 0.5; off it discharges into 2 kohm.
circuit_with_events sensed_switch() {
    circuit_with_events c{
        "eelement name=V1 type=vsrcdc p=in n=0 vdc=1\n"
        "eelement name=VC type=vsrcac p=ctl n=0 a=1 f_hz=50\n"
        "eelement name=S1 type=switch_e p=in n=x cp=ctl cn=0 v_th=0.5 r_on=1 r_off=1e12\n"
        "eelement name=R1 type=r p=x n=a r=999\neelement name=R2 type=r p=a n=0 r=2k\n"
        "eelement name=C1 type=c p=a n=0 c=1u\noutvar: y=nodev_of_a\n",
        30e-3, 50e-6, nullptr};
    c.exact = [](double t) {
        const double edge[] = {0, 20e-3 / 12, 100e-3 / 12, 20e-3 + 20e-3 / 12, 20e-3 + 100e-3 / 12, 40e-3};
        double y = 0;
        for (int i = 0; i < 5 && edge[i] < t; ++i) {
            const bool on = i % 2 == 1;
            y = toward(on ? 2.0 / 3 : 0, y, std::min(t, edge[i + 1]) - edge[i], on ? 2e-3 / 3 : 2e-3);
        }
        return y;
    };
    return c;
}

// A lag of 1 ms behind a sampler of 2 ms of a sine.
circuit_with_events sampled() {
    circuit_with_events c{
        "gelement name=S1 type=srcac y=x a=1 f_hz=73\n"
        "gelement name=H1 type=sampler1 x=x y=u t_smp=2m\n"
        "gelement name=L1 type=lag_1 x=u y=y tau=1m\noutvar: y=var_of_y\n",
        19e-3, 60e-6, nullptr, "norm_2=1u"};
    c.exact = [](double t) {
        double y = 0;
        for (int k = 0; 2e-3 * k < t; ++k)
            y = toward(std::sin(2 * pi * 73 * 2e-3 * k), y, std::min(2e-3, t - 2e-3 * k), 1e-3);
        return y;
    };
    return c;
}

// An RC of 1 ms behind a source that jumps from 0 to 1 V at 1 ms for 2 ms, every 5 ms.
circuit_with_events jumping_source() {
    circuit_with_events c{
        "eelement name=V1 type=vpulse p=in n=0 v1=0 v2=1 td=1m tr=0 tf=0 pw=2m per=5m\n"
        "eelement name=R1 type=r p=in n=a r=1k\neelement name=C1 type=c p=a n=0 c=1u\n"
        "outvar: y=nodev_of_a\n",
        13e-3,
        40e-6,
        nullptr,
        "",
        1e-10};
    c.exact = [](double t) {
        double y = 0;
        for (double from = 1e-3; from < t; from += 5e-3) {
            y = toward(1, y, std::min(2e-3, t - from), 1e-3);
            if (t > from + 2e-3) y = toward(0, y, std::min(3e-3, t - from - 2e-3), 1e-3);
        }
        return y;
    };
    return c;
}

// 1 V behind a resistor of 1 kohm, from 1.1 ms on 4 kohm, onto 1 uF: the current jumps, and the rate of the charge.
circuit_with_events changed_resistor() {
    circuit_with_events c{
        "eelement name=V1 type=vsrcdc p=in n=0 vdc=1\n"
        "eelement name=R1 type=r_time p=in n=a r1=1k r2=4k t_sw=1.1m\n"
        "eelement name=C1 type=c p=a n=0 c=1u\noutvar: y=nodev_of_a\n",
        4e-3,
        40e-6,
        nullptr,
        "",
        1e-10};
    c.exact = [](double t) {
        const double y = toward(1, 0, std::min(t, 1.1e-3), 1e-3);
        return t > 1.1e-3 ? toward(1, y, t - 1.1e-3, 4e-3) : y;
    };
    return c;
}

// A comparator without memory on a triangle of 1 ms: up from 0.3 ms to 0.7 ms; a lag of 1 ms behind it.
circuit_with_events compared() {
    circuit_with_events c{
        "gelement name=T1 type=triangle_1 y=x per=1m y_min=0 y_max=1\n"
        "gelement name=C1 type=cmprtr_2 x=x y=u x_th=0.6\n"
        "gelement name=L1 type=lag_1 x=u y=y tau=1m\noutvar: y=var_of_y\n",
        3.4e-3, 70e-6, nullptr, "norm_2=1u"};
    c.exact = [](double t) {
        double y = 0;
        for (double from = 0.3e-3; from < t; from += 1e-3) {
            y = toward(1, y, std::min(0.4e-3, t - from), 1e-3);
            if (t > from + 0.4e-3) y = toward(0, y, std::min(0.6e-3, t - from - 0.4e-3), 1e-3);
        }
        return y;
    };
    return c;
}

// The charge through a thyristor that is fired at 3 ms in each period of 20 ms and leads until the voltage is gone.
circuit_with_events fired() {
    circuit_with_events c{
        "eelement name=V1 type=vsrcac p=a n=0 a=10 f_hz=50\n"
        "eelement name=T1 type=thyristor_g p=a n=b g=g r_on=1 r_off=1e12\n"
        "gelement name=G1 type=pulse y=g tr=1u tf=1u pw=0.5m per=20m td=3m\n"
        "eelement name=R1 type=r p=b n=m r=9\neelement name=M1 type=ammeter_fb p=m n=0 y=i\n"
        "gelement name=Q1 type=intgrtr x=i y=q k=100\noutvar: y=var_of_q\n",
        35e-3, 200e-6, nullptr};
    c.exact = [](double t) {
        const double w = 2 * pi * 50;
        double q = 0;
        // Half the height of the gate's pulse is reached in the middle of its edge.
        for (double from = 3e-3 + 0.5e-6, t0 = 0; from < t; from += 20e-3, t0 += 20e-3)
            q += 100 / w * (std::cos(w * (from - t0)) - std::cos(w * (std::min(t, t0 + 10e-3) - t0)));
        return q;
    };
    return c;
}
}  // namespace

TEST(event_restart, a_relay_oscillator_is_of_second_order) {
    for (const char* rule : fixed_rules) expect_second_order(relay(), rule);
    for (const char* rule : {"trapezoidal_auto", "trbdf2"}) expect_second_order(relay(), rule, false);
}

TEST(event_restart, a_clocked_converter_is_of_second_order) {
    const circuit_with_events c{buck::lines, 90e-6, 2e-6, buck::current_at, "itmax_trns=1000000"};
    for (const char* rule : all_rules) expect_second_order(c, rule, false);
    for (const char* rule : fixed_rules) {
        const double with = error_of(c, rule, 0.5e-6, true), first = error_of(c, rule, 1e-6, false),
                     second = error_of(c, rule, 0.5e-6, false);
        EXPECT_LT(first / second, 2.5);
        EXPECT_GT(second, 50 * with);
    }
}

TEST(event_restart, a_switch_that_senses_a_sine_acts_where_it_passes_the_threshold) {
    for (const char* rule : fixed_rules) expect_second_order(sensed_switch(), rule);
}

TEST(event_restart, a_sample_acts_at_its_time) {
    for (const char* rule : fixed_rules) expect_second_order(sampled(), rule);
}

TEST(event_restart, a_jump_shortly_before_a_sample_does_not_delay_it) {
    const whole_run run(
        deck_text{"gelement name=S1 type=srcac y=x a=1 f_hz=100\n"
                  "gelement name=H1 type=sampler1 x=x y=u t_smp=1m\n"
                  "gelement name=P1 type=step y=j y1=0 y2=1 t0=0.9995m dt1=0\noutvar: u=var_of_u\n",
                  "u",
                  {"solve_type trns\nmethod: trapezoidal=yes event_restart=yes t_end=1.95m "
                   "delt_const=0.1m\n"}}
            .str());
    ASSERT_FALSE(run.stopped) << run.text;
    EXPECT_NEAR(run.rows("out1.dat").back()[1], std::sin(2 * pi * 100 * 1e-3), 1e-5);
}

TEST(event_restart, a_second_run_samples_nothing_before_its_first_sample) {
    const std::string trns = "method: trapezoidal=yes event_restart=yes delt_const=0.1m t_end=";
    const whole_run run(
        deck_text{"gelement name=S1 type=srcac y=x a=1 f_hz=100\n"
                  "gelement name=H1 type=sampler1 x=x y=u t_smp=1m t0=0.5m\noutvar: u=var_of_u\n",
                  "u",
                  {"solve_type trns\n" + trns + "4.2m\n", "solve_type trns\ninitial_sol previous\n" + trns + "0.4m\n"}}
            .str());
    ASSERT_FALSE(run.stopped) << run.text;
    const double last = run.rows("out1.dat").back()[1];
    EXPECT_NEAR(last, std::sin(2 * pi * 100 * 3.5e-3), 1e-5);
    EXPECT_NEAR(run.rows("out2.dat").back()[1], last, 1e-12);
}

TEST(event_restart, a_source_that_jumps_is_crossed_by_a_small_step) {
    for (const char* rule : fixed_rules) expect_second_order(jumping_source(), rule);
    expect_second_order(jumping_source(), "trbdf2", false);
}

TEST(event_restart, a_resistor_that_changes_is_crossed_by_a_small_step) {
    for (const char* rule : fixed_rules) expect_second_order(changed_resistor(), rule);
}

TEST(event_restart, a_comparator_flips_within_a_small_step) {
    for (const char* rule : fixed_rules) expect_second_order(compared(), rule, false);
}

TEST(event_restart, a_thyristor_leads_from_its_gate_to_the_zero_of_its_voltage) {
    for (const char* rule : fixed_rules) expect_second_order(fired(), rule);
}

// Its step cannot change: the crossing has to lie on the grid, here 40 steps from the start.
TEST(event_restart, gear2_fixed_starts_anew_as_well) {
    circuit_with_events c = sensed_switch();
    const std::string at_half = "v_th=0.5";
    c.lines.replace(c.lines.find(at_half), at_half.size(), "v_th=0.4999999");
    c.t_end = 8e-3;
    c.h = 5e-3 / 120;
    expect_second_order(c, "gear2_fixed");
}

// Without a solution to start from, the current of the capacitor at the start is not known.
TEST(event_restart, a_run_from_nothing_begins_by_backward_euler) {
    circuit_with_events c{
        "eelement name=V1 type=vsrcdc p=in n=0 vdc=1\neelement name=R1 type=r p=in n=a r=1k\n"
        "eelement name=C1 type=c p=a n=0 c=1u\noutvar: y=nodev_of_a\n",
        3e-3,
        50e-6,
        [](double t) { return toward(1, 0, t, 1e-3); },
        "",
        1e-10,
        ""};
    expect_second_order(c, "trapezoidal");
    expect_second_order(c, "trbdf2", false);
}

// Approximate iterations hold factors; those of a step about an event are of no use in another.
TEST(event_restart, held_factors_give_the_same_rows) {
    const circuit_with_events c{buck::lines, 90e-6, 1e-6, buck::current_at};
    circuit_with_events held = c;
    held.settings = "nr_approx=yes iter_trns_nrapprox=3";
    EXPECT_NEAR(error_of(held, "trapezoidal", c.h, true), error_of(c, "trapezoidal", c.h, true), 1e-6);
}

TEST(event_restart, rules_of_first_order_do_not_heed_it) {
    for (const std::string rule : {"back_euler", "back_euler_auto"}) {
        const auto rows = [&](const std::string& word) {
            return whole_run(
                       deck_text{buck::lines,
                                 "y",
                                 {"solve_type startup\n", "solve_type trns\ninitial_sol previous\nmethod: " + rule +
                                                              "=yes t_end=50u delt_const=1u " + word + "\n"}}
                           .str())
                .rows("out2.dat");
        };
        EXPECT_GT(rows("").size(), 40u);
        EXPECT_EQ(rows(""), rows("event_restart=yes"));
    }
}

// A comparator with hysteresis drives a switch, which answers one point later: a chain within steps of delt_min.
TEST(event_restart, a_switch_answers_to_its_comparator_at_once) {
    circuit_with_events c{
        "eelement name=V1 type=vsrcdc p=in n=0 vdc=1\n"
        "eelement name=S1 type=switch_g1 p=in n=x g=u r_on=1 r_off=1e12\n"
        "eelement name=R1 type=r p=x n=a r=499\neelement name=R2 type=r p=a n=0 r=500\n"
        "eelement name=C1 type=c p=a n=0 c=1u\neelement name=M1 type=voltmeter_fb p=a n=0 y=v\n"
        "gelement name=C2 type=cmprtr_hyst_1 x=v y=u g_low=0.2 g_high=0.4 x_low=1 x_high=0\n"
        "outvar: y=nodev_of_a\n",
        3e-3, 15e-6, nullptr};
    c.exact = [](double t) {
        double y = 0;
        for (bool on = true;; on = !on) {
            const double aim = on ? 0.5 : 0, tau = on ? 0.25e-3 : 0.5e-3, to = on ? 0.4 - 2e-7 : 0.2 + 2e-7;
            const double until = tau * std::log((aim - y) / (aim - to));
            if (t <= until) return toward(aim, y, t, tau);
            t -= until;
            y = to;
        }
    };
    for (const char* rule : fixed_rules) expect_second_order(c, rule);
}

// A comparator with next to no hysteresis that drives its input back: the next event is never apart from the last one.
TEST(event_restart, a_relay_that_slides_along_its_threshold_comes_to_its_end) {
    for (const std::string rule : all_rules) {
        const whole_run run(deck_text{
            "gelement name=C1 type=cmprtr_hyst_1 x=y y=u g_low=-1e-12 g_high=1e-12 x_low=1 "
            "x_high=-1\ngelement name=L1 type=lag_1 x=u y=y tau=1m y0=0.3\noutvar: y=var_of_y\n",
            "y",
            {"solve_type startup\n", "solve_type trns\ninitial_sol previous\nmethod: " + rule +
                                         "=yes t_end=2m delt_const=20u norm_2=1u trbdf2_tolr=0.01 event_restart=yes\n"}}
                                .str());
        ASSERT_FALSE(run.stopped) << rule << run.text;
        const table rows = run.rows("out2.dat");
        EXPECT_NEAR(rows.back()[0], 2e-3, 1e-9) << rule << run.text;
        EXPECT_LT(rows.size(), 100u * 100u) << rule;
        EXPECT_NEAR(rows.back()[1], 0.0, 0.03) << rule;
    }
}

// A source in series with a diode and a resistor has no state: the bounds of its residuals are those of any step, so
// that both carry the same current at the points about a jump too.
TEST(event_restart, steps_about_an_event_are_as_right_as_others) {
    const whole_run run(
        deck_text{"eelement name=V1 type=vpulse p=in n=0 v1=0 v2=2 td=1m tr=0 tf=0 pw=1m per=4m\n"
                  "eelement name=R1 type=r p=in n=d r=1k\neelement name=D1 type=diode_spice_1 p=d n=0\n"
                  "outvar: ir=i_of_R1 id=i_of_D1\n",
                  "ir id",
                  {"solve_type startup\n",
                   "solve_type trns\ninitial_sol previous\nmethod: trapezoidal=yes event_restart=yes t_end=3m "
                   "delt_const=100u chk_only_rhs2=yes norm_2=1e-6 gmin_step=no\n"}}
            .str());
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("out2.dat");
    EXPECT_GT(rows.size(), 30u);
    // Two rows of the system: a root mean square of 1 uA lets one be off by 1.5 uA.
    for (const std::vector<double>& row : rows) EXPECT_NEAR(row[1], row[2], 4e-6) << row[0];
}

TEST(event_restart, a_tolerance_that_no_step_meets_stops_trbdf2) {
    const std::string start =
        "solve_type trns\ninitial_sol previous\nmethod: trbdf2=yes t_end=0.3m delt_const=10u "
        "itmax_trns=1000000 gmin_step=no trbdf2_tolr=1e-15";
    for (const char* word : {"", " event_restart=yes"}) {
        const whole_run run(
            deck_text{"eelement name=V1 type=vsrcac p=in n=0 a=10 f_hz=1k\n"
                      "eelement name=R1 type=r p=in n=a r=10\neelement name=L1 type=l p=a n=d l=1m\n"
                      "eelement name=D1 type=diode_spice_1 p=d n=out cj0=100p tt=10n\n"
                      "eelement name=C1 type=c p=out n=0 c=10u\neelement name=R2 type=r p=out n=0 r=100\n"
                      "outvar: y=nodev_of_out\n",
                      "y",
                      {"solve_type startup\n", start + word + "\n"}}
                .str());
        EXPECT_TRUE(run.stopped) << word;
        EXPECT_NE(run.text.find("solve_trns: no convergence even with"), std::string::npos) << word << run.text;
    }
}

// A pulse of 100 us becomes one of 10.35 us while it lasts.
TEST(event_restart, a_corner_that_set_rparm_moves_is_not_passed_over) {
    const whole_run run(deck_text{
        "eelement name=V1 type=vpulse p=in n=0 v1=0 v2=1 td=5u tr=0.1u tf=0.1u pw=100u per=0\n"
        "eelement name=R1 type=r p=in n=0 r=1k\ngelement name=S1 type=step y=x y1=100 y2=10.35 t0=8u dt1=0.1u\n"
        "gelement name=B1 type=set_rparm x=x element=V1 parm=pw k=1u\noutvar: y=nodev_of_in\n",
        "y",
        {"solve_type trns\nmethod: trapezoidal=yes event_restart=yes t_end=30u delt_const=4u\n"}}
                            .str());
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("out1.dat");
    for (const double corner : {15.45e-6, 15.55e-6})
        EXPECT_TRUE(std::any_of(rows.begin(), rows.end(), [&](const auto& row) {
            return std::fabs(row[0] - corner) < 2e-11;
        })) << corner;
}

// Steps of 1 us end before or behind the jump by their rounding, and the pulse is shorter than one of them.
TEST(breaks, a_pulse_whose_jump_is_nearer_than_any_step_is_not_passed_over) {
    for (const std::string at : {"12m", "17m", "20m", "31m"})
        for (const std::string rise : {"0", "1n"}) {
            const std::string end = std::to_string(std::stoi(at)) + ".01m";
            const whole_run run(deck_text{
                "eelement name=V1 type=vpulse p=in n=0 v1=0 v2=1 td=" + at + " tr=" + rise +
                    " tf=1n pw=0.4u per=0\neelement name=R1 type=r p=in n=0 r=1k\noutvar: y=nodev_of_in\n",
                "y",
                {"solve_type trns\nmethod: back_euler=yes itmax_trns=1000000 t_end=" + end + " delt_const=1u\n"}}
                                    .str());
            ASSERT_FALSE(run.stopped) << run.text;
            double largest = 0.0;
            for (const std::vector<double>& row : run.rows("out1.dat")) largest = std::max(largest, row[1]);
            EXPECT_NEAR(largest, 1.0, 1e-6) << at << " " << rise;
        }
}
