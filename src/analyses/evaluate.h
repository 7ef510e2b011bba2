// evaluate.h -- gathers the arguments of units, calls their models, and adds what they give into the system.
#pragma once
#include "analyses/run_state.h"

// Node values to terminals and sensed nodes, branch currents to sensed branches.
void ebce_form_arrays(run_state& r);

// One assembly for dc at the present values: rhs_m = F(x), and unless only_function also val_m = dF/dx.
void form_jac_rhs_dc(run_state& r, bool only_function);

// Calls every unit for its once-only parameters.
void one_time_parms(run_state& r);
// Calls the units that keep history, at an accepted point.
void save_history(run_state& r);
// Calls every unit for the parameters that outputs read.
void ebce_ov_prm(run_state& r);
// Terminal currents and local variables at a dc solution.
void find_ebe_cur_dc(run_state& r);
