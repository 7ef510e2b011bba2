// systems.h -- seeded random systems as circuits make them, and the plain solver to hold the fast one against.
#pragma once
#include <cstring>
#include <random>
#include <vector>

#include "base/halt.h"
#include "halt_throws.h"
#include "sparse/arithmetic.h"
#include "sparse/elimination.h"
#include "sparse/literal.h"
#include "sparse/pattern.h"

template <class T>
struct test_system {
    knuth<T> m;
    std::vector<T> val, rhs;
};

// What the values of a system are drawn from.
enum class value_kind {
    plain,
    scaled,
    small_integers,
    near_ties,
    at_the_limit,
    with_zeros,
    with_nan,
    singular,
    n_kinds
};

inline double random_part(value_kind kind, std::mt19937& rng) {
    const auto pick = [&](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
    const double u = std::uniform_real_distribution<double>(-1, 1)(rng);
    switch (kind) {
        case value_kind::scaled:
            return u * std::pow(10.0, pick(13) - 6);
        case value_kind::small_integers: {
            constexpr double v[] = {-2, -1, 1, 2, 1, -1};
            return v[pick(6)];
        }
        case value_kind::near_ties: {
            constexpr double v[] = {1, 4, -0.25, 0.25, 0.24999999999999997, 0.25000000000000006, 16};
            return v[pick(7)];
        }
        case value_kind::at_the_limit: {
            constexpr double v[] = {1e-40, 1.0000001e-40, 0.9999999e-40, 1e-41, 4e-40, 2.5e-41, 1, 1e-20, 1e-39};
            return pick(3) ? u : v[pick(9)];
        }
        case value_kind::with_zeros:
            return pick(8) ? u : (pick(2) ? 0.0 : -0.0);
        case value_kind::with_nan:
            return pick(60)
                       ? u
                       : (pick(3) ? std::numeric_limits<double>::quiet_NaN() : std::numeric_limits<double>::infinity());
        default:
            return u;
    }
}
inline void draw(double& x, value_kind kind, std::mt19937& rng) { x = random_part(kind, rng); }
inline void draw(complex_value& x, value_kind kind, std::mt19937& rng) {
    const unsigned form = rng() % 4;  // real, imaginary, both
    x = {form == 1 ? 0.0 : random_part(kind, rng), form == 0 ? 0.0 : random_part(kind, rng)};
}

template <class T>
std::vector<T> random_values(const knuth<T>& m, value_kind kind, std::mt19937& rng) {
    std::vector<T> val(m.row.size());
    for (T& x : val) draw(x, kind, rng);
    if (kind == value_kind::singular && m.n_row > 1) {  // a row of zeros, or two rows that may end up equal
        const int r = static_cast<int>(rng() % static_cast<unsigned>(m.n_row));
        for (std::size_t k = 0; k < val.size(); ++k)
            if (m.row[k] == r) val[k] = T(rng() % 2 ? 0.0 : 1e-41);
    }
    return val;
}

// Branches between nodes, a few nodes with many branches, rows of voltage sources without a diagonal entry; slots in
// any order. Small ones, and some of the others, may lack diagonal entries or whole rows and so be singular.
template <class T>
test_system<T> random_circuit(int n, value_kind kind, std::mt19937& rng) {
    std::vector<std::pair<int, int>> places;
    const auto pick = [&](int m) { return static_cast<int>(rng() % static_cast<unsigned>(m)); };
    const int n_source = n > 2 ? pick(n / 3 + 1) : 0, n_node = n - n_source;
    const bool sound = n > 20 && pick(8), one_missing = !sound && n > 3 && pick(20) == 0;
    for (int i = 0; i < n_node; ++i)
        if (sound || pick(15)) places.emplace_back(i, i);
    for (int b = 0, n_branch = n_node + pick(n_node + 1); b < n_branch; ++b) {
        const int hub = pick(6) ? pick(n_node) : pick(std::min(n_node, 3));
        const int i = pick(3) ? std::min(b % n_node + 1, n_node - 1) : hub, j = pick(3) ? b % n_node : pick(n_node);
        places.emplace_back(i, j);
        if (pick(10)) places.emplace_back(j, i);
    }
    for (int s = n_node; s < n; ++s) {
        const int i = sound || pick(4) ? (s - n_node) % n_node : pick(n_node);
        places.emplace_back(s, i);
        places.emplace_back(i, s);
        if (pick(3) == 0) places.emplace_back(s, pick(n_node));
        if (pick(4) == 0) places.emplace_back(pick(n_node), s);
    }
    std::shuffle(places.begin(), places.end(), rng);
    std::vector<int> label(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) label[static_cast<std::size_t>(i)] = i;
    std::shuffle(label.begin(), label.end(), rng);
    pattern_builder pattern;
    for (const auto& [i, j] : places)
        if (!one_missing || i != 0) pattern.add(label[static_cast<std::size_t>(i)], label[static_cast<std::size_t>(j)]);
    test_system<T> s;
    s.m = pattern.finish<T>(n, n);
    s.val = random_values(s.m, kind, rng);
    s.rhs.resize(static_cast<std::size_t>(n));
    for (T& x : s.rhs) draw(x, value_kind::with_zeros, rng);
    return s;
}

// Nodes in a row, a source at one end; in natural order, so that each pivot leads to the next.
template <class T>
test_system<T> random_ladder(int n, std::mt19937& rng) {
    pattern_builder pattern;
    for (int i = 0; i < n - 1; ++i) {
        pattern.add(i, i);
        if (i > 0) pattern.add(i, i - 1), pattern.add(i - 1, i);
    }
    pattern.add(n - 1, 0);
    pattern.add(0, n - 1);
    test_system<T> s;
    s.m = pattern.finish<T>(n, n);
    s.val = random_values(s.m, value_kind::plain, rng);
    s.rhs.resize(static_cast<std::size_t>(n));
    for (T& x : s.rhs) draw(x, value_kind::plain, rng);
    return s;
}

// A dense system, or one from rows of numbers.
template <class T>
test_system<T> dense_system(int n, std::mt19937& rng) {
    pattern_builder pattern;
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) pattern.add(i, j);
    test_system<T> s;
    s.m = pattern.finish<T>(n, n);
    s.val = random_values(s.m, value_kind::plain, rng);
    s.rhs.assign(static_cast<std::size_t>(n), T(1));
    return s;
}
template <class T = double>
test_system<T> system_of(const std::vector<std::vector<T>>& a, std::vector<T> rhs = {}) {
    test_system<T> s;
    knuth_zero(s.m, static_cast<int>(a.size()), static_cast<int>(a.size()));
    for (std::size_t i = 0; i < a.size(); ++i)
        for (std::size_t j = 0; j < a.size(); ++j)
            if (a[i][j] != T(0)) knuth_addentry(s.m, static_cast<int>(i), static_cast<int>(j), a[i][j]);
    s.val = s.m.val;
    s.rhs = rhs.empty() ? std::vector<T>(a.size(), T(1)) : std::move(rhs);
    return s;
}

