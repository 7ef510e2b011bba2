// installed.h -- the installed libraries, and which of their entries a deck needs.
#pragma once
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "tnl/deck/deck_view.h"
#include "tnl/deck/library_split.h"

namespace cli {

struct installed_library {
    std::vector<library_entry> entries;                // in file order
    std::map<std::string, int, std::less<>> position;  // of each name; the first of two equal names
};
struct installed_libraries {
    installed_library library[n_libraries];
    std::string list[std::size(listed_libraries)];  // text of each list file
    bool with_own = false;                          // a deck's own composites stand behind the installed ones
};
// A file that the folder lacks counts as empty.
installed_libraries read_installed(const std::filesystem::path& share);

// The same with those that the deck brings along. One with the name of an installed one takes its place.
installed_libraries with_own(installed_libraries libraries, const own_composites& own);

struct unknown_type {
    int i_statement;
    int library;
    std::string type;
};
struct deck_needs {
    std::vector<int> entries[n_libraries];  // positions, callee before caller
    std::vector<unknown_type> unknown;      // element and model statements whose type is not installed
    std::vector<std::string> files;         // words of the deck that may name a file to read
};
// Follows the type words of element and model statements through the composites; of libraries with the deck's own.
deck_needs needs_of(const deck_view& deck, const installed_libraries& libraries);
deck_needs needs_of(const deck_view& deck, const installed_libraries& libraries, statement_range circuit);

deck_needs needs_of(const entry_name& entry, const installed_libraries& libraries);  // of one entry alone

// Names of a library, or of a list, that look like this one, the nearest first, at most five.
std::vector<std::string> near_names(const installed_library& library, std::string_view name);
std::vector<std::string> near_names(const std::vector<std::string>& known, std::string_view name);

}  // namespace cli
