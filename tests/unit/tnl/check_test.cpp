#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>

#include "installed_share.h"
#include "settings/solve_words.h"
#include "temp_folder.h"
#include "tnl/check/check_deck.h"
#include "tnl/common/near_words.h"

using namespace cli;

namespace {

const installed_libraries& installed() {
    static const installed_libraries all = read_installed(installed_share());
    return all;
}

check_report check(const std::string& text) { return check_deck(view_deck("d.in", text), installed()); }

// "line:column code" of each fault, in the order of the report; warnings with a '~' before.
std::string faults_of(const check_report& report) {
    std::string out;
    for (const check_fault& f : report.faults) {
        const record_place p = place_of_fault(report, f);
        out += (out.empty() ? "" : ", ") + std::string(f.is_error ? "" : "~") + std::to_string(p.line) + ":" +
               std::to_string(p.column) + " " + f.code;
    }
    return out;
}

const std::string deck =
    "title: t\n"                                                // 1
    "greal rl=1k\n"                                             // 2
    "begin_circuit\n"                                           // 3
    "refnode 0\n"                                               // 4
    "eelement name=V1 type=vsrcdc p=in n=0 vdc=10\n"            // 5
    "eelement name=R1 type=r p=in n=out r=rl\n"                 // 6
    "eelement name=C1 type=c p=out n=0 c=1u v0=1\n"             // 7
    "eelement name=R2 type=r p=out n=0 r=1k\n"                  // 8
    "gelement name=K1 type=const y=x k=2\n"                     // 9
    "gelement name=K2 type=linear_1 x=x y=z\n"                  // 10
    "outvar: vout=nodev_of_out i1=i_of_R1 z=var_of_z\n"         // 11
    "end_circuit\n"                                             // 12
    "begin_solve\n"                                             // 13
    "solve_type dc\n"                                           // 14
    "vary_parm r_of_R2 from 1k to 2k type linear n_points 5\n"  // 15
    "begin_output\n"                                            // 16
    "filename dc.dat\n"                                         // 17
    "variables: r_of_R2 vout\n"                                 // 18
    "end_output\n"                                              // 19
    "end_solve\n"                                               // 20
    "begin_solve\n"                                             // 21
    "solve_type trns\n"                                         // 22
    "initial_sol previous\n"                                    // 23
    "method: trapezoidal=yes t_end=1m delt_const=1u\n"          // 24
    "begin_output\n"                                            // 25
    "filename trns.dat\n"                                       // 26
    "variables: vout i1 z\n"                                    // 27
    "control: fixed_interval=10u\n"                             // 28
    "end_output\n"                                              // 29
    "end_solve\n"                                               // 30
    "end_cf\n";                                                 // 31

std::string changed(const std::string& from, const std::string& to) {
    std::string text = deck;
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.replace(at, from.size(), to);
}

struct change {
    const char *from, *to, *faults;
};
void PrintTo(const change& c, std::ostream* out) { *out << c.from << " -> " << c.to; }

const change changes[] = {
    // structure
    {"title: t", "tilte: t", "1:1 no-title"},
    {"outvar:", "outvar", "11:1 unknown-statement"},  // once, not again where the names are used
    {"outvar:", "outvra:", "11:1 unknown-statement"},
    {"outvar: ", "outvar:", "11:1 unknown-statement"},
    {"trns.dat\n", "trns.dat fourier=yes\n", "~26:10 few-harmonics"},
    {"end_circuit\n", "", "12:1 no-end-circuit"},
    {"end_output\nend_solve\nbegin", "end_output\nbegin", "20:1 no-end-solve"},
    {"end_output\nend_solve\nend_cf", "end_solve\nend_cf", "29:1 no-end-output"},
    {"end_cf\n", "", "30:1 no-end"},
    {"begin_circuit\n", "", "3:1 no-circuit"},
    {"begin_solve\nsolve_type dc", "solve_type dc", "13:1 no-begin-solve"},
    {"begin_solve\nsolve_type dc", "begin_slove\nsolve_type dc", "13:1 misplaced, 14:1 no-begin-solve"},
    {"greal", "+ greal", "6:38 bad-number"},
    {"end_cf", "end_solve\nend_cf", "31:1 misplaced"},
    {"begin_circuit", "eelement name=R9 type=r p=in n=0\nbegin_circuit", "3:1 misplaced"},
    {"solve_type dc\n", "", "13:1 no-solve-type"},
    {"solve_type dc", "solve_type dcc", "14:12 unknown-solve-type"},
    {"solve_type dc", "solve_type ac",
     "14:1 no-frequency, ~14:12 no-ac-source, 18:12 output-kind, 18:20 output-kind, 23:13 no-previous"},
    {"solve_type dc", "solve_type ssw", "13:1 no-period, 15:1 misplaced"},
    {"initial_sol", "inital_sol", "23:1 unknown-statement"},
    {"eelement name=R2", "element name=R2", "8:1 unknown-statement"},
    {"variables: vout", "variable: vout", "25:1 no-variables, ~27:1 unread-statement"},
    // constants
    {"rl=1k", "rl=1x", "2:10 bad-number"},
    {"rl=1k", "rl=1k q=$((rl)+(s))", "2:15 bad-expression"},
    {"rl=1k", "rl=1k q=$((rl)*(2)", "2:15 bad-expression"},
    // elements
    {"type=c p", "type=cc p", "7:23 unknown-type"},
    {"type=c p", "type=const p", "7:23 unknown-type"},
    {"type=c p", "typ=c p", "7:1 no-type"},
    {"name=C1 ", "", "7:1 no-name"},
    {"name=C1", "name=R1", "7:15 named-twice"},
    {"n=0 c=1u", "c=1u", "7:1 missing-terminal"},
    {"c=1u", "C=1u", "7:35 unknown-word"},
    {"c=1u v0=1", "c1u v0=1", "7:35 unknown-word"},
    {"c=1u", "c=1uF", "7:37 bad-number"},
    {"c=1u", "c=1u c=2u", "7:40 given-twice"},
    {"c=1u v0=1", "c=1u v0", "7:40 no-value"},
    {"r=1k\ng", "r=0\ng", "8:37 bad-value"},
    {"r=1k\ng", "r=1k model=M1\ng", "8:46 unknown-model"},
    {"type=const y=x k=2", "type=pwl_file y=x file=none", "9:1 no-file"},
    {"type=const y=x k=2", "type=pwl_file y=x file=nothere.txt", "9:41 missing-file"},
    // nodes
    {"refnode 0\n", "", "3:1 no-reference"},
    {"refnode 0", "refnode gnd", "4:9 no-reference"},
    {"p=in n=out r=rl", "p=in n=ot r=rl", "~6:32 one-terminal"},
    {"p=out n=0 r=1k", "p=in n=0 r=1k", ""},
    {"eelement name=R2 type=r p=out", "eelement name=R3 type=r p=a n=b\neelement name=R2 type=r p=out",
     "8:27 floating"},
    {"eelement name=R2 type=r p=out",
     "eelement name=C3 type=c p=a n=in\neelement name=C4 type=c p=a n=0\neelement name=R2 type=r p=out",
     "8:27 floating"},
    {"eelement name=R2 type=r p=out",
     "eelement name=I1 type=isrcac p=a n=0\neelement name=I2 type=isrcac p=a n=0\neelement name=R2 type=r p=out",
     "8:32 current-cutset"},
    {"eelement name=R2 type=r p=out", "eelement name=A1 type=ammeter p=in n=0\neelement name=R2 type=r p=out",
     "8:1 voltage-loop"},
    {"eelement name=R2 type=r p=out", "eelement name=L1 type=l p=in n=0\neelement name=R2 type=r p=out",
     "8:1 voltage-loop"},
    {"eelement name=R2 type=r p=out",
     "eelement name=E1 type=vccs p=q n=0 cp=in cn=0\neelement name=R3 type=r p=q n=w\neelement name=R2 type=r p=out",
     "8:30 current-cutset"},
    {"eelement name=R2 type=r p=out", "eelement name=E1 type=vccs p=q n=0 cp=q cn=0\neelement name=R2 type=r p=out",
     ""},
    {"n=0 vdc", "n=in vdc", "5:37 voltage-loop"},
    {"eelement name=R2 type=r p=out", "eelement name=F1 type=cccs p=in n=0 br=R1\neelement name=R2 type=r p=out",
     "8:40 unknown-branch"},
    {"eelement name=R2 type=r p=out", "eelement name=F1 type=cccs p=in n=0 br=V2\neelement name=R2 type=r p=out",
     "8:40 unknown-branch"},
    {"eelement name=R2 type=r p=out", "eelement name=E1 type=vccs p=in n=0 cp=q cn=0\neelement name=R2 type=r p=out",
     "8:40 sensed-only"},
    // variables
    {"x=x y=z", "x=w y=z", "~9:31 not-read, 10:34 not-written"},
    {"x=x y=z", "x=x y=x", "10:38 written-twice, 11:40 unknown-output"},
    {" z=var_of_z", "", "~10:38 not-read, 27:20 unknown-variable"},
    // outputs of the circuit
    {"nodev_of_out", "nodev_of_uot", "11:14 unknown-output"},
    {"i_of_R1", "i_of_R7", "11:30 unknown-output"},
    {"i_of_R1", "q_of_R1", "11:30 unknown-output"},
    {"i_of_R1", "iR1", "11:30 unknown-output"},
    {"i_of_R1", "pwr_elec_of_R1", ""},
    {"i_of_R1", "pwr_elec_of_K2", "11:30 unknown-output"},
    {"i_of_R1", "pwr_elec_ac_of_K2", "11:30 unknown-output"},
    // blocks that set and read parameters
    {"gelement name=K2", "gelement name=S type=set_rparm x=z element=R1 parm=r\ngelement name=K2", ""},
    {"gelement name=K2", "gelement name=S type=set_rparm x=z element=C1 parm=v0\ngelement name=K2", ""},
    {"gelement name=K2", "gelement name=S type=set_rparm x=z element=R9 parm=r\ngelement name=K2",
     "10:44 unknown-item"},
    {"gelement name=K2", "gelement name=S type=set_rparm x=z element=R1 parm=rr\ngelement name=K2",
     "10:52 unknown-item"},
    {"gelement name=K2", "gelement name=S type=set_rparm x=z parm=r\ngelement name=K2", "10:1 unknown-item"},
    {"x=x y=z", "x=q y=z\ngelement name=G type=get_rparm y=q element=R1", "~9:31 not-read, 11:1 unknown-item"},
    // solve blocks
    {"r_of_R2 from", "r_of_R5 from", "15:11 unknown-item, 18:12 unknown-variable"},
    {"n_points 5", "n_points 1", "15:54 bad-sweep"},
    {"type linear n", "n", "15:1 bad-sweep"},
    {"type linear n", "type lin n", "15:38 bad-sweep"},
    {"from 1k", "from 1k 2k", "15:27 unknown-word"},
    {"solve_type dc\n", "solve_type dc\ninitial_sol previous\n", "15:13 no-previous"},
    {"initial_sol previous", "initial_sol prevous", "23:13 bad-initial-sol"},
    {"initial_sol previous", "initial_sol file filename no.dat", "23:27 missing-file"},
    {"initial_sol previous", "set_parm vdc_of_V1 5 c_of_R1 3", "23:22 unknown-item"},
    {"initial_sol previous", "vary_parm r_of_R1 type table 1 2", "23:1 misplaced"},
    {"trapezoidal=yes", "trapezoidal=yes gear2=yes", "24:25 two-rules"},
    {"outvar:",
     "gelement name=S1 type=cmprtr_2 x=z y=w\ngelement name=K3 type=linear_1 x=w y=q\noutvar: q=var_of_q\noutvar:",
     "~27:9 event-restart"},
    {"t_end=1m", "event_restart=yes t_end=1m", ""},
    {"trapezoidal=yes", "trapezodial=yes", "24:9 unknown-method-word"},
    {"trapezoidal=yes", "trapezoidal=on", "~24:21 not-yes-or-no"},
    {"t_end=1m ", "", "24:1 missing-method-word"},
    {" delt_const=1u", "", "24:1 missing-method-word"},
    {"delt_const=1u", "delt_const=-1u", "24:34 bad-step"},
    {"delt_const=1u", "delt_const=1", "~24:34 bad-step"},
    {"delt_const=1u", "delt_const=1u delt_min=2u", "24:34 bad-step"},
    {"t_end=1m", "t_end=1m t_start=2m", "24:25 bad-step"},
    {"t_end=1m", "t_end=1", "~24:25 too-many-steps"},
    {"solve_type dc\n", "solve_type dc\nmethod: t_end=1\n", "15:9 unknown-method-word"},
    // output blocks
    {"filename dc.dat\n", "", "16:1 no-filename"},
    {"filename dc.dat", "filename dc.dat apend=yes", "~17:17 unknown-option"},
    {"filename dc.dat", "filename dc.dat append=yes", "17:10 missing-file"},
    // what the simulator refuses when it begins to solve
    {"r=1k\ngele", "r=1k\nemodel name=soft type=r r=0\neelement name=R9 type=r model=soft p=out n=0\ngele",
     "9:27 bad-value"},
    {"r=1k\ngele", "r=1k\neelement name=D1 type=diode_r p=out n=0 r_on=2M\ngele", "9:46 bad-value"},
    {"r=1k\ngele", "r=1k\neelement name=D1 type=diode_r p=out n=0 r_on=1 r_off=1\ngele", "9:46 bad-value"},
    {"type=vsrcdc p=in n=0 vdc=10", "type=vpulse p=in n=0 tr=1u tf=1u pw=9u per=10u", "5:61 bad-value"},
    {"type=vsrcdc p=in n=0 vdc=10", "type=vpulse p=in n=0 tr=1u tf=1u pw=8u per=10u", ""},
    {"type=vsrcdc p=in n=0 vdc=10", "type=vpulse p=in n=0 pw=2m", "5:42 bad-value"},
    {"type=vsrcdc p=in n=0 vdc=10", "type=vpulse p=in n=0 pw=2m per=0", ""},
    {"type=vsrcdc p=in n=0 vdc=10", "type=pwl20 p=in n=0 n_pts=3 t1=0 t2=2 t3=1", "5:59 bad-value"},
    {"type=vsrcdc p=in n=0 vdc=10", "type=pwl20 p=in n=0 n_pts=2 t1=0 t2=2 t3=1", ""},
    {"type=vsrcdc p=in n=0 vdc=10", "type=pwl20 p=in n=0 n_pts=21", "5:44 bad-value"},
    {"r=1k\ngele", "r=1k\neelement name=L1 type=l_gap p=out n=0 turns=0\ngele", "9:45 bad-value"},
    {"r=1k\ngele", "r=1k\neelement name=L1 type=l_gap p=out n=0 gap=0 path=0\ngele", "9:43 bad-value"},
    {"r=1k\ngele", "r=1k\neelement name=L1 type=l_gap p=out n=0 l_o=1m\ngele", "~9:39 computed"},
    {"r=1k\ngele", "r=1k\neelement name=L1 type=l_gap p=out n=0\ngele", ""},
    {"type=vsrcdc p=in n=0 vdc=10", "type=clock p=in n=0 dt1=1 t1=0.5", "5:42 bad-value"},
    {"r=1k\ngele", "r=1k\neelement name=D1 type=diode_spice_1 p=out n=0 tnom=0\ngele", "9:52 bad-value"},
    {"r=1k\ngele", "r=1n\ngele", "8:37 bad-value"},
    {"r=1k\ngele", "r=1n k_scale=1M\ngele", "~8:37 doubtful-value"},
    {"vary_parm r_of_R2 from 1k to 2k type linear n_points 5", "vary_parm r_of_R2 type table 1k 0", "15:33 bad-value"},
    {"vary_parm r_of_R2 from 1k", "set_parm r_of_R2 0\nvary_parm r_of_R2 from 1k", "15:18 bad-value"},
    {"trapezoidal=yes", "gear2_fixed=yes", ""},
    {"method: trapezoidal=yes", "method: constant_step=yes gear2=yes", "24:9 bad-setting"},
    {"method: trapezoidal=yes", "method: trbdf2=yes trbdf2_gamma=1", "24:20 bad-setting"},
    {"method: trapezoidal=yes", "method: trapezoidal=yes dmp_newt_max=100", "24:25 bad-setting"},
    {"method: trapezoidal=yes", "method: trapezoidal=yes chk_only_rhs2=yes chk_only_spice=yes", "24:25 bad-setting"},
    {"method: trapezoidal=yes", "method: trapezoidal=yes chk_spice=no", ""},  // linear: nobody iterates
    {"filename dc.dat", "filename /tmp/dc.dat", "17:10 bad-output-place"},
    {"filename dc.dat", "filename ../dc.dat", "17:10 bad-output-place"},
    {"filename dc.dat", "filename run.json", "17:10 bad-output-place"},
    {"filename dc.dat", "filename sub/.././.tnlaux/cct.in", "17:10 bad-output-place"},
    {"filename dc.dat", "filename dc.dat limit_lines=3", "17:17 too-many-rows"},
    {"trns.dat", "dc.dat", "~26:10 same-file"},
    {"r_of_R2 vout", "r_of_R2 vot", "18:20 unknown-variable"},
    {"variables: vout i1 z", "variables: solution z", "27:12 bad-variables"},
    {"fixed_interval", "fixed_intervals", "~28:10 unknown-option"},
    {"fixed_interval=10u", "fixed_interval=10u out_tstart=2m", "~28:40 no-rows"},
    {"filename dc.dat\n", "filename dc.dat\ncontrol: out_tstart=1\n", "~18:10 unknown-option"},
};

}  // namespace

