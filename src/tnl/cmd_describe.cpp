#include <filesystem>
#include <memory>

#include "tnl/commands.h"
#include "tnl/element_pages.h"
#include "tnl/output_file.h"
#include "tnl/run_deck.h"

namespace cli {

namespace {

struct describe_options {
    std::string element, folder, deck;
    bool md = false, json = false, all = false;
};

[[noreturn]] void unknown_element(const std::string& name, const installed_libraries& libraries) {
    std::string near;
    const std::size_t colon = name.find(':');
    for (int i = 0; i < n_libraries; ++i) {
        if (library_forms[i].statement.empty()) continue;
        for (const std::string& n :
             near_names(libraries.library[i], colon == std::string::npos ? name : name.substr(colon + 1)))
            if ((near + ", ").find(" " + n + ", ") == std::string::npos) near += (near.empty() ? " " : ", ") + n;
    }
    throw usage_error("no element is called " + name + (near.empty() ? "" : "; near names:" + near) +
                      " (tnl list shows all)");
}

// A page for each element and the index; pages of elements that are gone are not touched.
void write_pages(const std::vector<element_sheet>& sheets, const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) throw file_error("cannot make folder " + folder.string() + ": " + error.message());
    write_output(folder / "README.md", index_markdown(sheets));
    for (const element_sheet& s : sheets) write_output(folder / page_name(s), sheet_markdown(s));
}

int describe_command(const describe_options& options) {
    installed_libraries libraries = read_installed(own_installation().share);
    std::vector<element_sheet> sheets = all_sheets(libraries);
    if (!options.deck.empty()) {
        const deck_source source = read_deck_source(options.deck);
        const own_composites own = own_composites_of(source);
        if (own.entries.empty()) throw deck_error(options.deck + " has no composites of its own");
        sheets.clear();
        for (const own_entry& e : own.entries) {
            sheets.push_back(sheet_of(e.entry, e.library));
            sheets.back().group = place_of(source, e.lines[0].at[0]).file;
        }
        libraries = with_own({}, own);  // for names that are near
    }
    if (!options.folder.empty()) {
        if (!options.all || !options.md) throw usage_error("describe: -o goes with --all --md");
        write_pages(sheets, options.folder);
        return good;
    }
    std::vector<const element_sheet*> chosen;
    if (options.all || (options.element.empty() && !options.deck.empty())) {
        for (const element_sheet& s : sheets) chosen.push_back(&s);
    } else {
        if (options.element.empty()) throw usage_error("describe: ELEMENT is missing (tnl list shows all)");
        chosen = find_sheets(sheets, options.element);
        if (chosen.empty()) unknown_element(options.element, libraries);
    }
    std::string text;
    if (options.json)
        text = sheet_json(chosen);
    else
        for (const element_sheet* s : chosen)
            text += (text.empty() ? "" : "\n") + (options.md ? sheet_markdown(*s) : sheet_text(*s));
    write_output("-", text);
    return good;
}

}  // namespace

void add_describe(CLI::App& app, command_list& commands) {
    const auto options = std::make_shared<describe_options>();
    CLI::App* describe =
        app.add_subcommand("describe", "Describe an element: terminals, parameters, outputs, equations");
    describe->add_option("ELEMENT", options->element, "Its name; g:clock is the clock of the family g");
    auto* md = describe->add_flag("--md", options->md, "As Markdown");
    describe->add_flag("--json", options->json, "As JSON")->excludes(md);
    describe->add_flag("--all", options->all, "Every element");
    describe->add_option("-o,--output", options->folder, "With --all --md: a folder for a page each and an index");
    describe->add_option(
        "--deck", options->deck,
        "Of the composites that this deck, or file of composites, has of its own; all without ELEMENT");
    commands.push_back({describe, [options] { return describe_command(*options); }});
}

}  // namespace cli
