// knuth_write.h -- matrices and vectors in files and on the console, for looking at a system.
#pragma once
#include <string>
#include <vector>

#include "sparse/knuth.h"

// A dense array with room for m_col columns: one line a row.
template <class T>
void mat_write_ij(int n_row, int n_col, int m_col, const T* a, const std::string& name);
template <class T>
void mat_write_ij_console(int n_row, int n_col, int m_col, const T* a);
// All the arrays by slot, then the heads and tails.
template <class T>
void mat_write_knuth(const knuth<T>& k, const std::string& name);
template <class T>
void mat_write_knuth_console(const knuth<T>& k);
template <class T>
void mat_write_knuth_console_1(const knuth<T>& k);  // without values
// As a dense array, zeros included.
template <class T>
void mat_write_knuth_ij(const knuth<T>& k, const std::string& name);
template <class T>
void mat_write_knuth_ij_console(const knuth<T>& k);
// One line an entry: row, column, value; row by row.
template <class T>
void mat_write_knuthij1(const knuth<T>& k, const std::string& name);
template <class T>
void mat_write_colcompressed(int n_row, const std::vector<int>& cc_cn, const std::vector<int>& cc_row_index,
                             const std::vector<T>& cc_val, const std::string& name);
template <class T>
void vector_write(int n, const T* v, const std::string& name);
template <class T>
void vector_write_console(int n, const T* v);

// A file of two sizes and the elements row by row, into room for [m_row][m_col]; of one size and the elements.
// false: no such file, too large or cut short.
template <class T>
bool mat_read(int& n_row, int& n_col, int m_row, int m_col, T* a, const std::string& name);
template <class T>
bool vector_read(int& n, int m, T* v, const std::string& name);

// rhs = a x, for a test right-hand side; a has room for m_col columns.
template <class T>
void generate_rhs(int n_row, int n_col, int m_col, const T* a, const T* x, T* rhs);
