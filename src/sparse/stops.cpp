#include "sparse/stops.h"

#include "base/halt.h"

const elimination_names real_names = {
    "gauss_1", "gauss_1a", "gauss_2", "nnz_active_k_1", "solve_jac", "error in gauss_2.", "error in gauss_2 again!",
    "",        ""};
const elimination_names complex_names = {"gauss_1_c",
                                         "gauss_1a_c",
                                         "gauss_2_c",
                                         "nnz_active_k_1_c",
                                         "solve_jac_ac",
                                         "error in gauss_2_c.",
                                         "error in gauss_2_c again!",
                                         "",
                                         "_c"};
const elimination_names explicit_names = {"x_gauss_1",
                                          "x_gauss_1a",
                                          "x_gauss_2",
                                          "nnz_active_k_1",
                                          "x_solve_jac",
                                          "error in x_gauss_2.",
                                          "error in gauss_2 again!",
                                          "x_",
                                          ""};

void halt_too_many_entries(const elimination_names& names, std::string_view routine, int nnz_w, int mnz_w) {
    halt({line(routine, ": ", names.prefix, "nnz_w", names.suffix, "=", nnz_w, ", ", names.prefix, "mnz_w",
               names.suffix, "=", mnz_w),
          "  Halting.."});
}

void halt_storage(const elimination_names& names, std::string_view routine, std::string_view what,
                  std::string_view limit, long long n, int m) {
    halt({line(routine, ": ", names.prefix, what, names.suffix, " = ", n),
          line(routine, ": ", names.prefix, limit, names.suffix, " = ", m), "   Error in Gauss elimination routine",
          "   Insufficient storage"});
}

void halt_singular(const elimination_names& names, bool is_row, int i) {
    halt({line(names.nnz_active_k_1, is_row ? ": valmax_row=0. i_row=" : ": valmax_col=0. i_col=", i),
          "  Singular matrix? Halting..."});
}

template <class T>
void halt_small_pivot(const elimination_names& names, T val_piv) {
    halt({line(names.gauss_1a, ": val_piv", names.suffix, "=", val_piv), "   Error in Gauss elimination routine.",
          "   Pivot is too small. Halting..."});
}

void halt_last_row(std::string_view routine) {
    halt({line(routine, ": last row: zero pivot?"), "   Error in Gauss elimination routine", "   zero pivot"});
}

template <class T>
void say_matrix_stage(const elimination<T>& e, int i, T val_piv) {
    const elimination_names& s = e.names;
    say(line(s.gauss_2, ": type 1 val_piv", s.suffix, " = ", val_piv));
    say(line(s.gauss_2, ": zero_piv", s.suffix, " = ", e.zero_piv));
    say(line(s.gauss_2, ": pntr_piv = ", e.mat_pp[static_cast<std::size_t>(i)]));
    say(line(s.gauss_2, ": i_row_outer = ", i));
    say(line("*** error in ", s.gauss_2, ": pivot too small ***"));
}

template <class T>
void say_rhs_stage(const elimination<T>& e, int i, T val_piv) {
    say(line(e.names.gauss_2, ": val_piv", e.names.suffix, " = ", val_piv));
    say(line(e.names.gauss_2, ": i_row_outer = ", i));
}

template <class T>
void say_rhs_last(const elimination<T>& e, T val_piv) {
    const elimination_names& s = e.names;
    say(line(s.gauss_2, ": pntr_piv = ", e.mat_pp[static_cast<std::size_t>(e.n - 1)]));
    say(line(s.gauss_2, ": val_piv", s.suffix, " = ", val_piv));
    say(line(s.gauss_2, ": zero pivot in the last row!"));
}

#define INSTANTIATE(T)                                             \
    template void halt_small_pivot(const elimination_names&, T);   \
    template void say_matrix_stage(const elimination<T>&, int, T); \
    template void say_rhs_stage(const elimination<T>&, int, T);    \
    template void say_rhs_last(const elimination<T>&, T);
INSTANTIATE(double)
INSTANTIATE(std::complex<double>)
