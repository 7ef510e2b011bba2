// Small signals as other programs want them: real and imaginary part, or magnitude and phase.
#include <algorithm>
#include <cmath>

#include "tnl/results/export.h"
#include "tnl/results/measure.h"
#include "tnl/results/response.h"

namespace cli {

namespace {

struct taken_columns {
    const result_table& from;
    std::vector<record_column> columns = {};
    std::vector<std::vector<double>> values = {};

    bool has(const std::string& name) const {
        return std::any_of(columns.begin(), columns.end(), [&](const record_column& c) { return c.name == name; });
    }
    void add(const std::string& name, const std::string& unit, std::vector<double> rows) {
        columns.push_back({name, unit});
        values.push_back(std::move(rows));
    }
    void add_column(std::size_t j) {
        std::vector<double> rows(from.n_rows());
        for (std::size_t i = 0; i < rows.size(); ++i) rows[i] = from.at(i, j);
        add(from.columns[j].name, from.columns[j].unit, std::move(rows));
    }
    // Both parts of a small signal, once.
    void add_signal(const std::string& name, small_signal_form form) {
        const bool cartesian = form == small_signal_form::cartesian;
        const std::string first = (cartesian ? "real_of_" : "mag_of_") + name,
                          second = (cartesian ? "imag_of_" : "phase_of_") + name;
        if (has(first)) return;
        expression e;
        e.names = {name};
        e.sides.push_back({name, {{measure_op::column, 0, false, 0, 0}}, false});
        std::vector<double> a, b;
        std::string unit;
        for (std::size_t k = 0; k < from.n_curves(); ++k) {
            row_values rows = evaluate_rows(e, from, k);
            unit = rows.unit;
            if (!cartesian) rows.phase = unwrapped(std::move(rows.phase));
            for (std::size_t i = 0; i < rows.value.size(); ++i) {
                const double angle = rows.phase[i] * 3.14159265358979323846 / 180;
                a.push_back(cartesian ? rows.value[i] * std::cos(angle) : rows.value[i]);
                b.push_back(cartesian ? rows.value[i] * std::sin(angle) : rows.phase[i]);
            }
        }
        add(first, unit, std::move(a));
        add(second, cartesian ? unit : "deg", std::move(b));
    }
};

// The small signal that the column is a part of, if both parts are there; else empty.
std::string signal_of(const result_table& table, const std::string& column) {
    for (const char* prefix : {"mag_of_", "phase_of_", "real_of_", "imag_of_"}) {
        if (!column.starts_with(prefix)) continue;
        std::string name = column.substr(std::string_view(prefix).size());
        const response_columns r = find_response(table, name);
        if (find_column(table, name) < 0 && ((r.mag >= 0 && r.phase >= 0) || (r.mag < 0 && r.is_cartesian())))
            return name;
    }
    return {};
}

}  // namespace

result_table chosen_columns(const result_table& table, const std::vector<std::string>& names, small_signal_form form) {
    std::vector<std::string> wanted = names;
    for (std::size_t j = 0; names.empty() && j < table.n_columns(); ++j) wanted.push_back(table.columns[j].name);
    taken_columns taken{table};
    for (const std::string& name : wanted) {
        const int j = find_column(table, name);
        const response_columns r = find_response(table, name);
        const std::string signal = j < 0 ? name : signal_of(table, table.columns[static_cast<std::size_t>(j)].name);
        const bool is_whole = j >= 0 ? !signal.empty() : (r.mag >= 0 && r.phase >= 0) || r.is_cartesian();
        if (form != small_signal_form::as_it_is && is_whole)
            taken.add_signal(signal, form);
        else if (j >= 0)
            taken.add_column(static_cast<std::size_t>(j));
        else
            for (const int part : {r.mag, r.phase, r.real, r.imag})
                if (part >= 0) taken.add_column(static_cast<std::size_t>(part));
    }
    result_table out;
    out.path = table.path;
    out.kind = table.kind;
    out.sweeps = table.sweeps;
    out.first_row = table.first_row;
    out.columns = taken.columns;
    for (std::size_t i = 0; i < table.n_rows(); ++i)
        for (const std::vector<double>& rows : taken.values) out.values.push_back(rows[i]);
    return out;
}

}  // namespace cli
