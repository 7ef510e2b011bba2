#include "analyses/explicit.h"

#include <algorithm>
#include <cmath>

#include "analyses/evaluate.h"
#include "analyses/explicit_network.h"
#include "analyses/run_state.h"
#include "base/at.h"

namespace {

// ---- calls of single blocks ----

void gather_block(run_state& r, int u) {
    xbeu_class& x = r.c.xbeu;
    for (int k = x.vr.first[at(u)]; k < x.vr.first[at(u) + 1]; ++k) x.vr_in[at(k)] = x.val_vr[at(x.vr.data[at(k)])];
}

void scatter_outputs(run_state& r, int u) {
    xbeu_class& x = r.c.xbeu;
    for (int k = x.vr.first[at(u)] + x.n_input[at(u)]; k < x.vr.first[at(u) + 1]; ++k)
        x.val_vr[at(x.vr.data[at(k)])] = x.vr_in[at(k)];
}

void call_block(run_state& r, int u) {
    gather_block(r, u);
    get_unit(r, r.xbe, u);
}

// A run of blocks, or a single one whose model has no function for runs.
void call(run_state& r, const unit_run<xbe_call>& run) {
    if (run.function) {
        run.function(run, false, &r.flags, &r.dp, &r.math_cnst);
        return;
    }
    call_block(r, run.unit);
    if (r.c.xbeu.kind[at(run.unit)] != block_kind::integrate) scatter_outputs(r, run.unit);
}

void add_runs(const run_state& r, const std::vector<int>& units, std::vector<unit_run<xbe_call>>& runs) {
    for (unit_run<xbe_call>& run : make_runs(r.xbe, units, [](int) { return false; })) runs.push_back(run);
}

// ---- states ----

// The first place, if the places follow one another; else null.
template <class T>
T* one_behind_the_other(const std::vector<T*>& places) {
    for (std::size_t i = 0; i < places.size(); ++i)
        if (places[i] != places[0] + i) return nullptr;
    return places.empty() ? nullptr : places[0];
}

// The functions that give slopes: alone those of the blocks, in a network its rows with a derivative.
void find_states(run_state& r) {
    explicit_class& e = r.explicits;
    xbeu_class& x = r.c.xbeu;
    const bool matrix = r.flags.x_matrix != 0;
    const function_table& t = matrix ? r.c.lib.xbes.func_g : r.c.lib.xbes.func;
    const std::vector<int>& first = matrix ? x.first_g : x.unit.first_func;
    const std::vector<double>& values = matrix ? x.fg : x.f;
    e.state.clear();
    e.slope.clear();
    for (int u = 0; u < x.n(); ++u) {
        if (!matrix && x.kind[at(u)] != block_kind::integrate) continue;
        const int s = x.unit.i_lib[at(u)];
        for (int j = 0; j < t.n_func(s); ++j) {
            const auto k = at(t.first_f[at(s)] + j);
            if (!t.flag_ddt[k]) continue;
            const int number = t.ddt_var_number[k];
            e.state.push_back(t.ddt_var_flag[k] == kind_xaux ? &x.aux[at(x.first_aux[at(u)] + number)]
                                                             : &x.val_vr[at(x.vr.row(u)[number])]);
            e.slope.push_back(&values[at(first[at(u)] + j)]);
        }
    }
    e.first_state = one_behind_the_other(e.state);
    e.first_slope = one_behind_the_other(e.slope);
    e.old.assign(e.state.size(), 0.0);
    e.sum.assign(e.state.size(), 0.0);
    for (std::vector<double>& k : e.k) k.assign(e.state.size(), 0.0);
}

void find_hooks(run_state& r) {
    explicit_class& e = r.explicits;
    xbeu_class& x = r.c.xbeu;
    e.limiting.clear();
    e.keeping.clear();
    e.resetting.clear();
    e.modulo.clear();
    for (int u = 0; u < x.n(); ++u) {
        if (r.xbe.has(&entry_flags::limit_tstep, u)) e.limiting.push_back(u);
        if (r.xbe.has(&entry_flags::save_history, u)) e.keeping.push_back(u);
        if (r.xbe.has(&entry_flags::allow_reset, u)) e.resetting.push_back(u);
        if (!r.xbe.has(&entry_flags::limit_modulo, u) || x.vr.size(u) == 0 || x.unit.rprm.size(u) < 2) continue;
        double* value = &x.val_vr[at(x.vr.row(u)[x.vr.size(u) - 1])];
        const auto found = std::find(e.state.begin(), e.state.end(), value);
        e.modulo.push_back(
            {value, x.unit.rprm.row(u), found == e.state.end() ? -1 : static_cast<int>(found - e.state.begin())});
    }
}

void ask_break(run_state& r, int u, double answer) {
    r.flags.time_nextbreak_x = answer;
    call_block(r, u);
    r.c.xbeu.time_nextbreak[at(u)] = r.flags.time_nextbreak_x;
}
}  // namespace

