// open_run.h -- what the user names as RUN: a run folder, the deck that was run, or one row file.
#pragma once
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "tnl/common/run_record.h"
#include "tnl/results/result_table.h"

namespace cli {

struct opened_run {
    std::filesystem::path folder;  // that the paths of its files are relative to
    run_record record;             // a lone row file: one made up for it, without columns
    bool unfinished = false;       // the run goes on, or was cut before its end
    // A later run of the deck that goes on, or was cut, and left its rows here, while these are those before; or empty.
    std::filesystem::path later;
};
// A folder with a record, else its .partial with one; a deck's path, when path + ".run" is such a folder; a row file,
// with the names that the record beside it gives. Throws file_error.
opened_run open_run(const std::string& path);

// What a user must know who is shown the rows of this run: that it goes on, was cut off, stopped, or that a later one
// of the deck came to nothing. Empty for a run that came to its end.
std::string how_it_ended(const opened_run& run);
// Behind "has no row files": "; its run stopped: cct_class: ..." or nothing.
std::string why_none(const opened_run& run);

// The file's rows with names and units from the record, where their number fits. Throws file_error.
result_table load_table(const opened_run& run, const record_file& file);

// Which of two tables a user means who names neither: curves before a start-up solution or a single row, then the one
// with more rows.
bool is_finer(const record_file& a, const record_file& b);

}  // namespace cli
