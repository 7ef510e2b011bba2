// order.h -- the pivot search and elimination without exchanges, full scans or square tables.
#pragma once
#include "sparse/elimination.h"

// The order that literal_gauss finds, with the same slots, counts and stops, in time that follows the entries touched.
//   by_values   threshold pivoting on the values; false: by the counts of the pattern alone
//   val_w       [nnz with fill-in] values by slot: the factors, or those given
// A search without a candidate (by counts alone: an active part without entries) halts as a last row without a pivot.
template <class T>
void fast_order(elimination<T>& e, const knuth<T>& m, const T* val_m, bool by_values, std::vector<T>& val_w);
