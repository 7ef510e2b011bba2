// Libraries of general blocks and of their small-signal forms: what differs from those of electrical elements.
#include <gtest/gtest.h>

#include <filesystem>

#include "block_texts.h"
#include "halt_throws.h"
#include "library/basic/gbac1_class.h"
#include "library/basic/gbes1_class.h"
#include "library/composite/library_dumps.h"
#include "temp_folder.h"

namespace {

gbes_class read_gbe_text(const std::string& text) { return read_basic(text, gbes_form); }

TEST(gbes_class, keeps_entries_lists_and_defaults_in_file_order) {
    const gbes_class lib = read_gbe_text(small_gbes);
    ASSERT_EQ(lib.n(), 4);
    EXPECT_EQ(lib.list.find("filter"), 1);
    EXPECT_EQ(lib.list.vr.word(0, 1), "y");
    EXPECT_EQ(lib.list.iprm.value(0, 0), 2);
    EXPECT_EQ(lib.list.sprm.value(0, 0), "none");
    EXPECT_EQ(lib.list.rprm.value(1, 1), 2);
    EXPECT_EQ(lib.list.aux.word(1, 1), "w");
    EXPECT_EQ(lib.list.sv.value(1, 0), 0.5);
    EXPECT_EQ(lib.list.ig.value(1, 0), 7);
    EXPECT_EQ(lib.list.xvr.word(2, 0), "xx");
    EXPECT_EQ(lib.list.node.count(0), 0);
}

TEST(gbes_class, entries_of_a_form_without_code_end_behind_their_functions) {
    basic_form form = gbes_form;
    form.has_code = false;
    const std::string one = edited(gbe_header, {"main_vars: x y", "no_functions 1"}) + "f_y y x\n";
    const gbes_class lib = read_basic(one + "endgbe\n" + one + "endgbe\n", form);
    ASSERT_EQ(lib.n(), 2);
    EXPECT_EQ(lib.func.n_func(1), 1);
    const console_run run = run_and_listen([&] { read_basic(one + "C: compiled\nendgbe\n", form); });
    EXPECT_TRUE(run.stopped);
    EXPECT_NE(run.text.find("expect endgbe here, check gbe library"), std::string::npos) << run.text;
}

TEST(gbes_class, has_the_flags_of_blocks) {
    const gbes_class lib = read_gbe_text(
        gbe({"gbe name=a limit_tstep=yes save_history=yes limit_newton=yes calc_acp=yes limit_modulo=yes "
             "allow_reset=yes set_rparm_1=yes get_rparm_1=yes allow_ssw=no"}) +
        gbe({"gbe name=b", "Jacobian: variable"}) + gbe({"gbe name=c limit_modulo=Yes startup_sprt=yes"}));
    const entry_flags& f = lib.flag;
    for (const auto flag :
         {&entry_flags::limit_tstep, &entry_flags::save_history, &entry_flags::limit_newton, &entry_flags::calc_acp,
          &entry_flags::limit_modulo, &entry_flags::allow_reset, &entry_flags::set_rparm_1, &entry_flags::get_rparm_1})
        EXPECT_EQ(f.*flag, (std::vector<int>{1, 0, 0}));
    EXPECT_EQ(f.allow_ssw, (std::vector<int>{0, 1, 1}));
    EXPECT_EQ(f.jac_const, (std::vector<int>{1, 0, 1}));
    EXPECT_EQ(f.startup_sprt, (std::vector<int>{0, 0, 0}));  // no word of blocks
}

TEST(gbes_class, knows_main_and_auxiliary_variables_as_kinds_6_and_7_inside_d_dt_as_well) {
    const gbes_class lib = read_gbe_text(small_gbes);
    const function_table& f = lib.func;
    ASSERT_EQ(f.n_func(1), 3);
    const int first = f.first_f[1];
    EXPECT_EQ(f.name[first + 1], "z");
    const int d = f.first_fvar[static_cast<std::size_t>(first)];
    const auto kinds = [&](int n) { return std::vector<int>(f.var_flag.begin() + d, f.var_flag.begin() + d + n); };
    EXPECT_EQ(kinds(6), (std::vector<int>{6, 7, 7, 6, 7, 7}));
    EXPECT_EQ(std::vector<int>(f.var_number.begin() + d, f.var_number.begin() + d + 6),
              (std::vector<int>{1, 0, 0, 0, 1, 0}));
    EXPECT_EQ(std::vector<int>(f.l_ddt.begin() + d, f.l_ddt.begin() + d + 6), (std::vector<int>{0, 0, 1, 0, 0, 0}));
    for (int j = 0; j < 3; ++j) {
        const auto k = static_cast<std::size_t>(first + j);
        EXPECT_EQ(f.flag_gnrl[k], 1);
        EXPECT_EQ(f.flag_kcl[k], 0);
        EXPECT_EQ(f.flag_ddt[k], j == 1);
    }
    const auto row = static_cast<std::size_t>(first + 1);
    EXPECT_EQ(f.ddt_var_flag[row], kind_gaux);
    EXPECT_EQ(f.ddt_var_number[row], 0);
}

TEST(gbes_class, maps_its_derivatives_by_two_kinds) {
    const gbes_class lib = read_gbe_text(small_gbes);
    ASSERT_EQ(lib.map.entry[1].size(), 2u);
    const jacobian_map::one_kind &vr = lib.map.entry[1][0], &aux = lib.map.entry[1][1];
    EXPECT_EQ(vr.map, (std::vector<int>{-1, 0, 1, -1, -1, -1}));
    EXPECT_EQ(aux.map, (std::vector<int>{0, -1, 1, -1, 3, 2}));
    EXPECT_EQ(aux.func, (std::vector<int>{0, 1, 2, 2}));
    EXPECT_EQ(aux.var, (std::vector<int>{0, 0, 1, 0}));
}

TEST(gbes_class, reads_lines_with_a_blank_before_their_mark_as_text) {
    EXPECT_EQ(read_gbe_text("# comment\n" + gbe({"rparms: a=1\n# between\n+ b=2"})).list.rprm.count(0), 2);
    EXPECT_HALT(read_gbe_text(" # text\n" + gbe({})), wrong_keyword("#", "gbe", "gbes_class: gbe not found. Debug 1."));
    EXPECT_HALT(read_gbe_text("#define x\n" + gbe({})),
                wrong_keyword("#define", "gbe", "gbes_class: gbe not found. Debug 1."));
    EXPECT_HALT(read_gbe_text(gbe({"rparms: a=1\n + b=2"})),
                wrong_keyword("+", "aux_vars:", "expect aux_vars: here, check gbe library"));
}

TEST(gbes_messages, a_missing_line_names_the_keyword_found_and_the_one_wanted) {
    for (std::size_t i = 1; i < gbe_header.size(); ++i) {
        const std::string wanted = gbe_header[i].substr(0, gbe_header[i].find(' '));
        const std::string found =
            i + 1 < gbe_header.size() ? gbe_header[i + 1].substr(0, gbe_header[i + 1].find(' ')) : "C:";
        EXPECT_HALT(read_gbe_text(edited(gbe_header, {}, wanted) + "C:\nendgbe\n"),
                    wrong_keyword(found, wanted, "expect " + wanted + " here, check gbe library"));
    }
}

TEST(gbes_messages, faults_of_an_entry) {
    const lines one = {"main_vars: x y", "aux_vars: z", "no_functions 1"};
    const struct {
        std::string text, console;
    } faults[] = {
        {gbe({"gbe x"}), wrong_keyword("x", "name", "expect name here, check gbe library")},
        {gbe({"Jacobian: linear"}),
         "gbes_class: expect constant/variable for jacobian.\n  gbe name is x\n  Halting...\n"},
        {gbe({"iparms: a"}), "gbes_class: k_rem is not zero (iprm). Halting...\n"},
        {gbe({"sparms: a"}), "gbes_class: k_rem is not zero (sprm). Halting...\n"},
        {gbe({"rparms: a"}), "gbes_class: k_rem is not zero (rprm). Halting...\n"},
        {gbe({"stparms: a"}), "gbes_class: k_rem is not zero (sv). Halting...\n"},
        {gbe({"igparms: a"}), "gbes_class: k_rem is not zero (ig). Halting...\n"},
        {gbe({"sparms: a " + long_word(51)}),
         "gbes_class: nchr_s2=51 is too large. Halting...\n  sparm string is too long.\n"},
        {gbe(one, "y x\n"), "gbes_class: expected f_ (2). Halting...\n  s2 = y\n"},
        {gbe(one), "gbes_class: expected f_ (2). Halting...\n  s2 = C:\n"},
        {gbe(one, "f_y y v\n"), "read_gbes: check v in gbe library.\n   (function part)\n   Halting...\n"},
        {gbe(one, "f_y v(y)\n"), "read_gbes: check v(y) in gbe library.\n   (function part)\n   Halting...\n"},
        {gbe(one, "f_y startup y\n"), "read_gbes: check startup in gbe library.\n   (function part)\n   Halting...\n"},
        {gbe(one, "f_y local_var y\n"),
         "read_gbes: check local_var in gbe library.\n   (function part)\n   Halting...\n"},
        {gbe(one, "f_y d_dt(v)\n"), "read_gbes: check v in gbe library.\n   (function part)\n   Halting...\n"},
        {gbe(one, "f_y d_dt\n"), "gbes_class: check variables involving d_dt\n"},
        {gbe(one, "f_y d_dt(y\n"), "gbes_class: check variables involving d_dt\n"},
        {gbe({"no_functions x"}), "check integer string: <x>\n  (brackets are not part of the string)\n  Halting...\n"},
        {gbe({}, "", "code:\n"),
         "check_word_3:\n   word_out is: code:\n   given words are: fortran: C:\n   message from calling routine:\n"
         "   expect fortran:/C: here, check gbe library\n   Halting...\n"},
        {gbe({}, "", "C:\n  gbe\nendgbe\n"), "gbes_class: gbe of next gbe before endgbe of current gbe? Halting...\n"},
        {gbe({}, "", "C:\n"), "gbes_class: end_dc not found. Halting...\n"},
    };
    for (const auto& f : faults) {
        SCOPED_TRACE(f.text);
        EXPECT_HALT(read_gbe_text(f.text), f.console);
    }
}

// Two entries so that it is the sum over the library that counts; exactly the limit still fits.
TEST(gbes_messages, capacities_hold_for_the_library) {
    const struct {
        std::string line, tag, behind;
        int max_words;
    } pools[] = {
        {"main_vars:", "vr", "", 600},   {"iparms:", "iprm", " 1", 500}, {"sparms:", "sprm", " s", 100},
        {"rparms:", "rprm", " 1", 1500}, {"aux_vars:", "aux", "", 100},  {"xvar:", "xvr", "", 200},
        {"stparms:", "sv", " 1", 100},   {"igparms:", "ig", " 1", 40},
    };
    for (const auto& p : pools) {
        const std::string first = gbe({p.line + many("w", p.max_words - 1, p.behind)});
        EXPECT_EQ(read_gbe_text(first + gbe({p.line + many("w", 1, p.behind)})).n(), 2) << p.line;
        EXPECT_HALT(read_gbe_text(first + gbe({p.line + many("w", 2, p.behind)})),
                    too_many(p.max_words + 1, p.max_words, "gbes_class: n_ttl" + p.tag + " is too large!"));
        const int max_chars = 20 * p.max_words;
        EXPECT_EQ(read_gbe_text(gbe({p.line + " " + long_word(max_chars) + p.behind})).n(), 1) << p.line;
        EXPECT_HALT(read_gbe_text(gbe({p.line + " " + long_word(max_chars + 1) + p.behind})),
                    too_many(max_chars + 1, max_chars, "gbes_class: n_ttl" + p.tag + "chr is too large!"));
    }
    std::string entries;
    for (int i = 0; i < 249; ++i) entries += gbe({});
    EXPECT_EQ(read_gbe_text(entries).n(), 249);
    EXPECT_HALT(read_gbe_text(entries + gbe({})), too_many(251, 250, "gbes_class: n is too large! Debug 2."));
    const auto functions = [](int n) {
        std::string all;
        for (int i = 0; i < n; ++i) all += "f_a\n";
        return gbe({"no_functions " + std::to_string(n)}, all);
    };
    EXPECT_EQ(read_gbe_text(functions(1000)).func.n_ttlf(), 1000);
    EXPECT_HALT(read_gbe_text(functions(1001)), "gbes_class: n_ttlf > M_GBESTTLF. Halting...\n");
    const auto words_of_one = [](int n) {
        return gbe({"main_vars: y", "no_functions 1"}, "f_y" + repeated(" y", n) + "\n");
    };
    EXPECT_EQ(read_gbe_text(words_of_one(5000)).n(), 1);
    EXPECT_HALT(read_gbe_text(words_of_one(5001)), "gbes_class: n_ttlfvar is too large. Halting...\n");
}

// ---- small-signal forms ----

TEST(gbac_class, reads_its_lists_and_kinds) {
    const gbac_class lib = read_basic(small_gbac, gbac_form);
    ASSERT_EQ(lib.n(), 2);
    EXPECT_EQ(lib.list.vr.word(1, 0), "x");
    EXPECT_EQ(lib.list.iprm.value(1, 0), -1);
    ASSERT_EQ(lib.map.entry[1].size(), 2u);
    EXPECT_EQ(lib.map.entry[1][1].map, (std::vector<int>{0, 1}));
}

TEST(gbac_messages, faults_of_an_entry) {
    const lines one = {"main_vars: x y", "no_functions 1"};
    const struct {
        std::string text, console;
    } faults[] = {
        {"gbe name=x\n", wrong_keyword("gbe", "gbe_ac", "gbac_class: gbe_ac not found. Debug 1.")},
        {gbe_ac(one, "f_y v\n"),
         "gbac_class: something wrong with function declarations.\n  string is v\n  Halting...\n"},
        {gbe_ac(one, "f_y d_dt(y)\n"),
         "gbac_class: something wrong with function declarations.\n  string is d_dt(y)\n  Halting...\n"},
        {"gbe_ac name=x\nC:\ngbe_ac\n",
         "gbac_class: gbe_ac of next gbe_ac before endgbe_ac of current gbe_ac? Halting...\n"},
        {"gbe_ac name=x\nC:\n", "gbac_class: endgbe_ac not found. Halting...\n"},
    };
    for (const auto& f : faults) {
        SCOPED_TRACE(f.text);
        EXPECT_HALT(read_basic(f.text, gbac_form), f.console);
    }
    for (std::size_t i = 1; i < gbe_ac_header.size(); ++i) {
        const std::string wanted = gbe_ac_header[i].substr(0, gbe_ac_header[i].find(' '));
        const std::string found =
            i + 1 < gbe_ac_header.size() ? gbe_ac_header[i + 1].substr(0, gbe_ac_header[i + 1].find(' ')) : "C:";
        EXPECT_HALT(read_basic(edited(gbe_ac_header, {}, wanted) + "C:\nendgbe_ac\n", gbac_form),
                    wrong_keyword(found, wanted, "expect " + wanted + " here, check gbe_ac library"));
    }
    EXPECT_HALT(read_basic(gbe_ac({"main_vars:" + many("w", 201)}), gbac_form),
                too_many(201, 200, "gbac_class: n_ttlvr is too large!"));
    EXPECT_HALT(read_basic(gbe_ac({"rparms:" + many("w", 1001, " 1")}), gbac_form),
                too_many(1001, 1000, "gbac_class: n_ttlrprm is too large!"));
}

// ---- objects for derivatives ----

TEST(gbes1_class, has_two_tables_of_zeros_in_one_array) {
    gbes1_class jac;
    jac.initialise(read_gbe_text(small_gbes), 1);
    EXPECT_EQ(jac.n_f, 3);
    EXPECT_EQ(jac.n_vr, 2);
    EXPECT_EQ(jac.n_aux, 2);
    ASSERT_EQ(jac.store.size(), 12u);
    for (const double x : jac.store) EXPECT_EQ(x, 0);
    for (int j = 0; j < 3; ++j)
        for (int m = 0; m < 2; ++m) {
            jac.dfdvr[j][m] = 10 * j + m;
            jac.dfdaux[j][m] = 100 + 10 * j + m;
        }
    for (int j = 0; j < 3; ++j)
        for (int m = 0; m < 2; ++m) {
            EXPECT_EQ(jac.store[static_cast<std::size_t>(jac.offset(kind_vr, j, m))], 10 * j + m);
            EXPECT_EQ(jac.store[static_cast<std::size_t>(jac.offset(kind_gaux, j, m))], 100 + 10 * j + m);
        }
    EXPECT_EQ(jac.offset(kind_v, 0, 0), -1);
    EXPECT_EQ(jac.offset(kind_aux, 0, 0), -1);
}

TEST(gbes1_class, of_a_block_without_functions_is_empty) {
    gbes1_class jac;
    jac.initialise(read_gbe_text(small_gbes), 3);
    EXPECT_TRUE(jac.store.empty());
}

TEST(gbac1_class, is_its_complex_twin) {
    gbac1_class jac;
    jac.initialise(read_basic(small_gbac, gbac_form), 1);
    ASSERT_EQ(jac.store.size(), 6u);
    jac.dfdaux[1][0] = {2, 3};
    EXPECT_EQ(jac.store[static_cast<std::size_t>(jac.offset(kind_gaux, 1, 0))], (gbac1_class::number{2, 3}));
    EXPECT_EQ(jac.offset(kind_v, 0, 0), -1);
}

// ---- files ----

TEST(gbes_class, comes_from_its_file_and_says_when_there_is_none) {
    const temp_folder folder;
    EXPECT_HALT(read_gbes(int_F, {}), "gbes_class: file .tnlaux/gbes.aux does not exist. Halting...\n");
    EXPECT_HALT(read_gbac(int_F, {}), "gbac_class: file .tnlaux/gbac.aux does not exist. Halting...\n");
    EXPECT_HALT(read_gels({}, {}), "gels_class: file .tnlaux/gels.aux does not exist. Halting...\n");
    std::filesystem::create_directory(".tnlaux");
    write_file(".tnlaux/gbes.aux", small_gbes);
    write_file(".tnlaux/gbac.aux", small_gbac);
    write_file(".tnlaux/gels.aux", gce({"mainvars: x y"}, "gbe type=gain x=x y=y\n"));
    const gbes_class gbes = read_gbes(int_F, {});
    EXPECT_EQ(gbes.n(), 4);
    EXPECT_EQ(read_gbac(int_F, {}).n(), 2);
    EXPECT_EQ(read_gels(gbes, {}).n(), 1);
}

TEST(generated_blocks, have_the_head_and_the_constants_of_blocks) {
    const temp_folder folder;
    std::filesystem::create_directory(".tnlaux");
    write_file(
        ".tnlaux/gbes.aux",
        gbe({"gbe name=a", "main_vars: x y", "rparms: k=1", "aux_vars: z", "xvar: xx", "stparms: z0=0",
             "no_functions 1"},
            "f_y y x\n",
            "C:\nprototypes:\n#define above\nvariables:\n   int own;\nsource:\n   f[ne_y] = 1.0;\nendC\nendgbe\n"));
    EXPECT_EQ(read_gbes(int_T, {1, 2}).n_written, 1);
    EXPECT_EQ(read_file(".tnlaux/subgbe.cpp"),
              "#include <math.h>\n#include <iostream>\n#include <cstring>\n#include <cstdlib>\n#include <fstream>\n"
              "#include <sstream>\n#include \"enum1.h\"\n#include \"gbes1_class.h\"\n#include \"math_cnst_class.h\"\n"
              "#include \"flags_class.h\"\n#include \"dp_class.h\"\n#define above\n"
              "void g_a(const int i_gbeu, int* iparm, char** sparm, double* rparm,\n"
              "   double* stparm, double* igparm, double* vr, double* xvr, double* aux,\n"
              "   double* vr_new, double* aux_new, double* f, gbes1_class* jac,\n"
              "   flags_class* flags, dp_class* dp, math_cnst_class* math_cnst) {\n"
              "   int own;\n   double k;\n   double z;\n   double x, y;\n   double xx;\n   double z0;\n"
              "   const int nr_k=0;\n   const int nst_z0=0;\n   const int na_z=0;\n   const int nvr_x=0;\n"
              "   const int nvr_y=1;\n   const int nxvr_xx=0;\n   const int ne_y=0;\n"
              "   f[ne_y] = 1.0;\n   return;\n}\n");
    const std::string get = read_file(".tnlaux/getgbe.cpp");
    EXPECT_NE(get.find("void get_gbe(const int i_element,"), std::string::npos);
    EXPECT_NE(get.find("i_global = flags->map_global_gbe[i_element];"), std::string::npos);
    EXPECT_EQ(get.find("ebes1_class"), std::string::npos);
}

TEST(generated_blocks, of_an_empty_library_are_one_function_that_does_nothing) {
    const temp_folder folder;
    std::filesystem::create_directory(".tnlaux");
    write_file(".tnlaux/gbes.aux", "");
    read_gbes(int_T, {1, 1});
    EXPECT_EQ(read_file(".tnlaux/subgbe.cpp"), "void dummy_subgbe(){return;}\n");
}

}  // namespace