// solve_jac on the plain elimination alone.
template <class T>
void plain_solve_jac(elimination<T>& e, const test_system<T>& s, int l_rhs, int mode_1, int l_replay, int mode_2) {
    const int nnz = s.m.nnz();
    const auto order = [&](pivot_rule rule) { literal_gauss(e, s.m, s.val.data(), rule); };
    if (l_rhs == 1) e.rhs_w = s.rhs;
    if (mode_1 == 1) say(line(e.names.gauss_1, " starting..."));
    if (mode_1 == 1) order(pivot_rule::by_counts);
    if (mode_1 == 2) order(pivot_rule::by_values);
    if (l_replay != 1 || literal_gauss_2(e, nnz, s.val.data(), mode_2, false) == 0) return;
    say(line(e.names.solve_jac, ": ", e.names.failed));
    say("  Calling gauss_1a (to reorder)...");
    order(pivot_rule::by_values);
    e.rhs_w = s.rhs;
    if (literal_gauss_2(e, nnz, s.val.data(), mode_2, false) == 0) return;
    halt({line(e.names.solve_jac, ": ", e.names.failed_again), "  (even after reordering)", "  Halting..."});
}
template <class T>
void fast_solve_jac(elimination<T>& e, const test_system<T>& s, int l_rhs, int mode_1, int l_replay, int mode_2) {
    solve_jac(e, s.m, s.val.data(), s.rhs.data(), l_rhs, mode_1 != 0 ? 1 : 0, mode_1, l_replay, mode_2);
}

// All bits equal; two NaNs are equal whatever their bits.
inline bool same_bits(double a, double b) {
    return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}
inline bool same_bits(const complex_value& a, const complex_value& b) {
    return same_bits(a.real(), b.real()) && same_bits(a.imag(), b.imag());
}
template <class T>
bool same_bits(const std::vector<T>& a, const std::vector<T>& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (!same_bits(a[i], b[i])) return false;
    return true;
}

// The same call on both solvers: same text, same stop, same order, same solution.
template <class T>
::testing::AssertionResult same_call(elimination<T>& fast, elimination<T>& plain, const test_system<T>& s, int l_rhs,
                                     int mode_1, int l_replay, int mode_2, bool& stopped) {
    const console_run a = run_and_listen([&] { fast_solve_jac(fast, s, l_rhs, mode_1, l_replay, mode_2); });
    const console_run b = run_and_listen([&] { plain_solve_jac(plain, s, l_rhs, mode_1, l_replay, mode_2); });
    stopped = a.stopped;
    if (a.text != b.text || a.stopped != b.stopped)
        return ::testing::AssertionFailure() << "console: " << a.text << "-- plain: " << b.text;
    if (stopped) return ::testing::AssertionSuccess();
    if (fast.row_perm != plain.row_perm || fast.col_perm != plain.col_perm)
        return ::testing::AssertionFailure() << "order differs";
    if (fast.mat_rowexch != plain.mat_rowexch || fast.mat_pp != plain.mat_pp)
        return ::testing::AssertionFailure() << "steps differ";
    if (fast.row_w != plain.row_w || fast.col_w != plain.col_w)
        return ::testing::AssertionFailure() << "fill-in differs";
    if (fast.n_matttlop1 != plain.n_matttlop1 || fast.n_matttlop2 != plain.n_matttlop2 ||
        fast.n_matttlop3 != plain.n_matttlop3)
        return ::testing::AssertionFailure() << "counts differ";
    if (l_replay == 1 && mode_2 != 1 && !same_bits(fast.sol_w, plain.sol_w))
        return ::testing::AssertionFailure() << "solution differs";
    return ::testing::AssertionSuccess();
}
