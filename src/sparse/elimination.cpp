#include "sparse/elimination.h"

#include <algorithm>
#include <cstring>

#include "base/halt.h"
#include "sparse/arithmetic.h"
#include "sparse/literal.h"
#include "sparse/order.h"
#include "sparse/stops.h"

namespace {

using std::size_t;

// A new order, and the replay made for it.
template <class T>
void make_order(elimination<T>& e, const knuth<T>& m, const T* val_m, pivot_rule rule) {
    const bool by_values = rule == pivot_rule::by_values, printing = e.debug_gauss_1 == 1 || e.debug_gauss_2 == 1;
    std::vector<T> val_w;
    if (!by_values) say(line(e.names.gauss_1, " starting..."));
    if (printing) {
        literal_gauss(e, m, val_m, rule);
        val_w = e.lists.w.val;
    } else {
        fast_order(e, m, val_m, by_values, val_w);
    }
    const size_t n = static_cast<size_t>(e.n);
    e.rhs_w.resize(n);
    e.x_w.resize(n);
    e.sol_w.resize(n);
    make_factors(e.compact, e.n, e.row_w, e.col_w, m.nnz(), val_w, val_m);
    if (!printing) e.lists = {};
}

// Of the lines of the right-hand-side stage, those for the row that failed; -1: none did.
template <class T>
int tell_rhs_stage(const elimination<T>& e, int p) {
    if (p == -1) return 0;
    const T val_piv = e.compact.w[static_cast<size_t>(e.compact.diag[static_cast<size_t>(p)])];
    if (p < e.n - 1)
        say_rhs_stage(e, p, val_piv);
    else
        say_rhs_last(e, val_piv);
    return 1;
}

template <class T>
T last_pivot(const factors<T>& f) {
    return f.w[static_cast<size_t>(f.diag.back())];
}

template <class T>
bool is_standing(const elimination<T>& e, const T* val_m) {
    const factors<T>& f = e.compact;
    return f.standing && f.smallest == e.zero_piv &&
           std::memcmp(val_m, f.given.data(), (f.given.size() - 1) * sizeof(T)) == 0;
}

// The matrix stage, and in mode 3 the forward pass with it.
template <class T>
int run_matrix_stage(elimination<T>& e, const T* val_m, int mode) {
    factors<T>& f = e.compact;
    f.standing = false;
    e.lists.factored = false;
    const T* rhs = mode == 1 ? nullptr : e.rhs_w.data();
    const int p = refactor_and_forward(f, val_m, e.zero_piv, e.row_perm.data(), rhs);
    if (p != -1) {
        say_matrix_stage(e, p, f.w[static_cast<size_t>(f.diag[static_cast<size_t>(p)])]);
        return 1;
    }
    f.standing = true;
    f.smallest = e.zero_piv;
    return 0;
}

template <class T>
int compact_gauss_2(elimination<T>& e, const T* val_m, int mode) {
    int failed = -1;
    if (mode == 2 || is_standing(e, val_m)) {
        if (mode != 2) ++e.compact.n_skipped;
        if (mode == 1) return 0;
        failed = forward(e.compact, e.zero_piv, e.row_perm.data(), e.rhs_w.data());
    } else {
        if (run_matrix_stage(e, val_m, mode)) return 1;
        if (mode == 1) return 0;
        if (is_below(last_pivot(e.compact), e.zero_piv)) failed = e.n - 1;
    }
    if (failed != -1) return tell_rhs_stage(e, failed);
    backward(e.compact, e.col_perm.data(), e.x_w.data(), e.sol_w.data());
    return 0;
}

// The replay that prints.
template <class T>
int list_gauss_2(elimination<T>& e, const knuth<T>& m, const T* val_m, int mode) {
    if (!e.lists.filled) literal_gauss(e, m, val_m, pivot_rule::as_given);
    if (mode == 2 && !e.lists.factored) literal_gauss_2(e, m.nnz(), e.compact.given.data(), 1, false);
    const int error = literal_gauss_2(e, m.nnz(), val_m, mode, e.debug_gauss_2 == 1);
    if (error == 0 && mode != 2) {  // both forms keep the same factors
        refactor_and_forward<T>(e.compact, val_m, e.zero_piv, nullptr, nullptr);
        e.compact.standing = false;
    }
    return error;
}

}  // namespace

template <class T>
void gauss_1a(elimination<T>& e, const knuth<T>& m, const T* val_m) {
    make_order(e, m, val_m, pivot_rule::by_values);
}

template <class T>
void gauss_1(elimination<T>& e, const knuth<T>& m, const T* val_m) {
    make_order(e, m, val_m, pivot_rule::by_counts);
}

template <class T>
void gauss_2(elimination<T>& e, const knuth<T>& m, const T* val_m, int mode, int& error) {
    error = 0;
    if (mode != 2 && m.nnz() > e.limits.mnz_w) halt_too_many_entries(e.names, e.names.gauss_2, m.nnz(), e.limits.mnz_w);
    if (e.n == 0) return;
    error = e.debug_gauss_2 == 1 ? list_gauss_2(e, m, val_m, mode) : compact_gauss_2(e, val_m, mode);
}

template <class T>
void solve_jac(elimination<T>& e, const knuth<T>& m, const T* val_m, const T* rhs_m, int l_rhs, int /*l_pattern*/,
               int mode_1, int l_replay, int mode_2) {
    if (l_rhs == 1) e.rhs_w.assign(rhs_m, rhs_m + m.n_row);
    if (mode_1 == 1) gauss_1(e, m, val_m);
    if (mode_1 == 2) gauss_1a(e, m, val_m);
    if (l_replay != 1) return;
    int error = 0;
    gauss_2(e, m, val_m, mode_2, error);
    if (error == 0) return;
    say(line(e.names.solve_jac, ": ", e.names.failed));
    say("  Calling gauss_1a (to reorder)...");
    gauss_1a(e, m, val_m);
    e.rhs_w.assign(rhs_m, rhs_m + m.n_row);
    gauss_2(e, m, val_m, mode_2, error);
    if (error == 0) return;
    halt({line(e.names.solve_jac, ": ", e.names.failed_again), "  (even after reordering)", "  Halting..."});
}

template <class T>
int solve_columns(elimination<T>& e, int n_cols, const T* rhs, T* sol) {
    if (e.n == 0) return 0;
    return tell_rhs_stage(e,
                          solve_columns(e.compact, e.zero_piv, e.row_perm.data(), e.col_perm.data(), n_cols, rhs, sol));
}

#define INSTANTIATE(T)                                                                                      \
    template void gauss_1a(elimination<T>&, const knuth<T>&, const T*);                                     \
    template void gauss_1(elimination<T>&, const knuth<T>&, const T*);                                      \
    template void gauss_2(elimination<T>&, const knuth<T>&, const T*, int, int&);                           \
    template void solve_jac(elimination<T>&, const knuth<T>&, const T*, const T*, int, int, int, int, int); \
    template int solve_columns(elimination<T>&, int, const T*, T*);
INSTANTIATE(double)
INSTANTIATE(std::complex<double>)
