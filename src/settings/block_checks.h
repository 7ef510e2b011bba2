// block_checks.h -- what a solve block must satisfy before it may run.
#pragma once
#include "settings/solve_class.h"

// Tests the settings against each other and against the circuit, in the order in which faults are to show, and fills
// what follows from several settings: default steps, period, sweep sizes, frequencies. Some combinations only warn and
// switch a setting off.
void check_block(solve_class& slv, const circuit& c, flags_class& flags);
