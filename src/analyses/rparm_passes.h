// rparm_passes.h -- blocks that write and read parameters of elements, between the steps of a transient.
#pragma once
#include "analyses/run_state.h"

// Before the first step: every reader's parameter must stand in exactly one place of the units; halts else.
void check_rparm_sources(const circuit& c);

// The writers' variables at the accepted point into their parameters: instance, units, what the units derive from it,
// and, where events are heeded, the breaks that they ask for. Gives whether a parameter has changed. Halts for a value,
// or one that is derived from it, that is no finite number.
bool set_rparm_2(run_state& r);
// The parameters of the readers into their blocks; output slots are made fresh first.
void get_rparm_2(run_state& r);
