// Machines in whole runs: starts from standstill and operating points against other forms of their published equations,
// followed here by the classic rule of fourth order; energy over a period.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <functional>
#include <numbers>

#include "whole_run.h"

namespace {
constexpr double pi = std::numbers::pi, third = 2 * pi / 3;
using number = std::complex<double>;
using state = std::vector<double>;
using rate = std::function<state(double t, const state& x)>;

state moved(const state& x, double h, const state& k) {
    state y = x;
    for (std::size_t i = 0; i < y.size(); ++i) y[i] += h * k[i];
    return y;
}
state followed(const rate& f, state x, double t_end, int n) {
    const double h = t_end / n;
    for (int step = 0; step < n; ++step) {
        const double t = step * h;
        const state k1 = f(t, x), k2 = f(t + h / 2, moved(x, h / 2, k1)), k3 = f(t + h / 2, moved(x, h / 2, k2)),
                    k4 = f(t + h, moved(x, h, k3));
        for (std::size_t i = 0; i < x.size(); ++i) x[i] += h / 6 * (k1[i] + 2 * k2[i] + 2 * k3[i] + k4[i]);
    }
    return x;
}

std::string digits(double x) {
    std::ostringstream out;
    out.precision(17);
    out << x;
    return out.str();
}
// Three phases of the amplitude v, V, at w, rad/s: v cos(w t), and b and c behind and ahead of it by a third.
std::string supply(double v, double w) {
    std::string all;
    for (const auto& [phase, at] : {std::pair{"a", 90}, {"b", -30}, {"c", 210}})
        all += std::string("eelement name=V") + phase + " type=vsrcac p=" + phase + " n=0 a=" + digits(v) +
               " f_hz=" + digits(w / (2 * pi)) + " phi=" + std::to_string(at) + "\n";
    return all;
}
number vector_at(double v, double w, double t) { return std::polar(v, w * t); }
// The load, and one who reads what the machine says.
std::string shaft(double tl) {
    return "gelement name=TL type=const y=tl k=" + digits(tl) + "\ngelement name=S type=sum_2 x1=w x2=te y=s\n";
}
std::string blocks_of(double t_end, double h, const std::string& more = "") {
    return "solve_type trns\ninitial_sol previous\nmethod: trapezoidal=yes chk_rhs2=yes norm_2=1e-5 t_end=" +
           digits(t_end) + " delt_const=" + digits(h) + " " + more + "\n";
}
table rows_of(const std::string& circuit, const std::string& words, double t_end, double h) {
    const whole_run run(
        deck_text{circuit, words, {"solve_type startup\n", blocks_of(t_end, h, "itmax_trns=1000000")}}.str());
    EXPECT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("out2.dat");
    return rows.empty() ? table{std::vector<double>(10, NAN)} : rows;
}
const std::string machine = "eelement name=M type=";
const std::string abc = " a=a b=b c=c tl=tl w=w te=te";

// Means over the last period of columns, by the trapezoidal rule; t is column 0.
double mean(const table& rows, double period, const std::function<double(const std::vector<double>&)>& of) {
    double sum = 0, time = 0;
    for (std::size_t k = rows.size() - 1; k > 0 && time < period * (1 - 1e-9); --k) {
        const double h = rows[k][0] - rows[k - 1][0];
        sum += 0.5 * h * (of(rows[k]) + of(rows[k - 1]));
        time += h;
    }
    return sum / time;
}
}  // namespace

// ---- induction machine ----

