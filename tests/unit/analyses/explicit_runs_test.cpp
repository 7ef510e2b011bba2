// Whole runs of block diagrams: rules of integration, order of evaluation, breaks, states, texts.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "whole_run.h"

namespace {
std::string diagram(const std::string& circuit, const std::string& variables, const std::string& method,
                    const std::string& before = "initial_sol initialize\n") {
    return "title: diagram\nbegin_circuit\n" + circuit + "end_circuit\nbegin_solve\nsolve_type trns\n" + before +
           "method: " + method + "\nbegin_output\nfilename out.dat\nvariables: " + variables +
           "\nend_output\nend_solve\nend_cf\n";
}
const std::string decay = "xelement name=Y type=intgrtr x=y y=y k=-1 y_ig=1\noutvar: y=xvar_of_y\n";
const std::string oscillator =
    "xelement name=A type=intgrtr x=b y=a k=3 y_ig=1\nxelement name=B type=intgrtr x=a y=b k=-3\n"
    "outvar: a=xvar_of_a b=xvar_of_b\n";

double last(const std::string& deck, std::size_t column = 1) {
    const whole_run run(deck);
    EXPECT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("out.dat");
    return rows.empty() ? NAN : rows.back()[column];
}
// Steps of one size also where the rule would choose them.
std::string same_steps(const std::string& rule, double h) {
    char text[400];
    std::snprintf(text, sizeof text,
                  "%s=yes t_start=0 t_end=1 delt_const_x=%.17g delt_min_x=%.17g delt_max_x=%.17g rkf45_tolr=1e9 "
                  "bs23_tolr=1e9 rkf45_fctr_max=1 bs23_fctr_max=1",
                  rule.c_str(), h, h, h);
    return text;
}
}  // namespace

TEST(explicit_runs, a_decay_by_ten_steps_has_the_values_of_each_rule) {
    const double h = 0.1;
    const auto after_ten = [](double factor) { return std::pow(factor, 10); };
    const struct {
        const char* rule;
        double factor;  // of one step, by the rule's polynomial in -h
    } rules[] = {{"forward_euler", 1 - h},
                 {"modified_euler", 1 - h + h * h / 2},
                 {"Heun", 1 - h + h * h / 2},
                 {"RK4", 1 - h + h * h / 2 - h * h * h / 6 + h * h * h * h / 24}};
    for (const auto& r : rules)
        EXPECT_NEAR(last(diagram(decay, "y", std::string(r.rule) + "=yes t_start=0 t_end=1 delt_const_x=0.1")),
                    after_ten(r.factor), 5e-8)
            << r.rule;
}

TEST(explicit_runs, a_chain_of_four_integrators_is_exact_under_rk4) {
    const std::string chain =
        "xelement name=K type=const y=x0 k=1\nxelement name=A type=intgrtr x=x0 y=x1\n"
        "xelement name=B type=intgrtr x=x1 y=x2\nxelement name=C type=intgrtr x=x2 y=x3\n"
        "xelement name=D type=intgrtr x=x3 y=x4\noutvar: x2=xvar_of_x2 x3=xvar_of_x3 x4=xvar_of_x4\n";
    const whole_run run(diagram(chain, "x2 x3 x4", "RK4=yes t_start=0 t_end=1 delt_const_x=0.25"));
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("out.dat");
    ASSERT_EQ(rows.size(), 5u);
    for (const auto& row : rows) {
        const double t = row[0];
        EXPECT_NEAR(row[1], t * t / 2, 5e-8);
        EXPECT_NEAR(row[2], t * t * t / 6, 5e-8);
        EXPECT_NEAR(row[3], t * t * t * t / 24, 5e-9);
    }
    EXPECT_EQ(last(diagram(chain, "x2", "forward_euler=yes t_start=0 t_end=1 delt_const_x=0.25")), 0.375);
    EXPECT_EQ(last(diagram(chain, "x2", "Heun=yes t_start=0 t_end=1 delt_const_x=0.25")), 0.5);
    EXPECT_EQ(last(diagram(chain, "x2", "modified_euler=yes t_start=0 t_end=1 delt_const_x=0.25")), 0.5);
}

