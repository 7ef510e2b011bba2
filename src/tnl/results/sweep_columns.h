// sweep_columns.h -- which columns of a row file show what a sweep has set, and what its curves are called.
#pragma once
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "tnl/common/run_record.h"

namespace cli {

// Rows first .. first + n - 1.
struct curve_rows {
    std::size_t first = 0, n = 0;
};

// A number of seven digits in a row, against what was set; size: the greatest of the sweep.
inline bool shows(double in_row, double set, double size) {
    return std::abs(in_row - set) <= 2e-6 * std::abs(set) + 1e-9 * size;
}
inline double greatest_size(const std::vector<double>& values) {
    double size = 0;
    for (const double v : values) size = std::max(size, std::abs(v));
    return size;
}

// Of a column, whose number in a row is at(row): whether it is values[k] throughout curve k.
template <class At>
bool shows_curves(const At& at, const std::vector<curve_rows>& curves, const std::vector<double>& values) {
    const double size = greatest_size(values);
    for (std::size_t k = 0; k < curves.size(); ++k)
        for (std::size_t i = 0; i < curves[k].n; ++i)
            if (k >= values.size() || !shows(at(curves[k].first + i), values[k], size)) return false;
    return !curves.empty();
}
// Whether it is values[i] in row i of each curve.
template <class At>
bool shows_steps(const At& at, const std::vector<curve_rows>& curves, const std::vector<double>& values) {
    const double size = greatest_size(values);
    for (const curve_rows& c : curves)
        for (std::size_t i = 0; i < c.n; ++i)
            if (i >= values.size() || !shows(at(c.first + i), values[i], size)) return false;
    return !curves.empty() && !values.empty();
}

// The sweeps that tell the curves apart, if the file's rows are those of its record: a sweep that a column shows has
// the column's name and unit, as a voltage's node is better known than its source's parameter. at(row, column).
template <class At>
std::vector<record_sweep> sweeps_of_curves(const record_file& file, const std::vector<record_column>& columns,
                                           const std::vector<curve_rows>& curves, const At& at) {
    std::vector<record_sweep> sweeps = file.sweeps;
    for (record_sweep& sweep : sweeps) {
        if (sweep.values.size() < curves.size()) return {};
        for (std::size_t j = 0; j < columns.size(); ++j) {
            if (columns[j].name == file.sweeps[static_cast<std::size_t>(&sweep - sweeps.data())].name ||
                !shows_curves([&](std::size_t i) { return at(i, j); }, curves, sweep.values))
                continue;
            sweep.name = columns[j].name;
            if (!columns[j].unit.empty()) sweep.unit = columns[j].unit;
            break;
        }
    }
    return sweeps;
}

// The column that shows what steps along the curves; -1: none.
template <class At>
int steps_column(const record_file& file, const std::vector<record_column>& columns,
                 const std::vector<curve_rows>& curves, const At& at) {
    if (file.steps.name.empty()) return -1;
    for (std::size_t j = 0; j < columns.size(); ++j)
        if (columns[j].name == file.steps.name) return static_cast<int>(j);
    for (std::size_t j = 0; j < columns.size(); ++j)
        if (shows_steps([&](std::size_t i) { return at(i, j); }, curves, file.steps.values)) return static_cast<int>(j);
    return -1;
}

}  // namespace cli
