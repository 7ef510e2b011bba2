// ac.h -- small-signal analysis: a complex linear solve at each frequency around the bias point that the tables hold.
#pragma once
#include "analyses/run_state.h"

// A whole ac block: every instance must have a small-signal half ("ccmain: There are no AC statements in this ece: "),
// then for each point of the sweeps all frequencies, a row of the block's files for each. The bias point is what the
// last block left; a sweep does not find another one, but derivatives at it are taken anew at each point.
void run_ac(run_state& r);

// Binds the models of small signals, lays the system out and plans its assembly, for the outputs of the block.
void set_mat_1_ac(run_state& r);
// Calls the elements that declare calc_acp at the bias point.
void calc_acparms(run_state& r);
// Derivatives at the bias point for the units that take them from an element, and all that does not ask for the
// frequency. Once for each point of the sweeps.
void take_bias(run_state& r);
// Amplitudes at the frequency slv.now.freq, rad/s. Prints and takes a new order of pivots where a pivot vanishes or the
// solution leaves a residual; halts where that does not help. Allocates nothing.
void solve_ac(run_state& r);
// Terminal currents of some small-signal units.
void find_ebe_cur_ac(run_state& r, const std::vector<int>& units);
