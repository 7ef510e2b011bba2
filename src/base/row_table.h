// row_table.h -- rows of unequal length in one array.
#pragma once
#include <vector>

// Row i is data[first[i]] up to data[first[i + 1]].
template <class T>
struct row_table {
    std::vector<int> first{0};  // [number of rows + 1]
    std::vector<T> data;

    int n_rows() const { return static_cast<int>(first.size()) - 1; }
    int size(int i) const { return first[at(i) + 1] - first[at(i)]; }
    T* row(int i) { return data.data() + first[at(i)]; }
    const T* row(int i) const { return data.data() + first[at(i)]; }
    void add(const T& x) { data.push_back(x); }                           // to the row that is being built
    void close_row() { first.push_back(static_cast<int>(data.size())); }  // ends that row
    void keep(int n) {  // rows from n on, and the one that is being built, go
        first.resize(at(n) + 1);
        data.resize(at(first.back()));
    }
    void clear() {
        first.assign(1, 0);
        data.clear();
    }
    static std::size_t at(int i) { return static_cast<std::size_t>(i); }
};
