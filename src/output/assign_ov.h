// assign_ov.h -- present values of output variables.
#pragma once
#include "settings/solve_class.h"

// Where the value of a column stands as long as the circuit does; null for a value that stands nowhere (a power, an
// integer), and for a variable that cannot be read.
const double* place_of(const solve_class& slv, const circuit& c, const out_var& v);

// The amplitude that a column of a small-signal file shows the phase or magnitude of; null: it is no such column.
const std::complex<double>* phasor_of(const circuit& c, const out_var& v);

// Value of one column. False when the variable cannot be read in an analog row: digital kinds, kinds of families that
// the circuit does not have, results of post-processing. Halts when a small-signal variable has no phase or magnitude
// word, or another variable has one.
bool assign_ov(const solve_class& slv, const circuit& c, const out_var& v, double& value);

// Level of a digital node, or state of a digital unit; halts for every other variable.
int assign_ov_dgtl(const circuit& c, const out_var& v);
