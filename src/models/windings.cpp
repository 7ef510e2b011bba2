#include "models/windings.h"

namespace {
// Rows of the saturating pair, and its unknowns.
enum row { at_psi = 4, at_i = 6, at_start = 8, at_held = 12 };
enum unknown { i_0, i_1, psi_0, psi_1 };

void start_windings(const saturating_pair& c, const double* stparm, const double* v, double* aux, const double* auxs,
                    double* f, ebes1_class* jac, const flags_class* flags) {
    const double inner = auxs[0] - c.g_core * winding_voltage(v, 0), flux = c.flux(c.magnetising(v, auxs));
    aux[i_0] = auxs[0];
    aux[i_1] = auxs[1];
    aux[psi_0] = c.leakage[0] * inner + flux;
    aux[psi_1] = c.leakage[1] * auxs[1] + c.ratio * flux;
    winding_currents<2>(auxs, jac->dfdauxs, at_start, f, flags);
    if (flags->function) {
        f[at_held] = inner - stparm[0];
        f[at_held + 1] = auxs[1] - stparm[1];
    }
    if (flags->jacobian) {
        by_winding(jac->dfdv[at_held], 0, -c.g_core);
        jac->dfdauxs[at_held][0] = 1.0;
        jac->dfdauxs[at_held + 1][1] = 1.0;
    }
}
}  // namespace

void saturating_windings(const saturating_pair& c, const double* stparm, double* v, double* aux, const double* auxs,
                         double* f, ebes1_class* jac, const flags_class* flags) {
    if (flags->startup) {
        start_windings(c, stparm, v, aux, auxs, f, jac, flags);
    } else if (flags->dc || flags->trns) {
        winding_currents<2>(aux, jac->dfdaux, 0, f, flags);
        const double im = c.magnetising(v, aux), turns[] = {1.0, c.ratio}, loss[] = {c.g_core, 0.0};
        for (int k = 0; k < 2; ++k) {
            const double per_leakage = 1.0 / c.leakage[k];
            if (flags->function) {
                f[at_psi + k] = winding_voltage(v, k);
                f[at_i + k] =
                    (aux[psi_0 + k] - turns[k] * c.flux(im)) * per_leakage - aux[k] + loss[k] * winding_voltage(v, k);
            }
            if (flags->jacobian) {
                const double by_im = -turns[k] * c.slope(im) * per_leakage;
                by_winding(jac->dfdv[at_psi + k], k, 1.0);
                jac->dfdaux[at_psi + k][psi_0 + k] = 0.0;
                by_winding(jac->dfdv[at_i + k], 0, loss[k] - c.g_core * by_im);
                jac->dfdaux[at_i + k][i_0] = by_im - (k == 0 ? 1.0 : 0.0);
                jac->dfdaux[at_i + k][i_1] = c.ratio * by_im - (k == 1 ? 1.0 : 0.0);
                jac->dfdaux[at_i + k][psi_0 + k] = per_leakage;
            }
        }
    } else if (flags->init_guess) {
        std::fill_n(v, 4, 0.0);
        std::fill_n(aux, 4, 0.0);
    }
}

void saturating_impedances(double freq, const std::complex<double>* v, const std::complex<double>* aux,
                           std::complex<double>* f, ebac1_class* jac, const ebes1_class* ebe_jac,
                           const flags_class* flags) {
    const std::complex<double> jw = {0.0, freq};
    winding_currents<2>(aux, jac->dfdaux, 0, f, flags);
    for (int k = 0; k < 2; ++k) {
        const double *by_v = ebe_jac ? ebe_jac->dfdv[at_i + k] : nullptr,
                     *by_aux = ebe_jac ? ebe_jac->dfdaux[at_i + k] : nullptr;
        if (!by_v) {  // no bias point: open
            if (flags->function) f[4 + k] = aux[k];
            if (flags->jacobian) jac->dfdaux[4 + k][k] = 1.0;
            continue;
        }
        if (flags->function) {
            f[4 + k] = by_aux[psi_0 + k] * winding_voltage(v, k);
            for (int t = 0; t < 4; ++t) f[4 + k] += jw * by_v[t] * v[t];
            for (int i = 0; i < 2; ++i) f[4 + k] += jw * by_aux[i] * aux[i];
        }
        if (flags->jacobian) {
            for (int t = 0; t < 4; ++t) jac->dfdv[4 + k][t] = jw * by_v[t];
            jac->dfdv[4 + k][2 * k] += by_aux[psi_0 + k];
            jac->dfdv[4 + k][2 * k + 1] -= by_aux[psi_0 + k];
            for (int i = 0; i < 2; ++i) jac->dfdaux[4 + k][i] = jw * by_aux[i];
        }
    }
}
