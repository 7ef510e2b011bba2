#include <cstdio>
#include <filesystem>
#include <memory>

#include "tnl/commands.h"
#include "tnl/run_deck.h"

namespace cli {

namespace {

int run_command(const run_options& options) {
    const run_result run = run_deck(options, own_installation());
    std::fflush(stdout);
    for (const record_file& file : run.record.files) {
        const std::filesystem::path place = run.kept ? run.folder / partial_name : run.folder;
        std::string columns;
        for (const record_column& c : file.columns) columns += " " + c.name;
        std::fprintf(stderr, "%s:%s\n", (place / file.path).c_str(), columns.c_str());
    }
    return run.status;
}

}  // namespace

void add_run(CLI::App& app, command_list& commands) {
    const auto options = std::make_shared<run_options>();
    CLI::App* run = app.add_subcommand("run", "Run a deck; its row files are left in DECK.run/");
    run->add_option("DECK", options->deck, "File with the circuit and what to solve")->required();
    run->add_option("-o,--output", options->folder, "Folder of the run, instead of DECK.run");
    run->add_flag("--force", options->force, "Replace the results of another deck in the folder");
    commands.push_back({run, [options] { return run_command(*options); }});
}

}  // namespace cli
