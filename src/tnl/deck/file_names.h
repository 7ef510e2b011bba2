// file_names.h -- which names of files a deck may write and read.
#pragma once
#include <filesystem>
#include <string>
#include <vector>

#include "tnl/common/exit_status.h"
#include "tnl/common/input_file.h"
#include "tnl/deck/deck_view.h"

namespace cli {

// The simulator's own names in its folder.
inline constexpr const char* aux_name = ".tnlaux";
inline constexpr const char* dimensions_name = "tmpdim.in";

// A name inside a folder that cannot lead out of it.
bool stays_inside(const std::filesystem::path& name);

// The same through links in the folder.
bool leads_inside(const std::filesystem::path& name, const std::filesystem::path& folder);

// A record that is being written.
inline std::string new_record_name() { return std::string(record_name) + ".new"; }

// Where `tnl run DECK` leaves its results when the user names no folder.
std::filesystem::path default_run_folder(const std::string& deck);

// Why a run in the folder does not write a file that its deck names so: it would leave the folder, or stand where the
// run keeps its own. Empty: it may. With force, a whole path leads where it leads.
std::string fault_of_output_name(const std::filesystem::path& name, const std::filesystem::path& folder, bool force);

// Throws deck_error, with the place of the statement, when a file that the deck writes has such a name.
void check_output_names(const deck_view& deck, const std::filesystem::path& folder, bool force);
// A file of the deck with a whole path into the folder gets its name there, wherever the deck speaks of it, so that the
// run writes it aside as all others. Places of words stay.
void name_inside(deck_view& deck, const std::filesystem::path& folder);

// A word of the deck that names a device or a pipe where a file is to be read: the value of an element, a model or a
// gstring, the file of an initial_sol, or one in the deck's folder that rows are to go on behind.
struct unreadable_input {
    int statement, word;
    std::string why;
};
std::vector<unreadable_input> unreadable_inputs(const deck_view& deck);

// Throws deck_error, with the place of the word, for the first of them.
void check_input_names(const deck_view& deck);

}  // namespace cli
