// Controllers and modulators that stand ready: against closed forms, against their equations integrated here, and
// against other ways to find the same pulses.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <functional>
#include <numbers>

#include "whole_run.h"

namespace {
constexpr double pi = std::numbers::pi;
using state = std::vector<double>;
using number = std::complex<double>;

// The classic method of Runge and Kutta in n steps up to t_end; seen(t, x) at each point.
void integrate(const std::function<state(double, const state&)>& slope, state x, double t_end, int n,
               const std::function<void(double, const state&)>& seen) {
    const auto moved = [](state at, const state& by, double h) {
        for (std::size_t k = 0; k < at.size(); ++k) at[k] += h * by[k];
        return at;
    };
    const double h = t_end / n;
    for (int i = 0;; ++i) {
        const double t = i * h;
        seen(t, x);
        if (i == n) return;
        const state k1 = slope(t, x), k2 = slope(t + h / 2, moved(x, k1, h / 2)),
                    k3 = slope(t + h / 2, moved(x, k2, h / 2)), k4 = slope(t + h, moved(x, k3, h));
        for (std::size_t k = 0; k < x.size(); ++k) x[k] += h / 6 * (k1[k] + 2 * k2[k] + 2 * k3[k] + k4[k]);
    }
}

// From start-up on, in steps of h by the trapezoidal rule or backward Euler; columns behind the time as in `variables`.
// norm_2: an angle of 100 rad in a step of 1 us has digits to 1e-8 rad/s.
table transient(const std::string& circuit, const std::string& variables, double t_end, double h,
                const std::string& rule = "trapezoidal=yes") {
    deck_text deck{circuit, variables};
    deck.blocks = {"solve_type startup\n", "solve_type trns\ninitial_sol previous\nmethod: " + rule +
                                               " t_end=" + std::to_string(t_end) + " delt_const=" + std::to_string(h) +
                                               " itmax_trns=1000000 norm_2=1e-6\n"};
    const whole_run run(deck.str());
    EXPECT_FALSE(run.stopped) << run.text;
    table rows = run.rows("out2.dat");
    if (rows.empty()) rows.emplace_back(10, NAN);
    return rows;
}

double limited(double x, double low, double high) { return std::min(std::max(x, low), high); }

// x at time t of column c, straight between rows.
double at(const table& rows, std::size_t c, double t) {
    for (std::size_t k = 1; k < rows.size(); ++k)
        if (rows[k][0] >= t - 1e-12) {
            const double part = (t - rows[k - 1][0]) / (rows[k][0] - rows[k - 1][0]);
            return rows[k - 1][c] + part * (rows[k][c] - rows[k - 1][c]);
        }
    return NAN;
}

const std::string loop =  // around a controller with the input e and the output u
    "gelement name=EE type=sub_2 x1=r x2=y y=e\ngelement name=PL type=lag_1 x=u y=y k=2 tau=0.1\n";

// ---- PI and PID

TEST(controllers, a_pi_controller_steps_its_lag_as_the_two_poles_of_the_closed_loop_say) {
    const double kp = 1.5, ki = 25, k = 2, tau = 0.1;
    const table rows = transient("gelement name=RR type=const y=r k=1\n" + loop +
                                     "gelement name=C1 type=pi x=e y=u kp=1.5 ki=25 y_min=-9 y_max=9\n"
                                     "outvar: y=var_of_y u=u_of_C1 z=z_of_C1 yu=y_of_C1\n",
                                 "y u z yu", 0.6, 2e-4);
    // tau s^2 + (1 + k kp) s + k ki = 0; y' = k kp / tau at first.
    const number root = std::sqrt(number((1 + k * kp) * (1 + k * kp) - 4 * tau * k * ki));
    const number s1 = (-(1 + k * kp) + root) / (2 * tau), s2 = (-(1 + k * kp) - root) / (2 * tau);
    const number a = (k * kp / tau + s2) / (s1 - s2), b = -1.0 - a;
    ASSERT_GT(rows.size(), 2000U);
    for (const auto& row : rows) {
        const number y = 1.0 + a * std::exp(s1 * row[0]) + b * std::exp(s2 * row[0]);
        EXPECT_NEAR(row[1], y.real(), 3e-5) << row[0];
        EXPECT_NEAR(row[2], kp * (1 - row[1]) + row[3], 2e-6);
        EXPECT_EQ(row[4], row[2]);
    }
    EXPECT_NEAR(rows.back()[3], 0.5, 0.01);  // all of the output comes from the integral
}

// x' = A x + b from 0 by the series of the matrix exponential of [A b; 0 0], halved until it is small.
state response(const std::vector<state>& a, const state& b, double t) {
    const std::size_t n = b.size(), m = n + 1;
    const int halvings = 20;
    const double h = t / std::pow(2.0, halvings);
    std::vector<state> e(m, state(m, 0.0)), term = e;
    for (std::size_t i = 0; i < m; ++i) e[i][i] = term[i][i] = 1;
    const auto product = [&](const std::vector<state>& p, const std::vector<state>& q) {
        std::vector<state> r(m, state(m, 0.0));
        for (std::size_t i = 0; i < m; ++i)
            for (std::size_t j = 0; j < m; ++j)
                for (std::size_t l = 0; l < m; ++l) r[i][j] += p[i][l] * q[l][j];
        return r;
    };
    std::vector<state> whole(m, state(m, 0.0));
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < n; ++j) whole[i][j] = a[i][j] * h;
        whole[i][n] = b[i] * h;
    }
    for (int k = 1; k < 8; ++k) {
        term = product(term, whole);
        for (auto& row : term)
            for (double& x : row) x /= k;
        for (std::size_t i = 0; i < m; ++i)
            for (std::size_t j = 0; j < m; ++j) e[i][j] += term[i][j];
    }
    for (int k = 0; k < halvings; ++k) e = product(e, e);
    state x;
    for (std::size_t i = 0; i < n; ++i) x.push_back(e[i][n]);
    return x;
}

