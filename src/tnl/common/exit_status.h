// exit_status.h -- what the front end's exit status says, and the errors that lead to it.
#pragma once
#include <stdexcept>

namespace cli {

// 128 + n when signal n ended a run: 130 for an interrupt, 143 for a request to terminate.
enum exit_status : int {
    good = 0,
    stopped = 1,           // the simulator stopped with a message
    nothing_found = 1,     // list, describe, explain: nothing is known of what was asked for
    usage_fault = 2,       // wrong words on the command line
    deck_fault = 3,        // the front end itself found the deck or a library at fault
    assertion_failed = 4,  // tnl assert
    file_fault = 5,        // a file or folder cannot be read or written, or memory not be had
    limit_reached = 6,     // the time, or the steps of itmax_trns, are used up; tnl assert on such a run
};

// A command ends by returning its status or by throwing one of these; main prints "tnl: " and the text to standard
// error.
struct command_error : std::runtime_error {
    exit_status status;
    command_error(exit_status status_, const std::string& text) : std::runtime_error(text), status(status_) {}
};
struct usage_error : command_error {
    explicit usage_error(const std::string& text) : command_error(usage_fault, text) {}
};
struct deck_error : command_error {
    explicit deck_error(const std::string& text) : command_error(deck_fault, text) {}
};
// A file or folder that cannot be read or written; the text names it.
struct file_error : command_error {
    explicit file_error(const std::string& text) : command_error(file_fault, text) {}
};

}  // namespace cli