class deck_changes : public testing::TestWithParam<change> {};
TEST_P(deck_changes, lead_to_faults_with_their_places) {
    const temp_folder here;
    const check_report report = check(changed(GetParam().from, GetParam().to));
    EXPECT_EQ(faults_of(report), GetParam().faults) << report_text(report);
}
INSTANTIATE_TEST_SUITE_P(check_deck, deck_changes, testing::ValuesIn(changes));

// Two names for zero, one of which is the reference: the rest of the circuit hangs on the other.
TEST(check_deck, doubts_a_second_node_with_a_name_for_zero) {
    const auto faults = [](const std::string& reference, const std::string& more) {
        return faults_of(check("title: t\nbegin_circuit\nrefnode " + reference +
                               "\neelement name=V1 type=vsrcdc p=a n=GND vdc=1\neelement name=R1 type=r p=a n=GND\n"
                               "eelement name=R2 type=r p=a n=0\neelement name=R3 type=r p=a n=0\n" +
                               more + "end_circuit\nend_cf\n"));
    };
    EXPECT_EQ(faults("GND", ""), "~2:1 no-solve, ~6:31 two-zeros");
    EXPECT_EQ(faults("0", ""), "~2:1 no-solve, ~4:36 two-zeros");
    EXPECT_EQ(faults("GND", "eelement name=G1 type=ground_dummy c=0\n"), "~2:1 no-solve");
    EXPECT_EQ(faults("a", ""), "~2:1 no-solve") << "a reference with another name is chosen on purpose";
}

