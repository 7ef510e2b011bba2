// Parameters that composites compute by functions: of instances, of composites inside of them, for both halves.
#include <gtest/gtest.h>

#include <cmath>

#include "base/at.h"
#include "base/flags_class.h"
#include "circuit_fixture.h"
#include "elaborate/computed_parms.h"
#include "halt_throws.h"

namespace {
const char* const small_signal = R"(
ebe_ac name=r
nodes: p n
ind_nodes:
ind_branches:
iparms: ac_parm_be=-1
sparms:
rparms: r=1 g=0 c=0
aux_var:
main_var:
no_functions 2
f_p v(p) v(n)
f_n v(p) v(n)
C: compiled
endebe_ac
)";

struct ece_text {
    std::string name, flags, outvar, iparms, sparms, rparms, derived, body, body_ac, auxnodes{};
};
std::string ece(const ece_text& t) {
    return "ece name=" + t.name + " allow_ac=yes " + t.flags + "\nbegin_dc\nmainnodes: p n\nauxnodes: " + t.auxnodes +
           "\noutvar: " + t.outvar +
           "\nbias: vb=v_o_of_r\nstparms: v0=0\nigparms:\nind_nodes:\nind_branches:\ndigital_nodes:\nmain_var:\nxvar:\n"
           "iparms: " +
           t.iparms + "\nsparms: " + t.sparms + "\nrparms: " + t.rparms + "\nrparms_derived: " + t.derived + "\n" +
           t.body + "end_dc\nC: compiled\nbegin_ac\noutvar_ac:\nind_nodes_ac:\nind_branches_ac:\n" + t.body_ac +
           "end_ac\nendece\n";
}

// r = turns^2 * k, by an integer and a text too; the map feeds c of the small-signal form from x.
const std::string core = ece({"core", "compute_rparms=yes", "va=nodev_of_p i=cur(p)_of_r vr=v_o_of_r", "m=1", "s=plain",
                              "turns=2 k=3 r=0 x=0", "", "ebe type=r name=r p=p n=n r=r v0=v0\n",
                              "ebe_ac type=r name=r p=p n=n r=r ac_parm_be=r\nacparm_map: 2 4\n"});
const std::string with_acp =
    ece({"acp", "compute_acp=yes", "va=nodev_of_p i=cur(p)_of_r vr=v_o_of_r", "", "", "r=5 x=7", "",
         "ebe type=r name=r p=p n=n r=r\n", "ebe_ac type=r name=r p=p n=n r=r ac_parm_be=r\nacparm_map: 2 2\n"});
const std::string mapped = ece({"mapped", "", "", "", "", "r=5 x=7", "", "ebe type=r name=r p=p n=n r=r\n",
                                "ebe_ac type=r name=r p=p n=n r=r\nacparm_map: 2 2 1 1\n"});
const std::string plain_r = "ebe type=r name=r p=p n=n r=1\n";
// Calls core twice between elements of its own.
const std::string twin = ece({"twin", "", "", "m=4", "s=deep", "nn=10 k=1", "",
                              plain_r + "callece core name=one p=p n=n turns=nn m=m s=s\n"
                                        "callece core p=p n=n k=k turns=6\n",
                              "callece core name=one p=p n=n turns=nn m=m s=s\n"
                              "callece core p=p n=n k=k turns=6\n"});
const std::string outer = ece({"outer", "", "", "", "", "t=20", "", "callece twin name=inside p=p n=n nn=t\n" + plain_r,
                               "callece twin name=inside p=p n=n nn=t\n"});
const std::string outer_acp =
    ece({"outer_acp", "", "", "", "", "rr=8", "", plain_r + "callece acp name=in p=p n=n r=rr\n",
         "callece acp name=in p=p n=n r=rr\n"});
const std::string derived =
    ece({"with_derived", "compute_rparms=yes", "", "", "", "a=2 b=0", "twice=$((b)*(2)) own=$((a)+(1))",
         "ebe type=r name=r p=p n=n r=twice\n", "ebe_ac type=r name=r p=p n=n r=own\n"});

struct seen {
    int m = 0, calls = 0, rparms = 0, acparms = 0;
    std::string s;
    double time = 0;
    std::vector<double> outvar;
} last;

