#include <algorithm>
#include <complex>

#include "sparse/arithmetic.h"
#include "sparse/factors.h"
#include "sparse/panel.h"

namespace {

using std::size_t;

template <class V>
auto& at(V& v, int i) {
    return v[static_cast<size_t>(i)];
}

constexpr bool is_real(double) { return true; }
constexpr bool is_real(const complex_value&) { return false; }

// A fill-in begins as minus a product. For real numbers that is -0.0 minus the product in all bits, so the start value
// serves; a complex product cancels within itself, and the first operation is told apart.
template <class T>
constexpr T fill_start = T(0);
template <>
constexpr double fill_start<double> = -0.0;

// Fewest pivots that are worth a chain.
constexpr int m_chain = 4;

template <class T>
int n_upper(const factors<T>& f, int p) {
    return at(f.first, p + 1) - at(f.diag, p) - 1;
}

// End of the pivots from p on whose upper rows reach the same columns behind them.
template <class T>
int end_of_panel(const factors<T>& f, int p) {
    int end = p + 1;
    for (; end < f.n && end - p < m_panel; ++end) {
        const int *u = f.col.data() + at(f.diag, end - 1) + 1, *next = f.col.data() + at(f.diag, end) + 1;
        const int n = n_upper(f, end);
        if (n_upper(f, end - 1) != n + 1 || *u != end || !std::equal(next, next + n, u + 1)) break;
    }
    return end;
}

// Is a panel quicker than its pivots one by one? Real numbers only: a complex fill-in's first value is told apart.
template <class T>
bool is_worth_a_panel(const factors<T>& f, int p, int end) {
    const int width = end - p, n_up = n_upper(f, end - 1);
    return is_real(T{}) && width >= 2 && width * (width + 2 * n_up) >= 48;
}

template <class T>
bool links_next_only(const factors<T>& f, const std::vector<int>& n_lower, int p) {
    if (at(f.first, p + 1) != at(f.diag, p) + 2 || at(f.col, at(f.diag, p) + 1) != p + 1 || at(n_lower, p) != 1)
        return false;
    const int low = at(f.diag, p + 1) - 1;  // the column's only entry is in the next row, behind all others there
    return low >= at(f.first, p + 1) && at(f.col, low) == p;
}

// Tables of pivots that run one by one.
template <class T>
struct step_maker {
    factors<T>& f;
    const std::vector<int>& first_low;  // [n + 1]    lower entries by column
    const std::vector<int>& low;        // [n_lower]  entry
    const std::vector<int>& low_row;    // [n_lower]  its row
    int nnz_m;
    std::vector<unsigned char> begun;        // [n_entry]  1: a fill-in that has its first value
    std::vector<int> targets{};              // of one pivot: [lower entries][upper entries]
    std::vector<int> two{}, one{}, begin{};  // of one row: target and upper entry, by turns

    bool is_first_value(int t) const { return !is_real(T{}) && at(f.source, t) == nnz_m && !at(begun, t); }

    // Gives whether one of them is a first value.
    bool find_targets(int i) {
        bool any_first = false;
        targets.clear();
        for (int q = at(first_low, i); q < at(first_low, i + 1); ++q) {
            int t = at(low, q) + 1;
            for (int j = at(f.diag, i) + 1; j < at(f.first, i + 1); ++j, ++t) {
                while (at(f.col, t) != at(f.col, j)) ++t;
                targets.push_back(t);
                any_first |= is_first_value(t);
            }
        }
        return any_first;
    }

    // How many neighbours, 4, 2 or 1, a row's targets from the j-th on begin with. First values stand alone.
    int width_at(const int* target, int j, int n_up) const {
        int n = 1;
        while (n < 4 && j + n < n_up && target[j + n] == target[j] + n) ++n;
        for (int k = 0; k < n; ++k)
            if (is_first_value(target[j + k])) return 1;
        return n == 3 ? 2 : n;
    }

    void add_runs(const int* target, int n_up) {
        const size_t counts = f.steps.size();
        f.steps.insert(f.steps.end(), {0, 0, 0, 0});
        for (auto* list : {&two, &one, &begin}) list->clear();
        for (int j = 0, width = 0; j < n_up; j += width) {
            width = width_at(target, j, n_up);
            const bool is_first = is_first_value(target[j]);
            std::vector<int>& list = is_first ? begin : width == 1 ? one : width == 2 ? two : f.steps;
            list.insert(list.end(), {target[j], j});
            ++f.steps[counts + (is_first ? 3 : width == 1 ? 2 : width == 2 ? 1 : 0)];
            if (is_first) at(begun, target[j]) = 1;
        }
        for (auto* list : {&two, &one, &begin}) f.steps.insert(f.steps.end(), list->begin(), list->end());
    }

