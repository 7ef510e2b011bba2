#include "sparse/filled_part.h"

#include <bit>
#include <cstdint>

#include "base/signals.h"
#include "sparse/panel.h"
#include "sparse/stops.h"

namespace {

using std::size_t;
using bits = std::uint64_t;

// Of a row that has lost its products.
struct row_sizes {
    int count;
    double largest;
};

// x[0 .. n) loses l times u, and what is then above 1e-40 is counted. l is finite, n even.
row_sizes lose_product(int n, double l, const double* u, double* x) {
    typedef long long pair_of_masks __attribute__((vector_size(16)));
    constexpr pair_of_masks magnitude_bits = {0x7fffffffffffffff, 0x7fffffffffffffff};
    constexpr pair_of_doubles tiny = {tiny_value, tiny_value};
    const pair_of_doubles factor = {l, l};
    pair_of_masks count = {0, 0};
    pair_of_doubles largest = {0, 0};
    for (int j = 0; j < n; j += 2) {
        pair_of_doubles& t = *reinterpret_cast<pair_of_doubles*>(x + j);
        t = t - *reinterpret_cast<const pair_of_doubles*>(u + j) * factor;
        const pair_of_doubles size = (pair_of_doubles)((pair_of_masks)t & magnitude_bits);
        count -= size > tiny;
        largest = size > largest ? size : largest;
    }
    return {static_cast<int>(count[0] + count[1]), counted(std::max(largest[0], largest[1]))};
}

// Rows and columns by place, the working position less that of the first; a row keeps where its values stand.
struct filled_part {
    elimination<double>& e;
    active_matrix<double>& a;
    std::vector<double>& val_w;
    std::string_view routine;
    int first, m, stride, n_word;
    std::vector<double> val;              // [m][stride]  -0.0 where there is no entry
    std::vector<int> slot;                // [m][stride]
    std::vector<bits> present, counted_;  // [m][n_word]  by place of the column: is there an entry, is it above 1e-40
    std::vector<int> row_of;              // [m] by place: where the row stands in these
    std::vector<int> place_of;            // [m] the inverse
    std::vector<int> nnz_row;             // [m] by row
    std::vector<double> max_row;          // [m] by row
    std::vector<int> looked;              // [m] by row: the step in which its best was found, or -1
    std::vector<long long> key;           // [m] by place: at most the count of the row's best
    std::vector<int> nnz_col;             // [m]
    std::vector<int> witness;             // [m] by column: a row with a large value, or -1
    // The pivot row; where it has no entry a zero, which times a factor of the one or of the other sign is 0.0.
    std::vector<double> upper_plus, upper_minus;  // [stride]
    std::vector<bits> piv_cols;                   // [n_word]
    int n_piv = 0;

    filled_part(elimination<double>& given_e, active_matrix<double>& given_a, std::vector<double>& given_val,
                std::string_view given_routine, int i);
    double* row(int r) { return val.data() + static_cast<size_t>(r) * static_cast<size_t>(stride); }
    int* slots(int r) { return slot.data() + static_cast<size_t>(r) * static_cast<size_t>(stride); }
    bits* present_in(int r) { return present.data() + static_cast<size_t>(r) * static_cast<size_t>(n_word); }
    bits* counted_in(int r) { return counted_.data() + static_cast<size_t>(r) * static_cast<size_t>(n_word); }
    static bool has(const bits* b, int j) { return b[j / 64] >> (j % 64) & 1; }

