// trns_sequences_test.cpp -- how steps are chosen, and how one block of a deck goes on from another.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <locale>

#include "analyses/step_control.h"
#include "dc_fixture.h"
#include "whole_run.h"

namespace {
// First-order circuits of 1 ms that start at 0 and go to 1: y' = (1 - y) 1000. The same by a grounded capacitor, one
// between two resistors, an inductor, a block, and a grounded one beside a diode that stays off (so solved by Newton).
struct first_order_circuit {
    const char* name;
    std::string circuit;
    // Entries of the error estimate: `count` of them, each scale times y'.
    int count;
    double scale;
    double rate = 1e3;  // y' = 1e3 - rate y
};
const std::string source = "eelement name=V1 type=vsrcdc p=in n=0 vdc=1\n";
const std::string grounded = source + "eelement name=R1 type=r p=in n=a r=1k\neelement name=C1 type=c p=a n=0 c=1u\n";
const first_order_circuit first_order_circuits[] = {
    {"grounded_capacitor", grounded + "outvar: y=nodev_of_a\n", 1, 1e-6},
    {"floating_capacitor",
     source + "eelement name=R1 type=r p=in n=a r=500\neelement name=R2 type=r p=b n=0 r=500\n"
              "eelement name=C1 type=c p=a n=b c=1u\noutvar: y=v_of_C1\n",
     2, 1e-6},
    {"inductor",
     source + "eelement name=R1 type=r p=in n=a r=1k\neelement name=L1 type=l p=a n=b l=1\n"
              "eelement name=H1 type=ccvs p=y n=0 br=L1 rm=1k\neelement name=A1 type=vsrcdc p=b n=0 vdc=0\n"
              "outvar: y=nodev_of_y\n",
     1, 1e-3},
    {"block", "gelement name=K type=const y=x k=1\ngelement name=L type=lag_1 x=x y=y tau=1m\noutvar: y=var_of_y\n", 1,
     1},
    {"capacitor_by_newton", grounded + "eelement name=D1 type=diode_r p=0 n=a\noutvar: y=nodev_of_a\n", 1, 1e-6, 1001},
};

std::string trns(const std::string& settings, const std::string& start = "initial_sol previous\n") {
    return "solve_type trns\n" + start + "method: gmin_step=no chk_only_rhs2=yes norm_2=1e-13 " + settings + "\n";
}
const std::string startup = "solve_type startup\nmethod: gmin_step=no\n";

// One step of TR-BDF2 on y' = 1e3 - rate y: both stages, and the measure of the error that the second leaves.
struct stages {
    double y, error;
};
stages trbdf2_by_hand(double y0, double h, double rate) {
    const double g = 2 - std::sqrt(2.0);
    auto f = [&](double y) { return 1e3 - rate * y; };
    const double yg = (y0 + g * h / 2 * (f(y0) + 1e3)) / (1 + g * h / 2 * rate);
    // Through y0, yg and y goes a parabola with the slope f(y) at its end.
    const double y = (yg / (g * (1 - g) * h) - y0 * (1 - g) / (g * h) + 1e3) / ((2 - g) / ((1 - g) * h) + rate);
    return {y, f(y0) / g - f(yg) / (g * (1 - g)) + f(y) / (1 - g)};
}

struct error_control {
    double tolr, delt_min, delt_max;
    int rejected = 0;
};
// Times and values of a whole run under error control.
table trbdf2_run_by_hand(const first_order_circuit& c, error_control& e, double h, double t_end) {
    const double g = 2 - std::sqrt(2.0), constant = std::fabs((4 * g - 3 * g * g - 2) / (12 * (2 - g)));
    table rows{{0, 0}};
    double t = 0, y = 0;
    while (t < t_end) {
        const stages s = trbdf2_by_hand(y, h, c.rate);
        const double r = std::sqrt(c.count) * c.scale * std::fabs(s.error) * 2 * constant * h / e.tolr;
        const double h_est = h * std::pow(r, -1.0 / 3);
        const double wanted = r >= 2 ? 0.9 * h_est : std::min(0.9 * h_est, 2 * h);
        if (r < 2) {
            t += h;
            y = s.y;
            rows.push_back({t, y});
        } else {
            ++e.rejected;
        }
        h = std::min(e.delt_max, std::max(e.delt_min, wanted));
        if (r < 2 && t_end <= t + h) h = std::max(e.delt_min, t_end - t + 1e-13);
    }
    return rows;
}

std::string number(double x) {
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", x);
    return text;
}

void expect_close(const table& a, const table& b, double relative, double absolute, const std::string& what) {
    ASSERT_EQ(a.size(), b.size()) << what;
    for (std::size_t i = 0; i < a.size(); ++i) {
        ASSERT_EQ(a[i].size(), b[i].size());
        for (std::size_t j = 0; j < a[i].size(); ++j)
            EXPECT_NEAR(a[i][j], b[i][j], relative * std::fabs(b[i][j]) + absolute)
                << what << ": row " << i << " " << j;
    }
}
}  // namespace

