// explicit_network.h -- explicit blocks that are solved together: networks, and diagrams without an order.
#pragma once

struct run_state;

// With flags->x_matrix the system of the blocks: unknowns, pattern, factors; halts when it is not square. Else none.
void prepare_network(run_state& r);
// Unknowns at the time flags->time_given_x with the states as they stand, then the slopes. Halts without a solution.
void solve_network(run_state& r);
