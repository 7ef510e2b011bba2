// ebes1_class.h -- where a model of an electrical element leaves its partial derivatives.
#pragma once
#include <vector>

#include "library/basic_library.h"

// One object for each template; valid for that template alone. All tables stand in one array, `store`, and row pointers
// give models the form jac->dfdv[function][terminal]. Units of a template share it: read it right after the call.
struct ebes1_class {
    double **dfdv = nullptr, **dfdloc = nullptr, **dfdvind = nullptr, **dfdcurind = nullptr, **dfdvr = nullptr,
           **dfdaux = nullptr, **dfdauxs = nullptr;  // [n_f] rows of n_nd, n_locv, n_in, n_ib, n_vr, n_aux, n_auxs
    int n_nd = 0, n_in = 0, n_ib = 0, n_aux = 0, n_vr = 0, n_f = 0;
    // work space of the numeric Jacobian: copies and increments of each kind of variable, function values
    double *v_1 = nullptr, *delv = nullptr, *vind_1 = nullptr, *delvind = nullptr, *curind_1 = nullptr,
           *delcurind = nullptr, *aux_1 = nullptr, *delaux = nullptr, *vr_1 = nullptr, *delvr = nullptr;
    double *f_0 = nullptr, *f_1 = nullptr;  // [n_f]

    std::vector<double> store;  // all numbers
    std::vector<double*> rows;  // all row pointers

    ebes1_class() = default;
    ebes1_class(const ebes1_class&) = delete;
    ebes1_class(ebes1_class&&) = default;
    void initialise(const basic_library& lib, int i_lib);
    // Index in store of the derivative of function j by variable m of a kind (var_kind); -1 for a kind without table.
    int offset(int kind, int j, int m) const;
};
