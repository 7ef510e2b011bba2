#include "tnl/locate.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace cli {

namespace {

constexpr std::size_t last_lines = 40;  // of the simulator's text: a stop is shorter
constexpr std::size_t most_candidates = 4;

using predicate = std::function<bool(const deck_view&, int i_statement)>;

std::vector<std::string> split_lines(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    if (lines.size() > last_lines) lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(last_lines));
    return lines;
}

std::string_view trimmed(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
    return s;
}

bool is_element(const deck_view& deck, int i) { return is_element_word(deck.statements.word(i, 0)); }

bool has_word(const deck_view& deck, int i, std::string_view w, int first = 1, int step = 1) {
    for (int j = first; j < deck.statements.n_words(i); j += step)
        if (deck.statements.word(i, j) == w) return true;
    return false;
}

// The instance name behind "_of_" of an output word; empty if the word has none.
std::string_view instance_of(std::string_view word) {
    const std::size_t at = word.find("_of_");
    return at == std::string_view::npos ? std::string_view() : word.substr(at + 4);
}
std::string_view quantity_of(std::string_view word) {
    const std::size_t at = word.find("_of_");
    return at == std::string_view::npos ? std::string_view() : word.substr(0, at);
}

bool is_instance(const deck_view& deck, std::string_view name) {
    const statement_range circuit = circuit_range(deck);
    for (int i = circuit.begin; i < circuit.end; ++i)
        if (is_element(deck, i) && value_of(deck, i, "name") == name) return true;
    return false;
}

// ---- clues with a value: "   eelement name is R1"
// --------------------------------------------------------------------

// Does the statement fit the value that the text names?
using fits = bool (*)(const deck_view&, int i, std::string_view value);

bool is_this_line(const deck_view& deck, int i, std::string_view value) {
    const words w = parse_line_2(value);
    if (w.size() != deck.statements.n_words(i)) return false;
    for (int j = 0; j < w.size(); ++j)
        if (w[j] != deck.statements.word(i, j)) return false;
    return true;
}
bool begins_with(const deck_view& deck, int i, std::string_view value) { return deck.statements.begins(i, value); }
bool is_named(const deck_view& deck, int i, std::string_view value) {
    return is_element(deck, i) && value_of(deck, i, "name") == value;
}
bool holds(const deck_view& deck, int i, std::string_view value) { return has_word(deck, i, value); }
bool method_holds(const deck_view& deck, int i, std::string_view value) {
    return deck.statements.begins(i, "method:") && has_word(deck, i, value, 1, 2);
}
bool outputs_quantity(const deck_view& deck, int i, std::string_view value) {
    if (!deck.statements.begins(i, "outvar:")) return false;
    for (int j = 2; j < deck.statements.n_words(i); j += 2)
        if (quantity_of(deck.statements.word(i, j)) == value) return true;
    return false;
}
bool uses_node(const deck_view& deck, int i, std::string_view value) {
    for (int j = 2; is_element(deck, i) && j < deck.statements.n_words(i); j += 2)
        if (deck.statements.word(i, j) == value) return true;
    return false;
}
bool names_file(const deck_view& deck, int i, std::string_view value) {
    return (is_element(deck, i) || deck.statements.begins(i, "filename") || deck.statements.begins(i, "initial_sol") ||
            deck.statements.begins(i, "gstring")) &&
           has_word(deck, i, value);
}

struct clue {
    std::string_view before;  // the value stands behind this text, up to after or the end of the line
    std::string_view after;
    bool next_line;  // the value is the whole next line
    fits statement;
};
// The first that finds statements wins: the most telling stand first.
constexpr clue clues[] = {
    {"Check this line:", "", true, is_this_line},
    {"eelement name is ", "", false, is_named},
    {"gelement name is ", "", false, is_named},
    {"delement name is ", "", false, is_named},
    {"xelement name is ", "", false, is_named},
    {"gmelement name is ", "", false, is_named},
    {"element name is ", "", false, is_named},
    {"instance name is ", "", false, is_named},
    {"Check line starting with: ", "", false, begins_with},
    {"The word is: ", "", false, method_holds},
    {"The word <", ">", false, holds},
    {"Check this string: ", "", false, holds},
    {"Check this outvar: ", "", false, holds},
    {"The string <", ">", false, is_named},
    {"The string <", ">", false, holds},
    {"string <", "> not found", false, holds},
    {"outvar name is ", "", false, holds},
    {"   name is ", "", false, outputs_quantity},
    {"model name is ", "", false, holds},
    {"check double string: <", ">", false, holds},
    {"check integer string: <", ">", false, holds},
    {"file name ", " is not found", false, names_file},
    {"file ", " does not exist", false, names_file},
    {"Check file: ", "", false, names_file},
    {"string is ", "", false, holds},
    {"string is: ", "", false, holds},
    {"word_given is: ", "", false, holds},
    {"word is: ", "", false, holds},
    {"word: ", "", false, holds},
    {"node name is ", "", false, uses_node},
};

