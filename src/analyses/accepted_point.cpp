#include "analyses/accepted_point.h"

#include "analyses/assembly.h"
#include "analyses/evaluate.h"
#include "analyses/integration.h"
#include "base/at.h"
#include "output/row_writers.h"

namespace {
void take_local_variables(run_state& r, int u) {
    const mat_class& mat = r.mat;
    for (int k = mat.first_locv[at(u)]; k < mat.first_locv[at(u) + 1]; ++k)
        r.c.ebeu.locv[at(mat.locv.to[at(k)])] = r.c.ebeu.f[at(mat.locv.from[at(k)])];
}

// Static values of derivatives, and with_totals their totals as currents.
void find_totals(run_state& r, const std::vector<int>& ddt, bool with_totals) {
    kcl_derivatives& k = r.mat.kcl_ddt;
    const double* f = r.c.ebeu.f.data();
    for (int d : ddt) k.still[at(d)] = f[k.f[at(d)]];
    if (!with_totals) return;
    for (int d : ddt) {
        const double total = k.still[at(d)] + k.rate[at(d)];
        k.total[at(d)] = total;
        r.c.ebeu.cur_nd[at(k.terminal[at(d)])] = total;
    }
}

// Terminal currents at a point whose functions and local variables are known.
void find_currents(run_state& r, const function_moves& m) {
    move_values(m.current, r.c.ebeu.f.data(), r.c.ebeu.cur_nd.data());
}

// Nobody asks for totals before the end of a block whose method has no use for the present ones.
bool totals_wait(const run_state& r) {
    return !r.slv.now.flag_trz && !r.slv.now.flag_bdf2 && !r.plan.shows_currents && r.slv.out.i_file_solution < 0;
}

// Currents and local variables at a point of dc or start-up. A template with start-up equations of its own has left its
// local variables itself.
void find_point_currents(run_state& r, analysis kind) {
    ebeu_class& e = r.c.ebeu;
    const function_table& t = r.ebe.lib.func;
    const raised on(r.flags.function);
    for (int u = 0; u < e.n(); ++u) {
        get_unit(r, r.ebe, u);
        const int s = r.ebe.entry(u);
        for (int j = 0; j < t.n_func(s); ++j)
            if (const int terminal = terminal_of_function(t, t.first_f[at(s)] + j, j, kind); terminal >= 0)
                e.cur_nd[at(e.nd.first[at(u)] + terminal)] = r.ebe.call[at(u)].f[j];
        if (kind != analysis::startup || !r.ebe.has(&entry_flags::startup_sprt, u)) take_local_variables(r, u);
    }
}
}  // namespace

void save_history(run_state& r) {
    const raised on(r.flags.save_history);
    form_arrays(r);
    for_families(r, [&](auto& f) {
        for (int u = 0; u < f.n(); ++u)
            if (f.has(&entry_flags::save_history, u)) get_unit(r, f, u);
    });
}

void treat_reset(run_state& r) {
    const raised on(r.flags.reset);
    gbeu_class& g = r.c.gbeu;
    double* x = r.mat.svec.data();
    for (int u = 0; u < g.n(); ++u) {
        if (!r.gbe.has(&entry_flags::allow_reset, u)) continue;
        gather_unit(r.gbe, u);
        get_unit(r, r.gbe, u);
        scatter_unit(r.gbe, u);
        for (int j = 0; j < g.vr.size(u); ++j) x[r.mat.offs.gvar + g.vr.row(u)[j]] = g.val_vr[at(g.vr.row(u)[j])];
        for (int k = g.first_aux[at(u)]; k < g.first_aux[at(u) + 1]; ++k) x[r.mat.offs.gaux + k] = g.aux[at(k)];
    }
}

void find_ebe_cur_dc(run_state& r) {
    const raised on(r.flags.dc);
    find_point_currents(r, analysis::dc);
}

void find_ebe_cur_startup(run_state& r) {
    const raised on(r.flags.startup);
    find_point_currents(r, analysis::startup);
}

void find_ebe_cur_trns(run_state& r, bool with_ddt) {
    const auto& runs = r.ebe.runs;
    const assembly_plan& p = r.plan;
    const double* f = r.c.ebeu.f.data();
    double* locv = r.c.ebeu.locv.data();
    {
        const raised on(r.flags.trns, r.flags.function);
        if (!r.formed.held_stand()) call_held(r, false);
        call_curved(r, true);
        if (with_ddt) {
            call_runs(r, r.ebe, runs.accepted, false);
            call_runs(r, r.ebe, runs.changing, false);
        } else {
            call_runs(r, r.ebe, runs.with_ddt, false);
        }
    }
    const function_moves& others = with_ddt ? p.of_others : p.of_with_ddt;
    move_values(others.locv, f, locv);
    if (!with_ddt || !totals_wait(r)) {
        if (with_ddt) {
            find_currents(r, p.of_held);
            find_currents(r, others);
            find_rates(r);
        }
        find_totals(r, p.of_held.ddt, with_ddt);
        find_totals(r, others.ddt, with_ddt);
    }
    keep_state_functions(r, false);
}

bool keeps_all_currents(const run_state& r) {
    const bool read_behind = r.slv.index_solve + 1 < r.c.cf.n_solve;
    return r.slv.out.i_file_solution >= 0 || r.c.cct.flag_reset || (r.c.cct.flag_mixed && read_behind);
}

void find_left_out_currents(run_state& r) {
    ebce_form_arrays(r);
    {
        const raised on(r.flags.trns, r.flags.function);
        call_runs(r, r.ebe, r.ebe.runs.left_out, false);
    }
    move_values(r.plan.of_left_out.locv, r.c.ebeu.f.data(), r.c.ebeu.locv.data());
    find_currents(r, r.plan.of_left_out);
}

void find_waiting_currents(run_state& r) {
    if (!totals_wait(r)) return;
    find_currents(r, r.plan.of_held);
    find_currents(r, r.plan.of_others);
    find_rates(r);
    find_totals(r, r.plan.of_held.ddt, true);
    find_totals(r, r.plan.of_others.ddt, true);
}

void ov_prm_of_files(run_state& r) {
    show_digital_parameters(r);
    if (r.ebe.runs.shown.empty() && r.gbe.runs.shown.empty()) return;
    const raised on(r.flags.outvar_prm);
    form_arrays(r);
    for_families(r, [&](auto& f) {
        for (int u : f.runs.shown) get_unit(r, f, u);
    });
}

void write_analog_row(run_state& r) {
    ov_prm_of_files(r);
    write_trns(r.slv, r.c, rows_analog, r.slv.now.time_present);
}

void find_block_functions(run_state& r) {
    gbce_form_arrays(r);
    const raised on(r.flags.trns, r.flags.function);
    call_runs(r, r.gbe, r.gbe.runs.accepted, false);
    call_runs(r, r.gbe, r.gbe.runs.changing, false);
    keep_state_functions(r, true);
}
