#include "sparse/order.h"

#include <algorithm>

#include "base/signals.h"
#include "sparse/active_matrix.h"
#include "sparse/filled_part.h"
#include "sparse/stops.h"

namespace {

using std::size_t;

// A column of the pivot row while the step goes on.
template <class T>
struct touched_col {
    int place, col, slot;  // slot: its entry in the pivot row
    int old_count;
    int hit = -1;          // the row that was seen last to have an entry in it
    int largest_row = -1;  // of the rows that changed: has the largest value
    double largest = tiny_value;
    T val;  // of the pivot row, scaled
};

// One elimination, step by step.
template <class T>
struct stepper {
    elimination<T>& e;
    active_matrix<T>& a;
    std::vector<T>& val_w;
    bool by_values;
    std::string_view routine;
    int i = 0;                             // the step
    int c_piv = 0;                         // column of the pivot
    std::vector<touched_col<T>> piv_cols;  // by working column
    std::vector<int> inner;                // working rows in the pivot column, ascending
    std::vector<int> touched;              // [n] by column: member of piv_cols, or -1
    std::vector<int> step_of;              // [n] by row: the last step that eliminated in it
};

template <class T>
void check_singular(const active_matrix<T>& a, int i, const elimination_names& names) {
    for (int p = i; p < a.n; ++p) {
        if (at(a.nnz_row, at(a.row_at, p)) == 0) halt_singular(names, true, p);
        if (at(a.nnz_col, at(a.col_at, p)) == 0) halt_singular(names, false, p);
    }
}

// The last value of an entry that leaves the active part.
template <class T>
void keep(stepper<T>& s, const active_entry<T>& e) {
    if (s.by_values) at(s.val_w, e.slot) = e.val;
}

// Finds the pivot and brings it to its place. By values there is a candidate: the largest value of any row.
template <class T>
T choose_pivot(stepper<T>& s) {
    active_matrix<T>& a = s.a;
    if (s.by_values && a.n_zero > 0) check_singular(a, s.i, s.e.names);
    const active_entry<T>* best = a.first_best(s.i);
    if (!best) halt_last_row(s.routine);
    const int row_piv = a.rows.first(), r_piv = at(a.row_at, row_piv);
    s.c_piv = best->col;
    at(s.e.mat_rowexch, s.i) = row_piv;
    at(s.e.mat_colexch, s.i) = at(a.col_place, s.c_piv);
    at(s.e.mat_pp, s.i) = best->slot;
    a.bring_row(s.i, r_piv);
    a.bring_col(s.i, s.c_piv);
    if (s.by_values && magnitude(best->val) < s.e.gauss_epsln) halt_small_pivot(s.e.names, best->val);
    a.n_zero -= (at(a.nnz_row, r_piv) == 0) + (at(a.nnz_col, s.c_piv) == 0);
    return best->val;
}

// The pivot row leaves the active part, scaled. The rows in the pivot's column are listed.
template <class T>
void take_pivot_row(stepper<T>& s, const T& val_piv) {
    active_matrix<T>& a = s.a;
    const T val_pivinv = quotient(T(1), val_piv);
    const int r_piv = at(a.row_at, s.i);
    s.piv_cols.clear();
    for (active_entry<T>*u = a.row.begin(r_piv), *last = a.row.end(r_piv); u != last; ++u) {
        const int c = u->col;
        a.col.remove(c, std::find(a.col.begin(c), a.col.end(c), r_piv));
        if (c != s.c_piv) {
            touched_col<T> t{};
            t.place = at(a.col_place, c);
            t.col = c;
            t.slot = u->slot;
            t.old_count = at(a.nnz_col, c);
            at(a.nnz_col, c) -= counted(u->size()) > 0;
            if (at(a.bounds, c).low_row == r_piv) at(a.bounds, c).low_row = -1;
            if (s.by_values) u->val = product(u->val, val_pivinv);
            t.val = u->val;
            s.piv_cols.push_back(t);
        }
        keep(s, *u);
    }
    a.n_entry -= a.row.size(r_piv);
    a.row.clear(r_piv);
    const int n_piv = static_cast<int>(s.piv_cols.size()), m = s.e.limits.m_matttlop1;
    if (n_piv > m - s.e.n_matttlop1) halt_storage(s.e.names, s.routine, "n_matttlop1", "m_matttlop1", m + 1LL, m);
    s.e.n_matttlop1 += n_piv;
    std::sort(s.piv_cols.begin(), s.piv_cols.end(), [](auto& x, auto& y) { return x.place < y.place; });
    for (int t = 0; t < n_piv; ++t) at(s.touched, at(s.piv_cols, t).col) = t;
    s.inner.clear();
    for (const int* r = a.col.begin(s.c_piv); r != a.col.end(s.c_piv); ++r) s.inner.push_back(at(a.row_place, *r));
    a.col.clear(s.c_piv);
    std::sort(s.inner.begin(), s.inner.end());
}

// What a pass over a changed row finds.
struct row_tally {
    int count = 0;
    double largest = 0;
    void add(double size) {
        if (!(size > tiny_value)) return;
        ++count;
        largest = std::max(largest, size);
    }
};

template <class T>
void see_changed(touched_col<T>& t, int r, double size) {
    t.hit = r;
    if (!(size > t.largest)) return;
    t.largest = size;
    t.largest_row = r;
}

// New entries come by working column, rows by working row: this numbers the slots. Operations take their numbers by
// column; where the room ends among them, the first to find none speaks.
template <class T>
void fill_row(stepper<T>& s, int r, const T& val_np, row_tally& tally) {
    active_matrix<T>& a = s.a;
    const int n_piv = static_cast<int>(s.piv_cols.size()), m_2 = s.e.limits.m_matttlop2;
    const int room_2 = m_2 - s.e.n_matttlop2;
    for (int t = 0; t < n_piv; ++t) {
        touched_col<T>& u = at(s.piv_cols, t);
        if (u.hit != r) {
            check_storage(s.e.names, s.routine, "nnz_w", "mnz_w", static_cast<long long>(a.slot_row.size()) + 1,
                          s.e.limits.mnz_w);
            const T val = s.by_values ? product(u.val, -val_np) : T(1);
            a.add(r, u.col, val);
            const double size = magnitude(val);
            at(a.nnz_col, u.col) += size > tiny_value;
            tally.add(size);
            see_changed(u, r, size);
        }
        if (t >= room_2) halt_storage(s.e.names, s.routine, "n_matttlop2", "m_matttlop2", m_2 + 1LL, m_2);
    }
}

// Entries of a row in columns of the pivot row lose their product; all are counted. A function by itself, so that what
// it counts stays in registers.
struct changed_row {
    int n_hit, count;
    double largest;
};
template <class T>
[[gnu::noinline]] changed_row change_entries(active_entry<T>* x, const active_entry<T>* end, const int* touched,
                                             touched_col<T>* piv_cols, int* nnz_col, int r, bool by_values,
                                             const T val_np) {
    int n_hit = 0, count = 0;
    double largest = 0;
    for (; x != end; ++x) {
        const int t = touched[x->col];
        double size = x->size();
        if (t != -1) {
            ++n_hit;
            if (by_values) {
                const bool was_counted = size > tiny_value;
                x->set(x->val - product(piv_cols[t].val, val_np));
                size = x->size();
                if (was_counted != (size > tiny_value)) nnz_col[x->col] += was_counted ? -1 : 1;
            }
            see_changed(piv_cols[t], r, size);
        }
        count += size > tiny_value;
        largest = size > largest ? size : largest;
    }
    return {n_hit, count, counted(largest)};
}

// The operations of one row.
template <class T>
void eliminate_row(stepper<T>& s, int r) {
    active_matrix<T>& a = s.a;
    const int n_piv = static_cast<int>(s.piv_cols.size());
    at(s.step_of, r) = s.i;
    active_entry<T>* np = a.find(r, s.c_piv);
    const T val_np = np->val;
    keep(s, *np);
    a.row.remove(r, np);
    --a.n_entry;
    const auto [n_hit, count, largest] = change_entries(a.row.begin(r), a.row.end(r), s.touched.data(),
                                                        s.piv_cols.data(), a.nnz_col.data(), r, s.by_values, val_np);
    row_tally tally{count, largest};
    if (n_hit < n_piv || n_piv > s.e.limits.m_matttlop2 - s.e.n_matttlop2) fill_row(s, r, val_np, tally);
    s.e.n_matttlop2 += n_piv;
    a.n_zero += (tally.count == 0) - (at(a.nnz_row, r) == 0);
    at(a.nnz_row, r) = tally.count;
    at(a.valmax_row, r) = tally.largest;
}

// What is known of the largest value of a column once the rows of the step have changed.
template <class T>
void renew_bounds(const stepper<T>& s, column_bounds& b, const touched_col<T>& t) {
    const double largest = counted(t.largest);
    if (s.a.col.size(t.col) == static_cast<int>(s.inner.size())) {  // all its rows have changed
        b.low = b.high = largest;
        b.low_row = t.largest_row;
        return;
    }
    const bool low_stands = b.low_row != -1 && at(s.step_of, b.low_row) != s.i;
    if (!low_stands || largest > b.low) {
        b.low = largest;
        b.low_row = t.largest_row;
    }
    b.high = std::max(b.high, largest);
}

// Keys that the step may have made too high: those of its rows, and of others that meet a column where candidates may
// have become better.
template <class T>
void renew_keys(stepper<T>& s) {
    active_matrix<T>& a = s.a;
    for (touched_col<T>& t : s.piv_cols) {
        renew_bounds(s, at(a.bounds, t.col), t);
        a.recount_col(t.old_count, at(a.nnz_col, t.col));
        at(s.touched, t.col) = -1;
    }
    while (a.least_col < a.n && at(a.n_cols_with, a.least_col) == 0) ++a.least_col;
    for (const int place : s.inner) {
        const int r = at(a.row_at, place);
        a.set_key(r, a.least_count(r));
    }
    for (const touched_col<T>& t : s.piv_cols) {
        column_bounds& b = at(a.bounds, t.col);
        const int count = at(a.nnz_col, t.col);
        if (count >= t.old_count && b.refused < pivot_threshold * b.low) continue;
        b.refused = -1;
        if (a.col.size(t.col) == static_cast<int>(s.inner.size())) continue;
        for (const int *r = a.col.begin(t.col), *last = a.col.end(t.col); r != last; ++r) {
            const long long k = static_cast<long long>(at(a.nnz_row, *r) - 1) * (count - 1);
            if (k < at(a.key, *r)) a.set_key(*r, k);
        }
    }
}

// The order and the filled pattern for the replay.
template <class T>
void take_over(elimination<T>& e, active_matrix<T>& a, std::string_view routine) {
    e.row_perm = a.row_at;
    e.col_perm = a.col_at;
    e.row_perm_inv = a.row_place;
    e.col_perm_inv = a.col_place;
    const int last = a.n - 1, m = e.limits.m_matttlop3;
    e.row_w = std::move(a.slot_row);
    e.col_w = std::move(a.slot_col);
    long long n_upper = 0;
    for (size_t k = 0; k < e.row_w.size(); ++k) {
        const int r = e.row_w[k] = at(a.row_place, e.row_w[k]), c = e.col_w[k] = at(a.col_place, e.col_w[k]);
        n_upper += c > r;
        if (r == last && c == last) e.mat_pp.back() = static_cast<int>(k);
    }
    if (a.n > 0 && e.mat_pp.back() == -1) halt_last_row(routine);
    if (n_upper > m) halt_storage(e.names, routine, "n_matttlop3", "m_matttlop3", m + 1LL, m);
    e.n_matttlop3 = static_cast<int>(n_upper);
    e.lists.filled = false;
}

}  // namespace

