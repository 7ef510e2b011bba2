// residual_test.cpp -- points that the tests of convergence accept although they are no solutions are told.
#include "analyses/residual.h"

#include <gtest/gtest.h>

#include <cmath>

#include "dc_fixture.h"
#include "whole_run.h"

namespace {
const std::string told = "solve_dc: the solution leaves a residual of ";
const std::string advice = "   consider chk_rhs2=yes norm_2=1e-9\n";

int count(const std::string& text, const std::string& part) {
    int n = 0;
    for (std::size_t k = text.find(part); k != std::string::npos; k = text.find(part, k + 1)) ++n;
    return n;
}

// 1 mA is forced through a diode whose cathode stands at 400 V. A step of 0.4 V, which the test of steps lets pass
// there, is 15 times the diode's n vt.
deck_text diode_at(const std::string& volts, const std::vector<std::string>& blocks) {
    return {"eelement name=V1 type=vsrcdc p=k n=0 vdc=" + volts +
                "\ngelement name=G1 type=const y=s k=1m\neelement name=I1 type=isrc_1 p=0 n=a x=s\n"
                "eelement name=D1 type=diode_spice_1 p=a n=k is=1e-14\n"
                "outvar: va=nodev_of_a id=i_of_D1\n",
            "va id", blocks};
}

// A circuit at rest whose terminal currents a test can set as it likes.
dc_run two_resistors() {
    return dc_run(
        "eelement name=V1 type=vsrcdc p=in n=0 vdc=10\neelement name=R1 type=r p=in n=a r=1k\n"
        "eelement name=R2 type=r p=a n=0 r=1k\n");
}
struct set_currents {
    dc_run run = two_resistors();
    std::string said(double of_r1_at_a, double of_r2_at_a) {
        run.start();
        const auto at = [](int i) { return static_cast<std::size_t>(i); };
        ebeu_class& e = run.c.ebeu;
        e.cur_nd[at(e.nd.first[at(run.unit_of("R1"))] + 1)] = of_r1_at_a;
        e.cur_nd[at(e.nd.first[at(run.unit_of("R2"))])] = of_r2_at_a;
        run.listen([&] {
            find_residual(run.r);
            tell_residual(run.r);
        });
        return run.text;
    }
};
}  // namespace

TEST(residual, is_told_with_value_node_and_advice_where_a_diode_stands_at_400_volts) {
    const whole_run run(diode_at("400", {"solve_type dc\n"}).str());
    EXPECT_FALSE(run.stopped) << run.text;
    ASSERT_EQ(count(run.text, told), 1) << run.text;
    EXPECT_EQ(count(run.text, advice), 1) << run.text;
    // What the source of 1 mA does not bring, by the current that the rows show.
    const std::size_t at = run.text.find(told) + told.size();
    const double value = std::stod(run.text.substr(at));
    EXPECT_NEAR(value, run.rows("out1.dat")[0][1] - 1e-3, 1e-6 * value);
    const std::string node = run.text.substr(run.text.find(" at node ", at) + 9, 2);
    EXPECT_TRUE(node == "a\n" || node == "k\n") << node;
}

TEST(residual, is_not_told_when_its_advice_is_followed) {
    const whole_run run(diode_at("400", {"solve_type dc\nmethod: chk_rhs2=yes norm_2=1e-9\n"}).str());
    EXPECT_FALSE(run.stopped) << run.text;
    EXPECT_EQ(count(run.text, told), 0) << run.text;
    EXPECT_NEAR(run.rows("out1.dat")[0][1], 1e-3, 1e-8);
}

TEST(residual, is_told_once_a_block) {
    const std::string sweep = "solve_type dc\nvary_parm vdc_of_V1 type table 400 401 402\n";
    const whole_run run(diode_at("400", {sweep, "solve_type dc\n"}).str());
    EXPECT_EQ(run.rows("out1.dat").size(), 3u) << run.text;
    EXPECT_EQ(count(run.text, told), 2) << run.text;
}

TEST(residual, is_told_of_the_first_point_of_a_transient) {
    for (const std::string method : {"back_euler", "trapezoidal", "trbdf2", "gear2"}) {
        const whole_run run(
            diode_at("400", {"solve_type trns\nmethod: gmin_step=no " + method + "=yes t_end=1m delt_const=0.1m\n"})
                .str());
        EXPECT_FALSE(run.stopped) << run.text;
        EXPECT_EQ(count(run.text, told), 1) << method << '\n' << run.text;
        EXPECT_EQ(count(run.text, advice), 1) << run.text;
    }
}

