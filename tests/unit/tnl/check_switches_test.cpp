// Doubts about switches that conduct one way beside inductors.
#include <gtest/gtest.h>

#include "installed_share.h"
#include "tnl/check/check_deck.h"

using namespace cli;

namespace {

const installed_libraries& installed() {
    static const installed_libraries all = read_installed(installed_share());
    return all;
}

// What `tnl check` says of a deck with these elements that is run in time; empty: nothing about switches.
std::string told(const std::string& elements, const std::string& before = "", const std::string& solve_type = "trns") {
    const std::string deck = "title: t\n" + before +
                             "begin_circuit\nrefnode 0\neelement name=V1 type=vsrcdc p=in n=0 vdc=24\n"
                             "gelement name=CLK type=clock y=g\ngelement name=INV type=not x=g y=gn\n"
                             "eelement name=C1 type=c p=out n=0\neelement name=R1 type=r p=out n=0\n" +
                             elements + "outvar: v=nodev_of_out\nend_circuit\nbegin_solve\nsolve_type " + solve_type +
                             (solve_type == "trns" ? "\nmethod: back_euler=yes t_end=1m delt_const=1u" : "") +
                             "\nbegin_output\nfilename o.dat\nvariables: v\nend_output\n"
                             "end_solve\nend_cf\n";
    const check_report report = check_deck(view_deck("d.in", deck), installed());
    std::string all;
    for (const check_fault& f : report.faults) {
        EXPECT_FALSE(f.is_error) << f.message;
        if (f.code == "one-way-switch") all += (all.empty() ? "" : "\n") + f.message;
    }
    return all;
}

const std::string coil = "eelement name=L1 type=l p=sw n=out\n";
const std::string upper = "eelement name=S1 type=switch_g1 p=in n=sw g=g\n";
const std::string lower = "eelement name=S2 type=switch_g1 p=0 n=sw g=gn\n";

}  // namespace

TEST(check_switches, doubts_a_synchronous_converter_of_switches_that_conduct_one_way) {
    EXPECT_EQ(told(upper + lower + coil),
              "at node sw the current of L1 has no way but through S1, S2, which conduct from p to n alone: it can "
              "neither go on while they are off, nor change its direction");
}

TEST(check_switches, doubts_a_switch_in_series_with_an_inductor) {
    EXPECT_EQ(told(upper + coil),
              "at node sw the current of L1 has no way but through S1, which conducts from p to n alone: it can "
              "neither go on while it is off, nor change its direction");
    for (const char* s : {"eelement name=S1 type=switch_e p=in n=sw cp=in cn=0\n",
                          "eelement name=S1 type=switch_d p=in n=sw s=q\ndelement name=Q1 type=dsrc y=q y0=1\n"})
        EXPECT_NE(told(s + coil), "") << s;
}

TEST(check_switches, sees_through_meters_of_current) {
    EXPECT_NE(told(upper + "eelement name=A1 type=ammeter p=sw n=sw2\neelement name=L1 type=l p=sw2 n=out\n"), "");
    EXPECT_EQ(told(upper + "eelement name=A1 type=ammeter p=sw n=sw2\neelement name=L1 type=l p=sw2 n=out\n"
                           "eelement name=D1 type=diode_r p=0 n=sw\n"),
              "");
}

TEST(check_switches, has_no_doubt_where_the_current_has_another_way) {
    for (const char* way :
         {"eelement name=D1 type=diode_r p=0 n=sw\n", "eelement name=D1 type=diode_spice_1 p=0 n=sw\n",
          "eelement name=R2 type=r p=sw n=0\n", "eelement name=C2 type=c p=sw n=0\n",
          "eelement name=S2 type=switch_bi p=sw n=0 g=gn\n", "eelement name=S2 type=mosfet_switch d=sw s=0 g=gn\n",
          "eelement name=S2 type=igbt_switch c=sw e=0 g=gn\n",
          "eelement name=S2 type=leg_mosfet dp=in dn=0 a=sw g=gn\n",
          "eelement name=T1 type=xfmr p1=sw n1=0 p2=out n2=0\n"})
        EXPECT_EQ(told(upper + coil + way), "") << way;
    for (const char* s :
         {"eelement name=S1 type=switch_bi p=in n=sw g=g\n", "eelement name=S1 type=spdt c=sw a=in b=0 g=g\n",
          "eelement name=S1 type=thyristor_g p=in n=sw g=g\n"})
        EXPECT_EQ(told(s + coil), "") << s;
    EXPECT_EQ(told(upper + "eelement name=R2 type=r p=sw n=out\n"), "");
}

TEST(check_switches, looks_at_runs_in_time_alone) { EXPECT_EQ(told(upper + coil, "", "startup"), ""); }

TEST(check_switches, knows_the_ways_inside_composites_of_the_deck) {
    const auto leg = [](const std::string& more) {
        return "ece name=pair\nmainnodes: a b\nmain_var: g\ncallece switch_g1 name=s p=a n=b g=g\n" + more + "endece\n";
    };
    const std::string use = "eelement name=S1 type=pair a=in b=sw g=g\n" + coil;
    EXPECT_NE(told(use, leg("")), "");
    EXPECT_EQ(told(use, leg("callece diode_r p=b n=a\n")), "");
}
