// sums.h -- numbers that units give, added into entries and rows: which ones, in which order, and what of it stands.
#pragma once
#include <vector>

#include "base/at.h"

// Rows of sums over one flat array of numbers, in the order of addition.
struct sum_rows {
    std::vector<int> first{0};  // [n + 1] terms of row i are first[i] .. first[i + 1] - 1
    std::vector<int> term;      // place in the array
    int n() const { return static_cast<int>(first.size()) - 1; }
};

// Terms by row, each row in the order of the list.
inline sum_rows rows_of(int n_row, const std::vector<int>& row, const std::vector<int>& term) {
    sum_rows sums;
    sums.first.assign(at(n_row) + 1, 0);
    for (const int i : row) ++sums.first[at(i) + 1];
    for (int i = 0; i < n_row; ++i) sums.first[at(i) + 1] += sums.first[at(i)];
    sums.term.resize(term.size());
    std::vector<int> next(sums.first.begin(), sums.first.end() - 1);
    for (std::size_t k = 0; k < row.size(); ++k) sums.term[at(next[at(row[k])]++)] = term[k];
    return sums;
}

template <class T>
T add_terms(T sum, const T* from, const int* term, const int* end) {
    for (; term != end; ++term) sum += from[*term];
    return sum;
}

// One addition: of the number at a place to a sum.
struct addition {
    int sum, place;
    bool changes;  // the number, once the others stand
};

// Sums of which some terms stand. A sum without a term that changes stands as a whole, of another the part up to the
// first such term does: the order of additions is that of the list.
template <class T>
struct standing_sums {
    sum_rows all;                 // [n] over the places
    std::vector<int> sum;         // those that change
    sum_rows changing;            // [sum] their terms behind the standing ones
    std::vector<int> n_standing;  // [sum] terms in front
    std::vector<T> standing;      // [sum] what these come to

    // All sums of the numbers d, and what stands of those that will change.
    void sum_all(const T* d, T* to) {
        const int *term = all.term.data(), *first = all.first.data();
        const int n = all.n();
        for (int i = 0; i < n; ++i) to[i] = add_terms(T(0), d, term + first[i], term + first[i + 1]);
        for (std::size_t k = 0; k < sum.size(); ++k) {
            const int* begin = term + first[sum[k]];
            standing[k] = add_terms(T(0), d, begin, begin + n_standing[k]);
        }
    }
    // Those that change.
    void sum_changing(const T* d, T* to) const {
        const int *term = changing.term.data(), *first = changing.first.data();
        const std::size_t n = sum.size();
        for (std::size_t k = 0; k < n; ++k)
            to[sum[k]] = add_terms(standing[k], d, term + first[k], term + first[k + 1]);
    }
};

// For a list of additions to n sums over n_places numbers.
template <class T>
standing_sums<T> make_sums(const std::vector<addition>& list, int n, int n_places) {
    std::vector<int> sum, place;
    std::vector<char> changes(at(n_places), 0);
    for (const addition& a : list) {
        sum.push_back(a.sum);
        place.push_back(a.place);
        if (a.changes) changes[at(a.place)] = 1;
    }
    standing_sums<T> s;
    s.all = rows_of(n, sum, place);
    for (int i = 0; i < n; ++i) {
        const int first = s.all.first[at(i)], end = s.all.first[at(i) + 1];
        int k = first;
        while (k < end && !changes[at(s.all.term[at(k)])]) ++k;
        if (k == end) continue;
        s.sum.push_back(i);
        s.n_standing.push_back(k - first);
        s.changing.term.insert(s.changing.term.end(), s.all.term.begin() + k, s.all.term.begin() + end);
        s.changing.first.push_back(static_cast<int>(s.changing.term.size()));
    }
    s.standing.assign(s.sum.size(), T(0));
    return s;
}
