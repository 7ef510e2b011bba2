#include "analyses/shot.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "analyses/accepted_point.h"
#include "analyses/assembly.h"
#include "analyses/evaluate.h"
#include "analyses/integration.h"
#include "analyses/levels.h"
#include "analyses/newton.h"
#include "analyses/period_check.h"
#include "analyses/rparm_passes.h"
#include "analyses/solution_vector.h"
#include "analyses/step_control.h"
#include "analyses/trns_solve.h"
#include "analyses/unknown_names.h"
#include "base/at.h"
#include "base/halt.h"
#include "base/signals.h"
#include "output/solution_file.h"

namespace {
// ---- derivatives by the start values ----

// S+ = dx/dx0 at the end of a step from S at its start. The formula of the step, derived by x0, is a system with the
// matrix of the step, whose factors stand:
//   back_euler    (dF - c) S+ = -c S          c = 1/h
//   trapezoidal   (dF - c) S+ = -c S - dF S   c = 2/h, dF S at the start of the step
// in the rows of states, and dF S+ = 0 in the others.

void start_derivatives(ssw_class& s, std::size_t n_svec) {
    std::fill(s.sens_ssw.begin(), s.sens_ssw.end(), 0.0);
    for (int j = 0; j < s.n_statevar(); ++j) s.sens_ssw[at(j) * n_svec + at(s.statevar_indx[at(j)])] = 1.0;
}

// dF S of each state's row at the accepted point, whose assembly has left the matrix; without the term of the rule.
// During a shot ssw_mat holds it.
void find_ssw_trz_1(run_state& r) {
    ssw_class& s = r.ssw;
    const int n = s.n_statevar();
    const std::size_t n_svec = at(r.mat.n_svec);
    const double c = method_constant(r.slv);
    for (int i = 0; i < n; ++i) {
        const int own = r.mat.state.slot[at(s.row_of_state[at(i)])];
        for (int j = 0; j < n; ++j) {
            const double* column = s.sens_ssw.data() + at(j) * n_svec;
            double sum = 0.0;
            for (int k = s.first_entry[at(i)]; k < s.first_entry[at(i) + 1]; ++k) {
                const int slot = s.entry_slot[at(k)];
                sum += (slot == own ? r.mat.val_m[at(slot)] + c : r.mat.val_m[at(slot)]) * column[s.entry_col[at(k)]];
            }
            s.ssw_mat[at(i) * at(n) + at(j)] = sum;
        }
    }
}

void solve_linear_ssw(run_state& r) {
    ssw_class& s = r.ssw;
    const int n = s.n_statevar();
    const std::size_t n_svec = at(r.mat.n_svec);
    const double c = method_constant(r.slv);
    for (int j = 0; j < n; ++j) {
        const double* column = s.sens_ssw.data() + at(j) * n_svec;
        double* rhs = s.sens_rhs.data() + at(j) * n_svec;
        for (int i = 0; i < n; ++i) {
            double& value = rhs[r.mat.state.row[at(s.row_of_state[at(i)])]];
            value = -column[s.statevar_indx[at(i)]] * c;
            if (r.slv.now.flag_trz) value -= s.ssw_mat[at(i) * at(n) + at(j)];
        }
    }
    if (solve_columns(r.mat.e, n, s.sens_rhs.data(), s.sens_ssw.data()) != 0)
        halt({"solve_linear_ssw: the factors of this step do not serve.", line("  time=", r.slv.now.time_next),
              "  Halting..."});
    r.flags.n_solve_lin += n;
}

void keep_map(ssw_class& s, std::size_t n_svec) {
    const std::size_t n = s.statevar_indx.size();
    for (std::size_t j = 0; j < n; ++j)
        for (std::size_t i = 0; i < n; ++i) s.map[i * n + j] = s.sens_ssw[j * n_svec + at(s.statevar_indx[i])];
}

// ---- the time loop ----

void use_rule(solve_class& slv, bool trapezoidal) {
    slv.now.flag_trz = trapezoidal ? 1 : 0;
    slv.now.flag_be = trapezoidal ? 0 : 1;
}

void define_method_flags(solve_class& slv) {
    use_rule(slv, slv.method.trapezoidal || slv.method.trapezoidal_auto);
    slv.now.flag_auto = slv.method.back_euler_auto || slv.method.trapezoidal_auto;
    slv.now.flag_bdf2 = slv.now.flag_gear_fixed = slv.now.flag_gear_var = 0;
}

// Functions at the accepted point; for derivatives of a rule that asks for them, also dF S there.
void evaluate_point(run_state& r, bool with_derivatives) {
    const bool slopes = with_derivatives && r.slv.now.flag_trz;
    form_jac_rhs(r, !slopes);
    if (slopes) find_ssw_trz_1(r);
}

// A first shot that begins with guesses knows dx/dt only behind its first step: the unknowns that no state row defines
// are not solved for yet.
bool begins_with_guess(const run_state& r) {
    return r.ssw.ssw_iter_newton == 0 && !r.slv.task.init_previous && !r.slv.task.init_file;
}

// dx/dt of each state at the start; the fastest one is where the phase is held.
void find_anchor(run_state& r) {
    if (r.slv.method.ssw_known_period) return;
    ssw_class& s = r.ssw;
    s.rhs_ssw_max = -1.0;
    for (int i = 0; i < s.n_statevar(); ++i) {
        s.dxdt_ssw[at(i)] = r.mat.state.f_now[at(s.row_of_state[at(i)])];
        if (!(std::fabs(s.dxdt_ssw[at(i)]) > s.rhs_ssw_max)) continue;
        s.rhs_ssw_max = std::fabs(s.dxdt_ssw[at(i)]);
        s.i_statevar_period = i;
    }
    if (s.rhs_ssw_max > 0.0) return;
    halt({"solve_ssw: nothing moves at the start:", "   the circuit is at rest and has no period there. Halting..."});
}

void shorten_to_breaks_of_units(run_state& r) {
    if (!r.c.cct.flag_lmttstep) return;
    check_tnext1(r);
    check_tnext2(r);
}

void begin_shot(run_state& r, shot kind) {
    solve_class& slv = r.slv;
    r.flags.init_flags();
    r.flags.time_epsilon = slv.method.time_epsilon;
    define_method_flags(slv);
    r.formed.forget_variables();
    dcmp_solvec(r);
    slv.now.time_present = r.flags.time_present = r.flags.t_start;
    r.flags.t_end = r.flags.t_start + slv.method.ssw_period;
    set_time_next(r, slv.now.time_present);
    if (kind == shot::last) write_analog_row(r);
    slv.now.delt = slv.method.delt_const;
    if (r.c.cct.flag_lmttstep) find_nextbreak(r);
    shorten_to_breaks_of_units(r);
    set_time_next(r, slv.now.time_present);
    find_trns_constants(slv);
    r.flags.trns_first = r.flags.ssw_init = 1;
    evaluate_point(r, kind == shot::search);
    r.flags.trns_first = r.flags.ssw_init = 0;
    if (kind == shot::search && !begins_with_guess(r)) find_anchor(r);
    keep_point_1(r);
}

bool dump_step(const run_state& r) {
    return r.slv.method.wrt_debug_smat && r.ssw.ssw_iter_newton == r.slv.method.iter_debug_ssw_newton - 1 &&
           r.slv.now.iter_trns == r.slv.method.iter_debug_trns - 1;
}

void after_converged(run_state& r) {
    ebce_form_arrays(r);
    if (r.c.cct.flag_reset) treat_reset(r);
    if (r.c.cct.flag_save_history) save_history(r);
}

void solve_step_of_shot(run_state& r) {
    solve_class& slv = r.slv;
    const bool fix_order = slv.now.iter_trns == 0;
    slv.now.l_converged = 1;
    if (slv.now.flag_linear) {
        solve_linear(r, fix_order, dump_step(r), "solve_linear_ssw_trns", "ssw_lin");
        slv.now.l_converged = 1;
    } else if (slv.now.flag_nonlinear) {
        newton_limits limits = newton_limits_of(r, "solve_newton_ssw_trns", "ssw_newt");
        limits.fix_order = fix_order;
        limits.dump = dump_step(r);
        newton(r, limits);
    }
    if (slv.now.l_converged) after_converged(r);
}

void tell_step(const run_state& r) {
    say(line("  iter_trns=", r.slv.now.iter_trns));
    say(line("  time=", r.slv.now.time_next));
}

// From a try of the present delt to a point that converged. Under a method that may, failed tries are shortened.
void take_step(run_state& r) {
    solve_class& slv = r.slv;
    slv.now.iter_stepred = 0;
    for (;;) {
        check_progress(slv, "solve_ssw_1");
        set_time_next(r, slv.now.time_present + slv.now.delt);
        keep_functions_1(r.mat);
        find_trns_constants(slv);
        solve_step_of_shot(r);
        if (slv.now.l_converged) return;
        if (!slv.now.flag_auto) {
            if (slv.out.i_file_solution >= 0) write_solution(slv, r.c, r.flags);
            say("solve_ssw_1: N-R iterations did not converge.");
            tell_step(r);
            halt({"  Halting..."});
        }
        if (slv.now.delt == slv.method.delt_min) {
            say("solve_ssw_1: no convergence even with");
            say("  the smallest time step.");
            tell_step(r);
            halt({"  Halting..."});
        }
        if (++slv.now.iter_stepred > slv.method.itmax_stepred)
            halt({"solve_ssw_1: iter_stepred has exceeded", "  itmax_stepred.",
                  line("  iter_stepred=", slv.now.iter_stepred), line("  itmax_stepred=", slv.method.itmax_stepred),
                  "  Halting..."});
        slv.now.delt = std::max(slv.method.delt_min, slv.now.delt * slv.method.fctr_stepred);
        restore_1(r);
    }
}

void choose_next_step(run_state& r, double grown) {
    solve_class& slv = r.slv;
    slv.now.delt = std::max(slv.method.delt_min, slv.now.flag_auto ? grown : slv.method.delt_const);
    shorten_to_breaks_of_units(r);
    // Rounding leaves no step of its own for the end.
    if (r.flags.t_end <= slv.now.time_present + slv.now.delt + 0.5 * slv.method.delt_min)
        slv.now.delt = std::max(slv.method.delt_min, (r.flags.t_end - slv.now.time_present) + slv.method.time_epsilon);
}
}  // namespace

