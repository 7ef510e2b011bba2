#include "sparse/knuth.h"

#include <string_view>

#include "base/halt.h"
#include "sparse/knuth_write.h"

namespace {

using std::size_t;

// Routine names in messages: the complex twin of a routine has a suffix.
template <class T>
constexpr std::string_view twin = "";
template <>
constexpr std::string_view twin<std::complex<double>> = "_c";

// Links slot k into one list that ascends in key; head and tail are those of the list. Returns a slot that has the same
// key, or -1 when the link is made; -2 if the walk is longer than the list can be.
int link_ascending(int k, int key, const std::vector<int>& keys, std::vector<int>& next, int& head, int& tail,
                   int m_steps) {
    const auto at = [](auto& v, int i) -> auto& { return v[static_cast<size_t>(i)]; };
    if (tail != -1 && at(keys, tail) < key) {  // behind the tail: no walk
        at(next, tail) = k;
        tail = k;
        return -1;
    }
    int before = -1, e = head;
    for (int steps = 0; e != -1 && at(keys, e) <= key; ++steps) {
        if (at(keys, e) == key) return e;
        if (steps >= m_steps) return -2;
        before = e;
        e = at(next, e);
    }
    at(next, k) = e;
    (before == -1 ? head : at(next, before)) = k;
    if (e == -1) tail = k;
    return -1;
}

void check_size(std::string_view routine, std::string_view what, std::string_view limit, int n, int m) {
    if (n > m)
        halt({line(routine, ": ", what, " too large."), line("  ", what, " = ", n, ", ", limit, " = ", m),
              "  Halting..."});
}

// Appends the slots of b behind those of a, with rows and columns shifted; links still count from a's first slot.
template <class T>
void append_entries(knuth<T>& a, const knuth<T>& b, int shift_row, int shift_col) {
    const int shift = a.nnz();
    const auto shifted = [](std::vector<int>& to, const std::vector<int>& from, int by) {
        for (const int k : from) to.push_back(k == -1 ? -1 : k + by);
    };
    a.val.insert(a.val.end(), b.val.begin(), b.val.end());
    for (const int r : b.row) a.row.push_back(r + shift_row);
    for (const int c : b.col) a.col.push_back(c + shift_col);
    shifted(a.prow, b.prow, shift);
    shifted(a.pcol, b.pcol, shift);
}

// b's heads and tails of the lists that do not meet a's.
void append_ends(std::vector<int>& s, std::vector<int>& e, const std::vector<int>& s_b, const std::vector<int>& e_b,
                 int shift) {
    for (const int k : s_b) s.push_back(k == -1 ? -1 : k + shift);
    for (const int k : e_b) e.push_back(k == -1 ? -1 : k + shift);
}

// b's lists continue a's.
void join_lists(std::vector<int>& s, std::vector<int>& e, std::vector<int>& next, const std::vector<int>& s_b,
                const std::vector<int>& e_b, int shift) {
    for (size_t i = 0; i < s_b.size(); ++i) {
        if (s_b[i] == -1) continue;
        (s[i] == -1 ? s[i] : next[static_cast<size_t>(e[i])]) = s_b[i] + shift;
        e[i] = e_b[i] + shift;
    }
}

template <class T>
void require_equal_rows(std::string_view routine, const knuth<T>& a, const knuth<T>& b) {
    if (a.n_row != b.n_row)
        halt({line(routine, ": nrow_a .ne. nrow_b?"), line("   nrow_a = ", a.n_row, ", nrow_b = ", b.n_row),
              "   Halting..."});
}
template <class T>
void require_equal_columns(std::string_view routine, const knuth<T>& a, const knuth<T>& b) {
    if (a.n_col != b.n_col)
        halt({line(routine, ": ncol_a .ne. ncol_b?"), line("   ncol_a = ", a.n_col, ", ncol_b = ", b.n_col),
              "   Halting..."});
}
template <class T>
void append_columns(knuth<T>& a, const knuth<T>& b) {
    const int shift = a.nnz();
    append_entries(a, b, 0, a.n_col);
    append_ends(a.scol, a.ecol, b.scol, b.ecol, shift);
    join_lists(a.srow, a.erow, a.prow, b.srow, b.erow, shift);
    a.n_col += b.n_col;
}
template <class T>
void append_rows(knuth<T>& a, const knuth<T>& b) {
    const int shift = a.nnz();
    append_entries(a, b, a.n_row, 0);
    append_ends(a.srow, a.erow, b.srow, b.erow, shift);
    join_lists(a.scol, a.ecol, a.pcol, b.scol, b.ecol, shift);
    a.n_row += b.n_row;
}

// Walks one set of lists in order and chains what it meets across them, so the other set comes out ascending.
void chain_across(const std::vector<int>& s, const std::vector<int>& next, const std::vector<int>& other,
                  std::vector<int>& s_other, std::vector<int>& e_other, std::vector<int>& next_other) {
    s_other.assign(s_other.size(), -1);
    e_other.assign(e_other.size(), -1);
    for (const int first : s) {
        size_t steps = 0;
        for (int k = first; k != -1 && steps <= s_other.size(); k = next[static_cast<size_t>(k)], ++steps) {
            const size_t j = static_cast<size_t>(other[static_cast<size_t>(k)]);
            (s_other[j] == -1 ? s_other[j] : next_other[static_cast<size_t>(e_other[j])]) = k;
            e_other[j] = k;
        }
    }
    for (const int k : e_other)
        if (k != -1) next_other[static_cast<size_t>(k)] = -1;
}

}  // namespace

