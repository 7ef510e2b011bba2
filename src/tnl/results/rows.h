// rows.h -- a row table as text to look at.
#pragma once
#include <string>

#include "tnl/results/result_table.h"

namespace cli {

// A head line with the names, then at most n_shown rows of each curve, evenly spread, the first and the last among
// them. When rows are left out, the last line tells: "11 of 101 rows".
std::string format_rows(const result_table& table, int n_shown);

}  // namespace cli