TEST(controllers, a_pid_controller_steps_its_lag_as_the_matrix_exponential_of_the_closed_loop_says) {
    const double kp = 2, ki = 15, kd = 0.05, td = 0.02, k = 2, tau = 0.1;
    const table rows =
        transient("gelement name=RR type=const y=r k=1\n" + loop +
                      "gelement name=C1 type=pid x=e y=u kp=2 ki=15 kd=0.05 tau_d=20m y_min=-99 y_max=99\n"
                      "outvar: y=var_of_y z=z_of_C1 v=v_of_C1\n",
                  "y z v", 0.4, 1e-4);
    // y, the integral z and the lag f of the derivative: v = kd/td (e - f), f' = (e - f)/td, e = 1 - y
    const double n = kp + kd / td;
    const std::vector<state> a = {
        {-(1 + k * n) / tau, k / tau, -k * kd / td / tau}, {-ki, 0, 0}, {-1 / td, 0, -1 / td}};
    const state b = {k * n / tau, ki, 1 / td};
    for (const double t : {0.01, 0.03, 0.07, 0.15, 0.3, 0.39}) {
        const state x = response(a, b, t);
        EXPECT_NEAR(at(rows, 1, t), x[0], 2e-4) << t;
        EXPECT_NEAR(at(rows, 2, t), x[1], 2e-4) << t;
        EXPECT_NEAR(at(rows, 3, t), kd / td * (1 - x[0] - x[2]), 2e-3) << t;
    }
    EXPECT_NEAR(rows.front()[3], kd / td, 1e-6);
}