void set_ssw(run_state& r) {
    const mat_class& mat = r.mat;
    ssw_class& s = r.ssw = ssw_class{};
    std::vector<char> is_state(at(mat.n_svec), 0);
    for (int i = 0; i < mat.state.n(); ++i) {
        const int x = mat.state.col[at(i)];
        if (x < 0) continue;
        if (is_state[at(x)])
            halt({line("solve_ssw: two elements give the derivative of ", name_of_unknown(r.c, mat, x)),
                  "   in a periodic block a state has one. Halting..."});
        is_state[at(x)] = 1;
        s.statevar_indx.push_back(x);
        s.row_of_state.push_back(i);
        for (int k = mat.m.srow[at(mat.state.row[at(i)])]; k >= 0; k = mat.m.prow[at(k)]) {
            s.entry_slot.push_back(k);
            s.entry_col.push_back(mat.m.col[at(k)]);
        }
        s.first_entry.push_back(static_cast<int>(s.entry_slot.size()));
    }
    const std::size_t n = s.statevar_indx.size(), n_svec = at(mat.n_svec);
    for (auto* v : {&s.x_ssw, &s.x_ssw_old, &s.delx_ssw, &s.rhs_ssw, &s.dxdt_ssw}) v->assign(n, 0.0);
    for (auto* v : {&s.ssw_mat, &s.inverse, &s.map}) v->assign(n * n, 0.0);
    for (auto* v : {&s.sens_ssw, &s.sens_rhs}) v->assign(n * n_svec, 0.0);
    for (auto* v : {&s.p1, &s.p2, &s.p3}) v->assign(n, 0);
}

