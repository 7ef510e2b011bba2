#include "sparse/pattern.h"

#include "base/halt.h"

using std::size_t;

size_t pattern_builder::place(int row, int col) const {
    const std::uint64_t key = static_cast<std::uint64_t>(static_cast<std::uint32_t>(row)) << 32 |
                              static_cast<std::uint64_t>(static_cast<std::uint32_t>(col));
    const size_t mask = table_.size() - 1;
    size_t p = static_cast<size_t>((key * 0x9E3779B97F4A7C15ull) >> 20) & mask;
    while (table_[p] != -1) {
        const size_t s = static_cast<size_t>(table_[p]);
        if (row_[s] == row && col_[s] == col) break;
        p = (p + 1) & mask;
    }
    return p;
}

int pattern_builder::find(int row, int col) const { return table_.empty() ? -1 : table_[place(row, col)]; }

int pattern_builder::add(int row, int col) {
    if (2 * (row_.size() + 1) > table_.size()) {
        table_.assign(table_.empty() ? 64 : 2 * table_.size(), -1);
        for (size_t s = 0; s < row_.size(); ++s) table_[place(row_[s], col_[s])] = static_cast<int>(s);
    }
    const size_t p = place(row, col);
    if (table_[p] == -1) {
        table_[p] = nnz();
        row_.push_back(row);
        col_.push_back(col);
    }
    return table_[p];
}

template <class T>
knuth<T> pattern_builder::finish(int n_row, int n_col) const {
    knuth<T> k;
    knuth_zero(k, n_row, n_col);
    k.row = row_;
    k.col = col_;
    k.val.assign(row_.size(), T(0));
    k.prow.assign(row_.size(), -1);
    k.pcol.assign(row_.size(), -1);
    for (size_t s = 0; s < row_.size(); ++s)
        if (row_[s] < 0 || row_[s] >= n_row || col_[s] < 0 || col_[s] >= n_col)
            halt({"pattern_builder: entry outside of the matrix.", line("  row = ", row_[s], ", col = ", col_[s]),
                  line("  n_row = ", n_row, ", n_col = ", n_col), "  Halting..."});
    // Chains by column in any order, then rows made from them ascend in column; then the columns again from the rows.
    for (size_t s = row_.size(); s-- > 0;) {
        int& head = k.scol[static_cast<size_t>(col_[s])];
        k.pcol[s] = head;
        head = static_cast<int>(s);
    }
    knuth_makerows(k);
    knuth_makecols(k);
    return k;
}

template knuth<double> pattern_builder::finish(int, int) const;
template knuth<std::complex<double>> pattern_builder::finish(int, int) const;
