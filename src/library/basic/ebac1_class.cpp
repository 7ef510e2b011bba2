#include "library/basic/ebac1_class.h"

#include "library/jac_tables.h"

void ebac1_class::initialise(const basic_library& lib, int i_lib) {
    const library_lists& list = lib.list;
    n_nd = list.node.count(i_lib);
    n_in = list.ind_node.count(i_lib);
    n_ib = list.ind_branch.count(i_lib);
    n_aux = list.aux.count(i_lib);
    n_vr = list.vr.count(i_lib);
    n_f = lib.func.n_func(i_lib);
    const std::vector<number**> table = lay_tables({n_nd, n_in, n_ib, n_vr, n_aux}, n_f, 0, store, rows);
    dfdv = table[0];
    dfdvind = table[1];
    dfdcurind = table[2];
    dfdvr = table[3];
    dfdaux = table[4];
}

int ebac1_class::offset(int kind, int j, int m) const {
    number** table = nullptr;
    switch (kind) {
        case kind_v:
            table = dfdv;
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
        default:
            return -1;
    }
    return static_cast<int>(table[j] + m - store.data());
}
