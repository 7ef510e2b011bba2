// check_stops.h -- stops of the simulator's readers as faults of the deck.
#pragma once
#include "tnl/check/check_deck.h"

struct solve_class;
struct flags_class;

namespace cli {

// Reads constants, models, outputs and elements of the deck into d.c; what is refused goes to d.stops.
void read_circuit_of(checked_deck& d);
// Reads a solve block as the simulator does before it solves it, and gives what is refused.
std::vector<kept_stop> read_solve_of(checked_deck& d, int block, solve_class& slv, flags_class& flags);

// Each stop as a fault of its kind, at its word. Stops of what another fault is told of, as of a name whose statement
// is at fault, are left out.
void tell_stops(checked_deck& d, const std::vector<kept_stop>& stops, const solve_section* block = nullptr);

// Where a word stands in the block or output block that begins at this statement; statement -1: nowhere.
deck_word find_in_block(const checked_deck& d, int begin, std::string_view word);

// Text of the simulator's reader where it refuses this part of the libraries.
std::optional<std::string> stop_of_libraries(const installed_libraries& libraries, const deck_needs& needs);
std::string stop_in_one_line(const std::string& text);  // as the message of a fault

}  // namespace cli
