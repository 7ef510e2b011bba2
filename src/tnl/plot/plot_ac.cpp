#include "tnl/plot/plot_ac.h"

#include <algorithm>
#include <cmath>

#include "tnl/common/exit_status.h"

namespace cli {

namespace {

constexpr std::string_view mag_prefix = "mag_of_";

row_values all_rows(const expression& e, const result_table& table) {
    row_values all;
    for (std::size_t k = 0; k < table.n_curves(); ++k) {
        row_values part = evaluate_rows(e, table, k);
        all.value.insert(all.value.end(), part.value.begin(), part.value.end());
        all.phase.insert(all.phase.end(), part.phase.begin(), part.phase.end());
        all.unit = part.unit == "%" ? "" : part.unit;
    }
    return all;
}

int added(result_table& table, const std::string& name, const std::string& unit, const std::vector<double>& values) {
    add_column(table, {name, unit}, values);
    return static_cast<int>(table.n_columns()) - 1;
}

}  // namespace

std::vector<std::string> small_signals_in(const result_table& table) {
    std::vector<std::string> names;
    for (const record_column& c : table.columns)
        for (const std::string_view prefix :
             {mag_prefix, std::string_view("phase_of_"), std::string_view("real_of_")}) {
            if (!c.name.starts_with(prefix)) continue;
            const std::string name = c.name.substr(prefix.size());
            const response_columns r = find_response(table, name);
            const bool is_whole = (r.mag >= 0 && r.phase >= 0) || r.is_cartesian();
            if (is_whole && std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
        }
    return names;
}

std::vector<int> add_columns_of(const expression& e, result_table& table) {
    const row_values rows = all_rows(e, table);
    if (rows.phase.empty()) return {added(table, e.label, rows.unit, rows.value)};
    const int mag = added(table, std::string(mag_prefix) + e.label, rows.unit, rows.value);
    return {mag, added(table, "phase_of_" + e.label, "deg", rows.phase)};
}

void take_decibels(result_table& table, const std::vector<int>& columns) {
    for (const int column : columns) {
        const auto j = static_cast<std::size_t>(column);
        record_column& c = table.columns[j];
        if (!c.name.starts_with(mag_prefix) || c.unit == "dB") continue;
        c.unit = "dB";
        for (std::size_t i = 0; i < table.n_rows(); ++i) {
            double& v = table.values[i * table.n_columns() + j];
            v = v > 0 ? 20 * std::log10(v) : NAN;  // nothing has no place
        }
    }
}

void order_by_panels(const result_table& table, std::vector<int>& columns) {
    const auto rank = [&](int column) {
        const record_column& c = table.columns[static_cast<std::size_t>(column)];
        return c.unit == "dB" || c.name.starts_with(mag_prefix) ? 0 : c.unit == "deg" ? 1 : 2;
    };
    std::stable_sort(columns.begin(), columns.end(), [&](int a, int b) { return rank(a) < rank(b); });
}

plot_source locus_of(const expression& e, result_table& table) {
    row_values rows = all_rows(e, table);
    if (rows.phase.empty())
        throw usage_error(e.label + " is no small signal: a curve in the complex plane needs magnitude and phase");
    for (std::size_t i = 0; i < rows.value.size(); ++i) {
        const double mag = rows.value[i], angle = rows.phase[i] * 3.14159265358979323846 / 180;
        rows.value[i] = mag * std::cos(angle);
        rows.phase[i] = mag * std::sin(angle);
    }
    plot_source source;
    source.x = added(table, "real part", rows.unit, rows.value);
    source.columns = {added(table, e.label, rows.unit, rows.phase)};
    return source;
}

}  // namespace cli
