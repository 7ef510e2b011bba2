// flatten.h -- from instances to the flat units that the solvers see.
#pragma once
#include "elaborate/circuit.h"

// Walks instances in deck order and each composite's flat element list in its order, making one unit for each element.
// Unit-level nodes are numbered by first use of a terminal; a ground word takes the number of the reference.
void flatten_ebeu(circuit& c);
void flatten_ebau(circuit& c);
// The same for general blocks and their variables.
void flatten_gbeu(circuit& c);
void flatten_xbeu(circuit& c);
void flatten_xbau(circuit& c);
void flatten_gbau(circuit& c);
// And for digital elements and their nodes.
void flatten_dbeu(circuit& c);
// Where the general variables that electrical units read or define stand at the two unit levels. Needs the maps of gct.
void link_general_variables(circuit& c);
// Digital nodes of electrical units, and analog nodes of digital ones, at unit level. Needs the maps of dct and ect.
void link_domains(circuit& c);

// Every node number of the unit tables occurs among the terminals; the first-index arrays agree with the templates.
void check_ebeu(const circuit& c, const char* message);