TEST(check_deck, finds_nothing_in_a_good_deck) { EXPECT_EQ(report_text(check(deck)), "d.in: no faults\n"); }

TEST(check_deck, finds_all_faults_in_one_pass) {
    std::string text = changed("c=1u", "C=1u");
    text.replace(text.find("type=const"), 10, "type=cnst ");
    text.replace(text.find("delt_const=1u"), 13, "delt_const=1x");
    EXPECT_EQ(faults_of(check(text)), "7:35 unknown-word, 9:23 unknown-type, 24:45 bad-number");
}

TEST(check_deck, goes_on_behind_a_plus_at_the_top) {
    const check_report report = check("# comment\n+ " + changed("c=1u", "C=1u"));
    EXPECT_EQ(faults_of(report), "2:1 continuation-at-top, 8:35 unknown-word");
}

TEST(check_deck, shows_the_line_and_a_caret) {
    EXPECT_EQ(report_text(check(changed("i_of_R1", "i_of_R7"))),
              "d.in:11:30: error: there is no element named R7; near names: R1, R2\n"
              "  outvar: vout=nodev_of_out i1=i_of_R7 z=var_of_z\n"
              "                               ^\n"
              "d.in: 1 error, 0 warnings\n");
}

TEST(check_deck, names_the_elements_of_a_loop_in_their_order) {
    const check_report report = check(
        changed("eelement name=R2 ",
                "eelement name=V2 type=vsrcac p=a n=in\neelement name=V3 type=vpulse p=a n=0\neelement name=R2 "));
    ASSERT_EQ(report.faults.size(), 1u);
    EXPECT_EQ(report.faults[0].message, "a loop of ideal voltage sources: V2, V1, V3");
}

