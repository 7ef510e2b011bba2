// residual.h -- whether what a solver accepted is a solution: the currents that do not balance at its nodes.
#pragma once
#include "analyses/run_state.h"

// Looks at the present point, for whose variables all terminal currents must stand in cur_nd. A node is bad when the
// sum of its terminal currents is above 1e-3 of the largest of them, above 1e-9 A, and more than rounding makes of the
// terms of its row. Keeps the bad node with the largest sum, or none. A block that has told one is not looked at again.
void find_residual(run_state& r);
// Tells what find_residual has kept of the last point, once a block, on the console.
void tell_residual(run_state& r);
