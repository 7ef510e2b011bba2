// Systems whose active part grows full: grids, random meshes and full matrices, against solutions found in other ways.
#include <csignal>

#include "base/signals.h"
#include "systems.h"

namespace {

using std::size_t;

// Square matrices row by row.
struct full_matrix {
    int n;
    std::vector<double> a;
    explicit full_matrix(int size) : n(size), a(static_cast<size_t>(size) * static_cast<size_t>(size), 0.0) {}
    double& operator()(int i, int j) {
        return a[static_cast<size_t>(i) * static_cast<size_t>(n) + static_cast<size_t>(j)];
    }
};

full_matrix full_form(const test_system<double>& s) {
    full_matrix f(s.m.n_row);
    for (size_t k = 0; k < s.val.size(); ++k) f(s.m.row[k], s.m.col[k]) = s.val[k];
    return f;
}

// Gauss with the largest of each column as its pivot; rows reach `band` columns beyond the diagonal, at most n.
std::vector<double> solve_full(full_matrix f, std::vector<double> b, int band) {
    for (int i = 0; i < f.n; ++i) {
        const int below = std::min(f.n, i + band + 1), right = std::min(f.n, i + 2 * band + 1);
        int p = i;
        for (int r = i + 1; r < below; ++r)
            if (std::fabs(f(r, i)) > std::fabs(f(p, i))) p = r;
        for (int c = i; c < right; ++c) std::swap(f(i, c), f(p, c));
        std::swap(b[static_cast<size_t>(i)], b[static_cast<size_t>(p)]);
        for (int r = i + 1; r < below; ++r) {
            const double l = f(r, i) / f(i, i);
            if (l == 0) continue;
            for (int c = i; c < right; ++c) f(r, c) -= l * f(i, c);
            b[static_cast<size_t>(r)] -= l * b[static_cast<size_t>(i)];
        }
    }
    for (int i = f.n - 1; i >= 0; --i) {
        for (int c = i + 1; c < std::min(f.n, i + 2 * band + 1); ++c)
            b[static_cast<size_t>(i)] -= f(i, c) * b[static_cast<size_t>(c)];
        b[static_cast<size_t>(i)] /= f(i, i);
    }
    return b;
}

// Largest difference of the solver's answer from that one, against the largest value.
double distance(test_system<double>& s, elimination<double>& e, int band) {
    fast_solve_jac(e, s, 1, 2, 1, 3);
    const std::vector<double> right = solve_full(full_form(s), s.rhs, band);
    double apart = 0, largest = 0;
    for (size_t i = 0; i < right.size(); ++i) {
        apart = std::max(apart, std::fabs(right[i] - e.sol_w[i]));
        largest = std::max(largest, std::fabs(right[i]));
    }
    return apart / largest;
}

struct stamper {
    pattern_builder pattern;
    std::vector<double> val;
    void entry(int i, int j, double x) {
        if (i < 0 || j < 0) return;
        const size_t slot = static_cast<size_t>(pattern.add(i, j));
        if (slot == val.size()) val.push_back(0);
        val[slot] += x;
    }
    void conductance(int i, int j, double g) { entry(i, i, g), entry(j, j, g), entry(i, j, -g), entry(j, i, -g); }
    void source(int i, int k) { entry(i, k, 1), entry(k, i, 1); }
    test_system<double> finish(int n) {
        test_system<double> s;
        s.m = pattern.finish<double>(n, n);
        s.val = val;
        s.rhs.assign(static_cast<size_t>(n), 0.0);
        return s;
    }
};

// side x side nodes, 1 S between neighbours, 1 V from the first node to the last, which is the reference. The current
// of the source is the last unknown.
test_system<double> grid_with_source(int side) {
    stamper s;
    const int n_node = side * side, reference = n_node - 1;
    const auto node = [&](int i, int j) { return i * side + j == reference ? -1 : i * side + j; };
    for (int i = 0; i < side; ++i)
        for (int j = 0; j < side; ++j) {
            if (j > 0) s.conductance(node(i, j), node(i, j - 1), 1);
            if (i > 0) s.conductance(node(i, j), node(i - 1, j), 1);
        }
    s.source(0, reference);
    test_system<double> t = s.finish(n_node);
    t.rhs.back() = 1;
    return t;
}

// The same as bands: conductances drawn from 1e-3 to 1 S, each node with one to the reference.
test_system<double> grid_with_leaks(int side, std::mt19937& rng) {
    stamper s;
    const auto draw_g = [&] { return std::pow(10.0, std::uniform_real_distribution<double>(-3, 0)(rng)); };
    for (int p = 0; p < side * side; ++p) {
        s.conductance(p, -1, draw_g());
        if (p % side > 0) s.conductance(p, p - 1, draw_g());
        if (p >= side) s.conductance(p, p - side, draw_g());
    }
    test_system<double> t = s.finish(side * side);
    for (double& x : t.rhs) draw(x, value_kind::plain, rng);
    return t;
}

// n_branch conductances between any two nodes, over three decades.
test_system<double> random_mesh(int n, int n_branch, std::mt19937& rng) {
    stamper s;
    const auto pick = [&] { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
    for (int i = 0; i < n; ++i) s.conductance(i, i > 0 ? i - 1 : -1, 1);
    for (int b = 0; b < n_branch; ++b) {
        const int i = pick(), j = pick();
        if (i != j) s.conductance(i, j, std::pow(10.0, std::uniform_real_distribution<double>(-3, 0)(rng)));
    }
    test_system<double> t = s.finish(n);
    for (double& x : t.rhs) draw(x, value_kind::plain, rng);
    return t;
}

}  // namespace

TEST(meshed_systems, corners_beside_a_source_across_a_grid_read_half_of_it) {
    for (const int side : {5, 28, 29, 30, 40, 70, 100}) {
        const test_system<double> s = grid_with_source(side);
        elimination<double> e;
        fast_solve_jac(e, s, 1, 2, 1, 3);
        const auto v = [&](int i, int j) { return e.sol_w[static_cast<size_t>(i * side + j)]; };
        EXPECT_EQ(v(0, 0), 1.0) << side;
        // A turn by half around the centre changes 1 V and 0 V, a reflection in the diagonal leaves both.
        EXPECT_NEAR(v(0, side - 1), 0.5, 1e-12) << side;
        EXPECT_NEAR(v(side - 1, 0), 0.5, 1e-12) << side;
        double worst = 0;
        for (int i = 0; i < side; ++i)
            for (int j = 0; j < side; ++j) {
                const int p = i * side + j;
                if (p == side * side - 1 || p == 0) continue;
                worst = std::max(worst, std::fabs(v(i, j) - v(j, i)));
                worst = std::max(worst, std::fabs(v(i, j) + v(side - 1 - i, side - 1 - j) - 1));
            }
        EXPECT_LT(worst, 1e-11) << side;
    }
}

TEST(meshed_systems, grids_meet_a_banded_solution) {
    for (const int side : {28, 29, 40, 70}) {
        std::mt19937 rng(static_cast<unsigned>(side));
        test_system<double> s = grid_with_leaks(side, rng);
        elimination<double> e;
        EXPECT_LT(distance(s, e, side), 1e-12) << side;
    }
}

TEST(meshed_systems, random_meshes_meet_a_dense_solution) {
    for (const int n : {73, 120, 250, 400})
        for (const int degree : {2, 6, 20}) {
            std::mt19937 rng(static_cast<unsigned>(n + degree));
            test_system<double> s = random_mesh(n, n * degree, rng);
            elimination<double> e;
            EXPECT_LT(distance(s, e, n), 1e-11) << n << ' ' << degree;
        }
}

TEST(meshed_systems, full_matrices_meet_a_dense_solution) {
    for (const int n : {73, 74, 100, 150, 300}) {
        std::mt19937 rng(static_cast<unsigned>(n));
        test_system<double> s = dense_system<double>(n, rng);
        elimination<double> e;
        EXPECT_LT(distance(s, e, n), 1e-9) << n;
        for (size_t k = 0; k < s.val.size(); ++k)
            if (s.m.row[k] == s.m.col[k]) s.val[k] += n;
        EXPECT_LT(distance(s, e, n), 1e-14) << n;
    }
}

TEST(meshed_systems, each_node_of_a_full_mesh_reads_half_of_its_source) {
    for (const int n_node : {3, 72, 73, 74, 150}) {  // with the reference
        stamper s;
        for (int i = -1; i < n_node - 1; ++i)
            for (int j = i + 1; j < n_node - 1; ++j) s.conductance(i, j, 1);
        s.source(0, n_node - 1);
        test_system<double> t = s.finish(n_node);
        t.rhs.back() = 1;
        elimination<double> e;
        fast_solve_jac(e, t, 1, 2, 1, 3);
        EXPECT_EQ(e.sol_w[0], 1.0) << n_node;
        for (int i = 1; i < n_node - 1; ++i) EXPECT_NEAR(e.sol_w[static_cast<size_t>(i)], 0.5, 1e-13) << n_node;
        // The source feeds n_node - 2 nodes by 0.5 A each, and 1 A goes straight to the reference.
        EXPECT_NEAR(e.sol_w[static_cast<size_t>(n_node - 1)], -0.5 * n_node, 1e-11) << n_node;
    }
}

TEST(meshed_systems, plain_and_fast_forms_agree_to_the_bit) {
    for (const int side : {20, 29, 33}) {
        std::mt19937 rng(static_cast<unsigned>(side));
        for (test_system<double> s : {grid_with_source(side), grid_with_leaks(side, rng)}) {
            elimination<double> fast, plain;
            bool stopped = false;
            ASSERT_TRUE(same_call(fast, plain, s, 1, 2, 1, 3, stopped)) << side;
            EXPECT_FALSE(stopped);
            for (double& x : s.val) x *= 1 + std::uniform_real_distribution<double>(0, 0.1)(rng);
            ASSERT_TRUE(same_call(fast, plain, s, 1, 0, 1, 3, stopped)) << side;
        }
    }
    for (const int degree : {3, 12}) {
        std::mt19937 rng(static_cast<unsigned>(degree));
        const test_system<double> s = random_mesh(200, 200 * degree, rng);
        elimination<double> fast, plain;
        bool stopped = false;
        ASSERT_TRUE(same_call(fast, plain, s, 1, 2, 1, 3, stopped)) << degree;
        EXPECT_FALSE(stopped);
    }
}

TEST(meshed_systems, lost_pivot_of_a_large_grid_is_ordered_anew) {
    std::mt19937 rng(1);
    test_system<double> s = grid_with_leaks(60, rng);
    elimination<double> e;
    fast_solve_jac(e, s, 1, 2, 1, 3);
    const int first = e.row_perm[0];  // its diagonal value goes, as with a node on a source alone
    ASSERT_EQ(first, e.col_perm[0]);
    for (size_t k = 0; k < s.val.size(); ++k)
        if (s.m.row[k] == first && s.m.col[k] == first) s.val[k] = 0;
    const console_run heard = run_and_listen([&] { fast_solve_jac(e, s, 1, 0, 1, 3); });
    EXPECT_FALSE(heard.stopped);
    EXPECT_TRUE(heard.text.ends_with("solve_jac: error in gauss_2.\n  Calling gauss_1a (to reorder)...\n"));
    const std::vector<double> right = solve_full(full_form(s), s.rhs, 60);
    double apart = 0, largest = 0;
    for (size_t i = 0; i < right.size(); ++i) {
        apart = std::max(apart, std::fabs(right[i] - e.sol_w[i]));
        largest = std::max(largest, std::fabs(right[i]));
    }
    EXPECT_LT(apart, 1e-11 * largest);
    s.rhs[0] += 1;
    EXPECT_EQ(run_and_listen([&] { fast_solve_jac(e, s, 1, 0, 1, 3); }).text, "");
}

TEST(meshed_systems, empty_active_part_of_an_order_by_counts_stops) {
    // Behind (0,0) nothing is left to choose from.
    test_system<double> s = system_of({{1.0, 1, 1}, {0, 0, 0}, {0, 0, 0}});
    elimination<double> e;
    EXPECT_HALT(fast_solve_jac(e, s, 0, 1, 0, 0),
                "gauss_1 starting...\ngauss_1: last row: zero pivot?\n   Error in Gauss elimination routine\n"
                "   zero pivot\n");
}

TEST(meshed_systems, order_ends_by_a_signal_that_came_before_or_during_it) {
    for (const int number : {SIGINT, SIGTERM})
        EXPECT_EXIT(
            {
                note_signals();
                std::raise(number);
                std::mt19937 rng(1);
                const test_system<double> s = grid_with_leaks(5, rng);
                elimination<double> e;
                fast_solve_jac(e, s, 0, 2, 0, 0);
                std::_Exit(0);
            },
            testing::KilledBySignal(number), "");
}
