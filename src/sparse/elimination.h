// elimination.h -- order, factors and solution of one sparse system whose pattern stays while its values change.
#pragma once
#include <complex>
#include <limits>
#include <string_view>
#include <vector>

#include "sparse/factors.h"
#include "sparse/knuth.h"
#include "sparse/operation_lists.h"

// The words by which the messages of one family differ.
struct elimination_names {
    std::string_view gauss_1, gauss_1a, gauss_2, nnz_active_k_1;  // routines
    std::string_view solve_jac;
    std::string_view failed, failed_again;  // behind solve_jac, when a replay fails
    std::string_view prefix, suffix;        // of the names of tables and values
};
extern const elimination_names real_names, complex_names, explicit_names;

// Room of the lists; the counts are held against it, nothing is stored beyond what exists.
struct elimination_limits {
    int mnz_w = std::numeric_limits<int>::max();        // entries with fill-in
    int m_matttlop1 = std::numeric_limits<int>::max();  // scalings of pivot rows
    int m_matttlop2 = std::numeric_limits<int>::max();  // updates and fill-ins
    int m_matttlop3 = std::numeric_limits<int>::max();  // back-substitution terms
};

template <class T>
const elimination_names& default_names() {
    return real_names;
}
template <>
inline const elimination_names& default_names<std::complex<double>>() {
    return complex_names;
}

template <class T>
struct elimination {
    elimination_names names = default_names<T>();
    elimination_limits limits;
    double zero_piv = 1e-40;                   // smallest pivot that a replay accepts
    double gauss_epsln = 1e-40;                // smallest pivot that gauss_1a accepts
    int debug_gauss_1 = 0, debug_gauss_2 = 0;  // 1: print the lists as they are made, as they are replayed

    // The order, valid for one pattern; replaced by gauss_1, gauss_1a and by the retry of solve_jac.
    int n = 0;
    std::vector<int> row_perm, col_perm;          // [n]  system row, column at working position i
    std::vector<int> row_perm_inv, col_perm_inv;  // [n]  the inverses
    std::vector<int> mat_rowexch, mat_colexch;    // [n - 1]  working row, column exchanged with i at step i, or i
    std::vector<int> mat_pp;                      // [n]  slot of the pivot of step i
    std::vector<int> row_w, col_w;                // [nnz with fill-in]  working position of each slot
    int n_matttlop1 = 0, n_matttlop2 = 0, n_matttlop3 = 0;  // operations in each list

    factors<T> compact;        // the replay in use
    operation_lists<T> lists;  // the plain lists, for printing

    std::vector<T> rhs_w;  // [n]  right-hand side, system rows
    std::vector<T> x_w;    // [n]  solution, working columns
    std::vector<T> sol_w;  // [n]  solution, system columns
};

// One step of the linear solver on a square system m with values val_m and right-hand side rhs_m.
//   l_rhs      1: take rhs_m
//   l_pattern  1: take the pattern of m (a new order always starts from it)
//   mode_1     2: new order by values (gauss_1a); 1: by counts alone (gauss_1); other: the order stands
//   l_replay   1: run gauss_2 with mode_2; the solution is in sol_w
// A replay that meets a pivot below zero_piv prints so, takes a new order once and tries again; then halts.
template <class T>
void solve_jac(elimination<T>& e, const knuth<T>& m, const T* val_m, const T* rhs_m, int l_rhs, int l_pattern,
               int mode_1, int l_replay, int mode_2);

// New order: pivots by the smallest Markowitz count among entries of at least a quarter of the largest in their row or
// column (gauss_1a), or by the count alone (gauss_1, which leaves no factors). Halts on a singular matrix, a pivot
// below gauss_epsln, on an active part without entries and on exceeded limits.
template <class T>
void gauss_1a(elimination<T>& e, const knuth<T>& m, const T* val_m);
template <class T>
void gauss_1(elimination<T>& e, const knuth<T>& m, const T* val_m);

// Replay on new values. mode 1: factors only; 2: right-hand side rhs_w only; 3: both. error: 1 if a pivot is below
// zero_piv, after the lines that say so. A matrix stage on the values of the last one is skipped.
template <class T>
void gauss_2(elimination<T>& e, const knuth<T>& m, const T* val_m, int mode, int& error);

// Solutions for several right-hand sides with standing factors, each column as gauss_2 in mode 2 would.
//   rhs, sol   [n_cols][n]; sol may be rhs.  Gives 1, after the lines that say so, if a pivot is below zero_piv.
template <class T>
int solve_columns(elimination<T>& e, int n_cols, const T* rhs, T* sol);
