// shunt_steps.h -- a dc point by way of conductances from every node to the reference, for circuits that neither plain
// Newton nor gmin stepping solves.
#pragma once
#include "analyses/run_state.h"

// Begins at 0 V with 1 S at every node, where Newton cannot fail for long, and takes the conductances away: by a ratio
// that grows while Newton needs few iterations and shrinks after a step that failed, which is made again from the last
// point that was found. Then a solve without them. flags.gmin must stand at its last value. Newton's settings are those
// of gmin stepping without damping, and it takes no more iterations than that may. Says that it begins and what it
// found, or nothing more. l_converged tells the result.
void shunt_step_dc(run_state& r);

// Adds the conductances that stand to the rows of the nodes, and to the matrix unless only the function is wanted.
void add_shunts(run_state& r, bool only_function);
