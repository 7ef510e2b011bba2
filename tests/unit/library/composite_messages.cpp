// What the reader of composites says about wrong files, and its capacities.
#include <gtest/gtest.h>

#include "halt_throws.h"
#include "library_texts.h"

namespace {

struct fault {
    std::string text;
    std::string console;
};
void check(const std::vector<fault>& faults) {
    for (const fault& f : faults) {
        SCOPED_TRACE(f.text);
        EXPECT_HALT(read_composite_text(f.text), f.console);
    }
}

const lines ab = {"mainnodes: a b"};
const std::string r_ab = "ebe type=r name=r1 p=a n=b\n";
// The standard composite with this body; its nodes are connected.
std::string body(const std::string& statements) { return ece(ab, r_ab + statements); }
std::string body_ac(const std::string& statements, const lines& replaced = {}) {
    return ece(ab, r_ab, replaced, statements);
}

TEST(eels_messages, a_missing_line_names_itself_without_its_colon) {
    for (std::size_t i = 1; i < ece_header.size(); ++i) {
        const std::string wanted = ece_header[i];
        const std::string found = i + 1 < ece_header.size() ? ece_header[i + 1] : "end_dc";
        const std::string bare = wanted.back() == ':' ? wanted.substr(0, wanted.size() - 1) : wanted;
        const std::string name = wanted.substr(0, wanted.find(' '));
        EXPECT_HALT(read_composite_text(edited(ece_header, {}, name) + edited(ece_middle, {}) + "end_ac\nendece\n"),
                    wrong_keyword(found, name, "expect " + bare + " here, check ece library"));
    }
}

TEST(eels_messages, a_missing_line_of_the_small_signal_half_names_itself_as_it_is_written) {
    const std::string next[] = {"outvar_ac:", "ind_nodes_ac:", "ind_branches_ac:", "end_ac"};
    const std::string all[] = {"begin_ac", "outvar_ac:", "ind_nodes_ac:", "ind_branches_ac:"};
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_HALT(read_composite_text(edited(ece_header, {}) + edited(ece_middle, {}, all[i]) + "end_ac\nendece\n"),
                    wrong_keyword(next[i], all[i], "expect " + all[i] + " here, check ece library"));
}

TEST(eels_messages, faults_of_the_header) {
    check({
        {"stray\n", wrong_keyword("stray", "ece", "eels_class: ece not found. Debug 1.")},
        {"ece x\n", wrong_keyword("x", "name", "expect name here, check ece library")},
        {ece({"outvar: a"}), "eels_class: k_rem is not zero (ov). Halting...\n"},
        {ece({"bias: a"}), "eels_class: k_rem is not zero (bias). Halting...\n"},
        {ece({"stparms: a"}), "eels_class: k_rem is not zero (sv). Halting...\n"},
        {ece({"igparms: a"}), "eels_class: k_rem is not zero (ig). Halting...\n"},
        {ece({"iparms: a"}), "eels_class: k_rem is not zero (iprm). Halting...\n"},
        {ece({"sparms: a"}), "eels_class: k_rem is not zero (sprm). Halting...\n"},
        {ece({"rparms: a"}), "eels_class: k_rem is not zero (rprm). Halting...\n"},
        {ece({"rparms_derived: a"}), "eels_class: k_rem is not zero (rprm_derived).\n   Halting...\n"},
        {ece({"sparms: a " + long_word(51)}),
         "eels_class: nchr_s2=51 is too large. Halting...\n  sparm string is too long.\n"},
        {ece({"outvar: o=i"}),
         "find_sub_word: _of_ was not found.\nMessage from calling routine:\n_of_ not found (ov), check ece library\n"},
        {ece({"bias: o=i"}),
         "find_sub_word: _of_ was not found.\nMessage from calling routine:\n_of_ not found (bias), check ece "
         "library\n"},
        {ece({"outvar: o=nodev_of_z"}), not_in_list("z", "eels_class: outvar node name not found")},
        {ece({"rparms_derived: a=5"}),
         "eels_class: check this string: 5\n  An expression was expected here. Halting...\n"},
        {ece({"rparms_derived: a=$(tan(1))"}),
         "eels_class: unknown function in\n   derived rparms.\n   string is $(tan(1))\n"},
        {ece({"rparms_derived: a=$((1)%(2))"}),
         "eels_class: unknown operation in\n   derived rparms.\n   string is $((1)%(2))\n"},
        {ece({"rparms: b=1", "rparms_derived: a=$((b)+(a))"}),
         "check double string: <a>\n  (brackets are not part of the string)\n  Halting...\n"},
    });
}

TEST(eels_messages, faults_of_model_lines) {
    check({
        {ece(ab, "ebemodel name=m type=r r=1 k\n" + r_ab), "eels_class: k_rem is not zero (emebe, DC). Halting...\n"},
        {ece(ab, "ebemodel name=m type=r\n" + r_ab),
         "eels_class: nw_s1=5 is too small.\n  Check ebemodel (DC) statement. Halting...\n"},
        {ece(ab, "ecemodel name=m type=r\n" + r_ab),
         "eels_class: nw_s1=5 is too small.\n  Check ecemodel statement (DC). Halting...\n"},
        {ece(ab, "ecemodel name=m type=r a b c\n" + r_ab), "eels_class: k_rem is not zero (emece, DC). Halting...\n"},
        {body_ac("ebemodel name=m type=r r=1 k\n"), "eels_class: k_rem is not zero (emebe, AC). Halting...\n"},
        {body_ac("ebemodel name=m type=r\n"),
         "eels_class: nw_s1=5 is too small.\n  Check ebemodel (AC) statement. Halting...\n"},
        {ece(ab, "ebemodel nam=m type=r r=1\n" + r_ab),
         wrong_keyword("nam", "name", "expect name here, check ece library")},
        {body("ebemodel name=m type=r r=1\n"), "eels_class: end_dc not found. Halting...\n"},
    });
}

TEST(eels_messages, faults_of_an_element_statement) {
    const lines all = {"mainnodes: a b", "digital_nodes: d", "main_var: g", "xvar: x"};
    check({
        {body("ebe p=a n=b\n"), "eels_ebe: type not found. Halting..\n"},
        {body("ebe type=zz p=a n=b\n"), not_in_list("zz", "eels_ebe: ebes_name not found")},
        {body("ebe type=r model=m p=a n=b\n"), not_in_list("m", "eels_ebe: model name not found (emebe).")},
        {ece(ab, "ebemodel name=m type=src u=1\n" + r_ab + "ebe type=r model=m p=a n=b\n"),
         "eels_ebe: model_type does not match ebe type.\n  model_type=src\n  ebe type=r\n  Halting...\n"},
        {body("ebe type=r p=a\n"), not_in_list("n", "eels_ebe: ebes_node_name not found.", "find_word_EO_2")},
        {body("ebe type=r p=a n=z\n"), not_in_list("z", "eels_ebe: aux node not found.")},
        {ece(all, r_ab + "ebe type=mix a=a\n"),
         not_in_list("s", "eels_ebe: ebes_dgtl_name not found.", "find_word_EO_2")},
        {ece(all, r_ab + "ebe type=mix a=a s=z\n"), not_in_list("z", "eels_ebe: eels_dgtl_name not found.")},
        {ece(all, r_ab + "ebe type=mix a=a s=d\n"),
         not_in_list("g", "eels_ebe: ebes_vr_name not found.", "find_word_EO_2")},
        {ece(all, r_ab + "ebe type=mix a=a s=d g=z\n"), not_in_list("z", "eels_ebe: eels_vr_name not found.")},
        {ece(all, r_ab + "ebe type=mix a=a s=d g=g\n"),
         not_in_list("xg", "eels_ebe: ebes_xvr_name not found.", "find_word_EO_2")},
        {ece(all, r_ab + "ebe type=mix a=a s=d g=g xg=z\n"), not_in_list("z", "eels_ebe: eels_xvr_name not found.")},
        {body("ebe type=sense p=a n=b\n"), not_in_list("cp", "eels_ebe: ebes_in_name not found.", "find_word_EO_2")},
        {body("ebe type=sense p=a n=b cp=z cn=a\n"), not_in_list("z", "eels_ebe: eels node name not found.")},
        {body("ebe type=sense p=a n=b cp=a cn=a\n"),
         not_in_list("br", "eels_ebe: ebes_ib_name not found.", "find_word_EO_2")},
        {body("ebe type=r p=a n=b rr=5\n"),
         "eels_ebe: some word has not been ticked.\n    word: rr\n    Calling ece is x\n    Halting...\n"},
        {body("ebe type=r p=a n=b r=5 r=6\n"),
         "eels_ebe: some word has not been ticked.\n    word: r\n    Calling ece is x\n    Halting...\n"},
        {body("ebe type=r p=a n=b trailing\n"),
         "eels_ebe: some word has not been ticked.\n    word: trailing\n    Calling ece is x\n    Halting...\n"},
        {body("ebe type=r p=a n=b label=" + long_word(51) + "\n"),
         "eels_class: nchr_s2=51 is too large. Halting...\n  sparm string is too long.\n"},
        {body("ebe type=r p=a n=b r=five\n"),
         "check double string: <five>\n  (brackets are not part of the string)\n  Halting...\n"},
        {body("something\n"), "eels_class: end_dc not found. Halting...\n"},
        {"ece name=x\nbegin_dc\n", "pick_word_1: index_word is too large! Halting..\n  chr_in = \n  index_word = 0\n"},
    });
}

TEST(eels_messages, faults_of_outputs) {
    check({
        {ece({"mainnodes: a b", "outvar: o=v(p)_of_r1"}, r_ab),
         not_in_list("v", "eels_ebe: expect cur in outvar statement.")},
        {ece({"mainnodes: a b", "outvar: o=cur(z)_of_r1"}, r_ab),
         not_in_list("z", "eels_ebe: node in cur(node) not found.")},
        {ece({"mainnodes: a b", "outvar: o=z_of_r1"}, r_ab), not_in_list("z", "eels_ebe: expect auxvar name here.")},
        {ece({"mainnodes: a b", "bias: o=z_of_r1"}, r_ab), not_in_list("z", "eels_ebe: expect auxvar name here.")},
        {ece({"mainnodes: a b", "outvar: o=r_of_r1 q=r_of_r2"}, r_ab),
         "eels_class: some outvar is not assigned?\n  i_ov = 1\n  Check ece library. Halting..\n"},
        {ece({"mainnodes: a b", "bias: o=r_of_r2"}, r_ab),
         "eels_class: some bias variable is not assigned?\n  i_ov = 0\n  Check ece library. Halting..\n"},
        {ece({"mainnodes: a b", "auxnodes: c"}, r_ab),
         "eels_class: a node not assigned? check ece library\n  eels name is x\n  node number is 2\n"},
        {ece(ab), "eels_class: a node not assigned? check ece library\n  eels name is x\n  node number is 0\n"},
    });
}

TEST(eels_messages, faults_of_a_call) {
    const std::string callee =
        ece({"ece name=in", "mainnodes: a b", "ind_nodes: u", "ind_branches: q", "digital_nodes: d", "main_var: g",
             "xvar: x", "outvar: o=r_of_r1", "bias: o=r_of_r1"},
            r_ab);
    const auto call = [&](const std::string& words, const lines& header = {}) {
        lines all = {"mainnodes: a b", "digital_nodes: d", "main_var: g", "xvar: x", "ind_nodes: u"};
        for (const std::string& l : header) all.push_back(l);
        return callee + ece(all, r_ab + "callece in " + words + "\n");
    };
    const std::string nodes = "a=a b=b ";
    const std::string to_x = nodes + "d=d g=g x=x ";
    check({
        {ece(ab, r_ab + "callece in a=a b=b\n") + callee, not_in_list("in", "eels_eels: eels_name not found")},
        {ece(ab, r_ab + "callece x a=a b=b\n"), not_in_list("x", "eels_eels: eels_name not found")},
        {ece(ab, r_ab, {}, "callece in a=a b=b\n"), not_in_list("in", "eels_eels_ac: eels_name not found")},
        {call("model=m " + nodes), not_in_list("m", "eels_eels: model name not found (emece).")},
        {callee + ece(ab, "ecemodel name=m type=other r=1\n" + r_ab + "callece in model=m a=a b=b\n"),
         "eels_eels: model_type does not match eels2 type.\n  model_type=other\n  eels2 type=in\n  Halting...\n"},
        {call("a=a"), not_in_list("b", "eels_eels: eels2 node name not found.", "find_word_EO_2")},
        {call("a=a b=z"), not_in_list("z", "eels_eels: aux node not found, check ece library")},
        {call(nodes), not_in_list("d", "eels_eels: eels2 dgtl name not found.", "find_word_EO_2")},
        {call(nodes + "d=z"), not_in_list("z", "eels_eels: dgtl name not found.")},
        {call(nodes + "d=d"), not_in_list("g", "eels_eels: eels2 vr name not found.", "find_word_EO_2")},
        {call(nodes + "d=d g=z"), not_in_list("z", "eels_eels: vr name not found.")},
        {call(nodes + "d=d g=g"), not_in_list("x", "eels_eels: eels2 xvr name not found.", "find_word_EO_2")},
        {call(nodes + "d=d g=g x=z"), not_in_list("z", "eels_eels: xvr name not found.")},
        {call(to_x), not_in_list("u", "eels_eels: ind. node name not found.", "find_word_EO_2")},
        {call(to_x + "u=z"), not_in_list("z", "eels_eels: eels1nd_name not found (check ind nodes).")},
        {call(to_x + "u=u"), not_in_list("q", "eels_eels: ind. branch name not found.", "find_word_EO_2")},
        {call(to_x + "u=u q=z"), not_in_list("z", "eels_eels: eels1_brname not found (check ind branches).")},
        {call(to_x + "u=u q=r1 zz=1"),
         "eels_eels: some word has not been ticked.\n    word: zz\n    Calling ece is x\n    Halting...\n"},
        {call(to_x + "u=u q=r1 name=c", {"outvar: w=zz_of_c"}), not_in_list("zz", "eels_eels: outvar name not found.")},
        {call(to_x + "u=u q=r1 name=c", {"bias: w=zz_of_c"}), not_in_list("zz", "eels_eels: bias name not found.")},
        {ece({"ece name=in", "rparms_derived: d=$((1)+(2))"}) + ece({}, "callece in\n"),
         "eels_eels: eels2 cannot have derived rparms.\n  eels2_name=in\n  Halting...\n"},
    });
}

TEST(eels_messages, faults_of_the_small_signal_half) {
    const std::string no_ac = ece({"ece name=in", "mainnodes: a b"}, r_ab);
    const std::string with_ac =
        ece({"ece name=in allow_ac=yes", "mainnodes: a b"}, r_ab, {}, "ebe_ac type=r p=a n=b\n");
    const std::string bias = "ebe_ac type=bias name=q p=a n=b\n";
    check({
        {body_ac("", {"outvar_ac: o"}), "eels_class: k_rem is not zero (ovac). Halting...\n"},
        {body_ac("", {"outvar_ac: o=i"}),
         "find_sub_word: _of_ was not found.\nMessage from calling routine:\n_of_ not found (ovac), check ece "
         "library\n"},
        {body_ac("", {"outvar_ac: o=cur(p)_of_q"}),
         "eels_class: some outvar (ac) is not assigned?\n  Check ece library. Halting..\n"},
        {body_ac(bias, {"outvar_ac: o=v(p)_of_q"}), not_in_list("v", "eels_ebe_ac: expect cur in outvar statement.")},
        {body_ac(bias, {"outvar_ac: o=cur(z)_of_q"}), not_in_list("z", "eels_ebe_ac: node in cur(node) not found.")},
        {body_ac(bias, {"outvar_ac: o=g_of_q"}), not_in_list("g", "eels_ebe_ac: expect auxvar name here.")},
        {body_ac("ebe_ac type=r p=a n=b zz=1\n"),
         "eels_ebe_ac: some word has not been ticked.\n    word: zz\n    Halting...\n"},
        {body_ac("ebe_ac type=r p=a n=b ac_parm_be=r1\n"),
         "eels_ebe_ac: some word has not been ticked.\n    word: ac_parm_be\n    Halting...\n"},
        {body_ac("ebe_ac type=bias p=a n=b ac_parm_be=zz\n"), not_in_list("zz", "eels_ebe_ac: ac_parm_be not found")},
        {body_ac("ebe_ac type=src p=a n=b\n"), not_in_list("src", "eels_ebe_ac: ebes_name not found")},
        {no_ac + ece(ab, r_ab + "callece in a=a b=b\n", {}, "callece in a=a b=b\n"),
         "eels_eels_ac: AC not allowed by one of the eelements.\n    element type is in\n    Halting...\n"},
        {with_ac + ece(ab, r_ab, {}, "callece in a=a b=b\n"), not_in_list("in", "eels_eels_ac: name not found")},
        {with_ac + ece(ab, r_ab + "callece in name=c a=a b=b\n", {}, "callece in name=d a=a b=b\n"),
         not_in_list("d", "eels_eels_ac: name not found")},
        {with_ac + ece(ab, r_ab + "callece in a=a b=b\n", {}, "callece in a=a b=b\ncallece in a=a b=b\n"),
         not_in_list("in", "eels_eels_ac: name not found")},
        {with_ac + ece(ab, r_ab + "callece in a=a b=b\n", {}, "callece in a=a b=b zz=1\n"),
         "eels_eels_ac: some word has not been ticked.\n    word: zz\n    Calling ece is x\n    Halting...\n"},
        {body_ac(bias + "acparm_map: 0\n"),
         "pick_word_1: index_word is too large! Halting..\n  chr_in = acparm_map:0\n  index_word = 2\n"},
        {body_ac(bias + "acparm_map: 2 1\n"),
         "eels_class: acparm_map: element parameter = 2 is out of range.\n  eels name is x\n  Halting...\n"},
        {body_ac(bias + "acparm_map: 0 1\n"),
         "eels_class: acparm_map: composite parameter = 1 is out of range.\n  eels name is x\n  Halting...\n"},
        {body_ac("acparm_map: 0 1\n"),
         "eels_class: acparm_map: must stand behind an ebe_ac statement.\n  eels name is x\n  Halting...\n"},
        {body_ac("ebe type=r p=a n=b\n"), "eels_class: end_ac not found. Halting...\n"},
        {edited(ece_header, {}) + edited(ece_middle, {}) + "end_ac\nend\n",
         wrong_keyword("end", "endece", "eels_class: expect endece here.")},
        {edited(ece_header, {}) + "end_dc\nC:\nend_ac\nendece\n", "eels_class: endfortran not found. Halting...\n"},
    });
}

// ---- capacities

TEST(eels_limits, the_50th_entry_is_one_too_many) {
    std::string text;
    for (int i = 0; i < 49; ++i) text += ece({});
    EXPECT_EQ(read_composite_text(text).n(), 49);
    EXPECT_HALT(read_composite_text(text + ece({})), too_many(51, 50, "eels_class: n is too large! Debug 2."));
}

struct list_limit {
    std::string keyword, behind, tag;
    int max_entry;  // 0: none
    std::string entry_text;
    int max_words, max_chars;  // of the library; words 0: none
};

TEST(eels_limits, every_list_takes_its_limit_and_not_one_more) {
    const std::string out = "=pwr_elec_of_x";
    const list_limit limits[] = {
        {"outvar:", out, "ov", 50, "n_ov", 500, 25000},
        {"bias:", out, "bias", 50, "n_bias", 300, 6000},
        {"stparms:", "=1", "sv", 0, "", 100, 2000},
        {"igparms:", "=1", "ig", 0, "", 40, 800},
        {"ind_nodes:", "", "in", 0, "", 40, 800},
        {"ind_branches:", "", "ib", 0, "", 20, 400},
        {"digital_nodes:", "", "dgtl", 50, "n_dgtl", 0, 800},
        {"main_var:", "", "vr", 50, "n_vr", 0, 800},
        {"xvar:", "", "xvr", 50, "n_xvr", 0, 800},
        {"iparms:", "=1", "iprm", 0, "", 200, 4000},
        {"sparms:", "=1", "sprm", 0, "", 100, 2000},
        {"rparms:", "=1", "rprm", 0, "", 2000, 40000},
        {"rparms_derived:", "=$((1)+(1))", "rprm", 0, "", 2000, 40000},
    };
    for (const list_limit& l : limits) {
        SCOPED_TRACE(l.keyword);
        const auto entry = [&](int n) { return ece({l.keyword + many("w", n, l.behind)}); };
        if (l.max_entry > 0) {
            EXPECT_EQ(read_composite_text(entry(l.max_entry)).n(), 1);
            EXPECT_HALT(read_composite_text(entry(l.max_entry + 1)),
                        too_many(l.max_entry + 1, l.max_entry, "eels_class: " + l.entry_text + " is too large!"));
        }
        if (l.max_words > 0) {
            std::string full;
            const int step = l.max_entry > 0 ? l.max_entry : l.max_words;
            for (int n = 0; n < l.max_words; n += step) full += entry(step);
            EXPECT_GE(read_composite_text(full).n(), 1);
            EXPECT_HALT(read_composite_text(full + entry(1)),
                        too_many(l.max_words + 1, l.max_words, "eels_class: n_ttl" + l.tag + " is too large!"));
        }
        const auto word = [&](int n) { return ece({l.keyword + " " + long_word(n) + l.behind}); };
        EXPECT_EQ(read_composite_text(word(l.max_chars)).n(), 1);
        EXPECT_HALT(read_composite_text(word(l.max_chars + 1)),
                    too_many(l.max_chars + 1, l.max_chars, "eels_class: n_ttl" + l.tag + "chr is too large!"));
    }
}

TEST(eels_limits, lists_of_the_small_signal_half) {
    EXPECT_HALT(read_composite_text(ece({}, "", {"ind_nodes_ac:" + many("w", 41)})),
                too_many(41, 40, "eels_class: n_ttlinac is too large!"));
    EXPECT_HALT(read_composite_text(ece({}, "", {"ind_branches_ac:" + many("w", 21)})),
                too_many(21, 20, "eels_class: n_ttlibac is too large!"));
    EXPECT_HALT(read_composite_text(ece({}, "", {"outvar_ac:" + many("w", 501, "=pwr_elec_ac_of_x")})),
                too_many(501, 500, "eels_class: n_ttlovac is too large!"));
    EXPECT_HALT(read_composite_text(ece({}, "", {"ind_nodes_ac: " + long_word(801)})),
                too_many(801, 800, "eels_class: n_ttlinacchr is too large!"));
}

std::string resistors(const std::string& keyword, int n, const std::string& more = "") {
    std::string all;
    for (int i = 0; i < n; ++i) all += keyword + " type=r p=a n=b" + more + "\n";
    return all;
}

TEST(eels_limits, nodes_of_an_entry) {
    EXPECT_HALT(read_composite_text(ece({"auxnodes:" + many("w", 51)})),
                too_many(51, 50, "eels_class: nend is too large!"));
    EXPECT_HALT(read_composite_text(ece({"mainnodes:" + many("w", 301)})),
                too_many(301, 300, "eels_class: ttlnd_old is too large!"));
    EXPECT_HALT(read_composite_text(ece({"mainnodes: " + long_word(2001), "auxnodes: " + long_word(2000)})),
                too_many(4001, 4000, "eels_class: n_ttlndchr is too large!"));
}

TEST(eels_limits, internal_nodes_of_calls_count_with_the_callers) {
    const std::string in = ece({"ece name=in", "mainnodes: a", "auxnodes: b"}, "ebe type=r p=a n=b\n");
    std::string calls;
    for (int i = 0; i < 50; ++i) calls += "callece in a=a\n";
    EXPECT_EQ(read_composite_text(in + ece({"mainnodes: a"}, calls)).n_ttlnd(1), 51);
    EXPECT_HALT(read_composite_text(in + ece({"mainnodes: a"}, calls + "callece in a=a\n")),
                too_many(51, 50, "eels_eels: nend is too large!"));
}

TEST(eels_limits, elements_of_the_library_calls_expanded) {
    const std::string ten = ece({"ece name=ten", "mainnodes: g"}, [] {
        std::string all;
        for (int i = 0; i < 10; ++i) all += "ebe type=ground_dummy_1 g=g\n";
        return all;
    }());
    std::string calls;
    for (int i = 0; i < 29; ++i) calls += "callece ten g=g\n";
    EXPECT_EQ(read_composite_text(ten + ece({"mainnodes: g"}, calls)).be.i_be.size(), 300u);
    EXPECT_HALT(read_composite_text(ten + ece({"mainnodes: g"}, calls + "ebe type=ground_dummy_1 g=g\n")),
                too_many(301, 300, "eels_class: n_be_ttl is too large."));
    EXPECT_HALT(read_composite_text(ece(ab, r_ab, {}, resistors("ebe_ac", 301))),
                too_many(301, 300, "eels_class: n_beac_ttl is too large."));
}

TEST(eels_limits, totals_over_the_elements) {
    EXPECT_EQ(read_composite_text(ece(ab, resistors("ebe", 200))).be.i_be.size(), 200u);
    EXPECT_HALT(read_composite_text(ece(ab, resistors("ebe", 201))),
                too_many(201, 200, "eels_ebe: n_be_ttlsprm too large"));
    const auto mixes = [](int n) {
        std::string all;
        for (int i = 0; i < n; ++i) all += "ebe type=mix a=a s=d g=g xg=x\n";
        return ece({"mainnodes: a", "digital_nodes: d", "main_var: g", "xvar: x"}, all);
    };
    EXPECT_EQ(read_composite_text(mixes(100)).be.i_be.size(), 100u);
    EXPECT_HALT(read_composite_text(mixes(101)), too_many(101, 100, "eels_ebe: n_be_ttldgtl is too large!"));
    std::string sensing;
    for (int i = 0; i < 51; ++i) sensing += "ebe type=sense p=a n=b cp=a cn=b br=r1\n";
    EXPECT_HALT(read_composite_text(body(sensing)), too_many(102, 100, "eels_ebe: n_be_ttlin is too large!"));
    std::string sources;
    for (int i = 0; i < 251; ++i) sources += "ebe type=src p=a n=b\n";
    EXPECT_HALT(read_composite_text(ece(ab, sources)), too_many(502, 500, "eels_ebe: n_be_ttlnd is too large!"));
    const std::string in = ece({"ece name=in", "mainnodes: a b"}, resistors("ebe", 150));
    EXPECT_HALT(read_composite_text(in + ece(ab, "callece in a=a b=b\n")),
                too_many(600, 500, "eels_eels: n_be_ttlnd is too large!"));
}

TEST(eels_limits, named_branches_and_forward_references_of_an_entry) {
    const auto named = [](int n) {
        std::string all;
        for (int i = 0; i < n; ++i) all += "ebe type=src name=s" + std::to_string(i) + " p=a n=b\n";
        return ece(ab, all);
    };
    EXPECT_EQ(read_composite_text(named(200)).be.i_be.size(), 200u);
    EXPECT_HALT(read_composite_text(named(201)), "eels_ebe: nbr is too large! Halting..\n");
    std::string named_ac;
    for (int i = 0; i < 201; ++i) named_ac += "ebe_ac type=r name=s" + std::to_string(i) + " p=a n=b\n";
    EXPECT_HALT(read_composite_text(body_ac(named_ac)), "eels_ebe_ac: nbrac is too large! Halting..\n");
    std::string forward;
    for (int i = 0; i < 20; ++i) forward += "ebe type=sense p=a n=b cp=a cn=b br=later\n";
    EXPECT_EQ(read_composite_text(body(forward)).be.ib_flag.data.back(), -2);
    EXPECT_HALT(read_composite_text(body(forward + "ebe type=sense p=a n=b cp=a cn=b br=later\n")),
                too_many(21, 20, "eels_ebe: indbr_temp_nw is too large!"));
}

TEST(eels_limits, model_lines_of_an_entry) {
    const auto models = [](const std::string& keyword, int n) {
        std::string all;
        for (int i = 0; i < n; ++i) all += keyword + " name=m type=r r=1\n";
        return all;
    };
    const auto long_model = [](const std::string& keyword, int key, int value) {
        return keyword + " name=m type=r " + long_word(key) + "=" + long_word(value) + "\n";
    };
    EXPECT_EQ(read_composite_text(ece(ab, models("ebemodel", 20) + models("ecemodel", 20) + r_ab)).n(), 1);
    check({
        {ece(ab, models("ebemodel", 21) + r_ab), too_many(21, 20, "eels_class: emebe is too large (DC).")},
        {ece(ab, models("ecemodel", 21) + r_ab), too_many(21, 20, "eels_class: emece is too large!")},
        {ece(ab, r_ab, {}, models("ebemodel", 21)), too_many(21, 20, "eels_class: emebe is too large (AC).")},
        {ece(ab, long_model("ebemodel", 4001, 1) + r_ab),
         too_many(4001, 4000, "eels_class: n_ttlemebeprm1chr (DC) is too large!")},
        {ece(ab, long_model("ebemodel", 1, 4001) + r_ab),
         too_many(4001, 4000, "eels_class: n_ttlemebeprm2chr (DC) is too large!")},
        {ece(ab, long_model("ecemodel", 4001, 1) + r_ab),
         too_many(4001, 4000, "eels_class: n_ttlemeceprm1chr is too large (DC).")},
        {ece(ab, long_model("ecemodel", 1, 4001) + r_ab),
         too_many(4001, 4000, "eels_class: n_ttlemeceprm2chr is too large (DC).")},
    });
}

}  // namespace
