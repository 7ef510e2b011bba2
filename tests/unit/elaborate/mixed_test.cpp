// Instances of mixed composites: what their statements bring, under which names and numbers, and which values reach it.
#include <gtest/gtest.h>

#include <map>

#include "circuit_fixture.h"
#include "halt_throws.h"
#include "temp_folder.h"

namespace {
using ints = std::vector<int>;
using doubles = std::vector<double>;
using strings = std::vector<std::string>;

std::string gme(const std::string& name, const std::map<std::string, std::string>& lists, const std::string& body) {
    std::string text = "gme name=" + name + "\n";
    for (const char* keyword :
         {"mainnodes_anlg:", "auxnodes_anlg:", "stparms_anlg:", "igparms_anlg:", "main_var:", "aux_var:", "iparms:",
          "sparms:", "rparms:", "rparms_derived:", "mainnodes_dgtl:", "auxnodes_dgtl:", "stparms_dgtl:",
          "igparms_dgtl:", "outvar_anlg:", "outvar_dgtl:", "outvar_ac:"}) {
        const auto given = lists.find(keyword);
        text += std::string(keyword) + " " + (given == lists.end() ? "" : given->second) + "\n";
    }
    return text + body + "endgme\n";
}

const char* const lag =
    "gbe name=lag\nJacobian: constant\nmain_vars: x y\niparms:\nsparms:\nrparms: k=1 y_o=0\naux_vars:\nxvar:\n"
    "stparms: y0=0\nigparms:\nno_functions 1\nf_1 x d_dt(y)\nC: compiled\nendgbe\n";
const char* const lags =
    "gce name=lag allow_ac=yes\nbegin_dc\nmainvars: x y\nauxvars:\nxvars:\noutvar: y=var_of_y y_o=y_o_of_b\nbias:\n"
    "stparms: y0=0\nigparms:\niparms:\nsparms:\nrparms: k=1\nrparms_derived:\ngbe type=lag name=b x=x y=y k=k y0=y0\n"
    "end_dc\nC:\nendC\nbegin_ac\noutvar_ac:\nend_ac\nendgce\n"
    "gce name=lags\nbegin_dc\nmainvars: x y\nauxvars: z\nxvars:\noutvar:\nbias:\nstparms:\nigparms:\niparms:\nsparms:\n"
    "rparms: k=1\nrparms_derived:\ncallgce lag x=x y=z k=k\ncallgce lag x=z y=y k=k\nend_dc\nC:\nendC\nbegin_ac\n"
    "outvar_ac:\nend_ac\nendgce\n";
const char* const gate =
    "dbe name=gate\ninput_nodes: a\noutput_nodes: y\nanalog_nodes: x\niparms:\nsparms:\nrparms: td=1n\nn_logical 0\n"
    "stparms: st=0\nigparms:\naux_var:\nC: compiled\nenddbe\n";
const char* const gates =
    "dce name=gates\nmainnodes: a y\nauxnodes: m\nanalog_nodes: x\noutvar: y=dvar_of_y m=dvar_of_m st=dstate_of_g2\n"
    "iparms:\nsparms:\nrparms: td=1n\nrparms_derived:\nstparms: st=0\nigparms:\n"
    "dbe type=gate name=g1 a=a y=m x=x td=td\ndbe type=gate name=g2 a=m y=y x=x td=td st=st\nenddce\n";

const std::string divider = gme("divider",
                                {{"mainnodes_anlg:", "a b"},
                                 {"auxnodes_anlg:", "m"},
                                 {"rparms:", "r=1k"},
                                 {"outvar_anlg:", "vm=nodev_of_m va=v_of_ra i=i_of_ra"}},
                                "callece r name=ra p=a n=m r=r\ncallece r name=rb p=m n=b r=r\n");

libraries with(const std::string& gmes) {
    return libraries_of({.ebes = fixture_ebes,
                         .gbes = lag,
                         .eels = fixture_eels(),
                         .gels = lags,
                         .dbes = gate,
                         .dels = gates,
                         .gmes = gmes});
}
circuit bound(const std::string& gmes, const std::string& statements, const std::string& before = "") {
    circuit c = circuit_of(fixture_deck(statements, before), with(gmes));
    bind_statements(c);
    return c;
}
circuit built(const std::string& gmes, const std::string& statements, const std::string& before = "") {
    circuit c = bound(gmes, statements, before);
    build_units(c);
    return c;
}
template <class T>
std::vector<T> row(const row_table<T>& table, int i) {
    return {table.row(i), table.row(i) + table.size(i)};
}
const std::string source = "refnode 0\neelement name=V1 type=vs p=in n=0 vdc=10\n";
}  // namespace

