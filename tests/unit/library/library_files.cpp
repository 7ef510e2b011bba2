// Libraries as files: reading them, and the sources that the generating mode writes beside them.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>

#include "halt_throws.h"
#include "library/composite/empty_library.h"
#include "library/entry_counts.h"
#include "library_texts.h"

namespace {

namespace fs = std::filesystem;

// A folder of its own for each test, gone behind it.
class folder : public ::testing::Test {
protected:
    fs::path path = fs::temp_directory_path() / ("library_" + std::to_string(::getpid()) + "_" +
                                                 ::testing::UnitTest::GetInstance()->current_test_info()->name());
    void SetUp() override { fs::create_directories(path); }
    void TearDown() override { fs::remove_all(path); }
    std::string file(const std::string& name, const std::string& text) const {
        std::ofstream(path / name) << text;
        return path / name;
    }
    std::string text_of(const std::string& name) const {
        std::ifstream in(path / name);
        return {std::istreambuf_iterator<char>(in), {}};
    }
};
using library_files = folder;
using generator = folder;

TEST_F(library_files, a_missing_file_halts_with_its_class_on_one_line) {
    basic_library lib;
    EXPECT_HALT(read_library("no/ebes.aux", ebes_form, int_F, {}, lib),
                "ebes_class: file no/ebes.aux does not exist. Halting...\n");
    EXPECT_HALT(read_library("no/ebac.aux", ebac_form, int_F, {}, lib),
                "ebac_class: file no/ebac.aux does not exist. Halting...\n");
    eels_class eels;
    EXPECT_HALT(read_eels_file("no/eels.aux", lib, lib, eels),
                "eels_class: file no/eels.aux does not exist. Halting...\n");
    EXPECT_HALT(check_empty_library(open_text_file("no/gbes.aux", "gbes_class"), "gbes_class"),
                "gbes_class: file no/gbes.aux does not exist. Halting...\n");
}

TEST_F(library_files, a_family_without_a_reader_takes_an_empty_file_only) {
    check_empty_library(open_text_file(file("gbes.aux", ""), "gbes_class"), "gbes_class");
    check_empty_library(open_text_file(file("gbes.aux", "# nothing\n\n"), "gbes_class"), "gbes_class");
    const std::string full = file("gbes.aux", "gbe name=gain\n");
    EXPECT_HALT(
        check_empty_library(open_text_file(full, "gbes_class"), "gbes_class"),
        "gbes_class: this program has no reader for entries of " + full + "\n  First word is: gbe\n  Halting...\n");
}

TEST_F(library_files, libraries_are_read_from_the_folder_tnlaux) {
    fs::create_directories(path / ".tnlaux");
    file(".tnlaux/ebes.aux", small_ebes);
    file(".tnlaux/ebac.aux", small_ebac);
    file(".tnlaux/eels.aux", ece({"mainnodes: a b"}, "ebe type=r p=a n=b\n"));
    const fs::path before = fs::current_path();
    fs::current_path(path);
    const ebes_class ebes = read_ebes(int_F, {});
    const ebac_class ebac = read_ebac(int_F, {});
    const eels_class eels = read_eels(ebes, ebac);
    fs::current_path(before);
    EXPECT_EQ(ebes.n(), 5);
    EXPECT_EQ(ebac.n(), 3);
    EXPECT_EQ(eels.n(), 1);
}

TEST_F(library_files, a_full_library_loads_quickly) {
    std::string basics, composites;
    for (int i = 0; i < 149; ++i)
        basics +=
            ebe({"ebe name=e" + std::to_string(i), "nodes: p n", "rparms: a=1 b=2 c=3 d=4 e=5 f=6", "no_functions 2"},
                "f_p v(p) v(n)\nf_n v(p) v(n)\n");
    for (int i = 0; i < 49; ++i)
        composites += ece({"ece name=c" + std::to_string(i), "mainnodes: p n", "rparms: a=1 b=2 c=3 d=4 e=5 f=6"},
                          "ebe type=e" + std::to_string(i) + " name=x p=p n=n a=a b=b c=c d=d e=e f=f\n");
    const std::string ebes_path = file("ebes.aux", basics), eels_path = file("eels.aux", composites);
    double best = 1;
    for (int i = 0; i < 5; ++i) {
        const auto start = std::chrono::steady_clock::now();
        ebes_class ebes, ebac;
        eels_class eels;
        read_library(ebes_path, ebes_form, int_F, {}, ebes);
        read_eels_file(eels_path, ebes, ebac, eels);
        best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        EXPECT_EQ(eels.be.i_be.size(), 49u);
    }
    RecordProperty("seconds", std::to_string(best));
    EXPECT_LT(best, 0.1);  // about 0.001; sanitizers and busy machines get room
}

// ---- the generating mode

const std::string code =
    "C:\nprototypes:\nint helper(int);\n// not copied\n\nvariables:\n   double x;\nsource:\n   // neither\n"
    "   x = helper(1);\n\n   f[ne_p] = x;\nendC\nendebe\n";
const std::string one_entry =
    ebe({"ebe name=one", "nodes: p n", "ind_nodes: c", "ind_branches: b", "iparms: k=1", "sparms: s=none",
         "rparms: r=1 g=2", "aux_var: i", "aux_var_startup: i_s", "digital_nodes: d", "main_var: y", "xvar: z",
         "stparms: st=0", "igparms: ig=0", "local_var: q", "no_functions 4"},
        "f_p v(p)\nf_n v(n)\nf_i i\nf_q local_var q v(p)\n", code);

TEST_F(generator, writes_the_function_of_an_entry_with_its_names_as_variables_and_constants) {
    basic_library lib;
    read_library(file("ebes.aux", one_entry), ebes_form, int_T, {1, 2}, lib);
    EXPECT_EQ(lib.n_written, 1);
    EXPECT_EQ(text_of("subebe.cpp"),
              "#include <math.h>\n#include <iostream>\n#include <cstring>\n#include <cstdlib>\n#include <fstream>\n"
              "#include <sstream>\n#include \"enum1.h\"\n#include \"ebes1_class.h\"\n#include \"math_cnst_class.h\"\n"
              "#include \"flags_class.h\"\n#include \"dp_class.h\"\n"
              "int helper(int);\n"
              "void e_one(const int i_ebeu, int* iparm, char** sparm, double* rparm,\n"
              "   double* stparm, double* igparm, double* v, double* vind, double* curind,\n"
              "   double* aux, double* vr, double* xvr, double* auxs, double* locv,\n"
              "   double* v_new, double* aux_new, double* auxs_new, int* dvar, double* f,\n"
              "   ebes1_class* jac, flags_class* flags, dp_class* dp,\n"
              "   math_cnst_class* math_cnst) {\n"
              "   double x;\n"
              "   int k;\n   char* s;\n   double r, g;\n   double i;\n   int d;\n   double y;\n   double z;\n"
              "   double st;\n   double ig;\n   double q;\n   double i_s;\n"
              "   const int nnd_p=0;\n   const int nnd_n=1;\n   const int nin_c=0;\n   const int nib_b=0;\n"
              "   const int ni_k=0;\n   const int nstr_s=0;\n   const int nr_r=0;\n   const int nr_g=1;\n"
              "   const int nst_st=0;\n   const int nig_ig=0;\n   const int na_i=0;\n   const int ndg_d=0;\n"
              "   const int nvr_y=0;\n   const int nxvr_z=0;\n   const int nas_i_s=0;\n   const int nlv_q=0;\n"
              "   const int ne_p=0;\n   const int ne_n=1;\n   const int ne_i=2;\n   const int ne_q=3;\n"
              "   x = helper(1);\n   f[ne_p] = x;\n"
              "   return;\n}\n");
}

TEST_F(generator, reads_the_same_tables_as_a_run) {
    basic_library lib;
    read_library(file("ebes.aux", one_entry + small_ebes), ebes_form, int_T, {1, 2}, lib);
    const basic_library run = read_basic(one_entry + small_ebes);
    EXPECT_EQ(lib.n(), run.n());
    EXPECT_EQ(lib.func.var_flag, run.func.var_flag);
    EXPECT_EQ(lib.func.first_fvar, run.func.first_fvar);
}

TEST_F(generator, writes_the_header_before_the_first_function_whichever_entry_that_is) {
    basic_library lib;
    read_library(file("ebes.aux", small_ebes + one_entry + one_entry), ebes_form, int_T, {1, 2}, lib);
    const std::string text = text_of("subebe.cpp");
    EXPECT_EQ(lib.n_written, 2);
    EXPECT_TRUE(text.starts_with("#include <math.h>\n"));
    EXPECT_EQ(text.find("#include <math.h>", 1), std::string::npos);
}

TEST_F(generator, an_entry_of_a_library_without_sources_leaves_one_empty_function) {
    basic_library lib;
    for (const std::string& text : {std::string(), ebe({}), ebe({}, "", "fortran: compiled\nanything\nendebe\n")}) {
        read_library(file("ebes.aux", text), ebes_form, int_T, {1, 1}, lib);
        EXPECT_EQ(text_of("subebe.cpp"), "void dummy_subebe(){return;}\n");
        EXPECT_EQ(lib.n_written, 0);
    }
}

TEST_F(generator, dispatch_goes_by_library_number_in_mode_1) {
    basic_library lib;
    read_library(file("ebes.aux", ebe({"ebe name=a"}) + ebe({"ebe name=b"})), ebes_form, int_T, {1, 1}, lib);
    const std::string text = text_of("getebe.cpp");
    EXPECT_TRUE(
        text.starts_with("#include \"math_cnst_class.h\"\n#include \"flags_class.h\"\n#include \"dp_class.h\"\n"
                         "#include \"ebes1_class.h\"\nvoid e_a(const int i_ebeu, "));
    const std::size_t routine = text.find("void get_ebe(const int i_ebes,\n");
    ASSERT_NE(routine, std::string::npos);
    EXPECT_NE(text.find("   switch (i_ebes) {\n     case 0:\n       e_a(i_ebeu, iparm, "), std::string::npos);
    EXPECT_NE(text.find("     case 1:\n       e_b("), std::string::npos);
    EXPECT_TRUE(text.ends_with("       break;\n   }\n   return;\n}\n"));
}

TEST_F(generator, dispatch_goes_through_the_list_of_all_names_in_mode_2) {
    basic_library lib;
    read_library(file("ebes.aux", ebe({"ebe name=a"})), ebes_form, int_T, {1, 2}, lib);
    const std::string text = text_of("getebe.cpp");
    EXPECT_NE(text.find("void get_ebe(const int i_element,\n"), std::string::npos);
    EXPECT_NE(text.find("   int i_global;\n   i_global = flags->map_global_ebe[i_element];\n   switch (i_global) {\n"),
              std::string::npos);
}

TEST_F(generator, small_signal_functions_get_both_jacobians) {
    basic_library lib;
    read_library(
        file("ebac.aux", ebe_ac({"ebe_ac name=a"}) +
                             "ebe_ac name=b\nnodes:\nind_nodes:\nind_branches:\niparms:\n"
                             "sparms:\nrparms:\naux_var:\nmain_var:\nno_functions 0\nC:\nvariables:\nsource:\nendC\n"
                             "endebe_ac\n"),
        ebac_form, int_T, {1, 2}, lib);
    const std::string sub = text_of("subebac.cpp"), get = text_of("getebac.cpp");
    EXPECT_NE(sub.find("#include \"ebac1_class.h\"\n"), std::string::npos);
    EXPECT_NE(sub.find("void e_ac_b(const int i_ebau, int* iparm, char** sparm, double freq,\n"), std::string::npos);
    EXPECT_NE(sub.find("ebac1_class* jac,\n   ebes1_class* ebe_jac, flags_class* flags"), std::string::npos);
    EXPECT_NE(get.find("void get_ebe_ac(const int i_element,\n"), std::string::npos);
    EXPECT_NE(get.find("flags->map_global_sse[i_element]"), std::string::npos);
    EXPECT_NE(get.find("     case 1:\n       e_ac_b("), std::string::npos);
    read_library(file("ebac.aux", ""), ebac_form, int_T, {1, 2}, lib);
    EXPECT_EQ(text_of("subebac.cpp"), "void dummy_subebac(){return;}\n");
}

TEST_F(generator, writes_nothing_in_any_other_mode) {
    basic_library lib;
    const std::string aux = file("ebes.aux", one_entry);
    read_library(aux, ebes_form, int_T, {1, 3}, lib);
    read_library(aux, ebes_form, int_F, {1, 2}, lib);
    EXPECT_FALSE(fs::exists(path / "subebe.cpp"));
    EXPECT_FALSE(fs::exists(path / "getebe.cpp"));
    EXPECT_EQ(lib.n(), 1);
}

TEST_F(generator, faults_of_a_source_section_stop_it_and_go_unnoticed_in_a_run) {
    struct fault {
        std::string code, console;
    };
    const fault faults[] = {
        {"C: other\nendebe\n", "ebes_class: compiled not found\n"},
        {"C:\nvariables:\nendebe\n",
         wrong_keyword("variables:", "prototypes:", "expect prototypes: here, check ebe library")},
        {"C:\nprototypes:\nendebe\n", "ebes_class: variables: not found. Halting...\n"},
        {"C:\nprototypes:\nvariables:\nsources:\nendebe\n", "ebes_class: (source:) not found. Halting...\n"},
        {"C:\nprototypes:\nvariables:\nsource:\nendebe\n", "ebes_class: endfortran/endC not found. Halting...\n"},
        {"C:\nprototypes:\nvariables:\nsource:\nendC\nmore\nendebe\n",
         wrong_keyword("more", "endebe", "expect endebe here, check ebe library")},
    };
    for (const fault& f : faults) {
        SCOPED_TRACE(f.code);
        const std::string aux = file("ebes.aux", ebe({}, "", f.code));
        basic_library lib;
        EXPECT_HALT(read_library(aux, ebes_form, int_T, {1, 2}, lib), f.console);
        read_library(aux, ebes_form, int_F, {1, 2}, lib);
        EXPECT_EQ(lib.n(), 1);
    }
}

TEST(write_ebes_c, knows_four_parts_and_no_more) {
    std::ostringstream out;
    EXPECT_HALT(write_ebes_c(out, ebes_form, read_basic(small_ebes), 0, 4),
                "write_ebes_c: wrong value for flag_write. Halting...\n");
}

TEST(write_chr_array_2, wraps_at_80_columns_and_writes_nothing_for_an_empty_list) {
    std::ostringstream out;
    write_chr_array_2(out, "   int ", {}, "     ", ";");
    EXPECT_EQ(out.str(), "");
    std::vector<std::string> items;
    for (int i = 0; i < 100; ++i) items.push_back("word_" + std::to_string(i));
    write_chr_array_2(out, "   int ", items, "     ", ";");
    std::istringstream in(out.str());
    std::string l, all;
    for (int n = 0; std::getline(in, l); ++n) {
        EXPECT_LE(l.size(), 80u);
        EXPECT_TRUE(l.starts_with(n == 0 ? "   int word_0," : "     word_"));
        all += l;
    }
    EXPECT_TRUE(all.ends_with("word_99;"));
}

TEST(check_entry_counts, refuses_an_entry_with_less_than_its_model_uses) {
    const basic_library lib =
        read_basic(ebe({"ebe name=a", "nodes: p n", "rparms: r=1 s=2", "no_functions 2"}, "f_p v(p)\nf_n v(n)\n"));
    std::vector<int> model = entry_counts(ebes_form, lib, 0);
    check_entry_counts(ebes_form, lib, 0, model);
    model[0] = 1;  // of more than the model knows it sees nothing
    check_entry_counts(ebes_form, lib, 0, model);
    model[5] = 3;
    EXPECT_HALT(check_entry_counts(ebes_form, lib, 0, model),
                "ebes_class: entry a is smaller than its model.\n   rparms: has 2, the model uses 3.\n   Halting...\n");
    model[5] = 2;
    model[14] = 3;
    EXPECT_HALT(
        check_entry_counts(ebes_form, lib, 0, model),
        "ebes_class: entry a is smaller than its model.\n   no_functions has 2, the model uses 3.\n   Halting...\n");
}

TEST(write_registration, gives_each_name_its_function_and_the_counts_of_its_entry) {
    std::ostringstream out, none;
    write_registration(
        out, ebes_form,
        read_basic(ebe({"ebe name=a", "nodes: p n", "rparms: r=1 s=2 t=3", "no_functions 2"}, "f_p v(p)\nf_n v(n)\n")));
    EXPECT_TRUE(
        out.str().ends_with("const ebe_registration ebe_registrations[] = {\n"
                            "   {\"a\", e_a, {2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0, 0, 2}, run_ebe<e_a>},\n};\n"
                            "const int n_ebe_registrations = 1;\n"));
    write_registration(none, ebac_form, read_basic("", ebac_form));
    EXPECT_TRUE(none.str().ends_with("const int n_ebe_ac_registrations = 0;\n"));
}

}  // namespace
