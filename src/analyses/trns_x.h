// trns_x.h -- transients of explicit blocks: alone, or one step at a time beside a circuit.
#pragma once

struct run_state;

// First values of a circuit of blocks alone: the solution before, that of a file, or their first guesses.
void init_sol_x(run_state& r);
// The same beside a circuit, but for the solution before: tables are cleared, then guessed unless a file has them.
void guess_explicit(run_state& r);
// A transient of such a circuit. Halts with the system's texts; rows are written as it goes.
void solve_trns_x(run_state& r);

// The explicit side of a mixed transient: its blocks as they stand at the start.
void start_explicit_side(run_state& r);
// One step of it, if the analog step ahead reaches its next time. True if it moved.
bool solve_trns_x_onestep(run_state& r);