TEST(check_deck, sees_a_loop_through_an_ideal_transformer) {
    const std::string two_windings = "eelement name=T1 type=xfmr_2w_ideal p1=in n1=0 p2=s n2=0\n";
    EXPECT_EQ(faults_of(check(
                  changed("eelement name=R2 ", two_windings + "eelement name=R3 type=r p=s n=0\neelement name=R2 "))),
              "");
    EXPECT_EQ(faults_of(check(changed("eelement name=R2 ",
                                      two_windings + "eelement name=V2 type=vsrcdc p=s n=0\neelement name=R2 "))),
              "8:1 voltage-loop");
}

TEST(check_deck, joins_ground_words_with_the_reference) {
    EXPECT_EQ(faults_of(check(changed("p=out n=0 r=1k",
                                      "p=out n=earth r=1k\neelement name=R3 type=r p=in n=earth\n"
                                      "eelement name=G1 type=ground_dummy c=earth"))),
              "");
}

TEST(check_deck, says_nothing_about_nodes_of_an_unknown_type) {
    EXPECT_EQ(faults_of(check(changed("type=r p=in n=out", "type=rr p=in n=out"))), "6:23 unknown-type");
}

TEST(check_deck, doubts_values_by_the_unit_of_the_library_alone) {
    installed_libraries libraries;
    const int eels = find_library(&library_form::file, "eels.aux");
    const auto with_doc = [&](const std::string& doc) {
        libraries.library[eels].entries = {{"x", "ece name=x\nmainnodes: p n\n" + doc + "rparms: v=1\nendece\n"}};
        libraries.library[eels].position = {{"x", 0}};
    };
    const auto codes = [&](const std::string& value) {
        const std::string text = "title: t\nbegin_circuit\nrefnode 0\neelement name=X type=x p=0 n=0 v=" + value +
                                 "\neelement name=Y type=x p=0 n=0\nend_circuit\nend_cf\n";
        const check_report report = check_deck(view_deck("d.in", text), libraries);
        return static_cast<int>(std::count_if(report.faults.begin(), report.faults.end(), [](const check_fault& f) {
            return f.code == "doubtful-value" && !f.is_error;
        }));
    };
    with_doc("#. v F value\n");
    EXPECT_EQ(codes("1u"), 0);
    EXPECT_EQ(codes("1M"), 1);
    EXPECT_EQ(codes("-1u"), 1);
    EXPECT_EQ(codes("0"), 1);
    EXPECT_EQ(codes("2"), 1);
    with_doc("#. v H value\n");
    EXPECT_EQ(codes("2"), 0);
    EXPECT_EQ(codes("2k"), 1);
    with_doc("#. v ohm value\n");
    EXPECT_EQ(codes("1M"), 0);
    EXPECT_EQ(codes("0.1u"), 1);
    with_doc("#. v Hz value\n");
    EXPECT_EQ(codes("50"), 0);
    EXPECT_EQ(codes("2000G"), 1);
    with_doc("#. v K value\n");
    EXPECT_EQ(codes("300"), 0);
    EXPECT_EQ(codes("-20"), 1);
    with_doc("#. v s value\n");
    EXPECT_EQ(codes("1m"), 0);
    EXPECT_EQ(codes("1M"), 1);
    with_doc("");
    EXPECT_EQ(codes("-1M"), 0);
}

