// The store: entries, joins, rebuilt lists, conversions.
#include "sparse/knuth.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <numeric>
#include <random>

#include "halt_throws.h"
#include "sparse/knuth_write.h"
#include "sparse/pattern.h"

namespace {

using complex_double = std::complex<double>;
using std::size_t;

// Columns along a row list, rows along a column list.
template <class T>
std::vector<int> row_of(const knuth<T>& k, size_t i) {
    std::vector<int> met;
    for (int e = k.srow[i]; e != -1; e = k.prow[static_cast<size_t>(e)]) met.push_back(k.col[static_cast<size_t>(e)]);
    return met;
}
template <class T>
std::vector<T> dense_of(const knuth<T>& k) {
    std::vector<T> a(static_cast<size_t>(k.n_row) * static_cast<size_t>(k.n_col));
    knuth_to_ij(k, k.n_row, k.n_col, a.data(), false);
    return a;
}
template <class T>
knuth<T> from_dense(int n_row, int n_col, const std::vector<T>& a) {
    knuth<T> k;
    ij_to_knuth(k, n_row, n_col, n_row, n_col, a.data(), false);
    return k;
}
// Random elements, half of them 0; some rows and columns without any.
std::vector<double> random_dense(int n_row, int n_col, std::mt19937& rng) {
    std::vector<double> a(static_cast<size_t>(n_row * n_col));
    for (double& x : a) x = rng() % 2 ? 1.0 + static_cast<double>(rng() % 100) : 0.0;
    const int i = static_cast<int>(rng() % static_cast<unsigned>(n_row));
    const int j = static_cast<int>(rng() % static_cast<unsigned>(n_col));
    for (int c = 0; c < n_col; ++c) a[static_cast<size_t>(i * n_col + c)] = 0;
    for (int r = 0; r < n_row; ++r) a[static_cast<size_t>(r * n_col + j)] = 0;
    return a;
}

}  // namespace

TEST(knuth, all_zero_array_has_no_entries_and_is_sound) {
    const knuth<double> k = from_dense<double>(3, 2, std::vector<double>(6, 0.0));
    EXPECT_EQ(k.nnz(), 0);
    EXPECT_EQ(k.srow, std::vector<int>(3, -1));
    EXPECT_EQ(k.erow, std::vector<int>(3, -1));
    EXPECT_EQ(k.scol, std::vector<int>(2, -1));
    EXPECT_EQ(k.ecol, std::vector<int>(2, -1));
    check_knuth(k, "all zero");
}

TEST(knuth, exact_zeros_are_dropped_and_tiny_values_kept) {
    const knuth<double> k = from_dense<double>(1, 3, {0.0, 1e-300, -0.0});
    ASSERT_EQ(k.nnz(), 1);
    EXPECT_EQ(k.val[0], 1e-300);
    EXPECT_EQ(k.col[0], 1);
}

TEST(knuth, conversion_of_a_part_of_an_array_uses_its_width) {
    const std::vector<double> a = {1, 2, 9, 3, 4, 9};  // room for 2 x 3, of which 2 x 2
    knuth<double> k;
    ij_to_knuth(k, 2, 2, 2, 3, a.data(), false);
    EXPECT_EQ(k.val, (std::vector<double>{1, 2, 3, 4}));
    std::vector<double> b(6, 7.0);
    knuth_to_ij(k, 2, 3, b.data(), false);
    EXPECT_EQ(b, (std::vector<double>{1, 2, 7, 3, 4, 7}));
}

TEST(knuth, entries_in_any_order_leave_ascending_lists_and_slots_in_insertion_order) {
    std::mt19937 rng(1);
    for (int trial = 0; trial < 100; ++trial) {
        std::vector<int> places(30);
        std::iota(places.begin(), places.end(), 0);
        std::shuffle(places.begin(), places.end(), rng);
        knuth<double> k;
        knuth_zero(k, 5, 6);
        for (int s = 0; s < 20; ++s) {
            const int p = places[static_cast<size_t>(s)];
            knuth_addentry(k, p / 6, p % 6, 100.0 + p);
            ASSERT_EQ(k.nnz(), s + 1);
            EXPECT_EQ(k.row[static_cast<size_t>(s)], p / 6);
            EXPECT_EQ(k.col[static_cast<size_t>(s)], p % 6);
            check_knuth(k, "after one entry");
        }
        for (int s = 0; s < 30; ++s) {
            const int p = places[static_cast<size_t>(s)];
            EXPECT_EQ(knuth_check_ij(k, p / 6, p % 6), s < 20 ? s : -1);
        }
    }
}

