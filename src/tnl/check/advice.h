// advice.h -- what the simulator's messages mean, and what to do about them.
#pragma once
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

struct advice_text {
    std::string_view id;
    std::string_view meaning;  // one sentence
    std::string_view causes;   // in plain words, the likeliest first
    std::string_view mend;     // what to do, in one line
};
// A message belongs to the first row whose pieces, parted by '*', stand in it in this order. Blanks and line ends count
// as one blank.
struct advice_pattern {
    std::string_view pattern, id;
};
std::span<const advice_text> advice_texts();
std::span<const advice_pattern> advice_patterns();

// Whether the pieces of a pattern stand in the text in their order; value: what the first '*' stands for.
bool fits(std::string_view text, std::string_view pattern, std::string* value = nullptr);
// nullptr if no row fits.
const advice_text* find_advice(std::string_view message);
// Of the code of a finding, as `tnl check --json` has it; nullptr: there is no such code.
const advice_text* advice_of_code(std::string_view code);
// Rows whose pattern shares most words with the text, the best first; for pieces of a message, and misspelt ones.
std::vector<const advice_pattern*> similar_patterns(std::string_view text, std::size_t most);
const advice_text* advice_of(const advice_pattern& row);

// Lines "meaning: ...", "causes: ...", "to do: ...".
std::string explained(const advice_text& text);

}  // namespace cli
