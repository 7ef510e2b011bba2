// explicit_functions.h -- functions that explicit blocks share. They stand here in full: an evaluated block costs
// nanoseconds.
#pragma once
#include <initializer_list>

#include "base/flags_class.h"

struct xbes1_class;

// ---- rows ----

// The calls in which a block fills its outputs, slopes or rows.
inline bool x_is_solving(const flags_class* flags) {
    return flags->evaluate || flags->matrix_alg || flags->matrix_ddt;
}

// Output `out` of a block that gives it the value g. Evaluated, the value is written; in the matrix, row h is
// fh = vr[out] - g. slope[k] is dg by variable k; variables behind those of the list do not count. `out` is none of
// those of the list.
template <class Jac>
inline void x_output(int h, int out, double g, std::initializer_list<double> slope, double* vr, double* fh, Jac* jac,
                     const flags_class* flags) {
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
