// unknown_names.h -- what messages call the unknowns of a system.
#pragma once
#include <string>

#include "analyses/mat_class.h"

// A node of the deck by its name; "m of X1" for one inside of a composite.
std::string name_of_node(const circuit& c, int node);
// The unknown of a column: a node, "i of l1", a variable.
std::string name_of_unknown(const circuit& c, const mat_class& mat, int column);
