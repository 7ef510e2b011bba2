#include "sparse/order.h"

#include "run/signals.h"
#include "sparse/active_matrix.h"
#include "sparse/stops.h"

namespace {

using std::size_t;

// A column of the pivot row while the step goes on.
struct touched_col {
    int place, col, slot;  // slot: its entry in the pivot row
    int old_count;
    double old_max;
    bool fell;  // the largest value may have gone: to be searched anew
    int hit;    // the row that was seen last to have an entry in it
};

// One elimination, step by step.
template <class T>
struct stepper {
    elimination<T>& e;
    active_matrix<T>& a;
    std::string_view routine;
    int i = 0;                               // the step
    int k_piv = 0, c_piv = 0, c_moved = 0;   // slot and column of the pivot; the column that made room for it
    std::vector<touched_col> piv_cols;       // by working column
    std::vector<std::pair<int, int>> inner;  // working row and slot in the pivot column, by working row
    std::vector<int> touched;                // [n] by column: member of piv_cols, or -1
    std::vector<int> step_of;                // [n] by row: the last step that eliminated in it
};

template <class T>
void check_singular(const active_matrix<T>& a, int i, const elimination_names& names) {
    for (int p = i; p < a.n; ++p) {
        if (at(a.valmax_row, at(a.row_at, p)) == 0) halt_singular(names, true, p);
        if (at(a.valmax_col, at(a.col_at, p)) == 0) halt_singular(names, false, p);
    }
}

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

// Finds the pivot and brings it to its place. By values there is a candidate: the largest value of any row.
template <class T>
void choose_pivot(stepper<T>& s) {
    active_matrix<T>& a = s.a;
    if (a.by_values && a.n_zero > 0) check_singular(a, s.i, s.e.names);
    const int row_piv = a.rows.first();
    if (row_piv == -1) halt_last_row(s.routine);
    const int r_piv = at(a.row_at, row_piv);
    s.k_piv = at(a.best, r_piv);
    s.c_piv = at(a.entries, s.k_piv).col;
    s.c_moved = at(a.col_at, s.i);
    at(s.e.mat_rowexch, s.i) = row_piv;
    at(s.e.mat_colexch, s.i) = at(a.col_place, s.c_piv);
    at(s.e.mat_pp, s.i) = s.k_piv;
    a.bring_row(s.i, r_piv);
    a.bring_col(s.i, s.c_piv);
    const T val_piv = at(a.entries, s.k_piv).val;
    if (a.by_values && magnitude(val_piv) < s.e.gauss_epsln) halt_small_pivot(s.e.names, val_piv);
    a.n_zero -= (at(a.valmax_row, r_piv) == 0) + (at(a.valmax_col, s.c_piv) == 0);
}

// The pivot row leaves the columns; it keeps its own list, scaled. The rows in the pivot's column are listed.
template <class T>
void take_pivot_row(stepper<T>& s) {
    active_matrix<T>& a = s.a;
    const T val_pivinv = quotient(T(1), at(a.entries, s.k_piv).val);
    s.piv_cols.clear();
    for (int k = at(a.head_row, at(a.row_at, s.i)); k != -1; k = at(a.entries, k).next_in_row) {
        active_entry<T>& u = at(a.entries, k);
        a.unlink_from_col(k);
        if (k == s.k_piv) continue;
        s.piv_cols.push_back(
            {at(a.col_place, u.col), u.col, k, at(a.nnz_col, u.col), at(a.valmax_col, u.col), false, -1});
        change_size(a, s.piv_cols.back(), u.size, 0);
        if (!a.by_values) continue;
        u.val = product(u.val, val_pivinv);
        u.size = magnitude(u.val);
    }
    const int n_piv = static_cast<int>(s.piv_cols.size()), m = s.e.limits.m_matttlop1;
    if (n_piv > m - s.e.n_matttlop1) halt_storage(s.e.names, s.routine, "n_matttlop1", "m_matttlop1", m + 1LL, m);
    s.e.n_matttlop1 += n_piv;
    std::sort(s.piv_cols.begin(), s.piv_cols.end(),
              [](const touched_col& x, const touched_col& y) { return x.place < y.place; });
    for (int t = 0; t < n_piv; ++t) at(s.touched, at(s.piv_cols, t).col) = t;
    s.inner.clear();
    for (int k = at(a.head_col, s.c_piv); k != -1; k = at(a.entries, k).next_in_col)
        s.inner.emplace_back(at(a.row_place, at(a.entries, k).row), k);
    std::sort(s.inner.begin(), s.inner.end());
}

// The operations of one row. New entries come by working column, rows by working row: this numbers the slots.
template <class T>
void eliminate_row(stepper<T>& s, int r, int np) {
    active_matrix<T>& a = s.a;
    const T val_np = at(a.entries, np).val;
    const int n_piv = static_cast<int>(s.piv_cols.size());
    at(s.step_of, r) = s.i;
    a.unlink_from_row(np);
    int n_hit = 0;
    for (int k = at(a.head_row, r); k != -1; k = at(a.entries, k).next_in_row) {
        active_entry<T>& x = at(a.entries, k);
        if (at(s.touched, x.col) == -1) continue;
        touched_col& t = at(s.piv_cols, at(s.touched, x.col));
        t.hit = r;
        ++n_hit;
        if (!a.by_values) continue;
        const double old_size = x.size;
        x.val = x.val - product(at(a.entries, t.slot).val, val_np);
        x.size = magnitude(x.val);
        change_size(a, t, old_size, x.size);
    }
    // Operations take their numbers by column; where the room ends among them, the first to find none speaks.
    const int m_w = s.e.limits.mnz_w, m_2 = s.e.limits.m_matttlop2, room_2 = m_2 - s.e.n_matttlop2;
    for (int t = 0; t < n_piv && (n_hit < n_piv || n_piv > room_2); ++t) {
        touched_col& u = at(s.piv_cols, t);
        if (u.hit != r) {
            check_storage(s.e.names, s.routine, "nnz_w", "mnz_w", static_cast<long long>(a.entries.size()) + 1, m_w);
            const int k = a.add(r, u.col, a.by_values ? product(at(a.entries, u.slot).val, -val_np) : T(0));
            change_size(a, u, 0, at(a.entries, k).size);
        }
        if (t >= room_2) halt_storage(s.e.names, s.routine, "n_matttlop2", "m_matttlop2", m_2 + 1LL, m_2);
    }
    s.e.n_matttlop2 += n_piv;
    a.n_zero -= at(a.valmax_row, r) == 0;
    a.count_row(r);
    a.n_zero += at(a.valmax_row, r) == 0;
}

// Candidates that the step may have changed: first the rows that changed and those whose best lost a tie, so that the
// single looks behind them compare with a true best.
template <class T>
void renew_candidates(stepper<T>& s) {
    active_matrix<T>& a = s.a;
    for (touched_col& t : s.piv_cols) {
        if (t.fell) at(a.valmax_col, t.col) = a.largest_of_col(t.col);
        a.n_zero += (at(a.valmax_col, t.col) == 0) - (t.old_max == 0);
        at(s.touched, t.col) = -1;
    }
    for (const auto& [place, np] : s.inner) a.find_best(at(a.row_at, place));
    if (s.c_moved != s.c_piv)
        for (int k = at(a.head_col, s.c_moved); k != -1; k = at(a.entries, k).next_in_col) {
            const int r = at(a.entries, k).row;
            if (at(a.best, r) == k && at(s.step_of, r) != s.i) a.find_best(r);
        }
    for (const touched_col& t : s.piv_cols) {
        if (at(a.nnz_col, t.col) == t.old_count && at(a.valmax_col, t.col) == t.old_max) continue;
        for (int k = at(a.head_col, t.col); k != -1; k = at(a.entries, k).next_in_col)
            if (at(s.step_of, at(a.entries, k).row) != s.i) a.look_again(k);
    }
}

// The order and the filled pattern for the replay.
template <class T>
void take_over(elimination<T>& e, const active_matrix<T>& a, std::string_view routine, std::vector<T>& val_w) {
    e.row_perm = a.row_at;
    e.col_perm = a.col_at;
    e.row_perm_inv = a.row_place;
    e.col_perm_inv = a.col_place;
    const size_t nnz_w = a.entries.size();
    const int last = a.n - 1, m = e.limits.m_matttlop3;
    e.row_w.resize(nnz_w);
    e.col_w.resize(nnz_w);
    val_w.resize(nnz_w);
    long long n_upper = 0;
    for (size_t k = 0; k < nnz_w; ++k) {
        e.row_w[k] = at(a.row_place, a.entries[k].row);
        e.col_w[k] = at(a.col_place, a.entries[k].col);
        val_w[k] = a.entries[k].val;
        n_upper += e.col_w[k] > e.row_w[k];
        if (e.row_w[k] == last && e.col_w[k] == last) e.mat_pp.back() = static_cast<int>(k);
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
    const std::vector<int> none(static_cast<size_t>(n), -1);
    stepper<T> s{e, a, routine, 0, 0, 0, 0, {}, {}, none, none};
    for (; s.i < n - 1; ++s.i) {
        heed_signals();
        choose_pivot(s);
        take_pivot_row(s);
        for (const auto& [place, np] : s.inner) eliminate_row(s, at(a.row_at, place), np);
        renew_candidates(s);
    }
    take_over(e, a, routine, val_w);
}

template void fast_order(elimination<double>&, const knuth<double>&, const double*, bool, std::vector<double>&);
template void fast_order(elimination<complex_value>&, const knuth<complex_value>&, const complex_value*, bool,
                         std::vector<complex_value>&);
