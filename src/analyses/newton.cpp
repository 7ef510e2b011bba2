#include "analyses/newton.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>

#include "analyses/accepted_point.h"
#include "analyses/assembly.h"
#include "analyses/convergence.h"
#include "analyses/integration.h"
#include "analyses/shunt_steps.h"
#include "analyses/solution_vector.h"
#include "base/at.h"
#include "base/halt.h"
#include "base/numeric.h"
#include "base/signals.h"
#include "output/solution_file.h"
#include "sparse/knuth_write.h"

namespace {
// The system as it stands before a solve, under names that tell the analysis.
void write_system(const run_state& r, const std::string& tail) {
    knuth<double> m = r.mat.m;
    m.val = r.mat.val_m;
    mat_write_knuthij1(m, "mat_" + tail);
    vector_write(r.mat.n_svec, r.mat.rhs_m.data(), "rhs_" + tail);
}

// A deliberate stop: the step of the chosen solve is on the disk.
[[noreturn]] void write_step_and_stop(const run_state& r, const std::string& name, const std::string& title) {
    std::ofstream file(name);
    file.precision(10);
    file << title << '\n';
    for (double x : r.mat.delsvec) file << x << '\n';
    file.close();
    halt({line("stopped as wrt_debug_smat asks, behind writing ", name)});
}

void assemble(run_state& r, bool only_function) {
    form_jac_rhs(r, only_function);
    if (in_time(r.mat.kind)) add_trns_terms(r, only_function);
    if (r.shunts.g > 0.0) add_shunts(r, only_function);
}

// Whether a row is left with more than a thousandth of its terms. An order that was chosen on other values lets the
// elimination lose all digits where amplifiers stand in a row: each multiplies what rounding has left by its gain.
bool step_is_none(mat_class& mat) {
    std::vector<double>&sum = mat.svec_ls, &size = mat.delsvec_ls;  // of the line search, which comes later
    for (int i = 0; i < mat.n_svec; ++i) {
        sum[at(i)] = -mat.rhs_m[at(i)];
        size[at(i)] = std::fabs(mat.rhs_m[at(i)]);
    }
    for (int k = 0; k < mat.m.nnz(); ++k) {
        const double term = mat.val_m[at(k)] * mat.e.sol_w[at(mat.m.col[at(k)])];
        sum[at(mat.m.row[at(k)])] += term;
        size[at(mat.m.row[at(k)])] += std::fabs(term);
    }
    for (int i = 0; i < mat.n_svec; ++i)
        if (!(std::fabs(sum[at(i)]) <= 1e-3 * size[at(i)])) return true;
    return false;
}

// Assembly is done, rhs_m holds F. Leaves the step in delsvec and -F in rhs_m.
void solve_for_step(run_state& r, bool fix_order, bool hold_factors) {
    mat_class& mat = r.mat;
    for (double& x : mat.rhs_m) x = -x;
    if (fix_order) solve_jac(mat.e, mat.m, mat.val_m.data(), mat.rhs_m.data(), 0, 1, 2, 0, 0);
    solve_jac(mat.e, mat.m, mat.val_m.data(), mat.rhs_m.data(), 1, 0, 0, 1, hold_factors ? 2 : 3);
    if (!fix_order && !in_time(mat.kind) && step_is_none(mat)) {
        solve_jac(mat.e, mat.m, mat.val_m.data(), mat.rhs_m.data(), 0, 1, 2, 0, 0);
        solve_jac(mat.e, mat.m, mat.val_m.data(), mat.rhs_m.data(), 1, 0, 0, 1, 3);
    }
    ++r.flags.n_solve_lin;
    std::copy(mat.e.sol_w.begin(), mat.e.sol_w.end(), mat.delsvec.begin());
}

// Whether models answered an iterate that ran away: with an infinite residual, or with two that are opposed. A solve
// would only tell so less clearly, or end the run over a matrix of such numbers.
bool ran_away(run_state& r, std::string_view who) {
    bool in_range = true;
    for (double x : r.mat.rhs_m) in_range &= std::fabs(x) <= std::numeric_limits<double>::max();
    if (!in_range) say(line(who, has_nan(r.mat.rhs_m) ? ": NaN found!" : ": norm too large."));
    return !in_range;
}

// Halves the step until the residual is not above that at the start; false when the trials are used up. svec stays at
// the start, delsvec is the accepted step. rhs_m is left as the last trial's, un-negated. A transient tells every trial
// and stops when they are used up.
bool line_search(run_state& r, std::string_view who) {
    mat_class& mat = r.mat;
    const bool told = in_time(mat.kind);
    mat.svec_ls = mat.svec;
    double norm_0 = 0.0, alpha = 1.0;
    norm_2_avg(mat.n_svec, mat.rhs_m.data(), norm_0);
    bool accepted = false;
    for (int count = 0; count < r.slv.method.itmax_line_search && !accepted; ++count) {
        for (int i = 0; i < mat.n_svec; ++i) {
            mat.delsvec_ls[at(i)] = alpha * mat.delsvec[at(i)];
            mat.svec[at(i)] = mat.svec_ls[at(i)] + mat.delsvec_ls[at(i)];
        }
        dcmp_solvec(r);
        assemble(r, true);
        double norm_1 = 0.0;
        norm_2_avg(mat.n_svec, mat.rhs_m.data(), norm_1);
        if (told)
            say(line(who, ": line search: i=", count, " dmp_ls=", alpha, " norm_linsrh=", norm_1,
                     " norm_linsrh0=", norm_0));
        accepted = norm_1 <= norm_0;
        if (!accepted) alpha *= 0.5;
    }
    mat.svec = mat.svec_ls;
    if (!accepted && told) halt({line(who, ": N-R line search failed."), "  Halting.."});
    if (accepted && told) {
        say(line(who, ": exiting line search loop."));
        say(line(who, ": dmp_ls=", alpha));
    }
    if (accepted)
        for (double& x : mat.delsvec) x = alpha * x;
    return accepted;
}
}  // namespace

