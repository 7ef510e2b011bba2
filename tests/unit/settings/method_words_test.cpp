#include "settings/method_words.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "block_fixture.h"
#include "halt_throws.h"
#include "settings/solve_words.h"

namespace {
// The defaults that do not depend on the circuit, as the manual lists them.
struct listed_word {
    const char* word;
    const char* type;
    double dflt;
};
const listed_word listed[] = {{"itmax_newton", "int", 500},
                              {"itmax_newton_first", "int", 500},
                              {"dmp", "flag", 0},
                              {"dmp_first", "flag", 0},
                              {"dmp_k", "double", 0.2},
                              {"dmp_k2", "double", 0.2},
                              {"dmp_k_first", "double", 0.1},
                              {"dmp_newt_max", "int", 50},
                              {"dmp_newt_max2", "int", 50},
                              {"dmp_newt_max_first", "int", 50},
                              {"nr_line_search", "flag", 0},
                              {"itmax_line_search", "int", 40},
                              {"nr_approx", "flag", 0},
                              {"iter_trns_nrapprox", "int", 0},
                              {"chk_cnvrg", "flag", 1},
                              {"chk_rhs2_rel", "flag", 0},
                              {"chk_rhsinf", "flag", 0},
                              {"chk_delx_sprt", "flag", 0},
                              {"chk_delx_all", "flag", 0},
                              {"chk_delx_volt", "flag", 0},
                              {"chk_delx_kcl", "flag", 0},
                              {"chk_only_rhs2", "flag", 0},
                              {"chk_only_delx_volt", "flag", 0},
                              {"chk_only_spice", "flag", 0},
                              {"norm_2", "double", 1e-10},
                              {"norm_2_rel", "double", 1e-6},
                              {"norm_inf", "double", 1e-10},
                              {"norm_large", "double", 1e15},
                              {"norm_spice_nodev", "double", 1e-6},
                              {"norm_spice_eaux", "double", 1e-4},
                              {"norm_spice_locvar", "double", 1e-4},
                              {"norm_spice_gvar", "double", 1e-4},
                              {"norm_spice_gaux", "double", 1e-4},
                              {"norm_spice_cur", "double", 1e-12},
                              {"norm_spice_rel", "double", 1e-3},
                              {"delxmax_all", "double", 1e-10},
                              {"delxmax_volt", "double", 1e-4},
                              {"delxmax_kcl", "double", 1e-9},
                              {"matrix_sparse1", "flag", 1},
                              {"matrix_superlu", "flag", 0},
                              {"zero_piv", "double", 1e-40},
                              {"gauss_epsln", "double", 1e-40},
                              {"debug_gauss_1", "flag", 0},
                              {"debug_gauss_2", "flag", 0},
                              {"wrt_debug_smat", "flag", 0},
                              {"gmin_init", "flag", 1},
                              {"gmin_dmp", "flag", 1},
                              {"gmin_dmp_k", "double", 0.2},
                              {"gmin_start", "double", 0.1},
                              {"gmin_end", "double", 1e-12},
                              {"gmin_npoints", "int", 50},
                              {"gmin_itmax_newton", "int", 500},
                              {"gmin_dmp_newt_max", "int", 200},
                              {"x_itmax_newton", "int", 500},
                              {"x_itmax_newton_first", "int", 500},
                              {"x_dmp", "flag", 0},
                              {"x_dmp_first", "flag", 0},
                              {"x_dmp_k", "double", 0.2},
                              {"x_dmp_k_first", "double", 0.1},
                              {"x_dmp_newt_max", "int", 50},
                              {"x_dmp_newt_max_first", "int", 50},
                              {"x_chk_rhs2", "flag", 1},
                              {"x_chk_spice", "flag", 0},
                              {"x_norm_2", "double", 1e-10},
                              {"x_norm_large", "double", 1e15},
                              {"x_norm_spice_nodev", "double", 1e-6},
                              {"x_norm_spice_xaux", "double", 1e-4},
                              {"x_norm_spice_cur", "double", 1e-12},
                              {"x_norm_spice_rel", "double", 1e-3},
                              {"x_write_rhs2", "flag", 0},
                              {"x_write_spice", "flag", 0},
                              {"x_wrt_debug_smat", "flag", 0},
                              {"x_write_time", "flag", 1},
                              {"x_iter_write_rhs2", "int", 0},
                              {"x_iter_debug_newton", "int", 200},
                              {"n_wrtiterno", "int", 1000},
                              {"iter_debug_newton", "int", 200},
                              {"iter_debug_ssw_newton", "int", 1},
                              {"iter_debug_trns", "int", 100000},
                              {"iter_write_rhs2", "int", 0},
                              {"flag_debug_int", "int", 0},
                              {"write_rhs2", "flag", 0},
                              {"write_rhsinf", "flag", 0},
                              {"write_delx_sprt", "flag", 0},
                              {"write_delx_all", "flag", 0},
                              {"write_delx_volt", "flag", 0},
                              {"write_delx_kcl", "flag", 0},
                              {"write_spice", "flag", 0},
                              {"back_euler", "flag", 0},
                              {"back_euler_auto", "flag", 0},
                              {"trapezoidal", "flag", 0},
                              {"trapezoidal_auto", "flag", 0},
                              {"gear2", "flag", 0},
                              {"gear2_fixed", "flag", 0},
                              {"trbdf2", "flag", 0},
                              {"forward_euler", "flag", 0},
                              {"RK4", "flag", 0},
                              {"RKF45", "flag", 0},
                              {"BS23", "flag", 0},
                              {"modified_euler", "flag", 0},
                              {"Heun", "flag", 0},
                              {"constant_step", "flag", 0},
                              {"event_restart", "flag", 0},
                              {"write_time", "flag", 1},
                              {"fctr_stepred", "double", 0.6},
                              {"fctr_stepinc", "double", 1.5},
                              {"time_epsilon", "double", 1e-13},
                              {"time_epsilon_x", "double", 1e-13},
                              {"trbdf2_tolr", "double", 1e-5},
                              {"trbdf2_gamma", "double", 0.5857864376269049},
                              {"rkf45_tolr", "double", 1e-8},
                              {"bs23_tolr", "double", 1e-8},
                              {"rkf45_fctr_min", "double", 0.8},
                              {"bs23_fctr_min", "double", 0.8},
                              {"rkf45_fctr_max", "double", 1.1},
                              {"bs23_fctr_max", "double", 1.1},
                              {"itmax_trns", "int", 100000},
                              {"itmax_trbdf2", "int", 20},
                              {"itmax_stepred", "int", 20},
                              {"ssw_norm", "double", 1e-8},
                              {"ssw_itmax_newton", "int", 20},
                              {"ssw_ndiv", "int", 100},
                              {"ssw_period_mult", "int", 1},
                              {"ssw_dmp", "flag", 0},
                              {"ssw_dmp_k", "double", 0.8},
                              {"ssw_dmp_newt_max", "int", 10},
                              {"ssw_known_period", "flag", 1},
                              {"n_pass_dgtl", "int", 20},
                              {"n_pass_mixed", "int", 20},
                              {"offset_dgtl", "double", 2.0},
                              {"compute_acp", "flag", 1},
                              {"t_start", "double", 0},
                              {"t_startup", "double", 0},
                              {"t_dc", "double", 0}};
const std::set<std::string_view> depends_on_circuit = {"chk_rhs2",      "chk_spice",     "gmin_step",   "x_eval_serial",
                                                       "t_end",         "delt_const",    "delt_min",    "delt_max",
                                                       "delt_const_x",  "delt_min_x",    "delt_max_x",  "ssw_period",
                                                       "ssw_frequency", "ssw_chk_spice", "ssw_chk_rhs2"};

double value(const method_word& m, const solve_class& slv, const flags_class& flags) {
    return std::visit(
        [&](auto member) {
            if constexpr (std::is_same_v<decltype(member), double flags_class::*>)
                return flags.*member;
            else
                return static_cast<double>(slv.method.*member);
        },
        m.member);
}

const method_word& row(std::string_view word) {
    const auto words = method_words();
    const auto it = std::find_if(words.begin(), words.end(), [&](const method_word& m) { return m.word == word; });
    EXPECT_NE(it, words.end()) << word;
    return *it;
}

// A block of one card and nothing that the checks would refuse.
constexpr const char* types[] = {"dc", "ac", "trns", "startup", "ssw", "other"};
solve_class typed(int type) {
    solve_class slv;
    truefalse solve_class::*const flags[] = {&solve_class::dc, &solve_class::ac, &solve_class::trns,
                                             &solve_class::startup, &solve_class::ssw};
    if (type < 5) slv.*flags[type] = int_T;
    return slv;
}
}  // namespace