TEST(knuth, new_first_middle_and_last_column_find_their_place) {
    knuth<double> k;
    knuth_zero(k, 1, 5);
    for (const int c : {2, 4, 0, 3, 1}) knuth_addentry(k, 0, c, 1.0);
    EXPECT_EQ(row_of(k, 0), (std::vector<int>{0, 1, 2, 3, 4}));
    EXPECT_EQ(k.srow[0], 2);
    EXPECT_EQ(k.erow[0], 1);
}

TEST(knuth, second_entry_at_a_position_halts) {
    knuth<double> k;
    knuth_zero(k, 2, 3);
    knuth_addentry(k, 1, 0, 1.0);
    knuth_addentry(k, 1, 2, 1.0);
    EXPECT_HALT(knuth_addentry(k, 1, 2, 5.0),
                "knuth_addentry: i_col=col_given !\n  Something wrong with the system matrix?\n"
                "  i_col = 2, col_given = 2\n  row_given = 1\n  Halting...\n");
    knuth<complex_double> c;
    knuth_zero(c, 1, 1);
    knuth_addentry(c, 0, 0, {1, 1});
    EXPECT_HALT(knuth_addentry(c, 0, 0, {1, 1}),
                "knuth_addentry_c: i_col=col_given !\n  Something wrong with the system matrix?\n"
                "  i_col = 0, col_given = 0\n  row_given = 0\n  Halting...\n");
}

TEST(knuth, damaged_lists_end_an_insertion_instead_of_hanging_it) {
    knuth<double> k;
    knuth_zero(k, 1, 4);
    knuth_addentry(k, 0, 0, 1.0);
    knuth_addentry(k, 0, 1, 1.0);
    k.prow[1] = 0;
    k.erow[0] = -1;  // a ring without an end
    EXPECT_HALT(knuth_addentry(k, 0, 3, 1.0), "knuth_addentry: did not exit from outer loop. Halting...\n");
    knuth<double> c;
    knuth_zero(c, 4, 1);
    knuth_addentry(c, 0, 0, 1.0);
    knuth_addentry(c, 1, 0, 1.0);
    c.pcol[1] = 0;
    c.ecol[0] = -1;
    EXPECT_HALT(knuth_addentry(c, 3, 0, 1.0), "knuth_addentry: did not exit from inner loop. Halting...\n");
}

TEST(knuth, empty_row_has_no_entry_to_find) {
    knuth<double> k;
    knuth_zero(k, 2, 2);
    EXPECT_EQ(knuth_check_ij(k, 0, 1), -1);
}

TEST(knuth, sizes_beyond_the_room_halt) {
    knuth<double> k;
    knuth<complex_double> c;
    const double a[1] = {1};
    const complex_double b[1] = {1};
    EXPECT_HALT(ij_to_knuth(k, 2, 1, 1, 1, a, false),
                "ij_to_knuth: n_row too large.\n  n_row = 2, m_row = 1\n  Halting...\n");
    EXPECT_HALT(ij_to_knuth(k, 1, 3, 1, 2, a, false),
                "ij_to_knuth: n_col too large.\n  n_col = 3, m_col = 2\n  Halting...\n");
    EXPECT_HALT(ij_to_knuth(c, 2, 1, 1, 1, b, false),
                "ij_to_knuth_c: n_row too large.\n  n_row = 2, m_row = 1\n  Halting...\n");
    knuth_zero(k, 2, 3);
    double out[6];
    EXPECT_HALT(knuth_to_ij(k, 1, 3, out, false),
                "knuth_to_ij: n_row too large.\n  n_row = 2, m_row = 1\n  Halting...\n");
    EXPECT_HALT(knuth_to_ij(k, 2, 2, out, false),
                "knuth_to_ij: n_col too large.\n  n_col = 3, m_col = 2\n  Halting...\n");
}

TEST(knuth, joins_equal_those_of_the_dense_arrays) {
    std::mt19937 rng(2);
    for (int trial = 0; trial < 200; ++trial) {
        const int n = 1 + static_cast<int>(rng() % 5), p = 1 + static_cast<int>(rng() % 5),
                  q = 1 + static_cast<int>(rng() % 5);
        const std::vector<double> a = random_dense(p, n, rng), b = random_dense(q, n, rng);
        knuth<double> k_a = from_dense(p, n, a), k_b = from_dense(q, n, b), c;
        knuth_append_2(k_a, k_b, c);
        check_knuth(c, "above each other");
        std::vector<double> joined = a;
        joined.insert(joined.end(), b.begin(), b.end());
        EXPECT_EQ(dense_of(c), joined);
        for (int s = 0; s < k_b.nnz(); ++s)  // a row of the lower block is reached through the shifted slots
            EXPECT_EQ(knuth_check_ij(c, p + k_b.row[static_cast<size_t>(s)], k_b.col[static_cast<size_t>(s)]),
                      k_a.nnz() + s);
        knuth<double> in_place = k_a;
        knuth_append_2a(in_place, k_b);
        EXPECT_EQ(in_place.prow, c.prow);
        EXPECT_EQ(dense_of(in_place), joined);

        const std::vector<double> d = random_dense(n, p, rng), e = random_dense(n, q, rng);
        knuth<double> k_d = from_dense(n, p, d), k_e = from_dense(n, q, e);
        knuth_append_1(k_d, k_e, c);
        check_knuth(c, "beside each other");
        joined.assign(static_cast<size_t>(n * (p + q)), 0.0);
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < p + q; ++j)
                joined[static_cast<size_t>(i * (p + q) + j)] =
                    j < p ? d[static_cast<size_t>(i * p + j)] : e[static_cast<size_t>(i * q + j - p)];
        EXPECT_EQ(dense_of(c), joined);
        knuth_append_1a(k_d, k_e);
        check_knuth(k_d, "in place");
        EXPECT_EQ(dense_of(k_d), joined);
    }
}

