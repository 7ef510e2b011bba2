#include "sparse/literal.h"

#include <limits>
#include <utility>

#include "base/halt.h"
#include "base/signals.h"
#include "sparse/arithmetic.h"
#include "sparse/stops.h"

namespace {

using std::size_t;

// Flat arrays by the int indices that the tables hold.
template <class V>
auto& at(V& v, int i) {
    return v[static_cast<size_t>(i)];
}

constexpr double tiny = 1e-40;  // a value up to it is not counted
constexpr double threshold = 0.25;

// What the search knows of the active part, by working position.
struct active_part {
    std::vector<int> nnz_row, nnz_col;
    std::vector<double> valmax_row, valmax_col;
    explicit active_part(int n)
        : nnz_row(static_cast<size_t>(n)),
          nnz_col(nnz_row),
          valmax_row(static_cast<size_t>(n)),
          valmax_col(valmax_row) {}
};

// The search result; row -1: there is no candidate.
struct pivot {
    int k = -1, row = -1, col = -1;
};

template <class T>
void nnz_active_k(int i, const knuth<T>& w, active_part& a) {
    for (int r = i; r < w.n_row; ++r) at(a.nnz_row, r) = at(a.nnz_col, r) = 0;
    for (int r = i; r < w.n_row; ++r)
        for (int k = at(w.srow, r); k != -1; k = at(w.prow, k)) {
            if (at(w.col, k) < i) continue;
            ++at(a.nnz_row, r);
            ++at(a.nnz_col, at(w.col, k));
        }
}

template <class T>
void nnz_active_k_1(int i, const knuth<T>& w, active_part& a, const elimination_names& names) {
    for (int r = i; r < w.n_row; ++r) {
        at(a.nnz_row, r) = at(a.nnz_col, r) = 0;
        at(a.valmax_row, r) = at(a.valmax_col, r) = 0;
    }
    for (int r = i; r < w.n_row; ++r)
        for (int k = at(w.srow, r); k != -1; k = at(w.prow, k)) {
            const int c = at(w.col, k);
            const double size = magnitude(at(w.val, k));
            if (c < i || !(size > tiny)) continue;
            ++at(a.nnz_row, r);
            ++at(a.nnz_col, c);
            if (size > at(a.valmax_row, r)) at(a.valmax_row, r) = size;
            if (size > at(a.valmax_col, c)) at(a.valmax_col, c) = size;
        }
    for (int r = i; r < w.n_row; ++r) {
        if (at(a.valmax_row, r) == 0) halt_singular(names, true, r);
        if (at(a.valmax_col, r) == 0) halt_singular(names, false, r);
    }
}

// First smallest count, by row, then by column; l_cand: 0 for entries out of the question, empty if there are none.
template <class T>
pivot search(int i, const knuth<T>& w, const active_part& a, const std::vector<char>& l_cand) {
    long long best = std::numeric_limits<long long>::max();
    pivot p;
    for (int r = i; r < w.n_row; ++r)
        for (int k = at(w.srow, r); k != -1; k = at(w.prow, k)) {
            const int c = at(w.col, k);
            if (c < i || (!l_cand.empty() && !at(l_cand, k))) continue;
            const long long count = static_cast<long long>(at(a.nnz_col, c) - 1) * (at(a.nnz_row, r) - 1);
            if (count >= best) continue;
            best = count;
            p = {k, r, c};
        }
    return p;
}

template <class T>
pivot markow_1_k(int i, const knuth<T>& w, const active_part& a) {
    return search(i, w, a, {});
}

// The largest value of a row passes, and no row is without one: a candidate is found, NaN elsewhere or not.
template <class T>
pivot markow_2_k(int i, const knuth<T>& w, const active_part& a) {
    std::vector<char> l_cand(w.row.size(), 1);
    for (;;) {
        const pivot p = search(i, w, a, l_cand);
        if (p.row == -1) return p;
        const double size = magnitude(at(w.val, p.k));
        if (size >= threshold * at(a.valmax_row, p.row) || size >= threshold * at(a.valmax_col, p.col)) return p;
        at(l_cand, p.k) = 0;
    }
}

void relabel(std::vector<int>& index, int i, int j) {
    for (int& x : index) x = x == i ? j : x == j ? i : x;
}

template <class T>
void row_exch_k(knuth<T>& w, int i, int j, std::vector<int>& perm) {
    std::swap(at(perm, i), at(perm, j));
    std::swap(at(w.srow, i), at(w.srow, j));
    std::swap(at(w.erow, i), at(w.erow, j));
    relabel(w.row, i, j);
    knuth_makecols(w);
}

template <class T>
void col_exch_k(knuth<T>& w, int i, int j, std::vector<int>& perm) {
    std::swap(at(perm, i), at(perm, j));
    std::swap(at(w.scol, i), at(w.scol, j));
    std::swap(at(w.ecol, i), at(w.ecol, j));
    relabel(w.col, i, j);
    knuth_makerows(w);
}

void say_list(std::string_view name, const std::vector<int>& v, int first, int end) {
    std::string text(name);
    for (int k = first; k < end; ++k) text += line(" ", at(v, k));
    say(text);
}
int count_of(const std::vector<int>& v) { return static_cast<int>(v.size()); }

// Columns of the pivot row and of the present row, by working column.
struct row_marks {
    std::vector<char> l_piv_col, l_cur_col, l_new_col;
    std::vector<int> pn_piv_col, pn_cur_col;
    explicit row_marks(int n)
        : l_piv_col(static_cast<size_t>(n)),
          l_cur_col(l_piv_col),
          l_new_col(l_piv_col),
          pn_piv_col(static_cast<size_t>(n)),
          pn_cur_col(pn_piv_col) {}
};

// Operations of row r in step i, applied at once where values are wanted. True: the row has new entries.
template <class T>
bool eliminate_row(elimination<T>& e, std::string_view routine, int i, int r, bool values, row_marks& m) {
    operation_lists<T>& s = e.lists;
    knuth<T>& w = s.w;
    for (int c = i; c < e.n; ++c) at(m.l_cur_col, c) = 0;
    for (int k = at(w.srow, r); k != -1; k = at(w.prow, k)) {
        at(m.l_cur_col, at(w.col, k)) = 1;
        at(m.pn_cur_col, at(w.col, k)) = k;
    }
    const int np = at(m.pn_cur_col, i);
    const T val_np = at(w.val, np);
    s.inner_row.push_back(r);
    s.inner_np.push_back(np);
    s.inner_op.push_back(count_of(s.mat_op_2));
    bool fill_in = false;
    for (int c = i + 1; c < e.n; ++c) {
        at(m.l_new_col, c) = at(m.l_cur_col, c);
        if (!at(m.l_piv_col, c)) continue;
        const bool is_new = !at(m.l_cur_col, c);
        if (is_new) {
            at(m.l_new_col, c) = 1;
            at(m.pn_cur_col, c) = w.nnz();
            w.row.push_back(r);
            w.col.push_back(c);
            w.val.push_back(T(0));
            w.prow.push_back(-1);
            w.pcol.push_back(-1);
            fill_in = true;
            check_storage(e.names, routine, "nnz_w", "mnz_w", w.nnz(), e.limits.mnz_w);
        }
        const int nn = at(m.pn_cur_col, c), pn = at(m.pn_piv_col, c);
        s.mat_op_2.push_back(is_new ? 5 : 6);
        s.mat_nn.push_back(nn);
        s.mat_pn_2.push_back(pn);
        s.mat_np_2.push_back(np);
        check_storage(e.names, routine, "n_matttlop2", "m_matttlop2", count_of(s.mat_op_2), e.limits.m_matttlop2);
        if (!values) continue;
        if (is_new)
            at(w.val, nn) = product(at(w.val, pn), -val_np);
        else
            at(w.val, nn) = at(w.val, nn) - product(at(w.val, pn), val_np);
    }
    if (!fill_in) return false;
    int last = np;
    for (int c = i + 1; c < e.n; ++c) {
        if (!at(m.l_new_col, c)) continue;
        at(w.prow, last) = at(m.pn_cur_col, c);
        last = at(m.pn_cur_col, c);
    }
    at(w.prow, last) = -1;
    at(w.erow, r) = last;
    return true;
}

template <class T>
void say_pivot(const elimination<T>& e, std::string_view routine, int i, const active_part& a, const pivot& p) {
    say(line(routine, ": i_row_outer=", i));
    say(line(routine, ": debug 1"));
    say_list("nnz_row:", a.nnz_row, i, e.n);
    say_list("nnz_col:", a.nnz_col, i, e.n);
    say(line(routine, ": debug 2"));
    say(line("  row_piv=", p.row));
    say(line("  col_piv=", p.col));
}
template <class T>
void say_list_1(const elimination<T>& e, std::string_view routine, int i) {
    const operation_lists<T>& s = e.lists;
    const int first = at(s.ip_matop1, i), end = count_of(s.mat_op_1);
    say(line(routine, ": debug 3"));
    say(line("n_matttlop1 = ", end));
    say_list("mat_op_1:", s.mat_op_1, first, end);
    say_list("mat_pn_1:", s.mat_pn_1, first, end);
    say(line("i_row_outer = ", i));
    say(line("mat_pp = ", at(e.mat_pp, i)));
    say(line("ip_matop1 = ", end));
    say(line("mat_rowexch = ", at(e.mat_rowexch, i)));
}
template <class T>
void say_list_2(const elimination<T>& e, std::string_view routine, int i, int r, bool has_entry) {
    const operation_lists<T>& s = e.lists;
    const int end = count_of(s.mat_op_2), first = has_entry ? s.inner_op.back() : end;
    const long long count_np = 1LL * i * e.n - 1LL * i * (i + 1) / 2 + r - i - 1;
    say(line(routine, ": debug 4"));
    say(line("i_row_inner = ", r));
    say(line("n_matttlop2 = ", end, ", n_matttlop3 = ", s.mat_op_3.size()));
    say(line("count_np = ", count_np));
    say_list("mat_op_2:", s.mat_op_2, first, end);
    say_list("mat_pn_2:", s.mat_pn_2, first, end);
    say_list("mat_nn:", s.mat_nn, first, end);
    say(line("mat_np: ", has_entry ? s.inner_np.back() : -1));
    say(line("l_np_zero: ", has_entry ? 0 : 1));
    say(line("ip1_matop2 = ", first));
}

}  // namespace

