#include "sparse/factors.h"

#include <algorithm>
#include <complex>

#include "sparse/arithmetic.h"
#include "sparse/panel.h"

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
        failed |= is_below(piv, zero_piv);
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

// One pivot with n_up upper entries, which stay in registers; gives the end of the step's lower entries.
template <int n_up, class T>
const int* run_step(const int* s, int n_low, const T& pivinv, const T& y, T* upper, T* w) {
    T u[n_up + 1];
    for (int k = 0; k < n_up; ++k) upper[k] = u[k] = product(upper[k], pivinv);
    for (; n_low > 0; --n_low, s += 2 + n_up) {
        const T l = w[s[0]];
        for (int k = 0; k < n_up; ++k) w[s[2 + k]] = w[s[2 + k]] - product(l, u[k]);
        w[s[1]] = w[s[1]] - product(l, y);
    }
    return s;
}

inline void subtract_run(int n, double l, const double* u, double* target) {
    for (int k = 0; k < n; k += 2) {
        pair_of_doubles& t = *reinterpret_cast<pair_of_doubles*>(target + k);
        t = t - l * *reinterpret_cast<const pair_of_doubles*>(u + k);
    }
}
inline void subtract_run(int n, const complex_value& l, const complex_value* u, complex_value* target) {
    for (int k = 0; k < n; ++k) target[k] = target[k] - product(l, u[k]);
}

// The same with more upper entries: by fours, twos and ones that are neighbours, and first values of fill-ins.
template <class T>
const int* run_long_step(const int* s, int n_up, int n_low, const T& pivinv, const T& y, T* upper, T* w) {
    for (int k = 0; k < n_up; ++k) upper[k] = product(upper[k], pivinv);
    for (; n_low > 0; --n_low) {
        const T l = w[s[0]];
        w[s[1]] = w[s[1]] - product(l, y);
        const int *two = s + 6 + 2 * s[2], *one = two + 2 * s[3], *begin = one + 2 * s[4], *end = begin + 2 * s[5];
        for (s += 6; s != two; s += 2) subtract_run(4, l, upper + s[1], w + s[0]);
        for (; s != one; s += 2) subtract_run(2, l, upper + s[1], w + s[0]);
        for (; s != begin; s += 2) w[s[0]] = w[s[0]] - product(l, upper[s[1]]);
        if constexpr (!is_real(T{}))
            for (; s != end; s += 2) w[s[0]] = product(-l, upper[s[1]]);
    }
    return s;
}

template <class T>
bool run_steps(factors<T>& f, const segment& part, double zero_piv) {
    T* w = f.w.data();
    bool failed = false;
    const int *s = f.steps.data() + part.from_step, *end = f.steps.data() + part.to_step;
    while (s != end) {
        T *diag = w + s[0], *rhs = w + s[1];
        const int form = s[2], n_low = s[3];
        const T piv = *diag;
        failed |= is_below(piv, zero_piv);
        T y = *rhs;
        const T pivinv = invert(piv, y);
        *rhs = y;
        s += 4;
        switch (form) {
            case 0:
                s = run_step<0>(s, n_low, pivinv, y, diag + 1, w);
                break;
            case 1:
                s = run_step<1>(s, n_low, pivinv, y, diag + 1, w);
                break;
            case 2:
                s = run_step<2>(s, n_low, pivinv, y, diag + 1, w);
                break;
            case 3:
                s = run_step<3>(s, n_low, pivinv, y, diag + 1, w);
                break;
            case 4:
                s = run_step<4>(s, n_low, pivinv, y, diag + 1, w);
                break;
            case 5:
                s = run_step<5>(s, n_low, pivinv, y, diag + 1, w);
                break;
            default:
                s = run_long_step(s, form - m_long, n_low, pivinv, y, diag + 1, w);
        }
    }
    return failed;
}

// Pivots whose upper rows reach the same columns: first the rows of the panel, then those behind it.
bool run_panel(factors<double>& f, const segment& s, double zero_piv) {
    const int *first = f.first.data(), *diag = f.diag.data(), *col = f.col.data();
    double *w = f.w.data(), *x = w + f.col.size();
    const int *step = f.steps.data() + s.from_step, n_below = step[0], n_up = step[1];
    const double* upper[m_panel];
    bool failed = false;
    for (int p = s.first; p < s.end; ++p) {
        int q = 0;
        while (q < p - s.first && diag[p] - q > first[p] && col[diag[p] - q - 1] >= s.first) ++q;
        double* u = w + diag[p];
        const panel_pivots pivots{q, u - q, upper + (p - s.first - q)};
        subtract_lower(pivots, p - q, x + p - q, x[p]);
        subtract_panel(pivots, p, s.end - p + n_up, u);
        failed |= is_below(*u, zero_piv);
        const double pivinv = invert(*u, x[p]);
        for (int j = 1; j < s.end - p + n_up; ++j) u[j] = u[j] * pivinv;
        upper[p - s.first] = u - p;
    }
    step += 2;
    for (int below = 0; below < n_below; ++below) {
        const int q = step[1], target = step[3];
        const panel_pivots pivots{q, w + step[0], upper + (s.end - s.first - q)};
        subtract_lower(pivots, s.end - q, x + s.end - q, w[step[2]]);
        step += 4;
        if (target != -1) {
            subtract_panel(pivots, s.end, n_up, w + target);
            continue;
        }
        double* t = f.gathered.data();
        for (int j = 0; j < n_up; ++j) t[j] = w[step[j]];
        subtract_panel(pivots, s.end, n_up, t);
        for (int j = 0; j < n_up; ++j) w[step[j]] = t[j];
        step += n_up;
    }
    return failed;
}
bool run_panel(factors<complex_value>&, const segment&, double) { return false; }  // there is none

template <class T>
bool run_segment(factors<T>& f, const segment& s, double zero_piv) {
    switch (s.how) {
        case segment::chain:
            return run_chain(f, s, zero_piv);
        case segment::steps:
            return run_steps(f, s, zero_piv);
        default:
            return run_panel(f, s, zero_piv);
    }
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

}  // namespace

// A pivot that is too small is told at the end, so that the steps need not stop: what precedes the first such pivot
// does not depend on it.
template <class T>
int refactor_and_forward(factors<T>& f, const T* val_m, double zero_piv, const int* row_perm, const T* rhs) {
    std::copy(val_m, val_m + f.given.size() - 1, f.given.begin());
    gather(static_cast<int>(f.col.size()), f.source.data(), f.given.data(), f.w.data());
    if (rhs) gather(f.n, row_perm, rhs, f.w.data() + f.col.size());
    bool failed = false;
    for (const segment& s : f.segments) failed |= run_segment(f, s, zero_piv);
    for (int p = 0; failed && p < f.n - 1; ++p)
        if (is_below(at(f.w, at(f.diag, p)), zero_piv)) return p;
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
        if (is_below(piv, zero_piv)) return p;
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
int solve_columns(factors<T>& f, double zero_piv, const int* row_perm, const int* col_perm, int n_cols, const T* rhs,
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
            if (is_below(piv, zero_piv)) return p;
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

#define INSTANTIATE(T)                                                                      \
    template int refactor_and_forward(factors<T>&, const T*, double, const int*, const T*); \
    template int forward(factors<T>&, double, const int*, const T*);                        \
    template void backward(const factors<T>&, const int*, T*, T*);                          \
    template int solve_columns(factors<T>&, double, const int*, const int*, int, const T*, T*);
INSTANTIATE(double)
INSTANTIATE(complex_value)
