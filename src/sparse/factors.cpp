#include "sparse/factors.h"

#include <algorithm>
#include <complex>

#include "sparse/arithmetic.h"

// Updates follow the plain elimination to the bit: a target meets its pivots in ascending order, the matrix stage
// multiplies by the inverse of a pivot, the right-hand side divides by the pivot.

namespace {

using std::size_t;

template <class V>
auto& at(V& v, int i) {
    return v[static_cast<size_t>(i)];
}

constexpr bool is_real(double) { return true; }
constexpr bool is_real(const complex_value&) { return false; }

// A fill-in begins as minus a product. For real numbers that is -0.0 minus the product in all bits, so the start value
// serves; a complex product cancels within itself, and the first operation is told apart.
template <class T>
constexpr T fill_start = T(0);
template <>
constexpr double fill_start<double> = -0.0;

// Fewest pivots that are worth a segment of their own.
constexpr int m_chain = 4, m_dense = 6;

// Two neighbouring values at once.
typedef double pair_of_doubles __attribute__((vector_size(16), aligned(8)));

// 1/piv, and y/piv in place of y.
inline double invert(double piv, double& y) {
    const pair_of_doubles q = pair_of_doubles{1.0, y} / pair_of_doubles{piv, piv};
    y = q[1];
    return q[0];
}
inline complex_value invert(const complex_value& piv, complex_value& y) {
    y = quotient(y, piv);
    return quotient(complex_value(1), piv);
}

// Pivots that touch nothing but the next row and column: its values are carried along instead of read back.
template <class T>
bool run_chain(factors<T>& f, const segment& s, double zero_piv) {
    const int* diag = f.diag.data();
    T *w = f.w.data(), *x = w + f.col.size();
    bool failed = false;
    T piv = w[diag[s.first]], y = x[s.first];
    for (int p = s.first; p < s.end; ++p) {
        failed |= magnitude(piv) < zero_piv;
        const int up = diag[p] + 1, next = diag[p + 1];
        const T l = w[next - 1], u = product(w[up], quotient(T(1), piv));
        w[up] = u;
        x[p] = y = quotient(y, piv);
        y = x[p + 1] - product(l, y);
        w[next] = piv = w[next] - product(l, u);
    }
    x[s.end] = y;
    return failed;
}

template <class T>
void apply(const update& op, T* w) {
    if (is_real(T{}) || op.target >= 0)
        w[op.target] = w[op.target] - product(w[op.lower], w[op.upper]);
    else
        w[~op.target] = product(-w[op.lower], w[op.upper]);
}

template <class T>
bool run_levels(factors<T>& f, const segment& s, double zero_piv) {
    const int* diag = f.diag.data();
    T *w = f.w.data(), *x = w + f.col.size(), *inverse = f.inverse.data();
    bool failed = false;
    const level *v = f.levels.data() + s.first_level, *end = f.levels.data() + s.end_level;
    const level start = s.first_level == 0 ? level{} : v[-1];
    const int *pivot = f.pivot.data() + start.end_pivot, *scale = f.scale.data(), *by = f.scaled_by.data();
    const update* op = f.updates.data() + start.end_update;
    int k = start.end_scale;
    for (; v != end; ++v) {
        T* inv = inverse;
        for (const int* end_pivot = f.pivot.data() + v->end_pivot; pivot != end_pivot; ++pivot) {
            const T piv = w[diag[*pivot]];
            failed |= magnitude(piv) < zero_piv;
            *inv++ = invert(piv, x[*pivot]);
        }
        for (; k < v->end_scale; ++k) w[scale[k]] = product(w[scale[k]], inverse[by[k]]);
        const update* end_op = f.updates.data() + v->end_update;
        for (; end_op - op >= 2; op += 2) {
            apply(op[0], w);
            apply(op[1], w);
        }
        if (op != end_op) apply(*op++, w);
    }
    return failed;
}

void subtract_multiple(int n, double l, const double* u, double* v) {
    int j = 0;
    for (; j + 1 < n; j += 2) {
        const pair_of_doubles a = *reinterpret_cast<const pair_of_doubles*>(u + j);
        pair_of_doubles& b = *reinterpret_cast<pair_of_doubles*>(v + j);
        b = b - l * a;
    }
    if (j < n) v[j] = v[j] - l * u[j];
}
void subtract_multiple(int n, const complex_value& l, const complex_value* u, complex_value* v) {
    for (int j = 0; j < n; ++j) v[j] = v[j] - product(l, u[j]);
}

// The last rows, where the remaining matrix is full: columns follow one another in each row.
template <class T>
bool run_dense(factors<T>& f, const segment& s, double zero_piv) {
    const int *first = f.first.data(), *diag = f.diag.data();
    T *w = f.w.data(), *x = w + f.col.size();
    bool failed = false;
    for (int p = s.first; p < s.end - 1; ++p) {
        const T piv = w[diag[p]];
        failed |= magnitude(piv) < zero_piv;
        const T pivinv = invert(piv, x[p]);
        T* u = w + diag[p] + 1;
        const int n_upper = s.end - p - 1;
        for (int j = 0; j < n_upper; ++j) u[j] = product(u[j], pivinv);
        for (int r = p + 1; r < s.end; ++r) {
            T* v = w + first[r + 1] - n_upper - 1;  // the row's entry in the pivot column
            subtract_multiple(n_upper, *v, u, v + 1);
            x[r] = x[r] - product(*v, x[p]);
        }
    }
    x[s.end - 1] = quotient(x[s.end - 1], w[diag[s.end - 1]]);
    return failed;
}

template <class T>
void gather(int n, const int* index, const T* from, T* to) {
    int i = 0;
    for (; i + 3 < n; i += 4) {
        to[i] = from[index[i]];
        to[i + 1] = from[index[i + 1]];
        to[i + 2] = from[index[i + 2]];
        to[i + 3] = from[index[i + 3]];
    }
    for (; i < n; ++i) to[i] = from[index[i]];
}

// ---- tables
// -----------------------------------------------------------------------------------------------------------

// First row from which on the matrix is full.
template <class T>
int first_dense(const factors<T>& f) {
    if (!is_real(T{})) return f.n;  // the first value of a fill-in is told apart by level only
    int start = f.n, reach = 0;     // reach: the lowest column that all rows from start on have filled to the end
    for (int p = f.n - 1; p >= 0; --p) {
        int e = at(f.first, p + 1) - 1, c = f.n - 1;
        while (e >= at(f.first, p) && at(f.col, e) == c) --e, --c;
        reach = std::max(reach, c + 1);
        if (reach > p) break;
        start = p;
    }
    return start;
}

template <class T>
bool links_next_only(const factors<T>& f, const std::vector<int>& n_lower, int p) {
    if (at(f.first, p + 1) != at(f.diag, p) + 2 || at(f.col, at(f.diag, p) + 1) != p + 1 || at(n_lower, p) != 1)
        return false;
    const int low = at(f.diag, p + 1) - 1;  // the column's only entry is in the next row, behind all others there
    return low >= at(f.first, p + 1) && at(f.col, low) == p;
}

// Tables of one run of pivots, level by level.
template <class T>
struct level_maker {
    factors<T>& f;
    const std::vector<int>& first_low;  // [n + 1]      lower entries by column
    const std::vector<int>& low;        // [n_lower]    entry
    const std::vector<int>& low_row;    // [n_lower]    its row
    int nnz_m;
    std::vector<int> last;             // [n_entry + n] last level that changed the entry, the right-hand side; or -1
    std::vector<unsigned char> begun;  // [n_entry]    1: a fill-in that has its first value

