// export.h -- rows in the formats of other programs.
#pragma once
#include <cstddef>
#include <string>
#include <vector>

#include "tnl/common/output_file.h"
#include "tnl/results/result_table.h"

namespace cli {

// What small signals become on the way out.
enum class small_signal_form { as_it_is, cartesian, polar };  // real_of_X and imag_of_X; mag_of_X and phase_of_X

// A table of these columns of the table, in order, all if none is named. A small signal's name stands for its two
// columns; where the form is another, both its columns are converted together. Throws usage_error.
result_table chosen_columns(const result_table& table, const std::vector<std::string>& names, small_signal_form form);

// What goes out: these columns of these curves. The first column is the axis where the format has one.
struct export_choice {
    const result_table& table;
    std::vector<std::size_t> columns;
    std::size_t first_curve = 0, end_curve = 0;
    std::string title, date;  // of the run
    bool with_units = false;  // csv, tsv: "name [unit]"
    bool binary = false;      // raw: numbers as bytes
    bool buses = false;       // vcd: bits of a number as one vector
};

// Comma-separated values, RFC 4180: lines end in CR LF, names in quotes where need be. The shortest numbers that read
// back as the same. Several curves: a column "curve" in front, from 1.
void write_csv(const export_choice& c, output_file& out);
// The same with tabs and LF; names have no tabs or line ends.
void write_tsv(const export_choice& c, output_file& out);
// NumPy's file of one array, version 1.0 (2.0 when the names need it): little-endian doubles, a field a column, so that
// a["vout"] is one. Names are made unique. Several curves: a field "curve" in front.
void write_npy(const export_choice& c, output_file& out);
// The rawfile of the simulators that descend from Berkeley's: one plot a curve; names without blanks. Numbers are real;
// over frequency they are complex: real_of_X and imag_of_X behind one another are X, all else has no imaginary part,
// and the frequency is in Hz.
void write_raw(const export_choice& c, output_file& out);
// Value change dump, IEEE 1364-2001, section 18, of one curve over time in s. Columns of levels are wires of one bit, x
// where unknown, or vectors; other columns of two values are wires too, their levels in a comment; the rest is real.
// Throws file_error where time falls, is no number or below 0. The timescale is the coarsest at which every time stays
// within a thousandth of the shortest step from its sample and no two become one, 1 fs at the finest; of samples at one
// time the last counts.
void write_vcd(const export_choice& c, output_file& out);

// The shortest text that reads back as the same number; nan, inf and -inf.
char* put_number(char* at, double x);  // at most 32 characters

// Names as they are, but with "_2", "_3" ... behind those that stood before.
std::vector<std::string> unique_names(std::vector<std::string> names);

}  // namespace cli
