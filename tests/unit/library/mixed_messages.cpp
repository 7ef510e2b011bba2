// What the reader of mixed composites says about wrong files, and its capacities.
#include <gtest/gtest.h>

#include "halt_throws.h"
#include "mixed_texts.h"

namespace {

struct fault {
    std::string text;
    std::string console;
};
void check(const std::vector<fault>& faults) {
    for (const fault& f : faults) {
        SCOPED_TRACE(f.text);
        EXPECT_HALT(read_mixed_text(f.text), f.console);
    }
}

const lines names = {"mainnodes_anlg: a b", "mainnodes_dgtl: d e", "main_var: g h"};
std::string body(const std::string& calls) { return gme(names, calls); }

const std::string r_ab = "callece r name=ra p=a n=b\n";
std::string missing_key(const std::string& key, const std::string& message) {
    return not_in_list(key, message, "find_word_EO_2");
}

TEST(gmes_messages, a_missing_line_names_itself_with_its_colon) {
    for (std::size_t i = 1; i < gme_header.size(); ++i) {
        const std::string found = i + 1 < gme_header.size() ? gme_header[i + 1] : "endgme";
        EXPECT_HALT(read_mixed_text(edited(gme_header, {}, gme_header[i]) + "endgme\n"),
                    wrong_keyword(found, gme_header[i], "expect " + gme_header[i] + " here, check gme library"));
    }
}

TEST(gmes_messages, faults_of_the_header) {
    check({
        {"stray\n", wrong_keyword("stray", "gme", "gmes_class: gme not found. Debug 1.")},
        {"gme x\n", wrong_keyword("x", "name", "expect name here, check gme library")},
        {gme({"stparms_anlg: a"}), "gmes_class: k_rem is not zero (sva). Halting...\n"},
        {gme({"igparms_anlg: a"}), "gmes_class: k_rem is not zero (iga). Halting...\n"},
        {gme({"stparms_dgtl: a"}), "gmes_class: k_rem is not zero (svd). Halting...\n"},
        {gme({"igparms_dgtl: a"}), "gmes_class: k_rem is not zero (igd). Halting...\n"},
        {gme({"iparms: a"}), "gmes_class: k_rem is not zero (iprm). Halting...\n"},
        {gme({"sparms: a"}), "gmes_class: k_rem is not zero (sprm). Halting...\n"},
        {gme({"rparms: a"}), "gmes_class: k_rem is not zero (rprm). Halting...\n"},
        {gme({"rparms_derived: a"}), "gmes_class: k_rem is not zero (rprm_derived).\n   Halting...\n"},
        {gme({"outvar_anlg: a"}), "gmes_class: k_rem is not zero (ova). Halting...\n"},
        {gme({"outvar_dgtl: a"}), "gmes_class: k_rem is not zero (ovd). Halting...\n"},
        {gme({"outvar_ac: a"}), "gmes_class: k_rem is not zero (ovac). Halting...\n"},
        {gme({"sparms: a " + long_word(51)}),
         "gmes_class: nchr_s2=51 is too large. Halting...\n  sparm string is too long.\n"},
        {gme({"stparms_dgtl: a=0.5"}),
         "check integer string: <0.5>\n  (brackets are not part of the string)\n  Halting...\n"},
        {gme({"igparms_dgtl: a=0.5"}),
         "check integer string: <0.5>\n  (brackets are not part of the string)\n  Halting...\n"},
        {gme({"outvar_anlg: o=i"}),
         "find_sub_word: _of_ was not found.\nMessage from calling routine:\n"
         "_of_ not found (ova), check gme library\n"},
        {gme({"outvar_dgtl: o=i"}),
         "find_sub_word: _of_ was not found.\nMessage from calling routine:\n"
         "_of_ not found (ovd), check gme library\n"},
        {gme({"outvar_ac: o=i"}),
         "find_sub_word: _of_ was not found.\nMessage from calling routine:\n"
         "_of_ not found (ovac), check gme library\n"},
        {gme({"outvar_anlg: o=nodev_of_z"}), not_in_list("z", "gmes_class: outvar node name not found")},
        {gme({"mainnodes_dgtl: d", "outvar_anlg: o=nodev_of_d"}),
         not_in_list("d", "gmes_class: outvar node name not found")},
        {gme({"outvar_anlg: o=var_of_z"}), not_in_list("z", "gmes_class: outvar node name not found")},
        {gme({"outvar_dgtl: o=dvar_of_z"}), not_in_list("z", "gmes_class: outvar node name not found")},
        {gme({"rparms_derived: a=5"}),
         "gmes_class: check this string: 5\n  An expression was expected here. Halting...\n"},
        {gme({"rparms_derived: a=$(tan(1))"}),
         "gmes_class: unknown function in\n   derived rparms.\n   string is $(tan(1))\n"},
        {gme({"rparms_derived: a=$((1)%(2))"}),
         "gmes_class: unknown operation in\n   derived rparms.\n   string is $((1)%(2))\n"},
    });
}

TEST(gmes_messages, an_output_that_no_call_serves) {
    const auto text = [](const char* which, int i) {
        return std::string("gmes_class: some outvar is not assigned?\n  i_") + which + " = " + std::to_string(i) +
               "\n  Check gme library. Halting..\n";
    };
    const std::string before = gme({"outvar_anlg: u=v_of_r", "mainnodes_anlg: a b"}, "callece r name=r p=a n=b\n");
    check({
        {before + gme({"mainnodes_anlg: a b", "outvar_anlg: u=nodev_of_a o=v_of_rz"}, r_ab), text("ova", 1)},
        {gme({"mainnodes_anlg: a b", "outvar_dgtl: o=v_of_ra"}, r_ab), text("ovd", 0)},
        {gme({"mainnodes_anlg: a b", "outvar_ac: o=v_of_rz"}, r_ab), text("ovac", 0)},
        {gme({"mainnodes_anlg: a", "mainnodes_dgtl: d e", "outvar_anlg: o=y_of_c"},
             "calldce gate name=c a=d y=e x=a\n"),
         text("ova", 0)},
        {gme({"mainnodes_anlg: a b", "outvar_anlg: o=v_of_x"}, "callece r p=a n=b\n"), text("ova", 0)},
    });
}

TEST(gmes_messages, faults_of_a_call_of_an_element) {
    check({
        {body("callece zz name=z\n"), not_in_list("zz", "gmes_ece: eels_name not found")},
        {body("callece r p=a\n"), missing_key("n", "gmes_ece: eels_node_name not found.")},
        {body("callece r p=a n=z\n"), not_in_list("z", "gmes_ece: aux node not found.")},
        {body("callece r p=a n=d\n"), not_in_list("d", "gmes_ece: aux node not found.")},
        {body("callece gate_to_v p=a n=b g=g\n"), missing_key("s", "gmes_ece: eels_dgtl_name not found.")},
        {body("callece gate_to_v p=a n=b g=g s=a\n"), not_in_list("a", "gmes_ece: aux node (digital) not found.")},
        {body("callece gate_to_v p=a n=b s=d\n"), missing_key("g", "gmes_ece: eels_vr_name not found.")},
        {body("callece gate_to_v p=a n=b s=d g=a\n"), not_in_list("a", "gmes_ece: aux vr not found.")},
        {body(r_ab + "callece sense p=a n=b cn=a br=ra\n"), missing_key("cp", "gmes_ece: eels_in_name not found.")},
        {body(r_ab + "callece sense p=a n=b cp=z cn=a br=ra\n"),
         not_in_list("z", "gmes_ece: ind. node of an eels not found.")},
        {body(r_ab + "callece sense p=a n=b cp=a cn=a\n"), missing_key("br", "gmes_ece: eels_ib_name not found.")},
        {body(r_ab + "callece sense p=a n=b cp=a cn=a br=rz\n"),
         not_in_list("rz", "gmes_ece: ind. branch of an eels not found.")},
        {body(r_ab + "callgce lag name=l x=g y=h\ncallece sense p=a n=b cp=a cn=a br=l\n"),
         not_in_list("l", "gmes_ece: ind. branch of an eels not found.")},
        {body("callece mix a=a s=d g=g\n"),
         "gmes_ece: i_eels=3, nxvr=1\n  xvars are not allowed for ece coming from gme\n"},
        {body("callece r p=a n=b rr=5\n"), "gmes_ece: some word has not been ticked.\n    word: rr\n"},
        {body("callece r p=a n=b r=5 r=6\n"), "gmes_ece: some word has not been ticked.\n    word: r\n"},
        {body("callece src p=a n=b u2=6\n"), "gmes_ece: some word has not been ticked.\n    word: u2\n"},
        {body("callece r model=m p=a n=b\n"), not_in_list("m", "gmes_ece: model name not found (gmmece).")},
        {body("ecemodel name=m type=src u=1\ncallece r model=m p=a n=b\n"),
         "gmes_ece: model_type does not match ece type.\n  model_type=src\n  ece type=r\n  Halting...\n"},
        {gme({"mainnodes_anlg: a b", "outvar_anlg: o=zz_of_ra"}, r_ab),
         not_in_list("zz", "gmes_ece: outvar (analog) name not found.")},
        {gme({"mainnodes_anlg: a b", "outvar_ac: o=v_of_ra"}, r_ab),
         not_in_list("v", "gmes_ece: outvar (ac) name not found.")},
        {body("callece r p=a n=b r=ra\n"),
         "check double string: <ra>\n  (brackets are not part of the string)\n  Halting...\n"},
    });
}

TEST(gmes_messages, faults_of_digital_and_general_calls) {
    check({
        {body("calldce zz\n"), not_in_list("zz", "gmes_dce: dels_name not found")},
        {body("calldce gate a=d x=a\n"), missing_key("y", "gmes_dce: dels_node_name not found.")},
        {body("calldce gate a=d y=a x=a\n"), not_in_list("a", "gmes_dce: aux node (digital) not found.")},
        {body("calldce gate a=d y=e\n"), missing_key("x", "gmes_dce: dels_anlg_name not found.")},
        {body("calldce gate a=d y=e x=d\n"), not_in_list("d", "gmes_dce: aux node not found.")},
        {body("calldce gate a=d y=e x=a tt=5\n"), "gmes_dce: some word has not been ticked.\n    word: tt\n"},
        {body("calldce gate a=d y=e x=a model=m\n"), not_in_list("m", "gmes_dce: model name not found (gmmdce).")},
        {body("calldce gate a=d y=e x=a st=0.5\n"),
         "check integer string: <0.5>\n  (brackets are not part of the string)\n  Halting...\n"},
        {gme({"mainnodes_anlg: a", "mainnodes_dgtl: d e", "outvar_dgtl: o=z_of_c"},
             "calldce gate name=c a=d y=e x=a\n"),
         not_in_list("z", "gmes_dce: outvar (digital) name not found.")},
        {body("callgce zz\n"), not_in_list("zz", "gmes_gce: gels_name not found")},
        {body("callgce lag x=g\n"), missing_key("y", "gmes_gce: gels_vr_name not found.")},
        {body("callgce lag x=g y=d\n"), not_in_list("d", "gmes_gce: aux vr not found.")},
        {body("callgce lag x=g y=h kk=5\n"), "gmes_gce: some word has not been ticked.\n    word: kk\n"},
        {body("callgce lag x=g y=h model=m\n"), not_in_list("m", "gmes_gce: model name not found (gmmgce).")},
        {body("callgce with_x\n"), "gmes_gce: i_gels=1, nxvr=2\n  xvars are not allowed for gce coming from gme\n"},
    });
}

TEST(gmes_messages, faults_of_a_call_of_a_mixed_composite) {
    const std::string half =
        gme({"gme name=half", "mainnodes_anlg: a b", "mainnodes_dgtl: d e", "main_var: g h", "rparms: r=1",
             "outvar_anlg: u=v_of_ra", "outvar_dgtl: q=dvar_of_d", "outvar_ac: s=nodev_of_a"},
            "callece r name=ra p=a n=b r=r\ncallgce lag x=g y=h\ncalldce gate a=d y=e x=a\n");
    const std::string all = "callgme half name=h a=a b=b d=d e=e g=g h=h ";
    const auto with_output = [&](const std::string& l) {
        lines replaced = names;
        replaced.push_back(l);
        return half + gme(replaced, all + "\n");
    };
    check({
        {body("callgme zz\n"), not_in_list("zz", "gmes_gmes_1: gmes_name not found")},
        {body("callgme x\n"), not_in_list("x", "gmes_gmes_1: gmes_name not found")},
        {body("callgme half\n") + half, not_in_list("half", "gmes_gmes_1: gmes_name not found")},
        {half + body("callgme half a=a d=d e=e g=g h=h\n"),
         missing_key("b", "gmes_gmes: gmes2 analog node name not found.")},
        {half + body("callgme half a=a b=z d=d e=e g=g h=h\n"),
         not_in_list("z", "gmes_gmes: aux node (analog) not found, check gme library")},
        {half + body("callgme half a=a b=b d=d g=g h=h\n"),
         missing_key("e", "gmes_gmes: gmes2 digital node name not found.")},
        {half + body("callgme half a=a b=b d=d e=a g=g h=h\n"),
         not_in_list("a", "gmes_gmes: aux node (digital) not found, check gme library")},
        {half + body("callgme half a=a b=b d=d e=e h=h\n"), missing_key("g", "gmes_gmes: gmes2 var name not found.")},
        {half + body("callgme half a=a b=b d=d e=e g=a h=h\n"),
         not_in_list("a", "gmes_gmes: aux var not found, check gme library")},
        {with_output("outvar_anlg: o=z_of_h"), not_in_list("z", "gmes_gmes: outvar (analog) name not found.")},
        {with_output("outvar_anlg: o=q_of_h"), not_in_list("q", "gmes_gmes: outvar (analog) name not found.")},
        {with_output("outvar_dgtl: o=u_of_h"), not_in_list("u", "gmes_gmes: outvar (digital) name not found.")},
        {with_output("outvar_ac: o=u_of_h"), not_in_list("u", "gmes_gmes: outvar (ac) name not found.")},
        {half + body(all + "model=m\n"), not_in_list("m", "gmes_gmes: model name not found (gmmgme).")},
        {half + gme({"gme name=other", "rparms: r=1"}) + body("gmemodel name=m type=other r=2\n" + all + "model=m\n"),
         "gmes_gmes: model_type does not match gmes2 type.\n  model_type=other\n  gmes2 type=half\n  Halting...\n"},
        {half + body(all + "rr=5\n"),
         "gmes_gmes: some word has not been ticked.\n    word: rr\n    Calling gme is x\n    Halting...\n"},
        {gme({"gme name=half", "rparms: r=1", "rparms_derived: r2=$((r)*(2))"}) + body("callgme half name=h\n"),
         "gmes_gmes: gmes2 cannot have derived rparms.\n  gmes2_name=half\n  Halting...\n"},
    });
}

TEST(gmes_messages, faults_of_model_lines_and_of_the_end) {
    const std::string ecemodel = "ecemodel name=m type=r r=1";
    check({
        {body("ecemodel name=m type=r\n"),
         "gmes_class: nw_s1=5 is too small.\n  Check ecemodel statement. Halting...\n"},
        {body(ecemodel + " k\n"), "gmes_class: k_rem is not zero (gmmece). Halting...\n"},
        {body("gmemodel name=m type=r r=1 k\n"), "gmes_class: k_rem is not zero (gmmgme). Halting...\n"},
        {body("ecemodel nam=m type=r r=1\n"), wrong_keyword("nam", "name", "expect name here, check gme library")},
        {body("dcemodel name=m typ=r r=1\n"), wrong_keyword("typ", "type", "expect type here, check gme library")},
        {body(r_ab + ecemodel + "\n"), wrong_keyword("ecemodel", "endgme", "gmes_class: expect endgme here.")},
        {body("callxce zz\n"), wrong_keyword("callxce", "endgme", "gmes_class: expect endgme here.")},
    });
}

TEST(gmes_messages, twenty_models_of_each_kind_are_the_most) {
    for (const std::string kind : {"dce", "ece", "gce", "gme"}) {
        std::string models;
        for (int i = 0; i < 20; ++i) models += kind + "model name=m type=r r=1\n";
        EXPECT_EQ(read_mixed_text(body(models)).n(), 1) << kind;
        EXPECT_HALT(read_mixed_text(body(models + kind + "model name=m type=r r=1\n")),
                    too_many(21, 20, "gmes_class: gmm" + kind + " is too large."));
    }
}

TEST(gmes_messages, two_hundred_calls_with_names_are_the_most) {
    std::string calls;
    for (int i = 0; i < 200; ++i) calls += "callece r name=r" + std::to_string(i) + " p=a n=b\n";
    EXPECT_EQ(read_mixed_text(body(calls)).be.n_be(0), 200);
    EXPECT_EQ(read_mixed_text(body(calls + "callece r p=a n=b\ncallece r name=r7 p=a n=b\n")).be.n_be(0), 202);
    EXPECT_HALT(read_mixed_text(body(calls + r_ab)), "gmes_ece: nbr is too large! Halting..\n");
}

TEST(gmes_messages, calls_that_double_at_each_level_stop_before_memory_does) {
    std::string all = gme({"gme name=g0", "mainnodes_anlg: a b"}, r_ab + "callece r p=a n=b\n");
    for (int i = 1; i < 40; ++i) {
        const std::string call = "callgme g" + std::to_string(i - 1) + " a=a b=b\n";
        all += gme({"gme name=g" + std::to_string(i), "mainnodes_anlg: a b"}, call + call);
    }
    EXPECT_HALT(read_mixed_text(all), too_many(131070, 100000, "gmes_class: n_ttl is too large."));
}

}  // namespace
