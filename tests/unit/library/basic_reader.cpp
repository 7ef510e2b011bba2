#include "library/basic/basic_reader.h"

#include <gtest/gtest.h>

#include "halt_throws.h"
#include "library/basic/ebac1_class.h"
#include "library/basic/ebes1_class.h"
#include "library/basic/jacobian_map.h"
#include "library_texts.h"

namespace {

TEST(ebes_class, keeps_entries_lists_and_defaults_in_file_order) {
    const ebes_class lib = read_basic(small_ebes);
    ASSERT_EQ(lib.n(), 5);
    EXPECT_EQ(lib.list.entry[1], "src");
    EXPECT_EQ(lib.list.find("sense"), 2);
    EXPECT_EQ(lib.list.node.count(0), 2);
    EXPECT_EQ(lib.list.node.word(0, 1), "n");
    EXPECT_EQ(lib.list.iprm.value(0, 0), 2);
    EXPECT_EQ(lib.list.sprm.value(0, 0), "none");
    EXPECT_EQ(lib.list.rprm.word(0, 2), "k");
    EXPECT_EQ(lib.list.ig.value(1, 0), 0.5);
    EXPECT_EQ(lib.list.rprm.count(3), 0);
    EXPECT_EQ(lib.list.xvr.find(3, "xg"), 0);
    EXPECT_EQ(lib.list.xvr.find(0, "xg"), -1);
}

TEST(ebes_class, reads_scale_letters_comments_continuations_and_equal_signs_as_blanks) {
    const ebes_class lib = read_basic(ebe({"ebe name = x", "rparms: a 1k b=2m\n# between\n\n+ c 3u"}));
    EXPECT_EQ(lib.list.rprm.value(0, 0), 1000.0);
    EXPECT_EQ(lib.list.rprm.value(0, 1), 0.002);
    EXPECT_DOUBLE_EQ(lib.list.rprm.value(0, 2), 3e-6);
}

TEST(ebes_class, an_empty_text_is_an_empty_library) {
    EXPECT_EQ(read_basic("").n(), 0);
    EXPECT_EQ(read_basic("# nothing\n\n").n(), 0);
}

TEST(ebes_class, an_entry_without_nodes_and_functions_is_valid) {
    const ebes_class lib = read_basic(ebe({}));
    ASSERT_EQ(lib.n(), 1);
    EXPECT_EQ(lib.func.n_func(0), 0);
    ASSERT_EQ(lib.map.entry[0].size(), 7u);
    EXPECT_TRUE(lib.map.entry[0][0].func.empty());
}

TEST(ebes_class, flag_words_count_with_yes_only_and_at_any_place) {
    const ebes_class lib = read_basic(ebe({"ebe name=a limit_tstep=yes gmin_step=no strange=yes save_history=yes"}) +
                                      ebe({"ebe name=b limit_tstep=Yes calc_acp=YES limit_newton=1"}) +
                                      ebe({"ebe name=c allow_ssw=no"}) + ebe({"ebe name=d strange calc_acp yes"}));
    const entry_flags& f = lib.flag;
    EXPECT_EQ(f.limit_tstep, (std::vector<int>{1, 0, 0, 0}));
    EXPECT_EQ(f.save_history, (std::vector<int>{1, 0, 0, 0}));
    EXPECT_EQ(f.calc_acp, (std::vector<int>{0, 0, 0, 1}));
    EXPECT_EQ(f.limit_newton, (std::vector<int>{0, 0, 0, 0}));
    EXPECT_EQ(f.gmin_step, (std::vector<int>{0, 0, 0, 0}));
    EXPECT_EQ(f.startup_sprt, (std::vector<int>{0, 0, 0, 0}));
    EXPECT_EQ(f.allow_ssw, (std::vector<int>{1, 1, 0, 1}));
}

TEST(ebes_class, constant_jacobian_and_ground_dummy_are_marked) {
    const ebes_class lib = read_basic(ebe({"Jacobian: variable"}) + ebe({"ebe name=ground_dummy_1", "nodes: g"}));
    EXPECT_EQ(lib.flag.jac_const, (std::vector<int>{0, 1}));
    EXPECT_EQ(lib.flag.ground_dummy, (std::vector<int>{0, 1}));
}

TEST(ebes_class, the_first_of_two_entries_of_one_name_is_found) {
    const ebes_class lib = read_basic(ebe({"ebe name=a", "rparms: k=1"}) + ebe({"ebe name=a", "rparms: k=2"}));
    EXPECT_EQ(lib.list.find("a"), 0);
}

// ---- functions

const std::string charge_entry =
    ebe({"ebe name=q", "Jacobian: variable", "nodes: p n", "local_var: qp qn", "aux_var: a", "main_var: g",
         "ind_nodes: cp", "ind_branches: br", "no_functions 6"},
        "f_p v(p) d_dt(qp)\n"
        "f_n d_dt(qn) v(n) v(n)\n"
        "f_a d_dt(a) g d_dt(v(p))\n"
        "f_b volt(cp) cur(br)\n"
        "f_qn local_var qn v(p) v(n)\n"
        "f_qp local_var qp v(p) g\n");

TEST(functions, kinds_and_numbers_of_dependencies_follow_the_words) {
    const ebes_class lib = read_basic(charge_entry);
    const function_table& f = lib.func;
    EXPECT_EQ(f.first_fvar, (std::vector<int>{0, 2, 5, 8, 10, 12, 14}));
    EXPECT_EQ(f.var_flag, (std::vector<int>{1, 16, 16, 1, 1, 4, 6, 1, 11, 12, 1, 1, 1, 6}));
    EXPECT_EQ(f.var_number, (std::vector<int>{0, 0, 1, 1, 1, 0, 0, 0, 0, 0, 0, 1, 0, 0}));
    EXPECT_EQ(f.l_ddt, (std::vector<int>{0, 1, 1, 0, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(f.name[2], "a");
}

TEST(functions, terminal_lines_come_first_and_name_the_function_of_their_charge) {
    const function_table f = read_basic(charge_entry).func;
    EXPECT_EQ(f.flag_kcl, (std::vector<int>{1, 1, 0, 0, 0, 0}));
    EXPECT_EQ(f.flag_gnrl, (std::vector<int>{0, 0, 1, 1, 0, 0}));
    EXPECT_EQ(f.flag_locvar, (std::vector<int>{0, 0, 0, 0, 1, 1}));
    EXPECT_EQ(f.i_locvar, (std::vector<int>{-1, -1, -1, -1, 1, 0}));
    EXPECT_EQ(f.kcl_locvar_func, (std::vector<int>{5, 4, -1, -1, -1, -1}));
}

TEST(functions, the_last_d_dt_word_of_a_line_is_the_one_kept) {
    const function_table f = read_basic(charge_entry).func;
    EXPECT_EQ(f.flag_ddt, (std::vector<int>{1, 1, 1, 0, 0, 0}));
    EXPECT_EQ(f.ddt_var_flag, (std::vector<int>{16, 16, 1, -1, -1, -1}));
    EXPECT_EQ(f.ddt_var_number, (std::vector<int>{0, 1, 0, -1, -1, -1}));
}

TEST(functions, without_a_start_up_form_the_normal_functions_serve) {
    const function_table f = read_basic(charge_entry).func;
    EXPECT_EQ(f.func_startup, (std::vector<int>{1, 1, 1, 1, 0, 0}));
    EXPECT_EQ(f.startup_kcl, (std::vector<int>{1, 1, 0, 0, 0, 0}));
    EXPECT_EQ(f.startup_kcl_row, (std::vector<int>{0, 1, -1, -1, -1, -1}));
    EXPECT_EQ(f.startup_gnrl, (std::vector<int>{0, 0, 1, 1, 0, 0}));
}

TEST(functions, start_up_functions_take_the_terminal_rows_first_and_silence_the_normal_ones) {
    const function_table f = read_basic(ebe({"ebe name=s startup_sprt=yes", "nodes: p n", "aux_var: i",
                                             "aux_var_startup: i_s", "no_functions 6"},
                                            "f_p i\nf_n i\nf_v v(p) v(n)\n"
                                            "f_ps startup i_s\nf_ns startup i_s\nf_vs startup v(p)\n"))
                                 .func;
    EXPECT_EQ(f.func_startup, (std::vector<int>{0, 0, 0, 1, 1, 1}));
    EXPECT_EQ(f.startup_kcl, (std::vector<int>{0, 0, 0, 1, 1, 0}));
    EXPECT_EQ(f.startup_kcl_row, (std::vector<int>{-1, -1, -1, 0, 1, -1}));
    EXPECT_EQ(f.startup_gnrl, (std::vector<int>{0, 0, 0, 0, 0, 1}));
    EXPECT_EQ(f.flag_gnrl, (std::vector<int>{0, 0, 1, 0, 0, 0}));
    EXPECT_EQ(f.var_flag, (std::vector<int>{4, 4, 1, 1, 17, 17, 1}));
}

TEST(functions, a_d_dt_word_of_a_general_line_may_stand_bare_beside_it_and_counts_for_each_word) {
    const function_table f = read_basic(ebe({"aux_var: y", "no_functions 1"}, "f_y d_dt(y) y y\n")).func;
    EXPECT_EQ(f.var_number, (std::vector<int>{0, 0, 0}));
    EXPECT_EQ(f.l_ddt, (std::vector<int>{1, 0, 0}));
}

TEST(functions, a_line_without_dependencies_is_legal) {
    const function_table f = read_basic(ebe({"nodes: p n", "no_functions 2"}, "f_p\nf_n\n")).func;
    EXPECT_EQ(f.first_fvar, (std::vector<int>{0, 0, 0}));
}

TEST(functions, main_variables_are_searched_before_auxiliary_ones) {
    const function_table f = read_basic(ebe({"aux_var: w", "main_var: w", "no_functions 1"}, "f_y w\n")).func;
    EXPECT_EQ(f.var_flag, (std::vector<int>{6}));
}

TEST(functions, startup_and_local_var_are_plain_words_in_the_terminal_block) {
    EXPECT_HALT(read_basic(ebe({"nodes: p", "no_functions 1"}, "f_p startup v(p)\n")),
                "ebes_class: something wrong with function declarations.\n  string is startup\n  Halting...\n");
}

// ---- the Jacobian map

TEST(map_jacobian, holds_the_later_number_of_a_variable_that_stands_twice_and_minus_1_elsewhere) {
    const ebes_class lib = read_basic(charge_entry);
    const jacobian_map::one_kind& v = lib.map.entry[0][0];
    EXPECT_EQ(v.n_var, 2);
    EXPECT_EQ(v.func, (std::vector<int>{0, 1, 1, 2, 4, 4, 5}));
    EXPECT_EQ(v.var, (std::vector<int>{0, 1, 1, 0, 0, 1, 0}));
    EXPECT_EQ(v.map, (std::vector<int>{0, -1, -1, 2, 3, -1, -1, -1, 4, 5, 6, -1}));
    const jacobian_map::one_kind& locv = lib.map.entry[0][1];
    EXPECT_EQ(locv.map, (std::vector<int>{0, -1, -1, 1, -1, -1, -1, -1, -1, -1, -1, -1}));
}

TEST(map_jacobian, leads_from_every_dependency_to_its_own_numbers) {
    for (const auto& [text, form] : {std::pair{small_ebes + charge_entry, &ebes_form}, {small_ebac, &ebac_form}}) {
        const basic_library lib = read_basic(text, *form);
        for (const auto& entry : lib.map.entry)
            for (const jacobian_map::one_kind& k : entry)
                for (std::size_t s = 0; s < k.func.size(); ++s) {
                    const int at = k.map[static_cast<std::size_t>(k.func[s] * k.n_var + k.var[s])];
                    ASSERT_GE(at, static_cast<int>(s));
                    EXPECT_EQ(k.func[static_cast<std::size_t>(at)], k.func[s]);
                    EXPECT_EQ(k.var[static_cast<std::size_t>(at)], k.var[s]);
                }
    }
}

TEST(map_jacobian, an_unknown_kind_halts) {
    ebes_class lib = read_basic(small_ebes);
    lib.func.var_flag[0] = 99;
    EXPECT_HALT(map_jacobian(lib, ebes_form.map_kinds, "ebes_class"), "ebes_class::map_jacobian:\n   var_flag = 99\n");
}

TEST(ebes1_class, lays_seven_zeroed_tables_over_one_array) {
    const ebes_class lib = read_basic(charge_entry);
    ebes1_class jac;
    jac.initialise(lib, 0);
    EXPECT_EQ(jac.n_f, 6);
    EXPECT_EQ(jac.n_nd, 2);
    for (const double x : jac.store) EXPECT_EQ(x, 0.0);
    jac.dfdv[5][1] = 1;
    jac.dfdloc[0][1] = 2;
    jac.dfdvind[3][0] = 3;
    jac.dfdcurind[3][0] = 4;
    jac.dfdvr[2][0] = 5;
    jac.dfdaux[2][0] = 6;
    jac.f_1[5] = 7;
    const auto at = [&](int kind, int j, int m) { return jac.store[static_cast<std::size_t>(jac.offset(kind, j, m))]; };
    EXPECT_EQ(at(kind_v, 5, 1), 1);
    EXPECT_EQ(at(kind_locv, 0, 1), 2);
    EXPECT_EQ(at(kind_vind, 3, 0), 3);
    EXPECT_EQ(at(kind_curind, 3, 0), 4);
    EXPECT_EQ(at(kind_vr, 2, 0), 5);
    EXPECT_EQ(at(kind_aux, 2, 0), 6);
    EXPECT_EQ(jac.offset(kind_gaux, 0, 0), -1);
    double sum = 0;
    for (const double x : jac.store) sum += x;
    EXPECT_EQ(sum, 28.0);  // nothing overlaps
}

TEST(ebes1_class, of_an_entry_without_functions_has_no_tables) {
    const ebes_class lib = read_basic(ebe({}));
    ebes1_class jac;
    jac.initialise(lib, 0);
    EXPECT_TRUE(jac.store.empty());
    EXPECT_EQ(jac.n_f, 0);
}

TEST(ebac1_class, lays_five_complex_tables) {
    const ebac_class lib = read_basic(small_ebac, ebac_form);
    ebac1_class jac;
    jac.initialise(lib, 1);
    jac.dfdv[2][1] = {1, 2};
    jac.dfdaux[2][0] = {3, 4};
    EXPECT_EQ(jac.store[static_cast<std::size_t>(jac.offset(kind_v, 2, 1))], std::complex<double>(1, 2));
    EXPECT_EQ(jac.store[static_cast<std::size_t>(jac.offset(kind_aux, 2, 0))], std::complex<double>(3, 4));
    EXPECT_EQ(jac.offset(kind_auxs, 0, 0), -1);
}

// ---- small-signal forms

TEST(ebac_class, has_its_own_lines_and_the_noise_flag) {
    const ebac_class lib =
        read_basic(ebe_ac({"ebe_ac name=a noise_source=yes", "nodes: p n", "no_functions 2"}, "f_p v(p)\nf_n v(n)\n") +
                       ebe_ac({"ebe_ac name=ground_dummy_1", "nodes: g"}),
                   ebac_form);
    EXPECT_EQ(lib.flag.noise_source, (std::vector<int>{1, 0}));
    EXPECT_EQ(lib.flag.ground_dummy, (std::vector<int>{0, 1}));
    EXPECT_EQ(lib.map.entry[0].size(), 5u);
    EXPECT_EQ(lib.list.sv.count(0), 0);
}

}  // namespace