TEST(knuth, joins_of_unequal_sizes_halt) {
    knuth<double> a, b, c;
    knuth_zero(a, 2, 3);
    knuth_zero(b, 1, 1);
    EXPECT_HALT(knuth_append_1(a, b, c),
                "knuth_append_1: nrow_a .ne. nrow_b?\n   nrow_a = 2, nrow_b = 1\n   Halting...\n");
    EXPECT_HALT(knuth_append_1a(a, b),
                "knuth_append_1a: nrow_a .ne. nrow_b?\n   nrow_a = 2, nrow_b = 1\n   Halting...\n");
    EXPECT_HALT(knuth_append_2(a, b, c),
                "knuth_append_2: ncol_a .ne. ncol_b?\n   ncol_a = 3, ncol_b = 1\n   Halting...\n");
    knuth<complex_double> d, e;
    knuth_zero(d, 2, 3);
    knuth_zero(e, 1, 1);
    EXPECT_HALT(knuth_append_1a(d, e),
                "knuth_append_1a_c: nrow_a .ne. nrow_b?\n   nrow_a = 2, nrow_b = 1\n   Halting...\n");
}

TEST(knuth, columns_made_from_relabelled_rows_ascend) {
    std::mt19937 rng(3);
    for (int trial = 0; trial < 100; ++trial) {
        const int n = 2 + static_cast<int>(rng() % 5);
        knuth<double> k = from_dense(n, n, random_dense(n, n, rng));
        const int i = static_cast<int>(rng() % static_cast<unsigned>(n)), j = (i + 1) % n;
        std::swap(k.srow[static_cast<size_t>(i)], k.srow[static_cast<size_t>(j)]);
        std::swap(k.erow[static_cast<size_t>(i)], k.erow[static_cast<size_t>(j)]);
        for (int& r : k.row) r = r == i ? j : r == j ? i : r;
        knuth_makecols(k);
        check_knuth(k, "rows relabelled");
        knuth<double> back = k;
        knuth_makerows(back);
        EXPECT_EQ(back.prow, k.prow);
        EXPECT_EQ(back.srow, k.srow);
        EXPECT_EQ(back.erow, k.erow);
    }
}

TEST(knuth, pattern_copy_leaves_the_values_of_the_target_alone) {
    const knuth<double> a = from_dense<double>(2, 2, {1, 2, 0, 3});
    knuth<complex_double> b;
    b.val = {{7, 7}};
    knuth_copy_1(a, b);
    EXPECT_EQ(b.val, (std::vector<complex_double>{{7, 7}, 0, 0}));
    EXPECT_EQ(b.prow, a.prow);
    knuth<double> c;
    knuth_copy(a, c);
    EXPECT_EQ(c.val, a.val);
}

TEST(knuth, one_row_and_one_column_are_single_entries_or_empty) {
    const knuth<double> row = from_dense<double>(1, 3, {1, 0, 2});
    check_knuth(row, "one row");
    EXPECT_EQ(row.scol, (std::vector<int>{0, -1, 1}));
    EXPECT_EQ(row.scol, row.ecol);
    const knuth<double> col = from_dense<double>(3, 1, {1, 0, 2});
    check_knuth(col, "one column");
    EXPECT_EQ(col.srow, col.erow);
}

TEST(knuth, compressed_columns_hold_the_entries_by_column) {
    const knuth<double> k = from_dense<double>(2, 3, {0, 5, 6, 0, 7, 0});
    std::vector<int> cn, row;
    std::vector<double> val;
    knuth_to_col_compressed(k, cn, row, val, false);
    EXPECT_EQ(cn, (std::vector<int>{0, 0, 2, 3}));
    EXPECT_EQ(row, (std::vector<int>{0, 1, 0}));
    EXPECT_EQ(val, (std::vector<double>{5, 7, 6}));
}

