#include "analyses/assembly.h"

#include "analyses/evaluate.h"
#include "analyses/integration.h"
#include "analyses/plan.h"
#include "base/at.h"

namespace {
int& analysis_flag(run_state& r) {
    switch (r.mat.kind) {
        case analysis::startup:
            return r.flags.startup;
        case analysis::trns:
        case analysis::ssw:
            return r.flags.trns;
        default:
            return r.flags.dc;
    }
}

void scale(const value_moves& m, double constant, double* d) {
    const std::size_t n = m.from.size();
    for (std::size_t k = 0; k < n; ++k) d[m.to[k]] = constant * d[m.from[k]];
}
void negate(const value_moves& m, double* d) {
    const std::size_t n = m.from.size();
    for (std::size_t k = 0; k < n; ++k) d[m.to[k]] = -d[m.from[k]];
}

// The whole matrix, or the entries that change.
void sum_matrix(assembly_plan& p, double constant, double* val_m, bool only_changing) {
    double* d = p.d.data();
    scale(only_changing ? p.scaled_changing : p.scaled, constant, d);
    negate(only_changing ? p.negated_changing : p.negated, d);
    if (only_changing) {
        p.entries.sum_changing(d, val_m);
        return;
    }
    p.d.back() = -constant;
    p.entries.sum_all(d, val_m);
}

// Rows of nodes are sums of functions f, rows of a unit's own are assigned.
void sum_rows_of_nodes(const assembly_plan& p, const double* f, double* rhs_m) {
    const int *term = p.rows.term.data(), *first = p.rows.first.data();
    const std::size_t n = p.row.size();
    for (std::size_t i = 0; i < n; ++i) rhs_m[p.row[i]] = add_terms(0.0, f, term + first[i], term + first[i + 1]);
}
void assign_own_rows(const slot_table& slot, const double* f, double* rhs_m) {
    const std::size_t n = slot.to_own.size();
    for (std::size_t s = 0; s < n; ++s) rhs_m[slot.to_own[s]] = f[slot.from_own[s]];
}

// Rows of the periodic system; the rest is added by the functions of state rows.
void assign_periodic_rows(const periodic_rows& p, const double* x, const double* f, double* rhs_m) {
    for (const int row : p.node_row) rhs_m[row] = 0.0;
    for (std::size_t k = 0; k < p.current.size(); ++k) rhs_m[p.node_row[k]] += x[p.current[k]];
    for (std::size_t k = 0; k < p.row.size(); ++k) rhs_m[p.row[k]] = x[p.x[k]] - f[p.f[k]];
}

// All units; whole: with the derivatives of all, changing: with those of units whose derivatives may change.
void evaluate_electrical(run_state& r, bool whole, bool changing) {
    const auto& runs = r.ebe.runs;
    double* f = r.c.ebeu.f.data();
    if (whole || !r.formed.held_stand()) call_held(r, whole);
    call_runs(r, r.ebe, runs.accepted, whole);
    call_runs(r, r.ebe, runs.left_out, whole);
    call_curved(r, changing);
    call_runs(r, r.ebe, runs.changing, changing);
    if (r.mat.kind == analysis::trns) {
        move_values(r.plan.of_others.locv, f, r.c.ebeu.locv.data());
        move_values(r.plan.of_left_out.locv, f, r.c.ebeu.locv.data());
        find_rates(r);
        const kcl_derivatives& k = r.mat.kcl_ddt;
        double* total = f + r.c.ebeu.unit.n_ttlf();
        for (int d = 0; d < k.n(); ++d) total[d] = f[k.f[at(d)]] + k.rate[at(d)];
    }
    sum_rows_of_nodes(r.plan, f, r.mat.rhs_m.data());
    assign_own_rows(r.mat.ebe, f, r.mat.rhs_m.data());
    assign_periodic_rows(r.mat.periodic, r.mat.svec.data(), f, r.mat.rhs_m.data());
}

// Functions of state rows, before the terms of the rule of integration come in.
void keep_rows_of_states(mat_class& mat) {
    state_rows& s = mat.state;
    for (int i = 0; i < s.n(); ++i) s.f_now[at(i)] = mat.rhs_m[at(s.row[at(i)])];
}

void evaluate_blocks(run_state& r, bool whole, bool changing) {
    call_runs(r, r.gbe, r.gbe.runs.accepted, whole);
    call_runs(r, r.gbe, r.gbe.runs.changing, changing);
    assign_own_rows(r.mat.gbe, r.c.gbeu.f.data(), r.mat.rhs_m.data());
}

}  // namespace

void keep_state_functions(run_state& r, bool of_blocks) {
    state_rows& s = r.mat.state;
    const std::vector<double>& f = of_blocks ? r.c.gbeu.f : r.c.ebeu.f;
    for (int i = 0; i < s.n(); ++i)
        if ((s.is_block[at(i)] != 0) == of_blocks) s.f_now[at(i)] = f[at(s.f[at(i)])];
}

void form_jac_rhs(run_state& r, bool only_function) {
    assembly_plan& plan = r.plan;
    if (plan.layout != r.mat.layout) make_plan(r);
    r.flags.n_limit = 0;
    form_arrays(r);
    const bool over_time = in_time(r.mat.kind);
    const double constant = over_time ? method_constant(r.slv) : 0.0;
    const bool changing = !only_function, whole = changing && !(over_time && plan.derivatives_stand());
    {
        r.flags.ssw = r.mat.kind == analysis::ssw ? 1 : 0;
        const raised on(analysis_flag(r), r.flags.function);
        evaluate_electrical(r, whole, changing);
        evaluate_blocks(r, whole, changing);
        r.flags.ssw = 0;
    }
    if (changing) {
        sum_matrix(plan, constant, r.mat.val_m.data(), !whole && plan.sums_stand(constant));
        plan.keep_values(over_time, constant);
    }
    if (r.mat.kind == analysis::ssw)
        keep_rows_of_states(r.mat);
    else
        keep_state_functions(r, true);
}