bool first_point(const solve_class& slv) { return slv.now.i_sync <= 0 && slv.now.i_sweep <= 0; }

newton_limits newton_limits_of(run_state& r, std::string_view who, std::string_view tail) {
    get_dmp(r.slv);
    newton_limits limits;
    limits.itmax = r.slv.now.itmax_newton;
    limits.damped = r.slv.now.dmp != 0;
    limits.dmp_k = r.slv.now.dmp_k;
    limits.dmp_max = r.slv.now.dmp_newt_max;
    limits.line_search = r.slv.method.nr_line_search != 0;
    limits.dump = r.slv.method.wrt_debug_smat != 0;
    limits.who = who;
    limits.tail = tail;
    return limits;
}

newton_limits gmin_limits(const solve_class& slv, std::string_view who) {
    newton_limits limits;
    limits.itmax = slv.method.gmin_itmax_newton;
    limits.damped = slv.method.gmin_dmp != 0;
    limits.dmp_k = slv.method.gmin_dmp_k;
    limits.dmp_max = slv.method.gmin_dmp_newt_max;
    limits.dump = slv.method.wrt_debug_smat != 0;
    limits.who = who;
    limits.tail = "gmin";
    return limits;
}

void newton(run_state& r, const newton_limits& limits) {
    mat_class& mat = r.mat;
    solve_class& slv = r.slv;
    slv.now.l_converged = 0;
    slv.now.l_norm_too_large = 0;  // an iterate with a capped exponential leaves what an earlier solve found
    for (slv.now.iter_newton = 0; slv.now.iter_newton < limits.itmax; ++slv.now.iter_newton) {
        heed_signals();
        r.flags.newton_first = slv.now.iter_newton == 0 ? 1 : 0;
        assemble(r, false);
        const bool fix_order = limits.fix_order && slv.now.iter_newton == 0;
        if (!fix_order && ran_away(r, limits.who)) break;
        const bool debug_now = limits.dump && slv.now.iter_newton == slv.method.iter_debug_newton - 1;
        if (limits.dump && !in_time(mat.kind)) say(line(limits.who, ": flag_wrt_debug_smat = T"));
        if (debug_now) {
            if (!in_time(mat.kind))
                say(line(limits.who, ": writing to smat_", limits.tail, ".dat, iter_newton = ", slv.now.iter_newton));
            write_system(r, line(limits.tail, ".dat"));
            vector_write(mat.n_svec, mat.svec.data(), line("svec_", limits.tail, ".dat"));
            if (slv.out.i_file_solution >= 0) write_solution(slv, r.c, r.flags);
        }
        solve_for_step(r, fix_order, limits.hold_factors);
        if (debug_now) write_step_and_stop(r, line("delx_", limits.tail, ".dat"), line(limits.who, ": delsvec"));
        if (limits.line_search) {
            if (!line_search(r, limits.who)) break;
        } else if (limits.damped && slv.now.iter_newton <= limits.dmp_max) {
            for (double& x : mat.delsvec) x *= limits.dmp_k;
        }
        update_sol_1(r);
        if (has_nan(mat.svec)) {
            say(line(limits.who, ": NaN found!"));
            break;
        }
        dcmp_solvec(r);
        check_convergence(mat, r.flags, slv);
        if (slv.now.l_norm_too_large) {
            say(line(limits.who, ": norm too large."));
            slv.now.l_converged = 0;
            break;
        }
        // Without a test of convergence nobody has looked.
        if (slv.now.l_converged && !is_finite(mat.svec)) {
            say(line(limits.who, ": NaN found!"));
            slv.now.l_converged = 0;
            break;
        }
        if (slv.now.l_converged) break;
        if (slv.method.chk_spice) mat.svec_old = mat.svec;
    }
    r.flags.newton_first = 0;
}

void solve_linear(run_state& r, bool fix_order, bool dump, std::string_view who, std::string_view tail) {
    mat_class& mat = r.mat;
    heed_signals();
    assemble(r, false);
    if (dump) write_system(r, line(tail, ".dat"));
    if (dump && mat.kind == analysis::ssw) vector_write(mat.n_svec, mat.svec.data(), line("svec_", tail, ".dat"));
    solve_for_step(r, fix_order, false);
    if (dump) write_step_and_stop(r, line("delx_", tail, ".dat"), line(who, ": delsvec"));
    int none = 0;
    for (std::size_t i = 0; i < mat.svec.size(); ++i) {
        mat.svec[i] += mat.delsvec[i];
        none |= std::isfinite(mat.svec[i]) ? 0 : 1;
    }
    if (none) halt({"solve_linear: NaN found!", "   Halting..."});
    dcmp_solvec(r);
}

void solve_newton_dc(run_state& r) {
    const bool startup = r.mat.kind == analysis::startup;
    newton_limits limits = startup ? newton_limits_of(r, "solve_newton_startup", "startup_newt")
                                   : newton_limits_of(r, "solve_newton_dc", "dc_newt");
    limits.fix_order = first_point(r.slv);
    newton(r, limits);
    if (r.slv.now.l_converged && r.c.cct.flag_save_history) save_history(r);
}

void solve_linear_dc(run_state& r) {
    const bool startup = r.mat.kind == analysis::startup;
    solve_linear(r, first_point(r.slv), r.slv.method.wrt_debug_smat != 0,
                 startup ? "solve_linear_startup" : "solve_linear_dc", startup ? "startup" : "dc");
    if (r.c.cct.flag_save_history) save_history(r);
}
