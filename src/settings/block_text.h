// block_text.h -- the statements of one solve block, and words taken from them.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "settings/solve_class.h"

// Statements begin + 1 .. end - 1 of the deck belong to the block.
struct block_text {
    circuit_file& cf;
    int begin, end;

    // First statement of [from, to) with this first word; -1.
    int find(int from, int to, std::string_view word) const { return file_find_string_4(cf.text, from, to, word); }
};

// Position of a key in a statement, on odd or even positions; -1. The word behind it is value_of; a key at the end of
// the statement halts there.
inline std::string value_of(const words& w, int at_key) { return pick_word_1(w, at_key + 1); }
