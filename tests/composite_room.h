// composite_room.h -- a library of composites holds 49 entries, fewer than are installed.
#pragma once
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

// Of an installed library's text the entries that `wanted` names, a deck or other libraries, with those that they call;
// then others in their order, transistors and their like last, as long as there is room for some entries more.
inline std::string composites_with_room(const std::string& text, std::string_view wanted) {
    constexpr std::size_t most = 42;
    struct entry {
        std::string name, text;
    };
    std::vector<entry> all;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("ece name=")) all.push_back({line.substr(9, line.find(' ', 9) - 9), {}});
        if (!all.empty()) all.back().text += line + '\n';
    }
    std::set<std::string> named;
    const auto note_words = [&](std::string_view from) {
        std::istringstream words{std::string(from)};
        for (std::string w; words >> w;) {
            const std::size_t at = w.find('=');
            named.insert(at == std::string::npos ? w : w.substr(at + 1));
        }
    };
    note_words(wanted);
    std::vector<char> kept(all.size(), 0);
    std::size_t n = 0;
    const auto keep = [&](auto holds) {
        for (std::size_t i = all.size(); i-- > 0;)  // callees stand first
            if (!kept[i] && holds(all[i])) {
                kept[i] = 1;
                ++n;
                note_words(all[i].text);
            }
    };
    keep([&](const entry& e) { return named.contains(e.name); });
    for (const bool rare : {false, true})
        for (std::size_t i = 0; i < all.size() && n < most; ++i) {
            const std::string& x = all[i].name;
            const bool is_rare = x.starts_with("bjt_") || x.starts_with("jfet_") || x.starts_with("mos_") ||
                                 x.starts_with("cool_") || x.starts_with("r_") || x.starts_with("diode_");
            if (kept[i] || is_rare != rare) continue;
            kept[i] = 1;
            ++n;
        }
    std::string out;
    for (std::size_t i = 0; i < all.size(); ++i)
        if (kept[i]) out += all[i].text;
    return out;
}
