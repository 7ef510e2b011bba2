// text_width.h -- how wide words are, and how they are shortened.
#pragma once
#include <string>
#include <string_view>
#include <vector>

namespace cli {

// Width in units of the font size, as DejaVu Sans sets it: the widest of the usual sans-serif fonts.
double text_width(std::string_view text);
int n_characters(std::string_view text);  // of UTF-8
// The same text with its middle left out, no wider than most: "v_of_the..._winding".
std::string shortened(std::string_view text, double most);
std::string shortened_to(std::string_view text, int most_characters);
// Lines no wider than most, broken between words; at most n_lines, the last one shortened.
std::vector<std::string> wrapped(std::string_view text, double most, int n_lines);

}  // namespace cli
