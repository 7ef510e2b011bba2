// check_values.h -- numbers that are rarely meant, by the unit that the library gives for a parameter.
#pragma once
#include "tnl/check_deck.h"

namespace cli {

// Warns when the value of a parameter is far from what its unit leads to expect. Without a unit nothing is said.
void check_unit(checked_deck& d, const element_type& type, const std::string& parameter, deck_word at, double value);

}  // namespace cli
