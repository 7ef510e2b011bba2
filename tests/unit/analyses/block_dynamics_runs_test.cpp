// General blocks with states and pasts in whole runs: step responses against partial fractions, small signals against
// transfer functions, discrete ones against their difference equation.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <functional>
#include <numbers>

#include "whole_run.h"

namespace {
using number = std::complex<double>;
using poly = std::vector<double>;
constexpr double pi = std::numbers::pi;

std::string word(double x) {
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", x);
    return text;
}
// Rows of a run behind a start-up.
table rows_of(const std::string& circuit, const std::string& variables, const std::string& method) {
    const whole_run run(deck_text{
        circuit,
        variables,
        {"solve_type startup\n", "solve_type trns\ninitial_sol previous\nmethod: " + method + " itmax_trns=1000000\n"}}
                            .str());
    EXPECT_FALSE(run.stopped) << run.text;
    return run.rows("out2.dat");
}

// ---- step responses ----

number at(const poly& p, number s) {
    number sum = 0;
    for (std::size_t k = p.size(); k-- > 0;) sum = sum * s + p[k];
    return sum;
}
// Denominator with these poles and 1 in front, real where poles come in pairs.
poly of_poles(const std::vector<number>& poles) {
    std::vector<number> d = {1};
    for (const number& p : poles) {
        std::vector<number> more(d.size() + 1);
        for (std::size_t k = 0; k < d.size(); ++k) {
            more[k + 1] += d[k];
            more[k] -= p * d[k];
        }
        d = more;
    }
    poly real;
    for (const number& c : d) real.push_back(c.real());
    return real;
}
// Of a/b with distinct poles: a(0)/b(0) + sum a(p)/(p b'(p)) exp(p t).
double step_response(const poly& a, const poly& b, const std::vector<number>& poles, double t) {
    poly slope;
    for (std::size_t k = 1; k < b.size(); ++k) slope.push_back(static_cast<double>(k) * b[k]);
    number y = a[0] / b[0];
    for (const number& p : poles) y += at(a, p) / (p * at(slope, p)) * std::exp(p * t);
    return y.real();
}

struct filter_run {
    std::string type, words;
    poly a, b;
    std::vector<number> poles;
};
std::vector<filter_run> filter_runs() {
    const std::vector<number> all = {{-0.7, 1.1}, {-0.7, -1.1}, {-1.3, 0.6}, {-1.3, -0.6}, -2};
    std::vector<filter_run> runs;
    const int degrees[][2] = {{0, 2}, {0, 3}, {0, 4}, {0, 5}, {1, 2}, {3, 3}, {4, 4}, {5, 5}};
    for (const auto& [z, p] : degrees) {
        std::vector<number> poles(all.begin(), all.begin() + p);
        if (p % 2) poles.back() = -2;
        filter_run r = {"filter_z" + std::to_string(z) + "_p" + std::to_string(p), "", {}, of_poles(poles), poles};
        for (double& c : r.b) c *= 3;
        for (int k = 0; k <= z; ++k) r.a.push_back(2 - 0.9 * k + 0.2 * k * k);
        for (std::size_t k = 0; k < r.a.size(); ++k) r.words += " a" + std::to_string(k) + "=" + word(r.a[k]);
        for (std::size_t k = 0; k < r.b.size(); ++k) r.words += " b" + std::to_string(k) + "=" + word(r.b[k]);
        runs.push_back(r);
    }
    const double w0 = 2, q = 1.5, k = 3;
    const number damped = {-w0 / (2 * q), w0 * std::sqrt(1 - 1 / (4 * q * q))};
    const std::string words = " k=3 w0=2 q=1.5";
    const poly b = {w0 * w0, w0 / q, 1};
    runs.push_back({"filter_lp2", words, {k * w0 * w0}, b, {damped, std::conj(damped)}});
    runs.push_back({"filter_hp2", words, {0, 0, k}, b, {damped, std::conj(damped)}});
    runs.push_back({"filter_bp2", words, {0, k * w0 / q}, b, {damped, std::conj(damped)}});
    runs.push_back({"filter_bs2", words, {k * w0 * w0, 0, k}, b, {damped, std::conj(damped)}});
    const number pair = {-0.25 * 3, 3 * std::sqrt(1 - 0.0625)};
    runs.push_back({"pole_2_b", " z=0.25 w=3", {1}, {1, 0.5 / 3, 1 / 9.0}, {pair, std::conj(pair)}});
    runs.push_back({"filter_z0_p1_efd", " k=0.9 tau=0.8", {0.9}, {1, 0.8}, {-1.25}});
    return runs;
}
double worst_error(const filter_run& f, const std::string& rule, double h) {
    const table rows = rows_of("gelement name=U type=const y=u k=1\ngelement name=F type=" + f.type + " x=u y=y" +
                                   f.words + "\noutvar: y=var_of_y\n",
                               "y", rule + "=yes t_end=6 delt_const=" + word(h));
    EXPECT_GT(rows.size(), 6 / h - 1);
    double worst = 0;
    for (const auto& row : rows) worst = std::max(worst, std::abs(row[1] - step_response(f.a, f.b, f.poles, row[0])));
    return worst;
}
}  // namespace

