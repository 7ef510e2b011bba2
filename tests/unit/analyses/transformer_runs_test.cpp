// Transformers in whole runs: open and shorted, coupled nearly to one, of three and four windings, saturating; against
// closed forms and equations that are followed here by the classic rule of fourth order.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <functional>
#include <numbers>

#include "whole_run.h"

namespace {
constexpr double pi = std::numbers::pi;
using number = std::complex<double>;

table rows_of(const std::string& circuit, const std::string& words, const std::string& cards, const std::string& file) {
    const whole_run run(deck_text{circuit, words, {"solve_type startup\n", cards + "initial_sol previous\n"}}.str());
    EXPECT_FALSE(run.stopped) << run.text;
    return run.rows(file);
}
table in_time(const std::string& circuit, const std::string& words, const std::string& t_end, const std::string& h) {
    return rows_of(circuit, words,
                   "solve_type trns\nmethod: trapezoidal=yes chk_rhs2=yes norm_2=1e-6 itmax_trns=1000000 t_end=" +
                       t_end + " delt_const=" + h + "\n",
                   "out2.dat");
}
table over_frequency(const std::string& circuit, const std::string& words) {
    const whole_run run(
        "title: test\nbegin_circuit\nrefnode 0\n" + circuit +
        "end_circuit\nbegin_solve\nsolve_type startup\nend_solve\nbegin_solve\nsolve_type ac\nvary_freq from 1 "
        "to 100k type log n_points 11\nbegin_output\nfilename ac.dat\nvariables: " +
        words + "\nend_output\nend_solve\nend_cf\n");
    EXPECT_FALSE(run.stopped) << run.text;
    return run.rows("ac.dat");
}
const std::string source = "eelement name=V1 type=vsrcac p=a n=0 a_ac=1\n";
}  // namespace

// Symmetric windings in series with equal resistances at one step: the sum of the currents sees l + m, their difference
// l - m.
TEST(transformer_runs, coupled_nearly_to_one_both_time_constants_are_there) {
    for (const double m : {0.9e-3, 0.999e-3, 0.999999e-3}) {
        const double l = 1e-3, r = 2, v = 10, slow = r / (l + m), fast = r / (l - m);
        for (const bool is_slow : {false, true}) {
            const double t_end = 1 / (is_slow ? slow : fast);
            std::ostringstream values;
            values.precision(17);
            values << " l1=1m l2=1m m=" << m;
            const table rows = in_time(
                "eelement name=V1 type=vsrcdc p=a n=0 vdc=10\neelement name=R1 type=r p=a n=b r=2\neelement "
                "name=R2 type=r p=c n=0 r=2\neelement name=T1 type=xfmr_basic_1 p1=b n1=0 p2=c n2=0" +
                    values.str() + "\noutvar: i1=i1_of_T1 i2=i2_of_T1 p=p_of_T1\n",
                "i1 i2 p", std::to_string(t_end * 1e12) + "e-12", std::to_string(t_end * 1e9) + "e-12");
            ASSERT_GT(rows.size(), 900u);
            for (std::size_t k = 5; k < rows.size(); k += 53) {
                const double t = rows[k][0], sum = v / r * -std::expm1(-t * slow),
                             diff = v / r * -std::expm1(-t * fast);
                // A step that is long for the fast part rings about its end.
                if (is_slow && t * fast < 30) continue;
                EXPECT_NEAR(rows[k][1] + rows[k][2], sum, 1e-5 * v / r) << m << ' ' << t;
                if (is_slow) continue;
                EXPECT_NEAR(rows[k][1] - rows[k][2], diff, 1e-5 * v / r) << m << ' ' << t;
            }
        }
    }
}