TEST(mixed, calls_become_instances_behind_the_decks_own_with_names_of_two_words) {
    const circuit c = built(divider, source +
                                         "gmelement name=X1 type=divider a=in b=0\n"
                                         "eelement name=R1 type=r p=in n=out\n"
                                         "gmelement name=X2 type=divider a=out b=0 r=2k\n");
    EXPECT_EQ(c.eelu.name, (strings{"V1", "R1", "X1.ra", "X1.rb", "X2.ra", "X2.rb"}));
    EXPECT_EQ(c.eelu.n, 6);
    EXPECT_EQ(c.gmeu.name, (strings{"X1", "X2"}));
    EXPECT_EQ(row(c.gmeu.part, 0), (ints{2, 3}));
    EXPECT_EQ(row(c.gmeu.part, 1), (ints{4, 5}));
    EXPECT_EQ(c.eelu.find("X2.rb"), 5);
    EXPECT_EQ(c.eelu.statement[5], c.gmeu.statement[1]);
    // Names of the deck in order of first use; units by instance.
    EXPECT_EQ(c.cct.ect.name, (strings{"in", "0", "out"}));
    EXPECT_EQ(c.ebeu.n(), 6);
    EXPECT_EQ(c.ebeu.unit.i_inst, (ints{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(row(c.eelu.rprm, 2)[0], 1e3);
    EXPECT_EQ(row(c.eelu.rprm, 4)[0], 2e3);
    EXPECT_EQ(row(c.eelu.rprm, 4)[1], 4e3);  // computed by the composite
    EXPECT_EQ(c.ebeu.unit.rprm.row(4)[0], 2e3);
}

TEST(mixed, internal_nodes_stand_between_the_names_and_the_auxiliary_nodes_of_instances) {
    const circuit c = built(divider, source +
                                         "gmelement name=X1 type=divider a=in b=0\n"
                                         "eelement name=P type=pair p=in n=0\n"
                                         "gmelement name=X2 type=divider a=in b=0\n");
    const name_table& ect = c.cct.ect;
    EXPECT_EQ(ect.n(), 2);
    EXPECT_EQ(ect.n_mixed, 4);
    EXPECT_EQ(ect.n_lu, 5);
    EXPECT_EQ(row(c.gmeu.nd, 0), (ints{0, 1, 2}));
    EXPECT_EQ(row(c.gmeu.nd, 1), (ints{0, 1, 3}));
    EXPECT_EQ(row(c.eelu.nd, 1), (ints{0, 1, 4}));  // P
    EXPECT_EQ(row(c.eelu.nd, 2), (ints{0, 2}));     // X1.ra
    EXPECT_EQ(row(c.eelu.nd, 5), (ints{3, 1}));     // X2.rb
    EXPECT_HALT(built(divider, source + "gmelement name=X1 type=divider a=in b=0\noutvar: o=nodev_of_m\n"),
                "cct_class: ect node name not found.\n   Check outvars of type nodev_of_xxx.\n");
}

TEST(mixed, all_three_domains_are_connected_and_numbered) {
    const std::string all = gme("all",
                                {{"mainnodes_anlg:", "a"},
                                 {"auxnodes_anlg:", "m"},
                                 {"main_var:", "u"},
                                 {"aux_var:", "w"},
                                 {"mainnodes_dgtl:", "d"},
                                 {"auxnodes_dgtl:", "q"},
                                 {"rparms:", "k=3 td=5n"},
                                 {"stparms_anlg:", "y0=7"},
                                 {"stparms_dgtl:", "st=0"},
                                 {"outvar_anlg:", "w=var_of_w y=y_of_l2 y_o=y_o_of_l1"},
                                 {"outvar_dgtl:", "q=dvar_of_q m=m_of_g2 st=st_of_g1"}},
                                "calldce gates name=g1 a=d y=q x=a td=td st=st\ncalldce gates name=g2 a=q y=d x=m\n"
                                "callgce lags name=l1s x=u y=w k=k\ncallgce lag name=l1 x=w y=u k=k y0=y0\n"
                                "callgce lag name=l2 x=u y=w\n"
                                "callece reads_x name=e p=a n=m x=w\ncallece r name=r p=m n=a\n");
    const circuit c = built(all, source +
                                     "gelement name=L type=lags x=v1 y=v1\ndelement name=D type=gates a=e y=f x=in\n"
                                     "gmelement name=X type=all d=e u=v1 a=0 k=4 st=1\n"
                                     "outvar: w=w_of_X y=y_of_X q=q_of_X m=m_of_X st=st_of_X y_o=y_o_of_X\n");
    EXPECT_EQ(c.delu.name, (strings{"D", "X.g1", "X.g2"}));
    EXPECT_EQ(c.gelu.name, (strings{"L", "X.l1s", "X.l1", "X.l2"}));
    EXPECT_EQ(c.eelu.name, (strings{"V1", "X.e", "X.r"}));
    EXPECT_EQ(row(c.gmeu.part, 0), (ints{1, 2, 1, 2, 3, 1, 2}));
    EXPECT_EQ(c.cct.dct.name, (strings{"e", "f"}));
    EXPECT_EQ(c.cct.dct.n_mixed, 3);
    EXPECT_EQ(c.cct.dct.n_lu, 6);
    EXPECT_EQ(row(c.delu.dgtl, 0), (ints{0, 1, 3}));
    EXPECT_EQ(row(c.delu.dgtl, 1), (ints{0, 2, 4}));
    EXPECT_EQ(row(c.delu.dgtl, 2), (ints{2, 0, 5}));
    EXPECT_EQ(row(c.delu.in, 1), (ints{1}));
    EXPECT_EQ(row(c.delu.in, 2), (ints{2}));
    EXPECT_EQ(row(c.gelu.vr, 0), (ints{0, 0, 2}));
    EXPECT_EQ(row(c.gelu.vr, 1), (ints{0, 1, 3}));
    EXPECT_EQ(row(c.eelu.vr, 1), ints{1});
    // Numbers of one domain in units of another go by the unit level, internal ones too.
    EXPECT_EQ(c.ebeu.vr_gbeu, ints{c.cct.gct.lu_to_eu[1]});
    EXPECT_EQ(c.dbeu.anlg_ebeu[2], c.cct.ect.lu_to_eu[1]);
    EXPECT_EQ(c.dbeu.anlg_ebeu[4], c.cct.ect.lu_to_eu[2]);
    EXPECT_EQ(row(c.delu.sv, 1), doubles{1});
    EXPECT_EQ(row(c.delu.rprm, 1), doubles{5e-9});
    EXPECT_EQ(row(c.delu.rprm, 2), doubles{1e-9});
    EXPECT_EQ(row(c.gelu.rprm, 1), doubles{4});
    EXPECT_EQ(row(c.gelu.sv, 2), doubles{7});
    EXPECT_EQ(c.ov.kind, (ints{ov_var, ov_var, ov_dvar, ov_dvar, ov_dstate, ov_rparm_gbe}));
    const auto var = [&](int lu) { return c.cct.gct.lu_to_eu[static_cast<std::size_t>(lu)]; };
    const auto dvar = [&](int lu) { return c.cct.dct.lu_to_eu[static_cast<std::size_t>(lu)]; };
    EXPECT_EQ(c.ov.index[0], var(1));
    EXPECT_EQ(c.ov.index[1], var(1));
    EXPECT_EQ(c.ov.index[2], dvar(2));
    EXPECT_EQ(c.ov.index[3], dvar(5));
    EXPECT_EQ(c.ov.index[4], 3);  // second gate of the second instance
    EXPECT_EQ(c.ov.unit[5], 4);   // one block behind the four of two lags
    EXPECT_EQ(c.ov.index[5], c.gbeu.unit.rprm.first[4] + 1);
}

TEST(mixed, outputs_go_by_the_composite_or_by_the_path_of_a_call) {
    const circuit c = built(divider, source +
                                         "gmelement name=X1 type=divider a=in b=0\n"
                                         "outvar: vm=vm_of_X1 va=va_of_X1 i=i_of_X1 v=v_of_X1.ra r=r2_of_X1.rb\n"
                                         "outvar: w=pwr_elec_of_X1.rb\n");
    EXPECT_EQ(c.ov.kind, (ints{ov_nodev, ov_rparm_ebe, ov_cur, ov_rparm_ebe, ov_rparm_eelu, ov_pwr_elec}));
    EXPECT_EQ(c.ov.index[0], c.cct.ect.lu_to_eu[2]);
    EXPECT_EQ(c.ov.index[1], c.ov.index[3]);
    EXPECT_EQ(c.ov.unit[1], 1);
    EXPECT_EQ(c.ov.index[2], c.ebeu.nd.first[1]);
    EXPECT_EQ(c.ov.instance[5], 2);
    EXPECT_HALT(built(divider, source + "gmelement name=X1 type=divider a=in b=0\noutvar: o=zz_of_X1\n"),
                "gmeu_class: outvar not found\n   name is zz\n   Halting...\n");
    EXPECT_HALT(built(divider, source + "gmelement name=X1 type=divider a=in b=0\noutvar: o=r_of_X1\n"),
                "gmeu_class: outvar not found\n   name is r\n   Halting...\n");
    EXPECT_HALT(built(divider, source + "gmelement name=X1 type=divider a=in b=0\noutvar: o=v_of_X1.rz\n"),
                "cct_class: cct_ov_flag = IGL_CLEAR\n   for i_ov = 0\n");
}

TEST(mixed, nested_calls_have_a_path_in_their_names_that_outputs_do_not_reach) {
    const std::string twice =
        divider + gme("twice",
                      {{"mainnodes_anlg:", "a b"}, {"auxnodes_anlg:", "m"}, {"outvar_anlg:", "vm=vm_of_h v=va_of_h"}},
                      "callgme divider name=h a=a b=m r=3k\ncallgme divider name=l a=m b=b\n");
    const std::string deck = source + "gmelement name=X type=twice a=in b=0\n";
    const circuit c = built(twice, deck + "outvar: vm=vm_of_X v=v_of_X\n");
    EXPECT_EQ(c.eelu.name, (strings{"V1", "X.h.ra", "X.h.rb", "X.l.ra", "X.l.rb"}));
    EXPECT_EQ(row(c.gmeu.nd, 0), (ints{0, 1, 2, 3, 4}));
    EXPECT_EQ(row(c.eelu.nd, 1), (ints{0, 3}));
    EXPECT_EQ(row(c.eelu.nd, 2), (ints{3, 2}));
    EXPECT_EQ(row(c.eelu.nd, 3), (ints{2, 4}));
    EXPECT_EQ(row(c.eelu.rprm, 1)[0], 3e3);
    EXPECT_EQ(row(c.eelu.rprm, 3)[0], 1e3);
    EXPECT_EQ(c.ov.index[0], c.cct.ect.lu_to_eu[3]);
    EXPECT_EQ(c.ov.unit[1], 1);
    EXPECT_HALT(built(twice, deck + "outvar: o=v_of_X.h.ra\n"),
                "cct_class: cct_ov_flag = IGL_CLEAR\n   for i_ov = 0\n");
}

TEST(mixed, a_sensed_branch_is_another_call_and_a_deck_may_sense_one_too) {
    const std::string senses =
        gme("senses", {{"mainnodes_anlg:", "a b"}, {"auxnodes_anlg:", "m"}},
            "callece sense name=s p=a n=b cp=m br=src\ncallece vs name=src p=a n=m\ncallece r name=r p=m n=b\n");
    const circuit c = built(senses, source +
                                        "gmelement name=X type=senses a=in b=0\n"
                                        "eelement name=S type=sense p=in n=0 cp=in br=X.src\n");
    EXPECT_EQ(row(c.eelu.ib, 1), ints{3});
    EXPECT_EQ(row(c.eelu.ib, 2), ints{3});
    EXPECT_EQ(row(c.ebeu.ib, 1), ints{3});
    // One that is more than an element is none.
    const std::string two = gme("two", {{"mainnodes_anlg:", "a b"}},
                                "callece sense name=s p=a n=b cp=a br=p\ncallece pair name=p p=a n=b\n");
    EXPECT_HALT(built(two, source + "gmelement name=X type=two a=in b=0\n"),
                "ebeu_class:set_values_1\n  ind. branch must have a single ebe.\n  Halting..\n");
}

TEST(mixed, a_change_of_the_mixed_instance_reaches_linked_values_of_its_parts_and_their_units) {
    const std::string lists = gme("some",
                                  {{"mainnodes_anlg:", "a b"},
                                   {"main_var:", "x"},
                                   {"iparms:", "n=1"},
                                   {"rparms:", "r=1 s=2"},
                                   {"rparms_derived:", "rs=$((r)+(s))"},
                                   {"stparms_anlg:", "y0=1"},
                                   {"aux_var:", "y"}},
                                  "callece r name=r1 p=a n=b r=r n_par=n\ncallece r name=r2 p=a n=b r=rs\n"
                                  "callece r name=r3 p=a n=b r=9\ncallgce lag x=x y=x k=rs y0=y0\n");
    circuit c = built(lists, source + "gmelement name=X type=some a=in b=0 x=u r=g\n", "greal g=10\n");
    const auto r_of = [&](const char* name) { return c.ebeu.unit.rprm.row(c.eelu.find(name))[0]; };
    EXPECT_EQ(r_of("X.r1"), 10);
    EXPECT_EQ(r_of("X.r2"), 12);
    EXPECT_EQ(c.gbeu.unit.rprm.row(0)[0], 12);
    c.gmeu.rprm.row(0)[1] = 5;
    c.gmeu.iprm.row(0)[0] = 4;
    c.gmeu.sv.row(0)[0] = 8;
    instance_changed(c, fam_gm, 0);
    EXPECT_EQ(r_of("X.r1"), 10);
    EXPECT_EQ(r_of("X.r2"), 15);
    EXPECT_EQ(r_of("X.r3"), 9);
    EXPECT_EQ(row(c.eelu.rprm, c.eelu.find("X.r2"))[1], 30);
    EXPECT_EQ(c.ebeu.unit.iprm.row(c.eelu.find("X.r1"))[0], 4);
    EXPECT_EQ(c.gbeu.unit.rprm.row(0)[0], 15);
    EXPECT_EQ(c.gbeu.unit.sv.row(0)[0], 8);
    c.gprm.greal[0] = 20;
    greal_changed(c, 0);
    EXPECT_EQ(r_of("X.r1"), 20);
    EXPECT_EQ(r_of("X.r2"), 25);
}

TEST(mixed, models_of_the_deck_and_model_files_give_the_five_groups) {
    const std::string groups = gme("groups",
                                   {{"mainnodes_anlg:", "a b"},
                                    {"iparms:", "n=1"},
                                    {"sparms:", "model_file=none"},
                                    {"rparms:", "r=1"},
                                    {"stparms_anlg:", "ua=1"},
                                    {"igparms_anlg:", "ga=1"},
                                    {"stparms_dgtl:", "ud=1"},
                                    {"igparms_dgtl:", "gd=1"}},
                                   "callece r p=a n=b r=r n_par=n\n");
    const std::string model = "gmmodel name=m type=groups n=2 r=3 ua=4.5 ga=5.5 ud=6 gd=7\n";
    const circuit c = built(groups, source + model + "gmelement name=X type=groups a=in b=0 model=m r=8 ud=9\n");
    EXPECT_EQ(row(c.gmeu.iprm, 0), ints{2});
    EXPECT_EQ(row(c.gmeu.rprm, 0), doubles{8});
    EXPECT_EQ(row(c.gmeu.sv, 0), (doubles{4.5, 9}));
    EXPECT_EQ(row(c.gmeu.ig, 0), (doubles{5.5, 7}));
    EXPECT_EQ(row(c.eelu.iprm, 1), ints{2});

    const temp_folder folder;
    const auto with_file = [&](const std::string& text) {
        write_file("m.txt", text);
        return built(groups, source + "gmelement name=X type=groups a=in b=0 model_file=m.txt\n");
    };
    EXPECT_EQ(row(with_file("gmmodel name X type groups n 3 r 4 ua 1.5 ud 2\n").gmeu.sv, 0), (doubles{1.5, 2}));
    EXPECT_HALT(with_file("emodel name X type groups n 3\n"),
                "set_values_1 (gmeu model):\n  keyword gmmodel not found.\n");
    const std::string whole = "check integer string: <1.5>\n  (brackets are not part of the string)\n  Halting...\n";
    EXPECT_HALT(with_file("gmmodel name X type groups ud 1.5\n"), whole);
    EXPECT_HALT(built(groups, source + "gmelement name=X type=groups a=in b=0 ud=1.5\n"), whole);
    EXPECT_HALT(built(groups, source + "gmmodel name=m type=groups ud=1.5\n"), whole);
}

TEST(mixed, a_call_gives_its_element_a_model_file_under_its_own_values) {
    const temp_folder folder;
    write_file("m.txt", "emodel name M type vs vdc 7\n");
    const std::string filed =
        gme("filed", {{"mainnodes_anlg:", "a b"}, {"sparms:", "model_file=none f=none"}},
            "callece vs name=v1 p=a n=b model_file=f\ncallece vs name=v2 p=a n=b model_file=f vdc=9\n"
            "callece vs name=v3 p=a n=b\n");
    const circuit c = built(filed, source + "gmelement name=X type=filed a=in b=0 f=m.txt\n");
    EXPECT_EQ(row(c.eelu.rprm, 1), doubles{7});
    EXPECT_EQ(row(c.eelu.rprm, 2), doubles{9});
    EXPECT_EQ(row(c.eelu.rprm, 3), doubles{0});
}

TEST(mixed, faults_of_statements) {
    const auto fault = [&](const std::string& statement, const std::string& text) {
        SCOPED_TRACE(statement);
        EXPECT_HALT(built(divider, source + statement), text);
    };
    fault("gmelement name=X a=in b=0\n", "cct_class: type not found. Halting..\n");
    fault("gmelement name=X type=zz a=in b=0\n",
          "find_word_3: word not found.\n   word is: zz\n   message from calling routine:\n"
          "   cct_class: gmes_name not found\n   Halting...\n");
    fault("gmelement name=X type=divider a=in\n",
          "cct_class: (gmelement) nda name not found.\n   nda name is b\n   gmelement name is X\n   Halting...\n");
    fault("gmelement type=divider a=in b=0\n", "gmeu_class: name not found. Halting..\n");
    fault("gmelement name=X type=divider a=in b=0 q=1\n",
          "gmeu:set_values_1: some word has not been ticked.\n   word: q\n");
    fault("gmelement name=X type=divider a=in b=0 compute_acp=yes\n",
          "gmeu:set_values_1: some word has not been ticked.\n   word: compute_acp\n");
    fault("gmelement name=X type=divider a=in b=0 model=m\n",
          "set_values_1 (gmeu): model not found.\n   model name is m\n   Halting...\n");
    fault("gmelement name=X type=divider a=in b=0\neelement name=X.ra type=r p=in n=0\n",
          "check_word_repeat_1: \n   The string <X.ra> is repeated.\n   i = 1\n  j = 2\n"
          "   Message from the calling routine:\n   cct_class (eelu)\n");
    const std::string other = gme("other", {{"mainnodes_dgtl:", "d"}, {"main_var:", "u"}}, "");
    EXPECT_HALT(
        built(other, source + "gmelement name=X type=other u=u\n"),
        "cct_class: (gmelement) ndd name not found.\n   ndd name is d\n   gmelement name is X\n   Halting...\n");
    EXPECT_HALT(built(other, source + "gmelement name=X type=other d=d\n"),
                "cct_class: (gmelement) vr name not found.\n   vr name is u\n   gmelement name is X\n   Halting...\n");
}

TEST(mixed, names_that_no_call_touches_stop) {
    const std::string idle =
        gme("idle", {{"mainnodes_anlg:", "a b"}, {"outvar_anlg:", "v=nodev_of_m"}, {"auxnodes_anlg:", "m"}},
            "callece r p=a n=b\n");
    EXPECT_HALT(built(idle, source + "gmelement name=X type=idle a=in b=0\noutvar: o=v_of_X\n"),
                "gmeu_class: outvar of a name that no call is connected to\n   name is v\n   Halting...\n");
    EXPECT_NO_THROW(built(idle, source + "gmelement name=X type=idle a=in b=0\n"));
    const std::string alone = gme("alone", {{"mainnodes_anlg:", "a"}}, "");
    EXPECT_HALT(built(alone, source + "gmelement name=X type=alone a=nowhere\n"),
                "ect_to_ebeu_nd: i_eelu_nd = -1\n   for i_ect_nd = 2\ncct_class: problem in assigning ect_to_ebeu\n");
}

TEST(mixed, an_internal_name_that_another_domain_alone_touches_stops) {
    const std::string unread =
        gme("unread", {{"mainnodes_anlg:", "a b"}, {"aux_var:", "w"}}, "callece reads_x p=a n=b x=w\n");
    EXPECT_HALT(built(unread, source + "gmelement name=X type=unread a=in b=0\n"),
                "ect_to_ebeu_nd: i_eelu_nd = -1\n   for i_ect_nd = 0\ncct_class: problem in assigning gct_to_gbeu\n");
    const std::string sensed =
        gme("sensed", {{"auxnodes_anlg:", "m"}, {"mainnodes_dgtl:", "d"}}, "calldce gates a=d y=d x=m\n");
    EXPECT_HALT(built(sensed, source + "gmelement name=X type=sensed d=d\n"),
                "ect_to_ebeu_nd: i_eelu_nd = -1\n   for i_ect_nd = 2\ncct_class: problem in assigning ect_to_ebeu\n");
}
