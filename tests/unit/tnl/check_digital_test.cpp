// What the check says of digital nodes, clocks, files of levels and first levels.
#include <gtest/gtest.h>

#include "installed_share.h"
#include "tnl/check/check_deck.h"

using namespace cli;

namespace {

const installed_libraries& installed() {
    static const installed_libraries all = read_installed(installed_share());
    return all;
}

struct digital_deck {
    std::string elements = "delement name=K1 type=clock y=clk t1=20n t2=30n\ndelement name=N1 type=not a=clk y=q\n";
    std::string outputs = "outvar: clk=dvar_of_clk q=dvar_of_q\n";
    std::string solve_type = "trns", method = "t_end=1u", block = "", variables = "clk q", own = "";
};
// A comparator of logic on a resistor: the clock drives a converter, and one looks at the circuit.
const std::string links =
    "refnode 0\neelement name=D1 type=dac1 p=a n=0 s=clk\neelement name=R1 type=r p=a n=0\n"
    "delement name=A1 type=adc1 x=a y=seen\n";

std::string text_of(const digital_deck& d) {
    return "title: t\n" + d.own + "begin_circuit\n" + d.elements + d.outputs + "end_circuit\nbegin_solve\nsolve_type " +
           d.solve_type + "\nmethod: " + d.method + "\n" + d.block +
           "begin_output\nfilename d.dat\nvariables: " + d.variables + "\nend_output\nend_solve\nend_cf\n";
}

check_report report_of(const digital_deck& d) { return check_deck(view_deck("d.in", text_of(d)), installed()); }

// "~" in front of warnings, then the code and the word that it speaks of.
std::string faults_of(const digital_deck& d) {
    const check_report report = report_of(d);
    std::string out;
    for (const check_fault& f : report.faults) {
        const record_place p = place_of_fault(report, f);
        const std::string word = p.text.substr(static_cast<std::size_t>(p.column) - 1);
        out += (out.empty() ? "" : ", ") + std::string(f.is_error ? "" : "~") + f.code + " " +
               word.substr(0, word.find_first_of(" \n"));
    }
    return out;
}

std::string words_of(const digital_deck& d) {
    std::string out;
    for (const check_fault& f : report_of(d).faults) out += f.message + "; " + f.advice + "\n";
    return out;
}

const digital_deck sound;
digital_deck mixed(const std::string& more = "", const std::string& method = "t_end=1u delt_const=10n") {
    digital_deck d;
    d.elements += links + more;
    d.outputs += "outvar: va=nodev_of_a seen=dvar_of_seen\n";
    d.method = method;
    return d;
}

}  // namespace

TEST(check_digital, finds_nothing_in_good_decks) {
    EXPECT_EQ(faults_of(sound), "");  // without reference and time step
    EXPECT_EQ(faults_of(mixed()), "");
    digital_deck levels = sound;
    levels.block = "set_dgtl q 2 clk 0\n";
    EXPECT_EQ(faults_of(levels), "");
}

TEST(check_digital, tells_an_input_that_nothing_drives) {
    digital_deck d = sound;
    d.elements += "delement name=G1 type=and_2 a=clk b=enabel y=z\ndelement name=S1 type=dsrc y=enable\n";
    EXPECT_EQ(faults_of(d), "~not-driven enabel");
    EXPECT_NE(words_of(d).find("nothing drives the digital node enabel, which G1 reads"), std::string::npos);
    EXPECT_NE(words_of(d).find("near names: enable"), std::string::npos);
    d.block = "set_dgtl enabel 1\n";  // it has a level
    EXPECT_EQ(faults_of(d), "");
    EXPECT_EQ(faults_of(mixed("eelement name=W1 type=switch_d p=a n=0 s=gate\n")), "not-driven gate");
}

TEST(check_digital, tells_two_outputs_on_one_node) {
    digital_deck d = sound;
    d.elements += "delement name=G1 type=not a=clk y=q\n";
    EXPECT_EQ(faults_of(d), "~driven-twice q");
    EXPECT_NE(words_of(d).find("digital node q is driven by N1 and by G1"), std::string::npos);
}