TEST(transformer_runs, a_coupling_of_one_stops) {
    for (const auto& [statement, text] :
         {std::pair{"xfmr_basic_1 l1=1m l2=4m m=2m", "xfmr_basic_1.ebe: check l1, l2, m. Halting..."},
          {"xfmr l1=1m l2=4m k=1", "xfmr.ebe: k.ge.1 is not allowed. Halting..."},
          {"xfmr_level1_1ph ll1=0", "xfmr_level1_1ph.ebe: check turns, leakages, lm. Halting..."}}) {
        const whole_run run(deck_text{source + "eelement name=T1 p1=a n1=0 p2=c n2=0 type=" + statement +
                                          "\neelement name=R1 type=r p=c n=0\noutvar: v=nodev_of_c\n",
                                      "v",
                                      {"solve_type startup\n"}}
                                .str());
        EXPECT_TRUE(run.stopped);
        EXPECT_NE(run.text.find(text), std::string::npos) << run.text;
    }
}

// Open: magnetising current alone. Shorted: both leakages, and the resistances.
TEST(transformer_runs, open_and_shorted_impedances_are_those_of_the_equivalent_circuit) {
    const std::string transformer =
        "eelement name=T1 type=xfmr_level1_1ph p1=a n1=0 p2=c n2=0 w1=230 w2=24 r1=1.5 r2=20m ll1=3m ll2=40u lm=1.7\n";
    const double n = 24.0 / 230;
    const std::string words = "mag_of_i1 phase_of_i1 mag_of_i2 mag_of_v2";
    for (const bool shorted : {false, true}) {
        const table rows = over_frequency(
            source + transformer + "eelement name=R1 type=r p=c n=0 r=" + (shorted ? "1n k_scale=10" : "1G") +
                "\noutvar: i1=i1_ac_of_T1 i2=i2_ac_of_T1 v2=nodev_ac_of_c\n",
            words);
        ASSERT_EQ(rows.size(), 11u);
        for (const auto& row : rows) {
            const number s(0, 2 * pi * row[0]), z1 = 1.5 + 3e-3 * s, zm = 1.7 * s;
            const number z2 = (20e-3 + 40e-6 * s + (shorted ? 1e-8 : 1e9)) / (n * n);
            const number z = z1 + zm * z2 / (zm + z2), i1 = 1.0 / z, i2 = -i1 * zm / (zm + z2) / n;
            EXPECT_NEAR(row[1], std::abs(i1), 2e-6 * std::abs(i1)) << row[0];
            EXPECT_NEAR(std::abs(std::polar(1.0, row[2] * pi / 180) - i1 / std::abs(i1)), 0, 1e-5);
            EXPECT_NEAR(row[3], std::abs(i2), 2e-6 * std::abs(i2)) << row[0];
            if (!shorted) {
                EXPECT_NEAR(row[4], n * std::abs(zm / (z1 + zm)), 2e-6 * row[4]);
            }
        }
    }
}

// Impedance matrices of three and four windings on one core, loaded by different resistances.
TEST(transformer_runs, several_windings_share_the_load_as_their_star_of_leakages_says) {
    struct one {
        std::string type;
        std::size_t n;
    };
    for (const one& o : {one{"xfmr_level1_1ph_1_2", 3}, one{"xfmr_level1_1ph_4w", 4}}) {
        const double w[] = {100, 20, -40, 10}, ll[] = {1e-3, 60e-6, 150e-6, 20e-6}, r[] = {0.5, 0.1, 0.2, 0.05},
                     load[] = {0, 3, 20, 1}, lm = 0.4;
        std::ostringstream deck;
        deck << source << "eelement name=T1 type=" << o.type << " p1=a n1=0 lm=0.4";
        for (std::size_t k = 0; k < o.n; ++k) {
            deck << " w" << k + 1 << '=' << w[k] << " ll" << k + 1 << '=' << ll[k] << " r" << k + 1 << '=' << r[k];
            if (k > 0) deck << " p" << k + 1 << "=c" << k << " n" << k + 1 << "=0";
        }
        for (std::size_t k = 1; k < o.n; ++k)
            deck << "\neelement name=R" << k << " type=r p=c" << k << " n=0 r=" << load[k];
        deck << "\noutvar:";
        std::string words;
        for (std::size_t k = 1; k <= o.n; ++k) {
            deck << " i" << k << "=i" << k << "_ac_of_T1";
            words += " mag_of_i" + std::to_string(k) + " phase_of_i" + std::to_string(k);
        }
        const table rows = over_frequency(deck.str() + "\n", words);
        ASSERT_EQ(rows.size(), 11u);
        for (const auto& row : rows) {
            const number s(0, 2 * pi * row[0]), z1 = r[0] + ll[0] * s;
            number y = 1.0 / (lm * s);
            for (std::size_t k = 1; k < o.n; ++k) y += w[k] * w[k] / (w[0] * w[0]) / (r[k] + load[k] + ll[k] * s);
            const number e = 1.0 / (1.0 + z1 * y);  // behind the first leakage
            for (std::size_t k = 0; k < o.n; ++k) {
                const number i = k == 0 ? e * y : -e * (w[k] / w[0]) / (r[k] + load[k] + ll[k] * s);
                EXPECT_NEAR(row[1 + 2 * k], std::abs(i), 2e-6 * std::abs(i)) << o.type << ' ' << k;
                EXPECT_NEAR(std::abs(std::polar(1.0, row[2 + 2 * k] * pi / 180) - i / std::abs(i)), 0, 1e-5);
            }
        }
    }
}

