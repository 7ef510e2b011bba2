// list_file.h -- the files that number all entries of a family.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "base/words.h"

// Gives each name its 0-based position in the list file of its family; the position is the entry's global number.
// A list line is a word with a dot, the name is what follows the first dot. Halts on a missing file, a line without a
// dot, a name that stands twice, or a library name that the list lacks. A list name that the library lacks is accepted:
// a working folder may hold a part of the full library, in any order.
std::vector<int> make_chrarray_5(const std::string& list_path, const words& names);

// The names of a list file in order, with the same tests of its form.
words list_names(const std::string& list_path);