    std::vector<int> targets;          // of the updates of the segment's matrix entries, pivot by pivot
    std::vector<size_t> first_target;  // [pivots of the segment + 1]

    // Targets of pivot i, rows and columns ascending.
    void add_targets(int i) {
        for (int q = at(first_low, i); q < at(first_low, i + 1); ++q) {
            int e = at(low, q) + 1;
            for (int j = at(f.diag, i) + 1; j < at(f.first, i + 1); ++j) {
                while (at(f.col, e) != at(f.col, j)) ++e;
                targets.push_back(e);
            }
        }
    }

    // The first level at which pivot i has its row and column complete, and which is not before that of an earlier
    // pivot with an update in common: then the row's right-hand side is one, too.
    int level_of_pivot(int i, size_t from_target, int lowest) {
        const int n_entry = static_cast<int>(f.col.size());
        int v = std::max(lowest, at(last, n_entry + i) + 1);
        for (int e = at(f.diag, i); e < at(f.first, i + 1); ++e) v = std::max(v, at(last, e) + 1);
        for (int q = at(first_low, i); q < at(first_low, i + 1); ++q)
            v = std::max({v, at(last, at(low, q)) + 1, at(last, n_entry + at(low_row, q))});
        for (size_t t = from_target; t < targets.size(); ++t) at(last, targets[t]) = v;
        for (int q = at(first_low, i); q < at(first_low, i + 1); ++q) at(last, n_entry + at(low_row, q)) = v;
        return v;
    }