TEST(check_deck, puts_places_of_includes_in_their_files) {
    const temp_folder here;
    ::write_file("part.in", "eelement name=R9 type=r p=in n=0 q=1\n");
    ::write_file("main.in", changed("eelement name=R2 ", "include part.in\neelement name=R2 "));
    const check_report report = check_deck(view_deck(read_deck_source("main.in")), installed());
    ASSERT_EQ(report.faults.size(), 1u);
    EXPECT_EQ(place_of_fault(report, report.faults[0]).file, "part.in");
    EXPECT_EQ(place_of_fault(report, report.faults[0]).line, 1);
}

TEST(check_deck, limits_the_faults_of_one_kind_and_says_so) {
    std::string many;
    for (int i = 0; i < 200; ++i) many += "mystery " + std::to_string(i) + "\n";
    const check_report report = check(changed("refnode 0\n", "refnode 0\n" + many));
    EXPECT_EQ(report.n_errors(), 50);
    EXPECT_NE(report_text(report).find("150 more of the kind unknown-statement\n"), std::string::npos);
}

TEST(report_json, holds_what_the_text_says) {
    const auto list = nlohmann::json::parse(report_json(check(changed("c=1u", "C=1u"))));
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(list[0]["severity"], "error");
    EXPECT_EQ(list[0]["code"], "unknown-word");
    EXPECT_EQ(list[0]["place"]["file"], "d.in");
    EXPECT_EQ(list[0]["place"]["line"], 7);
    EXPECT_EQ(list[0]["place"]["column"], 35);
    EXPECT_EQ(list[0]["place"]["text"], "eelement name=C1 type=c p=out n=0 C=1u v0=1");
    EXPECT_EQ(list[0]["message"], "c has no terminal or parameter C; near names: c");
    EXPECT_EQ(nlohmann::json::parse(report_json(check(deck))).size(), 0u);
    EXPECT_EQ(nlohmann::json::parse(report_json(check("\xff\xfe = \x01\n"))).is_array(), true);
}

