// mos.h -- what the MOS transistors of all levels are made of: geometry and temperature, bulk junctions, overlaps, and
// the terminal rows put together. (Vladimirescu and Liu, UCB/ERL M80/7, 1980; Shichman and Hodges, JSSC SC-3, 1968.)
//
// Voltages, threshold and charges are those of an n-channel; pol = -1 turns them at the terminals. Terminals stand in
// the order d g s b.
#pragma once
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

#include "base/flags_class.h"
#include "base/numeric.h"
#include "models/junctions.h"
#include "models/mos_charge.h"
#include "models/out_of_range.h"

struct math_cnst_class;

// A parameter with this value is not given.
constexpr double mos_not_given = -1000;
constexpr double eps_0 = 8.854214871e-12, eps_si = 11.7 * eps_0, eps_ox = 3.9 * eps_0;  // F/m
constexpr double n_intrinsic = 1.45e10;                                                 // 1/cm^3

// Derived values as they stand in rparm, from vt to pb_t and from is_d to the end: all double.
struct mos_channel {
    double vt;          // V, kT/q
    double cox, l_eff;  // F/m^2; m
    double beta;        // A/V^2, kp w/l_eff of all devices in parallel
    double vbi, phi;    // V, flat band and surface potential; surface potential
    double pb;          // V, of the bulk junctions
};
struct mos_bulk {
    double is_d, is_s;  // A, saturation currents
    double cjd, cjs;    // F at 0 V, bottoms of the junctions
    double i_max, x_max_d, x_max_s;
    double id_o, vgs_o, vds_o;
    double csw_d, csw_s;      // F at 0 V, their side walls
    double c_ox;              // F, of the gate over the channel
    double c_gd, c_gs, c_gb;  // F, overlaps
    depletion bottom, side;   // of 1 F at 0 V
};
static_assert(sizeof(mos_channel) == 7 * sizeof(double) && sizeof(mos_bulk) == 30 * sizeof(double));

// What the levels have in common on their parameter lists, and what they find when something is not given.
struct mos_sheet {
    double as, ad, cbd, cbs, cgbo, cgdo, cgso, cj, cjsw, fc, is, js, l, ld, m, mj, mjsw, pb, pd, ps, temp, tnom, tox,
        u0, w;
    double gamma, kp, nsub, phi, vt0;  // mos_not_given or a value
};

// From the process where not given: kp from mobility and oxide, phi, gamma and the threshold of a gate doped against
// the bulk, from nsub. Without nsub as well: phi 0.6, gamma 0, vt0 0. phi is never below 0.1 V.
void derive_from_process(mos_sheet& s, double pol, const math_cnst_class& math_cnst);
// Everything at temp, from all parameters given. vt0 has its own sign, negative for a p-channel of enhancement type; so
// vbi at another temperature than tnom is no mirror of the n-channel's: the band gap enters with one sign, as
// published.
void adjust_to_temperature(const mos_sheet& s, double pol, const math_cnst_class& math_cnst, mos_channel& c,
                           mos_bulk& b);

// Rows d g s b, then their charges, and all derivatives.
struct mos_rows {
    double f[8], j[8][4];
};

inline void put(mos_rows& r, int row, double f, double d, double g, double s, double b) {
    r.f[row] = f;
    r.j[row][0] = d;
    r.j[row][1] = g;
    r.j[row][2] = s;
    r.j[row][3] = b;
}
// What makes the sum with the three rows before 0.
inline void put_last(mos_rows& r, int row) {
    r.f[row] = -(r.f[row - 3] + r.f[row - 2] + r.f[row - 1]);
    for (int k = 0; k < 4; ++k) r.j[row][k] = -(r.j[row - 3][k] + r.j[row - 2][k] + r.j[row - 1][k]);
}

// Junction from bulk to drain or source: its current and charge.
inline void mos_junction(double v, double vt, double is, double x_max, double gmin, double c_bottom, double c_side,
                         const mos_bulk& b, double& i, double& g, double& q, double& c) {
    junction_exponential(v, vt, is, x_max, gmin, i, g);
    q = c = 0;
    double q_1, c_1;
    if (c_bottom != 0) {
        depletion_charge(b.bottom, v, q_1, c_1);
        q = c_bottom * q_1;
        c = c_bottom * c_1;
    }
    if (c_side != 0) {
        depletion_charge(b.side, v, q_1, c_1);
        q += c_side * q_1;
        c += c_side * c_1;
    }
}

