#include <gtest/gtest.h>

#include <cmath>

#include "whole_run.h"

namespace {
// Source 1 V through 1k into 1u: time constant 1 ms.
deck_text rc(const std::string& method, const std::string& start = "0") {
    return {
        "eelement name=V1 type=vsrcdc p=in n=0 vdc=1\n"
        "eelement name=R1 type=r p=in n=a r=1k\n"
        "eelement name=C1 type=c p=a n=0 c=1u v0=" +
            start +
            "\n"
            "outvar: va=nodev_of_a ic=i_of_C1 iv=i_of_V1\n",
        "va ic iv",
        {"solve_type startup\n", "solve_type trns\ninitial_sol previous\nmethod: " + method + "\n"}};
}

double last_value(const deck_text& deck, const std::string& file = "out2.dat", std::size_t column = 1) {
    const whole_run run(deck.str());
    EXPECT_FALSE(run.stopped) << run.text;
    const table rows = run.rows(file);
    return rows.empty() ? NAN : rows.back()[column];
}

std::vector<double> times(const whole_run& run, const std::string& file) {
    std::vector<double> t;
    for (const auto& row : run.rows(file)) t.push_back(row[0]);
    return t;
}
}  // namespace

TEST(startup, holds_the_capacitor_at_its_start_value_and_gives_its_current) {
    const whole_run run(rc("back_euler=yes t_end=1m delt_const=0.1m", "0.3").str());
    const table rows = run.rows("out1.dat");
    ASSERT_EQ(rows.size(), 1u) << run.text;
    EXPECT_EQ(rows[0], (std::vector<double>{0.3, 7e-4, -7e-4}));
}

// One step of a rule of order p multiplies 1 - v by a factor, or follows its recurrence; the numbers were worked out
// so.
TEST(transient, goes_on_from_startup_by_each_rule) {
    EXPECT_NEAR(last_value(rc("back_euler=yes t_end=1m delt_const=0.1m", "0.3")), 0.7301197, 5.1e-8);
    EXPECT_NEAR(last_value(rc("trapezoidal=yes t_end=1m delt_const=0.1m", "0.3")), 0.7426992, 5.1e-8);
    EXPECT_NEAR(last_value(rc("back_euler=yes t_end=1m delt_const=0.1m")), 0.6144567, 5.1e-8);
    EXPECT_NEAR(last_value(rc("trapezoidal=yes t_end=1m delt_const=0.1m")), 0.6324275, 5.1e-8);
    EXPECT_NEAR(last_value(rc("gear2_fixed=yes t_end=1m delt_const=0.1m")), 0.6304512, 5.1e-8);
    EXPECT_NEAR(last_value(rc("gear2=yes t_end=1m delt_const=0.1m")), 0.6304512, 5.1e-8);
}

TEST(transient, errors_fall_with_the_order_of_the_rule) {
    const double exact = 1 - std::exp(-1.0);
    auto error = [&](const std::string& rule, const std::string& h) {
        return last_value(rc(rule + "=yes t_end=1m delt_const=" + h)) - exact;
    };
    EXPECT_NEAR(error("back_euler", "0.1m"), -1.766e-2, 1e-5);
    EXPECT_NEAR(error("back_euler", "0.05m"), -9.010e-3, 1e-6);
    EXPECT_NEAR(error("back_euler", "0.025m"), -4.551e-3, 1e-6);
    EXPECT_NEAR(error("trapezoidal", "0.1m"), 3.069e-4, 2e-7);
    EXPECT_NEAR(error("trapezoidal", "0.05m"), 7.666e-5, 2e-7);
    EXPECT_NEAR(error("trapezoidal", "0.025m"), 1.916e-5, 2e-7);
    EXPECT_NEAR(error("gear2_fixed", "0.1m"), -1.669e-3, 1e-6);
    EXPECT_NEAR(error("gear2_fixed", "0.05m"), -3.973e-4, 2e-7);
    EXPECT_NEAR(error("gear2_fixed", "0.025m"), -9.739e-5, 2e-7);
}

