// dc.h -- where a solve starts from, one dc or start-up point, and the stepping that helps Newton.
#pragma once
#include "analyses/run_state.h"

// The start of a block: from a file, from guesses, or from what the block before left.
void init_sol(run_state& r);
// Asks every unit for its first guess.
void init_guess(run_state& r);

// Newton along a falling conductance across the junctions, and where that fails along falling conductances from the
// nodes to the reference; a failure of both stops the run.
void gmin_step_dc_1(run_state& r);

// One dc point, with terminal currents and output parameters at its end. Leaves without them and without a row when an
// automatic sweep may still try a smaller step: l_converged is then 0.
void solve_dc(run_state& r);
// The state at the start of a transient, from the start-up equations and values of the units.
void solve_startup(run_state& r);
