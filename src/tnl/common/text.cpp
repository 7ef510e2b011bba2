#include "tnl/common/text.h"

#include <algorithm>

namespace cli {

std::string lower(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c | 0x20);
    return out;
}

std::string_view trimmed(std::string_view text) {
    const std::size_t a = text.find_first_not_of(" \t\r");
    if (a == std::string_view::npos) return {};
    return text.substr(a, text.find_last_not_of(" \t\r") - a + 1);
}

std::string replaced(std::string text, std::string_view from, std::string_view to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

std::string shell_quoted(std::string_view text) { return "'" + replaced(std::string(text), "'", "'\\''") + "'"; }

std::string with_backslashes(std::string_view text, std::string_view before) {
    std::string out;
    for (const char c : text) {
        if (before.find(c) != std::string_view::npos) out += '\\';
        out += c == '\n' ? ' ' : c;
    }
    return out;
}

std::vector<std::string> split(std::string_view text, char at) {
    std::vector<std::string> pieces;
    while (!text.empty()) {
        const std::size_t n = std::min(text.find(at), text.size());
        if (n > 0) pieces.emplace_back(text.substr(0, n));
        text.remove_prefix(std::min(n + 1, text.size()));
    }
    return pieces;
}

}  // namespace cli
