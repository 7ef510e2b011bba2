// mos_parameters.cpp -- parameters of MOS transistors: from the process, and at a temperature. (Vladimirescu and Liu,
// UCB/ERL M80/7, 1980.)
#include <algorithm>
#include <cmath>

#include "base/math_cnst_class.h"
#include "models/mos.h"

double silicon_gap(double temp) { return 1.16 - 7.02e-4 * temp * temp / (temp + 1108); }

namespace {
constexpr double temp_ref = 300.15;  // K, that of the published constants

// Share of a junction's potential that comes from the intrinsic carriers at temp, V.
double intrinsic_part(double temp, double vt) {
    const double vt_ref = vt * temp_ref / temp;
    return -2 * vt * (1.5 * std::log(temp / temp_ref) - silicon_gap(temp) / (2 * vt) + 1.1150877 / (2 * vt_ref));
}
}  // namespace

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
        s.vt0 = doped ? pol * (0.5 * (s.phi - silicon_gap(s.tnom)) + s.gamma * std::sqrt(s.phi)) : 0;
}

void adjust_to_temperature(const mos_sheet& s, double pol, const math_cnst_class& math_cnst, mos_channel& c,
                           mos_bulk& b) {
    const double vt_nom = math_cnst.boltzmann * s.tnom / math_cnst.q;
    c.vt = math_cnst.boltzmann * s.temp / math_cnst.q;
    c.cox = s.tox > 0 ? eps_ox / s.tox : 0;
    c.l_eff = s.l - 2 * s.ld;
    c.beta = s.m * s.kp * s.w / c.l_eff / (s.temp / s.tnom * std::sqrt(s.temp / s.tnom));

    // Potentials go with the temperature, but for the part of the intrinsic carriers; hot ones end at 0.1 V.
    const double gap_nom = silicon_gap(s.tnom), gap = silicon_gap(s.temp);
    const double part_nom = intrinsic_part(s.tnom, vt_nom), part = intrinsic_part(s.temp, c.vt);
    const double to_ref = temp_ref / s.tnom, from_ref = s.temp / temp_ref;
    c.phi = std::max(from_ref * to_ref * (s.phi - part_nom) + part, 0.1);
    c.vbi = pol * s.vt0 - s.gamma * std::sqrt(s.phi) + pol * 0.5 * (gap_nom - gap) + 0.5 * (c.phi - s.phi);
    const double pb_ref = to_ref * (s.pb - part_nom);
    c.pb = std::max(from_ref * pb_ref + part, 0.1);

    const double scale = s.m * std::exp(gap_nom / vt_nom - gap / c.vt);
    const bool by_area = s.js != 0 && s.as != 0 && s.ad != 0;
    b.is_d = scale * (by_area ? s.js * s.ad : s.is);
    b.is_s = scale * (by_area ? s.js * s.as : s.is);
    b.x_max_d = std::min(std::log(b.i_max / b.is_d), 500.0);  // is may be 0
    b.x_max_s = std::min(std::log(b.i_max / b.is_s), 500.0);

    const auto at_temp = [&](double grading) {
        const auto factor = [&](double temp, double pb) {
            return 1 + grading * (4e-4 * (temp - temp_ref) - (pb - pb_ref) / pb_ref);
        };
        return s.m * factor(s.temp, c.pb) / factor(s.tnom, s.pb);
    };
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
