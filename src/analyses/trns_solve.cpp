#include "analyses/trns_solve.h"

#include <cmath>
#include <limits>

#include "analyses/accepted_point.h"
#include "analyses/evaluate.h"
#include "analyses/integration.h"
#include "analyses/newton.h"
#include "analyses/residual.h"
#include "analyses/solution_vector.h"
#include "base/at.h"
#include "base/halt.h"
#include "base/numeric.h"

namespace {
// The very first solve fixes the order of elimination, on every try of it.
bool fixes_order(const solve_class& slv) { return slv.now.iter_trns_1 == 0 && !slv.now.flag_bdf2; }

bool dump_step(const solve_class& slv) {
    return slv.method.wrt_debug_smat && slv.now.iter_trns_1 == slv.method.iter_debug_trns - 1;
}

// What rounding alone leaves in the rows of a step: a state x has digits for eps |x|, and its row holds that by the
// rule's factor of dx/dt. The largest, and the root of the mean square over all rows. KCL derivatives of one row count
// one by one.
struct row_rounding {
    double largest = 0.0, mean = 0.0;
};
row_rounding rounding_of(const run_state& r) {
    const double by = 16 * std::numeric_limits<double>::epsilon() * method_constant(r.slv);
    row_rounding rounding;
    double sum = 0.0;
    const auto add = [&](double x) {
        rounding.largest = std::fmax(rounding.largest, by * std::fabs(x));
        sum += (by * x) * (by * x);
    };
    const kcl_derivatives& k = r.mat.kcl_ddt;
    for (int d = 0; d < k.n(); ++d)
        if (k.row[at(d)] >= 0) add(r.mat.locv_old_1[at(k.z[at(d)])]);
    const state_rows& s = r.mat.state;
    for (int i = 0; i < s.n(); ++i)
        if (s.col[at(i)] >= 0) add(r.mat.svec_old_1[at(s.col[at(i)])]);
    if (r.mat.n_svec > 0) rounding.mean = std::sqrt(sum / r.mat.n_svec);
    return rounding;
}

// Steps about events are so short that the rounding of a state alone can fail a test of residuals: while this lives,
// the bounds are wider by it, and by no more, as rows without a state are as right in a short step as in any other.
class residuals_of_short_step {
public:
    explicit residuals_of_short_step(run_state& r)
        : slv_(r.slv), norm_2_(slv_.method.norm_2), norm_inf_(slv_.method.norm_inf) {
        if (!r.flags.event_restart || !(slv_.now.delt < slv_.method.delt_const)) return;
        const row_rounding rounding = rounding_of(r);
        slv_.method.norm_2 += rounding.mean;
        slv_.method.norm_inf += rounding.largest;
    }
    ~residuals_of_short_step() {
        slv_.method.norm_2 = norm_2_;
        slv_.method.norm_inf = norm_inf_;
    }
    residuals_of_short_step(const residuals_of_short_step&) = delete;
    residuals_of_short_step& operator=(const residuals_of_short_step&) = delete;

private:
    solve_class& slv_;
    double norm_2_, norm_inf_;
};

// svec_ls is free behind a solve.
void reset_blocks(run_state& r) {
    if (r.flags.event_restart) r.mat.svec_ls = r.mat.svec;
    treat_reset(r);
    if (r.flags.event_restart && r.mat.svec_ls != r.mat.svec) r.flags.event_reset = 1;
}

void after_converged(run_state& r) {
    ebce_form_arrays(r);
    find_currents_trns(r);
    if (r.c.cct.flag_reset) reset_blocks(r);
    if (r.c.cct.flag_save_history) save_history(r);
}

void solve_newton_trns(run_state& r) {
    solve_class& slv = r.slv;
    newton_limits limits = newton_limits_of(r, "solve_newton_trns", "trns_newt");
    limits.fix_order = fixes_order(slv);
    limits.dump = dump_step(slv);
    limits.hold_factors =
        slv.method.nr_approx && slv.now.iter_trns_1 >= slv.method.iter_trns_nrapprox && !limits.fix_order;
    if (r.flags.event_restart) {
        // Steps about an event are so much shorter that no other step's factors serve them, nor theirs any other.
        const double constant = method_constant(slv);
        limits.hold_factors = limits.hold_factors && constant == slv.now.factored_constant;
        if (!limits.hold_factors) slv.now.factored_constant = constant;
    }
    newton(r, limits);
    if (slv.now.l_converged) after_converged(r);
}

void solve_linear_trns(run_state& r) {
    solve_linear(r, fixes_order(r.slv), dump_step(r.slv), "solve_linear_trns", "trns_lin");
    r.slv.now.l_converged = 1;
    after_converged(r);
}
}  // namespace

