// gbac1_class.h -- where a small-signal model of a general block leaves its partial derivatives.
#pragma once
#include <complex>
#include <vector>

#include "library/basic_library.h"

struct gbes1_class;

// The complex twin of gbes1_class: one object for each template, both tables in one array, shared by its units.
struct gbac1_class {
    using number = std::complex<double>;
    number **dfdvr = nullptr, **dfdaux = nullptr;  // [n_f] rows of n_vr, n_aux
    int n_vr = 0, n_aux = 0, n_f = 0;
    // Derivatives of the block at the bias point, for forms with ac_parm_be: the solver's, set before the call of each
    // unit. Null: there is none. In gbes1_class's order of rows and variables, which such a form shares.
    const gbes1_class* bias = nullptr;

    std::vector<number> store;  // all numbers
    std::vector<number*> rows;  // all row pointers

    gbac1_class() = default;
    gbac1_class(const gbac1_class&) = delete;
    gbac1_class(gbac1_class&&) = default;
    void initialise(const basic_library& lib, int i_lib);
    // Index in store of the derivative of function j by variable m of a kind (var_kind); -1 for a kind without table.
    int offset(int kind, int j, int m) const;
};
