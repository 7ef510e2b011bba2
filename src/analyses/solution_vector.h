// solution_vector.h -- between the vector of unknowns and the tables of the units.
#pragma once
#include "analyses/run_state.h"

void clear_solvec(run_state& r);  // every value that a start from nothing has as 0
void form_solvec(run_state& r);   // tables -> svec
void dcmp_solvec(run_state& r);   // svec -> tables

// svec += delsvec; models that limit Newton steps may then pull the new values back towards the old ones. delsvec keeps
// the unlimited step.
void update_sol_1(run_state& r);

bool has_nan(const std::vector<double>& v);
bool is_finite(const std::vector<double>& v);
