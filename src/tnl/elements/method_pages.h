// method_pages.h -- the words of `method:` for users, from the table that reads them.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "settings/method_words.h"

namespace cli {

std::vector<std::string> method_word_names();
// The row of "trbdf2_tolr" or "method:trbdf2_tolr"; nullptr if there is none.
const method_word* find_word_of_method(std::string_view name);

// Does the text, in any case, stand in the word or its meaning?
bool speaks_of(const method_word& m, std::string_view text);

std::string method_text(const method_word& m);  // all about one word
// A line for each word that speaks of the text; all for an empty one.
std::string method_list(std::string_view text);
std::string method_json(const std::vector<const method_word*>& words);
std::string method_markdown(const method_word& m);
std::string method_markdown();  // the page docs/method.md

}  // namespace cli
