// row_writers.h -- row files of a block: opening, rows, closing.
#pragma once
#include "blocks/solve_class.h"

// Creates the files of the block, or continues those with append, which must exist. Line counts start at the lines that
// a file has.
void open_out_files(solve_class& slv);
// Writes out and closes them. Halts with the name of a file that could not be written.
void close_out_files(solve_class& slv);

// Adds one to the file's line count; beyond limit_lines the run halts under the writer's name.
void count_line(solve_class& slv, int i_file, const char* writer);

// One row of each row file at a DC or start-up solution. Such rows hold no time, so flags are not looked at.
void write_dc(solve_class& slv, const circuit& c, const flags_class& flags);