TEST(block_filter_runs, answer_a_step_by_their_partial_fractions_to_the_order_of_the_rule) {
    for (const filter_run& f : filter_runs()) {
        SCOPED_TRACE(f.type);
        const double coarse = worst_error(f, "trapezoidal", 0.04), fine = worst_error(f, "trapezoidal", 0.02);
        EXPECT_LT(fine, 1e-3);
        EXPECT_NEAR(coarse / fine, 4, 0.3);
    }
}

TEST(block_filter_runs, follow_the_derivatives_of_a_sine) {
    const double w = 2 * pi * 0.3;
    for (const int n : {1, 2}) {
        const auto error = [&](double h) {
            const table rows =
                rows_of("gelement name=U type=srcac y=u f_hz=0.3\ngelement name=F type=filter_z" + std::to_string(n) +
                            " x=u y=y a0=2 a1=0.5" + (n == 2 ? " a2=0.25" : "") + "\noutvar: y=var_of_y\n",
                        "y", "gear2=yes t_end=6 delt_const=" + word(h));
            double worst = 0;
            for (const auto& row : rows) {
                const double th = w * row[0];
                const double second = n == 2 ? -0.25 * w * w * std::sin(th) : 0;
                if (row[0] > 1)
                    worst = std::max(worst, std::abs(row[1] - 2 * std::sin(th) - 0.5 * w * std::cos(th) - second));
            }
            return worst;
        };
        const double coarse = error(0.02), fine = error(0.01);
        EXPECT_LT(fine, 2e-3) << n;
        EXPECT_NEAR(coarse / fine, 4, 0.3) << n;
    }
}

TEST(block_filter_runs, hold_the_field_voltage_between_its_limits) {
    const table rows = rows_of(
        "gelement name=U type=const y=u k=4\ngelement name=F type=filter_z0_p1_efd x=u y=y tau=1 y_min=0 "
        "y_max=3\noutvar: y=var_of_y z=z_of_F\n",
        "y z", "trapezoidal=yes t_end=4 delt_const=10m");
    for (const auto& row : rows) {
        const double z = 4 * (1 - std::exp(-row[0]));
        EXPECT_NEAR(row[2], z, 2e-5);
        EXPECT_NEAR(row[1], std::min(z, 3.0), 2e-5);
    }
}

// ---- small signals ----

