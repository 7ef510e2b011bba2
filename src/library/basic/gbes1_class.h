// gbes1_class.h -- where a model of a general block leaves its partial derivatives.
#pragma once
#include <vector>

#include "library/basic_library.h"

// One object for each template, or for each unit where a caller keeps the derivatives. Both tables stand in one array,
// `store`, and row pointers give models the form jac->dfdvr[function][variable].
struct gbes1_class {
    double **dfdvr = nullptr, **dfdaux = nullptr;  // [n_f] rows of n_vr, n_aux
    int n_vr = 0, n_aux = 0, n_f = 0;

    std::vector<double> store;  // all numbers
    std::vector<double*> rows;  // all row pointers

    gbes1_class() = default;
    gbes1_class(const gbes1_class&) = delete;
    gbes1_class(gbes1_class&&) = default;
    void initialise(const basic_library& lib, int i_lib);
    // Index in store of the derivative of function j by variable m of a kind (var_kind); -1 for a kind without table.
    int offset(int kind, int j, int m) const;
};