TEST(transformer_runs, three_ideal_windings_transform_in_dc_with_balanced_power) {
    const whole_run run(deck_text{
        "eelement name=V1 type=vsrcdc p=s n=0 vdc=10\neelement name=RS type=r p=s n=a r=1\neelement "
        "name=T1 type=xfmr_3w_ideal p1=a n1=0 p2=c n2=0 p3=0 n3=d w1=4 w2=2 w3=1\neelement name=R2 "
        "type=r p=c n=0 r=3\neelement name=R3 type=r p=d n=0 r=1\noutvar: va=nodev_of_a "
        "vc=nodev_of_c vd=nodev_of_d i1=i1_of_T1 i2=i2_of_T1 i3=i3_of_T1\n",
        "va vc vd i1 i2 i3",
        {"solve_type dc\n"}}.str());
    ASSERT_FALSE(run.stopped) << run.text;
    // Seen from winding 1: 3 ohm times 4 beside 1 ohm times 16, 48/7 ohm; behind 1 ohm
    const double v = 10 * (48.0 / 7) / (1 + 48.0 / 7);
    const std::vector<double> expected = {v, v / 2, -v / 4, v * 7 / 48, -v / 6, -v / 4},
                              got = run.rows("out1.dat").at(0);
    for (std::size_t k = 0; k < 6; ++k) EXPECT_NEAR(got[k], expected[k], 1e-6 * v) << k;
}

TEST(transformer_runs, the_small_signals_of_three_ideal_windings_are_those_of_their_turns) {
    const table rows = over_frequency(source +
                                          "eelement name=T1 type=xfmr_3w_ideal p1=a n1=0 p2=c n2=0 p3=0 n3=d w1=4 w2=2 "
                                          "w3=1\neelement name=R2 type=r p=c n=0 r=3\neelement name=L3 type=l p=d n=0 "
                                          "l=2m\noutvar: vd=nodev_ac_of_d i1=i1_ac_of_T1\n",
                                      "mag_of_vd phase_of_vd mag_of_i1");
    for (const auto& row : rows) {
        EXPECT_NEAR(row[1], 0.25, 1e-7);
        EXPECT_NEAR(std::abs(row[2]), 180, 1e-4);
        const number i = 0.25 / 3 + 1.0 / (16.0 * number(0, 2 * pi * row[0] * 2e-3));
        EXPECT_NEAR(row[3], std::abs(i), 1e-6 * std::abs(i));
    }
}

// ---- a core that saturates ----

namespace {
struct core {
    double n = 0.25, ll1 = 2e-3, ll2 = 0.1e-3, lm = 0.8, lm_sat = 0.02, i_sat = 0.5, g = 1e-3, r1 = 1, r2 = 0.05;
    const std::string statement =
        "eelement name=T1 type=xfmr_level2_1ph p1=a n1=0 p2=c n2=0 w1=200 w2=50 r1=1 r2=50m ll1=2m ll2=100u lm=0.8 "
        "lm_sat=20m i_sat=0.5 g_core=1m\n";