// A reference that the limit does not reach, then one that it does: the time from the change until y is within 2 %
// of it for good.
struct recovery {
    double from_run, from_equations, deviation;
};
recovery recover(const std::string& words, double k_aw, double kd) {
    const double kp = 1.5, ki = 20, td = 0.02;
    const table rows =
        transient("gelement name=RR type=step y=r y1=3 y2=0.5 t0=0.6 dt1=1u\n" + loop +
                      "gelement name=C1 x=e y=u kp=1.5 ki=20 y_min=-1 y_max=1 " + words + "\noutvar: y=var_of_y\n",
                  "y", 3, 2e-4);
    recovery r{0, 0, 0};
    for (const auto& row : rows)
        if (std::fabs(row[1] - 0.5) > 0.01) r.from_run = row[0] - 0.6;
    table own;
    integrate(
        [&](double t, const state& x) {
            const double e = (t < 0.6 ? 3 : 0.5) - x[0], u = kp * e + x[1] + kd / td * (e - x[2]);
            const double y = limited(u, -1, 1);
            return state{(2 * y - x[0]) / 0.1, ki * e + k_aw * (y - u), (e - x[2]) / td};
        },
        {0, 0, 0}, 3, 30000,
        [&](double t, const state& x) {
            if (std::fabs(x[0] - 0.5) > 0.01) r.from_equations = t - 0.6;
            own.push_back({t, x[0]});
        });
    for (std::size_t k = 0; k < own.size(); k += 100)
        r.deviation = std::max(r.deviation, std::fabs(at(rows, 1, own[k][0]) - own[k][1]));
    return r;
}

TEST(controllers, anti_windup_shortens_the_recovery_from_the_limit_as_their_equations_say) {
    for (const bool derivative : {false, true}) {
        const std::string type = derivative ? "type=pid kd=0.05 tau_d=20m " : "type=pi ";
        const double kd = derivative ? 0.05 : 0;
        const recovery without = recover(type + "k_aw=0", 0, kd), with = recover(type, 20 / 1.5, kd),
                       fast = recover(type + "k_aw=100", 100, kd);
        for (const recovery& r : {without, with, fast}) {
            EXPECT_NEAR(r.from_run, r.from_equations, 2e-3);
            EXPECT_LT(r.deviation, 2e-3);
        }
        EXPECT_LT(with.from_run, 0.6 * without.from_run);
        EXPECT_LT(fast.from_run, without.from_run);
    }
}

TEST(controllers, windup_is_held_at_ki_where_there_is_no_kp) {
    // At the limit: z rests where ki x = k_aw (z - y_max), so at 1 + 0.5 * 4/4.
    const table rows = transient(
        "gelement name=RR type=const y=e k=0.5\n"
        "gelement name=C1 type=pi x=e y=u kp=0 ki=-4\noutvar: z=z_of_C1 u=var_of_u\n",
        "z u", 5, 1e-2);
    EXPECT_NEAR(rows.back()[1], -1.5, 1e-6);
    EXPECT_EQ(rows.back()[2], -1);
}

// Columns of an ac run behind the frequency: magnitude and phase of each.
table small_signals(const std::string& circuit, const std::string& variables, double hertz) {
    std::string deck = deck_text{circuit, variables}.str();
    deck.insert(
        deck.find("end_cf"),
        "begin_solve\nsolve_type startup\nend_solve\nbegin_solve\nsolve_type ac\ninitial_sol previous\nset_freq " +
            std::to_string(hertz) + "\nbegin_output\nfilename ac.dat\nvariables: " + variables +
            "\nend_output\nend_solve\n");
    const whole_run run(deck);
    EXPECT_FALSE(run.stopped) << run.text;
    return run.rows("ac.dat");
}

