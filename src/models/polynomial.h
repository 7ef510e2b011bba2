// polynomial.h -- roots and products of polynomials, for what is done once before a run.
#pragma once
#include <complex>
#include <vector>

// Coefficients in rising powers, [degree + 1].
using complex_poly = std::vector<std::complex<double>>;

// A root of a[0] + ... + a[m] x^m near x by Laguerre's method, with the number of iterations. It ends where the value
// is within the error of its own evaluation; the 81st iteration halts.
std::complex<double> laguer(const complex_poly& a, int m, std::complex<double> x, int& its);
// The same without a stop: false where the 81st iteration is reached, and x is then the best that was seen.
bool try_laguer(const complex_poly& a, int m, std::complex<double>& x, int& its);

// All roots of a polynomial of degree a.size() - 1, by ascending real part. An imaginary part of at most 4e-6 of the
// real one becomes 0 before the root is divided out; with polish each is then refined on the whole polynomial.
std::vector<std::complex<double>> zroots(const complex_poly& a, bool polish);
bool try_zroots(const complex_poly& a, bool polish, std::vector<std::complex<double>>& roots);  // without a stop

// Distinct roots with their multiplicity, ascending as given. pair: that of a conjugate pair with positive imaginary
// part. The checks are second counts, by other ways: real ones from the end, and pairs of which both halves are there
// equally often. Where they differ from the sizes, nearness within the tolerance is no clear matter.
struct root_group {
    std::complex<double> root;  // mean of the group
    int power;
};
struct root_groups {
    std::vector<root_group> real, pair;
    int n_root_real_check = 0, n_root_imag_check = 0;
    bool agree() const;
};
// Imaginary parts below real_below in size are 0. Roots whose real parts, and sizes of imaginary parts, differ by no
// more than the tolerance are one.
root_groups group_roots(const std::vector<std::complex<double>>& roots, double tolerance, double real_below);
// The same with 1e-8 as the least imaginary part; halts unless both counts agree.
root_groups classify_roots(const std::vector<std::complex<double>>& roots, double tolerance);
inline constexpr double least_imaginary = 1e-8;

complex_poly initialise_coeff_1();                                 // the polynomial 1
void compute_coeff_1(complex_poly& c, std::complex<double> root);  // c times (s - root)
int poly_degree_1(const complex_poly& c);                          // 0 where all coefficients are 0
void print_poly_1(const complex_poly& c);                          // a line each on the console
// The value and the k-th derivative at s.
std::complex<double> poly_value(const complex_poly& c, std::complex<double> s);
complex_poly poly_derivative(complex_poly c, int k);

// N(s)/D(s) = a0 + n(s)/d(s) with d monic and n of lower degree; gain is 1 over the leading coefficient of D.
struct poly_quotient {
    double gain = 1.0, a0 = 0.0;
    std::vector<double> n, d;  // [degree_d], [degree_d + 1]
};
// coef_n [degree_n + 1], coef_d [degree_d + 1] with leading coefficients that are not 0, degree_n <= degree_d; halts
// otherwise, with the name of the routine that asks.
poly_quotient n_by_d_1(int degree_n, int degree_d, const double* coef_n, const double* coef_d,
                       const char* routine = "n_by_d_1");
