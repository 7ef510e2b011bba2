#include <cstdio>
#include <memory>

#include "tnl/commands.h"
#include "tnl/element_pages.h"
#include "tnl/output_file.h"
#include "tnl/run_deck.h"

namespace cli {

namespace {

struct list_options {
    std::string word;
    bool json = false, names = false;
};

int list_command(const list_options& options) {
    std::vector<element_sheet> sheets = all_sheets(read_installed(own_installation().share));
    std::erase_if(sheets, [&](const element_sheet& s) { return !speaks_of(s, options.word); });
    if (options.names) {
        std::string names;
        for (const element_sheet& s : sheets) names += s.name + "\n";
        write_output("-", names);
        return good;
    }
    write_output("-", options.json ? list_json(sheets) : list_text(sheets));
    if (sheets.empty())
        std::fprintf(stderr, "tnl: no element%s%s\n", options.word.empty() ? " is installed" : " speaks of ",
                     options.word.c_str());
    return good;
}

}  // namespace

void add_list(CLI::App& app, command_list& commands) {
    const auto options = std::make_shared<list_options>();
    CLI::App* list = app.add_subcommand("list", "List the elements that a deck may use, with a line about each");
    list->add_option("WORD", options->word, "Only those whose name, group or description has it, in any case");
    list->add_flag("--json", options->json, "As JSON");
    list->add_flag("--names", options->names, "Names alone, one a line");
    commands.push_back({list, [options] { return list_command(*options); }});
}

}  // namespace cli
