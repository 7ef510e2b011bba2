#include "models/bsim1.h"

#include "base/halt.h"
#include "base/math_cnst_class.h"
#include "models/voltage_limits.h"

namespace {

// max(x, 0), with the slopes of x above 0.
with_slopes not_negative(double y, double d, double b) {
    return y > 0 ? with_slopes{y, 0, d, b} : with_slopes{0, 0, 0, 0};
}

// What the bulk voltage alone decides. sqrt(phi - vbs) is followed up to vbs = phi/2; from there on a hyperbola with
// the same value and slope takes its place, which never reaches 0.
struct body {
    double s, s_b, depth, depth_b;  // sqrt(phi - vbs); phi - vbs
    double a, a_b;                  // body-effect coefficient
};
body body_at(const bsim1& p, double vbs) {
    body c;
    if (vbs <= p.phi / 2) {
        c.depth = p.phi - vbs;
        c.depth_b = -1;
        c.s = std::sqrt(c.depth);
        c.s_b = -0.5 / c.s;
    } else {
        const double r = 0.5 + vbs / p.phi;
        c.s = std::sqrt(p.phi / 2) / r;
        c.s_b = -c.s / (r * p.phi);
        c.depth = c.s * c.s;
        c.depth_b = 2 * c.s * c.s_b;
    }
    const double h = 1 / (1.744 + 0.8364 * c.depth), g = 1 - h, g_b = 0.8364 * h * h * c.depth_b;
    const double k = p.k1 / (2 * c.s);
    c.a = 1 + g * k;
    c.a_b = (g_b - g * c.s_b / c.s) * k;
    return c;
}

// Transconductance factor: a parabola in vds through the values at 0 and vdd with the slope given at vdd, a straight
// line beyond.
with_slopes beta_at(const bsim1& p, double vds, double vbs) {
    const with_slopes z = not_negative(p.beta_z + p.x2_beta_z * vbs, 0, p.x2_beta_z);
    const with_slopes s = not_negative(p.beta_s + p.x2_beta_s * vbs, 0, p.x2_beta_s);
    const double rise = std::max(p.x3_beta_s, 0.0);
    if (vds >= p.vdd) return not_negative(s.y + rise * (vds - p.vdd), rise, s.b);
    const double x = vds / p.vdd, w = x * (2 - x);
    return not_negative(z.y + (s.y - z.y) * w - rise * vds * (1 - x),
                        (s.y - z.y) * 2 * (1 - x) / p.vdd - rise * (1 - 2 * x), z.b + (s.b - z.b) * w);
}

// Strong inversion, by the overdrive e = vgs - vth > 0.
void add_strong(const bsim1& p, const body& c, const with_slopes& beta, const with_slopes& e, double vds, double vbs,
                with_slopes& id) {
    const with_slopes u0 = not_negative(p.u0 + p.x2u0 * vbs, 0, p.x2u0);
    const with_slopes u1 = not_negative(p.u1 + p.x2u1 * vbs + p.x3u1 * (vds - p.vdd), p.x3u1, p.x2u1);
    const double d0 = 1 / (1 + u0.y * e.y);
    const double vc = u1.y * e.y / c.a, r = std::sqrt(1 + 2 * vc);
    double n, n_e, n_a, n_u1, n_v;  // id/beta and its slopes
    if (vds < 2 * e.y / (c.a * (1 + r))) {
        const double d1 = 1 / (1 + u1.y * vds), q = d0 * d1;
        n = vds * (e.y - c.a / 2 * vds) * q;
        n_e = vds * q;
        n_a = -vds * vds / 2 * q;
        n_u1 = -n * vds * d1;
        n_v = (e.y - c.a * vds) * q - n * u1.y * d1;
    } else {
        const double k = (1 + vc + r) / 2, k_vc = (1 + 1 / r) / 2;
        const double per_e = e.y / (2 * c.a * k) * d0;
        n = e.y * per_e;
        const double n_vc = -n * k_vc / k;
        n_e = 2 * per_e + n_vc * u1.y / c.a;
        n_a = -(n + n_vc * vc) / c.a;
        n_u1 = n_vc * e.y / c.a;
        n_v = 0;
    }
    n_e -= n * u0.y * d0;
    const double n_u0 = -n * e.y * d0;
    id.y += beta.y * n;
    id.g += beta.y * n_e;
    id.d += beta.d * n + beta.y * (n_e * e.d + n_u1 * u1.d + n_v);
    id.b += beta.b * n + beta.y * (n_e * e.b + n_a * c.a_b + n_u0 * u0.b + n_u1 * u1.b);
}

// Subthreshold current, in all regions: I_exp I_limit/(I_exp + I_limit) with I_exp = beta vt^2 e^1.8 exp(e/(n vt)) and
// I_limit = beta (3 vt)^2/2, times 1 - exp(-vds/vt). The publication has this last factor in I_exp, so that in strong
// inversion the sum would rise by I_limit within a fraction of a nanovolt about vds = 0; as a factor of the whole it
// has the same limits and a slope that a solver can follow.
void add_subthreshold(const bsim1& p, const with_slopes& e, double vds, double vbs, with_slopes& id) {
    constexpr double limit = 4.5, e_1_8 = 6.0496474644129465;
    with_slopes n = {p.n0 + p.nb * vbs + p.nd * vds, 0, p.nd, p.nb};
    if (n.y < 0.5) n = {0.5, 0, 0, 0};
    const double per = 1 / (n.y * p.vt), u = e.y * per;
    // Beyond 40 an exponential is below the last digit of what it is added to.
    const double z = u > 40 ? 0 : std::exp(-std::fabs(u));
    const double w = u > 0 ? e_1_8 / (limit * z + e_1_8) : e_1_8 * z / (limit + e_1_8 * z);
    const double leave = vds > 40 * p.vt ? 0 : std::exp(-vds / p.vt), open = 1 - leave;
    const double top = p.beta_z * p.vt * p.vt * limit, slope = top * open * w * (1 - w);
    id.y += top * w * open;
    id.g += slope * per;
    id.d += slope * (e.d * per - u * n.d / n.y) + top * w * leave / p.vt;
    id.b += slope * (e.b * per - u * n.b / n.y);
}

// The drain's part of the channel's charge, as a share of -c_ox e, and its slope; y goes from 0 (vds = 0) to 1
// (saturated). xpart 0: 40 to 60 of the saturated charge, 0.5: half and half, 1: 0 to 100. spread: y times the average
// of the channel voltage over vds.
void channel_share(double xpart, double y, double spread, double spread_y, double& share, double& share_y) {
    const double h = 1 / (1 - y / 2);
    if (xpart == 0) {
        const double k = y * (1.0 / 6 - y / 8 + y * y / 40) * h * h;
        share = 0.5 - y / 2 + k;
        share_y = -0.5 + (1.0 / 6 - y / 4 + 3 * y * y / 40) * h * h + k * h;
    } else if (xpart == 1) {
        share = 0.5 - 0.75 * y + y * y * h / 8;
        share_y = -0.75 + y * h / 4 + y * y * h * h / 16;
    } else {
        share = (1 - spread) / 2;
        share_y = -spread_y / 2;
    }
}

// Charges of the long channel; their threshold has no k2 and no eta.
void add_charges(const bsim1& p, const body& c, double vgs, double vds, bsim1_channel& at) {
    const double x = vgs - p.vfb - p.phi + c.depth;  // gate to bulk above flat band
    const double e = x - c.depth - p.k1 * c.s, e_b = -p.k1 * c.s_b;
    const double k = p.c_ox;
    if (x <= 0) {  // accumulation
        at.qg = {k * x, k, 0, k * c.depth_b};
    } else if (e <= 0) {  // depletion
        const double r = std::sqrt(p.k1 * p.k1 + 4 * x), x_q = k * p.k1 / r;
        at.qg = {k * p.k1 / 2 * (r - p.k1), x_q, 0, x_q * c.depth_b};
    } else {  // inversion; beyond vds = e/a the channel is saturated
        const bool saturated = c.a * vds >= e;
        const double y = saturated ? 1 : c.a * vds / e, v = saturated ? e / c.a : vds;
        const double h = 1 / (1 - y / 2), part = 0.5 - y / 12 * h, part_y = -h * h / 12;
        const double spread = y * part, spread_y = part + y * part_y;
        const double loss = v * part, l_v = spread_y, l_e = -part_y * y * y / c.a, l_a = part_y * v * y / c.a;
        const double l_b = l_e * e_b + l_a * c.a_b;
        at.qg = {k * (e + p.k1 * c.s - loss), k * (1 - l_e), -k * l_v, -k * l_b};
        at.qb = {k * ((1 - c.a) * loss - p.k1 * c.s), k * (1 - c.a) * l_e, k * (1 - c.a) * l_v,
                 k * (e_b + (1 - c.a) * l_b - c.a_b * loss)};
        double share, share_y;
        channel_share(p.xpart, y, spread, spread_y, share, share_y);
        const double q_e = -share + y * share_y, q_a = -share_y * v;
        at.qd = {-k * e * share, k * q_e, -k * c.a * share_y, k * (q_e * e_b + q_a * c.a_b)};
        return;
    }
    at.qb = {-at.qg.y, -at.qg.g, 0, -at.qg.b};
    at.qd = {0, 0, 0, 0};
}

}  // namespace