    void add_levels(segment& s) {
        const int base = static_cast<int>(f.levels.size()), n_pivot = s.end - s.first;
        std::vector<int> level_of(static_cast<size_t>(n_pivot)), members(level_of), start(1, 0);
        targets.clear();
        first_target.assign(1, 0);
        for (int i = s.first; i < s.end; ++i) {
            add_targets(i);
            const int v = level_of_pivot(i, first_target.back(), base) - base;
            first_target.push_back(targets.size());
            at(level_of, i - s.first) = v;
            start.resize(std::max(start.size(), static_cast<size_t>(v) + 2), 0);
            ++at(start, v + 1);
        }
        for (size_t v = 1; v < start.size(); ++v) start[v] += start[v - 1];
        std::vector<int> next = start;
        for (int i = s.first; i < s.end; ++i) at(members, at(next, at(level_of, i - s.first))++) = i;
        s.first_level = base;
        for (size_t v = 0; v + 1 < start.size(); ++v)
            add_level(members.data() + start[v], members.data() + start[v + 1], s.first);
        s.end_level = static_cast<int>(f.levels.size());
    }

    void add_level(const int* pivot, const int* end, int first_pivot) {
        const int n_entry = static_cast<int>(f.col.size());
        f.inverse.resize(std::max(f.inverse.size(), static_cast<size_t>(end - pivot)));
        for (int place = 0; pivot != end; ++pivot, ++place) {
            const int i = *pivot, end_i = at(f.first, i + 1);
            f.pivot.push_back(i);
            for (int e = at(f.diag, i) + 1; e < end_i; ++e) {
                f.scale.push_back(e);
                f.scaled_by.push_back(place);
            }
            const int* target = targets.data() + at(first_target, i - first_pivot);
            for (int q = at(first_low, i); q < at(first_low, i + 1); ++q)
                for (int j = at(f.diag, i) + 1; j < end_i; ++j) add_update(*target++, at(low, q), j);
            for (int q = at(first_low, i); q < at(first_low, i + 1); ++q)
                f.updates.push_back({n_entry + at(low_row, q), at(low, q), n_entry + i});
        }
        f.levels.push_back(
            {static_cast<int>(f.pivot.size()), static_cast<int>(f.scale.size()), static_cast<int>(f.updates.size())});
    }