// An element that fixes a voltage or a current, or that is open or short in dc, must say so in its file.
TEST(model_rules, tell_the_branches_of_every_installed_element_whose_terminal_current_does_not_follow_from_voltages) {
    const int ebes = find_library(&library_form::file, "ebes.aux");
    for (const library_entry& entry : installed().library[ebes].entries) {
        std::vector<std::string> nodes;
        bool conducts = true;
        std::vector<std::string> states;
        for (const words& w : lines_of(entry, library_forms[ebes]))
            for (int j = 1; j < w.size(); ++j)
                if (w[j].starts_with("d_dt(")) states.emplace_back(w[j].substr(5, w[j].size() - 6));
        // A row of voltages and of a current as it stands is that of a resistance, if no state has a part in it.
        const auto through_resistance = [&](const std::string& current) {
            for (const words& w : lines_of(entry, library_forms[ebes])) {
                bool of_voltage = false, of_current = false, of_state = false;
                for (int j = 1; j < w.size(); ++j) {
                    of_voltage = of_voltage || w[j].starts_with("v(");
                    of_current = of_current || w[j] == current;
                    of_state = of_state || w[j].starts_with("d_dt(") || has(states, w.str(j));
                }
                if (w[0].starts_with("f_") && !has(nodes, w[0].substr(2)) && of_voltage && of_current && !of_state)
                    return true;
            }
            return false;
        };
        for (const words& w : lines_of(entry, library_forms[ebes])) {
            if (w[0] == "nodes:")
                for (int j = 1; j < w.size(); ++j) nodes.push_back(w.str(j));
            if (!w[0].starts_with("f_") || !has(nodes, w[0].substr(2))) continue;
            bool of_voltage = false;
            for (int j = 1; j < w.size(); ++j)
                of_voltage = of_voltage || w[j].starts_with("v(") || through_resistance(w.str(j));
            conducts = conducts && of_voltage;
        }
        if (nodes.size() < 2) continue;
        const std::vector<type_branch> told = rules_of(entry, library_forms[ebes]).branches;
        EXPECT_EQ(
            std::all_of(told.begin(), told.end(), [](const type_branch& b) { return b.kind == branch_kind::one_way; }),
            conducts)
            << entry.name;
    }
}

