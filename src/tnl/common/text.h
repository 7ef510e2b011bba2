// text.h -- small changes of texts that several files make.
#pragma once
#include <string>
#include <string_view>
#include <vector>

namespace cli {

std::string lower(std::string_view text);         // ASCII letters alone
std::string_view trimmed(std::string_view text);  // without blanks, tabs and '\r' at its ends
std::string shell_quoted(std::string_view text);  // between single quotes, where 'it'\''s' stands for it's
std::string replaced(std::string text, std::string_view from, std::string_view to);  // everywhere
// '\' before each of these characters, and blanks for line ends.
std::string with_backslashes(std::string_view text, std::string_view before);
std::vector<std::string> split(std::string_view text, char at);  // empty pieces are left out

}  // namespace cli
