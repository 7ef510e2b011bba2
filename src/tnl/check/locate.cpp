#include "tnl/check/locate.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

#include "base/words.h"
#include "tnl/check/advice.h"
#include "tnl/check/check_deck.h"

namespace cli {

namespace {

constexpr std::size_t last_lines = 40;  // of the simulator's text: a stop is shorter

std::string_view trimmed(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
    return s;
}

bool is_element(const deck_view& deck, int i) { return is_element_word(deck.statements.word(i, 0)); }

// Position of a word of the statement; -1 if it is not there.
int find_word(const deck_view& deck, int i, std::string_view w, int first = 1, int step = 1) {
    for (int j = first; j < deck.statements.n_words(i); j += step)
        if (deck.statements.word(i, j) == w) return j;
    return -1;
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

// The word of the statement that the value of the text is about; -1 if the statement does not fit.
using fits = int (*)(const deck_view&, int i, std::string_view value);

int is_this_line(const deck_view& deck, int i, std::string_view value) {
    const words w = parse_line_2(value);
    if (w.size() != deck.statements.n_words(i)) return -1;
    for (int j = 0; j < w.size(); ++j)
        if (w[j] != deck.statements.word(i, j)) return -1;
    return 0;
}
int begins_with(const deck_view& deck, int i, std::string_view value) {
    return deck.statements.begins(i, value) ? 0 : -1;
}
int is_named(const deck_view& deck, int i, std::string_view value) {
    if (!is_element(deck, i) || value_of(deck, i, "name") != value) return -1;
    return find_word(deck, i, "name", 1, 2) + 1;
}
int holds(const deck_view& deck, int i, std::string_view value) { return find_word(deck, i, value); }
int method_holds(const deck_view& deck, int i, std::string_view value) {
    return deck.statements.begins(i, "method:") ? find_word(deck, i, value, 1, 2) : -1;
}
int outputs_quantity(const deck_view& deck, int i, std::string_view value) {
    if (!deck.statements.begins(i, "outvar:")) return -1;
    for (int j = 2; j < deck.statements.n_words(i); j += 2)
        if (quantity_of(deck.statements.word(i, j)) == value) return j;
    return -1;
}
int uses_node(const deck_view& deck, int i, std::string_view value) {
    return is_element(deck, i) ? find_word(deck, i, value, 2, 2) : -1;
}
// A block that sets or reads a parameter of an element.
int links(const deck_view& deck, int i, std::string_view key, std::string_view value) {
    if (!is_element(deck, i) || value_of(deck, i, "element").empty() || value_of(deck, i, "parm").empty()) return -1;
    return value_of(deck, i, key) == value ? find_word(deck, i, key, 1, 2) + 1 : -1;
}
int links_element(const deck_view& deck, int i, std::string_view value) { return links(deck, i, "element", value); }
int links_parameter(const deck_view& deck, int i, std::string_view value) { return links(deck, i, "parm", value); }
int names_file(const deck_view& deck, int i, std::string_view value) {
    const bool may = is_element(deck, i) || deck.statements.begins(i, "filename") ||
                     deck.statements.begins(i, "initial_sol") || deck.statements.begins(i, "gstring");
    return may ? find_word(deck, i, value) : -1;
}

// The element that measures this variable of the deck.
int measures(const deck_view& deck, int i, std::string_view value) {
    if (!is_result_type(value_of(deck, i, "type"))) return -1;
    for (int j = 1; j + 1 < deck.statements.n_words(i); j += 2)
        if (deck.statements.word(i, j)[0] == 'x' && deck.statements.word(i, j + 1) == value) return j + 1;
    return -1;
}
int is_of_type(const deck_view& deck, int i, std::string_view value) {
    return is_element(deck, i) && value_of(deck, i, "type") == value ? find_word(deck, i, "type", 1, 2) + 1 : -1;
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
    {"element name is: ", "", false, links_element},
    {"parameter name is: ", "", false, links_parameter},
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
    {"output file ", " could not be", false, names_file},
    {"file ", " does not exist", false, names_file},
    {"file ", " has < ", false, names_file},
    {"file ", ", line ", false, names_file},
    {": expect ", " to have a single row", false, names_file},
    {"could not find var_of_", " in ", false, measures},
    {"could not find var_ac_of_", " in ", false, measures},
    {"could not find mag_of_", " in ", false, holds},
    {"could not find phase_of_", " in ", false, holds},
    {"gels name = ", "?", false, is_of_type},
    {"gels name = ", " ", false, is_of_type},
    {": file ", " ends early", false, names_file},
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

int without(const deck_view& deck, int i, std::string_view key) {
    return is_element(deck, i) && value_of(deck, i, key).empty() ? 0 : -1;
}
int lacks_type(const deck_view& deck, int i) { return without(deck, i, "type"); }
int lacks_name(const deck_view& deck, int i) {
    return is_placeholder(value_of(deck, i, "type")) ? -1 : without(deck, i, "name");
}
bool is_of_deck(std::string_view quantity) {  // its right word is a node or a variable
    for (std::string_view q : {"nodev", "dvar", "nodev_ac", "var", "xvar", "var_ac", "xvar_ac"})
        if (q == quantity) return true;
    return false;
}
int asks_for_no_node(const deck_view& deck, int i) {
    if (!deck.statements.begins(i, "outvar:")) return -1;
    const statement_range circuit = circuit_range(deck);
    for (int j = 2; j < deck.statements.n_words(i); j += 2) {
        const std::string_view word = deck.statements.word(i, j);
        bool used = !is_of_deck(quantity_of(word));
        for (int k = circuit.begin; k < circuit.end && !used; ++k) used = uses_node(deck, k, instance_of(word)) >= 0;
        if (!used) return j;
    }
    return -1;
}
int asks_for_nobody(const deck_view& deck, int i) {
    if (!deck.statements.begins(i, "outvar:")) return -1;
    for (int j = 2; j < deck.statements.n_words(i); j += 2) {
        const std::string_view word = deck.statements.word(i, j), quantity = quantity_of(word);
        const bool of_deck = is_of_deck(quantity) || quantity.starts_with("pwr_elec");  // nothing to look up
        const std::string_view instance = instance_of(word);
        if (!of_deck && !is_instance(deck, instance.substr(0, instance.find('.')))) return j;
    }
    return -1;
}
int lacks_of(const deck_view& deck, int i) {
    if (!deck.statements.begins(i, "outvar:")) return -1;
    for (int j = 2; j < deck.statements.n_words(i); j += 2)
        if (instance_of(deck.statements.word(i, j)).empty()) return j;
    return -1;
}
// variables: of a file of results.
int asks_for_results(const deck_view& deck, int i) {
    if (!deck.statements.begins(i, "variables:") || deck.statements.n_words(i) < 2) return -1;
    return results_of(deck).contains(deck.statements.word(i, 1)) ? 1 : -1;
}
int is_refnode(const deck_view& deck, int i) {
    if (!deck.statements.begins(i, "refnode")) return -1;
    return deck.statements.n_words(i) > 1 ? 1 : 0;
}
int is_first(const deck_view&, int i) { return i == 0 ? 0 : -1; }
int sweeps_by_itself(const deck_view& deck, int i) {
    return deck.statements.begins(i, "vary_parm") ? find_word(deck, i, "auto") : -1;
}

// A statement solve_type of a kind that begins with one of these letters.
int solve_type_like(const deck_view& deck, int i, std::string_view letters) {
    const bool has_type = deck.statements.begins(i, "solve_type") && deck.statements.n_words(i) > 1;
    return has_type && letters.find(deck.statements.word(i, 1)[0]) != std::string_view::npos ? 1 : -1;
}
int solves_dc(const deck_view& deck, int i) { return solve_type_like(deck, i, "d"); }
int solves_startup(const deck_view& deck, int i) { return solve_type_like(deck, i, "s"); }
int solves_time(const deck_view& deck, int i) { return solve_type_like(deck, i, "t"); }
int solves_by_steps(const deck_view& deck, int i) { return solve_type_like(deck, i, "dt"); }

struct silent_stop {
    std::string_view message;
    int (*cause)(const deck_view&, int i);  // the word that is meant; -1: not this statement
};
constexpr silent_stop silent_stops[] = {
    {": type not found. Halting", lacks_type},
    {": name not found. Halting", lacks_name},
    {"cct_ov_flag = IGL_CLEAR", asks_for_nobody},
    {"_of_ not found, check circuit file", lacks_of},
    {"Check outvars of type ", asks_for_no_node},
    {"cct_class: reference node not found", is_refnode},
    {"check_trns_1: ", asks_for_results},
    {"postproc_1: n_new = ", asks_for_results},
    {"stand at different times", asks_for_results},
    {"append not allowed", asks_for_results},
    {"t_start = t_end?", asks_for_results},
    {"cct_ov_flag != ", asks_for_results},
    {"for a single frequency only", asks_for_results},
    {"title: not found", is_first},
    {"main: sweep end not reached", sweeps_by_itself},
    {"solve_dc: N-R did not", solves_dc},
    {"solve_dc: did not converge", solves_dc},
    {"solve_startup: N-R did not", solves_startup},
    {"solve_trns: no convergence", solves_time},
    {"solve_trns: iter_trbdf2 has exceeded", solves_time},
    {"N-R iterations did not converge", solves_by_steps},  // with small conductances
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

std::vector<stop_place> places_in(statement_range range, const std::function<int(int)>& word_of) {
    std::vector<stop_place> found;
    for (int i = range.begin; i < range.end; ++i)
        if (const int j = word_of(i); j >= 0) found.push_back({i, j});
    return found;
}

// "limit_lines is exceeded. index_solve = 2, i_file = 0": the filename statement of that output block.
std::vector<stop_place> full_file(const std::vector<std::string>& lines, const deck_view& deck) {
    if (!any_line_has(lines, "limit_lines is exceeded")) return {};
    const std::vector<statement_range> blocks = solve_ranges(deck);
    const int block = number_behind(lines, "index_solve = ");
    int left = number_behind(lines, "i_file = ");
    if (block < 0 || block >= static_cast<int>(blocks.size())) return {};
    const statement_range range = blocks[static_cast<std::size_t>(block)];
    for (int i = range.begin; i < range.end; ++i)
        if (deck.statements.begins(i, "filename") && left-- == 0)
            return {{i, std::max(0, find_word(deck, i, "limit_lines", 2, 2))}};
    return {};
}

// "r.ebe: r too small!", and below it "r.ebe: r=0": elements of that type, those with that value if there are any.
std::vector<stop_place> elements_of_model(const std::vector<std::string>& lines, const deck_view& deck) {
    const statement_range circuit = circuit_range(deck);
    std::vector<stop_place> of_type;
    for (const std::string& l : lines) {
        const std::string_view head = std::string_view(l).substr(0, l.find(':'));
        if (head.size() == l.size() || head.empty() || head[0] == ' ') continue;
        const std::string_view type = head.substr(0, head.find('.'));
        const auto is_type = [&](int i) { return is_element(deck, i) && value_of(deck, i, "type") == type ? 0 : -1; };
        std::vector<stop_place> found = places_in(circuit, is_type);
        if (found.empty()) continue;
        if (of_type.empty()) of_type = found;
        const std::string_view rest = trimmed(std::string_view(l).substr(head.size() + 1));
        const std::size_t equal = rest.find('=');
        double said = 0, given = 0;
        if (equal == std::string_view::npos || !is_double(trimmed(rest.substr(equal + 1)), said)) continue;
        const std::string_view key = trimmed(rest.substr(0, equal));
        std::vector<stop_place> narrower = places_in(circuit, [&](int i) {
            const int j = is_type(i) < 0 ? -1 : find_word(deck, i, key, 1, 2);
            const bool same = j >= 0 && j + 1 < deck.statements.n_words(i) &&
                              is_double(deck.statements.word(i, j + 1), given) &&
                              std::abs(given - said) <= 1e-9 * std::abs(said);
            return same ? j + 1 : -1;
        });
        if (!narrower.empty()) return narrower;
    }
    if (!deck.own.entries.empty()) return {};  // it may stand inside one of these
    return of_type;
}

}  // namespace

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

bool speaks_of_composites(const std::vector<std::string>& lines) {
    for (const std::string_view reader :
         {"eels_class:", "eels_ebe", "eels_eels", "check ece library", "gels_class:", "gels_gbe", "gels_gels",
          "check gce library", "xels_class:", "xels_xbe", "xels_xels", "check xce library"})
        if (any_line_has(lines, reader)) return true;
    return false;
}

std::vector<stop_place> find_places(std::string_view text, const deck_view& deck, const deck_needs& needs) {
    const std::vector<std::string> lines = split_lines(text);
    if (!deck.own.entries.empty() && speaks_of_composites(lines)) return {};  // a check of the deck knows their lines
    for (const silent_stop& stop : silent_stops)
        if (any_line_has(lines, stop.message)) {
            std::vector<stop_place> found =
                places_in({0, deck.statements.n_lines()}, [&](int i) { return stop.cause(deck, i); });
            if (!found.empty()) return found;
        }
    // A type that is not installed stops the run at its first statement, whatever else is wrong with the deck.
    for (const std::string_view name : {"eels_name", "gels_name", "dels_name", "xels_name", "gmes_name"})
        if (any_line_has(lines, std::string(name) + " not found") && !needs.unknown.empty()) {
            const unknown_type& first = needs.unknown.front();
            return {{first.i_statement, std::max(0, find_word(deck, first.i_statement, first.type))}};
        }
    if (std::vector<stop_place> found = full_file(lines, deck); !found.empty()) return found;

    const statement_range range = range_meant(lines, deck);
    const bool first_only = any_line_has(lines, "illegal statement in");
    for (const clue& c : clues)
        for (const std::string& value : values_of(lines, c)) {
            std::vector<stop_place> found = places_in(range, [&](int i) { return c.statement(deck, i, value); });
            if (first_only && found.size() > 1) found.resize(1);
            if (!found.empty()) return found;
        }
    for (const auto& [said, word] : kinds)
        if (any_line_has(lines, said))
            return places_in(range, [&, first = word](int i) { return deck.statements.begins(i, first) ? 0 : -1; });
    return elements_of_model(lines, deck);
}

std::vector<stop_place> places_of_node(const deck_view& deck, std::string_view node) {
    const std::size_t of = node.rfind(" of ");
    const auto connects = [&](int i) {
        for (int j = 1; is_element(deck, i) && j + 1 < deck.statements.n_words(i); j += 2) {
            const std::string_view key = deck.statements.word(i, j);
            const bool may = key != "name" && key != "type" && key != "model";
            if (may && deck.statements.word(i, j + 1) == node) return j + 1;
        }
        return -1;
    };
    std::vector<stop_place> found = places_in(circuit_range(deck), [&](int i) {
        return of == std::string_view::npos ? connects(i) : is_named(deck, i, node.substr(of + 4));
    });
    if (found.size() > 1) found.resize(1);
    return found;
}

std::vector<int> find_statements(std::string_view text, const deck_view& deck, const deck_needs& needs) {
    std::vector<int> statements;
    for (const stop_place& p : find_places(text, deck, needs)) statements.push_back(p.i_statement);
    return statements;
}

}  // namespace cli
