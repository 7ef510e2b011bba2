// trns_step.h -- one step of a transient: tries of it by the rule of the block, until one is kept.
#pragma once
#include "analyses/events.h"
#include "analyses/run_state.h"

// The point that a step starts from is kept as the accepted one, the accepted one before it as the second.
void keep_point_1(run_state& r);  // present -> 1
void keep_point_2(mat_class& m);  // 1 -> 2

void set_time_next(run_state& r, double t);

// From time_present by delt, to time_next; delt is the next step's then, as the rule wants it. A step that cannot be
// made stops the run.
void take_step(run_state& r, event_control& events);