TEST(element_types, know_which_variables_an_element_writes) {
    element_types types(installed());
    const auto driven = [&](const char* word, const char* name) {
        const element_type* t = types.find(find_library(&library_form::statement, word), name);
        std::string all;
        if (t != nullptr)
            for (const std::string& v : t->driven) all += (all.empty() ? "" : " ") + v;
        return all;
    };
    EXPECT_EQ(driven("gelement", "sum_2"), "y");
    EXPECT_EQ(driven("gelement", "intgrtr"), "y");
    EXPECT_EQ(driven("gelement", "pll_1a"), "w th");
    EXPECT_EQ(driven("gelement", "abc_to_dq0_1"), "d q zero");
    EXPECT_EQ(driven("eelement", "voltmeter_fb"), "y");
    EXPECT_EQ(driven("eelement", "switch_g1"), "");
    EXPECT_EQ(driven("eelement", "vsrc_1"), "");
    EXPECT_EQ(driven("eelement", "isrc_1"), "");
}

TEST(check_deck, an_output_against_the_reference_node_is_a_way_to_it) {
    const auto n_errors = [](const std::string& lines) {
        return check(changed("outvar:", lines + "eelement name=C9 type=c p=w n=w2 c=1n\n"
                                                "eelement name=R9 type=r p=w n=w2 r=1k\noutvar:"))
            .n_errors();
    };
    EXPECT_EQ(n_errors("eelement name=G1 type=not a=out y=w\n"), 0);
    EXPECT_EQ(n_errors("eelement name=G1 type=sampler2 cp=out h=in y=w\n"), 0);
    EXPECT_GT(n_errors(""), 0);
}

