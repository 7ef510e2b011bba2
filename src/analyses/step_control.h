// step_control.h -- break points that units ask for, and the error of a TR-BDF2 step.
#pragma once
#include "analyses/run_state.h"

// First query of all units that limit the step.
void find_nextbreak(run_state& r);
// Asks again those whose break lies within the next step, and those that keep history.
void check_tnext1(run_state& r);
// Shortens delt to end on the earliest break that lies at least delt_min ahead.
void check_tnext2(run_state& r);

double trbdf2_constant(double gamma);
// Estimates the local error of the step just done: sets delt_new, and gives whether the step is accepted.
bool trzbdf2_1(run_state& r);