// Currents as states, in the frame of the rotor: there only the stator has a rotational voltage.
TEST(machine_runs, an_induction_machine_starts_on_the_line_as_its_currents_in_the_frame_of_the_rotor_say) {
    const double v = 180, w = 377, tl = 5, t_end = 0.25, ls = 71.31e-3, lm = 69.31e-3, rs = 0.435, rr = 0.816,
                 j = 0.089;
    const double det = ls * ls - lm * lm;
    const rate other = [&](double t, const state& x) {
        const number is(x[0], x[1]), ir(x[2], x[3]), u = vector_at(v, w, t) * std::polar(1.0, -2 * x[5]);
        const number us = u - rs * is - number(0, 2 * x[4]) * (ls * is + lm * ir), ur = -rr * ir;
        const number ds = (ls * us - lm * ur) / det, dr = (ls * ur - lm * us) / det;
        const double te = 1.5 * 2 * lm * std::imag(is * std::conj(ir));
        return state{ds.real(), ds.imag(), dr.real(), dr.imag(), (te - tl) / j, x[4]};
    };
    const state x = followed(other, state(6, 0.0), t_end, 50000);
    const table rows = rows_of(supply(v, w) + shaft(tl) + machine + "indmc" + abc +
                                   "\noutvar: w=var_of_w te=var_of_te ia=ia_of_M ib=ib_of_M ic=ic_of_M th=th_of_M\n",
                               "w te ia ib ic th", t_end, 10e-6);
    const auto& last = rows.back();
    const number is = number(x[0], x[1]) * std::polar(1.0, 2 * x[5]);
    EXPECT_NEAR(last[0], t_end, 1e-9);
    EXPECT_GT(x[4], 30);  // it did something
    EXPECT_NEAR(last[1], x[4], 2e-5 * x[4]);
    EXPECT_NEAR(last[6], x[5], 2e-5 * x[5]);
    EXPECT_NEAR(last[2], 1.5 * 2 * lm * (x[1] * x[2] - x[0] * x[3]), 1e-3);
    EXPECT_NEAR(last[3], is.real(), 1e-4 * std::abs(is));
    EXPECT_NEAR(last[4], (is * std::polar(1.0, -third)).real(), 1e-4 * std::abs(is));
    EXPECT_NEAR(last[3] + last[4] + last[5], 0, 1e-4);  // seven digits each
}

// From the equivalent circuit at 220 V between lines. The inertia holds the speed.
TEST(machine_runs, an_induction_machine_at_a_fixed_slip_has_the_published_currents_torque_and_balance_of_power) {
    struct published {
        double slip, amplitude, degrees, torque, copper;
    };
    const double w = 377, x_l = 0.754, rs = 0.435, rr = 0.816, period = 2 * pi / w;
    for (published p :
         {published{0.05, 12.50845184, -35.434014, 14.02650188, 0}, {1, 92.96856809, NAN, 52.97042650, 0}}) {
        const number rotor(rr / p.slip, x_l), jxm(0, 26.13);
        const double ir = p.amplitude * std::abs(jxm / (jxm + rotor));
        p.copper = 1.5 * (rs * p.amplitude * p.amplitude + rr * ir * ir);
        const int n = 900;  // steps in a period
        const table rows = rows_of(
            supply(220 * std::sqrt(2.0 / 3.0), w) + shaft(0) + machine + "indmc" + abc + " lls=" + digits(x_l / w) +
                " llr=" + digits(x_l / w) + " lm=" + digits(26.13 / w) + " j=1e12 wm0=" + digits((1 - p.slip) * w / 2) +
                "\noutvar: w=var_of_w te=var_of_te ia=ia_of_M ib=ib_of_M p=p_of_M\n",
            "w te ia ib p\ncontrol: out_tstart=" + digits(198 * period), 200 * period, period / n);
        const auto& last = rows.back();
        const double wm = last[1];
        EXPECT_NEAR(wm, (1 - p.slip) * w / 2, 1e-6);
        // The vector at the end of whole periods, and the means of the last one. The rule takes the frequency for
        // larger by (w h)^2/12, by which the slip is wrong.
        const double tolerance = std::pow(2 * pi / n, 2) / 12 * 2 / p.slip + 1e-6;
        const number i(last[3], (last[3] + 2 * last[4]) / std::sqrt(3.0));
        EXPECT_NEAR(std::abs(i), p.amplitude, tolerance * p.amplitude);
        if (p.degrees == p.degrees) {
            EXPECT_NEAR(std::arg(i) * 180 / pi, p.degrees, 2e-3);
        }
        const double torque = mean(rows, period, [](const auto& r) { return r[2]; });
        const double power = mean(rows, period, [](const auto& r) { return r[5]; });
        EXPECT_NEAR(torque, p.torque, tolerance * p.torque);
        EXPECT_NEAR(power, torque * wm + p.copper, 2 * tolerance * power);
    }
}

