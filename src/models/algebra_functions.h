// algebra_functions.h -- plain functions of several values.
#pragma once
#include <cmath>

// What x2 counts as where it divides: one that is nearer to 0 than 1e-30 is 1e-30, with its sign.
inline double divisor(double x2) { return std::fabs(x2) < 1e-30 ? std::copysign(1e-30, x2) : x2; }

// The place of the largest of n values, of equal ones the first.
inline int largest_of(int n, const double* x) {
    int best = 0;
    for (int i = 1; i < n; ++i)
        if (x[i] > x[best]) best = i;
    return best;
}

// Halts, with the name of the element's file, unless the levels of an input have a middle between them.
void check_levels(const char* file, double x_low, double x_high);
