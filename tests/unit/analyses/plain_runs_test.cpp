// Whole runs of reactances by other words, of controlled sources, node logic, comparators, solar modules and batteries,
// held against closed forms and independent integrations.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <functional>

#include "whole_run.h"

namespace {

const double pi = std::acos(-1.0);

// Rows of the last block.
table rows_of(const std::string& circuit, const std::string& variables, const std::vector<std::string>& blocks) {
    const deck_text deck{circuit, variables, blocks};
    const whole_run run(deck.str());
    EXPECT_FALSE(run.stopped) << run.text;
    return run.rows("out" + std::to_string(blocks.size()) + ".dat");
}
// Behind a start-up, by the trapezoidal rule in steps of h.
table in_time(const std::string& circuit, const std::string& variables, const std::string& t_end, const std::string& h,
              const std::string& words = "trapezoidal=yes") {
    return rows_of(circuit, variables,
                   {"solve_type startup\n", "solve_type trns\ninitial_sol previous\nmethod: " + words +
                                                " t_end=" + t_end + " delt_const=" + h + "\n"});
}
void expect_curve(const table& rows, std::size_t column, const std::function<double(double)>& exact, double tolerance) {
    ASSERT_GT(rows.size(), 10u);
    for (const auto& row : rows) EXPECT_NEAR(row[column], exact(row[0]), tolerance) << "t=" << row[0];
}

// ---- reactances

// 10 V switched onto 1 kohm and 1 uF; 1 kHz: 159.155 ohm.
TEST(reactances_in_time, charge_through_a_resistor_as_their_value_says) {
    const std::string source = "eelement name=V1 type=vsrcdc p=in n=0 vdc=10\n";
    const std::string rc = source + "eelement name=R1 type=r p=in n=a r=1k\n";
    const auto charging = [](double t) { return 10 * (1 - std::exp(-t / 1e-3)); };
    for (const char* c : {"type=c_z z=159.154943 f_hz=1k", "type=c_pu c_pu=0.1 z_base=100 w_base=1k"})
        expect_curve(in_time(rc + "eelement name=C1 p=a n=0 " + c + "\noutvar: v=v_of_C1\n", "v", "3m", "2u"), 1,
                     charging, 2e-6);
    const std::string pair =
        rc +
        "eelement name=C1 type=c_pu_sync p1=b n1=0 p2=a n2=0 c_pu=0.1 z_base=100 w_base=1k indx=2\n"
        "eelement name=R2 type=r p=b n=0 r=1\noutvar: v=v_of_C1 i1=i1_of_C1 i2=i2_of_C1\n";
    const table rows = in_time(pair, "v i1 i2", "3m", "2u");
    expect_curve(rows, 1, charging, 2e-6);
    expect_curve(
        rows, 2, [](double) { return 0.0; }, 0);
    expect_curve(
        rows, 3, [](double t) { return 10e-3 * std::exp(-t / 1e-3); }, 2e-8);
}

TEST(reactances_in_time, carry_the_current_of_a_resistor_and_an_inductor) {
    const std::string rl = "eelement name=V1 type=vsrcdc p=in n=0 vdc=10\neelement name=R1 type=r p=in n=a r=100\n";
    const auto rising = [](double t) { return 0.1 * (1 - std::exp(-t / 1e-3)); };
    for (const char* l : {"type=l_z z=628.3185307 f_hz=1k p=a n=0", "type=l_pu l_pu=1 z_base=100 w_base=1k p=a n=0"})
        expect_curve(in_time(rl + "eelement name=L1 " + l + "\noutvar: i=i_of_L1\n", "i", "3m", "2u"), 1, rising, 2e-8);
    const std::string pair = rl +
                             "eelement name=L1 type=l_pu_sync p1=a n1=0 p2=b n2=0 l_pu=1 z_base=100 w_base=1k indx=1\n"
                             "eelement name=R2 type=r p=b n=0 r=1\noutvar: i=i1_of_L1 i2=i2_of_L1 l=l_of_L1\n";
    const table rows = in_time(pair, "i i2 l", "3m", "2u");
    expect_curve(rows, 1, rising, 2e-8);
    expect_curve(
        rows, 2, [](double) { return 0.0; }, 0);
    expect_curve(
        rows, 3, [](double) { return 0.1; }, 0);
}

// The series arm alone: |i| = (v/r_s) / sqrt(1 + q^2 (f/f_s - f_s/f)^2).
TEST(crystal_runs, has_resonance_and_bandwidth_in_small_signals) {
    const double f_s = 1e6, q = 1e4;
    const std::string words = " f_s=1M q=10k r_s=100\n";
    const table rows = rows_of(
        "eelement name=V1 type=vsrcac p=in n=0 a=0 a_ac=1\neelement name=R1 type=r p=in n=a r=100\n"
        "eelement name=L1 type=l_crystal p=a n=b" +
            words + "eelement name=C1 type=c_crystal p=b n=0" + words + "outvar: i=i_ac_of_L1\n",
        "mag_of_i phase_of_i", {"solve_type ac\nvary_freq from 999.9k to 1000.1k type linear n_points 201\n"});
    ASSERT_EQ(rows.size(), 201u);
    for (const auto& row : rows) {
        const double x = q * (row[0] / f_s - f_s / row[0]);
        EXPECT_NEAR(row[1], 0.01 / std::sqrt(1 + x * x), 1e-6) << row[0];
    }
    EXPECT_NEAR(rows[100][1], 0.01, 1e-8);
    EXPECT_NEAR(rows[50][1], 0.01 / std::sqrt(2), 2e-6);  // half of the bandwidth of 100 Hz below
    EXPECT_NEAR(rows[50][2], 45, 0.02);
    EXPECT_NEAR(rows[150][2], -45, 0.02);
}

// A ramp to 3 V at 1 ms; from then on the capacitor, charged to 1 V, hangs at 1 kohm of a source of 3 V.
TEST(c_delay_runs, carries_nothing_before_its_time_and_charges_from_its_own_voltage_behind_it) {
    const table rows = in_time(
        "eelement name=V1 type=vsrcdc p=in n=0 vdc=3\neelement name=R1 type=r p=in n=a r=1k\n"
        "eelement name=C1 type=c_delay p=a n=0 c=1u t_delay=1.0003m v0=1\noutvar: v=nodev_of_a i=i_of_C1\n",
        "v i", "4m", "2u", "trapezoidal=yes event_restart=yes delt_min=1n");
    expect_curve(
        rows, 1, [](double t) { return t <= 1.0003e-3 + 1e-12 ? 3 : 3 - 2 * std::exp(-(t - 1.0003e-3) / 1e-3); }, 5e-6);
    bool hit = false;
    for (const auto& row : rows) hit = hit || std::fabs(row[0] - 1.0003e-3) < 1e-12;
    EXPECT_TRUE(hit);
}

// dpsi/dt = u - r psi/l(th), th = 2000 t, by Runge and Kutta in steps of 10 ns.
TEST(l_theta_runs, has_the_flux_of_a_turning_angle) {
    const auto slope = [](double t, double psi) { return 5 - 2 * psi / (10e-3 + 4e-3 * std::cos(2 * 2000 * t + 0.5)); };
    const table rows = in_time(
        "gelement name=T1 type=pwl20 y=th n_pts=2 t1=0 y1=0 t2=10m y2=20\n"
        "eelement name=V1 type=vsrcdc p=in n=0 vdc=5\neelement name=R1 type=r p=in n=a r=2\n"
        "eelement name=L1 type=l_theta p=a n=0 th=th l0=10m l2=4m ph=0.5 i0=1.5\n"
        "outvar: i=i_of_L1 psi=psi_of_L1 l=l_of_L1\n",
        "psi i l", "10m", "1u");
    ASSERT_GT(rows.size(), 9000u);
    const double h = 1e-8;
    double t = 0, psi = 1.5 * (10e-3 + 4e-3 * std::cos(0.5));
    for (const auto& row : rows) {
        const long n = std::lround((row[0] - t) / h);
        for (long k = 0; k < n; ++k, t += h) {
            const double k1 = slope(t, psi), k2 = slope(t + h / 2, psi + h / 2 * k1),
                         k3 = slope(t + h / 2, psi + h / 2 * k2), k4 = slope(t + h, psi + h * k3);
            psi += h / 6 * (k1 + 2 * k2 + 2 * k3 + k4);
        }
        t = row[0];
        EXPECT_NEAR(row[1], psi, 2e-8) << t;
        EXPECT_NEAR(row[2] * row[3], row[1], 2e-8) << t;
    }
}

// ---- controlled sources

TEST(ccvs_ddt1_runs, gives_the_slope_of_a_sine_and_a_mutual_inductance) {
    // 2 A of 50 Hz: k w 2 cos(w t).
    const double w = 2 * pi * 50;
    const table rows = in_time(
        "eelement name=I1 type=isrcac p=0 n=a a=2 f_hz=50\neelement name=A1 type=ammeter p=a n=0\n"
        "eelement name=H1 type=ccvs_ddt1 p=h n=0 br=A1 k=10m\neelement name=R1 type=r p=h n=0 r=1k\noutvar: "
        "v=nodev_of_h\n",
        "v", "40m", "5u", "gear2=yes");
    for (const auto& row : rows)
        if (row[0] > 20e-6) {
            EXPECT_NEAR(row[1], 10e-3 * w * 2 * std::cos(w * row[0]), 1e-4) << row[0];
        }
    const table ac = rows_of(
        "eelement name=V1 type=vsrcac p=a n=0 a=0 a_ac=3\neelement name=L1 type=l p=a n=b l=1m\n"
        "eelement name=R0 type=r p=b n=0 r=1\n"
        "eelement name=H1 type=ccvs_ddt1 p=h n=0 br=L1 k=10m\neelement name=R1 type=r p=h n=0 r=1k\n"
        "outvar: v=nodev_ac_of_h\n",
        "mag_of_v phase_of_v", {"solve_type ac\nvary_freq from 1 to 10k type log n_points 9\n"});
    ASSERT_EQ(ac.size(), 9u);
    for (const auto& row : ac) {
        const std::complex<double> s(0, 2 * pi * row[0]), v = 3.0 * s * 10e-3 / (1.0 + s * 1e-3);
        EXPECT_NEAR(row[1], std::abs(v), 1e-6 * std::abs(v));
        EXPECT_NEAR(row[2], std::arg(v) * 180 / pi, 1e-4);
    }
}

// Two branches of 1 A and 3 A: all sums by hand. In small signals alike.
TEST(controlled_by_several_runs, add_what_they_sense_at_rest_and_in_small_signals) {
    const std::string circuit =
        "eelement name=V1 type=vsrcac p=a n=0 a=0 vdc=6 a_ac=6\neelement name=R1 type=r p=a n=b r=6\n"
        "eelement name=A1 type=ammeter p=b n=0\neelement name=R2 type=r p=a n=c r=1\neelement name=A2 type=ammeter p=c "
        "n=d\n"
        "eelement name=R3 type=r p=d n=0 r=1\n"
        "eelement name=E1 type=vcvs_2v p=e n=0 cp=a cn=d cp2=d cn2=0 k1=2 k2=-0.5\neelement name=RE type=r p=e n=0 "
        "r=1\n"
        "eelement name=H1 type=ccvs_2 p=h n=0 br1=A1 br2=A2 rm1=10 rm2=-4\neelement name=RH type=r p=h n=0 r=1\n"
        "eelement name=F1 type=cccs_5 p=0 n=f br1=A1 br2=A2 br3=H1 br4=A1 br5=E1 k1=1 k2=2 k3=0.5 k4=10 k5=-1\n"
        "eelement name=RF type=r p=f n=0 r=2\n";
    // e = 2 (6 - 3) - 0.5 3 = 4.5, h = 10 - 12 = -2; currents into H1 and E1: 2 and -4.5; f = 2 (1 + 6 + 1 + 10 + 4.5).
    EXPECT_EQ(rows_of(circuit + "outvar: e=nodev_of_e h=nodev_of_h f=nodev_of_f\n", "e h f", {"solve_type dc\n"}),
              (table{{4.5, -2, 45}}));
    const table ac = rows_of(circuit + "outvar: e=nodev_ac_of_e h=nodev_ac_of_h f=nodev_ac_of_f\n",
                             "mag_of_e phase_of_e mag_of_h mag_of_f phase_of_f",
                             {"solve_type ac\nvary_freq from 1k to 10k type log n_points 2\n"});
    ASSERT_EQ(ac.size(), 2u);
    for (const auto& row : ac)
        EXPECT_EQ((std::vector<double>{row.begin() + 1, row.end()}), (std::vector<double>{4.5, 0, 2, 45, 0}));
}

// The explicit side has steps of 0.5 ms, between which its variables stand.
TEST(vsrc_x_runs, follows_an_explicit_block_in_time) {
    const table rows = rows_of(
        "xelement name=S1 type=srcac y=s a=2 f_hz=50\neelement name=V1 type=vsrc_x p=a n=0 x=s k=1.5\n"
        "eelement name=R1 type=r p=a n=0 r=10\noutvar: v=nodev_of_a i=i_of_V1\n",
        "v i",
        {"solve_type trns\nmethod: back_euler=yes t_end=20m delt_const=0.1m delt_max=0.1m delt_const_x=0.5m "
         "forward_euler=yes\n"});
    ASSERT_GT(rows.size(), 200u);
    for (const auto& row : rows) {
        const double t_x = std::floor(row[0] / 0.5e-3 + 1e-6) * 0.5e-3;
        EXPECT_NEAR(row[1], 3 * std::sin(2 * pi * 50 * t_x), 1e-6) << row[0];
        EXPECT_NEAR(row[2], -row[1] / 10, 1e-7);
    }
}

// ---- node logic

// A full adder of two half adders, over all inputs.
TEST(node_logic, adds_three_bits_at_rest) {
    const auto gate = [](const char* name, const char* type, const char* a, const char* b, const char* y) {
        return std::string("eelement name=") + name + " type=" + type + " a=" + a + " b=" + b + " y=" + y + '\n';
    };
    const std::string inputs[] = {"a", "b", "c"};
    std::string circuit;
    for (const std::string& x : inputs)
        circuit += "eelement name=V" + x + " type=vsrcdc p=" + x + " n=0\neelement name=R" + x + " type=r p=" + x +
                   " n=0 r=1k\n";
    circuit += gate("G1", "xor_2", "a", "b", "h") + gate("G2", "xor_2", "h", "c", "s") +
               gate("G3", "nand_2", "a", "b", "m") + gate("G4", "and_2", "h", "c", "k") +
               "eelement name=G5 type=not a=m y=l\n" + gate("G6", "or_2", "k", "l", "carry") +
               gate("G7", "nor_2", "s", "carry", "zero");
    for (const char* node : {"h", "s", "m", "k", "l", "carry", "zero"})
        circuit += std::string("eelement name=L") + node + " type=r p=" + node + " n=0 r=1e9\n";
    circuit += "outvar: s=nodev_of_s c=nodev_of_carry z=nodev_of_zero va=nodev_of_a vb=nodev_of_b vc=nodev_of_c\n";
    const table rows =
        rows_of(circuit, "va vb vc s c z",
                {"solve_type dc\nvary_parm vdc_of_Va type table 0 5\nvary_parm vdc_of_Vb type table 0 5\n"
                 "vary_parm vdc_of_Vc type table 0 5\n"});
    ASSERT_EQ(rows.size(), 8u);
    for (const auto& row : rows) {
        const int sum = (row[0] > 2) + (row[1] > 2) + (row[2] > 2);
        EXPECT_NEAR(row[3], sum % 2 * 5, 1e-5);
        EXPECT_NEAR(row[4], sum / 2 * 5, 1e-5);
        EXPECT_NEAR(row[5], sum == 0 ? 5 : 0, 1e-5);
    }
}

// ---- comparators and samplers

// The output follows within what dt_guard leaves, behind steps that are 100 times as long.
TEST(node_comparators, have_points_on_both_sides_of_each_crossing) {
    const table rows = rows_of(
        "eelement name=V1 type=triangle_2 p=a n=0 tr=0.7m tf=0.3m v_min=-1 v_max=1\n"
        "eelement name=U1 type=cmprtr_2 cp=a y=y v_th=0.37 dt_default=0.1m dt_guard=1n\n"
        "eelement name=R1 type=r p=y n=0 r=900\noutvar: y=nodev_of_y a=nodev_of_a\n",
        "a y", {"solve_type trns\nmethod: back_euler=yes t_end=3m delt_const=20u delt_min=0.5n\n"});
    ASSERT_GT(rows.size(), 150u);
    int changes = 0;
    for (std::size_t k = 0; k < rows.size(); ++k) {
        EXPECT_NEAR(rows[k][2], rows[k][1] > 0.37 ? 4.5 : 0, 1e-6) << rows[k][0];
        if (k == 0 || rows[k][2] == rows[k - 1][2]) continue;
        const int n = changes / 2;  // 0.4795 ms on the way up, 0.7945 ms on the way down
        const double crossing = n * 1e-3 + (changes % 2 == 0 ? 0.4795e-3 : 0.7945e-3);
        EXPECT_LE(rows[k - 1][0], crossing);
        EXPECT_GT(rows[k - 1][0], crossing - 5e-9);
        ++changes;
    }
    EXPECT_EQ(changes, 6);
}

TEST(node_sampler, tracks_and_holds) {
    const table rows = rows_of(
        "eelement name=V1 type=vsrcac p=a n=0 a=3 f_hz=1k\neelement name=V2 type=clock p=h n=0 t1=0.1m t2=0.1m "
        "t0=0.1m\n"
        "eelement name=R2 type=r p=h n=0 r=1k\n"
        "eelement name=U1 type=sampler2 cp=a h=h y=y dt_default=0.1m\neelement name=R1 type=r p=y n=0 r=1e9\n"
        "outvar: y=nodev_of_y\n",
        "y", {"solve_type trns\nmethod: back_euler=yes t_end=1m delt_const=2u delt_min=1n\n"});
    ASSERT_GT(rows.size(), 400u);
    for (const auto& row : rows) {
        const double in_period = std::fmod(row[0], 0.2e-3), since = row[0] - in_period + 0.1e-3;
        if (in_period > 1e-6 && in_period < 0.1e-3) {
            EXPECT_NEAR(row[1], 3 * std::sin(2e3 * pi * row[0]), 1e-5) << row[0];
        } else if (in_period > 0.1005e-3 + 1e-9 && in_period < 0.2e-3 - 1e-9) {
            EXPECT_NEAR(row[1], 3 * std::sin(2e3 * pi * since), 0.012) << row[0];  // within the edge of 1 us of h
        }
    }
}

// ---- solar module

// Every point of a load line is one of the published curve, found here by bisection.
TEST(solar_module_runs, meet_their_load_lines) {
    const double i_ph = 6.62, w = 1.96362036, v_oc = std::log(i_ph / 8.2) * w + 32.9 - 0.123 * 25;
    const auto delivered = [&](double v) { return i_ph * (1 - std::expm1(v / w) / std::expm1(v_oc / w)); };
    for (const double rs : {0.0, 0.4}) {
        const std::string module = rs > 0 ? "type=solar_module rs=0.4" : "type=solar_module_1b";
        const table rows = rows_of("eelement name=PV p=a n=0 g=800 " + module +
                                       "\neelement name=R1 type=r p=a n=0 r=1\noutvar: v=nodev_of_a i=i_of_PV\n",
                                   "r_of_R1 v i",
                                   {"solve_type dc\nmethod: chk_rhs2=yes norm_2=1e-9\n"
                                    "vary_parm r_of_R1 type table 0.01 1 3 4 5 10 100 1e6\n"});
        ASSERT_EQ(rows.size(), 8u);
        for (const auto& row : rows) {
            double low = 0, high = 100;  // of the current's voltage inside
            for (int k = 0; k < 200; ++k) {
                const double v = (low + high) / 2, i = delivered(v);
                (i * (row[0] + rs) > v ? low : high) = v;
            }
            const double i = low / (row[0] + rs);
            EXPECT_NEAR(row[2], -i, 1e-6 * i) << row[0];
            EXPECT_NEAR(row[1], i * row[0], 1e-6 * i * row[0]) << row[0];
        }
    }
}

// Each load by itself, from the first guess.
TEST(solar_module_runs, are_found_from_nothing) {
    for (const char* r : {"0.01", "4", "1k", "1e6"}) {
        const table rows = rows_of(
            "eelement name=PV type=solar_module_1b p=a n=0 g=800\neelement name=R1 type=r p=a n=0 r=" + std::string(r) +
                "\noutvar: v=nodev_of_a i=i_of_PV i1=i_of_R1\n",
            "v i i1", {"solve_type dc\nmethod: chk_rhs2=yes norm_2=1e-9\n"});
        ASSERT_EQ(rows.size(), 1u);
        EXPECT_NEAR(rows[0][1], -rows[0][2], 1e-9 + 1e-6 * rows[0][2]) << r;
        EXPECT_LT(rows[0][0], 29.40471) << r;
    }
}

TEST(solar_module_runs, give_no_power_in_the_dark) {
    const table rows = rows_of(
        "eelement name=PV type=solar_module p=a n=0 g=0\neelement name=R1 type=r p=a n=0 r=1k\n"
        "outvar: v=nodev_of_a\n",
        "v", {"solve_type dc\n"});
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_NEAR(rows[0][0], 0, 1e-9);
}

// ---- battery

// With a straight curve: at constant current a straight line, on a resistor an exponential.
const std::string straight = " type=battery p=a n=0 ah=0.01 soc0=0.8 r=0.5 n_ser=3 e0=3 e1=1 e2=0 e3=0 ed=0\n";

TEST(battery_runs, discharge_at_constant_current_along_the_curve) {
    const table rows = in_time("eelement name=B1" + straight +
                                   "eelement name=I1 type=isrcac p=a n=0 idc=0.5\n"
                                   "outvar: v=nodev_of_a s=soc_of_B1 u=v_oc_of_B1 i=i_of_B1\n",
                               "v s u i", "40", "0.5");
    const auto soc = [](double t) { return 0.8 - 0.5 * t / 36; };
    expect_curve(
        rows, 1, [&](double t) { return 3 * (3 + soc(t)) - 0.5 * 0.5; }, 6e-6);
    expect_curve(rows, 2, soc, 2e-7);
    expect_curve(
        rows, 3, [&](double t) { return 3 * (3 + soc(t)); }, 6e-6);
    expect_curve(
        rows, 4, [](double) { return -0.5; }, 1e-9);
}

TEST(battery_runs, discharge_through_a_resistor_exponentially_and_charge_again) {
    const table rows = in_time(
        "eelement name=B1" + straight + "eelement name=R1 type=r p=a n=0 r=23.5\noutvar: s=soc_of_B1 i=i_of_B1\n",
        "s i", "60", "0.05");
    const double tau = 36 * 24 / 3.0;  // ah 3600 (r + R) / (n e1)
    expect_curve(
        rows, 1, [&](double t) { return -3 + 3.8 * std::exp(-t / tau); }, 1e-6);
    expect_curve(
        rows, 2, [&](double t) { return -3 * 3.8 / 24 * std::exp(-t / tau); }, 1e-6);
    const table up =
        in_time("eelement name=B1" + straight + "eelement name=I1 type=isrcac p=0 n=a idc=0.1\noutvar: s=soc_of_B1\n",
                "s", "36", "1");
    EXPECT_NEAR(up.back()[1], 0.9, 1e-7);
}

TEST(battery_runs, see_the_start_charge_at_rest_and_its_slope_in_small_signals) {
    const std::string circuit = "eelement name=B1" + straight + "eelement name=I1 type=isrcac p=a n=0 idc=0.5 a_ac=1\n";
    EXPECT_EQ(rows_of(circuit + "outvar: v=nodev_of_a s=soc_of_B1\n", "v s", {"solve_type dc\n"}),
              (table{{11.15, 0.8}}));
    // r + n e1/(36 s), at the bias point of the block before
    const whole_run run(
        "title: t\nbegin_circuit\nrefnode 0\n" + circuit +
        "outvar: v=nodev_ac_of_a\nend_circuit\nbegin_solve\nsolve_type dc\nend_solve\nbegin_solve\n"
        "solve_type ac\ninitial_sol previous\nvary_freq from 1m to 1 type log n_points 4\nbegin_output\n"
        "filename ac.dat\nvariables: mag_of_v phase_of_v\nend_output\nend_solve\nend_cf\n");
    ASSERT_FALSE(run.stopped) << run.text;
    const table ac = run.rows("ac.dat");
    ASSERT_EQ(ac.size(), 4u);
    for (const auto& row : ac) {
        const std::complex<double> v = -(0.5 + 3.0 / std::complex<double>(0, 36 * 2 * pi * row[0]));
        EXPECT_NEAR(row[1], std::abs(v), 1e-6 * std::abs(v));
        EXPECT_NEAR(row[2], std::arg(v) * 180 / pi, 1e-4);
    }
}

// The published curve of a cell, by Runge and Kutta: C = 3060 A s on 4 ohm.
TEST(battery_runs, discharge_along_the_published_curve_until_it_falls) {
    const auto ocv = [](double s) {
        return 3.685 + 0.2156 * s - 0.1178 * s * s + 0.3201 * s * s * s - 1.031 * std::exp(-35 * s);
    };
    const auto slope = [&](double s) { return -ocv(s) / 4.1 / 3060; };
    const table rows = in_time(
        "eelement name=B1 type=battery p=a n=0 ah=0.85\neelement name=R1 type=r p=a n=0 r=4\n"
        "outvar: s=soc_of_B1 v=nodev_of_a\n",
        "s v", "3400", "2");
    double t = 0, s = 1;
    for (const auto& row : rows) {
        const double h = (row[0] - t) / 100;
        for (int k = 0; k < 100; ++k) {
            const double k1 = slope(s), k2 = slope(s + h / 2 * k1), k3 = slope(s + h / 2 * k2), k4 = slope(s + h * k3);
            s += h / 6 * (k1 + 2 * k2 + 2 * k3 + k4);
        }
        t = row[0];
        EXPECT_NEAR(row[1], s, 1e-6) << t;
        EXPECT_NEAR(row[2], ocv(s) * 4 / 4.1, 2e-5) << t;
    }
    EXPECT_LT(s, 0.1);
}

}  // namespace
