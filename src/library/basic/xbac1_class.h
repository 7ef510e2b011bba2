// xbac1_class.h -- where a small-signal model of an explicit block leaves its derivatives.
#pragma once
#include <complex>

#include "library/jac_tables.h"

struct xbac1_class : jac_tables<std::complex<double>> {
    std::complex<double>**dfdvr = nullptr, **dfdaux = nullptr;  // [n_f] rows of n_vr, n_aux
    int n_vr = 0, n_aux = 0;

    void initialise(const basic_library& lib, int i_lib);
};