TEST(block_filter_runs, have_the_small_signals_of_their_transfer_functions) {
    const auto late = [](double turn) { return number(std::cos(turn), -std::sin(turn)); };
    struct form {
        std::string words;
        std::function<number(double)> of;
    };
    std::vector<form> forms;
    for (const filter_run& f : filter_runs())
        forms.push_back(
            {"type=" + f.type + f.words + (f.type == "filter_z0_p1_efd" ? " y_max=5 y_min=-5" : ""), [f](double w) {
                 return at(f.a, {0, w}) / at(f.b, {0, w});
             }});
    forms.push_back({"type=filter_z1 a0=2 a1=0.5", [](double w) { return number(2, 0.5 * w); }});
    forms.push_back({"type=filter_z2 a0=2 a1=0.5 a2=0.25", [](double w) { return number(2 - 0.25 * w * w, 0.5 * w); }});
    forms.push_back({"type=zero_2_b z=0.4 w=5", [](double w) {
                         const number far = number(1, w / 5000);
                         return number(1 - w * w / 25, 0.16 * w) / (far * far);
                     }});
    forms.push_back(
        {"type=d_filter_z0_p1 a0=2 b0=3 b1=-1 t_smp=0.2", [&](double w) { return 2.0 / (3.0 - late(0.2 * w)); }});
    forms.push_back({"type=d_filter_z0_p2 a0=2 b0=3 b1=-1 b2=0.5 t_smp=0.2",
                     [&](double w) { return 2.0 / (3.0 - late(0.2 * w) + 0.5 * late(0.4 * w)); }});
    forms.push_back({"type=d_filter_z1 a0=2 a1=3 t_smp=0.2", [&](double w) { return 2.0 + 3.0 * late(0.2 * w); }});
    forms.push_back({"type=d_filter_z1_p1 a0=2 a1=-0.5 b0=3 b1=-1 t_smp=0.2",
                     [&](double w) { return (2.0 - 0.5 * late(0.2 * w)) / (3.0 - late(0.2 * w)); }});
    forms.push_back({"type=d_filter_z2_p2 a0=2 a1=-0.5 a2=0.7 b0=3 b1=-1 b2=0.5 t_smp=0.2", [&](double w) {
                         return (2.0 - 0.5 * late(0.2 * w) + 0.7 * late(0.4 * w)) /
                                (3.0 - late(0.2 * w) + 0.5 * late(0.4 * w));
                     }});
    std::string circuit = "gelement name=U type=const y=u k=0.5 a_ac=2 ph_ac=30\n", outvars = "outvar:", names;
    for (std::size_t k = 0; k < forms.size(); ++k) {
        const std::string n = std::to_string(k);
        circuit += "gelement name=F" + n + " " + forms[k].words + " x=u y=y" + n + "\n";
        outvars += std::string(k % 5 == 4 ? "\n+" : "") + " v" + n + "=var_ac_of_y" + n;
        names += std::string(k % 5 == 4 ? "\n+" : "") + " mag_of_v" + n + " phase_of_v" + n;
    }
    const whole_run run("title: t\nbegin_circuit\n" + circuit + outvars +
                        "\nend_circuit\nbegin_solve\nsolve_type dc\nend_solve\nbegin_solve\nsolve_type "
                        "ac\ninitial_sol previous\nvary_freq from 0.01 to 10 type log n_points 7\nbegin_output\n"
                        "filename o.dat\nvariables: " +
                        names + "\nend_output\nend_solve\nend_cf\n");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("o.dat");
    ASSERT_EQ(rows.size(), 7u);
    for (std::size_t r = 0; r < rows.size(); ++r) {
        const double w = 2 * pi * 0.01 * std::pow(10.0, 0.5 * static_cast<double>(r));
        for (std::size_t k = 0; k < forms.size(); ++k) {
            const number found = std::polar(rows[r][1 + 2 * k], rows[r][2 + 2 * k] * pi / 180);
            const number wanted = std::polar(2.0, pi / 6) * forms[k].of(w);
            EXPECT_LE(std::abs(found - wanted), 2e-6 * std::abs(wanted)) << forms[k].words << ", w " << w;
        }
    }
}

TEST(block_delay_runs, turn_small_signals_back_behind_a_start_up) {
    const whole_run run(
        "title: t\nbegin_circuit\ngelement name=U type=const y=u k=1 a_ac=1\ngelement name=D "
        "type=delay_2 x=u y=y td=0.25\noutvar: y=var_ac_of_y\nend_circuit\nbegin_solve\nsolve_type "
        "startup\nend_solve\nbegin_solve\nsolve_type ac\ninitial_sol previous\nvary_freq from 0.1 to 1 "
        "type linear n_points 10\nbegin_output\nfilename o.dat\nvariables: mag_of_y phase_of_y\n"
        "end_output\nend_solve\nend_cf\n");
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("o.dat");
    ASSERT_EQ(rows.size(), 10u);
    for (const auto& row : rows) {
        EXPECT_NEAR(row[1], 1, 1e-6);
        EXPECT_NEAR(std::remainder(row[2] + 90 * row[0], 360), 0, 1e-4);
    }
}

// ---- samples ----