// ---- permanent magnets ----

// Fluxes in the stationary frame: psi - lam e = l0 i + l2 e^2 conj(i) with e the direction of the rotor.
TEST(machine_runs, a_magnet_machine_pulls_into_step_as_its_fluxes_in_the_stationary_frame_say) {
    const double v = 9, w = 2 * pi * 6, tl = 0.4, t_end = 0.5, rs = 1.2, l0 = 9e-3, l2 = -0.5e-3, lam = 0.175, j = 8e-4,
                 b_f = 2e-3;
    const auto current = [&](const state& x) {
        const number e = std::polar(1.0, 4 * x[3]), f = number(x[0], x[1]) - lam * e;
        return (l0 * f - l2 * e * e * std::conj(f)) / (l0 * l0 - l2 * l2);
    };
    const auto torque = [&](const state& x) { return 1.5 * 4 * std::imag(std::conj(number(x[0], x[1])) * current(x)); };
    const rate other = [&](double t, const state& x) {
        const number d = vector_at(v, w, t) - rs * current(x);
        return state{d.real(), d.imag(), (torque(x) - tl - b_f * x[2]) / j, x[2]};
    };
    const state x = followed(other, {lam, 0, 0, 0}, t_end, 50000);
    const table rows = rows_of(
        supply(v, w) + shaft(tl) + machine + "pmsm b_f=" + digits(b_f) + abc +
            "\noutvar: w=var_of_w te=var_of_te ia=ia_of_M ib=ib_of_M id=id_of_M iq=iq_of_M th=th_of_M p=p_of_M\n",
        "w te ia ib id iq th p", t_end, 10e-6);
    const auto& last = rows.back();
    EXPECT_NEAR(last[1], x[2], 1e-4 * std::abs(w / 4));
    EXPECT_NEAR(last[7], x[3], 1e-4);
    EXPECT_NEAR(last[2], torque(x), 1e-4);
    EXPECT_NEAR(last[3], current(x).real(), 1e-4);
    EXPECT_NEAR(last[4], (current(x) * std::polar(1.0, -third)).real(), 1e-4);
    const number in_rotor = current(x) * std::polar(1.0, -4 * x[3]);
    EXPECT_NEAR(last[5], in_rotor.real(), 1e-4);
    EXPECT_NEAR(last[6], in_rotor.imag(), 1e-4);
    EXPECT_GT(x[3], pi / 2);  // it turned
}

// In step from the start, at currents that are chosen: by the equations at rest they give voltage, angle and load.
TEST(machine_runs, a_magnet_machine_in_step_turns_power_into_motion_and_heat) {
    const double id = -3, iq = 8, w = 400, b_f = 1e-2, te = 6 * (0.175 - 1e-3 * id) * iq, tl = te - b_f * 100;
    const number v(1.2 * id - w * 9.5e-3 * iq, 1.2 * iq + w * (8.5e-3 * id + 0.175));
    const table rows = rows_of(supply(std::abs(v), w) + shaft(tl) + machine + "pmsm wm0=100 id0=-3 iq0=8 th0=" +
                                   digits(-std::arg(v) / 4) + " b_f=" + digits(b_f) + " j=0.2" + abc +
                                   "\noutvar: w=var_of_w te=var_of_te id=id_of_M iq=iq_of_M ia=ia_of_M p=p_of_M\n",
                               "w te id iq ia p", 0.2, 20e-6);
    for (std::size_t k = 0; k < rows.size(); k += 100) {
        EXPECT_NEAR(rows[k][1], 100, 1e-4);
        EXPECT_NEAR(rows[k][2], te, 1e-3 * te);
        EXPECT_NEAR(rows[k][3], id, 1e-2);
        EXPECT_NEAR(rows[k][4], iq, 1e-2);
    }
    const double period = 2 * pi / w, heat = 1.5 * 1.2 * (id * id + iq * iq);
    EXPECT_NEAR(mean(rows, period, [](const auto& r) { return r[6]; }), te * 100 + heat, 1e-3 * te * 100);
    EXPECT_NEAR(std::sqrt(2 * mean(rows, period, [](const auto& r) { return r[5] * r[5]; })), std::hypot(id, iq), 1e-2);
}

