#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>

#include "tnl/cli/commands.h"
#include "tnl/cli/example_decks.h"
#include "tnl/common/output_file.h"
#include "tnl/run/run_deck.h"

namespace cli {

namespace {

struct examples_options {
    bool json = false, names = false;
};

int examples_command(const examples_options& options) {
    const std::vector<example_deck> all = read_examples(own_installation().share);
    std::size_t width = 0;
    for (const example_deck& e : all) width = std::max(width, e.name.size());
    std::string text;
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const example_deck& e : all) {
        if (options.json)
            list.push_back({{"name", e.name}, {"title", e.title}, {"deck", e.deck.string()}, {"story", e.story}});
        else if (options.names)
            text += e.name + "\n";
        else
            text += e.name + std::string(width + 2 - e.name.size(), ' ') + e.title + "\n";
    }
    write_output("-", options.json ? list.dump(2) + "\n" : text);
    return good;
}

}  // namespace

void add_examples(CLI::App& app, command_list& commands) {
    const auto options = std::make_shared<examples_options>();
    CLI::App* examples = app.add_subcommand("examples", "List the example decks; tnl new starts from one of them");
    examples->add_flag("--json", options->json, "As JSON, with their stories");
    examples->add_flag("--names", options->names, "Names alone, one a line");
    commands.push_back({examples, [options] { return examples_command(*options); }});
}

}  // namespace cli
