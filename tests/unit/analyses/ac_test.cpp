// Small signals in whole runs, against closed forms.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>

#include "whole_run.h"

namespace {
using number = std::complex<double>;
const double pi = std::acos(-1.0);
const number i_unit{0.0, 1.0};

std::string output(const std::string& file, const std::string& variables, const std::string& control = "") {
    return "begin_output\nfilename " + file + "\nvariables: " + variables + "\n" + control + "end_output\n";
}
std::string block(const std::string& cards) { return "begin_solve\n" + cards + "end_solve\n"; }
std::string ac(const std::string& frequencies, const std::string& outputs, const std::string& cards = "") {
    return block("solve_type ac\n" + frequencies + "\n" + cards + outputs);
}
std::string deck(const std::string& circuit, const std::string& blocks) {
    const std::string reference = circuit.find("eelement") == std::string::npos ? "" : "refnode 0\n";
    return "title: test\nbegin_circuit\n" + reference + circuit + "end_circuit\n" + blocks + "end_cf\n";
}

// Pairs of mag_of_ and phase_of_ columns from the second column on.
std::vector<number> amplitudes(const std::vector<double>& row) {
    std::vector<number> all;
    for (std::size_t j = 1; j + 1 < row.size(); j += 2) all.push_back(std::polar(row[j], row[j + 1] * pi / 180));
    return all;
}
void expect_near(const number& found, const number& wanted, double relative, const std::string& where) {
    EXPECT_LE(std::abs(found - wanted), relative * std::abs(wanted)) << where << ": " << found << " " << wanted;
}

// The output columns of an ac run at each frequency against formulas of w = 2 pi f.
void expect_response(const std::string& circuit, const std::string& variables, const std::string& before,
                     const std::function<std::vector<number>(double)>& formula) {
    const whole_run run(
        deck(circuit, before + ac("vary_freq from 1 to 1M type log n_points 13", output("o.dat", variables))));
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("o.dat");
    ASSERT_EQ(rows.size(), 13u);
    for (std::size_t k = 0; k < rows.size(); ++k) {
        const double f = std::pow(10.0, 0.5 * static_cast<double>(k));
        EXPECT_NEAR(rows[k][0], f, 1e-6 * f);
        const std::vector<number> found = amplitudes(rows[k]), wanted = formula(2 * pi * f);
        ASSERT_EQ(found.size(), wanted.size());
        for (std::size_t j = 0; j < found.size(); ++j)
            expect_near(found[j], wanted[j], 1e-6, "column " + std::to_string(j) + " at " + std::to_string(f));
    }
}

const std::string rc =
    "eelement name=V1 type=vsrcac p=in n=0 a_ac=1\neelement name=R1 type=r p=in n=out r=1k\n"
    "eelement name=C1 type=c p=out n=0 c=1u\noutvar: v=nodev_ac_of_out vdc=nodev_of_out\n";
// The default of gmin_step goes by what the library has, and an ac block has no use for it.
const std::string resets =
    "solve_class: gmin stepping can only be used\n  for DC and trns. Resetting l_gmin_step to F.\n";
const std::string rc_columns = "mag_of_v phase_of_v";
}  // namespace

// ---- responses

TEST(ac, low_pass_has_its_printed_values) {
    const whole_run run(deck(rc, ac("vary_freq type table 100 159.154943 1k 10k", output("o.dat", rc_columns))));
    EXPECT_EQ(run.file("o.dat"),
              " 1.000000e+02  8.467330e-01 -3.214191e+01 \n 1.591549e+02  7.071068e-01 -4.500000e+01 \n"
              " 1.000000e+03  1.571767e-01 -8.095694e+01 \n 1.000000e+04  1.591348e-02 -8.908819e+01 \n");
    EXPECT_EQ(run.text, resets + "set_mat_2_ac: system matrix size is 3 x 3\nTARNEL: Program completed.\n");
}

