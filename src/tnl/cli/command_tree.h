// command_tree.h -- the commands and their options as plain data; completion and manual pages are made of it.
#pragma once
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
}

namespace cli {

struct command_option {
    std::vector<std::string> names;  // "-o", "--output"; of a positional its name alone: "DECK"
    std::string value;               // what stands behind it: "FOLDER"; empty: a flag. Of a positional its name
    std::string text, dflt;
    bool positional = false, required = false, many = false;
    std::vector<std::string> choices;  // the only values it takes; empty: not known here
};
struct command_node {
    std::string name, text, more;  // more: what follows the options in the help text
    std::vector<command_option> options;
    std::vector<command_node> commands;
};
command_node tree_of(const CLI::App& app);

const command_node* find_command(const command_node& root, std::string_view name);  // nullptr if none

// The text that makes a shell complete the words of the program: "bash", "zsh" or "fish". Values ELEMENT, WORD and
// EXAMPLE are asked of the program when needed, COMMAND is a command, SHELL a shell; other values are names of files.
extern const std::vector<std::string> known_shells;
std::string completion_text(const command_node& root, std::string_view shell);

// The manual page of a command; of the whole program when the command is the root. Lines for a version of man.
std::string manual_page(const command_node& root, const command_node& command, std::string_view version);
std::string page_title(const command_node& root, const command_node& command);  // "tnl-run"

}  // namespace cli
