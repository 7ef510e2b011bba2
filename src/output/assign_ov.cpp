#include "output/assign_ov.h"

#include "base/at.h"

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

bool is_small_signal(int kind) {
    switch (kind) {
        case ov_nodev_ac:
        case ov_aux_ac:
        case ov_var_ac:
        case ov_cur_ac:
        case ov_xvar_ac:
            return true;
        default:
            return false;
    }
}

bool assign_plain(const circuit& c, const out_var& v, double& value) {
    auto instance_parameter = [&](const instance_core& inst) { return inst.rprm.row(v.instance)[v.index]; };
    switch (v.kind) {
        case ov_nodev:
            value = c.ebeu.val_nd[at(v.index)];
            return true;
        case ov_aux:
            value = c.ebeu.aux[at(v.index)];
            return true;
        case ov_cur:
            value = c.ebeu.cur_nd[at(v.index)];
            return true;
        case ov_pwr_elec:
            value = absorbed_power(c, v.instance);
            return true;
        case ov_rparm_eelu:
            value = instance_parameter(c.eelu);
            return true;
        case ov_rparm_gelu:
            value = instance_parameter(c.gelu);
            return true;
        case ov_rparm_delu:
            value = instance_parameter(c.delu);
            return true;
        case ov_rparm_xelu:
            value = instance_parameter(c.xelu);
            return true;
        case ov_var:
            value = c.gbeu.val_vr[at(v.index)];
            return true;
        case ov_gaux:
            value = c.gbeu.aux[at(v.index)];
            return true;
        case ov_iparm_ebe:
            value = c.ebeu.unit.iprm.data[at(v.index)];
            return true;
        case ov_rparm_ebe:
            value = c.ebeu.unit.rprm.data[at(v.index)];
            return true;
        case ov_iparm_gbe:
            value = c.gbeu.unit.iprm.data[at(v.index)];
            return true;
        case ov_rparm_gbe:
            value = c.gbeu.unit.rprm.data[at(v.index)];
            return true;
        default:
            break;
    }
    if (is_small_signal(v.kind)) halt({"assign_ov: check output variables.", "   perhaps missing phase or mag?"});
    return false;
}

// The value that stands in the circuit, so that it is right also where a sweep has not written yet.
double item_value(const circuit& c, const parm_item& item) {
    if (item.where == parm_item::global_value) return c.gprm.greal[at(item.index)];
    return c.instances(item.family).rprm.row(item.instance)[item.index];
}

bool is_swept(int prefix) { return prefix == prefix_vary || prefix == prefix_vary_sync; }
}  // namespace

bool assign_ov(const solve_class& slv, const circuit& c, const out_var& v, double& value) {
    if (slv.ac && is_swept(v.prefix))
        halt({line("assign_ov: outvar of type ", v.prefix == prefix_vary ? "varprm" : "varprmsync",
                   " is not allowed.")});
    switch (v.prefix) {
        case prefix_none:
            return assign_plain(c, v, value);
        case prefix_global:
            value = c.gprm.greal[at(v.index)];
            return true;
        case prefix_vary:
            value = item_value(c, slv.vary[at(v.index)].item);
            return true;
        case prefix_vary_sync:
            value = item_value(c, slv.vary_sync[at(v.index)].item);
            return true;
        default:
            break;
    }
    if (!is_small_signal(v.kind))
        halt({"assign_ov: check output variables.", "   perhaps phase or mag is given for", "   a dc variable?",
              line("   ov_flag = ", v.kind, ", ov_indx = ", v.index)});
    return false;
}

int assign_ov_dgtl(const circuit&, const out_var&) {
    halt({"assign_ov_dgtl: check output variables (digital)", "   Halting..."});
}
