// Rational filters in explicit diagrams, against the companion form integrated here.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "whole_run.h"

namespace {
using poly = std::vector<double>;

poly times(const poly& a, const poly& b) {
    poly c(a.size() + b.size() - 1, 0.0);
    for (std::size_t i = 0; i < a.size(); ++i)
        for (std::size_t j = 0; j < b.size(); ++j) c[i + j] += a[i] * b[j];
    return c;
}
poly power(const poly& a, int n) { return n == 0 ? poly{1} : times(a, power(a, n - 1)); }

constexpr double t_end = 6, step = 0.01;
double input(double t) { return 1 + 0.5 * std::sin(2 * std::numbers::pi * 0.3 * t); }
const std::string source = "xelement name=U type=srcac y=u dc=1 a=0.5 f_hz=0.3\n";

// The companion form: D w = u, y = N w, from rest; fine steps of the classic method of Runge and Kutta.
std::vector<double> companion_rows(poly n, const poly& d) {
    constexpr int fine = 10;
    n.resize(d.size(), 0.0);
    const std::size_t order = d.size() - 1;
    std::vector<double> w(order, 0.0), rows;
    const auto highest = [&](const std::vector<double>& at, double t) {
        double sum = input(t);
        for (std::size_t k = 0; k < order; ++k) sum -= d[k] * at[k];
        return sum / d[order];
    };
    const auto slope = [&](const std::vector<double>& at, double t) {
        std::vector<double> out(at.begin() + 1, at.end());
        out.push_back(highest(at, t));
        return out;
    };
    const auto moved = [](std::vector<double> at, const std::vector<double>& by, double h) {
        for (std::size_t k = 0; k < at.size(); ++k) at[k] += h * by[k];
        return at;
    };
    const int n_rows = static_cast<int>(std::lround(t_end / step));
    for (int row = 0; row <= n_rows; ++row) {
        const double t0 = row * step, h = step / fine;
        double y = n[order] * highest(w, t0);
        for (std::size_t k = 0; k < order; ++k) y += n[k] * w[k];
        rows.push_back(y);
        for (int i = 0; i < fine; ++i) {
            const double t = t0 + i * h;
            const auto k1 = slope(w, t), k2 = slope(moved(w, k1, h / 2), t + h / 2),
                       k3 = slope(moved(w, k2, h / 2), t + h / 2), k4 = slope(moved(w, k3, h), t + h);
            for (std::size_t k = 0; k < order; ++k) w[k] += h / 6 * (k1[k] + 2 * k2[k] + 2 * k3[k] + k4[k]);
        }
    }
    return rows;
}

std::string filter(const poly& n, const poly& d, const std::string& name = "F", const std::string& y = "y") {
    std::string text = "xelement name=" + name + " type=filter_1 x=u y=" + y +
                       " degree_n=" + std::to_string(n.size() - 1) + " degree_d=" + std::to_string(d.size() - 1);
    const auto number = [](double x) {
        char word[40];
        std::snprintf(word, sizeof word, "%.17g", x);
        return std::string(word);
    };
    for (std::size_t k = 0; k < n.size(); ++k) text += " n" + std::to_string(k) + "=" + number(n[k]);
    for (std::size_t k = 0; k < d.size(); ++k) text += " d" + std::to_string(k) + "=" + number(d[k]);
    return text + "\n";
}
std::string deck(const std::string& circuit, const std::string& outputs) {
    return "title: t\nbegin_circuit\n" + circuit + "outvar: y=xvar_of_y" + (outputs == "y" ? "" : " w=xvar_of_w") +
           "\nend_circuit\nbegin_solve\nsolve_type trns\ninitial_sol initialize\nmethod: RK4=yes t_end=6 "
           "delt_const_x=0.01\nbegin_output\nfilename out.dat\nvariables: " +
           outputs + "\nend_output\nend_solve\nend_cf\n";
}

TEST(filter_1, answers_as_its_companion_form_does) {
    const poly pair = {1.3, 0.4, 1};
    poly butterworth = {1, 1};
    for (int k = 1; k <= 4; ++k)
        butterworth = times(butterworth, {4, 4 * std::cos(std::numbers::pi * k / 9), 1});  // 2 rad/s, and a pole at 1
    const struct {
        const char* name;
        poly n, d;
    } cases[] = {
        {"lag", {2}, {1, 0.5}},
        {"lead and lag", {1, 2}, {1, 0.5}},
        {"double and single pole", {3, 1}, times(power({1, 1}, 2), {2, 1})},
        {"pair", {1, 1}, pair},
        {"equal degrees", {1, 0, 2}, pair},
        {"integrator", {1}, {0, 1}},
        {"double integrator and a pair", {1, 0.5}, times({0, 0, 1}, pair)},
        {"triple pole", {1, 0.3, 0.1}, power({1, 1}, 3)},
        {"fivefold pole", {2}, power({1.5, 1}, 5)},
        {"double pair", {1, 1, 1, 1}, power(pair, 2)},
        {"triple pair", {1, 0, 1}, power(pair, 3)},
        {"all-pass", {1, -2, 1}, {1, 2, 1}},
        {"degree 9", {butterworth[0]}, butterworth},
        {"degree 9 in numerator and denominator", power({1, 0.3, 0.2, 1}, 3), power({1, 1.1, 1.2, 1}, 3)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const whole_run run(deck(source + filter(c.n, c.d), "y"));
        ASSERT_FALSE(run.stopped) << run.text;
        const table rows = run.rows("out.dat");
        const std::vector<double> expected = companion_rows(c.n, c.d);
        ASSERT_GE(rows.size(), expected.size());
        for (std::size_t k = 0; k < expected.size(); ++k) {
            ASSERT_NEAR(rows[k][0], static_cast<double>(k) * step, 1e-6);
            EXPECT_NEAR(rows[k][1], expected[k], 2e-6 * std::max(1.0, std::fabs(expected[k]))) << rows[k][0];
        }
    }
}

TEST(filter_1, answers_as_the_same_filter_made_of_blocks) {
    const whole_run run(deck(source + filter({3, 1}, times(power({1, 1}, 2), {2, 1})) +
                                 // b - c is the derivative of c, so (s + 3) c is b + 2 c.
                                 "xelement name=A type=filter_z0_p1 x=u y=a a0=1 b0=2 b1=1\n"
                                 "xelement name=B type=filter_z0_p1 x=a y=b a0=1 b0=1 b1=1\n"
                                 "xelement name=C type=filter_z0_p1 x=b y=c a0=1 b0=1 b1=1\n"
                                 "xelement name=S type=sum_2 x1=b x2=c y=w k1=1 k2=2\n",
                             "y w"));
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("out.dat");
    ASSERT_GT(rows.size(), 500u);
    for (const auto& row : rows) EXPECT_NEAR(row[1], row[2], 1e-6);
}

TEST(filter_1, keeps_its_sections_whatever_is_written_later) {
    std::string text =
        deck("xelement name=U type=const y=u k=1\n" + filter({3, 1}, times(power({1, 1}, 2), {2, 1})), "y");
    std::string block = text.substr(text.find("begin_solve"));
    block.erase(block.find("end_cf"));
    block.replace(block.find("method:"), 7, "set_parm n0_of_F 30\nset_parm k_of_U 2\nmethod:");
    block.replace(block.find("out.dat"), 7, "out2.dat");
    text.insert(text.find("end_cf"), block);
    const whole_run run(text);
    ASSERT_FALSE(run.stopped) << run.text;
    const table before = run.rows("out.dat"), after = run.rows("out2.dat");
    ASSERT_EQ(before.size(), after.size());
    for (std::size_t k = 0; k < before.size(); ++k) EXPECT_NEAR(after[k][1], 2 * before[k][1], 3e-6);
}

TEST(filter_1, stops_before_the_first_block_at_what_is_no_filter) {
    const auto text_of = [](const std::string& words) {
        const whole_run run(deck(source + "xelement name=F type=filter_1 x=u y=y " + words + "\n", "y"));
        EXPECT_TRUE(run.stopped) << words;
        return run.text;
    };
    EXPECT_EQ(text_of("degree_n=-1"), "dp_class::xce_filter_1: check degree_n. Halting...\n");
    EXPECT_EQ(text_of("degree_d=10"), "dp_class::xce_filter_1: check degree_d. Halting...\n");
    EXPECT_EQ(text_of("degree_n=2 n2=1"), "dp_class::xce_filter_1: degree_d < degree_n. Halting...\n");
    EXPECT_EQ(text_of("n0=0"), "partial_fractions_1: coef_n[degree_n] is zero! Halting...\n");
    EXPECT_EQ(text_of("degree_d=2"), "partial_fractions_1: coef_d[degree_d] is zero! Halting...\n");
}

TEST(filter_1, cannot_be_called_by_a_composite) {
    const temp_folder folder;
    const std::string caller =
        "xce name=mine\nbegin_dc\nmain_vars: x y\naux_vars:\ngvars:\noutvar: y=xvar_of_y\nbias:\niparms:\nsparms:\n"
        "rparms:\nrparms_derived:\nstparms:\ncallxce filter_1 x=x y=y n0=3\nend_dc\nC:\nendC\nbegin_ac\n"
        "outvar_ac:\nend_ac\nendxce\n";
    fill_working_folder(".", deck(source + "xelement name=M type=mine x=u y=y\n", "y"),
                        more_entries("xels.aux", "xce_all.lst", caller));
    const console_run heard = run_and_listen([] { run_tarnel(); });
    EXPECT_EQ(heard.text,
              "dp_class::xce_filter_1: filter_1 cannot be called by a composite.\n  The composite is: mine\n"
              "  Halting...\n");
}

// A working folder has libraries of its own, in which a type of that name need not be the one that is meant.
TEST(filter_1, names_the_word_that_an_entry_of_its_name_lacks) {
    const auto text_with = [](const std::string& changed, const std::string& before, const std::string& after) {
        const temp_folder folder;
        fill_working_folder(".", deck(source + "xelement name=F type=filter_1 x=u y=y\n", "y"),
                            [&](const std::string& file, std::string& library) {
                                if (file != changed) return;
                                const std::size_t at = library.find(before);
                                ASSERT_NE(at, std::string::npos) << before;
                                library.replace(at, before.size(), after);
                            });
        return run_and_listen([] { run_tarnel(); }).text;
    };
    const auto lacks = [](const std::string& entry, const std::string& word) {
        return "dp_class::xce_filter_1: " + entry + " has no parameter " + word + ".\n  Halting...\n";
    };
    EXPECT_EQ(text_with("xbes.aux", "iparms: order=1", "iparms: degree=1"), lacks("filter_1", "order"));
    EXPECT_EQ(text_with("xbes.aux", "rparms: kx=0 kp=0", "rparms: k1=0 kp=0"), lacks("filter_1", "kx"));
    EXPECT_EQ(text_with("xbes.aux", "rparms: a0=0 c1=0", "rparms: a0=0 c0=0"), lacks("sum_filter_1", "c1"));
    const std::string other =
        "xce name=filter_1\nbegin_dc\nmain_vars: x y\naux_vars: zd\ngvars:\noutvar:\nbias:\niparms: degree_d=1\n"
        "sparms:\nrparms: n0=1\nrparms_derived:\nstparms:\nxbe type=filter_1 name=s x=x w=x z=y zd=zd\nend_dc\nC:\n"
        "endC\nbegin_ac\noutvar_ac:\nend_ac\nendxce\nxce name=filter_1 allow_ac=yes";
    EXPECT_EQ(text_with("xels.aux", "xce name=filter_1 allow_ac=yes", other), lacks("filter_1", "degree_n"));
}

}  // namespace