TEST(explicit_runs, a_filter_with_a_zero_passes_a_part_at_once) {
    const whole_run run(
        diagram("xelement name=K type=const y=u k=1\nxelement name=F type=filter_z1_p1 x=u y=y a0=3 a1=2 b0=2 b1=4\n"
                "outvar: y=xvar_of_y\n",
                "y", "RK4=yes t_start=0 t_end=4 delt_const_x=0.05"));
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("out.dat");
    ASSERT_EQ(rows.size(), 81u);
    for (const auto& row : rows) EXPECT_NEAR(row[1], 1.5 - std::exp(-row[0] / 2), 1e-6) << row[0];
}

TEST(explicit_runs, each_rule_has_its_order) {
    const struct {
        const char* rule;
        int order;
    } rules[] = {{"forward_euler", 1}, {"modified_euler", 2}, {"Heun", 2}, {"BS23", 3}, {"RK4", 4}, {"RKF45", 4}};
    // Seven digits of a row: the difference from the truth is carried by a block that magnifies it.
    for (const auto& r : rules) {
        const auto error = [&](int n) {
            char less[200];
            std::snprintf(less, sizeof less, "xelement name=S type=sum_2 x1=b x2=b y=d k0=%.17g k1=1e6 k2=0\n",
                          1e6 * std::sin(3.0));
            return std::fabs(
                last(diagram(oscillator + less + "outvar: d=xvar_of_d\n", "d", same_steps(r.rule, 1.0 / n))));
        };
        const int n = r.order < 4 ? 256 : 32;
        const double coarse = error(n), fine = error(2 * n);
        ASSERT_GT(fine, 0.0) << r.rule;
        EXPECT_NEAR(std::log2(coarse / fine), r.order, 0.25) << r.rule << ' ' << coarse << ' ' << fine;
    }
}

namespace {
// The rules with a choice of step, told plainly for y' = f(t, y).
using state = std::vector<double>;
struct plain_run {
    int accept = 0, reject = 0;
    double t = 0.0;
    state y;
};
struct plain_rule {
    std::vector<double> c;
    std::vector<std::vector<double>> a;
    std::vector<double> b, difference;
    double safety, power, tolerance;
};
const plain_rule fehlberg = {{0, 0.25, 0.375, 12.0 / 13, 1, 0.5},
                             {{},
                              {0.25},
                              {3.0 / 32, 9.0 / 32},
                              {1932.0 / 2197, -7200.0 / 2197, 7296.0 / 2197},
                              {439.0 / 216, -8, 3680.0 / 513, -845.0 / 4104},
                              {-8.0 / 27, 2, -3544.0 / 2565, 1859.0 / 4104, -11.0 / 40}},
                             {25.0 / 216, 0, 1408.0 / 2565, 2197.0 / 4104, -0.2, 0},
                             {16.0 / 135 - 25.0 / 216, 0, 6656.0 / 12825 - 1408.0 / 2565,
                              28561.0 / 56430 - 2197.0 / 4104, -9.0 / 50 + 0.2, 2.0 / 55},
                             0.87,
                             0.2,
                             1e-6};
const plain_rule bogacki = {{0, 0.5, 0.75, 1},
                            {{}, {0.5}, {0, 0.75}, {2.0 / 9, 1.0 / 3, 4.0 / 9}},
                            {2.0 / 9, 1.0 / 3, 4.0 / 9, 0},
                            {2.0 / 9 - 7.0 / 24, 1.0 / 3 - 0.25, 4.0 / 9 - 1.0 / 3, -0.125},
                            0.7937,
                            0.3333333,
                            1e-6};

plain_run integrate(const plain_rule& r, const std::function<state(double, const state&)>& f, state y, double t_end,
                    double h, double h_min, double h_max) {
    plain_run run;
    const std::size_t n = y.size();
    while (true) {
        std::vector<state> k;
        for (std::size_t s = 0; s < r.c.size(); ++s) {
            state at_stage = y;
            for (std::size_t i = 0; i < n; ++i)
                for (std::size_t j = 0; j < r.a[s].size(); ++j) at_stage[i] += h * r.a[s][j] * k[j][i];
            k.push_back(f(run.t + r.c[s] * h, at_stage));
        }
        double norm = 0.0;
        for (std::size_t i = 0; i < n; ++i) {
            double e = 0.0;
            for (std::size_t j = 0; j < k.size(); ++j) e += r.difference[j] * k[j][i];
            norm += h * e * h * e;
        }
        norm = std::sqrt(norm);
        if (norm <= r.tolerance) {
            ++run.accept;
            for (std::size_t i = 0; i < n; ++i)
                for (std::size_t j = 0; j < k.size(); ++j) y[i] += h * r.b[j] * k[j][i];
            run.t += h;
            run.y = y;
            if (t_end <= run.t + 1e-13) return run;
        } else {
            ++run.reject;
        }
        const double s = r.safety * std::pow(r.tolerance / norm, r.power);
        h *= s < 0.5 ? 0.5 : s >= 2.0 ? 2.0 : s;
        h = std::max(std::min(h, h_max), h_min);
        if (t_end <= run.t + h) h = std::max(h_min, t_end - run.t + 1e-13);
    }
}
int told(const std::string& text, const std::string& word) {
    const std::size_t i = text.find(word + "=");
    return i == std::string::npos ? -1 : std::atoi(text.c_str() + i + word.size() + 1);
}
}  // namespace