void prepare_explicit(run_state& r) {
    explicit_class& e = r.explicits;
    const xbeu_class& x = r.c.xbeu;
    e.outputs.clear();
    e.slopes.clear();
    if (!r.flags.x_matrix) {
        add_runs(r, x.source, e.outputs);
        add_runs(r, x.delaying, e.outputs);
        for (int p = 0; p < x.n_pass(); ++p)
            add_runs(r, {x.pass_beu.row(p), x.pass_beu.row(p) + x.pass_beu.size(p)}, e.outputs);
        add_runs(r, x.integrating, e.slopes);
    }
    find_states(r);
    find_hooks(r);
    prepare_network(r);
}

void evaluate_explicit(run_state& r, double t) {
    r.flags.time_given_x = t;
    if (r.explicits.network) {
        solve_network(r);
        return;
    }
    const raised on(r.flags.evaluate);
    for (const unit_run<xbe_call>& run : r.explicits.outputs) call(r, run);
    for (const unit_run<xbe_call>& run : r.explicits.slopes) call(r, run);
}

void init_guess_explicit(run_state& r) {
    xbeu_class& x = r.c.xbeu;
    for (std::vector<double>* v : {&x.val_vr, &x.vr_in, &x.vr_in_new, &x.val_gvr, &x.aux, &x.aux_new, &x.bev, &x.cur})
        std::fill(v->begin(), v->end(), 0.0);
    r.flags.time_given_x = r.flags.t_start;
    const raised on(r.flags.init_guess);
    for (int u = 0; u < x.n(); ++u) {
        call_block(r, u);
        scatter_outputs(r, u);
    }
}

void one_time_parms_explicit(run_state& r) {
    for (int u = 0; u < r.xbe.n(); ++u) get_unit(r, r.xbe, u);
}

void xbe_save_history(run_state& r) {
    const raised on(r.flags.save_history);
    for (const int u : r.explicits.keeping) call_block(r, u);
}

void xbe_reset(run_state& r) {
    const raised on(r.flags.reset_x);
    for (const int u : r.explicits.resetting) {
        call_block(r, u);
        scatter_outputs(r, u);
    }
}

void xbce_modulo(run_state& r) {
    for (const explicit_class::modulo_range& m : r.explicits.modulo) {
        const double low = m.limits[0], high = m.limits[1], width = high - low, v = *m.value;
        const double back = v < low ? high - std::fmod(low - v, width) : std::fmod(v - low, width) + low;
        if (back == v) continue;
        *m.value = back;
        if (m.state >= 0) r.explicits.old[at(m.state)] += back - v;
    }
}

void xbe_find_nextbreak(run_state& r) {
    xbeu_class& x = r.c.xbeu;
    std::fill(x.time_nextbreak.begin(), x.time_nextbreak.end(), r.flags.t_end);
    r.flags.time_given_x = r.slv.now.time_x;
    const raised on(r.flags.nexttime);
    for (const int u : r.explicits.limiting) ask_break(r, u, r.flags.t_end);
}

void check_tnext1_x(run_state& r) {
    const double t_lim = r.slv.now.time_x + r.slv.now.delta_t_x;
    r.flags.time_given_x = r.slv.now.time_x;
    const raised on(r.flags.nexttime);
    for (const int u : r.explicits.limiting)
        if (!(t_lim < r.c.xbeu.time_nextbreak[at(u)]) || r.xbe.has(&entry_flags::save_history, u))
            ask_break(r, u, r.flags.t_end);
}

void check_tnext2_x(run_state& r) {
    solve_state& now = r.slv.now;
    const double smallest = r.slv.method.delt_min_x;
    if (now.delta_t_x == smallest) return;
    double t_lim = now.time_x + now.delta_t_x;
    for (const int u : r.explicits.limiting)
        if (const double t = r.c.xbeu.time_nextbreak[at(u)]; !(t_lim < t) && t - now.time_x >= smallest - 1e-15)
            t_lim = t;
    now.delta_t_x = t_lim - now.time_x;
}

void assign_xbeu_gvr(run_state& r) {
    xbeu_class& x = r.c.xbeu;
    for (std::size_t k = 0; k < x.gvr_gbeu.size(); ++k) x.val_gvr[k] = r.c.gbeu.val_vr[at(x.gvr_gbeu[k])];
}

void assign_xvr(run_state& r) {
    const std::vector<double>& value = r.c.xbeu.val_vr;
    for (std::size_t k = 0; k < r.c.ebeu.xvr_xbeu.size(); ++k) r.c.ebeu.val_xvr[k] = value[at(r.c.ebeu.xvr_xbeu[k])];
    for (std::size_t k = 0; k < r.c.gbeu.xvr_xbeu.size(); ++k) r.c.gbeu.val_xvr[k] = value[at(r.c.gbeu.xvr_xbeu[k])];
}
