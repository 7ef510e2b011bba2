// knuth.h -- the one storage form of every matrix: entries in flat arrays, linked along rows and along columns.
#pragma once
#include <complex>
#include <string>
#include <vector>

// An entry keeps its slot for life, so other tables may refer to it by number. Slots follow insertion, not position;
// -1 ends a list and marks an empty one. A value of 0 may be present: the pattern stays, values come and go.
template <class T>
struct knuth {
    int n_row = 0, n_col = 0;
    std::vector<T> val;           // [nnz]    value of each entry
    std::vector<int> row, col;    // [nnz]    its position
    std::vector<int> prow, pcol;  // [nnz]    next entry of the same row, of the same column; or -1
    std::vector<int> srow, scol;  // [n_row], [n_col]  first entry of each row, of each column; or -1
    std::vector<int> erow, ecol;  // [n_row], [n_col]  last entry; or -1
    int nnz() const { return static_cast<int>(row.size()); }
};

// ---- making and changing

// No entries; the row and column counts stay.
template <class T>
void knuth_zero(knuth<T>& k);
// The same with new counts.
template <class T>
void knuth_zero(knuth<T>& k, int n_row, int n_col);
// Inserts one entry at the next slot and keeps both lists ascending. Halts if the position is taken.
template <class T>
void knuth_addentry(knuth<T>& k, int row_given, int col_given, T val_given);
// Slot of the entry at a position, or -1.
template <class T>
int knuth_check_ij(const knuth<T>& k, int row_given, int col_given);
// The non-zero elements of a dense array, row by row. a has room for [m_row][m_col]; a size beyond that halts.
// flag: write mat_knuth.dat afterwards.
template <class T>
void ij_to_knuth(knuth<T>& k, int n_row, int n_col, int m_row, int m_col, const T* a, bool flag);
// The inverse; elements without an entry become 0. flag: write mat_ij.dat afterwards.
template <class T>
void knuth_to_ij(const knuth<T>& k, int m_row, int m_col, T* a, bool flag);

// ---- copying and joining

template <class T>
void knuth_copy(const knuth<T>& a, knuth<T>& b);
// The pattern only; slots that b has already keep their values, further ones are 0.
template <class A, class B>
void knuth_copy_1(const knuth<A>& a, knuth<B>& b);
// c = [a b]; the slots of b follow those of a. Halts unless the row counts are equal.
template <class T>
void knuth_append_1(const knuth<T>& a, const knuth<T>& b, knuth<T>& c);
// c = a above b. Halts unless the column counts are equal.
template <class T>
void knuth_append_2(const knuth<T>& a, const knuth<T>& b, knuth<T>& c);
// The same joins in place on a.
template <class T>
void knuth_append_1a(knuth<T>& a, const knuth<T>& b);
template <class T>
void knuth_append_2a(knuth<T>& a, const knuth<T>& b);
// Rebuild the column lists from the row lists, and the reverse.
template <class T>
void knuth_makecols(knuth<T>& k);
template <class T>
void knuth_makerows(knuth<T>& k);

// ---- another form

// Compressed columns, zero-based: cc_cn [n_col + 1], cc_row_index and cc_val [nnz]. flag: write mat_cc.dat.
template <class T>
void knuth_to_col_compressed(const knuth<T>& k, std::vector<int>& cc_cn, std::vector<int>& cc_row_index,
                             std::vector<T>& cc_val, bool flag);

// ---- what must hold

// Halts, with the caller's message, unless: lists ascend strictly; heads, tails and ends agree; every row and column
// has one list end; rows and columns reach the same positions. O(nnz).
template <class T>
void check_knuth(const knuth<T>& k, const std::string& message);
// Halts at the first row without an entry.
template <class T>
void check_diag_knuth(const knuth<T>& k);