TEST(method_default, gives_every_listed_default) {
    const block_run r = prepared("");
    solve_class slv;
    flags_class flags;
    flags.t_start = 7.0;
    method_default(slv, r.c, flags);
    for (const listed_word& l : listed) {
        EXPECT_STREQ(type_name(row(l.word)), l.type) << l.word;
        EXPECT_EQ(value(row(l.word), slv, flags), l.dflt) << l.word;
    }
    EXPECT_EQ(flags.t_start, 0.0);
}

TEST(method_default, knows_no_word_beyond_the_listed_ones) {
    std::set<std::string_view> known;
    for (const listed_word& l : listed) known.insert(l.word);
    known.insert(depends_on_circuit.begin(), depends_on_circuit.end());
    std::set<std::string_view> in_table;
    for (const method_word& m : method_words()) EXPECT_TRUE(in_table.insert(m.word).second) << m.word;
    EXPECT_EQ(in_table, known);
}

// What users are told: a default that method_default or the checks replace must not be shown as the row's.
TEST(method_words, tell_what_holds_where_the_default_is_not_that_of_the_row) {
    std::set<std::string_view> told;
    for (const method_word& m : method_words())
        if (!m.if_not_given.empty()) told.insert(m.word);
    for (std::string_view word : depends_on_circuit) EXPECT_TRUE(told.count(word)) << word;
}

