// pattern.h -- builds the pattern of a matrix from positions in any order, at constant cost each.
#pragma once
#include <cstdint>
#include <vector>

#include "sparse/knuth.h"

// Slots follow the order of first mention and stay; the lists of the matrix are made once, by finish().
class pattern_builder {
public:
    // Slot of a position: that of an earlier mention, or the next one.
    int add(int row, int col);
    // Slot of a position, or -1.
    int find(int row, int col) const;
    int nnz() const { return static_cast<int>(row_.size()); }
    // The matrix with all values 0. Every position must be inside n_row by n_col.
    template <class T>
    knuth<T> finish(int n_row, int n_col) const;

private:
    std::size_t place(int row, int col) const;  // of the position in the table, or the free one where it belongs
    std::vector<int> row_, col_;                // [nnz]
    std::vector<int> table_;                    // [power of two, at most half full]  slot, or -1
};
