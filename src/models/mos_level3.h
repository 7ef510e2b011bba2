// mos_level3.h -- channel of the MOS transistor of level 3. (Vladimirescu and Liu, UCB/ERL M80/7, 1980.)
#pragma once
#include "models/mos.h"

struct mos_level3_channel {
    double beta, vbi, gamma, phi, vt, l_eff;  // A/V^2, V, V^(1/2), V, V, m; vbi as of an n-channel
    double xd, sigma;                         // m/V^(1/2); static feedback
    double kappa, theta, xj, ld;
    double narrow;   // part of the narrow channel in the body factor, from delta
    double surface;  // q nfs/cox; 0 without weak inversion
    double vc;       // V, vmax l_eff over the mobility; 0: carriers do not saturate

    // vds >= 0. Known kinks: the slope with vds above the edge of saturation begins infinite with kappa above 0 and no
    // vmax; with nfs the slopes jump where weak inversion begins; punch-through has none.
    void operator()(double vgs, double vds, double vbs, double& id, double& gm, double& gds, double& gmb) const;
};
// sheet values of level 3 alone: delta, eta, nfs (1/cm^2), vmax (m/s)
mos_level3_channel make_mos_level3(const mos_sheet& s, const mos_channel& c, const math_cnst_class& math_cnst,
                                   double delta, double eta, double nfs, double vmax);