TEST(check_digital, looks_into_composites_of_the_deck) {
    digital_deck d = sound;
    d.own =
        "dce name=pair\nmainnodes: a b y\nauxnodes: m\nanalog_nodes:\noutvar: y=dvar_of_y\niparms:\nsparms:\nrparms:\n"
        "rparms_derived:\nstparms:\nigparms:\ndbe type=and_2 name=g a=a b=b y=m\ndbe type=not name=n a=m y=y\nenddce\n";
    d.elements += "delement name=P1 type=pair a=clk b=none y=q\n";
    EXPECT_EQ(faults_of(d), "~not-driven none, ~driven-twice q");
}

TEST(check_digital, an_unknown_type_may_drive_anything) {
    digital_deck d = sound;
    d.elements += "delement name=G1 type=and_2 a=clk b=x y=z\ndelement name=S1 type=and_3 y=x\n";
    EXPECT_EQ(faults_of(d), "unknown-type and_3");
}

TEST(check_digital, tells_outputs_that_name_nothing) {
    digital_deck d = sound;
    d.outputs += "outvar: r=dvar_of_ckl s=w_of_N1\n";
    EXPECT_EQ(faults_of(d), "unknown-output dvar_of_ckl, unknown-output w_of_N1");
    EXPECT_NE(words_of(d).find("there is no digital node ckl; near names: clk"), std::string::npos) << words_of(d);
}

TEST(check_digital, tells_levels_and_other_values_in_one_file) {
    digital_deck d = mixed();
    d.variables = "clk va";
    EXPECT_EQ(faults_of(d), "mixed-file va");
    d.variables = "va clk q";
    EXPECT_EQ(faults_of(d), "mixed-file clk");
    EXPECT_NE(words_of(d).find("va is not, clk is a digital level"), std::string::npos) << words_of(d);
}

TEST(check_digital, tells_the_right_quantity_of_a_name_of_the_other_side) {
    digital_deck d = mixed();
    d.outputs = "outvar: clk=dvar_of_clk q=nodev_of_q va=dvar_of_a\n";
    EXPECT_EQ(faults_of(d), "unknown-output nodev_of_q, unknown-output dvar_of_a");  // and not what its file holds
    EXPECT_NE(words_of(d).find("there is no node q; q is a digital node: dvar_of_q\n"), std::string::npos)
        << words_of(d);
    EXPECT_NE(words_of(d).find("a is a node: nodev_of_a\n"), std::string::npos) << words_of(d);
    d.outputs = "outvar: clk=dvar_of_clk q=nodev_of_q va=nodev_of_a\n";
    d.variables = "q clk va";
    EXPECT_EQ(faults_of(d), "unknown-output nodev_of_q, mixed-file va");
}

TEST(check_digital, tells_blocks_that_have_none) {
    digital_deck d = mixed();
    d.solve_type = "dc";
    d.method = "itmax_newton=100";
    EXPECT_EQ(faults_of(d), "no-dc dc");
    EXPECT_NE(words_of(d).find("a dc block does not go with digital elements"), std::string::npos);
    d = mixed("", "t_end=1u delt_const=10n back_euler=yes constant_step=yes");
    EXPECT_EQ(faults_of(d), "bad-setting constant_step=yes");
}

TEST(check_digital, tells_blocks_of_signals_beside_logic_alone) {
    digital_deck d = sound;
    d.elements += "gelement name=G1 type=const y=x\n";
    EXPECT_NE(faults_of(d).find("kinds-together gelement"), std::string::npos) << faults_of(d);
}

TEST(check_digital, tells_first_levels_that_cannot_be) {
    digital_deck d = sound;
    d.block = "set_dgtl clkk 1\n";
    EXPECT_EQ(faults_of(d), "unknown-item clkk");
    EXPECT_NE(words_of(d).find("there is no digital node clkk; near names: clk"), std::string::npos) << words_of(d);
    d.block = "set_dgtl q 3\n";
    EXPECT_EQ(faults_of(d), "bad-value 3");
    d.block = "set_dgtl q 0.5\n";
    EXPECT_EQ(faults_of(d), "bad-number 0.5");
    d.block = "set_dgtl q\n";
    EXPECT_EQ(faults_of(d), "no-value q");
    d.block = "initial_sol file filename d.in\nset_dgtl q 1\n";
    EXPECT_NE(faults_of(d).find("~misplaced set_dgtl"), std::string::npos) << faults_of(d);
}

