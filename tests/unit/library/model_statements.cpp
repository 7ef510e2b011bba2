#include "library/composite/model_statements.h"

#include <gtest/gtest.h>

#include "halt_throws.h"
#include "library/composite/library_dumps.h"
#include "library_texts.h"

namespace {

const std::string composites = ece({"ece name=part", "mainnodes: a b", "iparms: m=1", "sparms: s=none",
                                    "rparms: r=10 k=1", "stparms: u=2", "igparms: g=3", "rparms_derived: d=$((r)*(k))"},
                                   "ebe type=r p=a n=b r=d\n") +
                               ece({"ece name=other", "mainnodes: a b", "rparms: r=10"}, "ebe type=r p=a n=b r=r\n");

struct deck {
    circuit_file cf;
    gprm_class gprm;
    eels_class lib;
};
deck deck_of(const std::string& statements) {
    deck d;
    d.cf = circuit_file_of(file_chr_of("title: t\ngreal big=1k\nginteger seven=7\ngstring word=hello\nbegin_circuit\n" +
                                       statements + "end_circuit\nend_cf\n"));
    d.gprm = read_gprm(d.cf);
    d.lib = read_composite_text(composites);
    return d;
}
model_class models_of(deck& d) { return read_models(d.cf, d.gprm, d.lib, library_forms[lib_eels]); }
model_class models_of(deck&& d) { return models_of(d); }

TEST(ecem_class, starts_from_the_librarys_defaults_and_takes_the_statements_words) {
    const model_class m = models_of(deck_of("emodel name=m1 type=part r=5 s=label\nemodel name=m2 type=other\n"));
    ASSERT_EQ(m.n(), 2);
    EXPECT_EQ(m.name[0], "m1");
    EXPECT_EQ(m.i_lib, (std::vector<int>{0, 1}));
    EXPECT_EQ(m.rprm.row(0)[0], 5.0);
    EXPECT_EQ(m.rprm.row(0)[1], 1.0);
    EXPECT_EQ(m.rprm.size(0), 3);  // the derived one keeps its place
    EXPECT_EQ(m.rprm.row(0)[2], 0.0);
    EXPECT_EQ(m.iprm.row(0)[0], 1);
    EXPECT_EQ(m.sprm.row(0)[0], "label");
    EXPECT_EQ(m.sv.row(0)[0], 2.0);
    EXPECT_EQ(m.ig.row(0)[0], 3.0);
    EXPECT_EQ(m.rprm.row(1)[0], 10.0);
}

TEST(ecem_class, values_can_name_global_parameters_and_real_ones_keep_the_tie) {
    const model_class m = models_of(deck_of("emodel name=m type=part r=big k=2 m=seven s=word u=big\n"));
    EXPECT_EQ(m.rprm.row(0)[0], 1000.0);
    EXPECT_EQ(m.iprm.row(0)[0], 7);
    EXPECT_EQ(m.sprm.row(0)[0], "hello");
    EXPECT_EQ(m.rprm_tie.row(0)[0], 0);
    EXPECT_EQ(m.rprm_tie.row(0)[1], -1);
    EXPECT_EQ(m.sv_tie.row(0)[0], 0);
    EXPECT_EQ(m.ig_tie.row(0)[0], -1);
}

TEST(ecem_class, marks_its_statements_and_no_others) {
    deck d = deck_of("emodel name=m type=part\ngmodel name=m type=part\n");
    models_of(d);
    EXPECT_EQ(d.cf.used[static_cast<std::size_t>(d.cf.n_begin_cct + 1)], 1);
    EXPECT_EQ(d.cf.used[static_cast<std::size_t>(d.cf.n_begin_cct + 2)], 0);
}

TEST(ecem_class, a_model_is_found_by_name_and_type_and_the_first_wins) {
    const model_class m =
        models_of(deck_of("emodel name=m type=other\nemodel name=m type=part r=1\nemodel name=m type=part r=2\n"));
    EXPECT_EQ(m.find("m", 0), 1);
    EXPECT_EQ(m.find("m", 1), 0);
    EXPECT_EQ(m.find("n", 0), -1);
}

TEST(ecem_class, faults_of_a_statement) {
    struct fault {
        std::string statement, console;
    };
    const fault faults[] = {
        {"emodel nam=m type=part\n", not_in_list("name", "ecem_class: name not found", "find_word_4")},
        {"emodel name=m typ=part\n", not_in_list("type", "ecem_class: type not found", "find_word_4")},
        {"emodel name=m type=zz\n", not_in_list("zz", "ecem_class: eels_name not found")},
        {"emodel name=m type=part rr=1\n", "ecem_class: some word has not been ticked.\n   word: rr\n   Halting...\n"},
        {"emodel name=m type=part d=1\n", "ecem_class: some word has not been ticked.\n   word: d\n   Halting...\n"},
        {"emodel name=m type=part r=1 r=2\n",
         "ecem_class: some word has not been ticked.\n   word: r\n   Halting...\n"},
        {"emodel name=m type=part r=x\n",
         "check double string: <x>\n  (brackets are not part of the string)\n  Halting...\n"},
    };
    for (const fault& f : faults) {
        SCOPED_TRACE(f.statement);
        deck d = deck_of(f.statement);
        EXPECT_HALT(models_of(d), f.console);
    }
}

TEST(model_statements, each_family_has_its_own_words) {
    struct family {
        const library_form* form;
        std::string keyword, class_name, library;
    };
    const family families[] = {{&library_forms[lib_eels], "emodel", "ecem_class", "eels"},
                               {&library_forms[lib_gels], "gmodel", "gcem_class", "gels"},
                               {&library_forms[lib_dels], "dmodel", "dcem_class", "dels"},
                               {&library_forms[lib_xels], "xmodel", "xcem_class", "xels"},
                               {&library_forms[lib_gmes], "gmmodel", "gmem_class", "gmes"}};
    for (const family& f : families) {
        deck d = deck_of(f.keyword + " name=m type=zz\n");
        EXPECT_HALT(read_models(d.cf, d.gprm, d.lib, *f.form),
                    not_in_list("zz", f.class_name + ": " + f.library + "_name not found"));
    }
}

// ---- dumps

TEST(dumps, begin_with_the_class_and_its_totals) {
    std::ostringstream out;
    write_basic_dump(out, "ebes", read_basic(small_ebes));
    const std::string text = out.str();
    EXPECT_TRUE(text.starts_with("ebes_class\nn = 5\nn_ttliprm = 1\nn_ttlsprm = 1\nn_ttlrprm = 6\n"));
    for (const char* line : {"n_ttlnd = 8\n", "n_ttlin = 2\n", "n_ttlib = 1\n", "n_ttlaux = 1\n", "n_ttlauxs = 1\n",
                             "n_ttllocv = 0\n", "n_ttldgtl = 1\n", "n_ttlvr = 1\n", "n_ttlxvr = 1\n", "n_ttlsv = 1\n",
                             "n_ttlig = 1\n", "n_ttlf = 11\n", "n_ttlfvar = 20\n", "  i = 0, name = r, n_func = 2"})
        EXPECT_NE(text.find(line), std::string::npos) << line;
    EXPECT_NE(text.find("    f = 0, name = p, n_var = 2, flag_kcl = 1, flag_gnrl = 0, flag_locvar = 0, i_locvar = -1, "
                        "func_startup = 1, startup_kcl = 1, startup_kcl_row = 0, startup_gnrl = 0, flag_ddt = 0, "
                        "ddt_var_flag = -1, ddt_var_number = -1, kcl_locvar_func = -1\n"),
              std::string::npos)
        << text;
}

TEST(dumps, of_composites_models_and_their_real_parameters) {
    deck d = deck_of("emodel name=m1 type=part r=5\n");
    std::ostringstream eels, heels, hebes, ecem;
    write_composite_dump(eels, "eels", d.lib);
    write_heels_dump(heels, "heels", d.lib, read_basic(small_ebes));
    write_hebes_dump(hebes, "hebes", read_basic(small_ebes));
    write_model_dump(ecem, "ecem", models_of(d), d.lib);
    EXPECT_TRUE(eels.str().starts_with("eels_class\nn = 2\n"));
    EXPECT_NE(eels.str().find("n_be_ttl = 2\n"), std::string::npos);
    EXPECT_NE(eels.str().find("n_be_ttlnd = 4\n"), std::string::npos);
    EXPECT_NE(eels.str().find("      be_rprm: 0(2) 0 1\n"), std::string::npos);
    EXPECT_NE(
        eels.str().find(", n_ov = 0, n_bias = 0, n_iprm = 1, n_sprm = 1, n_rprm = 3, n_sv = 1, n_ig = 1, n_vr = "),
        std::string::npos)
        << eels.str();
    EXPECT_TRUE(heels.str().starts_with("heels_class\nn = 2\n  i = 0, name = part, n_rprm = 3"));
    EXPECT_TRUE(hebes.str().starts_with("hebes_class\nn = 5\n  i = 0, name = r, n_rprm = 3\n    rprm r = 1\n"));
    EXPECT_EQ(ecem.str(),
              "ecem_class\nn = 1\n  i = 0, name = m1, type = part\n      iprm: 1\n      sprm: none\n"
              "      rprm: 5 1 0\n      sv: 2\n      ig: 3\n");
}

}  // namespace