TEST(ac, resonance_of_a_series_circuit_shows_in_its_current) {
    expect_response(
        "eelement name=V1 type=vsrcac p=a n=0 a_ac=2 ph_ac=30\neelement name=R1 type=r p=a n=b r=10\n"
        "eelement name=L1 type=l p=b n=c l=1m\neelement name=C1 type=c p=c n=0 c=1u\n"
        "outvar: i=i_ac_of_R1 is=i_ac_of_V1 vc=nodev_ac_of_c\n",
        "mag_of_i phase_of_i mag_of_is phase_of_is mag_of_vc phase_of_vc", "", [](double w) {
            const number i = std::polar(2.0, pi / 6) / (10.0 + i_unit * (w * 1e-3 - 1 / (w * 1e-6)));
            return std::vector<number>{i, -i, i / (i_unit * w * 1e-6)};
        });
}

TEST(ac, controlled_sources_multiply_amplitudes) {
    expect_response(
        "eelement name=V1 type=vsrcac p=a n=0 a_ac=1\neelement name=R1 type=r p=a n=b r=1k\n"
        "eelement name=C1 type=c p=b n=0 c=100n\n"
        "eelement name=E1 type=vcvs p=c n=0 cp=b cn=0 k=-5\neelement name=R2 type=r p=c n=d r=2k\n"
        "eelement name=A1 type=ammeter p=d n=e\neelement name=C2 type=c p=e n=0 c=10n\n"
        "eelement name=G1 type=vccs p=0 n=g cp=e cn=0 gm=2m\neelement name=R3 type=r p=g n=0 r=500\n"
        "eelement name=F1 type=cccs p=0 n=h br=A1 k=3\neelement name=R4 type=r p=h n=0 r=100\n"
        "eelement name=H1 type=ccvs p=k n=0 br=A1 rm=70\neelement name=R5 type=r p=k n=0 r=1\n"
        "outvar: vb=nodev_ac_of_b ve=nodev_ac_of_e vg=nodev_ac_of_g vh=nodev_ac_of_h vk=nodev_ac_of_k\n",
        "mag_of_vb phase_of_vb mag_of_ve phase_of_ve mag_of_vg phase_of_vg mag_of_vh phase_of_vh mag_of_vk phase_of_vk",
        "", [](double w) {
            const number b = 1.0 / (1.0 + i_unit * w * 1e3 * 100e-9), c = -5.0 * b;
            const number e = c / (1.0 + i_unit * w * 2e3 * 10e-9), i = (c - e) / 2e3;
            return std::vector<number>{b, e, 2e-3 * e * 500.0, 3.0 * i * 100.0, 70.0 * i};
        });
}

TEST(ac, coupled_inductors_carry_the_load_over) {
    expect_response(
        "eelement name=V1 type=vsrcac p=a n=0 a_ac=1\neelement name=R1 type=r p=a n=b r=5\n"
        "eelement name=T1 type=xfmr p1=b n1=0 p2=c n2=0 l1=10m l2=2.5m k=0.95\neelement name=R2 type=r p=c n=0 r=8\n"
        "outvar: vb=nodev_ac_of_b vc=nodev_ac_of_c\n",
        "mag_of_vb phase_of_vb mag_of_vc phase_of_vc", "", [](double w) {
            const double m = 0.95 * std::sqrt(10e-3 * 2.5e-3);
            const number z1 = i_unit * w * 10e-3, z2 = i_unit * w * 2.5e-3, zm = i_unit * w * m;
            const number z_in = z1 - zm * zm / (z2 + 8.0), i1 = 1.0 / (5.0 + z_in), i2 = -zm * i1 / (z2 + 8.0);
            return std::vector<number>{z_in * i1, -8.0 * i2};
        });
}

TEST(ac, a_diode_is_its_slope_at_the_bias_of_the_dc_block) {
    const double r_d = 6.001686, part = r_d / (1000 + r_d);
    expect_response(
        "eelement name=V1 type=vsrcac p=a n=0 a=0 vdc=5 a_ac=1\neelement name=R1 type=r p=a n=b r=1k\n"
        "eelement name=D1 type=diode p=b n=0 is=1e-14 vt=0.025852\noutvar: v=nodev_ac_of_b i=i_ac_of_D1\n",
        "mag_of_v phase_of_v mag_of_i phase_of_i", block("solve_type dc\nmethod: chk_rhs2=yes norm_2=1e-12\n"),
        [=](double) {
            return std::vector<number>{part, part / r_d};
        });
}