template <class T>
void knuth_zero(knuth<T>& k) {
    knuth_zero(k, k.n_row, k.n_col);
}

template <class T>
void knuth_zero(knuth<T>& k, int n_row, int n_col) {
    k.n_row = n_row;
    k.n_col = n_col;
    k.val.clear();
    for (std::vector<int>* v : {&k.row, &k.col, &k.prow, &k.pcol}) v->clear();
    for (std::vector<int>* v : {&k.srow, &k.erow}) v->assign(static_cast<size_t>(n_row), -1);
    for (std::vector<int>* v : {&k.scol, &k.ecol}) v->assign(static_cast<size_t>(n_col), -1);
}

template <class T>
void knuth_addentry(knuth<T>& k, int row_given, int col_given, T val_given) {
    const int slot = k.nnz();
    const size_t r = static_cast<size_t>(row_given), c = static_cast<size_t>(col_given);
    k.prow.push_back(-1);
    const int same = link_ascending(slot, col_given, k.col, k.prow, k.srow[r], k.erow[r], k.n_col);
    if (same >= 0)
        halt({line("knuth_addentry", twin<T>, ": i_col=col_given !"), "  Something wrong with the system matrix?",
              line("  i_col = ", col_given, ", col_given = ", col_given), line("  row_given = ", row_given),
              "  Halting..."});
    if (same == -2) halt({line("knuth_addentry", twin<T>, ": did not exit from outer loop. Halting...")});
    k.val.push_back(val_given);
    k.row.push_back(row_given);
    k.col.push_back(col_given);
    k.pcol.push_back(-1);
    if (link_ascending(slot, row_given, k.row, k.pcol, k.scol[c], k.ecol[c], k.n_row) != -1)
        halt({line("knuth_addentry", twin<T>, ": did not exit from inner loop. Halting...")});
}

template <class T>
int knuth_check_ij(const knuth<T>& k, int row_given, int col_given) {
    int e = k.srow[static_cast<size_t>(row_given)];
    for (int steps = 0; e != -1 && steps <= k.n_col; ++steps) {
        if (k.col[static_cast<size_t>(e)] == col_given) return e;
        e = k.prow[static_cast<size_t>(e)];
    }
    return -1;
}

template <class T>
void ij_to_knuth(knuth<T>& k, int n_row, int n_col, int m_row, int m_col, const T* a, bool flag) {
    const std::string routine = line("ij_to_knuth", twin<T>);
    check_size(routine, "n_row", "m_row", n_row, m_row);
    check_size(routine, "n_col", "m_col", n_col, m_col);
    knuth_zero(k, n_row, n_col);
    for (int i = 0; i < n_row; ++i)
        for (int j = 0; j < n_col; ++j) {
            const T x = a[static_cast<size_t>(i) * static_cast<size_t>(m_col) + static_cast<size_t>(j)];
            if (x != T(0)) knuth_addentry(k, i, j, x);
        }
    if (flag) mat_write_knuth(k, "mat_knuth.dat");
}

template <class T>
void knuth_to_ij(const knuth<T>& k, int m_row, int m_col, T* a, bool flag) {
    const std::string routine = line("knuth_to_ij", twin<T>);
    check_size(routine, "n_row", "m_row", k.n_row, m_row);
    check_size(routine, "n_col", "m_col", k.n_col, m_col);
    const size_t stride = static_cast<size_t>(m_col);
    for (size_t i = 0; i < static_cast<size_t>(k.n_row); ++i) {
        for (size_t j = 0; j < static_cast<size_t>(k.n_col); ++j) a[i * stride + j] = T(0);
        for (int e = k.srow[i]; e != -1; e = k.prow[static_cast<size_t>(e)])
            a[i * stride + static_cast<size_t>(k.col[static_cast<size_t>(e)])] = k.val[static_cast<size_t>(e)];
    }
    if (flag) mat_write_ij(k.n_row, k.n_col, m_col, a, "mat_ij.dat");
}

