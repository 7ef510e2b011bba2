// near_words.h -- names that look like a misspelt one.
#pragma once
#include <string>
#include <string_view>
#include <vector>

namespace cli {

// Letters to change, add, drop or swap with their neighbour, so that one word becomes the other. Names of more than 64
// letters are as far from any other as they are long: the time grows with the product of the two.
int edit_distance(std::string_view a, std::string_view b);

// Those of the words that look like this one, the nearest first, at most `most`; words that differ in case alone come
// first. Words longer than 64 characters have no near ones.
std::vector<std::string> near_words(const std::vector<std::string>& words, std::string_view word, std::size_t most = 3);

// "; near names: a, b", or nothing.
std::string near_text(const std::vector<std::string>& words, std::string_view word,
                      std::string_view kind = "near names");

}  // namespace cli
