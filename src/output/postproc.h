// postproc.h -- results that are computed from the finished row files of a block.
#pragma once
#include "settings/solve_class.h"

// Each writes the one row of a file of results (postproc_plan.h), in the order of the file's variables. Both are called
// when the files of the block are closed.

// File i_file, whose variables are results of a transient; its out_tstart to out_tend is the span. Halts when the rows
// do not reach over the span, or a column cannot be had.
void postproc_1(const solve_class& slv, const circuit& c, int i_file);
// The same for results of small signals, out of files of one row.
void postproc_1_ac(const solve_class& slv, const circuit& c, int i_file);
