// Blocks that write and read parameters of elements while a transient runs.
#include <gtest/gtest.h>

#include <cmath>

#include "analyses/rparm_passes.h"
#include "whole_run.h"

namespace {
// A divider of R0 = 1k and R1 at 10 V, R1 driven by x = 1k (1 + t/1ms).
const std::string driven =
    "eelement name=V1 type=vsrcdc p=in n=0 vdc=10\neelement name=R0 type=r p=in n=a r=1k\n"
    "eelement name=R1 type=r p=a n=0 r=4k\n"
    "gelement name=P type=pwl20 y=x n_pts=2 t1=0 y1=1k t2=2m y2=3k\n";
std::string writer(const std::string& element, const std::string& parm) {
    return "gelement name=S type=set_rparm x=x element=" + element + " parm=" + parm + "\n";
}
std::string reader(const std::string& element, const std::string& parm) {
    return "gelement name=G type=get_rparm y=y element=" + element + " parm=" + parm + "\n";
}
const std::string dc = "solve_type dc\n";
std::string trns(const std::string& rule) {
    return "solve_type trns\ninitial_sol previous\nmethod: " + rule + "=yes t_end=1m delt_const=0.25m\n";
}
const char* const rules[] = {"back_euler", "trapezoidal", "gear2"};
}  // namespace

TEST(set_rparm, changes_a_resistance_one_step_behind_its_variable_under_every_rule) {
    // With an idle diode the circuit is solved by Newton, without it by one solve a step.
    for (const std::string diode : {"", "eelement name=D1 type=diode_r p=0 n=a r_off=1e12\n"})
        for (const std::string rule : rules) {
            const whole_run run(deck_text{
                driven + diode + writer("R1", "r") + reader("R1", "r") + "outvar: va=nodev_of_a y=var_of_y i=i_of_R1\n",
                "va y i",
                {dc, trns(rule)}}.str());
            ASSERT_FALSE(run.stopped) << run.text;
            const table rows = run.rows("out2.dat");
            ASSERT_EQ(rows.size(), 5u);
            EXPECT_EQ(run.rows("out1.dat")[0][0], 8.0);  // nothing is written in DC
            EXPECT_EQ(rows[0][2], 0.0);
            for (std::size_t n = 1; n < rows.size(); ++n) {
                const double r = 1000 + 250 * static_cast<double>(n - 1);
                EXPECT_NEAR(rows[n][1], 10 * r / (1000 + r), 6e-7) << rule << n;
                EXPECT_NEAR(rows[n][2], r, 1e-3);
                EXPECT_NEAR(rows[n][3], 10 / (1000 + r), 6e-10);
            }
        }
}

TEST(set_rparm, stops_at_a_value_that_makes_another_one_infinite) {
    const std::string composite =
        "ece name=of_g\nbegin_dc\nmainnodes: p n\nauxnodes:\noutvar:\nbias:\nstparms:\nigparms:\nind_nodes:\n"
        "ind_branches:\ndigital_nodes:\nmain_var:\nxvar:\niparms:\nsparms:\nrparms: g=1m\n"
        "rparms_derived: rr=$((1)/(g))\nebe type=r name=r1 p=p n=n r=rr\nend_dc\nC:\nendC\nbegin_ac\noutvar_ac:\n"
        "ind_nodes_ac:\nind_branches_ac:\nend_ac\nendece\n";
    const auto text = [&](const std::string& y2) {
        return whole_run(
            deck_text{"eelement name=V1 type=vsrcdc p=in n=0 vdc=10\neelement name=R0 type=r p=in n=a r=1k\n"
                      "eelement name=X1 type=of_g p=a n=0\n"
                      "gelement name=P type=pwl20 y=x n_pts=2 t1=0 y1=1m t2=0.5m y2=" +
                          y2 + "\n" + writer("X1", "g") + "outvar: va=nodev_of_a\n",
                      "va",
                      {dc, trns("back_euler")}}
                .str(),
            "", composite);
    };
    const whole_run good = text("2m"), bad = text("0");
    EXPECT_FALSE(good.stopped) << good.text;
    EXPECT_TRUE(bad.stopped);
    EXPECT_NE(bad.text.find("rr_of_X1"), std::string::npos) << bad.text;
}

