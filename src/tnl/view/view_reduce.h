// view_reduce.h -- what a screen can show of a curve: few rows that look like all of them.
#pragma once
#include <optional>
#include <vector>

#include "tnl/view/view_columns.h"

namespace cli {

struct view_window {
    std::size_t curve = 0;
    std::vector<std::size_t> columns;  // wanted beside the axis
    std::optional<double> from, to;    // in units of the axis; none: to the curve's end
    std::size_t points = 1000;         // at most so many buckets
    bool by_rows = false;              // buckets of equal numbers of rows, not of equal widths on the axis
    int axis = 0;                      // column that the others stand over; -1: the number of the row
};

struct reduced_rows {
    bool whole = false;       // all rows of the window stand there, none is summed up
    bool row_axis = false;    // asked for, or the axis goes to and fro: x, from and to are numbers of rows from 0
    double lo = 0, hi = 0;    // the whole curve's axis
    std::size_t n_curve = 0;  // rows of the curve
    std::vector<double> x;    // [n] never falls
    std::vector<std::vector<double>> y;  // [columns][n]
};

// The rows of the window and one on each side, so that lines reach the edges. From 4 * points rows on they are put into
// buckets, and a bucket of more than four rows is told by four: its first row, all least values, all greatest values,
// its last row (the four that a line drawing of one pixel's width needs: Jugel et al., M4, 2014). A column that falls
// has the greatest value before the least one.
reduced_rows reduce(const view_rows& rows, const view_window& window);

// Values of the columns at x of the axis, between rows on the straight line; nan outside of the curve. Where the axis
// stands still, the last of the equal rows. Of the window only its curve, columns and axis count.
std::vector<double> values_at(const view_rows& rows, const view_window& window, double x);

}  // namespace cli
