#include "sparse/dense.h"

#include <algorithm>
#include <string_view>

#include "base/halt.h"
#include "sparse/arithmetic.h"

namespace {
template <class T>
constexpr std::string_view twin = "";
template <>
constexpr std::string_view twin<complex_value> = "_c";
}  // namespace

template <class T>
int Crout_LU_Decomposition(T* a, int n) {
    for (int k = 0; k < n; ++k) {
        for (int i = k; i < n; ++i)
            for (int p = 0; p < k; ++p) a[i * n + k] -= product(a[i * n + p], a[p * n + k]);
        if (a[k * n + k] == T(0)) return -1;
        for (int j = k + 1; j < n; ++j) {
            for (int p = 0; p < k; ++p) a[k * n + j] -= product(a[k * n + p], a[p * n + j]);
            a[k * n + j] = quotient(a[k * n + j], a[k * n + k]);
        }
    }
    return 0;
}

template <class T>
int Lower_Triangular_Solve(const T* l, const T* b, T* x, int n) {
    for (int k = 0; k < n; ++k) {
        if (l[k * n + k] == T(0)) return -1;
        x[k] = b[k];
        for (int i = 0; i < k; ++i) x[k] -= product(x[i], l[k * n + i]);
        x[k] = quotient(x[k], l[k * n + k]);
    }
    return 0;
}

template <class T>
void Unit_Upper_Triangular_Solve(const T* u, const T* b, T* x, int n) {
    for (int k = n - 1; k >= 0; --k) {
        x[k] = b[k];
        for (int i = k + 1; i < n; ++i) x[k] -= product(x[i], u[k * n + i]);
    }
}

template <class T>
int Crout_LU_Solve(const T* lu, const T* b, T* x, int n) {
    if (Lower_Triangular_Solve(lu, b, x, n) == -1) return -1;
    Unit_Upper_Triangular_Solve(lu, x, x, n);
    return 0;
}

template <class T>
void invrs(int n, T* a, int* p1, int* p2, int* p3) {
    // p1: 1 where a column has been a pivot; p2, p3: row and column of the pivot of each step.
    std::fill(p1, p1 + n, 0);
    for (int step = 0; step < n; ++step) {
        double big = 0;
        int i_piv = -1, j_piv = -1;
        for (int i = 0; i < n; ++i)
            for (int j = 0; p1[i] == 0 && j < n; ++j)
                if (p1[j] == 0 && magnitude(a[i * n + j]) > big) {
                    big = magnitude(a[i * n + j]);
                    i_piv = i;
                    j_piv = j;
                }
        if (i_piv == -1) halt({line("invrs", twin<T>, ": singular matrix. Halting..")});
        p1[j_piv] = 1;
        if (i_piv != j_piv) std::swap_ranges(a + i_piv * n, a + (i_piv + 1) * n, a + j_piv * n);
        p2[step] = i_piv;
        p3[step] = j_piv;
        T* row = a + j_piv * n;
        const T inverse = quotient(T(1), row[j_piv]);
        row[j_piv] = T(1);
        for (int j = 0; j < n; ++j) row[j] = product(row[j], inverse);
        for (int i = 0; i < n; ++i) {
            if (i == j_piv) continue;
            const T factor = a[i * n + j_piv];
            a[i * n + j_piv] = T(0);
            for (int j = 0; j < n; ++j) a[i * n + j] -= product(row[j], factor);
        }
    }
    for (int step = n - 1; step >= 0; --step)
        if (p2[step] != p3[step])
            for (int i = 0; i < n; ++i) std::swap(a[i * n + p2[step]], a[i * n + p3[step]]);
}

template <class T>
void mat_mult(int n_row_a, int n_col_a, int n_row_b, int n_col_b, const T* a, const T* b, T* c) {
    if (n_col_a != n_row_b) halt({line("mat_mult", twin<T>, ": ncol_a != nrow_b. Halting...")});
    for (int i = 0; i < n_row_a; ++i)
        for (int j = 0; j < n_col_b; ++j) {
            T sum(0);
            for (int k = 0; k < n_col_a; ++k) sum += product(a[i * n_col_a + k], b[k * n_col_b + j]);
            c[i * n_col_b + j] = sum;
        }
}

template <class T>
void mat_mult_1(int n, const T* a, const T* x, T* y) {
    for (int i = 0; i < n; ++i) {
        T sum(0);
        for (int j = 0; j < n; ++j) sum += product(a[i * n + j], x[j]);
        y[i] = sum;
    }
}

template <class T>
void mat_solve(int n, const T* a, T* a_inv, const T* b, T* x, int* p1, int* p2, int* p3) {
    std::copy(a, a + static_cast<std::ptrdiff_t>(n) * n, a_inv);
    invrs(n, a_inv, p1, p2, p3);
    mat_mult_1(n, a_inv, b, x);
}

#define INSTANTIATE(T)                                                      \
    template int Crout_LU_Decomposition(T*, int);                           \
    template int Crout_LU_Solve(const T*, const T*, T*, int);               \
    template int Lower_Triangular_Solve(const T*, const T*, T*, int);       \
    template void Unit_Upper_Triangular_Solve(const T*, const T*, T*, int); \
    template void invrs(int, T*, int*, int*, int*);                         \
    template void mat_mult(int, int, int, int, const T*, const T*, T*);     \
    template void mat_mult_1(int, const T*, const T*, T*);                  \
    template void mat_solve(int, const T*, T*, const T*, T*, int*, int*, int*);
INSTANTIATE(double)
INSTANTIATE(complex_value)
