// The compact power MOSFET in whole runs: characteristic, heat, gate charge, small signals. What is expected follows
// from laws and from formulas of their own here.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "whole_run.h"

namespace {
const double pi = std::acos(-1.0);
const std::string accurate = "method: chk_rhs2=yes norm_2=1e-11\n";
std::string device(const std::string& more = "") {
    return "eelement name=M1 type=cool_650_j2_var d=d g=g s=0 tc=case t0=0" + more + "\n";
}
std::string at_case(double t) { return "eelement name=VC type=vsrcdc p=case n=0 vdc=" + std::to_string(t) + "\n"; }
// Sources on drain and gate, their small signals a_d and a_g.
std::string driven(double vd, double vg, double a_d = 0, double a_g = 0) {
    return "eelement name=VD type=vsrcdc p=d n=0 vdc=" + std::to_string(vd) + " a_ac=" + std::to_string(a_d) +
           "\neelement name=VG type=vsrcdc p=g n=0 vdc=" + std::to_string(vg) + " a_ac=" + std::to_string(a_g) + "\n";
}
table rows_of(const deck_text& deck, const std::string& file = "out1.dat") {
    const whole_run run(deck.str());
    EXPECT_FALSE(run.stopped) << run.text;
    return run.rows(file);
}
constexpr double r_th = 0.1 + 0.2;  // K/W, the default's two stages

// Charge between drain and gate by the trapezia of the capacitance.
double charge_dg(double v) {
    const double c_0 = 2e-9, c_res = 5e-12, low = std::min(v, 0.0), mid = std::clamp(v, 0.0, 40.0);
    const double c_mid = c_0 + (c_res - c_0) * mid / 40;
    return c_0 * low + 0.5 * (c_0 + c_mid) * mid + c_res * std::max(v - 40, 0.0);
}
}  // namespace

TEST(compact_mosfet_runs, draw_the_current_that_drift_and_channel_in_series_allow_at_their_temperature) {
    const table rows = rows_of({driven(5, 10) + at_case(320) + device() + "outvar: i=id_of_M1 tj=tj_of_M1 p=p_of_M1\n",
                                "vdc_of_VD vdc_of_VG i tj p",
                                {"solve_type dc\n" + accurate +
                                 "vary_parm vdc_of_VG type table 3 5 8 12\n"
                                 "vary_parm vdc_of_VD type table -0.3 0.1 1 4 15\n"}});
    ASSERT_EQ(rows.size(), 20u);
    for (const auto& row : rows) {
        const double vd = row[0], vg = row[1], i = row[2], t = row[3];
        EXPECT_NEAR(row[4], vd * i, 1e-6 * std::abs(vd * i) + 1e-12);
        EXPECT_NEAR(t, 320 + r_th * vd * i, 1e-4);
        const double v = vd - i * 0.04 * (0.2 + 0.8 * std::pow(t / 300.15, 2.4));  // behind the drift region
        const double over = 0.1 * std::log1p(std::exp((vg - 3.5 + 7e-3 * (t - 300.15)) / 0.1));
        const double sat = 120 * std::pow(t / 300.15, -1.5) * std::pow(over / 6, 2 - 0.03 * (over - 6));
        const double th = std::tanh(v / (0.5 + 0.35 * over));
        const double is_t =
            1e-11 * std::pow(t / 300.15, 3 / 1.1) * std::exp(1.11 / 8.617087e-5 * (1 / 300.15 - 1 / t));  // V/K of k/q
        const double diode = is_t * std::expm1(-v / (1.1 * 8.617087e-5 * t));
        EXPECT_NEAR(i, sat * th * (1 + 1e-3 * v * th) - diode, 1e-5 * std::abs(i) + 1e-9) << vd << ' ' << vg;
    }
}

TEST(compact_mosfet_runs, have_an_on_resistance_that_rises_with_the_case_temperature) {
    const table rows = rows_of({driven(0.1, 12) + at_case(300) + device() + "outvar: i=id_of_M1\n",
                                "vdc_of_VC i",
                                {"solve_type dc\n" + accurate + "vary_parm vdc_of_VC type table 250 300 350 400\n"}});
    ASSERT_EQ(rows.size(), 4u);
    for (std::size_t k = 1; k < rows.size(); ++k) EXPECT_GT(0.1 / rows[k][1], 1.15 * 0.1 / rows[k - 1][1]);
}

// A current into the drain of a device that is on, for ten time constants of the case.
// A current into the drain of a device that is on, started in start-up at the case temperature; ten times the slowest
// time constant, 0.3 K/W times 22 mJ/K at most.
TEST(compact_mosfet_runs, end_at_the_case_temperature_plus_power_times_thermal_resistance) {
    const table rows =
        rows_of({"eelement name=I1 type=isrcac p=0 n=d idc=20 a=0\neelement name=VG type=vsrcdc p=g n=0 vdc=12\n" +
                     at_case(330) + device(" tj0=330 t10=330 vgs0=12") + "outvar: tj=tj_of_M1 p=p_of_M1\n",
                 "tj p",
                 {"solve_type startup\n" + accurate,
                  "solve_type trns\ninitial_sol previous\n"
                  "method: trapezoidal=yes chk_rhs2=yes norm_2=1e-11 t_end=66m delt_const=50u itmax_trns=100000\n"}},
                "out2.dat");
    ASSERT_GT(rows.size(), 1000u);
    EXPECT_NEAR(rows[0][1], 330, 0.5);
    for (std::size_t k = 1; k < rows.size(); ++k) EXPECT_GE(rows[k][1], rows[k - 1][1] - 1e-6);
    EXPECT_GT(rows.back()[2], 1.03 * rows[1][2]);  // the warmer, the more power
    EXPECT_GT(rows.back()[1], 335);
    EXPECT_NEAR(rows.back()[1], 330 + r_th * rows.back()[2], 1e-3);
}

