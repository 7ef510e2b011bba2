#include <memory>

#include "tnl/cli/command_tree.h"
#include "tnl/cli/commands.h"
#include "tnl/common/exit_status.h"
#include "tnl/common/output_file.h"

namespace cli {

void add_completion(CLI::App& app, command_list& commands) {
    const auto shell = std::make_shared<std::string>();
    CLI::App* completion = app.add_subcommand("completion", "Write what makes a shell complete the words of tnl");
    completion->add_option("SHELL", *shell, "bash, zsh or fish")->required();
    completion->footer("For bash: source <(tnl completion bash)");
    commands.push_back({completion, [&app, shell] {
                            write_output("-", completion_text(tree_of(app), *shell));
                            return good;
                        }});
}

}  // namespace cli
