// active_matrix.h -- the part of a matrix that is still to be eliminated, with its candidates for the next pivot.
// Rows and columns keep their system numbers; where they stand after the exchanges is one table each way. Active
// entries lie row by row, unordered and contiguous; a column knows the rows that it meets.
//
// The pivot is the acceptable entry that comes first by (count, working row, working column). Each row has a key that
// is at most the count of its best acceptable entry, and a tournament over the working rows names the first smallest.
// Only that row is looked at: if its best has a larger count, the key rises and the tournament goes on. So a key must
// sink when a count or a largest value sinks (find_keys), and may lag behind what rises.
#pragma once
#include <algorithm>
#include <limits>
#include <vector>

#include "sparse/arithmetic.h"
#include "sparse/knuth.h"
#include "sparse/list_pool.h"
#include "sparse/smallest_first.h"

constexpr double tiny_value = 1e-40;  // a value up to it is not counted
constexpr double pivot_threshold = 0.25;

// Flat arrays by the int indices that the tables hold.
template <class V>
auto& at(V& v, int i) {
    return v[static_cast<std::size_t>(i)];
}

template <class T>
struct active_entry {
    int col, slot;
    T val;  // 1 in a search by counts
    double size() const { return magnitude(val); }
    void set(const T& x) { val = x; }
};
template <>
struct active_entry<complex_value> {
    int col, slot;
    complex_value val;
    double modulus;
    double size() const { return modulus; }
    void set(const complex_value& x) {
        val = x;
        modulus = magnitude(x);
    }
};

// The largest counted value of an active column, or 0, lies between low and high.
struct column_bounds {
    double low = 0, high = 0;
    int low_row = -1;     // has an entry of size low; -1: none is known
    double refused = -1;  // largest size that was refused against low; keys rely on that
};

template <class T>
struct active_matrix {
    int n;
    long long n_entry = 0;                                  // active entries
    list_pool<active_entry<T>> row;                         // by system row
    list_pool<int> col;                                     // by system column: rows
    std::vector<int> slot_row, slot_col;                    // [nnz with fill-in]
    std::vector<int> nnz_row, nnz_col;                      // [n]  active entries above 1e-40
    std::vector<double> valmax_row;                         // [n]  largest of them, or 0
    std::vector<column_bounds> bounds;                      // [n]
    std::vector<int> row_at, row_place, col_at, col_place;  // [n]  who stands where, and the inverse
    std::vector<long long> key;                             // [n]  by system row
    smallest_first rows;                                    // keys by working row
    std::vector<int> looked;                                // [n]  step in which the row's best was found, or -1
    std::vector<int> n_cols_with;                           // [n + 1]  active columns by their count
    int least_col = 0;                                      // no active column has a smaller count
    int n_zero = 0;                                         // active rows and columns without a counted entry

    active_matrix(const knuth<T>& m, const T* val_m, bool by_values);

    active_entry<T>* find(int r, int c) {
        active_entry<T>* e = row.begin(r);
        while (e->col != c) ++e;
        return e;
    }
    int add(int r, int c, const T& val);  // gives the new slot

    // Brings a row, a column to working position i; they leave the search.
    void bring_row(int i, int r);
    void bring_col(int i, int c);

    // Candidates.
    void set_key(int r, long long k) {
        at(key, r) = k;
        rows.set(at(row_place, r), k);
    }
    long long least_count(int r) const {
        const long long count = static_cast<long long>(at(nnz_row, r) - 1) * (std::max(least_col, 1) - 1);
        return row.size(r) == 0 ? smallest_first::none : std::max(count, 0LL);
    }
    void recount_col(int from, int to);  // the count of a column has changed
    bool acceptable_in_column(int c, double size);
    active_entry<T>* find_best(int r);  // and the true key; null: there is none
    active_entry<T>* first_best(int i);
};

inline double counted(double size) { return size > tiny_value ? size : 0; }