// ---- brushless DC ----

TEST(machine_runs, a_brushless_machine_starts_as_its_line_voltages_say) {
    const auto shape = [](double th) {
        double x = std::fmod(th * 180 / pi, 360.0);
        if (x < 0) x += 360;
        return x < 30 ? x / 30 : x < 150 ? 1 : x < 210 ? (180 - x) / 30 : x < 330 ? -1 : (x - 360) / 30;
    };
    const double v = 5, w = 2 * pi * 4, tl = 0.03, t_end = 0.4, rs = 0.5, ls = 1e-3, lam = 0.05, j = 1e-4, b_f = 1e-4;
    const auto torque = [&](const state& x) {
        const double th = 4 * x[3];
        return 4 * lam * (shape(th) * x[0] + shape(th - third) * x[1] - shape(th + third) * (x[0] + x[1]));
    };
    const rate other = [&](double t, const state& x) {
        const double ia = x[0], ib = x[1], ic = -ia - ib, k = lam * 4 * x[2], th = 4 * x[3];
        const double va = v * std::cos(w * t), vb = v * std::cos(w * t - third), vc = v * std::cos(w * t + third);
        const double d_ab = (va - vb - rs * (ia - ib) - k * (shape(th) - shape(th - third))) / ls;
        const double d_bc = (vb - vc - rs * (ib - ic) - k * (shape(th - third) - shape(th + third))) / ls;
        return state{(2 * d_ab + d_bc) / 3, (d_bc - d_ab) / 3, (torque(x) - tl - b_f * x[2]) / j, x[2]};
    };
    const state x = followed(other, {0, 0, 0, 0.2}, t_end, 80000);
    const table rows = rows_of(supply(v, w) + shaft(tl) + machine + "bldc1 th0=0.2 b_f=" + digits(b_f) + abc +
                                   "\noutvar: w=var_of_w te=var_of_te ia=ia_of_M ib=ib_of_M th=th_of_M\n",
                               "w te ia ib th", t_end, 5e-6);
    const auto& last = rows.back();
    EXPECT_NEAR(last[1], x[2], 1e-3 * w / 4);
    EXPECT_NEAR(last[5], x[3], 2e-4);
    EXPECT_NEAR(last[2], torque(x), 1e-3);
    EXPECT_NEAR(last[3], x[0], 5e-3);
    EXPECT_NEAR(last[4], x[1], 5e-3);
    EXPECT_GT(x[3], 1);
}

// ---- DC ----

// The field is there from the start; what is left is linear: la ia' = va - ra ia - c wm, j wm' = c ia - tl - b_f wm.
TEST(machine_runs, a_dc_machine_starts_as_the_exponential_of_its_matrix_says_and_stands_at_its_published_point) {
    const double va = 240, ra = 0.5, la = 5e-3, c = 1.2, j = 0.1, b_f = 0.01, tl = 20;
    const double wm = 192.3875432526, ia = 18.2698961938;  // published
    // x = rest + sum of eigenvectors: p^2 + p (ra/la + b_f/j) + (ra b_f + c^2)/(la j) = 0
    const double s = ra / la + b_f / j, q = (ra * b_f + c * c) / (la * j);
    const number root = std::sqrt(number(s * s / 4 - q)), p1 = -s / 2 + root, p2 = -s / 2 - root;
    const auto current = [&](double t) {  // of both eigenvalues, with the values of ia and ia' at 0
        const double d0 = -ia, d1 = va / la;
        const number a2 = (d1 - p1 * d0) / (p2 - p1), a1 = d0 - a2;
        return ia + (a1 * std::exp(p1 * t) + a2 * std::exp(p2 * t)).real();
    };
    const auto speed = [&](double t) {
        const double d0 = -wm, d1 = -tl / j;
        const number a2 = (d1 - p1 * d0) / (p2 - p1), a1 = d0 - a2;
        return wm + (a1 * std::exp(p1 * t) + a2 * std::exp(p2 * t)).real();
    };
    for (const char* name : {"dcmc", "dcmc_1"}) {
        const std::string circuit =
            "eelement name=VA type=vsrcdc p=a n=0 vdc=240\neelement name=VF type=vsrcdc p=f n=0 "
            "vdc=100\ngelement name=TL type=const y=tl k=20\ngelement name=S type=linear_1 x=w y=s\n" +
            machine + name +
            " ap=a an=0 fp=f fn=0 tl=tl w=w ifd0=1 b_f=0.01\noutvar: w=var_of_w ia=ia_of_M "
            "ifd=ifd_of_M p=p_of_M\n";
        const table rows = rows_of(circuit, "w ia ifd p", 2, 50e-6);
        for (std::size_t k = 20; k < rows.size(); k += 97) {
            EXPECT_NEAR(rows[k][1], speed(rows[k][0]), 2e-5 * wm);
            EXPECT_NEAR(rows[k][2], current(rows[k][0]), 2e-5 * 400);
        }
        EXPECT_NEAR(rows.back()[1], wm, 1e-4);
        EXPECT_NEAR(rows.back()[2], ia, 1e-5);
        EXPECT_NEAR(rows.back()[4], ra * ia * ia + 100 + (tl + b_f * wm) * wm, 1e-3);
    }
}

