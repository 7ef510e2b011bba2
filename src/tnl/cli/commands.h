// commands.h -- the commands that a person types; one file cmd_<name>.cpp each.
#pragma once
#include <CLI/CLI.hpp>
#include <functional>
#include <vector>

namespace cli {

// A subcommand and what it does when it was the one asked for: returns an exit status (exit_status.h).
struct command {
    CLI::App* app;
    std::function<int()> act;
};
using command_list = std::vector<command>;

// Each declares its options on app and adds itself. The options live in the closure of act.
void add_check(CLI::App& app, command_list& commands);
void add_explain(CLI::App& app, command_list& commands);
void add_run(CLI::App& app, command_list& commands);
void add_demo(CLI::App& app, command_list& commands);
void add_list(CLI::App& app, command_list& commands);
void add_describe(CLI::App& app, command_list& commands);
void add_examples(CLI::App& app, command_list& commands);
void add_new(CLI::App& app, command_list& commands);
void add_completion(CLI::App& app, command_list& commands);
void add_man(CLI::App& app, command_list& commands);
void add_doctor(CLI::App& app, command_list& commands);
void add_plot(CLI::App& app, command_list& commands);
void add_measure(CLI::App& app, command_list& commands);
void add_assert(CLI::App& app, command_list& commands);
void add_export(CLI::App& app, command_list& commands);
void add_view(CLI::App& app, command_list& commands);

}  // namespace cli