template <class T>
active_matrix<T>::active_matrix(const knuth<T>& m, const T* val_m, bool by_values)
    : n(m.n_row), slot_row(m.row), slot_col(m.col), rows(m.n_row) {
    const std::size_t size = static_cast<std::size_t>(n);
    for (std::vector<int>* v : {&nnz_row, &nnz_col}) v->assign(size, 0);
    for (std::size_t k = 0; k < m.row.size(); ++k) ++at(nnz_row, m.row[k]), ++at(nnz_col, m.col[k]);
    row.set_up(nnz_row);
    col.set_up(nnz_col);
    slot_row.reserve(2 * m.row.size());
    slot_col.reserve(2 * m.row.size());
    for (std::vector<int>* v : {&nnz_row, &nnz_col}) v->assign(size, 0);
    valmax_row.assign(size, 0);
    bounds.resize(size);
    key.assign(size, smallest_first::none);
    looked.assign(size, -1);
    n_cols_with.assign(size + 1, 0);
    row_at.resize(size);
    for (int i = 0; i < n; ++i) at(row_at, i) = i;
    row_place = col_at = col_place = row_at;
    for (std::size_t k = 0; k < m.row.size(); ++k) {
        const int r = m.row[k], c = m.col[k];
        active_entry<T> e{};
        e.col = c;
        e.slot = static_cast<int>(k);
        e.set(by_values ? val_m[k] : T(1));
        row.add(r, e);
        col.add(c, r);
        const double x = counted(e.size());
        at(nnz_row, r) += x > 0;
        at(nnz_col, c) += x > 0;
        at(valmax_row, r) = std::max(at(valmax_row, r), x);
        if (x > at(bounds, c).low) at(bounds, c) = {x, x, r, -1};
    }
    n_entry = static_cast<long long>(m.row.size());
    for (int i = 0; i < n; ++i) {
        ++at(n_cols_with, at(nnz_col, i));
        n_zero += (at(nnz_row, i) == 0) + (at(nnz_col, i) == 0);
    }
    while (least_col < n && at(n_cols_with, least_col) == 0) ++least_col;
    for (int r = 0; r < n; ++r) set_key(r, least_count(r));
}

template <class T>
int active_matrix<T>::add(int r, int c, const T& val) {
    active_entry<T> e{};
    e.col = c;
    e.slot = static_cast<int>(slot_row.size());
    e.set(val);
    row.add(r, e);
    col.add(c, r);
    slot_row.push_back(r);
    slot_col.push_back(c);
    ++n_entry;
    return e.slot;
}

template <class T>
void active_matrix<T>::bring_row(int i, int r) {
    const int j = at(row_place, r), moved = at(row_at, i);
    at(row_at, j) = moved;
    at(row_place, moved) = j;
    at(row_at, i) = r;
    at(row_place, r) = i;
    if (moved != r) rows.set(j, at(key, moved));
    rows.set(i, smallest_first::none);
}

template <class T>
void active_matrix<T>::bring_col(int i, int c) {
    const int j = at(col_place, c), moved = at(col_at, i);
    at(col_at, j) = moved;
    at(col_place, moved) = j;
    at(col_at, i) = c;
    at(col_place, c) = i;
    --at(n_cols_with, at(nnz_col, c));
}

template <class T>
void active_matrix<T>::recount_col(int from, int to) {
    if (from == to) return;
    --at(n_cols_with, from);
    ++at(n_cols_with, to);
    least_col = std::min(least_col, to);
    n_zero += (to == 0) - (from == 0);
}

template <class T>
bool active_matrix<T>::acceptable_in_column(int c, double size) {
    column_bounds& b = at(bounds, c);
    if (size >= pivot_threshold * b.high) return true;
    if (b.low != b.high && size >= pivot_threshold * b.low) {  // the bounds do not tell
        b.low = 0;
        b.low_row = -1;
        for (const int* r = col.begin(c); r != col.end(c); ++r) {
            const double x = counted(find(*r, c)->size());
            if (x > b.low) b.low = x, b.low_row = *r;
        }
        b.high = b.low;
        if (size >= pivot_threshold * b.high) return true;
    }
    b.refused = std::max(b.refused, size);
    return false;
}

template <class T>
active_entry<T>* active_matrix<T>::find_best(int r) {
    active_entry<T>* best = nullptr;
    int best_n = std::numeric_limits<int>::max(), best_place = 0;
    const bool alone = at(nnz_row, r) <= 1;  // all counts are 0
    const double enough = pivot_threshold * at(valmax_row, r);
    for (active_entry<T>*e = row.begin(r), *last = row.end(r); e != last; ++e) {
        const int c = e->col, count = alone ? 1 : at(nnz_col, c);
        if (count > best_n || (count == best_n && at(col_place, c) >= best_place)) continue;
        const double size = e->size();
        if (!(size >= enough) && !acceptable_in_column(c, size)) continue;
        best = e;
        best_n = count;
        best_place = at(col_place, c);
    }
    set_key(r, best ? static_cast<long long>(at(nnz_row, r) - 1) * (best_n - 1) : smallest_first::none);
    return best;
}

// The pivot of step i; null: there is none.
template <class T>
active_entry<T>* active_matrix<T>::first_best(int i) {
    active_entry<T>* best = nullptr;
    int found = -1;
    for (;;) {
        const int place = rows.first();
        if (place == -1) return nullptr;
        const int r = at(row_at, place);
        if (r == found) return best;
        if (at(looked, r) == i) return find_best(r);  // looked at before others of this step
        at(looked, r) = i;
        best = find_best(r);
        found = r;
    }
}
