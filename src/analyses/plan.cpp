#include "analyses/plan.h"

#include <algorithm>
#include <type_traits>

namespace {
// Units by the part of a transient that calls them.
enum call_part { held, accepted, left_out, curved, changing, n_parts };

template <class Rows>
call_part part_of(const unit_family<Rows>& f, int u, bool wanted) {
    // A digital level may change while the variables stand.
    const bool stands = f.has(&entry_flags::timeless, u) && f.lib.list.dgtl.count(f.entry(u)) == 0 &&
                        f.lib.list.xvr.count(f.entry(u)) == 0;
    if (!f.has(&entry_flags::pure, u)) return stands && std::is_same_v<Rows, electrical_family> ? curved : changing;
    if (!wanted) return left_out;
    return stands ? held : accepted;
}

template <class Rows>
bool owns_derivative(const unit_family<Rows>& f, int u) {
    const function_table& t = f.lib.func;
    const auto first = t.flag_ddt.begin() + t.first_f[at(f.entry(u))];
    return std::any_of(first, first + t.n_func(f.entry(u)), [](int on) { return on != 0; });
}

// wanted: the units that accepted points call for their functions.
template <class Rows>
void plan_runs(unit_family<Rows>& f, const std::vector<char>& wanted) {
    std::vector<int> units[n_parts], with_ddt;
    for (int u = 0; u < f.n(); ++u) {
        const call_part part = part_of(f, u, wanted[at(u)]);
        units[part].push_back(u);
        if (part != held && part != curved && owns_derivative(f, u)) with_ddt.push_back(u);
    }
    // Units of one template share a run, where the order of calls is of no matter.
    for (const call_part part : {held, accepted, left_out, curved})
        std::stable_sort(units[part].begin(), units[part].end(), [&](int a, int b) { return f.entry(a) < f.entry(b); });
    const auto never = [](int) { return false; };
    f.runs.held = make_runs(f, units[held], never);
    f.runs.accepted = make_runs(f, units[accepted], never);
    f.runs.left_out = make_runs(f, units[left_out], never);
    f.runs.curved = make_runs(f, units[curved], never);
    f.runs.changing = make_runs(f, units[changing], never);
    f.runs.with_ddt = make_runs(f, with_ddt, never);
}

// ---- what is fetched ----

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

void plan_electrical(run_state& r, const shown_units& shown) {
    std::vector<char> wanted(at(r.ebe.n()), 0);
    for (int u = 0; u < r.ebe.n(); ++u) {
        const bool ddt = owns_derivative(r.ebe, u);
        wanted[at(u)] = r.mat.kind == analysis::ssw || (r.mat.kind == analysis::trns && (ddt || shown.current[at(u)]));
        const call_part part = part_of(r.ebe, u, wanted[at(u)]);
        add_moves(part == held ? r.plan.of_held : part == left_out ? r.plan.of_left_out : r.plan.of_others, r, u);
        if (ddt && part != held) add_moves(r.plan.of_with_ddt, r, u);
    }
    plan_runs(r.ebe, wanted);
}

// ---- derivatives ----

// The additions of a family in their order. Scaled derivatives get places of their own behind the n_d fetched ones.
template <class Rows>
void list_additions(const unit_family<Rows>& f, const slot_table& slot, const std::vector<int>& first_d, int n_d,
                    assembly_plan& plan, std::vector<addition>& all) {
    for (int u = 0; u < f.n(); ++u) {
        const bool changes = !f.has(&entry_flags::pure, u);
        for (int k = slot.first_jac[at(u)]; k < slot.first_jac[at(u) + 1]; ++k) {
            int place = place_of_derivative(f, first_d, u, slot.from_jac[at(k)]);
            if (slot.scale[at(k)] != as_it_is) {
                const bool by_sign = slot.scale[at(k)] == negated;
                const int made = n_d + static_cast<int>(plan.scaled.to.size() + plan.negated.to.size());
                add_move(by_sign ? plan.negated : plan.scaled, place, made);
                if (changes) add_move(by_sign ? plan.negated_changing : plan.scaled_changing, place, made);
                place = made;
            }
            all.push_back({slot.to_val[at(k)], place, changes});
        }
    }
}

void plan_matrix(run_state& r) {
    assembly_plan& plan = r.plan;
    const mat_class& mat = r.mat;
    std::vector<std::vector<int>> first_d;  // [families][units]
    int n_d = 0;
    for_families(r, [&](auto& f) {
        f.runs.from = used_places(mat.*f.slots, f.units.unit, f.lib.n());
        first_d.push_back(place_derivatives(f, n_d));
    });
    std::vector<addition> all;
    std::size_t i_family = 0;
    for_families(r, [&](auto& f) { list_additions(f, mat.*f.slots, first_d[i_family++], n_d, plan, all); });
    const int n_all = n_d + static_cast<int>(plan.scaled.to.size() + plan.negated.to.size()) + 2;
    const periodic_rows& p = mat.periodic;
    for (const std::vector<int>* slots : {&p.current_slot, &p.x_slot})
        for (const int slot : *slots) all.push_back({slot, n_all - 2, false});
    // Last of all, in the rows of states, minus the constant of the method.
    for (int i = 0; i < mat.state.n(); ++i)
        if (mat.state.slot[at(i)] >= 0) all.push_back({mat.state.slot[at(i)], n_all - 1, false});
    plan.d.assign(at(n_all), 0.0);
    plan.d[at(n_all - 2)] = 1.0;
    i_family = 0;
    for_families(r, [&](auto& f) { bind_derivatives(f, first_d[i_family++], plan.d.data()); });
    plan.entries = make_sums<double>(all, static_cast<int>(mat.val_m.size()), n_all);
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
    r.formed.forget();
    for_families(r, [](auto& f) { f.runs = {}; });
    const shown_units shown = find_shown(r);
    plan_electrical(r, shown);
    plan_runs(r.gbe, std::vector<char>(at(r.gbe.n()), 1));
    plan_matrix(r);
    plan_rows(r);
    for (int u = 0; u < r.ebe.n(); ++u) {
        if (shown.slots_e[at(u)]) r.ebe.runs.shown.push_back(u);
        if (shown.current[at(u)]) r.plan.shows_currents = true;
    }
    for (int u = 0; u < r.gbe.n(); ++u)
        if (shown.slots_g[at(u)]) r.gbe.runs.shown.push_back(u);
    r.plan.layout = r.mat.layout;
}
