// Blocks that declare a parameter of another element, and what they are linked to.
#include <gtest/gtest.h>

#include "circuit_fixture.h"
#include "halt_throws.h"
#include "library/composite/composite_reader.h"

namespace {
std::string block(const std::string& name, const std::string& flags, const std::string& vars, const std::string& sparms,
                  const std::string& rparms, const std::string& functions) {
    return "gbe name=" + name + " " + flags + "\nJacobian: constant\nmain_vars: " + vars +
           "\niparms:\nsparms: " + sparms + "\nrparms: " + rparms + "\naux_vars:\nxvar:\nstparms:\nigparms:\n" +
           functions + "C: compiled\nendgbe\n";
}
std::string composite(const std::string& name, const std::string& vars, const std::string& sparms,
                      const std::string& body) {
    return "gce name=" + name + "\nbegin_dc\nmainvars: " + vars + "\nauxvars:\nxvars:\noutvar:\nbias:\nstparms:\n" +
           "igparms:\niparms:\nsparms: " + sparms + "\nrparms:\nrparms_derived:\n" + body +
           "end_dc\nC:\nendC\nbegin_ac\noutvar_ac:\nend_ac\nendgce\n";
}
const std::string target = "element=none parm=none";
const std::string gbes =
    block("set", "set_rparm_1=yes", "x", target, "gain=3 k=2", "no_functions 0\n") +
    block("plain_set", "set_rparm_1=yes", "x", target, "", "no_functions 0\n") +
    block("get", "get_rparm_1=yes", "y", target, "value=0", "no_functions 1\nf_1 y\n") +
    block("plain_get", "get_rparm_1=yes", "y", target, "", "no_functions 1\nf_1 y\n") +
    block("nameless", "set_rparm_1=yes", "x", "", "", "no_functions 0\n") +
    block("wraps", "limit_modulo=yes allow_reset=yes", "y", "", "lo=0 hi=1", "no_functions 1\nf_1 y\n") +
    block("const", "", "y", "", "k=0", "no_functions 1\nf_1 y\n");
const std::string gels = composite("set", "x", target, "gbe type=set name=b x=x element=element parm=parm\n") +
                         composite("plain_set", "x", target, "gbe type=plain_set x=x element=element parm=parm\n") +
                         composite("get", "y", target, "gbe type=get name=b y=y element=element parm=parm\n") +
                         composite("plain_get", "y", target, "gbe type=plain_get y=y element=element parm=parm\n") +
                         composite("nameless", "x", "", "gbe type=nameless x=x\n") +
                         composite("wraps", "y", "", "gbe type=wraps y=y\n") +
                         composite("const", "y", "", "gbe type=const name=b y=y\n");

// One resistor, a pair whose first parameter feeds one unit, and blocks.
circuit with_blocks(const std::string& blocks) {
    circuit c =
        fixture_circuit(fixture_deck("refnode 0\neelement name=R type=r p=a n=0\n"
                                     "eelement name=P type=pair p=a n=0\n"
                                     "gelement name=K type=const y=x\n" +
                                     blocks));
    const temp_folder folder;
    write_file("gbes.aux", gbes);
    read_library("gbes.aux", gbes_form, int_F, {}, c.lib.gbes);
    text_file file = text_file_of(gels);
    read_composites(file, gels_form, c.lib.gbes, c.lib.gbac, c.lib.gels);
    elaborate(c);
    return c;
}
}  // namespace

TEST(set_rparm_1, finds_instance_parameter_variable_and_the_factor_named_k) {
    circuit c = with_blocks(
        "gelement name=S type=set x=x element=P parm=rb\n"
        "gelement name=T type=plain_set x=x element=K parm=none\n");
    EXPECT_HALT(set_rparm_1(c),
                "cct_class::set_rparm_1: parameter not identified in\n"
                "   one of the set_rparm type gbe.\n   parameter name is: none\n");
    circuit d = with_blocks(
        "gelement name=S type=set x=x element=P parm=rb\n"
        "gelement name=T type=plain_set x=x element=R parm=r2\n");
    set_rparm_1(d);
    ASSERT_EQ(d.links.set.size(), 2u);
    EXPECT_TRUE(d.links.get.empty());
    const rparm_link& s = d.links.set[0];
    EXPECT_EQ(s.family, fam_e);
    EXPECT_EQ(s.instance, 1);
    EXPECT_EQ(s.index, 1);
    EXPECT_FALSE(s.is_start);
    EXPECT_EQ(s.variable, d.gbeu.vr.row(1)[0]);
    EXPECT_EQ(d.gbeu.unit.rprm.data[static_cast<std::size_t>(s.factor)], 2.0);
    EXPECT_EQ(d.links.set[1].factor, -1);
    EXPECT_EQ(d.links.set[1].index, 1);  // a derived parameter stands behind the plain ones
}

TEST(get_rparm_1, finds_where_a_parameter_stands_among_the_units_and_the_place_named_value) {
    circuit c = with_blocks(
        "gelement name=G type=get y=y1 element=P parm=rb\n"
        "gelement name=H type=plain_get y=y2 element=R parm=r2\n");
    get_rparm_1(c);
    ASSERT_EQ(c.links.get.size(), 2u);
    const rparm_link& g = c.links.get[0];
    EXPECT_EQ(g.n_source, 1);
    EXPECT_EQ(g.source_unit, 2);  // the pair's second resistor
    EXPECT_EQ(g.source, c.ebeu.unit.rprm.first[2]);
    EXPECT_EQ(g.value, c.gbeu.unit.rprm.first[1]);
    EXPECT_EQ(c.links.get[1].value, -1);
    EXPECT_EQ(c.links.get[1].n_source, 0);  // no unit is fed from a parameter that is only computed with
}

TEST(set_rparm_1, wants_two_strings_of_a_block) {
    circuit c = with_blocks("gelement name=S type=nameless x=x\n");
    EXPECT_HALT(set_rparm_1(c),
                "cct_class::set_rparm_1: the block nameless needs\n"
                "   two string parameters and a variable.\n   Halting...\n");
}

TEST(check_one_time, sees_the_flag_words_of_units_alone) {
    circuit c = with_blocks("");
    check_one_time(c);
    EXPECT_FALSE(c.cct.flag_setrparm || c.cct.flag_getrparm || c.cct.flag_modulo || c.cct.flag_reset);
    circuit d = with_blocks("gelement name=S type=set x=x element=R parm=r\ngelement name=W type=wraps y=w\n");
    check_one_time(d);
    EXPECT_TRUE(d.cct.flag_setrparm && d.cct.flag_modulo && d.cct.flag_reset);
    EXPECT_FALSE(d.cct.flag_getrparm);
}
