// plot_lanes.h -- traces of levels for lanes under one another, and bits of a number as one lane.
#pragma once
#include <cmath>
#include <vector>

#include "tnl/plot/plot_panels.h"
#include "tnl/results/bit_bus.h"

namespace cli {

// What of x is drawn.
struct plot_window {
    double from = -INFINITY, to = INFINITY;
    bool holds(double x) const { return x >= from && x <= to; }
};
double x_at(const plot_source& s, std::size_t row);

bool is_unknown(const result_table& table, std::size_t row, std::size_t column);  // a level of a digital file

// The numbers among the columns, unless each bit is to have a lane of its own; at counts the columns of the source.
std::vector<bit_bus> buses_on_lanes(const plot_source& s, const plot_choice& choice);
const bit_bus* bus_of(const std::vector<bit_bus>& buses, int column);  // nullptr: none

// The changes of a trace and the points around them; 0 and 1. Of levels, stretches tell where they are unknown.
plot_series lane_of(const plot_source& s, std::size_t i_column, std::size_t k, const plot_window& w, const levels& l,
                    const axis& x, int n_bins, double origin);
// A number: its stretches, and the ends of what is drawn as points.
plot_series bus_lane(const plot_source& s, const bit_bus& bus, std::size_t k, const plot_window& w, const axis& x,
                     int n_bins, double origin);

}  // namespace cli
