// run_state.h -- everything that a run solves with: the circuit, the system, the settings of the present solve block.
#pragma once
#include <vector>

#include "analyses/assembly_plan.h"
#include "analyses/mat_class.h"
#include "analyses/slices.h"
#include "base/at.h"
#include "base/flags_class.h"
#include "base/math_cnst_class.h"
#include "elaborate/circuit.h"
#include "models/dp_class.h"
#include "settings/solve_class.h"

// A family of units as it is solved: its tables, and what the analyses have beside them.
template <class Rows>
struct unit_family {
    static constexpr int elements = Rows::elements;
    static constexpr auto slots = Rows::slots;
    using call_type = typename Rows::call;
    typename Rows::units& units;
    const basic_library& lib;
    std::vector<typename Rows::jac> jac{};  // [templates, at least 1]
    std::vector<call_type> call{};          // [units]
    family_runs<call_type> runs{};          // of the present plan

    int n() const { return units.unit.n; }
    int entry(int u) const { return units.unit.i_lib[at(u)]; }  // template of a unit
    bool has(std::vector<int> entry_flags::*word, int u) const { return (lib.flag.*word)[at(entry(u))] != 0; }
};

// Where the present point leaves a residual, of which a block tells once.
struct residual_watch {
    bool told = false;
    int node = -1;                     // unit-level node; -1: none
    double value = 0.0;                // A
    std::vector<double> sum, largest;  // [n_nd] of the terminal currents of the last point; A
};

struct run_state {
    circuit& c;
    mat_class mat;
    solve_class slv;
    flags_class flags;
    dp_class dp;
    math_cnst_class math_cnst;
    unit_family<electrical_family> ebe{c.ebeu, c.lib.ebes};
    unit_family<general_family> gbe{c.gbeu, c.lib.gbes};
    assembly_plan plan;
    formed_arguments formed;
    residual_watch residual;

    explicit run_state(circuit& elaborated) : c(elaborated) {}
};

// Electrical units, then blocks.
template <class R, class F>
void for_families(R& r, F f) {
    f(r.ebe);
    f(r.gbe);
}

// Calls the model of a unit; what it does is asked by r.flags.
template <class Rows>
void get_unit(run_state& r, const unit_family<Rows>& f, int u) {
    const auto& call = f.call[at(u)];
    if (call.function) Rows::call::arguments::call(call.function, u, call, &r.flags, &r.dp, &r.math_cnst);
}

// Looks up the model of every template in use by its name and resolves the units' slices. A template with functions but
// without a model is told once; its units then give zeros.
void bind_models(run_state& r);