TEST(check_digital, tells_clocks_that_the_circuit_cannot_follow) {
    EXPECT_EQ(faults_of(mixed("", "t_end=1u delt_const=50n delt_min=25n")), "~fast-clock delement");
    EXPECT_NE(words_of(mixed("", "t_end=1u delt_const=50n delt_min=25n"))
                  .find("K1 turns over after 2e-08 s, and delt_min is 2.5e-08 s"),
              std::string::npos);
    EXPECT_EQ(faults_of(mixed("", "t_end=10u delt_const=1u")), "~fast-clock delement");
    EXPECT_EQ(faults_of(mixed("", "t_end=10u delt_const=100n")), "");
    digital_deck d = mixed("delement name=K2 type=clock1 y=c2 f_hz=100M duty=0.1\n");
    EXPECT_EQ(faults_of(d), "");  // 1 ns, a tenth of the step
    d.method = "t_end=1u delt_const=11n";
    EXPECT_EQ(faults_of(d), "~fast-clock delement");
}

TEST(check_digital, tells_more_edges_than_passes) {
    digital_deck d = sound;
    d.method = "t_end=10m";
    EXPECT_EQ(faults_of(d), "~too-many-steps t_end=10m");
    EXPECT_NE(words_of(d).find("K1 has about 500000 edges"), std::string::npos) << words_of(d);
    d.method = "t_end=10m itmax_trns=2000000";
    EXPECT_EQ(faults_of(d), "");
}

TEST(check_digital, digital_files_have_rows_for_events_not_for_steps) {
    digital_deck d = mixed("", "t_end=1m delt_const=1n itmax_trns=2000000");
    d.elements = "delement name=K1 type=clock y=clk t1=20u t2=30u\ndelement name=N1 type=not a=clk y=q\n" + links;
    EXPECT_EQ(faults_of(d), "");
}

TEST(check_digital, tells_sets_and_resets_that_a_start_up_does_not_look_at) {
    digital_deck d = sound;
    d.elements +=
        "delement name=ONE type=dsrc y=one y0=1\ndelement name=NO type=dsrc y=no\n"
        "delement name=F1 type=dff d=q clk=clk s=one r=no q=x qb=xb\n"
        "delement name=N2 type=counter_2 clk=clk r=one up=one q0=y0 q1=y1 n0=2\n"
        "delement name=N4 type=counter_4_gnrl clk=clk r=one up=one q0=a q1=b q2=c q3=e state_begin=2 q_sv=2\n";
    EXPECT_EQ(faults_of(d), "");  // a run without a start-up looks at once
    d.solve_type = "startup";
    d.method = "itmax_newton=100";
    EXPECT_EQ(faults_of(d), "~start-value one, ~start-value one");
    EXPECT_NE(words_of(d).find("leaves F1 at q0=0 although s is 1 throughout"), std::string::npos) << words_of(d);
    EXPECT_NE(words_of(d).find("leaves N2 at n0=2 although r is 1 throughout"), std::string::npos) << words_of(d);
    d.block = "set_dstparm q0_of_F1 1 n0_of_N2 0\n";
    EXPECT_EQ(faults_of(d), "");
    d.block = "";
    d.elements += "delement name=TWO type=dsrc y=one y0=1\n";  // whose level it is, is not known
    EXPECT_EQ(faults_of(d), "~driven-twice one");
}

TEST(check_digital, a_set_that_has_edges_is_not_constant) {
    digital_deck d = sound;
    d.elements +=
        "delement name=S1 type=dsrc y=set y0=1 n_edges=1 t1=10n\ndelement name=NO type=dsrc y=no\n"
        "delement name=F1 type=rsff1 s=set r=no q=x qb=xb\n";
    d.solve_type = "startup";
    d.method = "itmax_newton=100";
    EXPECT_EQ(faults_of(d), "");
}

