// runs.h -- model calls with their arguments resolved, and rows of units that one call serves.
#pragma once
#include <cstddef>

struct flags_class;
struct dp_class;
struct math_cnst_class;
struct ebes1_class;
struct gbes1_class;

// A model of an electrical element. Arrays are slices of the unit tables: parameters, present values, values of the
// next iterate under limiting (_new), function values, and jac for the partial derivatives.
using ebe_function = void (*)(const int i_ebeu, int* iparm, char** sparm, double* rparm, double* stparm, double* igparm,
                              double* v, double* vind, double* curind, double* aux, double* vr, double* xvr,
                              double* auxs, double* locv, double* v_new, double* aux_new, double* auxs_new, int* dvar,
                              double* f, ebes1_class* jac, flags_class* flags, dp_class* dp,
                              math_cnst_class* math_cnst);
// A model of a general block.
using gbe_function = void (*)(const int i_gbeu, int* iparm, char** sparm, double* rparm, double* stparm, double* igparm,
                              double* vr, double* xvr, double* aux, double* vr_new, double* aux_new, double* f,
                              gbes1_class* jac, flags_class* flags, dp_class* dp, math_cnst_class* math_cnst);

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

// From the slices of one unit of a run to those of the next.
struct ebe_steps {
    std::ptrdiff_t unit, iparm, sparm, rparm, stparm, igparm, v, vind, curind, aux, vr, xvr, auxs, locv, v_new, aux_new,
        auxs_new, dvar, f;
    bool operator==(const ebe_steps&) const = default;
};
struct gbe_steps {
    std::ptrdiff_t unit, iparm, sparm, rparm, stparm, igparm, vr, xvr, aux, vr_new, aux_new, f;
    bool operator==(const gbe_steps&) const = default;
};

// Derivatives of the units of a run. They share the store of their template, from which each unit's are fetched behind
// its call.
struct run_derivatives {
    const double* store = nullptr;
    const int* from = nullptr;  // [n] places in the store that count
    int n = 0;
    double* out = nullptr;  // [units of the run][n]
};

struct ebe_run;
struct gbe_run;
using ebe_run_function = void (*)(const ebe_run&, bool with_derivatives, flags_class*, dp_class*, math_cnst_class*);
using gbe_run_function = void (*)(const gbe_run&, bool with_derivatives, flags_class*, dp_class*, math_cnst_class*);

// Units of one template at equal distances in all tables. A single unit is a run, too.
struct ebe_run {
    ebe_run_function function = nullptr;
    int unit = 0, n = 0;  // the first unit; how many
    ebe_call first;
    ebe_steps step{};
    run_derivatives jac;
};
struct gbe_run {
    gbe_run_function function = nullptr;
    int unit = 0, n = 0;
    gbe_call first;
    gbe_steps step{};
    run_derivatives jac;
};

inline double* fetch_derivatives(const run_derivatives& d, double* out) {
    for (int k = 0; k < d.n; ++k) out[k] = d.store[d.from[k]];
    return out + d.n;
}

// Calls a model for all units of a run. With the model's body in the place of the call, only those slices are stepped
// through that it uses.
template <ebe_function model>
void run_ebe(const ebe_run& run, bool with_derivatives, flags_class* flags, dp_class* dp, math_cnst_class* math_cnst) {
    const ebe_steps s = run.step;
    std::ptrdiff_t unit = run.unit;
    ebe_call c = run.first;
    double* out = run.jac.out;
    for (int i = run.n; i > 0; --i) {
        model(static_cast<int>(unit), c.iparm, c.sparm, c.rparm, c.stparm, c.igparm, c.v, c.vind, c.curind, c.aux, c.vr,
              c.xvr, c.auxs, c.locv, c.v_new, c.aux_new, c.auxs_new, c.dvar, c.f, c.jac, flags, dp, math_cnst);
        if (with_derivatives) out = fetch_derivatives(run.jac, out);
        unit += s.unit;
        c.iparm += s.iparm, c.sparm += s.sparm, c.rparm += s.rparm, c.stparm += s.stparm, c.igparm += s.igparm;
        c.v += s.v, c.vind += s.vind, c.curind += s.curind, c.aux += s.aux, c.vr += s.vr, c.xvr += s.xvr;
        c.auxs += s.auxs, c.locv += s.locv, c.v_new += s.v_new, c.aux_new += s.aux_new, c.auxs_new += s.auxs_new;
        c.dvar += s.dvar, c.f += s.f;
    }
}
template <gbe_function model>
void run_gbe(const gbe_run& run, bool with_derivatives, flags_class* flags, dp_class* dp, math_cnst_class* math_cnst) {
    const gbe_steps s = run.step;
    std::ptrdiff_t unit = run.unit;
    gbe_call c = run.first;
    double* out = run.jac.out;
    for (int i = run.n; i > 0; --i) {
        model(static_cast<int>(unit), c.iparm, c.sparm, c.rparm, c.stparm, c.igparm, c.vr, c.xvr, c.aux, c.vr_new,
              c.aux_new, c.f, c.jac, flags, dp, math_cnst);
        if (with_derivatives) out = fetch_derivatives(run.jac, out);
        unit += s.unit;
        c.iparm += s.iparm, c.sparm += s.sparm, c.rparm += s.rparm, c.stparm += s.stparm, c.igparm += s.igparm;
        c.vr += s.vr, c.xvr += s.xvr, c.aux += s.aux, c.vr_new += s.vr_new, c.aux_new += s.aux_new, c.f += s.f;
    }
}
