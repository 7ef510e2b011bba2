// jfet.h -- junction field effect transistor: channel of Shichman and Hodges (IEEE Journal of Solid-State Circuits
// SC-3, 1968) and two gate junctions. All for the n-channel device; a p-channel one mirrors voltages, currents and
// charges.
#pragma once
#include "base/numeric.h"
#include "models/junctions.h"
#include "models/out_of_range.h"

// With the area in it; currents in A, voltages in V.
struct jfet {
    double beta, lambda, vto;  // A/V^2; 1/V; V
    double is, vte, x_max;     // gate junctions: A; n k T/q; limit of the exponent
    depletion gs, gd;
};

// What depends on the temperature alone.
struct jfet_temperature {
    double vt, is_t, pb_t;  // V; A; V
    double factor;          // of the junction capacitances
};
// Saturation current is exp(eg/vt_nom - eg/vt) with eg = 1.11 eV; potential and capacitances by the band gap of silicon
// (Nagel 1975). pb_t stays at or above 0.1 V, below which no depletion layer is described. A factor below 0 means
// nothing: then false, and the factor is 1.
bool adjust_to_temperature(double is, double pb, double m, double tnom, double temp, const math_cnst_class& math_cnst,
                           jfet_temperature& t);

// Channel current at vds >= 0 and its slopes in vgs and vds. With u = vgs - vto > 0 and k = beta (1 + lambda vds), the
// published form is k vds (2 u - vds) below vds = u and k u^2 from there on; smooth, it is k u^2 tanh(2 vds/u): the
// same slope at vds = 0 and the same saturated current, with all derivatives.
inline void jfet_channel(const jfet& d, bool smooth, double vgs, double vds, double& id, double& gm, double& gds) {
    const double u = vgs - d.vto;
    id = gm = gds = 0;
    if (u <= 0) return;
    const double rise = 1 + d.lambda * vds, k = d.beta * rise;
    double c, c_u, c_v;  // id/k and its slopes
    if (smooth) {
        double t, dt;
        const double x = 2 * (vds / u);
        tanh_1(x, t, dt);
        c = u * u * t;
        c_u = 2 * (u * t - vds * dt);
        c_v = 2 * u * dt;
    } else if (vds < u) {
        c = vds * (2 * u - vds);
        c_u = 2 * vds;
        c_v = 2 * (u - vds);
    } else {
        c = u * u;
        c_u = 2 * u;
        c_v = 0;
    }
    id = k * c;
    gm = k * c_u;
    gds = k * c_v + d.beta * d.lambda * c;
}

// Channel current from drain to source, of any sign; slopes in vgs and vds. Below vds = 0 drain and source exchange
// their roles.
inline void jfet_drain_current(const jfet& d, bool smooth, double vgs, double vds, double& id, double& gm,
                               double& gds) {
    if (vds >= 0) return jfet_channel(d, smooth, vgs, vds, id, gm, gds);
    jfet_channel(d, smooth, vgs - vds, -vds, id, gm, gds);
    id = -id;
    gds += gm;
    gm = -gm;
}

// Currents and charges with their slopes at one bias point.
struct jfet_point {
    double id, gm, gds;         // channel
    double igs, ggs, igd, ggd;  // gate junctions
    double qgs, cgs, qgd, cgd;
};
inline jfet_point jfet_at(const jfet& d, bool smooth, double gmin, double vgs, double vds) {
    jfet_point p;
    jfet_drain_current(d, smooth, vgs, vds, p.id, p.gm, p.gds);
    junction_exponential(vgs, d.vte, d.is, d.x_max, gmin, p.igs, p.ggs);
    junction_exponential(vgs - vds, d.vte, d.is, d.x_max, gmin, p.igd, p.ggd);
    depletion_charge(d.gs, vgs, p.qgs, p.cgs);
    depletion_charge(d.gd, vgs - vds, p.qgd, p.cgd);
    return p;
}

// Currents into drain, gate and source, and with charges the charges behind them.
inline void jfet_functions(const jfet_point& p, double pol, bool charges, double* f) {
    f[0] = pol * (p.id - p.igd);
    f[1] = pol * (p.igs + p.igd);
    f[2] = -(f[0] + f[1]);
    if (!charges) return;
    f[3] = -pol * p.qgd;
    f[4] = pol * (p.qgs + p.qgd);
    f[5] = -(f[3] + f[4]);
}
inline void jfet_derivatives(const jfet_point& p, bool charges, double** dfdv) {
    const auto rows = [](double** r, double dd, double dg, double gd, double gg) {
        r[0][0] = dd;
        r[0][1] = dg;
        r[0][2] = -(dd + dg);
        r[1][0] = gd;
        r[1][1] = gg;
        r[1][2] = -(gd + gg);
        for (int k = 0; k < 3; ++k) r[2][k] = -(r[0][k] + r[1][k]);
    };
    rows(dfdv, p.gds + p.ggd, p.gm - p.ggd, -p.ggd, p.ggs + p.ggd);
    if (charges) rows(dfdv + 3, p.cgd, -p.cgd, -p.cgd, p.cgs + p.cgd);
}
