#include "library/basic/ebes1_class.h"

#include "library/jac_tables.h"

void ebes1_class::initialise(const basic_library& lib, int i_lib) {
    const library_lists& list = lib.list;
    n_nd = list.node.count(i_lib);
    n_in = list.ind_node.count(i_lib);
    n_ib = list.ind_branch.count(i_lib);
    n_aux = list.aux.count(i_lib);
    n_vr = list.vr.count(i_lib);
    n_f = lib.func.n_func(i_lib);

    struct work_array {
        double* ebes1_class::*member;
        int n;
    };
    const work_array work[] = {
        {&ebes1_class::v_1, n_nd},     {&ebes1_class::delv, n_nd},     {&ebes1_class::vind_1, n_in},
        {&ebes1_class::delvind, n_in}, {&ebes1_class::curind_1, n_ib}, {&ebes1_class::delcurind, n_ib},
        {&ebes1_class::aux_1, n_aux},  {&ebes1_class::delaux, n_aux},  {&ebes1_class::vr_1, n_vr},
        {&ebes1_class::delvr, n_vr},   {&ebes1_class::f_0, n_f},       {&ebes1_class::f_1, n_f},
    };
    std::size_t n_work = 0;
    for (const work_array& w : work) n_work += static_cast<std::size_t>(w.n);

    const std::vector<double**> table = lay_tables(
        {n_nd, list.locv.count(i_lib), n_in, n_ib, n_vr, n_aux, list.auxs.count(i_lib)}, n_f, n_work, store, rows);
    dfdv = table[0];
    dfdloc = table[1];
    dfdvind = table[2];
    dfdcurind = table[3];
    dfdvr = table[4];
    dfdaux = table[5];
    dfdauxs = table[6];
    double* next = store.data() + (store.size() - n_work);
    for (const work_array& w : work) {
        this->*w.member = next;
        next += w.n;
    }
}

int ebes1_class::offset(int kind, int j, int m) const {
    double** table = nullptr;
    switch (kind) {
        case kind_v:
            table = dfdv;
            break;
        case kind_locv:
            table = dfdloc;
            break;
        case kind_vind:
            table = dfdvind;
            break;
        case kind_curind:
            table = dfdcurind;
            break;
        case kind_vr:
            table = dfdvr;
            break;
        case kind_aux:
            table = dfdaux;
            break;
        case kind_auxs:
            table = dfdauxs;
            break;
        default:
            return -1;
    }
    return static_cast<int>(table[j] + m - store.data());
}
