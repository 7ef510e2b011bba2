#include "tnl/deck/deck_view.h"

#include <algorithm>

#include "base/words.h"
#include "settings/postproc_plan.h"
#include "tnl/deck/library_split.h"

namespace cli {

deck_view view_deck(deck_source source) {
    deck_view deck;
    deck.path = source.files.front().path;
    deck.source = std::move(source);
    deck.own = own_composites_of(deck.source);
    try {
        deck.statements = file_chr_of(deck.source.text, any_number_of_lines);
        deck.readable = true;
    } catch (...) {  // whatever this program's halt throws
        deck.statements = {};
    }
    return deck;
}

deck_view view_deck(const std::string& path, std::string text) {
    return view_deck(deck_source_of(std::move(text), path));
}

namespace {

int find_from(const deck_view& deck, int start, int end, std::string_view word) {
    for (int i = start; i < end; ++i)
        if (deck.statements.begins(i, word)) return i;
    return -1;
}

int end_of_deck(const deck_view& deck) {
    const int n = deck.statements.n_lines(), end = find_from(deck, 0, n, "end_cf");
    return end < 0 ? n : end;
}

}  // namespace

statement_range circuit_range(const deck_view& deck) {
    const int n = end_of_deck(deck), begin = find_from(deck, 0, n, "begin_circuit");
    if (begin < 0) return {};
    const int end = find_from(deck, begin, n, "end_circuit");
    return {begin + 1, end < 0 ? n : end};
}

std::vector<statement_range> solve_ranges(const deck_view& deck) {
    std::vector<statement_range> ranges;
    const int n = end_of_deck(deck);
    for (int begin = find_from(deck, circuit_range(deck).end, n, "begin_solve"); begin >= 0;) {
        const int end = find_from(deck, begin, n, "end_solve");
        ranges.push_back({begin + 1, end < 0 ? n : end});
        begin = end < 0 ? -1 : find_from(deck, end, n, "begin_solve");
    }
    return ranges;
}

bool is_library(const deck_view& deck) {
    for (int i = 0; i < deck.statements.n_lines(); ++i)
        if (find_library(&library_form::model, deck.statements.word(i, 0)) < 0) return false;
    return !deck.own.entries.empty() || !deck.own.faults.empty();
}

bool is_element_word(std::string_view word) { return find_library(&library_form::statement, word) >= 0; }

bool is_placeholder(std::string_view type) {
    for (std::string_view w :
         {"connector_e", "ground_dummy", "connector_d", "connector_g", "connector_x", "e_ground_dummy"})
        if (w == type) return true;
    return false;
}

std::string value_of(const deck_view& deck, int i_statement, std::string_view key, int first) {
    const file_chr& f = deck.statements;
    for (int j = first; j + 1 < f.n_words(i_statement); j += 2)
        if (f.word(i_statement, j) == key) return std::string(f.word(i_statement, j + 1));
    return {};
}

bool is_result_type(std::string_view type) {
    return std::any_of(std::begin(postproc_types), std::end(postproc_types),
                       [&](const postproc_type& t) { return t.name == type; });
}

std::map<std::string, deck_result, std::less<>> results_of(const deck_view& deck) {
    const file_chr& f = deck.statements;
    const statement_range circuit = circuit_range(deck);
    std::map<std::string, int, std::less<>> element;  // those that compute results
    for (int i = circuit.begin; i < circuit.end; ++i)
        if (is_element_word(f.word(i, 0)) && is_result_type(value_of(deck, i, "type")))
            element.try_emplace(value_of(deck, i, "name"), i);
    std::map<std::string, deck_result, std::less<>> results;
    for (int i = circuit.begin; i < circuit.end && !element.empty(); ++i)
        for (int j = 1; f.begins(i, "outvar:") && j + 1 < f.n_words(i); j += 2) {
            const std::string_view value = f.word(i, j + 1);
            const std::size_t of = value.find("_of_");
            if (of == std::string_view::npos) continue;
            if (const auto at = element.find(value.substr(of + 4)); at != element.end())
                results.try_emplace(std::string(f.word(i, j)),
                                    deck_result{at->second, std::string(value.substr(0, of))});
        }
    return results;
}

std::vector<written_file> written_files(const deck_view& deck) {
    std::vector<written_file> files;
    const file_chr& f = deck.statements;
    const auto results = results_of(deck);
    for (const statement_range& block : solve_ranges(deck)) {
        const int type = find_from(deck, block.begin, block.end, "solve_type");
        const std::string_view kind = type >= 0 && f.n_words(type) > 1 ? f.word(type, 1) : std::string_view();
        for (int i = block.begin; i < block.end; ++i) {
            if (!f.begins(i, "filename") || f.n_words(i) < 2) continue;
            written_file file{std::string(f.word(i, 1)), {}, i, true};
            bool harmonics = false;
            for (int j = 2; j + 1 < f.n_words(i); ++j)
                harmonics = harmonics || (f.word(i, j) == "fourier" && f.word(i, j + 1) == "yes");
            if (kind == "trns" || kind == "ssw") file.columns.push_back(harmonics ? "harmonic" : "time");
            if (kind == "ac") file.columns.push_back("frequency");
            const int end = find_from(deck, i, block.end, "end_output");
            const std::size_t n_axes = file.columns.size();
            for (int v = i; v < (end < 0 ? block.end : end); ++v) {
                if (!f.begins(v, "variables:")) continue;
                for (int j = 1; j < f.n_words(v); ++j) {
                    const std::string word(f.word(v, j));
                    if (word == "solution" || word == "solution_ac" || word == "parms") file.rows = false;
                    file.columns.push_back(word);
                }
            }
            file.results = file.columns.size() > n_axes && results.contains(file.columns[n_axes]);
            if (file.results) file.columns.erase(file.columns.begin(), file.columns.begin() + int(n_axes));
            const auto same = [&](const written_file& other) { return other.path == file.path; };
            if (std::none_of(files.begin(), files.end(), same)) files.push_back(std::move(file));
        }
    }
    return files;
}

std::string title_of(const deck_view& deck) {
    std::string title;
    if (deck.statements.n_lines() > 0 && deck.statements.begins(0, "title:"))
        for (int j = 1; j < deck.statements.n_words(0); ++j)
            title += (j > 1 ? " " : "") + std::string(deck.statements.word(0, j));
    return title;
}

namespace {

constexpr std::size_t widest = 100;  // characters of a line that are shown

std::string shown(std::string text) {
    for (char& c : text)
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7f') c = '?';
    return text;
}

}  // namespace

record_place place_in_files(const deck_view& deck, int i_statement, int i_word) {
    const word_place at = deck.statements.where(i_statement, i_word);
    const deck_source::place& p = deck.source.origin[file_chr::at(at.line)];
    const deck_source::file& file = deck.source.files[file_chr::at(p.file)];
    return {file.path, p.line + 1, at.column + 1, file.lines[file_chr::at(p.line)]};
}

std::string place_with_caret(const deck_view& deck, int i_statement, int i_word) {
    return place_with_caret(place_in_files(deck, i_statement, i_word));
}

std::string place_with_caret(record_place place) {
    std::string& text = place.text;
    std::size_t caret = file_chr::at(place.column - 1);
    if (caret > widest * 3 / 4) {  // keep the word in sight
        text = "..." + text.substr(caret - widest / 2);
        caret = widest / 2 + 3;
    }
    if (text.size() > widest) text = text.substr(0, widest) + " ...";
    for (char& c : text)
        if (c == '\t') c = ' ';
    return place.file + ":" + std::to_string(place.line) + ":" + std::to_string(place.column) + ":\n  " + shown(text) +
           "\n  " + std::string(caret, ' ') + "^";
}

}  // namespace cli
