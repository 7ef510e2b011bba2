// evaluation_order.h -- the order in which explicit blocks are evaluated.
#pragma once
#include "elaborate/circuit.h"

// Fills the order of c.xbeu: states, held values and sources are known; the other blocks fall into passes, each block
// into the first one in which all its inputs are known. Halts for a variable that two blocks write, for blocks that are
// left after 20 passes (as in an algebraic loop), and for an integrator or a delay with an input that nothing writes.
// Networks of blocks are solved together: they have no order.
void find_evaluation_order(circuit& c);
