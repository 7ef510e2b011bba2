#include "models/heat.h"

#include <algorithm>
#include <cmath>

#include "base/flags_class.h"
#include "library/basic/gbes1_class.h"

double switching_energy(const double* i, const double* e, int n, double current) {
    if (!(current > 0.0)) return 0.0;
    double i0 = 0.0, e0 = 0.0;
    int k = 0;
    while (k + 1 < n && current > i[k]) {
        i0 = i[k];
        e0 = e[k];
        ++k;
    }
    return std::max(0.0, e0 + (e[k] - e0) * ((current - i0) / (i[k] - i0)));
}

void loss_account::clear() const {
    std::fill(s, s + 2 * n_slots, 0.0);
    s[time] = s[n_slots + time] = HUGE_VAL;
}

bool loss_account::take(const loss_sheet& sheet, double v, double i, double t) const {
    if (t < s[time])
        std::copy(s + n_slots, s + 2 * n_slots, s);
    else
        std::copy(s, s + n_slots, s + n_slots);
    const double t0 = s[time], v0 = s[volt], i0 = s[amp], h = t - t0;
    s[time] = t;
    s[volt] = v;
    s[amp] = i;
    if (h == 0.0) return false;
    if (h < 0.0) {  // the first point, of this run or of one that begins anew
        for (const slot k : {cond, on, off, rr, count, mean}) s[k] = 0.0;
        s[base] = sheet.t_avg > 0.0 ? 0.0 : t;
        return false;
    }
    const bool blocked = v0 > sheet.v_th, blocks = v > sheet.v_th;
    const auto at_voltage = [&](double u) { return std::pow(u / sheet.v_ref, sheet.k_v); };
    if (blocked == blocks) {
        s[cond] += h / 6.0 * (2.0 * (v0 * i0 + v * i) + v0 * i + v * i0);
    } else {
        s[cond] += h * v * i;
        s[count] += 1.0;
        if (blocked)
            s[on] += switching_energy(sheet.i, sheet.e_on, sheet.n, i) * at_voltage(v0);
        else if (i0 > 0.0)
            s[off] += switching_energy(sheet.i, sheet.e_off, sheet.n, i0) * at_voltage(v);
        else
            s[rr] += sheet.e_rr * (-i0 / sheet.i_rr) * at_voltage(v);
    }
    if (!(sheet.t_avg > 0.0)) {
        s[mean] = energy() / (t - s[base]);  // the base is the time of the first point
        return false;
    }
    if (std::floor(t / sheet.t_avg + 1e-6) == std::floor(t0 / sheet.t_avg + 1e-6)) return false;
    s[mean] = (energy() - s[base]) / sheet.t_avg;
    s[base] = energy();
    return true;
}

double next_span(double t_avg, double t) {
    const double end = (std::floor(t / t_avg + 1e-6) + 1.0) * t_avg;
    return end > t ? end : std::nextafter(t, HUGE_VAL);
}

namespace {
constexpr int x = 0, y = 1;  // variables of the chains
}

void foster_rows(const double* r, const double* tau, double t_amb, const double* vr, const double* z, double* f,
                 gbes1_class* jac, const flags_class* flags) {
    const bool held = flags->startup;
    if (flags->function) f[0] = vr[y] - t_amb - (z[0] + z[1] + z[2] + z[3]);
    if (flags->jacobian) {
        jac->dfdvr[0][y] = 1.0;
        std::fill(jac->dfdaux[0], jac->dfdaux[0] + n_thermal, -1.0);
    }
    for (int k = 0; k < n_thermal; ++k) {
        if (flags->function) f[1 + k] = held ? z[k] : (r[k] * vr[x] - z[k]) / tau[k];
        if (!flags->jacobian) continue;
        jac->dfdvr[1 + k][x] = held ? 0.0 : r[k] / tau[k];
        jac->dfdaux[1 + k][k] = held ? 1.0 : -1.0 / tau[k];
    }
}

void cauer_rows(int n, const double* r, const double* c, double t_amb, const double* vr, const double* z, double* f,
                gbes1_class* jac, const flags_class* flags) {
    const bool held = flags->startup;
    if (flags->function) f[0] = vr[y] - t_amb - z[0];
    if (flags->jacobian) {
        jac->dfdvr[0][y] = 1.0;
        jac->dfdaux[0][0] = -1.0;
    }
    for (int k = 0; k < n_thermal; ++k) {
        const bool used = k < n, first = k == 0, last = k + 1 == n;
        // W/K to the node before and to the one behind, and K/J of this one; a node that is not used fades in 1 s.
        const double before = used && !first ? 1.0 / r[k - 1] : 0.0, behind = used ? 1.0 / r[k] : 1.0;
        const double per_c = used ? 1.0 / c[k] : 1.0;
        const double heat = first ? vr[x] : before * (z[k - 1] - z[k]);
        const double z_next = used && !last ? z[k + 1] : 0.0;
        if (flags->function) f[1 + k] = held ? z[k] : per_c * (heat - behind * (z[k] - z_next));
        if (!flags->jacobian) continue;
        double* by_z = jac->dfdaux[1 + k];
        by_z[k] = held ? 1.0 : -per_c * (before + behind);
        if (first)
            jac->dfdvr[1][x] = held ? 0.0 : per_c;
        else
            by_z[k - 1] = held ? 0.0 : per_c * before;
        if (k + 1 < n_thermal) by_z[k + 1] = held || !used || last ? 0.0 : per_c * behind;
    }
}
