// check_values.h -- numbers that a model refuses, and numbers that are rarely meant.
#pragma once
#include "tnl/check/check_deck.h"

namespace cli {

// A number as a message shows it, and as a time: "4e-09 s".
std::string figure(double x);
std::string seconds(double x);

// A number as the run sees it: the element's own, that of its model, or the library's. NaN: not known.
double value_of_parameter(const checked_deck& d, const deck_element& e, std::string_view name);

// Words of a composite that stands for one basic element are that element's; those of another may mean anything.
bool has_limits(const element_type& type);

// What the model of the element refuses: resistances of zero, periods below zero ... What it only does
// not expect raises a doubt.
void check_model_limits(checked_deck& d, const deck_element& e);
// The same of a value that a solve block gives to PARAMETER_of_ELEMENT. What two parameters must be to each other is
// left out: others may be set beside it.
void check_item_value(checked_deck& d, deck_word item, deck_word value);

// Warns of a value for a parameter that the element computes itself.
void check_computed(checked_deck& d, const element_type& type, const std::string& parameter, deck_word at);

// Warns when the value of a parameter is far from what its unit leads to expect. Without a unit nothing is said.
void check_unit(checked_deck& d, const element_type& type, const std::string& parameter, deck_word at, double value);

}  // namespace cli
