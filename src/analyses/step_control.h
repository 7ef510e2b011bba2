// step_control.h -- break points that units ask for.
#pragma once
#include <limits>

#include "analyses/run_state.h"

// First query of all units that limit the step.
void find_nextbreak(run_state& r);
// Asks those of one instance again, which has changed.
void find_nextbreak_of(run_state& r, int fam, int instance);
// Asks again those whose break lies within the next step, and those that keep history.
// A source loses sight of its next corner when that is near against its shortest line: an answer that lies more than
// `passed`, s, ahead is kept.
void check_tnext1(run_state& r, double passed = std::numeric_limits<double>::infinity());
// Shortens delt to end on the earliest break that lies at least delt_min ahead.
void check_tnext2(run_state& r);

// Instead of the latter where events are heeded: no break is passed over, one that is nearer than `smallest`, s, is
// reached by a step of that size (a hundredth of it counts as reached), and a step ends by `smallest` before a break at
// which a source jumps. Gives the time of the first of these, s; infinity: none.
double shorten_to_breaks(run_state& r, double smallest);
