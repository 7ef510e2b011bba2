// evaluate.h -- gathers the arguments of units, calls their models, and adds what they give into the system.
#pragma once
#include "analyses/run_state.h"

// Node values to terminals and sensed nodes, branch currents to sensed branches, general variables to their readers.
void ebce_form_arrays(run_state& r);
// General variables to the blocks' own copies.
void gbce_form_arrays(run_state& r);

// One assembly at the present values for the analysis of the system: rhs_m = F(x), in a transient without the
// derivative terms of state rows; and unless only_function also val_m = dF/dx, with them. Makes the plan of a new
// system.
void form_jac_rhs(run_state& r, bool only_function);

// Adds the derivative terms of state rows to rhs_m; only_function: under the trapezoidal rule without the row's old
// function value.
void add_trns_terms(run_state& r, bool only_function);
// The factor of d/dx of the present method, 1/s.
double method_constant(const solve_class& slv);

// Calls every unit for its once-only parameters.
void one_time_parms(run_state& r);
// Calls the units that keep history, at an accepted point; the blocks that may restart.
void save_history(run_state& r);
void treat_reset(run_state& r);
// Calls every unit for the parameters that outputs read; in a transient only those that some file shows.
void ov_prm(run_state& r);
void ov_prm_of_files(run_state& r);

// Terminal currents and local variables at a solution.
void find_ebe_cur_dc(run_state& r);
void find_ebe_cur_startup(run_state& r);
// The same in a transient. with_ddt: total values of functions with a derivative, and their currents; without: their
// static values alone.
void find_ebe_cur_trns(run_state& r, bool with_ddt);
// Whether the currents of all units are found at each solution: for a file that may be written in the middle of the
// run, and where a reset changes what units see behind the solution.
bool keeps_all_currents(const run_state& r);
// Currents of the units that the accepted points of a transient left out.
void find_left_out_currents(run_state& r);
// Currents of the others, if the accepted points did not need them; behind the last one, before it becomes the old one.
void find_waiting_currents(run_state& r);
// Function values of all blocks in a transient.
void find_block_functions(run_state& r);
