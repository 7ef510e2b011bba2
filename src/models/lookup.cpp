#include "models/lookup.h"

#include <algorithm>
#include <cmath>

#include "base/flags_class.h"
#include "base/halt.h"
#include "models/edges.h"

namespace {
constexpr double not_given = -1000.0;

// Where a value stands on an axis: between the points i and i + 1, f from the first; slope: df by the value, 0 for a
// value that is clamped.
struct axis_place {
    int i = 0;
    double f = 0.0, slope = 0.0;
};

axis_place place_on(int n, double first, double last, double x) {
    if (n < 2) return {};
    const double per_unit = (n - 1) / (last - first), at = (x - first) * per_unit;
    if (std::isnan(at)) return {0, at, at};
    const axis_place ends[] = {{0, 0.0, 0.0}, {n - 2, 1.0, 0.0}};
    if (at < 0) return ends[0];
    if (at > n - 1) return ends[1];
    const int i = std::min(static_cast<int>(at), n - 2);
    return {i, at - i, per_unit};
}
}  // namespace

void lookup_axes(const char* file, const data_table& table, const double* first, const double* end, double* last) {
    for (std::size_t k = 0; k < table.n.size(); ++k) {
        last[k] = end[k] == not_given ? table.n[k] - 1 : end[k];
        if (table.n[k] > 1 && !(std::fabs(last[k] - first[k]) > 0))
            halt({line(file, ": check x", k + 1, "_begin, x", k + 1, "_end. Halting...")});
    }
}

void lookup(const data_table& table, const double* first, const double* last, const double* x, double* y,
            double* dydx) {
    const int n_axes = static_cast<int>(table.n.size());
    axis_place place[max_axes];
    for (int k = 0; k < n_axes; ++k) place[k] = place_on(table.n[at(k)], first[k], last[k], x[k]);
    // The values at the corners of the cell, bit k of a corner for axis k; then one axis after the other is left, the
    // last one first, and the slopes by those that are gone go with the values.
    std::size_t point[1 << max_axes];
    for (int corner = 0; corner < 1 << n_axes; ++corner) {
        std::size_t p = 0;
        for (int k = 0; k < n_axes; ++k) {
            const int n = table.n[at(k)], i = std::min(place[k].i + (corner >> k & 1), n - 1);
            p = p * at(n) + at(i);
        }
        point[corner] = p;
    }
    for (int j = 0; j < table.n_y; ++j) {
        double v[1 << max_axes], d[max_axes][1 << max_axes];
        for (int corner = 0; corner < 1 << n_axes; ++corner) v[corner] = table.y[point[corner] * at(table.n_y) + at(j)];
        for (int k = n_axes - 1; k >= 0; --k)
            for (int low = 0; low < 1 << k; ++low) {
                const int high = low | 1 << k;
                for (int gone = k + 1; gone < n_axes; ++gone)
                    d[gone][low] += place[k].f * (d[gone][high] - d[gone][low]);
                d[k][low] = place[k].slope * (v[high] - v[low]);
                v[low] = place[k].f == 1.0   ? v[high]
                         : place[k].f == 0.0 ? v[low]
                                             : v[low] + place[k].f * (v[high] - v[low]);
            }
        y[j] = v[0];
        if (dydx != nullptr)
            for (int k = 0; k < n_axes; ++k) dydx[j * n_axes + k] = d[k][0];
    }
}

void curve_value(const data_table& table, double x, double& y, double& dy) {
    const std::size_t i = at(static_cast<int>(std::upper_bound(table.x.begin(), table.x.end(), x) - table.x.begin()));
    dy = 0.0;
    if (i == 0 || i == table.x.size()) {
        y = i == 0 ? table.y.front() : table.y.back();
        return;
    }
    dy = (table.y[i] - table.y[i - 1]) / (table.x[i] - table.x[i - 1]);
    y = table.y[i - 1] + dy * (x - table.x[i - 1]);
}

double table_wave(const char* file, const data_table& table, double t) {
    if (std::isnan(t)) halt({line(file, ": time loop did not end."), "  Halting..."});
    return edge_value(point_edges(table.n_points(), table.x.data(), table.y.data()), t);
}

void table_break(const data_table& table, flags_class* flags) {
    edge_break(point_edges(table.n_points(), table.x.data(), table.y.data()), 0.0, flags);
}

void check_table(const char* file, const data_tables& tables, int unit) {
    if (tables.has(unit)) return;
    const bool is_unit = unit >= 0 && at(unit) < tables.of_unit.size();
    halt({line(file, ": i_file=", is_unit ? tables.of_unit[at(unit)] : -1), "  Halting..."});
}
