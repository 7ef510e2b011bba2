// check_solves.h -- what the check of solve blocks asks of files of their own.
#pragma once
#include <set>
#include <string>

#include "tnl/check/check_deck.h"

namespace cli {

// An ac block. written: the items that it and the blocks before it set or sweep; after_solution: some block before it
// solved the circuit.
void check_small_signals(checked_deck& d, const solve_section& s, const solve_class& slv,
                         const std::set<std::string>& written, bool after_solution);
// A run in time: clocks that its steps cannot follow, and more edges than passes. at_end: where its end is told.
void check_clocks(checked_deck& d, const solve_section& s, const solve_class& slv, deck_word at_end);
// Columns of the block's files that its kind of block cannot show: small signals are for ac blocks alone, and these
// show nothing else but constants.
void check_columns(checked_deck& d, const solve_section& s, const solve_class& slv);

}  // namespace cli
