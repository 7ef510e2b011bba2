#include "output/assign_ov.h"

#include "base/at.h"
#include "elaborate/families.h"

namespace {
// Power absorbed by all units of an instance: currents are positive into a terminal.
double absorbed_power(const circuit& c, int i_eelu) {
    const row_table<int>& nd = c.ebeu.nd;
    double power = 0.0;
    for (int u = c.eelu.first_unit[at(i_eelu)]; u < c.eelu.first_unit[at(i_eelu + 1)]; ++u)
        for (int e = nd.first[at(u)]; e < nd.first[at(u) + 1]; ++e)
            power += c.ebeu.val_nd[at(nd.data[at(e)])] * c.ebeu.cur_nd[at(e)];
    return power;
}

// The mean power that flows into all units of an instance; amplitudes are peak values.
double absorbed_power_ac(const circuit& c, int i_eelu) {
    const row_table<int>& nd = c.ebau.nd;
    double power = 0.0;
    for (int u = c.eelu.first_unit_ac[at(i_eelu)]; u < c.eelu.first_unit_ac[at(i_eelu + 1)]; ++u)
        for (int e = nd.first[at(u)]; e < nd.first[at(u) + 1]; ++e) {
            const std::complex<double>&v = c.ebau.val_nd[at(nd.data[at(e)])], &i = c.ebau.cur_nd[at(e)];
            power += 0.5 * (v.real() * i.real() + v.imag() * i.imag());
        }
    return power;
}

// Kinds whose index is a place in a table of all units.
const double* real_value(const circuit& c, const out_var& v) {
    const auto place = [&](const std::vector<double>& all) { return all.data() + v.index; };
    switch (v.kind) {
        case ov_nodev:
            return place(c.ebeu.val_nd);
        case ov_aux:
            return place(c.ebeu.aux);
        case ov_cur:
            return place(c.ebeu.cur_nd);
        case ov_var:
            return place(c.gbeu.val_vr);
        case ov_gaux:
            return place(c.gbeu.aux);
        case ov_rparm_ebe:
            return place(c.ebeu.unit.rprm.data);
        case ov_rparm_gbe:
            return place(c.gbeu.unit.rprm.data);
        case ov_xvar:
            return place(c.xbeu.val_vr);
        case ov_xaux:
            return place(c.xbeu.aux);
        case ov_rparm_xbe:
            return place(c.xbeu.unit.rprm.data);
        default:
            return nullptr;
    }
}
const int* int_value(const circuit& c, const out_var& v) {
    if (v.kind == ov_iparm_ebe) return c.ebeu.unit.iprm.data.data() + v.index;
    if (v.kind == ov_iparm_gbe) return c.gbeu.unit.iprm.data.data() + v.index;
    if (v.kind == ov_iparm_xbe) return c.xbeu.unit.iprm.data.data() + v.index;
    return nullptr;
}

// The place that a sweep writes, so that the value is right also where it has not written yet.
const double* item_place(const circuit& c, const parm_item& item) {
    if (item.where == parm_item::global_value) return &c.gprm.greal[at(item.index)];
    return c.instances(item.family).rprm.row(item.instance) + item.index;
}

bool is_swept(int prefix) { return prefix == prefix_vary || prefix == prefix_vary_sync; }
}  // namespace

const double* place_of(const solve_class& slv, const circuit& c, const out_var& v) {
    if (v.prefix == prefix_global) return &c.gprm.greal[at(v.index)];
    if (is_swept(v.prefix)) {
        const std::vector<vary_statement>& list = v.prefix == prefix_vary ? slv.task.vary : slv.task.vary_sync;
        return slv.ac ? nullptr : item_place(c, list[at(v.index)].item);
    }
    if (v.prefix != prefix_none) return nullptr;
    for (const family_form& f : family_forms)
        if (f.kind_rparm == v.kind && v.kind != ov_none) return c.instances(f.number).rprm.row(v.instance) + v.index;
    return real_value(c, v);
}

const std::complex<double>* phasor_of(const circuit& c, const out_var& v) {
    if ((v.prefix != prefix_phase && v.prefix != prefix_mag) || v.index < 0) return nullptr;
    switch (v.kind) {
        case ov_nodev_ac:
            return c.ebau.val_nd.data() + v.index;
        case ov_aux_ac:
            return c.ebau.aux.data() + v.index;
        case ov_cur_ac:
            return c.ebau.cur_nd.data() + v.index;
        case ov_var_ac:
            return c.gbau.val_vr.data() + v.index;
        case ov_xvar_ac:
            return c.xbau.val_vr.data() + v.index;
        default:
            return nullptr;
    }
}

bool assign_ov(const solve_class& slv, const circuit& c, const out_var& v, double& value) {
    if (const double* place = place_of(slv, c, v)) {
        value = *place;
        return true;
    }
    if (is_swept(v.prefix))
        halt({line("assign_ov: outvar of type ", v.prefix == prefix_vary ? "varprm" : "varprmsync",
                   " is not allowed.")});
    const bool needs_word = is_small_signal(v.kind) && v.kind != ov_pwr_elec_ac;
    if (v.prefix != prefix_none) {
        if (!needs_word)
            halt({"assign_ov: check output variables.", "   perhaps phase or mag is given for", "   a dc variable?",
                  line("   ov_flag = ", v.kind, ", ov_indx = ", v.index)});
        return false;
    }
    if (needs_word) halt({"assign_ov: check output variables.", "   perhaps missing phase or mag?"});
    if (v.kind == ov_pwr_elec || (v.kind == ov_pwr_elec_ac && slv.ac)) {
        value = v.kind == ov_pwr_elec ? absorbed_power(c, v.instance) : absorbed_power_ac(c, v.instance);
        return true;
    }
    const int* parameter = int_value(c, v);
    if (parameter != nullptr) value = *parameter;
    return parameter != nullptr;
}

int assign_ov_dgtl(const circuit& c, const out_var& v) {
    if (v.prefix == prefix_none && v.kind == ov_dvar) return c.dbeu.dvar[at(v.index)];
    if (v.prefix == prefix_none && v.kind == ov_dstate) return c.dbeu.dstate[at(v.index)];
    halt({"assign_ov_dgtl: check output variables (digital)", "   Halting..."});
}
