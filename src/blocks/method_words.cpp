#include "blocks/method_words.h"

#include <algorithm>

#include "run/halt.h"
#include "run/words.h"

namespace {
using s = solve_class;
constexpr unsigned b_time = b_trns | b_ssw;

// Rows marked (*) have a default that depends on the circuit or on another setting; see method_default and the time
// checks of set_values.
constexpr method_word table[] = {
    // Newton iteration
    {"itmax_newton", b_all, &s::itmax_newton, 500},
    {"itmax_newton_first", b_all, &s::itmax_newton_first, 500},
    {"dmp", b_all, &s::dmp, 0},
    {"dmp_first", b_all, &s::dmp_first, 0},
    {"dmp_k", b_all, &s::dmp_k, 0.2},
    {"dmp_k2", b_all, &s::dmp_k2, 0.2},
    {"dmp_k_first", b_all, &s::dmp_k_first, 0.1},
    {"dmp_newt_max", b_all, &s::dmp_newt_max, 50},
    {"dmp_newt_max2", b_all, &s::dmp_newt_max2, 50},
    {"dmp_newt_max_first", b_all, &s::dmp_newt_max_first, 50},
    {"nr_line_search", b_all, &s::nr_line_search, 0},
    {"itmax_line_search", b_all, &s::itmax_line_search, 40},
    {"nr_approx", b_all, &s::nr_approx, 0},
    {"iter_trns_nrapprox", b_all, &s::iter_trns_nrapprox, 0},
    // convergence
    {"chk_cnvrg", b_all, &s::chk_cnvrg, 1},
    {"chk_rhs2", b_all, &s::chk_rhs2, 0},    // (*)
    {"chk_spice", b_all, &s::chk_spice, 0},  // (*)
    {"chk_rhs2_rel", b_all, &s::chk_rhs2_rel, 0},
    {"chk_rhsinf", b_all, &s::chk_rhsinf, 0},
    {"chk_delx_sprt", b_all, &s::chk_delx_sprt, 0},
    {"chk_delx_all", b_all, &s::chk_delx_all, 0},
    {"chk_delx_volt", b_all, &s::chk_delx_volt, 0},
    {"chk_delx_kcl", b_all, &s::chk_delx_kcl, 0},
    {"chk_only_rhs2", b_all, &s::chk_only_rhs2, 0},
    {"chk_only_delx_volt", b_all, &s::chk_only_delx_volt, 0},
    {"chk_only_spice", b_all, &s::chk_only_spice, 0},
    {"norm_2", b_all, &s::norm_2, 1e-10},
    {"norm_2_rel", b_all, &s::norm_2_rel, 1e-6},
    {"norm_inf", b_all, &s::norm_inf, 1e-10},
    {"norm_large", b_all, &s::norm_large, 1e15},
    {"norm_spice_nodev", b_all, &s::norm_spice_nodev, 1e-6},
    {"norm_spice_eaux", b_all, &s::norm_spice_eaux, 1e-4},
    {"norm_spice_locvar", b_all, &s::norm_spice_locvar, 1e-4},
    {"norm_spice_gvar", b_all, &s::norm_spice_gvar, 1e-4},
    {"norm_spice_gaux", b_all, &s::norm_spice_gaux, 1e-4},
    {"norm_spice_cur", b_all, &s::norm_spice_cur, 1e-12},
    {"norm_spice_rel", b_all, &s::norm_spice_rel, 1e-3},
    {"delxmax_all", b_all, &s::delxmax_all, 1e-10},
    {"delxmax_volt", b_all, &s::delxmax_volt, 1e-4},
    {"delxmax_kcl", b_all, &s::delxmax_kcl, 1e-9},
    // elimination
    {"matrix_sparse1", b_all, &s::matrix_sparse1, 1},
    {"matrix_superlu", b_all, &s::matrix_superlu, 0},
    {"zero_piv", b_all, &s::zero_piv, 1e-40},
    {"gauss_epsln", b_all, &s::gauss_epsln, 1e-40},
    {"debug_gauss_1", b_all, &s::debug_gauss_1, 0},
    {"debug_gauss_2", b_all, &s::debug_gauss_2, 0},
    {"wrt_debug_smat", b_all, &s::wrt_debug_smat, 0},
    // gmin stepping
    {"gmin_step", b_all, &s::gmin_step, 0},  // (*)
    {"gmin_init", b_all, &s::gmin_init, 1},
    {"gmin_dmp", b_all, &s::gmin_dmp, 1},
    {"gmin_dmp_k", b_all, &s::gmin_dmp_k, 0.2},
    {"gmin_start", b_all, &s::gmin_start, 0.1},
    {"gmin_end", b_all, &s::gmin_end, 1e-12},
    {"gmin_npoints", b_all, &s::gmin_npoints, 50},
    {"gmin_itmax_newton", b_all, &s::gmin_itmax_newton, 500},
    {"gmin_dmp_newt_max", b_all, &s::gmin_dmp_newt_max, 200},
    // digital passes
    {"n_pass_dgtl", b_all, &s::n_pass_dgtl, 20},
    {"n_pass_mixed", b_all, &s::n_pass_mixed, 20},
    {"offset_dgtl", b_all, &s::offset_dgtl, 2.0},
    // explicit solver
    {"x_itmax_newton", b_all, &s::x_itmax_newton, 500},
    {"x_itmax_newton_first", b_all, &s::x_itmax_newton_first, 500},
    {"x_dmp", b_all, &s::x_dmp, 0},
    {"x_dmp_first", b_all, &s::x_dmp_first, 0},
    {"x_dmp_k", b_all, &s::x_dmp_k, 0.2},
    {"x_dmp_k_first", b_all, &s::x_dmp_k_first, 0.1},
    {"x_dmp_newt_max", b_all, &s::x_dmp_newt_max, 50},
    {"x_dmp_newt_max_first", b_all, &s::x_dmp_newt_max_first, 50},
    {"x_chk_rhs2", b_all, &s::x_chk_rhs2, 1},
    {"x_chk_spice", b_all, &s::x_chk_spice, 0},
    {"x_norm_2", b_all, &s::x_norm_2, 1e-10},
    {"x_norm_large", b_all, &s::x_norm_large, 1e15},
    {"x_norm_spice_nodev", b_all, &s::x_norm_spice_nodev, 1e-6},
    {"x_norm_spice_xaux", b_all, &s::x_norm_spice_xaux, 1e-4},
    {"x_norm_spice_cur", b_all, &s::x_norm_spice_cur, 1e-12},
    {"x_norm_spice_rel", b_all, &s::x_norm_spice_rel, 1e-3},
    {"x_write_rhs2", b_all, &s::x_write_rhs2, 0},
    {"x_write_spice", b_all, &s::x_write_spice, 0},
    {"x_wrt_debug_smat", b_all, &s::x_wrt_debug_smat, 0},
    {"x_write_time", b_all, &s::x_write_time, 1},
    {"x_iter_write_rhs2", b_all, &s::x_iter_write_rhs2, 0},
    {"x_iter_debug_newton", b_all, &s::x_iter_debug_newton, 200},
    // progress and diagnostics
    {"n_wrtiterno", b_all, &s::n_wrtiterno, 1000},
    {"iter_debug_newton", b_all, &s::iter_debug_newton, 200},
    {"iter_debug_ssw_newton", b_all, &s::iter_debug_ssw_newton, 1},
    {"iter_debug_trns", b_all, &s::iter_debug_trns, 100000},
    {"iter_write_rhs2", b_all, &s::iter_write_rhs2, 0},
    {"flag_debug_int", b_all, &s::flag_debug_int, 0},
    {"write_rhs2", b_all, &s::write_rhs2, 0},
    {"write_rhsinf", b_all, &s::write_rhsinf, 0},
    {"write_delx_sprt", b_all, &s::write_delx_sprt, 0},
    {"write_delx_all", b_all, &s::write_delx_all, 0},
    {"write_delx_volt", b_all, &s::write_delx_volt, 0},
    {"write_delx_kcl", b_all, &s::write_delx_kcl, 0},
    {"write_spice", b_all, &s::write_spice, 0},
    // time
    {"back_euler", b_time, &s::back_euler, 0},
    {"back_euler_auto", b_time, &s::back_euler_auto, 0},
    {"trapezoidal", b_time, &s::trapezoidal, 0},
    {"trapezoidal_auto", b_time, &s::trapezoidal_auto, 0},
    {"gear2", b_time, &s::gear2, 0},
    {"gear2_fixed", b_time, &s::gear2_fixed, 0},
    {"trbdf2", b_time, &s::trbdf2, 0},
    {"forward_euler", b_time, &s::forward_euler, 0},
    {"RK4", b_time, &s::RK4, 0},
    {"RKF45", b_time, &s::RKF45, 0},
    {"BS23", b_time, &s::BS23, 0},
    {"modified_euler", b_time, &s::modified_euler, 0},
    {"Heun", b_time, &s::Heun, 0},
    {"constant_step", b_time, &s::constant_step, 0},
    {"x_eval_serial", b_time, &s::x_eval_serial, 0},  // (*)
    {"write_time", b_time, &s::write_time, 1},
    {"t_start", b_time, &flags_class::t_start, 0.0},
    {"t_end", b_time, &flags_class::t_end, keep_value},
    {"delt_const", b_time, &s::delt_const, 0},
    {"delt_min", b_time, &s::delt_min, 0},  // (*)
    {"delt_max", b_time, &s::delt_max, 0},  // (*)
    {"delt_const_x", b_time, &s::delt_const_x, 0},
    {"delt_min_x", b_time, &s::delt_min_x, 0},  // (*)
    {"delt_max_x", b_time, &s::delt_max_x, 0},  // (*)
    {"fctr_stepred", b_time, &s::fctr_stepred, 0.6},
    {"fctr_stepinc", b_time, &s::fctr_stepinc, 1.5},
    {"time_epsilon", b_time, &s::time_epsilon, 1e-13},
    {"time_epsilon_x", b_time, &s::time_epsilon_x, 1e-13},
    {"trbdf2_tolr", b_time, &s::trbdf2_tolr, 1e-5},
    {"trbdf2_gamma", b_time, &s::trbdf2_gamma, 0.5857864376269049},  // 2 - sqrt(2): both stages share one matrix
    {"rkf45_tolr", b_time, &s::rkf45_tolr, 1e-8},
    {"bs23_tolr", b_time, &s::bs23_tolr, 1e-8},
    {"rkf45_fctr_min", b_time, &s::rkf45_fctr_min, 0.8},
    {"bs23_fctr_min", b_time, &s::bs23_fctr_min, 0.8},
    {"rkf45_fctr_max", b_time, &s::rkf45_fctr_max, 1.1},
    {"bs23_fctr_max", b_time, &s::bs23_fctr_max, 1.1},
    {"event_restart", b_trns, &s::event_restart, 0},
    {"itmax_trns", b_time, &s::itmax_trns, 100000},
    {"itmax_trbdf2", b_all, &s::itmax_trbdf2, 20},
    {"itmax_stepred", b_all, &s::itmax_stepred, 20},
    // one type of block
    {"compute_acp", b_ac, &s::compute_acp, 1},
    {"t_startup", b_startup, &s::t_startup, 0},
    {"t_dc", b_dc, &s::t_dc, 0},
    {"ssw_period", b_ssw, &s::ssw_period, 0},
    {"ssw_frequency", b_ssw, &s::ssw_frequency, 0},
    {"ssw_norm", b_ssw, &s::ssw_norm, 1e-8},
    {"ssw_itmax_newton", b_ssw, &s::ssw_itmax_newton, 20},
    {"ssw_ndiv", b_ssw, &s::ssw_ndiv, 100},
    {"ssw_period_mult", b_ssw, &s::ssw_period_mult, 1},
    {"ssw_dmp", b_ssw, &s::ssw_dmp, 0},
    {"ssw_dmp_k", b_ssw, &s::ssw_dmp_k, 0.8},
    {"ssw_dmp_newt_max", b_ssw, &s::ssw_dmp_newt_max, 10},
    {"ssw_known_period", b_ssw, &s::ssw_known_period, 1},
    {"ssw_chk_spice", b_ssw, &s::ssw_chk_spice, 0},  // (*)
    {"ssw_chk_rhs2", b_ssw, &s::ssw_chk_rhs2, 0},    // (*)
};

// The object of a block that a member belongs to.
template <class T>
T& member_of(solve_class& slv, flags_class&, T solve_class::*m) {
    return slv.*m;
}
template <class T>
T& member_of(solve_class&, flags_class& flags, T flags_class::*m) {
    return flags.*m;
}

void read_value(int& to, const gprm_class& gprm, std::string_view value) { to = gprm.gprm_int_1(value); }
void read_value(double& to, const gprm_class& gprm, std::string_view value) { to = gprm.gprm_double_1(value); }
void read_value(truefalse& to, const gprm_class&, std::string_view value) { to = assign_flag_1(value) ? int_T : int_F; }

const method_word* find_method_word(std::string_view word) {
    const method_word* end = std::end(table);
    const method_word* at = std::find_if(std::begin(table), end, [&](const method_word& m) { return m.word == word; });
    return at == end ? nullptr : at;
}
std::size_t row_of(const method_word* m) { return static_cast<std::size_t>(m - table); }
}  // namespace