    double flux(double im) const {
        return std::abs(im) <= i_sat ? lm * im : std::copysign(lm * i_sat + lm_sat * (std::abs(im) - i_sat), im);
    }
    double energy(double im) const {  // integral of im by flux
        const double over = std::max(std::abs(im) - i_sat, 0.0), in = std::min(std::abs(im), i_sat);
        return lm * in * in / 2 + lm_sat * (over * over / 2 + i_sat * over);
    }
    // The magnetising current of two fluxes, by bisection: ll1 i1 + flux = psi1, ll2 i2 + n flux = psi2.
    double magnetising(double psi1, double psi2) const {
        double low = -1e4, high = 1e4;
        for (int k = 0; k < 200; ++k) {
            const double im = 0.5 * (low + high), f = flux(im);
            ((psi1 - f) / ll1 + n * (psi2 - n * f) / ll2 > im ? low : high) = im;
        }
        return low;
    }
};
}  // namespace

// Switched on at the zero of its voltage it is driven far into saturation: the inrush, with a load on winding 2.
TEST(transformer_runs, a_saturating_core_draws_the_inrush_of_its_fluxes) {
    const core c;
    const double load = 8, w = 2 * pi * 50, amplitude = 200, r_2 = c.r2 + load;
    const table rows = in_time("eelement name=V1 type=vsrcac p=a n=0 a=200 f_hz=50\n" + c.statement +
                                   "eelement name=R1 type=r p=c n=0 r=8\noutvar: i1=i1_of_T1 i2=i2_of_T1 im=im_of_T1 "
                                   "psi=psi_of_T1 p=pwr_elec_of_T1\n",
                               "i1 i2 im psi p", "60m", "2u");
    ASSERT_GT(rows.size(), 29000u);
    double psi1 = 0, psi2 = 0, peak = 0;
    const double h = 2e-6;
    struct currents {
        double i1, i2, im, v1;
    };
    const auto at = [&](double t, double f1, double f2) {
        currents x{};
        x.im = c.magnetising(f1, f2);
        const double f = c.flux(x.im), inner = (f1 - f) / c.ll1;
        x.i2 = (f2 - c.n * f) / c.ll2;
        // v1 = u - r1 i1, i1 = inner + g v1
        x.v1 = (amplitude * std::sin(w * t) - c.r1 * inner) / (1 + c.r1 * c.g);
        x.i1 = inner + c.g * x.v1;
        return x;
    };
    std::size_t row = 0;
    double taken = 0, lost = 0, p_last = 0;
    currents last{};
    for (int step = 0; step < 30000; ++step) {
        const double t = step * h;
        const currents k1 = at(t, psi1, psi2), k2 = at(t + h / 2, psi1 + h / 2 * k1.v1, psi2 - h / 2 * r_2 * k1.i2),
                       k3 = at(t + h / 2, psi1 + h / 2 * k2.v1, psi2 - h / 2 * r_2 * k2.i2),
                       k4 = at(t + h, psi1 + h * k3.v1, psi2 - h * r_2 * k3.i2);
        psi1 += h / 6 * (k1.v1 + 2 * k2.v1 + 2 * k3.v1 + k4.v1);
        psi2 -= h / 6 * r_2 * (k1.i2 + 2 * k2.i2 + 2 * k3.i2 + k4.i2);
        last = at(t + h, psi1, psi2);
        peak = std::max(peak, last.i1);
        if (step % 777 != 0) continue;
        while (row + 1 < rows.size() && rows[row][0] < t + h - h / 10) ++row;
        ASSERT_NEAR(rows[row][0], t + h, 1e-9);
        EXPECT_NEAR(rows[row][1], last.i1, 2e-2) << t;
        EXPECT_NEAR(rows[row][2], last.i2, 2e-2) << t;
        EXPECT_NEAR(rows[row][3], last.im, 2e-2) << t;
        EXPECT_NEAR(rows[row][4], c.flux(last.im), 1e-4) << t;
    }
    EXPECT_GT(peak, 15);  // against 0.8 A of magnetising current in normal operation
    // Energy: what is taken up is lost in copper and core, or stored.
    for (std::size_t k = 1; k < rows.size(); ++k) {
        const double dt = rows[k][0] - rows[k - 1][0], i1 = rows[k][1], i2 = rows[k][2];
        const double v1 = amplitude * std::sin(w * rows[k][0]) - c.r1 * i1;
        const double p = c.r1 * i1 * i1 + c.r2 * i2 * i2 + c.g * v1 * v1;
        taken += 0.5 * dt * (rows[k][5] + rows[k - 1][5]);
        lost += 0.5 * dt * (p + p_last);
        p_last = p;
    }
    const double inner = last.i1 - c.g * last.v1;
    const double stored = 0.5 * c.ll1 * inner * inner + 0.5 * c.ll2 * last.i2 * last.i2 + c.energy(last.im);
    EXPECT_NEAR(taken, lost + stored, 2e-3 * taken);
}

