#include <algorithm>

#include "library/basic/ebes1_class.h"
#include "models/model_functions.h"

void dfdx_e(function_only funcs, int* iparm, double* rparm, const double* v, const double* vind, const double* curind,
            const double* aux, const double* vr, flags_class* flags, math_cnst_class* math_cnst, ebes1_class* jac,
            int n_rows, const int* rows) {
    struct group {
        const double* given;
        double *work, *increment;
        double** table;
        int n;
    };
    const group groups[] = {
        {v, jac->v_1, jac->delv, jac->dfdv, jac->n_nd},
        {vind, jac->vind_1, jac->delvind, jac->dfdvind, jac->n_in},
        {curind, jac->curind_1, jac->delcurind, jac->dfdcurind, jac->n_ib},
        {aux, jac->aux_1, jac->delaux, jac->dfdaux, jac->n_aux},
        {vr, jac->vr_1, jac->delvr, jac->dfdvr, jac->n_vr},
    };
    const auto call = [&](double* f) {
        funcs(iparm, rparm, jac->v_1, jac->vind_1, jac->curind_1, jac->aux_1, jac->vr_1, f, flags, math_cnst);
    };
    for (const group& g : groups) std::copy_n(g.given, g.n, g.work);
    call(jac->f_0);
    for (const group& g : groups)
        for (int j = 0; j < g.n; ++j) {
            g.work[j] += g.increment[j];
            call(jac->f_1);
            for (int r = 0; r < n_rows; ++r)
                g.table[rows[r]][j] = (jac->f_1[rows[r]] - jac->f_0[rows[r]]) / g.increment[j];
            g.work[j] = g.given[j];
        }
}
