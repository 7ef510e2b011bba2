// circuit_dumps.h -- the circuit tables as text, one file per domain that the deck asks for.
#pragma once
#include "elaborate/circuit.h"

// ov.dat, and ect.dat, gct.dat, dct.dat, xct.dat: the domains' names with their numbers at each level, the maps between
// the levels (-1: no counterpart), then what all units of the family have together.
void write_circuit_dumps(const circuit& c);
