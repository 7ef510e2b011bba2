// completion.cpp -- what makes the shells complete the words of the program.
#include <algorithm>

#include "tnl/cli/command_tree.h"
#include "tnl/common/exit_status.h"
#include "tnl/common/text.h"

namespace cli {

const std::vector<std::string> known_shells{"bash", "zsh", "fish"};

namespace {

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& w : words) text += (text.empty() ? "" : " ") + w;
    return text;
}

std::vector<std::string> names_of(const std::vector<command_node>& commands) {
    std::vector<std::string> names;
    for (const command_node& c : commands) names.push_back(c.name);
    return names;
}

// What may stand for a value: words known now, words that the program is asked for, files, or anything.
struct value_source {
    std::string words, asked;  // asked: arguments of the program, which writes one word a line
    bool files = false;
    bool decks = false;  // of the files those that end in .in
};
value_source source_of(const command_option& option, const command_node& root) {
    if (!option.choices.empty()) return {joined(option.choices), "", false};
    if (option.value == "ELEMENT" || option.value == "WORD") return {"", "list --names", false};
    if (option.value == "EXAMPLE") return {"", "examples --names", false};
    if (option.value == "COMMAND") return {joined(names_of(root.commands)), "", false};
    if (option.value == "SHELL") return {joined(known_shells), "", false};
    if (option.value == "DECK") return {"", "", true, true};
    const bool number = option.value == "INT" || option.value == "UINT" || option.value == "FLOAT";
    return {"", "", !number};
}

// The first word that is no option: most commands take one kind.
value_source positional_source(const command_node& command, const command_node& root) {
    for (const command_option& o : command.options)
        if (o.positional) return source_of(o, root);
    return {};
}

std::vector<std::string> option_names(const command_node& command) {
    std::vector<std::string> names;
    for (const command_option& o : command.options)
        if (!o.positional) names.insert(names.end(), o.names.begin(), o.names.end());
    return names;
}

// ---- bash ----

std::string bash_source(const value_source& v) {
    if (!v.asked.empty()) return "kind=words values=$(\"$tnl\" " + v.asked + " 2>/dev/null)";
    if (!v.words.empty()) return "kind=words values=" + shell_quoted(v.words);
    return v.decks ? "kind=decks" : v.files ? "kind=files" : "kind=none";
}

