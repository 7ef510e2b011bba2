#include <algorithm>
#include <cmath>
#include <functional>

#include "analyses/ac.h"
#include "analyses/evaluate.h"
#include "base/at.h"
#include "base/halt.h"
#include "sparse/knuth_write.h"

namespace {
// A row of the system may be off by this part of its terms: results have seven digits.
constexpr double allowed_residual = 1e-9;

// ---- plan ----

template <class Rows>
bool asks_frequency(const unit_family<Rows>& f, int u) {
    const auto* model = find_registration<typename Rows::call>(f.lib.list.entry[f.entry(u)]);
    return !model || model->function != f.call[at(u)].function || model->asks_frequency;
}

// Whether a form takes its values from derivatives at the bias point; none of explicit blocks does.
bool has_bias(const ebau_class& units, int u) { return units.index_ebeu[at(u)] >= 0; }
bool has_bias(const gbau_class& units, int u) { return units.index_gbeu[at(u)] >= 0; }
bool has_bias(const xbau_class&, int) { return false; }

// Units with a bias of their own are called singly: it is no slice that could be stepped through.
template <class Rows>
std::vector<char> plan_runs(unit_family<Rows>& f) {
    std::vector<char> changes(at(f.n()), 0);
    std::vector<int> units[2];
    for (int u = 0; u < f.n(); ++u) {
        changes[at(u)] = asks_frequency(f, u);
        units[at(changes[at(u)])].push_back(u);
    }
    for (std::vector<int>& list : units)
        std::stable_sort(list.begin(), list.end(), [&](int a, int b) { return f.entry(a) < f.entry(b); });
    f.runs = {};
    const auto alone = [&](int u) { return has_bias(f.units, u); };
    f.runs.held = make_runs(f, units[0], alone);
    f.runs.changing = make_runs(f, units[1], alone);
    return changes;
}

template <class Rows>
void list_additions(const unit_family<Rows>& f, const slot_table& slot, const std::vector<int>& first_d,
                    const std::vector<char>& changes, std::vector<addition>& all) {
    for (int u = 0; u < f.n(); ++u)
        for (int k = slot.first_jac[at(u)]; k < slot.first_jac[at(u) + 1]; ++k)
            all.push_back(
                {slot.to_val[at(k)], place_of_derivative(f, first_d, u, slot.from_jac[at(k)]), changes[at(u)] != 0});
}

void plan_assembly(ac_class& ac) {
    const ac_system& s = ac.s;
    int n_d = 0;
    std::vector<addition> all;
    std::vector<std::vector<char>> changes;  // of each family
    std::vector<std::vector<int>> first;
    for_ac_families(ac, [&](auto& f) {
        const slot_table& slot = s.*f.slots;
        changes.push_back(plan_runs(f));
        f.runs.from = used_places(slot, f.units.unit, f.lib.n());
        first.push_back(place_derivatives(f, n_d));
        list_additions(f, slot, first.back(), changes.back(), all);
    });
    ac.d.assign(at(n_d), 0.0);
    auto of_family = first.begin();
    for_ac_families(ac, [&](auto& f) { bind_derivatives(f, *of_family++, ac.d.data()); });
    ac.entries = make_sums<complex_value>(all, s.m.nnz(), n_d);

    const unit_core& unit = ac.ebe.units.unit;
    std::vector<char> f_changes(at(unit.n_ttlf()), 0);
    for (int u = 0; u < unit.n; ++u)
        std::fill(f_changes.begin() + unit.first_func[at(u)], f_changes.begin() + unit.first_func[at(u) + 1],
                  changes[0][at(u)]);
    all.clear();
    for (std::size_t k = 0; k < s.ebe.to_row.size(); ++k)
        all.push_back({s.ebe.to_row[k], s.ebe.from_f[k], f_changes[at(s.ebe.from_f[k])] != 0});
    ac.rows = make_sums<complex_value>(all, s.n_svec, unit.n_ttlf());
    ac.f.assign(at(s.n_svec), 0.0);
}

// Units whose currents are in some file.
std::vector<int> find_shown(const run_state& r) {
    const ebau_class& units = r.c.ebau;
    std::vector<char> shown(at(units.n()), 0);
    const auto unit_of_terminal = [&first = units.nd.first](int k) {
        return static_cast<std::size_t>(std::upper_bound(first.begin(), first.end(), k) - first.begin()) - 1;
    };
    for (const out_file& file : r.slv.out.files)
        for (const out_var& v : file.vars) {
            if (v.kind == ov_pwr_elec_ac)
                for (int u = r.c.eelu.first_unit_ac[at(v.instance)]; u < r.c.eelu.first_unit_ac[at(v.instance) + 1];
                     ++u)
                    shown[at(u)] = 1;
            if (v.kind == ov_cur_ac) shown[unit_of_terminal(v.index)] = 1;
        }
    std::vector<int> list;
    for (int u = 0; u < units.n(); ++u)
        if (shown[at(u)]) list.push_back(u);
    return list;
}

// ---- the bias ----

// The units of which others take the bias, each with a store for its derivatives.
template <class Jac>
std::vector<int> make_bias(const std::vector<int>& index, const unit_core& unit, const basic_library& lib,
                           std::vector<Jac>& bias) {
    std::vector<int> with_bias;
    for (int u = 0; u < static_cast<int>(index.size()); ++u)
        if (index[at(u)] >= 0) with_bias.push_back(u);
    bias.clear();
    bias.resize(with_bias.size());
    for (std::size_t k = 0; k < bias.size(); ++k) bias[k].initialise(lib, unit.i_lib[at(index[at(with_bias[k])])]);
    return with_bias;
}

template <class Rows, class Jac>
void take_derivatives(run_state& r, const unit_family<Rows>& f, const std::vector<int>& with_bias,
                      const std::vector<int>& index, std::vector<Jac>& bias) {
    for (std::size_t k = 0; k < bias.size(); ++k) {
        const int u = index[at(with_bias[k])];
        get_unit(r, f, u);
        bias[k].store = f.jac[at(f.entry(u))].store;
    }
}

// ---- calls ----

template <class Call>
void call_ac_runs(run_state& r, std::vector<unit_run<Call>>& runs, double freq) {
    for (auto& run : runs) {
        if (!run.first.function) continue;
        run.first.freq = freq;
        if constexpr (requires { run.first.jac->bias; }) run.first.jac->bias = r.ac.bias_of_gbe[at(run.unit)];
        if (run.function) {
            run.function(run, true, &r.flags, &r.dp, &r.math_cnst);
            continue;
        }
        Call::arguments::call(run.first.function, run.unit, run.first, &r.flags, &r.dp, &r.math_cnst);
        run.jac.fetch(run.jac.out);
    }
}

void assign_own_rows(const slot_table& slot, const std::vector<complex_value>& f, std::vector<complex_value>& row) {
    for (std::size_t k = 0; k < slot.to_own.size(); ++k) row[at(slot.to_own[k])] = f[at(slot.from_own[k])];
}

void set_frequency(run_state& r, double freq) {
    const raised on(r.flags.ac, r.flags.function, r.flags.jacobian);
    for_ac_families(r.ac, [&](auto& f) { call_ac_runs(r, f.runs.changing, freq); });
}

// ---- the solution ----

void write_system(const ac_system& s) {
    knuth<complex_value> m = s.m;
    m.val = s.val_m;
    mat_write_knuthij1(m, "mat_ac.dat");
    vector_write(s.n_svec, s.rhs_m.data(), "rhs_ac.dat");
}

double size_of(const complex_value& z) { return std::fabs(z.real()) + std::fabs(z.imag()); }

// The largest part of its terms by which a row of the solution is off, if above what is allowed, else 0; infinite where
// a value is or is no number.
double relative_residual(const ac_system& s) {
    double worst = 0.0;
    const complex_value *val = s.val_m.data(), *x = s.e.sol_w.data();
    const int *slot = s.slot_of_row.data(), *col = s.column_of_row.data();
    for (int i = 0; i < s.n_svec; ++i) {
        const int first = s.row_first[at(i)], end = s.row_first[at(i) + 1];
        complex_value off = -s.rhs_m[at(i)];
        double terms = size_of(off);
        for (int k = first; k < end; ++k) {
            const complex_value term = product(val[slot[k]], x[col[k]]);
            if (k == first) terms += size_of(term);
            off += term;
        }
        const double part = size_of(off);
        if (part <= allowed_residual * terms) continue;  // of two terms already
        for (int k = first + 1; k < end; ++k) terms += size_of(product(val[slot[k]], x[col[k]]));
        if (!(part <= allowed_residual * terms)) worst = std::max(worst, std::isfinite(part) ? part / terms : INFINITY);
    }
    return worst;
}

// What the rows are off by goes through the same factors once more (iterative refinement: Wilkinson, Rounding Errors in
// Algebraic Processes, 1963). Of pivots like 1e6 S beside a junction's nS it gives back the digits that they took.
void refine(ac_system& s) {
    const complex_value *val = s.val_m.data(), *x = s.e.sol_w.data();
    for (int i = 0; i < s.n_svec; ++i) {
        complex_value off = s.rhs_m[at(i)];
        for (int k = s.row_first[at(i)]; k < s.row_first[at(i) + 1]; ++k)
            off -= product(val[s.slot_of_row[at(k)]], x[s.column_of_row[at(k)]]);
        s.rest[at(i)] = off;
    }
    if (solve_columns(s.e, 1, s.rest.data(), s.step.data()) != 0) return;
    std::transform(s.step.begin(), s.step.end(), s.e.sol_w.begin(), s.e.sol_w.begin(), std::plus<>());
}

// The order of pivots is that of the first frequency. Where it does not serve the present values, another one is taken
// and kept.
void solve_system(run_state& r) {
    ac_system& s = r.ac.s;
    const complex_value *val = s.val_m.data(), *rhs = s.rhs_m.data();
    if (r.slv.now.i_freq == 0 && r.slv.now.i_sweep == 0) solve_jac(s.e, s.m, val, rhs, 0, 1, 2, 0, 0);
    solve_jac(s.e, s.m, val, rhs, 1, 0, 0, 1, 3);
    ++r.flags.n_solve_lin;
    if (relative_residual(s) <= allowed_residual) return;
    solve_jac(s.e, s.m, val, rhs, 1, 1, 2, 1, 3);
    for (int round = 0; round < 3 && relative_residual(s) > allowed_residual; ++round) refine(s);
    if (const double off = relative_residual(s); !(off <= allowed_residual))
        halt({line("solve_ac: the solution leaves a residual of ", off, " of its terms"),
              line("   at the frequency ", r.slv.now.freq / r.math_cnst.twopi, " Hz. Halting...")});
}

// Between svec and the tables. The reference node stays 0.
void dcmp_solvec_ac(run_state& r) {
    const ac_system& s = r.ac.s;
    ebau_class& e = r.c.ebau;
    const complex_value* x = s.svec.data();
    if (e.n_nd > 0) {
        std::copy_n(x, e.ref_nd, e.val_nd.begin());
        std::copy_n(x + e.ref_nd, e.n_nd - 1 - e.ref_nd, e.val_nd.begin() + e.ref_nd + 1);
    }
    std::copy_n(x + s.offs.eaux, e.aux.size(), e.aux.begin());
    for_ac_blocks(r.ac, [&]<class Rows>(const unit_family<Rows>& f) {
        std::copy_n(x + s.offs.*Rows::unknowns.var, f.units.val_vr.size(), f.units.val_vr.begin());
        std::copy_n(x + s.offs.*Rows::unknowns.aux, f.units.aux.size(), f.units.aux.begin());
    });
}

// Units are asked for their functions at zero amplitudes. Unknowns of their own they read where these stand.
void clear_aux(run_state& r) {
    for_ac_families(r.ac, [](auto& f) { std::fill(f.units.aux.begin(), f.units.aux.end(), complex_value{}); });
}
}  // namespace