bool solve_ssw_1(run_state& r, shot kind) {
    solve_class& slv = r.slv;
    const bool last = kind == shot::last;
    if (!last) start_derivatives(r.ssw, at(r.mat.n_svec));
    begin_shot(r, kind);
    std::optional<period_check> repeats;
    if (last) repeats.emplace(r);
    bool ended = false;
    for (slv.now.iter_trns = 0; slv.now.iter_trns < slv.method.itmax_trns && !ended; ++slv.now.iter_trns) {
        heed_signals();
        const bool first = slv.now.iter_trns == 0;
        r.flags.iter_trns = r.flags.iter_trns_1 = slv.now.iter_trns;
        r.flags.trns_first = first ? 1 : 0;
        if (r.c.cct.flag_setrparm) set_rparm_2(r);
        if (r.c.cct.flag_getrparm) get_rparm_2(r);
        if (r.c.cct.flag_modulo && !first) gbce_modulo(r);
        if (first && kind == shot::map_only) use_rule(slv, false);
        take_step(r);
        double grown = slv.now.delt;
        if (slv.now.flag_nonlinear && slv.now.flag_auto && grown != slv.method.delt_max)
            grown = std::min(slv.method.delt_max, grown * slv.method.fctr_stepinc);
        if (last) {
            repeats->look(r);
        } else {
            solve_linear_ssw(r);
            if (first) use_rule(slv, slv.method.trapezoidal || slv.method.trapezoidal_auto);
            evaluate_point(r, true);
            if (first && kind == shot::search && begins_with_guess(r)) find_anchor(r);
        }
        slv.now.time_present = r.flags.time_present = slv.now.time_next;
        if (last) write_analog_row(r);
        ended = r.flags.t_end <= slv.now.time_present + slv.method.time_epsilon;
        keep_point_1(r);
        if (!ended) choose_next_step(r, grown);
    }
    if (last) repeats->tell();
    if (!ended) {
        say("warning: solve_ssw_1: time_end not reached!");
        say("  Increase itmax_trns in the method card.");
    }
    r.flags.init_flags();
    if (!last) keep_map(r.ssw, at(r.mat.n_svec));
    return ended;
}
