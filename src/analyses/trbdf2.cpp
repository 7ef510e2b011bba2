#include "analyses/trbdf2.h"

#include <algorithm>
#include <cmath>

#include "analyses/integration.h"
#include "analyses/levels.h"
#include "analyses/trns_solve.h"
#include "base/at.h"
#include "base/halt.h"

double trbdf2_constant(double g) { return (4 * g - 3 * g * g - 2) / (12 * (2 - g)); }

bool trzbdf2_1(run_state& r) {
    solve_class& slv = r.slv;
    const double g = slv.method.trbdf2_gamma;
    double sum = 0.0;
    auto add = [&](double d0, double d1, double d2) {
        const double e = (1 / g) * d2 - (1 / g) * (1 / (1 - g)) * d1 + (1 / (1 - g)) * d0;
        sum += e * e;
    };
    const kcl_derivatives& k = r.mat.kcl_ddt;
    for (int d = 0; d < k.n(); ++d)
        if (k.row[at(d)] >= 0)
            add(k.total[at(d)] - k.still[at(d)], k.total_1[at(d)] - k.still_1[at(d)],
                k.total_2[at(d)] - k.still_2[at(d)]);
    const state_rows& s = r.mat.state;
    for (int i = 0; i < s.n(); ++i) add(s.f_now[at(i)], s.f_1[at(i)], s.f_2[at(i)]);
    const double norm = std::sqrt(sum);
    const double ratio = norm * (2 * std::fabs(trbdf2_constant(g)) * slv.now.delt) / slv.method.trbdf2_tolr;
    const double h_est = slv.now.delt * std::pow(ratio, -0.333333333);
    if (!(ratio < 2.0)) {  // a ratio that is no number tells nothing of the step
        slv.now.delt_new = 0.9 * h_est;
        return false;
    }
    slv.now.delt_new = std::min(0.9 * h_est, 2 * slv.now.delt);
    return true;
}

namespace {
struct trbdf2_counts {
    int iter_tr = 0, iter_bdf2 = 0, number_reject = 0;
    int rejected_at_min = 0;  // rejected tries of the smallest step in a row
};

[[noreturn]] void no_smaller_step(const solve_class& slv, const trbdf2_counts& n, bool in_bdf2) {
    halt({in_bdf2 ? "solve_trns: no convergence (in bdf2) even with" : "solve_trns: no convergence even with",
          "  the smallest time step.", line("  iter_tr=", n.iter_tr),
          in_bdf2 ? line("  iter_bdf2=", n.iter_bdf2) : line("  iter_trbdf2=", slv.now.iter_trbdf2),
          line("  number_reject=", n.number_reject), line("  iter_trns_1=", slv.now.iter_trns_1)});
}

// A try that is rejected leaves the histories of units, so the same step again need not fail the same way; but it may.
void count_rejected(const solve_class& slv, trbdf2_counts& n, double h) {
    if (h > slv.method.delt_min)
        n.rejected_at_min = 0;
    else if (++n.rejected_at_min > slv.method.itmax_trbdf2)
        no_smaller_step(slv, n, false);
}

void solve_stage(run_state& r) {
    solve_step(r);
    if (r.slv.now.flag_linear) evaluate_functions(r);
}
}  // namespace

bool trbdf2_step(run_state& r, event_control& events) {
    solve_class& slv = r.slv;
    mat_class& mat = r.mat;
    trbdf2_counts count;
    for (;;) {
        ++slv.now.iter_trbdf2;
        if (slv.now.iter_stepred > slv.method.itmax_trbdf2)
            halt({"solve_trns: iter_trbdf2 has exceeded itmax_trbdf2", line("  iter_trbdf2=", slv.now.iter_trbdf2),
                  line("  itmax_trbdf2=", slv.method.itmax_trbdf2), line("  number_reject=", count.number_reject),
                  line("  time_given=", r.flags.time_given), "  Halting..."});
        ++count.number_reject;
        check_progress(slv);
        const double h = slv.now.delt, t = slv.now.time_present;
        slv.now.delt = h * slv.method.trbdf2_gamma;
        set_time_next(r, t + h * slv.method.trbdf2_gamma);
        slv.now.flag_trz = 1;
        slv.now.flag_bdf2 = 0;
        keep_functions_1(mat);
        find_trns_constants(slv);
        ++count.iter_tr;
        solve_stage(r);
        if (!slv.now.l_converged) {
            if (h == slv.method.delt_min) no_smaller_step(slv, count, false);
            slv.now.delt = std::max(slv.method.delt_min, h * slv.method.fctr_stepred);
            restore_1(r);
            events.restore_histories(r);
            continue;
        }
        if (events.cut(r, t, slv.now.time_next, false)) {
            restore_1(r);
            return false;
        }
        keep_point_2(mat);
        keep_point_1(r);
        keep_functions_2(mat);
        keep_functions_1(mat);
        slv.now.flag_trz = 0;
        slv.now.flag_bdf2 = 1;
        set_time_next(r, t + h);
        slv.now.delt = h;
        find_trns_constants(slv);
        ++count.iter_bdf2;
        solve_stage(r);
        bool is_cut = false;
        if (slv.now.l_converged && events.cut(r, t + h * slv.method.trbdf2_gamma, slv.now.time_next)) {
            is_cut = true;
        } else if (slv.now.l_converged) {
            const bool accepted = trzbdf2_1(r);
            slv.now.delt = std::min(slv.method.delt_max, std::max(slv.method.delt_min, slv.now.delt_new));
            if (accepted) return true;
            if (events.on() && h <= slv.method.delt_min) {
                // A tolerance that no step meets is no jump.
                if (events.n_crossed() >= slv.method.itmax_trbdf2) no_smaller_step(slv, count, false);
                is_cut = events.take_as_event(r);
            } else {
                count_rejected(slv, count, h);
            }
        } else {
            if (slv.now.delt == slv.method.delt_min) no_smaller_step(slv, count, true);
            slv.now.delt = std::max(slv.method.delt_min, h * slv.method.fctr_stepred);
        }
        restore_2(r);
        if (is_cut) return false;
        events.restore_histories(r);
    }
}
