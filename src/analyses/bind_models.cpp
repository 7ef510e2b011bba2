#include "analyses/run_state.h"

#include <algorithm>

#include "base/halt.h"
#include "library/entry_counts.h"

namespace {
std::size_t at(int i) { return static_cast<std::size_t>(i); }

// Function of each template by name: an edited or re-ordered list never calls a wrong model.
template <class F, class Find>
std::vector<F> functions_of(const basic_library& lib, Find find) {
    std::vector<F> function(at(lib.n()), nullptr);
    for (int s = 0; s < lib.n(); ++s) function[at(s)] = find(lib.list.entry[s]);
    return function;
}

// Looks once at every template in use: one without a model is told, one that is smaller than its model halts.
template <class F, class Find>
void check_templates(const basic_form& form, const basic_library& lib, const std::vector<F>& function,
                     const unit_core& unit, Find find_registration) {
    std::vector<char> seen(at(lib.n()), 0);
    for (int s : unit.i_lib) {
        if (seen[at(s)]) continue;
        seen[at(s)] = 1;
        if (function[at(s)])
            check_entry_counts(form, lib, s, find_registration(lib.list.entry[s])->counts);
        else if (lib.func.n_func(s) > 0)
            say(line("warning: no model function is registered for the element type ", lib.list.entry[s]));
    }
}

template <class Jac>
void make_jac(const basic_library& lib, std::vector<Jac>& jac) {
    jac.clear();
    jac.resize(at(std::max(lib.n(), 1)));
    for (int s = 0; s < lib.n(); ++s) jac[at(s)].initialise(lib, s);
}

// What the calls of both families have.
template <class Call>
void bind_parameters(Call& call, unit_core& unit, int k) {
    call.iparm = unit.iprm.row(k);
    call.sparm = unit.sprm.row(k);
    call.rparm = unit.rprm.row(k);
    call.stparm = unit.sv.row(k);
    call.igparm = unit.ig.row(k);
}
}  // namespace

void bind_models(run_state& r) {
    ebeu_class& u = r.c.ebeu;
    const auto e_functions = functions_of<ebe_function>(r.c.lib.ebes, find_ebe);
    check_templates(ebes_form, r.c.lib.ebes, e_functions, u.unit, find_ebe_registration);
    make_jac(r.c.lib.ebes, r.ebes1);
    r.ebe.assign(at(u.n()), ebe_call{});
    int n_ddt = 0;
    for (int s : u.unit.i_lib)
        for (int k = r.c.lib.ebes.func.first_f[at(s)]; k < r.c.lib.ebes.func.first_f[at(s) + 1]; ++k)
            n_ddt += r.c.lib.ebes.func.flag_ddt[at(k)] != 0;
    u.f.resize(at(u.unit.n_ttlf() + n_ddt));
    for (int k = 0; k < u.n(); ++k) {
        const int s = u.unit.i_lib[at(k)];
        ebe_call& call = r.ebe[at(k)];
        call.function = e_functions[at(s)];
        bind_parameters(call, u.unit, k);
        call.v = u.nodev.data() + u.nd.first[at(k)];
        call.v_new = u.nodev_new.data() + u.nd.first[at(k)];
        call.vind = u.vin.data() + u.in.first[at(k)];
        call.curind = u.curind.data() + u.ib.first[at(k)];
        call.aux = u.aux.data() + u.first_aux[at(k)];
        call.aux_new = u.aux_new.data() + u.first_aux[at(k)];
        call.vr = u.val_vr.data() + u.vr.first[at(k)];
        call.xvr = u.val_xvr.data() + u.xvr.first[at(k)];
        call.auxs = u.auxs.data() + u.first_auxs[at(k)];
        call.auxs_new = u.auxs_new.data() + u.first_auxs[at(k)];
        call.locv = u.locv.data() + u.first_locv[at(k)];
        call.dvar = u.dvar.data() + u.dgtl.first[at(k)];
        call.f = u.f.data() + u.unit.first_func[at(k)];
        call.jac = &r.ebes1[at(s)];
    }
    gbeu_class& g = r.c.gbeu;
    const auto g_functions = functions_of<gbe_function>(r.c.lib.gbes, find_gbe);
    check_templates(gbes_form, r.c.lib.gbes, g_functions, g.unit, find_gbe_registration);
    make_jac(r.c.lib.gbes, r.gbes1);
    r.gbe.assign(at(g.n()), gbe_call{});
    for (int k = 0; k < g.n(); ++k) {
        const int s = g.unit.i_lib[at(k)];
        gbe_call& call = r.gbe[at(k)];
        call.function = g_functions[at(s)];
        bind_parameters(call, g.unit, k);
        call.vr = g.vr_in.data() + g.vr.first[at(k)];
        call.vr_new = g.vr_in_new.data() + g.vr.first[at(k)];
        call.xvr = g.val_xvr.data() + g.xvr.first[at(k)];
        call.aux = g.aux.data() + g.first_aux[at(k)];
        call.aux_new = g.aux_new.data() + g.first_aux[at(k)];
        call.f = g.f.data() + g.unit.first_func[at(k)];
        call.jac = &r.gbes1[at(s)];
    }
}
