#include <algorithm>

#include "analyses/composite_parms.h"
#include "analyses/run_state.h"
#include "base/at.h"
#include "base/halt.h"
#include "library/entry_counts.h"
#include "models/registration.h"

namespace {
// Looks once at every template in use: one without a model is told, one that is smaller than its model halts.
template <class Rows>
void check_templates(const basic_library& lib, const unit_core& unit) {
    std::vector<char> seen(at(lib.n()), 0);
    for (int s : unit.i_lib) {
        if (seen[at(s)]) continue;
        seen[at(s)] = 1;
        const auto* model = find_registration<typename Rows::call>(lib.list.entry[s]);
        if (model)
            check_entry_counts(Rows::form, lib, s, model->counts);
        else if (lib.func.n_func(s) > 0 || Rows::form.functions.empty())
            say(line("warning: no model function is registered for the element type ", lib.list.entry[s]));
    }
}

template <class Units, class T>
const auto& member(const Units& units, T Units::*m) {
    return units.*m;
}
template <class Units, class T>
const auto& member(const Units& units, T unit_core::*m) {
    return units.unit.*m;
}

template <class Call, class Units, class... S>
void bind(Call& call, Units& units, int u, const slice<S...>& s) {
    call.*s.argument = (units.*s.values).data() + begins_of(member(units, s.first))[at(u)];
}
template <class Call, class Units, class... S>
void bind(Call& call, Units& units, int u, const parameter_slice<S...>& s) {
    call.*s.argument = (units.unit.*s.row).row(u);
}

template <class Rows>
void bind_family(unit_family<Rows>& f) {
    using call_type = typename Rows::call;
    check_templates<Rows>(f.lib, f.units.unit);
    f.jac.clear();
    f.jac.resize(at(std::max(f.lib.n(), 1)));
    std::vector<model_function<call_type>> model;  // by name: an edited or re-ordered list never calls a wrong one
    for (int s = 0; s < f.lib.n(); ++s) {
        f.jac[at(s)].initialise(f.lib, s);
        model.push_back(find_model<call_type>(f.lib.list.entry[s]));
    }
    f.call.assign(at(f.n()), call_type{});
    for (int u = 0; u < f.n(); ++u) {
        call_type& call = f.call[at(u)];
        const auto bind_all = [&](const auto&... s) { (bind(call, f.units, u, s), ...); };
        std::apply(bind_all, Rows::parameters);
        std::apply(bind_all, Rows::slices);
        call.jac = &f.jac[at(f.entry(u))];
        call.function = model[at(f.entry(u))];
    }
}

void bind_digital(run_state& r) {
    using rows = digital_family;
    digital_class& d = r.digital;
    dbeu_class& units = r.c.dbeu;
    check_templates<rows>(r.c.lib.dbes, units.unit);
    std::vector<model_function<dbe_call>> model;
    for (int s = 0; s < r.c.lib.dbes.n(); ++s) model.push_back(find_model<dbe_call>(r.c.lib.dbes.list.entry[s]));
    const int n_in = units.n() == 0 ? 0 : *std::max_element(units.n_input.begin(), units.n_input.end());
    for (std::vector<int>* inputs : {&d.stbl_in, &d.val_in, &d.val_in_old}) inputs->assign(at(n_in), 0);
    d.call.assign(at(units.n()), {});
    d.with_analog.clear();
    for (int u = 0; u < units.n(); ++u) {
        dbe_call& call = d.call[at(u)];
        const auto bind_all = [&](const auto&... s) { (bind(call, units, u, s), ...); };
        std::apply(bind_all, rows::parameters);
        std::apply(bind_all, rows::slices);
        call.stbl_out += units.n_input[at(u)];
        call.val_out += units.n_input[at(u)];
        call.stbl_in = d.stbl_in.data();
        call.val_in = d.val_in.data();
        call.val_in_old = d.val_in_old.data();
        call.dstate.at = &units.dstate[at(u)];
        call.stbl.at = &units.stbl[at(u)];
        call.t_next.at = &units.t_next[at(u)];
        call.function = model[at(units.unit.i_lib[at(u)])];
        if (units.anlg.size(u) > 0) d.with_analog.push_back(u);
    }
    d.node.assign(at(units.n_nd), {});
    for (int n : r.c.ebeu.dgtl_dbeu) d.node[at(n)].feeds_analog = 1;
    d.moved.reserve(at(units.n_nd));
    d.changed.reserve(at(units.n_nd));
}

// Behind the functions of electrical units there is room for the totals of those with a derivative.
void make_room_for_totals(run_state& r) {
    int n_ddt = 0;
    const function_table& t = r.ebe.lib.func;
    for (int s : r.ebe.units.unit.i_lib)
        for (int k = t.first_f[at(s)]; k < t.first_f[at(s) + 1]; ++k) n_ddt += t.flag_ddt[at(k)] != 0;
    r.ebe.units.f.resize(at(r.ebe.units.unit.n_ttlf() + n_ddt));
}
}  // namespace

void bind_models(run_state& r) {
    make_room_for_totals(r);
    for_families(r, [](auto& f) { bind_family(f); });
    bind_family(r.xbe);
    for (int u = 0; u < r.xbe.n(); ++u) {
        r.xbe.call[at(u)].index = r.c.xbeu.vr.row(u);
        r.xbe.call[at(u)].all = r.c.xbeu.val_vr.data();
    }
    bind_digital(r);
    bind_composites(r);
}

void bind_ac_models(run_state& r) {
    for_ac_families(r.ac, [](auto& f) { bind_family(f); });
}