// All rows at terminal voltages v[4]. channel(vgs, vds, vbs, id, gm, gds, gmb) is asked with vds >= 0: for the opposite
// sign drain and source exchange their parts. gamma: of the charges. False if something left the range of numbers.
template <class Channel>
inline bool mos_at(const mos_channel& c, const mos_bulk& b, double gamma, double pol, double gmin, const double* v,
                   const Channel& channel, mos_rows& r) {
    const double vd = pol * v[0], vg = pol * v[1], vs = pol * v[2], vb = pol * v[3];
    const bool forward = vd >= vs;
    const double v_high = forward ? vd : vs, v_low = forward ? vs : vd;
    const double vgs = vg - v_low, vds = v_high - v_low, vbs = vb - v_low;

    double id, gm, gds, gmb;
    channel(vgs, vds, vbs, id, gm, gds, gmb);
    double i_d, gd, qd, cd, i_s, gs, qs, cs;
    mos_junction(vb - vd, c.vt, b.is_d, b.x_max_d, gmin, b.cjd, b.csw_d, b, i_d, gd, qd, cd);
    mos_junction(vb - vs, c.vt, b.is_s, b.x_max_s, gmin, b.cjs, b.csw_s, b, i_s, gs, qs, cs);
    mos_charge_slopes a;
    mos_charge(gamma, c.phi, vg - vb - (c.vbi - c.phi), vds, v_low - vb, a);

    // Of the channel: into terminal d, with its slopes at terminals d and s; what they leave of 0 is the gate's and
    // bulk's.
    const double low = -(gm + gds + gmb);
    const double i = pol * (forward ? id : -id), i_gate = forward ? gm : -gm, i_bulk = forward ? gmb : -gmb;
    const double i_at_d = forward ? gds : -low, i_at_s = forward ? low : -gds;
    put(r, 0, i - pol * i_d, i_at_d + gd, i_gate, i_at_s, i_bulk - gd);
    put(r, 1, 0, 0, 0, 0, 0);
    put(r, 2, -i - pol * i_s, -i_at_d, -i_gate, gs - i_at_s, -i_bulk - gs);
    put_last(r, 3);

    const double half = 0.5 * b.c_ox, n_g = half * a.qn_g, g_g = b.c_ox * a.qg_g;
    const double n_d = half * (forward ? a.qn_d : a.qn_s), n_s = half * (forward ? a.qn_s : a.qn_d);
    const double g_d = b.c_ox * (forward ? a.qg_d : a.qg_s), g_s = b.c_ox * (forward ? a.qg_s : a.qg_d);
    const double q_gd = b.c_gd * (vg - vd), q_gs = b.c_gs * (vg - vs), q_gb = b.c_gb * (vg - vb), n = half * a.qn;
    put(r, 4, pol * (n - q_gd - qd), n_d + b.c_gd + cd, n_g - b.c_gd, n_s, -(n_d + n_g + n_s) - cd);
    put(r, 5, pol * (b.c_ox * a.qg + q_gd + q_gs + q_gb), g_d - b.c_gd, g_g + b.c_gd + b.c_gs + b.c_gb, g_s - b.c_gs,
        -(g_d + g_s + g_g) - b.c_gb);
    put(r, 6, pol * (n - q_gs - qs), n_d, n_g - b.c_gs, n_s + b.c_gs + cs, -(n_d + n_g + n_s) - cs);
    put_last(r, 7);

    return voltages_in_range<4>(v) && std::isfinite(r.f[3] + r.f[7]);
}

// The channel's current into the drain terminal, A, as a meter at the terminal has it.
template <class Channel>
inline double mos_channel_current(double pol, const double* v, const Channel& channel) {
    const double vd = pol * v[0], vs = pol * v[2], v_low = vd < vs ? vd : vs;
    double id, gm, gds, gmb;
    channel(pol * v[1] - v_low, std::fabs(vd - vs), pol * v[3] - v_low, id, gm, gds, gmb);
    return vd < vs ? -pol * id : pol * id;
}

// ---- the elements of levels 1 and 3

// The places of its members in rparm, in the order of mos_sheet.
constexpr int n_mos_sheet = sizeof(mos_sheet) / sizeof(double);
inline mos_sheet mos_sheet_of(const double* rparm, const int (&place)[n_mos_sheet]) {
    double value[n_mos_sheet];
    for (int k = 0; k < n_mos_sheet; ++k) value[k] = rparm[place[k]];
    mos_sheet s;
    std::memcpy(&s, value, sizeof s);
    return s;
}

// Where an element keeps what it derives: a mos_channel from `channel` on, a mos_bulk from `bulk` on.
struct mos_places {
    int channel, bulk;
};
inline void adjust_to_temperature(const mos_sheet& s, double pol, const math_cnst_class& math_cnst,
                                  const mos_places& at, double* rparm, mos_channel& c) {
    mos_bulk b;
    std::memcpy(&b, rparm + at.bulk, sizeof b);  // i_max is given
    adjust_to_temperature(s, pol, math_cnst, c, b);
    std::memcpy(rparm + at.channel, &c, sizeof c);
    std::memcpy(rparm + at.bulk, &b, sizeof b);
}
template <class Channel>
inline bool mos_rows_of(const Channel& channel, const mos_places& at, const double* rparm, double pol, double gmin,
                        const double* v, mos_rows& r) {
    mos_channel c;
    mos_bulk b;
    std::memcpy(&c, rparm + at.channel, sizeof c);
    std::memcpy(&b, rparm + at.bulk, sizeof b);
    return mos_at(c, b, channel.gamma, pol, gmin, v, channel, r);
}

// What the element answers behind one_time_parms. True if its derivatives are left to differences, as numeric asks.
template <class Channel>
inline bool mos_answers(const Channel& channel, const mos_places& at, double pol, bool numeric, double* rparm,
                        double* v, double* f, double** dfdv, const flags_class* flags) {
    if (flags->dc || flags->trns || flags->startup) {
        mos_rows r;
        if (!mos_rows_of(channel, at, rparm, pol, flags->gmin, v, r)) {
            answer_out_of_range(4, 8, f, dfdv, flags);
            return false;
        }
        if (flags->function) std::copy_n(r.f, 8, f);
        if (flags->jacobian && !numeric)
            for (int j = 0; j < 8; ++j) std::copy_n(r.j[j], 4, dfdv[j]);
        return flags->jacobian && numeric;
    }
    if (flags->init_guess) {
        std::fill_n(v, 4, 0.0);
    } else if (flags->outvar_prm) {
        double* const shown = rparm + at.bulk + offsetof(mos_bulk, id_o) / sizeof(double);
        shown[0] = mos_channel_current(pol, v, channel);
        shown[1] = v[1] - v[2];
        shown[2] = v[0] - v[2];
    }
    return false;
}