// Armature and field in series: the torque is k i^2; the field builds up with the current.
TEST(machine_runs, a_series_machine_starts_as_its_one_current_says) {
    const double va = 100, r = 0.5 + 0.8, l = 5e-3 + 20e-3, k = 0.05, j = 0.1, b_f = 0.02, tl = 3, t_end = 0.6;
    const rate other = [&](double, const state& x) {
        return state{(va - r * x[0] - k * x[0] * x[1]) / l, (k * x[0] * x[0] - tl - b_f * x[1]) / j};
    };
    const state x = followed(other, {0, 0}, t_end, 20000);
    // A start-up would hold both currents at one node.
    const whole_run run(deck_text{
        "eelement name=VA type=vsrcdc p=a n=0 vdc=100\ngelement name=TL type=const y=tl k=3\n"
        "gelement name=S type=linear_1 x=w y=s\n" +
            machine +
            "dcmc_1 ap=a an=m fp=m fn=0 tl=tl w=w rf=0.8 lf=20m laf=0.05 b_f=0.02\noutvar: "
            "w=var_of_w ia=ia_of_M ifd=ifd_of_M\n",
        "w ia ifd",
        {"solve_type trns\nmethod: gear2=yes chk_rhs2=yes norm_2=1e-5 itmax_trns=1000000 t_end=" + digits(t_end) +
         " delt_const=10u\n"}}
                            .str());
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("out1.dat");
    EXPECT_NEAR(rows.back()[1], x[1], 1e-4 * x[1]);
    EXPECT_NEAR(rows.back()[2], x[0], 1e-4 * x[0]);
    EXPECT_NEAR(rows.back()[3], x[0], 1e-4 * x[0]);
    EXPECT_GT(x[1], 10);
}