TEST(check_digital, tells_set_and_reset_that_are_both_on) {
    digital_deck d = sound;
    d.elements +=
        "delement name=ONE type=dsrc y=one y0=1\ndelement name=F1 type=dff d=q clk=clk s=one r=one q=x qb=xb\n"
        "delement name=F2 type=rsff2 s=one r=one clk=clk q=z qb=zb\n";
    EXPECT_EQ(faults_of(d), "~set-and-reset one, ~set-and-reset one");
    EXPECT_NE(words_of(d).find("s and r of F1 are both 1 throughout"), std::string::npos) << words_of(d);
}

TEST(check_digital, tells_delays_that_a_clock_does_not_leave_time_for) {
    const std::string flip_flop =
        "delement name=Z type=dsrc y=z\ndelement name=F1 type=dff d=q clk=clk s=z r=z q=x qb=xb ";
    digital_deck d = sound;  // 20 ns at 1, 30 ns at 0
    d.elements += flip_flop + "td_rise=24n\n";
    EXPECT_EQ(faults_of(d), "");
    d = sound;
    d.elements += flip_flop + "td_fall=25n\n";
    EXPECT_EQ(faults_of(d), "~long-delay 25n");
    EXPECT_NE(words_of(d).find("td_fall of F1 is 2.5e-08 s, and half a period of K1 is 2.5e-08 s"), std::string::npos)
        << words_of(d);
    const auto gate = [](const std::string& rest) {
        digital_deck g = sound;
        g.elements += "delement name=G1 type=" + rest + "\n";
        return faults_of(g);
    };
    EXPECT_EQ(gate("and_2 a=clk b=q y=x td_rise=20n"), "~long-delay 20n");  // pulses of 20 ns to 1
    EXPECT_EQ(gate("and_2 a=clk b=q y=x td_fall=29n"), "");                 // of 30 ns to 0
    EXPECT_EQ(gate("nor_2 a=clk b=q y=x td_rise=29n td_fall=19n"), "");
    EXPECT_EQ(gate("not a=clk y=x td_rise=30n"), "~long-delay 30n");
    EXPECT_EQ(gate("xor a=clk b=q y=x td_fall=20n"), "~long-delay 20n");
    EXPECT_EQ(gate("and_2 a=q b=q y=x td_rise=1u"), "");  // no clock at it
}

TEST(check_digital, tells_first_values_that_are_none) {
    digital_deck d = sound;
    d.elements +=
        "delement name=Z type=dsrc y=z y0=2\ndelement name=X type=dsrc y=e t1=10n t2=20n\n"
        "delement name=F1 type=dff d=q clk=clk s=z r=z q=x qb=xb q0=2\n"
        "delement name=N2 type=counter_2 clk=clk r=z up=z q0=y0 q1=y1 n0=4\n"
        "delement name=N4 type=counter_4_gnrl clk=clk r=z up=z q0=a q1=b q2=c q3=d state_end=9 q_sv=10\n";
    EXPECT_EQ(faults_of(d),
              "~doubtful-value 2, ~doubtful-value 10n, ~doubtful-value 2, bad-value 4, "
              "bad-value 10");
    EXPECT_NE(words_of(d).find("dsrc does not expect t1=10n with n_edges=0 (as not given)"), std::string::npos)
        << words_of(d);
}

TEST(check_digital, tells_dead_times_of_a_leg_that_are_none_or_too_long) {
    const auto leg = [](const std::string& rest) {
        return faults_of(
            mixed("eelement name=V1 type=vsrcdc p=dc n=0 vdc=10\neelement name=R2 type=r p=sw n=0\n"
                  "gmelement name=L1 type=pwm_leg p=dc n=0 x=sw pwm=clk t_dead=" +
                  rest + "\n"));
    };
    EXPECT_EQ(leg("10n"), "");
    EXPECT_EQ(leg("20n"), "~long-delay 20n");  // the clock stays so long at 1
    EXPECT_EQ(leg("0"), "~doubtful-value 0");
    EXPECT_EQ(leg("10n t_gate=-1n"), "~doubtful-value -1n");
}
