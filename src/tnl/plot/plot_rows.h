// plot_rows.h -- from row tables to the panels of a picture.
#pragma once
#include <optional>
#include <string>
#include <vector>

#include "tnl/plot/plot.h"
#include "tnl/results/result_table.h"

namespace cli {

// Columns of one table. Several of them are drawn over one another.
struct plot_source {
    const result_table* table = nullptr;
    std::string run;            // tells its series from those of the others; empty when it is the only one
    int x = 0;                  // column; -1: the number of the row
    std::vector<int> columns;   // in order
    std::vector<double> times;  // factor of each column; empty: 1
};
struct plot_y_range {
    std::string column;            // of the panel that is meant; empty: all panels
    std::optional<double> lo, hi;  // none: as the values need it
};
struct plot_choice {
    std::string title;
    bool stack = false;  // a panel for each column instead of one for each unit
    bool logic = false;  // columns with two values get lanes, as levels of digital files always do
    bool bits = false;   // a lane for each bit, instead of one for q0 q1 q2 ...
    bool log_x = false, log_y = false;
    bool locus = false;              // curves in the complex plane: axes of equal lengths, and the point -1
    std::optional<double> from, to;  // of x
    bool from_zero = false;          // x counts from the begin of the window
    std::vector<std::vector<std::string>> panels;  // names of columns that share a panel
    std::vector<plot_y_range> y;
};

// The column that the others are drawn over: the first; in a sweep the one that steps along the curves, as far as the
// record tells it, else the first that varies within a curve. -1, the number of the row, when there is but one column,
// or one row for each start-up solution.
int x_column_of(const result_table& table);
// What is drawn when no column is named: all but x and the columns that show but what a sweep of several curves sets.
std::vector<int> drawn_columns(const result_table& table, int x);
// The values of a sweep in curve k: "r_of_R1 = 10 ohm, c_of_C1 = 1 uF".
std::string text_of_sweeps(const std::vector<record_sweep>& sweeps, std::size_t k);
// A column that is constant in each curve and not the same in all tells the curves apart; -1 if none.
int sweep_column_of(const result_table& table);

// Of more curves of a sweep than this, the first and the last one are named.
inline constexpr std::size_t most_named_curves = 9;
// Curves keep the points that a picture of up to n_bins columns can show. Throws usage_error for ends of y axes that no
// panel has, or that a logarithmic one cannot have.
plot plot_of_rows(const std::vector<plot_source>& sources, const plot_choice& choice, int n_bins = 1500);

}  // namespace cli
