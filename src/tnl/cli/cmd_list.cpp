#include <cctype>
#include <cstdio>
#include <memory>

#include "tnl/cli/commands.h"
#include "tnl/common/exit_status.h"
#include "tnl/common/near_words.h"
#include "tnl/common/output_file.h"
#include "tnl/elements/element_pages.h"
#include "tnl/elements/method_pages.h"
#include "tnl/run/run_deck.h"

namespace cli {

namespace {

struct list_options {
    std::string word;
    bool json = false, names = false, methods = false;
};

// "; near words: vpulse, ipulse": names of elements and words of their descriptions. Words of method: that speak of it
// are told as well.
std::string near_of(const std::string& word, const std::vector<element_sheet>& sheets) {
    std::vector<std::string> known;
    for (const element_sheet& s : sheets) {
        known.push_back(s.name);
        std::string letters;
        for (const char c : s.summary() + " ") {
            if (std::isalpha(static_cast<unsigned char>(c)) != 0) {
                letters += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
                continue;
            }
            if (letters.size() > 3) known.push_back(letters);
            letters.clear();
        }
    }
    std::string text = near_text(known, word, "near words");
    if (!method_list(word).empty()) text += "; words of method: do: tnl list --methods " + word;
    return text;
}

int list_methods(const list_options& options) {
    std::vector<const method_word*> words;
    for (const method_word& m : method_words())
        if (speaks_of(m, options.word)) words.push_back(&m);
    if (options.names) {
        std::string names;
        for (const method_word* m : words) names += std::string(m->word) + "\n";
        write_output("-", names);
    } else {
        write_output("-", options.json ? method_json(words) : method_list(options.word));
    }
    if (!words.empty()) return good;
    std::fprintf(stderr, "tnl: no word of method: speaks of %s%s\n", options.word.c_str(),
                 near_text(method_word_names(), options.word, "near names").c_str());
    return nothing_found;
}

int list_command(const list_options& options) {
    if (options.methods) return list_methods(options);
    const std::vector<element_sheet> all = all_sheets(read_installed(own_installation().share));
    std::vector<element_sheet> sheets = all;
    std::erase_if(sheets, [&](const element_sheet& s) { return !speaks_of(s, options.word); });
    if (options.names) {
        std::string names;
        for (const element_sheet& s : sheets) names += s.name + "\n";
        write_output("-", names);
    } else {
        write_output("-", options.json ? list_json(sheets) : list_text(sheets));
    }
    if (!sheets.empty()) return good;
    if (options.word.empty()) throw file_error("no element is installed");
    std::fprintf(stderr, "tnl: no element speaks of %s%s\n", options.word.c_str(), near_of(options.word, all).c_str());
    return nothing_found;
}

}  // namespace

void add_list(CLI::App& app, command_list& commands) {
    const auto options = std::make_shared<list_options>();
    CLI::App* list = app.add_subcommand(
        "list", "List the elements that a deck may use, or the words of method:, with a line about each");
    list->add_option("WORD", options->word, "Only those whose name, group or description has it, in any case");
    list->add_flag("--methods", options->methods, "The words of method: instead of elements");
    list->add_flag("--json", options->json, "As JSON");
    list->add_flag("--names", options->names, "Names alone, one a line");
    list->footer("Status: 0 listed, 1 nothing speaks of WORD.");
    commands.push_back({list, [options] { return list_command(*options); }});
}

}  // namespace cli
