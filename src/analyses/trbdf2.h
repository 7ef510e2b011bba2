// trbdf2.h -- TR-BDF2: steps of two stages whose error chooses their size.
#pragma once
#include "analyses/events.h"
#include "analyses/run_state.h"

// Tries of a step until one is accepted; as take_step. False: an event has cut the step, and it is to be tried again.
bool trbdf2_step(run_state& r, event_control& events);

double trbdf2_constant(double gamma);
// Estimates the local error of the step just done: sets delt_new, and gives whether the step is accepted.
bool trzbdf2_1(run_state& r);
