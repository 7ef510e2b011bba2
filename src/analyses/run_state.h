// run_state.h -- everything that a run solves with: the circuit, the system, the settings of the present solve block.
#pragma once
#include <vector>

#include "analyses/mat_class.h"
#include "base/flags_class.h"
#include "base/math_cnst_class.h"
#include "elaborate/circuit.h"
#include "library/basic/ebes1_class.h"
#include "library/basic/gbes1_class.h"
#include "models/dp_class.h"
#include "models/registration.h"
#include "settings/solve_class.h"

// Rows of sums over one flat array of numbers, in the order of addition.
struct sum_rows {
    std::vector<int> first{0};  // [n + 1] terms of row i are first[i] .. first[i + 1] - 1
    std::vector<int> term;      // place in the array
    int n() const { return static_cast<int>(first.size()) - 1; }
};

// What is fetched of the functions of some electrical units behind their calls.
struct function_moves {
    value_moves locv, current;  // to local variables, to terminal currents
    std::vector<int> ddt;       // KCL derivatives of these units
};

// Electrical units by what a transient must call where; other analyses have standing, timed and changing ones alone.
// The calls of pure units have no side effect, and may stand in any order; the others are called in the order of the
// units.
//   held      pure and timeless, and wanted at accepted points: for a derivative, or since an output shows a current.
//             They stand while the variables do: an accepted point is the first iterate of the next step.
//   accepted  other pure ones that are wanted at accepted points
//   left_out  other pure ones; their currents are found at the end of the block
//   changing  all others; they are called at accepted points, for their histories
struct electrical_runs {
    std::vector<ebe_run> held, accepted, left_out, changing;
    std::vector<ebe_run> with_ddt;  // again those that own a function with a derivative, less the held ones
    function_moves of_held, of_others, of_left_out, of_with_ddt;
};
struct block_runs {
    std::vector<gbe_run> pure, changing;
};

// How the present system is put together. Entries of the matrix that pure units alone add to stand as long as the
// method's constant does; of another entry the sum up to the first unit that is not pure does.
struct assembly_plan {
    int layout = -1;  // the mat.layout that it was made for
    electrical_runs e;
    block_runs g;
    std::vector<std::vector<int>> from_ebe, from_gbe;  // [templates] places in the jac store that some unit adds
    // Derivatives as the models gave them last; behind them those that are scaled, and minus the method's constant.
    std::vector<double> d;
    value_moves scaled, scaled_changing;
    sum_rows entries;              // [nnz] over d
    std::vector<int> entry;        // entries that change
    sum_rows changing;             // [entry] their terms behind the standing ones
    std::vector<int> n_standing;   // [entry] terms in front
    std::vector<double> standing;  // [entry] sum of these
    // Sums of functions: the functions of electrical units with the totals of those with a derivative behind them.
    std::vector<int> row;             // [rows of several units]
    sum_rows rows;                    // [row]
    std::vector<int> ov_ebe, ov_gbe;  // units whose output slots are in some file
    bool shows_currents = false;      // some file shows a terminal current
    bool d_stands = false;            // d has the derivatives of the pure units for this block
    bool val_stands = false;          // val_m has their sums for this constant of the method
    double val_constant = 0.0;        // 1/s
};

// The variables that the arguments of electrical units were formed of last.
struct formed_arguments {
    bool kept = false;  // only while a transient runs: nobody else writes arguments then
    bool valid = false;
    long version = 0;   // counts the changes
    long of_held = -1;  // version that the held units were called for
    std::vector<double> val_nd, aux, val_vr;
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
    std::vector<ebes1_class> ebes1;  // [templates, at least 1]
    std::vector<gbes1_class> gbes1;
    std::vector<ebe_call> ebe;  // [electrical units]
    std::vector<gbe_call> gbe;  // [general units]
    assembly_plan plan;
    formed_arguments formed;
    residual_watch residual;

    explicit run_state(circuit& elaborated) : c(elaborated) {}
};

// Calls the model of a unit; what it does is asked by r.flags.
inline void get_ebe(run_state& r, int u) {
    const ebe_call& k = r.ebe[static_cast<std::size_t>(u)];
    if (!k.function) return;
    k.function(u, k.iparm, k.sparm, k.rparm, k.stparm, k.igparm, k.v, k.vind, k.curind, k.aux, k.vr, k.xvr, k.auxs,
               k.locv, k.v_new, k.aux_new, k.auxs_new, k.dvar, k.f, k.jac, &r.flags, &r.dp, &r.math_cnst);
}
inline void get_gbe(run_state& r, int u) {
    const gbe_call& k = r.gbe[static_cast<std::size_t>(u)];
    if (!k.function) return;
    k.function(u, k.iparm, k.sparm, k.rparm, k.stparm, k.igparm, k.vr, k.xvr, k.aux, k.vr_new, k.aux_new, k.f, k.jac,
               &r.flags, &r.dp, &r.math_cnst);
}

// Looks up the model of every template in use by its name and resolves the units' slices. A template with functions but
// without a model is told once; its units then give zeros.
void bind_models(run_state& r);
