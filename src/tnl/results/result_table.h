// result_table.h -- a row file in memory.
#pragma once
#include <cmath>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tnl/common/run_record.h"

namespace cli {

// Rows of numbers; blank lines between them part the curves. Row i has values[i * n_columns] and the following.
struct result_table {
    std::string path;                       // of the file, for messages
    std::string kind;                       // of its record_file; empty: unknown
    bool begins_with_guess = false;         // as in its record_file
    bool digital = false;                   // its columns are integers that hold until the next row
    std::vector<record_sweep> sweeps;       // as there; of runs whose curves are all here
    std::vector<record_column> columns;     // [n_columns]
    std::vector<double> values;             // [n_rows * n_columns]
    int swept_column = -1;                  // of a sweep at one frequency: what the rows stand over; -1: none
    int steps_column = -1;                  // of a sweep point by point: what steps along the curves; -1: none
    std::vector<char> is_swept;             // [n_columns] whether a column shows but what such a sweep sets; or empty
    std::vector<std::size_t> first_row{0};  // [n_curves + 1] rows of curve k: first_row[k] .. first_row[k + 1] - 1

    std::size_t n_columns() const { return columns.size(); }
    std::size_t n_rows() const { return first_row.back(); }
    std::size_t n_curves() const { return first_row.size() - 1; }
    double at(std::size_t row, std::size_t column) const { return values[row * n_columns() + column]; }
};

// Columns get the names "c1", "c2" ... A last line without line end is dropped, as a run that was cut may have left it
// unfinished; nan and inf are numbers. Throws file_error when a line holds other things than numbers, or more or less
// of them than the first row; the text begins with line first_line of the file.
result_table read_result_table(std::string_view text, const std::string& path, long long first_line = 1);

// One value a row. The table has rows.
void add_column(result_table& table, const record_column& column, const std::vector<double>& values);

// Rows of a digital file as they stand become levels and states: column j behind the time, from 0, loses j offsets.
void take_off_offset(result_table& table, const record_file& file);

// Number of a column by its name; an integer from 1 counts columns. -1 if there is none.
int find_column(const result_table& table, std::string_view name);

// The columns of a small signal X: mag_of_X and phase_of_X, or real_of_X and imag_of_X; -1 for what is missing.
struct response_columns {
    int mag = -1, phase = -1, real = -1, imag = -1;
    bool is_cartesian() const { return real >= 0 && imag >= 0; }
    bool any() const { return mag >= 0 || phase >= 0 || is_cartesian(); }
};
response_columns find_response(const result_table& table, std::string_view name);
// Whether expressions may use the name: a column, or else a small signal.
bool has_quantity(const result_table& table, std::string_view name);

// Rows over frequency: between two of them, curves are straight over its logarithm.
bool is_over_frequency(const result_table& table);

// Begins a curve wherever the first column comes back to the value that the curve began with, as a sweep around all
// frequencies does. Rows of one frequency alone stay together. open: a curve that goes on in the first row; true: it
// does not.
struct open_curve {
    double first = NAN;   // of the first column; NaN: there is none
    bool varied = false;  // it has had other values since
};
bool split_at_restarts(result_table& table, open_curve open = {});

}  // namespace cli
