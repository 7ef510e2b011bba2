// gbes1_class.h -- where a model of a general block leaves its partial derivatives.
#pragma once
#include "library/jac_tables.h"

struct gbes1_class : jac_tables<double> {
    double **dfdvr = nullptr, **dfdaux = nullptr;  // [n_f] rows of n_vr, n_aux
    int n_vr = 0, n_aux = 0;

    void initialise(const basic_library& lib, int i_lib);
};
