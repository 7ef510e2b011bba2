#include "tnl/results/result_table.h"

#include <charconv>
#include <cstdlib>
#include <utility>

#include "tnl/common/exit_status.h"

namespace cli {

namespace {

bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

// Appends the numbers of the line; false when something else stands in it.
bool read_numbers(const char* at, const char* end, std::vector<double>& values) {
    for (;;) {
        while (at != end && is_blank(*at)) ++at;
        if (at == end) return true;
        if (*at == '+') ++at;
        double x = 0;
        std::from_chars_result r = std::from_chars(at, end, x);
        if (r.ec == std::errc::result_out_of_range) {  // below the least or above the greatest: as strtod rounds it
            x = std::strtod(std::string(at, r.ptr).c_str(), nullptr);
            r.ec = std::errc();
        }
        if (r.ec != std::errc() || (r.ptr != end && !is_blank(*r.ptr))) return false;
        values.push_back(x);
        at = r.ptr;
    }
}

}  // namespace

result_table read_result_table(std::string_view text, const std::string& path, long long first_line) {
    result_table table;
    table.path = path;
    std::size_t n_columns = 0, n_rows = 0;
    long long i_line = first_line - 1;
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at != end) {
        const char* line_end = at;
        while (line_end != end && *line_end != '\n') ++line_end;
        if (line_end == end) break;
        ++i_line;
        const std::size_t before = table.values.size();
        if (!read_numbers(at, line_end, table.values))
            throw file_error(path + ":" + std::to_string(i_line) + ": not a row of numbers");
        at = line_end + 1;
        const std::size_t n = table.values.size() - before;
        if (n == 0) {
            if (n_rows > table.first_row.back()) table.first_row.push_back(n_rows);
            continue;
        }
        if (n_rows == 0) n_columns = n;
        if (n != n_columns)
            throw file_error(path + ":" + std::to_string(i_line) + ": a row of " + std::to_string(n) +
                             " numbers among rows of " + std::to_string(n_columns));
        ++n_rows;
    }
    if (n_rows > table.first_row.back()) table.first_row.push_back(n_rows);
    for (std::size_t j = 0; j < n_columns; ++j) table.columns.push_back({"c" + std::to_string(j + 1), ""});
    return table;
}

void add_column(result_table& table, const record_column& column, const std::vector<double>& values) {
    const std::size_t n = table.n_columns();
    std::vector<double> all;
    all.reserve(table.values.size() + values.size());
    for (std::size_t i = 0; i < table.n_rows(); ++i) {
        all.insert(all.end(), table.values.begin() + static_cast<long>(i * n),
                   table.values.begin() + static_cast<long>((i + 1) * n));
        all.push_back(values[i]);
    }
    table.values = std::move(all);
    table.columns.push_back(column);
}

void take_off_offset(result_table& table, const record_file& file) {
    if (!file.digital) return;
    table.digital = true;
    const std::size_t n_axes = file.kind == "startup" || file.kind == "dc" ? 0 : 1, n = table.n_columns();
    for (std::size_t j = n_axes; j < n; ++j) {
        if (file.columns.empty()) table.columns[j].level = true;  // all nodes
        const double raised = static_cast<double>(j - n_axes) * file.offset;
        for (std::size_t i = 0; i < table.n_rows(); ++i) {
            double& v = table.values[i * n + j];
            v = std::round(v - raised) + 0.0;  // rows have seven digits; no -0
        }
    }
}

int find_column(const result_table& table, std::string_view name) {
    for (std::size_t j = 0; j < table.n_columns(); ++j)
        if (table.columns[j].name == name) return static_cast<int>(j);
    int number = 0;
    const std::from_chars_result r = std::from_chars(name.data(), name.data() + name.size(), number);
    const bool is_number = r.ec == std::errc() && r.ptr == name.data() + name.size();
    return is_number && number >= 1 && number <= static_cast<int>(table.n_columns()) ? number - 1 : -1;
}

response_columns find_response(const result_table& table, std::string_view name) {
    response_columns found;
    struct part {
        std::string_view prefix;
        int& column;
    };
    for (const part& p : {part{"mag_of_", found.mag}, part{"phase_of_", found.phase}, part{"real_of_", found.real},
                          part{"imag_of_", found.imag}})
        for (std::size_t j = 0; j < table.n_columns() && p.column < 0; ++j) {
            const std::string_view column = table.columns[j].name;
            if (column.starts_with(p.prefix) && column.substr(p.prefix.size()) == name) p.column = static_cast<int>(j);
        }
    return found;
}

bool has_quantity(const result_table& table, std::string_view name) {
    return find_column(table, name) >= 0 || find_response(table, name).any();
}

bool split_at_restarts(result_table& table, open_curve open) {
    const std::vector<std::size_t> parts = std::exchange(table.first_row, {0});
    bool at_first_row = false;
    for (std::size_t k = 0; k + 1 < parts.size(); ++k) {
        open_curve curve = k == 0 ? open : open_curve{};
        for (std::size_t i = parts[k]; i < parts[k + 1]; ++i) {
            const double v = table.at(i, 0);
            const bool begins = curve.varied && v == curve.first;
            if (begins && i == 0) at_first_row = true;
            if (begins && i > 0) table.first_row.push_back(i);
            if (begins || std::isnan(curve.first))
                curve = {v, false};
            else if (v != curve.first)
                curve.varied = true;
        }
        table.first_row.push_back(parts[k + 1]);
    }
    return at_first_row;
}

bool is_over_frequency(const result_table& table) { return table.kind == "ac" || table.kind == "nyquist"; }

}  // namespace cli
