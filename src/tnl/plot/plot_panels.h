// plot_panels.h -- which columns share a panel.
#pragma once
#include <string>
#include <vector>

#include "tnl/plot/plot_rows.h"

namespace cli {

// Low and high of a column that has at most two values; a constant is low at 0 and high elsewhere.
struct levels {
    double low = 0, high = 0;
    bool two = false;  // false: more values than two
};

struct panel_plan {
    std::vector<plot_panel> panels;                  // without series
    std::vector<std::vector<std::string>> columns;   // [panels] names of their columns, each once
    std::vector<std::vector<std::size_t>> panel_of;  // [sources][their columns]
    std::vector<std::vector<levels>> levels_of;      // [sources][their columns] of those on lanes
};
// Columns that the choice puts together; of the others those of one unit. Columns without a unit share a panel as long
// as their sizes are comparable: beside one of 15 a duty cycle would be a line on the floor.
panel_plan plan_panels(const std::vector<plot_source>& sources, const plot_choice& choice);

// Row 0 of a table that begins with a guess, where that lies apart from the rows behind it: the start of no curve.
bool starts_apart(const result_table& table, std::size_t column);

}  // namespace cli
