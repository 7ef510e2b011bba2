// Pivot choice, replay, retry and every message, on systems small enough to follow by hand.
#include "sparse/elimination.h"

#include "systems.h"

namespace {

using std::size_t;

// Where the pivots of an order stand in the system.
template <class T>
std::vector<std::pair<int, int>> pivots_of(const elimination<T>& e) {
    std::vector<std::pair<int, int>> p;
    for (size_t i = 0; i < e.row_perm.size(); ++i) p.emplace_back(e.row_perm[i], e.col_perm[i]);
    return p;
}
using places = std::vector<std::pair<int, int>>;

template <class T>
elimination<T> ordered(const test_system<T>& s) {
    elimination<T> e;
    fast_solve_jac(e, s, 0, 2, 0, 0);
    return e;
}

// Nodes in a ring: the first pivot (0,0) makes two fill-ins, in rows 1 and 3.
test_system<double> ring() { return system_of({{4, 1, 0, 1}, {1, 4, 1, 0}, {0, 1, 4, 1}, {1, 0, 1, 4}}); }

// The three families of names, so that each message is tested in each.
struct family {
    const elimination_names& names;
    std::string gauss_1a, gauss_2, prefix, suffix;
};
const family families[] = {{real_names, "gauss_1a", "gauss_2", "", ""},
                           {complex_names, "gauss_1a_c", "gauss_2_c", "", "_c"},
                           {explicit_names, "x_gauss_1a", "x_gauss_2", "x_", ""}};

}  // namespace

// ---- solutions

TEST(elimination, regular_system_with_a_zero_in_the_corner_meets_cramers_rule) {
    const double a[3][3] = {{0, 2, 1}, {1, -2, -3}, {-1, 1, 2}}, b[3] = {-8, 0, 3};
    const auto det = [](const double m[3][3]) {
        return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) - m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
               m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
    };
    test_system<double> s = system_of({{0, 2, 1}, {1, -2, -3}, {-1, 1, 2}}, {-8, 0, 3});
    elimination<double> e = ordered(s);
    fast_solve_jac(e, s, 1, 0, 1, 3);
    for (int c = 0; c < 3; ++c) {
        double m[3][3];
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j) m[i][j] = j == c ? b[i] : a[i][j];
        EXPECT_NEAR(e.sol_w[static_cast<size_t>(c)], det(m) / det(a), 1e-14);
    }
}

TEST(elimination, random_systems_are_solved_to_a_small_residual) {
    int n_solved = 0;
    for (int trial = 0; trial < 400; ++trial) {
        std::mt19937 rng(static_cast<unsigned>(trial));
        const int n = 1 + static_cast<int>(rng() % 40);
        test_system<complex_value> s = random_circuit<complex_value>(n, value_kind::plain, rng);
        elimination<complex_value> e;
        if (run_and_listen([&] { fast_solve_jac(e, s, 0, 2, 0, 0); }).stopped) continue;
        for (int round = 0; round < 2; ++round) {
            if (run_and_listen([&] { fast_solve_jac(e, s, 1, 0, 1, 3); }).stopped) break;
            std::vector<complex_value> left = s.rhs;
            std::vector<double> scale(s.rhs.size(), 1e-30);
            for (size_t k = 0; k < s.val.size(); ++k) {
                const size_t i = static_cast<size_t>(s.m.row[k]), j = static_cast<size_t>(s.m.col[k]);
                left[i] -= s.val[k] * e.sol_w[j];
                scale[i] = std::max(scale[i], std::abs(s.val[k]) * std::abs(e.sol_w[j]));
            }
            for (size_t i = 0; i < left.size() && round == 0; ++i)
                EXPECT_LT(std::abs(left[i]), 1e-7 * scale[i] + 1e-12);
            ++n_solved;
            s.val = random_values(s.m, value_kind::plain, rng);
        }
    }
    EXPECT_GT(n_solved, 200);
}

TEST(elimination, one_unknown_is_the_right_hand_side_over_the_pivot) {
    test_system<double> s = system_of({{4.0}}, {10.0});
    elimination<double> e = ordered(s);
    EXPECT_EQ(e.mat_pp, std::vector<int>{0});
    EXPECT_EQ(e.n_matttlop1 + e.n_matttlop2 + e.n_matttlop3, 0);
    fast_solve_jac(e, s, 1, 0, 1, 3);
    EXPECT_EQ(e.sol_w[0], 2.5);
}

