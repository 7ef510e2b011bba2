#include "analyses/dc.h"

#include "analyses/accepted_point.h"
#include "analyses/evaluate.h"
#include "analyses/newton.h"
#include "analyses/residual.h"
#include "analyses/shunt_steps.h"
#include "analyses/solution_vector.h"
#include "analyses/trns_x.h"
#include "base/halt.h"
#include "base/numeric.h"
#include "output/solution_file.h"
#include "settings/directives.h"

namespace {
// Guesses of the units go back to the node values and variables, in table order, so that the later unit wins; the
// reference is never written.
template <class Rows>
void guess(run_state& r, const unit_family<Rows>& f) {
    for (int u = 0; u < f.n(); ++u) {
        gather_unit(f, u);
        get_unit(r, f, u);
        if (f.lib.list.ig.count(f.entry(u)) > 0) scatter_unit(f, u);
    }
}

double start_time(const run_state& r) {
    if (r.slv.startup) return r.slv.method.t_startup;
    if (r.slv.dc) return r.slv.method.t_dc;
    return r.flags.t_start;
}

bool has_equations(const run_state& r) { return r.c.ebeu.n() > 0 || r.c.gbeu.n() > 0; }
}  // namespace

void init_guess(run_state& r) {
    r.flags.init_flags();
    r.flags.init_guess = 1;
    clear_solvec(r);
    std::fill(r.c.dbeu.dvar.begin(), r.c.dbeu.dvar.end(), 2);
    r.flags.time_given = start_time(r);
    guess(r, r.gbe);
    ebce_form_arrays(r);
    guess(r, r.ebe);
    dbe_init_guess(r);
    r.flags.init_flags();
}

void init_sol(run_state& r) {
    if (r.slv.task.init_previous) {
        if (!r.slv.flag_prev_solution_exists)
            halt({"init_sol: previous solution does not exist?", "   check initial_sol statement. Halting..."});
    } else {
        clear_solvec(r);
        if (r.c.xbeu.n() > 0) guess_explicit(r);
        if (r.slv.task.init_file) {
            read_solution(r.slv, r.c, r.flags);
            take_levels_as_outputs(r.c.dbeu);
            if (!r.slv.flag_prev_solution_exists && forgets_plans(r.c.dbeu)) {
                say("warning: digital elements have events pending");
                say("  whose outcome the solution file does not hold.");
                say("  Their next levels may be wrong.");
            }
        } else {
            set_ig(r.slv, r.c);
            set_dig(r.slv, r.c);
            init_guess(r);
        }
    }
    form_solvec(r);
}

void gmin_step_dc_1(run_state& r) {
    solve_class& slv = r.slv;
    slv.now.l_gmin_done = 0;
    ++slv.now.n_gmin_total;
    if (slv.method.gmin_init) clear_solvec(r);
    newton_limits limits = gmin_limits(slv, "gmin_step_dc_1");
    for (slv.now.iter_gmin = 0; slv.now.iter_gmin < slv.method.gmin_npoints; ++slv.now.iter_gmin) {
        slv.now.gmin =
            interp_log(slv.method.gmin_start, slv.method.gmin_end, slv.now.iter_gmin, slv.method.gmin_npoints);
        say(line("gmin_step_dc_1: iter_gmin=", slv.now.iter_gmin, ", gmin_present=", slv.now.gmin));
        r.flags.gmin = slv.now.gmin;
        limits.fix_order = slv.now.iter_gmin == 0;
        newton(r, limits);
        if (!slv.now.l_converged) break;
        if (r.c.cct.flag_save_history) save_history(r);
    }
    if (slv.now.iter_gmin < slv.method.gmin_npoints) {
        say("gmin_step_dc_1:");
        say("   N-R iterations did not converge.");
        r.flags.gmin = slv.method.gmin_end;
        shunt_step_dc(r);
        if (!slv.now.l_converged) halt({"   Halting..."});
        if (r.c.cct.flag_save_history) save_history(r);
    }
    r.flags.newton_first = 0;
    slv.now.l_converged = 1;
    slv.now.l_gmin_done = 1;
    slv.now.iter_gmin = -1;
}

void solve_dc(run_state& r) {
    solve_class& slv = r.slv;
    r.flags.init_flags();
    r.flags.time_given = slv.method.t_dc;
    slv.now.l_converged = 1;  // also where there is nothing to solve
    if (has_equations(r)) {
        if (slv.now.flag_linear) {
            solve_linear_dc(r);
        } else {
            solve_newton_dc(r);
            if (!slv.now.l_converged && slv.task.flag_vary_auto &&
                slv.task.automatic.step_now > slv.task.automatic.step_min)
                return;
            if (!slv.now.l_converged && slv.method.gmin_step) {
                gmin_step_dc_1(r);
            } else if (!slv.now.l_converged) {
                if (slv.task.flag_vary_auto)
                    halt({"solve_dc: did not converge even with the", "   smallest auto step."});
                halt({"solve_dc: N-R did not converge.", "   Halting..."});
            }
        }
    }
    ebce_form_arrays(r);
    find_ebe_cur_dc(r);
    find_residual(r);
    tell_residual(r);
    ov_prm(r);
    r.flags.init_flags();
}

namespace {
void solve_analog_startup(run_state& r) {
    solve_class& slv = r.slv;
    if (!has_equations(r)) return;
    if (slv.now.flag_linear) {
        solve_linear_dc(r);
    } else {
        solve_newton_dc(r);
        if (!slv.now.l_converged) halt({"solve_startup: N-R did not converge.", "   Halting..."});
    }
}

[[noreturn]] void sides_did_not_converge(const run_state& r, const char* side) {
    halt({line("solve_startup: did not converger after ", r.slv.method.n_pass_mixed, " mixed passes."),
          line("solve_startup: ", side, " passes did not converge."), "  Halting..."});
}

// The digital and the analog side in turn, until neither moves the other.
void solve_mixed_startup(run_state& r, bool from_nothing) {
    std::vector<double> svec;
    std::vector<int> dvar;
    const char* moving = "analog";
    for (int pass = 0; pass < r.slv.method.n_pass_mixed; ++pass) {
        svec = r.mat.svec;
        dvar = r.c.dbeu.dvar;
        digital_passes(r, from_nothing && pass == 0);
        solve_analog_startup(r);
        const double moved = norm_abs_diff_double(r.mat.n_svec, r.mat.svec.data(), svec.data());
        const bool analog = moved >= r.slv.method.delxmax_all;
        if (!analog && r.c.dbeu.dvar == dvar) return;
        moving = analog ? "analog" : "digital";
    }
    sides_did_not_converge(r, moving);
}
}  // namespace

void solve_startup(run_state& r) {
    solve_class& slv = r.slv;
    r.flags.init_flags();
    r.flags.time_given = slv.method.t_startup;
    slv.now.l_converged = 1;
    const bool from_nothing = !slv.task.init_file && !slv.task.init_previous;
    if (r.c.cct.flag_mixed) {
        solve_mixed_startup(r, from_nothing);
    } else {
        if (r.c.cct.flag_solve_digital) digital_passes(r, from_nothing);
        solve_analog_startup(r);
    }
    ebce_form_arrays(r);
    find_ebe_cur_startup(r);
    ov_prm(r);
    r.flags.init_flags();
}