TEST(controllers, have_their_transfer_functions_inside_the_limits_and_rest_outside) {
    for (const double hertz : {0.1, 5.0, 200.0}) {
        const number s(0, 2 * pi * hertz);
        const table rows = small_signals(
            "gelement name=S1 type=srcac y=e a=0 dc=0.2 a_ac=1\ngelement name=S2 type=srcac y=e2 a=0 dc=2 a_ac=1\n"
            "gelement name=C1 type=pi x=e y=u kp=2 ki=30\ngelement name=C2 type=pi x=e2 y=u2 kp=2 ki=30\n"
            "gelement name=C3 type=pid x=e y=u3 kp=2 ki=30 kd=0.01 tau_d=1m y_max=99\n"
            "outvar: a=y_ac_of_C1 b=y_ac_of_C2 c=y_ac_of_C3\n",
            "mag_of_a phase_of_a mag_of_b mag_of_c phase_of_c", hertz);
        ASSERT_EQ(rows.size(), 1U);
        const number one = 2.0 + 30.0 / s, three = one + 0.01 * s / (1.0 + 1e-3 * s);
        const std::vector<double>& row = rows[0];
        EXPECT_NEAR(row[1], std::abs(one), 1e-5 * std::abs(one));
        EXPECT_NEAR(row[2], std::arg(one) * 180 / pi, 1e-3);
        EXPECT_EQ(row[3], 0);
        EXPECT_NEAR(row[4], std::abs(three), 1e-5 * std::abs(three));
        EXPECT_NEAR(row[5], std::arg(three) * 180 / pi, 1e-3);
    }
}

// ---- modulators

TEST(controllers, a_pwm_carrier_gives_pulses_whose_mean_is_the_duty_ratio) {
    for (const double duty : {0.01, 0.3, 0.5, 0.93}) {
        const table rows =
            transient("gelement name=DD type=const y=d k=" + std::to_string(duty) +
                          "\ngelement name=M1 type=pwm_carrier d=d g=g gn=gn f_sw=10k\n"
                          "gelement name=I1 type=intgrtr x=g y=area\ngelement name=I2 type=intgrtr x=gn y=rest\n"
                          "outvar: area=var_of_area rest=var_of_rest g=var_of_g gn=var_of_gn tri=carrier_of_M1\n",
                      "area rest g gn tri", 2e-3, 5e-6, "back_euler=yes");
        // From the top of the carrier in the first period to that of the last one: before, there is nothing to foresee
        // from.
        EXPECT_NEAR((at(rows, 1, 1.95e-3) - at(rows, 1, 0.05e-3)) / 1.9e-3, duty, 5e-5);
        EXPECT_NEAR((rows.back()[1] + rows.back()[2]) / 2e-3, 1, 1e-6);
        int n_edges = 0;
        for (std::size_t k = 1; k < rows.size(); ++k) {
            const double phase = std::fabs(rows[k][0] * 1e4 - std::round(rows[k][0] * 1e4));  // from the pulse's centre
            EXPECT_NEAR(rows[k][5], 2 * phase, 2e-6);
            EXPECT_EQ(rows[k][3] + rows[k][4], 1);
            const bool on = rows[k][3] == 1;
            EXPECT_TRUE(on == (phase < duty / 2) || std::fabs(phase - duty / 2) < 3e-5 || rows[k][0] < 0.05e-3)
                << rows[k][0];
            n_edges += rows[k][3] != rows[k - 1][3];
        }
        EXPECT_EQ(n_edges, 40);
    }
}

TEST(controllers, a_pwm_carrier_follows_a_slow_duty_ratio) {
    // Over a period of the sine the mean is 0.5, and the first harmonic has its amplitude.
    const table rows = transient(
        "gelement name=DD type=srcac y=d dc=0.5 a=0.4 f_hz=100\ngelement name=SS type=srcac y=s a=1 f_hz=100\n"
        "gelement name=M1 type=pwm_carrier d=d g=g gn=gn f_sw=5100\ngelement name=XX type=mult_2a x1=g x2=s y=gs\n"
        "gelement name=I1 type=intgrtr x=g y=area\ngelement name=I2 type=intgrtr x=gs y=first\n"
        "outvar: area=var_of_area first=var_of_first gn=var_of_gn\n",
        "area first gn", 1e-2, 1e-6, "back_euler=yes");
    EXPECT_NEAR(rows.back()[1] / 1e-2, 0.5, 1e-3);
    EXPECT_NEAR(2 * rows.back()[2] / 1e-2, 0.4, 1e-3);
}

