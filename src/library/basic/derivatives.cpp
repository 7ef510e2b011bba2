// derivatives.cpp -- the tables of the classes of derivatives, in the order in which they stand in store.
#include <algorithm>
#include <complex>

#include "library/basic/ebac1_class.h"
#include "library/basic/ebes1_class.h"
#include "library/basic/gbac1_class.h"
#include "library/basic/gbes1_class.h"
#include "library/basic/xbac1_class.h"
#include "library/basic/xbes1_class.h"

using L = library_lists;

template <class T>
int jac_tables<T>::offset(int kind, int j, int m) const {
    const auto t = std::find(var_kinds.rbegin(), var_kinds.rend(), kind);
    if (t == var_kinds.rend()) return -1;
    const int first = first_row[static_cast<std::size_t>(var_kinds.rend() - t - 1)];
    return static_cast<int>(rows[static_cast<std::size_t>(first + j)] + m - store.data());
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
void xbac1_class::initialise(const basic_library& lib, int i_lib) {
    using J = xbac1_class;
    static constexpr jac_table<J> tables[] = {{kind_xvr, &L::xvr, &J::dfdvr, &J::n_vr},
                                              {kind_xaux, &L::aux, &J::dfdaux, &J::n_aux}};
    lay_tables<J>(*this, lib, i_lib, tables);
}

void xbes1_class::initialise(const basic_library& lib, int i_lib) {
    using J = xbes1_class;
    constexpr auto g = &basic_library::func_g, h = &basic_library::func_h;
    static constexpr jac_table<J> tables[] = {
        {kind_xvr, &L::xvr, &J::dfdvr, nullptr},      {kind_vr, &L::vr, &J::dfdgvr, nullptr},
        {kind_xaux, &L::aux, &J::dfdaux, nullptr},    {kind_bev, &L::bev, &J::dfdbev, nullptr},
        {kind_xcur, &L::cur, &J::dfdcur, nullptr},    {kind_xvr, &L::xvr, &J::dgdvr, nullptr, g},
        {kind_vr, &L::vr, &J::dgdgvr, nullptr, g},    {kind_xaux, &L::aux, &J::dgdaux, nullptr, g},
        {kind_bev, &L::bev, &J::dgdbev, nullptr, g},  {kind_xcur, &L::cur, &J::dgdcur, nullptr, g},
        {kind_xvr, &L::xvr, &J::dhdvr, nullptr, h},   {kind_vr, &L::vr, &J::dhdgvr, nullptr, h},
        {kind_xaux, &L::aux, &J::dhdaux, nullptr, h}, {kind_bev, &L::bev, &J::dhdbev, nullptr, h},
        {kind_xcur, &L::cur, &J::dhdcur, nullptr, h},
    };
    lay_tables<J>(*this, lib, i_lib, tables);
}