void set_mat_1_ac(run_state& r) {
    ac_class& ac = r.ac;
    const circuit& c = r.c;
    ac.ebe_with_bias = make_bias(c.ebau.index_ebeu, c.ebeu.unit, c.lib.ebes, ac.bias_ebe);
    ac.gbe_with_bias = make_bias(c.gbau.index_gbeu, c.gbeu.unit, c.lib.gbes, ac.bias_gbe);
    bind_ac_models(r);
    for (std::size_t k = 0; k < ac.bias_ebe.size(); ++k) ac.ebe.call[at(ac.ebe_with_bias[k])].ebe_jac = &ac.bias_ebe[k];
    ac.bias_of_gbe.assign(at(c.gbau.n()), nullptr);
    for (std::size_t k = 0; k < ac.bias_gbe.size(); ++k) ac.bias_of_gbe[at(ac.gbe_with_bias[k])] = &ac.bias_gbe[k];
    set_mat_ac(ac, c);
    plan_assembly(ac);
    ac.ebe.runs.shown = find_shown(r);
    int most = 0;
    for (int u = 0; u < ac.ebe.n(); ++u) most = std::max(most, ac.ebe.lib.func.n_func(ac.ebe.entry(u)));
    ac.f_of_point.assign(at(most), 0.0);
}

