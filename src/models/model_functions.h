// model_functions.h -- functions that several elements share.
#pragma once
#include <complex>

struct ebac1_class;
struct ebes1_class;
struct flags_class;
struct math_cnst_class;

// ---- resistive curves
// --------------------------------------------------------------------------------------------------

// A switch: off i = g_off v. On, i = g_on (v - v_on) from v_knee = v_on/0.9999 upwards and g_knee v below it, with
// g_knee = 0.0001 g_on; the lines meet at v_knee. So a switch that is on blocks reverse current.
struct switch_curve {
    double g_on, g_off, v_on, v_knee, g_knee;
};
void switch_current(const switch_curve& s, bool on, double v, double& i, double& g);

// Function and Jacobian of a branch from terminal 0 to terminal 1 whose current i has the slope g; each only if asked.
void two_terminal_branch(double i, double g, double* f, ebes1_class* jac, const flags_class* flags);

// ---- junction diode (Nagel 1975; Antognetti and Massobrio, chapter 1)
// ----------------------------------------------------

// Parameters as in the element, then what is derived from them.
struct junction_diode {
    double area, bv, cj0, eg, fc, ibv, is, m, n_em, tnom, tt, vj, xti, temp, i_max;
    double vt, vt_nom;  // V, kT/q at temp and tnom
    double f1, f2, f3;  // of the charge beyond fc vj
    double is_t;        // A, saturation current at temp
    double x_max;       // limit of the exponent
};
void adjust_to_temperature(junction_diode& d, const math_cnst_class& math_cnst);
// Current in A and its slope in S; gmin, S, stands across the junction.
void junction_current(const junction_diode& d, double v, double gmin, double& i, double& g);
// Depletion charge and that of the transit time, C, and its slope in F; id, gd: current and slope without gmin.
void junction_charge(const junction_diode& d, double v, double id, double gd, double& q, double& c);

// ---- numeric Jacobian
// ----------------------------------------------------------------------------------------------------

using function_only = void (*)(int* iparm, double* rparm, double* v, double* vind, double* curind, double* aux,
                               double* vr, double* f, flags_class* flags, math_cnst_class* math_cnst);

// Difference quotients of funcs at the given point, for the listed rows. The model sets the increments jac->del* first.
void dfdx_e(function_only funcs, int* iparm, double* rparm, const double* v, const double* vind, const double* curind,
            const double* aux, const double* vr, flags_class* flags, math_cnst_class* math_cnst, ebes1_class* jac,
            int n_rows, const int* rows);

// ---- small-signal forms
// ----------------------------------------------------------------------------------------------------

// An admittance y, S, from terminal 0 to terminal 1.
void two_terminal_admittance(std::complex<double> y, const std::complex<double>* v, std::complex<double>* f,
                             ebac1_class* jac, const flags_class* flags);
// A branch of the voltage u, V, with its current into terminal 0 as aux 0: rows 0 and 1 of the terminals, row 2.
void branch_voltage(std::complex<double> u, const std::complex<double>* v, const std::complex<double>* aux,
                    std::complex<double>* f, ebac1_class* jac, const flags_class* flags);
// The bias point's derivatives as admittances: G[j][k] of the n_nd terminal rows, and with charges i freq C[j][k] of
// the charge rows behind them. ebe_jac null: an open element.
void bias_admittance(int n_nd, bool charges, double freq, const std::complex<double>* v, std::complex<double>* f,
                     ebac1_class* jac, const ebes1_class* ebe_jac, const flags_class* flags);