// ---- step sizes

TEST(trbdf2, steps_and_values_follow_its_error_estimate) {
    for (const first_order_circuit& c : first_order_circuits)
        for (const double h0 : {1e-3, 1e-6}) {  // too long, so that the first tries are rejected, and too short
            error_control e{1e-5 * c.scale, 2e-7, 4e-4};
            const whole_run run(
                deck_text{c.circuit,
                          "y",
                          {startup, trns("trbdf2=yes t_end=4m delt_const=" + number(h0) +
                                         " trbdf2_tolr=" + number(e.tolr) + " delt_min=0.2u delt_max=0.4m")}}
                    .str());
            ASSERT_FALSE(run.stopped) << run.text;
            table rows = run.rows("out2.dat"), expected = trbdf2_run_by_hand(c, e, h0, 4e-3);
            ASSERT_GT(expected.size(), 12u);
            if (h0 == 1e-3) {
                EXPECT_GE(e.rejected, 1);
            }
            // Behind t_end by the time's tolerance, the last row may be left out.
            if (rows.size() + 1 == expected.size()) expected.pop_back();
            expect_close(rows, expected, 2e-6, 1e-9, c.name + (" from " + number(h0)));
        }
}

TEST(trbdf2, keeps_a_step_whose_limits_are_equal) {
    error_control e{1e-6, 1e-4, 1e-4};
    const first_order_circuit& c = first_order_circuits[0];
    const whole_run run(deck_text{c.circuit,
                                  "y",
                                  {startup, trns("trbdf2=yes t_end=1m delt_const=0.1m delt_min=0.1m delt_max=0.1m "
                                                 "trbdf2_tolr=1e-6 itmax_trns=9")}}
                            .str());
    table expected = trbdf2_run_by_hand(c, e, 1e-4, 9.5e-4);
    expected.resize(10);
    EXPECT_EQ(e.rejected, 0);
    expect_close(run.rows("out2.dat"), expected, 2e-6, 1e-9, run.text);
}

TEST(orders, of_gear2_and_trbdf2_are_two) {
    const double exact = 1 - std::exp(-1.0);
    for (const first_order_circuit& c : first_order_circuits) {
        if (c.rate != 1e3) continue;
        for (const char* rule : {"gear2", "trbdf2"}) {
            double before = NAN;
            for (const char* h : {"0.1m", "0.05m", "0.025m"}) {
                const whole_run run(deck_text{c.circuit,
                                              "y",
                                              {startup, trns(std::string(rule) + "=yes t_end=1m delt_const=" + h +
                                                             " delt_max=" + h + " trbdf2_tolr=1e6 time_epsilon=1e-12")}}
                                        .str());
                const table rows = run.rows("out2.dat");
                ASSERT_FALSE(rows.empty()) << run.text;
                ASSERT_NEAR(rows.back()[0], 1e-3, 1e-9) << run.text;
                const double error = rows.back()[1] - exact;
                if (!std::isnan(before)) {
                    EXPECT_NEAR(before / error, 4.1, 0.25) << c.name << " " << rule << " " << h;
                }
                before = error;
            }
            EXPECT_LT(std::fabs(before), 1.1e-4) << c.name << " " << rule;
        }
    }
}