TEST(transient, a_floating_capacitor_carries_its_charge_in_both_rows) {
    deck_text deck = rc("trapezoidal=yes t_end=1m delt_const=0.1m");
    deck.circuit =
        "eelement name=V1 type=vsrcdc p=in n=0 vdc=1\n"
        "eelement name=R1 type=r p=in n=a r=500\neelement name=R2 type=r p=b n=0 r=500\n"
        "eelement name=C1 type=c p=a n=b c=1u\noutvar: vc=v_of_C1\n";
    deck.variables = "vc";
    EXPECT_NEAR(last_value(deck), 0.6324275, 5.1e-8);
}

TEST(transient, an_inductor_is_a_state_row) {
    deck_text deck = rc("");
    deck.circuit =
        "eelement name=V1 type=vsrcdc p=in n=0 vdc=1\n"
        "eelement name=R1 type=r p=in n=a r=1k\neelement name=L1 type=l p=a n=0 l=1\n"
        "outvar: i=i_of_L1\n";
    deck.variables = "i";
    for (const auto& [rule, value] : {std::pair{"back_euler", 0.6144567e-3}, std::pair{"trapezoidal", 0.6324275e-3},
                                      std::pair{"gear2_fixed", 0.6304512e-3}}) {
        deck.blocks[1] =
            std::string("solve_type trns\ninitial_sol previous\nmethod: ") + rule + "=yes t_end=1m delt_const=0.1m\n";
        EXPECT_NEAR(last_value(deck), value, 5.1e-11) << rule;
    }
}

// The trapezoidal rule keeps c v^2 + l i^2 of a linear tank.
TEST(transient, a_tank_keeps_its_energy_under_the_trapezoidal_rule) {
    deck_text deck{
        "eelement name=L1 type=l p=a n=0 l=1m\neelement name=C1 type=c p=a n=0 c=1u v0=1\n"
        "outvar: va=nodev_of_a il=i_of_L1\n",
        "va il",
        {"solve_type startup\n",
         "solve_type trns\ninitial_sol previous\nmethod: trapezoidal=yes t_end=0.2m delt_const=1u\n"}};
    const whole_run run(deck.str());
    const table rows = run.rows("out2.dat");
    ASSERT_FALSE(rows.empty()) << run.text;
    EXPECT_NEAR(rows.back()[1], 0.9991660, 5.1e-7);
    for (const auto& row : rows) EXPECT_NEAR(row[1] * row[1] + 1e3 * row[2] * row[2], 1.0, 3e-7);
}

// z' = 1, y' = z with two integrator blocks, step 0.01.
TEST(transient, integrator_blocks_follow_each_rule_exactly) {
    deck_text deck{
        "gelement name=K type=const y=one k=1\ngelement name=I1 type=intgrtr x=one y=z\n"
        "gelement name=I2 type=intgrtr x=z y=y\noutvar: y=var_of_y z=var_of_z\n",
        "y z",
        {"", ""}};
    const double h = 0.01;
    for (const auto& [rule, value] :
         {std::pair{"back_euler", h * h * 100 * 101 / 2}, std::pair{"trapezoidal", 0.5},
          std::pair{"gear2_fixed", 0.5 + 0.75 * h * h * (1 - std::pow(3.0, -100))}, std::pair{"trbdf2", 0.5}}) {
        deck.blocks = {"solve_type startup\n", std::string("solve_type trns\ninitial_sol previous\nmethod: ") + rule +
                                                   "=yes t_end=1 delt_const=0.01 delt_max=0.01\n"};
        const whole_run run(deck.str());
        const table rows = run.rows("out2.dat");
        ASSERT_FALSE(rows.empty()) << run.text;
        EXPECT_NEAR(rows.back()[1], value, 1e-6) << rule;
        EXPECT_NEAR(rows.back()[2], 1.0, 1e-6) << rule;
    }
}

