// derivatives.cpp -- the tables of the four classes of derivatives, in the order in which they stand in store.
#include <algorithm>
#include <complex>

#include "library/basic/ebac1_class.h"
#include "library/basic/ebes1_class.h"
#include "library/basic/gbac1_class.h"
#include "library/basic/gbes1_class.h"

using L = library_lists;

template <class T>
int jac_tables<T>::offset(int kind, int j, int m) const {
    const auto t = std::find(var_kinds.begin(), var_kinds.end(), kind);
    if (t == var_kinds.end()) return -1;
    return static_cast<int>(rows[static_cast<std::size_t>((t - var_kinds.begin()) * n_f + j)] + m - store.data());
}
template struct jac_tables<double>;
template struct jac_tables<std::complex<double>>;

void ebes1_class::initialise(const basic_library& lib, int i_lib) {
    using J = ebes1_class;
    static constexpr jac_table<J> tables[] = {
        {kind_v, &L::node, &J::dfdv, &J::n_nd},           {kind_locv, &L::locv, &J::dfdloc, nullptr},
        {kind_vind, &L::ind_node, &J::dfdvind, &J::n_in}, {kind_curind, &L::ind_branch, &J::dfdcurind, &J::n_ib},
        {kind_vr, &L::vr, &J::dfdvr, &J::n_vr},           {kind_aux, &L::aux, &J::dfdaux, &J::n_aux},
        {kind_auxs, &L::auxs, &J::dfdauxs, nullptr},
    };
    struct work_array {
        double* J::*member;
        word_list L::*variables;  // null: one for each function
    };
    static constexpr work_array work[] = {
        {&J::v_1, &L::node},
        {&J::delv, &L::node},
        {&J::vind_1, &L::ind_node},
        {&J::delvind, &L::ind_node},
        {&J::curind_1, &L::ind_branch},
        {&J::delcurind, &L::ind_branch},
        {&J::aux_1, &L::aux},
        {&J::delaux, &L::aux},
        {&J::vr_1, &L::vr},
        {&J::delvr, &L::vr},
        {&J::f_0, nullptr},
        {&J::f_1, nullptr},
    };
    const auto length = [&](const work_array& w) {
        return w.variables ? (lib.list.*w.variables).count(i_lib) : lib.func.n_func(i_lib);
    };
    std::size_t n_work = 0;
    for (const work_array& w : work) n_work += static_cast<std::size_t>(length(w));
    lay_tables<J>(*this, lib, i_lib, tables, n_work);
    double* next = store.data() + (store.size() - n_work);
    for (const work_array& w : work) {
        this->*w.member = next;
        next += length(w);
    }
}

void ebac1_class::initialise(const basic_library& lib, int i_lib) {
    using J = ebac1_class;
    static constexpr jac_table<J> tables[] = {
        {kind_v, &L::node, &J::dfdv, &J::n_nd},
        {kind_vind, &L::ind_node, &J::dfdvind, &J::n_in},
        {kind_curind, &L::ind_branch, &J::dfdcurind, &J::n_ib},
        {kind_vr, &L::vr, &J::dfdvr, &J::n_vr},
        {kind_aux, &L::aux, &J::dfdaux, &J::n_aux},
    };
    lay_tables<J>(*this, lib, i_lib, tables);
}

namespace {
template <class J>
constexpr jac_table<J> block_tables[] = {{kind_vr, &L::vr, &J::dfdvr, &J::n_vr},
                                         {kind_gaux, &L::aux, &J::dfdaux, &J::n_aux}};
}  // namespace

void gbes1_class::initialise(const basic_library& lib, int i_lib) {
    lay_tables<gbes1_class>(*this, lib, i_lib, block_tables<gbes1_class>);
}
void gbac1_class::initialise(const basic_library& lib, int i_lib) {
    lay_tables<gbac1_class>(*this, lib, i_lib, block_tables<gbac1_class>);
}
