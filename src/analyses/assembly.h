// assembly.h -- calls all units at an iterate and adds what they give into the system.
#pragma once
#include "analyses/run_state.h"

// One assembly at the present values for the analysis of the system: rhs_m = F(x), in a transient without the
// derivative terms of state rows; and unless only_function also val_m = dF/dx, with them. Makes the plan of a new
// system.
void form_jac_rhs(run_state& r, bool only_function);

// Function values of the state rows, from what the models gave last. Those of blocks follow every assembly, those of
// electrical units the passes behind a solve.
void keep_state_functions(run_state& r, bool of_blocks);
