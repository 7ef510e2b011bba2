#include "sparse/order.h"

#include <algorithm>
#include <cstdint>

#include "sparse/arithmetic.h"
#include "sparse/smallest_first.h"
#include "sparse/stops.h"

// Rows and columns keep their system numbers; where they stand after the exchanges is one table each way. Active
// entries hang in unordered lists by row and by column, so a step costs what it touches: the pivot's row and column.
//
// A search by attempts, smallest count first, visits entries by (count, working row, working column) and takes the
// first acceptable one. So each row keeps its best acceptable entry, and a tournament over the working rows names the
// first smallest. A row's best can only change if the row changed, or the count or the largest value of one of its
// columns, or if the exchange moved the column of its best (which then loses ties).

namespace {

using std::size_t;

template <class V>
auto& at(V& v, int i) {
    return v[static_cast<size_t>(i)];
}

constexpr long long no_count = 5000;  // a count at or above it is never a candidate
constexpr double tiny = 1e-40;        // a value up to it is not counted
constexpr double threshold = 0.25;

template <class T>
struct entry {
    int row, col;                                            // system numbers
    int next_in_row, prev_in_row, next_in_col, prev_in_col;  // or -1
    double size;                                             // magnitude; 1 in a search by counts
    T val;
};

template <class T>
struct active_matrix {
    int n;
    bool by_values;
    std::vector<entry<T>> entries;                          // by slot
    std::vector<int> head_row, head_col;                    // [n]  first active entry, or -1
    std::vector<int> nnz_row, nnz_col;                      // [n]  active entries above 1e-40
    std::vector<double> valmax_row, valmax_col;             // [n]  largest of them, or 0
    std::vector<int> row_at, row_place, col_at, col_place;  // [n]  who stands where, and the inverse
    std::vector<int> best;                                  // [n]  slot of the row's best candidate, or -1
    std::vector<long long> best_count;                      // [n]
    smallest_first rows;                                    // by working row

