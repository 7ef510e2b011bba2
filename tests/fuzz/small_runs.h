// small_runs.h -- runs that stay short whatever the text asks for.
#pragma once
#include "analyses/run_state.h"
#include "circuit_from_text.h"

// Takes few iterations and steps where the block asks for many. False: it asks for many points or unknowns.
bool keep_short(run_state& r);

// Small signals of a prepared circuit at one frequency, around what its tables hold.
void solve_one_frequency(run_state& r);