TEST(ac, takes_the_last_point_of_a_dc_sweep_and_the_end_of_a_transient) {
    const std::string circuit =
        "eelement name=V1 type=vsrcac p=a n=0 a=0 vdc=1 a_ac=1\neelement name=R1 type=r p=a n=b r=1k\n"
        "eelement name=D1 type=diode p=b n=0 is=1e-14 vt=0.025852\noutvar: v=nodev_ac_of_b\n";
    const std::string tight = "method: chk_rhs2=yes norm_2=1e-12\n";
    const std::string one = ac("set_freq 1k", output("o.dat", rc_columns));
    const whole_run swept(
        deck(circuit, block("solve_type dc\n" + tight + "vary_parm vdc_of_V1 type table 1 2 5\n") + one));
    const table rows = swept.rows("o.dat");
    ASSERT_EQ(rows.size(), 1u) << swept.text;
    EXPECT_NEAR(rows[0][1], 5.965881e-3, 1e-9);
    const whole_run in_time(deck(circuit, block("solve_type trns\nset_parm vdc_of_V1=5\n" + tight +
                                                "method: back_euler=yes delt_const=1m t_end=2m\n") +
                                              one));
    EXPECT_EQ(in_time.rows("o.dat"), rows) << in_time.text;
}

// ---- blocks

TEST(ac, blocks_alone_make_a_loop) {
    // y = 1/(1 + tau s) (x - k y)
    expect_response(
        "gelement name=S type=const y=x a_ac=1\ngelement name=D type=sub_2 x1=x x2=z y=e\n"
        "gelement name=F type=lag_1 x=e y=y tau=1m\ngelement name=K type=multscl x=y y=z k=4\n"
        "outvar: y=var_ac_of_y e=var_ac_of_e f=y_ac_of_F\n",
        "mag_of_y phase_of_y mag_of_e phase_of_e mag_of_f phase_of_f", "", [](double w) {
            const number lag = 1.0 / (1.0 + i_unit * w * 1e-3), y = lag / (1.0 + 4.0 * lag);
            return std::vector<number>{y, 1.0 - 4.0 * y, y};
        });
}

TEST(ac, blocks_and_a_circuit_drive_each_other) {
    expect_response(
        "gelement name=S type=const y=x a_ac=1\ngelement name=D type=sub_2 x1=x x2=vm y=e\n"
        "gelement name=I type=intgrtr x=e y=u k=2k\neelement name=V1 type=vsrc_1 p=a n=0 x=u\n"
        "eelement name=R1 type=r p=a n=b r=1k\neelement name=C1 type=c p=b n=0 c=100n\n"
        "eelement name=M type=voltmeter_fb p=b n=0 y=vm k=0.5\noutvar: vb=nodev_ac_of_b e=var_ac_of_e\n",
        "mag_of_vb phase_of_vb mag_of_e phase_of_e", "", [](double w) {
            const number plant = 2e3 / (i_unit * w) / (1.0 + i_unit * w * 1e-4);
            const number b = plant / (1.0 + 0.5 * plant);
            return std::vector<number>{b, 1.0 - 0.5 * b};
        });
}

TEST(ac, a_product_of_blocks_is_linear_around_its_bias) {
    const std::string circuit =
        "gelement name=A type=const y=a k=3\ngelement name=B type=const y=b k=5 a_ac=1\n"
        "gelement name=M type=mult_2a x1=a x2=b y=y\noutvar: v=var_ac_of_y\n";
    const whole_run run(deck(circuit, block("solve_type dc\n") + ac("set_freq 50", output("o.dat", rc_columns))));
    ASSERT_EQ(run.rows("o.dat").size(), 1u) << run.text;
    EXPECT_EQ(run.file("o.dat"), " 5.000000e+01  3.000000e+00  0.000000e+00 \n");
}

// ---- frequencies and sweeps

