// run_state.h -- everything that a run solves with: the circuit, the system, the settings of the present solve block.
#pragma once
#include <vector>

#include "analyses/ac_class.h"
#include "analyses/assembly_plan.h"
#include "analyses/digital.h"
#include "analyses/explicit.h"
#include "analyses/mat_class.h"
#include "analyses/ssw_class.h"
#include "analyses/unit_family.h"
#include "base/at.h"
#include "base/flags_class.h"
#include "base/math_cnst_class.h"
#include "elaborate/circuit.h"
#include "models/dp_class.h"
#include "settings/solve_class.h"

// Where the present point leaves a residual, of which a block tells once.
struct residual_watch {
    bool told = false;
    int node = -1;                     // unit-level node; -1: none
    double value = 0.0;                // A
    std::vector<double> sum, largest;  // [n_nd] of the terminal currents of the last point; A
};

// Conductances from nodes to the reference, which one way to a dc point puts there. S
struct node_shunts {
    double g = 0.0;                      // of each; 0: there are none
    std::vector<int> row, column, slot;  // [nodes] in the system
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
    unit_family<explicit_family> xbe{c.xbeu, c.lib.xbes};
    explicit_class explicits;
    ssw_class ssw;
    digital_class digital;
    ac_class ac{c};
    assembly_plan plan;
    formed_arguments formed;
    residual_watch residual;
    node_shunts shunts;

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
// The same for small-signal units.
void bind_ac_models(run_state& r);
