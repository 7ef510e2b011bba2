// panel.h -- the replay of neighbouring pivots whose upper rows reach the same columns, several at a time.
// Of a row behind them all targets are read once, lose all its pivots in ascending order, and are written once.
#pragma once
#include <cstddef>

#include "sparse/factors.h"

// Two neighbouring values at once.
typedef double pair_of_doubles __attribute__((vector_size(16), aligned(8)));

constexpr int m_panel = 32;  // pivots of a panel at most

// The pivots that a row has in a panel: q of them, the last ones before some column.
//   l   [q]  the row's lower entries, contiguous
//   u   [q]  by pivot: its upper row, so that u[k][c] is the entry in column c; columns behind the panel are counted on
//            from its end
struct panel_pivots {
    int q;
    double* l;
    const double* const* u;
};

// Targets in columns c .. c + n_pair * 2 - 1, which stay in registers: the short loops are unrolled.
template <int n_pair>
inline void subtract_chunk(const panel_pivots& p, std::ptrdiff_t c, double* x) {
    pair_of_doubles t[n_pair], *to = reinterpret_cast<pair_of_doubles*>(x);
#pragma GCC unroll 8
    for (int j = 0; j < n_pair; ++j) t[j] = to[j];
    for (int k = 0; k < p.q; ++k) {
        const pair_of_doubles l = {p.l[k], p.l[k]}, *u = reinterpret_cast<const pair_of_doubles*>(p.u[k] + c);
#pragma GCC unroll 8
        for (int j = 0; j < n_pair; ++j) t[j] = t[j] - l * u[j];
    }
#pragma GCC unroll 8
    for (int j = 0; j < n_pair; ++j) to[j] = t[j];
}

// n targets from column c on.
inline void subtract_panel(const panel_pivots& p, std::ptrdiff_t c, int n, double* x) {
    for (; n >= 8; n -= 8, c += 8, x += 8) subtract_chunk<4>(p, c, x);
    if (n & 4) subtract_chunk<2>(p, c, x), c += 4, x += 4;
    if (n & 2) subtract_chunk<1>(p, c, x), c += 2, x += 2;
    if (n & 1) {
        double t = *x;
        for (int k = 0; k < p.q; ++k) t = t - p.l[k] * p.u[k][c];
        *x = t;
    }
}

// The row's lower entries themselves, each final before the next needs it, and its right-hand side. y: those of the
// pivots, the first of which is in column c.
inline void subtract_lower(const panel_pivots& p, std::ptrdiff_t c, const double* y, double& rhs) {
    for (int k = 0; k < p.q; ++k) {
        const double l = p.l[k], *u = p.u[k] + c;
        for (int j = k + 1; j < p.q; ++j) p.l[j] = p.l[j] - l * u[j];
        rhs = rhs - l * y[k];
    }
}
