// partial_fractions.h -- a rational transfer function as a sum of terms, and as a chain of sections that run it.
#pragma once
#include <complex>
#include <vector>

#include "models/polynomial.h"

// N(s)/D(s) = a0 + sum of terms. Coefficients in rising powers of s.
struct partial_fractions {
    double gain = 1.0,
           a0 = 0.0;  // 1 over the leading coefficient of D, which the coefficients have in them; the constant
    int n_r_root_1 = 0, n_c_root_1 = 0;  // distinct real roots, and pairs

    // coef/(s - root)^power: real roots first, then each root with a positive imaginary part before its conjugate.
    std::vector<std::complex<double>> pp_root, pp_coef;
    std::vector<int> pp_power;

    // The same without complex coefficients: ppc_coef/(s - root)^power for a real root, (c + d s)/Q^power with
    // ppc_coef = (c, d) and Q = (s - root)(s - conjugate) for a pair.
    std::vector<int> ppc_flag_real, ppc_power;
    std::vector<std::complex<double>> ppc_root, ppc_coef;
};

// The expansion over the roots of D as zroots finds them (polished) and classify_roots tells them apart, within 1e-5 of
// the largest one or of 1. coef_n [degree_n + 1], coef_d [degree_d + 1]. Halts where degree_n > degree_d or a leading
// coefficient is 0.
partial_fractions partial_fractions_1(int degree_n, int degree_d, const double* coef_n, const double* coef_d);
void print_partial_fractions_1(const partial_fractions& p);  // on the console

// One section: u = kx x + kp w, with x the input of the whole and w the output z of the section before it.
//   order 1: z' = r z + u
//   order 2: z' = zd, zd' = -b0 z - b1 zd + u
// It adds c z + d zd to the output.
struct filter_section {
    int order = 1;
    double kx = 0.0, kp = 0.0, r = 0.0, b0 = 0.0, b1 = 0.0, c = 0.0, d = 0.0;
};
struct filter_sections {
    double a0 = 0.0;  // the output begins with a0 x
    std::vector<filter_section> section;
};
inline constexpr int max_filter_degree = 9;

// The sections of (n[0] + ... + n[degree_n] s^degree_n)/(d[0] + ...), at most degree_d of them: for a root of
// multiplicity p a chain of p, and where roots are close and not one, a chain of unlike links. Roots at 0 are
// integrators (r = 0). Halts for a degree below 0 (of D: 1) or above 9, for degree_d < degree_n, as
// partial_fractions_1, and where the sections differ from the quotient by more than 1e-6 of its size.
filter_sections expand_filter(int degree_n, const double* n, int degree_d, const double* d);

// What the sections do to exp(s t).
std::complex<double> filter_response(const filter_sections& f, std::complex<double> s);
