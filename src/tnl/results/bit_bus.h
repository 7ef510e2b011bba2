// bit_bus.h -- levels that belong together: bits of a number.
#pragma once
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tnl/results/result_table.h"

namespace cli {

struct bit_bus {
    std::string name;                  // "q[3:0]"
    std::string stem;                  // "q"
    int low = 0, high = 0;             // numbers behind the stem
    std::vector<std::size_t> columns;  // of the table, lowest bit first
    std::size_t at = 0;                // the first of its columns in the list, where it stands for all of them
};
// Columns of levels whose names end in consecutive numbers, in whatever order the list has them: two or more from 0 on
// (q0 q1), three or more from another number on. Names that nobody gave are none, and a number stands once.
std::vector<bit_bus> buses_in(const result_table& table, const std::vector<std::size_t>& columns);

// The bits of a row as a hexadecimal number, all its digits; a digit with an unknown bit is 'x'.
std::string bus_text(const result_table& table, const bit_bus& bus, std::size_t row);
bool is_known(const result_table& table, const bit_bus& bus, std::size_t row);  // all bits

}  // namespace cli
