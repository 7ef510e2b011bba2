// active_matrix.h -- the part of a matrix that is still to be eliminated, with its candidates for the next pivot.
// Rows and columns keep their system numbers; where they stand after the exchanges is one table each way. Active
// entries hang in unordered lists by row and by column, so a step costs what it touches: the pivot's row and column.
//
// A search by attempts, smallest count first, visits entries by (count, working row, working column) and takes the
// first acceptable one. So each row keeps its best acceptable entry, and a tournament over the working rows names the
// first smallest. A row's best can only change if the row changed, or the count or the largest value of one of its
// columns, or if an exchange moved the column of its best (which then loses ties).
#pragma once
#include <algorithm>
#include <limits>
#include <vector>

#include "sparse/arithmetic.h"
#include "sparse/knuth.h"
#include "sparse/smallest_first.h"

constexpr long long no_count = std::numeric_limits<long long>::max();  // of a row without a candidate
constexpr double tiny_value = 1e-40;                                   // a value up to it is not counted
constexpr double pivot_threshold = 0.25;

// Flat arrays by the int indices that the tables hold.
template <class V>
auto& at(V& v, int i) {
    return v[static_cast<std::size_t>(i)];
}

template <class T>
struct active_entry {
    int row, col;                                            // system numbers
    int next_in_row, prev_in_row, next_in_col, prev_in_col;  // or -1
    double size;                                             // magnitude; 1 in a search by counts
    T val;
};

template <class T>
struct active_matrix {
    int n;
    bool by_values;
    std::vector<active_entry<T>> entries;                   // by slot
    std::vector<int> head_row, head_col;                    // [n]  first active entry, or -1
    std::vector<int> nnz_row, nnz_col;                      // [n]  active entries above 1e-40
    std::vector<double> valmax_row, valmax_col;             // [n]  largest of them, or 0
    std::vector<int> row_at, row_place, col_at, col_place;  // [n]  who stands where, and the inverse
    std::vector<int> best;                                  // [n]  slot of the row's best candidate, or -1
    std::vector<long long> best_count;                      // [n]  no_count if there is none
    smallest_first rows;                                    // best counts by working row
    int n_zero = 0;                                         // active rows and columns without a counted entry

    active_matrix(const knuth<T>& m, const T* val_m, bool values);

    double size_of(const T& val) const { return by_values ? magnitude(val) : 1; }

    // Entries; those of a row or column that leaves the active part leave the lists that cross it.
    int add(int row, int col, const T& val);
    void unlink_from_row(int k);
    void unlink_from_col(int k);
    double largest_of_col(int c) const;
    void count_row(int r);

    // Brings a row, a column to working position i.
    void bring_row(int i, int r);
    void bring_col(int i, int c);

    // Candidates.
    long long count_of(const active_entry<T>& e) const {
        return static_cast<long long>(at(nnz_col, e.col) - 1) * (at(nnz_row, e.row) - 1);
    }
    bool acceptable(const active_entry<T>& e) const {
        return e.size >= pivot_threshold * at(valmax_row, e.row) || e.size >= pivot_threshold * at(valmax_col, e.col);
    }
    bool better(const active_entry<T>& e, long long count, int than, long long than_count) const;
    void set_best(int r, int k, long long count);
    void find_best(int r);
    void look_again(int k);  // the count or the largest value of the entry's column has changed
};

inline double counted(double size) { return size > tiny_value ? size : 0; }

template <class T>
active_matrix<T>::active_matrix(const knuth<T>& m, const T* val_m, bool values)
    : n(m.n_row), by_values(values), rows(m.n_row) {
    const std::size_t size = static_cast<std::size_t>(n);
    entries.reserve(m.row.size() * 2);
    for (std::vector<int>* v : {&head_row, &head_col, &best}) v->assign(size, -1);
    for (std::vector<int>* v : {&nnz_row, &nnz_col}) v->assign(size, 0);
    valmax_row.assign(size, 0);
    valmax_col.assign(size, 0);
    best_count.assign(size, no_count);
    row_at.resize(size);
    for (int i = 0; i < n; ++i) at(row_at, i) = i;
    row_place = col_at = col_place = row_at;
    for (std::size_t k = 0; k < m.row.size(); ++k) {
        const int c = m.col[k], slot = add(m.row[k], c, val_m[k]);
        const double x = counted(at(entries, slot).size);
        at(nnz_col, c) += x > 0;
        at(valmax_col, c) = std::max(at(valmax_col, c), x);
    }
    for (int r = 0; r < n; ++r) count_row(r);
    for (int r = 0; r < n; ++r) find_best(r);
    for (int i = 0; i < n; ++i) n_zero += (at(valmax_row, i) == 0) + (at(valmax_col, i) == 0);
}

