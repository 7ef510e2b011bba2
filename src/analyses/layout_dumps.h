// layout_dumps.h -- where the terms of units stand in the system, as text.
#pragma once
#include "analyses/ac_class.h"

// ebce.dat, gbce.dat: every term of every unit with its row and column; -1: it has none in this analysis. The patterns
// go to ebce1_<analysis>.dat, gbce1.dat and smat.dat. Each under its word of the deck's output statement.
void write_layout_dumps(const mat_class& mat, const circuit& c);
// The same of small signals: ebce_c.dat, gbce_c.dat, xbce_c.dat, ebce1_c.dat, gbce1_c.dat, xbce1_c.dat, smat_c.dat.
void write_ac_layout_dumps(const ac_class& ac, const circuit& c);
