// mos_parameters.cpp -- parameters of MOS transistors: from the process, and at a temperature. (Vladimirescu and Liu,
// UCB/ERL M80/7, 1980.)
#include <algorithm>
#include <cmath>

#include "models/mos.h"
#include "models/silicon.h"

void derive_from_process(mos_sheet& s, double pol, const math_cnst_class& math_cnst) {
    const double cox = s.tox > 0 ? eps_ox / s.tox : 0;
    const bool doped = s.nsub != mos_not_given;
    if (s.kp == mos_not_given) s.kp = s.u0 * 1e-4 * cox;
    if (s.phi == mos_not_given)
        s.phi = doped ? 2 * math_cnst.boltzmann * s.tnom / math_cnst.q * std::log(s.nsub / n_intrinsic) : 0.6;
    s.phi = std::max(s.phi, 0.1);
    if (s.gamma == mos_not_given)
        s.gamma = doped && cox > 0 ? std::sqrt(2 * eps_si * math_cnst.q * s.nsub * 1e6) / cox : 0;
    if (s.vt0 == mos_not_given)
        s.vt0 = doped ? pol * (0.5 * (s.phi - silicon::gap(s.tnom)) + s.gamma * std::sqrt(s.phi)) : 0;
}

void adjust_to_temperature(const mos_sheet& s, double pol, const math_cnst_class& math_cnst, mos_channel& c,
                           mos_bulk& b) {
    const double vt_nom = math_cnst.boltzmann * s.tnom / math_cnst.q;
    c.vt = math_cnst.boltzmann * s.temp / math_cnst.q;
    c.cox = s.tox > 0 ? eps_ox / s.tox : 0;
    c.l_eff = s.l - 2 * s.ld;
    c.beta = s.m * s.kp * s.w / c.l_eff / (s.temp / s.tnom * std::sqrt(s.temp / s.tnom));

    // Hot potentials end at 0.1 V.
    const silicon si{math_cnst, s.temp, s.tnom};
    const double gap_nom = silicon::gap(s.tnom), gap = silicon::gap(s.temp);
    c.phi = std::max(si.potential(s.phi), 0.1);
    c.vbi = pol * s.vt0 - s.gamma * std::sqrt(s.phi) + pol * 0.5 * (gap_nom - gap) + 0.5 * (c.phi - s.phi);
    c.pb = std::max(si.potential(s.pb), 0.1);

    const double scale = s.m * std::exp(gap_nom / vt_nom - gap / c.vt);
    const bool by_area = s.js != 0 && s.as != 0 && s.ad != 0;
    b.is_d = scale * (by_area ? s.js * s.ad : s.is);
    b.is_s = scale * (by_area ? s.js * s.as : s.is);
    b.x_max_d = std::min(std::log(b.i_max / b.is_d), 500.0);  // is may be 0
    b.x_max_s = std::min(std::log(b.i_max / b.is_s), 500.0);

    const auto at_temp = [&](double grading) { return s.m * si.capacitance_factor(s.pb, c.pb, grading); };
    b.cjd = at_temp(s.mj) * (s.cbd != 0 ? s.cbd : s.cj * s.ad);
    b.cjs = at_temp(s.mj) * (s.cbs != 0 ? s.cbs : s.cj * s.as);
    b.csw_d = at_temp(s.mjsw) * s.cjsw * s.pd;
    b.csw_s = at_temp(s.mjsw) * s.cjsw * s.ps;
    b.bottom.c_0 = b.side.c_0 = 1;
    b.bottom.vj = b.side.vj = c.pb;
    b.bottom.fc = b.side.fc = s.fc;
    b.bottom.m = s.mj;
    b.side.m = s.mjsw;
    prepare(b.bottom);
    prepare(b.side);

    b.c_ox = s.m * c.cox * s.w * c.l_eff;
    b.c_gd = s.m * s.cgdo * s.w;
    b.c_gs = s.m * s.cgso * s.w;
    b.c_gb = s.m * s.cgbo * c.l_eff;
}
