// Power switches, bridges, averaged cells, losses and temperatures in whole runs, against closed forms.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstdio>
#include <numbers>

#include "whole_run.h"

namespace {

#define EXPECT_REL(a, b, tolerance) EXPECT_NEAR(a, b, std::abs(b) * (tolerance))

std::string number(double x) {
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", x);
    return text;
}

// Rows of a transient that begins with a start-up block.
table rows_of(const std::string& circuit, const std::string& variables, const std::string& method) {
    const whole_run run(deck_text{
        circuit,
        variables,
        {"solve_type startup\n",
         "solve_type trns\ninitial_sol previous\nmethod: itmax_trns=10000000 " + method +
             "\n"}}.str());
    EXPECT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("out2.dat");
    for (const auto& row : rows)
        for (const double x : row) EXPECT_TRUE(std::isfinite(x));
    return rows.empty() ? table{std::vector<double>(12, NAN)} : rows;
}
// Mean over the rows from t0 on, by trapezoids.
double mean(const table& rows, std::size_t column, double t0) {
    double sum = 0, time = 0;
    for (std::size_t i = 1; i < rows.size(); ++i) {
        if (rows[i - 1][0] < t0 - 1e-12) continue;
        const double h = rows[i][0] - rows[i - 1][0];
        sum += h * (rows[i][column] + rows[i - 1][column]) / 2;
        time += h;
    }
    return sum / time;
}
double lowest(const table& rows, std::size_t column, double t0) {
    double x = INFINITY;
    for (const auto& row : rows)
        if (row[0] >= t0) x = std::min(x, row[column]);
    return x;
}
// The column at a time that is a row.
double at(const table& rows, std::size_t column, double t) {
    double x = NAN;
    for (const auto& row : rows)
        if (std::abs(row[0] - t) < 1e-12) x = row[column];
    return x;
}

// ---- averaged cells

// 24 V, 100 uH, 47 uF and 5 ohm; the cell or the switch stands between, 0.1 ohm.
std::string buck(const std::string& cell) {
    return "eelement name=V1 type=vsrcdc p=in n=0 vdc=24\n" + cell +
           "eelement name=L1 type=l p=sw n=out l=100u\neelement name=C1 type=c p=out n=0 c=47u\n"
           "eelement name=R1 type=r p=out n=0 r=5\noutvar: v=nodev_of_out i=i_of_L1\n";
}
std::string boost(const std::string& cell) {
    return "eelement name=V1 type=vsrcdc p=in n=0 vdc=24\neelement name=L1 type=l p=in n=sw l=100u\n" + cell +
           "eelement name=C1 type=c p=out n=0 c=200u v0=38\neelement name=R1 type=r p=out n=0 r=20\n"
           "outvar: v=nodev_of_out i=i_of_L1\n";
}
const std::string duty_40 = "gelement name=D type=const y=d k=0.4\n";
// On for 8 us of 20 us.
const std::string clock_40 = "gelement name=D type=clock y=g t1=8u t2=12u dt1=1n dt2=1n\n";

// Erickson, Fundamentals of Power Electronics (2001), chapter 3: the loss resistance stands in both intervals.
const double buck_mean = 0.4 * 24 * 5 / (5 + 0.1), boost_mean = 24 * 0.6 * 20 / (0.36 * 20 + 0.1);

TEST(averaged_cells, rest_at_the_mean_of_the_converter_that_switches) {
    const std::string coarse = "back_euler=yes t_end=50m delt_const=20u";
    const std::string fine = "trapezoidal=yes event_restart=yes t_end=10m delt_const=0.2u delt_min=1e-11";
    const table a =
        rows_of(buck(duty_40 + "eelement name=S1 type=spdt_buck c=sw a=in b=0 d=d r_on=0.1\n"), "v i", coarse);
    EXPECT_REL(a.back()[1], buck_mean, 1e-6);
    EXPECT_REL(a.back()[2], buck_mean / 5, 1e-6);
    const table b = rows_of(buck(clock_40 + "eelement name=S1 type=spdt c=sw a=in b=0 g=g r_on=0.1\n"), "v i", fine);
    EXPECT_REL(mean(b, 1, 9e-3), buck_mean, 5e-4);
    EXPECT_REL(mean(b, 2, 9e-3), buck_mean / 5, 5e-4);
    const table c =
        rows_of(boost(duty_40 + "eelement name=S1 type=spdt_boost c=sw a=out b=0 d=d r_on=0.1\n"), "v i", coarse);
    EXPECT_REL(c.back()[1], boost_mean, 1e-6);
    EXPECT_REL(c.back()[2], boost_mean / 20 / 0.6, 1e-6);
    const table e = rows_of(boost(clock_40 + "eelement name=S1 type=spdt c=sw a=0 b=out g=g r_on=0.1\n"), "v i",
                            "trapezoidal=yes event_restart=yes t_end=30m delt_const=0.5u delt_min=1e-11");
    EXPECT_REL(mean(e, 1, 29e-3), boost_mean, 1e-3);
    EXPECT_REL(mean(e, 2, 29e-3), boost_mean / 20 / 0.6, 2e-3);
}

TEST(averaged_cells, have_the_transfer_function_of_the_duty_in_small_signals) {
    // Beside 1 uohm v/d = Vin/(1 + s L/R + s^2 L C), here with C = 50 uF and so the resonance at 2250.79 Hz.
    const whole_run run(
        "title: duty to output\nbegin_circuit\nrefnode 0\n"
        "eelement name=V1 type=vsrcdc p=in n=0 vdc=24\ngelement name=D type=const y=d k=0.4 a_ac=1\n"
        "eelement name=S1 type=spdt_buck c=sw a=in b=0 d=d r_on=1u\n"
        "eelement name=L1 type=l p=sw n=out l=100u i0=1.92\n"
        "eelement name=C1 type=c p=out n=0 c=50u v0=9.6\neelement name=R1 type=r p=out n=0 r=5\n"
        "outvar: v=nodev_ac_of_out i=ia_ac_of_S1\nend_circuit\n"
        "begin_solve\nsolve_type startup\nend_solve\nbegin_solve\nsolve_type ac\n"
        "vary_freq type table 10 1k 2250.79 10k\nbegin_output\nfilename ac.dat\n"
        "variables: mag_of_v mag_of_i\nend_output\nend_solve\nend_cf\n");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("ac.dat");
    ASSERT_EQ(rows.size(), 4U);
    for (const auto& row : rows) {
        const std::complex<double> s{0, 2 * std::numbers::pi * row[0]};
        const std::complex<double> den = 1.0 + s * 100e-6 / 5.0 + s * s * 100e-6 * 50e-6;
        EXPECT_REL(row[1], std::abs(24.0 / den), 1e-4);
        // Into a: D i_L + d I_L, with i_L = v (1/R + s C).
        EXPECT_REL(row[2], std::abs(0.4 * 24.0 / den * (0.2 + s * 50e-6) + 1.92), 1e-4);
    }
}

// ---- switches that conduct both ways

const std::string legs =
    "eelement name=M1 type=mosfet_switch d=in s=sw g=g r_ds_on=10m\n"
    "gelement name=INV type=not x=g y=gn\n"
    "eelement name=M2 type=mosfet_switch d=sw s=0 g=gn r_ds_on=10m\n";
std::string light_buck(const std::string& switches) {
    return "eelement name=V1 type=vsrcdc p=in n=0 vdc=24\ngelement name=CLK type=clock y=g t1=10u t2=10u dt1=1n "
           "dt2=1n\n" +
           switches +
           "eelement name=L1 type=l p=sw n=out l=100u i0=-0.48\neelement name=C1 type=c p=out n=0 c=47u v0=12\n"
           "eelement name=R1 type=r p=out n=0 r=100\noutvar: v=nodev_of_out i=i_of_L1\n";
}

TEST(synchronous_buck, has_its_mean_at_light_load_with_a_current_that_goes_negative) {
    const std::string fine = "trapezoidal=yes event_restart=yes t_end=40m delt_const=0.5u delt_min=1e-11";
    for (const std::string& switches :
         {std::string("eelement name=LEG type=leg_mosfet dp=in dn=0 a=sw g=g r_ds_on=10m t_dead=0\n"), legs,
          std::string("eelement name=S1 type=switch_bi p=in n=sw g=g r_on=10m\n"
                      "eelement name=S2 type=switch_bi p=sw n=0 g=g invert=1 r_on=10m\n")}) {
        const table rows = rows_of(light_buck(switches), "v i", fine);
        EXPECT_REL(mean(rows, 1, 39e-3), 12 * 100 / 100.01, 1e-3) << switches;
        // The ripple is (24 - 12) 10 us/100 uH = 1.2 A about 0.12 A.
        EXPECT_NEAR(lowest(rows, 2, 39e-3), 0.12 - 0.6, 0.01) << switches;
    }
    // With switches of one way the current stops at 0, and the output rises.
    const table rows = rows_of(light_buck("eelement name=S1 type=switch_g1 p=in n=sw g=g r_on=10m\n"
                                          "eelement name=D1 type=diode_r p=0 n=sw r_on=10m v_on=0\n"),
                               "v i", fine);
    EXPECT_GT(mean(rows, 1, 39e-3), 15);
    EXPECT_GT(lowest(rows, 2, 39e-3), -0.02);
}

TEST(leg, keeps_both_switches_open_for_its_dead_time_to_the_moment) {
    // The load draws 2 A, so its current goes through the lower diode then: -v_f0 - 2 A r_f.
    const table rows = rows_of(
        "eelement name=V1 type=vsrcdc p=in n=0 vdc=100\n"
        "gelement name=CLK type=pwl20 y=g n_pts=6 t1=0 y1=0 t2=10u y2=0 t3=10.01u y3=1 t4=20u y4=1 t5=20.01u y5=0 "
        "t6=40u y6=0\n"
        "eelement name=LEG type=leg_igbt dp=in dn=0 a=sw g=g t_dead=1.5u v_ce0=1 r_ce=50m v_f0=0.5 r_f=100m\n"
        "eelement name=I1 type=isrcac p=sw n=0 idc=2\n"
        "outvar: v=nodev_of_sw up=on_up_of_LEG low=on_low_of_LEG i=i_of_LEG idl=i_dlow_of_LEG\n",
        "v up low i idl", "back_euler=yes t_end=30u delt_const=0.37u delt_min=1e-11");
    const double diode = -0.5 - 2 * 0.1, on = 100 - 1 - 2 * 0.05;
    for (const auto& row : rows) {
        EXPECT_FALSE(row[2] == 1 && row[3] == 1) << row[0];
        EXPECT_NEAR(row[4], 2, 1e-9);
        // A state acts behind the point at which it changed.
        const bool is_on = row[0] > 11.51e-6 + 2e-11 && row[0] < 20.01e-6 - 1e-12;
        const bool is_off = row[0] < 11.51e-6 - 1e-12 || row[0] > 20.01e-6 + 2e-11;
        if (is_on || is_off) {
            EXPECT_NEAR(row[1], is_on ? on : diode, 1e-4) << row[0];
        }
    }
    EXPECT_EQ(at(rows, 3, 10e-6), 1);
    EXPECT_EQ(at(rows, 3, 10.01e-6), 0);  // both ends are rows
    EXPECT_EQ(at(rows, 2, 11.51e-6), 1);
    EXPECT_EQ(at(rows, 2, 20.01e-6), 0);
    EXPECT_EQ(at(rows, 3, 21.51e-6), 1);
    double last_off = 0;
    for (const auto& row : rows)
        if (row[0] < 15e-6 && row[2] == 0) last_off = row[0];
    EXPECT_LT(last_off, 11.51e-6);
}

// ---- commutation with inductance

TEST(leg, lets_the_current_of_an_inductor_decay_through_its_diode) {
    // Upper switch from 0 on: i = (V - v_ce0)/R (1 - exp(-t R/L)) with R = 1 + r_ce; then through the lower diode.
    const table rows = rows_of(
        "eelement name=V1 type=vsrcdc p=in n=0 vdc=100\n"
        "gelement name=CLK type=pwl20 y=g n_pts=4 t1=0 y1=1 t2=100u y2=1 t3=100.001u y3=0 t4=1 y4=0\n"
        "eelement name=LEG type=leg_igbt dp=in dn=0 a=sw g=g t_dead=1u v_ce0=1 r_ce=50m v_f0=0.5 r_f=100m\n"
        "eelement name=L1 type=l p=sw n=m l=1m\neelement name=R1 type=r p=m n=0 r=1\noutvar: i=i_of_L1 "
        "il=i_low_of_LEG\n",
        "i il", "trapezoidal=yes event_restart=yes t_end=400u delt_const=0.1u delt_min=1e-12");
    const double i1 = 99 / 1.05 * (1 - std::exp(-100.001e-6 * 1.05 / 1e-3));
    EXPECT_REL(at(rows, 1, 100.001e-6), i1, 1e-5);  // the gate falls for 1 ns, in which 0.1 mA are gained
    const double drop = 0.5 / 1.1, t = 299.999e-6;
    EXPECT_REL(rows.back()[1], (i1 + drop) * std::exp(-t * 1.1 / 1e-3) - drop, 1e-5);
    EXPECT_NEAR(rows.back()[2], 0, 1e-5);  // the lower IGBT is closed and has no part in it
}

// A star of r and l between the phases a, b and c, its point held at 1 Mohm; currents ia, ib, ic.
std::string star(const std::string& r, const std::string& l, const std::array<std::string, 3>& i0 = {"0", "0", "0"}) {
    const std::string phases = "abc";
    std::string load;
    for (std::size_t k = 0; k < 3; ++k) {
        const std::string x(1, phases[k]);
        load += "eelement name=L" + x + " type=l p=" + x + " n=m" + x + " l=" + l + " i0=" + i0[k] +
                "\neelement name=R" + x + " type=r p=m" + x + " n=star r=" + r + "\n";
    }
    return load + "eelement name=RS type=r p=star n=0 r=1M\noutvar: ia=i_of_La ib=i_of_Lb ic=i_of_Lc\n";
}
std::string gate(const std::string& y, double on, double off, double t0) {
    return "gelement name=G" + y + " type=clock y=" + y + " t1=" + number(on) + " t2=" + number(off) +
           " dt1=1n dt2=1n t0=" + number(t0) + "\n";
}
const char* const hardly_a_drop_mosfet = "type=bridge_3ph_mosfet r_ds_on=1u r_f=1u v_f=0 ga=sa gb=sb gc=sc";
const char* const hardly_a_drop_igbt = "type=bridge_3ph_igbt r_ce=1u v_ce0=0 r_f=1u v_f0=0 ga=sa gb=sb gc=sc";

TEST(bridges_of_three_phases, drive_the_closed_form_of_six_steps_through_an_inductive_star) {
    // Each switch is closed for half a period of 6 ms; switch k begins (k - 1) ms behind switch 1. Where commands of
    // legs drive the bridge, 1 us of dead time changes nothing: the diode of the other side takes the current.
    std::string six, three;
    for (int k = 1; k <= 6; ++k) six += gate("s" + std::to_string(k), 3e-3, 3e-3, (k - 1) * 1e-3);
    for (int k = 0; k < 3; ++k) three += gate("s" + std::string(1, "abc"[k]), 3e-3, 3e-3, 2 * k * 1e-3);
    // Phase a has 1, 2, 1 thirds of 300 V for 1 ms each, then the same negative; tau is 1 ms.
    const double fade = std::exp(-1.0);
    std::array<double, 4> i{};
    i[0] = -50 * (1 - fade) * (fade * fade + 2 * fade + 1) / (1 + fade * fade * fade);
    for (std::size_t k = 0; k < 3; ++k) i[k + 1] = i[k] * fade + (k == 1 ? 100 : 50) * (1 - fade);
    EXPECT_NEAR(i[3], -i[0], 1e-12);
    for (const std::string& bridge :
         {six + "eelement name=B1 type=bridge_3ph_1 g1=s1 g2=s2 g3=s3 g4=s4 g5=s5 g6=s6 r_on=1u r_d=1u v_d=0",
          three + "eelement name=B1 t_dead=1u " + hardly_a_drop_mosfet,
          three + "eelement name=B1 t_dead=1u " + hardly_a_drop_igbt}) {
        const table rows = rows_of(
            "eelement name=V1 type=vsrcdc p=dc n=0 vdc=300\n" + bridge + " dp=dc dn=0 a=a b=b c=c\n" + star("2", "2m"),
            "ia ib ic", "trapezoidal=yes event_restart=yes t_end=36m delt_const=5u delt_min=1e-11");
        for (std::size_t k = 0; k < 4; ++k) {
            const double t = 30e-3 + 1e-3 * static_cast<double>(k);
            double nearest = 1, got = NAN;
            for (const auto& row : rows)
                if (std::abs(row[0] - t) < nearest) nearest = std::abs(row[0] - t), got = row[1];
            EXPECT_NEAR(got, i[k], 0.02) << k << bridge;
        }
        for (const auto& row : rows) EXPECT_NEAR(row[1] + row[2] + row[3], 0, 1e-3) << bridge;
    }
}

TEST(bridges_of_three_phases, lose_their_dead_time_in_the_direction_of_each_current) {
    // Shares 0.7, 0.3 and 0.3 of 100 us. The leg whose current flows out is high for t_dead less in a period, the
    // others for t_dead more (Holmes and Lipo, Pulse Width Modulation for Power Converters, 2003): between a and b
    // there are 300 V (0.4 - 2 t_dead/T), two thirds of it over 10 ohm.
    for (const char* bridge : {hardly_a_drop_mosfet, hardly_a_drop_igbt})
        for (const double t_dead : {0.0, 2e-6}) {
            const double i = 300 * (0.4 - 2 * t_dead / 100e-6) * 2 / 3 / 10;
            const table rows =
                rows_of("eelement name=V1 type=vsrcdc p=dc n=0 vdc=300\n" + gate("sa", 70e-6, 30e-6, 0) +
                            gate("sb", 30e-6, 70e-6, 11e-6) + gate("sc", 30e-6, 70e-6, 23e-6) + "eelement name=B1 " +
                            bridge + " t_dead=" + number(t_dead) + " dp=dc dn=0 a=a b=b c=c\n" +
                            star("10", "20m", {number(i), number(-i / 2), number(-i / 2)}),
                        "ia ib ic", "trapezoidal=yes event_restart=yes t_end=12m delt_const=1u delt_min=1e-11");
            EXPECT_REL(mean(rows, 1, 10e-3), i, 1e-3) << bridge << t_dead;
            EXPECT_REL(mean(rows, 2, 10e-3), -i / 2, 1e-3) << bridge << t_dead;
        }
}

// ---- thyristor

TEST(thyristor_g_2, that_is_fired_too_late_never_latches) {
    // 50 Hz, 100 V; fired for 0.2 ms. Behind 10 ms the voltage is negative; 9.9 ms leaves too little current by the
    // end.
    const auto run = [](double t_fire) {
        return rows_of(
            "eelement name=V1 type=vsrcac p=in n=0 a=100 f_hz=50\ngelement name=P type=pwl20 y=g n_pts=6 t1=0 "
            "y1=0 t2=" +
                number(t_fire) + " y2=0 t3=" + number(t_fire + 1e-6) + " y3=1 t4=" + number(t_fire + 2e-4) +
                " y4=1 t5=" + number(t_fire + 2.01e-4) +
                " y5=0 t6=1 y6=0\n"
                "eelement name=T1 type=thyristor_g_2 p=in n=k g=g i_h=0.1 v_on=1\n"
                "eelement name=L1 type=l p=k n=m l=10m\neelement name=R1 type=r p=m n=0 r=10\n"
                "outvar: i=i_of_T1 on=on_of_T1\n",
            "i on", "back_euler=yes t_end=20m delt_const=10u delt_min=1e-10");
    };
    for (const auto& row : run(12e-3)) {
        EXPECT_LT(std::abs(row[1]), 1e-3);
        EXPECT_EQ(row[2], 0);
    }
    const table late = run(9.8e-3);
    EXPECT_EQ(late.back()[2], 0);
    for (const auto& row : late) EXPECT_LT(row[1], 0.15);
    double highest = 0;
    for (const auto& row : run(5e-3)) highest = std::max(highest, row[1]);
    EXPECT_GT(highest, 3);  // in time it conducts
}

// ---- losses and temperatures

TEST(loss_probe, has_the_energies_of_a_clamped_inductive_load) {
    // 10 A and 400 V; on for 40 % of 100 us. Ten periods: ten times on and ten times off at 10 A, r i^2 in between.
    const table rows = rows_of(
        "eelement name=V1 type=vsrcdc p=dc n=0 vdc=400\ngelement name=CLK type=clock y=g t1=40u t2=60u dt1=1n dt2=1n "
        "t0=10u\n"
        "gmelement name=M1 type=loss_probe p=dc d=d n=sw y=heat i1=20 e_on1=60u e_off1=40u v_ref=400 t_avg=100u\n"
        "gelement name=H type=thermal_foster x=heat y=tj r1=1 tau1=100m t_amb=300\n"
        "eelement name=Q1 type=mosfet_switch d=d s=sw g=g r_ds_on=50m\n"
        "eelement name=D1 type=diode_r p=0 n=sw r_on=1m v_on=0\n"
        "eelement name=I1 type=isrcac p=sw n=0 idc=10\n"
        "outvar: on=e_on_of_M1 off=e_off_of_M1 cond=e_cond_of_M1 n=n_sw_of_M1 p=var_of_heat v=v_of_M1 i=i_of_M1\n",
        "on off cond n p v i", "back_euler=yes t_end=1005u delt_const=1u delt_min=1e-11");
    const auto& end = rows.back();
    EXPECT_EQ(end[4], 20);
    EXPECT_REL(end[1], 10 * 30e-6, 1e-3);
    EXPECT_REL(end[2], 10 * 20e-6, 1e-3);
    const double cond = 0.05 * 100 * 40e-6;  // of a period; 400 V at r_off give 0.16 W beside it
    EXPECT_REL(end[3], 10 * (cond + 400 * 400 * 2e-6 * 60e-6), 5e-3);
    EXPECT_REL(end[5], (50e-6 + cond + 400 * 400 * 2e-6 * 60e-6) / 100e-6, 5e-3);
}

const double p_heat = 80;  // W, a step at 0
table temperatures(const std::string& chains, const std::string& variables, double t_end, double h) {
    return rows_of("gelement name=P type=const y=p k=80\n" + chains, variables,
                   "trapezoidal=yes t_end=" + number(t_end) + " delt_const=" + number(h));
}

TEST(thermal_chains, of_foster_follow_the_sum_of_their_exponentials) {
    const table rows = temperatures(
        "gelement name=H type=thermal_foster x=p y=t r1=0.1 tau1=0.05 r2=0.3 tau2=0.2 r3=0.2 tau3=1 t_amb=313.15\n"
        "outvar: t=var_of_t\n",
        "t", 1, 1e-3);
    for (const double t : {0.05, 0.2, 1.0})
        EXPECT_NEAR(at(rows, 1, t),
                    313.15 + p_heat * (0.1 * (1 - std::exp(-t / 0.05)) + 0.3 * (1 - std::exp(-t / 0.2)) +
                                       0.2 * (1 - std::exp(-t))),
                    2e-3);
}

TEST(thermal_chains, of_both_forms_are_equal_with_one_stage_and_with_two_of_the_same_impedance) {
    // Poles of 1/(s c1 + 1/(r1 + 1/(s c2 + 1/r2))), and its residues there.
    const double r1 = 0.2, c1 = 0.5, r2 = 0.4, c2 = 1;
    const double a = r1 * c1 * r2 * c2, b = c1 * (r1 + r2) + r2 * c2;
    const double root = std::sqrt(b * b - 4 * a);
    double r[2], tau[2];
    for (int k = 0; k < 2; ++k) {
        const double s = (-b + (k == 0 ? root : -root)) / (2 * a);
        tau[k] = -1 / s;
        r[k] = (r1 + r2 + s * r1 * r2 * c2) / (2 * a * s + b) * tau[k];
    }
    EXPECT_NEAR(r[0] + r[1], r1 + r2, 1e-12);
    const table rows = temperatures(
        "gelement name=F1 type=thermal_foster x=p y=f1 r1=0.5 tau1=0.1\n"
        "gelement name=C1 type=thermal_cauer x=p y=c1 r1=0.5 c1=0.2\n"
        "gelement name=F2 type=thermal_foster x=p y=f2 r1=" +
            number(r[0]) + " tau1=" + number(tau[0]) + " r2=" + number(r[1]) + " tau2=" + number(tau[1]) +
            "\ngelement name=C2 type=thermal_cauer x=p y=c2 n_stages=2 r1=0.2 c1=0.5 r2=0.4 c2=1\n"
            "outvar: f1=var_of_f1 c1=var_of_c1 f2=var_of_f2 c2=var_of_c2\n",
        "f1 c1 f2 c2", 2, 2e-3);
    for (const auto& row : rows) {
        EXPECT_NEAR(row[1], row[2], 1e-6 * row[1]);
        EXPECT_NEAR(row[3], row[4], 1e-6 * row[3]);
    }
    EXPECT_REL(rows.back()[1], 300.15 + 40, 1e-6);
}

TEST(thermal_chains, are_at_rest_under_their_power_in_dc) {
    const whole_run run(deck_text{
        "gelement name=P type=const y=p k=80\ngelement name=F type=thermal_foster x=p y=f r1=0.1 r2=0.3 r3=0.2\n"
        "gelement name=C type=thermal_cauer x=p y=c n_stages=3 r1=0.1 r2=0.3 r3=0.2\noutvar: f=var_of_f c=var_of_c\n",
        "f c",
        {"solve_type dc\n"}}.str());
    EXPECT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("out1.dat");
    ASSERT_EQ(rows.size(), 1U);
    for (const double t : rows[0]) EXPECT_REL(t, 300.15 + 48, 1e-6);
}

}  // namespace