    void add_update(int t, int l, int u) {
        if constexpr (is_real(T{})) {
            f.updates.push_back({t, l, u});
        } else {
            f.updates.push_back({at(f.source, t) == nnz_m && !at(begun, t) ? ~t : t, l, u});
            at(begun, t) = 1;
        }
    }
};

template <class T>
void make_segments(factors<T>& f, int nnz_m) {
    // Lower entries by column.
    std::vector<int> first_low(static_cast<size_t>(f.n) + 1, 0), n_lower(static_cast<size_t>(f.n), 0);
    for (int p = 0; p < f.n; ++p)
        for (int e = at(f.first, p); e < at(f.diag, p); ++e) ++at(n_lower, at(f.col, e));
    for (int i = 0; i < f.n; ++i) at(first_low, i + 1) = at(first_low, i) + at(n_lower, i);
    std::vector<int> low(static_cast<size_t>(first_low.back())), low_row(low.size()), next = first_low;
    for (int p = 0; p < f.n; ++p)
        for (int e = at(f.first, p); e < at(f.diag, p); ++e) {
            const int q = at(next, at(f.col, e))++;
            at(low, q) = e;
            at(low_row, q) = p;
        }
    for (auto* v : {&f.pivot, &f.scale, &f.scaled_by}) v->clear();
    f.segments.clear();
    f.levels.clear();
    f.updates.clear();

    const int dense_from = first_dense(f), n_sparse = f.n - dense_from >= m_dense ? dense_from : f.n;
    const size_t n_entry = f.col.size();
    level_maker<T> maker{f,
                         first_low,
                         low,
                         low_row,
                         nnz_m,
                         std::vector<int>(n_entry + static_cast<size_t>(f.n), -1),
                         std::vector<unsigned char>(n_entry, 0),
                         {},
                         {}};
    int from = 0;  // first row that is in no segment yet
    const auto close = [&](int end) {
        if (from == end) return;
        segment s{segment::levels, from, end, 0, 0};
        maker.add_levels(s);
        f.segments.push_back(s);
        from = end;
    };
    for (int p = 0; p < n_sparse; ++p) {
        int end = p;
        while (end < n_sparse && end < f.n - 1 && links_next_only(f, n_lower, end) &&
               (is_real(T{}) || at(f.source, at(f.diag, end + 1)) < nnz_m))
            ++end;
        if (end - p < m_chain) continue;
        close(p);
        f.segments.push_back({segment::chain, p, end, 0, 0});
        from = end;
        p = end - 1;
    }
    close(n_sparse);
    if (n_sparse < f.n) f.segments.push_back({segment::dense, n_sparse, f.n, 0, 0});
}

}  // namespace

template <class T>
void make_factors(factors<T>& f, int n, const std::vector<int>& row_w, const std::vector<int>& col_w, int nnz_m,
                  const std::vector<T>& val_w, const T* val_m) {
    const size_t n_entry = row_w.size();
    f.n = n;
    f.standing = false;
    // Slots by column, then by row: ascending columns within each row.
    std::vector<int> start(static_cast<size_t>(n) + 1, 0), by_col(n_entry), by_row(n_entry);
    for (const int c : col_w) ++at(start, c + 1);
    for (int i = 0; i < n; ++i) at(start, i + 1) += at(start, i);
    for (size_t k = 0; k < n_entry; ++k) at(by_col, at(start, col_w[k])++) = static_cast<int>(k);
    f.first.assign(static_cast<size_t>(n) + 1, 0);
    for (const int r : row_w) ++at(f.first, r + 1);
    for (int i = 0; i < n; ++i) at(f.first, i + 1) += at(f.first, i);
    start.assign(f.first.begin(), f.first.end());
    for (const int k : by_col) at(by_row, at(start, at(row_w, k))++) = k;

    f.diag.assign(static_cast<size_t>(n), -1);
    f.col.resize(n_entry);
    f.source.resize(n_entry);
    f.w.assign(n_entry + static_cast<size_t>(n), T(0));
    for (size_t e = 0; e < n_entry; ++e) {
        const int k = by_row[e];
        f.col[e] = at(col_w, k);
        f.source[e] = std::min(k, nnz_m);
        f.w[e] = at(val_w, k);
        if (at(row_w, k) == f.col[e]) at(f.diag, f.col[e]) = static_cast<int>(e);
    }
    f.given.assign(val_m, val_m + nnz_m);
    f.given.push_back(fill_start<T>);

    make_segments(f, nnz_m);
}

// A pivot that is too small is told at the end, since levels do not meet the pivots in order; what precedes the first
// such pivot does not depend on it.
template <class T>
int refactor_and_forward(factors<T>& f, const T* val_m, double zero_piv, const int* row_perm, const T* rhs) {
    std::copy(val_m, val_m + f.given.size() - 1, f.given.begin());
    gather(static_cast<int>(f.col.size()), f.source.data(), f.given.data(), f.w.data());
    if (rhs) gather(f.n, row_perm, rhs, f.w.data() + f.col.size());
    bool failed = false;
    for (const segment& s : f.segments)
        failed |= s.how == segment::chain    ? run_chain(f, s, zero_piv)
                  : s.how == segment::levels ? run_levels(f, s, zero_piv)
                                             : run_dense(f, s, zero_piv);
    for (int p = 0; failed && p < f.n - 1; ++p)
        if (magnitude(at(f.w, at(f.diag, p))) < zero_piv) return p;
    return -1;
}

