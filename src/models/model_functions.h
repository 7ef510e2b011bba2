// model_functions.h -- functions that several elements share.
#pragma once
#include <cmath>
#include <complex>

#include "base/flags_class.h"
#include "library/basic/ebac1_class.h"

struct ebes1_class;
struct math_cnst_class;

// ---- resistive curves

// A switch: off i = g_off v. On, i = g_on (v - v_on) from v_knee = v_on/0.9999 upwards and g_knee v below it, with
// g_knee = 0.0001 g_on; the lines meet at v_knee. So a switch that is on blocks reverse current.
struct switch_curve {
    double g_on, g_off, v_on, v_knee, g_knee;
};
// From resistances in ohm; halts for a negative v_on or r_on 0, with the element file's name before the text.
switch_curve switch_constants(const char* file, double r_on, double r_off, double v_on);
void switch_current(const switch_curve& s, bool on, double v, double& i, double& g);

// A diode of two lines: i = g_off v below the knee, i = g_on (v - v_on) above it. c: g_on, g_off, and the voltage of
// the knee, where they meet. Halts with the element's name unless 1e-9 <= r_on, r_off and r_on < r_off.
void diode_constants(const char* element, double r_on, double r_off, double v_on, double* c);
inline void diode_current(double v_on, const double* c, double v, double& i, double& g) {
    if (v < c[2]) {
        g = c[1];
        i = v * g;
    } else {
        g = c[0];
        i = (v - v_on) * g;
    }
}

// A thyristor at an accepted point: whether it conducts from now on.
inline bool thyristor_conducts(bool on, bool fired, double v) { return v > 0.0 && (on || fired); }

// Series resistance of a device, r/area in ohm, as a conductance; below 1e-6 it counts as 1e-6, so that 0 is legal.
inline double series_conductance(double r, double area) { return 1 / std::fmax(r / area, 1e-6); }

// Function and Jacobian of a branch from terminal 0 to terminal 1 whose current i has the slope g; each only if asked.
void two_terminal_branch(double i, double g, double* f, ebes1_class* jac, const flags_class* flags);

// A change-over switch from terminal 0 to terminals 1 and 2, g_1 and g_2 in S; real, and of small signals.
template <class T, class Jac>
void change_over(double g_1, double g_2, const T* v, T* f, Jac* jac, const flags_class* flags) {
    if (flags->function) {
        f[1] = g_1 * (v[1] - v[0]);
        f[2] = g_2 * (v[2] - v[0]);
        f[0] = -(f[1] + f[2]);
    }
    if (flags->jacobian) {
        jac->dfdv[0][0] = g_1 + g_2;
        jac->dfdv[0][1] = jac->dfdv[1][0] = -g_1;
        jac->dfdv[0][2] = jac->dfdv[2][0] = -g_2;
        jac->dfdv[1][1] = g_1;
        jac->dfdv[2][2] = g_2;
    }
}

// Ohmic drain or source of m MOS transistors in parallel, S: its own value if above 0, else sheet value times squares;
// less than 1e-6 ohm counts as that.
inline double mos_series_conductance(double r, double rsh, double squares, double m) {
    return series_conductance(r > 0 ? r : rsh * squares, m);
}

// ---- branches with their current as unknown

// A branch from terminal 0 to terminal 1 of the voltage u, V. Its current into terminal 0 is aux 0, in start-up auxs 0.
// Rows 0 and 1 are those of the terminals, row 2 is the branch; in start-up the same from first_s on. Each only if
// asked.
void source_branch(double u, const double* v, const double* aux, const double* auxs, double* f, ebes1_class* jac,
                   const flags_class* flags, int first_s = 3);
// A conductance g, S, in the same rows: the own one is g (v(0) - v(1)) - i = 0, over g where that is above 1. So the
// rows of the nodes hold no g, which would swallow currents of 1e-16 V g. 0 is an open branch.
void series_branch(double g, const double* v, const double* aux, const double* auxs, double* f, ebes1_class* jac,
                   const flags_class* flags);

// ---- numeric Jacobian

using function_only = void (*)(int* iparm, double* rparm, double* v, double* vind, double* curind, double* aux,
                               double* vr, double* f, flags_class* flags, math_cnst_class* math_cnst);

// Difference quotients of funcs at the given point, for the listed rows. The model sets the increments jac->del* first.
void dfdx_e(function_only funcs, int* iparm, double* rparm, const double* v, const double* vind, const double* curind,
            const double* aux, const double* vr, flags_class* flags, math_cnst_class* math_cnst, ebes1_class* jac,
            int n_rows, const int* rows);

// ---- small-signal forms

// An admittance y, S, from terminal 0 to terminal 1.
inline void two_terminal_admittance(std::complex<double> y, const std::complex<double>* v, std::complex<double>* f,
                                    ebac1_class* jac, const flags_class* flags) {
    if (flags->function) {
        f[0] = y * (v[0] - v[1]);
        f[1] = -f[0];
    }
    if (flags->jacobian) {
        jac->dfdv[0][0] = y;
        jac->dfdv[0][1] = -y;
        jac->dfdv[1][0] = -y;
        jac->dfdv[1][1] = y;
    }
}
// A branch of the voltage u, V, with its current into terminal 0 as aux 0: rows 0 and 1 of the terminals, row 2.
void branch_voltage(std::complex<double> u, const std::complex<double>* v, const std::complex<double>* aux,
                    std::complex<double>* f, ebac1_class* jac, const flags_class* flags);
// A conductance g, S, as series_branch has it.
inline void series_admittance(double g, const std::complex<double>* v, const std::complex<double>* aux,
                              std::complex<double>* f, ebac1_class* jac, const flags_class* flags) {
    const double per_i = 1 / std::fmax(g, 1.0), per_v = g * per_i;
    branch_voltage(0.0, v, aux, f, jac, flags);
    if (flags->function) f[2] = per_v * (v[0] - v[1]) - per_i * aux[0];
    if (flags->jacobian) {
        jac->dfdaux[2][0] = -per_i;
        jac->dfdv[2][0] = per_v;
        jac->dfdv[2][1] = -per_v;
    }
}
// The bias point's derivatives as admittances: G[j][k] of the n_nd terminal rows, and with charges i freq C[j][k] of
// the charge rows behind them. ebe_jac null: an open element.
void bias_admittance(int n_nd, bool charges, double freq, const std::complex<double>* v, std::complex<double>* f,
                     ebac1_class* jac, const ebes1_class* ebe_jac, const flags_class* flags);
