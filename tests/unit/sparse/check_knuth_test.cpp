// Each way in which a matrix may be damaged, and the order in which the checks speak.
#include <functional>
#include <random>

#include "base/halt.h"
#include "halt_throws.h"
#include "sparse/knuth.h"

namespace {

using std::size_t;

// Slots: (0,0) 0, (0,2) 1, (1,1) 2, (2,0) 3, (2,2) 4; row 3 and column 3 are empty.
knuth<double> sound_matrix() {
    knuth<double> k;
    const std::vector<double> a = {1, 0, 2, 0, 0, 3, 0, 0, 4, 0, 5, 0, 0, 0, 0, 0};
    ij_to_knuth(k, 4, 4, 4, 4, a.data(), false);
    return k;
}

struct damage {
    const char* what;
    std::function<void(knuth<double>&)> make;
    const char* lines;
};
const damage damages[] = {
    {"an empty row too many", [](auto& k) { k.srow[1] = -1; },
     "check_knuth: nzero_row must be equal to n_row\n  nzero_row = 5, n_row = 4\n  Halting...\n"},
    {"an empty column too many", [](auto& k) { k.scol[1] = -1; },
     "check_knuth: nzero_col must be equal to n_col\n  nzero_col = 5, n_col = 4\n  Halting...\n"},
    {"a row tail that goes on", [](auto& k) { k.erow[0] = 0; }, "check_knuth: i_row = 0, erow = 0\n  Halting...\n"},
    {"a column tail that goes on", [](auto& k) { k.ecol[2] = 1; }, "check_knuth: i_col = 2, ecol = 1\n  Halting...\n"},
    {"a tail without a head", [](auto& k) { k.erow[3] = 2; }, "check_knuth: check srow, erow (1). Halting... \n"},
    {"a head without a tail", [](auto& k) { k.erow[1] = -1; }, "check_knuth: check srow, erow (2). Halting... \n"},
    {"a column tail without a head", [](auto& k) { k.ecol[3] = 2; },
     "check_knuth: check scol, ecol (1). Halting... \n"},
    {"a column head without a tail", [](auto& k) { k.ecol[1] = -1; },
     "check_knuth: check scol, ecol (2). Halting... \n"},
    {"columns of a row out of order", [](auto& k) { k.col[0] = 2; }, "check_knuth: check prow. Halting... \n"},
    {"rows of a column out of order", [](auto& k) { k.row[0] = 2; }, "check_knuth: check pcol. Halting... \n"},
    {"an entry that columns place elsewhere", [](auto& k) { k.row[2] = 0; },
     "check_knuth: i = 0, j = 1\n  l_rowwise[i][j] = 0\n  l_colwise[i][j] = 1\n"},
    {"an entry that rows place elsewhere", [](auto& k) { k.col[2] = 0; },
     "check_knuth: i = 1, j = 0\n  l_rowwise[i][j] = 1\n  l_colwise[i][j] = 0\n"},
};

// The check by two square tables, for what it says of the reach of rows and columns.
std::string by_tables(const knuth<double>& k) {
    std::vector<std::vector<int>> by_row(static_cast<size_t>(k.n_row), std::vector<int>(static_cast<size_t>(k.n_col)));
    auto by_col = by_row;
    for (size_t i = 0; i < by_row.size(); ++i)
        for (int e = k.srow[i]; e != -1; e = k.prow[static_cast<size_t>(e)])
            by_row[i][static_cast<size_t>(k.col[static_cast<size_t>(e)])] = 1;
    for (size_t j = 0; j < k.scol.size(); ++j)
        for (int e = k.scol[j]; e != -1; e = k.pcol[static_cast<size_t>(e)])
            by_col[static_cast<size_t>(k.row[static_cast<size_t>(e)])][j] = 1;
    for (size_t i = 0; i < by_row.size(); ++i)
        for (size_t j = 0; j < by_row[i].size(); ++j)
            if (by_row[i][j] != by_col[i][j])
                return line("check_knuth: i = ", i, ", j = ", j, "\n  l_rowwise[i][j] = ", by_row[i][j],
                            "\n  l_colwise[i][j] = ", by_col[i][j], "\n");
    return "";
}

}  // namespace

TEST(check_knuth, each_damage_is_told_with_the_callers_message) {
    check_knuth(sound_matrix(), "sound");
    for (const damage& d : damages) {
        SCOPED_TRACE(d.what);
        knuth<double> k = sound_matrix();
        d.make(k);
        EXPECT_HALT(check_knuth(k, "set_mat_2: something wrong?"),
                    std::string(d.lines) + "  Message from calling routine:\n  set_mat_2: something wrong?\n");
    }
}

TEST(check_knuth, the_earlier_damage_of_the_table_speaks_first) {
    for (size_t i = 0; i + 1 < std::size(damages); ++i)
        for (size_t j = i + 1; j < std::size(damages); ++j) {
            const std::string pair = std::string(damages[i].what) + ", " + damages[j].what;
            SCOPED_TRACE(pair);
            knuth<double> k = sound_matrix();
            damages[i].make(k);
            damages[j].make(k);
            const console_run heard = run_and_listen([&] { check_knuth(k, "m"); });
            ASSERT_TRUE(heard.stopped);
            const std::string lines = damages[i].lines;
            // Counts may differ where both damages add to one; the kind of the complaint is that of the earlier.
            EXPECT_EQ(heard.text.substr(0, heard.text.find('\n')).substr(0, 25),
                      lines.substr(0, lines.find('\n')).substr(0, 25));
        }
}

TEST(check_knuth, first_difference_of_rows_and_columns_is_that_of_the_square_tables) {
    std::mt19937 rng(7);
    int n_told = 0;
    for (int trial = 0; trial < 3000; ++trial) {
        const int n = 2 + static_cast<int>(rng() % 4);
        std::vector<double> a(static_cast<size_t>(n * n));
        for (double& x : a) x = rng() % 2;
        knuth<double> k;
        ij_to_knuth(k, n, n, n, n, a.data(), false);
        if (k.nnz() == 0) continue;
        std::vector<int>& index = rng() % 2 ? k.row : k.col;
        index[rng() % index.size()] = static_cast<int>(rng() % static_cast<unsigned>(n));
        const console_run heard = run_and_listen([&] { check_knuth(k, "m"); });
        if (heard.text.find("check p") != std::string::npos) continue;
        const std::string told = by_tables(k);
        ASSERT_EQ(heard.text, told.empty() ? "" : told + "  Message from calling routine:\n  m\n") << trial;
        n_told += heard.stopped;
    }
    EXPECT_GT(n_told, 200);
}

TEST(check_diag_knuth, first_empty_row_halts) {
    EXPECT_HALT(check_diag_knuth(sound_matrix()), "check_diag_knuth: i_row = 3\n   No diaginal entry? Halting...\n");
    knuth<double> k;
    knuth_zero(k, 1, 2);
    knuth_addentry(k, 0, 1, 1.0);  // not on the diagonal, and still no complaint
    check_diag_knuth(k);
}
