// run_folder.h -- the folder of a run: where the simulator works, and how its files get their final places.
#pragma once
#include <filesystem>
#include <string>
#include <vector>

#include "tnl/common/exit_status.h"
#include "tnl/common/input_file.h"
#include "tnl/common/run_record.h"
#include "tnl/deck/file_names.h"
#include "tnl/deck/installed.h"

namespace cli {

void write_file(const std::filesystem::path& path, const std::string& text);

// A folder that nobody else runs in while this lives; the simulator inherits the claim, so it holds as long as either
// of the two does.
class folder_claim {
public:
    folder_claim() = default;
    explicit folder_claim(const std::filesystem::path& folder);  // throws file_error
    ~folder_claim();
    folder_claim(folder_claim&& other) noexcept : fd_(other.fd_) { other.fd_ = -1; }
    folder_claim& operator=(folder_claim&& other) noexcept;

private:
    int fd_ = -1;
};

// Results stand in path, one file of them the record, which lists the others. A run takes place in path/.partial, and
// nothing in path changes before it is over, so that a kill at any moment leaves the earlier results, or the new ones.
struct run_folder {
    std::filesystem::path path, partial;
    run_record old;  // of the earlier run whose results stand in path; without a state: none do
    folder_claim claim;
};

// The name under which records know the deck: its whole path, "-" for standard input.
std::string deck_identity(const std::string& path);

// Whether the rows of this run, which is over, are no results: the simulator was killed or could not write a file.
bool stays_aside(const run_record& record);

// Claims the folder for a run of the deck; made if it is not there. What a run that was killed has left in .partial is
// removed, or gets its place, if the kill came when files were about to. Throws file_error for a folder with anything
// else than results of this deck; with force, of any deck.
run_folder take_run_folder(const std::filesystem::path& path, const std::string& deck, bool force);

// Throws file_error when something stands in the place of a file that the deck writes and that no earlier run of this
// folder has written. With force, files that the deck names by their whole path may be replaced.
void check_output_places(const run_folder& folder, const deck_view& deck, bool force);

// Fills .partial: the record; .tnlaux with the deck as cct.in, the part of the installed libraries that it needs and
// the list files; tmpdim.in; the data files that the deck names and that stand beside it. The record gets the hash of
// the libraries.
void fill_partial(const run_folder& folder, const deck_view& deck, const installed_libraries& libraries,
                  const deck_needs& needs, run_record& record);

// Takes back what a run that cannot begin has made.
void drop_partial(const run_folder& folder);

// Writes the record into .partial, complete at any moment.
void write_partial_record(const run_folder& folder, const run_record& record);

// Gives the files of a run that is over their final places and removes what the earlier run left there; what others
// have put into the folder stays. Until the record is in place, as the last, .partial holds all that it did.
void publish(const run_folder& folder, run_record& record);

}  // namespace cli
