#include <gtest/gtest.h>

#include "circuit_fixture.h"
#include "halt_throws.h"

namespace {
using strings = std::vector<std::string>;

const std::string divider =
    "refnode 0\n"
    "eelement name=V1 type=vs p=in n=0 vdc=10\n"
    "eelement name=R1 type=r p=in n=out r=1k\n"
    "eelement name=R2 type=r p=out n=0 r=2k\n";

int unit_node(const circuit& c, const std::string& name) {
    return c.cct.ect.to_eu[static_cast<std::size_t>(c.cct.ect.find(name))];
}
}  // namespace

TEST(elaborate, names_are_numbered_by_first_use_in_list_order) {
    const circuit c = elaborated(divider);
    EXPECT_EQ(c.cct.ect.name, (strings{"in", "0", "out"}));
    EXPECT_EQ(c.cct.ect.to_eu, (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(c.cct.ect.ref, 1);
    EXPECT_EQ(c.ebeu.ref_nd, 1);
    EXPECT_TRUE(c.cct.flag_linear);
    EXPECT_TRUE(c.cct.flag_purely_analog);
}

TEST(elaborate, the_order_of_keys_in_a_statement_does_not_change_the_numbers) {
    const circuit c = elaborated("refnode 0\neelement n=0 name=V1 p=in vdc=10 type=vs\n");
    EXPECT_EQ(c.cct.ect.name, (strings{"in", "0"}));
}

TEST(elaborate, units_follow_instances_and_their_flat_element_lists) {
    const circuit c = elaborated(divider + "eelement name=P type=pair p=in n=out ra=7 rb=9\n");
    ASSERT_EQ(c.ebeu.n(), 5);
    EXPECT_EQ(c.ebeu.unit.i_inst, (std::vector<int>{0, 1, 2, 3, 3}));
    // The auxiliary node has no deck name; its unit number follows those used before it.
    EXPECT_EQ(c.ebeu.n_nd, 4);
    EXPECT_EQ(c.ebeu.nd.row(3)[1], 3);
    EXPECT_EQ(c.ebeu.nd.row(4)[0], 3);
    EXPECT_EQ(c.cct.ect.eu_to[3], -1);
    EXPECT_EQ(c.ebeu.unit.rprm.row(3)[0], 7.0);
    EXPECT_EQ(c.ebeu.unit.rprm.row(4)[0], 9.0);
}

TEST(elaborate, two_instances_share_a_node_only_through_a_deck_name) {
    const circuit c = elaborated("refnode 0\neelement name=A type=pair p=x n=0\neelement name=B type=pair p=x n=0\n");
    EXPECT_EQ(c.ebeu.n_nd, 4);
    EXPECT_NE(c.ebeu.nd.row(0)[1], c.ebeu.nd.row(2)[1]);
    EXPECT_EQ(c.ebeu.nd.row(0)[0], c.ebeu.nd.row(2)[0]);
}

TEST(elaborate, the_last_refnode_statement_holds) {
    const circuit c = elaborated(divider + "refnode out\n");
    EXPECT_EQ(c.cct.ect.ref, c.cct.ect.find("out"));
    EXPECT_EQ(c.ebeu.ref_nd, unit_node(c, "out"));
}

TEST(elaborate, a_ground_word_stands_for_the_reference) {
    const circuit c = elaborated(divider +
                                 "eelement type=ground_dummy c=gnd\neelement name=R3 type=r p=out n=gnd\n"
                                 "outvar: vg=nodev_of_gnd\n");
    EXPECT_EQ(unit_node(c, "gnd"), c.ebeu.ref_nd);
    EXPECT_EQ(c.ebeu.nd.row(3)[1], c.ebeu.ref_nd);
    EXPECT_EQ(c.ov.index[0], c.ebeu.ref_nd);
    EXPECT_EQ(c.ebeu.n_nd, 3);
}

TEST(elaborate, placeholders_are_no_elements) {
    const circuit c = elaborated(divider + "eelement type=connector_e whatever=1\nxelement type=connector_x\n");
    EXPECT_EQ(c.eelu.n, 3);
    EXPECT_EQ(c.cf.first_unclaimed(c.cf.n_begin_cct, c.cf.n_end_cct), -1);
}

TEST(elaborate, a_ground_terminal_is_not_summed_into_kcl) {
    const circuit c = elaborated("refnode 0\neelement name=G type=grounded p=a n=0\n");
    EXPECT_EQ(c.ebeu.n_ttlnd(), 3);
    EXPECT_EQ(c.ebeu.n_ttlnd_kcl, 2);
    EXPECT_EQ(c.ebeu.ground_units, (std::vector<int>{1}));
}

TEST(elaborate, sensed_nodes_and_branches_read_units_of_other_instances) {
    const circuit c = elaborated(divider + "eelement name=S type=sense p=out n=0 cp=in br=V1\n");
    EXPECT_EQ(c.ebeu.in.row(3)[0], unit_node(c, "in"));
    EXPECT_EQ(c.ebeu.ib.row(3)[0], 0);
    EXPECT_EQ(c.ebeu.ib_aux.row(3)[0], 0);
    EXPECT_EQ(c.ebeu.ib_auxs.row(3)[0], 0);
    EXPECT_FALSE(c.cct.flag_linear);
}

TEST(elaborate, a_sensed_branch_may_name_a_later_statement) {
    const circuit c = elaborated(
        "refnode 0\neelement name=S type=sense p=a n=0 cp=a br=V\n"
        "eelement name=V type=vs p=a n=0\n");
    EXPECT_EQ(c.ebeu.ib.row(0)[0], 1);
}

TEST(elaborate, no_electrical_element_gives_no_units) {
    const circuit c = elaborated("");
    EXPECT_EQ(c.ebeu.n(), 0);
    EXPECT_EQ(c.ebeu.n_nd, 0);
    EXPECT_TRUE(c.cct.flag_linear);
    EXPECT_TRUE(c.cct.flag_solve_analog);
}

TEST(elaborate, statement_beats_model_and_model_beats_library) {
    const circuit c = elaborated(
        "refnode 0\nemodel name=m1 type=r r=50 n_par=3\n"
        "eelement name=A type=r p=a n=0\n"
        "eelement name=B type=r p=a n=0 model=m1\n"
        "eelement name=C type=r p=a n=0 model=m1 r=60\n");
    EXPECT_EQ(c.eelu.rprm.row(0)[0], 1.0);
    EXPECT_EQ(c.eelu.rprm.row(1)[0], 50.0);
    EXPECT_EQ(c.eelu.iprm.row(1)[0], 3);
    EXPECT_EQ(c.eelu.rprm.row(2)[0], 60.0);
    EXPECT_EQ(c.eelu.iprm.row(2)[0], 3);
    EXPECT_EQ(c.ebeu.unit.iprm.row(1)[0], 3);
    // Derived values follow the instance's own row.
    EXPECT_EQ(c.eelu.rprm.row(2)[1], 120.0);
}

TEST(elaborate, a_global_parameter_wins_over_a_number_of_the_same_spelling) {
    const circuit c = elaborated("refnode 0\neelement name=A type=r p=a n=0 r=1k\n", "greal 1k=7\n");
    EXPECT_EQ(c.eelu.rprm.row(0)[0], 7.0);
    EXPECT_EQ(c.eelu.rprm_tie.row(0)[0], 0);
}

TEST(elaborate, a_changed_global_reaches_instances_and_units) {
    circuit c = elaborated("refnode 0\neelement name=A type=r p=a n=0 r=twice\neelement name=B type=r p=a n=0 r=5\n",
                           "greal a=1k twice=$((a)*(2))\n");
    EXPECT_EQ(c.ebeu.unit.rprm.row(0)[0], 2000.0);
    c.gprm.greal[0] = c.gprm.greal_base[0] = 3000.0;
    c.ebeu.unit.rprm.row(0)[2] = 0.25;  // a constant that the model derived
    greal_changed(c, 0);
    EXPECT_EQ(c.eelu.rprm.row(0)[0], 6000.0);
    EXPECT_EQ(c.eelu.rprm.row(0)[1], 12000.0);
    EXPECT_EQ(c.ebeu.unit.rprm.row(0)[0], 6000.0);
    EXPECT_EQ(c.ebeu.unit.rprm.row(0)[2], 0.25);
    EXPECT_EQ(c.ebeu.unit.rprm.row(1)[0], 5.0);
}

TEST(elaborate, a_changed_instance_reaches_every_unit_of_the_composite) {
    circuit c = elaborated("refnode 0\neelement name=P type=pair p=a n=0\n");
    c.eelu.rprm.row(0)[0] = 11;
    c.eelu.rprm.row(0)[1] = 12;
    instance_changed(c, fam_e, 0);
    EXPECT_EQ(c.ebeu.unit.rprm.row(0)[0], 11.0);
    EXPECT_EQ(c.ebeu.unit.rprm.row(1)[0], 12.0);
}

TEST(elaborate, string_parameters_reach_the_units) {
    const circuit c = elaborated("refnode 0\neelement name=A type=r p=a n=0 tag=word\n", "");
    EXPECT_STREQ(c.ebeu.unit.sprm.row(0)[0], "word");
}

TEST(elaborate, only_yes_sets_a_flag_of_the_statement) {
    const circuit c = elaborated(
        "refnode 0\neelement name=A type=r p=a n=0 compute_acp=no write_parms=yes\n"
        "eelement name=B type=r p=a n=0\n");
    EXPECT_EQ(c.eelu.flag_compute_acp, (std::vector<int>{0, 0}));
    EXPECT_EQ(c.eelu.flag_write_parms, (std::vector<int>{1, 0}));
}

TEST(outputs, resolve_to_unit_level_places) {
    const circuit c = elaborated(divider +
                                 "eelement name=P type=pair p=in n=out\n"
                                 "outvar: vout=nodev_of_out i1=i_of_R1 v2=v_of_R2 is=i_of_V1 vm=vm_of_P\n"
                                 "outvar: ib=i_of_P pw=pwr_elec_of_R2 rr=r_of_R2 np=n_par_of_R2 d=r2_of_R1\n");
    EXPECT_EQ(c.ov.kind, (std::vector<int>{ov_nodev, ov_cur, ov_rparm_ebe, ov_aux, ov_nodev, ov_cur, ov_pwr_elec,
                                           ov_rparm_eelu, ov_iparm_ebe, ov_rparm_eelu}));
    EXPECT_EQ(c.ov.index[0], unit_node(c, "out"));
    EXPECT_EQ(c.ov.index[1], 2);                              // first terminal of unit 1
    EXPECT_EQ(c.ov.index[2], c.ebeu.unit.rprm.first[2] + 1);  // slot v_o of unit 2
    EXPECT_EQ(c.ov.unit[2], 2);
    EXPECT_EQ(c.ov.index[3], 0);
    EXPECT_EQ(c.ov.index[4], c.ebeu.nd.row(3)[1]);
    EXPECT_EQ(c.ov.index[5], c.ebeu.nd.first[4]);
    EXPECT_EQ(c.ov.instance[6], 2);
    EXPECT_EQ(c.eelu.flag_pwr_elec[2], 1);
    EXPECT_EQ(c.ov.index[7], 0);
    EXPECT_EQ(c.ov.unit[8], 2);
    EXPECT_EQ(c.ov.index[9], 1);
}

TEST(elaborate, exactly_the_allowed_number_of_names_passes) {
    circuit c = fixture_circuit(fixture_deck(divider), 3);
    elaborate(c);
    EXPECT_EQ(c.cct.ect.n(), 3);
    circuit d = fixture_circuit(fixture_deck(divider), 2);
    const console_run heard = run_and_listen([&] { elaborate(d); });
    EXPECT_TRUE(heard.stopped);
    EXPECT_NE(heard.text.find("cct_class: n_ect_nd is too large!"), std::string::npos) << heard.text;
}

// ---- what a faulty circuit block says

struct fault {
    const char* name;
    std::string block;
    std::string text;
};
class circuit_fault : public ::testing::TestWithParam<fault> {};

TEST_P(circuit_fault, is_told_in_its_own_words) {
    circuit c;
    const console_run heard = run_and_listen([&] {
        c = fixture_circuit(fixture_deck(GetParam().block));
        elaborate(c);
    });
    EXPECT_TRUE(heard.stopped);
    EXPECT_EQ(heard.text, GetParam().text);
}

const fault faults[] = {
    {"missing_type", "eelement name=R1 p=a n=0\n", "cct_class: type not found. Halting..\n"},
    {"missing_type_of_a_placeholder", "gelement name=R1\n", "cct_class: type not found. Halting..\n"},
    {"ground_dummy_1_in_a_deck", "eelement name=G type=ground_dummy_1 g=0\n",
     "cct_class: ground_dummy_1.ece cannot be called\n  directly from the circuit file. Halting...\n"},
    {"unknown_type", "eelement name=R1 type=resistor p=a n=0\n",
     "find_word_3: word not found.\n   word is: resistor\n   message from calling routine:\n"
     "   cct_class: eels_name not found\n   Halting...\n"},
    {"a_family_without_library", "delement name=D type=and_2 a=x\n",
     "find_word_3: word not found.\n   word is: and_2\n   message from calling routine:\n"
     "   cct_class: dels_name not found\n   Halting...\n"},
    {"missing_node", "eelement name=R1 type=r p=a\n",
     "cct_class: (eelement) node name not found.\n   node name is n\n   eelement name is R1\n   Halting...\n"},
    {"missing_node_without_a_name", "eelement type=r p=a\n",
     "cct_class: (eelement) node name not found.\n   node name is n\n   eelement name is \n   Halting...\n"},
    {"missing_name", "eelement type=r p=a n=0\n", "eelu_class: name not found. Halting..\n"},
    {"unknown_word", "eelement name=R1 type=r p=a n=0 rr=5\n",
     "eelu:set_values_1: some word has not been ticked.\n   word: rr\n"},
    {"a_key_twice", "eelement name=R1 type=r p=a n=0 r=5 r=6\n",
     "eelu:set_values_1: some word has not been ticked.\n   word: r\n"},
    {"a_derived_parameter_is_no_key", "eelement name=R1 type=r p=a n=0 r2=5\n",
     "eelu:set_values_1: some word has not been ticked.\n   word: r2\n"},
    {"a_branch_that_is_no_instance", "refnode 0\neelement name=S type=sense p=a n=0 cp=a br=V9\n",
     "assign_elu_nodes: string <V9> not found.\n   Check this line:\neelement name S type sense p a n 0 cp a br V9\n"
     "   Halting...\n"},
    {"an_unknown_model", "eelement name=R1 type=r p=a n=0 model=m9\n",
     "set_values_1 (eelu): model not found.\n   model name is m9\n   Halting...\n"},
    {"a_model_of_another_type", "emodel name=m1 type=vs vdc=1\neelement name=R1 type=r p=a n=0 model=m1\n",
     "set_values_1 (eelu): model not found.\n   model name is m1\n   Halting...\n"},
    {"model_and_model_file", "emodel name=m1 type=vs vdc=1\neelement name=V type=vs p=a n=0 model=m1 model_file=f\n",
     "set_values_1 (eelu):\n  flag_model_sparm and flag_model_cct are both T\n  Halting...\n"},
    {"a_model_file_that_is_missing", "eelement name=V type=vs p=a n=0 model_file=no_such_file\n",
     "set_values_1 (eelu model):\n  file name no_such_file is not found.\n  Halting... \n"},
    {"a_bad_number", "eelement name=R1 type=r p=a n=0 r=5meg\n",
     "check double string: <5meg>\n  (brackets are not part of the string)\n  Halting...\n"},
    {"a_bad_integer", "eelement name=R1 type=r p=a n=0 n_par=+5\n",
     "check integer string: <+5>\n  (brackets are not part of the string)\n  Halting...\n"},
    {"no_refnode", "eelement name=R1 type=r p=a n=0\n", "cct_class: reference node not found.\n"},
    {"a_refnode_that_is_no_node", "refnode z\neelement name=R1 type=r p=a n=0\n",
     "find_word_3: word not found.\n   word is: z\n   message from calling routine:\n"
     "   cct_class: something wrong with refnode statement.\n   Halting...\n"},
    {"an_auxiliary_node_that_is_only_sensed", "refnode 0\neelement name=H type=hidden p=a n=0\n",
     "ebeu_class:set_values_1\n   An independent node not assigned?\n   Halting..\n"},
    {"a_sensed_node_that_no_terminal_touches",
     "refnode 0\neelement name=V type=vs p=a n=0\neelement name=S type=sense p=a n=0 cp=far br=V\n",
     "ebeu_class:set_values_1\n   An independent node not assigned?\n   Halting..\n"},
    {"a_branch_into_a_composite_of_two",
     "refnode 0\neelement name=P type=pair p=a n=0\n"
     "eelement name=S type=sense p=a n=0 cp=a br=P\n",
     "ebeu_class:set_values_1\n  ind. branch must have a single ebe.\n  Halting..\n"},
    {"a_branch_without_an_unknown_current",
     "refnode 0\neelement name=R type=r p=a n=0\n"
     "eelement name=S type=sense p=a n=0 cp=a br=R\n",
     "ebeu_class:set_values_1\n  ind. branch has no auxiliary variable.\n  Halting..\n"},
    {"a_branch_reference_that_never_came", "refnode 0\neelement name=O type=open_branch p=a n=0\n",
     "ebeu_class:set_values_1\n  flag_ib0 = -2 for some ece\n  Halting..\n"},
    {"a_general_variable_of_electrical_elements_only", "refnode 0\neelement name=X type=reads_x p=a n=0 x=speed\n",
     "ect_to_ebeu_nd: i_eelu_nd = -1\n   for i_ect_nd = 0\ncct_class: problem in assigning gct_to_gbeu\n"},
    {"an_output_of_an_auxiliary_node", "refnode 0\neelement name=P type=pair p=a n=0\noutvar: x=nodev_of_m\n",
     "cct_class: ect node name not found.\n   Check outvars of type nodev_of_xxx.\n"},
    {"an_output_of_an_unknown_variable", "refnode 0\neelement name=P type=pair p=a n=0\noutvar: x=var_of_m\n",
     "cct_class: gct var name not found.\n   var name is: m\n   Check outvars of type var_of_xxx.\n"},
    {"an_output_of_an_unknown_instance", "refnode 0\neelement name=R type=r p=a n=0\noutvar: x=i_of_Q\n",
     "cct_class: cct_ov_flag = IGL_CLEAR\n   for i_ov = 0\n"},
    {"an_unknown_output_of_an_instance", "refnode 0\neelement name=R type=r p=a n=0\noutvar: x=w_of_R\n",
     "eelu_class: outvar not found\n   name is w\n   Halting...\n"},
};

INSTANTIATE_TEST_SUITE_P(all, circuit_fault, ::testing::ValuesIn(faults), [](const auto& p) { return p.param.name; });

TEST(elaborate, a_repeated_instance_name_is_refused) {
    circuit c =
        fixture_circuit(fixture_deck("refnode 0\neelement name=R type=r p=a n=0\neelement name=S type=r p=a n=0\n"
                                     "eelement name=R type=r p=a n=0\n"));
    const console_run heard = run_and_listen([&] { elaborate(c); });
    EXPECT_TRUE(heard.stopped);
    EXPECT_NE(heard.text.find("The string <R> is repeated."), std::string::npos) << heard.text;
    EXPECT_NE(heard.text.find("cct_class (eelu)"), std::string::npos) << heard.text;
}
