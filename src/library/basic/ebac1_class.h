// ebac1_class.h -- where a small-signal model of an electrical element leaves its partial derivatives.
#pragma once
#include <complex>
#include <vector>

#include "library/basic_library.h"

// The complex twin of ebes1_class: one object for each template, all tables in one array, shared by its units.
struct ebac1_class {
    using number = std::complex<double>;
    number **dfdv = nullptr, **dfdvind = nullptr, **dfdcurind = nullptr, **dfdvr = nullptr,
           **dfdaux = nullptr;  // [n_f] rows of n_nd, n_in, n_ib, n_vr, n_aux
    int n_nd = 0, n_in = 0, n_ib = 0, n_aux = 0, n_vr = 0, n_f = 0;

    std::vector<number> store;  // all numbers
    std::vector<number*> rows;  // all row pointers

    ebac1_class() = default;
    ebac1_class(const ebac1_class&) = delete;
    ebac1_class(ebac1_class&&) = default;
    void initialise(const basic_library& lib, int i_lib);
    // Index in store of the derivative of function j by variable m of a kind (var_kind); -1 for a kind without table.
    int offset(int kind, int j, int m) const;
};
