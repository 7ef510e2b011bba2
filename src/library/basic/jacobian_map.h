// jacobian_map.h -- where each partial derivative of an entry stands.
#pragma once
#include <span>

#include "library/basic_form.h"

// Builds the maps of all entries over these kinds, in this order. A kind that stands in the functions and not here
// halts.
jacobian_map map_jacobian(const basic_library& lib, std::span<const variable_list> kinds, std::string_view class_name);