bsim1_channel channel_at(const bsim1& p, double vgs, double vds, double vbs) {
    const body c = body_at(p, vbs);
    with_slopes eta = {p.eta + p.x2e * vbs + p.x3e * (vds - p.vdd), 0, p.x3e, p.x2e};
    if (eta.y <= 0) eta = {0, 0, 0, 0};
    if (eta.y >= 1) eta = {1, 0, 0, 0};
    const double vth = p.vfb + p.phi + p.k1 * c.s - p.k2 * c.depth - eta.y * vds;
    const with_slopes e = {vgs - vth, 1, eta.y + vds * eta.d, p.k2 * c.depth_b - p.k1 * c.s_b + vds * eta.b};
    bsim1_channel at;
    at.id = {0, 0, 0, 0};
    if (e.y > 0) add_strong(p, c, beta_at(p, vds, vbs), e, vds, vbs, at.id);
    if (p.n0 < 200) add_subthreshold(p, e, vds, vbs, at.id);
    add_charges(p, c, vgs, vds, at);
    return at;
}

bool bsim1_functions(const bsim1& p, double pol, double gmin, const double* v, double* f, double** dfdv, double* id) {
    const double vg = pol * v[1], vb = pol * v[3];
    const bool exchanged = pol * (v[0] - v[2]) < 0;
    const int d = exchanged ? 2 : 0, s = 2 - d;
    const double vd = pol * v[d], vs = pol * v[s];
    const bsim1_channel at = channel_at(p, vg - vs, vd - vs, vb - vs);
    if (id) *id = pol * (exchanged ? -at.id.y : at.id.y);

    struct junction {
        double i, g, q, c;
    };
    const auto junction_of = [&](double u, double is, double x_max, double c_bottom, double c_wall) {
        junction j;
        if (u < -40 * p.vt) {  // the exponential is below the last digit of 1
            j.i = gmin * u - is;
            j.g = gmin;
        } else {
            junction_exponential(u, p.vt, is, x_max, gmin, j.i, j.g);
        }
        depletion_charge({c_bottom, p.pb, p.mj, p.fc, p.f1, p.f2, p.f3}, u, j.q, j.c);
        if (c_wall != 0) {
            double q, c;
            depletion_charge({c_wall, p.pbsw, p.mjsw, p.fc, p.f1w, p.f2w, p.f3w}, u, q, c);
            j.q += q;
            j.c += c;
        }
        return j;
    };
    const double v_d = pol * v[0], v_s = pol * v[2];
    const junction bd = junction_of(vb - v_d, p.is_d, p.x_max_d, p.c_d, p.c_dw);
    const junction bs = junction_of(vb - v_s, p.is_s, p.x_max_s, p.c_s, p.c_sw);
    const double q_gd = p.c_gdo * (vg - v_d), q_gs = p.c_gso * (vg - v_s), q_gb = p.c_gbo * (vg - vb);

    const double q_drain = exchanged ? -(at.qg.y + at.qb.y + at.qd.y) : at.qd.y;
    f[0] = pol * ((exchanged ? -at.id.y : at.id.y) - bd.i);
    f[1] = 0;
    f[3] = pol * (bd.i + bs.i);
    f[2] = -(f[0] + f[3]);
    f[4] = pol * (q_drain - bd.q - q_gd);
    f[5] = pol * (at.qg.y + q_gd + q_gs + q_gb);
    f[7] = pol * (at.qb.y + bd.q + bs.q - q_gb);
    f[6] = -(f[4] + f[5] + f[7]);
    if (!std::isfinite(f[2] + f[6])) return false;
    if (!dfdv) return true;

    const auto set = [&](double* row, const with_slopes& x, double sign) {
        row[1] = sign * x.g;
        row[d] = sign * x.d;
        row[3] = sign * x.b;
        row[s] = -sign * (x.g + x.d + x.b);
    };
    const auto between = [](double* row, int k, int l, double y) {
        row[k] += y;
        row[l] -= y;
    };
    set(dfdv[0], at.id, exchanged ? -1 : 1);
    between(dfdv[0], 0, 3, bd.g);
    dfdv[3][0] = -bd.g;
    dfdv[3][1] = 0;
    dfdv[3][2] = -bs.g;
    dfdv[3][3] = bd.g + bs.g;
    set(dfdv[4 + d], at.qd, 1);
    set(dfdv[5], at.qg, 1);
    set(dfdv[7], at.qb, 1);
    if (exchanged)
        for (int k = 0; k < 4; ++k) dfdv[4][k] = -(dfdv[5][k] + dfdv[6][k] + dfdv[7][k]);
    between(dfdv[4], 0, 3, bd.c);
    between(dfdv[4], 0, 1, p.c_gdo);
    between(dfdv[5], 1, 0, p.c_gdo);
    between(dfdv[5], 1, 2, p.c_gso);
    between(dfdv[5], 1, 3, p.c_gbo);
    between(dfdv[7], 3, 0, bd.c);
    between(dfdv[7], 3, 2, bs.c);
    between(dfdv[7], 3, 1, p.c_gbo);
    for (int k = 0; k < 4; ++k) {
        dfdv[1][k] = 0;
        dfdv[2][k] = -(dfdv[0][k] + dfdv[3][k]);
        dfdv[6][k] = -(dfdv[4][k] + dfdv[5][k] + dfdv[7][k]);
    }
    return true;
}

