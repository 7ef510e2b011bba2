// fourier.h -- harmonics of the columns of a file: sums during the run, a report at the end of the block.
#pragma once
#include "settings/solve_class.h"

// Sizes and clears the sums of a file with fourier on.
void start_fourier(out_file& file);

// Takes file.value as the values at time t. Times do not fall. Sums run from out_tstart to out_tend; the intervals
// across the two are cut there, on the straight line between their points.
void add_fourier_point(out_file& file, double t);

// Writes three rows per harmonic, so that a plot shows sticks: 0, amplitude, 0 at k - 0.0001, k, k + 0.0001; harmonic 0
// is the mean. Tells the distortion of every column on the console: the root of the summed squares of harmonics 2 and
// up over harmonic 1, in percent. Call it before close_out_files. Does nothing for files without fourier.
void write_fourier(solve_class& slv);
