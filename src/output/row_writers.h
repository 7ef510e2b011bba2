// row_writers.h -- row files of a block: opening, rows, closing.
#pragma once
#include "settings/solve_class.h"

// Creates the files of the block, or continues those with append, which must exist, and takes the places in the circuit
// that their columns show. Line counts start at the lines that
// a file has, output times at out_tstart, Fourier sums at 0.
void open_out_files(solve_class& slv, const circuit& c);
// Writes out and closes them. Halts with the name of a file that could not be written.
void close_out_files(solve_class& slv);

// Adds one to the file's line count; beyond limit_lines the run halts under the writer's name.
void count_line(solve_class& slv, int i_file, const char* writer);

// Which files a call of write_trns serves: those of one data type, or all.
enum row_mode : int { rows_digital = out_digital, rows_analog = out_analog, rows_all = 7 };

// The point of a transient at time t, s. A file takes a row, the time first, from out_tstart to out_tend, with
// fixed_interval at the first point past each interval; a Fourier file adds the point to its sums. Allocates nothing.
void write_trns(solve_class& slv, const circuit& c, int mode, double t);

// The columns of a digital row: "%3d ", or with an offset doubles, column j raised by j offsets, so that traces of a
// plot lie apart.
void put_levels(row_file& out, const std::vector<int>& level, double offset);

// One row of each row file at a DC or start-up solution. Such rows hold no time, so flags are not looked at.
void write_dc(solve_class& slv, const circuit& c, const flags_class& flags);