bool limit_steps(const bsim1& p, const double* kept, double* x) {
    // True if the limiter changed v; what the limiter leaves alone keeps its last bit.
    const auto moved = [](double& v, double v_limited) {
        const bool change = v_limited != v;
        v = v_limited;
        return change;
    };
    const auto gate = [&](double& v, double v_old) {
        double u = v;
        devfetlim3(u, v_old, p.vt0);
        return moved(v, u);
    };
    const auto drain = [&](double& v, double v_old, double sign) {
        double u = sign * v;
        devlimvds3(u, sign * v_old);
        return moved(v, sign * u);
    };
    const auto bulk = [&](double& v, double v_old) {
        double u = v;
        pnlimit(u, p.vt, v_old);
        return moved(v, u);
    };
    double &vgs = x[0], &vds = x[1], &vbs = x[2];
    double vgd = vgs - vds;
    bool changed = false;
    if (kept[1] >= 0) {
        if (gate(vgs, kept[0])) {
            vds = vgs - vgd;
            changed = true;
        }
        changed |= drain(vds, kept[1], 1);
    } else {
        bool by_drain = gate(vgd, kept[0] - kept[1]);
        if (by_drain) vds = vgs - vgd;
        by_drain |= drain(vds, kept[1], -1);
        if (by_drain) vgs = vgd + vds;
        changed = by_drain;
    }
    if (vds >= 0) return bulk(vbs, kept[2]) || changed;
    double vbd = vbs - vds;
    if (!bulk(vbd, kept[2] - kept[1])) return changed;
    vbs = vbd + vds;
    return true;
}

