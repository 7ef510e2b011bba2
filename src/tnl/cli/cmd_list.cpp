#include <algorithm>
#include <cctype>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

#include "tnl/cli/commands.h"
#include "tnl/common/exit_status.h"
#include "tnl/common/near_words.h"
#include "tnl/common/output_file.h"
#include "tnl/common/text.h"
#include "tnl/elements/element_pages.h"
#include "tnl/elements/element_search.h"
#include "tnl/elements/method_pages.h"
#include "tnl/run/run_deck.h"

namespace cli {

namespace {

using json = nlohmann::ordered_json;

struct list_options {
    std::vector<std::string> words;
    std::string word;  // all of them, with a blank in between
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

// Parts of the trade with the line that brings one into a deck.
std::string parts_text(const std::vector<trade_part>& parts) {
    std::string text;
    for (const trade_part& p : parts)
        text += "    " + p.name + "  " + p.text + " (" + p.type + ")\n      include " + p.file.string() + "\n";
    return text.empty() ? "" : "parts: models of the trade, each by the include line under it\n" + text;
}

json part_json(const std::vector<trade_part>& parts) {
    json list = json::array();
    for (const trade_part& p : parts)
        list.push_back({{"family", "part"},
                        {"group", "parts"},
                        {"name", p.name},
                        {"statement", "include " + p.file.string()},
                        {"summary", p.text + " (" + p.type + ")"}});
    return list;
}

// One element alone, the one of several that has a word as its name, or one part: how a deck says it.
std::string example_text(const std::vector<element_sheet>& sheets, const std::vector<trade_part>& parts,
                         const std::vector<element_sheet>& all, const std::vector<std::string>& words) {
    const auto shown = [](const std::vector<std::string>& lines) {
        std::string text;
        for (const std::string& line : lines) text += "  " + line + "\n";
        return text.empty() ? text : "\nExample\n" + text;
    };
    if (sheets.size() == 1 && parts.empty()) return shown(sheets[0].examples);
    for (const element_sheet& s : sheets)
        if (std::find(words.begin(), words.end(), s.name) != words.end()) return shown(s.examples);
    if (!sheets.empty() || parts.size() != 1) return "";
    const std::vector<const element_sheet*> type = find_sheets(all, "e:" + parts[0].type);
    if (type.empty()) return "";
    std::string line = "eelement name=X1 type=" + parts[0].type + " model=" + parts[0].name;
    for (const sheet_word& w : type[0]->terminals) line += " " + w.word + "=" + w.word;
    return shown({line});
}

std::string found_text(const search_result& found, const std::vector<trade_part>& parts,
                       const std::vector<element_sheet>& all, const std::vector<std::string>& words) {
    std::string text;
    const auto add = [&](const std::string& more) {
        if (!more.empty()) text += (text.empty() ? "" : "\n") + more;
    };
    add(list_text(found.whole));
    add(parts_text(parts));
    if (!found.part.empty()) {
        if (!text.empty()) add("Also, as a part of a word:\n\n");
        text += list_text(found.part);
    }
    if (!found.some.empty()) {
        if (text.empty()) add("Nothing speaks of all of these words; of some of them do:\n\n");
        text += list_text(found.some);
    }
    std::vector<element_sheet> hits = found.whole;
    hits.insert(hits.end(), found.part.begin(), found.part.end());
    return text + example_text(hits, parts, all, words);
}

int list_command(const list_options& options) {
    if (options.methods) return list_methods(options);
    const std::filesystem::path share = own_installation().share;
    const std::vector<element_sheet> all = all_sheets(read_installed(share));
    if (all.empty() && options.word.empty()) throw file_error("no element is installed");
    if (options.word.empty() && !options.names && !options.json) {
        write_output("-", list_text(all));
        return good;
    }
    search_result found = search(all, options.word);
    std::vector<trade_part> parts;
    if (!options.word.empty())
        for (trade_part& p : parts_in(share / "parts"))
            if (answer_of(p, options.word) >= answer::part) parts.push_back(std::move(p));
    const hint* advice = options.word.empty() ? nullptr : find_hint(options.word);
    if (!parts.empty()) found.some.clear();
    if (advice) {  // better than what has the letters somewhere
        found.part.clear();
        found.some.clear();
    }
    std::vector<element_sheet> sheets = found.whole;
    sheets.insert(sheets.end(), found.part.begin(), found.part.end());
    if (options.names) {
        std::string names;
        for (const element_sheet& s : sheets) names += s.name + "\n";
        for (const trade_part& p : parts) names += p.name + "\n";
        write_output("-", names);
    } else if (options.json) {
        json list = json::parse(list_json(sheets));
        for (json& p : part_json(parts)) list.push_back(std::move(p));
        write_output("-", list.dump(2) + "\n");
    } else {
        write_output("-", found_text(found, parts, all, split(lower(options.word), ' ')));
    }
    if (advice) std::fprintf(stderr, "tnl: %s: %s\n", options.word.c_str(), std::string(advice->text).c_str());
    if (!sheets.empty() || !parts.empty()) return good;
    if (advice) return nothing_found;
    std::fprintf(stderr, "tnl: no element speaks of %s%s\n", options.word.c_str(), near_of(options.word, all).c_str());
    return nothing_found;
}

}  // namespace

void add_list(CLI::App& app, command_list& commands) {
    const auto options = std::make_shared<list_options>();
    CLI::App* list = app.add_subcommand(
        "list", "List the elements that a deck may use, or the words of method:, with a line about each");
    list->add_option("WORD", options->words,
                     "Only those whose name, group or description has all of these words, in any case");
    list->add_flag("--methods", options->methods, "The words of method: instead of elements");
    list->add_flag("--json", options->json, "As JSON");
    list->add_flag("--names", options->names, "Names alone, one a line");
    list->footer(
        "Whole words come first, then those that are a part of a word; models of the trade have their include line.\n"
        "Status: 0 listed, 1 nothing speaks of WORD.");
    commands.push_back({list, [options] {
                            for (const std::string& word : options->words)
                                options->word += (options->word.empty() ? "" : " ") + word;
                            return list_command(*options);
                        }});
}

}  // namespace cli