TEST(explicit_runs, rules_that_choose_their_steps_accept_and_reject_as_they_are_published) {
    const std::string stiff =
        "xelement name=C type=srcac y=u a=1 f_hz=0.15915494309189535\n"
        "xelement name=S type=sum_2 x1=u x2=y y=e k1=50 k2=-50\nxelement name=Y type=intgrtr x=e y=y\n"
        "outvar: y=xvar_of_y\n";
    const std::string steps =
        "=yes t_start=0 t_end=1 delt_const_x=0.1 delt_min_x=1e-7 delt_max_x=0.5 rkf45_tolr=1e-6 bs23_tolr=1e-6 "
        "rkf45_fctr_min=0.5 rkf45_fctr_max=2 bs23_fctr_min=0.5 bs23_fctr_max=2";
    const struct {
        const char* word;
        std::string name;
        const plain_rule& rule;
    } rules[] = {{"RKF45", "rkf45", fehlberg}, {"BS23", "bs23", bogacki}};
    for (const auto& r : rules) {
        const whole_run swings(diagram(oscillator, "a b", r.word + steps));
        ASSERT_FALSE(swings.stopped) << swings.text;
        const plain_run plain = integrate(
            r.rule,
            [](double, const state& y) {
                return state{3 * y[1], -3 * y[0]};
            },
            {1, 0}, 1, 0.1, 1e-7, 0.5);
        EXPECT_EQ(told(swings.text, r.name + "_n_accept"), plain.accept);
        EXPECT_EQ(told(swings.text, r.name + "_n_reject"), plain.reject);
        EXPECT_GT(plain.reject, 0);
        const table rows = swings.rows("out.dat");
        EXPECT_EQ(static_cast<int>(rows.size()), plain.accept + 1);
        EXPECT_NEAR(rows.back()[1], plain.y[0], 1e-6 * std::fabs(plain.y[0]));

        const whole_run follows(diagram(stiff, "y", r.word + steps));
        ASSERT_FALSE(follows.stopped) << follows.text;
        const plain_run slow = integrate(
            r.rule, [](double t, const state& y) { return state{50 * std::sin(t) - 50 * y[0]}; }, {0}, 1, 0.1, 1e-7,
            0.5);
        EXPECT_EQ(told(follows.text, r.name + "_n_accept"), slow.accept);
        EXPECT_EQ(told(follows.text, r.name + "_n_reject"), slow.reject);
        EXPECT_GT(slow.reject, 0);
        EXPECT_NEAR(follows.rows("out.dat").back()[1], slow.y[0], 1e-6 * std::fabs(slow.y[0]));
    }
}

TEST(explicit_runs, a_norm_of_zero_lets_the_step_grow_by_its_largest_factor_alone) {
    const whole_run run(
        diagram("xelement name=K type=const y=u k=1\nxelement name=Y type=intgrtr x=u y=y\n"
                "outvar: y=xvar_of_y\n",
                "y", "RKF45=yes t_start=0 t_end=1 delt_const_x=0.1"));
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("out.dat");
    ASSERT_GT(rows.size(), 3u);
    EXPECT_NEAR(rows[2][0] - rows[1][0], 0.11, 1e-6);
    EXPECT_NEAR(rows.back()[1], 1.0, 1e-6);
}