void calc_acparms(run_state& r) {
    r.flags.init_flags();
    r.flags.time_given = r.slv.method.t_dc;
    form_arrays(r);
    const raised on(r.flags.dc, r.flags.ac, r.flags.function, r.flags.jacobian);
    for_families(r, [&](auto& f) {
        for (int u = 0; u < f.n(); ++u)
            if (f.has(&entry_flags::calc_acp, u)) get_unit(r, f, u);
    });
}

void take_bias(run_state& r) {
    ac_class& ac = r.ac;
    form_arrays(r);
    {
        const raised on(r.flags.dc, r.flags.ac, r.flags.function, r.flags.jacobian);
        take_derivatives(r, r.ebe, ac.ebe_with_bias, r.c.ebau.index_ebeu, ac.bias_ebe);
        take_derivatives(r, r.gbe, ac.gbe_with_bias, r.c.gbau.index_gbeu, ac.bias_gbe);
    }
    clear_aux(r);
    const double freq = r.slv.task.freq_array.empty() ? 0.0 : r.slv.task.freq_array[0];
    {
        const raised on(r.flags.ac, r.flags.function, r.flags.jacobian);
        for_ac_families(ac, [&](auto& f) { call_ac_runs(r, f.runs.held, freq); });
    }
    set_frequency(r, freq);
    ac.entries.sum_all(ac.d.data(), ac.s.val_m.data());
    ac.rows.sum_all(r.c.ebau.f.data(), ac.f.data());
}

