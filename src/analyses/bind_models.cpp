#include "analyses/run_state.h"

#include "library/entry_counts.h"
#include "run/halt.h"
#include "run/list_file.h"

namespace {
std::size_t at(int i) { return static_cast<std::size_t>(i); }
}  // namespace

void bind_models(run_state& r) {
    const basic_library& lib = r.c.lib.ebes;
    ebeu_class& u = r.c.ebeu;
    // Global number -> function, by name: an edited or re-ordered list never calls a wrong model.
    std::vector<ebe_function> function(at(lib.n()), nullptr);
    for (int s = 0; s < lib.n(); ++s) function[at(s)] = find_ebe(lib.list.entry[s]);
    std::vector<char> told(at(lib.n()), 0);  // 1: the template was looked at
    r.ebes1.clear();
    r.ebes1.resize(at(std::max(lib.n(), 1)));
    for (int s = 0; s < lib.n(); ++s) r.ebes1[at(s)].initialise(lib, s);

    r.ebe.assign(at(u.n()), ebe_call{});
    for (int k = 0; k < u.n(); ++k) {
        const int s = u.unit.i_lib[at(k)];
        ebe_call& call = r.ebe[at(k)];
        call.function = function[at(s)];
        if (!call.function && lib.func.n_func(s) > 0 && !told[at(s)]) {
            told[at(s)] = 1;
            say(line("warning: no model function is registered for the element type ", lib.list.entry[s]));
        }
        if (call.function && !told[at(s)]) {
            told[at(s)] = 1;
            check_entry_counts(ebes_form, lib, s, find_ebe_registration(lib.list.entry[s])->counts);
        }
        call.iparm = u.unit.iprm.row(k);
        call.sparm = u.unit.sprm.row(k);
        call.rparm = u.unit.rprm.row(k);
        call.stparm = u.unit.sv.row(k);
        call.igparm = u.unit.ig.row(k);
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
}
