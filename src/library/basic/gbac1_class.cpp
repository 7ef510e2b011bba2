#include "library/basic/gbac1_class.h"

#include "library/jac_tables.h"

void gbac1_class::initialise(const basic_library& lib, int i_lib) {
    n_vr = lib.list.vr.count(i_lib);
    n_aux = lib.list.aux.count(i_lib);
    n_f = lib.func.n_func(i_lib);
    const std::vector<number**> table = lay_tables({n_vr, n_aux}, n_f, 0, store, rows);
    dfdvr = table[0];
    dfdaux = table[1];
}

int gbac1_class::offset(int kind, int j, int m) const {
    number** const table = kind == kind_vr ? dfdvr : kind == kind_gaux ? dfdaux : nullptr;
    return table ? static_cast<int>(table[j] + m - store.data()) : -1;
}
