#include "settings/method_words.h"

#include <algorithm>

#include "base/halt.h"
#include "base/words.h"

namespace {
using s = method_settings;
constexpr unsigned b_time = b_trns | b_ssw;
constexpr unsigned b_solved = b_dc | b_startup | b_trns | b_ssw;  // types with Newton iterations in real numbers

// Rows with a text behind their meaning have a default that depends on the circuit or on another setting: it comes from
// method_default or from the checks behind the cards.
constexpr method_word table[] = {
    // Newton iteration
    {"itmax_newton", b_all, &s::itmax_newton, 500, b_solved, "iterations of one solve at most"},
    {"itmax_newton_first", b_all, &s::itmax_newton_first, 500, b_solved,
     "itmax_newton of a first solve: in dc and startup every point that starts from nothing, in trns the first step"},
    {"dmp", b_all, &s::dmp, 0, b_solved,
     "only a part of each Newton step is taken, in the first dmp_newt_max iterations"},
    {"dmp_first", b_all, &s::dmp_first, 0, b_solved, "as dmp, in a first solve (see itmax_newton_first)"},
    {"dmp_k", b_all, &s::dmp_k, 0.2, b_solved, "the part of a step that dmp takes"},
    {"dmp_k2", b_all, &s::dmp_k2, 0.2, 0, "a second part, not above dmp_k; held against it and not used",
     "0.2; dmp_k where that is given alone"},
    {"dmp_k_first", b_all, &s::dmp_k_first, 0.1, b_solved, "the part of a step that dmp_first takes"},
    {"dmp_newt_max", b_all, &s::dmp_newt_max, 50, b_dc | b_startup, "iterations that dmp damps"},
    {"dmp_newt_max2", b_all, &s::dmp_newt_max2, 50, b_time,
     "iterations that dmp damps in runs in time; not below dmp_newt_max",
     "50; dmp_newt_max where dmp_k is given alone"},
    {"dmp_newt_max_first", b_all, &s::dmp_newt_max_first, 50, b_solved, "iterations that dmp_first damps"},
    {"nr_line_search", b_all, &s::nr_line_search, 0, b_dc | b_trns | b_ssw,
     "halves a Newton step until the residual does not grow; stops the run in other blocks"},
    {"itmax_line_search", b_all, &s::itmax_line_search, 40, b_dc | b_trns | b_ssw,
     "halvings of nr_line_search at most"},
    {"nr_approx", b_all, &s::nr_approx, 0, b_trns,
     "from step iter_trns_nrapprox on the factors of the matrix are kept; for circuits with electrical elements"},
    {"iter_trns_nrapprox", b_all, &s::iter_trns_nrapprox, 0, b_trns,
     "step from which nr_approx holds, counted from 0; the first step always has its own factors"},
    // convergence
    {"chk_cnvrg", b_all, &s::chk_cnvrg, 1, b_solved, "no: the first iterate is the solution"},
    {"chk_rhs2", b_all, &s::chk_rhs2, 0, b_solved, "test: root mean square of the residuals below norm_2",
     "no; yes in decks of blocks alone"},
    {"chk_spice", b_all, &s::chk_spice, 0, b_solved,
     "test: each unknown changed by less than norm_spice_rel of itself plus the norm_spice_ of its kind, and the "
     "residual is at most 1",
     "yes; no in decks of blocks alone"},
    {"chk_rhs2_rel", b_all, &s::chk_rhs2_rel, 0, b_solved,
     "test: the residual has fallen to norm_2_rel of that of the first iterate"},
    {"chk_rhsinf", b_all, &s::chk_rhsinf, 0, b_solved, "test: greatest residual below norm_inf"},
    {"chk_delx_sprt", b_all, &s::chk_delx_sprt, 0, b_solved, "test by chk_delx_volt, chk_delx_kcl; they turn it on"},
    {"chk_delx_all", b_all, &s::chk_delx_all, 0, b_solved, "test: greatest change of an unknown below delxmax_all"},
    {"chk_delx_volt", b_all, &s::chk_delx_volt, 0, b_solved,
     "test: greatest change of a node voltage below delxmax_volt"},
    {"chk_delx_kcl", b_all, &s::chk_delx_kcl, 0, b_solved,
     "test: greatest residual below delxmax_kcl; then that of chk_delx_volt is out of force"},
    {"chk_only_rhs2", b_all, &s::chk_only_rhs2, 0, b_solved, "chk_rhs2 and no other test"},
    {"chk_only_delx_volt", b_all, &s::chk_only_delx_volt, 0, b_solved, "chk_delx_volt and no other test"},
    {"chk_only_spice", b_all, &s::chk_only_spice, 0, b_solved, "chk_spice and no other test"},
    {"norm_2", b_all, &s::norm_2, 1e-10, b_solved, "bound of chk_rhs2"},
    {"norm_2_rel", b_all, &s::norm_2_rel, 1e-6, b_solved, "bound of chk_rhs2_rel"},
    {"norm_inf", b_all, &s::norm_inf, 1e-10, b_solved, "bound of chk_rhsinf"},
    {"norm_large", b_all, &s::norm_large, 1e15, b_solved, "beyond it an iteration has run away and is given up"},
    {"norm_spice_nodev", b_all, &s::norm_spice_nodev, 1e-6, b_solved, "of chk_spice: node voltages, V"},
    {"norm_spice_eaux", b_all, &s::norm_spice_eaux, 1e-4, b_solved,
     "of chk_spice: unknowns inside electrical elements, such as currents of sources"},
    {"norm_spice_locvar", b_all, &s::norm_spice_locvar, 1e-4, b_solved,
     "of chk_spice: local variables of electrical elements"},
    {"norm_spice_gvar", b_all, &s::norm_spice_gvar, 1e-4, b_solved, "of chk_spice: variables of blocks"},
    {"norm_spice_gaux", b_all, &s::norm_spice_gaux, 1e-4, b_solved, "of chk_spice: unknowns inside blocks"},
    {"norm_spice_cur", b_all, &s::norm_spice_cur, 1e-12, b_ssw, "currents, A"},
    {"norm_spice_rel", b_all, &s::norm_spice_rel, 1e-3, b_solved, "of chk_spice: part of the unknown itself"},
    {"delxmax_all", b_all, &s::delxmax_all, 1e-10, b_solved, "bound of chk_delx_all"},
    {"delxmax_volt", b_all, &s::delxmax_volt, 1e-4, b_solved, "bound of chk_delx_volt, V"},
    {"delxmax_kcl", b_all, &s::delxmax_kcl, 1e-9, b_solved, "bound of chk_delx_kcl"},
    // elimination
    {"matrix_sparse1", b_all, &s::matrix_sparse1, 1, b_solved, "the linear solver; anything but yes stops the run"},
    {"matrix_superlu", b_all, &s::matrix_superlu, 0, b_solved, "another one that there is not: yes stops the run"},
    {"zero_piv", b_all, &s::zero_piv, 1e-40, b_solved,
     "a pivot of less in the replay of an elimination brings a new order; in that too, it stops the run"},
    {"gauss_epsln", b_all, &s::gauss_epsln, 1e-40, b_solved,
     "a pivot of less stops the run while the order of elimination is chosen"},
    {"debug_gauss_1", b_all, &s::debug_gauss_1, 0, b_solved, "prints the order of elimination as it is found"},
    {"debug_gauss_2", b_all, &s::debug_gauss_2, 0, b_solved, "prints the elimination as it is replayed"},
    {"wrt_debug_smat", b_all, &s::wrt_debug_smat, 0, b_solved,
     "writes matrix, right-hand side and step of the iteration iter_debug_newton to files and stops there"},
    // gmin stepping
    {"gmin_step", b_all, &s::gmin_step, 0, b_dc | b_trns,
     "a solve that fails is tried again with small conductances across junctions, which fade",
     "yes where the libraries have elements that take part"},
    {"gmin_init", b_all, &s::gmin_init, 1, b_dc | b_trns,
     "dc: gmin stepping starts from zero; trns: a run that starts from nothing begins with gmin stepping"},
    {"gmin_dmp", b_all, &s::gmin_dmp, 1, b_dc | b_trns, "as dmp, while it steps"},
    {"gmin_dmp_k", b_all, &s::gmin_dmp_k, 0.2, b_dc | b_trns, "as dmp_k"},
    {"gmin_start", b_all, &s::gmin_start, 0.1, b_dc | b_trns, "first conductance, S"},
    {"gmin_end", b_all, &s::gmin_end, 1e-12, b_dc | b_trns, "last conductance, S"},
    {"gmin_npoints", b_all, &s::gmin_npoints, 50, b_dc | b_trns, "conductances, in equal ratios"},
    {"gmin_itmax_newton", b_all, &s::gmin_itmax_newton, 500, b_dc | b_trns, "as itmax_newton"},
    {"gmin_dmp_newt_max", b_all, &s::gmin_dmp_newt_max, 200, b_dc | b_trns, "as dmp_newt_max"},
    // digital passes
    {"n_pass_dgtl", b_all, &s::n_pass_dgtl, 20, b_startup,
     "passes over the digital elements within which their levels settle, or the run stops"},
    {"n_pass_mixed", b_all, &s::n_pass_mixed, 20, b_startup,
     "turns of digital and analog elements within which both agree, or the run stops"},
    {"offset_dgtl", b_all, &s::offset_dgtl, 2.0, b_startup | b_trns, "distance of the columns of levels in row files"},
    // explicit solver
    {"x_itmax_newton", b_all, &s::x_itmax_newton, 500, b_trns, "iterations of one solve at most"},
    {"x_itmax_newton_first", b_all, &s::x_itmax_newton_first, 500, b_trns, "as itmax_newton_first"},
    {"x_dmp", b_all, &s::x_dmp, 0, b_trns, "as dmp"},
    {"x_dmp_first", b_all, &s::x_dmp_first, 0, b_trns, "as dmp_first"},
    {"x_dmp_k", b_all, &s::x_dmp_k, 0.2, b_trns, "as dmp_k"},
    {"x_dmp_k_first", b_all, &s::x_dmp_k_first, 0.1, b_trns, "as dmp_k_first"},
    {"x_dmp_newt_max", b_all, &s::x_dmp_newt_max, 50, b_trns, "as dmp_newt_max"},
    {"x_dmp_newt_max_first", b_all, &s::x_dmp_newt_max_first, 50, b_trns, "as dmp_newt_max_first"},
    {"x_chk_rhs2", b_all, &s::x_chk_rhs2, 1, b_trns, "as chk_rhs2"},
    {"x_chk_spice", b_all, &s::x_chk_spice, 0, b_trns, "as chk_spice"},
    {"x_norm_2", b_all, &s::x_norm_2, 1e-10, b_trns, "as norm_2"},
    {"x_norm_large", b_all, &s::x_norm_large, 1e15, b_trns, "as norm_large"},
    {"x_norm_spice_nodev", b_all, &s::x_norm_spice_nodev, 1e-6, b_trns, "as norm_spice_nodev"},
    {"x_norm_spice_xaux", b_all, &s::x_norm_spice_xaux, 1e-4, b_trns, "unknowns inside the elements"},
    {"x_norm_spice_cur", b_all, &s::x_norm_spice_cur, 1e-12, b_trns, "as norm_spice_cur"},
    {"x_norm_spice_rel", b_all, &s::x_norm_spice_rel, 1e-3, b_trns, "as norm_spice_rel"},
    {"x_write_rhs2", b_all, &s::x_write_rhs2, 0, b_trns, "as write_rhs2"},
    {"x_write_spice", b_all, &s::x_write_spice, 0, b_trns, "as write_spice"},
    {"x_wrt_debug_smat", b_all, &s::x_wrt_debug_smat, 0, b_trns, "as wrt_debug_smat"},
    {"x_write_time", b_all, &s::x_write_time, 1, b_trns, "as write_time"},
    {"x_iter_write_rhs2", b_all, &s::x_iter_write_rhs2, 0, b_trns, "as iter_write_rhs2"},
    {"x_iter_debug_newton", b_all, &s::x_iter_debug_newton, 200, b_trns, "as iter_debug_newton"},
    // progress and diagnostics
    {"n_wrtiterno", b_all, &s::n_wrtiterno, 1000, b_trns, "passes between progress lines"},
    {"iter_debug_newton", b_all, &s::iter_debug_newton, 200, b_solved, "iteration that wrt_debug_smat writes"},
    {"iter_debug_ssw_newton", b_all, &s::iter_debug_ssw_newton, 1, b_ssw,
     "as iter_debug_newton, in a periodic steady state"},
    {"iter_debug_trns", b_all, &s::iter_debug_trns, 100000, b_time, "step that wrt_debug_smat writes"},
    {"iter_write_rhs2", b_all, &s::iter_write_rhs2, 0, 0, "iteration from which residuals are printed"},
    {"flag_debug_int", b_all, &s::flag_debug_int, 0, b_solved, "handed to the elements, some of which print then"},
    {"write_rhs2", b_all, &s::write_rhs2, 0, b_solved, "prints the residual of chk_rhs2 at each iteration"},
    {"write_rhsinf", b_all, &s::write_rhsinf, 0, b_solved, "prints the residual of chk_rhsinf"},
    {"write_delx_sprt", b_all, &s::write_delx_sprt, 0, b_solved, "turned on by write_delx_volt, write_delx_kcl"},
    {"write_delx_all", b_all, &s::write_delx_all, 0, b_solved, "prints the change that chk_delx_all looks at"},
    {"write_delx_volt", b_all, &s::write_delx_volt, 0, b_solved, "prints the change of chk_delx_volt"},
    {"write_delx_kcl", b_all, &s::write_delx_kcl, 0, b_solved, "prints the residual of chk_delx_kcl"},
    {"write_spice", b_all, &s::write_spice, 0, b_solved, "prints change and bound of each unknown of chk_spice"},
    // time
    {"back_euler", b_time, &s::back_euler, 0, b_time, "rule: backward Euler, first order, damps everything, fixed step",
     "no; yes in a nonlinear circuit without any rule"},
    {"back_euler_auto", b_time, &s::back_euler_auto, 0, b_time,
     "rule: backward Euler; a step that fails is made shorter, one that converges makes the next longer"},
    {"trapezoidal", b_time, &s::trapezoidal, 0, b_time,
     "rule: second order, keeps energy, rings behind jumps; fixed step",
     "no; yes in a linear circuit without any rule"},
    {"trapezoidal_auto", b_time, &s::trapezoidal_auto, 0, b_time,
     "rule: trapezoidal with steps as back_euler_auto has them"},
    {"gear2", b_time, &s::gear2, 0, b_trns, "rule: second order, damps fast modes; steps end on corners of sources"},
    {"gear2_fixed", b_time, &s::gear2_fixed, 0, b_trns,
     "rule: gear2 with a step that never changes; not with elements that shorten steps"},
    {"trbdf2", b_time, &s::trbdf2, 0, b_trns,
     "rule: second order with control of its error; where currents jump, with event_restart"},
    {"forward_euler", b_time, &s::forward_euler, 0, b_trns, "rule of explicit elements"},
    {"RK4", b_time, &s::RK4, 0, b_trns, "rule of explicit elements: Runge and Kutta, fourth order"},
    {"RKF45", b_time, &s::RKF45, 0, b_trns,
     "rule of explicit elements: Runge, Kutta and Fehlberg, control of its error"},
    {"BS23", b_time, &s::BS23, 0, b_trns, "rule of explicit elements: Bogacki and Shampine, control of its error"},
    {"modified_euler", b_time, &s::modified_euler, 0, b_trns, "rule of explicit elements"},
    {"Heun", b_time, &s::Heun, 0, b_trns, "rule of explicit elements"},
    {"constant_step", b_time, &s::constant_step, 0, b_trns,
     "the first step is not shortened to end on a corner of a source; with back_euler or trapezoidal"},
    {"x_eval_serial", b_time, &s::x_eval_serial, 0, b_trns,
     "explicit elements one after another instead of as a system", "no where their system is asked for"},
    {"write_time", b_time, &s::write_time, 1, b_trns, "progress lines tell the time, not only the pass"},
    {"t_start", b_time, &flags_class::t_start, 0.0, b_time, "start, s"},
    {"t_end", b_time, &flags_class::t_end, keep_value, b_trns, "end, s", "must be given"},
    {"delt_const", b_time, &s::delt_const, 0, b_time, "the step, or the first one, s", "must be given"},
    {"delt_min", b_time, &s::delt_min, 0, b_time, "least step, s", "0.0002 delt_const"},
    {"delt_max", b_time, &s::delt_max, 0, b_time, "longest step of rules that choose it, s", "10 delt_const"},
    {"delt_const_x", b_time, &s::delt_const_x, 0, b_trns, "step of explicit elements, s", "must be given"},
    {"delt_min_x", b_time, &s::delt_min_x, 0, b_trns, "least step of explicit elements, s", "0.0002 delt_const_x"},
    {"delt_max_x", b_time, &s::delt_max_x, 0, b_trns, "longest step of explicit elements, s", "10 delt_const_x"},
    {"fctr_stepred", b_time, &s::fctr_stepred, 0.6, b_time,
     "a step that failed is repeated with this part of its length"},
    {"fctr_stepinc", b_time, &s::fctr_stepinc, 1.5, b_time,
     "behind a step that converged the auto rules take so many times its length"},
    {"time_epsilon", b_time, &s::time_epsilon, 1e-13, b_time, "times closer than this are one, s"},
    {"time_epsilon_x", b_time, &s::time_epsilon_x, 1e-13, b_trns, "time_epsilon of explicit elements, s"},
    {"trbdf2_tolr", b_time, &s::trbdf2_tolr, 1e-5, b_trns,
     "bound of the estimated error of a trbdf2 step, in the units of the states (A, C, ...): less gives shorter steps, "
     "which delt_max bounds as well"},
    {"trbdf2_gamma", b_time, &s::trbdf2_gamma, 0.5857864376269049, b_trns, "place of the inner point in a trbdf2 step",
     "2 - sqrt(2)"},  // 2 - sqrt(2): both stages share one matrix
    {"rkf45_tolr", b_time, &s::rkf45_tolr, 1e-8, b_trns, "error that an RKF45 step may have"},
    {"bs23_tolr", b_time, &s::bs23_tolr, 1e-8, b_trns, "error that a BS23 step may have"},
    {"rkf45_fctr_min", b_time, &s::rkf45_fctr_min, 0.8, b_trns, "least factor between RKF45 steps"},
    {"bs23_fctr_min", b_time, &s::bs23_fctr_min, 0.8, b_trns, "least factor between BS23 steps"},
    {"rkf45_fctr_max", b_time, &s::rkf45_fctr_max, 1.1, b_trns, "greatest factor between RKF45 steps"},
    {"bs23_fctr_max", b_time, &s::bs23_fctr_max, 1.1, b_trns, "greatest factor between BS23 steps"},
    {"event_restart", b_trns, &s::event_restart, 0, b_trns,
     "rules of second order end a step where the circuit jumps and begin anew behind it by backward Euler"},
    {"itmax_trns", b_time, &s::itmax_trns, 100000, b_time,
     "steps of a run at most; one that is cut off here says so and keeps its rows, and tnl run ends with status 6"},
    {"itmax_trbdf2", b_all, &s::itmax_trbdf2, 20, b_trns,
     "times in a row that a trbdf2 step is rejected at delt_min before the run stops"},
    {"itmax_stepred", b_all, &s::itmax_stepred, 20, b_time, "times in a row that an auto rule shortens one step"},
    // one type of block
    {"compute_acp", b_ac, &s::compute_acp, 1, b_ac, "small-signal parameters are computed anew"},
    {"t_startup", b_startup, &s::t_startup, 0, b_startup, "time that sources have, s"},
    {"t_dc", b_dc, &s::t_dc, 0, b_dc, "time that sources have, s"},
    {"ssw_period", b_ssw, &s::ssw_period, 0, b_ssw, "period, s", "this or ssw_frequency"},
    {"ssw_frequency", b_ssw, &s::ssw_frequency, 0, b_ssw, "frequency, Hz", "this or ssw_period"},
    {"ssw_norm", b_ssw, &s::ssw_norm, 1e-8, b_ssw, "bound of the difference between begin and end of the period"},
    {"ssw_itmax_newton", b_ssw, &s::ssw_itmax_newton, 20, b_ssw, "shots at most"},
    {"ssw_ndiv", b_ssw, &s::ssw_ndiv, 100, b_ssw, "steps of a period where delt_const is not given"},
    {"ssw_period_mult", b_ssw, &s::ssw_period_mult, 1, b_ssw, "periods of a shot"},
    {"ssw_dmp", b_ssw, &s::ssw_dmp, 0, b_ssw, "as dmp, between shots"},
    {"ssw_dmp_k", b_ssw, &s::ssw_dmp_k, 0.8, b_ssw, "as dmp_k"},
    {"ssw_dmp_newt_max", b_ssw, &s::ssw_dmp_newt_max, 10, b_ssw, "as dmp_newt_max"},
    {"ssw_known_period", b_ssw, &s::ssw_known_period, 1, b_ssw, "no: the period is an unknown too"},
    {"ssw_chk_spice", b_ssw, &s::ssw_chk_spice, 0, b_ssw, "as chk_spice, between shots",
     "yes; no in decks of blocks alone"},
    {"ssw_chk_rhs2", b_ssw, &s::ssw_chk_rhs2, 0, b_ssw, "as chk_rhs2, between shots",
     "no; yes in decks of blocks alone"},
};

consteval bool all_described() {
    for (const method_word& m : table)
        if (m.text.empty() || (m.acts & ~(m.blocks & (b_solved | b_ac))) != 0) return false;
    return true;
}
static_assert(all_described(), "a word of method: lacks its meaning, or acts in blocks that do not take it");

constexpr method_section sections[] = {
    {"itmax_newton", "Newton iteration", ""},
    {"chk_cnvrg", "Convergence",
     "A solve has converged when all tests that are on pass. Linear circuits are solved at once, without tests."},
    {"matrix_sparse1", "Elimination", ""},
    {"gmin_step", "Gmin stepping", ""},
    {"n_pass_dgtl", "Digital elements", "What they are: [digital.md](digital.md)."},
    {"x_itmax_newton", "Explicit elements", "Of blocks that are solved together, as networks are."},
    {"n_wrtiterno", "Progress and diagnostics", ""},
    {"back_euler", "Time",
     "At most one of the words that begin with `rule:` is on. Rules of explicit elements are known, and without "
     "effect."},
    {"compute_acp", "One type of block", ""},
};

// The object of a block that a member belongs to.
template <class T>
T& member_of(solve_class& slv, flags_class&, T method_settings::*m) {
    return slv.method.*m;
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
std::span<const method_section> method_sections() { return sections; }

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
    slv.method.given[row_of(m)] = 1;
}

bool was_given(const solve_class& slv, std::string_view word) {
    const method_word* m = find_method_word(word);
    return m != nullptr && !slv.method.given.empty() && slv.method.given[row_of(m)] != 0;
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
    slv.method.given.assign(std::size(table), 0);

    // A change of voltages is what tells convergence of a circuit; pure block diagrams have no scale for it.
    const bool electrical = c.eelu.n > 0;
    slv.method.chk_spice = slv.method.ssw_chk_spice = electrical ? int_T : int_F;
    slv.method.chk_rhs2 = slv.method.ssw_chk_rhs2 = electrical ? int_F : int_T;
    const std::vector<int>& declared = c.lib.ebes.flag.gmin_step;
    const bool any_gmin = std::any_of(declared.begin(), declared.end(), [](int flag) { return flag != 0; });
    slv.method.gmin_step = electrical && any_gmin ? int_T : int_F;
    slv.method.x_eval_serial = flags.x_matrix ? int_F : int_T;
}
