// solution_file.h -- files of the whole state.
#pragma once
#include "settings/solve_class.h"

// Writes all unknowns into the block's solution file, under fixed titles in fixed order; 7 digits. Event times
// of digital units would stand relative to flags.t_end; there are none yet.
void write_solution(solve_class& slv, const circuit& c, const flags_class& flags);
// Reads them back from slv.task.init_sol_path. The file must come from the same circuit: titles are passed over, and
// each section has as many numbers as the circuit has values. Halts when it has fewer.
void read_solution(const solve_class& slv, circuit& c, const flags_class& flags);
// The amplitudes of the last frequency, under titles: real and imaginary part of one on a line.
void write_solution_ac(solve_class& slv, const circuit& c, const flags_class& flags);