// Around the operating point: la i' = v - ra i - c w - k wm if, and so on; by hand with complex numbers.
TEST(machine_runs, a_dc_machine_has_the_small_signals_of_its_operating_point) {
    const double ra = 0.5, la = 5e-3, rf = 100, lf = 10, k = 1.2, j = 0.1, b_f = 0.01, ia = 18.2698961938,
                 wm = 192.3875432526;
    for (const bool of_field : {false, true}) {
        const std::string circuit = std::string("eelement name=VA type=vsrcdc p=a n=0 vdc=240 a_ac=") +
                                    (of_field ? "0" : "1") +
                                    "\neelement name=VF type=vsrcdc p=f n=0 vdc=100 a_ac=" + (of_field ? "1" : "0") +
                                    "\ngelement name=TL type=const y=tl k=20\ngelement name=S type=linear_1 x=w y=s\n" +
                                    machine + "dcmc ap=a an=0 fp=f fn=0 tl=tl w=w ifd0=1 b_f=0.01 wm0=" + digits(wm) +
                                    " ia0=" + digits(ia) + "\noutvar: w=var_ac_of_w ia=ia_ac_of_M ifd=ifd_ac_of_M\n";
        const std::string words = "mag_of_w phase_of_w mag_of_ia phase_of_ia mag_of_ifd";
        const whole_run run(
            "title: test\nbegin_circuit\nrefnode 0\n" + circuit +
            "end_circuit\nbegin_solve\nsolve_type startup\nend_solve\nbegin_solve\nsolve_type ac\nvary_freq "
            "from 0.1 to 1k type log n_points 9\nbegin_output\nfilename ac.dat\nvariables: " +
            words + "\nend_output\nend_solve\nend_cf\n");
        ASSERT_FALSE(run.stopped) << run.text;
        const table rows = run.rows("ac.dat");
        ASSERT_EQ(rows.size(), 9u);
        for (const auto& row : rows) {
            const number s(0, 2 * pi * row[0]), i_f = of_field ? 1.0 / (rf + s * lf) : 0.0;
            // (ra + s la) i + k w = va - k wm if; -k i + (s j + b_f) w = k ia if
            const number u = (of_field ? 0.0 : 1.0) - k * wm * i_f, m = k * ia * i_f, z = ra + s * la, y = s * j + b_f;
            const number i = (u * y - k * m) / (z * y + k * k), w = (m + k * i) / y;
            EXPECT_NEAR(row[1], std::abs(w), 1e-6 * std::abs(w));
            EXPECT_NEAR(row[3], std::abs(i), 1e-6 * std::abs(i));
            EXPECT_NEAR(std::abs(std::polar(1.0, row[2] * pi / 180) - w / std::abs(w)), 0, 1e-5);
            EXPECT_NEAR(std::abs(std::polar(1.0, row[4] * pi / 180) - i / std::abs(i)), 0, 1e-5);
            EXPECT_NEAR(row[5], std::abs(i_f), 1e-6 * std::abs(i_f));
        }
    }
}

// ---- synchronous machine ----

namespace {
// The windings of the default machine by currents: L di/dt = v - r i + rotation, in the frame of the rotor.
struct by_currents {
    double rs = 0.3, r_f = 0.1, r_d = 0.5, l_s = 3e-3, md = 60e-3, mq = 30e-3, l_f = 5e-3, l_d = 3e-3;
    std::vector<state> l = {{l_s + md, 0, md, md, 0},
                            {0, l_s + mq, 0, 0, mq},
                            {md, 0, l_f + md, md, 0},
                            {md, 0, md, l_d + md, 0},
                            {0, mq, 0, 0, l_d + mq}};

    state flux(const state& x) const {
        state f(5, 0.0);
        for (std::size_t i = 0; i < 5; ++i)
            for (std::size_t k = 0; k < 5; ++k) f[i] += l[i][k] * x[k];
        return f;
    }
    double torque(const state& x) const {
        const state f = flux(x);
        return 1.5 * 2 * (f[0] * x[1] - f[1] * x[0]);
    }
    // x of l x = b, by elimination
    state solved(state b) const {
        std::vector<state> a = l;
        for (std::size_t j = 0; j < 5; ++j)
            for (std::size_t i = 0; i < 5; ++i) {
                if (i == j) continue;
                const double by = a[i][j] / a[j][j];
                for (std::size_t k = 0; k < 5; ++k) a[i][k] -= by * a[j][k];
                b[i] -= by * b[j];
            }
        for (std::size_t j = 0; j < 5; ++j) b[j] /= a[j][j];
        return b;
    }
    // x: five currents, speed, angle; u: voltage vector; v_f: of the field, referred
    state rates(number u, double v_f, double tl, double j, const state& x) const {
        const number v = u * std::polar(1.0, -2 * x[6]);
        const state f = flux(x);
        const double we = 2 * x[5];
        state d = solved({v.real() - rs * x[0] + we * f[1], v.imag() - rs * x[1] - we * f[0], v_f - r_f * x[2],
                          -r_d * x[3], -r_d * x[4]});
        d.push_back((torque(x) - tl) / j);
        d.push_back(x[5]);
        return d;
    }
};
}  // namespace