// A linear circuit grows and reduces no step, so the rules with automatic steps are those with fixed ones.
TEST(orders, of_automatic_rules_on_linear_circuits_are_those_of_the_fixed_ones) {
    for (const first_order_circuit& c : first_order_circuits) {
        if (c.rate != 1e3) continue;
        for (const std::string rule : {"back_euler", "trapezoidal"}) {
            std::string text[2];
            for (int k = 0; k < 2; ++k) {
                const whole_run run(
                    deck_text{c.circuit,
                              "y",
                              {startup, trns(rule + (k ? "_auto" : "") + "=yes t_end=1m delt_const=0.05m delt_max=1m")}}
                        .str());
                text[k] = read_file("out2.dat");
            }
            EXPECT_GT(text[0].size(), 500u);
            EXPECT_EQ(text[0], text[1]) << c.name << " " << rule;
        }
    }
}

namespace {
// Two clock sources whose breaks a test sets by hand, at time 1 s.
struct two_clocks : testing::Test {
    dc_run run{
        "eelement name=K1 type=clock p=a n=0 t1=4 t2=4 dt1=1 dt2=1\neelement name=R1 type=r p=a n=0 r=1\n"
        "eelement name=K2 type=clock p=b n=0 t1=4 t2=4 dt1=1 dt2=1\neelement name=R2 type=r p=b n=0 r=1\n"
        "outvar: v=nodev_of_a\n",
        "begin_output\nfilename o.dat\nvariables: v\nend_output\n"};
    two_clocks() {
        run.start();
        run.r.slv.now.time_present = 1;
        run.r.slv.method.delt_min = 0.125;
        run.r.flags.t_end = 100;
    }
    double& next(const std::string& clock) {
        return run.c.ebeu.time_nextbreak[static_cast<std::size_t>(run.unit_of(clock))];
    }
    double shortened(double delt, double next_1, double next_2) {
        run.r.slv.now.delt = delt;
        next("K1") = next_1;
        next("K2") = next_2;
        check_tnext2(run.r);
        return run.r.slv.now.delt;
    }
};
}  // namespace

TEST_F(two_clocks, a_step_ends_on_the_earlier_break) {
    EXPECT_EQ(shortened(0.5, 100, 100), 0.5);
    EXPECT_EQ(shortened(0.5, 1.25, 100), 0.25);
    EXPECT_EQ(shortened(0.5, 1.375, 1.25), 0.25);
    EXPECT_EQ(shortened(0.5, 1.25, 1.375), 0.25);
}
TEST_F(two_clocks, a_break_at_the_end_of_the_step_leaves_it) { EXPECT_EQ(shortened(0.5, 1.5, 100), 0.5); }
TEST_F(two_clocks, the_smallest_step_is_never_shortened) { EXPECT_EQ(shortened(0.125, 1.0625, 1.03125), 0.125); }
TEST_F(two_clocks, a_break_nearer_than_the_smallest_step_is_passed_over) {
    EXPECT_EQ(shortened(0.5, 1.0625, 100), 0.5);
    EXPECT_EQ(shortened(0.5, 1.0625, 1.25), 0.25);
    EXPECT_EQ(shortened(0.5, 0.5, 100), 0.5);  // behind already
    EXPECT_EQ(shortened(0.5, 1.125, 100), 0.125);
    // Rounding of a break that should lie a smallest step ahead does not lose it.
    EXPECT_EQ(shortened(0.5, 1.125 - 0.75e-15, 100), 1.125 - 0.75e-15 - 1);
    EXPECT_EQ(shortened(0.5, 1.125 - 4e-15, 100), 0.5);
}
TEST_F(two_clocks, are_asked_again_when_the_step_reaches_what_they_said) {
    // Corners at 0, 1, 4, 5, 8 s.
    run.r.slv.now.delt = 0.5;
    next("K1") = 1.5;
    next("K2") = 1.75;
    check_tnext1(run.r);
    EXPECT_EQ(next("K1"), 4);
    EXPECT_EQ(next("K2"), 1.75);
    next("K1") = 0.25;  // long behind
    check_tnext1(run.r);
    EXPECT_EQ(next("K1"), 4);
    find_nextbreak(run.r);
    EXPECT_EQ(next("K2"), 4);
    EXPECT_FALSE(run.r.flags.nexttime);
}