// The first harmonic of the line voltage a - b in units of the DC voltage.
double line_voltage(double amplitude, double k_zero) {
    std::string circuit =
        "gelement name=M1 type=pwm_3ph a=a b=b c=c ga=ga gb=gb gc=gc gan=na gbn=nb gcn=nc f_sw=10.5k "
        "k_zero=" +
        std::to_string(k_zero) + "\n";
    const char* phase[] = {"a", "b", "c"};
    for (int k = 0; k < 3; ++k)
        circuit += "gelement name=S" + std::to_string(k) + " type=srcac y=" + phase[k] +
                   " a=" + std::to_string(amplitude) + " f_hz=50 phi=" + std::to_string(-120 * k) + "\n";
    const table rows = transient(
        circuit +
            "gelement name=LL type=sub_2 x1=ga x2=gb y=ab\ngelement name=S4 type=srcac y=s a=1 f_hz=50 phi=30\n"
            "gelement name=XX type=mult_2a x1=ab x2=s y=abs\ngelement name=I1 type=intgrtr x=abs y=first\n"
            "outvar: first=var_of_first ga=var_of_ga na=var_of_na gc=var_of_gc nb=var_of_nb nc=var_of_nc\n",
        "first ga na", 0.02, 2e-6, "back_euler=yes");
    for (const auto& row : rows) EXPECT_EQ(row[2] + row[3], 1);
    return 2 * rows.back()[1] / 0.02;
}

TEST(controllers, three_phase_pwm_reaches_the_dc_voltage_between_lines_with_the_min_max_zero_sequence) {
    const double reach = 2 / std::sqrt(3.0);
    EXPECT_NEAR(line_voltage(reach, 1), 1, 2e-3);
    EXPECT_NEAR(line_voltage(0.6, 1), 0.6 * std::sqrt(3.0) / 2, 2e-3);
    EXPECT_NEAR(line_voltage(1, 0), std::sqrt(3.0) / 2, 2e-3);
    EXPECT_LT(line_voltage(reach, 0), 0.97);  // sines alone are cut at the rails
}

// Duty ratios from sectors and dwell times: two neighbouring vectors for t1 and t2, the rest shared by both zero
// vectors.
std::vector<double> dwell_duties(double length, double angle, double v_dc) {
    const int sector = static_cast<int>(std::floor(angle / (pi / 3)));
    const double part = angle - sector * pi / 3, m = std::sqrt(3.0) * length / v_dc;
    const double t1 = m * std::sin(pi / 3 - part), t2 = m * std::sin(part), t0 = 1 - t1 - t2;
    constexpr int on[6][3] = {{1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 1, 1}, {0, 0, 1}, {1, 0, 1}};
    std::vector<double> d;
    for (int k = 0; k < 3; ++k) d.push_back(t0 / 2 + t1 * on[sector][k] + t2 * on[(sector + 1) % 6][k]);
    return d;
}

TEST(controllers, space_vector_modulation_has_the_duty_ratios_of_sectors_and_dwell_times) {
    const double v_dc = 600;
    for (const double length : {100.0, v_dc / std::sqrt(3.0)}) {
        const std::string a = std::to_string(length);
        const table rows =
            transient("gelement name=VD type=const y=v k=600\ngelement name=S1 type=srcac y=al a=" + a +
                          " f_hz=50 phi=90\ngelement name=S2 type=srcac y=be a=" + a +
                          " f_hz=50\ngelement name=S3 type=srcac y=b a=" + a +
                          " f_hz=50 phi=-30\ngelement name=S4 type=srcac y=c a=" + a +
                          " f_hz=50 phi=-150\ngelement name=M1 type=svpwm_ab al=al be=be v_dc=v da=d1 db=d2 dc=d3\n"
                          "gelement name=M2 type=svpwm a=al b=b c=c v_dc=v da=e1 db=e2 dc=e3\n"
                          "outvar: d1=var_of_d1 d2=var_of_d2 d3=var_of_d3 e1=var_of_e1 e2=var_of_e2 e3=var_of_e3\n",
                      "d1 d2 d3 e1 e2 e3", 0.0199, 1e-4);
        double high = 0, low = 1;
        for (const auto& row : rows) {
            const std::vector<double> d = dwell_duties(length, std::fmod(2 * pi * 50 * row[0] + 1e-9, 2 * pi), v_dc);
            for (std::size_t k = 0; k < 3; ++k) {
                EXPECT_NEAR(row[1 + k], d[k], 2e-6) << row[0];
                EXPECT_NEAR(row[4 + k], d[k], 2e-6) << row[0];
                high = std::max(high, row[1 + k]);
                low = std::min(low, row[1 + k]);
            }
        }
        if (length > 300) {
            EXPECT_NEAR(high, 1, 1e-3);
            EXPECT_NEAR(low, 0, 1e-3);
        }
    }
}

