// outputs.h -- from the deck's output words to places in the unit tables.
#pragma once
#include "elaborate/circuit.h"

// Resolves every output variable to a flat unit-level index. Instance outputs were matched before; here their indices
// become global, and the words that name nodes and variables of the deck are looked up.
void resolve_outputs(circuit& c);
// Finds the unit that holds each parameter output.
void resolve_parameter_outputs(circuit& c);
