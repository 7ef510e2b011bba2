// arithmetic.h -- the few operations of the linear solver, for real and complex numbers alike.
#pragma once
#include <cmath>
#include <complex>
#include <limits>

// The complex forms are written out, since every result is compared bit by bit and a library may order them otherwise:
// plain product, quotient and modulus with the larger part factored out (Smith).
using complex_value = std::complex<double>;

inline double product(double a, double b) { return a * b; }
inline complex_value product(const complex_value& a, const complex_value& b) {
    return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

inline double quotient(double a, double b) { return a / b; }
inline complex_value quotient(const complex_value& a, const complex_value& b) {
    if (std::fabs(b.real()) >= std::fabs(b.imag())) {
        const double r = b.imag() / b.real(), d = b.real() + r * b.imag();
        return {(a.real() + a.imag() * r) / d, (a.imag() - a.real() * r) / d};
    }
    const double r = b.real() / b.imag(), d = b.imag() + r * b.real();
    return {(a.real() * r + a.imag()) / d, (a.imag() * r - a.real()) / d};
}

inline double magnitude(double a) { return std::fabs(a); }
inline double magnitude(const complex_value& a) {
    double big = std::fabs(a.real()), small = std::fabs(a.imag());
    if (std::isinf(big) || std::isinf(small)) return std::numeric_limits<double>::infinity();
    if (big < small) std::swap(big, small);
    if (small == 0) return big;
    const double r = small / big;
    return big * std::sqrt(1 + r * r);
}

// magnitude(a) < limit; where a part alone reaches the limit the modulus, which is not below it, is not computed.
inline bool is_below(double a, double limit) { return std::fabs(a) < limit; }
inline bool is_below(const complex_value& a, double limit) {
    if (std::fabs(a.real()) >= limit || std::fabs(a.imag()) >= limit) return false;
    return magnitude(a) < limit;
}