namespace {
struct discrete_run {
    std::string words;
    poly a, b;
};
const discrete_run discrete_runs[] = {
    {"type=d_filter_z0_p1 a0=2 b0=4 b1=-3", {2}, {4, -3}},
    {"type=d_filter_z0_p2 a0=2 b0=4 b1=-3 b2=0.5", {2}, {4, -3, 0.5}},
    {"type=d_filter_z1 a0=2 a1=-0.5", {2, -0.5}, {1}},
    {"type=d_filter_z1_p1 a0=2 a1=-0.5 b0=4 b1=-3", {2, -0.5}, {4, -3}},
    {"type=d_filter_z2_p2 a0=2 a1=-0.5 a2=0.7 b0=4 b1=-3 b2=0.5", {2, -0.5, 0.7}, {4, -3, 0.5}}};
}  // namespace

// The input is known at any time, so each value that is held is the recursion's, whatever the steps are. Lags share the
// run so that the rules have steps to reject.
TEST(block_discrete_runs, hold_the_values_of_their_recursion_whatever_rule_and_step) {
    constexpr double t_smp = 1e-3, t0 = 0.3e-3;
    const auto input = [](double t) { return 1 + std::sin(2 * pi * 37 * t); };
    std::string circuit = "gelement name=U type=srcac y=u dc=1 f_hz=37\n", outvars = "outvar:", names;
    for (std::size_t k = 0; k < std::size(discrete_runs); ++k) {
        const std::string n = std::to_string(k);
        circuit += "gelement name=D" + n + " " + discrete_runs[k].words + " x=u y=y" + n + " t_smp=1m t0=0.3m\n";
        circuit += "gelement name=L" + n + " type=lag_1 x=y" + n + " y=z" + n + " tau=2m\n";
        outvars += " v" + n + "=var_of_y" + n;
        names += " v" + n;
    }
    for (const std::string method :
         {"back_euler=yes delt_const=70u", "trapezoidal=yes delt_const=1.7m", "gear2=yes delt_const=0.13m",
          "trbdf2=yes delt_const=0.1m trbdf2_tolr=0.02", "trbdf2=yes delt_const=0.1m event_restart=yes",
          "trapezoidal=yes delt_const=90u event_restart=yes", "back_euler_auto=yes delt_const=0.2m"}) {
        SCOPED_TRACE(method);
        const table rows = rows_of(circuit + outvars + "\n", names, method + " t_end=40m");
        ASSERT_GT(rows.size(), 40u);
        int n_held = 0;
        for (const auto& row : rows) {
            const double place = (row[0] - t0) / t_smp;
            if (std::abs(place - std::round(place)) < 1e-3) continue;  // rows have 7 digits of time
            const int n = static_cast<int>(std::floor(place));
            ++n_held;
            for (std::size_t k = 0; k < std::size(discrete_runs); ++k) {
                const poly &a = discrete_runs[k].a, &b = discrete_runs[k].b;
                poly y;
                for (int m = 0; m <= n; ++m) {
                    double sum = 0;
                    for (int i = 0; i < static_cast<int>(a.size()) && i <= m; ++i)
                        sum += a[static_cast<std::size_t>(i)] * input(t0 + (m - i) * t_smp);
                    for (int i = 1; i < static_cast<int>(b.size()) && i <= m; ++i)
                        sum -= b[static_cast<std::size_t>(i)] * y[static_cast<std::size_t>(m - i)];
                    y.push_back(sum / b[0]);
                }
                EXPECT_NEAR(row[1 + k], y.empty() ? 0.0 : y.back(), 2e-6) << discrete_runs[k].words << " at " << row[0];
            }
        }
        EXPECT_GT(n_held, method.find("1.7m") != std::string::npos ? -1 : 30);
    }
}

// One behind the other, at the same time, without a sample between.
TEST(block_discrete_runs, follow_one_another_at_their_samples) {
    for (const char* restart : {"no", "yes"}) {
        const table rows = rows_of(
            "gelement name=U type=srcac y=u f_hz=37\ngelement name=A type=d_filter_z1 x=u y=a a0=1 a1=1\n"
            "gelement name=B type=d_filter_z0_p1 x=a y=b a0=1 b0=1 b1=-0.5\noutvar: b=var_of_b\n",
            "b", std::string("trapezoidal=yes delt_const=0.1m t_end=20m event_restart=") + restart);
        int n_held = 0;
        for (const auto& row : rows) {
            const double place = row[0] / 1e-3;
            if (std::abs(place - std::round(place)) < 1e-2) continue;
            const auto u = [](int n) { return n < 0 ? 0 : std::sin(2 * pi * 37e-3 * n); };
            double b = 0;
            for (int n = 0; n < place; ++n) b = u(n) + u(n - 1) + 0.5 * b;
            EXPECT_NEAR(row[1], b, 2e-6) << row[0];
            ++n_held;
        }
        EXPECT_GT(n_held, 150);
    }
}

