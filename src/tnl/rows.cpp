#include "tnl/rows.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace cli {

std::vector<curve> read_rows(std::string_view text) {
    std::vector<curve> curves(1);
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string line(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        row numbers;
        const char* at = line.c_str();
        for (char* behind = nullptr;; at = behind) {
            const double x = std::strtod(at, &behind);
            if (behind == at) break;
            numbers.push_back(x);
        }
        if (!numbers.empty())
            curves.back().push_back(std::move(numbers));
        else if (!curves.back().empty())
            curves.emplace_back();
    }
    if (curves.back().empty()) curves.pop_back();
    return curves;
}

std::string format_rows(const std::vector<std::string>& columns, const std::vector<curve>& curves, int n_shown) {
    constexpr int width = 14;
    std::string out;
    char cell[64];
    const auto add = [&](const char* format, auto value) {
        std::snprintf(cell, sizeof cell, format, width, value);
        out += cell;
    };
    const std::size_t n_columns = curves.empty() || curves[0].empty() ? columns.size() : curves[0][0].size();
    for (std::size_t j = 0; j < n_columns; ++j)
        add("%*s", columns.size() == n_columns ? columns[j].c_str() : ("c" + std::to_string(j + 1)).c_str());
    out += '\n';
    for (std::size_t k = 0; k < curves.size(); ++k) {
        if (k > 0) out += '\n';
        const std::size_t n = curves[k].size();
        const std::size_t shown = std::min<std::size_t>(n, static_cast<std::size_t>(std::max(2, n_shown)));
        for (std::size_t s = 0; s < shown; ++s) {
            for (const double x : curves[k][shown > 1 ? s * (n - 1) / (shown - 1) : 0]) add("%*.6e", x);
            out += '\n';
        }
    }
    return out;
}

}  // namespace cli
