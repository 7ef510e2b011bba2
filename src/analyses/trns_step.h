// trns_step.h -- one step of a transient: tries of it by the rule of the block, until one is kept.
#pragma once
#include "analyses/events.h"
#include "analyses/run_state.h"

// From time_present by delt, to time_next; delt is the next step's then, as the rule wants it. A step that cannot be
// made stops the run.
void take_step(run_state& r, event_control& events);