TEST(ac, frequencies_are_spaced_as_asked) {
    const auto frequencies = [](const std::string& cards) {
        std::vector<double> all;
        const whole_run run(deck(rc, ac(cards, output("o.dat", rc_columns))));
        for (const std::vector<double>& row : run.rows("o.dat")) all.push_back(row[0]);
        return all;
    };
    EXPECT_EQ(frequencies("vary_freq from 100 to 200 type linear n_points 5"),
              (std::vector<double>{100, 125, 150, 175, 200}));
    EXPECT_EQ(frequencies("vary_freq from 1 to 1k type log n_points 4"), (std::vector<double>{1, 10, 100, 1000}));
    EXPECT_EQ(frequencies("vary_freq type table 7 3"), (std::vector<double>{7, 3}));
    EXPECT_EQ(frequencies("set_freq 42"), (std::vector<double>{42}));
}

TEST(ac, one_frequency_is_a_sweep_of_one_point) {
    const whole_run run(deck(rc, ac("set_freq 123", output("a.dat", rc_columns)) +
                                     ac("vary_freq type table 123", output("b.dat", rc_columns))));
    EXPECT_EQ(run.file("a.dat"), run.file("b.dat"));
    EXPECT_EQ(run.rows("a.dat").size(), 1u);
}

TEST(ac, parameters_are_swept_outside_of_the_frequencies) {
    const whole_run run(deck(rc, ac("vary_freq type table 1 1k", output("o.dat", rc_columns),
                                    "vary_parm r_of_R1 type table 1k 2k\nvary_parm c_of_C1 type table 1u 3u\n")));
    const std::string text = run.file("o.dat");
    const table rows = run.rows("o.dat");
    ASSERT_EQ(rows.size(), 8u) << run.text;
    std::size_t k = 0;
    for (const double r : {1e3, 2e3})
        for (const double c : {1e-6, 3e-6})
            for (const double f : {1.0, 1e3}) {
                EXPECT_EQ(rows[k][0], f);
                expect_near(amplitudes(rows[k])[0], 1.0 / (1.0 + i_unit * 2.0 * pi * f * r * c), 1e-6, text);
                ++k;
            }
    // An empty line where the last statement begins anew: before the fifth row.
    EXPECT_EQ(text.find("\n\n"), text.size() / 2 - 1) << text;
}

TEST(ac, statements_in_step_are_swept_together) {
    const whole_run run(
        deck(rc, ac("set_freq 159.154943", output("o.dat", rc_columns),
                    "vary_parm_sync r_of_R1 type table 1k 10k\nvary_parm_sync c_of_C1 type table 1u 0.1u\n")));
    const table rows = run.rows("o.dat");
    ASSERT_EQ(rows.size(), 2u) << run.text;
    EXPECT_EQ(rows[0], rows[1]);
}

TEST(ac, the_slope_of_an_element_follows_its_swept_parameter) {
    // i = is (exp(v/vt) - 1) at v = 0: the slope is is/vt.
    const whole_run run(
        deck("eelement name=I1 type=isrcac p=0 n=a a_ac=1\neelement name=D1 type=diode p=a n=0 is=1u vt=0.025\n"
             "outvar: v=nodev_ac_of_a\n",
             block("solve_type dc\n") +
                 ac("set_freq 1", output("o.dat", rc_columns), "vary_parm is_of_D1 type table 1u 2u\n")));
    const table rows = run.rows("o.dat");
    ASSERT_EQ(rows.size(), 2u) << run.text;
    EXPECT_NEAR(rows[0][1], 25000, 0.1);
    EXPECT_NEAR(rows[1][1], 12500, 0.1);
}

// ---- files

TEST(ac, angular_frequency_without_hertz) {
    const whole_run run(deck(rc, ac("set_freq 1", output("o.dat output_hz=no", rc_columns))));
    EXPECT_NEAR(run.rows("o.dat").at(0).at(0), 2 * pi, 1e-6);
}

TEST(ac, a_nyquist_file_has_real_and_imaginary_part) {
    const whole_run run(deck(rc, ac("set_freq 159.154943", output("o.dat nyquist=yes", "phase_of_v mag_of_v"))));
    EXPECT_EQ(run.file("o.dat"), " 1.591549e+02  5.000000e-01 -5.000000e-01 \n");
}

