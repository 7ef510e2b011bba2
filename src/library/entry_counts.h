// entry_counts.h -- how much an entry has of everything that its model indexes.
#pragma once
#include <span>
#include <string>
#include <vector>

#include "library/basic_form.h"

// Words of each list of entry e in the order of the family's lines, then its functions.
std::vector<int> entry_counts(const basic_form& form, const basic_library& lib, int e);

// Halts unless entry e has at least the counts that its model was compiled with. Names are free, and words behind those
// of the model do no harm; with fewer the model would reach beyond its arrays.
void check_entry_counts(const basic_form& form, const basic_library& lib, int e, std::span<const int> model);
