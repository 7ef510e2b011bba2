#include <algorithm>
#include <cmath>

#include "base/flags_class.h"
#include "library/basic/gbes1_class.h"
#include "models/block_functions.h"

bool is_solving(const flags_class* flags) { return flags->dc || flags->trns || flags->startup; }

void output_row(int row, int out, double g, std::initializer_list<double> slope, const double* vr, double* f,
                gbes1_class* jac, const flags_class* flags) {
    if (flags->function) f[row] = vr[out] - g;
    if (flags->jacobian) {
        double* cell = jac->dfdvr[row];
        cell[out] = 1.0;
        for (const double s : slope) *cell++ = -s;
    }
}

void state_row(const first_order& w, double y0, const double* vr, double* f, gbes1_class* jac,
               const flags_class* flags) {
    constexpr int row = 0, x = 0, y = 1;
    if (flags->function) f[row] = flags->startup ? vr[y] - y0 : (w.by_x * vr[x] + w.by_y * vr[y]) / w.by;
    if (flags->jacobian) {
        jac->dfdvr[row][x] = flags->startup ? 0.0 : w.by_x / w.by;
        jac->dfdvr[row][y] = flags->startup ? 1.0 : w.by_y / w.by;
    }
}

void filter_constants(const filter_form& w) {
    const double bn = w.b[w.n];
    for (int k = 0; k < w.n; ++k) w.c[k] = (w.a[k] - w.b[k] * (w.a[w.n] / bn)) / bn;
    if (w.n == 1) return;
    // The mean time of the poles that are not at 0: a state that is large beside y would cost digits of the residual.
    double& scale = w.c[w.n];
    scale = 1.0;
    for (int k = 0; k < w.n; ++k)
        if (w.b[k] != 0.0) {
            scale = std::pow(std::fabs(bn / w.b[k]), 1.0 / (w.n - k));
            break;
        }
}

void filter_rows(const filter_form& w, const double* vr, const double* z, const double* z0, double* f, gbes1_class* jac,
                 const flags_class* flags) {
    constexpr int x = 0, y = 1;
    const double bn = w.b[w.n], d = w.a[w.n] / bn, scale = w.n > 1 ? w.c[w.n] : 1.0;
    if (flags->function) f[0] = vr[y] - d * vr[x] - z[0];
    if (flags->jacobian) {
        jac->dfdvr[0][x] = -d;
        jac->dfdvr[0][y] = 1.0;
        jac->dfdaux[0][0] = -1.0;
    }
    double power = 1.0;
    for (int i = 0; i < w.n; ++i, power *= scale) {
        const int k = w.n - 1 - i;
        const double c = power * w.c[k], b = power * (w.b[k] / bn);
        const bool last = i == w.n - 1;
        if (flags->function)
            f[1 + i] = flags->startup ? z[i] - z0[i] : c * vr[x] - b * z[0] + (last ? 0.0 : z[i + 1] / scale);
        if (!flags->jacobian) continue;
        double* by_z = jac->dfdaux[1 + i];
        std::fill(by_z, by_z + w.n, 0.0);
        jac->dfdvr[1 + i][x] = flags->startup ? 0.0 : c;
        if (flags->startup) {
            by_z[i] = 1.0;
        } else {
            by_z[0] = -b;
            if (!last) by_z[i + 1] = 1.0 / scale;
        }
    }
}
