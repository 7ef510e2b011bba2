#include "analyses/rparm_passes.h"

#include <cmath>

#include "analyses/composite_parms.h"
#include "analyses/evaluate.h"
#include "analyses/step_control.h"
#include "base/at.h"
#include "base/halt.h"
#include "elaborate/mixed.h"

namespace {
// Families whose units have parameters that blocks may write or read.
template <class F>
void for_linked_families(run_state& r, F f) {
    for_families(r, f);
    f(r.xbe);
}

// The models' constants hang on their parameters.
void derive_constants(run_state& r, int fam, int instance) {
    const std::vector<int>& first = r.c.instances(fam).first_unit;
    const raised on(r.flags.one_time_parms);
    for_linked_families(r, [&](auto& f) {
        if (f.elements != fam) return;
        for (int u = first[at(instance)]; u < first[at(instance) + 1]; ++u) get_unit(r, f, u);
    });
}

// What a block writes into such a parameter would never be seen.
[[noreturn]] void refuse_computed(const circuit& c, const rparm_link& link) {
    const instance_core& inst = c.instances(link.family);
    const composite_library& lib = c.lib.composites(link.family);
    const int e = inst.i_lib[at(link.instance)];
    halt({line("set_rparm: parameter ", lib.list.rprm.word(e, link.index), "_of_", inst.name[at(link.instance)]),
          line("   is computed by the composite ", lib.list.entry[e], ". Halting...")});
}
}  // namespace

void check_rparm_sources(const circuit& c) {
    for (const rparm_link& link : c.links.get) {
        const std::string head = link.is_explicit ? "get_rparm_2 (xbe): " : "get_rparm_2 (gbe): ";
        if (link.n_source == 0) halt({head + "parameter not assigned. nttl=0. Halting..."});
        if (link.n_source > 1) halt({line(head, "multiple parameters? nttl=", link.n_source), "  Halting.."});
    }
}

bool set_rparm_2(run_state& r) {
    bool changed = false;
    for (const rparm_link& link : r.c.links.set) {
        instance_core& inst = r.c.instances(link.family);
        double& parameter = (link.is_start ? inst.sv : inst.rprm).row(link.instance)[link.index];
        const unit_core& unit = link.is_explicit ? r.c.xbeu.unit : r.c.gbeu.unit;
        const std::vector<double>& variable = link.is_explicit ? r.c.xbeu.val_vr : r.c.gbeu.val_vr;
        const double factor = link.factor < 0 ? 1.0 : unit.rprm.data[at(link.factor)];
        const double value = factor * variable[at(link.variable)];
        if (parameter == value) continue;
        if (!std::isfinite(value)) finite_number(value, line("set_rparm: parameter of ", inst.name[at(link.instance)]));
        parameter = value;
        changed = true;
        instance_changed(r.c, link.family, link.instance);
        check_derived(r.c, link.family, link.instance);
        for_each_part(r.c, link.family, link.instance, [&](int fam, int i) {
            check_derived(r.c, fam, i);
            compute_rparms_of(r, fam, i);
        });
        if (parameter != value) refuse_computed(r.c, link);
        for_each_part(r.c, link.family, link.instance, [&](int fam, int i) {
            derive_constants(r, fam, i);
            // The corners of a source hang on its parameters.
            if (r.flags.event_restart) find_nextbreak_of(r, fam, i);
        });
    }
    // What stands as long as parameters do: derivatives of pure units, their sums, functions of held units.
    if (changed) {
        r.plan.forget_values();
        r.formed.forget_calls();
    }
    return changed;
}

void get_rparm_2(run_state& r) {
    form_arrays(r);
    {
        const raised on(r.flags.outvar_prm);
        for (const rparm_link& link : r.c.links.get)
            for_linked_families(r, [&](auto& f) {
                if (f.elements == link.source_family) get_unit(r, f, link.source_unit);
            });
    }
    gbeu_class& g = r.c.gbeu;
    for (const rparm_link& link : r.c.links.get) {
        double value = 0.0;
        for_linked_families(r, [&](auto& f) {
            const unit_core& unit = f.units.unit;
            if (f.elements == link.source_family) value = (link.is_start ? unit.sv : unit.rprm).data[at(link.source)];
        });
        if (link.value >= 0) {
            (link.is_explicit ? r.c.xbeu.unit : g.unit).rprm.data[at(link.value)] = value;
        } else if (link.is_explicit) {
            r.c.xbeu.val_vr[at(link.variable)] = value;
        } else {
            g.val_vr[at(link.variable)] = value;
            r.mat.svec[at(r.mat.offs.gvar + link.variable)] = value;
        }
    }
}
