// What the reader of basic libraries says about wrong files.
#include <gtest/gtest.h>

#include "halt_throws.h"
#include "library_texts.h"

namespace {

struct fault {
    std::string text;
    std::string console;
};

TEST(ebes_messages, a_missing_line_names_the_keyword_found_and_the_one_wanted) {
    for (std::size_t i = 1; i < ebe_header.size(); ++i) {
        const std::string wanted = ebe_header[i].substr(0, ebe_header[i].find(' '));
        const std::string found =
            i + 1 < ebe_header.size() ? ebe_header[i + 1].substr(0, ebe_header[i + 1].find(' ')) : "C:";
        EXPECT_HALT(read_basic(edited(ebe_header, {}, wanted) + "C:\nendebe\n"),
                    wrong_keyword(found, wanted, "expect " + wanted + " here, check ebe library"));
    }
}

TEST(ebac_messages, a_missing_line_names_its_own_library) {
    EXPECT_HALT(read_basic("ebe_ac name=x\nind_nodes:\nendebe_ac\n", ebac_form),
                wrong_keyword("ind_nodes:", "nodes:", "expect nodes: here, check ebe_ac library"));
}

TEST(ebes_messages, faults_of_an_entry) {
    const std::string q = "f_q local_var q v(p)\n";
    const lines one_node = {"nodes: p",           "local_var: q", "aux_var: a",
                            "aux_var_startup: s", "main_var: g",  "no_functions 2"};
    const auto with = [&](const std::string& first, const std::string& second) {
        return ebe(one_node, first + "\n" + second + "\n");
    };
    const fault faults[] = {
        {"stray text\n", wrong_keyword("stray", "ebe", "ebes_class: ebe not found. Debug 1.")},
        {ebe({}) + "stray\n", wrong_keyword("stray", "ebe", "ebes_class: ebe not found. Debug 1.")},
        {ebe({"ebe x"}), wrong_keyword("x", "name", "expect name here, check ebe library")},
        {ebe({"Jacobian: linear"}),
         "ebes_class: expect constant/variable for jacobian.\n  ebes name is: x\n  Halting...\n"},
        {ebe({"Jacobian:"}), "ebes_class: expect constant/variable for jacobian.\n  ebes name is: x\n  Halting...\n"},
        {ebe({"iparms: a"}), "ebes_class: k_rem is not zero (iprm). Halting...\n"},
        {ebe({"sparms: a"}), "ebes_class: k_rem is not zero (sprm). Halting...\n"},
        {ebe({"rparms: a"}), "ebes_class: k_rem is not zero (rprm). Halting...\n"},
        {ebe({"stparms: a"}), "ebes_class: k_rem is not zero (sv). Halting...\n"},
        {ebe({"igparms: a 1 b"}), "ebes_class: k_rem is not zero (ig). Halting...\n"},
        {ebe({"sparms: a " + long_word(51)}),
         "ebes_class: nchr_s2=51 is too large. Halting...\n  sparm string is too long.\n"},
        {ebe({"iparms: a=1.5"}),
         "check integer string: <1.5>\n  (brackets are not part of the string)\n  Halting...\n"},
        {ebe({"nodes: a"}), "ebes_class: n_func < n_nodes. Halting...\n"},
        {ebe({"nodes: a", "no_functions -1"}), "ebes_class: n_func < n_nodes. Halting...\n"},
        {ebe({"nodes: a", "no_functions 1"}, "p v(a)\n"), "ebes_class: expected f_ (1). Halting...\n  s2 = p\n"},
        {ebe({"no_functions 1"}), "ebes_class: expected f_ (2). Halting...\n  s2 = C:\n"},
        {ebe({"no_functions 1"}, "", ""), "ebes_class: expected f_ (2). Halting...\n  s2 = \n"},
        {with("f_p v(x)", q), not_in_list("x", "ebe functions: check v(xx)")},
        {with("f_p volt(x)", q), not_in_list("x", "ebe functions: check volt(xx)")},
        {with("f_p cur(x)", q), not_in_list("x", "ebe functions: check cur(xx)")},
        {with("f_p v()", q), not_in_list("", "ebe functions: check v(xx)")},
        {with("f_p x", q), "ebes_class: something wrong with function declarations.\n  string is x\n  Halting...\n"},
        {with("f_p w(p)", q),
         "ebes_class: something wrong with function declarations.\n  string is w(p)\n  Halting...\n"},
        {with("f_p d_dt", q), "ebes_class: check variables involving d_dt\n"},
        {with("f_p d_dt(q", q), "ebes_class: check variables involving d_dt\n"},
        {with("f_p d_dt(a)", q),
         "ebes_class: check a in the ebe library.\n  trouble with d_dt() (locvar). Halting...\n"},
        {with("f_p v(p)", "f_x x"), "read_ebes: check x in ebe library.\n   (function part)\n   Halting...\n"},
        {with("f_p v(p)", "f_x s"), "read_ebes: check s in ebe library.\n   (function part)\n   Halting...\n"},
        {with("f_p v(p)", "f_x d_dt(q)"), "read_ebes: check q in ebe library.\n   (function part)\n   Halting...\n"},
        {with("f_p v(p)", "f_x d_dt(v(x))"), not_in_list("x", "ebe functions: check v(xx)")},
        {with("f_p v(p)", "f_x startup a"),
         "ebes_class: something wrong with startup functions.\n  string is a\n  Halting...\n"},
        {with("f_p v(p)", "f_x startup v(x)"), not_in_list("x", "ebe functions: check v(xx) (startup)")},
        {with("f_p v(p)", "f_x startup d_dt(a)"),
         "ebes_class: d_dt is not allowd in the\n  mna-startup equations!\n  Check ebe library. Halting...\n"},
        {with("f_p v(p)", "f_x local_var z"),
         not_in_list("z", "ebes_class: locvar not found in function declaration.")},
        {with("f_p v(p)", "f_x local_var q s"),
         "ebes_class: something wrong with locvar functions.\n  string is s\n  Halting...\n"},
        {with("f_p v(p)", "f_x local_var q d_dt(a)"),
         "ebes_class: d_dt is not allowd in the\n  mna-locvar equations!\n  Check ebe library. Halting...\n"},
        {with("f_p d_dt(q)", "f_a a"),
         "read_ebes: one of the KCL equations is\n   using a local_var for which there is no\n   defining equation.\n"},
        {ebe({}, "", "code:\nendebe\n"),
         "check_word_3:\n   word_out is: code:\n   given words are: fortran: C:\n   message from calling routine:\n"
         "   expect fortran:/C: here, check ebe library\n   Halting...\n"},
        {ebe({}, "", "C:\n  ebe\nendebe\n"), "ebes_class: ebe of next ebe before endebe of current ebe? Halting...\n"},
        {ebe({}, "", "C:\n"), "ebes_class: end_dc not found. Halting...\n"},
        {"+ name\n", "next_line: a new line cannot start with +. Halting...\n"},
        {ebe({}) + "+ name\n", "next_line: a new line cannot start with +. Halting...\n"},
    };
    for (const fault& f : faults) {
        SCOPED_TRACE(f.text);
        EXPECT_HALT(read_basic(f.text), f.console);
    }
}

TEST(ebac_messages, faults_of_an_entry) {
    const lines two = {"nodes: p", "aux_var: a", "no_functions 2"};
    const fault faults[] = {
        {"ebe name=r\n", wrong_keyword("ebe", "ebe_ac", "ebac_class: ebe_ac not found. Debug 1.")},
        {ebe_ac(two, "f_p v(x)\nf_a a\n"), not_in_list("x", "ebe (ac) functions: check v(xx)")},
        {ebe_ac(two, "f_p volt(x)\nf_a a\n"), not_in_list("x", "ebe (ac) functions: check volt(xx)")},
        {ebe_ac(two, "f_p cur(x)\nf_a a\n"), not_in_list("x", "ebe (ac) functions: check cur(xx)")},
        {ebe_ac(two, "f_p v(p)\nf_a x\n"),
         "ebac_class: something wrong with function declarations.\n  string is x\n  Halting...\n"},
        {ebe_ac(two, "f_p v(p)\nf_a d_dt(a)\n"),
         "ebac_class: something wrong with function declarations.\n  string is d_dt(a)\n  Halting...\n"},
        {ebe_ac(two, "f_p v(p)\nf_a startup a\n"),
         "ebac_class: something wrong with function declarations.\n  string is startup\n  Halting...\n"},
        {ebe_ac(two, "f_p v(p)\nx a\n"), "ebac_class: expected f_ (2). Halting...\n  s2 = x\n"},
        {ebe_ac({"nodes: p"}), "ebac_class: n_func < n_nodes. Halting...\n"},
        {"ebe_ac name=x\nnodes:\nC:\nebe_ac\n",
         "ebac_class: ebe_ac of next ebe_ac before endebe_ac of current ebe_ac? Halting...\n"},
        {"ebe_ac name=x\nnodes:\nC:\n", "ebac_class: endebe_ac not found. Halting...\n"},
    };
    for (const fault& f : faults) {
        SCOPED_TRACE(f.text);
        EXPECT_HALT(read_basic(f.text, ebac_form), f.console);
    }
}

TEST(ebes_messages, faults_of_code_sections_show_before_those_of_entries) {
    EXPECT_HALT(read_basic(ebe({"rparms: a"}) + ebe({}, "", "C:\n")), "ebes_class: end_dc not found. Halting...\n");
}

TEST(code_section, is_raw_text_that_a_run_does_not_look_at) {
    const ebes_class lib =
        read_basic(ebe({}, "", "C: anything\nwrong:\n# text\n+ text\n   ebelike x\n\n endebe\n") + ebe({"ebe name=y"}));
    ASSERT_EQ(lib.n(), 2);
    EXPECT_EQ(lib.list.entry[1], "y");
}

TEST(code_section, may_have_5000_lines_up_to_its_end_word_and_no_more) {
    std::string body;
    for (int i = 0; i < 4999; ++i) body += "x\n";
    EXPECT_EQ(read_basic(ebe({}, "", "C:\n" + body + "endebe\n")).n(), 1);
    EXPECT_HALT(read_basic(ebe({}, "", "C:\n" + body + "x\nendebe\n")), "ebes_class: end_dc not found. Halting...\n");
}

TEST(ebes_messages, more_than_50000_lines_stop_the_count) {
    std::string text;
    for (int i = 0; i < 50000; ++i) text += "x\n";
    EXPECT_HALT(read_basic(text), wrong_keyword("x", "ebe", "ebes_class: ebe not found. Debug 1."));
    EXPECT_HALT(read_basic(text + "x\n"), "ebes_class: end of file not reached. Halting...\n");
}

// ---- capacities

TEST(ebes_limits, the_150th_entry_is_one_too_many) {
    std::string text;
    for (int i = 0; i < 149; ++i) text += ebe({});
    EXPECT_EQ(read_basic(text).n(), 149);
    EXPECT_HALT(read_basic(text + ebe({})), too_many(151, 150, "ebes_class: n is too large! Debug 2."));
}

TEST(ebac_limits, the_100th_entry_is_one_too_many) {
    std::string text;
    for (int i = 0; i < 99; ++i) text += ebe_ac({});
    EXPECT_EQ(read_basic(text, ebac_form).n(), 99);
    EXPECT_HALT(read_basic(text + ebe_ac({}), ebac_form), too_many(101, 100, "ebac_class: n is too large! Debug 2."));
}

struct pool_limit {
    std::string keyword, tag, behind;
    int max_words, max_chars;
};

void check_pools(const std::vector<pool_limit>& limits, const basic_form& form) {
    const bool ac = &form == &ebac_form;
    const std::string prefix = std::string(form.lib.class_name) + ": n_ttl";
    const auto read = [&](const lines& replaced) { return read_basic(ac ? ebe_ac(replaced) : ebe(replaced), form); };
    for (const pool_limit& l : limits) {
        SCOPED_TRACE(l.keyword);
        // nodes need a function each; the entry of the ground dummy does not
        const std::string name = ac ? "ebe_ac name=ground_dummy_1" : "ebe name=ground_dummy_1";
        const auto words = [&](int n) { return lines{name, l.keyword + many("w", n, l.behind)}; };
        const auto chars = [&](int n) { return lines{name, l.keyword + " " + long_word(n) + l.behind}; };
        EXPECT_EQ(read(words(l.max_words)).n(), 1);
        EXPECT_HALT(read(words(l.max_words + 1)),
                    too_many(l.max_words + 1, l.max_words, prefix + l.tag + " is too large!"));
        EXPECT_EQ(read(chars(l.max_chars)).n(), 1);
        EXPECT_HALT(read(chars(l.max_chars + 1)),
                    too_many(l.max_chars + 1, l.max_chars, prefix + l.tag + "chr is too large!"));
    }
}

TEST(ebes_limits, every_list_takes_its_limit_and_not_one_more) {
    check_pools({{"nodes:", "nd", "", 500, 10000},
                 {"ind_nodes:", "in", "", 50, 1000},
                 {"ind_branches:", "ib", "", 50, 1000},
                 {"iparms:", "iprm", "=1", 500, 10000},
                 {"sparms:", "sprm", "=s", 100, 2000},
                 {"rparms:", "rprm", "=1", 2500, 50000},
                 {"local_var:", "locv", "", 200, 4000},
                 {"aux_var:", "aux", "", 200, 4000},
                 {"aux_var_startup:", "auxs", "", 100, 2000},
                 {"digital_nodes:", "dgtl", "", 50, 1000},
                 {"main_var:", "vr", "", 200, 4000},
                 {"xvar:", "xvr", "", 50, 1000},
                 {"stparms:", "sv", "=1", 100, 2000},
                 {"igparms:", "ig", "=1", 40, 800}},
                ebes_form);
}

TEST(ebac_limits, every_list_takes_its_limit_and_not_one_more) {
    check_pools({{"nodes:", "nd", "", 200, 4000},
                 {"ind_nodes:", "in", "", 20, 400},
                 {"ind_branches:", "ib", "", 20, 400},
                 {"iparms:", "iprm", "=1", 500, 10000},
                 {"sparms:", "sprm", "=s", 100, 2000},
                 {"rparms:", "rprm", "=1", 1000, 20000},
                 {"aux_var:", "aux", "", 100, 2000},
                 {"main_var:", "vr", "", 50, 1000}},
                ebac_form);
}

TEST(ebes_limits, totals_run_over_all_entries) {
    const std::string half = ebe({"igparms:" + many("w", 20, "=1")});
    EXPECT_EQ(read_basic(half + half).n(), 2);
    EXPECT_HALT(read_basic(half + half + ebe({"igparms: one=1"})),
                too_many(41, 40, "ebes_class: n_ttlig is too large!"));
}

TEST(ebes_limits, functions_and_dependencies_of_a_library) {
    const auto functions = [](int n, const std::string& deps) {
        std::string all;
        for (int i = 0; i < n; ++i) all += "f_" + std::to_string(i) + deps + "\n";
        return ebe({"aux_var: a", "no_functions " + std::to_string(n)}, all);
    };
    EXPECT_EQ(read_basic(functions(500, "") + functions(500, " a a a a a a a a a a")).func.n_ttlf(), 1000);
    EXPECT_HALT(read_basic(functions(500, "") + functions(501, "")), "ebes_class: n_ttlf > M_EBESTTLF. Halting...\n");
    EXPECT_HALT(read_basic(functions(500, " a a a a a a a a a a") + functions(1, " a")),
                "ebes_class: n_ttlfvar is too large. Halting...\n");
}

TEST(ebes_messages, a_huge_count_of_functions_is_no_harm) {
    EXPECT_HALT(read_basic(ebe({"no_functions 2147483647"})), "ebes_class: expected f_ (2). Halting...\n  s2 = C:\n");
}

}  // namespace