template <class T>
void fast_order(elimination<T>& e, const knuth<T>& m, const T* val_m, bool by_values, std::vector<T>& val_w) {
    const int n = e.n = m.n_row;
    const std::string_view routine = by_values ? e.names.gauss_1a : e.names.gauss_1;
    if (m.nnz() > e.limits.mnz_w) halt_too_many_entries(e.names, routine, m.nnz(), e.limits.mnz_w);
    e.mat_rowexch.assign(static_cast<size_t>(n > 0 ? n - 1 : 0), 0);
    e.mat_colexch = e.mat_rowexch;
    e.mat_pp.assign(static_cast<size_t>(n), -1);
    e.n_matttlop1 = e.n_matttlop2 = e.n_matttlop3 = 0;
    active_matrix<T> a(m, val_m, by_values);
    val_w.assign(val_m, val_m + m.nnz());
    val_w.reserve(a.slot_row.capacity());
    const std::vector<int> none(static_cast<size_t>(n), -1);
    stepper<T> s{e, a, val_w, by_values, routine, 0, 0, {}, {}, none, none};
    for (; s.i < n - 1 && !(by_values && is_filled(a, s.i)); ++s.i) {
        heed_signals();
        take_pivot_row(s, choose_pivot(s));
        for (const int place : s.inner) eliminate_row(s, at(a.row_at, place));
        val_w.resize(a.slot_row.size());
        renew_keys(s);
    }
    if (s.i < n - 1) order_filled_part(e, a, val_w, routine, s.i);
    if (s.i == n - 1)
        for (const active_entry<T>& x : a.row.members(at(a.row_at, n - 1))) keep(s, x);
    take_over(e, a, routine);
}

template void fast_order(elimination<double>&, const knuth<double>&, const double*, bool, std::vector<double>&);
template void fast_order(elimination<complex_value>&, const knuth<complex_value>&, const complex_value*, bool,
                         std::vector<complex_value>&);
