#include "tnl/view/view_columns.h"

#include <algorithm>
#include <string>

#include "tnl/common/exit_status.h"

namespace cli {

namespace {

constexpr std::size_t fan_out = view_column::fan_out;

min_max extremes_of_values(const view_column& column, std::size_t begin, std::size_t end) {
    min_max m;
    for (std::size_t i = begin; i < end; ++i) m.add(column.values[i]);
    return m;
}

// Extremes of nodes [begin, end) of the level.
min_max extremes_of_nodes(const view_column& column, std::size_t k, std::size_t begin, std::size_t end) {
    min_max m;
    const std::size_t up = (begin + fan_out - 1) / fan_out, down = end / fan_out;
    if (k + 1 >= column.level.size() || up >= down) {
        for (std::size_t i = begin; i < end; ++i) m.add(column.level[k][i]);
        return m;
    }
    for (std::size_t i = begin; i < up * fan_out; ++i) m.add(column.level[k][i]);
    m.add(extremes_of_nodes(column, k + 1, up, down));
    for (std::size_t i = down * fan_out; i < end; ++i) m.add(column.level[k][i]);
    return m;
}

// Before x goes to the end of the column.
void note_course(view_curve::course& course, const view_column& column, bool is_first, double x) {
    const double before = is_first ? x : column.values.back();
    course.ascending = course.ascending && x >= before;
    course.descending = course.descending && x <= before;
}

bool is_blank_line(std::string_view line) { return line.find_first_not_of(" \t\r") == std::string_view::npos; }

}  // namespace

void append_value(view_column& column, double x) {
    column.values.push_back(x);
    std::size_t n = column.values.size();
    for (std::size_t k = 0; n % fan_out == 0; ++k, n /= fan_out) {
        if (k == column.level.size()) column.level.emplace_back();
        min_max m;
        if (k == 0)
            m = extremes_of_values(column, column.values.size() - fan_out, column.values.size());
        else
            for (std::size_t i = n - fan_out; i < n; ++i) m.add(column.level[k - 1][i]);
        column.level[k].push_back(m);
    }
}

min_max extremes(const view_column& column, std::size_t begin, std::size_t end) {
    const std::size_t up = (begin + fan_out - 1) / fan_out, down = end / fan_out;
    if (up >= down) return extremes_of_values(column, begin, end);
    min_max m = extremes_of_nodes(column, 0, up, down);
    m.add(extremes_of_values(column, begin, up * fan_out));
    m.add(extremes_of_values(column, down * fan_out, end));
    return m;
}

view_lines parse_lines(std::string_view text, const std::string& path, long long first_line) {
    view_lines lines;
    lines.table = read_result_table(text, path, first_line);
    if (text.empty()) return lines;
    lines.n_lines = std::count(text.begin(), text.end(), '\n');
    lines.blank_begin = is_blank_line(text.substr(0, text.find('\n')));
    text.remove_suffix(1);
    const std::size_t last = text.rfind('\n');
    lines.blank_end = is_blank_line(text.substr(last == std::string_view::npos ? 0 : last + 1));
    return lines;
}

void append_lines(view_rows& rows, const view_lines& lines) {
    const result_table& table = lines.table;
    const std::size_t n_columns = table.n_columns();
    if (table.n_rows() > 0 && !rows.columns.empty() && rows.columns.size() != n_columns)
        throw file_error(table.path + ":" + std::to_string(rows.n_lines + 1) + ": a row of " +
                         std::to_string(n_columns) + " numbers among rows of " + std::to_string(rows.columns.size()));
    rows.n_lines += lines.n_lines;
    if (lines.blank_begin) rows.curve_is_open = false;
    if (table.n_rows() > 0 && rows.columns.empty()) rows.columns.resize(n_columns);
    for (std::size_t k = 0; k < table.n_curves(); ++k) {
        if (k > 0 || !rows.curve_is_open)
            rows.curves.push_back({rows.n, 0, std::vector<view_curve::course>(n_columns)});
        rows.curve_is_open = true;
        view_curve& curve = rows.curves.back();
        for (std::size_t i = table.first_row[k]; i < table.first_row[k + 1]; ++i) {
            for (std::size_t j = 0; j < n_columns; ++j) {
                note_course(curve.columns[j], rows.columns[j], curve.n == 0, table.at(i, j));
                append_value(rows.columns[j], table.at(i, j));
            }
            ++curve.n;
            ++rows.n;
        }
    }
    if (lines.blank_end) rows.curve_is_open = false;
}

void part_sweeps(view_lines& lines, const view_rows& rows) {
    open_curve open;
    if (rows.curve_is_open && !lines.blank_begin && !rows.curves.empty() && !rows.columns.empty()) {
        const view_curve& last = rows.curves.back();
        open.first = rows.columns[0].values[last.first];
        open.varied = !(last.columns[0].ascending && last.columns[0].descending);
    }
    if (split_at_restarts(lines.table, open)) lines.blank_begin = true;
}

int axis_column(const view_rows& rows) {
    if (rows.columns.size() == 1) return -1;
    if (rows.curves.size() < 2) return 0;
    for (std::size_t j = 0; j < rows.columns.size(); ++j)
        for (const view_curve& curve : rows.curves)
            if (!(curve.columns[j].ascending && curve.columns[j].descending)) return static_cast<int>(j);
    return 0;
}

}  // namespace cli