TEST(set_rparm, what_a_composite_computes_from_a_written_parameter_follows_nested_ones_too) {
    // L = mu0 x^2 100u / 1m; x goes from 1k to 2k turns, one step behind. The choke has half the turns in its core.
    const std::string head =
        "ece name=choke\nbegin_dc\nmainnodes: p n\nauxnodes:\noutvar: l=l_of_core\nbias:\nstparms:\n"
        "igparms:\nind_nodes:\nind_branches:\ndigital_nodes:\nmain_var:\nxvar:\niparms:\nsparms:\nrparms: w=5\n"
        "rparms_derived:\ncallece l_gap name=core p=p n=n turns=w path=0\nend_dc\nC:\nendC\nbegin_ac\noutvar_ac:\n"
        "ind_nodes_ac:\nind_branches_ac:\nend_ac\nendece\n";
    for (const std::string rule : rules) {
        const whole_run run(
            deck_text{driven +
                          "eelement name=L1 type=l_gap p=a n=0 path=0\neelement name=R2 type=r p=a n=b\n"
                          "eelement name=X1 type=choke p=b n=0\n" +
                          writer("L1", "turns") + "gelement name=S2 type=set_rparm x=x element=X1 parm=w k=0.5\n" +
                          "outvar: l1=l_of_L1 lx=l_of_X1 i=i_of_L1 va=nodev_of_a\n",
                      "l1 lx i va",
                      {dc, trns(rule)}}
                .str(),
            "", head);
        ASSERT_FALSE(run.stopped) << run.text;
        const table rows = run.rows("out2.dat");
        ASSERT_EQ(rows.size(), 5u);
        for (std::size_t n = 1; n < rows.size(); ++n) {
            const double turns = 1000 + 250 * static_cast<double>(n - 1);
            const double l = 4e-7 * std::acos(-1.0) * turns * turns * 1e-4 / 1e-3;
            EXPECT_NEAR(rows[n][1], l, 1e-6 * l) << rule << n;
            EXPECT_NEAR(rows[n][2], l / 4, 1e-6 * l) << rule << n;
            const double change = rows[n][3] - rows[n - 1][3];  // of a step that was made with this inductance
            if (rule == "back_euler") {
                EXPECT_NEAR(change, 0.25e-3 * rows[n][4] / l, 2e-6 * std::fabs(rows[n][3]));
            }
        }
    }
}

TEST(set_rparm, refuses_to_write_what_a_composite_computes) {
    const whole_run run(
        deck_text{driven + "eelement name=L1 type=l_gap p=a n=0\n" + writer("L1", "l_o") + "outvar: va=nodev_of_a\n",
                  "va",
                  {dc, trns("back_euler")}}
            .str());
    EXPECT_TRUE(run.stopped);
    EXPECT_NE(run.text.find("set_rparm: parameter l_o_of_L1\n   is computed by the composite l_gap. Halting...\n"),
              std::string::npos)
        << run.text;
}

TEST(set_rparm, stops_at_a_value_that_the_function_of_a_composite_refuses) {
    const whole_run run(deck_text{driven + "eelement name=L1 type=l_gap p=a n=0\n"
                                           "gelement name=S type=set_rparm x=x element=L1 parm=turns k=-1\n"
                                           "outvar: va=nodev_of_a\n",
                                  "va",
                                  {dc, trns("back_euler")}}
                            .str());
    EXPECT_TRUE(run.stopped);
    EXPECT_NE(run.text.find("l_gap.ece: turns or area too small!\n  turns=-1000\n"), std::string::npos) << run.text;
}

TEST(set_rparm, reaches_blocks_and_start_values) {
    // y2 = k x2 with k one step behind x; the start value v0 of a capacitor is read back.
    const whole_run run(
        deck_text{driven +
                      "gelement name=M type=multscl x=one y=y2 k=7\ngelement name=K type=const y=one k=1\n"
                      "eelement name=C1 type=c p=in n=0 v0=5\n" +
                      writer("M", "k") + reader("C1", "v0") +
                      "gelement name=S2 type=set_rparm x=x element=C1 parm=v0 k=2\n"
                      "outvar: y2=var_of_y2 v0=var_of_y\n",
                  "y2 v0",
                  {dc, trns("back_euler")}}
            .str());
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("out2.dat");
    ASSERT_EQ(rows.size(), 5u);
    EXPECT_EQ(rows[0], (std::vector<double>{0, 7, 0}));
    for (std::size_t n = 1; n < rows.size(); ++n) {
        EXPECT_EQ(rows[n][1], 1000 + 250.0 * static_cast<double>(n - 1));
        EXPECT_EQ(rows[n][2], 2 * rows[n][1]);
    }
}

TEST(set_rparm, leaves_the_parameter_to_later_blocks) {
    const whole_run run(
        deck_text{driven + writer("R1", "r") + "outvar: va=nodev_of_a\n", "va", {dc, trns("back_euler"), dc}}.str());
    ASSERT_FALSE(run.stopped) << run.text;
    EXPECT_NEAR(run.rows("out3.dat")[0][0], 10 * 1750.0 / 2750, 6e-7);
}

TEST(set_rparm, stops_where_the_element_refuses_the_value) {
    const whole_run run(deck_text{driven + "gelement name=Z type=multscl x=x y=z k=0\n"
                                           "gelement name=S type=set_rparm x=z element=R1 parm=r\n"
                                           "outvar: va=nodev_of_a\n",
                                  "va",
                                  {dc, trns("back_euler")}}
                            .str());
    EXPECT_TRUE(run.stopped);
    EXPECT_NE(run.text.find("r.ebe: r too small!\nr.ebe: r=0\n"), std::string::npos) << run.text;
}

