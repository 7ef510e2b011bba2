// run_folder.h -- the folder in which one run of a deck takes place.
#pragma once
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "tnl/exit_status.h"
#include "tnl/installed.h"

namespace cli {

std::string read_file(const std::filesystem::path& path);
void write_file(const std::filesystem::path& path, const std::string& text);

// The marker says whose results a folder holds and which of its files a run made, so that the next run of the same deck
// can replace them and nothing else.
inline constexpr const char* marker_name = ".tnl-run";

// Makes the folder ready for the simulator: .tnlaux with the deck as cct.in, the part of the installed libraries that
// it needs and the list files; tmpdim.in; the data files that the deck names and that stand beside it. A folder that
// holds anything else than results of this deck is refused. Gives the names of the files in it that are not ours.
std::set<std::string> make_run_folder(const std::filesystem::path& folder, const deck_view& deck,
                                      const installed_libraries& libraries, const deck_needs& needs);

// Adds to the marker what stands in the folder and is not foreign. Called when the run is over, whatever its end.
void note_results(const std::filesystem::path& folder, const deck_view& deck, const std::set<std::string>& foreign);

}  // namespace cli
