// bsim1.h -- short-channel MOS transistor BSIM1. (Sheu, Scharfetter, Ko and Jeng, IEEE Journal of Solid-State Circuits
// SC-22, 1987; UCB/ERL memoranda of 1985.) All for the n-channel device; a p-channel one mirrors voltages, currents and
// charges.
#pragma once
#include <cmath>

#include "models/junctions.h"
#include "models/out_of_range.h"

// What the evaluation reads, all of it derived: electrical parameters with their geometry in them, in the order of the
// element, then constants. Doubles alone, as the element keeps them in this order among its parameters.
struct bsim1 {
    double vfb, phi, k1, k2, eta;                     // threshold: V, V, V^1/2, -, -
    double beta_z, x2_beta_z, x2e, x3e;               // A/V^2 at vds = 0, its slope in vbs; slopes of eta, 1/V
    double u0, x2u0, u1, x2u1, x3u1;                  // 1/V, 1/V^2; divided by the channel length
    double beta_s, x2_beta_s, x3_beta_s, n0, nb, nd;  // A/V^2 at vds = vdd, its slopes in vbs, vds; subthreshold
    double vdd, vt, c_ox;                             // V, V, F of the whole gate
    double c_gdo, c_gso, c_gbo;                       // F, overlaps
    double xpart;                         // drain's share of the saturated channel's charge, see channel_share
    double vt0;                           // V, threshold at vbs = vds = 0
    double is_d, is_s, x_max_d, x_max_s;  // A, bulk junctions; limits of the exponent
    double c_d, c_s, c_dw, c_sw;          // F at 0 V, bottoms and side walls
    double fc, pb, mj, f1, f2, f3, pbsw, mjsw, f1w, f2w, f3w;
};
constexpr int n_bsim1 = sizeof(bsim1) / sizeof(double);

// Parameters that the element is given; raw: value and slopes in 1/length and 1/width (micrometres) of the 20
// electrical parameters. Lengths l, w in m, dl, dw, tox in micrometres, areas and sides of the junctions in m.
struct bsim1_given {
    const double* raw;
    double dl, dw, tox, temp, vdd, cgdo, cgso, cgbo, xpart;
    double as, ad, pd, ps, is, js, cj, cjsw, fc, mj, mjsw, pb, pbsw, l, w, i_max;
};
// Halts if the effective length or width is not above 0, or xpart is none of 0, 0.5 and 1.
bsim1 prepare(const bsim1_given& p, const math_cnst_class& math_cnst);

// A value with its slopes in vgs, vds and vbs.
struct with_slopes {
    double y, g, d, b;
};
// The intrinsic device at vds >= 0: current from drain to source, charges of gate, bulk and drain.
struct bsim1_channel {
    with_slopes id, qg, qb, qd;
};
bsim1_channel channel_at(const bsim1& p, double vgs, double vds, double vbs);

// Currents into drain, gate, source and bulk, and the charges behind them, with derivatives, at the voltages v of the
// terminals. Drain and source exchange their roles at vds = 0. dfdv may be null. False if something left the range of
// numbers.
bool bsim1_functions(const bsim1& p, double pol, double gmin, const double* v, double* f, double** dfdv,
                     double* id = nullptr);

// vgs, vds, vbs held near those of the last Jacobian evaluation (kept); true if that changed one of them.
bool limit_steps(const bsim1& p, const double* kept, double* vgs_vds_vbs);

// Functions at the voltages v, continued in a straight line from those at `limited` (vgs, vds, vbs of the n-channel
// device), which f and dfdv hold.
void continue_straight(double pol, const double* v, const double* limited, double** dfdv, double* f);
