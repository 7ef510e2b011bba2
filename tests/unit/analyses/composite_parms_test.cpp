// Composites that compute parameters, in whole runs: what stops one, and what small signals see.
#include <gtest/gtest.h>

#include <cmath>

#include "whole_run.h"

namespace {
const double pi = std::acos(-1.0);
double gapped(double turns, double gap) { return 4e-7 * pi * turns * turns * 1e-4 / gap; }
const std::string inductor =
    "eelement name=V1 type=vsrcdc p=in n=0 vdc=1 a_ac=1\neelement name=R1 type=r p=in n=a r=1\n"
    "eelement name=L1 type=l_gap p=a n=0 path=0 turns=20\n";
std::string own(const std::string& flags, const std::string& body, const std::string& body_ac) {
    return "ece name=own allow_ac=yes " + flags + "\nbegin_dc\nmainnodes: p n\nauxnodes:\noutvar:\nbias:\nstparms:\n" +
           "igparms:\nind_nodes:\nind_branches:\ndigital_nodes:\nmain_var:\nxvar:\niparms:\nsparms:\nrparms: r=2 "
           "w=30\n" +
           "rparms_derived:\n" + body + "end_dc\nC:\nvariables:\nsource:\n   rparm[0] = 5;\nendC\nbegin_ac\n" +
           "outvar_ac:\nind_nodes_ac:\nind_branches_ac:\n" + body_ac + "end_ac\nendece\n";
}
const std::string r_body = "ebe type=r name=r p=p n=n r=r\n", r_ac = "ebe_ac type=r name=r p=p n=n r=r\n";
const std::string with_own = "eelement name=V1 type=vsrcdc p=in n=0 vdc=1 a_ac=1\neelement name=X1 type=own p=in n=0\n";
const std::string dc = "solve_type dc\n", ac = "solve_type ac\nset_freq 1k\n";
}  // namespace

TEST(compute_rparms, of_a_composite_whose_source_nobody_compiled_stops_before_the_first_block) {
    const whole_run run(deck_text{with_own + "outvar: i=nodev_of_in\n", "i", {dc}}.str(), "",
                        own("compute_rparms=yes", r_body, r_ac));
    EXPECT_TRUE(run.stopped);
    EXPECT_NE(run.text.find("compute_rparms_e: no function is compiled for the composite own\n"
                            "   which computes its parameters by one.\n   Halting...\n"),
              std::string::npos)
        << run.text;
}

TEST(compute_rparms, passes_over_a_source_that_no_flag_asks_for) {
    const whole_run run(deck_text{with_own + "outvar: r=r_of_X1\n", "r", {dc}}.str(), "", own("", r_body, r_ac));
    ASSERT_FALSE(run.stopped) << run.text;
    EXPECT_EQ(run.rows("out1.dat"), (table{{2}}));
}

TEST(compute_rparms, of_an_entry_that_was_cut_down_stops_with_what_the_function_uses) {
    const whole_run run(deck_text{inductor + "outvar: i=i_of_L1\n", "i", {dc}}.str(), " l=l_of_l");
    EXPECT_TRUE(run.stopped);
    EXPECT_NE(run.text.find("eels_class: entry l_gap is smaller than its function.\n"
                            "   outvar: has 2, the function uses 3.\n   Halting...\n"),
              std::string::npos)
        << run.text;
}

TEST(compute_rparms, brings_the_same_rows_as_the_number_given_to_a_plain_inductor) {
    const std::string trns = "solve_type trns\nmethod: trapezoidal=yes t_end=1m delt_const=10u\n";
    std::ostringstream l;
    l.precision(17);
    l << gapped(20, 1e-3);
    const auto rows = [&](const std::string& element) {
        const whole_run run(deck_text{
            "eelement name=V1 type=vsrcac p=in n=0 a=1 f_hz=3k\n"
            "eelement name=R1 type=r p=in n=a r=1\n" +
                element + "outvar: i=i_of_L1 va=nodev_of_a\n",
            "i va",
            {trns}}.str());
        EXPECT_FALSE(run.stopped) << run.text;
        return run.rows("out1.dat");
    };
    EXPECT_EQ(rows("eelement name=L1 type=l_gap p=a n=0 path=0 turns=20\n"),
              rows("eelement name=L1 type=l p=a n=0 l=" + l.str() + "\n"));
}