    bool acceptable_in_column(int p, int c, double size);
    int find_best(int p, int place);
    void exchange(int p, int place, int c);
    void take_pivot_row(int p);
    void fill_row(int r);
    void recount(int p, int r, int count);
    void eliminate_row(int p, int r);
    void renew_keys(int p);
    void step(int p);
};

filled_part::filled_part(elimination<double>& given_e, active_matrix<double>& given_a, std::vector<double>& given_val,
                         std::string_view given_routine, int i)
    : e(given_e), a(given_a), val_w(given_val), routine(given_routine), first(i), m(a.n - i) {
    const size_t size = static_cast<size_t>(m);
    stride = m + m % 2;
    n_word = (m + 63) / 64;
    val.assign(size * static_cast<size_t>(stride), -0.0);
    slot.assign(val.size(), -1);
    present.assign(size * static_cast<size_t>(n_word), 0);
    counted_ = present;
    row_of.resize(size);
    nnz_row.resize(size);
    nnz_col.resize(size);
    max_row.resize(size);
    key.resize(size);
    looked.assign(size, -1);
    witness.assign(size, -1);
    upper_plus.resize(static_cast<size_t>(stride));
    upper_minus = upper_plus;
    piv_cols.resize(static_cast<size_t>(n_word));
    for (int r = 0; r < m; ++r) {
        const int system_row = at(a.row_at, first + r);
        at(row_of, r) = r;
        at(nnz_row, r) = at(a.nnz_row, system_row);
        at(max_row, r) = at(a.valmax_row, system_row);
        at(key, r) = at(a.key, system_row);
        at(nnz_col, r) = at(a.nnz_col, at(a.col_at, first + r));
        for (const active_entry<double>*x = a.row.begin(system_row), *end = a.row.end(system_row); x != end; ++x) {
            const int c = at(a.col_place, x->col) - first;
            row(r)[c] = x->val;
            slots(r)[c] = x->slot;
            present_in(r)[c / 64] |= bits{1} << (c % 64);
            counted_in(r)[c / 64] |= static_cast<bits>(x->size() > tiny_value) << (c % 64);
        }
    }
    place_of = row_of;
}

// A row that is known to have a large value refuses most at once; else the largest is searched for.
bool filled_part::acceptable_in_column(int p, int c, double size) {
    int& known = at(witness, c);
    if (known != -1 && at(place_of, known) >= p && !(size >= pivot_threshold * counted(std::fabs(row(known)[c]))))
        return false;
    double largest = 0;
    for (int place = p; place < m; ++place) {
        const int r = at(row_of, place);
        const double x = counted(std::fabs(row(r)[c]));
        if (x > largest) largest = x, known = r;
    }
    return size >= pivot_threshold * largest;
}

// Place of the column of the row's best candidate, and its true key.
int filled_part::find_best(int p, int place) {
    const int r = at(row_of, place);
    const double *x = row(r), enough = pivot_threshold * at(max_row, r);
    const bits* entries = present_in(r);
    const bool alone = at(nnz_row, r) <= 1;  // all counts are 0
    int best = -1, best_n = std::numeric_limits<int>::max();
    for (int c = p; c < m; ++c) {
        const int count = alone ? 1 : at(nnz_col, c);
        if (count >= best_n || !has(entries, c)) continue;
        const double size = std::fabs(x[c]);
        if (!(size >= enough) && !acceptable_in_column(p, c, size)) continue;
        best = c;
        best_n = count;
    }
    at(looked, r) = p;
    at(key, place) = static_cast<long long>(at(nnz_row, r) - 1) * (best_n - 1);
    return best;
}

void swap_bits(bits* b, int i, int j) {
    const bits differ = (b[i / 64] >> (i % 64) ^ b[j / 64] >> (j % 64)) & 1;
    b[i / 64] ^= differ << (i % 64);
    b[j / 64] ^= differ << (j % 64);
}

// Brings the row at a place and column c to place p.
void filled_part::exchange(int p, int place, int c) {
    if (place != p) {
        std::swap(at(row_of, p), at(row_of, place));
        at(place_of, at(row_of, p)) = p;
        at(place_of, at(row_of, place)) = place;
        at(key, place) = at(key, p);
        std::swap(at(a.row_at, first + p), at(a.row_at, first + place));
        at(a.row_place, at(a.row_at, first + p)) = first + p;
        at(a.row_place, at(a.row_at, first + place)) = first + place;
    }
    if (c == p) return;
    for (int q = p; q < m; ++q) {
        const int r = at(row_of, q);
        std::swap(row(r)[p], row(r)[c]);
        std::swap(slots(r)[p], slots(r)[c]);
        swap_bits(present_in(r), p, c);
        swap_bits(counted_in(r), p, c);
    }
    std::swap(at(nnz_col, p), at(nnz_col, c));
    std::swap(at(witness, p), at(witness, c));
    std::swap(at(a.col_at, first + p), at(a.col_at, first + c));
    at(a.col_place, at(a.col_at, first + p)) = first + p;
    at(a.col_place, at(a.col_at, first + c)) = first + c;
}

void filled_part::take_pivot_row(int p) {
    const int r = at(row_of, p), *slot_of = slots(r);
    const double *x = row(r), val_piv = x[p], val_pivinv = quotient(1.0, val_piv);
    at(e.mat_pp, first + p) = slot_of[p];
    if (magnitude(val_piv) < e.gauss_epsln) halt_small_pivot(e.names, val_piv);
    at(val_w, slot_of[p]) = val_piv;
    n_piv = 0;
    std::fill(piv_cols.begin(), piv_cols.end(), bits{0});
    for (int c = p + 1; c < m; ++c) {
        if (!has(present_in(r), c)) {
            at(upper_plus, c) = 0.0;
            at(upper_minus, c) = -0.0;
            continue;
        }
        ++n_piv;
        at(piv_cols, c / 64) |= bits{1} << (c % 64);
        at(nnz_col, c) -= has(counted_in(r), c);
        at(val_w, slot_of[c]) = at(upper_plus, c) = at(upper_minus, c) = product(x[c], val_pivinv);
    }
    const int limit = e.limits.m_matttlop1;
    if (n_piv > limit - e.n_matttlop1) halt_storage(e.names, routine, "n_matttlop1", "m_matttlop1", limit + 1LL, limit);
    e.n_matttlop1 += n_piv;
}

// Slots of new entries; where the room of operations ends among them, the first to find none speaks.
void filled_part::fill_row(int r) {
    const int m_2 = e.limits.m_matttlop2, room_2 = m_2 - e.n_matttlop2;
    const bool all = n_piv > room_2;
    for (int word = 0, t = 0; word < n_word; ++word) {
        bits& entries = present_in(r)[word];
        for (bits left = all ? at(piv_cols, word) : at(piv_cols, word) & ~entries; left != 0; left &= left - 1, ++t) {
            const int c = word * 64 + std::countr_zero(left);
            if (!has(present_in(r), c)) {
                check_storage(e.names, routine, "nnz_w", "mnz_w", static_cast<long long>(a.slot_row.size()) + 1,
                              e.limits.mnz_w);
                slots(r)[c] = static_cast<int>(a.slot_row.size());
                a.slot_row.push_back(at(a.row_at, first + at(place_of, r)));
                a.slot_col.push_back(at(a.col_at, first + c));
            }
            if (all && t >= room_2) halt_storage(e.names, routine, "n_matttlop2", "m_matttlop2", m_2 + 1LL, m_2);
        }
        entries |= at(piv_cols, word);
    }
    e.n_matttlop2 += n_piv;
}

// By place: is the value above 1e-40? Without a jump, n up to 64.
bits above_tiny(const double* x, int n) {
    bits above = 0;
    for (int b = 0; b < n; ++b) above |= static_cast<bits>(std::fabs(x[b]) > tiny_value) << b;
    return above;
}

// Counts of the columns behind p follow what the row has become; count: of its values above 1e-40 behind p.
void filled_part::recount(int p, int r, int count) {
    bits *entries = present_in(r), *old = counted_in(r);
    const auto behind = [&](int word) {
        return word > (p + 1) / 64 ? ~bits{0} : word < (p + 1) / 64 ? bits{0} : ~bits{0} << ((p + 1) % 64);
    };
    int n_present = 0;
    for (int word = 0; word < n_word; ++word) n_present += std::popcount(entries[word] & behind(word));
    for (int word = (p + 1) / 64; word < n_word; ++word) {
        bits now = entries[word] & behind(word);
        if (count != n_present) now &= above_tiny(row(r) + word * 64, std::min(64, m - word * 64));
        for (bits left = now ^ (old[word] & behind(word)); left != 0; left &= left - 1) {
            const int b = std::countr_zero(left);
            at(nnz_col, word * 64 + b) += now >> b & 1 ? 1 : -1;
        }
        old[word] = now;
    }
    at(nnz_row, r) = count;
}

void filled_part::eliminate_row(int p, int r) {
    double *x = row(r), l = x[p];
    at(val_w, slots(r)[p]) = l;
    fill_row(r);
    const std::vector<double>& upper = std::signbit(l) ? upper_minus : upper_plus;
    row_sizes sizes{0, 0};
    int c = p + 1;
    const auto lose_one = [&] {
        if (has(piv_cols.data(), c)) x[c] = x[c] - product(at(upper, c), l);
        sizes.count += std::fabs(x[c]) > tiny_value;
        sizes.largest = std::max(sizes.largest, counted(std::fabs(x[c])));
    };
    if (std::isfinite(l)) {
        if (c % 2 == 1 && c < m) lose_one(), ++c;
        const row_sizes rest = lose_product(stride - c, l, upper.data() + c, x + c);
        sizes = {sizes.count + rest.count, std::max(sizes.largest, rest.largest)};
    } else {
        for (; c < m; ++c) lose_one();
    }
    at(max_row, r) = sizes.largest;
    recount(p, r, sizes.count);
}

// A row that has changed may have any best; in others candidates may have become better in the pivot row's columns.
void filled_part::renew_keys(int p) {
    int least = m, least_touched = m;
    for (int c = p + 1; c < m; ++c) {
        least = std::min(least, at(nnz_col, c));
        if (has(piv_cols.data(), c)) least_touched = std::min(least_touched, at(nnz_col, c));
    }
    const auto key_of = [](int n_row, int n_col) {
        return static_cast<long long>(std::max(n_row, 1) - 1) * (std::max(n_col, 1) - 1);
    };
    for (int place = p + 1; place < m; ++place) {
        const int r = at(row_of, place), n = at(nnz_row, r);
        at(key, place) = has(present_in(r), p) ? key_of(n, least) : std::min(at(key, place), key_of(n, least_touched));
    }
}

void filled_part::step(int p) {
    for (int place = p; place < m; ++place) {
        if (at(nnz_row, at(row_of, place)) == 0) halt_singular(e.names, true, first + place);
        if (at(nnz_col, place) == 0) halt_singular(e.names, false, first + place);
    }
    int place, c;
    do {
        place = static_cast<int>(std::min_element(key.begin() + p, key.end()) - key.begin());
        const bool known = at(looked, at(row_of, place)) == p;
        c = find_best(p, place);
        if (known) break;
    } while (true);
    at(e.mat_rowexch, first + p) = first + place;
    at(e.mat_colexch, first + p) = first + c;
    exchange(p, place, c);
    take_pivot_row(p);
    for (int q = p + 1; q < m; ++q)
        if (has(present_in(at(row_of, q)), p)) eliminate_row(p, at(row_of, q));
    val_w.resize(a.slot_row.size());
    renew_keys(p);
}

}  // namespace

void order_filled_part(elimination<double>& e, active_matrix<double>& a, std::vector<double>& val_w,
                       std::string_view routine, int i) {
    filled_part part(e, a, val_w, routine, i);
    for (int p = 0; p < part.m - 1; ++p) {
        heed_signals();
        part.step(p);
    }
    const int r = part.row_of.back(), last = part.m - 1;
    if (filled_part::has(part.present_in(r), last)) at(val_w, part.slots(r)[last]) = part.row(r)[last];
}