TEST(transient, trbdf2_doubles_its_step_where_it_makes_no_error) {
    const deck_text deck{
        "gelement name=K type=const y=one k=1\ngelement name=I1 type=intgrtr x=one y=z\n"
        "outvar: z=var_of_z\n",
        "z",
        {"solve_type startup\n",
         "solve_type trns\ninitial_sol previous\nmethod: trbdf2=yes t_end=0.05 delt_const=1m\n"}};
    const whole_run run(deck.str());
    EXPECT_EQ(times(run, "out2.dat"), (std::vector<double>{0, 0.001, 0.003, 0.007, 0.015, 0.025, 0.035, 0.045, 0.05}))
        << run.text;
}

TEST(transient, an_automatic_step_grows_on_a_nonlinear_circuit_only) {
    const std::string method =
        "solve_type trns\nmethod: back_euler_auto=yes t_end=0.32m delt_const=10u delt_max=0.1m\n";
    deck_text deck{
        "eelement name=V1 type=vsrcdc p=in n=0 vdc=1\neelement name=R1 type=r p=in n=a r=1k\n"
        "eelement name=C1 type=c p=a n=0 c=1u\neelement name=D1 type=diode_r p=0 n=a\n"
        "outvar: va=nodev_of_a\n",
        "va",
        {method}};
    const whole_run run(deck.str());
    const std::vector<double> t = times(run, "out1.dat");
    ASSERT_GE(t.size(), 8u) << run.text;
    const double expected[] = {0, 1e-5, 2.5e-5, 4.75e-5, 8.125e-5, 1.31875e-4, 2.078125e-4, 3.078125e-4};
    for (std::size_t i = 0; i < 8; ++i) EXPECT_NEAR(t[i], expected[i], 1e-10);
    deck.circuit = rc("").circuit;
    const whole_run linear(deck.str());
    EXPECT_EQ(times(linear, "out1.dat").size(), 33u) << linear.text;
}

TEST(transient, a_limit_of_passes_warns_and_keeps_the_rows) {
    const std::string warning =
        "warning: time_end not reached\n  in transient simulation.\n  Increase itmax_trns in the method card.\n";
    for (const auto& [limit, n] : {std::pair{"0", 1u}, std::pair{"5", 6u}}) {
        const whole_run run(rc(std::string("back_euler=yes t_end=1m delt_const=0.1m itmax_trns=") + limit).str());
        EXPECT_FALSE(run.stopped);
        EXPECT_EQ(run.rows("out2.dat").size(), n);
        EXPECT_NE(run.text.find(warning), std::string::npos) << run.text;
    }
}

TEST(transient, gear2_fixed_refuses_a_changed_step) {
    EXPECT_FALSE(whole_run(rc("gear2_fixed=yes t_end=5m delt_const=0.1m").str()).stopped);
    const whole_run run(rc("gear2_fixed=yes t_end=5.03m delt_const=0.1m").str());
    EXPECT_TRUE(run.stopped);
    EXPECT_NE(run.text.find("solve_trns:\n   cannot use gear2 when step\n   size may be changed\n  Halting...\n"),
              std::string::npos)
        << run.text;
}

TEST(transient, an_initialized_run_starts_with_uncharged_capacitors) {
    deck_text deck = rc("");
    deck.blocks = {"solve_type trns\ninitial_sol initialize\nmethod: back_euler=yes t_end=1m delt_const=0.1m\n"};
    EXPECT_NEAR(last_value(deck, "out1.dat"), 0.6144567, 5.1e-8);
}

TEST(transient, progress_lines_come_at_pass_0_and_every_so_many) {
    const whole_run run(rc("back_euler=yes t_end=1m delt_const=0.1m n_wrtiterno=4").str());
    EXPECT_NE(run.text.find("Transient simulation starts...\niter_trns=0 time=0\niter_trns_1=4, time=0.0004\n"
                            "iter_trns_1=8, time=0.0008\n"),
              std::string::npos)
        << run.text;
}

// A clock of 1 ms period with edges of 10 us: the steps of 30 us end on its corners, and none inside an edge.
TEST(transient, corners_of_a_clock_are_rows) {
    const deck_text deck{"gelement name=K type=clock y=y t1=0.5m t2=0.5m dt1=10u dt2=10u\noutvar: y=var_of_y\n",
                         "y",
                         {"solve_type trns\nmethod: back_euler=yes t_end=3m delt_const=30u\n"}};
    const whole_run run(deck.str());
    const table rows = run.rows("out1.dat");
    ASSERT_GT(rows.size(), 100u) << run.text;
    for (const auto& row : rows)
        EXPECT_TRUE(std::abs(row[1]) < 1e-6 || std::abs(row[1] - 1) < 1e-6) << "a row inside an edge at " << row[0];
}

