#include <algorithm>
#include <cmath>

#include "base/flags_class.h"
#include "base/numeric.h"
#include "library/basic/gbes1_class.h"
#include "models/block_functions.h"
#include "models/sampling.h"

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

// The mean time of the poles that are not at 0: a state that is large beside y would cost digits of the residual.
double time_of(int n, const double* b) {
    for (int k = 0; k < n; ++k)
        if (b[k] != 0.0) return std::pow(std::fabs(b[n] / b[k]), 1.0 / (n - k));
    return 1.0;
}

void filter_constants(const filter_form& w) {
    const double bn = w.b[w.n];
    for (int k = 0; k < w.n; ++k) w.c[k] = (w.a[k] - w.b[k] * (w.a[w.n] / bn)) / bn;
    if (w.n > 1) w.c[w.n] = time_of(w.n, w.b);
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
        by_z[0] = by_z[i] = 0.0;
        jac->dfdvr[1 + i][x] = flags->startup ? 0.0 : c;
        if (!last) by_z[i + 1] = flags->startup ? 0.0 : 1.0 / scale;
        if (flags->startup)
            by_z[i] = 1.0;
        else
            by_z[0] = -b;
    }
}

second_order second_order_filter(double k, double w0, double q, double low, double band, double high) {
    const double b1 = 1.0 / (q * w0), b2 = 1.0 / (w0 * w0);
    return {{k * low, k * band * b1, k * high * b2}, {1.0, b1, b2}};
}

void derivative_rows(int n, const double* a, double scale, const double* vr, const double* z, double* f,
                     gbes1_class* jac, const flags_class* flags) {
    constexpr int x = 0, y = 1;
    // a[0] + a[1] s ... of z[0]; the last derivative stands in no unknown, it is the row of the last one.
    double by_z[2] = {a[0], n > 1 ? a[1] / scale : 0.0};
    const int n_z = n > 1 ? 2 : 1;
    double last = a[n];
    for (int i = 1; i < n_z; ++i) last /= scale;
    const bool rests = flags->startup;
    if (flags->function) {
        double sum = vr[y];
        for (int i = 0; i < n_z; ++i) sum -= by_z[i] * z[i];
        f[n - 1] = rests ? sum : sum / last;
        if (n > 1) f[0] = rests ? z[1] : z[1] / scale;
        f[n] = z[0] - vr[x];
    }
    if (!flags->jacobian) return;
    const double by = rests ? 1.0 : last;
    jac->dfdvr[n - 1][y] = 1.0 / by;
    for (int i = 0; i < n_z; ++i) jac->dfdaux[n - 1][i] = -by_z[i] / by;
    if (n > 1) {
        jac->dfdaux[0][0] = 0.0;
        jac->dfdaux[0][1] = rests ? 1.0 : 1.0 / scale;
    }
    jac->dfdaux[n][0] = 1.0;
    jac->dfdvr[n][x] = -1.0;
}

void held_filter_rows(const first_order& w, double low, double high, const double* vr, const double* z, double z0,
                      double* f, gbes1_class* jac, const flags_class* flags) {
    constexpr int x = 0, y = 1;
    const bool rests = flags->startup;
    double g, slope;
    limit_x(z[0], low, high, g, slope);
    if (flags->function) {
        f[0] = vr[y] - g;
        f[1] = rests ? z[0] - z0 : (w.by_x * vr[x] + w.by_y * z[0]) / w.by;
    }
    if (flags->jacobian) {
        jac->dfdvr[0][y] = 1.0;
        jac->dfdaux[0][0] = -slope;
        jac->dfdvr[1][x] = rests ? 0.0 : w.by_x / w.by;
        jac->dfdaux[1][0] = rests ? 1.0 : w.by_y / w.by;
    }
}

void run_sampled_filter(const sampled_filter& w, const double* vr, double* f, gbes1_class* jac, flags_class* flags) {
    constexpr int x = 0, y = 1;
    const double t = flags->time_given, begin = begin_of_run(flags);
    if (flags->init_guess) {
        w.clear();
    } else if (flags->nexttime) {
        flags->time_nextbreak = w.times.next(t);
    } else if (flags->save_history) {
        // Before a transient, DC and start-up look alike here; DC leaves y at what an x gives that stands.
        const double num = w.form.sum_a() * vr[x], den = w.form.sum_b() * vr[y];
        const bool rests = std::fabs(den - num) <= 1e-9 * (std::fabs(den) + std::fabs(num));
        if (flags->iter_trns_1 < 0 && rests)
            w.settle(vr[x], vr[y], t);
        else if (w.take(vr[x], t, begin))
            flags->tell_event(-1.0, 0.0, true);
    } else if (flags->dc) {
        const double num = w.form.sum_a(), den = w.form.sum_b();
        if (flags->function) f[0] = den * vr[y] - num * vr[x];
        if (flags->jacobian) {
            jac->dfdvr[0][x] = -num;
            jac->dfdvr[0][y] = den;
        }
    } else if (is_solving(flags)) {
        double slope;
        const double value = w.value(vr[x], t, begin, slope);
        output_row(0, y, value, {slope}, vr, f, jac, flags);
    }
}
