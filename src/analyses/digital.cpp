#include "analyses/digital.h"

#include <algorithm>

#include "analyses/evaluate.h"
#include "analyses/run_state.h"
#include "base/at.h"
#include "base/halt.h"
#include "base/numeric.h"

namespace {
constexpr int unknown = 2;

// Calls a model between its inputs and its outputs. The event that it leaves pending is the caller's.
void call_unit(run_state& r, int u) {
    digital_class& d = r.digital;
    const dbeu_class& units = r.c.dbeu;
    const dbe_call& call = d.call[at(u)];
    if (call.function == nullptr) return;
    const int first = units.nd.first[at(u)], n_in = units.n_input[at(u)], end = units.nd.first[at(u) + 1];
    const int* nd = units.nd.data.data();
    for (int j = 0; j < n_in; ++j) {
        const digital_class::node_levels& node = d.node[at(nd[first + j])];
        d.stbl_in[at(j)] = node.now != unknown;
        d.val_in[at(j)] = node.now == 1;
        d.val_in_old[at(j)] = node.old == 1;
    }
    dbe_call::arguments::call(call.function, u, call, &r.flags, &r.dp, &r.math_cnst);
    for (int k = first + n_in; k < end; ++k) {
        digital_class::node_levels& node = d.node[at(nd[k])];
        const int level = units.stbl_out[at(k)] == 1 ? units.val_out[at(k)] == 1 : unknown;
        if (node.now == level) continue;
        node.now = static_cast<std::int8_t>(level);
        if (node.moved) continue;
        node.moved = 1;
        d.moved.push_back(nd[k]);
    }
}

void call_and_keep_event(run_state& r, int u) {
    call_unit(r, u);
    if (r.c.dbeu.stbl[at(u)] == 0) r.digital.pending.push(u, r.c.dbeu.t_next[at(u)]);
}

// The levels of the tables become those that units see, now and before.
void dvar_to_l(run_state& r) {
    digital_class& d = r.digital;
    const dbeu_class& units = r.c.dbeu;
    for (int n = 0; n < units.n_nd; ++n) {
        digital_class::node_levels& node = d.node[at(n)];
        node.now = node.old = static_cast<std::int8_t>(units.dvar[at(n)]);
        node.moved = 0;
    }
    d.moved.clear();
    d.changed.clear();
}

// Models take start-up values and first guesses as integers.
void take_start_values(dbeu_class& u) {
    std::copy(u.unit.sv.data.begin(), u.unit.sv.data.end(), u.stparm.begin());
    std::copy(u.unit.ig.data.begin(), u.unit.ig.data.end(), u.igparm.begin());
}
}  // namespace

void call_all_digital(run_state& r) {
    digital_class& d = r.digital;
    dbeu_class& units = r.c.dbeu;
    dvar_to_l(r);
    for (int u = 0; u < units.n(); ++u) call_unit(r, u);
    for (int n = 0; n < units.n_nd; ++n) units.dvar[at(n)] = static_cast<unsigned char>(d.node[at(n)].now);
}

void dbe_init_guess(run_state& r) {
    dbeu_class& u = r.c.dbeu;
    std::fill(u.dvar.begin(), u.dvar.end(), unknown);
    for (std::vector<int>* v : {&u.lparm, &u.stbl_out, &u.val_out, &u.dstate}) std::fill(v->begin(), v->end(), 0);
    std::fill(u.stbl.begin(), u.stbl.end(), 1);
    std::fill(u.t_next.begin(), u.t_next.end(), 0.0);
    take_start_values(u);
    assign_dbeu_anlg(r);
    call_all_digital(r);
}

bool forgets_plans(const dbeu_class& u) {
    for (int k = 0; k < u.n(); ++k)
        if (u.stbl[at(k)] == 0 && u.first_lprm[at(k) + 1] - u.first_lprm[at(k)] > 1) return true;
    return false;
}

void call_digital_models(run_state& r) {
    const std::vector<dbe_call>& call = r.digital.call;
    take_start_values(r.c.dbeu);
    for (int u = 0; u < r.c.dbeu.n(); ++u)
        if (call[at(u)].function != nullptr)
            dbe_call::arguments::call(call[at(u)].function, u, call[at(u)], &r.flags, &r.dp, &r.math_cnst);
}

void take_levels_as_outputs(dbeu_class& u) {
    for (int k = 0; k < u.n(); ++k)
        for (int i = u.nd.first[at(k)] + u.n_input[at(k)]; i < u.nd.first[at(k) + 1]; ++i) {
            const int level = u.dvar[at(u.nd.data[at(i)])];
            u.stbl_out[at(i)] = level != unknown;
            u.val_out[at(i)] = level == 1;
        }
}

void set_dgtl(run_state& r) {
    for (const dgtl_item& item : r.slv.task.set_dgtl) r.c.dbeu.dvar[at(r.c.cct.dct.to_eu[at(item.node)])] = item.level;
}

