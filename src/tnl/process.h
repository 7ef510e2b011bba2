// process.h -- the simulator as a child process.
#pragma once
#include <filesystem>
#include <string>

namespace cli {

struct process_result {
    int status = 0;    // of the program; 128 + n when signal n ended it
    int signal = 0;    // n, or 0
    std::string tail;  // the last of its text, at most 64 kB
};

// Runs the program without arguments in the folder. Its text goes to standard output as it comes, unless quiet.
// Interrupt and terminate signals that arrive meanwhile are passed on to it. Throws file_error when it cannot start.
process_result run_program(const std::filesystem::path& program, const std::filesystem::path& folder, bool quiet);

// The folder of this program's own file.
std::filesystem::path own_folder();

}  // namespace cli
