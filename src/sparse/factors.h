// factors.h -- the compact replay: every index resolved, operations grouped by what can be kept in registers.
#pragma once
#include <cstddef>
#include <vector>

constexpr int m_long = 6;  // upper entries from which on a pivot is run by neighbours

// Consecutive pivots that are run in one way.
struct segment {
    enum kind {
        chain,  // each touches the next row and column only
        steps,  // one by one
        panel   // their upper rows reach the same columns behind them; real numbers only
    } how;
    int first, end;                  // working rows
    std::size_t from_step, to_step;  // places in the table of steps
};

// Working row p holds, in ascending working column: its lower entries, the pivot, its upper entries (scaled to a unit
// diagonal).
template <class T>
struct factors {
    int n = 0;
    std::vector<int> first;   // [n + 1]   entries of row p: first[p] .. first[p + 1] - 1
    std::vector<int> diag;    // [n]       entry of the pivot
    std::vector<int> col;     // [n_entry] working column
    std::vector<int> source;  // [n_entry] slot of the system; nnz of it for a fill-in

    std::vector<segment> segments;
    // By pivot: its entry, its right-hand side, its form, the number of lower entries. For each lower entry: the entry,
    // its right-hand side; then, for the form
    //   below m_long            as many targets, one for each upper entry
    //   m_long + upper entries  how many fours, twos and ones of neighbours they make and how many are first values of
    //                           fill-ins (complex numbers only), and for each of these its first target, upper entry
    // Entries and right-hand sides are places in w, upper entries are counted from the pivot.
    // By panel: the number of rows behind it that have entries in its columns, the number of upper entries behind it.
    // For each of these rows: its first entry there, their number, its right-hand side; its first target if all are
    // neighbours, or -1 and behind it each target.
    std::vector<int> steps;
    std::vector<T> gathered;  // [most upper entries of a panel] work space

    std::vector<T> w;       // [n_entry + n] values; behind them the right-hand side by working row
    std::vector<T> given;   // [nnz + 1] the system's values at the last matrix stage; behind them the start value of a
                            //           fill-in
    bool standing = false;  // w are the factors of given, and every pivot passed smallest
    double smallest = 0;
    int n_skipped = 0;     // matrix stages left out since the values had not changed
    std::vector<T> block;  // work space of several right-hand sides
};

// Makes the tables for an order and takes over the factors that it left.
//   row_w, col_w  [nnz with fill-in]  working position of each slot; every pivot position has one
//   val_w         [nnz with fill-in]  factors by slot
//   val_m         [nnz_m]             the values that they are of
template <class T>
void make_factors(factors<T>& f, int n, const std::vector<int>& row_w, const std::vector<int>& col_w, int nnz_m,
                  const std::vector<T>& val_w, const T* val_m);

// Factors of new values, and the forward pass for rhs by system row with them (null: of no matter). Gives the first
// working row whose pivot is below zero_piv, or -1; the last row is not tested.
template <class T>
int refactor_and_forward(factors<T>& f, const T* val_m, double zero_piv, const int* row_perm, const T* rhs);

// Forward pass by standing factors; gives the first row whose pivot is below zero_piv, the last included, or -1.
template <class T>
int forward(factors<T>& f, double zero_piv, const int* row_perm, const T* rhs);

// Back substitution behind either: x [n] by working column, sol by system column.
template <class T>
void backward(const factors<T>& f, const int* col_perm, T* x, T* sol);

// Forward and backward for several right-hand sides [n_cols][n].
template <class T>
int solve_columns(factors<T>& f, double zero_piv, const int* row_perm, const int* col_perm, int n_cols, const T* rhs,
                  T* sol);
