// The fast elimination and replay against the plain ones, bit by bit, on seeded random systems.
#include "systems.h"

namespace {

// Seen in the trials, so that the families are known to reach what they are for.
struct tally {
    int n_solved = 0, n_stopped = 0, n_reordered = 0, n_panel = 0;
};

template <class T>
void run_trials(int first_seed, int n_trial, int m_size, value_kind kind, tally& seen) {
    for (int trial = 0; trial < n_trial; ++trial) {
        std::mt19937 rng(static_cast<unsigned>(first_seed + trial));
        const int n = 1 + static_cast<int>(rng() % static_cast<unsigned>(m_size));
        test_system<T> s = random_circuit<T>(n, kind, rng);
        elimination<T> fast, plain;
        if (rng() % 4 == 0) fast.names = plain.names = explicit_names;
        if (rng() % 3 == 0) fast.gauss_epsln = plain.gauss_epsln = 1e-6;
        if (rng() % 3 == 0) fast.zero_piv = plain.zero_piv = 1e-3;
        const std::string where = line("seed ", first_seed + trial, ", n ", n, ", kind ", static_cast<int>(kind));
        bool stopped = false;
        ASSERT_TRUE(same_call(fast, plain, s, 0, 2, 0, 0, stopped)) << where;
        if (stopped) {
            ++seen.n_stopped;
            continue;
        }
        // Right-hand side only, on the factors that the order left.
        ASSERT_TRUE(same_call(fast, plain, s, 1, 0, 1, 2, stopped)) << where;
        for (int round = 0; round < 4 && !stopped; ++round) {
            const std::vector<int> before = fast.row_perm;
            ASSERT_TRUE(same_call(fast, plain, s, 1, 0, 1, 3, stopped)) << where << ", round " << round;
            if (before != fast.row_perm) ++seen.n_reordered;
            if (stopped) break;
            ++seen.n_solved;
            for (const segment& part : fast.compact.segments) seen.n_panel += part.how == segment::panel;
            ASSERT_TRUE(same_call(fast, plain, s, 1, 0, 1, 2, stopped)) << where << ", round " << round;
            ASSERT_TRUE(same_call(fast, plain, s, 1, 0, 1, 3, stopped)) << where << ", again, round " << round;
            const std::vector<T> old = s.val;
            s.val = random_values(s.m, rng() % 4 ? value_kind::plain : kind, rng);
            if (rng() % 2)  // only some of the values change
                for (std::size_t k = 0; k < old.size(); ++k)
                    if (rng() % 8) s.val[k] = old[k];
            if (round == 2)  // a pivot of the present order is gone
                for (const int k : {plain.mat_pp[static_cast<std::size_t>(rng() % static_cast<unsigned>(n))]})
                    if (k < s.m.nnz()) s.val[static_cast<std::size_t>(k)] = T(0);
        }
        seen.n_stopped += stopped;
    }
}

template <class T>
void run_all_kinds(int n_trial, int m_size, tally& seen) {
    for (int k = 0; k < static_cast<int>(value_kind::n_kinds); ++k)
        run_trials<T>(100000 * k + m_size, n_trial, m_size, static_cast<value_kind>(k), seen);
}

}  // namespace

TEST(plain_against_fast, tiny_real_systems_agree_to_the_bit) {
    tally seen;
    run_all_kinds<double>(2500, 8, seen);
    EXPECT_GT(seen.n_solved, 1000);
    EXPECT_GT(seen.n_stopped, 100);
    EXPECT_GT(seen.n_reordered, 50);
}

TEST(plain_against_fast, tiny_complex_systems_agree_to_the_bit) {
    tally seen;
    run_all_kinds<complex_value>(1500, 8, seen);
    EXPECT_GT(seen.n_solved, 1000);
    EXPECT_GT(seen.n_stopped, 100);
    EXPECT_GT(seen.n_reordered, 50);
}

TEST(plain_against_fast, circuit_sized_real_systems_agree_to_the_bit) {
    tally seen;
    run_all_kinds<double>(400, 50, seen);
    EXPECT_GT(seen.n_solved, 2000);
    EXPECT_GT(seen.n_panel, 200);
}

TEST(plain_against_fast, circuit_sized_complex_systems_agree_to_the_bit) {
    tally seen;
    run_all_kinds<complex_value>(250, 50, seen);
    EXPECT_GT(seen.n_solved, 1000);
}

TEST(plain_against_fast, large_systems_agree_to_the_bit) {
    tally seen;
    run_all_kinds<double>(60, 300, seen);
    run_all_kinds<complex_value>(25, 200, seen);
    EXPECT_GT(seen.n_solved, 200);
    EXPECT_GT(seen.n_panel, 100);
}

