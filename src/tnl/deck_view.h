// deck_view.h -- what the front end must know of a deck: its statements with their places, and what it asks for.
#pragma once
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "deck/file_chr.h"

namespace cli {

// The deck's statements. A deck that the reader refuses has none: the simulator will say why.
struct deck_view {
    std::string path;  // as the user gave it; it begins every place that is shown
    std::string text;
    file_chr statements;
    std::vector<std::string> lines;  // physical lines; statement i begins in lines[statements.physical[i] - 1]
    bool readable = false;           // the reader took it
};

deck_view view_deck(std::string path, std::string text);

// Statements [begin, end) of the circuit block and of each solve block; empty when the deck has none.
struct statement_range {
    int begin = 0, end = 0;
};
statement_range circuit_range(const deck_view& deck);
std::vector<statement_range> solve_ranges(const deck_view& deck);

bool is_element_word(std::string_view word);  // eelement, gelement, delement, xelement, gmelement
bool is_placeholder(std::string_view type);   // connector_e, ground_dummy and their kin: no elements
// The value behind a key of a statement; keys stand at every second position from first on.
std::string value_of(const deck_view& deck, int i_statement, std::string_view key, int first = 1);

// Row files that the solve blocks write, in deck order, each once: path and column names (the time or frequency first
// where the analysis writes it).
struct row_file {
    std::string path;
    std::vector<std::string> columns;
    int i_statement = -1;  // of the filename statement
    bool rows = true;      // false: a solution or parameter file, which is no table
};
std::vector<row_file> row_files(const deck_view& deck);

std::string title_of(const deck_view& deck);  // the words behind title:

// "deck.in:12: eelement name=R1 type=r"; a statement of several lines ends in " ...".
std::string place_of(const deck_view& deck, int i_statement);

}  // namespace cli
