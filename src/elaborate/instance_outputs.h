// instance_outputs.h -- output variables of the deck that name an instance.
#pragma once
#include <string_view>
#include <unordered_map>
#include <vector>

#include "elaborate/families.h"

// Outputs by the instance that their right word names.
using output_index = std::unordered_map<std::string_view, std::vector<int>>;
output_index index_outputs(const ov_class& ov);

// Matches the outputs that name this instance: the power of an electrical element, an output word of the composite
// (first its DC list, then its small-signal list), or a real parameter. Nothing else has terminals whose power could be
// summed, so there the words of power are looked up like any other. An output that a mixed composite has from one of
// its calls becomes that of the call's instance. The instance is the newest of its family.
void match_outputs(circuit& c, const family_form& form, int i_lib, int i, std::string_view name,
                   const output_index& outputs);
