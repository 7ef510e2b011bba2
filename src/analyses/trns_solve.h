// trns_solve.h -- one solve of a transient at time_next, and what follows it.
#pragma once
#include "analyses/run_state.h"

void solve_newton_trns(run_state& r);  // l_converged tells the result
void solve_linear_trns(run_state& r);
// Newton along a falling conductance at time_next, from a zero iterate; a failure stops the run.
void gmin_step_trns_1(run_state& r);
// Terminal currents at a solution: those that the block asks for at each of its points; of its first point all, for a
// look at what the solution leaves.
void find_currents_trns(run_state& r);
// Function values at the start point, before the first step.
void find_functions_trns(run_state& r);
// Shifts block variables with a wrap back into their range, old values with them.
void gbce_modulo(run_state& r);
