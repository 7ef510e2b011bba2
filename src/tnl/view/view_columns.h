// view_columns.h -- the rows of a file by columns, each with a pyramid of least and greatest values.
#pragma once
#include <cstddef>
#include <deque>
#include <limits>
#include <string_view>
#include <vector>

#include "tnl/results/result_table.h"

namespace cli {

// Least and greatest of some values; those that are no numbers do not count. lo > hi: there is none.
struct min_max {
    double lo = std::numeric_limits<double>::infinity(), hi = -std::numeric_limits<double>::infinity();

    void add(double x) {
        if (x < lo) lo = x;
        if (x > hi) hi = x;
    }
    void add(const min_max& m) {
        if (m.lo < lo) lo = m.lo;
        if (m.hi > hi) hi = m.hi;
    }
    bool is_empty() const { return !(lo <= hi); }
};

// A column that grows. Node j of level k spans rows j * 16^(k + 1) .. (j + 1) * 16^(k + 1) - 1; only full nodes are
// kept, so growth changes none of them. The levels take 1/7 of the values' memory.
struct view_column {
    static constexpr std::size_t fan_out = 16;
    std::deque<double> values;                // [rows]
    std::vector<std::vector<min_max>> level;  // [levels][full nodes]
};
void append_value(view_column& column, double x);
min_max extremes(const view_column& column, std::size_t begin, std::size_t end);  // of rows [begin, end)

// A part of the file between blank lines.
struct view_curve {
    struct course {
        bool ascending = true, descending = true;  // never falls, never rises; both: constant; neither: to and fro
    };
    std::size_t first = 0, n = 0;  // rows
    std::vector<course> columns;
};

// All rows of one file as far as they are read.
struct view_rows {
    std::vector<view_column> columns;  // empty before the first row
    std::vector<view_curve> curves;
    std::size_t n = 0;           // rows
    long long n_lines = 0;       // lines read
    bool curve_is_open = false;  // the next row belongs to the last curve
};
// Whole lines of a file, made into rows; begins and ends with a blank line or not.
struct view_lines {
    result_table table;
    long long n_lines = 0;
    bool blank_begin = false, blank_end = false;
};
// The text is empty or ends with a line end. Throws file_error as read_result_table does.
view_lines parse_lines(std::string_view text, const std::string& path, long long first_line);
// Of a sweep over frequencies, which begins anew without a blank line: parts its curves, as split_at_restarts() does.
// rows: those before.
void part_sweeps(view_lines& lines, const view_rows& rows);
// Throws file_error, and changes nothing, when the number of columns is another.
void append_lines(view_rows& rows, const view_lines& lines);

// The column that the others stand over: the first; of several curves the first that varies within one, as the constant
// ones before it are a sweep's. -1, the number of the row, when there is but one column.
int axis_column(const view_rows& rows);

}  // namespace cli
