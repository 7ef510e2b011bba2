// run_deck.h -- `tnl run`: a deck, from its text to its row files.
#pragma once
#include <filesystem>
#include <string>

#include "tnl/exit_status.h"
#include "tnl/installed.h"
#include "tnl/process.h"

namespace cli {

// What a built tree holds: the simulator beside this program, the libraries in ../share.
struct installation {
    std::filesystem::path program, share;
};
installation own_installation();

struct run_options {
    std::string deck;
    std::string folder;  // empty: the deck's path and ".run"
    bool quiet = false;  // the simulator's text is shown only when it stops
};
struct run_result {
    int status = good;
    std::filesystem::path folder;
    deck_view deck;
};
// Throws file_error when the deck cannot be read or the folder not be made.
run_result run_deck(const run_options& options, const installation& where);

}  // namespace cli