template <class T>
void ladders_agree() {
    int n_chain = 0;
    for (int trial = 0; trial < 200; ++trial) {
        std::mt19937 rng(static_cast<unsigned>(trial));
        test_system<T> s = random_ladder<T>(3 + trial % 40, rng);
        elimination<T> fast, plain;
        bool stopped = false;
        ASSERT_TRUE(same_call(fast, plain, s, 0, 2, 0, 0, stopped)) << trial;
        for (const segment& part : fast.compact.segments) n_chain += part.how == segment::chain;
        for (int round = 0; round < 4 && !stopped; ++round) {
            ASSERT_TRUE(same_call(fast, plain, s, 1, 0, 1, round % 2 ? 3 : 2, stopped)) << trial;
            s.val = random_values(s.m, value_kind::plain, rng);
            if (round == 2) s.val[rng() % s.val.size()] = T(0);
        }
    }
    EXPECT_GT(n_chain, 100);
}

TEST(plain_against_fast, ladders_agree_to_the_bit) {
    ladders_agree<double>();
    ladders_agree<complex_value>();
}

TEST(plain_against_fast, order_by_counts_is_the_same) {
    int n_ordered = 0;
    for (int trial = 0; trial < 600; ++trial) {
        std::mt19937 rng(static_cast<unsigned>(trial));
        const int n = 1 + static_cast<int>(rng() % 40);
        const test_system<double> s = random_circuit<double>(n, value_kind::plain, rng);
        elimination<double> fast, plain;
        bool stopped = false;
        ASSERT_TRUE(same_call(fast, plain, s, 0, 1, 0, 0, stopped)) << trial;
        if (stopped) continue;
        ++n_ordered;
        ASSERT_TRUE(same_call(fast, plain, s, 1, 0, 1, 3, stopped)) << trial;
    }
    EXPECT_GT(n_ordered, 300);
}

TEST(plain_against_fast, limits_stop_at_the_same_count_with_the_same_text) {
    int n_stopped = 0;
    for (int trial = 0; trial < 1500; ++trial) {
        std::mt19937 rng(static_cast<unsigned>(trial));
        const int n = 2 + static_cast<int>(rng() % 12);
        const test_system<double> s = random_circuit<double>(n, value_kind::plain, rng);
        elimination<double> fast, plain;
        bool stopped = false;
        same_call(fast, plain, s, 0, 2, 0, 0, stopped);
        if (stopped) continue;
        const auto below = [&](int count) { return std::max(0, count - 3 + static_cast<int>(rng() % 4)); };
        elimination_limits limits;
        if (rng() % 2) limits.mnz_w = below(static_cast<int>(plain.row_w.size()));
        if (rng() % 2) limits.m_matttlop1 = below(plain.n_matttlop1);
        if (rng() % 2) limits.m_matttlop2 = below(plain.n_matttlop2);
        if (rng() % 2) limits.m_matttlop3 = below(plain.n_matttlop3);
        elimination<double> fast_1, plain_1;
        fast_1.limits = plain_1.limits = limits;
        ASSERT_TRUE(same_call(fast_1, plain_1, s, 0, 2, 0, 0, stopped)) << trial;
        n_stopped += stopped;
    }
    EXPECT_GT(n_stopped, 500);
}

TEST(plain_against_fast, dense_blocks_of_any_size_agree) {
    for (const int n : {70, 71, 72, 73, 74, 90, 150}) {
        std::mt19937 rng(static_cast<unsigned>(n));
        test_system<double> s = dense_system<double>(n, rng);
        elimination<double> fast, plain;
        bool stopped = false;
        ASSERT_TRUE(same_call(fast, plain, s, 0, 2, 0, 0, stopped)) << n;
        ASSERT_FALSE(stopped);
        ASSERT_TRUE(same_call(fast, plain, s, 1, 0, 1, 3, stopped)) << n;
        s.val = random_values(s.m, value_kind::plain, rng);
        ASSERT_TRUE(same_call(fast, plain, s, 1, 0, 1, 3, stopped)) << n;
        ASSERT_FALSE(stopped);
    }
}

// Any pattern of this density with a diagonal, in any order of slots.
template <class T>
test_system<T> random_pattern(int n, double density, value_kind kind, std::mt19937& rng) {
    std::vector<std::pair<int, int>> places;
    std::bernoulli_distribution there(density);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j)
            if (i == j || there(rng)) places.emplace_back(i, j);
    std::shuffle(places.begin(), places.end(), rng);
    pattern_builder pattern;
    for (const auto& [i, j] : places) pattern.add(i, j);
    test_system<T> s;
    s.m = pattern.finish<T>(n, n);
    s.val = random_values(s.m, kind, rng);
    s.rhs.assign(static_cast<std::size_t>(n), T(1));
    return s;
}

