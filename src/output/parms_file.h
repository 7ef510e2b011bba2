// parms_file.h -- a list of all parameters of the circuit.
#pragma once
#include "settings/solve_class.h"

// Lists every parameter of all electrical, general and digital instances in the block's parms file.
void write_parms(solve_class& slv, const circuit& c);
