#include "tnl/results/rows.h"

#include <algorithm>
#include <cstdio>

#include "tnl/common/text_width.h"

namespace cli {

std::string format_rows(const result_table& table, int n_shown) {
    constexpr int width = 14;
    std::string out;
    const auto add = [&](const std::string& cell,
                         const std::string& name) {  // to the right; a blank before it at least
        const int wide = std::max(width, n_characters(name) + 1);
        out += std::string(static_cast<std::size_t>(std::max(1, wide - n_characters(cell))), ' ') + cell;
    };
    for (const record_column& column : table.columns) add(column.name, column.name);
    out += '\n';
    std::size_t n_all = 0;
    for (std::size_t k = 0; k < table.n_curves(); ++k) {
        if (k > 0) out += '\n';
        const std::size_t first = table.first_row[k], n = table.first_row[k + 1] - first;
        const std::size_t shown = std::min<std::size_t>(n, static_cast<std::size_t>(std::max(2, n_shown)));
        n_all += shown;
        for (std::size_t s = 0; s < shown; ++s) {
            const std::size_t i = first + (shown > 1 ? s * (n - 1) / (shown - 1) : 0);
            for (std::size_t j = 0; j < table.n_columns(); ++j) {
                char cell[40];
                std::snprintf(cell, sizeof cell, "%.6e", table.at(i, j));
                add(cell, table.columns[j].name);
            }
            out += '\n';
        }
    }
    if (n_all < table.n_rows()) out += std::to_string(n_all) + " of " + std::to_string(table.n_rows()) + " rows\n";
    return out;
}

}  // namespace cli
