// finite_test.cpp -- what is infinite or not a number stops the run where it comes up, with the rows before it kept.
#include <gtest/gtest.h>

#include <cmath>

#include "whole_run.h"

namespace {
const std::string none = "solve_linear: NaN found!\n   Halting...\n";

std::string bad_number(const std::string& word, const std::string& value) {
    return "check double string: <" + word + ">\n  (brackets are not part of the string)\n  value = " + value +
           "\n  Halting...\n";
}
bool ends_with(const whole_run& run, const std::string& text) { return run.stopped && run.text.ends_with(text); }

deck_text divider(const std::vector<std::string>& blocks, const std::string& before = "",
                  const std::string& volts = "10", const std::string& ohms = "1k") {
    return {"eelement name=V1 type=vsrcdc p=in n=0 vdc=" + volts + "\neelement name=R1 type=r p=in n=a r=" + ohms +
                "\neelement name=R2 type=r p=a n=0 r=1k\noutvar: va=nodev_of_a\n",
            "va", blocks, before};
}
}  // namespace

TEST(finite, a_linear_solution_that_is_infinite_stops_every_kind_of_block) {
    for (const std::string block : {"solve_type dc\n", "solve_type startup\n",
                                    "solve_type trns\nmethod: back_euler=yes t_end=1m delt_const=0.1m\n"}) {
        const whole_run run(divider({block}, "", "1e306").str());
        EXPECT_FALSE(run.stopped) << run.text;
        deck_text shorted = divider({block}, "", "1e306");  // 1e309 A through 1 mOhm
        shorted.circuit += "eelement name=R3 type=r p=in n=0 r=1m\n";
        const whole_run bad(shorted.str());
        EXPECT_TRUE(ends_with(bad, none)) << block << bad.text;
    }
}

TEST(finite, a_transient_that_grows_without_end_stops_and_keeps_its_rows) {
    // C dv/dt = g v: a step of backward Euler multiplies v by 1/(1 - g h/C) = 10.
    const deck_text deck{
        "eelement name=C1 type=c p=a n=0 c=1u v0=1\neelement name=G1 type=vccs p=a n=0 cp=a cn=0 gm=-0.9m\n"
        "outvar: va=nodev_of_a\n",
        "va",
        {"solve_type startup\n",
         "solve_type trns\ninitial_sol previous\nmethod: back_euler=yes t_end=1 delt_const=1m\n"}};
    const whole_run run(deck.str());
    EXPECT_TRUE(ends_with(run, none)) << run.text;
    const table rows = run.rows("out2.dat");
    ASSERT_EQ(rows.size(), 309u) << "10 to the power of 308 is the last";
    EXPECT_NEAR(rows.back()[1] / 1e308, 1, 1e-6);
}

TEST(finite, words_that_read_as_infinity_or_no_number_are_refused_wherever_a_deck_has_numbers) {
    EXPECT_TRUE(ends_with(whole_run(divider({"solve_type dc\n"}, "", "NaN").str()), bad_number("NaN", "nan")));
    EXPECT_TRUE(ends_with(whole_run(divider({"solve_type dc\n"}, "", "1e400").str()), bad_number("1e400", "inf")));
    for (const std::string card : {"set_parm r_of_R1 NaN\n", "vary_parm r_of_R1 type table 1 NaN\n",
                                   "vary_parm r_of_R1 from 1 to NaN type linear n_points 3\n", "method: norm_2=NaN\n",
                                   "vary_parm_sync r_of_R1 type table NaN\n"})
        EXPECT_TRUE(ends_with(whole_run(divider({"solve_type dc\n" + card}).str()), bad_number("NaN", "nan"))) << card;
}

TEST(finite, a_sweep_stops_at_the_point_where_an_expression_is_no_finite_number) {
    const std::string globals = "greal g=1\ngreal ohm=$((1k)/(g))\n";
    const whole_run run(
        divider({"solve_type dc\nvary_parm glbl_of_g from 1 to -1 type linear n_points 3\n"}, globals, "10", "ohm")
            .str());
    EXPECT_TRUE(ends_with(run, bad_number("$((1k)/(g))", "inf"))) << run.text;
    EXPECT_EQ(run.rows("out1.dat"), (table{{5.0}}));
    const whole_run step(
        divider({"solve_type dc\nvary_parm_sync glbl_of_g from 1 to -1 type linear n_points 3\n"}, globals, "10", "ohm")
            .str());
    EXPECT_TRUE(ends_with(step, bad_number("$((1k)/(g))", "inf"))) << step.text;
}

TEST(finite, a_sweep_whose_own_value_overflows_stops_with_its_item) {
    const whole_run run(
        divider({"solve_type dc\nvary_parm vdc_of_V1 from -1e308 to 1e308 type linear n_points 4\n"}).str());
    EXPECT_TRUE(ends_with(run, bad_number("vdc_of_V1", "inf"))) << run.text;
}

TEST(finite, parameters_that_are_set_together_are_looked_at_when_all_are_set) {
    // Between the two, b - a is 0.
    const std::string globals = "greal a=1 b=2\ngreal d=$((b)-(a))\ngreal ohm=$((1k)/(d))\n";
    const whole_run run(divider({"solve_type dc\nset_parm glbl_of_a 2 glbl_of_b 3\n"}, globals, "10", "ohm").str());
    EXPECT_FALSE(run.stopped) << run.text;
    EXPECT_EQ(run.rows("out1.dat"), (table{{5.0}}));
    const whole_run bad(divider({"solve_type dc\nset_parm glbl_of_a 2\n"}, globals, "10", "ohm").str());
    EXPECT_TRUE(ends_with(bad, bad_number("$((1k)/(d))", "inf"))) << bad.text;
}
