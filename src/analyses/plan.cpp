#include "analyses/plan.h"

#include <algorithm>

namespace {
std::size_t at(int i) { return static_cast<std::size_t>(i); }

// ---- runs

ebe_steps steps(const ebe_run& run, int u, const ebe_call& b) {
    const ebe_call& a = run.first;
    return {u - run.unit,
            b.iparm - a.iparm,
            b.sparm - a.sparm,
            b.rparm - a.rparm,
            b.stparm - a.stparm,
            b.igparm - a.igparm,
            b.v - a.v,
            b.vind - a.vind,
            b.curind - a.curind,
            b.aux - a.aux,
            b.vr - a.vr,
            b.xvr - a.xvr,
            b.auxs - a.auxs,
            b.locv - a.locv,
            b.v_new - a.v_new,
            b.aux_new - a.aux_new,
            b.auxs_new - a.auxs_new,
            b.dvar - a.dvar,
            b.f - a.f};
}
gbe_steps steps(const gbe_run& run, int u, const gbe_call& b) {
    const gbe_call& a = run.first;
    return {u - run.unit,        b.iparm - a.iparm,   b.sparm - a.sparm,     b.rparm - a.rparm,
            b.stparm - a.stparm, b.igparm - a.igparm, b.vr - a.vr,           b.xvr - a.xvr,
            b.aux - a.aux,       b.vr_new - a.vr_new, b.aux_new - a.aux_new, b.f - a.f};
}

// Units of one family as runs, in the given order.
template <class Run, class Call>
class run_maker {
public:
    run_maker(const std::vector<Call>& calls, const unit_core& unit) : calls_(calls), unit_(unit) {}

    // Without the template's own function of runs, as for a model that was put in its place, units are called singly.
    template <class Find>
    std::vector<Run> make(const std::vector<int>& units, const basic_library& lib, Find find) {
        std::vector<Run> runs;
        int template_before = -1;
        for (const int u : units) {
            const Call& call = calls_[at(u)];
            const int s = unit_.i_lib[at(u)];
            if (runs.empty() || s != template_before || !joins(runs.back(), u, call)) {
                Run run;
                const auto* row = call.function ? find(lib.list.entry[s]) : nullptr;
                if (row && row->function == call.function) run.function = row->run;
                run.unit = u;
                run.n = 1;
                run.first = call;
                runs.push_back(run);
            }
            template_before = s;
        }
        return runs;
    }

private:
    bool joins(Run& run, int u, const Call& call) const {
        if (!run.function || call.function != run.first.function) return false;
        const int last = run.unit + static_cast<int>(run.step.unit) * (run.n - 1);
        Run from_last = run;
        from_last.unit = last;
        from_last.first = calls_[at(last)];
        const auto step = steps(from_last, u, call);
        if (run.n > 1 && step != run.step) return false;
        run.step = step;
        ++run.n;
        return true;
    }