template <class T>
void knuth_copy(const knuth<T>& a, knuth<T>& b) {
    b = a;
}

template <class A, class B>
void knuth_copy_1(const knuth<A>& a, knuth<B>& b) {
    b.n_row = a.n_row;
    b.n_col = a.n_col;
    b.row = a.row;
    b.col = a.col;
    b.prow = a.prow;
    b.pcol = a.pcol;
    b.srow = a.srow;
    b.scol = a.scol;
    b.erow = a.erow;
    b.ecol = a.ecol;
    b.val.resize(a.row.size(), B(0));
}

template <class T>
void knuth_append_1(const knuth<T>& a, const knuth<T>& b, knuth<T>& c) {
    require_equal_rows(line("knuth_append_1", twin<T>), a, b);
    knuth<T> joined = a;
    append_columns(joined, b);
    c = std::move(joined);
}
template <class T>
void knuth_append_2(const knuth<T>& a, const knuth<T>& b, knuth<T>& c) {
    require_equal_columns(line("knuth_append_2", twin<T>), a, b);
    knuth<T> joined = a;
    append_rows(joined, b);
    c = std::move(joined);
}
template <class T>
void knuth_append_1a(knuth<T>& a, const knuth<T>& b) {
    require_equal_rows(line("knuth_append_1a", twin<T>), a, b);
    append_columns(a, b);
}
template <class T>
void knuth_append_2a(knuth<T>& a, const knuth<T>& b) {
    require_equal_columns(line("knuth_append_2a", twin<T>), a, b);
    append_rows(a, b);
}

template <class T>
void knuth_makecols(knuth<T>& k) {
    chain_across(k.srow, k.prow, k.col, k.scol, k.ecol, k.pcol);
}
template <class T>
void knuth_makerows(knuth<T>& k) {
    chain_across(k.scol, k.pcol, k.row, k.srow, k.erow, k.prow);
}

template <class T>
void knuth_to_col_compressed(const knuth<T>& k, std::vector<int>& cc_cn, std::vector<int>& cc_row_index,
                             std::vector<T>& cc_val, bool flag) {
    cc_cn.assign(1, 0);
    cc_row_index.clear();
    cc_val.clear();
    for (const int first : k.scol) {
        for (int e = first; e != -1; e = k.pcol[static_cast<size_t>(e)]) {
            cc_row_index.push_back(k.row[static_cast<size_t>(e)]);
            cc_val.push_back(k.val[static_cast<size_t>(e)]);
        }
        cc_cn.push_back(static_cast<int>(cc_row_index.size()));
    }
    if (flag) mat_write_colcompressed(k.n_row, cc_cn, cc_row_index, cc_val, "mat_cc.dat");
}

#define INSTANTIATE(T)                                                         \
    template void knuth_zero(knuth<T>&);                                       \
    template void knuth_zero(knuth<T>&, int, int);                             \
    template void knuth_addentry(knuth<T>&, int, int, T);                      \
    template int knuth_check_ij(const knuth<T>&, int, int);                    \
    template void ij_to_knuth(knuth<T>&, int, int, int, int, const T*, bool);  \
    template void knuth_to_ij(const knuth<T>&, int, int, T*, bool);            \
    template void knuth_copy(const knuth<T>&, knuth<T>&);                      \
    template void knuth_copy_1(const knuth<T>&, knuth<double>&);               \
    template void knuth_copy_1(const knuth<T>&, knuth<std::complex<double>>&); \
    template void knuth_append_1(const knuth<T>&, const knuth<T>&, knuth<T>&); \
    template void knuth_append_2(const knuth<T>&, const knuth<T>&, knuth<T>&); \
    template void knuth_append_1a(knuth<T>&, const knuth<T>&);                 \
    template void knuth_append_2a(knuth<T>&, const knuth<T>&);                 \
    template void knuth_makecols(knuth<T>&);                                   \
    template void knuth_makerows(knuth<T>&);                                   \
    template void knuth_to_col_compressed(const knuth<T>&, std::vector<int>&, std::vector<int>&, std::vector<T>&, bool);
INSTANTIATE(double)
INSTANTIATE(std::complex<double>)
