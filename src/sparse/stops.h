// stops.h -- the ways in which an elimination ends the run, shared by its plain and its fast form.
#pragma once
#include "sparse/elimination.h"

// Behind the name of gauss_1 or gauss_1a.
[[noreturn]] void halt_too_many_entries(const elimination_names& names, std::string_view routine, int nnz_w, int mnz_w);
// what: nnz_w, n_matttlop1, ...; limit: mnz_w, m_matttlop1, ...
[[noreturn]] void halt_storage(const elimination_names& names, std::string_view routine, std::string_view what,
                               std::string_view limit, long long n, int m);
[[noreturn]] void halt_singular(const elimination_names& names, bool is_row, int i);
template <class T>
[[noreturn]] void halt_small_pivot(const elimination_names& names, T val_piv);
[[noreturn]] void halt_last_row(std::string_view routine);

// A count that has grown by one and may now be past its limit.
inline void check_storage(const elimination_names& names, std::string_view routine, std::string_view what,
                          std::string_view limit, long long n, int m) {
    if (n > m) halt_storage(names, routine, what, limit, n, m);
}

// The lines of a failed replay: in the matrix stage, at pivot i of the right-hand-side stage, at its last row.
template <class T>
void say_matrix_stage(const elimination<T>& e, int i, T val_piv);
template <class T>
void say_rhs_stage(const elimination<T>& e, int i, T val_piv);
template <class T>
void say_rhs_last(const elimination<T>& e, T val_piv);
