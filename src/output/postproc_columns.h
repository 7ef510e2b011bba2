// postproc_columns.h -- columns of finished row files. A file is read line by line, so that it may be far larger than
// what is kept of it; empty lines are no rows. Column 0 is the time, s, or the frequency.
#pragma once
#include <string>
#include <vector>

// The rows of a transient whose time lies in a span, and some of their columns.
struct trns_columns {
    std::vector<double> t;               // [n] s
    std::vector<std::vector<double>> x;  // [columns asked for][n]
};

// Number of rows with t_start <= time <= t_end, s.
std::size_t file_count_lines_trns_1(const std::string& path, double t_start, double t_end);
// Their times and these columns. Halts where such a row has fewer, or holds what is no number.
trns_columns file_trns_get_col(const std::string& path, double t_start, double t_end, const std::vector<int>& columns);
// Halts unless the rows reach from t_start to t_end, each within 1.01 of their largest step, and their times do not
// fall. One row alone has no step, and passes.
void check_trns_1(double t_start, double t_end, const std::vector<double>& t);

// These columns of the first row, and whether it is the only one. Halts as above.
struct ac_columns {
    bool single = false;
    std::vector<double> x;  // [columns asked for]; empty when the file has no row
};
ac_columns file_ac_get_col(const std::string& path, const std::vector<int>& columns);
