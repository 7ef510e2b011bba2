#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "tnl/cli/commands.h"
#include "tnl/common/exit_status.h"
#include "tnl/common/process.h"

namespace cli {

namespace {

struct view_words {
    std::vector<std::string> runs;
    int port = 0;
    double timeout = 0;
    bool no_open = false;
};

bool has_display() {
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY"})
        if (const char* value = std::getenv(name); value && *value) return true;
    return false;
}

// The server takes the place of this process, so that it gets the signals and gives the status.
int view_command(const view_words& options) {
    if (!std::isfinite(options.timeout)) throw usage_error("--timeout takes a number of seconds");
    char seconds[64];
    std::snprintf(seconds, sizeof seconds, "%.17g", options.timeout);
    std::vector<std::string> words{"tnl-view", "--port", std::to_string(options.port), "--timeout", seconds};
    if (!options.no_open && isatty(STDOUT_FILENO) && has_display()) words.emplace_back("--open");
    words.emplace_back("--");
    words.insert(words.end(), options.runs.begin(), options.runs.end());
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    const std::string program = (own_folder() / "tnl-view").string();
    std::fflush(nullptr);
    execv(program.c_str(), pointers.data());
    throw file_error("cannot run " + program + ": " + std::strerror(errno));
}

}  // namespace

void add_view(CLI::App& app, command_list& commands) {
    const auto options = std::make_shared<view_words>();
    CLI::App* view = app.add_subcommand("view", "Look at rows in a browser: zoom, cursors, runs over one another");
    view->add_option("RUN", options->runs, "Run folders, decks that were run, or row files")->required();
    view->add_option("--port", options->port, "Port of the page on 127.0.0.1, instead of any free one")
        ->check(CLI::Range(0, 65535));
    view->add_option("--timeout", options->timeout, "End after so many seconds without a request")
        ->check(CLI::NonNegativeNumber);
    view->add_flag("--no-open", options->no_open, "Print the address only, open no browser");
    view->footer(
        "The address is printed on standard output; it holds a token and serves this machine only. Ctrl-C ends.");
    commands.push_back({view, [options] { return view_command(*options); }});
}

}  // namespace cli