TEST(explicit_runs, a_tolerance_that_the_smallest_step_does_not_meet_stops_with_both) {
    const whole_run run(diagram(oscillator, "a", "RKF45=yes t_start=0 t_end=1 delt_const_x=0.5 delt_min_x=0.5"));
    EXPECT_TRUE(run.stopped);
    EXPECT_NE(run.text.find("solve_trns_x_rkf45:\n  tolerance not met even with\n  the smallest time step.\n"
                            "  rkf45_norm2="),
              std::string::npos)
        << run.text;
    EXPECT_NE(run.text.find(",  rkf45_tolr=1e-08\n  delta_t_x=0.5,  delt_min_x=0.5\n  Halting..."), std::string::npos)
        << run.text;
    EXPECT_EQ(run.rows("out.dat").size(), 1u) << "the first row is on the disk";
}

TEST(explicit_runs, a_run_that_is_cut_says_so_and_keeps_its_rows) {
    const whole_run run(diagram(decay, "y", "Heun=yes t_start=0 t_end=1 delt_const_x=0.1 itmax_trns=3"));
    EXPECT_FALSE(run.stopped);
    EXPECT_NE(run.text.find("solve_trns_x_heun:\n  warning: time_end not reached\n  in transient simulation.\n"
                            "  Increase itmax_trns in the method card."),
              std::string::npos)
        << run.text;
    EXPECT_EQ(run.rows("out.dat").size(), 4u);
}

namespace {
std::string chain_of(int n) {
    std::string text = "xelement name=K type=const y=v0 k=1\n";
    for (int i = 0; i < n; ++i)
        text += "xelement name=S" + std::to_string(i) + " type=sum_2 x1=v" + std::to_string(i) + " x2=v" +
                std::to_string(i) + " y=v" + std::to_string(i + 1) + " k1=1 k2=1\n";
    return text + "outvar: y=xvar_of_v" + std::to_string(n) + "\n";
}
}  // namespace

TEST(explicit_runs, a_chain_of_twenty_blocks_runs_and_one_of_twenty_one_stops) {
    EXPECT_EQ(last(diagram(chain_of(20), "y", "forward_euler=yes t_start=0 t_end=1 delt_const_x=0.5")), 1048576.0);
    const whole_run run(diagram(chain_of(21), "y", "forward_euler=yes t_start=0 t_end=1 delt_const_x=0.5"));
    EXPECT_TRUE(run.stopped);
    EXPECT_NE(run.text.find("xbeu_class: ordering failed even after\n  completing 20 passes.\n  Algebraic loop?"),
              std::string::npos)
        << run.text;
}

TEST(explicit_runs, blocks_run_in_the_order_of_their_inputs_whatever_the_order_of_the_deck) {
    const whole_run run(
        diagram("xelement name=C type=sum_2 x1=b x2=b y=c k1=10 k2=0\n"
                "xelement name=B type=sum_2 x1=a x2=a y=b k1=10 k2=0\nxelement name=A type=const y=a k=1\n"
                "outvar: c=xvar_of_c\n",
                "c", "forward_euler=yes t_start=0 t_end=1 delt_const_x=1"));
    ASSERT_FALSE(run.stopped) << run.text;
    EXPECT_EQ(run.rows("out.dat")[0][1], 100.0);
}

TEST(explicit_runs, blocks_that_feed_one_another_stop_and_an_integrator_between_them_does_not) {
    const std::string loop = "xelement name=A type=sum_2 x1=b x2=b y=a\nxelement name=B type=";
    const std::string method = "forward_euler=yes t_start=0 t_end=1 delt_const_x=1";
    const whole_run stops(diagram(loop + "sum_2 x1=a x2=a y=b\noutvar: a=xvar_of_a\n", "a", method));
    EXPECT_TRUE(stops.stopped);
    EXPECT_NE(stops.text.find("  Algebraic loop?"), std::string::npos) << stops.text;
    const whole_run runs(diagram(loop + "intgrtr x=a y=b\noutvar: a=xvar_of_a\n", "a", method));
    EXPECT_FALSE(runs.stopped) << runs.text;
}