void core_function(int* iparm, char** sparm, double* rparm, double* rparm_ac, double*, flags_class* flags,
                   double time_given) {
    last = {iparm[0], last.calls + 1, flags->rparms, flags->acparms, sparm[0], time_given, {}};
    if (flags->rparms) rparm[2] = rparm[1] * rparm[0] * rparm[0];
    if (flags->acparms) rparm_ac[3] = 100;
}
void acp_function(int*, char**, double* rparm, double* rparm_ac, double* outvar, flags_class* flags, double) {
    last.outvar = {outvar[0], outvar[1], outvar[2]};
    last.rparms = flags->rparms;
    last.acparms = flags->acparms;
    ++last.calls;
    rparm_ac[1] = rparm[0] + outvar[0];
}
void derived_function(int*, char**, double* rparm, double*, double*, flags_class*, double) {
    rparm[1] = rparm[0] * 10;  // b; twice follows
    rparm[3] = -1;             // own is rewritten
}

struct computed_circuit {
    circuit c;
    flags_class flags;

    explicit computed_circuit(const std::string& statements, bool with_functions = true) {
        c = circuit_of(
            fixture_deck("refnode 0\n" + statements),
            libraries_of({.ebes = fixture_ebes,
                          .ebac = small_signal,
                          .eels = fixture_eels() + core + with_acp + mapped + twin + outer + outer_acp + derived}));
        c.tmpdim.m_ect_nd_tmp = 1000;
        elaborate(c);
        const eels_class& lib = c.lib.eels;
        auto& f = c.computed.function[fam_e];
        f.assign(at(lib.n()), nullptr);
        c.computed.function[fam_g].assign(at(c.lib.gels.n()), nullptr);
        if (with_functions) {
            f[at(lib.find("core"))] = core_function;
            f[at(lib.find("acp"))] = acp_function;
            f[at(lib.find("with_derived"))] = derived_function;
        }
        build_computed(c);
        last = {};
    }
    void rparms() {
        for (computed_instance& x : c.computed.list)
            if (x.rparms) compute_rparms(c, x, flags);
    }
    void acp() {
        for (computed_instance& x : c.computed.list)
            if (x.acparms) compute_acp(c, x, flags);
    }
    double& parm(const std::string& word) {  // p_of_INSTANCE
        const int i = c.eelu.find(word.substr(word.find("_of_") + 4));
        return c.eelu.rprm.row(i)[c.lib.eels.list.rprm.find(c.eelu.i_lib[at(i)], word.substr(0, word.find("_of_")))];
    }
    double dc(int u) const { return c.ebeu.unit.rprm.row(u)[0]; }  // r of a unit
    double ac(int u, int j = 0) const { return c.ebau.unit.rprm.row(u)[j]; }
};
}  // namespace

TEST(computed_parms, nothing_is_built_where_no_composite_of_the_deck_computes) {
    const computed_circuit k("eelement name=R1 type=r p=a n=0\neelement name=P type=twin p=a n=0\n");
    EXPECT_EQ(k.c.computed.list.size(), 1u);  // the callees of the twin do
    const computed_circuit none("eelement name=R1 type=r p=a n=0\n");
    EXPECT_TRUE(none.c.computed.list.empty());
    EXPECT_EQ(none.c.computed.find(fam_e, 0), nullptr);
    EXPECT_EQ(none.c.computed.find(fam_g, 0), nullptr);
}

TEST(computed_parms, a_function_sees_its_rows_and_what_it_writes_reaches_the_units_of_both_halves) {
    computed_circuit k("eelement name=R1 type=r p=a n=0\neelement name=C1 type=core p=a n=0 turns=5 m=7 s=seven\n");
    k.flags.time_given = 0.25;
    k.rparms();
    EXPECT_EQ(last.m, 7);
    EXPECT_EQ(last.s, "seven");
    EXPECT_EQ(last.time, 0.25);
    EXPECT_EQ(last.rparms, 1);
    EXPECT_EQ(last.acparms, 0);
    EXPECT_EQ(last.calls, 1);
    EXPECT_EQ(k.flags.rparms, 0);
    EXPECT_EQ(k.parm("r_of_C1"), 75.0);
    EXPECT_EQ(k.dc(0), 1.0);
    EXPECT_EQ(k.dc(1), 75.0);
    EXPECT_EQ(k.ac(0), 75.0);
    k.parm("turns_of_C1") = 2;
    instance_changed(k.c, fam_e, 1);
    EXPECT_EQ(k.dc(1), 75.0);  // until it is computed anew
    k.rparms();
    EXPECT_EQ(k.dc(1), 12.0);
    EXPECT_EQ(k.ac(0), 12.0);
}

