#include "analyses/rparm_passes.h"

#include "analyses/evaluate.h"
#include "base/halt.h"

namespace {
std::size_t at(int i) { return static_cast<std::size_t>(i); }

// The models' constants hang on their parameters.
void derive_constants(run_state& r, int fam, int instance) {
    const instance_core& inst = r.c.instances(fam);
    r.flags.one_time_parms = 1;
    for (int u = inst.first_unit[at(instance)]; u < inst.first_unit[at(instance) + 1]; ++u)
        fam == fam_e ? get_ebe(r, u) : get_gbe(r, u);
    r.flags.one_time_parms = 0;
}

const unit_core& units_of(const circuit& c, int fam) { return fam == fam_e ? c.ebeu.unit : c.gbeu.unit; }
}  // namespace

void check_rparm_sources(const circuit& c) {
    for (const rparm_link& link : c.links.get) {
        if (link.n_source == 0) halt({"get_rparm_2 (gbe): parameter not assigned. nttl=0. Halting..."});
        if (link.n_source > 1)
            halt({line("get_rparm_2 (gbe): multiple parameters? nttl=", link.n_source), "  Halting.."});
    }
}

void set_rparm_2(run_state& r) {
    bool changed = false;
    for (const rparm_link& link : r.c.links.set) {
        instance_core& inst = r.c.instances(link.family);
        double& parameter = (link.is_start ? inst.sv : inst.rprm).row(link.instance)[link.index];
        const double factor = link.factor < 0 ? 1.0 : r.c.gbeu.unit.rprm.data[at(link.factor)];
        const double value = factor * r.c.gbeu.val_vr[at(link.variable)];
        if (parameter == value) continue;
        parameter = value;
        changed = true;
        instance_changed(r.c, link.family, link.instance);
        if (link.family == fam_e || link.family == fam_g) derive_constants(r, link.family, link.instance);
    }
    // What stands as long as parameters do: derivatives of pure units, their sums, functions of held units.
    if (changed) {
        r.plan.d_stands = r.plan.val_stands = false;
        r.formed.of_held = -1;
    }
}

void get_rparm_2(run_state& r) {
    ebce_form_arrays(r);
    gbce_form_arrays(r);
    r.flags.outvar_prm = 1;
    for (const rparm_link& link : r.c.links.get)
        link.family == fam_e ? get_ebe(r, link.source_unit) : get_gbe(r, link.source_unit);
    r.flags.outvar_prm = 0;
    gbeu_class& g = r.c.gbeu;
    for (const rparm_link& link : r.c.links.get) {
        const unit_core& unit = units_of(r.c, link.family);
        const double value = (link.is_start ? unit.sv : unit.rprm).data[at(link.source)];
        if (link.value >= 0) {
            g.unit.rprm.data[at(link.value)] = value;
        } else {
            g.val_vr[at(link.variable)] = value;
            r.mat.svec[at(r.mat.offs.gvar + link.variable)] = value;
        }
    }
}