template <class T>
void literal_gauss(elimination<T>& e, const knuth<T>& m, const T* val_m, pivot_rule rule) {
    const bool values = rule == pivot_rule::by_values, debug = e.debug_gauss_1 == 1 && rule != pivot_rule::as_given;
    const std::string_view routine = rule == pivot_rule::by_counts ? e.names.gauss_1 : e.names.gauss_1a;
    const int n = e.n = m.n_row;
    if (m.nnz() > e.limits.mnz_w) halt_too_many_entries(e.names, routine, m.nnz(), e.limits.mnz_w);
    const std::vector<int> given_row = std::move(e.mat_rowexch), given_col = std::move(e.mat_colexch);
    operation_lists<T>& s = e.lists;
    s = {};
    knuth<T>& w = s.w;
    knuth_copy_1(m, w);
    w.val.assign(val_m, val_m + m.nnz());
    e.row_perm.resize(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) at(e.row_perm, i) = i;
    e.col_perm = e.row_perm;
    e.mat_rowexch.assign(static_cast<size_t>(n > 0 ? n - 1 : 0), 0);
    e.mat_colexch = e.mat_rowexch;
    e.mat_pp.assign(static_cast<size_t>(n), -1);
    s.ip_matop1.assign(1, 0);
    s.first_inner.assign(1, 0);

    active_part active(n);
    row_marks marks(n);
    for (int i = 0; i < n - 1; ++i) {
        heed_signals();
        pivot p;
        if (rule == pivot_rule::by_values) {
            nnz_active_k_1(i, w, active, e.names);
            p = markow_2_k(i, w, active);
        } else if (rule == pivot_rule::by_counts) {
            nnz_active_k(i, w, active);
            p = markow_1_k(i, w, active);
        } else {
            p = {-1, at(given_row, i), at(given_col, i)};
            p.k = knuth_check_ij(w, p.row, p.col);
        }
        if (p.row == -1) halt_last_row(routine);
        if (debug) say_pivot(e, routine, i, active, p);
        if (p.row != i) row_exch_k(w, i, p.row, e.row_perm);
        if (p.col != i) col_exch_k(w, i, p.col, e.col_perm);
        at(e.mat_rowexch, i) = p.row;
        at(e.mat_colexch, i) = p.col;
        at(e.mat_pp, i) = p.k;
        const T val_piv = at(w.val, p.k);
        if (values && magnitude(val_piv) < e.gauss_epsln) halt_small_pivot(e.names, val_piv);
        const T val_pivinv = quotient(T(1), val_piv);
        for (int c = i + 1; c < n; ++c) at(marks.l_piv_col, c) = 0;
        for (int k = at(w.prow, p.k); k != -1; k = at(w.prow, k)) {
            s.mat_op_1.push_back(2);
            s.mat_pn_1.push_back(k);
            check_storage(e.names, routine, "n_matttlop1", "m_matttlop1", count_of(s.mat_op_1), e.limits.m_matttlop1);
            if (values) at(w.val, k) = product(at(w.val, k), val_pivinv);
            at(marks.l_piv_col, at(w.col, k)) = 1;
            at(marks.pn_piv_col, at(w.col, k)) = k;
        }
        if (debug) say_list_1(e, routine, i);
        s.ip_matop1.push_back(count_of(s.mat_op_1));
        bool fill_in = false;
        for (int r = i + 1; r < n; ++r) {
            const bool has_entry = knuth_check_ij(w, r, i) != -1;
            if (has_entry && eliminate_row(e, routine, i, r, values, marks)) fill_in = true;
            if (debug) say_list_2(e, routine, i, r, has_entry);
        }
        s.first_inner.push_back(count_of(s.inner_row));
        if (debug) {
            say(line(routine, ": debug 5"));
            say(line("i_row_outer = ", i));
            say(line("mat_pp = ", at(e.mat_pp, i)));
        }
        if (fill_in) knuth_makecols(w);
    }
    s.inner_op.push_back(count_of(s.mat_op_2));

    e.row_perm_inv.resize(static_cast<size_t>(n));
    e.col_perm_inv.resize(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) {
        at(e.row_perm_inv, at(e.row_perm, i)) = i;
        at(e.col_perm_inv, at(e.col_perm, i)) = i;
    }
    if (n > 0) {
        at(e.mat_pp, n - 1) = knuth_check_ij(w, n - 1, n - 1);
        if (at(e.mat_pp, n - 1) == -1) halt_last_row(routine);
        s.ip_matop3.assign(static_cast<size_t>(n), 0);
        for (int i = n - 2; i >= 0; --i) {
            for (int k = at(w.srow, i); k != -1; k = at(w.prow, k)) {
                if (at(w.col, k) <= i) continue;
                s.mat_op_3.push_back(3);
                s.mat_pn_3.push_back(k);
                s.mat_col_3.push_back(at(w.col, k));
                check_storage(e.names, routine, "n_matttlop3", "m_matttlop3", count_of(s.mat_op_3),
                              e.limits.m_matttlop3);
            }
            at(s.ip_matop3, i) = count_of(s.mat_op_3);
        }
    }
    e.n_matttlop1 = count_of(s.mat_op_1);
    e.n_matttlop2 = count_of(s.mat_op_2);
    e.n_matttlop3 = count_of(s.mat_op_3);
    e.row_w = w.row;
    e.col_w = w.col;
    s.filled = true;
    s.factored = values;
    if (debug && rule == pivot_rule::by_counts) {
        say(line(routine, " debug 6:"));
        say(line("n_matttlop1=", e.n_matttlop1));
        say(line("n_matttlop2=", e.n_matttlop2));
        say(line("n_matttlop3=", e.n_matttlop3));
    }
}