TEST(computed_parms, derived_parameters_follow_unless_the_function_rewrites_them) {
    computed_circuit k("eelement name=D type=with_derived p=a n=0 a=4\n");
    for (int again = 0; again < 2; ++again) {
        k.rparms();
        EXPECT_EQ(k.parm("b_of_D"), 40.0);
        EXPECT_EQ(k.parm("twice_of_D"), 80.0);
        EXPECT_EQ(k.parm("own_of_D"), -1.0);
        EXPECT_EQ(k.dc(0), 80.0);
        EXPECT_EQ(k.ac(0), -1.0);
    }
    instance_changed(k.c, fam_e, 0);  // a start value was set, say
    EXPECT_EQ(k.ac(0), -1.0);
}

TEST(computed_parms, composites_in_composites_compute_at_any_depth_from_literals_and_links) {
    computed_circuit k("eelement name=O type=outer p=a n=0 t=30\neelement name=P type=twin p=a n=0 k=7\n");
    k.rparms();
    // outer: twin (own r, core of 30, core of 6), own r; twin: own r, core of 10, core of 6 with k = 7.
    const double expected[] = {1, 3 * 900, 36, 1, 1, 3 * 100, 7 * 36};
    for (int u = 0; u < 7; ++u) EXPECT_EQ(k.dc(u), expected[u]) << u;
    const double expected_ac[] = {3 * 900, 36, 3 * 100, 7 * 36};
    for (int u = 0; u < 4; ++u) EXPECT_EQ(k.ac(u), expected_ac[u]) << u;
    EXPECT_EQ(last.m, 1);
    EXPECT_EQ(last.s, "plain");
    EXPECT_EQ(k.c.computed.list[0].nodes[0].path, "O.inside");
    EXPECT_EQ(k.c.computed.list[0].nodes[1].path, "O.inside.one");
    EXPECT_EQ(k.c.computed.list[0].nodes[2].path, "O.inside.core");
    EXPECT_EQ(k.c.computed.list[0].nodes[1].iprm, (std::vector<int>{4}));
    EXPECT_EQ(k.c.computed.list[0].nodes[1].sprm, (std::vector<std::string>{"deep"}));
    // A write of the instance does not bring back what went by the links alone.
    k.parm("t_of_O") = 3;
    instance_changed(k.c, fam_e, 0);
    EXPECT_EQ(k.dc(1), 2700.0);
    k.rparms();
    EXPECT_EQ(k.dc(1), 27.0);
    EXPECT_EQ(k.ac(0), 27.0);
}

TEST(computed_parms, halt_where_they_are_no_finite_number) {
    computed_circuit k("eelement name=O type=outer p=a n=0 t=1e300\neelement name=C1 type=core p=a n=0\n");
    EXPECT_HALT(k.rparms(),
                "check double string: <r_of_O.inside.one>\n  (brackets are not part of the string)\n  value = inf\n"
                "  Halting...\n");
    k.parm("t_of_O") = 1;
    k.parm("turns_of_C1") = std::nan("");
    EXPECT_HALT(k.rparms(),
                "check double string: <turns_of_C1>\n  (brackets are not part of the string)\n  value = nan\n"
                "  Halting...\n");
}

TEST(computed_parms, a_composite_without_a_function_is_told_by_name) {
    const std::string text =
        "compute_rparms_e: no function is compiled for the composite core\n   which computes its parameters by one.\n"
        "   Halting...\n";
    EXPECT_HALT(computed_circuit("eelement name=C1 type=core p=a n=0\n", false), text);
    EXPECT_HALT(computed_circuit("eelement name=O type=outer p=a n=0\n", false), text);
    computed_circuit k("eelement name=A type=acp p=a n=0\n", false);
    EXPECT_HALT(k.acp(),
                "compute_acp_e: no function is compiled for the composite acp\n"
                "   which computes its parameters by one.\n   Halting...\n");
}

