// trns_solve.h -- one solve of a transient at time_next, and what follows it.
#pragma once
#include "analyses/run_state.h"

void set_time_next(run_state& r, double t);

// The solve at time_next; l_converged tells the result. Nothing is solved in a circuit without equations: time moves
// on.
void solve_step(run_state& r);
// Static functions at the present point, by the values that the blocks and units have now.
void evaluate_functions(run_state& r);
// Halts for a step that is too small for the digits of the time, which would be repeated for ever, and for one that is
// no number.
void check_progress(const solve_class& slv, std::string_view who = "solve_trns");
// Newton along a falling conductance at time_next, from a zero iterate; a failure stops the run.
void gmin_step_trns_1(run_state& r);
// Terminal currents at a solution: those that the block asks for at each of its points; of its first point all, for a
// look at what the solution leaves.
void find_currents_trns(run_state& r);
// Function values at the start point, before the first step.
void find_functions_trns(run_state& r);
// Shifts block variables with a wrap back into their range, old values with them.
void gbce_modulo(run_state& r);
