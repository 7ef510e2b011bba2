// norton.h -- elements that drive one node against the reference node: logic, comparators, samplers.
#pragma once
#include "base/flags_class.h"
#include "base/halt.h"
#include "library/basic/ebes1_class.h"

// The conductance of an output resistance, S; halts with the name of the element's file.
inline double output_conductance(const char* file, double r_out) {
    if (!(r_out > 1.0e-9)) halt({line(file, ": r_out too small!")});
    return 1.0 / r_out;
}

// The row of terminal 0, driven by u, V, behind the conductance g, S.
inline void norton_row(double u, double g, const double* v, double* f, ebes1_class* jac, const flags_class* flags) {
    if (flags->function) f[0] = (v[0] - u) * g;
    if (flags->jacobian) jac->dfdv[0][0] = g;
}

// Parameters of a logic element, where they stand: w[0] to w[4] are v_low, v_high, r_out, the output v_o, g_out.
inline bool logic_high(const double* w, double v) { return v > 0.5 * w[1]; }

// All that a logic element does, given the level of its output at the present voltages.
inline void logic_element(const char* file, bool on, double* w, double* v, double* f, ebes1_class* jac,
                          const flags_class* flags) {
    if (flags->one_time_parms)
        w[4] = output_conductance(file, w[2]);
    else if (flags->dc || flags->trns || flags->startup)
        norton_row(on ? w[1] : w[0], w[4], v, f, jac, flags);
    else if (flags->outvar_prm)
        w[3] = v[0];
    else if (flags->init_guess)
        v[0] = 0.0;
}