    void add_step(int i) {
        const int n_entry = static_cast<int>(f.col.size()), n_up = at(f.first, i + 1) - at(f.diag, i) - 1;
        const int first_q = at(first_low, i), end_q = at(first_low, i + 1);
        const bool is_long = find_targets(i) || n_up >= m_long;
        f.steps.insert(f.steps.end(), {at(f.diag, i), n_entry + i, is_long ? m_long + n_up : n_up, end_q - first_q});
        const int* target = targets.data();
        for (int q = first_q; q < end_q; ++q, target += n_up) {
            f.steps.insert(f.steps.end(), {at(low, q), n_entry + at(low_row, q)});
            if (is_long)
                add_runs(target, n_up);
            else
                f.steps.insert(f.steps.end(), target, target + n_up);
        }
    }
};

// Table of a panel.
template <class T>
void add_panel(factors<T>& f, int first, int end, const std::vector<int>& first_low, const std::vector<int>& low,
               const std::vector<int>& low_row) {
    const int n_entry = static_cast<int>(f.col.size()), n_up = n_upper(f, end - 1);
    const int *up = f.col.data() + at(f.first, end) - n_up, first_q = at(first_low, end - 1),
              end_q = at(first_low, end);
    if (static_cast<size_t>(n_up) > f.gathered.size()) f.gathered.resize(static_cast<size_t>(n_up));
    f.steps.insert(f.steps.end(), {end_q - first_q, n_up});
    for (int q = first_q; q < end_q; ++q) {  // a row in the last of the columns has them all from its first one on
        const int e = at(low, q), r = at(low_row, q);
        int n = 1;
        while (e - n >= at(f.first, r) && at(f.col, e - n) >= first) ++n;
        f.steps.insert(f.steps.end(), {e - n + 1, n, n_entry + r, -1});
        const size_t place = f.steps.size();
        f.steps.resize(place + static_cast<size_t>(n_up));
        int* target = f.steps.data() + place;
        for (int j = 0, t = e + 1; j < n_up; ++j, ++t) {
            while (at(f.col, t) != up[j]) ++t;
            target[j] = t;
        }
        if (n_up > 0 && target[n_up - 1] - target[0] != n_up - 1) continue;
        f.steps[place - 1] = n_up > 0 ? target[0] : 0;
        f.steps.resize(place);
    }
}

template <class T>
void make_segments(factors<T>& f, int nnz_m) {
    // Lower entries by column.
    std::vector<int> first_low(static_cast<size_t>(f.n) + 1, 0), n_lower(static_cast<size_t>(f.n), 0);
    for (int p = 0; p < f.n; ++p)
        for (int e = at(f.first, p); e < at(f.diag, p); ++e) ++at(n_lower, at(f.col, e));
    for (int i = 0; i < f.n; ++i) at(first_low, i + 1) = at(first_low, i) + at(n_lower, i);
    std::vector<int> low(static_cast<size_t>(first_low.back())), low_row(low.size()), next = first_low;
    for (int p = 0; p < f.n; ++p)
        for (int e = at(f.first, p); e < at(f.diag, p); ++e) {
            const int q = at(next, at(f.col, e))++;
            at(low, q) = e;
            at(low_row, q) = p;
        }
    f.segments.clear();
    f.steps.clear();

    step_maker<T> maker{f, first_low, low, low_row, nnz_m, std::vector<unsigned char>(f.col.size(), 0)};
    int from = 0;  // first row that is in no segment yet
    const auto close = [&](int end) {
        if (from == end) return;
        segment s{segment::steps, from, end, f.steps.size(), 0};
        for (int i = from; i < end; ++i) maker.add_step(i);
        s.to_step = f.steps.size();
        f.segments.push_back(s);
        from = end;
    };
    for (int p = 0; p < f.n;) {
        int end = p;
        while (end < f.n - 1 && links_next_only(f, n_lower, end) &&
               (is_real(T{}) || at(f.source, at(f.diag, end + 1)) < nnz_m))
            ++end;
        if (end - p >= m_chain) {
            close(p);
            f.segments.push_back({segment::chain, p, end, 0, 0});
            from = p = end;
            continue;
        }
        end = end_of_panel(f, p);
        if (is_worth_a_panel(f, p, end)) {
            close(p);
            const size_t from_step = f.steps.size();
            add_panel(f, p, end, first_low, low, low_row);
            f.segments.push_back({segment::panel, p, end, from_step, f.steps.size()});
            from = end;
        }
        p = end;
    }
    close(f.n);
}

}  // namespace

template <class T>
void make_factors(factors<T>& f, int n, const std::vector<int>& row_w, const std::vector<int>& col_w, int nnz_m,
                  const std::vector<T>& val_w, const T* val_m) {
    const size_t n_entry = row_w.size();
    f.n = n;
    f.standing = false;
    // Slots by column, then by row: ascending columns within each row.
    std::vector<int> start(static_cast<size_t>(n) + 1, 0), by_col(n_entry), by_row(n_entry);
    for (const int c : col_w) ++at(start, c + 1);
    for (int i = 0; i < n; ++i) at(start, i + 1) += at(start, i);
    for (size_t k = 0; k < n_entry; ++k) at(by_col, at(start, col_w[k])++) = static_cast<int>(k);
    f.first.assign(static_cast<size_t>(n) + 1, 0);
    for (const int r : row_w) ++at(f.first, r + 1);
    for (int i = 0; i < n; ++i) at(f.first, i + 1) += at(f.first, i);
    start.assign(f.first.begin(), f.first.end());
    for (const int k : by_col) at(by_row, at(start, at(row_w, k))++) = k;

    f.diag.assign(static_cast<size_t>(n), -1);
    f.col.resize(n_entry);
    f.source.resize(n_entry);
    f.w.assign(n_entry + static_cast<size_t>(n), T(0));
    for (size_t e = 0; e < n_entry; ++e) {
        const int k = by_row[e];
        f.col[e] = at(col_w, k);
        f.source[e] = std::min(k, nnz_m);
        f.w[e] = at(val_w, k);
        if (at(row_w, k) == f.col[e]) at(f.diag, f.col[e]) = static_cast<int>(e);
    }
    f.given.assign(val_m, val_m + nnz_m);
    f.given.push_back(fill_start<T>);

    make_segments(f, nnz_m);
}

#define INSTANTIATE(T)                                                                                  \
    template void make_factors(factors<T>&, int, const std::vector<int>&, const std::vector<int>&, int, \
                               const std::vector<T>&, const T*);
INSTANTIATE(double)
INSTANTIATE(complex_value)