TEST(transformer_runs, a_saturating_core_within_its_knee_is_the_linear_one) {
    const std::string rest =
        " p1=a n1=0 p2=c n2=0 w1=200 w2=50 r1=1 r2=50m ll1=2m ll2=100u lm=0.8\neelement name=R1 type=r p=c n=0 "
        "r=8\noutvar: "
        "i1=i1_of_T1 i2=i2_of_T1 im=im_of_T1\n";
    const std::string drive = "eelement name=V1 type=vsrcac p=a n=0 a=100 f_hz=50 phi=90\neelement name=T1 type=";
    const table a = in_time(drive + "xfmr_level1_1ph" + rest, "i1 i2 im", "40m", "20u"),
                b = in_time(drive + "xfmr_level2_1ph i_sat=100" + rest, "i1 i2 im", "40m", "20u");
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t k = 0; k < a.size(); ++k)
        for (std::size_t j = 0; j < 4; ++j) EXPECT_NEAR(a[k][j], b[k][j], 1e-5) << k;
}

// Small signals at two bias points, a direct current through winding 1: within the knee, and beyond it.
TEST(transformer_runs, a_saturating_core_has_the_slope_of_its_bias_point_in_small_signals) {
    const core c;
    for (const double bias : {0.2, 3.0}) {
        const std::string start = " i10=" + std::to_string(bias);
        std::string with_start = c.statement;
        with_start.insert(with_start.size() - 1, start);
        const table biased = over_frequency(
            source + with_start + "eelement name=R1 type=r p=c n=0 r=8\noutvar: i1=i1_ac_of_T1 i2=i2_ac_of_T1\n",
            "mag_of_i1 mag_of_i2");
        ASSERT_EQ(biased.size(), 11u);
        for (const auto& row : biased) {
            const number s(0, 2 * pi * row[0]), zm = s * (bias > 0.5 ? c.lm_sat : c.lm);
            const number z2 = (c.r2 + 8 + s * c.ll2) / (c.n * c.n), ze = zm * z2 / (zm + z2);
            const number y = c.g + 1.0 / (s * c.ll1 + ze), i1 = 1.0 / (c.r1 + 1.0 / y);
            const number i2 = i1 * (1.0 - c.g / y) * zm / (zm + z2) / c.n;
            EXPECT_NEAR(row[1], std::abs(i1), 2e-6 * std::abs(i1)) << bias << ' ' << row[0];
            EXPECT_NEAR(row[2], std::abs(i2), 2e-6 * std::abs(i2)) << bias << ' ' << row[0];
        }
    }
}

TEST(transformer_runs, a_dc_block_stops_at_a_core) {
    const whole_run run(deck_text{
        "eelement name=V1 type=vsrcac p=a n=0\n" + core().statement +
            "eelement name=R1 type=r p=c n=0\noutvar: v=nodev_of_c\n",
        "v",
        {"solve_type dc\n"}}.str());
    EXPECT_TRUE(run.stopped);
    EXPECT_NE(run.text.find("xfmr_level2_1ph.ebe: cannot be used in DC!"), std::string::npos) << run.text;
}