template <class T>
int forward(factors<T>& f, double zero_piv, const int* row_perm, const T* rhs) {
    const int *first = f.first.data(), *diag = f.diag.data(), *col = f.col.data();
    const T* w = f.w.data();
    T* x = f.w.data() + f.col.size();
    T y{};  // of the row before
    for (int p = 0; p < f.n; ++p) {
        const T before = y;
        y = rhs[row_perm[p]];
        int k = first[p];
        const int d = diag[p];
        for (; k < d - 1; ++k) y = y - product(w[k], x[col[k]]);
        if (k < d) y = y - product(w[k], col[k] == p - 1 ? before : x[col[k]]);
        const T piv = w[d];
        if (magnitude(piv) < zero_piv) return p;
        x[p] = y = quotient(y, piv);
    }
    return -1;
}

template <class T>
void backward(const factors<T>& f, const int* col_perm, T* x, T* sol) {
    const int *first = f.first.data(), *diag = f.diag.data(), *col = f.col.data();
    const T *w = f.w.data(), *rhs = w + f.col.size();
    T y{};  // of the row behind
    for (int p = f.n - 1; p >= 0; --p) {
        const T behind = y;
        y = rhs[p];
        int k = diag[p] + 1;
        const int end = first[p + 1];
        if (k < end) y = y - product(col[k] == p + 1 ? behind : x[col[k]], w[k]);
        for (++k; k < end; ++k) y = y - product(x[col[k]], w[k]);
        sol[col_perm[p]] = x[p] = y;
    }
}

template <class T>
int solve_block(factors<T>& f, double zero_piv, const int* row_perm, const int* col_perm, int n_cols, const T* rhs,
                T* sol) {
    constexpr int width = 4;
    const size_t n = static_cast<size_t>(f.n);
    f.block.resize(std::max(f.block.size(), n * width));
    const int *first = f.first.data(), *diag = f.diag.data(), *col = f.col.data();
    const T* w = f.w.data();
    T* x = f.block.data();  // [n][width]
    for (int c0 = 0; c0 < n_cols; c0 += width) {
        const int n_here = std::min(width, n_cols - c0);
        const T* b[width];  // a short block solves its last column several times
        for (int c = 0; c < width; ++c) b[c] = rhs + n * static_cast<size_t>(c0 + std::min(c, n_here - 1));
        for (int p = 0; p < f.n; ++p) {
            T y[width];
            for (int c = 0; c < width; ++c) y[c] = b[c][row_perm[p]];
            for (int k = first[p]; k < diag[p]; ++k) {
                const T* xi = x + static_cast<std::ptrdiff_t>(col[k]) * width;
                for (int c = 0; c < width; ++c) y[c] = y[c] - product(w[k], xi[c]);
            }
            const T piv = w[diag[p]];
            if (magnitude(piv) < zero_piv) return p;
            for (int c = 0; c < width; ++c) x[static_cast<std::ptrdiff_t>(p) * width + c] = quotient(y[c], piv);
        }
        for (int p = f.n - 1; p >= 0; --p) {
            T* y = x + static_cast<std::ptrdiff_t>(p) * width;
            for (int k = diag[p] + 1; k < first[p + 1]; ++k) {
                const T* xi = x + static_cast<std::ptrdiff_t>(col[k]) * width;
                for (int c = 0; c < width; ++c) y[c] = y[c] - product(xi[c], w[k]);
            }
        }
        for (int c = 0; c < n_here; ++c)
            for (int p = 0; p < f.n; ++p)
                sol[n * static_cast<size_t>(c0 + c) + static_cast<size_t>(col_perm[p])] =
                    x[static_cast<std::ptrdiff_t>(p) * width + c];
    }
    return -1;
}

#define INSTANTIATE(T)                                                                                  \
    template void make_factors(factors<T>&, int, const std::vector<int>&, const std::vector<int>&, int, \
                               const std::vector<T>&, const T*);                                        \
    template int refactor_and_forward(factors<T>&, const T*, double, const int*, const T*);             \
    template int forward(factors<T>&, double, const int*, const T*);                                    \
    template void backward(const factors<T>&, const int*, T*, T*);                                      \
    template int solve_block(factors<T>&, double, const int*, const int*, int, const T*, T*);
INSTANTIATE(double)
INSTANTIATE(complex_value)