void continue_straight(double pol, const double* v, const double* limited, double** dfdv, double* f) {
    const double vgs = v[1] - v[2] - pol * limited[0], vds = v[0] - v[2] - pol * limited[1],
                 vbs = v[3] - v[2] - pol * limited[2];
    for (int j = 0; j < 8; ++j) f[j] += dfdv[j][1] * vgs + dfdv[j][0] * vds + dfdv[j][3] * vbs;
}

bsim1 prepare(const bsim1_given& g, const math_cnst_class& math_cnst) {
    const double leff = g.l * 1e6 - g.dl, weff = g.w * 1e6 - g.dw;  // micrometres
    if (!(leff > 0)) halt({"mos_bsim1: leff1 < 0 !!"});
    if (!(weff > 0)) halt({"mos_bsim1: weff1 < 0 !!"});
    if (g.xpart != 0 && g.xpart != 0.5 && g.xpart != 1) halt({line("mos_bsim1.ebe: xpart = ", g.xpart, "?")});
    bsim1 p;
    double electrical[20];
    for (int j = 0; j < 20; ++j) electrical[j] = g.raw[3 * j] + g.raw[3 * j + 1] / leff + g.raw[3 * j + 2] / weff;
    const double cox = 3.453e-13 / (g.tox * 1e-4);  // F/cm^2
    const double to_beta = cox * weff / leff;
    const auto& e = electrical;
    p.vfb = e[0];
    p.phi = std::max(e[1], 0.1);
    p.k1 = std::max(e[2], 0.0);
    p.k2 = e[3];
    p.eta = e[4];
    p.beta_z = e[5] * to_beta;
    p.x2_beta_z = e[6] * to_beta;
    p.x2e = e[7];
    p.x3e = e[8];
    p.u0 = e[9];
    p.x2u0 = e[10];
    p.u1 = e[11] / leff;
    p.x2u1 = e[12] / leff;
    p.x3u1 = e[13] / leff;
    p.beta_s = e[14] * to_beta;
    p.x2_beta_s = e[15] * to_beta;
    p.x3_beta_s = e[16] * to_beta;
    p.n0 = e[17];
    p.nb = e[18];
    p.nd = e[19];
    p.vdd = g.vdd;
    p.vt = math_cnst.boltzmann * g.temp / math_cnst.q;
    p.c_ox = cox * weff * leff * 1e-8;
    p.c_gdo = g.cgdo * weff * 1e-6;
    p.c_gso = g.cgso * weff * 1e-6;
    p.c_gbo = g.cgbo * leff * 1e-6;
    p.xpart = g.xpart;
    p.vt0 = p.vfb + p.phi + p.k1 * std::sqrt(p.phi) - p.k2 * p.phi;
    const auto saturation = [&](double area) { return g.js * area > 0 ? g.js * area : g.is; };
    const auto exponent = [&](double is) { return is > 0 ? std::log(g.i_max / is) : 0; };
    p.is_d = saturation(g.ad);
    p.is_s = saturation(g.as);
    p.x_max_d = exponent(p.is_d);
    p.x_max_s = exponent(p.is_s);
    p.c_d = g.cj * g.ad;
    p.c_s = g.cj * g.as;
    p.c_dw = g.cjsw * g.pd;
    p.c_sw = g.cjsw * g.ps;
    p.fc = g.fc;
    depletion bottom = {0, std::max(g.pb, 0.1), g.mj, g.fc, 0, 0, 0},
              wall = {0, std::max(g.pbsw, 0.1), g.mjsw, g.fc, 0, 0, 0};
    prepare(bottom);
    prepare(wall);
    p.pb = bottom.vj;
    p.mj = bottom.m;
    p.f1 = bottom.f1;
    p.f2 = bottom.f2;
    p.f3 = bottom.f3;
    p.pbsw = wall.vj;
    p.mjsw = wall.m;
    p.f1w = wall.f1;
    p.f2w = wall.f2;
    p.f3w = wall.f3;
    return p;
}