std::vector<std::string> values_of(const std::vector<std::string>& lines, const clue& c) {
    std::vector<std::string> values;
    for (std::size_t k = 0; k < lines.size(); ++k) {
        const std::size_t at = lines[k].find(c.before);
        if (at == std::string::npos) continue;
        std::string_view rest = std::string_view(lines[k]).substr(at + c.before.size());
        if (c.next_line) {
            rest = trimmed(rest);
            if (rest.empty() && k + 1 < lines.size()) rest = lines[k + 1];
        } else if (!c.after.empty()) {
            const std::size_t end = rest.find(c.after);
            if (end == std::string_view::npos) continue;
            rest = rest.substr(0, end);
        }
        if (!trimmed(rest).empty()) values.emplace_back(trimmed(rest));
    }
    return values;
}

// ---- stops whose text names nothing, but whose cause is one kind of statement
// ----------------------------------------

bool without(const deck_view& deck, int i, std::string_view key) {
    return is_element(deck, i) && value_of(deck, i, key).empty();
}
bool lacks_type(const deck_view& deck, int i) { return without(deck, i, "type"); }
bool lacks_name(const deck_view& deck, int i) {
    return without(deck, i, "name") && !is_placeholder(value_of(deck, i, "type"));
}
bool is_of_deck(std::string_view quantity) {  // its right word is a node or a variable
    for (std::string_view q : {"nodev", "dvar", "nodev_ac", "var", "xvar", "var_ac", "xvar_ac"})
        if (q == quantity) return true;
    return false;
}
bool asks_for_no_node(const deck_view& deck, int i) {
    if (!deck.statements.begins(i, "outvar:")) return false;
    const statement_range circuit = circuit_range(deck);
    for (int j = 2; j < deck.statements.n_words(i); j += 2) {
        const std::string_view word = deck.statements.word(i, j);
        bool used = !is_of_deck(quantity_of(word));
        for (int k = circuit.begin; k < circuit.end && !used; ++k) used = uses_node(deck, k, instance_of(word));
        if (!used) return true;
    }
    return false;
}
bool asks_for_nobody(const deck_view& deck, int i) {
    if (!deck.statements.begins(i, "outvar:")) return false;
    for (int j = 2; j < deck.statements.n_words(i); j += 2) {
        const std::string_view word = deck.statements.word(i, j), quantity = quantity_of(word);
        const bool of_deck = is_of_deck(quantity) || quantity.starts_with("pwr_elec");  // nothing to look up
        const std::string_view instance = instance_of(word);
        if (!of_deck && !is_instance(deck, instance.substr(0, instance.find('.')))) return true;
    }
    return false;
}
bool lacks_of(const deck_view& deck, int i) {
    if (!deck.statements.begins(i, "outvar:")) return false;
    for (int j = 2; j < deck.statements.n_words(i); j += 2)
        if (instance_of(deck.statements.word(i, j)).empty()) return true;
    return false;
}
bool is_refnode(const deck_view& deck, int i) { return deck.statements.begins(i, "refnode"); }
bool is_first(const deck_view&, int i) { return i == 0; }

struct silent_stop {
    std::string_view message;
    bool (*cause)(const deck_view&, int i);
};
constexpr silent_stop silent_stops[] = {
    {": type not found. Halting", lacks_type},
    {": name not found. Halting", lacks_name},
    {"cct_ov_flag = IGL_CLEAR", asks_for_nobody},
    {"_of_ not found, check circuit file", lacks_of},
    {"Check outvars of type ", asks_for_no_node},
    {"cct_class: reference node not found", is_refnode},
    {"title: not found", is_first},
};