// Corners at 0, 1 and 1.05 ms with steps of 0.4 ms and none below 0.1 ms: the second corner is nearer to the first than
// that, so no step ends on it; it is asked for again behind it.
TEST(breaks, nearer_than_the_smallest_step_are_passed_over_in_a_run) {
    const temp_folder folder;
    write_file("w.dat", "0 0\n1m 1\n1.05m 3\n2m 3\n");
    const console_run heard = run_here(deck_text{
        "gelement name=F type=pwl_file y=y file=w.dat\noutvar: y=var_of_y\n",
        "y",
        {trns("back_euler=yes t_end=2.5m delt_const=0.4m delt_min=0.1m",
              "")}}.str());
    EXPECT_FALSE(heard.stopped) << heard.text;
    EXPECT_EQ(read_file("out1.dat"),
              " 0.000000e+00  0.000000e+00 \n 4.000000e-04  4.000000e-01 \n 8.000000e-04  8.000000e-01 \n"
              " 1.000000e-03  1.000000e+00 \n 1.400000e-03  3.000000e+00 \n 1.800000e-03  3.000000e+00 \n"
              " 2.000000e-03  3.000000e+00 \n 2.400000e-03  3.000000e+00 \n 2.500000e-03  3.000000e+00 \n");
}

// ---- one block behind another

// At rest a capacitor carries no current, and the trapezoidal rule starts from that current, not from what the new
// source voltage would drive.
TEST(sequences, a_transient_goes_on_from_dc_with_its_currents) {
    const whole_run run(deck_text{grounded + "outvar: va=nodev_of_a ic=i_of_C1\n",
                                  "va ic",
                                  {"solve_type dc\n",
                                   "solve_type trns\ninitial_sol previous\nset_parm vdc_of_V1 3\n"
                                   "method: trapezoidal=yes t_end=1m delt_const=0.1m\n"}}
                            .str());
    const table rows = run.rows("out2.dat");
    ASSERT_GE(rows.size(), 10u) << run.text;
    EXPECT_EQ(rows[0], (std::vector<double>{0, 1, 0}));
    double v = 1, i = 0;
    for (std::size_t k = 1; k < 10; ++k) {
        const double next = (3e-3 + v * 2e-2 + i) / (1e-3 + 2e-2);  // 2 c/h (next - v) - i = (3 - next)/r
        i = 2e-2 * (next - v) - i;
        v = next;
        EXPECT_NEAR(rows[k][1], v, 1e-6);
        EXPECT_NEAR(rows[k][2], i, 1e-9);
    }
}

namespace {
// States of every kind under a source that knows the time.
const std::string all_states =
    "eelement name=V1 type=vsrcac p=in n=0 a=1 f_hz=300\neelement name=R1 type=r p=in n=a r=1k\n"
    "eelement name=C1 type=c p=a n=b c=1u v0=0.5\neelement name=R2 type=r p=b n=0 r=500\n"
    "eelement name=L1 type=l p=b n=0 l=0.2\n"
    "gelement name=S type=srcac y=s a=1 f_hz=200\ngelement name=I1 type=intgrtr x=s y=y\n"
    "gelement name=G1 type=lag_1 x=y y=z tau=2m k=1000\n"
    "outvar: va=nodev_of_a vb=nodev_of_b ic=i_of_C1 il=i_of_L1 y=var_of_y z=var_of_z\n";
const std::string all_columns = "va vb ic il y z";
}  // namespace