// With its field on, from standstill on a slow supply: it runs up on its dampers and falls into step.
TEST(machine_runs, a_synchronous_machine_starts_on_its_dampers_as_its_currents_say) {
    const by_currents m;
    const double v = 60, w = 2 * pi * 10, tl = 4, j = 0.2, t_end = 0.8, n_f = 0.1, v_field = 2.0;
    const state x =
        followed([&](double t, const state& y) { return m.rates(vector_at(v, w, t), n_f * v_field, tl, j, y); },
                 state(7, 0.0), t_end, 40000);
    const table rows =
        rows_of(supply(v, w) + shaft(tl) + "eelement name=VF type=vsrcdc p=f n=0 vdc=" + digits(v_field) + "\n" +
                    machine + "syncmc_1 fp=f fn=0 n_f=0.1" + abc +
                    "\noutvar: w=var_of_w te=var_of_te ia=ia_of_M ib=ib_of_M ifd=ifd_of_M th=th_of_M fds=fds_of_M\n",
                "w te ia ib ifd th fds", t_end, 20e-6);
    const auto& last = rows.back();
    const number i = number(x[0], x[1]) * std::polar(1.0, 2 * x[6]);
    EXPECT_GT(x[5], 10);
    EXPECT_NEAR(last[1], x[5], 1e-4 * x[5]);
    EXPECT_NEAR(last[6], x[6], 1e-4 * x[6]);
    EXPECT_NEAR(last[2], m.torque(x), 5e-3);
    EXPECT_NEAR(last[3], i.real(), 1e-3 * std::abs(i));
    EXPECT_NEAR(last[4], (i * std::polar(1.0, -third)).real(), 1e-3 * std::abs(i));
    EXPECT_NEAR(last[5], 1.5 * n_f * x[2], 1e-3 * std::abs(1.5 * n_f * x[2]));
    EXPECT_NEAR(last[7], m.flux(x)[0], 1e-3 * std::abs(m.flux(x)[0]));
}

// In step on a bus as a generator: torque and power of the load angle, and all that is taken at the shaft goes to the
// bus and into heat.
TEST(machine_runs, a_synchronous_machine_at_rest_on_a_bus_has_the_power_of_its_load_angle) {
    const double v = 100, w = 2 * pi * 50, tl = -6, rs = 0.01, v_f = 1.0;
    const table rows =
        rows_of(supply(v, w) + shaft(tl) + "eelement name=VF type=vsrcdc p=f n=0 vdc=1\n" + machine +
                    "syncmc_1 fp=f fn=0 rs=0.01" + abc + " wm0=" + digits(w / 2) +
                    " th0=-0.7 ffd0=0.6\noutvar: w=var_of_w te=var_of_te ifd=ifd_of_M th=th_of_M p=p_of_M\n" +
                    "outvar: ia=ia_of_M ib=ib_of_M\n",
                "w te ifd th p ia ib", 9, 100e-6);
    const auto& last = rows.back();
    EXPECT_NEAR(last[1], w / 2, 1e-3);
    EXPECT_NEAR(last[2], tl, 2e-3);
    const double ifd = v_f / 0.1, e = w * 60e-3 * ifd, xd = w * 63e-3, xq = w * 33e-3;
    EXPECT_NEAR(last[3], 1.5 * ifd, 1e-3);
    // How far the bus is ahead of q.
    const double d = std::remainder(w * last[0] - (2 * last[4] + pi / 2), 2 * pi);
    const double power = 1.5 * (v * e / xd * std::sin(d) + v * v / 2 * (1 / xq - 1 / xd) * std::sin(2 * d));
    EXPECT_LT(d, -0.1);
    EXPECT_NEAR(power, tl * w / 2, 0.01 * std::abs(power));  // but for rs
    const double i_b = (last[6] + 2 * last[7]) / std::sqrt(3.0), loss = 1.5 * rs * (last[6] * last[6] + i_b * i_b);
    EXPECT_NEAR(last[5], last[2] * last[1] + loss + 1.5 * 0.1 * ifd * ifd, 1e-3 * std::abs(last[5]));
}

// ---- stops ----

TEST(machine_runs, a_dc_block_stops_at_a_machine) {
    const whole_run run(deck_text{
        supply(1, 377) + shaft(0) + machine + "indmc" + abc + "\noutvar: w=var_of_w\n",
        "w",
        {"solve_type dc\n"}}.str());
    EXPECT_TRUE(run.stopped);
    EXPECT_NE(run.text.find("indmc: dc not implemented"), std::string::npos) << run.text;
}
