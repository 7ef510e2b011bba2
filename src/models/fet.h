// fet.h -- what field effect transistors share: the exchange of drain and source, and the range of their voltages.
#pragma once
#include <algorithm>
#include <cmath>
#include <limits>

#include "base/flags_class.h"
#include "library/basic/ebes1_class.h"

// Beyond 1e100 V no formula is asked.
template <int n>
bool voltages_in_range(const double* v) {
    double largest = 0;
    for (int j = 0; j < n; ++j) largest = std::max(largest, std::fabs(v[j]));
    return largest <= 1e100;  // not a NaN either
}

// No solution is there, and the solver sees it at once: an infinite current from drain (terminal 0) to source (terminal
// 2), no charges. n: terminals; rows: all functions.
inline void fet_out_of_range(int n, int rows, double* f, ebes1_class* jac, const flags_class* flags) {
    constexpr double infinite = std::numeric_limits<double>::infinity();
    for (int j = 0; j < rows; ++j) {
        if (flags->function) f[j] = j == 0 ? infinite : j == 2 ? -infinite : 0;
        if (flags->jacobian)
            for (int k = 0; k < n; ++k) jac->dfdv[j][k] = j == k ? 1 : 0;
    }
}