void solve_ac(run_state& r) {
    ac_class& ac = r.ac;
    ac_system& s = ac.s;
    r.flags.n_limit = 0;
    clear_aux(r);
    set_frequency(r, r.slv.now.freq);
    ac.entries.sum_changing(ac.d.data(), s.val_m.data());
    ac.rows.sum_changing(r.c.ebau.f.data(), ac.f.data());
    for_ac_families(ac, [&](auto& f) { assign_own_rows(s.*f.slots, f.units.f, ac.f); });
    std::transform(ac.f.begin(), ac.f.end(), s.rhs_m.begin(), std::negate<>());
    if (r.slv.method.wrt_debug_smat) {
        write_system(s);
        halt({"stopped as wrt_debug_smat asks, behind writing rhs_ac.dat"});
    }
    solve_system(r);
    // From zero, so that no amplitude is -0: its phase would be that of the other side.
    std::transform(s.e.sol_w.begin(), s.e.sol_w.end(), s.svec.begin(),
                   [](const complex_value& x) { return complex_value{} + x; });
    dcmp_solvec_ac(r);
    if (!ac.ebe.runs.shown.empty()) find_ebe_cur_ac(r, ac.ebe.runs.shown);
}

void find_ebe_cur_ac(run_state& r, const std::vector<int>& units) {
    const ac_class& ac = r.ac;
    ebau_class& e = r.c.ebau;
    const function_table& t = ac.ebe.lib.func;
    gather(r, ac.ebe);
    for (std::size_t k = 0; k < e.curind.size(); ++k) e.curind[k] = e.aux[at(e.first_aux[at(e.ib.data[k])])];
    const raised on(r.flags.ac, r.flags.function);
    for (const int u : units) {
        ebe_ac_call call = ac.ebe.call[at(u)];
        if (!call.function) continue;
        call.freq = r.slv.now.freq;
        call.f = r.ac.f_of_point.data();  // those at zero amplitudes stand
        ebe_ac_call::arguments::call(call.function, u, call, &r.flags, &r.dp, &r.math_cnst);
        const int s = ac.ebe.entry(u);
        for (int j = 0; j < t.n_func(s); ++j)
            if (t.flag_kcl[at(t.first_f[at(s)] + j)]) e.cur_nd[at(e.nd.first[at(u)] + j)] = call.f[j];
    }
    for (auto* v : {&e.nodev, &e.vin, &e.curind, &e.val_vr}) std::fill(v->begin(), v->end(), complex_value{});
}
