#include "tnl/common/xml_text.h"

#include <algorithm>

namespace cli {

int utf8_length(std::string_view text, std::uint32_t& c) {
    const auto byte = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u; };
    const unsigned lead = byte(0);
    const int n = lead < 0x80                   ? 1
                  : lead >= 0xc2 && lead < 0xe0 ? 2
                  : lead >= 0xe0 && lead < 0xf0 ? 3
                  : lead >= 0xf0 && lead < 0xf5 ? 4
                                                : 0;
    if (n == 0) return 0;
    c = n == 1 ? lead : lead & (0x7fu >> n);
    for (int i = 1; i < n; ++i) {
        const unsigned b = byte(static_cast<std::size_t>(i));
        if ((b & 0xc0u) != 0x80) return 0;
        c = c << 6 | (b & 0x3fu);
    }
    constexpr std::uint32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
    return c < least[n] || (c >= 0xd800 && c < 0xe000) || c > 0x10ffff ? 0 : n;
}

std::string xml_escaped(std::string_view text) {
    std::string out;
    while (!text.empty()) {
        std::uint32_t c = 0;
        const int n = utf8_length(text, c);
        const bool is_control = c < 0x20 && c != '\t' && c != '\n' && c != '\r';
        if (n == 0 || is_control || c == 0xfffe || c == 0xffff)
            out += "\xef\xbf\xbd";
        else if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else if (c == '"')
            out += "&quot;";
        else if (c < 0x20)  // kept only in this form in an attribute
            out += "&#" + std::to_string(c) + ";";
        else
            out += text.substr(0, static_cast<std::size_t>(n));
        text.remove_prefix(static_cast<std::size_t>(std::max(n, 1)));
    }
    return out;
}

}  // namespace cli
