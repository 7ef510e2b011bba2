// locate.h -- from the text of a stop to the statement of the deck that it speaks of.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "tnl/deck_view.h"
#include "tnl/installed.h"

namespace cli {

// Statements that the last lines of the simulator's text speak of, in deck order. One statement is an answer, several
// are candidates; none when the text names nothing that the deck holds.
std::vector<int> find_statements(std::string_view text, const deck_view& deck, const deck_needs& needs);

// Lines to print below the text of a stop: the places of those statements, what is near a type that is not installed.
// Nothing when nothing can be told. At most four candidates are listed.
std::string explain_stop(std::string_view text, const deck_view& deck, const deck_needs& needs,
                         const installed_libraries& libraries);

}  // namespace cli
