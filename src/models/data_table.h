// data_table.h -- what one data file holds.
#pragma once
#include <cstddef>
#include <vector>

#include "base/at.h"

// Points:          x ascending (two equal ones are a jump), y.
// Switching times: x alone, s, strictly ascending.
// Look-up values:  y, of all points of the axes, the last axis fastest; a point has n_y of them.
struct data_table {
    std::vector<double> x, y;
    std::vector<int> n = {};  // [axes] points along each axis
    int n_y = 1;

    int n_points() const { return static_cast<int>(x.size()); }
};

// The tables of one family's units.
struct data_tables {
    std::vector<data_table> table;  // in the order in which the files are read
    std::vector<int> of_unit;       // [units] its table; -1: it has none

    bool has(int u) const { return u >= 0 && at(u) < of_unit.size() && of_unit[at(u)] >= 0; }
    const data_table& of(int u) const { return table[at(of_unit[at(u)])]; }
};
