// rows.h -- row files, read back for tables and plots.
#pragma once
#include <string>
#include <string_view>
#include <vector>

namespace cli {

// A row file holds one curve, or several with blank lines between them.
using row = std::vector<double>;
using curve = std::vector<row>;
std::vector<curve> read_rows(std::string_view text);

// Rows as a table with a head line: at most n_shown of them, evenly spread, the first and the last among them.
std::string format_rows(const std::vector<std::string>& columns, const std::vector<curve>& curves, int n_shown);

}  // namespace cli