TEST(compact_mosfet_runs, balance_the_charge_of_a_gate_that_is_driven_by_a_current) {
    // 10 mA into the gate; 400 V over 40 ohm at the drain. Thresholds, plateau and end follow by themselves.
    const table rows = rows_of({"eelement name=VD type=vsrcdc p=dd n=0 vdc=400\neelement name=RD type=r p=dd n=d r=40\n"
                                "eelement name=I1 type=ipulse p=0 n=g i1=0 i2=10m td=1u tr=1n tf=1n pw=100u per=1\n"
                                "eelement name=RG type=r p=g n=0 r=1G\n" +
                                    at_case(300.15) + device() + "outvar: vds=vds_of_M1 vgs=vgs_of_M1 ig=ig_of_M1\n",
                                "vds vgs ig",
                                {"solve_type dc\n" + accurate,
                                 "solve_type trns\ninitial_sol previous\nmethod: trapezoidal=yes t_end=12u "
                                 "delt_const=2n itmax_trns=100000\n"}},
                               "out2.dat");
    ASSERT_GT(rows.size(), 1000u);
    double given = 0;
    for (std::size_t k = 1; k < rows.size(); ++k) {
        given += 0.5 * (rows[k][3] + rows[k - 1][3]) * (rows[k][0] - rows[k - 1][0]);
        const double vgs = rows[k][2], vds = rows[k][1];
        const double held = 3e-9 * (vgs - rows[0][2]) - charge_dg(vds - vgs) + charge_dg(rows[0][1] - rows[0][2]);
        EXPECT_NEAR(given, held, 2e-4 * 100e-9) << rows[k][0];
    }
    EXPECT_NEAR(given, 110e-9, 1e-9);
    EXPECT_GT(rows[0][1], 399);
    EXPECT_LT(rows.back()[1], 1.5);
}

TEST(compact_mosfet_runs, have_small_signals_that_are_the_slopes_of_the_dc_result) {
    for (const double vd : {0.4, 3.0, 20.0, -0.4}) {
        const auto current = [&](double at_d, double at_g) {
            return rows_of({driven(at_d, at_g) + at_case(310) + device() + "outvar: i=id_of_M1\n",
                            "i",
                            {"solve_type dc\n" + accurate}})
                .at(0)
                .at(0);
        };
        // Rows have 7 digits: a wide step where the curve is flat.
        const double h_d = vd > 10 ? 0.5 : 0.02, h_g = 0.02;
        const double slope_d = (current(vd + h_d, 7) - current(vd - h_d, 7)) / (2 * h_d);
        const double slope_g = (current(vd, 7 + h_g) - current(vd, 7 - h_g)) / (2 * h_g);
        const auto small = [&](double a_d, double a_g, const std::string& freq) {
            const whole_run run("title: t\nbegin_circuit\nrefnode 0\n" + driven(vd, 7, a_d, a_g) + at_case(310) +
                                device() + "outvar: i=id_ac_of_M1 ig=ig_ac_of_M1\nend_circuit\n" +
                                "begin_solve\nsolve_type dc\n" + accurate + "end_solve\nbegin_solve\nsolve_type ac\n" +
                                "set_freq " + freq + "\nbegin_output\nfilename o.dat\n" +
                                "variables: mag_of_i phase_of_i mag_of_ig\nend_output\nend_solve\nend_cf\n");
            EXPECT_FALSE(run.stopped) << run.text;
            return run.rows("o.dat").at(0);
        };
        const auto expect_slope = [&](const std::vector<double>& row, double slope) {
            EXPECT_NEAR(row[1], std::abs(slope), 2e-3 * std::abs(slope)) << vd;
            EXPECT_NEAR(std::abs(row[2]), slope < 0 ? 180 : 0, 0.1) << vd;
        };
        expect_slope(small(1, 0, "1u"), slope_d);  // slow enough for the heat to follow
        expect_slope(small(0, 1, "1u"), slope_g);
        // With the drain held, the gate sees its resistance and the capacitances of gate and drain in series with it.
        const double c_gd = 2e-9 - (2e-9 - 5e-12) * std::clamp(vd - 7, 0.0, 40.0) / 40, w = 2 * pi * 1e6;
        EXPECT_NEAR(small(0, 1, "1M")[3], 1 / std::hypot(1.5, 1 / (w * (3e-9 + c_gd))), 1e-5) << vd;
    }
}