TEST(explicit_runs, a_variable_has_one_writer_and_an_integrator_needs_its_input) {
    const std::string method = "forward_euler=yes t_start=0 t_end=1 delt_const_x=1";
    const whole_run twice(
        diagram("xelement name=A type=const y=a\nxelement name=B type=const y=a\noutvar: a=xvar_of_a\n", "a", method));
    EXPECT_TRUE(twice.stopped);
    EXPECT_NE(twice.text.find("xbeu.set_values_1:\nAn xvar is assigned as an\noutput var for two basic elements!\n"
                              "   xbeu_var = 0\n   opvr_xbeu[xbeu_var] = 0\n   Halting..."),
              std::string::npos)
        << twice.text;
    const whole_run open(diagram("xelement name=A type=intgrtr x=nothing y=a\noutvar: a=xvar_of_a\n", "a", method));
    EXPECT_TRUE(open.stopped);
    EXPECT_NE(open.text.find("xbeu_class: an input node of an integrator type\n  xbeu has not been visited.\n"
                             "  i_xbeu_vr=0\n   Halting..."),
              std::string::npos)
        << open.text;
}

TEST(explicit_runs, an_angle_comes_back_into_its_range) {
    const whole_run run(
        diagram("xelement name=K type=const y=w k=1\n"
                "xelement name=T type=intgrtr_2 x=w y=th lo=0 hi=1\noutvar: th=xvar_of_th\n",
                "th", "RK4=yes t_start=0 t_end=3.55 delt_const_x=0.1"));
    ASSERT_FALSE(run.stopped) << run.text;
    for (const auto& row : run.rows("out.dat")) {
        EXPECT_LT(row[1], 1.1 + 1e-9) << row[0];  // a row shows the point before it is brought back
        EXPECT_NEAR(std::fmod(row[1] - row[0] + 10.5, 1.0), 0.5, 1e-6) << row[0];
    }
}

TEST(explicit_runs, a_block_goes_on_from_the_solution_before_and_from_a_file) {
    const std::string rule = "method: RK4=yes delt_const_x=0.125 t_start=";
    const auto block = [&](const std::string& from, const std::string& times, const std::string& file) {
        return "begin_solve\nsolve_type trns\ninitial_sol " + from + "\n" + rule + times + "\nbegin_output\nfilename " +
               file + "\nvariables: y\nend_output\n" + "begin_output\nfilename " + file +
               ".sol\nvariables: solution\nend_output\nend_solve\n";
    };
    const std::string head = "title: diagram\nbegin_circuit\n" + decay + "end_circuit\n";
    const whole_run run(head + block("initialize", "0 t_end=1", "a.dat") + block("previous", "1 t_end=2", "b.dat") +
                        block("file filename a.dat.sol", "1 t_end=2", "c.dat") +
                        block("initialize", "0 t_end=2", "d.dat") + "end_cf\n");
    ASSERT_FALSE(run.stopped) << run.text;
    const double whole = run.rows("d.dat").back()[1];
    EXPECT_NEAR(run.rows("b.dat").back()[1], whole, 1e-7);
    EXPECT_NEAR(run.rows("c.dat").back()[1], whole, 1e-6);
    EXPECT_EQ(run.rows("b.dat").front()[1], run.rows("a.dat").back()[1]);
}

TEST(explicit_runs, first_guesses_are_set_by_the_block) {
    EXPECT_NEAR(last(diagram(decay, "y", "RK4=yes t_start=0 t_end=1 delt_const_x=0.125",
                             "initial_sol initialize\nset_igparm y_ig_of_Y=2\n")),
                2 * std::exp(-1.0), 2e-5);
}

