// mos_level1.h -- channel of the MOS transistor of level 1. (Shichman and Hodges, IEEE Journal of Solid-State Circuits
// SC-3, 1968.)
#pragma once
#include "models/mos.h"

struct mos_level1_channel {
    double beta, vbi, gamma, phi, lambda;  // A/V^2, V, V^(1/2), V, 1/V; vbi as of an n-channel

    // vds >= 0. The body effect goes on in a straight line for vbs above 0, down to none.
    void operator()(double vgs, double vds, double vbs, double& id, double& gm, double& gds, double& gmb) const {
        const double root = std::sqrt(vbs > 0 ? phi : phi - vbs);
        double w = root, w_b = -0.5 / root;
        if (vbs > 0) {
            w += vbs * w_b;
            if (w < 0) w = w_b = 0;
        }
        const double vgst = vgs - vbi - gamma * w;
        if (vgst <= 0) {
            id = gm = gds = gmb = 0;
            return;
        }
        const double b = beta * (1 + lambda * vds);
        if (vgst <= vds) {
            id = 0.5 * b * vgst * vgst;
            gm = b * vgst;
            gds = 0.5 * beta * lambda * vgst * vgst;
        } else {
            const double area = vds * (vgst - 0.5 * vds);
            id = b * area;
            gm = b * vds;
            gds = b * (vgst - vds) + beta * lambda * area;
        }
        gmb = -gm * gamma * w_b;
    }
};
