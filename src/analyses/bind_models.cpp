#include <algorithm>

#include "analyses/run_state.h"
#include "base/at.h"
#include "base/halt.h"
#include "library/entry_counts.h"
#include "models/registration.h"

namespace {
// Looks once at every template in use: one without a model is told, one that is smaller than its model halts.
template <class Rows>
void check_templates(const unit_family<Rows>& f) {
    std::vector<char> seen(at(f.lib.n()), 0);
    for (int s : f.units.unit.i_lib) {
        if (seen[at(s)]) continue;
        seen[at(s)] = 1;
        const auto* model = find_registration<typename Rows::call>(f.lib.list.entry[s]);
        if (model)
            check_entry_counts(Rows::form, f.lib, s, model->counts);
        else if (f.lib.func.n_func(s) > 0)
            say(line("warning: no model function is registered for the element type ", f.lib.list.entry[s]));
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
    check_templates(f);
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
}

void bind_ac_models(run_state& r) {
    bind_family(r.ac.ebe);
    bind_family(r.ac.gbe);
}
