// What the check says of block diagrams in time.
#include <gtest/gtest.h>

#include "installed_share.h"
#include "tnl/check/check_deck.h"

using namespace cli;

namespace {

// Codes, messages and advice of a deck of blocks, one fault a line.
std::string told(const std::string& blocks, const std::string& method = "back_euler=yes t_end=1m delt_const=20u") {
    static const installed_libraries all = read_installed(installed_share());
    const check_report report = check_deck(
        view_deck("d.in", "title: t\nbegin_circuit\ngelement name=X type=srcac y=x f_hz=50\n" + blocks +
                              "end_circuit\nbegin_solve\nsolve_type trns\nmethod: " + method +
                              "\nbegin_output\nfilename o.dat\nvariables: v\nend_output\nend_solve\nend_cf\n"),
        all);
    std::string out;
    for (const check_fault& f : report.faults) out += f.code + std::string(": ") + f.message + "; " + f.advice + "\n";
    return out;
}

const std::string comparator = "gelement name=C type=cmprtr_2 x=x y=v";
const std::string read_v = "\noutvar: v=var_of_v\n";

}  // namespace

TEST(check_blocks, doubts_a_guard_that_no_step_is_short_enough_for) {
    EXPECT_EQ(
        told(comparator + read_v),
        "late-crossing: C (cmprtr_2) acts up to 2e-05 s late: its dt_guard of 1e-09 s is below half of delt_min, "
        "4e-09 s, so the step behind a crossing is a whole one; dt_guard=4e-09 there, or method: delt_min=1e-09\n");
    EXPECT_EQ(told(comparator + " dt_guard=2n" + read_v), "");
    EXPECT_EQ(told(comparator + read_v, "back_euler=yes t_end=1m delt_const=20u delt_min=2n"), "");
    EXPECT_EQ(told(comparator + read_v, "back_euler=yes t_end=1m delt_const=10u"), "");
    EXPECT_EQ(told(comparator + read_v, "back_euler=yes constant_step=yes t_end=1m delt_const=20u"), "");
}

TEST(check_blocks, an_output_that_nobody_reads_beside_one_that_is_read_is_no_fault) {
    const std::string modulator = "gelement name=M type=pwm_carrier d=x g=g gn=gn f_sw=1k\n";
    EXPECT_EQ(told(modulator + "gelement name=L type=lag_1 x=g y=v" + read_v), "");
    const std::string misspelt = told(modulator + "gelement name=L type=lag_1 x=gx y=v" + read_v);
    EXPECT_NE(misspelt.find("not-written: no block or meter writes the variable gx; near names: g, gn; is the name "
                            "misspelt? Written, but read by nobody: g gn\n"),
              std::string::npos)
        << misspelt;
}

TEST(check_blocks, tells_the_limits_of_a_loss_probe) {
    const std::string told_of = told(
        "eelement name=V1 type=vsrcdc p=a n=0 vdc=1\neelement name=R1 type=r p=b n=0 r=1\ngmelement name=P "
        "type=loss_probe p=a d=b n=0 y=v v_ref=0 t_avg=-1\nrefnode 0" +
        read_v);
    EXPECT_NE(told_of.find("bad-value: loss_probe does not take v_ref=0"), std::string::npos) << told_of;
    EXPECT_NE(told_of.find("bad-value: loss_probe does not take t_avg=-1"), std::string::npos) << told_of;
}
