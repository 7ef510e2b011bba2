// tnl -- what a person types: prepares a run, runs the simulator, shows results.
#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <new>
#include <stdexcept>

#include "tnl/cli/commands.h"
#include "tnl/common/exit_status.h"

namespace {

// A run is what scripts start by the thousand: it does not wait for the options of the other commands.
void add_others(CLI::App& app, cli::command_list& commands) {
    cli::add_demo(app, commands);
    cli::add_list(app, commands);
    cli::add_describe(app, commands);
    cli::add_examples(app, commands);
    cli::add_new(app, commands);
    cli::add_completion(app, commands);
    cli::add_man(app, commands);
    cli::add_doctor(app, commands);
    cli::add_plot(app, commands);
    cli::add_measure(app, commands);
    cli::add_assert(app, commands);
    cli::add_export(app, commands);
    cli::add_view(app, commands);
    cli::add_check(app, commands);
    cli::add_explain(app, commands);
}

int no_memory() {
    std::fflush(stdout);
    std::fputs("tnl: there is not enough memory for this\n", stderr);
    return cli::file_fault;
}

}  // namespace

int main(int argc, char** argv) {
    std::signal(SIGXFSZ, SIG_IGN);  // a file as large as the user allows is one that cannot be written, and told
    CLI::App app{"tnl runs decks of the circuit simulator TARNEL: power converters, machines and their control."};
    app.name("tnl");
    app.set_version_flag("--version", "tnl " TNL_VERSION);
    app.require_subcommand(1);
    app.footer(
        "The script ./tnl also knows: build, test [--sanitize], bench, fuzz [MINUTES [TARGET...]], format, tidy.\n"
        "Exit status: 0 good, 1 the simulator stopped with a message, 2 wrong usage, 3 a fault of the deck or a "
        "library,\n"
        "4 an assertion failed, 5 a file or folder could not be read or written, or memory not be had, 6 a limit was\n"
        "reached (assert: the run did not come to its end), 128+n ended by signal n.");
    cli::command_list commands;
    const std::string word = argc > 1 ? argv[1] : "";
    cli::add_run(app, commands);
    if (word != "run") add_others(app, commands);
    if (word == "help") {
        std::fputs(app.help().c_str(), stdout);
        return cli::good;
    }
    std::string known;
    bool is_known = word.empty() || word[0] == '-';
    for (const cli::command& c : commands) {
        known += c.app->get_name() + ", ";
        is_known = is_known || c.app->get_name() == word;
    }
    if (!is_known) {
        std::fprintf(stderr, "tnl: unknown command %s; known: %sbuild, test, bench, fuzz, format, tidy\n", word.c_str(),
                     known.c_str());
        return cli::usage_fault;
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e) == 0 ? cli::good : cli::usage_fault;
    }
    try {
        for (const cli::command& c : commands)
            if (*c.app) return c.act();
    } catch (const cli::command_error& e) {
        std::fflush(stdout);
        std::fprintf(stderr, "tnl: %s\n", e.what());
        return e.status;
    } catch (const std::bad_alloc&) {
        return no_memory();
    } catch (const std::length_error&) {  // more than any memory holds
        return no_memory();
    }
    return cli::usage_fault;
}