// What a transient leaves out for units that are marked pure, it may only leave out if nothing changes.
TEST(transient, the_mark_of_pure_units_changes_no_byte) {
    const std::string circuit =
        "eelement name=V1 type=vsrcac p=in n=0 a=10 f_hz=1k\neelement name=R1 type=r p=in n=a r=10\n"
        "eelement name=L1 type=l p=a n=b l=1m\neelement name=C1 type=c p=b n=0 c=10u v0=1\n"
        "eelement name=R2 type=r p=b n=0 r=50\n";
    const std::string out = "outvar: vb=nodev_of_b ir=i_of_R2 pv=pwr_elec_of_V1 vl=v_of_L1 ic=i_of_C1\n";
    for (const std::string& more : {std::string(), std::string("eelement name=D1 type=diode_r p=b n=0\n")})
        for (const char* rule : {"back_euler", "trapezoidal", "gear2", "trbdf2"}) {
            const deck_text deck{
                circuit + more + out,
                "vb ir pv vl ic",
                {"solve_type startup\n",
                 std::string("solve_type trns\ninitial_sol previous\nmethod: ") + rule +
                     "=yes t_end=2m delt_const=10u delt_max=20u\n",
                 "solve_type trns\ninitial_sol previous\nmethod: trapezoidal=yes t_start=2m t_end=2.1m "
                 "delt_const=10u\n"}};
            const whole_run marked(deck.str());
            const table rows = marked.rows("out2.dat"), more_rows = marked.rows("out3.dat");
            ASSERT_GT(rows.size(), 100u) << marked.text;
            const whole_run plain(deck.str(), " pure=yes");
            EXPECT_EQ(rows, plain.rows("out2.dat")) << rule;
            EXPECT_EQ(more_rows, plain.rows("out3.dat")) << rule;
        }
}

TEST(transient, a_first_step_that_leaves_the_range_of_numbers_goes_to_gmin_stepping) {
    // Stages of 0.5 S into a diode each: from 0 V a step of Newton multiplies by 4e11 a stage. Behind 0.1 A the first
    // stage stands at 0.7742084 V, the last at 0.8103977 V: is (exp(v/vt) - 1) + gmin v = 0.5 v of the stage before.
    std::string chain = "eelement name=I0 type=isrcac p=0 n=a1 idc=0.1\n";
    for (int k = 1; k <= 16; ++k) {
        const std::string n = std::to_string(k);
        chain += "eelement name=D" + n + " type=diode_spice_1 p=a" + n + " n=0\n";
        if (k > 1)
            chain +=
                "eelement name=G" + n + " type=vccs p=0 n=a" + n + " cp=a" + std::to_string(k - 1) + " cn=0 gm=0.5\n";
    }
    const whole_run run(deck_text{chain + "outvar: v1=nodev_of_a1 v16=nodev_of_a16\n",
                                  "v1 v16",
                                  {"solve_type trns\nmethod: back_euler=yes t_end=2m delt_const=1m gmin_init=no "
                                   "chk_only_rhs2=yes norm_2=1e-12\n"}}
                            .str());
    ASSERT_FALSE(run.stopped) << run.text;
    EXPECT_NE(run.text.find("solve_newton_trns: norm too large.\nsolve_trns: N-R iterations did not converge.\n"
                            "  iter_trns_anlg=0\n  time (4)=0.001\n  calling gmin_step_trns_1...\n"),
              std::string::npos)
        << run.text;
    const table rows = run.rows("out1.dat");
    ASSERT_EQ(rows.size(), 3u);
    for (std::size_t i : {1, 2}) {
        EXPECT_NEAR(rows[i][1], 0.7742084, 6e-8);
        EXPECT_NEAR(rows[i][2], 0.8103977, 6e-8);
    }
}
