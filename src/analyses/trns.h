// trns.h -- the time loop.
#pragma once
#include "analyses/run_state.h"

// Walks the circuit from t_start to t_end by the method of the block and writes its rows. A run that is cut off by
// itmax_trns warns and returns; a step that cannot be solved stops the run.
void solve_trns(run_state& r);