TEST(computed_acp, writes_rprm_ac_only_and_goes_to_small_signal_units_by_links_and_map) {
    computed_circuit k("eelement name=A type=acp p=a n=0 r=6\neelement name=M type=mapped p=a n=0 x=9\n");
    k.c.ebeu.val_nd[at(k.c.cct.ect.to_eu[at(k.c.cct.ect.find("a"))])] = 2.5;
    k.c.ebeu.cur_nd[0] = 0.5;
    k.c.ebeu.unit.rprm.row(0)[1] = 2.25;  // the output slot
    k.parm("r_of_A") = 8;
    k.acp();
    EXPECT_EQ(last.outvar, (std::vector<double>{2.5, 0.5, 2.25}));
    EXPECT_EQ(last.acparms, 1);
    EXPECT_EQ(last.rparms, 0);
    EXPECT_EQ(k.flags.acparms, 0);
    EXPECT_EQ(k.parm("x_of_A"), 7.0);
    EXPECT_EQ(k.c.eelu.rprm_ac.row(0)[0], 8.0);  // refreshed from rprm
    EXPECT_EQ(k.c.eelu.rprm_ac.row(0)[1], 10.5);
    EXPECT_EQ(k.c.eelu.bias.row(0)[0], 2.25);
    EXPECT_EQ(k.ac(0), 8.0);
    EXPECT_EQ(k.ac(0, 2), 10.5);
    EXPECT_EQ(k.dc(0), 6.0);
    // A map without a function feeds from the parameters as they are.
    EXPECT_EQ(k.ac(1, 2), 9.0);
    EXPECT_EQ(k.ac(1, 1), 5.0);
}

TEST(computed_acp, serves_composites_in_composites_with_their_own_output_values) {
    computed_circuit k("eelement name=O type=outer_acp p=a n=0 rr=4\neelement name=Q type=outer p=a n=0\n");
    k.c.ebeu.val_nd[at(k.c.cct.ect.to_eu[at(k.c.cct.ect.find("a"))])] = 1.5;
    k.c.ebeu.cur_nd[2] = -3;              // of the callee's element, behind that of the caller
    k.c.ebeu.unit.rprm.row(1)[1] = 0.75;  // and its slot
    k.rparms();
    k.acp();
    EXPECT_EQ(last.outvar, (std::vector<double>{1.5, -3, 0.75}));
    EXPECT_EQ(k.ac(0), 4.0);
    EXPECT_EQ(k.ac(0, 2), 5.5);
    // core has compute_rparms alone: its map feeds what it has computed or been given, here x.
    EXPECT_EQ(k.ac(1), 3 * 400.0);
    EXPECT_EQ(k.ac(1, 2), 0.0);
}

// ---- composites of blocks ----

namespace {
const char* const block = R"(
gbe name=gain
Jacobian: constant
main_vars: x y
iparms:
sparms:
rparms: k=1
aux_vars:
xvar:
stparms:
igparms:
no_functions 1
f_1 x y
C: compiled
endgbe
)";
const char* const block_ac = R"(
gbe_ac name=gain
main_vars: x y
iparms: ac_parm_be=-1
sparms:
rparms: k=1 q=2
aux_vars:
no_functions 1
f_1 x y
C: compiled
endgbe_ac
)";
std::string gce(const std::string& name, const std::string& flags, const std::string& rparms, const std::string& body,
                const std::string& body_ac) {
    return "gce name=" + name + " allow_ac=yes " + flags +
           "\nbegin_dc\nmainvars: x y\nauxvars:\nxvars:\noutvar: vx=var_of_x k=k_of_g\nbias:\nstparms:\nigparms:\n"
           "iparms:\nsparms:\nrparms: " +
           rparms + "\nrparms_derived:\n" + body + "end_dc\nC: compiled\nbegin_ac\noutvar_ac:\n" + body_ac +
           "end_ac\nendgce\n";
}
void block_function(int*, char**, double* rparm, double* rparm_ac, double* outvar, flags_class* flags, double) {
    if (flags->rparms) rparm[1] = 2 * rparm[0];
    if (flags->acparms) {
        last.outvar = {outvar[0], outvar[1]};
        rparm_ac[2] = rparm[1] + outvar[0];
    }
}
}  // namespace

