// deck_view.h -- what the front end must know of a deck: its statements with their places, and what it asks for.
#pragma once
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "deck/file_chr.h"
#include "tnl/common/run_record.h"
#include "tnl/deck/deck_source.h"
#include "tnl/deck/own_composites.h"

namespace cli {

// What the simulator may read is told in tmpdim.in, which the front end writes.
inline constexpr int any_number_of_lines = std::numeric_limits<int>::max();

// The deck's statements. A deck that the reader refuses has none: the simulator will say why.
struct deck_view {
    std::string path;    // as the user gave it
    deck_source source;  // its files, and where each line of the simulator's text comes from
    own_composites own;  // that it brings along
    file_chr statements;
    bool readable = false;  // the reader took it

    const std::string& text() const { return source.text; }
};

deck_view view_deck(deck_source source);
deck_view view_deck(const std::string& path, std::string text);  // a text in memory; its includes are read

// Statements [begin, end) of the circuit block and of each solve block; empty when the deck has none.
struct statement_range {
    int begin = 0, end = 0;
};
statement_range circuit_range(const deck_view& deck);
std::vector<statement_range> solve_ranges(const deck_view& deck);

// A file of composites and models: nothing in it asks for a circuit.
bool is_library(const deck_view& deck);

bool is_element_word(std::string_view word);  // eelement, gelement, delement, xelement, gmelement
bool is_placeholder(std::string_view type);   // connector_e, ground_dummy and their kin: no elements
// The value behind a key of a statement; keys stand at every second position from first on.
std::string value_of(const deck_view& deck, int i_statement, std::string_view key, int first = 1);

// Output variables that are results computed from other files, and the element and its word that each comes from.
struct deck_result {
    int statement;
    std::string word;  // "rms", "pf"
};
std::map<std::string, deck_result, std::less<>> results_of(const deck_view& deck);
bool is_result_type(std::string_view type);  // calc_rms and its kin

// Row files that the solve blocks write, in deck order, each once: path and column names (the time or frequency first
// where the analysis writes it).
struct written_file {
    std::string path;
    std::vector<std::string> columns;
    int i_statement = -1;  // of the filename statement
    bool rows = true;      // false: a solution or parameter file, which is no table
    bool results = false;  // one row of results, without time or frequency
};
std::vector<written_file> written_files(const deck_view& deck);

std::string title_of(const deck_view& deck);  // the words behind title:

// Where word i_word of a statement stands: file, line, column, and that line as the user wrote it. The statement's
// first word for one that it has not.
record_place place_in_files(const deck_view& deck, int i_statement, int i_word = 0);

// "deck.in:12:15: " and the line, and below it a caret under the word. Control bytes are shown as '?', long lines cut.
std::string place_with_caret(const deck_view& deck, int i_statement, int i_word = 0);
std::string place_with_caret(record_place place);

}  // namespace cli
