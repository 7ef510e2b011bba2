#include <cmath>

#include "base/at.h"
#include "base/halt.h"
#include "elaborate/circuit.h"
#include "elaborate/families.h"
#include "elaborate/mixed.h"

namespace {
template <class T>
void copy_linked(const row_table<int>& flag, int b, const row_table<T>& from, int i, row_table<T>& to, int u) {
    for (int j = 0; j < flag.size(b); ++j)
        if (const int link = flag.row(b)[j]; link >= 0) to.row(u)[j] = from.row(i)[link];
}

void push_start_values(const element_table& be, const instance_core& inst, int i, int e, int first_unit,
                       unit_core& unit) {
    for (int k = 0; k < be.n_be(e); ++k) {
        const int b = be.first_be[at(e)] + k, u = first_unit + k;
        copy_linked(be.sv_flag, b, inst.sv, i, unit.sv, u);
        copy_linked(be.ig_flag, b, inst.ig, i, unit.ig, u);
    }
}
}  // namespace

void instance_changed(circuit& c, int fam, int i) {
    instance_core& inst = c.instances(fam);
    const composite_library& lib = c.lib.composites(fam);
    const int e = inst.i_lib[at(i)];
    const computed_instance* computed = c.computed.find(fam, i);
    // A function may have rewritten derived parameters; what it computes stands until compute_rparms.
    if (computed == nullptr || !lib.flag.compute_rparms[at(e)]) eval_rprm_1(lib, e, inst.rprm.row(i));
    if (fam == fam_gm) parts_changed(c, i);
    // Linked parameters only: constants that models derived and output slots of the units stay as they are.
    for (const unit_table& t : family_forms[fam].units) {
        const int first = (inst.*t.first_unit)[at(i)];
        push_linked(lib.*t.elements, e, first, inst.iprm.row(i), inst.rprm.row(i), false, t.units(c));
        if (t.with_start_values) push_start_values(lib.*t.elements, inst, i, e, first, t.units(c));
    }
    if (computed != nullptr) push_computed(c, *computed);
}

void check_derived(const circuit& c, int fam, int i) {
    const instance_core& inst = c.instances(fam);
    const composite_library& lib = c.lib.composites(fam);
    const int e = inst.i_lib[at(i)], n_plain = lib.n_rprm_plain(e);
    for (int j = n_plain; j < n_plain + lib.n_rprm_derived(e); ++j)
        if (const double x = inst.rprm.row(i)[j]; !std::isfinite(x))
            finite_number(x, line(lib.list.rprm.word(e, j), "_of_", inst.name[at(i)]));
}

void check_expressions(const circuit& c) {
    c.gprm.check_finite();
    for (int fam = 0; fam < n_family; ++fam)
        if (!c.lib.composites(fam).derived.row.data.empty())
            for (int i = 0; i < c.instances(fam).n; ++i) check_derived(c, fam, i);
}

void greal_changed(circuit& c, int k) {
    c.gprm.expr_1();
    std::vector<char> moved(c.gprm.greal.size(), 0);
    for (int d : c.gprm.dependents[at(k)]) moved[at(d)] = 1;
    for (int fam = 0; fam < n_family; ++fam) {
        instance_core& inst = c.instances(fam);
        for (int i = 0; i < inst.n; ++i) {
            bool touched = false;
            auto rewrite = [&](const row_table<int>& tie, row_table<double>& value) {
                for (int j = 0; j < tie.size(i); ++j)
                    if (const int g = tie.row(i)[j]; g >= 0 && moved[at(g)]) {
                        value.row(i)[j] = c.gprm.greal[at(g)];
                        touched = true;
                    }
            };
            rewrite(inst.rprm_tie, inst.rprm);
            rewrite(inst.sv_tie, inst.sv);
            rewrite(inst.ig_tie, inst.ig);
            if (touched) instance_changed(c, fam, i);
        }
    }
}