TEST(computed_parms, of_blocks_go_the_same_way_alone_and_in_a_composite) {
    const std::string inner =
        gce("inner", "compute_rparms=yes compute_acp=yes", "a=3 k=0 q=0", "gbe type=gain name=g x=x y=y k=k\n",
            "gbe_ac type=gain name=g x=x y=y k=k ac_parm_be=g\nacparm_map: 1 3\n");
    const std::string outer_block =
        gce("outer", "", "b=5", "gbe type=gain name=g x=x y=y k=b\ncallgce inner name=i x=x y=y a=b\n",
            "callgce inner name=i x=x y=y a=b\n");
    circuit c = circuit_of(fixture_deck("gelement name=A type=inner x=u y=w\ngelement name=B type=outer x=u y=w b=7\n"),
                           libraries_of({.gbes = block, .gbac = block_ac, .gels = inner + outer_block}));
    elaborate(c);
    c.computed.function[fam_e].assign(at(c.lib.eels.n()), nullptr);
    c.computed.function[fam_g] = {block_function, nullptr};
    build_computed(c);
    ASSERT_EQ(c.computed.list.size(), 2u);
    flags_class flags;
    c.gbeu.val_vr[at(c.cct.gct.to_eu[at(c.cct.gct.find("u"))])] = 0.5;
    for (computed_instance& x : c.computed.list) compute_rparms(c, x, flags);
    const auto k = [&](int u) { return c.gbeu.unit.rprm.row(u)[0]; };
    EXPECT_EQ(k(0), 6.0);
    EXPECT_EQ(k(1), 7.0);
    EXPECT_EQ(k(2), 14.0);
    EXPECT_EQ(c.gbau.unit.rprm.row(0)[0], 6.0);
    EXPECT_EQ(c.gbau.unit.rprm.row(1)[0], 14.0);
    for (computed_instance& x : c.computed.list) compute_acp(c, x, flags);
    EXPECT_EQ(last.outvar, (std::vector<double>{0.5, 14}));  // of the inner one in B
    EXPECT_EQ(c.gbau.unit.rprm.row(0)[1], 6.5);
    EXPECT_EQ(c.gbau.unit.rprm.row(1)[1], 14.5);
    EXPECT_EQ(c.gelu.rprm.row(0)[2], 0.0);
}

TEST(computed_parms, of_explicit_blocks_go_the_same_way) {
    const std::string xbe =
        "xbe name=gain integrate=yes\nJacobian: constant\ninput_vars: x\noutput_vars: y\ncct_nodes:\nbe_v:\niparms:\n"
        "sparms:\nrparms: k=1\nigparms:\naux_vars:\ngvars:\nn_functions 1\nf_1 d_dt(y) x\nn_matrix_ddt 1\ng_1 d_dt(y) "
        "x\n"
        "n_matrix_alg 0\nC: compiled\nendxbe\n";
    const std::string xbe_ac =
        "xbe_ac name=gain\nmain_vars: x y\niparms:\nsparms:\nrparms: k=1 q=2\naux_vars:\nno_functions 1\nf_1 x y\n"
        "C: compiled\nendxbe_ac\n";
    const std::string xce =
        "xce name=inner allow_ac=yes compute_rparms=yes compute_acp=yes\nbegin_dc\nmain_vars: x y\naux_vars:\ngvars:\n"
        "outvar: vx=xvar_of_x k=k_of_g\nbias:\niparms:\nsparms:\nrparms: a=3 k=0 q=0\nrparms_derived:\nstparms:\n"
        "xbe type=gain name=g x=x y=y k=k\nend_dc\nC: compiled\nbegin_ac\noutvar_ac:\n"
        "xbe_ac type=gain name=g x=x y=y k=k\nacparm_map: 1 3\nend_ac\nendxce\n";
    circuit c = circuit_of(fixture_deck("xelement name=A type=inner x=u y=w\nxelement name=B type=inner x=w y=u a=7\n"),
                           libraries_of({.xbes = xbe, .xbac = xbe_ac, .xels = xce}));
    elaborate(c);
    for (const family fam : {fam_e, fam_g}) c.computed.function[at(fam)].assign(at(c.lib.composites(fam).n()), nullptr);
    c.computed.function[fam_x] = {block_function};
    build_computed(c);
    ASSERT_EQ(c.computed.list.size(), 2u);
    flags_class flags;
    c.xbeu.val_vr[at(c.cct.xct.to_eu[at(c.cct.xct.find("u"))])] = 0.5;
    for (computed_instance& x : c.computed.list) compute_rparms(c, x, flags);
    EXPECT_EQ(c.xbeu.unit.rprm.row(0)[0], 6.0);
    EXPECT_EQ(c.xbeu.unit.rprm.row(1)[0], 14.0);
    EXPECT_EQ(c.xbau.unit.rprm.row(0)[0], 6.0);
    compute_acp(c, c.computed.list[0], flags);
    EXPECT_EQ(last.outvar, (std::vector<double>{0.5, 6}));
    EXPECT_EQ(c.xbau.unit.rprm.row(0)[1], 6.5);
    EXPECT_EQ(c.xbau.unit.rprm.row(1)[1], 2.0);
    EXPECT_EQ(c.xelu.rprm.row(0)[2], 0.0);
}