TEST(block_discrete_runs, begin_a_transient_at_rest_behind_dc) {
    const whole_run run(
        deck_text{"gelement name=U type=const y=u k=3\ngelement name=D type=d_filter_z1_p1 x=u y=y "
                  "a0=2 a1=-0.5 b0=4 b1=-3\noutvar: y=var_of_y\n",
                  "y",
                  {"solve_type dc\n",
                   "solve_type trns\ninitial_sol previous\nmethod: back_euler=yes "
                   "t_end=10m delt_const=0.3m\n"}}
            .str());
    ASSERT_FALSE(run.stopped) << run.text;
    EXPECT_NEAR(run.rows("out1.dat")[0].back(), 4.5, 1e-6);
    for (const auto& row : run.rows("out2.dat")) EXPECT_NEAR(row[1], 4.5, 1e-6);
}

TEST(block_mean_runs, of_a_sine_over_whole_periods_are_its_offset_and_its_root_mean_square) {
    const std::string circuit =
        "gelement name=U type=srcac y=u dc=0.5 a=3 f_hz=50 phi=30\n"
        "gelement name=A type=average_mv x=u y=a per=20m n_smp=40\ngelement name=R type=rms_mv x=u y=r per=20m "
        "n_smp=40\ngelement name=W type=const y=w k=20m\ngelement name=M type=average_1 x=u t_per=w y=m\n"
        "gelement name=P type=peak_detector x=u y=p per=20m\noutvar: a=var_of_a r=var_of_r p=var_of_p u=var_of_u\n";
    for (const std::string method : {"trapezoidal=yes delt_const=0.05m",
                                     "trbdf2=yes delt_const=0.1m event_restart=yes "
                                     "delt_max=0.1m"}) {
        int n_seen = 0;
        for (const auto& row : rows_of(circuit, "a r p u", method + " t_end=60m")) {
            EXPECT_GE(row[3], row[4] - 1e-6);
            if (row[0] < 21e-3) continue;
            ++n_seen;
            EXPECT_NEAR(row[1], 0.5, 2e-6);
            EXPECT_NEAR(row[2], std::sqrt(0.25 + 4.5), 2e-6);
            if (std::fmod(row[0], 20e-3) > 4e-3 && std::fmod(row[0], 20e-3) < 19e-3) {
                EXPECT_NEAR(row[3], 3.5, 5e-3);  // the crest at 60 degrees
            }
        }
        EXPECT_GT(n_seen, 300);
    }
}

// ---- integrators ----

TEST(block_integrator_runs, stay_within_their_range_under_every_rule) {
    for (const std::string method : {"back_euler=yes delt_const=1.3m", "trapezoidal=yes delt_const=1.3m",
                                     "gear2=yes delt_const=1.3m", "trbdf2=yes delt_const=1.3m"})
        for (const double w : {314.1, -77.0}) {
            const table rows = rows_of("gelement name=W type=const y=w k=" + word(w) +
                                           "\ngelement name=I type=intgrtr2 x=w y=th lo=-1 hi=2 y0=0.5\noutvar: "
                                           "th=var_of_th\n",
                                       "th", method + " t_end=0.5");
            ASSERT_GT(rows.size(), 20u);
            for (const auto& row : rows) {
                EXPECT_NEAR(std::remainder(row[1] - 0.5 - w * row[0], 3), 0, 4e-5) << method << ' ' << row[0];
                // It is moved before the next step: a row may be a step, up to delt_max, outside.
                EXPECT_GE(row[1], -1 - 13e-3 * std::max(0.0, -w) - 1e-3);
                EXPECT_LE(row[1], 2 + 13e-3 * std::max(0.0, w) + 1e-3);
            }
        }
}