template <class T>
void filled_systems_agree(int n_trial, int& n_solved, int& n_stopped, int& n_at_limit) {
    for (int k = 0; k < static_cast<int>(value_kind::n_kinds); ++k)
        for (int trial = 0; trial < n_trial; ++trial) {
            std::mt19937 rng(static_cast<unsigned>(1000 * k + trial));
            const int n = 16 + static_cast<int>(rng() % 75);
            const double density = std::uniform_real_distribution<double>(0.02, 0.7)(rng);
            test_system<T> s = random_pattern<T>(n, density, static_cast<value_kind>(k), rng);
            elimination<T> fast, plain;
            if (rng() % 3 == 0) fast.gauss_epsln = plain.gauss_epsln = 1e-6;
            bool stopped = false;
            ASSERT_TRUE(same_call(fast, plain, s, 1, 2, 1, 3, stopped)) << k << ' ' << trial;
            (stopped ? n_stopped : n_solved) += 1;
            if (stopped) continue;
            elimination<T> fast_1, plain_1;
            const auto below = [&](int count) { return static_cast<int>(count * (0.7 + 0.01 * (rng() % 31))); };
            elimination_limits limits;
            switch (rng() % 3) {
                case 0:
                    limits.mnz_w = below(static_cast<int>(plain.row_w.size()));
                    break;
                case 1:
                    limits.m_matttlop1 = below(plain.n_matttlop1);
                    break;
                default:
                    limits.m_matttlop2 = below(plain.n_matttlop2);
            }
            fast_1.limits = plain_1.limits = limits;
            ASSERT_TRUE(same_call(fast_1, plain_1, s, 0, 2, 0, 0, stopped)) << k << ' ' << trial;
            n_at_limit += stopped;
        }
}

TEST(plain_against_fast, systems_that_fill_in_agree_to_the_bit_and_stop_at_the_same_limits) {
    int n_solved = 0, n_stopped = 0, n_at_limit = 0;
    filled_systems_agree<double>(35, n_solved, n_stopped, n_at_limit);
    EXPECT_GT(n_solved, 200);
    EXPECT_GT(n_stopped, 50);
    EXPECT_GT(n_at_limit, 100);
    filled_systems_agree<complex_value>(6, n_solved, n_stopped, n_at_limit);
}

TEST(plain_against_fast, dense_blocks_behind_other_pivots_agree) {
    for (int trial = 0; trial < 12; ++trial) {
        std::mt19937 rng(static_cast<unsigned>(trial));
        const int n_dense = 71 + trial % 4, n = n_dense + 1 + trial % 3;
        pattern_builder pattern;
        for (int i = 0; i < n; ++i) {
            pattern.add(i, i);
            if (i >= n_dense) pattern.add(i, 0), pattern.add(1, i);
            for (int j = 0; j < n_dense && i < n_dense; ++j) pattern.add(i, j);
        }
        test_system<double> s;
        s.m = pattern.finish<double>(n, n);
        s.val = random_values(s.m, value_kind::plain, rng);
        s.rhs.assign(static_cast<std::size_t>(n), 1.0);
        elimination<double> fast, plain;
        bool stopped = false;
        ASSERT_TRUE(same_call(fast, plain, s, 0, 2, 0, 0, stopped)) << trial;
        if (stopped) continue;
        ASSERT_TRUE(same_call(fast, plain, s, 1, 0, 1, 3, stopped)) << trial;
    }
}

TEST(plain_against_fast, several_columns_equal_single_solves_to_the_bit) {
    for (int trial = 0; trial < 200; ++trial) {
        std::mt19937 rng(static_cast<unsigned>(trial));
        const int n = 1 + static_cast<int>(rng() % 30), n_cols = static_cast<int>(rng() % 11);
        test_system<complex_value> s = random_circuit<complex_value>(n, value_kind::plain, rng);
        elimination<complex_value> e;
        const console_run order = run_and_listen([&] { fast_solve_jac(e, s, 1, 2, 1, 3); });
        if (order.stopped) continue;
        std::vector<complex_value> rhs(static_cast<std::size_t>(n * n_cols)), sol(rhs.size());
        for (complex_value& x : rhs) draw(x, value_kind::plain, rng);
        ASSERT_EQ(solve_columns(e, n_cols, rhs.data(), sol.data()), 0);
        for (int c = 0; c < n_cols; ++c) {
            s.rhs.assign(rhs.begin() + c * n, rhs.begin() + (c + 1) * n);
            fast_solve_jac(e, s, 1, 0, 1, 2);
            ASSERT_TRUE(same_bits(e.sol_w, std::vector<complex_value>(sol.begin() + c * n, sol.begin() + (c + 1) * n)))
                << trial;
        }
    }
}
