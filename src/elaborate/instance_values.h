// instance_values.h -- binds element statements to composites: nodes, parameter values, outputs.
#pragma once
#include <vector>

#include "elaborate/families.h"

// Fills the instance tables of all families, statement by statement. Needs the numbered names.
void set_instance_values(circuit& c, const std::vector<element_statement>& statements);

// No two instances share a name, whatever their kind.
void check_instance_names(const circuit& c);
