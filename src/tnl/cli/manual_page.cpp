// manual_page.cpp -- pages for man, in the language of its macros.
#include <algorithm>

#include "tnl/cli/command_tree.h"
#include "tnl/common/exit_status.h"
#include "tnl/common/text.h"

namespace cli {

namespace {

struct told {
    std::string_view word, text;
};

// What holds for every command.
const std::pair<int, std::string_view> statuses[] = {
    {good, "Good."},
    {stopped, "The simulator stopped with a message."},
    {usage_fault, "Wrong words on the command line."},
    {deck_fault, "The deck or a library is at fault."},
    {assertion_failed, "An assertion failed."},
    {file_fault, "A file or folder could not be read or written."},
    {limit_reached, "A limit that was set for the run was reached."},
};
const told files[] = {
    {"DECK.run/", "Folder of a run, unless the command names another: the row files of the deck, and run.json."},
    {"DECK.run/run.json", "What the run was: deck, libraries, options, its end, and names and units of the columns."},
    {"share/*.aux", "Libraries of elements, in the folder beside that of the program."},
};
const told environment[] = {
    {"NO_COLOR", "When set and not empty, nothing is written in colour."},
    {"LC_ALL, LC_CTYPE, LANG",
     "The first that is set tells whether the terminal knows UTF-8; without it plots are made of plain characters. "
     "Numbers do not depend on it."},
    {"TMPDIR", "Folder for temporary files, instead of /tmp."},
};

// Text as man shows it letter by letter: hyphens stay what is typed, a line cannot be taken for a macro.
std::string escaped(std::string_view text) {
    std::string s(text);
    for (const auto& [from, to] :
         {std::pair{"\\", "\\e"}, {"-", "\\-"}, {"~", "\\(ti"}, {"^", "\\(ha"}, {"`", "\\(ga"}})
        s = replaced(std::move(s), from, to);
    return !text.empty() && (text[0] == '.' || text[0] == '\'') ? "\\&" + s : s;
}

// Lines of at most 78 columns, broken at blanks; a break that the text has stays one.
std::string filled(std::string_view text) {
    std::string lines, line;
    const auto end_line = [&] {
        lines += escaped(line) + "\n";
        line.clear();
    };
    while (!text.empty()) {
        const std::size_t n = std::min(text.find_first_of(" \n"), text.size());
        const std::string_view word = text.substr(0, n);
        if (!line.empty() && line.size() + 1 + word.size() > 70) end_line();
        line += (line.empty() || word.empty() ? "" : " ") + std::string(word);
        if (n < text.size() && text[n] == '\n') {
            end_line();
            lines += ".br\n";
        }
        text.remove_prefix(std::min(n + 1, text.size()));
    }
    if (!line.empty()) end_line();
    return lines;
}
std::string bold(std::string_view text) { return "\\fB" + escaped(text) + "\\fR"; }
std::string italic(std::string_view text) { return "\\fI" + escaped(text) + "\\fR"; }

std::string sentence(std::string text) {
    if (!text.empty() && std::string_view(".:;)").find(text.back()) == std::string_view::npos) text += '.';
    return text;
}

// What stands behind an option: the only choices, or the name of the value; a plain text is named by its option.
std::string value_of(const command_option& o) {
    if (!o.choices.empty()) {
        std::string text;
        for (const std::string& c : o.choices) text += (text.empty() ? "" : "|") + bold(c);
        return text;
    }
    if (o.value != "TEXT") return italic(o.value);
    std::string name = o.names.back();
    name.erase(0, name.find_first_not_of('-'));
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return italic(name);
}

std::string synopsis(const command_node& root, const command_node& command) {
    const bool is_root = &root == &command;
    std::string text = ".B " + escaped(is_root ? root.name : root.name + " " + command.name) + "\n";
    if (std::any_of(command.options.begin(), command.options.end(), [](const auto& o) { return !o.positional; }))
        text += "[" + italic("OPTION") + "]...\n";
    if (is_root) text += italic("COMMAND") + "\n[" + italic("ARGUMENT") + "]...\n";
    for (const command_option& o : command.options) {
        if (!o.positional) continue;
        const std::string word = italic(o.value) + (o.many ? "..." : "");
        text += (o.required ? word : "[" + word + "]") + "\n";
    }
    return text;
}

std::string option_text(const command_option& o) {
    std::string head;
    if (o.positional) {
        head = italic(o.value);
    } else {
        for (const std::string& n : o.names) head += (head.empty() ? "" : ", ") + bold(n);
        if (!o.value.empty()) head += " " + value_of(o);
    }
    std::string text = sentence(o.text);
    if (!o.dflt.empty()) text += " If not given: " + o.dflt + ".";
    return ".TP\n" + head + "\n" + filled(text);
}

template <class List>
std::string told_text(std::string_view title, const List& list) {
    std::string text = ".SH " + std::string(title) + "\n";
    for (const told& t : list) text += ".TP\n" + bold(t.word) + "\n" + filled(t.text);
    return text;
}

}  // namespace

std::string page_title(const command_node& root, const command_node& command) {
    return &root == &command ? root.name : root.name + "-" + command.name;
}

std::string manual_page(const command_node& root, const command_node& command, std::string_view version) {
    const bool is_root = &root == &command;
    const std::string title = page_title(root, command);
    std::string upper = title;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    std::string summary = command.text;
    while (!summary.empty() && summary.back() == '.') summary.pop_back();
    if (summary.starts_with(root.name + " ")) summary.erase(0, root.name.size() + 1);
    std::string text = ".TH " + escaped(upper) + " 1 \"\" \"" + escaped(version) + "\" \"Commands of " + root.name +
                       "\"\n.SH NAME\n" + filled(title + " - " + summary) + ".SH SYNOPSIS\n" + synopsis(root, command) +
                       ".SH DESCRIPTION\n" + filled(sentence(command.text));
    if (is_root)
        text += ".PP\n" +
                filled(
                    "Data goes to standard output, messages to standard error. Where a file is read or written, - is "
                    "standard input or output. Colour and moving lines are for terminals only.") +
                ".PP\n" +
                filled(
                    "The script of the same name at the top of the source tree builds the programs before it hands "
                    "over to this one.");
    if (!is_root && !command.more.empty()) text += ".PP\n" + filled(command.more);
    if (is_root) {
        text += ".SH COMMANDS\n";
        for (const command_node& c : command.commands) text += ".TP\n" + bold(c.name) + "\n" + filled(sentence(c.text));
    }
    if (!command.options.empty()) text += ".SH OPTIONS\n";
    for (const command_option& o : command.options) text += option_text(o);
    text += ".SH EXIT STATUS\n";
    for (const auto& [status, says] : statuses)
        text += ".TP\n" + bold(std::to_string(status)) + "\n" + std::string(says) + "\n";
    text += ".TP\n" + bold("128+n") + "\nEnded by signal n: 130 by an interrupt, 143 by a request to terminate.\n";
    text += told_text("FILES", files) + told_text("ENVIRONMENT", environment) + ".SH SEE ALSO\n";
    std::string also;
    if (!is_root) also = ".BR " + root.name + " (1)";
    if (is_root)
        for (const command_node& c : root.commands)
            also += (also.empty() ? "" : ",\n") + std::string(".BR ") + escaped(page_title(root, c)) + " (1)";
    return text + also + "\n";
}

}  // namespace cli
