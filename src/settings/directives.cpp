#include "settings/directives.h"

#include "base/at.h"
#include "base/numeric.h"

namespace {
// The instance brings the value to its units at once.
void write_item(circuit& c, const parm_item& item, double value) {
    if (item.where == parm_item::global_value) {
        c.gprm.greal[at(item.index)] = value;
        greal_changed(c, item.index);
        return;
    }
    instance_core& inst = c.instances(item.family);
    switch (item.where) {
        case parm_item::int_value:
            inst.iprm.row(item.instance)[item.index] = item.value_int;
            break;
        case parm_item::start_value:
            inst.sv.row(item.instance)[item.index] = value;
            break;
        case parm_item::guess_value:
            inst.ig.row(item.instance)[item.index] = value;
            break;
        default:
            inst.rprm.row(item.instance)[item.index] = value;
            break;
    }
    instance_changed(c, item.family, item.instance);
}

void write_items_of(circuit& c, const std::vector<parm_item>& items, bool explicit_side) {
    for (const parm_item& item : items)
        if ((item.family == fam_x) == explicit_side) write_item(c, item, item.value);
}

void move_to(vary_statement& v, circuit& c, double value) {
    v.value_now = finite_number(value, v.item.word);
    write_item(c, v.item, value);
}

// Indices of point i; -1 in each place for no point.
std::vector<int> grid_indices(const std::vector<int>& m, int i) {
    std::vector<int> ijk(m.size(), -1);
    if (i >= 0) indx_to_ijk(static_cast<int>(m.size()), m.data(), i, ijk.data());
    return ijk;
}
}  // namespace

void set_parm(const solve_class& slv, circuit& c) {
    for (const parm_item& item : slv.task.set_parm) {
        if (item.where == parm_item::global_value) c.gprm.greal_base[at(item.index)] = item.value;
        write_item(c, item, item.value);
    }
    check_expressions(c);
}

void set_sv(const solve_class& slv, circuit& c) { write_items_of(c, slv.task.set_stparm, false); }
void set_dsv(const solve_class& slv, circuit& c) { write_items_of(c, slv.task.set_dstparm, false); }
void set_ig(const solve_class& slv, circuit& c) { write_items_of(c, slv.task.set_igparm, false); }
void set_dig(const solve_class& slv, circuit& c) { write_items_of(c, slv.task.set_digparm, false); }
void set_ig_x(const solve_class& slv, circuit& c) { write_items_of(c, slv.task.set_igparm, true); }

std::vector<int> grid_counts(const solve_class& slv) {
    std::vector<int> m;
    for (const vary_statement& v : slv.task.vary) m.push_back(v.range.n);
    return m;
}

void vary_parm(solve_class& slv, circuit& c, int i) {
    if (slv.task.flag_vary_auto) {
        move_to(slv.task.vary[0], c, slv.task.automatic.p_now);
        check_expressions(c);
        return;
    }
    const std::vector<int> m = grid_counts(slv);
    const std::vector<int> ijk = grid_indices(m, i), last = grid_indices(m, slv.now.i_vary_last);
    if (i != 0 && ijk.back() == 0)
        for (out_file& file : slv.out.files)
            if (file.stream) file.stream->end_row();
    for (std::size_t k = 0; k < m.size(); ++k)
        if (ijk[k] != last[k]) move_to(slv.task.vary[k], c, slv.task.vary[k].range.at(ijk[k]));
    check_expressions(c);
    slv.now.i_vary_last = i;
}

void vary_parmsync(solve_class& slv, circuit& c, int i) {
    if (i == slv.now.i_sync_last) return;
    for (vary_statement& v : slv.task.vary_sync) move_to(v, c, v.range.at(i));
    check_expressions(c);
    slv.now.i_sync_last = i;
}
