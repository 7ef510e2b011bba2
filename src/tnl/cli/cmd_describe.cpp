#include <filesystem>
#include <memory>

#include "tnl/cli/commands.h"
#include "tnl/cli/response_pictures.h"
#include "tnl/common/output_file.h"
#include "tnl/common/text.h"
#include "tnl/elements/element_pages.h"
#include "tnl/elements/method_pages.h"
#include "tnl/elements/response_deck.h"
#include "tnl/run/run_deck.h"

namespace cli {

namespace {

struct describe_options {
    std::string element, output, deck;
    bool md = false, json = false, all = false, methods = false, response = false;
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
    for (const std::string& n : near_names(method_word_names(), name)) near += (near.empty() ? " " : ", ") + n;
    throw command_error(nothing_found, "no element or word of method: is called " + name +
                                           (near.empty() ? "" : "; near names:" + near) + " (tnl list shows all)");
}

// A page for each element, pictures of responses, and the index; pages of elements that are gone are not touched.
void write_pages(const std::vector<element_sheet>& sheets, const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) throw file_error("cannot make folder " + folder.string() + ": " + error.message());
    write_output(folder / "README.md", index_markdown(sheets));
    for (const element_sheet& s : sheets) {
        write_output(folder / page_name(s), sheet_markdown(s));
        if (!s.response.empty()) write_output(folder / picture_name(s), response_picture(s, own_installation()));
    }
}

int describe_methods(const describe_options& options, const method_word* one) {
    std::vector<const method_word*> words;
    for (const method_word& m : method_words())
        if (one == nullptr || one == &m) words.push_back(&m);
    std::string text;
    if (options.json)
        text = method_json(words);
    else if (options.md)
        text = one == nullptr ? method_markdown() : method_markdown(*one);
    else
        for (const method_word* m : words) text += (text.empty() ? "" : "\n") + method_text(*m);
    write_output(options.output.empty() ? "-" : options.output, text);
    return good;
}

// The deck of the first that has one.
std::string response_text(const std::vector<const element_sheet*>& chosen, const std::string& name) {
    for (const element_sheet* s : chosen)
        if (const response_deck deck = response_of(*s); !deck.text.empty()) {
            std::string text;
            for (const response_deck::data_file& f : deck.files)
                text += "# the file " + f.name + ":\n# " + replaced(std::string(trimmed(f.text)), "\n", "\n# ") + "\n";
            return text + deck.text;
        }
    throw command_error(nothing_found, "there is no response of " + name);
}

int describe_command(const describe_options& options) {
    if (options.methods) return describe_methods(options, nullptr);
    if (options.element.starts_with("method:"))
        if (const method_word* m = find_word_of_method(options.element)) return describe_methods(options, m);
    installed_libraries libraries = read_installed(own_installation().share);
    std::vector<element_sheet> sheets = all_sheets(libraries);
    if (!options.deck.empty()) {
        const deck_source source = read_deck_source(options.deck);
        const own_composites own = own_composites_of(source);
        if (own.entries.empty()) throw deck_error(options.deck + " has no composites of its own");
        const installed_libraries all = with_own(std::move(libraries), own);
        sheets.clear();
        for (const own_entry& e : own.entries) {
            sheets.push_back(sheet_of(e.entry, e.library, all));
            sheets.back().group = place_of(source, e.lines[0].at[0]).file;
        }
        libraries = with_own({}, own);  // for names that are near
    }
    if (!options.output.empty()) {
        if (!options.all || !options.md) throw usage_error("describe: -o goes with --all --md, or with --methods");
        write_pages(sheets, options.output);
        return good;
    }
    std::vector<const element_sheet*> chosen;
    if (options.all || (options.element.empty() && !options.deck.empty())) {
        for (const element_sheet& s : sheets) chosen.push_back(&s);
    } else {
        if (options.element.empty()) throw usage_error("describe: ELEMENT is missing (tnl list shows all)");
        chosen = find_sheets(sheets, options.element);
        if (chosen.empty())
            if (const method_word* m = find_word_of_method(options.element)) return describe_methods(options, m);
        if (chosen.empty()) unknown_element(options.element, libraries);
    }
    std::string text;
    if (options.response)
        text = response_text(chosen, options.element);
    else if (options.json)
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
        app.add_subcommand("describe", "Describe an element: terminals, parameters, outputs; or a word of method:");
    describe->add_option("ELEMENT", options->element,
                         "Its name; g:clock is the clock of the family g, method:WORD a word of method:");
    auto* md = describe->add_flag("--md", options->md, "As Markdown");
    describe->add_flag("--json", options->json, "As JSON")->excludes(md);
    describe->add_flag("--response", options->response, "Of a block: a deck that shows how it answers")->excludes(md);
    describe->add_flag("--all", options->all, "Every element");
    describe->add_flag("--methods", options->methods, "Every word of method:");
    describe->add_option("-o,--output", options->output,
                         "With --all --md: a folder for a page each and an index; with --methods: a file");
    describe->add_option(
        "--deck", options->deck,
        "Of the composites that this deck, or file of composites, has of its own; all without ELEMENT");
    describe->footer("Status: 0 described, 1 nothing has this name.");
    commands.push_back({describe, [options] { return describe_command(*options); }});
}

}  // namespace cli