void digital_passes(run_state& r, bool from_nothing) {
    dbeu_class& u = r.c.dbeu;
    if (from_nothing) {
        std::fill(u.dvar.begin(), u.dvar.end(), unknown);
        set_dgtl(r);
    }
    take_start_values(u);
    assign_dbeu_anlg(r);
    const raised on(r.flags.startup);
    std::vector<int> before;
    for (int pass = 0; pass < r.slv.method.n_pass_dgtl; ++pass) {
        r.flags.startup_first = pass == 0 ? 1 : 0;
        before = u.dvar;
        call_all_digital(r);
        r.flags.startup_first = 0;
        if (norm_abs_diff_int(u.n_nd, u.dvar.data(), before.data()) == 0) return;
    }
    halt({"solve_startup: did not converge after", line("   ", r.slv.method.n_pass_dgtl, " passes. Halting...")});
}

void begin_events(run_state& r) {
    digital_class& d = r.digital;
    const dbeu_class& units = r.c.dbeu;
    dvar_to_l(r);
    d.pending.resize(units.n());
    d.due.resize(units.n());
    d.to_schedule.resize(units.n());
    for (int u = 0; u < units.n(); ++u)
        if (units.stbl[at(u)] == 0) d.pending.push(u, units.t_next[at(u)]);
}

double next_event(run_state& r, double t_far) { return r.digital.pending.next_time(t_far, r.slv.method.time_epsilon); }

bool dbe_process(run_state& r, double t) {
    digital_class& d = r.digital;
    dbeu_class& units = r.c.dbeu;
    for (int n : d.changed) d.node[at(n)].old = static_cast<std::int8_t>(units.dvar[at(n)]);
    d.changed.clear();
    {
        const raised on(r.flags.trns, r.flags.process);
        r.flags.schedule = 0;
        if (const int single = d.pending.take_due(t, d.due); single >= 0) call_and_keep_event(r, single);
        while (!d.due.empty()) call_and_keep_event(r, d.due.take());
    }
    // What units put out when they were scheduled belongs to this event, too.
    bool analog = false;
    for (int n : d.moved) {
        digital_class::node_levels& node = d.node[at(n)];
        node.moved = 0;
        if (units.dvar[at(n)] == node.now) continue;
        units.dvar[at(n)] = static_cast<unsigned char>(node.now);
        analog |= node.feeds_analog != 0;
        d.changed.push_back(n);
        for (int k = units.reader.first[at(n)]; k < units.reader.first[at(n) + 1]; ++k)
            d.to_schedule.add(units.reader.data[at(k)]);
    }
    d.moved.clear();
    return analog;
}

void dbe_schedule(run_state& r) {
    digital_class& d = r.digital;
    const raised on(r.flags.trns, r.flags.schedule);
    r.flags.process = 0;
    while (!d.to_schedule.empty()) {
        const int u = d.to_schedule.take();
        if (r.c.dbeu.stbl[at(u)] == 1) call_and_keep_event(r, u);
    }
}

void dbe_schedule_anlg(run_state& r) {
    assign_dbeu_anlg(r);
    const raised on(r.flags.trns, r.flags.schedule);
    for (int u : r.digital.with_analog)
        if (r.c.dbeu.stbl[at(u)] == 1) call_and_keep_event(r, u);
}

void assign_dbeu_anlg(run_state& r) {
    dbeu_class& u = r.c.dbeu;
    for (std::size_t k = 0; k < u.val_anlg.size(); ++k) u.val_anlg[k] = r.c.ebeu.val_nd[at(u.anlg_ebeu[k])];
}

void plan_digital_outputs(run_state& r) {
    const composite_library& lib = r.c.lib.dels;
    const delu_class& inst = r.c.delu;
    const unit_core& unit = r.c.dbeu.unit;
    r.digital.shown.clear();
    for (const out_file& file : r.slv.out.files)
        for (const out_var& v : file.vars) {
            if (v.kind != ov_rparm_delu || v.prefix != prefix_none) continue;
            const int e = inst.i_lib[at(v.instance)], first = inst.first_unit[at(v.instance)];
            for (int k = 0; k < lib.be.n_be(e); ++k) {
                const row_table<int>& link = lib.be.rprm_flag;
                const int b = lib.be.first_be[at(e)] + k;
                for (int j = 0; j < link.size(b); ++j)
                    if (link.row(b)[j] == v.index)
                        r.digital.shown.push_back(
                            {unit.rprm.first[at(first + k)] + j, inst.rprm.first[at(v.instance)] + v.index});
            }
        }
}

void show_digital_parameters(run_state& r) {
    for (const digital_class::shown_parameter& s : r.digital.shown)
        r.c.delu.rprm.data[at(s.instance)] = r.c.dbeu.unit.rprm.data[at(s.unit)];
}
