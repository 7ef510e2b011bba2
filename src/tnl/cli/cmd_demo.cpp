#include <memory>

#include "tnl/cli/commands.h"
#include "tnl/cli/demo.h"

namespace cli {

void add_demo(CLI::App& app, command_list& commands) {
    const auto folder = std::make_shared<std::string>("tnl-demo.run");
    CLI::App* demo = app.add_subcommand("demo", "Run two built-in decks; show rows, plots and picture files");
    demo->add_option("-o,--output", *folder, "Folder for decks, results and pictures")->capture_default_str();
    commands.push_back({demo, [folder] { return run_demo(*folder, own_installation(), this_terminal()); }});
}

}  // namespace cli
