// eigenvalues.h -- all eigenvalues of a small real matrix.
#pragma once
#include <complex>
#include <vector>

// a: [n][n] row by row, any finite numbers. Balanced by powers of two (Parlett and Reinsch 1969), reduced to Hessenberg
// form by reflections, then QR steps with the shift of Wilkinson (1968). In descending order of the modulus.
// Empty where the steps do not come to an end or a number is none.
std::vector<std::complex<double>> eigenvalues(std::vector<double> a, int n);