TEST(controllers, space_vector_modulation_holds_duty_ratios_between_0_and_1) {
    const table rows = transient(
        "gelement name=VD type=const y=v k=100\ngelement name=S1 type=const y=al k=90\n"
        "gelement name=S2 type=const y=be k=0\n"
        "gelement name=M1 type=svpwm_ab al=al be=be v_dc=v da=d1 db=d2 dc=d3\n"
        "outvar: d1=var_of_d1 d2=var_of_d2 d3=var_of_d3 z=zero_of_M1\n",
        "d1 d2 d3 z", 1e-3, 1e-4);
    EXPECT_EQ(rows.back()[1], 1);
    EXPECT_EQ(rows.back()[2], 0);
    EXPECT_EQ(rows.back()[3], 0);
    EXPECT_NEAR(rows.back()[4], -22.5, 1e-5);
}

// ---- droop, phase-locked loop, currents

TEST(controllers, droop_moves_frequency_and_amplitude_along_their_slopes_behind_its_filters) {
    const table rows = transient(
        "gelement name=PP type=const y=p k=8000\ngelement name=QQ type=const y=q k=-3000\n"
        "gelement name=D1 type=droop p=p q=q w=w th=th amp=amp m_p=2e-4 n_q=3m p0=2000 q0=500 "
        "tau=20m w0=314 a0=325 th0=0.5\n"
        "outvar: w=var_of_w th=var_of_th amp=var_of_amp pf=p_f_of_D1 qf=q_f_of_D1\n",
        "w th amp pf qf", 0.4, 1e-4);
    for (const auto& row : rows) {
        const double come = 1 - std::exp(-row[0] / 0.02);
        EXPECT_NEAR(row[4], 8000 * come, 0.02);
        EXPECT_NEAR(row[5], -3000 * come, 0.02);
        EXPECT_NEAR(row[1], 314 - 2e-4 * (8000 * come - 2000), 2e-4);
        EXPECT_NEAR(row[3], 325 - 3e-3 * (-3000 * come - 500), 2e-4);
        EXPECT_NEAR(row[2], 0.5 + 314.4 * row[0] - 1.6 * (row[0] - 0.02 * come), 1e-3);
    }
    EXPECT_NEAR(rows.back()[1], 314 - 1.2, 1e-5);
    EXPECT_NEAR(rows.back()[3], 325 + 10.5, 1e-4);
}