TEST(explicit_runs, a_step_beside_a_circuit_is_taken_when_the_analog_step_reaches_it) {
    const std::string deck =
        "title: mixed\nbegin_circuit\nrefnode 0\neelement name=V type=vsrcdc p=a n=0 vdc=1\n"
        "eelement name=R type=r p=a n=0 r=1\nxelement name=K type=const y=u k=1\nxelement name=Y type=intgrtr x=u y=y\n"
        "outvar: y=xvar_of_y\nend_circuit\nbegin_solve\nsolve_type trns\ninitial_sol initialize\n"
        "method: back_euler=yes forward_euler=yes t_start=0 t_end=1e-2 delt_const=1e-4 delt_const_x=4e-3\n"
        "begin_output\nfilename out.dat\nvariables: y\nend_output\nend_solve\nend_cf\n";
    const whole_run run(deck);
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("out.dat");
    EXPECT_NEAR(rows.back()[1], 8e-3, 1e-9);
    for (const auto& row : rows) EXPECT_EQ(row[1] >= 4e-3, row[0] > 3.95e-3) << row[0];
    for (const char* rule : {"RK4", "modified_euler", "Heun"}) {
        std::string other = deck;
        other.replace(other.find("forward_euler"), 13, rule);
        const whole_run same(other);
        EXPECT_FALSE(same.stopped) << rule << same.text;
        EXPECT_NEAR(same.rows("out.dat").back()[1], 8e-3, 1e-9) << rule;
    }
    for (const char* rule : {"RKF45", "BS23"}) {
        std::string other = deck;
        other.replace(other.find("forward_euler"), 13, rule);
        const whole_run stops(other);
        EXPECT_TRUE(stops.stopped);
        EXPECT_NE(stops.text.find(std::string("solve_class: ") + rule + " not allowed for x-mixed circuit."),
                  std::string::npos)
            << stops.text;
    }
}

TEST(explicit_runs, diagrams_without_integrators_take_forward_euler_alone) {
    const whole_run run(diagram("xelement name=K type=const y=u k=1\noutvar: u=xvar_of_u\n", "u",
                                "RK4=yes t_start=0 t_end=1 delt_const_x=0.5"));
    EXPECT_TRUE(run.stopped);
    EXPECT_NE(run.text.find(
                  "solve_class: only F.Euler is allowed when there are\n   no integrator type elements. Halting..."),
              std::string::npos)
        << run.text;
}

namespace {
const std::string branch_rc =
    "x_refnode 0\nxelement name=V type=e_vsrcdc p=a n=0 i=i1 vdc=1\nxelement name=R type=e_r p=a n=b i=i2 r=1k\n"
    "xelement name=C type=e_c p=b n=0 i=i3 vc=vc_b c=1u\noutvar: v=xvar_of_b\n";
}

TEST(explicit_networks, a_capacitor_is_charged_through_a_resistor) {
    EXPECT_NEAR(last(diagram(branch_rc, "v", "RK4=yes t_start=0 t_end=1m delt_const_x=10u")), 1 - std::exp(-1.0), 1e-7);
}

TEST(explicit_networks, a_divider_is_exact) {
    EXPECT_EQ(last(diagram("x_refnode 0\nxelement name=V type=e_vsrcdc p=a n=0 i=i4 vdc=10\n"
                           "xelement name=R type=e_r p=a n=b i=i5 r=3k\nxelement name=Q type=e_r p=b n=0 i=i6 r=1k\n"
                           "outvar: v=xvar_of_b\n",
                           "v", "forward_euler=yes t_start=0 t_end=1m delt_const_x=0.5m")),
              2.5);
}

TEST(explicit_networks, a_capacitor_across_an_ideal_source_stops) {
    const whole_run run(
        diagram("x_refnode 0\nxelement name=V type=e_vsrcdc p=a n=0 i=i7 vdc=1\n"
                "xelement name=C type=e_c p=a n=0 i=i8 vc=vc_a c=1u\noutvar: v=xvar_of_a\n",
                "v", "RK4=yes t_start=0 t_end=1m delt_const_x=10u"));
    EXPECT_TRUE(run.stopped) << run.text;
}

TEST(explicit_networks, need_a_reference) {
    std::string open = branch_rc;
    open.erase(0, 12);
    const whole_run run(diagram(open, "v", "RK4=yes t_start=0 t_end=1m delt_const_x=10u"));
    EXPECT_TRUE(run.stopped);
    EXPECT_NE(run.text.find("cct_class: x-reference node not found."), std::string::npos) << run.text;
}

TEST(explicit_networks, are_not_evaluated_one_block_after_another) {
    const whole_run run(diagram(branch_rc, "v", "RK4=yes t_start=0 t_end=1m delt_const_x=10u x_eval_serial=yes"));
    EXPECT_TRUE(run.stopped);
    EXPECT_NE(run.text.find("solve_class: flag_x_eval_serial and flag_x_use_matrix\n  are not compatible."),
              std::string::npos)
        << run.text;
}