TEST(ac, phases_go_on_from_row_to_row_and_start_anew_with_a_curve) {
    // Three integrators in a row: -270 degrees, which atan2 tells as 90.
    const std::string circuit =
        "gelement name=S type=const y=x a_ac=1\ngelement name=A type=lag_1 x=x y=a tau=1\n"
        "gelement name=B type=lag_1 x=a y=b tau=1\ngelement name=C type=lag_1 x=b y=c tau=1\noutvar: v=var_ac_of_c\n";
    const std::string frequencies = "vary_freq type table 0.0001 0.1 0.3 1 100";
    const whole_run run(
        deck(circuit, ac(frequencies,
                         output("o.dat", rc_columns) + output("low.dat", rc_columns, "control: max_phase=-300\n") +
                             output("high.dat", rc_columns, "control: min_phase=100\n"),
                         "vary_parm k_of_S type table 0 1\n")));
    const table rows = run.rows("o.dat"), low = run.rows("low.dat"), high = run.rows("high.dat");
    ASSERT_EQ(rows.size(), 10u) << run.text;
    for (std::size_t k = 0; k < 10; ++k) {
        const double f = rows[k][0], wanted = -3 * std::atan(2 * pi * f) * 180 / pi;
        EXPECT_NEAR(rows[k][2], wanted, 1e-4) << k;
        double below = wanted, above = wanted;
        while (below >= -300) below -= 360;
        while (above <= 100) above += 360;
        EXPECT_NEAR(low[k][2], below, 1e-4);
        EXPECT_NEAR(high[k][2], above, 1e-4);
    }
}

TEST(ac, power_is_half_of_voltage_times_conjugate_current) {
    const whole_run run(deck(rc + "outvar: p=pwr_elec_ac_of_R1 q=pwr_elec_ac_of_C1 s=pwr_elec_ac_of_V1\n",
                             ac("set_freq 159.154943", output("o.dat", "p q s"))));
    const std::vector<double> row = run.rows("o.dat").at(0);
    EXPECT_NEAR(row[1], 0.5 * 0.5 / 1e3, 1e-9);  // |v_R|^2 = 1/2
    EXPECT_NEAR(row[2], 0.0, 1e-15);
    EXPECT_NEAR(row[3], -0.25e-3, 1e-9);
}

TEST(ac, solution_file_holds_the_amplitudes_of_the_last_frequency) {
    const whole_run run(deck(rc, ac("vary_freq type table 1 159.154943", output("o.dat", "solution_ac"))));
    EXPECT_EQ(run.file("o.dat"),
              "ebau->val_nd:\n 1.000000e+00  0.000000e+00\n 0.000000e+00  0.000000e+00\n 5.000000e-01 -5.000000e-01\n"
              "ebau->aux1d:\n-5.000000e-04 -5.000000e-04\ngbau->val_vr:\ngbau->aux1d:\n");
}

TEST(ac, solution_file_of_another_block_holds_the_amplitudes_that_stand) {
    const whole_run run(deck(rc, block("solve_type dc\n" + output("before.dat", "solution_ac")) +
                                     ac("set_freq 159.154943", output("o.dat", rc_columns)) +
                                     block("solve_type dc\n" + output("behind.dat", "solution_ac"))));
    EXPECT_NE(run.file("before.dat").find("ebau->val_nd:\n 0.000000e+00  0.000000e+00\n"), std::string::npos)
        << run.text;
    EXPECT_NE(run.file("behind.dat").find("\n 5.000000e-01 -5.000000e-01\n"), std::string::npos);
}

TEST(ac, without_a_source_all_is_zero) {
    const std::string quiet = rc.substr(0, rc.find(" a_ac=1")) + rc.substr(rc.find(" a_ac=1") + 7);
    const whole_run run(deck(quiet, ac("set_freq 1k", output("o.dat", rc_columns))));
    EXPECT_FALSE(run.stopped);
    EXPECT_EQ(run.file("o.dat"), " 1.000000e+03  0.000000e+00  0.000000e+00 \n");
}

// ---- what stops