TEST(controllers, a_single_phase_loop_locks_within_the_settling_time_of_its_gains) {
    // 52 Hz and 60 degrees ahead, at 50 Hz and 0.
    const double w_in = 2 * pi * 52, phi = pi / 3;
    const table rows = transient(
        "gelement name=VV type=srcac y=v a=325 f_hz=52 phi=150\n"
        "gelement name=P1 type=pll_1ph v=v w=w th=th a_nom=325\n"
        "outvar: w=var_of_w th=var_of_th al=alpha_of_P1 be=beta_of_P1 e=e_of_P1\n",
        "w th al be e", 0.3, 2e-5);
    double off = 0;
    integrate(
        [&](double t, const state& x) {
            const double v = 325 * std::cos(w_in * t + phi);
            const double e = (x[1] * std::cos(x[3]) - x[0] * std::sin(x[3])) / 325;
            const double w = 2 * pi * 50 + 92 * e + x[2];
            return state{w * (std::sqrt(2.0) * (v - x[0]) - x[1]), w * x[0], 4232 * e, w};
        },
        {0, 0, 0, 0}, 0.3, 30000,
        [&](double t, const state& x) {
            if (std::fmod(t + 1e-9, 1e-3) > 2e-9 || t < 1e-4) return;
            off = std::max({off, std::fabs(at(rows, 2, t) - x[3]), std::fabs(at(rows, 3, t) - x[0]) / 325,
                            std::fabs(at(rows, 4, t) - x[1]) / 325});
        });
    EXPECT_LT(off, 1e-3);
    for (const auto& row : rows) {
        if (row[0] < 0.1 + 0.02) continue;  // the settling time and the time in which the second axis comes up
        const double lag = std::remainder(w_in * row[0] + phi - row[2], 2 * pi);
        EXPECT_LT(std::fabs(lag), 0.05 * phi) << row[0];
        EXPECT_NEAR(row[1], w_in, 0.01 * w_in) << row[0];
    }
    EXPECT_NEAR(rows.back()[1], w_in, 1e-3);
    EXPECT_NEAR(std::remainder(w_in * rows.back()[0] + phi - rows.back()[2], 2 * pi), 0, 1e-4);
    EXPECT_NEAR(std::hypot(rows.back()[3], rows.back()[4]), 325, 0.05);
}

// A coil of 2 mH and 0.1 ohm at a grid in a frame that turns with w, and its current control for 3000 rad/s.
std::string current_loop(const std::string& reference, const std::string& words) {
    return reference +
           "gelement name=RQ type=const y=iqr k=0\ngelement name=GD type=const y=ed k=300\n"
           "gelement name=GQ type=const y=eq k=-20\ngelement name=WW type=const y=w k=314\n"
           "gelement name=C1 type=dq_current_control idr=idr iqr=iqr id=id iq=iq ed=ed eq=eq w=w ud=ud uq=uq kp=6 "
           "ki=300 l=2m " +
           words +
           "\ngelement name=WD type=mult_2a x1=w x2=iq y=wiq\ngelement name=WQ type=mult_2a x1=w x2=id y=wid\n"
           "gelement name=D1 type=sum_3 x1=ud x2=ed x3=id y=vd k1=500 k2=-500 k3=-50\n"
           "gelement name=D2 type=sum_2 x1=vd x2=wiq y=dd\ngelement name=D3 type=intgrtr x=dd y=id\n"
           "gelement name=Q1 type=sum_3 x1=uq x2=eq x3=iq y=vq k1=500 k2=-500 k3=-50\n"
           "gelement name=Q2 type=sum_2 x1=vq x2=wid y=dq k2=-1\ngelement name=Q3 type=intgrtr x=dq y=iq\n"
           "outvar: id=var_of_id iq=var_of_iq ud=var_of_ud uq=var_of_uq\n";
}

TEST(controllers, current_control_in_d_and_q_makes_each_axis_a_lag_of_its_bandwidth) {
    const table rows =
        transient(current_loop("gelement name=RD type=const y=idr k=10\n", ""), "id iq ud uq", 3e-3, 2e-6);
    for (const auto& row : rows) {
        EXPECT_NEAR(row[1], 10 * (1 - std::exp(-3000 * row[0])), 1e-4) << row[0];
        EXPECT_NEAR(row[2], 0, 1e-5);  // the decoupling leaves nothing to the other axis
    }
    EXPECT_NEAR(rows.back()[3], 300 + 0.1 * 10, 0.01);
    EXPECT_NEAR(rows.back()[4], -20 + 314 * 2e-3 * 10, 0.01);
}