void find_currents_trns(run_state& r) {
    find_ebe_cur_trns(r, true);
    const bool first = r.slv.now.iter_trns_1 == 0;
    if (first || keeps_all_currents(r)) find_left_out_currents(r);
    if (!first) return;
    find_waiting_currents(r);
    find_residual(r);
}

void gmin_step_trns_1(run_state& r) {
    solve_class& slv = r.slv;
    slv.now.l_gmin_done = 0;
    ++slv.now.n_gmin_total;
    clear_solvec(r);
    newton_limits limits = gmin_limits(slv, "gmin_step_trns_1");
    limits.dump = false;  // the chosen step's system is that of its Newton solve
    for (slv.now.iter_gmin = 0; slv.now.iter_gmin < slv.method.gmin_npoints; ++slv.now.iter_gmin) {
        slv.now.gmin =
            interp_log(slv.method.gmin_start, slv.method.gmin_end, slv.now.iter_gmin, slv.method.gmin_npoints);
        r.flags.gmin = slv.now.gmin;
        limits.fix_order = slv.now.iter_gmin == 0;
        newton(r, limits);
        if (!slv.now.l_converged)
            halt({"gmin_step_trns_1:", "   N-R iterations did not converge.", line("   gmin_present=", slv.now.gmin),
                  line("   1/gmin_present=", 1.0 / slv.now.gmin), "   Halting..."});
    }
    slv.now.l_converged = 1;
    slv.now.l_gmin_done = 1;
    slv.now.iter_gmin = -1;
    ebce_form_arrays(r);
    find_ebe_cur_trns(r, false);
    if (r.c.cct.flag_save_history) save_history(r);
}

void find_functions_trns(run_state& r) {
    evaluate_functions(r);
    // A block that goes on from a solution knows the currents of its capacitors; one that starts from nothing has none.
    kcl_derivatives& k = r.mat.kcl_ddt;
    const bool from_solution = r.slv.task.init_previous || r.slv.task.init_file;
    for (int d = 0; d < k.n(); ++d)
        k.total[at(d)] = from_solution ? r.c.ebeu.cur_nd[at(k.terminal[at(d)])] : k.still[at(d)];
}

void set_time_next(run_state& r, double t) {
    r.slv.now.time_next = t;
    r.flags.time_given = t;
}

void solve_step(run_state& r) {
    solve_class& slv = r.slv;
    const residuals_of_short_step heeded(r);
    if (slv.now.flag_linear)
        solve_linear_trns(r);
    else if (slv.now.flag_nonlinear)
        solve_newton_trns(r);
    else
        slv.now.l_converged = 1;
}

void evaluate_functions(run_state& r) {
    ebce_form_arrays(r);
    find_ebe_cur_trns(r, false);
    find_block_functions(r);
}

void check_progress(const solve_class& slv, std::string_view who) {
    if (slv.now.time_present + slv.now.delt > slv.now.time_present) return;
    halt({line(who, ": the time does not go on with"), "  this step.", line("  time_present=", slv.now.time_present),
          line("  delt=", slv.now.delt), line("  iter_trns_1=", slv.now.iter_trns_1), "  Halting..."});
}

void gbce_modulo(run_state& r) {
    gbeu_class& g = r.c.gbeu;
    for (int u = 0; u < g.n(); ++u) {
        if (!r.c.lib.gbes.flag.limit_modulo[at(g.unit.i_lib[at(u)])] || g.vr.size(u) == 0) continue;
        const double lo = g.unit.rprm.row(u)[0], hi = g.unit.rprm.row(u)[1], w = hi - lo;
        const int n = g.vr.row(u)[g.vr.size(u) - 1];
        const double v = g.val_vr[at(n)];
        const double wrapped = v < lo ? hi - std::fmod(lo - v, w) : std::fmod(v - lo, w) + lo;
        if (wrapped == v) continue;
        g.val_vr[at(n)] = wrapped;
        const std::size_t i = at(r.mat.offs.gvar + n);
        const double shift = wrapped - r.mat.svec_old_1[i];
        r.mat.svec[i] = r.mat.svec_old_1[i] = wrapped;
        r.mat.svec_old_2[i] += shift;  // gear2 looks back to there, and TR-BDF2
    }
}