TEST(compute_rparms, an_automatic_sweep_computes_at_every_point_and_what_it_leaves_stays) {
    const whole_run run(deck_text{
        inductor + "outvar: l=l_of_L1\n",
        "l",
        {dc + "vary_parm turns_of_L1 type auto p_begin=30 p_end=10 step=10 step_min=10 step_max=10\n",
         dc}}.str());
    ASSERT_FALSE(run.stopped) << run.text;
    const table swept = run.rows("out1.dat"), after = run.rows("out2.dat");
    ASSERT_EQ(swept.size(), 3u);
    for (std::size_t k = 0; k < 3; ++k)
        EXPECT_NEAR(swept[k][0], gapped(30 - 10 * static_cast<double>(k), 1e-3), 1e-6 * swept[k][0]);
    EXPECT_EQ(after, (table{{swept[2][0]}}));
}

TEST(compute_acp, of_a_composite_whose_source_nobody_compiled_stops_an_ac_block_only) {
    const std::string library = own("compute_acp=yes", r_body, r_ac);
    const std::string circuit = with_own + "outvar: i=i_ac_of_V1 v=nodev_of_in\n";
    const whole_run large(deck_text{circuit, "v", {dc}}.str(), "", library);
    EXPECT_FALSE(large.stopped) << large.text;
    const whole_run small(deck_text{circuit, "mag_of_i", {ac}}.str(), "", library);
    EXPECT_TRUE(small.stopped);
    EXPECT_NE(small.text.find("compute_acp_e: no function is compiled for the composite own\n"), std::string::npos)
        << small.text;
    const whole_run off(deck_text{circuit, "mag_of_i", {ac + "method: compute_acp=no\n"}}.str(), "", library);
    ASSERT_FALSE(off.stopped) << off.text;
    EXPECT_EQ(off.rows("out1.dat")[0][1], 0.5);
}

TEST(compute_acp, a_map_feeds_small_signals_alone_and_its_switch_keeps_the_last_values) {
    // r of the small-signal form comes from w = 30 by the map; the large-signal one has r = 2.
    const std::string library = own("", r_body, r_ac + "acparm_map: 0 2\n");
    const whole_run run(deck_text{with_own + "outvar: i=i_ac_of_V1\n",
                                  "mag_of_i",
                                  {ac, ac + "set_parm w_of_X1=50\nmethod: compute_acp=no\n", ac}}
                            .str(),
                        "", library);
    ASSERT_FALSE(run.stopped) << run.text;
    EXPECT_NEAR(run.rows("out1.dat")[0][1], 1.0 / 30, 1e-8);
    EXPECT_NEAR(run.rows("out2.dat")[0][1], 1.0 / 30, 1e-8);
    EXPECT_NEAR(run.rows("out3.dat")[0][1], 1.0 / 50, 1e-8);
}

TEST(compute_acp, sees_what_compute_rparms_has_computed_at_every_point_of_a_sweep) {
    const whole_run run(
        deck_text{inductor + "outvar: i=i_ac_of_L1\n", "mag_of_i", {ac + "vary_parm gap_of_L1 type table 1m 2m 5m\n"}}
            .str());
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("out1.dat");
    ASSERT_EQ(rows.size(), 3u);
    const double gaps[] = {1e-3, 2e-3, 5e-3};
    for (std::size_t k = 0; k < 3; ++k)
        EXPECT_NEAR(rows[k][1], 1 / std::hypot(1, 2 * pi * 1000 * gapped(20, gaps[k])), 1e-6);
}