template <class T>
int active_matrix<T>::add(int row, int col, const T& val) {
    const int k = static_cast<int>(entries.size());
    int &first_row = at(head_row, row), &first_col = at(head_col, col);
    entries.push_back({row, col, first_row, -1, first_col, -1, size_of(val), val});
    if (first_row != -1) at(entries, first_row).prev_in_row = k;
    if (first_col != -1) at(entries, first_col).prev_in_col = k;
    first_row = first_col = k;
    return k;
}

template <class T>
void active_matrix<T>::unlink_from_row(int k) {
    const active_entry<T>& e = at(entries, k);
    (e.prev_in_row == -1 ? at(head_row, e.row) : at(entries, e.prev_in_row).next_in_row) = e.next_in_row;
    if (e.next_in_row != -1) at(entries, e.next_in_row).prev_in_row = e.prev_in_row;
}

template <class T>
void active_matrix<T>::unlink_from_col(int k) {
    const active_entry<T>& e = at(entries, k);
    (e.prev_in_col == -1 ? at(head_col, e.col) : at(entries, e.prev_in_col).next_in_col) = e.next_in_col;
    if (e.next_in_col != -1) at(entries, e.next_in_col).prev_in_col = e.prev_in_col;
}

template <class T>
double active_matrix<T>::largest_of_col(int c) const {
    double largest = 0;
    for (int k = at(head_col, c); k != -1; k = at(entries, k).next_in_col)
        largest = std::max(largest, counted(at(entries, k).size));
    return largest;
}

template <class T>
void active_matrix<T>::count_row(int r) {
    int count = 0;
    double largest = 0;
    for (int k = at(head_row, r); k != -1; k = at(entries, k).next_in_row) {
        const double size = counted(at(entries, k).size);
        count += size > 0;
        largest = std::max(largest, size);
    }
    at(nnz_row, r) = count;
    at(valmax_row, r) = largest;
}

template <class T>
void active_matrix<T>::bring_row(int i, int r) {
    const int j = at(row_place, r), moved = at(row_at, i);
    at(row_at, j) = moved;
    at(row_place, moved) = j;
    at(row_at, i) = r;
    at(row_place, r) = i;
    if (moved != r) set_best(moved, at(best, moved), at(best_count, moved));
    rows.set(i, smallest_first::none);
}

template <class T>
void active_matrix<T>::bring_col(int i, int c) {
    const int j = at(col_place, c), moved = at(col_at, i);
    at(col_at, j) = moved;
    at(col_place, moved) = j;
    at(col_at, i) = c;
    at(col_place, c) = i;
}

template <class T>
bool active_matrix<T>::better(const active_entry<T>& e, long long count, int than, long long than_count) const {
    if (count > than_count) return false;
    if (than != -1 && count == than_count && at(col_place, e.col) >= at(col_place, at(entries, than).col)) return false;
    return acceptable(e);
}

template <class T>
void active_matrix<T>::set_best(int r, int k, long long count) {
    at(best, r) = k;
    at(best_count, r) = count;
    rows.set(at(row_place, r), k == -1 ? smallest_first::none : count);
}

template <class T>
void active_matrix<T>::find_best(int r) {
    int found = -1;
    long long found_count = no_count;
    for (int k = at(head_row, r); k != -1; k = at(entries, k).next_in_row) {
        const active_entry<T>& e = at(entries, k);
        const long long count = count_of(e);
        if (count > found_count || !better(e, count, found, found_count)) continue;
        found = k;
        found_count = count;
    }
    set_best(r, found, found_count);
}

template <class T>
void active_matrix<T>::look_again(int k) {
    const active_entry<T>& e = at(entries, k);
    const long long count = count_of(e);
    if (at(best, e.row) == k) {
        if (count <= at(best_count, e.row) && acceptable(e))
            set_best(e.row, k, count);
        else
            find_best(e.row);
    } else if (better(e, count, at(best, e.row), at(best_count, e.row))) {
        set_best(e.row, k, count);
    }
}
