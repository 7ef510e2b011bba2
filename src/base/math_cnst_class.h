// math_cnst_class.h -- mathematical and physical constants that models share.
#pragma once
#include <complex>

// The Boltzmann constant and the electron charge have exactly these digits: published check numbers of the
// semiconductor models were computed with them.
struct math_cnst_class {
    double pi = 3.141592653589793;
    double pi_by_2 = 1.5707963267948966;
    double twopi = 6.283185307179586;
    double rad_to_deg = 57.29577951308232;
    double deg_to_rad = 0.017453292519943295;
    double pi_by_6 = 0.5235987755982988;
    std::complex<double> zero_c{0.0, 0.0};
    std::complex<double> one_c{1.0, 0.0};
    double e = 2.718281828459045;
    double sqrt_2 = 1.4142135623730951;
    double boltzmann = 1.3806226e-23;  // J/K
    double q = 1.6021918e-19;          // C
    double t_zero_celsius = 273.15;    // K
};