    const std::vector<Call>& calls_;
    const unit_core& unit_;
};

template <class Run>
int unit_of(const Run& run, int i) {
    return run.unit + static_cast<int>(run.step.unit) * i;
}

// By template, as units of one template share a run; for calls whose order is of no matter.
void by_template(std::vector<int>& units, const unit_core& unit) {
    std::stable_sort(units.begin(), units.end(), [&](int a, int b) { return unit.i_lib[at(a)] < unit.i_lib[at(b)]; });
}

// ---- what is fetched

void add_move(value_moves& m, int from, int to) {
    m.from.push_back(from);
    m.to.push_back(to);
}

void add_moves(function_moves& m, const run_state& r, int u) {
    const ebeu_class& e = r.c.ebeu;
    const mat_class& mat = r.mat;
    const function_table& t = r.c.lib.ebes.func;
    for (int k = mat.first_locv[at(u)]; k < mat.first_locv[at(u) + 1]; ++k)
        add_move(m.locv, mat.locv.from[at(k)], mat.locv.to[at(k)]);
    const int s = e.unit.i_lib[at(u)];
    for (int j = 0; j < std::min(e.nd.size(u), t.n_func(s)); ++j)
        if (t.flag_kcl[at(t.first_f[at(s)] + j)])
            add_move(m.current, e.unit.first_func[at(u)] + j, e.nd.first[at(u)] + j);
    for (int d = mat.kcl_ddt.first[at(u)]; d < mat.kcl_ddt.first[at(u) + 1]; ++d) m.ddt.push_back(d);
}

// The unit whose row holds a flat index.
int unit_of_index(const std::vector<int>& first, int index) {
    return static_cast<int>(std::upper_bound(first.begin(), first.end(), index) - first.begin()) - 1;
}

// What the files of a block show of units.
struct shown_units {
    std::vector<char> current, slots_e, slots_g;
};
shown_units find_shown(const run_state& r) {
    const ebeu_class& e = r.c.ebeu;
    const gbeu_class& g = r.c.gbeu;
    shown_units s{std::vector<char>(at(e.n())), std::vector<char>(at(e.n())), std::vector<char>(at(g.n()))};
    for (const out_file& file : r.slv.out.files)
        for (const out_var& v : file.vars) {
            if (v.prefix != prefix_none) continue;
            if (v.kind == ov_cur)
                s.current[at(unit_of_index(e.nd.first, v.index))] = 1;
            else if (v.kind == ov_pwr_elec)
                for (int u = r.c.eelu.first_unit[at(v.instance)]; u < r.c.eelu.first_unit[at(v.instance) + 1]; ++u)
                    s.current[at(u)] = 1;
            else if (v.kind == ov_iparm_ebe || v.kind == ov_rparm_ebe)
                s.slots_e[at(unit_of_index(v.kind == ov_iparm_ebe ? e.unit.iprm.first : e.unit.rprm.first, v.index))] =
                    1;
            else if (v.kind == ov_iparm_gbe || v.kind == ov_rparm_gbe)
                s.slots_g[at(unit_of_index(v.kind == ov_iparm_gbe ? g.unit.iprm.first : g.unit.rprm.first, v.index))] =
                    1;
        }
    return s;
}

// ---- electrical units and blocks into runs

void plan_electrical(run_state& r, const shown_units& shown) {
    const ebeu_class& e = r.c.ebeu;
    const basic_library& lib = r.c.lib.ebes;
    electrical_runs& p = r.plan.e;
    std::vector<int> held, accepted, left_out, changing, with_ddt;
    for (int u = 0; u < e.n(); ++u) {
        const int s = e.unit.i_lib[at(u)];
        bool ddt = false;
        for (int k = lib.func.first_f[at(s)]; k < lib.func.first_f[at(s) + 1]; ++k)
            ddt = ddt || lib.func.flag_ddt[at(k)];
        const bool wanted = r.mat.kind == analysis::trns && (ddt || shown.current[at(u)]);
        const bool is_held = lib.flag.pure[at(s)] && lib.flag.timeless[at(s)] && wanted;
        (!lib.flag.pure[at(s)] ? changing : is_held ? held : wanted ? accepted : left_out).push_back(u);
        add_moves(is_held ? p.of_held : wanted || !lib.flag.pure[at(s)] ? p.of_others : p.of_left_out, r, u);
        if (ddt && !is_held) {
            with_ddt.push_back(u);
            add_moves(p.of_with_ddt, r, u);
        }
    }
    run_maker<ebe_run, ebe_call> maker(r.ebe, e.unit);
    const auto make = [&](std::vector<int>& units, bool any_order) {
        if (any_order) by_template(units, e.unit);
        return maker.make(units, lib, find_ebe_registration);
    };
    p.held = make(held, true);
    p.accepted = make(accepted, true);
    p.left_out = make(left_out, true);
    p.changing = make(changing, false);
    p.with_ddt = make(with_ddt, false);
}

void plan_blocks(run_state& r) {
    const gbeu_class& g = r.c.gbeu;
    const basic_library& lib = r.c.lib.gbes;
    std::vector<int> pure, changing;
    for (int u = 0; u < g.n(); ++u) (lib.flag.pure[at(g.unit.i_lib[at(u)])] ? pure : changing).push_back(u);
    by_template(pure, g.unit);
    run_maker<gbe_run, gbe_call> maker(r.gbe, g.unit);
    r.plan.g.pure = maker.make(pure, lib, find_gbe_registration);
    r.plan.g.changing = maker.make(changing, lib, find_gbe_registration);
}

// ---- derivatives

// For each template the places of its jac store that some unit adds, ascending.
std::vector<std::vector<int>> used_places(const slot_table& slot, const unit_core& unit, int n_template) {
    std::vector<std::vector<int>> from(at(std::max(n_template, 1)));
    for (int u = 0; u < unit.n; ++u)
        for (int k = slot.first_jac[at(u)]; k < slot.first_jac[at(u) + 1]; ++k)
            from[at(unit.i_lib[at(u)])].push_back(slot.from_jac[at(k)]);
    for (std::vector<int>& f : from) {
        std::sort(f.begin(), f.end());
        f.erase(std::unique(f.begin(), f.end()), f.end());
    }
    return from;
}

// Gives the units of runs their places in d: first_d [units].
template <class Run>
void place_derivatives(const std::vector<Run>& runs, const std::vector<std::vector<int>>& from, const unit_core& unit,
                       std::vector<int>& first_d, int& n_d) {
    for (const Run& run : runs)
        for (int i = 0; i < run.n; ++i) {
            const int u = unit_of(run, i);
            first_d[at(u)] = n_d;
            n_d += static_cast<int>(from[at(unit.i_lib[at(u)])].size());
        }
}
template <class Run, class Jac>
void bind_derivatives(std::vector<Run>& runs, const std::vector<std::vector<int>>& from, const unit_core& unit,
                      const std::vector<Jac>& jac, const std::vector<int>& first_d, double* d) {
    for (Run& run : runs) {
        const int s = unit.i_lib[at(run.unit)];
        run.jac = {jac[at(s)].store.data(), from[at(s)].data(), static_cast<int>(from[at(s)].size()),
                   d + first_d[at(run.unit)]};
    }
}

// One addition to an entry of the matrix.
struct addition {
    int entry, place;
    bool changes;
};

// The additions of a family in their order. Scaled derivatives get places of their own behind the n_d fetched ones.
void list_additions(const slot_table& slot, const unit_core& unit, const std::vector<std::vector<int>>& from,
                    const std::vector<int>& pure, const std::vector<int>& first_d, int n_d, assembly_plan& plan,
                    std::vector<addition>& all) {
    for (int u = 0; u < unit.n; ++u) {
        const int s = unit.i_lib[at(u)];
        const std::vector<int>& f = from[at(s)];
        const bool changes = !pure[at(s)];
        for (int k = slot.first_jac[at(u)]; k < slot.first_jac[at(u) + 1]; ++k) {
            const auto found = std::lower_bound(f.begin(), f.end(), slot.from_jac[at(k)]);
            int place = first_d[at(u)] + static_cast<int>(found - f.begin());
            if (slot.scale[at(k)]) {
                const int scaled = n_d + static_cast<int>(plan.scaled.to.size());
                add_move(plan.scaled, place, scaled);
                if (changes) add_move(plan.scaled_changing, place, scaled);
                place = scaled;
            }
            all.push_back({slot.to_val[at(k)], place, changes});
        }
    }
}

// Terms by row, each row in the order of the list.
sum_rows rows_of(int n_row, const std::vector<int>& row, const std::vector<int>& term) {
    sum_rows sums;
    sums.first.assign(at(n_row) + 1, 0);
    for (const int i : row) ++sums.first[at(i) + 1];
    for (int i = 0; i < n_row; ++i) sums.first[at(i) + 1] += sums.first[at(i)];
    sums.term.resize(term.size());
    std::vector<int> next(sums.first.begin(), sums.first.end() - 1);
    for (std::size_t k = 0; k < row.size(); ++k) sums.term[at(next[at(row[k])]++)] = term[k];
    return sums;
}

void plan_entries(assembly_plan& plan, const std::vector<addition>& all, int nnz) {
    std::vector<int> entry, place;
    std::vector<char> changes(plan.d.size(), 0);
    for (const addition& a : all) {
        entry.push_back(a.entry);
        place.push_back(a.place);
        if (a.changes) changes[at(a.place)] = 1;
    }
    plan.entries = rows_of(nnz, entry, place);
    for (int i = 0; i < nnz; ++i) {
        const int first = plan.entries.first[at(i)], end = plan.entries.first[at(i) + 1];
        int k = first;
        while (k < end && !changes[at(plan.entries.term[at(k)])]) ++k;
        if (k == end) continue;
        plan.entry.push_back(i);
        plan.n_standing.push_back(k - first);
        plan.changing.term.insert(plan.changing.term.end(), plan.entries.term.begin() + k,
                                  plan.entries.term.begin() + end);
        plan.changing.first.push_back(static_cast<int>(plan.changing.term.size()));
    }
    plan.standing.assign(plan.entry.size(), 0.0);
}

void plan_matrix(run_state& r) {
    assembly_plan& plan = r.plan;
    const mat_class& mat = r.mat;
    const unit_core &e = r.c.ebeu.unit, &g = r.c.gbeu.unit;
    plan.from_ebe = used_places(mat.ebe, e, r.c.lib.ebes.n());
    plan.from_gbe = used_places(mat.gbe, g, r.c.lib.gbes.n());
    std::vector<int> first_e(at(e.n), 0), first_g(at(g.n), 0);
    int n_d = 0;
    std::vector<ebe_run>* const e_runs[] = {&plan.e.held, &plan.e.accepted, &plan.e.left_out, &plan.e.changing};
    std::vector<gbe_run>* const g_runs[] = {&plan.g.pure, &plan.g.changing};
    for (const auto* runs : e_runs) place_derivatives(*runs, plan.from_ebe, e, first_e, n_d);
    for (const auto* runs : g_runs) place_derivatives(*runs, plan.from_gbe, g, first_g, n_d);
    std::vector<addition> all;
    list_additions(mat.ebe, e, plan.from_ebe, r.c.lib.ebes.flag.pure, first_e, n_d, plan, all);
    list_additions(mat.gbe, g, plan.from_gbe, r.c.lib.gbes.flag.pure, first_g, n_d, plan, all);
    // Last of all, in the rows of states, minus the constant of the method.
    const int n_all = n_d + static_cast<int>(plan.scaled.to.size()) + 1;
    for (int i = 0; i < mat.state.n(); ++i)
        if (mat.state.slot[at(i)] >= 0) all.push_back({mat.state.slot[at(i)], n_all - 1, false});
    plan.d.assign(at(n_all), 0.0);
    for (auto* runs : e_runs) bind_derivatives(*runs, plan.from_ebe, e, r.ebes1, first_e, plan.d.data());
    for (auto* runs : g_runs) bind_derivatives(*runs, plan.from_gbe, g, r.gbes1, first_g, plan.d.data());
    plan_entries(plan, all, static_cast<int>(mat.val_m.size()));
}

void plan_rows(run_state& r) {
    const slot_table& slot = r.mat.ebe;
    const int n_f = r.c.ebeu.unit.n_ttlf();
    std::vector<int> index(at(r.mat.n_svec), -1), row, term;
    for (std::size_t k = 0; k < slot.to_row.size(); ++k) {
        int& i = index[at(slot.to_row[k])];
        if (i < 0) {
            i = static_cast<int>(r.plan.row.size());
            r.plan.row.push_back(slot.to_row[k]);
        }
        row.push_back(i);
        term.push_back(slot.ddt[k] >= 0 ? n_f + slot.ddt[k] : slot.from_f[k]);
    }
    r.plan.rows = rows_of(static_cast<int>(r.plan.row.size()), row, term);
}
}  // namespace

void make_plan(run_state& r) {
    r.plan = assembly_plan{};
    r.formed = formed_arguments{};
    const shown_units shown = find_shown(r);
    plan_electrical(r, shown);
    plan_blocks(r);
    plan_matrix(r);
    plan_rows(r);
    for (int u = 0; u < r.c.ebeu.n(); ++u) {
        if (shown.slots_e[at(u)]) r.plan.ov_ebe.push_back(u);
        if (shown.current[at(u)]) r.plan.shows_currents = true;
    }
    for (int u = 0; u < r.c.gbeu.n(); ++u)
        if (shown.slots_g[at(u)]) r.plan.ov_gbe.push_back(u);
    r.plan.layout = r.mat.layout;
}
