#include "tnl/elements/element_pages.h"

#include <algorithm>
#include <cctype>
#include <nlohmann/json.hpp>

#include "tnl/common/text.h"

namespace cli {

namespace {

using json = nlohmann::ordered_json;

// The parts of a sheet, in the order of a page. How an output is written in a deck belongs to its head.
struct part {
    std::string_view key, title;
    std::vector<sheet_word> element_sheet::*member;
    bool kinds, values;  // columns that the part has
};
const part parts[] = {
    {"terminals", "Terminals", &element_sheet::terminals, true, false},
    {"parameters", "Parameters", &element_sheet::parameters, true, true},
    {"start_values", "Start values", &element_sheet::start_values, false, true},
    {"first_guesses", "First guesses", &element_sheet::first_guesses, false, true},
    {"outputs", "Output variables", &element_sheet::outputs, false, false},
    {"outputs_small_signal", "Output variables in small signals", &element_sheet::outputs_ac, false, false},
};

// What somebody looks for who opens a group of the index, where its name alone does not say it.
struct group_row {
    std::string_view group, text;
};
const group_row groups[] = {
    {"algebra", "Sums, products, functions of one variable, limits."},
    {"clocks",
     "Waves and pulses over time or over an angle: carriers of modulators, gate pulses, references, firing pulses."},
    {"compare", "Comparators, with and without hysteresis: one input against another or against a threshold."},
    {"control", "Controllers and modulators that stand ready: PI, PID, current control, phase-locked loops, droop."},
    {"delays", "A value from earlier: behind a time, or at the last accepted point."},
    {"dynamics", "Integrators, filters, samples, delays, means."},
    {"filters",
     "Transfer functions in s and in z: lags, leads, low pass, band pass, notch; discrete filters at their samples."},
    {"heat", "Losses of switches, and the temperature that follows from them."},
    {"integrate", "Integrators, with limits and resets; means, effective values and peaks over a period."},
    {"logic", "Gates on levels."},
    {"machine_control", "Estimates and tables of machine control, exciters, turbines."},
    {"postproc", "Means, effective values, distortion and power factor of a finished run."},
    {"sample", "Samplers and pulses of a given length."},
    {"support", "Sums, differences, gains, the larger and the smaller of two; links to parameters."},
    {"tables", "Data files as functions of one to four variables."},
    {"transforms", "Three phases to a rotating or a fixed frame and back; phase-locked loop."},
    {"user", "Formulas that are compiled in, chosen by a number."},
};

bool is_output(const part& p) { return p.member == &element_sheet::outputs || p.member == &element_sheet::outputs_ac; }

// Real parameters can be asked for like output variables.
std::string deck_form(const part& p, const element_sheet& s) {
    return "outvar: x=" + (s.*p.member).front().word + "_of_NAME";
}

// "eelement name=NAME type=r p=.. n=.. [r=1 tc1=0 ...]" in lines of at most 100 columns.
std::vector<std::string> signature(const element_sheet& s) {
    std::vector<std::string> all{s.statement, "name=NAME", "type=" + s.name};
    for (const sheet_word& w : s.terminals) all.push_back(w.word + "=..");
    const std::size_t optional = all.size();
    for (const auto member : {&element_sheet::parameters, &element_sheet::start_values, &element_sheet::first_guesses})
        for (const sheet_word& w : s.*member) all.push_back(w.word + "=" + w.value);
    if (all.size() > optional) {
        all[optional].insert(0, "[");
        all.back() += "]";
    }
    std::vector<std::string> lines{""};
    for (const std::string& word : all) {
        if (lines.back().size() + 1 + word.size() > 98) lines.emplace_back("+");
        lines.back() += (lines.back().empty() ? "" : " ") + word;
    }
    return lines;
}

std::string padded(std::string s, std::size_t n) {
    s.resize(std::max(n, s.size()), ' ');
    return s;
}

// Rows of cells, each column as wide as its widest cell; empty columns vanish.
std::string table_text(const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::size_t> width;
    for (const auto& r : rows)
        for (std::size_t i = 0; i < r.size(); ++i) {
            if (i == width.size()) width.push_back(0);
            width[i] = std::max(width[i], r[i].size());
        }
    std::string text;
    for (const auto& r : rows) {
        std::string line;
        for (std::size_t i = 0; i < r.size(); ++i)
            if (width[i] > 0) line += "  " + padded(r[i], width[i]);
        text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return text;
}

std::vector<std::string> cells_of(const sheet_word& w, const part& p) {
    std::vector<std::string> cells{w.word};
    if (p.kinds) cells.push_back(p.values && w.kind == "real" ? "" : w.kind);
    if (p.values) cells.push_back(w.value);
    cells.push_back(w.unit);
    cells.push_back(w.text);
    return cells;
}

json words_json(const std::vector<sheet_word>& words, const part& p) {
    json list = json::array();
    for (const sheet_word& w : words) {
        json one{{"name", w.word}};
        if (p.kinds) one["kind"] = w.kind;
        if (p.values) one["default"] = w.value;
        one["unit"] = w.unit;
        one["text"] = w.text;
        list.push_back(std::move(one));
    }
    return list;
}

std::string_view small_signal_line(const element_sheet& s) {
    if (s.family == "d") return "An ac block leaves its levels as they are.";
    return s.small_signal ? "It has a small-signal form." : "It has no small-signal form: an ac block stops at it.";
}

// What a check holds decks to, in words.
std::vector<std::string> rule_lines(const model_rules& rules, std::string_view quote) {
    std::vector<std::string> lines;
    const auto quoted = [&](const std::string& text) { return std::string(quote) + text + std::string(quote); };
    for (const std::string& limit : rules.limit_texts) lines.push_back("a run stops unless " + quoted(limit));
    for (const std::string& limit : rules.expect_texts) lines.push_back("a check expects " + quoted(limit));
    for (const excluded_pair& p : rules.doubts.excluded)
        lines.push_back(quoted(p.a) + " and " + quoted(p.b) + " at 1 together stop a run");
    for (const std::string& word : rules.computed)
        lines.push_back(quoted(word) + " is computed, whatever a deck gives");
    if (rules.refuses_dc) lines.emplace_back("a dc block stops at it");
    if (rules.jumps) lines.emplace_back("acts at once: rules of second order need event_restart=yes");
    for (const type_branch& b : rules.branches)
        lines.push_back("between " + quoted(b.from) + " and " +
                        (b.to == reference_end ? "the reference node" : quoted(b.to)) + ": " +
                        std::string(words_of(b.kind).text));
    return lines;
}

json rules_json(const model_rules& rules) {
    json branches = json::array();
    for (const type_branch& b : rules.branches)
        branches.push_back({{"kind", words_of(b.kind).word}, {"from", b.from}, {"to", b.to}});
    return {{"limits", rules.limit_texts}, {"expects", rules.expect_texts}, {"refuses_dc", rules.refuses_dc},
            {"jumps", rules.jumps},        {"computed", rules.computed},    {"branches", std::move(branches)}};
}

json head_json(const element_sheet& s) {
    return {{"family", s.family},
            {"group", s.group},
            {"name", s.name},
            {"statement", s.statement},
            {"summary", s.summary()}};
}

// Calls family(sheet) where a family begins, group(sheet) where a group does, and one(sheet) for each.
template <class F, class G, class O>
void walk(const std::vector<element_sheet>& sheets, F family, G group, O one) {
    const element_sheet* last = nullptr;
    for (const element_sheet& s : sheets) {
        const bool new_family = !last || last->family != s.family;
        if (new_family) family(s);
        if (new_family || last->group != s.group) group(s);
        one(s);
        last = &s;
    }
}

}  // namespace

std::string markdown_escaped(std::string_view s) { return replaced(with_backslashes(s, "*|[]"), "<", "&lt;"); }

std::string list_text(const std::vector<element_sheet>& sheets) {
    std::size_t width = 0;
    for (const element_sheet& s : sheets) width = std::max(width, s.name.size());
    std::string text;
    walk(
        sheets,
        [&](const element_sheet& s) {
            text += (text.empty() ? "" : "\n") + s.family + ": " + std::string(family_title(s.family)) + " (" +
                    s.statement + ")\n";
        },
        [&](const element_sheet& s) { text += "  " + s.group + "\n"; },
        [&](const element_sheet& s) { text += "    " + padded(s.name, width) + "  " + s.summary() + "\n"; });
    return text;
}

std::string list_json(const std::vector<element_sheet>& sheets) {
    json list = json::array();
    for (const element_sheet& s : sheets) list.push_back(head_json(s));
    return list.dump(2) + "\n";
}

std::string sheet_text(const element_sheet& s) {
    std::string text = s.family + ":" + s.name + " (" + s.group + ") -- " + s.summary() + "\n\n";
    for (const std::string& line : signature(s)) text += "  " + line + "\n";
    text += "\n";
    for (std::size_t i = 1; i < s.description.size(); ++i) text += "  " + s.description[i] + "\n";
    text += "  " + std::string(small_signal_line(s)) + "\n";
    for (const part& p : parts) {
        const std::vector<sheet_word>& words = s.*p.member;
        if (words.empty()) continue;
        text += "\n" + std::string(p.title) + (is_output(p) ? ", as in " + deck_form(p, s) : "") + "\n";
        std::vector<std::vector<std::string>> rows;
        rows.reserve(words.size());
        for (const sheet_word& w : words) rows.push_back(cells_of(w, p));
        text += table_text(rows);
    }
    const std::vector<std::string> rules = rule_lines(s.rules, "");
    if (!rules.empty()) text += "\nRules\n";
    for (const std::string& line : rules) text += "  " + line + "\n";
    if (!s.examples.empty()) text += "\nExample\n";
    for (const std::string& line : s.examples) text += "  " + line + "\n";
    return text;
}

std::string sheet_json(const std::vector<const element_sheet*>& sheets) {
    json list = json::array();
    for (const element_sheet* s : sheets) {
        json one = head_json(*s);
        one["description"] = s->description;
        one["small_signal"] = s->small_signal;
        for (const part& p : parts) one[std::string(p.key)] = words_json(s->*p.member, p);
        one["rules"] = rules_json(s->rules);
        one["examples"] = s->examples;
        list.push_back(std::move(one));
    }
    return list.dump(2) + "\n";
}

std::string page_name(const element_sheet& s) { return s.family + "_" + s.name + ".md"; }
std::string picture_name(const element_sheet& s) { return s.family + "_" + s.name + ".svg"; }

namespace {

// Whether a line of a description goes on with the sentence of the one before: that one has no end, and this one begins
// neither a sentence nor an equation.
bool goes_on(std::string_view before, std::string_view line) {
    if (before.empty() || line.empty()) return false;
    if (before.back() == ',') return true;
    if (before.back() == '.' || before.back() == ':' || before.back() == ';') return false;
    const std::string_view first = line.substr(0, line.find(" ="));  // "dz/dt", "d f_al/dt" of an equation
    const bool is_equation = first.size() < line.size() && first.find(',') == std::string_view::npos &&
                             std::count(first.begin(), first.end(), ' ') < 2;
    return std::islower(static_cast<unsigned char>(line.front())) != 0 && !is_equation;
}

std::string description_markdown(const std::vector<std::string>& lines) {
    std::string text;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const bool more = i > 1 && goes_on(lines[i - 1], lines[i]);
        if (i > 1) text += more ? " " : "\n";
        text += (more ? "" : "- ") + markdown_escaped(lines[i]);
    }
    return text.empty() ? text : text + "\n";
}

}  // namespace

std::string sheet_markdown(const element_sheet& s) {
    std::string text = "# `" + s.name + "`\n\n" + markdown_escaped(s.summary()) + "\n\n";
    text += "Family `" + s.family + "` (" + std::string(family_title(s.family)) + "), group " + s.group + ".\n\n";
    for (const std::string& line : signature(s)) text += "    " + line + "\n";
    text += "\n";
    text += description_markdown(s.description);
    text += "- " + std::string(small_signal_line(s)) + "\n";
    for (const part& p : parts) {
        const std::vector<sheet_word>& words = s.*p.member;
        if (words.empty()) continue;
        text += "\n## " + std::string(p.title) + "\n\n";
        if (is_output(p)) text += "In a deck: `" + deck_form(p, s) + "`.\n\n";
        std::string head = "| Name |", rule = "|---|";
        const auto column = [&](bool is_there, std::string_view title) {
            if (!is_there) return;
            head += " " + std::string(title) + " |";
            rule += "---|";
        };
        column(p.kinds, "Kind");
        column(p.values, "If not given");
        column(true, "Unit");
        column(true, "Meaning");
        text.append(head).append("\n").append(rule).append("\n");
        for (const sheet_word& w : words) {
            text += "| `" + w.word + "` |";
            if (p.kinds) text += " " + w.kind + " |";
            if (p.values) text += " " + w.value + " |";
            text += (w.unit.empty() ? " |" : " " + w.unit + " |") + " " + markdown_escaped(w.text) + " |\n";
        }
    }
    const std::vector<std::string> rules = rule_lines(s.rules, "`");
    if (!rules.empty()) text += "\n## Rules\n\n";
    for (const std::string& line : rules) text += "- " + line + "\n";
    if (!s.examples.empty()) text += "\n## Example\n\n";
    for (const std::string& line : s.examples) text += "    " + line + "\n";
    if (!s.response.empty())
        text += "\n## Response\n\n![" + s.name + "](" + picture_name(s) + ")\n\nIts deck: `tnl describe " + s.family +
                ":" + s.name + " --response`.\n";
    return text;
}

std::string index_markdown(const std::vector<element_sheet>& sheets) {
    std::string text =
        "# Elements\n\nWhat the installed libraries hold. `tnl list` and `tnl describe ELEMENT` show the same in the\n"
        "terminal; these pages are written by `tnl describe --all --md -o docs/elements` from the comments of the\n"
        "element files in `models/`.\n";
    walk(
        sheets,
        [&](const element_sheet& s) {
            std::string title(family_title(s.family));
            title[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(title[0])));
            text += "\n## " + title + " (`" + s.statement + "`)\n";
        },
        [&](const element_sheet& s) {
            text += "\n### " + s.group + "\n\n";
            for (const group_row& g : groups)
                if (g.group == s.group) text += std::string(g.text) + "\n\n";
            text += "| Name | |\n|---|---|\n";
        },
        [&](const element_sheet& s) {
            text += "| [`" + s.name + "`](" + page_name(s) + ") | " + markdown_escaped(s.summary()) + " |\n";
        });
    return text;
}

}  // namespace cli