TEST(get_rparm, reads_an_output_slot_that_its_element_makes_fresh) {
    // A composite that shows the voltage of its resistor as a parameter of its own.
    const std::string shows =
        "ece name=r_shows\nbegin_dc\nmainnodes: p n\nauxnodes:\noutvar:\nbias:\nstparms:\nigparms:\nind_nodes:\n"
        "ind_branches:\ndigital_nodes:\nmain_var:\nxvar:\niparms:\nsparms:\nrparms: r=1k v_now=0\nrparms_derived:\n"
        "ebe type=r name=r p=p n=n r=r v_o=v_now\nend_dc\nC:\nendC\nbegin_ac\noutvar_ac:\nind_nodes_ac:\n"
        "ind_branches_ac:\nend_ac\nendece\n";
    const whole_run run(deck_text{"eelement name=V1 type=vsrc_1 p=in n=0 x=x\n"
                                  "eelement name=R1 type=r_shows p=in n=0\n"
                                  "gelement name=P type=pwl20 y=x n_pts=2 t1=0 y1=1 t2=1m y2=3\n" +
                                      reader("R1", "v_now") + "outvar: v=nodev_of_in y=var_of_y\n",
                                  "v y",
                                  {dc, trns("back_euler")}}
                            .str(),
                        "", shows);
    ASSERT_FALSE(run.stopped) << run.text;
    const table rows = run.rows("out2.dat");
    ASSERT_EQ(rows.size(), 5u);
    for (std::size_t n = 1; n < rows.size(); ++n) {
        EXPECT_NEAR(rows[n][1], 1 + 0.5 * static_cast<double>(n), 1e-6);
        EXPECT_NEAR(rows[n][2], rows[n - 1][1], 1e-6);
    }
}

// ---- faults ----

TEST(rparm_links, are_looked_up_before_the_first_block_and_name_what_is_not_there) {
    struct fault {
        std::string block, text;
    };
    const fault faults[] = {
        {writer("R9", "r"),
         "cct_class::set_rparm_1: element not identified in\n   one of the set_rparm type gbe.\n"
         "   element name is: R9\n   Halting...\n"},
        {writer("R1", "q"),
         "cct_class::set_rparm_1: parameter not identified in\n   one of the set_rparm type gbe.\n"
         "   parameter name is: q\n"},
        {"gelement name=N type=pp_in_1 x=x\ngelement name=G type=get_rparm y=y\n",
         "cct_class::get_rparm_1: element not identified in\n   one of the get_rparm type gbe.\n"
         "   element name is: none\n   Halting...\n"},
        {reader("V1", "v_o"),
         "cct_class::get_rparm_1: parameter not identified in\n   one of the get_rparm type gbe.\n"
         "   parameter name is: v_o\n"},
    };
    for (const fault& f : faults) {
        const whole_run run(deck_text{driven + f.block + "outvar: va=nodev_of_a\n", "va", {dc}}.str());
        EXPECT_TRUE(run.stopped);
        EXPECT_EQ(run.text, f.text);
        EXPECT_TRUE(run.rows("out1.dat").empty());
    }
}

TEST(rparm_links, a_parameter_that_is_read_stands_in_one_place_exactly) {
    circuit c;
    c.links.get.resize(1);
    EXPECT_HALT(check_rparm_sources(c), "get_rparm_2 (gbe): parameter not assigned. nttl=0. Halting...\n");
    c.links.get[0].n_source = 2;
    EXPECT_HALT(check_rparm_sources(c), "get_rparm_2 (gbe): multiple parameters? nttl=2\n  Halting..\n");
    c.links.get[0].n_source = 1;
    check_rparm_sources(c);
}

TEST(rparm_links, a_reader_of_a_shared_parameter_stops_when_time_begins) {
    const std::string pair =
        "ece name=pair\nbegin_dc\nmainnodes: p n\nauxnodes: m\noutvar:\nbias:\nstparms:\nigparms:\nind_nodes:\n"
        "ind_branches:\ndigital_nodes:\nmain_var:\nxvar:\niparms:\nsparms:\nrparms: r=1k\nrparms_derived: "
        "g=$((1)/(r))\n"
        "ebe type=r name=a p=p n=m r=r\nebe type=r name=b p=m n=n r=r\nend_dc\nC:\nendC\nbegin_ac\noutvar_ac:\n"
        "ind_nodes_ac:\nind_branches_ac:\nend_ac\nendece\n";
    const std::pair<std::string, std::string> cases[] = {
        {"r", "get_rparm_2 (gbe): multiple parameters? nttl=2\n  Halting..\n"},
        {"g", "get_rparm_2 (gbe): parameter not assigned. nttl=0. Halting...\n"}};
    for (const auto& [parm, text] : cases) {
        const whole_run run(
            deck_text{"eelement name=V1 type=vsrcdc p=in n=0 vdc=10\neelement name=X type=pair p=in n=0\n" +
                          reader("X", parm) + "outvar: v=nodev_of_in\n",
                      "v",
                      {dc, trns("back_euler")}}
                .str(),
            "", pair);
        EXPECT_TRUE(run.stopped);
        EXPECT_TRUE(run.text.ends_with(text)) << run.text;
        EXPECT_EQ(run.rows("out1.dat").size(), 1u);
    }
}
