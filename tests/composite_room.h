// composite_room.h -- a library of composites holds 49 entries, fewer than are installed.
#pragma once
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

// Those that a test may use without naming them where its library is made.
inline bool is_common(std::string_view name) {
    static const std::set<std::string_view> names = {"ammeter",
                                                     "ammeter_fb",
                                                     "c",
                                                     "c1",
                                                     "cccs",
                                                     "ccvs",
                                                     "clock",
                                                     "dac1",
                                                     "dac1a",
                                                     "dac4",
                                                     "dac8",
                                                     "diode",
                                                     "diode_r",
                                                     "diode_spice_1",
                                                     "ground_dummy_1",
                                                     "ipulse",
                                                     "isrc_1",
                                                     "isrcac",
                                                     "l",
                                                     "l_gap",
                                                     "pwl20",
                                                     "r",
                                                     "r_area",
                                                     "r_pot",
                                                     "r_time",
                                                     "spdt1",
                                                     "switch_d",
                                                     "switch_e",
                                                     "switch_g1",
                                                     "thyristor_g",
                                                     "triangle_1",
                                                     "vccs",
                                                     "vcvs",
                                                     "voltmeter_fb",
                                                     "vpulse",
                                                     "vsrc_1",
                                                     "vsrcac",
                                                     "vsrcac_ramp",
                                                     "vsrcdc",
                                                     "xfmr",
                                                     "xfmr_2w_ideal"};
    return names.contains(name);
}

// Of an installed library's text the entries that `wanted` names, a deck or other libraries, with those that they call;
// then common ones and others in their order, as long as there is room for some entries more.
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
            if (kept[i] || is_common(all[i].name) == rare) continue;
            kept[i] = 1;
            ++n;
        }
    std::string out;
    for (std::size_t i = 0; i < all.size(); ++i)
        if (kept[i]) out += all[i].text;
    return out;
}
