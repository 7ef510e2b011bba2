// mos_charge.h -- charges of a MOS transistor as functions of its voltages, so that a closed path leaves nothing
// behind. (Ward and Dutton, IEEE Journal of Solid-State Circuits SC-13, 1978.)
//
// Per unit of oxide capacitance, in V, over the channel of an n-type transistor: gate qg, channel qn, bulk -(qg + qn).
// The channel's is shared half and half between drain and source by who calls. Along the channel the bulk charge grows
// in a straight line with the potential, with the slope that it has at the source.
#pragma once
#include <cmath>

struct mos_charge_slopes {
    double qg, qg_g, qg_d, qg_s;  // V; slopes with the voltages of gate, drain, source against the bulk
    double qn, qn_g, qn_d, qn_s;
};

// vgx: gate to bulk less the flat-band voltage; vds >= 0; vsb: source to bulk. Regions:
//   vgx <= 0              accumulation   qg = vgx
//   vgx <= p + gamma w    depletion      qg = gamma (sqrt(gamma^2/4 + vgx) - gamma/2)
//   above                 inversion      qg = vgx - p - p' u, qn = -(vgst - a u), a = p' (1 + gamma/(2 w))
// with p the surface potential at the source's end, phi + vsb for vsb >= 0, w = sqrt(p), vgst = vgx - p - gamma w, and
// u the mean potential along the channel, vds/2 - a vds^2/(12 vgst - 6 a vds), from vds = vgst/a on vgst/(3 a). Below 0
// p goes on as phi^2/(phi - vsb), which stays above 0. Charges are continuous everywhere; so are their slopes, also
// where drain and source exchange their parts, but for those at the beginning of inversion, where the channel's
// appears.
inline void mos_charge(double gamma, double phi, double vgx, double vds, double vsb, mos_charge_slopes& c) {
    double p = phi + vsb, p_1 = 1, p_2 = 0;
    if (vsb < 0) {
        const double r = phi / (phi - vsb);
        p = phi * r;
        p_1 = r * r;
        p_2 = 2 * p_1 * r / phi;
    }
    const double w = std::sqrt(p), vgst = vgx - p - gamma * w;
    c.qn = c.qn_g = c.qn_d = c.qn_s = c.qg_d = c.qg_s = 0;
    if (vgst <= 0) {
        c.qg = vgx;
        c.qg_g = 1;
        if (vgx > 0) {
            const double root = std::sqrt(0.25 * gamma * gamma + vgx);
            c.qg = gamma * vgx / (root + 0.5 * gamma);
            c.qg_g = 0.5 * gamma / root;
        }
        return;
    }
    const double k = 0.5 * gamma / w, a = p_1 * (1 + k), a_s = p_2 * (1 + k) - 0.5 * k * p_1 * p_1 / p;
    double u, u_g, u_d, u_a;  // mean potential and its slopes with vgst, vds and a
    if (a * vds >= vgst) {
        u_g = 1 / (3 * a);
        u = vgst * u_g;
        u_d = 0;
        u_a = -u / a;
    } else {
        const double s = 1 / (vgst - 0.5 * a * vds), t = a * vds * s;
        u = vds * (0.5 - t / 12);
        u_g = vds * s * t / 12;
        u_d = 0.5 - t / 6 - t * t / 24;
        u_a = -vds * vds * s * (1 + 0.5 * t) / 12;
    }
    const double u_s = u_a * a_s - u_g * a;  // with the source alone, at the same vds
    c.qg = vgx - p - p_1 * u;
    c.qg_g = 1 - p_1 * u_g;
    c.qg_d = -p_1 * u_d;
    c.qg_s = -p_1 - p_2 * u - p_1 * u_s - c.qg_d;
    c.qn = a * u - vgst;
    c.qn_g = a * u_g - 1;
    c.qn_d = a * u_d;
    c.qn_s = a + a_s * u + a * u_s - c.qn_d;
}
