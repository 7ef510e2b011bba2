// gbac1_class.h -- where a small-signal model of a general block leaves its partial derivatives.
#pragma once
#include <complex>

#include "library/jac_tables.h"

struct gbes1_class;

struct gbac1_class : jac_tables<std::complex<double>> {
    number **dfdvr = nullptr, **dfdaux = nullptr;  // [n_f] rows of n_vr, n_aux
    int n_vr = 0, n_aux = 0;
    // Derivatives of the block at the bias point, for forms with ac_parm_be: the solver's, set before the call of each
    // unit. Null: there is none. In gbes1_class's order of rows and variables, which such a form shares.
    const gbes1_class* bias = nullptr;

    void initialise(const basic_library& lib, int i_lib);
};
