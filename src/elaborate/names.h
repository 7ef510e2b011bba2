// names.h -- the first passes over the circuit block: which element statements there are, and the names they use.
#pragma once
#include <vector>

#include "elaborate/families.h"

// Element statements in deck order, placeholders left out; marks all of them as used. Halts on a missing `type` and on
// ground_dummy_1, which is for libraries alone.
std::vector<element_statement> find_element_statements(circuit_file& cf);

// Finds each statement's composite and numbers the deck's names by first use, statement by statement, in the order of
// the composite's lists.
void number_names(circuit& c, std::vector<element_statement>& statements);
