// gbac1_class.h -- where a small-signal model of a general block leaves its partial derivatives.
#pragma once
#include <complex>

#include "library/jac_tables.h"

struct gbac1_class : jac_tables<std::complex<double>> {
    number **dfdvr = nullptr, **dfdaux = nullptr;  // [n_f] rows of n_vr, n_aux
    int n_vr = 0, n_aux = 0;

    void initialise(const basic_library& lib, int i_lib);
};
