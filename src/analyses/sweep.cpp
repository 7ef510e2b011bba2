#include "analyses/sweep.h"

#include <algorithm>

#include "analyses/dc.h"
#include "analyses/evaluate.h"
#include "analyses/solution_vector.h"
#include "base/at.h"
#include "base/halt.h"
#include "base/numeric.h"
#include "output/row_writers.h"
#include "settings/directives.h"

namespace {
void solve_and_write(run_state& r) {
    if (r.slv.startup)
        solve_startup(r);
    else
        solve_dc(r);
    if (r.slv.now.l_converged) write_dc(r.slv, r.c, r.flags);
}

// The solutions that later curves of a dc grid start from: one for each level that can step on. A curve whose index at
// level k steps on starts where the curve before it on that level started. Start-up goes on from the point before.
struct curve_starts {
    std::vector<std::vector<double>> saved;  // [levels - 1]

    void begin_curve(run_state& r, const std::vector<int>& ijk) const {
        for (int k = static_cast<int>(saved.size()) - 1; k >= 0; --k)
            if (ijk[at(k)] > 0) {
                r.mat.svec = saved[at(k)];
                dcmp_solvec(r);
                return;
            }
    }
    void keep(const run_state& r, const std::vector<int>& ijk) {
        for (int k = static_cast<int>(saved.size()) - 1; k >= 0; --k) {
            saved[at(k)] = r.mat.svec;
            if (ijk[at(k)] > 0) return;
        }
    }
};

void table_sweep(run_state& r) {
    solve_class& slv = r.slv;
    std::vector<int> m;
    for (const vary_statement& v : slv.task.vary) m.push_back(v.range.n);
    const bool is_grid = m.size() >= 2;
    curve_starts starts;
    starts.saved.resize(is_grid ? m.size() - 1 : 0);
    std::vector<int> ijk(m.size(), 0);
    for (slv.now.i_sweep = 0; slv.now.i_sweep < slv.task.n_sweep; ++slv.now.i_sweep) {
        if (slv.task.n_sweep > 1) {
            r.flags.vary_parm = 1;
            vary_parm(slv, r.c, slv.now.i_sweep);
        }
        one_time_parms(r);
        r.flags.vary_parm = 0;
        if (is_grid) indx_to_ijk(static_cast<int>(m.size()), m.data(), slv.now.i_sweep, ijk.data());
        const bool begins_curve = is_grid && !slv.startup && ijk.back() == 0;
        if (begins_curve && slv.now.i_sweep > 0) starts.begin_curve(r, ijk);
        solve_and_write(r);
        if (begins_curve) starts.keep(r, ijk);
    }
}

void automatic_sweep(run_state& r) {
    solve_class& slv = r.slv;
    auto_sweep& a = slv.task.automatic;
    const bool ascending = a.p_end >= a.p_begin;
    a.p_now = a.p_begin;
    a.step_now = a.step;
    r.mat.svec_prev = r.mat.svec;
    for (slv.now.i_sweep = 0; slv.now.i_sweep < a.itmax_sweep; ++slv.now.i_sweep) {
        if (ascending ? a.p_now > a.p_end : a.p_now < a.p_end) return;
        r.flags.vary_parm = 1;
        vary_parm(slv, r.c, slv.now.i_sweep);
        one_time_parms(r);
        r.flags.vary_parm = 0;
        solve_and_write(r);
        if (slv.now.flag_linear) {
            a.step_now = a.step;
        } else if (slv.now.l_converged) {
            a.step_now = std::min(a.step_now * a.factor_inc, a.step_max);
            r.mat.svec_prev = r.mat.svec;
        } else {
            r.mat.svec = r.mat.svec_prev;
            dcmp_solvec(r);
            a.step_now = std::max(a.step_now * a.factor_red, a.step_min);
        }
        a.p_now += ascending ? a.step_now : -a.step_now;
    }
    halt({"main: sweep end not reached in", "  itmax_swp steps. Halting..."});
}
}  // namespace

void run_dc_sweeps(run_state& r) {
    solve_class& slv = r.slv;
    for (slv.now.i_sync = 0; slv.now.i_sync < slv.task.n_sync; ++slv.now.i_sync) {
        if (!slv.task.vary_sync.empty()) vary_parmsync(slv, r.c, slv.now.i_sync);
        if (slv.task.flag_vary_auto)
            automatic_sweep(r);
        else
            table_sweep(r);
    }
}
