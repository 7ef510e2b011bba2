// deck_source.h -- the user's deck and the files it includes, as the one text that the simulator reads.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "tnl/common/exit_status.h"
#include "tnl/common/run_record.h"

namespace cli {

// A line "include FILE" stands for the lines of that file; its path is relative to the file that names it. A '#' behind
// a blank begins a comment that runs to the end of the line. Both are resolved here; the simulator knows neither. What
// stands behind end_cf stays as it is.
//
// Entries of libraries ("ece name=..." to "endece") may stand between the statements of each of these files. They are
// cut out; own_composites.h reads them. Model statements of a file that is included before begin_circuit stand behind
// that.
struct library_block;
struct deck_source {
    struct file {
        std::string path;                // the deck's as the user gave it; "-" for standard input
        std::vector<std::string> lines;  // as they stand, without line ends
    };
    struct place {
        int file = 0, line = 0;  // files[file].lines[line]
    };
    std::vector<file> files;    // the deck first
    std::string text;           // for the simulator
    std::vector<place> origin;  // [lines of text]
    std::vector<library_block> blocks;
};

// One entry as it stands.
struct library_block {
    int library;                            // position in library_forms, by the word that it begins with
    std::vector<deck_source::place> lines;  // comments between them too
    bool ended = false;                     // its last line is there
};

// Files that make no deck: "file:line: why".
struct source_error : deck_error {
    record_place place;  // of the include statement; line 0: the deck itself is too large
    std::string why;
    source_error(record_place place_, const std::string& why_);
};

// Throws file_error for a deck that cannot be read, source_error, with the place of the include statement, for an
// included one, for files that include each other, and for more text, lines or included files than a deck may have
// (input_file.h). Path "-" reads standard input.
deck_source read_deck_source(const std::string& path);
deck_source deck_source_of(std::string text, const std::string& path);  // the same for a text in memory

std::string_view without_comment(std::string_view line);  // as the simulator gets it

}  // namespace cli
