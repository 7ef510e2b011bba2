// operation_lists.h -- what the plain elimination writes down: every arithmetic step as flat lists over slots.
#pragma once
#include <vector>

#include "sparse/knuth.h"

// Rows below a pivot without an entry in its column have no operations and no member in the inner lists.
// Operation types. List 1: 2 = times 1/pivot. List 2: 5 = first value of a fill-in, 6 = subtract a product.
// List 3: 3 = back-substitution term.
template <class T>
struct operation_lists {
    bool filled = false;
    bool factored = false;                           // w.val are factors, not the values given
    knuth<T> w;                                      // working matrix; rows and columns are working positions
    std::vector<int> ip_matop1;                      // [n + 1]  list 1 of pivot i: ip_matop1[i] .. [i + 1] - 1
    std::vector<int> mat_op_1, mat_pn_1;             // [n_matttlop1]  type, slot to scale
    std::vector<int> first_inner;                    // [n]      inner rows of pivot i: first_inner[i] .. [i + 1] - 1
    std::vector<int> inner_row, inner_np, inner_op;  // [n_inner], inner_op [n_inner + 1]: row, multiplier, first op
    std::vector<int> mat_op_2, mat_nn, mat_pn_2;     // [n_matttlop2]  type, target slot, slot in the pivot row
    std::vector<int> mat_np_2;                       // [n_matttlop2]  slot of the row's entry in the pivot column
    std::vector<int> ip_matop3;                      // [n]      list 3 of row i: ip_matop3[i + 1] .. [i] - 1
    std::vector<int> mat_op_3, mat_pn_3, mat_col_3;  // [n_matttlop3]  type, slot of the upper factor, its column
};
