// jac_tables.h -- several dense tables over one array, for the objects in which models leave their derivatives.
#pragma once
#include <cstddef>
#include <vector>

// Sizes store and rows for one table of n_f rows for each count of columns, and n_work numbers behind them; all zero.
// Gives the rows of each table, in order.
template <class T>
std::vector<T**> lay_tables(const std::vector<int>& columns, int n_f, std::size_t n_work, std::vector<T>& store,
                            std::vector<T*>& rows) {
    const auto n_rows = static_cast<std::size_t>(n_f);
    std::size_t n = 0;
    for (const int c : columns) n += static_cast<std::size_t>(c) * n_rows;
    store.assign(n + n_work, T{});
    rows.assign(columns.size() * n_rows, nullptr);
    std::vector<T**> tables;
    std::size_t at = 0;
    for (std::size_t t = 0; t < columns.size(); ++t) {
        tables.push_back(rows.data() + t * n_rows);
        for (std::size_t j = 0; j < n_rows; ++j, at += static_cast<std::size_t>(columns[t]))
            rows[t * n_rows + j] = store.data() + at;
    }
    return tables;
}
