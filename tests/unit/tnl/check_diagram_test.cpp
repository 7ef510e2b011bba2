// What the check says of explicit blocks: who computes what, loops, rows of blocks, rules and steps.
#include <gtest/gtest.h>

#include "installed_share.h"
#include "tnl/check/check_deck.h"

using namespace cli;

namespace {

const installed_libraries& installed() {
    static const installed_libraries all = read_installed(installed_share());
    return all;
}

// dx/dt = k (1 - x), drawn with a sum.
struct diagram_deck {
    std::string elements =
        "xelement name=C1 type=const y=one k=1\n"
        "xelement name=S1 type=sum_2 x1=one x2=x y=e k2=-1\n"
        "xelement name=I1 type=intgrtr x=e y=x k=10\n";
    std::string outputs = "outvar: x=xvar_of_x e=xvar_of_e\n";
    std::string solve_type = "trns", method = "t_end=1 delt_const_x=1m RK4=yes", block = "", variables = "x e";
};

std::string text_of(const diagram_deck& d) {
    return "title: t\nbegin_circuit\n" + d.elements + d.outputs + "end_circuit\nbegin_solve\nsolve_type " +
           d.solve_type + "\nmethod: " + d.method + "\n" + d.block +
           "begin_output\nfilename d.dat\nvariables: " + d.variables + "\nend_output\nend_solve\nend_cf\n";
}

check_report report_of(const diagram_deck& d) { return check_deck(view_deck("d.in", text_of(d)), installed()); }

// "~" in front of warnings, then the code and the word that it speaks of.
std::string faults_of(const diagram_deck& d) {
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

std::string words_of(const diagram_deck& d) {
    std::string out;
    for (const check_fault& f : report_of(d).faults) out += f.message + "; " + f.advice + "\n";
    return out;
}
#define EXPECT_WORDS(d, text) EXPECT_NE(words_of(d).find(text), std::string::npos) << words_of(d)

diagram_deck with(const std::string& more) {
    diagram_deck d;
    d.elements += more;
    return d;
}
diagram_deck with_method(const std::string& method) {
    diagram_deck d;
    d.method = method;
    return d;
}
// The same beside a circuit.
diagram_deck beside(const std::string& method) {
    diagram_deck d = with("refnode 0\neelement name=V1 type=vsrcdc p=a n=0 vdc=1\neelement name=R1 type=r p=a n=0\n");
    d.method = method;
    return d;
}

}  // namespace

TEST(check_diagram, finds_nothing_in_good_decks) {
    EXPECT_EQ(faults_of(diagram_deck{}), "");  // without reference, a loop through a state
    EXPECT_EQ(faults_of(beside("t_end=0.1 delt_const=10u delt_const_x=1m RK4=yes")), "");
    EXPECT_EQ(faults_of(with_method("t_end=1 delt_const_x=1m RKF45=yes")), "");
}

TEST(check_diagram, tells_variables_that_no_block_computes) {
    diagram_deck d = with("xelement name=I2 type=intgrtr x=onee y=z\n");
    d.outputs += "outvar: z=xvar_of_z\n";
    EXPECT_EQ(faults_of(d), "not-written onee");
    EXPECT_WORDS(d, "no block computes the variable onee, which I2 reads; near names: one");
}

TEST(check_diagram, tells_variables_that_two_blocks_compute) {
    const diagram_deck d = with("xelement name=C2 type=const y=e k=1\n");
    EXPECT_EQ(faults_of(d), "written-twice e");
    EXPECT_WORDS(d, "variable e is computed by S1 and by C2");
}

TEST(check_diagram, tells_variables_that_nobody_reads) {
    EXPECT_EQ(faults_of(with("xelement name=C2 type=const y=two k=1\n")), "~not-read two");
    // Of several outputs one is enough.
    const std::string three = "xelement name=P type=dq_to_abc d=nine q=nine th=nine a=pa b=pb c=pc\n";
    EXPECT_EQ(faults_of(with("xelement name=C9 type=const y=nine k=1\n" + three + "outvar: pa=xvar_of_pa\n")), "");
}

TEST(check_diagram, names_the_blocks_of_a_loop_in_a_circle_with_their_lines) {
    const diagram_deck d = with(
        "xelement name=A type=lmtr x=p y=q\n"
        "xelement name=B type=sum_2 x1=q x2=e y=r\n"
        "xelement name=D type=lmtr x=r y=p\n"
        "xelement name=T type=lmtr x=r y=t\n"  // hangs behind it
        "xelement name=I2 type=intgrtr x=t y=z\noutvar: z=xvar_of_z\n");
    EXPECT_EQ(faults_of(d), "algebraic-loop xelement");
    EXPECT_WORDS(d, "A (line 6) -> B (line 7) -> D (line 8) -> A (line 6)");
    EXPECT_EQ(faults_of(with("xelement name=A type=sum_2 x1=e x2=p y=p\n")), "algebraic-loop xelement");
    EXPECT_WORDS(with("xelement name=A type=sum_2 x1=e x2=p y=p\n"), "A (line 6) -> A (line 6)");
}

TEST(check_diagram, tells_rows_of_blocks_that_are_too_long) {
    const auto row = [](int n) {
        std::string blocks;
        for (int k = 1; k <= n; ++k)
            blocks += "xelement name=M" + std::to_string(k) +
                      " type=lmtr x=" + (k == 1 ? "x" : "m" + std::to_string(k - 1)) + " y=m" + std::to_string(k) +
                      "\n";
        return with(blocks + "outvar: m=xvar_of_m" + std::to_string(n) + "\n");
    };
    EXPECT_EQ(faults_of(row(20)), "");
    EXPECT_EQ(faults_of(row(21)), "long-chain xelement");
    EXPECT_WORDS(row(21), "a row of 21 blocks without a state, and the run takes 20: M1 (line 6) -> ");
    EXPECT_WORDS(row(21), "-> M21 (line 26)");
    EXPECT_WORDS(row(21), "delay_2");
}

TEST(check_diagram, tells_rules_that_are_missing_or_too_many) {
    EXPECT_EQ(faults_of(with_method("t_end=1 delt_const_x=1m")), "missing-method-word method:");
    EXPECT_WORDS(with_method("t_end=1 delt_const_x=1m"), "explicit blocks need a rule");
    EXPECT_EQ(faults_of(with_method("t_end=1 delt_const_x=1m RK4=yes Heun=yes")), "two-rules RK4=yes");
    EXPECT_EQ(faults_of(with_method("t_end=1 RK4=yes")), "missing-method-word method:");
    EXPECT_EQ(faults_of(with_method("delt_const_x=1m RK4=yes")), "missing-method-word method:");
    EXPECT_EQ(faults_of(with_method("t_end=1 delt_const_x=1m delt_min_x=2m RK4=yes")), "bad-step delt_const_x=1m");
    EXPECT_EQ(faults_of(with_method("t_end=1 delt_const_x=1u RK4=yes")),
              "~too-many-steps t_end=1, too-many-rows d.dat");
    diagram_deck d = with_method("t_end=1 delt_const_x=1m RK4=yes");
    d.elements = "xelement name=C1 type=const y=x k=1\nxelement name=S1 type=lmtr x=x y=e\n";
    EXPECT_EQ(faults_of(d), "bad-setting RK4=yes");
    EXPECT_WORDS(d, "forward_euler is the only rule");
}

TEST(check_diagram, tells_rules_and_steps_that_a_circuit_beside_it_does_not_allow) {
    EXPECT_EQ(faults_of(beside("t_end=0.1 delt_const=10u delt_const_x=1m RKF45=yes")), "bad-setting RKF45=yes");
    EXPECT_EQ(faults_of(beside("t_end=0.1 delt_const=100u delt_const_x=1m RK4=yes")), "bad-step delt_const_x=1m");
    EXPECT_WORDS(beside("t_end=0.1 delt_const=100u delt_const_x=1m RK4=yes"), "below four times delt_max");
    diagram_deck d = beside("itmax_newton=100");
    d.solve_type = "startup";
    EXPECT_EQ(faults_of(d), "no-dc startup");
    d = with("delement name=D1 type=dsrc y=q\noutvar: q=dvar_of_q\n");
    EXPECT_EQ(faults_of(d), "kinds-together delement, missing-method-word method:");
}

TEST(check_diagram, tells_blocks_that_do_not_go_with_explicit_ones) {
    diagram_deck d = with_method("itmax_newton=100");
    d.solve_type = "dc";
    EXPECT_EQ(faults_of(d), "no-dc dc");
}

TEST(check_diagram, tells_circuits_of_explicit_elements_without_reference) {
    diagram_deck d;
    d.elements =
        "xelement name=V1 type=e_vsrcdc p=a n=0 i=i_v vdc=1\nxelement name=R1 type=e_r p=a n=b i=i_r r=1k\n"
        "xelement name=C1 type=e_c p=b n=0 i=i_c vc=v_c c=1u\n";
    d.outputs = "outvar: b=xvar_of_b i=xvar_of_i_r\n";
    d.method = "t_end=1m delt_const_x=10u RK4=yes";
    d.variables = "b i";
    EXPECT_EQ(faults_of(d), "no-reference xelement");
    EXPECT_WORDS(d, "add a line: x_refnode 0");
    d.elements += "x_refnode 0\n";
    EXPECT_EQ(faults_of(d), "");
    d.elements.replace(d.elements.size() - 2, 1, "bb");
    EXPECT_EQ(faults_of(d), "no-reference bb");
}

TEST(check_diagram, small_signals_of_a_diagram_have_sources_and_columns_of_their_own) {
    diagram_deck d;
    d.solve_type = "ac";
    d.method = "itmax_newton=100";
    d.block = "set_freq 10\n";
    d.outputs = "outvar: x=xvar_ac_of_x\n";
    d.variables = "mag_of_x phase_of_x";
    EXPECT_EQ(faults_of(d), "~no-ac-source ac");
    EXPECT_WORDS(d, "a_ac=1 behind one of C1");
    d.elements.replace(d.elements.find("k=1\n"), 4, "k=1 a_ac=1\n");
    EXPECT_EQ(faults_of(d), "");
    d.outputs = "outvar: x=xvar_of_x\n";
    d.variables = "x";
    EXPECT_EQ(faults_of(d), "output-kind x");
    EXPECT_WORDS(d, "outvar: x_ac=xvar_ac_of_x");
    d.outputs = "outvar: x=xvar_ac_of_x\n";
    d.variables = "mag_of_x phase_of_x";
    d.elements += "xelement name=M1 type=mult_2 x1=x x2=e y=m\n";
    EXPECT_WORDS(d, "M1 (mult_2), which has no small-signal form");
}
