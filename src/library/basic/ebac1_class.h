// ebac1_class.h -- where a small-signal model of an electrical element leaves its partial derivatives.
#pragma once
#include <complex>

#include "library/jac_tables.h"

struct ebac1_class : jac_tables<std::complex<double>> {
    number **dfdv = nullptr, **dfdvind = nullptr, **dfdcurind = nullptr, **dfdvr = nullptr,
           **dfdaux = nullptr;  // [n_f] rows of n_nd, n_in, n_ib, n_vr, n_aux
    int n_nd = 0, n_in = 0, n_ib = 0, n_aux = 0, n_vr = 0;

    void initialise(const basic_library& lib, int i_lib);
};