namespace {

template <class T>
int matrix_stage(elimination<T>& e, int nnz_m, const T* val_m, bool debug) {
    operation_lists<T>& s = e.lists;
    std::vector<T>& val = s.w.val;
    const std::string_view name = e.names.gauss_2;
    for (int k = 0; k < nnz_m; ++k) at(val, k) = val_m[k];
    s.factored = false;
    for (int i = 0; i < e.n - 1; ++i) {
        const T val_piv = at(val, at(e.mat_pp, i));
        if (magnitude(val_piv) < e.zero_piv) {
            say_matrix_stage(e, i, val_piv);
            return 1;
        }
        const T val_pivinv = quotient(T(1), val_piv);
        for (int k = at(s.ip_matop1, i); k < at(s.ip_matop1, i + 1); ++k) {
            if (debug)
                say(line(name, ": i_row_outer=", i, ", i=", k, ", optype1=", at(s.mat_op_1, k),
                         ", val_pivinv=", val_pivinv));
            T& x = at(val, at(s.mat_pn_1, k));
            x = product(x, val_pivinv);
        }
        for (int q = at(s.first_inner, i); q < at(s.first_inner, i + 1); ++q) {
            if (debug) {
                say(line(name, ": i_row_inner=", at(s.inner_row, q)));
                say(line(name, ": i_start=", at(s.inner_op, q)));
                say(line(name, ": i_end=", at(s.inner_op, q + 1)));
            }
            for (int k = at(s.inner_op, q); k < at(s.inner_op, q + 1); ++k) {
                if (debug) say(line(name, ": optype2=", at(s.mat_op_2, k), ", pntr_nn=", at(s.mat_nn, k)));
                T& x = at(val, at(s.mat_nn, k));
                const T val_np = at(val, at(s.mat_np_2, k)), val_pn = at(val, at(s.mat_pn_2, k));
                if (at(s.mat_op_2, k) == 5)
                    x = product(-val_np, val_pn);
                else
                    x = x - product(val_np, val_pn);
            }
        }
    }
    s.factored = true;
    return 0;
}

template <class T>
int rhs_stage(elimination<T>& e) {
    const operation_lists<T>& s = e.lists;
    const std::vector<T>& val = s.w.val;
    std::vector<T> rhs = e.rhs_w;
    for (int i = 0; i < e.n - 1; ++i) {
        if (at(e.mat_rowexch, i) != i) std::swap(at(rhs, i), at(rhs, at(e.mat_rowexch, i)));
        const T val_piv = at(val, at(e.mat_pp, i));
        if (magnitude(val_piv) < e.zero_piv) {
            say_rhs_stage(e, i, val_piv);
            return 1;
        }
        at(rhs, i) = quotient(at(rhs, i), val_piv);
        for (int q = at(s.first_inner, i); q < at(s.first_inner, i + 1); ++q) {
            T& x = at(rhs, at(s.inner_row, q));
            x = x - product(at(val, at(s.inner_np, q)), at(rhs, i));
        }
    }
    const T val_piv = at(val, at(e.mat_pp, e.n - 1));
    if (magnitude(val_piv) < e.zero_piv) {
        say_rhs_last(e, val_piv);
        return 1;
    }
    e.x_w.resize(rhs.size());
    e.sol_w.resize(rhs.size());
    at(e.x_w, e.n - 1) = quotient(at(rhs, e.n - 1), val_piv);
    for (int i = e.n - 2; i >= 0; --i) {
        at(e.x_w, i) = at(rhs, i);
        for (int k = at(s.ip_matop3, i + 1); k < at(s.ip_matop3, i); ++k)
            at(e.x_w, i) = at(e.x_w, i) - product(at(e.x_w, at(s.mat_col_3, k)), at(val, at(s.mat_pn_3, k)));
    }
    for (int j = 0; j < e.n; ++j) at(e.sol_w, j) = at(e.x_w, at(e.col_perm_inv, j));
    return 0;
}

}  // namespace

template <class T>
int literal_gauss_2(elimination<T>& e, int nnz_m, const T* val_m, int mode, bool debug) {
    if (e.n == 0) return 0;
    if (mode != 2 && matrix_stage(e, nnz_m, val_m, debug)) return 1;
    return mode != 1 ? rhs_stage(e) : 0;
}

#define INSTANTIATE(T)                                                                   \
    template void literal_gauss(elimination<T>&, const knuth<T>&, const T*, pivot_rule); \
    template int literal_gauss_2(elimination<T>&, int, const T*, int, bool);
INSTANTIATE(double)
INSTANTIATE(std::complex<double>)