TEST(block_integrator_runs, begin_again_at_edges_of_their_control) {
    const table rows = rows_of(
        "gelement name=ONE type=const y=one k=1\ngelement name=C type=clock y=c t1=1m t2=3m dt1=1u dt2=1u g_high=10\n"
        "gelement name=I type=intgrtr_reset_1 x=one g=c y=y k=1k y0=-2 g_high=10\ngelement name=J "
        "type=intgrtr_reset_1 x=one g=c y=z active_pos_edge=0 active_neg_edge=1 k=1k g_high=10\noutvar: y=var_of_y "
        "z=var_of_z\n",
        "y z", "trapezoidal=yes delt_const=20u t_end=20m");
    ASSERT_GT(rows.size(), 900u);
    int n_seen = 0;
    for (const auto& row : rows) {
        if (row[0] < 4.1e-3) continue;  // behind the first edges
        const double rising = std::fmod(row[0], 4e-3), falling = std::fmod(row[0] + 3e-3, 4e-3);
        const auto near = [](double place) { return place < 0.05e-3 || place > 3.95e-3; };
        if (near(rising) || near(falling)) continue;
        ++n_seen;
        EXPECT_NEAR(row[1], -2 + 1e3 * rising, 0.025) << row[0];  // a step late at most
        EXPECT_NEAR(row[2], 1e3 * falling, 0.025) << row[0];
    }
    EXPECT_GT(n_seen, 700);
}

// ---- delays ----

TEST(block_delay_runs, give_a_sine_a_time_td_later) {
    for (const double td : {2.5e-3, 0.03e-3}) {  // the second is shorter than the step
        const auto error = [&](double h) {
            const table rows = rows_of(
                "gelement name=U type=srcac y=u f_hz=50\ngelement name=D type=delay_2 x=u y=y "
                "n_delay=200 td=" +
                    word(td) + "\noutvar: y=var_of_y\n",
                "y", "trapezoidal=yes t_end=40m delt_const=" + word(h));
            double worst = 0;
            for (const auto& row : rows) {
                const double t = row[0] - td;
                worst = std::max(worst, std::abs(row[1] - (t < 0 ? 0 : std::sin(2 * pi * 50 * t))));
            }
            return worst;
        };
        // A straight line between points h apart misses a sine by (w h)^2/8 at most.
        for (const double h : {0.07e-3, 0.13e-3}) EXPECT_LE(error(h), std::pow(2 * pi * 50 * h, 2) / 8 + 1e-6);
    }
}

TEST(block_delay_runs, of_one_step_give_the_point_before) {
    const table rows = rows_of(
        "gelement name=U type=srcac y=u f_hz=50\ngelement name=D type=delay_onestep x=u y=y\n"
        "outvar: u=var_of_u y=var_of_y\n",
        "u y", "trapezoidal=yes t_end=20m delt_const=0.1m");
    ASSERT_GT(rows.size(), 190u);
    for (std::size_t k = 1; k < rows.size(); ++k) EXPECT_NEAR(rows[k][2], rows[k - 1][1], 1e-6);
    const table trbdf2 = rows_of(
        "gelement name=U type=srcac y=u f_hz=50\ngelement name=D type=delay_onestep x=u y=y\n"
        "gelement name=L type=lag_1 x=y y=z tau=1m\noutvar: u=var_of_u y=var_of_y\n",
        "u y", "trbdf2=yes t_end=20m delt_const=0.1m trbdf2_tolr=1e-6");
    ASSERT_GT(trbdf2.size(), 30u);
    for (std::size_t k = 1; k < trbdf2.size(); ++k) EXPECT_NEAR(trbdf2[k][2], trbdf2[k - 1][1], 1e-6) << k;
}

TEST(block_dynamics_runs, refuse_what_they_do_not_have_in_dc) {
    for (const std::string block : {"type=delay_2 x=u y=y", "type=intgrtr_reset_1 x=u g=u y=y"}) {
        const whole_run run(deck_text{
            "gelement name=U type=const y=u k=1\ngelement name=B " + block + "\noutvar: y=var_of_y\n",
            "y",
            {"solve_type dc\n"}}.str());
        EXPECT_TRUE(run.stopped);
        const std::string name = block.find("delay") != std::string::npos ? "delay_2" : "intgrtr_reset";
        EXPECT_NE(run.text.find(name + ": dc not implemented. Halting..."), std::string::npos) << run.text;
    }
}
