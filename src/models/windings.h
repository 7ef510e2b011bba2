// windings.h -- transformers. Of n windings, winding k stands from terminal 2k to terminal 2k + 1; its current flows
// into terminal 2k, where its dot is, and is unknown k. The same of small signals, where T is complex.
#pragma once
#include <algorithm>
#include <array>
#include <cmath>
#include <complex>

#include "base/flags_class.h"
#include "base/halt.h"
#include "library/basic/ebac1_class.h"
#include "library/basic/ebes1_class.h"

template <class T>
T winding_voltage(const T* v, int k) {
    return v[2 * k] - v[2 * k + 1];
}

// The rows of the terminals, from `row` on. dfdi: the Jacobian table of the currents.
template <int n, class T>
void winding_currents(const T* i, T** dfdi, int row, T* f, const flags_class* flags) {
    for (int k = 0; k < n; ++k, row += 2) {
        if (flags->function) {
            f[row] = i[k];
            f[row + 1] = -i[k];
        }
        if (flags->jacobian) {
            dfdi[row][k] = 1.0;
            dfdi[row + 1][k] = -1.0;
        }
    }
}

// c times the voltage of winding k, in a row of the table of voltages.
template <class T>
void by_winding(T* row, int k, T c) {
    row[2 * k] = c;
    row[2 * k + 1] = -c;
}

// ---- ideal ----

// Turns w: equal volts per turn, ampere-turns that sum to 0. From `row` on the rows of the terminals, then
// w[k] v0 - w[0] vk for each further winding, then the sum.
template <int n, class T>
void ideal_windings(const double* w, const T* v, const T* i, T** dfdv, T** dfdi, int row, T* f,
                    const flags_class* flags) {
    winding_currents<n>(i, dfdi, row, f, flags);
    row += 2 * n - 1;
    const int sum = row + n;
    for (int k = 1; k < n; ++k) {
        if (flags->function) f[row + k] = w[k] * winding_voltage(v, 0) - w[0] * winding_voltage(v, k);
        if (flags->jacobian) {
            by_winding<T>(dfdv[row + k], 0, w[k]);
            by_winding<T>(dfdv[row + k], k, -w[0]);
        }
    }
    if (flags->function) {
        f[sum] = 0.0;
        for (int k = 0; k < n; ++k) f[sum] += w[k] * i[k];
    }
    if (flags->jacobian)
        for (int k = 0; k < n; ++k) dfdi[sum][k] = w[k];
}

// In every analysis that solves; 3 n rows, and as many of start-up.
template <int n>
void ideal_transformer(const double* w, double* v, const double* aux, const double* auxs, double* f, ebes1_class* jac,
                       const flags_class* flags) {
    if (flags->startup)
        ideal_windings<n>(w, v, auxs, jac->dfdv, jac->dfdauxs, 3 * n, f, flags);
    else if (flags->dc || flags->trns)
        ideal_windings<n>(w, v, aux, jac->dfdv, jac->dfdaux, 0, f, flags);
    else if (flags->init_guess)
        std::fill_n(v, 2 * n, 0.0);
}

// ---- coupled inductors ----

// The upper triangle of a symmetric matrix of n rows, row by row.
constexpr int in_triangle(int n, int j, int k) {
    return j <= k ? j * n - j * (j - 1) / 2 + k - j : in_triangle(n, k, j);
}

// Inverse inductances of two windings, 1/H; det = l1 l2 - m^2.
inline void inverse_of_two(double l1, double l2, double m, double det, double* inverse) {
    inverse[0] = l2 / det;
    inverse[1] = -m / det;
    inverse[2] = l1 / det;
}

// Windings on one core: each has its leakage, H, on its own side, and all share the magnetising inductance lm, H, of
// winding 0. Halts with the element file's name unless all inductances are above 0 and all turns are not 0.
template <int n>
struct windings_on_core {
    std::array<double, n> turns, leakage;
    double lm;

    double ratio(int k) const { return turns[at(k)] / turns[0]; }
    // L[j][k]: lm ratio(j) ratio(k), and the leakage of winding k beside it where j is k.
    double inductance(int j, int k) const { return lm * ratio(j) * ratio(k) + (j == k ? leakage[at(k)] : 0.0); }

    void check(const char* file) const {
        const auto above_0 = [](double x) { return x > 0.0; };
        const auto is_none = [](double x) { return x == 0.0; };
        if (!(above_0(lm) && std::all_of(leakage.begin(), leakage.end(), above_0)) ||
            std::any_of(turns.begin(), turns.end(), is_none))
            halt({line(file, ": check turns, leakages, lm. Halting...")});
    }