TEST(sequences, a_run_in_two_blocks_is_the_run_in_one) {
    for (const std::string rule : {"back_euler", "trapezoidal", "trapezoidal_auto"}) {
        const whole_run run(deck_text{all_states,
                                      all_columns,
                                      {startup, trns(rule + "=yes t_end=1m delt_const=20u"),
                                       trns(rule + "=yes t_start=1m t_end=2m delt_const=20u"), startup,
                                       trns(rule + "=yes t_end=2m delt_const=20u")}}
                                .str());
        ASSERT_FALSE(run.stopped) << run.text;
        table first = run.rows("out2.dat"), second = run.rows("out3.dat"), whole = run.rows("out5.dat");
        ASSERT_GE(first.size(), 50u);
        ASSERT_GE(second.size(), 50u);
        ASSERT_GE(whole.size(), 100u);
        EXPECT_EQ(second[0][0], 1e-3);
        if (first.size() == 51) expect_close({second[0]}, {first.back()}, 1e-9, 0, rule + ": the first row");
        // The first block ends by the tolerance of time behind 1 ms.
        whole.resize(100);
        second.resize(50);
        expect_close(second, table(whole.begin() + 50, whole.end()), 3e-6, 1e-9, rule);
    }
}

TEST(sequences, a_solution_file_starts_a_run_as_the_previous_block_does) {
    for (const std::string rule : {"back_euler", "trapezoidal", "gear2", "trbdf2"}) {
        const std::string go_on = rule + "=yes t_start=1m t_end=2m delt_const=20u delt_max=20u";
        const whole_run run(deck_text{all_states,
                                      all_columns,
                                      {startup,
                                       trns(rule + "=yes t_end=1m delt_const=20u delt_max=20u") +
                                           "begin_output\nfilename s.dat\nvariables: solution\nend_output\n",
                                       trns(go_on), startup, trns(go_on, "initial_sol file filename s.dat\n")}}
                                .str());
        ASSERT_FALSE(run.stopped) << run.text;
        const table previous = run.rows("out3.dat"), file = run.rows("out5.dat");
        ASSERT_GE(file.size(), 50u) << run.text;
        ASSERT_EQ(file.size(), previous.size());
        EXPECT_EQ(file[0], previous[0]);
        EXPECT_GT(std::fabs(file[0][3]), 1e-6) << "the current of the capacitor is in the first row";
        // The charge, below 1 uC, has 7 digits in the file. What they leave, 0.05 pC, is 50 nV at 1 uF, and as a
        // current that over h/3.5 at most, of which the rules pass on a part.
        const double left[] = {1e-12, 5e-8, 5e-8, 3e-8, 1e-10, 1e-10, 1e-8};
        for (std::size_t i = 0; i < file.size(); ++i)
            for (std::size_t j = 0; j < file[i].size(); ++j)
                EXPECT_NEAR(file[i][j], previous[i][j], 1.001e-6 * std::fabs(previous[i][j]) + left[j])
                    << rule << ": row " << i << " " << j;
    }
}

TEST(sequences, an_initialized_block_is_as_if_it_came_first) {
    const std::string block = trns("trapezoidal=yes t_end=1m delt_const=20u", "initial_sol initialize\n");
    const whole_run run(
        deck_text{all_states, all_columns, {block, startup, trns("gear2=yes t_end=1m delt_const=50u"), block}}.str());
    ASSERT_FALSE(run.stopped) << run.text;
    EXPECT_GT(read_file("out1.dat").size(), 1000u);
    EXPECT_EQ(read_file("out1.dat"), read_file("out4.dat"));
}

TEST(sequences, start_values_and_guesses_are_set_for_a_block) {
    const std::string integrator =
        "gelement name=K type=const y=one k=1\ngelement name=I1 type=intgrtr x=one y=y y0=3\noutvar: y=var_of_y\n";
    const std::string method = "method: back_euler=yes t_end=1 delt_const=0.5\n";
    const whole_run run(deck_text{
        integrator,
        "y",
        {"solve_type startup\n", "solve_type startup\nset_stparm y0_of_I1=5\n",
         "solve_type trns\ninitial_sol previous\n" + method, "solve_type trns\nset_igparm y_ig_of_I1=-2\n" + method,
         "solve_type trns\ninitial_sol previous\nset_parm k_of_K 4\n" +
             method}}.str());
    ASSERT_FALSE(run.stopped) << run.text;
    EXPECT_EQ(run.rows("out1.dat"), (table{{3}}));
    EXPECT_EQ(run.rows("out2.dat"), (table{{5}}));
    const auto first_two = [&](const std::string& file) {
        table rows = run.rows(file);
        rows.resize(2);
        return rows;
    };
    EXPECT_EQ(first_two("out3.dat"), (table{{0, 5}, {0.5, 5.5}}));
    EXPECT_EQ(first_two("out4.dat"), (table{{0, -2}, {0.5, -1.5}}));
    EXPECT_EQ(first_two("out5.dat"), (table{{0, -1}, {0.5, 1}}));
}

