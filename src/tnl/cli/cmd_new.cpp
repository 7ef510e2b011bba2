#include <cstdio>
#include <memory>

#include "tnl/cli/commands.h"
#include "tnl/cli/example_decks.h"
#include "tnl/run/run_deck.h"

namespace cli {

namespace {

struct new_options {
    std::string name, example;
};

const example_deck& find_example(const std::vector<example_deck>& all, const std::string& name) {
    installed_library names;  // for what is near
    for (const example_deck& e : all) {
        if (e.name == name) return e;
        names.entries.push_back({e.name, ""});
    }
    std::string near;
    for (const std::string& n : near_names(names, name)) near += (near.empty() ? "; near names: " : ", ") + n;
    throw usage_error("no example is called " + name + near + " (tnl examples shows all)");
}

int new_command(const new_options& options) {
    std::vector<example_deck> all;
    const example_deck* example = nullptr;
    if (!options.example.empty()) {
        all = read_examples(own_installation().share);
        example = &find_example(all, options.example);
    }
    const std::string deck = write_new_deck(options.name, example);
    if (deck == "-") return good;
    std::fprintf(stderr, "wrote %s; next:\n", deck.c_str());
    std::fflush(stderr);
    std::printf("tnl run %s\n", deck.c_str());
    return good;
}

}  // namespace

void add_new(CLI::App& app, command_list& commands) {
    const auto options = std::make_shared<new_options>();
    CLI::App* fresh = app.add_subcommand("new", "Write a deck to start from; nothing that exists is replaced");
    fresh->add_option("NAME", options->name, "The deck becomes NAME.in, or NAME/deck.in when it has data files")
        ->required();
    fresh->add_option("--from", options->example, "An example, instead of a capacitor charged through a resistor")
        ->type_name("EXAMPLE");
    fresh->footer("The command that runs the new deck is printed. NAME - writes the deck to standard output.");
    commands.push_back({fresh, [options] { return new_command(*options); }});
}

}  // namespace cli
