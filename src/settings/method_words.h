// method_words.h -- the keywords of `method:` cards.
#pragma once
#include <span>
#include <string_view>
#include <variant>

#include "settings/solve_class.h"

// Types of block, as bits.
inline constexpr unsigned b_dc = 1, b_ac = 2, b_trns = 4, b_startup = 8, b_ssw = 16, b_unknown = 32, b_all = 63;
unsigned block_bit(const solve_class& slv);

// Where the value of a keyword goes; the type of the member is the type of the word.
using method_member = std::variant<int method_settings::*, double method_settings::*, truefalse method_settings::*,
                                   double flags_class::*>;

struct method_word {
    std::string_view word;
    unsigned blocks;  // types that accept it
    method_member member;
    double dflt;            // of a flag 0 or 1; keep_value: the keyword has none
    unsigned acts;          // of the types that accept it, those where it changes something; 0: read, without effect
    std::string_view text;  // what it is for, for users; a line without capital and full stop
    std::string_view if_not_given = "";  // where the default is not that of the row: what holds then
};
// The rows from one word to the next section's, under a title.
struct method_section {
    std::string_view first, title, note;
};
// A value that method_default leaves as the last block left it.
inline constexpr double keep_value = -1e300;

std::span<const method_word> method_words();
std::span<const method_section> method_sections();
const char* type_name(const method_word& m);  // "int", "double", "flag"

// One pair of a `method:` card. Halts on a keyword that this type of block does not know.
void read_method_pair(solve_class& slv, flags_class& flags, const gprm_class& gprm, std::string_view word,
                      std::string_view value);
bool was_given(const solve_class& slv, std::string_view word);
