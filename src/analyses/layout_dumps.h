// layout_dumps.h -- where the terms of units stand in the system, as text.
#pragma once
#include "analyses/mat_class.h"

// ebce.dat, gbce.dat: every term of every unit with its row and column; -1: it has none in this analysis. The patterns
// go to ebce1_<analysis>.dat, gbce1.dat and smat.dat. Each under its word of the deck's output statement.
void write_layout_dumps(const mat_class& mat, const circuit& c);
