#include "tnl/elements/element_sheet.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "tnl/common/text.h"

namespace cli {

namespace {

// The lines of a composite that list words for the deck, in the order in which their comments stand.
struct word_line {
    std::string_view keyword;
    std::vector<sheet_word> element_sheet::*member;
    std::string_view kind;
    bool pairs;  // word and value by turns
};
const word_line word_lines[] = {
    {"mainnodes:", &element_sheet::terminals, "node", false},
    {"mainnodes_anlg:", &element_sheet::terminals, "node", false},
    {"mainnodes_dgtl:", &element_sheet::terminals, "digital node", false},
    {"mainvars:", &element_sheet::terminals, "variable", false},
    {"main_vars:", &element_sheet::terminals, "variable", false},
    {"ind_nodes:", &element_sheet::terminals, "sensed node", false},
    {"ind_branches:", &element_sheet::terminals, "sensed element", false},
    {"digital_nodes:", &element_sheet::terminals, "digital node", false},
    {"analog_nodes:", &element_sheet::terminals, "sensed node", false},
    {"main_var:", &element_sheet::terminals, "variable", false},
    {"xvar:", &element_sheet::terminals, "explicit variable", false},
    {"xvars:", &element_sheet::terminals, "explicit variable", false},
    {"gvars:", &element_sheet::terminals, "general variable", false},
    {"iparms:", &element_sheet::parameters, "integer", true},
    {"sparms:", &element_sheet::parameters, "text", true},
    {"rparms:", &element_sheet::parameters, "real", true},
    {"stparms:", &element_sheet::start_values, "real", true},
    {"igparms:", &element_sheet::first_guesses, "real", true},
    {"stparms_anlg:", &element_sheet::start_values, "real", true},
    {"stparms_dgtl:", &element_sheet::start_values, "integer", true},
    {"igparms_anlg:", &element_sheet::first_guesses, "real", true},
    {"igparms_dgtl:", &element_sheet::first_guesses, "integer", true},
    {"outvar:", &element_sheet::outputs, "", true},
    {"outvar_anlg:", &element_sheet::outputs, "", true},
    {"outvar_dgtl:", &element_sheet::outputs, "", true},
    {"outvar_ac:", &element_sheet::outputs_ac, "", true},
};

struct family_row {
    std::string_view begin, family, title;
};
const family_row families[] = {
    {"ece", "e", "electrical elements"}, {"gce", "g", "blocks"},          {"dce", "d", "digital elements"},
    {"xce", "x", "explicit blocks"},     {"gme", "gm", "joint elements"},
};

// Words of the entry for the deck, in the order of word_lines; an output that only repeats a variable or a digital node
// of the same name (y=var_of_y) shares that one's line.
struct listed_word {
    std::vector<sheet_word> element_sheet::*member;
    sheet_word word;
    bool shared;
};
std::vector<listed_word> listed(const entry_lines& lines) {
    std::vector<listed_word> all;
    for (const word_line& l : word_lines) {
        std::vector<name_and_value> found;
        const bool digital = !lines.empty() && lines[0][0] == "dce" && l.keyword == "mainnodes:";
        if (l.pairs)
            found = pairs_of(lines, l.keyword);
        else
            for (const words& w : lines)
                if (w[0] == l.keyword)
                    for (int i = 1; i < w.size(); ++i) found.push_back({w.str(i), ""});
        const bool output = l.kind.empty();
        for (name_and_value& f : found) {
            const bool repeats = output && (f.value == "var_of_" + f.name || f.value == "dvar_of_" + f.name);
            const bool repeats_x = output && f.value == "xvar_of_" + f.name &&
                                   std::any_of(all.begin(), all.end(), [&](const listed_word& terminal) {
                                       return terminal.word.word == f.name;
                                   });
            const bool shared = repeats || repeats_x;
            const std::string kind(digital ? "digital node" : l.kind);
            all.push_back({l.member, {f.name, kind, output ? "" : f.value, "", ""}, shared});
        }
    }
    return all;
}

void check_example(const std::string& text, const element_sheet& sheet, std::vector<std::string>& faults) {
    const words w = parse_line_2(text);
    std::vector<std::string> given;
    for (int i = 1; i + 1 < w.size(); i += 2) given.push_back(w.str(i));
    const auto has = [&](std::string_view word) { return std::find(given.begin(), given.end(), word) != given.end(); };
    if (w.size() % 2 == 0 || w.empty() || w[0] != sheet.statement || !has("name") || !has("type") ||
        w[2 + 2 * static_cast<int>(std::find(given.begin(), given.end(), "type") - given.begin())] != sheet.name)
        faults.push_back("example is no statement of the element: " + text);
    for (const sheet_word& t : sheet.terminals)
        if (!has(t.word)) faults.push_back("example without terminal " + t.word + ": " + text);
    for (const std::string& g : given) {
        bool known = g == "name" || g == "type";
        for (const auto part : {&sheet.terminals, &sheet.parameters, &sheet.start_values, &sheet.first_guesses})
            for (const sheet_word& k : *part) known = known || k.word == g;
        if (!known) faults.push_back(std::string("example with unknown word ").append(g).append(": ").append(text));
    }
}

model_rules rules_of_basics(const library_entry& entry, int library, const installed_libraries& libraries) {
    model_rules all;
    int n = 0;
    const deck_needs needs = needs_of(entry_name{library, entry.name}, libraries);
    for (int i = 0; i < n_libraries; ++i)
        for (const int position : needs.entries[i]) {
            if (!library_forms[i].statement.empty() || library_forms[i].begin.ends_with("_ac")) continue;
            const library_entry& basic = libraries.library[i].entries[static_cast<std::size_t>(position)];
            model_rules rules = rules_of(basic, library_forms[i]);
            const bool refuses_dc = all.refuses_dc || rules.refuses_dc, jumps = all.jumps || rules.jumps;
            all = ++n == 1 && basic.name == entry.name ? std::move(rules) : model_rules{};
            all.refuses_dc = refuses_dc;
            all.jumps = jumps;
        }
    const model_rules own = rules_of(entry, library_forms[library]);
    if (!own.limits.empty()) {
        all.limits = own.limits;
        all.limit_texts = own.limit_texts;
    }
    if (!own.doubts.empty()) {
        all.doubts = own.doubts;
        all.expect_texts = own.expect_texts;
    }
    all.computed = own.computed;
    all.faults.insert(all.faults.end(), own.faults.begin(), own.faults.end());
    return all;
}

}  // namespace

const std::string& element_sheet::summary() const {
    static const std::string none;
    return description.empty() ? none : description[0];
}

element_sheet sheet_of(const library_entry& entry, int library, const installed_libraries& libraries) {
    const library_form& form = library_forms[library];
    const entry_lines lines = lines_of(entry, form);
    const element_doc doc = doc_of(entry);
    element_sheet sheet;
    for (const family_row& f : families)
        if (f.begin == form.begin) sheet.family = f.family;
    sheet.statement = form.statement;
    sheet.group = doc.group;
    sheet.name = entry.name;
    sheet.description = doc.description;
    sheet.examples = doc.examples;
    sheet.response = doc.response;
    if (!lines.empty())
        for (int i = 1; i + 1 < lines[0].size(); ++i)
            if (lines[0][i] == "allow_ac" && lines[0][i + 1] == "yes") sheet.small_signal = true;
    sheet.rules = rules_of_basics(entry, library, libraries);
    // The first line about a word goes to the first thing of that name, the second to the second.
    std::map<std::string, std::vector<const word_doc*>> of_word;
    for (const word_doc& w : doc.words) of_word[w.word].push_back(&w);
    std::map<std::string, std::size_t> used;
    for (listed_word& l : listed(lines)) {
        const auto found = of_word.find(l.word.word);
        if (found != of_word.end()) {
            std::size_t& n = used[l.word.word];
            if (l.shared && n > 0) --n;
            const word_doc& w = *found->second[std::min(n++, found->second.size() - 1)];
            l.word.unit = w.unit;
            l.word.text = w.text;
        }
        (sheet.*l.member).push_back(std::move(l.word));
    }
    return sheet;
}

// A type of element statements that the simulator itself knows, told as an entry would tell it.
const library_entry own_type = {
    "ground_dummy",
    "ece name=ground_dummy allow_ac=yes\n#@ ground\n#: Joins a node with the reference node\n"
    "#: The node is another name of the node of refnode, at 0 V.\n"
    "#> eelement name=G1 type=ground_dummy c=NODE\n#. c - node\nmainnodes: c\nendece\n"};

std::vector<element_sheet> all_sheets(const installed_libraries& libraries) {
    std::vector<element_sheet> sheets;
    for (int i = 0; i < n_libraries; ++i) {
        if (library_forms[i].statement.empty()) continue;
        const auto first = static_cast<std::ptrdiff_t>(sheets.size());
        for (const library_entry& entry : libraries.library[i].entries) sheets.push_back(sheet_of(entry, i, libraries));
        if (library_forms[i].begin == "ece") sheets.push_back(sheet_of(own_type, i));
        std::sort(sheets.begin() + first, sheets.end(), [](const element_sheet& a, const element_sheet& b) {
            return std::tie(a.group, a.name) < std::tie(b.group, b.name);
        });
    }
    return sheets;
}

std::string_view family_title(std::string_view family) {
    for (const family_row& f : families)
        if (f.family == family) return f.title;
    return {};
}

std::vector<const element_sheet*> find_sheets(const std::vector<element_sheet>& sheets, std::string_view name) {
    std::vector<const element_sheet*> found;
    for (const element_sheet& s : sheets)
        if (s.name == name || s.family + ":" + s.name == name) found.push_back(&s);
    return found;
}

std::vector<std::string> doc_faults(const library_entry& entry, int library) {
    std::vector<std::string> faults;
    const element_doc doc = doc_of(entry);
    if (doc.description.empty()) faults.emplace_back("no description");
    std::size_t at = 0;
    const auto too_much = [&](std::size_t end) {
        for (; at < end; ++at) faults.push_back("a line too much, or out of order: " + doc.words[at].word);
    };
    for (const listed_word& l : listed(lines_of(entry, library_forms[library]))) {
        if (l.shared) continue;
        std::size_t i = at;
        while (i < doc.words.size() && doc.words[i].word != l.word.word) ++i;
        if (i == doc.words.size()) {
            faults.push_back("no line for " + l.word.word + " at its place");
            continue;
        }
        too_much(i);
        if (doc.words[at++].text.empty()) faults.push_back("no text for " + l.word.word);
    }
    too_much(doc.words.size());
    const element_sheet sheet = sheet_of(entry, library);
    if (sheet.examples.empty()) faults.emplace_back("no example");
    for (const std::string& example : sheet.examples) check_example(example, sheet, faults);
    return faults;
}

}  // namespace cli
