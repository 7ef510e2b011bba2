// reactances.h -- rows of capacitors and inductors, between the terminals of an element or one pair of several. Always
// inlined, so that the loops of an element with two terminals are gone.
#pragma once
#include "base/flags_class.h"
#include "library/basic/ebes1_class.h"

// Terminals 0 to n_nd - 1 of an element are pairs (0, 1), (2, 3) ...; the reactance lies between p and p + 1. The rows
// of the other pairs are 0.
struct terminal_pair {
    int n_nd = 2, p = 0;
    // 1 at the terminal that the current enters, -1 where it leaves.
    double sign(int k) const { return k == p ? 1.0 : k == p + 1 ? -1.0 : 0.0; }
};

// A charge q, A s, of the slope c, F, by the voltage of the pair. Rows: n_nd terminals, whose currents are the
// derivatives of the charges; n_nd charges; in start-up n_nd terminals with the current auxs 0, and that the voltage is
// v0. locv: charges, which in the periodic system are unknowns of the solver.
[[gnu::always_inline]] inline void capacitor_rows(terminal_pair at, double c, double q, double v0, const double* v,
                                                  const double* auxs, double* locv, double* f, ebes1_class* jac,
                                                  const flags_class* flags) {
    if (!flags->ssw)
        for (int k = 0; k < at.n_nd; ++k) locv[k] = at.sign(k) * q;
    if (flags->startup) {
        const int first = 2 * at.n_nd, own = 3 * at.n_nd;
        if (flags->function) {
            for (int k = 0; k < at.n_nd; ++k) f[first + k] = at.sign(k) * auxs[0];
            f[own] = v[at.p] - v[at.p + 1] - v0;
        }
        if (flags->jacobian)
            for (int k = 0; k < at.n_nd; ++k) {
                jac->dfdauxs[first + k][0] = at.sign(k);
                jac->dfdv[own][k] = at.sign(k);
            }
        return;
    }
    for (int k = 0; k < at.n_nd; ++k) {
        if (flags->function) {
            f[k] = 0.0;
            f[at.n_nd + k] = at.sign(k) * q;
        }
        if (flags->jacobian) {
            jac->dfdv[at.n_nd + k][k] = at.sign(k) * at.sign(k) * c;
            jac->dfdv[at.n_nd + k][k ^ 1] = at.sign(k) * at.sign(k ^ 1) * c;
        }
    }
}

// An inductance l, H, not 0: di/dt = v/l, i the unknown 0. Rows: n_nd terminals, the state; in start-up n_nd terminals
// with the current auxs 0, and that it is i0.
[[gnu::always_inline]] inline void inductor_rows(terminal_pair at, double l, double i0, const double* v, double* aux,
                                                 const double* auxs, double* f, ebes1_class* jac,
                                                 const flags_class* flags) {
    if (flags->startup) {
        const int first = at.n_nd + 1, own = first + at.n_nd;
        aux[0] = auxs[0];
        if (flags->function) {
            for (int k = 0; k < at.n_nd; ++k) f[first + k] = at.sign(k) * auxs[0];
            f[own] = auxs[0] - i0;
        }
        if (flags->jacobian) {
            for (int k = 0; k < at.n_nd; ++k) jac->dfdauxs[first + k][0] = at.sign(k);
            jac->dfdauxs[own][0] = 1.0;
        }
        return;
    }
    const double by_v = 1.0 / l;
    if (flags->function) {
        for (int k = 0; k < at.n_nd; ++k) f[k] = at.sign(k) * aux[0];
        f[at.n_nd] = (v[at.p] - v[at.p + 1]) * by_v;
    }
    if (flags->jacobian) {
        for (int k = 0; k < at.n_nd; ++k) {
            jac->dfdaux[k][0] = at.sign(k);
            jac->dfdv[at.n_nd][k] = at.sign(k) * by_v;
        }
        jac->dfdaux[at.n_nd][0] = 0.0;
    }
}