TEST(sequences, a_parameter_that_a_block_sets_stays_for_those_behind_it) {
    const std::string block = trns("back_euler=yes t_end=0.3m delt_const=0.1m itmax_trns=1");
    const whole_run run(deck_text{
        grounded + "outvar: va=nodev_of_a\n",
        "va",
        {startup, block, startup + "set_stparm v0_of_C1=0.5\n", "set_parm r_of_R1 2k c_of_C1 0.25u\n" + block,
         block}}.str());
    ASSERT_FALSE(run.stopped) << run.text;
    const auto value = [&](const std::string& file, std::size_t row) { return run.rows(file)[row][1]; };
    // The voltage behind a step of 0.1 ms from the charge q. What stays when a capacitor changes is its charge.
    const auto step = [](double q, double r, double c) { return (q + 0.1e-3 / r) / (c + 0.1e-3 / r); };
    EXPECT_NEAR(value("out2.dat", 1), step(0, 1e3, 1e-6), 1e-7);
    EXPECT_NEAR(value("out4.dat", 0), 0.5, 1e-12);
    const double v = step(0.5e-6, 2e3, 0.25e-6);
    EXPECT_NEAR(value("out4.dat", 1), v, 1e-6);
    EXPECT_NEAR(value("out5.dat", 1), step(0.25e-6 * v, 2e3, 0.25e-6), 1e-6);
}

TEST(sequences, dc_behind_a_transient_is_at_rest) {
    const std::string circuit = source +
                                "eelement name=R1 type=r p=in n=a r=1k\neelement name=R2 type=r p=a n=0 r=3k\n"
                                "eelement name=C1 type=c p=a n=0 c=1u\neelement name=D1 type=diode_r p=0 n=a\n"
                                "outvar: va=nodev_of_a ic=i_of_C1\n";
    const whole_run run(deck_text{circuit,
                                  "va ic",
                                  {startup, trns("trapezoidal=yes t_end=0.5m delt_const=0.1m"), "solve_type dc\n",
                                   "solve_type dc\ninitial_sol previous\n"}}
                            .str());
    ASSERT_FALSE(run.stopped) << run.text;
    const double g = 1e-3 + 1 / 3e3 + 1e-6;
    for (const char* file : {"out3.dat", "out4.dat"}) {
        const table rows = run.rows(file);
        ASSERT_EQ(rows.size(), 1u);
        EXPECT_NEAR(rows[0][0], 1e-3 / g, 1e-6);
        EXPECT_EQ(rows[0][1], 0.0);
    }
}

namespace {
// A mild curve: Newton with the factors of the first step gets there, too.
const std::string mild =
    "eelement name=V1 type=vsrcac p=in n=0 a=1 f_hz=1k\neelement name=R1 type=r p=in n=a r=1k\n"
    "eelement name=C1 type=c p=a n=0 c=1u\neelement name=D1 type=diode p=a n=0 n_em=20 is=1e-4\noutvar: "
    "va=nodev_of_a\n";
}  // namespace

TEST(sequences, held_factors_give_the_same_rows) {
    for (const char* rule : {"back_euler", "trapezoidal", "gear2", "trbdf2"})
        for (const char* from : {"", " iter_trns_nrapprox=20"}) {
            const std::string settings = std::string(rule) + "=yes t_end=2m delt_const=5u delt_max=5u trbdf2_tolr=1";
            const whole_run run(
                deck_text{mild, "va", {trns(settings, ""), trns(settings + " nr_approx=yes" + from, "")}}.str());
            ASSERT_FALSE(run.stopped) << run.text;
            const table full = run.rows("out1.dat"), held = run.rows("out2.dat");
            ASSERT_GE(full.size(), 400u);
            expect_close(held, full, 2e-6, 1e-9, rule);
        }
}

