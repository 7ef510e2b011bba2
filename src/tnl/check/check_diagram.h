// check_diagram.h -- circuits of explicit blocks: who computes each variable, loops without a state, rules and steps.
#pragma once
#include "tnl/check/check_deck.h"

namespace cli {

// Explicit variables: each is computed by one block. The order of evaluation: no circle of blocks without a state, and
// no longer row of blocks than the search for the order takes.
void check_diagram(checked_deck& d);

// Of a run in time with explicit blocks: its rule and step. place: where what is missing is told. In a circuit of
// explicit blocks alone, its steps are the run's.
void check_explicit_steps(checked_deck& d, solve_section& s, const solve_class& slv, deck_word place);

bool has_explicit(const checked_deck& d);       // some explicit block
bool is_explicit_alone(const checked_deck& d);  // and nothing else

}  // namespace cli
