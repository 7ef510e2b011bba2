#include <cmath>

#include "base/at.h"
#include "base/halt.h"
#include "elaborate/circuit.h"
#include "elaborate/families.h"

namespace {
template <class T>
void copy_linked(const row_table<int>& flag, int b, const row_table<T>& from, int i, row_table<T>& to, int u) {
    for (int j = 0; j < flag.size(b); ++j)
        if (const int link = flag.row(b)[j]; link >= 0) to.row(u)[j] = from.row(i)[link];
}

// Linked parameters only: constants that models derived and output slots of the units stay as they are.
void push_to_units(const element_table& be, const instance_core& inst, int i, int e, int first_unit,
                   bool with_start_values, unit_core& unit) {
    for (int k = 0; k < be.n_be(e); ++k) {
        const int b = be.first_be[at(e)] + k, u = first_unit + k;
        copy_linked(be.iprm_flag, b, inst.iprm, i, unit.iprm, u);
        copy_linked(be.rprm_flag, b, inst.rprm, i, unit.rprm, u);
        if (!with_start_values) continue;
        copy_linked(be.sv_flag, b, inst.sv, i, unit.sv, u);
        copy_linked(be.ig_flag, b, inst.ig, i, unit.ig, u);
    }
}
}  // namespace

void instance_changed(circuit& c, int fam, int i) {
    instance_core& inst = c.instances(fam);
    const composite_library& lib = c.lib.composites(fam);
    const int e = inst.i_lib[at(i)];
    eval_rprm_1(lib, e, inst.rprm.row(i));
    for (const unit_table& t : family_forms[fam].units)
        push_to_units(lib.*t.elements, inst, i, e, (inst.*t.first_unit)[at(i)], t.with_start_values, t.units(c));
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