    active_matrix(int size, bool values) : n(size), by_values(values), rows(size) {}
};

double counted(double size) { return size > tiny ? size : 0; }

template <class T>
void link(active_matrix<T>& a, int k) {
    entry<T>& e = at(a.entries, k);
    int& row = at(a.head_row, e.row);
    int& col = at(a.head_col, e.col);
    e.prev_in_row = e.prev_in_col = -1;
    e.next_in_row = row;
    e.next_in_col = col;
    if (row != -1) at(a.entries, row).prev_in_row = k;
    if (col != -1) at(a.entries, col).prev_in_col = k;
    row = col = k;
}
template <class T>
void unlink_from_row(active_matrix<T>& a, int k) {
    const entry<T>& e = at(a.entries, k);
    (e.prev_in_row == -1 ? at(a.head_row, e.row) : at(a.entries, e.prev_in_row).next_in_row) = e.next_in_row;
    if (e.next_in_row != -1) at(a.entries, e.next_in_row).prev_in_row = e.prev_in_row;
}
template <class T>
void unlink_from_col(active_matrix<T>& a, int k) {
    const entry<T>& e = at(a.entries, k);
    (e.prev_in_col == -1 ? at(a.head_col, e.col) : at(a.entries, e.prev_in_col).next_in_col) = e.next_in_col;
    if (e.next_in_col != -1) at(a.entries, e.next_in_col).prev_in_col = e.prev_in_col;
}

template <class T>
long long count_of(const active_matrix<T>& a, const entry<T>& e) {
    return static_cast<long long>(at(a.nnz_col, e.col) - 1) * (at(a.nnz_row, e.row) - 1);
}
template <class T>
bool acceptable(const active_matrix<T>& a, const entry<T>& e) {
    return e.size >= threshold * at(a.valmax_row, e.row) || e.size >= threshold * at(a.valmax_col, e.col);
}

template <class T>
void set_best(active_matrix<T>& a, int r, int k, long long count) {
    at(a.best, r) = k;
    at(a.best_count, r) = count;
    a.rows.set(at(a.row_place, r), k == -1 ? smallest_first::none : static_cast<int>(count));
}

// Entry k against the row's present best.
template <class T>
bool better(const active_matrix<T>& a, const entry<T>& e, long long count, int best, long long best_count) {
    if (count > best_count || count >= no_count) return false;
    if (best != -1 && count == best_count && at(a.col_place, e.col) >= at(a.col_place, at(a.entries, best).col))
        return false;
    return acceptable(a, e);
}

template <class T>
void find_best(active_matrix<T>& a, int r) {
    int best = -1;
    long long best_count = no_count;
    for (int k = at(a.head_row, r); k != -1; k = at(a.entries, k).next_in_row) {
        const entry<T>& e = at(a.entries, k);
        const long long count = count_of(a, e);
        if (!better(a, e, count, best, best_count)) continue;
        best = k;
        best_count = count;
    }
    set_best(a, r, best, best_count);
}

// The count or the largest value of the entry's column has changed.
template <class T>
void look_again(active_matrix<T>& a, int k) {
    const entry<T>& e = at(a.entries, k);
    const long long count = count_of(a, e);
    if (at(a.best, e.row) == k) {
        if (count <= at(a.best_count, e.row) && acceptable(a, e))
            set_best(a, e.row, k, count);
        else
            find_best(a, e.row);
    } else if (better(a, e, count, at(a.best, e.row), at(a.best_count, e.row))) {
        set_best(a, e.row, k, count);
    }
}

template <class T>
void count_row(active_matrix<T>& a, int r) {
    int count = 0;
    double largest = 0;
    for (int k = at(a.head_row, r); k != -1; k = at(a.entries, k).next_in_row) {
        const double size = counted(at(a.entries, k).size);
        count += size > 0;
        largest = std::max(largest, size);
    }
    at(a.nnz_row, r) = count;
    at(a.valmax_row, r) = largest;
}

template <class T>
double largest_of_col(const active_matrix<T>& a, int c) {
    double largest = 0;
    for (int k = at(a.head_col, c); k != -1; k = at(a.entries, k).next_in_col)
        largest = std::max(largest, counted(at(a.entries, k).size));
    return largest;
}

// A column of the pivot row while the step goes on.
struct touched_col {
    int place, col, slot;  // slot: its entry in the pivot row
    int old_count;
    double old_max;
    bool fell;  // the largest value may have gone: to be searched anew
    int hit;    // the row that was seen last to have an entry in it
};

// An entry of column t changes its size; 0 stands for no entry.
template <class T>
void change_size(active_matrix<T>& a, touched_col& t, double from, double to) {
    from = counted(from);
    to = counted(to);
    at(a.nnz_col, t.col) += (to > 0) - (from > 0);
    double& largest = at(a.valmax_col, t.col);
    if (to >= largest)
        largest = to;
    else if (from == largest)
        t.fell = true;
}

template <class T>
void load(active_matrix<T>& a, const knuth<T>& m, const T* val_m) {
    const size_t n = static_cast<size_t>(a.n);
    a.entries.reserve(m.row.size() * 2);
    a.head_row.assign(n, -1);
    a.head_col.assign(n, -1);
    a.nnz_row.assign(n, 0);
    a.nnz_col.assign(n, 0);
    a.valmax_row.assign(n, 0);
    a.valmax_col.assign(n, 0);
    a.best.assign(n, -1);
    a.best_count.assign(n, no_count);
    a.row_at.resize(n);
    for (int i = 0; i < a.n; ++i) at(a.row_at, i) = i;
    a.row_place = a.col_at = a.col_place = a.row_at;
    for (size_t k = 0; k < m.row.size(); ++k) {
        a.entries.push_back({m.row[k], m.col[k], -1, -1, -1, -1, a.by_values ? magnitude(val_m[k]) : 1, val_m[k]});
        link(a, static_cast<int>(k));
        const double size = counted(a.entries.back().size);
        at(a.nnz_col, m.col[k]) += size > 0;
        at(a.valmax_col, m.col[k]) = std::max(at(a.valmax_col, m.col[k]), size);
    }
    for (int r = 0; r < a.n; ++r) count_row(a, r);
    for (int r = 0; r < a.n; ++r) find_best(a, r);
}

template <class T>
void check_singular(const active_matrix<T>& a, int i, const elimination_names& names) {
    for (int p = i; p < a.n; ++p) {
        if (at(a.valmax_row, at(a.row_at, p)) == 0) halt_singular(names, true, p);
        if (at(a.valmax_col, at(a.col_at, p)) == 0) halt_singular(names, false, p);
    }
}

// Brings who stands at place j to place i.
void exchange(std::vector<int>& at_place, std::vector<int>& place, int i, int j) {
    std::swap(at(at_place, i), at(at_place, j));
    at(place, at(at_place, i)) = i;
    at(place, at(at_place, j)) = j;
}

}  // namespace

