// small_runs.h -- circuits on the installed libraries, and runs that stay short whatever the text asks for.
#pragma once
#include <string_view>

#include "analyses/run_state.h"

const libraries& installed_libraries();

// Everything of a deck up to the elaboration; the libraries are copied.
circuit circuit_of(std::string_view deck, const libraries& lib);

// Takes few iterations and steps where the block asks for many. False: it asks for many points or unknowns.
bool keep_short(run_state& r);
