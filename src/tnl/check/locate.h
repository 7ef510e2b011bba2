// locate.h -- from the text of a stop to the statement of the deck that it speaks of.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "tnl/check/check_report.h"
#include "tnl/deck/deck_view.h"
#include "tnl/deck/installed.h"

namespace cli {

// A word of a statement.
struct stop_place {
    int i_statement = 0, i_word = 0;
    auto operator<=>(const stop_place&) const = default;
};

// What the last lines of the simulator's text speak of, in deck order. One place is an answer, several are candidates;
// none when the text names nothing that the deck holds.
std::vector<stop_place> find_places(std::string_view text, const deck_view& deck, const deck_needs& needs);
std::vector<int> find_statements(std::string_view text, const deck_view& deck, const deck_needs& needs);

// The first element statement that connects a node; for one inside of a composite, "m of X1", that of the instance.
std::vector<stop_place> places_of_node(const deck_view& deck, std::string_view node);

// Of a run that stopped, with what a check of its deck finds. The places for the record: those, or where the check has
// the cause; none when there are many.
std::vector<record_place> places_of_stop(std::string_view text, const check_report& report, const deck_needs& needs);

// Lines to print below the text of the stop: the place with line, column and caret, unless the check tells more of it;
// then all that the check finds. Without errors, one line of advice.
std::string explain_stop(std::string_view text, const check_report& report, const deck_needs& needs);

}  // namespace cli