std::string bash_text(const command_node& root) {
    std::string values,
        words = "                '') kind=words values=" + shell_quoted(joined(names_of(root.commands))) +
                " options=" + shell_quoted(joined(option_names(root))) + " ;;\n";
    for (const command_node& c : root.commands) {
        words += "                " + c.name + ") options=" + shell_quoted(joined(option_names(c))) + " " +
                 bash_source(positional_source(c, root)) + " ;;\n";
        for (const command_option& o : c.options) {
            if (o.positional || o.value.empty()) continue;
            std::string pattern;
            for (const std::string& n : o.names)
                pattern += (pattern.empty() ? "" : " | ") + shell_quoted(c.name + " " + n);
            values += "        " + pattern + ") " + bash_source(source_of(o, root)) + " ;;\n";
        }
    }
    const std::string name = root.name;
    return "# bash completion of " + name + "; for ~/.bashrc: source <(" + name + " completion bash)\n_" + name +
           R"(() {
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]} tnl=${COMP_WORDS[0]/#\~/$HOME}
    local command= options= values= kind=none i
    if [[ $cur == = ]]; then
        cur=
    elif [[ $prev == = ]]; then
        prev=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    for ((i = 1; i < COMP_CWORD; ++i)); do
        if [[ ${COMP_WORDS[i]} != -* ]]; then
            command=${COMP_WORDS[i]}
            break
        fi
    done
    case "$command $prev" in
)" + values +
           R"(        *)
            case $command in
)" + words +
           R"(            esac
            ;;
    esac
    COMPREPLY=()
    if [[ $cur == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$cur")
    elif [[ $kind == words ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$values" -- "$cur")
    elif [[ $kind == files ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$cur")
    elif [[ $kind == decks ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -X '!*.in' -- "$cur"; compgen -d -X '*.run' -- "$cur")
        if ((${#COMPREPLY[@]} == 0)); then mapfile -t COMPREPLY < <(compgen -f -- "$cur"); fi
    fi
}
complete -F _)" +
           name + " " + name + "\n";
}

// ---- zsh ----

// Text inside [...] of an argument of _arguments, and between colons.
std::string zsh_escaped(const std::string& s) { return with_backslashes(s, "[]:\\"); }

std::string zsh_action(const value_source& v, const std::string& name) {
    const std::string head = shell_quoted(":" + zsh_escaped(name) + ":");
    if (!v.asked.empty()) return head + "\"($($tnl " + v.asked + " 2>/dev/null))\"";
    if (!v.words.empty()) return head + shell_quoted("(" + v.words + ")");
    return head + (v.decks ? "\"_files -g '*.in'\"" : v.files ? "_files" : "' '");
}

std::string zsh_option(const command_option& o, const command_node& root) {
    if (o.positional) return "'*'" + zsh_action(source_of(o, root), o.value);
    std::string text = o.names.size() > 1 ? shell_quoted("(" + joined(o.names) + ")") + "{" : "";
    for (const std::string& n : o.names) text += n + (&n == &o.names.back() ? "" : ",");
    if (o.names.size() > 1) text += "}";
    text += shell_quoted("[" + zsh_escaped(o.text) + "]");
    if (!o.value.empty()) text += zsh_action(source_of(o, root), o.value);
    return text;
}

std::string zsh_arguments(const command_node& command, const command_node& root) {
    std::string text;
    bool positional = false;
    for (const command_option& o : command.options) {
        if (o.positional && positional) continue;  // '*' stands for all of them
        positional = positional || o.positional;
        text += " \\\n                    " + zsh_option(o, root);
    }
    return text;
}

std::string zsh_text(const command_node& root) {
    const std::string name = root.name;
    std::string text = "#compdef " + name + "\n# zsh completion of " + name +
                       "; for ~/.zshrc, behind compinit: source <(" + name + " completion zsh)\n_" + name + "() {\n" +
                       "    local tnl=${(q)words[1]} context state state_descr line\n    typeset -A opt_args\n"
                       "    local -a commands=(\n";
    for (const command_node& c : root.commands)
        text += "        " + shell_quoted(c.name + ":" + zsh_escaped(c.text)) + "\n";
    text += "    )\n    _arguments -C";
    for (const command_option& o : root.options) text += " " + zsh_option(o, root);
    text +=
        " '1: :->command' '*:: :->rest' && return\n    case $state in\n"
        "        command) _describe -t commands " +
        shell_quoted(name + " command") + " commands ;;\n        rest)\n            case $words[1] in\n";
    for (const command_node& c : root.commands)
        text += "                " + c.name + ")\n                    _arguments" + zsh_arguments(c, root) + "\n" +
                "                    ;;\n";
    return text + "            esac\n            ;;\n    esac\n}\nif [[ $funcstack[1] == _" + name +
           " ]]; then\n    _" + name + " \"$@\"\nelse\n    compdef _" + name + " " + name + "\nfi\n";
}

// ---- fish ----

std::string fish_quoted(const std::string& s) { return "'" + with_backslashes(s, "'\\") + "'"; }

std::string fish_source(const value_source& v) {
    if (!v.asked.empty()) return " -f -a '(__tnl_ask " + v.asked + ")'";
    if (!v.words.empty()) return " -f -a " + fish_quoted(v.words);
    if (v.decks) return " -k -f -a '(__fish_complete_suffix .in)'";
    return v.files ? " -F" : " -f";
}

std::string fish_option(const command_option& o, const command_node& root) {
    if (o.positional) return fish_source(source_of(o, root));
    std::string text;
    for (const std::string& n : o.names) text += n.starts_with("--") ? " -l " + n.substr(2) : " -s " + n.substr(1);
    if (!o.value.empty()) text += " -r" + fish_source(source_of(o, root));
    return text + " -d " + fish_quoted(o.text);
}

std::string fish_text(const command_node& root) {
    const std::string begin = "complete -c " + root.name;
    std::string text = "# fish completion of " + root.name + "; as ~/.config/fish/completions/" + root.name +
                       ".fish\n" + "function __tnl_ask\n    set -l program (commandline -opc)[1]\n" +
                       "    $program $argv 2>/dev/null\nend\n" + begin + " -f\n";
    for (const command_option& o : root.options)
        text += begin + " -n __fish_use_subcommand" + fish_option(o, root) + "\n";
    for (const command_node& c : root.commands)
        text += begin + " -n __fish_use_subcommand -a " + c.name + " -d " + fish_quoted(c.text) + "\n";
    for (const command_node& c : root.commands)
        for (const command_option& o : c.options)
            text += begin + " -n '__fish_seen_subcommand_from " + c.name + "'" + fish_option(o, root) + "\n";
    return text;
}

}  // namespace

std::string completion_text(const command_node& root, std::string_view shell) {
    if (shell == "bash") return bash_text(root);
    if (shell == "zsh") return zsh_text(root);
    if (shell == "fish") return fish_text(root);
    throw usage_error("completion: unknown shell " + std::string(shell) + "; known: " + joined(known_shells));
}

}  // namespace cli