TEST(method_words, stand_in_sections_that_begin_with_one_of_them) {
    EXPECT_EQ(method_sections().front().first, method_words().front().word);
    std::size_t found = 0;
    for (const method_word& m : method_words())
        if (found < method_sections().size() && method_sections()[found].first == m.word) ++found;
    EXPECT_EQ(found, method_sections().size());
}

TEST(method_default, depends_on_electrical_instances_and_on_the_libraries) {
    block_run r = prepared("");
    method_default(r.slv, r.c, r.flags);
    EXPECT_TRUE(r.slv.method.chk_spice && r.slv.method.ssw_chk_spice);
    EXPECT_FALSE(r.slv.method.chk_rhs2 || r.slv.method.ssw_chk_rhs2);
    EXPECT_FALSE(r.slv.method.gmin_step) << "no entry of the library declares it";
    EXPECT_TRUE(r.slv.method.x_eval_serial);

    r.c.lib.ebes.flag.gmin_step.back() = 1;  // an entry that no unit uses counts as well
    r.flags.x_matrix = 1;
    method_default(r.slv, r.c, r.flags);
    EXPECT_TRUE(r.slv.method.gmin_step);
    EXPECT_FALSE(r.slv.method.x_eval_serial);

    r.c.eelu.n = 0;
    method_default(r.slv, r.c, r.flags);
    EXPECT_FALSE(r.slv.method.chk_spice || r.slv.method.gmin_step || r.slv.method.ssw_chk_spice);
    EXPECT_TRUE(r.slv.method.chk_rhs2 && r.slv.method.ssw_chk_rhs2);
}

TEST(method_default, resets_what_the_last_block_set_but_not_t_end) {
    block_run r = prepared("");
    r.flags.t_end = 3.0;
    r.slv.method.chk_only_spice = int_T;
    r.slv.method.itmax_newton = 1;
    method_default(r.slv, r.c, r.flags);
    EXPECT_FALSE(r.slv.method.chk_only_spice);
    EXPECT_EQ(r.slv.method.itmax_newton, 500);
    EXPECT_EQ(r.flags.t_end, 3.0);
}