TEST(residual, is_not_told_of_a_transient_that_balances) {
    const deck_text deck{
        "eelement name=V1 type=vsrcac p=in n=0 a=10 f_hz=1k vdc=5\neelement name=R1 type=r p=in n=a r=1k\n"
        "eelement name=D1 type=diode_spice_1 p=a n=b cj0=1n\neelement name=C1 type=c p=b n=0 c=1u\n"
        "eelement name=R2 type=r p=b n=0 r=1k\noutvar: va=nodev_of_a\n",
        "va",
        {"solve_type trns\nmethod: chk_rhs2=yes norm_2=1e-9 trbdf2=yes t_end=1m delt_const=1u\n",
         "solve_type trns\nmethod: chk_rhs2=yes norm_2=1e-9 gear2=yes t_end=1m delt_const=1u\n"}};
    EXPECT_EQ(count(whole_run(deck.str()).text, told), 0);
}

TEST(residual, of_rounding_alone_is_not_told) {
    // 400 V behind 1 nOhm without a load: a last place of the voltage is 5.7e-14 V, which makes 57 uA of nothing.
    const deck_text deck{
        "eelement name=V1 type=vsrcdc p=in n=0 vdc=399.9\neelement name=R1 type=r p=in n=m r=1k\n"
        "eelement name=R2 type=r p=m n=a r=3n\neelement name=R3 type=r p=a n=b r=7n\n"
        "eelement name=R4 type=r p=b n=0 r=1e9\noutvar: va=nodev_of_a\n",
        "va",
        {"solve_type dc\n", "solve_type trns\nmethod: back_euler=yes t_end=1m delt_const=0.1m\n"}};
    EXPECT_EQ(count(whole_run(deck.str()).text, told), 0);
}

TEST(residual, is_bad_above_a_thousandth_of_the_largest_current_and_above_a_nanoampere) {
    EXPECT_EQ(set_currents().said(-1.0, 1.002), told + "0.002 at node a\n" + advice);
    EXPECT_EQ(set_currents().said(-1.0, 1.0009), "");
    EXPECT_EQ(set_currents().said(-1e-8, 0.0), told + "1e-08 at node a\n" + advice);
    EXPECT_EQ(set_currents().said(-0.9e-9, 0.0), "");
}

TEST(residual, at_a_node_inside_of_a_composite_is_told_with_its_name_there_and_the_instance) {
    const char* const half =
        "ece name=half\nbegin_dc\nmainnodes: a b\nauxnodes: m\noutvar:\nbias:\nstparms:\nigparms:\nind_nodes:\n"
        "ind_branches:\ndigital_nodes:\nmain_var:\nxvar:\niparms:\nsparms:\nrparms:\nrparms_derived:\n"
        "ebe type=r p=a n=m r=1k\nebe type=r p=m n=b r=1k\nend_dc\nC:\nendC\nbegin_ac\noutvar_ac:\nind_nodes_ac:\n"
        "ind_branches_ac:\nend_ac\nendece\n";
    std::string outer(half);
    outer.replace(outer.find("half"), 4, "whole");
    const std::string inside = "ebe type=r p=a n=m r=1k\nebe type=r p=m n=b r=1k\n";
    outer.replace(outer.find(inside), inside.size(), "callece half a=a b=m\ncallece half a=m b=b\n");
    const auto said = [&](const std::string& type, int terminal) {
        dc_run run("eelement name=V1 type=vsrcdc p=in n=0 vdc=10\neelement name=X1 type=" + type + " a=in b=0\n", "",
                   "", half + outer);
        run.start();
        ebeu_class& e = run.c.ebeu;
        e.cur_nd[static_cast<std::size_t>(e.nd.first[static_cast<std::size_t>(run.unit_of("X1"))] + terminal)] = 1.0;
        run.listen([&] {
            find_residual(run.r);
            tell_residual(run.r);
        });
        return run.text;
    };
    EXPECT_EQ(said("half", 1), told + "1 at node m of X1\n" + advice);
    EXPECT_EQ(said("whole", 3), told + "1 at node m of X1\n" + advice);
    EXPECT_EQ(said("whole", 1), told + "1 at node (internal node 1) of X1\n" + advice);
}
