// planned_files.h -- the files that a deck's run will write, with the units of their columns.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "tnl/deck/deck_view.h"
#include "tnl/deck/installed.h"

namespace cli {

// Unit of a word behind variables:, an output variable or an item of a sweep; empty when it has none or nothing tells.
std::string unit_of_column(const deck_view& deck, const installed_libraries& libraries, std::string_view word);

// What a word behind variables: or an output variable reads: a number; the level of a digital node; the state of a
// digital element, an integer. Files hold numbers, or levels and states.
enum class data_kind { number, level, state };
data_kind kind_of_column(const deck_view& deck, const installed_libraries& libraries, std::string_view word);

// All that is known of the deck's files before the run, in deck order, each once. Columns are empty for files without
// rows and for all_nodes, whose columns the simulator chooses, but of a deck of digital elements alone.
std::vector<record_file> planned_files(const deck_view& deck, const installed_libraries& libraries);

}  // namespace cli
