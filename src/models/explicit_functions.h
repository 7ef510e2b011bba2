// explicit_functions.h -- functions that explicit blocks share. They stand here in full: an evaluated block costs
// nanoseconds.
#pragma once
#include <initializer_list>

#include "base/flags_class.h"
#include "library/basic/xbes1_class.h"

// ---- rows ----

// The calls in which a block fills its outputs, slopes or rows.
inline bool x_is_solving(const flags_class* flags) { return flags->evaluate || flags->matrix_alg || flags->matrix_ddt; }

// Output `out` of a block that gives it the value g. Evaluated, the value is written; in the matrix, row h is
// fh = vr[out] - g. slope[k] is dg by variable k; variables behind those of the list do not count. `out` is none of
// those of the list.
inline void x_output(int h, int out, double g, std::initializer_list<double> slope, double* vr, double* fh,
                     xbes1_class* jac, const flags_class* flags) {
    if (flags->evaluate) {
        vr[out] = g;
    } else if (flags->matrix_alg) {
        fh[h] = vr[out] - g;
        double* cell = jac->dhdvr[h];
        cell[out] = 1.0;
        for (const double s : slope) *cell++ = -s;
    }
}

// The slope of a state: function i_f, or in the matrix function i_g.
inline void x_slope(int i_f, int i_g, double slope, double* f, double* fg, const flags_class* flags) {
    if (flags->evaluate)
        f[i_f] = slope;
    else if (flags->matrix_ddt)
        fg[i_g] = slope;
}

// ---- branches of a network ----

// Row h of the element with two nodes, with the voltage bev[0] and the current cur[0] of its branch: by_v bev + by_i
// cur = y.
inline void x_branch(int h, double by_v, double by_i, double y, const double* bev, const double* cur, double* fh,
                     xbes1_class* jac, const flags_class* flags) {
    if (!flags->matrix_alg) return;
    fh[h] = by_v * bev[0] + by_i * cur[0] - y;
    jac->dhdbev[h][0] = by_v;
    jac->dhdcur[h][0] = by_i;
}

// Row h that makes variable `out` k times the current of the branch, or its voltage.
inline void x_current(int h, int out, double k, const double* vr, const double* cur, double* fh, xbes1_class* jac,
                      const flags_class* flags) {
    if (!flags->matrix_alg) return;
    fh[h] = vr[out] - k * cur[0];
    jac->dhdvr[h][out] = 1.0;
    jac->dhdcur[h][0] = -k;
}
inline void x_voltage(int h, int out, double k, const double* vr, const double* bev, double* fh, xbes1_class* jac,
                      const flags_class* flags) {
    if (!flags->matrix_alg) return;
    fh[h] = vr[out] - k * bev[0];
    jac->dhdvr[h][out] = 1.0;
    jac->dhdbev[h][0] = -k;
}
