// xml_text.h -- text that may hold any bytes, as a file of XML takes it.
#pragma once
#include <cstdint>
#include <string>
#include <string_view>

namespace cli {

// Length of the UTF-8 character at the front and its number; 0 when there is none.
int utf8_length(std::string_view text, std::uint32_t& c);

// The text as it stands in UTF-8, with what is no UTF-8 or no character of XML replaced by U+FFFD.
std::string xml_escaped(std::string_view text);

}  // namespace cli