// A text that names a statement's first word and nothing else: it tells when the deck has one such statement.
constexpr std::pair<std::string_view, std::string_view> kinds[] = {
    {"vary_parm_sync statement", "vary_parm_sync"},
    {"vary_parm statement", "vary_parm"},
    {"set_parm statement", "set_parm"},
    {"initial_sol card", "initial_sol"},
    {"vary_freq statement", "vary_freq"},
    {"refnode statement", "refnode"},
    {"ginteger statement", "ginteger"},
    {"gstring statement", "gstring"},
    {"greal statement", "greal"},
};

// ---- where to look
// ---------------------------------------------------------------------------------------------------

int number_behind(const std::vector<std::string>& lines, std::string_view before) {
    for (const std::string& l : lines) {
        const std::size_t at = l.find(before);
        if (at == std::string::npos || at + before.size() >= l.size()) continue;
        const char digit = l[at + before.size()];
        if (digit >= '0' && digit <= '9') return std::stoi(l.substr(at + before.size(), 4));
    }
    return -1;
}

bool any_line_has(const std::vector<std::string>& lines, std::string_view text) {
    return std::any_of(lines.begin(), lines.end(),
                       [&](const std::string& l) { return l.find(text) != std::string::npos; });
}

// Statements that can be meant: a block that the text names, else all of the deck.
statement_range range_meant(const std::vector<std::string>& lines, const deck_view& deck) {
    const std::vector<statement_range> blocks = solve_ranges(deck);
    const int block = number_behind(lines, "Check solve section number ");
    if (block >= 0 && block < static_cast<int>(blocks.size())) return blocks[static_cast<std::size_t>(block)];
    if (any_line_has(lines, "illegal statement in circuit section")) return circuit_range(deck);
    return {1, deck.statements.n_lines()};  // the title is read by nobody
}

std::vector<int> statements_in(statement_range range, const std::function<bool(int)>& fit) {
    std::vector<int> found;
    for (int i = range.begin; i < range.end; ++i)
        if (fit(i)) found.push_back(i);
    return found;
}

}  // namespace

std::vector<int> find_statements(std::string_view text, const deck_view& deck, const deck_needs& needs) {
    const std::vector<std::string> lines = split_lines(text);
    for (const silent_stop& stop : silent_stops)
        if (any_line_has(lines, stop.message)) {
            std::vector<int> found =
                statements_in({0, deck.statements.n_lines()}, [&](int i) { return stop.cause(deck, i); });
            if (!found.empty()) return found;
        }
    // A type that is not installed stops the run at its first statement, whatever else is wrong with the deck.
    for (const std::string_view name : {"eels_name", "gels_name", "dels_name", "xels_name", "gmes_name"})
        if (any_line_has(lines, std::string(name) + " not found") && !needs.unknown.empty())
            return {needs.unknown.front().i_statement};

    const statement_range range = range_meant(lines, deck);
    const bool first_only = any_line_has(lines, "illegal statement in");
    for (const clue& c : clues)
        for (const std::string& value : values_of(lines, c)) {
            std::vector<int> found = statements_in(range, [&](int i) { return c.statement(deck, i, value); });
            if (first_only && found.size() > 1) found.resize(1);
            if (!found.empty()) return found;
        }
    for (const auto& [said, word] : kinds)
        if (any_line_has(lines, said))
            return statements_in(range, [&, first = word](int i) { return deck.statements.begins(i, first); });
    return {};
}

std::string explain_stop(std::string_view text, const deck_view& deck, const deck_needs& needs,
                         const installed_libraries& libraries) {
    const std::vector<int> found = find_statements(text, deck, needs);
    std::string out;
    if (found.size() > 1 && found.size() <= most_candidates) out += "  one of these statements:\n";
    if (found.size() <= most_candidates)
        for (const int i : found) out += "  " + place_of(deck, i) + "\n";
    for (const unknown_type& u : needs.unknown) {
        if (found.size() != 1 || u.i_statement != found[0]) continue;
        out += "  no composite of that name is installed for " + std::string(library_forms[u.library].statement) +
               ": " + u.type;
        std::string near;
        for (const std::string& name : near_names(libraries.library[u.library], u.type))
            near += (near.empty() ? "" : ", ") + name;
        out += near.empty() ? "\n" : "; near names: " + near + "\n";
    }
    return out;
}

}  // namespace cli
