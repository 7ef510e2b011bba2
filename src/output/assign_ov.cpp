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

// Kinds whose index is a place in a table of all units.
template <class T>
struct unit_values {
    int kind;
    const std::vector<T>& (*all)(const circuit&);
};
constexpr unit_values<double> real_values[] = {{ov_nodev, [](const circuit& c) -> auto& {return c.ebeu.val_nd;
}  // namespace
}
, {ov_aux, [](const circuit& c) -> auto& {return c.ebeu.aux;
}
}
, {ov_cur, [](const circuit& c) -> auto& {return c.ebeu.cur_nd;
}
}
, {ov_var, [](const circuit& c) -> auto& {return c.gbeu.val_vr;
}
}
, {ov_gaux, [](const circuit& c) -> auto& {return c.gbeu.aux;
}
}
, {ov_rparm_ebe, [](const circuit& c) -> auto& {return c.ebeu.unit.rprm.data;
}
}
, {ov_rparm_gbe, [](const circuit& c) -> auto& {return c.gbeu.unit.rprm.data;
}
}
,
}
;
constexpr unit_values<int> int_values[] = {{ov_iparm_ebe, [](const circuit& c) -> auto& {return c.ebeu.unit.iprm.data;
}
}
, {ov_iparm_gbe, [](const circuit& c) -> auto& {return c.gbeu.unit.iprm.data;
}
}
,
}
;
template <class T, std::size_t N>
const T* find_value(const unit_values<T> (&values)[N], const circuit& c, const out_var& v) {
    for (const unit_values<T>& x : values)
        if (x.kind == v.kind) return x.all(c).data() + v.index;
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
    return find_value(real_values, c, v);
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
    if (v.kind == ov_pwr_elec) {
        value = absorbed_power(c, v.instance);
        return true;
    }
    const int* parameter = find_value(int_values, c, v);
    if (parameter != nullptr) value = *parameter;
    return parameter != nullptr;
}

int assign_ov_dgtl(const circuit&, const out_var&) {
    halt({"assign_ov_dgtl: check output variables (digital)", "   Halting..."});
}
