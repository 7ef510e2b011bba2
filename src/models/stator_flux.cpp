#include "models/stator_flux.h"

#include <cmath>

#include "base/flags_class.h"
#include "library/basic/gbes1_class.h"
#include "models/block_functions.h"

namespace {
enum { vd, vq, id, iq, w_of_frame, n_rows = 5 };  // variables; rows: fd fq size angle te
}

void stator_flux::rows(bool turns, const double* start, const double* vr, double* f, gbes1_class* jac,
                       const flags_class* flags) const {
    const int fd = turns ? 5 : 4, fq = fd + 1;
    const double d = vr[fd], q = vr[fq], size = std::hypot(d, q), by = size > 0.0 ? 1.0 / size : 0.0;
    const double w = turns ? vr[w_of_frame] : 0.0, k = 0.75 * poles;
    if (flags->function) {
        f[0] = flags->startup ? d - start[0] : vr[vd] - rs * vr[id] + w * q;
        f[1] = flags->startup ? q - start[1] : vr[vq] - rs * vr[iq] - w * d;
        f[2] = vr[fd + 2] - size;
        f[3] = vr[fd + 3] - std::atan2(q, d);
        f[4] = vr[fd + 4] - k * (d * vr[iq] - q * vr[id]);
    }
    if (!flags->jacobian) return;
    double** g = jac->dfdvr;
    const double moves = flags->startup ? 0.0 : 1.0;
    g[0][vd] = g[1][vq] = moves;
    g[0][id] = g[1][iq] = -moves * rs;
    g[0][fd] = g[1][fq] = 1.0 - moves;
    if (turns) {
        g[0][w_of_frame] = moves * q;
        g[1][w_of_frame] = -moves * d;
        g[0][fq] = moves * w;
        g[1][fd] = -moves * w;
    }
    g[2][fd] = -by * d;
    g[2][fq] = -by * q;
    g[3][fd] = by * by * q;
    g[3][fq] = -by * by * d;
    g[4][fd] = -k * vr[iq];
    g[4][fq] = k * vr[id];
    g[4][id] = k * q;
    g[4][iq] = -k * d;
    for (int row = 2; row < n_rows; ++row) g[row][fd + row] = 1.0;
}

void stator_flux_ac_rows(bool turns, double freq, const std::complex<double>* vr, std::complex<double>* f,
                         gbac1_class* jac, const flags_class* flags) {
    const int fd = turns ? 5 : 4, fq = fd + 1;
    for (int row = 0; row < n_rows; ++row) {
        const ac_row r(row, vr, nullptr, f, jac, flags);
        if (row < 2) {
            const int other = row == 0 ? fq : fd;
            for (const int k : {vd + row, id + row}) r.variable_at_bias(k);
            if (turns)
                for (const int k : {static_cast<int>(w_of_frame), other}) r.variable_at_bias(k);
            r.variable(fd + row, {0.0, -freq});
            continue;
        }
        for (const int k : {fd, fq, fd + row}) r.variable_at_bias(k);
        if (row == 4)
            for (const int k : {id, iq}) r.variable_at_bias(k);
    }
}
