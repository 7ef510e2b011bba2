// sweep.h -- the points of a dc or start-up block: one, a grid of tables, or an automatic sweep.
#pragma once
#include "analyses/run_state.h"

// Solves every point of the block and writes its rows.
void run_dc_sweeps(run_state& r);
