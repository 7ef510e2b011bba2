#include "tnl/check/check_deck.h"

#include <algorithm>
#include <charconv>

#include "base/words.h"
#include "tnl/check/check_diagram.h"
#include "tnl/check/check_stops.h"
#include "tnl/common/near_words.h"
#include "tnl/deck/file_names.h"

namespace cli {

std::string checked_deck::value(const deck_element& e, std::string_view key, int* at) const {
    for (const key_value& p : e.pairs)
        if (text().word(e.statement, p.key) == key && p.value >= 0) {
            if (at != nullptr) *at = p.value;
            return word(e.statement, p.value);
        }
    return {};
}

std::vector<key_value> pairs_in(const checked_deck& d, int statement, int first,
                                const std::vector<std::string>& known) {
    const file_chr& f = d.text();
    const int n = f.n_words(statement);
    std::vector<key_value> pairs;
    for (int j = first; j < n;) {
        const bool alone =
            j + 1 >= n || (!has(known, f.word(statement, j)) && has(known, f.word(statement, j + 1)) && (n - j) % 2);
        pairs.push_back({j, alone ? -1 : j + 1});
        j += alone ? 1 : 2;
    }
    return pairs;
}

bool is_integer(std::string_view word, int& value) {
    const char* end = word.data() + word.size();
    const auto got = std::from_chars(word.data(), end, value);
    return !word.empty() && got.ec == std::errc{} && got.ptr == end;
}

bool check_real(checked_deck& d, deck_word at, double* value) {
    const std::string word = d.word(at.statement, at.word);
    if (d.globals.reals.count(word)) return false;  // not a literal, but good
    double x = 0;
    if (is_double(word, x)) {
        if (value != nullptr) *value = x;
        return true;
    }
    d.report.error("bad-number", at, "this is no number: " + word,
                   "a number may end in one letter of G M k m u n p f, without a unit: 4.7u, 1e-3");
    return false;
}

bool check_int(checked_deck& d, deck_word at, int* value) {
    const std::string word = d.word(at.statement, at.word);
    if (d.globals.ints.count(word)) return false;
    int n = 0;
    if (is_integer(word, n)) {
        if (value != nullptr) *value = n;
        return true;
    }
    d.report.error("bad-number", at, "this is no whole number: " + word,
                   "digits alone, without a letter of scale: 1000");
    return false;
}

namespace {

std::vector<std::string> words_of(const element_type& type, const item_card& card) {
    std::vector<std::string> words;
    const auto add = [&](const std::vector<std::string>& list) { words.insert(words.end(), list.begin(), list.end()); };
    for (const parm_item::table t : card.tables) {
        if (t == parm_item::int_value) add(type.iprm);
        if (t == parm_item::real_value) add(type.rprm);
        if (t == parm_item::real_value) add(type.derived);
        if (t == parm_item::start_value) add(type.start);
        if (t == parm_item::guess_value) add(type.guess);
    }
    return words;
}

}  // namespace

void check_item(checked_deck& d, deck_word at, const item_card& card) {
    const std::string word = d.word(at.statement, at.word);
    const std::size_t of = word.find("_of_");
    if (of == std::string::npos) return;
    const std::string left = word.substr(0, of), right = word.substr(of + 4);
    if (left == "glbl" && card.globals) {
        if (!d.globals.reals.count(right))
            d.report.error("unknown-item", at,
                           "there is no greal named " + right +
                               near_text({d.globals.reals.begin(), d.globals.reals.end()}, right));
        return;
    }
    const auto found = d.element_of.find(right);
    if (found == d.element_of.end()) {
        std::vector<std::string> names;
        for (const auto& [name, i] : d.element_of) names.push_back(name);
        d.report.error("unknown-item", at, "there is no element named " + right + near_text(names, right));
        return;
    }
    const element_type* type = d.elements[static_cast<std::size_t>(found->second)].type;
    if (type == nullptr) return;
    const std::vector<std::string> words = words_of(*type, card);
    if (has(words, left)) return;
    std::string all;
    for (const std::string& w : words) all += (all.empty() ? "" : " ") + w;
    d.report.error("unknown-item", at,
                   right + " (" + type->name + ") has no " + left + " that " + std::string(card.word) + " can change" +
                       near_text(words, left),
                   all.empty() ? "" : "it has: " + all);
}

std::filesystem::path path_of(const checked_deck& d, const std::string& name) {
    const std::filesystem::path path(name);
    return path.is_absolute() ? path : d.folder / path;
}

bool file_exists(const checked_deck& d, const std::string& name) {
    std::error_code error;
    return std::filesystem::exists(path_of(d, name), error);
}

namespace {

// A '+' at the top continues nothing and makes the reader give up. Here it is noted, and then passed over.
bool begins_with_continuation(const std::string& text, std::size_t& at) {
    at = 0;
    while (at < text.size()) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        const std::string_view line(text.data() + at, end - at);
        const std::size_t first = line.find_first_not_of(' ');
        if (first != std::string_view::npos && line[first] == '+') {
            at += first;
            return true;
        }
        if (first != std::string_view::npos && line[first] != '#' && !check_blank_line(line)) return false;
        at = end + 1;
    }
    return false;
}

void check_input_names(checked_deck& d) {
    for (const unreadable_input& u : unreadable_inputs(d.report.deck))
        d.report.error("missing-file", {u.statement, u.word}, u.why);
}

// Stops of the readers of the circuit at statements of which nothing is told; one of no statement if nothing is told.
void tell_rest(checked_deck& d) {
    std::set<int> told;
    for (const check_fault& f : d.report.faults)
        if (f.is_error) told.insert(f.at.statement);
    const bool has_errors = d.report.n_errors() > 0;
    std::erase_if(d.stops,
                  [&](const kept_stop& s) { return s.statement < 0 ? has_errors : told.count(s.statement) > 0; });
    tell_stops(d, d.stops);
}

}  // namespace