TEST(pattern_builder, slots_follow_first_mention_and_the_matrix_is_sound) {
    std::mt19937 rng(4);
    for (int trial = 0; trial < 50; ++trial) {
        pattern_builder pattern;
        knuth<double> by_entry;
        knuth_zero(by_entry, 9, 11);
        for (int mention = 0; mention < 150; ++mention) {
            const int r = static_cast<int>(rng() % 9), c = static_cast<int>(rng() % 11);
            int slot = knuth_check_ij(by_entry, r, c);
            EXPECT_EQ(pattern.find(r, c), slot);
            if (slot == -1) {
                slot = by_entry.nnz();
                knuth_addentry(by_entry, r, c, 0.0);
            }
            EXPECT_EQ(pattern.add(r, c), slot);
        }
        const knuth<double> k = pattern.finish<double>(9, 11);
        check_knuth(k, "built");
        EXPECT_EQ(k.row, by_entry.row);
        EXPECT_EQ(k.prow, by_entry.prow);
        EXPECT_EQ(k.pcol, by_entry.pcol);
        EXPECT_EQ(k.srow, by_entry.srow);
        EXPECT_EQ(k.ecol, by_entry.ecol);
        EXPECT_EQ(k.val, std::vector<double>(k.row.size(), 0.0));
    }
}

TEST(pattern_builder, nothing_mentioned_gives_an_empty_matrix) {
    const knuth<double> k = pattern_builder{}.finish<double>(2, 0);
    EXPECT_EQ(k.nnz(), 0);
    check_knuth(k, "empty");
}

TEST(pattern_builder, position_outside_of_the_matrix_halts) {
    pattern_builder pattern;
    pattern.add(0, 2);
    EXPECT_HALT(pattern.finish<double>(2, 2),
                "pattern_builder: entry outside of the matrix.\n  row = 0, col = 2\n  n_row = 2, n_col = 2\n"
                "  Halting...\n");
}

TEST(pattern_builder, a_million_entries_are_a_matter_of_a_second) {
    pattern_builder pattern;
    for (int i = 0; i < 250000; ++i)
        for (const int j : {i, (i + 1) % 250000, (i * 7) % 250000, 0}) pattern.add(i, j);
    const knuth<double> k = pattern.finish<double>(250000, 250000);
    EXPECT_GT(k.nnz(), 900000);
    check_knuth(k, "large");
}

TEST(knuth_write, files_can_be_read_back) {
    const std::string name = ::testing::TempDir() + "knuth_write_test.dat";
    const double v[3] = {1.5, -2, 0.125};
    vector_write(3, v, name);
    std::ifstream written(name);
    std::string first;
    std::getline(written, first);
    EXPECT_EQ(first, "0 1.5");

    std::ofstream(name) << "2 2\n1 2\n3 4\n";
    int n_row = 0, n_col = 0, n = 0;
    double a[6] = {}, x[2] = {1, 1}, rhs[2];
    ASSERT_TRUE(mat_read(n_row, n_col, 2, 3, a, name));
    EXPECT_EQ(std::vector<double>(a, a + 6), (std::vector<double>{1, 2, 0, 3, 4, 0}));
    generate_rhs(2, 2, 3, a, x, rhs);
    EXPECT_EQ(rhs[0], 3);
    EXPECT_EQ(rhs[1], 7);
    EXPECT_FALSE(mat_read(n_row, n_col, 1, 3, a, name));  // no room
    EXPECT_FALSE(vector_read(n, 1, x, name));             // "2" elements, room for 1
    std::ofstream(name) << "3 1 2\n";
    double y[3];
    EXPECT_FALSE(vector_read(n, 3, y, name));  // cut short
    std::remove(name.c_str());
    EXPECT_FALSE(vector_read(n, 3, y, name));
}

TEST(knuth_write, entries_are_one_line_each_by_row) {
    const std::string name = ::testing::TempDir() + "knuth_write_ij1.dat";
    knuth<double> k;
    knuth_zero(k, 2, 2);
    knuth_addentry(k, 1, 1, 4.0);
    knuth_addentry(k, 0, 1, 2.5);
    knuth_addentry(k, 0, 0, 1.0);
    mat_write_knuthij1(k, name);
    std::ifstream in(name);
    const std::string text((std::istreambuf_iterator<char>(in)), {});
    EXPECT_EQ(text, "0 0 1\n0 1 2.5\n1 1 4\n");
    std::remove(name.c_str());
    const console_run heard = run_and_listen([&] { mat_write_knuth_ij_console(k); });
    EXPECT_EQ(heard.text, "1 2.5\n0 4\n");
}
