// literal.h -- the elimination written the plain way, on linked lists with exchanges and full scans.
// It is the reference that the fast form must equal bit by bit, and it prints the lists when asked.
#pragma once
#include "sparse/elimination.h"

enum class pivot_rule { by_values, by_counts, as_given };

// Fills the order and e.lists. as_given repeats the exchanges of e.mat_rowexch and e.mat_colexch, without values.
template <class T>
void literal_gauss(elimination<T>& e, const knuth<T>& m, const T* val_m, pivot_rule rule);

// The replay over e.lists, in the modes of gauss_2, quiet or with a line for each operation.
template <class T>
int literal_gauss_2(elimination<T>& e, int nnz_m, const T* val_m, int mode, bool debug);