TEST(sequences, a_step_that_fails_leaves_rows_and_its_last_iterate) {
    const std::string circuit = grounded + "eelement name=D1 type=diode_r p=0 n=a\noutvar: va=nodev_of_a\n";
    const whole_run run(deck_text{circuit,
                                  "va",
                                  {startup, trns("back_euler=yes t_end=1m delt_const=0.1m itmax_newton=1") +
                                                "begin_output\nfilename s.dat\nvariables: solution\nend_output\n"}}
                            .str());
    EXPECT_TRUE(run.stopped);
    const double k = 1 + 0.1 + 0.1e-3, v1 = 0.1 / k, v2 = (v1 + 0.1) / k;
    const table rows = run.rows("out2.dat");
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_NEAR(rows[1][1], v1, 1e-7);
    std::istringstream in(read_file("s.dat"));
    std::string title;
    in >> title;
    EXPECT_EQ(title, "ebeu->val_nd:");
    std::vector<double> nodes;
    for (double x; in >> x;) nodes.push_back(x);
    ASSERT_EQ(nodes.size(), 3u);
    EXPECT_NEAR(*std::max_element(nodes.begin(), nodes.end()), 1, 1e-9);
    EXPECT_EQ(std::count_if(nodes.begin(), nodes.end(), [&](double x) { return std::fabs(x - v2) < 1e-6; }), 1);
}

// ---- what rows do not depend on

namespace {
std::string many_deck() {
    std::string circuit = all_states;
    circuit.insert(circuit.find("outvar:"), "eelement name=D1 type=diode p=a n=0\n");
    return deck_text{circuit,
                     all_columns,
                     {startup, trns("trapezoidal=yes t_end=2m delt_const=10u norm_2=1e-11"),
                      trns("trbdf2=yes t_start=2m t_end=3m delt_const=10u norm_2=1e-11")}}
        .str();
}
std::string all_rows() { return read_file("out1.dat") + read_file("out2.dat") + read_file("out3.dat"); }

struct decimal_comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};
}  // namespace

TEST(rows, are_the_same_bytes_in_every_run_and_locale) {
    const temp_folder folder;
    const std::string text = run_here(many_deck()).text, first = all_rows();
    EXPECT_GT(first.size(), 10000u) << text;
    EXPECT_EQ(run_here(many_deck()).text, text);
    EXPECT_EQ(all_rows(), first);
    const std::locale old = std::locale::global(std::locale(std::locale::classic(), new decimal_comma));
    run_here(many_deck());
    std::locale::global(old);
    EXPECT_EQ(all_rows(), first);
}

TEST(rows, are_the_same_bytes_with_the_libraries_in_another_order) {
    auto reversed = [](const std::string& text, const std::string& end) {
        std::vector<std::string> entries(1);
        std::istringstream in(text);
        for (std::string l; std::getline(in, l);) {
            entries.back() += l + '\n';
            if (l == end || end.empty()) entries.emplace_back();
        }
        std::string all;
        for (auto e = entries.rbegin(); e != entries.rend(); ++e) all += *e;
        return all;
    };
    const temp_folder folder;
    const std::string text = run_here(many_deck()).text, first = all_rows();
    EXPECT_GT(first.size(), 10000u) << text;
    for (const auto& [file, end] :
         {std::pair{"ebes.aux", "endebe"}, std::pair{"gbes.aux", "endgbe"}, std::pair{"ebac.aux", "endebe_ac"}})
        write_file(std::string(".tnlaux/") + file, reversed(installed_text(file), end));
    for (const char* list : {"ebe_all.lst", "ece_all.lst", "gbe_all.lst", "gce_all.lst", "sse_all.lst"})
        write_file(std::string(".tnlaux/") + list, reversed(read_file(std::string(".tnlaux/") + list), ""));
    for (const char* file : {"out1.dat", "out2.dat", "out3.dat"}) std::filesystem::remove(file);
    EXPECT_EQ(run_and_listen(run_tarnel).text, text);
    EXPECT_EQ(all_rows(), first);
}