TEST(ac, elements_without_a_small_signal_half_are_told_by_name) {
    const auto heard = [](const std::string& circuit) {
        return whole_run(deck(circuit, ac("set_freq 1k", output("o.dat", rc_columns)))).text;
    };
    const std::string last = "  Halting...\n";
    EXPECT_EQ(heard("gelement name=G1 type=average x=x y=y\ngelement name=G2 type=const y=x\n" + rc),
              resets + "ccmain: There are no AC statements in this gce: average\n" + last);
    const std::string bare =
        "ece name=bare allow_ac=yes\nbegin_dc\nmainnodes: p n\nauxnodes:\noutvar:\nbias:\nstparms:\nigparms:\n"
        "ind_nodes:\nind_branches:\ndigital_nodes:\nmain_var:\nxvar:\niparms:\nsparms:\nrparms:\nrparms_derived:\n"
        "ebe type=r name=r p=p n=n\nend_dc\nC:\nendC\nbegin_ac\noutvar_ac:\nind_nodes_ac:\nind_branches_ac:\nend_ac\n"
        "endece\n";
    const whole_run run(
        deck("eelement name=B1 type=bare p=in n=0\n" + rc, ac("set_freq 1k", output("o.dat", rc_columns))), "", bare);
    EXPECT_EQ(run.text, resets + "ccmain: There are no AC statements in this ece: bare\n" + last);
}

TEST(ac, columns_need_a_word_that_fits) {
    const auto heard = [](const std::string& columns) {
        const std::string text =
            whole_run(deck(rc, block("solve_type dc\n") + ac("set_freq 1k", output("o.dat", columns)))).text;
        const std::size_t at = text.find("3 x 3\n", text.find("set_mat_2_ac"));
        return at == std::string::npos ? text : text.substr(at + 6);
    };
    const std::string missing = "assign_ov: check output variables.\n   perhaps missing phase or mag?\n";
    EXPECT_EQ(heard("v"), missing);
    EXPECT_EQ(heard("vdc"), missing);
    EXPECT_EQ(heard("all_nodes"), missing);
    EXPECT_EQ(heard("mag_of_vdc"),
              "assign_ov: check output variables.\n   perhaps phase or mag is given for\n   a dc variable?\n"
              "   ov_flag = 1, ov_indx = 2\n");
}

TEST(ac, limit_lines_stops_behind_the_rows_that_fit) {
    const whole_run run(deck(rc, ac("vary_freq type table 1 2 3", output("o.dat limit_lines=2", rc_columns))));
    EXPECT_TRUE(run.stopped);
    EXPECT_NE(run.text.find("write_ac: limit_lines is exceeded.\n  index_solve = 0, i_file = 0\n  Halting...\n"),
              std::string::npos)
        << run.text;
    EXPECT_EQ(run.rows("o.dat").size(), 2u);
}

TEST(ac, a_swept_value_is_no_column) {
    const whole_run run(deck(rc, ac("set_freq 1", output("o.dat", "r_of_R1"), "vary_parm r_of_R1 type table 1 2\n")));
    EXPECT_NE(run.text.find("assign_ov: outvar of type varprm is not allowed.\n"), std::string::npos) << run.text;
}

TEST(ac, what_is_sensed_must_be_there) {
    const std::string clock = "eelement name=V1 type=vsrcac p=a n=0 a_ac=1\neelement name=R1 type=r p=a n=0 r=1\n";
    // A branch of an element that has no unknown of its own cannot be sensed at all; one of several elements neither.
    const whole_run run(deck(clock + "eelement name=F1 type=cccs p=0 n=b br=R1\neelement name=R2 type=r p=b n=0 r=1\n",
                             ac("set_freq 1", output("o.dat", "parms"))));
    EXPECT_NE(run.text.find("  ind. branch has no auxiliary variable.\n"), std::string::npos) << run.text;
}

TEST(ac, the_system_can_be_looked_at) {
    const whole_run run(deck("output ebce gbce smat\n" + rc,
                             ac("set_freq 159.154943", output("o.dat", rc_columns), "method: wrt_debug_smat=yes\n")));
    EXPECT_TRUE(run.stopped);
    EXPECT_NE(run.text.find("stopped as wrt_debug_smat asks, behind writing rhs_ac.dat\n"), std::string::npos);
    for (const char* name :
         {"mat_ac.dat", "rhs_ac.dat", "ebce_c.dat", "gbce_c.dat", "ebce1_c.dat", "gbce1_c.dat", "smat_c.dat"})
        EXPECT_TRUE(std::filesystem::exists(name)) << name;
    EXPECT_NE(run.file("mat_ac.dat").find("1 0 (1,0)\n"), std::string::npos) << run.file("mat_ac.dat");
}
