// What must hold in a knuth matrix, in O(nnz), with the messages in a fixed order.
#include <algorithm>

#include "base/halt.h"
#include "sparse/knuth.h"

namespace {

using std::size_t;

[[noreturn]] void fail(std::initializer_list<std::string> lines, const std::string& message) {
    for (const std::string& text : lines) say(text);
    halt({"  Message from calling routine:", "  " + message});
}

// Every list has one end: the empty ones in s, the others in next.
void check_ends(std::string_view what, const std::vector<int>& s, const std::vector<int>& next, int n,
                const std::string& message) {
    const auto n_zero = std::count(s.begin(), s.end(), -1) + std::count(next.begin(), next.end(), -1);
    if (n_zero != n)
        fail({line("check_knuth: nzero_", what, " must be equal to n_", what),
              line("  nzero_", what, " = ", n_zero, ", n_", what, " = ", n), "  Halting..."},
             message);
}

void check_tails(std::string_view what, const std::vector<int>& e, const std::vector<int>& next,
                 const std::string& message) {
    for (size_t i = 0; i < e.size(); ++i)
        if (e[i] != -1 && next[static_cast<size_t>(e[i])] != -1)
            fail({line("check_knuth: i_", what, " = ", i, ", e", what, " = ", e[i]), "  Halting..."}, message);
}

void check_heads(std::string_view what, const std::vector<int>& s, const std::vector<int>& e,
                 const std::string& message) {
    for (size_t i = 0; i < s.size(); ++i)
        if ((s[i] == -1) != (e[i] == -1))
            fail({line("check_knuth: check s", what, ", e", what, s[i] == -1 ? " (1)" : " (2)", ". Halting... ")},
                 message);
}

// Positions in walk order, as (list, other coordinate); the other coordinate must rise along each list.
struct position {
    int i, j;
};
std::vector<position> walk(std::string_view what, const std::vector<int>& s, const std::vector<int>& next,
                           const std::vector<int>& other, const std::string& message) {
    std::vector<position> met;
    met.reserve(other.size());
    for (size_t i = 0; i < s.size(); ++i) {
        int last = -1;
        for (int k = s[i]; k != -1; k = next[static_cast<size_t>(k)]) {
            const int j = other[static_cast<size_t>(k)];
            if (j <= last) fail({line("check_knuth: check p", what, ". Halting... ")}, message);
            met.push_back({static_cast<int>(i), j});
            last = j;
        }
    }
    return met;
}

}  // namespace

template <class T>
void check_knuth(const knuth<T>& k, const std::string& message) {
    check_ends("row", k.srow, k.prow, k.n_row, message);
    check_ends("col", k.scol, k.pcol, k.n_col, message);
    check_tails("row", k.erow, k.prow, message);
    check_tails("col", k.ecol, k.pcol, message);
    check_heads("row", k.srow, k.erow, message);
    check_heads("col", k.scol, k.ecol, message);
    const std::vector<position> by_row = walk("row", k.srow, k.prow, k.col, message);
    std::vector<position> by_col = walk("col", k.scol, k.pcol, k.row, message);
    // The column walk in row order; columns stay ascending within a row.
    std::vector<size_t> first(static_cast<size_t>(k.n_row) + 1, 0);
    for (const position& p : by_col) ++first[static_cast<size_t>(p.j) + 1];
    for (size_t i = 1; i < first.size(); ++i) first[i] += first[i - 1];
    std::vector<position> sorted(by_col.size());
    for (const position& p : by_col) sorted[first[static_cast<size_t>(p.j)]++] = {p.j, p.i};
    const auto before = [](const position& a, const position& b) { return a.i < b.i || (a.i == b.i && a.j < b.j); };
    for (size_t m = 0; m < std::max(by_row.size(), sorted.size()); ++m) {
        const bool only_row = m >= sorted.size() || (m < by_row.size() && before(by_row[m], sorted[m]));
        const bool only_col = m >= by_row.size() || (m < sorted.size() && before(sorted[m], by_row[m]));
        if (!only_row && !only_col) continue;
        const position p = only_row ? by_row[m] : sorted[m];
        fail({line("check_knuth: i = ", p.i, ", j = ", p.j), line("  l_rowwise[i][j] = ", only_row ? 1 : 0),
              line("  l_colwise[i][j] = ", only_row ? 0 : 1)},
             message);
    }
}

template <class T>
void check_diag_knuth(const knuth<T>& k) {
    for (size_t i = 0; i < k.srow.size(); ++i)
        if (k.srow[i] == -1) halt({line("check_diag_knuth: i_row = ", i), "   No diaginal entry? Halting..."});
}

template void check_knuth(const knuth<double>&, const std::string&);
template void check_knuth(const knuth<std::complex<double>>&, const std::string&);
template void check_diag_knuth(const knuth<double>&);
template void check_diag_knuth(const knuth<std::complex<double>>&);
