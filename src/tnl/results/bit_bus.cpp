#include "tnl/results/bit_bus.h"

#include <algorithm>
#include <map>

namespace cli {

namespace {

// "q12": q and 12. No number behind: -1.
struct numbered {
    std::string stem;
    int number = -1;
};

numbered cut_number(const std::string& name) {
    constexpr std::size_t most_digits = 4;
    std::size_t at = name.size();
    while (at > 0 && name[at - 1] >= '0' && name[at - 1] <= '9' && name.size() - at < most_digits) --at;
    const bool leads_with_zero = at + 1 < name.size() && name[at] == '0';  // q01 is no bit 1
    if (at == 0 || at == name.size() || leads_with_zero) return {};
    if (name[at - 1] >= '0' && name[at - 1] <= '9') return {};
    return {name.substr(0, at), std::stoi(name.substr(at))};
}

bool is_level(const result_table& table, std::size_t row, std::size_t column, double level) {
    return table.at(row, column) == level;
}

}  // namespace

std::vector<bit_bus> buses_in(const result_table& table, const std::vector<std::size_t>& columns) {
    std::map<std::string, std::map<int, std::size_t>> bits;  // stem -> number -> place in the list
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const record_column& c = table.columns[columns[i]];
        const numbered n = cut_number(c.name);
        if (c.level && n.number >= 0 && c.name != "c" + std::to_string(columns[i] + 1))
            bits[n.stem].try_emplace(n.number, i);
    }
    std::vector<bit_bus> buses;
    for (const auto& [stem, of_stem] : bits)
        for (auto at = of_stem.begin(); at != of_stem.end();) {
            bit_bus bus{"", stem, at->first, at->first, {}, columns.size()};
            for (; at != of_stem.end() && at->first == bus.low + static_cast<int>(bus.columns.size()); ++at) {
                bus.high = at->first;
                bus.columns.push_back(columns[at->second]);
                bus.at = std::min(bus.at, at->second);
            }
            bus.name = stem + "[" + std::to_string(bus.high) + ":" + std::to_string(bus.low) + "]";
            if (bus.columns.size() >= (bus.low == 0 ? 2u : 3u)) buses.push_back(std::move(bus));
        }
    std::sort(buses.begin(), buses.end(), [](const bit_bus& a, const bit_bus& b) { return a.at < b.at; });
    return buses;
}

bool is_known(const result_table& table, const bit_bus& bus, std::size_t row) {
    return std::all_of(bus.columns.begin(), bus.columns.end(), [&](std::size_t column) {
        return is_level(table, row, column, 0) || is_level(table, row, column, 1);
    });
}

std::string bus_text(const result_table& table, const bit_bus& bus, std::size_t row) {
    std::string text;
    for (std::size_t from = 0; from < bus.columns.size(); from += 4) {
        int digit = 0;
        for (std::size_t i = from; i < std::min(from + 4, bus.columns.size()); ++i) {
            const bool high = is_level(table, row, bus.columns[i], 1);
            if (!high && !is_level(table, row, bus.columns[i], 0)) digit = 16;
            if (high && digit < 16) digit += 1 << (i - from);
        }
        text += "0123456789abcdefx"[digit];
    }
    std::reverse(text.begin(), text.end());
    return text;
}

}  // namespace cli
