// accepted_point.h -- what is asked of units behind a solve: currents, histories, restarts, output parameters.
#pragma once
#include "analyses/run_state.h"

// Calls the units that keep history, at an accepted point; the blocks that may restart.
void save_history(run_state& r);
void treat_reset(run_state& r);
// Calls the units whose parameters some file shows.
void ov_prm_of_files(run_state& r);
// Rows of the analog files at the present time, with the parameters that they show.
void write_analog_row(run_state& r);

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