TEST(controllers, current_control_keeps_its_voltage_on_the_circle_and_does_not_wind_up_there) {
    // 320 V are not enough for steps of 60 A at once.
    double recovered[2] = {0, 0}, longest = 0;  // when the current is below 1 A for good
    for (const int with : {0, 1}) {
        const table rows = transient(current_loop("gelement name=RD type=step y=idr y1=60 y2=0 t0=5m dt1=1u\n",
                                                  with ? "u_max=320" : "u_max=320 k_aw=0"),
                                     "id iq ud uq", 40e-3, 5e-6);
        const double k_aw = with ? 300.0 / 6 : 0;
        double off = 0, later = 0;
        integrate(
            [&](double t, const state& x) {
                const double ed = 60 * limited(1 - (t - 5e-3) / 1e-6, 0, 1) - x[0], eq = -x[1];
                const double vd = 6 * ed + x[2] - 314 * 2e-3 * x[1] + 300, vq = 6 * eq + x[3] + 314 * 2e-3 * x[0] - 20;
                const double s = std::min(1.0, 320 / std::hypot(vd, vq)), ud = s * vd, uq = s * vq;
                return state{(ud - 300 - 0.1 * x[0]) / 2e-3 + 314 * x[1], (uq + 20 - 0.1 * x[1]) / 2e-3 - 314 * x[0],
                             300 * ed + k_aw * (ud - vd), 300 * eq + k_aw * (uq - vq)};
            },
            {0, 0, 0, 0}, 40e-3, 40000,
            [&](double t, const state& x) {
                if (std::hypot(x[0], x[1]) > 1) later = t;
                if (std::fmod(t + 1e-9, 1e-4) < 2e-9 && t > 1e-4)
                    off = std::max({off, std::fabs(at(rows, 1, t) - x[0]), std::fabs(at(rows, 2, t) - x[1])});
            });
        EXPECT_LT(off, 0.1);
        for (const auto& row : rows) {
            longest = std::max(longest, std::hypot(row[3], row[4]));
            if (std::hypot(row[1], row[2]) > 1) recovered[with] = row[0];
        }
        EXPECT_NEAR(recovered[with], later, 1e-4);
    }
    EXPECT_NEAR(longest, 320, 1e-3);
    EXPECT_LT(recovered[1] - 5e-3, 0.6 * (recovered[0] - 5e-3));
}

// ---- what they refuse

TEST(controllers, refuse_values_without_a_meaning) {
    const auto stop = [](const std::string& circuit) {
        deck_text deck{circuit + "outvar: y=var_of_y\n", "y"};
        deck.blocks = {"solve_type startup\n"};
        const whole_run run(deck.str());
        EXPECT_TRUE(run.stopped) << circuit;
        return run.text;
    };
    const std::string x = "gelement name=XX type=const y=x k=0\n";
    const auto has = [](const std::string& text, const std::string& message) {
        EXPECT_NE(text.find(message), std::string::npos) << text;
    };
    has(stop(x + "gelement name=M1 type=pwm_carrier d=x g=y gn=z f_sw=0\n"),
        "pwm_carrier.gce: f_sw too small!\n  f_sw=0\n");
    has(stop(x + "gelement name=M1 type=pwm_3ph a=x b=x c=x ga=y gb=z gc=u gan=na gbn=nb gcn=nc f_sw=-5\n"),
        "pwm_3ph.gce: f_sw too small!\n  f_sw=-5\n");
    has(stop(x + "gelement name=P1 type=pll_1ph v=x w=y th=z a_nom=0\n"), "pll_1ph.gce: a_nom = 0 ?!\n");
    has(stop(x + "gelement name=C1 type=dq_current_control idr=x iqr=x id=x iq=x ed=x eq=x w=x ud=y uq=z u_max=0\n"),
        "dq_current_control.gce: u_max too small!\n  u_max=0\n");
    has(stop(x + "gelement name=C1 type=pi x=x y=y y_min=2\n"), "lmtr.gbe: x_min > x_max ?!\n");
}
}  // namespace
