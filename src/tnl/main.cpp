// tnl -- what a person types: prepares a run, runs the simulator, shows results.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>

#include "tnl/demo.h"
#include "tnl/run_deck.h"
#include "tnl/run_folder.h"

namespace {

int run_command(const cli::run_options& options) {
    const cli::run_result run = cli::run_deck(options, cli::own_installation());
    std::fflush(stdout);
    for (const cli::row_file& file : cli::row_files(run.deck)) {
        const std::filesystem::path path = run.folder / file.path;
        std::error_code error;
        if (!std::filesystem::is_regular_file(path, error)) continue;
        std::string columns;
        for (const std::string& c : file.columns) columns += " " + c;
        std::fprintf(stderr, "%s:%s\n", path.c_str(), columns.c_str());
    }
    return run.status;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"tnl runs decks of the circuit simulator TARNEL: power converters, machines and their control."};
    app.name("tnl");
    app.set_version_flag("--version", "tnl " TNL_VERSION);
    app.require_subcommand(1);
    app.footer(
        "The script ./tnl also knows: build, test [--sanitize], bench, fuzz [MINUTES [TARGET...]], format, tidy.\n"
        "Exit status: that of the simulator (0 completed, 1 stopped with a message, 128+n ended by signal n);\n"
        "2 wrong usage; 5 a file or folder could not be read or written.");

    cli::run_options options;
    CLI::App* run = app.add_subcommand("run", "Run a deck; its row files are left in DECK.run/");
    run->add_option("DECK", options.deck, "File with the circuit and what to solve")->required();
    run->add_option("-o,--output", options.folder, "Folder of the run, instead of DECK.run");

    std::string demo_folder = "tnl-demo.run";
    CLI::App* demo = app.add_subcommand("demo", "Run two built-in decks; show rows, plots and picture files");
    demo->add_option("-o,--output", demo_folder, "Folder for decks, results and pictures")->capture_default_str();

    const std::string command = argc > 1 ? argv[1] : "";
    if (command == "help") {
        std::fputs(app.help().c_str(), stdout);
        return cli::good;
    }
    if (!command.empty() && command[0] != '-' && command != "run" && command != "demo") {
        std::fprintf(stderr, "tnl: unknown command %s; known: run, demo, build, test, bench, fuzz, format, tidy\n",
                     command.c_str());
        return cli::usage_fault;
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e) == 0 ? cli::good : cli::usage_fault;
    }
    try {
        if (*run) return run_command(options);
        return cli::run_demo(demo_folder, cli::own_installation(), cli::this_terminal());
    } catch (const cli::file_error& e) {
        std::fflush(stdout);
        std::fprintf(stderr, "tnl: %s\n", e.what());
        return cli::file_fault;
    }
}
