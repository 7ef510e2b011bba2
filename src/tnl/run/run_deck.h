// run_deck.h -- `tnl run`: a deck, from its text to its row files.
#pragma once
#include <filesystem>
#include <string>
#include <vector>

#include "tnl/common/exit_status.h"
#include "tnl/common/process.h"
#include "tnl/common/run_record.h"
#include "tnl/deck/installed.h"

namespace cli {

// What a built tree holds: the simulator beside this program, the libraries in ../share.
struct installation {
    std::filesystem::path program, share;
};
installation own_installation();

struct run_options {
    std::string deck;                     // "-": standard input
    std::string folder = {};              // empty: the deck's path and ".run"; "stdin.run" for standard input
    bool quiet = false;                   // the simulator's text is shown only when it stops
    bool silent = false;                  // nor then
    bool force = false;                   // results of another deck may be replaced
    bool follow = false;                  // tell on standard error how far the run is
    double time_limit = 0;                // s of wall time; 0: none
    std::vector<std::string> words = {};  // as typed, for the record
};
struct run_result {
    std::string findings;  // of the deck, behind a run that completed: what it may not have solved as it is written
    int status = good;
    std::filesystem::path folder;  // where the results stand
    deck_view deck;
    run_record record;  // as it stands in the folder
    bool kept = false;  // the simulator was killed or could not write: what there is of the rows stands in .partial
    bool timed_out = false;  // the simulator was asked to end when the time was over
    double t_last = -1;      // s, the last time that a row of a block in time holds; below 0: there is none
};
// Throws file_error when the deck cannot be read or the folder not be made, deck_error for an include that fails.
run_result run_deck(const run_options& options, const installation& where);

}  // namespace cli
