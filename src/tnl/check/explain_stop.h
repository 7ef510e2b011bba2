// explain_stop.h -- what a user is shown of a run that stopped: the places of the deck, and what a check finds there.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "tnl/check/check_report.h"
#include "tnl/check/locate.h"

namespace cli {

// Of a run that stopped, with what a check of its deck finds. The places for the record: those, or where the check has
// the cause; none when there are many.
std::vector<record_place> places_of_stop(std::string_view text, const check_report& report, const deck_needs& needs);

// Lines to print below the text of the stop: the place with line, column and caret, unless the check tells more of it;
// then all that the check finds. Without errors, one line of advice.
std::string explain_stop(std::string_view text, const check_report& report, const deck_needs& needs);

}  // namespace cli
