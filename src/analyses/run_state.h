// run_state.h -- everything that a run solves with: the circuit, the system, the settings of the present solve block.
#pragma once
#include <vector>

#include "analyses/mat_class.h"
#include "blocks/solve_class.h"
#include "elaborate/circuit.h"
#include "library/ebes1_class.h"
#include "library/gbes1_class.h"
#include "models/dp_class.h"
#include "models/registration.h"
#include "run/flags_class.h"
#include "run/math_cnst_class.h"

// One call of a model with the pointers to its unit's slices resolved. function is null if there is no such model; the
// call then does nothing.
struct ebe_call {
    ebe_function function = nullptr;
    int* iparm = nullptr;
    char** sparm = nullptr;
    double *rparm = nullptr, *stparm = nullptr, *igparm = nullptr;
    double *v = nullptr, *vind = nullptr, *curind = nullptr, *aux = nullptr, *vr = nullptr, *xvr = nullptr,
           *auxs = nullptr, *locv = nullptr;
    double *v_new = nullptr, *aux_new = nullptr, *auxs_new = nullptr;
    int* dvar = nullptr;
    double* f = nullptr;
    ebes1_class* jac = nullptr;
};

struct gbe_call {
    gbe_function function = nullptr;
    int* iparm = nullptr;
    char** sparm = nullptr;
    double *rparm = nullptr, *stparm = nullptr, *igparm = nullptr;
    double *vr = nullptr, *xvr = nullptr, *aux = nullptr, *vr_new = nullptr, *aux_new = nullptr;
    double* f = nullptr;
    gbes1_class* jac = nullptr;
};

// Electrical units that are called together, and what is fetched from their functions then.
struct unit_pass {
    std::vector<int> unit;
    value_moves locv, current;  // to local variables, to terminal currents
    std::vector<int> ddt;       // KCL derivatives of these units
};

// Which units a transient calls where not all need it. A unit that is pure and has no derivative gives nothing at an
// accepted point that anybody reads, unless an output wants its currents.
struct pass_lists {
    unit_pass at_accepted;            // totals, local variables, histories, wanted currents
    unit_pass with_ddt;               // those that own a function with a derivative
    unit_pass left_out;               // those not in at_accepted; their currents are found at the end of the block
    std::vector<int> ov_ebe, ov_gbe;  // units whose output slots are in some file
    bool all_pure = false;            // the matrix depends on parameters and the method's constant alone
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
    pass_lists passes;          // of the present transient
    double val_constant = 0.0;  // 1/s, the method's constant in val_m; 0: val_m must be assembled
    bool val_stands = false;    // the last assembly found val_m as it should be

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