// A diagram without networks has the same slopes by both ways of evaluation.
TEST(explicit_networks, a_plain_diagram_solved_together_has_the_rows_of_one_evaluated_in_order) {
    const std::string circuit =
        "xelement name=S type=srcac y=u a=2 f_hz=3\nxelement name=E type=sum_2 x1=u x2=y y=e k1=1 k2=-1\n"
        "xelement name=Y type=filter_z0_p1 x=e y=y a0=5 b0=1 b1=0.1\noutvar: y=xvar_of_y e=xvar_of_e\n";
    const std::string method = "RK4=yes t_start=0 t_end=1 delt_const_x=5m x_eval_serial=";
    table one, other;
    {
        const whole_run run(diagram(circuit, "y e", method + "yes"));
        ASSERT_FALSE(run.stopped) << run.text;
        one = run.rows("out.dat");
    }
    {
        const whole_run run(diagram(circuit, "y e", method + "no"));
        ASSERT_FALSE(run.stopped) << run.text;
        other = run.rows("out.dat");
    }
    ASSERT_EQ(one.size(), other.size());
    for (std::size_t i = 0; i < one.size(); ++i)
        for (std::size_t j = 0; j < one[i].size(); ++j)
            EXPECT_NEAR(one[i][j], other[i][j], 2e-6 * (1 + std::fabs(one[i][j])));
}

TEST(explicit_networks, a_block_whose_input_nothing_writes_is_no_square_system) {
    const whole_run run(diagram("xelement name=Y type=intgrtr x=u y=y\noutvar: y=xvar_of_y\n", "y",
                                "RK4=yes t_start=0 t_end=1 delt_const_x=0.5 x_eval_serial=no"));
    EXPECT_TRUE(run.stopped);
}

// Diode and thyristor: the conducting resistance in series with the load, by Ohm's law at the crest.
TEST(explicit_networks, a_diode_passes_one_half_wave) {
    const whole_run run(
        diagram("x_refnode 0\nxelement name=V type=e_vsrcac p=a n=0 i=i9 a=100 f_hz=50\n"
                "xelement name=D type=e_diode_r p=a n=b i=i10 r_on=1 r_off=1M v_on=0\n"
                "xelement name=R type=e_r p=b n=0 i=i11 r=99\noutvar: v=xvar_of_b\n",
                "v", "forward_euler=yes t_start=0 t_end=20m delt_const_x=50u"));
    ASSERT_FALSE(run.stopped) << run.text;
    double highest = 0.0, lowest = 0.0;
    for (const auto& row : run.rows("out.dat")) {
        highest = std::max(highest, row[1]);
        lowest = std::min(lowest, row[1]);
    }
    EXPECT_NEAR(highest, 99.0, 1e-4);
    EXPECT_NEAR(lowest, -100.0 * 99.0 / (1e6 + 99.0), 1e-4);
}

// A lag of 1 ms under steps of 10 ms goes beyond all numbers.
TEST(explicit_run, a_step_that_is_too_long_stops_before_rows_of_no_number) {
    const whole_run run(
        "title: t\nbegin_circuit\nxelement name=K type=const y=x k=1\nxelement name=F type=filter_z0_p1 x=x y=y a0=1k "
        "b0=1k\n"
        "outvar: y=xvar_of_y\nend_circuit\nbegin_solve\nsolve_type trns\nmethod: RK4=yes t_end=10 delt_const_x=10m\n"
        "begin_output\nfilename y.dat\nvariables: y\nend_output\nend_solve\nend_cf\n");
    EXPECT_TRUE(run.stopped);
    EXPECT_NE(run.text.find("solve_trns_x_rk4: NaN found!\n  time="), std::string::npos) << run.text;
    EXPECT_NE(run.text.find("\n  Check variable y, and whether the step is too long.\n  Halting...\n"),
              std::string::npos);
    const table rows = run.rows("y.dat");
    ASSERT_FALSE(rows.empty());
    for (const auto& row : rows) EXPECT_TRUE(std::isfinite(row.back()));
}