check_report check_deck(deck_view view, const installed_libraries& libraries, check_place place) {
    if (!libraries.with_own && !view.own.entries.empty()) {
        const installed_libraries all = with_own(libraries, view.own);
        return check_deck(std::move(view), all, std::move(place));
    }
    check_report report{std::move(view), {}, {}};
    deck_view& deck = report.deck;
    std::size_t at = 0;
    if (!deck.readable && begins_with_continuation(deck.source.text, at)) {
        const auto line =
            std::count(deck.source.text.begin(), deck.source.text.begin() + static_cast<std::ptrdiff_t>(at), '\n');
        report.error("continuation-at-top", {-1, 0, static_cast<int>(line)},
                     "a '+' continues the statement before it, and there is none");
        deck.source.text[at] = ' ';
        try {
            deck.statements = file_chr_of(deck.source.text, any_number_of_lines);
            deck.readable = true;
        } catch (...) {
        }
    }
    if (!deck.readable) {
        if (report.faults.empty()) report.error("unreadable", {}, "the simulator cannot read this text");
        return report;
    }
    const std::filesystem::path folder =
        deck.path == "-" ? std::filesystem::path() : std::filesystem::path(deck.path).parent_path();
    if (place.folder.empty()) place.folder = default_run_folder(deck.path);
    checked_deck d{
        std::move(report), element_types(libraries), folder, std::move(place), {}, {}, {}, {}, {}, {}, {}, false, {}};
    check_composites(d);
    const bool sound = d.report.n_errors() == 0;  // what faulty composites connect is not known
    if (is_library(d.report.deck)) {
        sort_faults(d.report);
        return std::move(d.report);
    }
    check_sections(d);
    read_circuit_of(d);
    check_globals(d);
    check_elements(d);
    if (sound) {
        check_nodes(d);
        check_switches(d);
        check_variables(d);
        check_digital(d);
        check_diagram(d);
    }
    check_outvars(d);
    check_solves(d);
    check_input_names(d);
    tell_rest(d);
    sort_faults(d.report);
    return std::move(d.report);
}

}  // namespace cli