TEST(check_deck, names_of_many_kilobytes_and_thousands_of_lone_nodes_are_read_to_the_end) {
    const std::string name(40000, 'a');
    const check_report report =
        check(changed("type=c p=out n=0 c=1u", "type=" + name + " p=" + name + " n=" + name + "b c=1u"));
    EXPECT_GT(report.n_errors(), 0);
    EXPECT_LT(report_text(report).size(), 20000u);
    std::string many = deck;
    for (int i = 0; i < 3000; ++i)
        many.insert(many.find("outvar:"),
                    "eelement name=Q" + std::to_string(i) + " type=r p=in n=node_" + std::to_string(i) + " r=1k\n");
    EXPECT_EQ(check(many).count.at("one-terminal"), 3000);
    EXPECT_EQ(edit_distance(name, name), 0);
    EXPECT_EQ(edit_distance(name, "b"), 40000);
    EXPECT_TRUE(near_names({name + "b", "a"}, name).empty());
}

TEST(check_deck, a_rule_with_steps_of_one_length_cannot_stand_with_corners_that_steps_must_meet) {
    std::string text = changed("type=vsrcdc p=in n=0 vdc=10", "type=vpulse p=in n=0");
    EXPECT_EQ(faults_of(check(text)), "");
    text.replace(text.find("trapezoidal"), 11, "gear2_fixed");
    EXPECT_EQ(faults_of(check(text)), "24:9 bad-setting");
}

TEST(check_deck, an_iteration_needs_a_test_of_its_convergence) {
    const std::string diode = "r=1k\neelement name=D1 type=diode p=out n=0\ngele";
    std::string text = changed("r=1k\ngele", diode);
    text.replace(text.find("trapezoidal=yes"), 15, "trapezoidal=yes chk_spice=no");
    EXPECT_EQ(faults_of(check(text)), "25:25 bad-setting");
    text.replace(text.find("chk_spice=no"), 12, "chk_spice=no chk_rhs2=yes");
    EXPECT_EQ(faults_of(check(text)), "");
}

TEST(near_words, take_swapped_letters_and_capitals_first) {
    EXPECT_EQ(near_words({"out", "in", "Vout", "vout"}, "uot"), (std::vector<std::string>{"out"}));
    EXPECT_EQ(near_words({"l", "L1", "c"}, "L"), (std::vector<std::string>{"l"}));
    EXPECT_EQ(near_words({"R1", "R2", "V1"}, "R3"), (std::vector<std::string>{"R1", "R2"}));
    EXPECT_TRUE(near_words({"a", "b"}, "c").empty());
    EXPECT_EQ(edit_distance("kitten", "sitting"), 3);
    EXPECT_EQ(edit_distance("ab", "ba"), 1);
}

TEST(check_report, comes_back_whole_from_its_bytes) {
    const check_report report = check(changed("c=1u", "C=1u q"));
    const std::optional<check_report> same = unpacked(packed(report), report.deck);
    ASSERT_TRUE(same.has_value());
    EXPECT_FALSE(report.faults.empty());
    EXPECT_EQ(report_text(*same), report_text(report));
    EXPECT_EQ(same->count, report.count);
    const std::string bytes = packed(report);
    for (std::size_t n = 0; n + 3 < bytes.size(); n += 7) (void)unpacked(bytes.substr(0, n), report.deck);
    EXPECT_FALSE(unpacked("", report.deck).has_value()) << "no answer is no report";
    const deck_view unread = view_deck("d.in", "+ " + deck + "end_solve\n");  // the check reads past the '+'
    const check_report past = check_deck(unread, installed());
    EXPECT_EQ(report_text(unpacked(packed(past), unread).value()), report_text(past));
    EXPECT_FALSE(unpacked(bytes.substr(0, bytes.size() - 1), report.deck).has_value());
}
