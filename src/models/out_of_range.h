// out_of_range.h -- what a transistor answers where its formulas do not hold.
#pragma once
#include <algorithm>
#include <cmath>
#include <limits>

#include "base/flags_class.h"

// Beyond 1e100 V no formula is asked.
template <int n>
bool voltages_in_range(const double* v) {
    double largest = 0;
    for (int j = 0; j < n; ++j) largest = std::max(largest, std::fabs(v[j]));
    return largest <= 1e100;  // not a NaN either
}

// No solution is there, and the solver sees it at once: an infinite current through the channel or base, from terminal
// 0 to terminal 2, and no charges. n: terminals; rows: all functions.
inline void answer_out_of_range(int n, int rows, double* f, double** dfdv, const flags_class* flags) {
    constexpr double infinite = std::numeric_limits<double>::infinity();
    for (int j = 0; j < rows; ++j) {
        if (flags->function) f[j] = j == 0 ? infinite : j == 2 ? -infinite : 0;
        if (flags->jacobian)
            for (int k = 0; k < n; ++k) dfdv[j][k] = j == k ? 1 : 0;
    }
}
