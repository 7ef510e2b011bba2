// library_split.h -- a text library cut into its entries, so that a run folder can hold those that its deck needs.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "base/words.h"
#include "deck/library_forms.h"

namespace cli {

// An entry as it stands in the file, from its first line to its last, code sections and comments included.
struct library_entry {
    std::string name;
    std::string text;
};

// Text before, between and behind entries is dropped; an entry that the file ends in the middle of is kept as it is.
std::vector<library_entry> split_library(std::string_view text, const library_form& form);

// A name that stands in some library of this list.
struct entry_name {
    int library;  // position in library_forms
    std::string name;
    auto operator<=>(const entry_name&) const = default;
};
// The logical lines of an entry, code sections left out; what the following read.
using entry_lines = std::vector<words>;
entry_lines lines_of(const library_entry& entry, const library_form& form);

// The entries that this entry's body uses, in the order of its lines, each once.
std::vector<entry_name> used_by(const entry_lines& lines);

// The pairs of the list under this keyword ("sparms:").
struct name_and_value {
    std::string name, value;
};
std::vector<name_and_value> pairs_of(const entry_lines& lines, std::string_view keyword);

}  // namespace cli
