#include "tnl/cli/command_tree.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace cli {

namespace {

// "TEXT:{bash,zsh}" is how the library writes a value with its only choices; "INT:POSITIVE" one with a condition.
void set_value(std::string type, command_option& option) {
    const std::size_t colon = type.find(':');
    const std::size_t open = type.find('{'), close = type.find('}');
    if (open < close && close != std::string::npos) {
        std::string choices = type.substr(open + 1, close - open - 1) + ",";
        for (std::size_t comma; (comma = choices.find(',')) != std::string::npos; choices.erase(0, comma + 1))
            option.choices.push_back(choices.substr(0, comma));
    }
    option.value = type.substr(0, std::min(colon, open));
}

command_option option_of(const CLI::Option& o) {
    command_option option;
    option.text = o.get_description();
    option.dflt = o.get_default_str();
    option.required = o.get_required();
    option.many = o.get_items_expected_max() > 1;
    option.positional = !o.nonpositional();
    if (o.get_items_expected_max() > 0) set_value(o.get_type_name(), option);
    if (option.positional) {
        option.value = o.get_single_name();
        option.names = {option.value};
        return option;
    }
    for (const std::string& s : o.get_snames()) option.names.push_back("-" + s);
    for (const std::string& l : o.get_lnames()) option.names.push_back("--" + l);
    return option;
}

}  // namespace

command_node tree_of(const CLI::App& app) {
    command_node node;
    node.name = app.get_name();
    node.text = app.get_description();
    node.more = app.get_footer();
    for (const CLI::Option* o : app.get_options())
        if (!o->get_group().empty()) node.options.push_back(option_of(*o));  // without a group: hidden
    for (const CLI::App* sub : app.get_subcommands([](const CLI::App* a) { return !a->get_group().empty(); }))
        node.commands.push_back(tree_of(*sub));
    for (command_node& c : node.commands)
        if (c.more == node.more) c.more.clear();  // inherited, as it had none of its own
    return node;
}

const command_node* find_command(const command_node& root, std::string_view name) {
    for (const command_node& c : root.commands)
        if (c.name == name) return &c;
    return nullptr;
}

}  // namespace cli
