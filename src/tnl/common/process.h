// process.h -- the simulator as a child process.
#pragma once
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace cli {

struct process_task {
    std::filesystem::path program, folder;       // run without arguments in the folder
    double time_limit = 0;                       // s of wall time until it is asked to end; 0: none
    std::function<void(std::string_view)> text;  // gets what it prints, as it comes
    std::function<void()> idle;                  // called some twenty times a second
};
struct process_result {
    int status = 0;          // of the program; 128 + n when signal n ended it
    int signal = 0;          // n, or 0
    int asked = 0;           // the last signal to this process that was passed on to the program, or 0
    bool timed_out = false;  // it was asked to end when its time was over
    std::string tail;        // the last of its text, at most 64 kB
};

// Interrupt, terminate and hang-up signals that arrive meanwhile are passed on, the last as a request to terminate. A
// program that does not end within seconds is killed when the time is over, or when the user asks again. Throws
// file_error when it cannot start.
process_result run_program(const process_task& task);

// The folder of this program's own file.
std::filesystem::path own_folder();

}  // namespace cli
