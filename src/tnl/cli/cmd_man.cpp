#include <filesystem>
#include <memory>

#include "tnl/cli/command_tree.h"
#include "tnl/cli/commands.h"
#include "tnl/common/exit_status.h"
#include "tnl/common/output_file.h"

namespace cli {

namespace {

struct man_options {
    std::string command, folder;
};

int man_command(const CLI::App& app, const man_options& options) {
    const command_node root = tree_of(app);
    const std::string version = "tnl " TNL_VERSION;
    if (!options.folder.empty()) {
        if (!options.command.empty()) throw usage_error("man: -o writes all pages; leave COMMAND out");
        std::error_code error;
        std::filesystem::create_directories(options.folder, error);
        if (error) throw file_error("cannot make folder " + options.folder + ": " + error.message());
        const std::filesystem::path folder(options.folder);
        write_output(folder / (page_title(root, root) + ".1"), manual_page(root, root, version));
        for (const command_node& c : root.commands)
            write_output(folder / (page_title(root, c) + ".1"), manual_page(root, c, version));
        return good;
    }
    const command_node* command = options.command.empty() ? &root : find_command(root, options.command);
    if (!command) throw usage_error("man: no command is called " + options.command + " (tnl --help shows all)");
    write_output("-", manual_page(root, *command, version));
    return good;
}

}  // namespace

void add_man(CLI::App& app, command_list& commands) {
    const auto options = std::make_shared<man_options>();
    CLI::App* man = app.add_subcommand("man", "Write the manual page of a command, or of tnl");
    man->add_option("COMMAND", options->command, "The command; without it the page of tnl");
    man->add_option("-o,--output", options->folder, "Write all pages into this folder instead");
    man->footer("To read a page: tnl man run | man -l -");
    commands.push_back({man, [&app, options] { return man_command(app, *options); }});
}

}  // namespace cli
