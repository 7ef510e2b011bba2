// dense.h -- dense routines for small systems; matrices are flat, row by row.
#pragma once
#include <complex>
#include <vector>

// Crout's factors in place, without pivoting: lower with the diagonal, upper with a unit one. -1: a zero on the
// diagonal; 0: done.
template <class T>
int Crout_LU_Decomposition(T* a, int n);
// x from the factors and the right-hand side b, which is left alone. -1: a zero on the diagonal.
template <class T>
int Crout_LU_Solve(const T* lu, const T* b, T* x, int n);
template <class T>
int Lower_Triangular_Solve(const T* l, const T* b, T* x, int n);
template <class T>
void Unit_Upper_Triangular_Solve(const T* u, const T* b, T* x, int n);

// a becomes its inverse: Gauss-Jordan with full pivoting (rows, then columns; the first largest element wins).
// p1, p2, p3: [n] work space. Halts on a zero pivot.
template <class T>
void invrs(int n, T* a, int* p1, int* p2, int* p3);
// c = a b; halts unless the inner sizes agree.
template <class T>
void mat_mult(int n_row_a, int n_col_a, int n_row_b, int n_col_b, const T* a, const T* b, T* c);
// y = a x
template <class T>
void mat_mult_1(int n, const T* a, const T* x, T* y);
// x of a x = b by the inverse, which is left in a_inv.
template <class T>
void mat_solve(int n, const T* a, T* a_inv, const T* b, T* x, int* p1, int* p2, int* p3);