std::span<const method_word> method_words() { return table; }

const char* type_name(const method_word& m) {
    constexpr const char* names[] = {"int", "double", "flag", "double"};
    return names[m.member.index()];
}

unsigned block_bit(const solve_class& slv) {
    if (slv.dc) return b_dc;
    if (slv.ac) return b_ac;
    if (slv.trns) return b_trns;
    if (slv.startup) return b_startup;
    if (slv.ssw) return b_ssw;
    return b_unknown;
}

void read_method_pair(solve_class& slv, flags_class& flags, const gprm_class& gprm, std::string_view word,
                      std::string_view value) {
    const method_word* m = find_method_word(word);
    if (m == nullptr || !(m->blocks & block_bit(slv)))
        halt({"solve_class: An unknown keyword is found", "  in the method card.", line("  The word is: ", word),
              "  Halting..."});
    std::visit([&](auto member) { read_value(member_of(slv, flags, member), gprm, value); }, m->member);
    slv.given[row_of(m)] = 1;
}

bool was_given(const solve_class& slv, std::string_view word) {
    const method_word* m = find_method_word(word);
    return m != nullptr && !slv.given.empty() && slv.given[row_of(m)] != 0;
}

void method_default(solve_class& slv, const circuit& c, flags_class& flags) {
    for (const method_word& m : table)
        if (m.dflt != keep_value)
            std::visit(
                [&](auto member) {
                    auto& to = member_of(slv, flags, member);
                    to = static_cast<std::remove_reference_t<decltype(to)>>(m.dflt);
                },
                m.member);
    slv.given.assign(std::size(table), 0);

    // A change of voltages is what tells convergence of a circuit; pure block diagrams have no scale for it.
    const bool electrical = c.eelu.n > 0;
    slv.chk_spice = slv.ssw_chk_spice = electrical ? int_T : int_F;
    slv.chk_rhs2 = slv.ssw_chk_rhs2 = electrical ? int_F : int_T;
    const std::vector<int>& declared = c.lib.ebes.flag.gmin_step;
    const bool any_gmin = std::any_of(declared.begin(), declared.end(), [](int flag) { return flag != 0; });
    slv.gmin_step = electrical && any_gmin ? int_T : int_F;
    slv.x_eval_serial = flags.x_matrix ? int_F : int_T;
}