template <class T>
bool fast_order(elimination<T>& e, const knuth<T>& m, const T* val_m, bool by_values, std::vector<T>& val_w) {
    const int n = e.n = m.n_row;
    const std::string_view routine = by_values ? e.names.gauss_1a : e.names.gauss_1;
    const elimination_limits& limits = e.limits;
    if (m.nnz() > limits.mnz_w) halt_too_many_entries(e.names, routine, m.nnz(), limits.mnz_w);
    active_matrix<T> a(n, by_values);
    load(a, m, val_m);
    long long n_zero = 0;  // active rows and columns without a counted entry
    for (int i = 0; i < n; ++i) n_zero += (at(a.valmax_row, i) == 0) + (at(a.valmax_col, i) == 0);
    e.mat_rowexch.assign(static_cast<size_t>(n > 0 ? n - 1 : 0), 0);
    e.mat_colexch = e.mat_rowexch;
    e.mat_pp.assign(static_cast<size_t>(n), -1);
    e.n_matttlop1 = e.n_matttlop2 = e.n_matttlop3 = 0;

    std::vector<touched_col> piv_cols;
    std::vector<std::pair<int, int>> inner;                // working row and slot in the pivot column
    std::vector<int> touched(static_cast<size_t>(n), -1);  // [n] by column: member of piv_cols, or -1
    std::vector<int> step_of(static_cast<size_t>(n), -1);  // [n] by row: the last step that eliminated in it
    for (int i = 0; i < n - 1; ++i) {
        if (by_values && n_zero > 0) check_singular(a, i, e.names);
        const int row_piv = a.rows.first();
        if (row_piv == -1) return false;
        const int r_piv = at(a.row_at, row_piv), k_piv = at(a.best, r_piv), c_piv = at(a.entries, k_piv).col;
        const int col_piv = at(a.col_place, c_piv), c_moved = at(a.col_at, i);
        at(e.mat_rowexch, i) = row_piv;
        at(e.mat_colexch, i) = col_piv;
        at(e.mat_pp, i) = k_piv;
        exchange(a.row_at, a.row_place, i, row_piv);
        exchange(a.col_at, a.col_place, i, col_piv);
        if (row_piv != i) {
            const int r = at(a.row_at, row_piv);
            set_best(a, r, at(a.best, r), at(a.best_count, r));
        }
        a.rows.set(i, smallest_first::none);
        const T val_piv = at(a.entries, k_piv).val;
        if (by_values && magnitude(val_piv) < e.gauss_epsln) halt_small_pivot(e.names, val_piv);
        n_zero -= (at(a.valmax_row, r_piv) == 0) + (at(a.valmax_col, c_piv) == 0);

        // The pivot row leaves the columns; it keeps its own list, scaled.
        const T val_pivinv = quotient(T(1), val_piv);
        piv_cols.clear();
        for (int k = at(a.head_row, r_piv); k != -1; k = at(a.entries, k).next_in_row) {
            entry<T>& u = at(a.entries, k);
            unlink_from_col(a, k);
            if (k == k_piv) continue;
            piv_cols.push_back(
                {at(a.col_place, u.col), u.col, k, at(a.nnz_col, u.col), at(a.valmax_col, u.col), false, -1});
            change_size(a, piv_cols.back(), u.size, 0);
            if (!by_values) continue;
            u.val = product(u.val, val_pivinv);
            u.size = magnitude(u.val);
        }
        const int n_piv = static_cast<int>(piv_cols.size());
        if (n_piv > limits.m_matttlop1 - e.n_matttlop1)
            halt_storage(e.names, routine, "n_matttlop1", "m_matttlop1", limits.m_matttlop1 + 1, limits.m_matttlop1);
        e.n_matttlop1 += n_piv;
        std::sort(piv_cols.begin(), piv_cols.end(),
                  [](const touched_col& x, const touched_col& y) { return x.place < y.place; });
        for (int t = 0; t < n_piv; ++t) at(touched, at(piv_cols, t).col) = t;
        inner.clear();
        for (int k = at(a.head_col, c_piv); k != -1; k = at(a.entries, k).next_in_col)
            inner.emplace_back(at(a.row_place, at(a.entries, k).row), k);
        std::sort(inner.begin(), inner.end());

        // The rows below, by working row; fill-in of a row by working column: this numbers the slots.
        for (const auto& [place, np] : inner) {
            const int r = at(a.row_at, place);
            const T val_np = at(a.entries, np).val;
            at(step_of, r) = i;
            unlink_from_row(a, np);
            int n_hit = 0;
            for (int k = at(a.head_row, r); k != -1; k = at(a.entries, k).next_in_row) {
                entry<T>& x = at(a.entries, k);
                if (at(touched, x.col) == -1) continue;
                touched_col& t = at(piv_cols, at(touched, x.col));
                t.hit = r;
                ++n_hit;
                if (!by_values) continue;
                const double old_size = x.size;
                x.val = x.val - product(at(a.entries, t.slot).val, val_np);
                x.size = magnitude(x.val);
                change_size(a, t, old_size, x.size);
            }
            const bool room_w = n_piv - n_hit <= limits.mnz_w - static_cast<int>(a.entries.size());
            const bool room_2 = n_piv <= limits.m_matttlop2 - e.n_matttlop2;
            for (int t = 0; t < n_piv && (n_hit < n_piv || !room_2); ++t) {
                touched_col& u = at(piv_cols, t);
                const int nnz_w = static_cast<int>(a.entries.size());
                if (u.hit != r) {
                    if (!room_w) check_storage(e.names, routine, "nnz_w", "mnz_w", nnz_w + 1, limits.mnz_w);
                    const T val = by_values ? product(at(a.entries, u.slot).val, -val_np) : T(0);
                    a.entries.push_back({r, u.col, -1, -1, -1, -1, by_values ? magnitude(val) : 1, val});
                    link(a, nnz_w);
                    change_size(a, u, 0, a.entries.back().size);
                }
                if (!room_2 && t + 1 > limits.m_matttlop2 - e.n_matttlop2)
                    halt_storage(e.names, routine, "n_matttlop2", "m_matttlop2", limits.m_matttlop2 + 1,
                                 limits.m_matttlop2);
            }
            e.n_matttlop2 += n_piv;
            n_zero -= at(a.valmax_row, r) == 0;
            count_row(a, r);
            n_zero += at(a.valmax_row, r) == 0;
        }
        for (touched_col& t : piv_cols) {
            if (t.fell) at(a.valmax_col, t.col) = largest_of_col(a, t.col);
            n_zero += (at(a.valmax_col, t.col) == 0) - (t.old_max == 0);
            at(touched, t.col) = -1;
        }

        // Candidates that the step may have changed; first those that lost a tie, so that the rest meet a true best.
        for (const auto& [place, np] : inner) find_best(a, at(a.row_at, place));
        if (col_piv != i)
            for (int k = at(a.head_col, c_moved); k != -1; k = at(a.entries, k).next_in_col) {
                const int r = at(a.entries, k).row;
                if (at(a.best, r) == k && at(step_of, r) != i) find_best(a, r);
            }
        for (const touched_col& t : piv_cols) {
            if (at(a.nnz_col, t.col) == t.old_count && at(a.valmax_col, t.col) == t.old_max) continue;
            for (int k = at(a.head_col, t.col); k != -1; k = at(a.entries, k).next_in_col)
                if (at(step_of, at(a.entries, k).row) != i) look_again(a, k);
        }
    }

    e.row_perm = a.row_at;
    e.col_perm = a.col_at;
    e.row_perm_inv = a.row_place;
    e.col_perm_inv = a.col_place;
    const size_t nnz_w = a.entries.size();
    e.row_w.resize(nnz_w);
    e.col_w.resize(nnz_w);
    val_w.resize(nnz_w);
    long long n_upper = 0;
    for (size_t k = 0; k < nnz_w; ++k) {
        e.row_w[k] = at(a.row_place, a.entries[k].row);
        e.col_w[k] = at(a.col_place, a.entries[k].col);
        val_w[k] = a.entries[k].val;
        n_upper += e.col_w[k] > e.row_w[k];
        if (e.row_w[k] == n - 1 && e.col_w[k] == n - 1) at(e.mat_pp, n - 1) = static_cast<int>(k);
    }
    if (n > 0 && at(e.mat_pp, n - 1) == -1) halt_last_row(routine);
    if (n_upper > limits.m_matttlop3)
        halt_storage(e.names, routine, "n_matttlop3", "m_matttlop3", limits.m_matttlop3 + 1, limits.m_matttlop3);
    e.n_matttlop3 = static_cast<int>(n_upper);
    e.compact_holds = true;
    e.lists.filled = false;
    return true;
}

template bool fast_order(elimination<double>&, const knuth<double>&, const double*, bool, std::vector<double>&);
template bool fast_order(elimination<complex_value>&, const knuth<complex_value>&, const complex_value*, bool,
                         std::vector<complex_value>&);
