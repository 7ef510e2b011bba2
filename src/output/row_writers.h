// row_writers.h -- row files of a block: opening, rows, closing.
#pragma once
#include "settings/solve_class.h"

// Creates the files of the block, or continues those with append, which must exist, and takes the places in the circuit
// that their columns show. Line counts start at the lines that
// a file has, output times at out_tstart, Fourier sums at 0.
void open_out_files(solve_class& slv, const circuit& c);
// Writes out and closes them. Halts with the name of a file that could not be written.
void close_out_files(solve_class& slv);

// Whether points of the block become rows of the file.
bool gets_rows(const out_file& file);

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

// One row of each row file at the frequency slv.now.freq: the frequency, Hz, or rad/s without output_hz, then modulus
// and phase (degrees) of amplitudes, or with nyquist their real and imaginary parts. Phases are kept above min_phase or
// below max_phase by whole turns; without these words they go on from the row before, which they may differ from by
// delta_phase. The first row of a sweep over frequencies starts anew. Allocates nothing.
void write_ac(solve_class& slv, const circuit& c, const flags_class& flags);

// The phase of z in degrees as a small-signal file writes it; before: that of the row before, null at the first one.
double written_phase(const std::complex<double>& z, const out_file& file, const double* before);
