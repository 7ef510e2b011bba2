#include "models/mos_level3.h"

#include <algorithm>

#include "base/math_cnst_class.h"
#include "models/slopes.h"

mos_level3_channel make_mos_level3(const mos_sheet& s, const mos_channel& c, const math_cnst_class& math_cnst,
                                   double delta, double eta, double nfs, double vmax) {
    mos_level3_channel m = {};
    m.beta = c.beta;
    m.vbi = c.vbi;
    m.gamma = s.gamma;
    m.phi = c.phi;
    m.vt = c.vt;
    m.l_eff = c.l_eff;
    m.xd = s.nsub == mos_not_given ? 0 : std::sqrt(2 * eps_si / (math_cnst.q * s.nsub * 1e6));
    m.sigma = eta * 8.15e-22 / (c.cox * c.l_eff * c.l_eff * c.l_eff);
    m.narrow = delta * 0.5 * math_cnst.pi * eps_si / (c.cox * s.w);
    m.surface = math_cnst.q * nfs * 1e4 / c.cox;
    const double ratio = s.temp / s.tnom, mobility = s.u0 * 1e-4 / (ratio * std::sqrt(ratio));
    m.vc = vmax > 0 ? vmax * c.l_eff / mobility : 0;
    return m;
}

void mos_level3_channel::operator()(double vgs_x, double vds_x, double vbs_x, double& id, double& gm, double& gds,
                                    double& gmb) const {
    const slopes vgs{vgs_x, {1, 0, 0}}, vds{vds_x, {0, 1, 0}}, vbs{vbs_x, {0, 0, 1}};
    const double root_phi = std::sqrt(phi);
    // Root of the surface potential; for vbs above 0 it falls without reaching 0.
    const slopes w = vbs_x <= 0 ? sqrt(-vbs + phi) : root_phi * inverse(0.5 / phi * vbs + 1);
    const slopes p = w * w;

    // Bulk charge of a short channel: a trapezium between curved junctions.
    slopes gamma_s{gamma, {}};
    if (xd != 0 && xj != 0) {
        const slopes wp = xd / xj * w, wp_1 = inverse(wp + 1);
        const slopes wc = wp * (-0.01110777 * wp + 0.8013292) + 0.0631353;
        // sqrt(1 - (wp/(1 + wp))^2)
        const slopes side = sqrt(2 * wp + 1) * wp_1;
        const slopes share = -(xj / l_eff) * ((wc + ld / xj) * side + -ld / xj) + 1;
        gamma_s = share.x > 0 ? gamma * share : slopes{};
    }
    const slopes body = 0.25 * gamma_s / w + narrow;
    const slopes bulk = gamma_s * w + narrow * p;
    const slopes vth = bulk - sigma * vds + vbi;

    slopes on = vth, n{};
    if (surface > 0) {
        n = 0.5 * bulk / p + (1 + surface);
        on = vth + vt * n;
    }
    if (surface > 0 ? !(vgs_x > vth.x - 700 * vt * n.x) : vgs_x <= on.x) {
        id = gm = gds = gmb = 0;
        return;
    }
    const bool weak = vgs_x < on.x;
    const slopes vgst = (weak ? on : vgs) - vth;
    const slopes gate = inverse(theta * vgst + 1);  // mobility falls with the field of the gate

    const slopes body_1 = body + 1;
    slopes vsat = vgst / body_1, v_c{};
    if (vc > 0) {
        v_c = vc * inverse(gate);
        // arga + vc - sqrt(arga^2 + vc^2) without its cancellation
        vsat = 2 * (vsat * v_c) / (vsat + v_c + sqrt(vsat * vsat + v_c * v_c));
    }
    const bool saturated = vds_x > vsat.x;
    const slopes u = saturated ? vsat : vds;
    slopes i = beta * gate * u * (vgst - 0.5 * (body_1 * u));
    slopes drain{1, {}};
    if (vc > 0) {
        drain = inverse(u / v_c + 1);
        i = i * drain;
    }
    // The saturated part of the channel takes its length away.
    if (saturated && xd != 0 && kappa > 0) {
        const double k = kappa * xd * xd;
        const slopes beyond = vds - vsat;
        slopes dl;
        if (vc > 0) {
            // Field at the edge of saturation times k, from the slope of the current there.
            const slopes half = 0.5 * k / l_eff * (v_c * (u + v_c) / u);
            // sqrt(half^2 + k beyond) - half
            dl = k * beyond / (sqrt(half * half + k * beyond) + half);
        } else {
            dl = sqrt(k * beyond);
        }
        dl = 1 / l_eff * dl;
        i = dl.x > 0.5 ? 4.0 * (i * dl) : i / (-dl + 1);
    }
    if (weak) {
        const slopes x = (vgs - on) / (vt * n);
        const double e = std::exp(x.x);
        i = i * chained(e, e, x);
    }
    id = i.x;
    gm = i.d[0];
    gds = i.d[1];
    gmb = i.d[2];
}