    // Inverse inductances as a triangle. The star of leakages is open at the magnetising inductance: with y_k =
    // ratio(k)^2 / leakage(k) and y_m = 1/lm the diagonal is (sum of y - y_k)/(leakage(k) sum of y), which keeps its
    // digits where lm is large.
    void invert(double* inverse) const {
        double sum = 1.0 / lm;
        for (int k = 0; k < n; ++k) sum += ratio(k) * ratio(k) / leakage[at(k)];
        for (int j = 0; j < n; ++j) {
            double others = 1.0 / lm;
            for (int k = 0; k < n; ++k) {
                if (k != j) others += ratio(k) * ratio(k) / leakage[at(k)];
                if (k > j)
                    inverse[in_triangle(n, j, k)] = -ratio(j) * ratio(k) / (leakage[at(j)] * leakage[at(k)] * sum);
            }
            inverse[in_triangle(n, j, j)] = others / (leakage[at(j)] * sum);
        }
    }

private:
    static std::size_t at(int k) { return static_cast<std::size_t>(k); }
};

// Of winding 0, from the currents and turns of n windings.
template <int n>
double magnetising_current(const double* turns, const double* i) {
    double sum = 0.0;
    for (int k = 0; k < n; ++k) sum += turns[k] / turns[0] * i[k];
    return sum;
}

// Linear windings in every analysis that solves: their currents are the states, di/dt = inverse times the voltages;
// shorts in DC. Start-up holds them at stparm. 3 n rows, and as many of start-up.
template <int n>
void coupled_inductors(const double* inverse, const double* stparm, double* v, double* aux, const double* auxs,
                       double* f, ebes1_class* jac, const flags_class* flags) {
    constexpr int own = 2 * n, start = 3 * n;
    if (flags->startup) {
        std::copy_n(auxs, n, aux);
        winding_currents<n>(auxs, jac->dfdauxs, start, f, flags);
        for (int k = 0; k < n; ++k) {
            if (flags->function) f[start + own + k] = auxs[k] - stparm[k];
            if (flags->jacobian) jac->dfdauxs[start + own + k][k] = 1.0;
        }
    } else if (flags->dc || flags->trns) {
        winding_currents<n>(aux, jac->dfdaux, 0, f, flags);
        for (int j = 0; j < n; ++j) {
            double slope = 0.0;
            for (int k = 0; k < n; ++k) {
                const double by = inverse[in_triangle(n, j, k)];
                slope += by * winding_voltage(v, k);
                if (flags->jacobian) by_winding(jac->dfdv[own + j], k, by);
            }
            if (flags->function) f[own + j] = slope;
            if (flags->jacobian) jac->dfdaux[own + j][j] = 0.0;
        }
    } else if (flags->init_guess) {
        std::fill_n(v, 2 * n, 0.0);
        std::fill_n(aux, n, 0.0);
    }
}

// Small signals: v_j - i freq sum of l(j, k) i_k; freq in rad/s.
template <int n, class Inductance>
void coupled_impedances(double freq, Inductance l, const std::complex<double>* v, const std::complex<double>* aux,
                        std::complex<double>* f, ebac1_class* jac, const flags_class* flags) {
    constexpr int own = 2 * n;
    winding_currents<n>(aux, jac->dfdaux, 0, f, flags);
    for (int j = 0; j < n; ++j) {
        std::complex<double> u = winding_voltage(v, j);
        for (int k = 0; k < n; ++k) {
            const std::complex<double> z = {0.0, freq * l(j, k)};
            u -= z * aux[k];
            if (flags->jacobian) jac->dfdaux[own + j][k] = -z;
        }
        if (flags->function) f[own + j] = u;
        if (flags->jacobian) by_winding<std::complex<double>>(jac->dfdv[own + j], j, 1.0);
    }
}

// ---- a core that saturates ----

// Two windings with leakage on a core whose flux, in V s of winding 0, follows the magnetising current im = i0' +
// ratio i1 with the slope lm up to i_sat and lm_sat beyond; i0' is i0 without the core loss g_core v0.
struct saturating_pair {
    double ratio, leakage[2], lm, lm_sat, i_sat, g_core;

    double flux(double im) const {
        const double beyond = std::max(std::fabs(im) - i_sat, 0.0);
        return lm * im - std::copysign((lm - lm_sat) * beyond, im);
    }
    double slope(double im) const { return std::fabs(im) > i_sat ? lm_sat : lm; }
    double magnetising(const double* v, const double* i) const {
        return i[0] - g_core * winding_voltage(v, 0) + ratio * i[1];
    }
};
// The fluxes of both windings are the states, behind the currents: unknowns i0 i1 psi0 psi1. Rows: terminals; psi' = v;
// (psi0 - flux)/leakage0 - i0', (psi1 - ratio flux)/leakage1 - i1. Start-up holds i0' and i1 at stparm, and has no
// unknowns but the currents.
void saturating_windings(const saturating_pair& c, const double* stparm, double* v, double* aux, const double* auxs,
                         double* f, ebes1_class* jac, const flags_class* flags);
// Small signals of it: the rows of the currents at the bias point, with psi = v/(i freq).
void saturating_impedances(double freq, const std::complex<double>* v, const std::complex<double>* aux,
                           std::complex<double>* f, ebac1_class* jac, const ebes1_class* ebe_jac,
                           const flags_class* flags);
