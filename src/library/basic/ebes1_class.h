// ebes1_class.h -- where a model of an electrical element leaves its partial derivatives.
#pragma once
#include "library/jac_tables.h"

struct ebes1_class : jac_tables<double> {
    double **dfdv = nullptr, **dfdloc = nullptr, **dfdvind = nullptr, **dfdcurind = nullptr, **dfdvr = nullptr,
           **dfdaux = nullptr, **dfdauxs = nullptr;  // [n_f] rows of n_nd, n_locv, n_in, n_ib, n_vr, n_aux, n_auxs
    int n_nd = 0, n_in = 0, n_ib = 0, n_aux = 0, n_vr = 0;
    // work space of the numeric Jacobian: copies and increments of each kind of variable, function values
    double *v_1 = nullptr, *delv = nullptr, *vind_1 = nullptr, *delvind = nullptr, *curind_1 = nullptr,
           *delcurind = nullptr, *aux_1 = nullptr, *delaux = nullptr, *vr_1 = nullptr, *delvr = nullptr;
    double *f_0 = nullptr, *f_1 = nullptr;  // [n_f]

    void initialise(const basic_library& lib, int i_lib);
};
