// filled_part.h -- the end of a first order, where much of the active part has filled in: rows of values side by side.
#pragma once
#include <string_view>
#include <vector>

#include "sparse/active_matrix.h"
#include "sparse/elimination.h"

// Is the rest of it so full that whole rows are quicker than lists? Real numbers only.
inline bool is_filled(const active_matrix<double>& a, int i) {
    const long long m = a.n - i;
    return m >= 16 && 4 * a.n_entry >= m * m;
}
inline bool is_filled(const active_matrix<complex_value>&, int) { return false; }

// Steps from i on to the end: the same pivots, slots, counts and stops as by the lists, and the factors in val_w. What
// the lists of a hold is of no use afterwards. Room: four times the active entries.
void order_filled_part(elimination<double>& e, active_matrix<double>& a, std::vector<double>& val_w,
                       std::string_view routine, int i);
inline void order_filled_part(elimination<complex_value>&, active_matrix<complex_value>&, std::vector<complex_value>&,
                              std::string_view, int) {}
