// compact_mosfet.h -- compact power MOSFET whose temperature is a node voltage in kelvin: channel, drift region,
// charges between gate, drain and source, body diode. The expressions are this program's own. Values come with all
// partial derivatives; a name that ends in _1 gives the value alone. Nothing here halts.
#pragma once
#include <cmath>

#include "base/math_cnst_class.h"

// The temperature that the expressions take, K: t between 170 and 680, with round corners held at 150 below and at 700
// above. dt is its slope. A temperature node that is still on its way, at 0 or at 1e6, leads nowhere else.
void cool_temperature(double t, double& held, double& dt);

// Softened step of x: 0 for x <= 0, else x - (exp(k x) - 1)/k, the exponential as its tangent from k x = 60 on; its
// slope. k below 0 makes a ramp that begins flat and reaches the slope 1 within a few 1/|k|; k = 0 is its limit, 0.
void cool_func_1(double x, double k, double& f, double& df);

// ---- charges

// Between drain and gate, of v = v(d) - v(g): capacitance c_0 up to v_1 (charge linear), falling in a straight line to
// c_res at v_2 (quadratic), c_res from there on: the charge of the overlap is cut off. F, V; v_2 above v_1.
struct cool_gate_charge {
    double c_0, c_res, v_1, v_2;
};
void cool_QCdg1(const cool_gate_charge& p, double v, double& q, double& c);

// Between drain and source, of v = v(d) - v(s): c_0 up to 0 V, from there c_res + (c_0 - c_res) exp(-v/v_c), which is
// c_0 v less (c_0 - c_res) times a softened step. F, V; v_c above 0.
struct cool_output_charge {
    double c_0, c_res, v_c;
};
void cool_QCds1(const cool_output_charge& p, double v, double& q, double& c);

// ---- drift region

// r0 (a + (1 - a) (t/t_nom)^e), ohm, and its slope, ohm/K; t above 0.
struct cool_resistance {
    double r0, a, e, t_nom;
};
void cool_Rd0(const cool_resistance& p, double t, double& r, double& dr);
double cool_Rd0_1(const cool_resistance& p, double t);

// ---- channel

// scale (v/v_ref)^n, n = (v - v_ref) k + 2 held between 1.2 and 3; 0 for v <= 0. At v_ref it is scale. The slope has a
// step where n meets its bounds.
struct cool_power_law {
    double scale, v_ref, k;
};
void cool_CF(const cool_power_law& p, double v, double& f, double& df);
double cool_CF_1(const cool_power_law& p, double v);

// v_s ln(1 + exp(x)), x = v/v_s, and its slope: x + exp(-x) for an x above 25, x above 50.
void cool_overdrive(double v, double v_s, double& over, double& dover);

struct cool_channel {
    double i_ref, v_ref, k_n;  // A at the overdrive v_ref, V; 1/V
    double v_th, tc_th, v_s;   // V threshold at t_nom; V/K; V of the softening
    double t_nom, e_i;         // K; exponent of the current
    double v_k0, k_k, lambda;  // V knee without overdrive; its growth; 1/V
};
// i_ref (t/t_nom)^e_i, A, and its slope, A/K.
void cool_I0(const cool_channel& p, double t, double& i, double& di);
double cool_I0_1(const cool_channel& p, double t);
// I0(t) CF(over): the current that the gate allows, over the softened overdrive of vg - v_th - tc_th (t - t_nom), which
// is handed out with its slope in vg. A, S, A/K.
void cool_Ig(const cool_channel& p, double vg, double t, double& i, double& dg, double& dt, double& over,
             double& dover);
double cool_Ig_1(const cool_channel& p, double vg, double t);
// Channel current from drain to source: Ig tanh(u) (1 + lambda vd tanh(u)), u = vd/(v_k0 + k_k over). Odd in vd. t is a
// temperature node, K, and held as above. A; partial derivatives in gate voltage, drain voltage, S, temperature, A/K.
// Beyond the range of numbers the current is infinite.
void cool_J(const cool_channel& p, double vg, double vd, double t, double& j, double& dg, double& dd, double& dt);
double cool_J_1(const cool_channel& p, double vg, double vd, double t);

// ---- body diode

struct cool_diode {
    double is, n_em, eg, xti, t_nom, i_max;  // A at t_nom; -; eV; -; K; A where the exponential ends
};
// is_t (exp(v/(n_em vt)) - 1) + gmin v at the temperature node t: A, S, A/K.
void cool_body_diode(const cool_diode& p, const math_cnst_class& math_cnst, double v, double t, double gmin, double& i,
                     double& g, double& dt);