TEST(method_card, sets_each_keyword_in_its_types_and_refuses_it_in_the_others) {
    const std::map<std::string_view, unsigned> limited = {
        {"compute_acp", b_ac}, {"t_startup", b_startup}, {"t_dc", b_dc}, {"event_restart", b_trns}};
    const std::set<std::string_view> of_time = {"back_euler",
                                                "back_euler_auto",
                                                "trapezoidal",
                                                "trapezoidal_auto",
                                                "gear2",
                                                "gear2_fixed",
                                                "trbdf2",
                                                "forward_euler",
                                                "RK4",
                                                "RKF45",
                                                "BS23",
                                                "modified_euler",
                                                "Heun",
                                                "constant_step",
                                                "x_eval_serial",
                                                "write_time",
                                                "t_start",
                                                "t_end",
                                                "delt_const",
                                                "delt_min",
                                                "delt_max",
                                                "delt_const_x",
                                                "delt_min_x",
                                                "delt_max_x",
                                                "fctr_stepred",
                                                "fctr_stepinc",
                                                "time_epsilon",
                                                "time_epsilon_x",
                                                "trbdf2_tolr",
                                                "trbdf2_gamma",
                                                "rkf45_tolr",
                                                "bs23_tolr",
                                                "rkf45_fctr_min",
                                                "bs23_fctr_min",
                                                "rkf45_fctr_max",
                                                "bs23_fctr_max",
                                                "itmax_trns"};
    const block_run r = prepared("");
    for (const method_word& m : method_words()) {
        unsigned expected = b_all;
        if (limited.count(m.word)) expected = limited.at(m.word);
        if (of_time.count(m.word)) expected = b_trns | b_ssw;
        if (m.word.starts_with("ssw_")) expected = b_ssw;
        const bool is_flag = std::string_view(type_name(m)) == "flag";
        for (int type = 0; type < 6; ++type) {
            solve_class slv = typed(type);
            flags_class flags;
            method_default(slv, r.c, flags);
            if (expected & (1u << type)) {
                read_method_pair(slv, flags, r.c.gprm, m.word, is_flag ? "yes" : "7");
                EXPECT_EQ(value(m, slv, flags), is_flag ? 1.0 : 7.0) << m.word << " in " << types[type];
                EXPECT_TRUE(was_given(slv, m.word));
            } else {
                EXPECT_HALT(read_method_pair(slv, flags, r.c.gprm, m.word, "7"),
                            line("solve_class: An unknown keyword is found\n  in the method card.\n"
                                 "  The word is: ",
                                 m.word, "\n  Halting...\n"));
            }
        }
    }
}

TEST(method_card, takes_scale_letters_globals_and_only_yes_for_true) {
    block_run r = read_cards(
        "method: norm_2=2u dmp=yes gmin_dmp=no chk_delx_all=true\n"
        "solve_type dc\n"
        "method: itmax_newton=twenty delxmax_volt=half gmin_init=Yes write_rhs2\n");
    EXPECT_DOUBLE_EQ(r.slv.method.norm_2, 2e-6);
    EXPECT_TRUE(r.slv.method.dmp);
    EXPECT_FALSE(r.slv.method.gmin_dmp || r.slv.method.chk_delx_all || r.slv.method.gmin_init);
    EXPECT_EQ(r.slv.method.itmax_newton, 20);
    EXPECT_EQ(r.slv.method.delxmax_volt, 0.5);
    EXPECT_FALSE(r.slv.method.write_rhs2) << "a keyword without a value is ignored";
}

TEST(method_card, halts_on_a_word_that_is_no_keyword) {
    EXPECT_HALT(read_cards("solve_type dc\nmethod: norm_2=1 nroam=2\n"),
                "solve_class: An unknown keyword is found\n  in the method card.\n  The word is: nroam\n"
                "  Halting...\n");
}

TEST(solve_words, hold_every_keyword_of_cards_options_and_directives) {
    const std::vector<std::string_view> all = solve_block_words();
    const std::set<std::string_view> known(all.begin(), all.end());
    for (const char* word :
         {"solve_type", "method:",      "initial_sol",    "begin_output", "set_parm",   "set_stparm",
          "set_igparm", "set_dstparm",  "set_digparm",    "set_dgtl",     "vary_parm",  "vary_parm_sync",
          "set_freq",   "vary_freq",    "limit_lines",    "append",       "output_hz",  "fourier",
          "nyquist",    "sweep_format", "fixed_interval", "out_tstart",   "out_tend",   "min_phase",
          "max_phase",  "delta_phase",  "n_fourier",      "p_begin",      "factor_red", "itmax_sweep",
          "div",        "solution",     "solution_ac",    "parms",        "all_nodes",  "all_outvars",
          "ssw_ndiv",   "trbdf2_gamma"})
        EXPECT_TRUE(known.count(word)) << word;
}
