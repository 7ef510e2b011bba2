// method_words.h -- the keywords of `method:` cards.
#pragma once
#include <span>
#include <string_view>
#include <variant>

#include "blocks/solve_class.h"

// Types of block, as bits.
inline constexpr unsigned b_dc = 1, b_ac = 2, b_trns = 4, b_startup = 8, b_ssw = 16, b_unknown = 32, b_all = 63;
unsigned block_bit(const solve_class& slv);

// Where the value of a keyword goes; the type of the member is the type of the word.
using method_member =
    std::variant<int solve_class::*, double solve_class::*, truefalse solve_class::*, double flags_class::*>;

struct method_word {
    std::string_view word;
    unsigned blocks;  // types that accept it
    method_member member;
    double dflt;  // of a flag 0 or 1; keep_value: the keyword has none
};
// A value that method_default leaves as the last block left it.
inline constexpr double keep_value = -1e300;

std::span<const method_word> method_words();
const char* type_name(const method_word& m);  // "int", "double", "flag"

// One pair of a `method:` card. Halts on a keyword that this type of block does not know.
void read_method_pair(solve_class& slv, flags_class& flags, const gprm_class& gprm, std::string_view word,
                      std::string_view value);
bool was_given(const solve_class& slv, std::string_view word);