TEST(elimination, no_unknowns_are_no_trouble) {
    test_system<double> s;
    elimination<double> e;
    fast_solve_jac(e, s, 1, 2, 1, 3);
    fast_solve_jac(e, s, 1, 1, 1, 2);
    EXPECT_EQ(solve_columns(e, 3, static_cast<double*>(nullptr), static_cast<double*>(nullptr)), 0);
    EXPECT_TRUE(e.sol_w.empty());
}

// ---- pivots

TEST(elimination, diagonal_matrix_needs_no_exchange_and_no_operation) {
    const elimination<double> e = ordered(system_of({{2, 0, 0}, {0, 3, 0}, {0, 0, 4}}));
    EXPECT_EQ(e.mat_rowexch, (std::vector<int>{0, 1}));
    EXPECT_EQ(e.mat_pp, (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(e.n_matttlop1, 0);
    EXPECT_EQ(e.n_matttlop2, 0);
    EXPECT_EQ(e.n_matttlop3, 0);
}

TEST(elimination, among_equal_counts_the_lower_row_and_then_the_lower_column_wins) {
    EXPECT_EQ(pivots_of(ordered(system_of({{1, 2}, {3, 4}})))[0], (std::pair{0, 0}));
}

TEST(elimination, candidate_small_against_both_its_row_and_its_column_is_passed_over) {
    // 0.1 < 0.25 * 2 and 0.1 < 0.25 * 3: the next in line is (0,1).
    EXPECT_EQ(pivots_of(ordered(system_of({{0.1, 2}, {3, 4}})))[0], (std::pair{0, 1}));
    // Large enough against its column alone.
    EXPECT_EQ(pivots_of(ordered(system_of({{0.1, 2}, {0.3, 4}})))[0], (std::pair{0, 0}));
}

TEST(elimination, candidate_at_exactly_a_quarter_is_accepted) {
    EXPECT_EQ(pivots_of(ordered(system_of({{0.5, 2}, {30, 4}})))[0], (std::pair{0, 0}));
    EXPECT_EQ(pivots_of(ordered(system_of({{std::nextafter(0.5, 0.0), 2}, {30, 4}})))[0], (std::pair{0, 1}));
}

TEST(elimination, smallest_count_goes_first) {
    // Row 2 has a single entry: count 0, though it stands last.
    EXPECT_EQ(pivots_of(ordered(system_of({{1, 1, 1}, {1, 2, 1}, {0, 0, 1}})))[0], (std::pair{2, 2}));
}

TEST(elimination, entries_at_the_limit_are_not_counted_but_still_operated_on) {
    // Row 0 counts one entry only, as 1e-41 does not; so (0,1) has count 0 and goes first. (0,0) keeps its operations.
    const elimination<double> e = ordered(system_of({{1e-41, 1}, {1, 1}}));
    EXPECT_EQ(pivots_of(e)[0], (std::pair{0, 1}));
    EXPECT_EQ(e.n_matttlop1, 1);
    EXPECT_EQ(e.n_matttlop2, 1);
}

TEST(elimination, row_without_entry_in_the_pivot_column_gets_no_operation) {
    const elimination<double> e = ordered(system_of({{1, 1, 0}, {1, 3, 0}, {0, 0, 5}}));
    EXPECT_EQ(pivots_of(e)[0], (std::pair{2, 2}));
    EXPECT_EQ(e.n_matttlop2, 1);  // of row 1 with row 0, or the reverse
}

TEST(elimination, fill_in_takes_the_slots_behind_the_system) {
    const test_system<double> s = ring();
    const elimination<double> e = ordered(s);
    EXPECT_EQ(e.row_w.size(), 14u);
    EXPECT_EQ(pivots_of(e)[0], (std::pair{0, 0}));
    EXPECT_EQ(e.row_perm[static_cast<size_t>(e.row_w[12])], 1);
    EXPECT_EQ(e.col_perm[static_cast<size_t>(e.col_w[12])], 3);
    EXPECT_EQ(e.row_perm[static_cast<size_t>(e.row_w[13])], 3);
    EXPECT_EQ(e.col_perm[static_cast<size_t>(e.col_w[13])], 1);
}

TEST(elimination, order_and_inverse_order_agree) {
    std::mt19937 rng(5);
    const elimination<double> e = ordered(dense_system<double>(12, rng));
    for (int i = 0; i < e.n; ++i) {
        EXPECT_EQ(e.row_perm_inv[static_cast<size_t>(e.row_perm[static_cast<size_t>(i)])], i);
        EXPECT_EQ(e.col_perm_inv[static_cast<size_t>(e.col_perm[static_cast<size_t>(i)])], i);
    }
}

TEST(elimination, tables_of_a_long_ladder_grow_with_its_length_only) {
    std::mt19937 rng(6);
    const int n = 20000;
    test_system<double> s = random_ladder<double>(n, rng);
    for (std::size_t k = 0; k < s.val.size(); ++k)
        if (s.m.row[k] == s.m.col[k]) s.val[k] += 3;  // no near ties that would leave the natural order
    elimination<double> e = ordered(s);
    fast_solve_jac(e, s, 1, 0, 1, 3);
    EXPECT_LT(e.row_w.size(), 4u * n);
    EXPECT_LT(e.compact.steps.size(), 8u * n);
    EXPECT_LT(e.compact.w.capacity(), 8u * n);
    EXPECT_EQ(e.lists.mat_op_2.capacity(), 0u);
    double worst = 0;
    std::vector<double> left = s.rhs;
    for (std::size_t k = 0; k < s.val.size(); ++k)
        left[static_cast<size_t>(s.m.row[k])] -= s.val[k] * e.sol_w[static_cast<size_t>(s.m.col[k])];
    for (const double x : left) worst = std::max(worst, std::fabs(x));
    EXPECT_LT(worst, 1e-12);
}

// ---- stops of the elimination

TEST(gauss_1a, exceeded_limits_name_the_count_and_the_limit) {
    const char* error = "   Error in Gauss elimination routine\n   Insufficient storage\n";
    for (const family& f : families) {
        const auto two = [&](const std::string& what, const std::string& limit, int n, int m) {
            return line(f.gauss_1a, ": ", f.prefix, what, f.suffix, " = ", n, "\n", f.gauss_1a, ": ", f.prefix, limit,
                        f.suffix, " = ", m, "\n", error);
        };
        const test_system<double> s = ring();
        elimination<double> e;
        e.names = f.names;
        e.limits.mnz_w = 11;
        EXPECT_HALT(fast_solve_jac(e, s, 0, 2, 0, 0), line(f.gauss_1a, ": ", f.prefix, "nnz_w", f.suffix, "=12, ",
                                                           f.prefix, "mnz_w", f.suffix, "=11\n  Halting..\n"));
        e.limits.mnz_w = 13;
        EXPECT_HALT(fast_solve_jac(e, s, 0, 2, 0, 0), two("nnz_w", "mnz_w", 14, 13));
        e.limits = {};
        e.limits.m_matttlop1 = 1;
        EXPECT_HALT(fast_solve_jac(e, s, 0, 2, 0, 0), two("n_matttlop1", "m_matttlop1", 2, 1));
        e.limits = {};
        e.limits.m_matttlop2 = 3;
        EXPECT_HALT(fast_solve_jac(e, s, 0, 2, 0, 0), two("n_matttlop2", "m_matttlop2", 4, 3));
        e.limits = {};
        e.limits.m_matttlop3 = 4;  // upper entries: 2 + 2 + 1
        EXPECT_HALT(fast_solve_jac(e, s, 0, 2, 0, 0), two("n_matttlop3", "m_matttlop3", 5, 4));
        e.limits = {14, 5, 9, 5};  // operations 4 + 4 + 1
        EXPECT_FALSE(run_and_listen([&] { fast_solve_jac(e, s, 0, 2, 0, 0); }).stopped);
    }
}

TEST(gauss_1a, empty_row_or_column_is_reported_by_working_position) {
    EXPECT_HALT(ordered(system_of({{1, 1}, {0, 0}})),
                "nnz_active_k_1: valmax_row=0. i_row=1\n  Singular matrix? Halting...\n");
    EXPECT_HALT(ordered(system_of({{1, 0}, {1, 0}})),
                "nnz_active_k_1: valmax_col=0. i_col=1\n  Singular matrix? Halting...\n");
    // Rows and columns take turns: column 0 comes before row 1.
    EXPECT_HALT(ordered(system_of({{0, 1}, {0, 0}})),
                "nnz_active_k_1: valmax_col=0. i_col=0\n  Singular matrix? Halting...\n");
    EXPECT_HALT(ordered(system_of({{1, 1}, {1e-41, 1e-41}})),
                "nnz_active_k_1: valmax_row=0. i_row=1\n  Singular matrix? Halting...\n");
    EXPECT_HALT(ordered(system_of<complex_value>({{1, 1}, {0, 0}})),
                "nnz_active_k_1_c: valmax_row=0. i_row=1\n  Singular matrix? Halting...\n");
    elimination<double> e;
    e.names = explicit_names;
    EXPECT_HALT(fast_solve_jac(e, system_of({{1, 1}, {0, 0}}), 0, 2, 0, 0),
                "nnz_active_k_1: valmax_row=0. i_row=1\n  Singular matrix? Halting...\n");
}

TEST(gauss_1a, rows_that_cancel_are_singular_behind_the_first_pivot) {
    EXPECT_HALT(ordered(system_of({{1, 1, 1}, {1, 1, 1}, {1, 1, 1}})),
                "nnz_active_k_1: valmax_row=0. i_row=1\n  Singular matrix? Halting...\n");
}

TEST(gauss_1a, pivot_below_gauss_epsln_stops) {
    elimination<double> e;
    e.gauss_epsln = 1;
    EXPECT_HALT(fast_solve_jac(e, system_of({{0.5, 0}, {0, 0.5}}), 0, 2, 0, 0),
                "gauss_1a: val_piv=0.5\n   Error in Gauss elimination routine.\n"
                "   Pivot is too small. Halting...\n");
    elimination<complex_value> c;
    c.gauss_epsln = 1;
    EXPECT_HALT(fast_solve_jac(c, system_of<complex_value>({{{0.5, 0.25}, 0}, {0, 0.5}}), 0, 2, 0, 0),
                "gauss_1a_c: val_piv_c=(0.5,0.25)\n   Error in Gauss elimination routine.\n"
                "   Pivot is too small. Halting...\n");
}

TEST(gauss_1a, last_row_without_a_pivot_stops) {
    test_system<double> s;
    knuth_zero(s.m, 1, 1);
    EXPECT_HALT(ordered(s), "gauss_1a: last row: zero pivot?\n   Error in Gauss elimination routine\n   zero pivot\n");
}

TEST(gauss_1, announces_itself_and_orders_by_counts_alone) {
    // By values (0,0) would be refused.
    const test_system<double> s = system_of({{0.1, 2}, {3, 4}}, {2.1, 7});
    elimination<double> e;
    EXPECT_EQ(run_and_listen([&] { fast_solve_jac(e, s, 0, 1, 0, 0); }).text, "gauss_1 starting...\n");
    EXPECT_EQ(pivots_of(e)[0], (std::pair{0, 0}));
    fast_solve_jac(e, s, 1, 0, 1, 3);
    EXPECT_NEAR(e.sol_w[0], 1, 1e-13);
    EXPECT_NEAR(e.sol_w[1], 1, 1e-13);
    elimination<complex_value> c;
    EXPECT_EQ(run_and_listen([&] { fast_solve_jac(c, system_of<complex_value>({{1}}), 0, 1, 0, 0); }).text,
              "gauss_1_c starting...\n");
}

TEST(gauss_1, last_row_without_a_pivot_stops_under_its_own_name) {
    elimination<double> e;
    e.names = explicit_names;
    EXPECT_HALT(fast_solve_jac(e, system_of({{1, 1}, {0, 0}}), 0, 1, 0, 0),
                "x_gauss_1 starting...\nx_gauss_1: last row: zero pivot?\n   Error in Gauss elimination routine\n"
                "   zero pivot\n");
}

// ---- the replay and its retry

TEST(solve_jac, lost_pivot_reorders_with_all_its_lines_and_the_new_order_stands) {
    for (const family& f : families) {
        test_system<double> s = system_of({{1, 2}, {3, 4}}, {2, 7});
        elimination<double> e;
        e.names = f.names;
        fast_solve_jac(e, s, 0, 2, 0, 0);
        s.val[0] = 0;  // 2y = 2, 3x + 4y = 7
        const console_run heard = run_and_listen([&] { fast_solve_jac(e, s, 1, 0, 1, 3); });
        const std::string solver(f.names.solve_jac), failed(f.names.failed);
        EXPECT_EQ(heard.text, f.gauss_2 + ": type 1 val_piv" + f.suffix + " = 0\n" + f.gauss_2 + ": zero_piv" +
                                  f.suffix + " = 1e-40\n" + f.gauss_2 + ": pntr_piv = 0\n" + f.gauss_2 +
                                  ": i_row_outer = 0\n*** error in " + f.gauss_2 + ": pivot too small ***\n" + solver +
                                  ": " + failed + "\n  Calling gauss_1a (to reorder)...\n");
        EXPECT_EQ(e.sol_w, (std::vector<double>{1, 1}));
        EXPECT_EQ(pivots_of(e)[0], (std::pair{0, 1}));
        s.rhs = {4, 11};
        EXPECT_EQ(run_and_listen([&] { fast_solve_jac(e, s, 1, 0, 1, 2); }).text, "");
        EXPECT_EQ(e.sol_w, (std::vector<double>{1, 2}));
    }
    EXPECT_EQ(real_names.failed, "error in gauss_2.");
    EXPECT_EQ(complex_names.failed, "error in gauss_2_c.");
    EXPECT_EQ(explicit_names.failed, "error in x_gauss_2.");
}

TEST(solve_jac, singular_last_pivot_fails_again_and_halts) {
    test_system<double> s = system_of({{1, 2}, {3, 4}});
    elimination<double> e = ordered(s);
    s.val = {1, 2, 2, 4};
    const std::string last = "gauss_2: pntr_piv = 3\ngauss_2: val_piv = 0\ngauss_2: zero pivot in the last row!\n";
    EXPECT_HALT(fast_solve_jac(e, s, 1, 0, 1, 3),
                last + "solve_jac: error in gauss_2.\n  Calling gauss_1a (to reorder)...\n" + last +
                    "solve_jac: error in gauss_2 again!\n  (even after reordering)\n  Halting...\n");
    test_system<complex_value> t = system_of<complex_value>({{1, 2}, {3, 4}});
    elimination<complex_value> c = ordered(t);
    t.val = {1, 2, 2, 4};
    const std::string last_c =
        "gauss_2_c: pntr_piv = 3\ngauss_2_c: val_piv_c = (0,0)\ngauss_2_c: zero pivot in the last row!\n";
    EXPECT_HALT(fast_solve_jac(c, t, 1, 0, 1, 3),
                last_c + "solve_jac_ac: error in gauss_2_c.\n  Calling gauss_1a (to reorder)...\n" + last_c +
                    "solve_jac_ac: error in gauss_2_c again!\n  (even after reordering)\n  Halting...\n");
    EXPECT_EQ(explicit_names.failed_again, "error in gauss_2 again!");
}

TEST(solve_jac, retry_may_stop_inside_the_new_elimination) {
    test_system<double> s = system_of({{1, 2}, {3, 4}});
    elimination<double> e = ordered(s);
    s.val = {0, 0, 3, 4};
    const console_run heard = run_and_listen([&] { fast_solve_jac(e, s, 1, 0, 1, 3); });
    EXPECT_TRUE(heard.stopped);
    EXPECT_TRUE(
        heard.text.ends_with("  Calling gauss_1a (to reorder)...\n"
                             "nnz_active_k_1: valmax_row=0. i_row=0\n  Singular matrix? Halting...\n"));
}

TEST(solve_jac, matrix_stage_alone_does_not_test_the_last_pivot) {
    test_system<double> s = system_of({{1, 2}, {3, 4}});
    elimination<double> e = ordered(s);
    s.val = {1, 2, 2, 4};
    EXPECT_EQ(run_and_listen([&] { fast_solve_jac(e, s, 0, 0, 1, 1); }).text, "");
}

TEST(solve_jac, limit_raised_behind_the_factors_shows_in_the_right_hand_side_stage) {
    test_system<double> s = system_of({{1, 2}, {3, 4}});
    elimination<double> e = ordered(s);
    e.zero_piv = 1.5;
    int error = 0;
    e.rhs_w = s.rhs;
    EXPECT_EQ(run_and_listen([&] { gauss_2(e, s.m, s.val.data(), 2, error); }).text,
              "gauss_2: val_piv = 1\ngauss_2: i_row_outer = 0\n");
    EXPECT_EQ(error, 1);
    std::vector<double> sol(2);
    EXPECT_EQ(run_and_listen([&] { error = solve_columns(e, 1, s.rhs.data(), sol.data()); }).text,
              "gauss_2: val_piv = 1\ngauss_2: i_row_outer = 0\n");
    EXPECT_EQ(error, 1);
}

TEST(solve_jac, count_beyond_the_limit_stops_the_replay) {
    test_system<double> s = system_of({{1, 2}, {3, 4}});
    elimination<double> e = ordered(s);
    e.limits.mnz_w = 3;
    EXPECT_HALT(fast_solve_jac(e, s, 1, 0, 1, 3), "gauss_2: nnz_w=4, mnz_w=3\n  Halting..\n");
}

TEST(solve_jac, pivot_of_1e_39_is_accepted_and_gives_a_huge_step) {
    test_system<double> s = system_of({{1.0, 0}, {0, 1}});
    elimination<double> e = ordered(s);
    s.val = {1e-39, 1};
    EXPECT_EQ(run_and_listen([&] { fast_solve_jac(e, s, 1, 0, 1, 3); }).text, "");
    EXPECT_DOUBLE_EQ(e.sol_w[0], 1e39);
}

TEST(solve_jac, order_and_solution_in_one_call) {
    const test_system<double> s = system_of({{2, 1}, {1, 3}}, {5, 10});
    elimination<double> e;
    e.names = explicit_names;
    fast_solve_jac(e, s, 1, 2, 1, 3);
    EXPECT_NEAR(e.sol_w[0], 1, 1e-15);
    EXPECT_NEAR(e.sol_w[1], 3, 1e-15);
}

TEST(solve_jac, several_solves_by_standing_factors) {
    const test_system<double> s = system_of({{2, 1}, {1, 3}});
    elimination<double> e = ordered(s);
    const double rhs[6] = {5, 10, 3, 4, 2, 1};
    double sol[6];
    ASSERT_EQ(solve_columns(e, 3, rhs, sol), 0);
    const double expected[6] = {1, 3, 1, 1, 1, 0};
    for (int i = 0; i < 6; ++i) EXPECT_NEAR(sol[i], expected[i], 1e-15);
    EXPECT_EQ(solve_columns(e, 0, rhs, sol), 0);
}

// ---- factors that stand

TEST(solve_jac, unchanged_values_are_not_factored_again) {
    test_system<double> s = ring();
    elimination<double> e = ordered(s);
    fast_solve_jac(e, s, 1, 0, 1, 3);
    EXPECT_EQ(e.compact.n_skipped, 0);
    const std::vector<double> first = e.sol_w;
    fast_solve_jac(e, s, 1, 0, 1, 3);
    EXPECT_EQ(e.compact.n_skipped, 1);
    EXPECT_TRUE(same_bits(first, e.sol_w));
    s.val[3] = -s.val[3];
    fast_solve_jac(e, s, 1, 0, 1, 3);
    EXPECT_EQ(e.compact.n_skipped, 1);
    e.zero_piv = 1e-30;  // the pivots have not been held against this limit
    fast_solve_jac(e, s, 1, 0, 1, 3);
    EXPECT_EQ(e.compact.n_skipped, 1);
}

TEST(solve_jac, failed_factors_are_not_taken_for_standing_ones) {
    test_system<double> s = system_of({{1, 2}, {3, 4}});
    elimination<double> e = ordered(s);
    s.val = {1, 2, 2, 4};
    int error = 0;
    for (int again = 0; again < 2; ++again) {
        e.rhs_w = s.rhs;
        run_and_listen([&] { gauss_2(e, s.m, s.val.data(), 3, error); });
        EXPECT_EQ(error, 1);
    }
    s.val = {0, 2, 2, 4};
    for (int again = 0; again < 2; ++again) {
        e.rhs_w = s.rhs;
        EXPECT_TRUE(run_and_listen([&] {
                        gauss_2(e, s.m, s.val.data(), 3, error);
                    }).text.starts_with("gauss_2: type 1 val_piv = 0\n"));
    }
}

// ---- printing the lists

TEST(debug_gauss, printing_changes_no_result) {
    for (int trial = 0; trial < 60; ++trial) {
        std::mt19937 rng(static_cast<unsigned>(trial));
        test_system<complex_value> s = random_circuit<complex_value>(1 + trial % 9, value_kind::plain, rng);
        elimination<complex_value> quiet, loud;
        loud.debug_gauss_1 = 1;
        if (run_and_listen([&] { fast_solve_jac(quiet, s, 1, 2, 1, 3); }).stopped) continue;
        run_and_listen([&] { fast_solve_jac(loud, s, 1, 2, 1, 3); });
        EXPECT_EQ(quiet.row_perm, loud.row_perm);
        for (int round = 0; round < 6; ++round) {
            loud.debug_gauss_2 = static_cast<int>(rng() % 2);  // switched on and off between solves
            const int mode = rng() % 3 ? 3 : 2;
            if (mode == 3) s.val = random_values(s.m, value_kind::plain, rng);
            for (complex_value& x : s.rhs) draw(x, value_kind::plain, rng);
            const console_run a = run_and_listen([&] { fast_solve_jac(quiet, s, 1, 0, 1, mode); });
            const console_run b = run_and_listen([&] { fast_solve_jac(loud, s, 1, 0, 1, mode); });
            ASSERT_EQ(a.stopped, b.stopped);
            if (a.stopped) break;
            ASSERT_TRUE(same_bits(quiet.sol_w, loud.sol_w)) << trial << ' ' << round;
        }
    }
}

TEST(debug_gauss, stages_are_printed_for_each_pivot_and_row) {
    const test_system<double> s = system_of({{1, 2}, {3, 4}});
    elimination<double> e;
    e.debug_gauss_1 = 1;
    EXPECT_EQ(run_and_listen([&] { fast_solve_jac(e, s, 0, 2, 0, 0); }).text,
              "gauss_1a: i_row_outer=0\ngauss_1a: debug 1\nnnz_row: 2 2\nnnz_col: 2 2\n"
              "gauss_1a: debug 2\n  row_piv=0\n  col_piv=0\n"
              "gauss_1a: debug 3\nn_matttlop1 = 1\nmat_op_1: 2\nmat_pn_1: 1\ni_row_outer = 0\nmat_pp = 0\n"
              "ip_matop1 = 1\nmat_rowexch = 0\n"
              "gauss_1a: debug 4\ni_row_inner = 1\nn_matttlop2 = 1, n_matttlop3 = 0\ncount_np = 0\nmat_op_2: 6\n"
              "mat_pn_2: 1\nmat_nn: 3\nmat_np: 2\nl_np_zero: 0\nip1_matop2 = 0\n"
              "gauss_1a: debug 5\ni_row_outer = 0\nmat_pp = 0\n");
    e.debug_gauss_1 = 0;
    e.debug_gauss_2 = 1;
    EXPECT_EQ(run_and_listen([&] { fast_solve_jac(e, s, 1, 0, 1, 3); }).text,
              "gauss_2: i_row_outer=0, i=0, optype1=2, val_pivinv=1\ngauss_2: i_row_inner=1\ngauss_2: i_start=0\n"
              "gauss_2: i_end=1\ngauss_2: optype2=6, pntr_nn=3\n");
    e.debug_gauss_1 = 1;
    EXPECT_TRUE(run_and_listen([&] {
                    fast_solve_jac(e, s, 0, 1, 0, 0);
                }).text.ends_with("gauss_1 debug 6:\nn_matttlop1=1\nn_matttlop2=1\nn_matttlop3=1\n"));
}
