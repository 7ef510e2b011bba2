// plot_runs.h -- from the words behind "tnl plot" to the tables and columns that are drawn.
#pragma once
#include <list>
#include <string>
#include <vector>

#include "tnl/plot/plot_rows.h"

namespace cli {

struct plot_wish {
    std::string file;  // of the run; empty: that with most of the columns, the finest of equals
    std::string x;     // column; empty: x_column_of()
    std::vector<std::vector<std::string>> panels;  // columns and expressions that share a panel
    // Of small signals: the frequency on a linear axis, magnitudes as they are, curves in the complex plane.
    bool linear_x = false, linear_y = false, nyquist = false;
    plot_choice choice;  // an empty title: the deck's
};
struct plotted_runs {
    std::list<result_table> tables;
    std::vector<plot_source> sources;
    plot_choice choice;
    std::vector<std::string> notes;  // for standard error
};
// The first word is a run; a further one is a column if a file of the runs before it has that name or number, else a
// run, else an expression over columns, as `tnl measure` has them, which is drawn as a column of that name. A small
// signal X, of mag_of_X and phase_of_X, is drawn as both, magnitudes in dB over phases over a logarithmic frequency; of
// a nyquist file in the complex plane. Throws usage_error for a word that is neither, file_error for what cannot be
// read or has no rows.
plotted_runs open_plotted(const std::vector<std::string>& words, const plot_wish& wish);

}  // namespace cli
