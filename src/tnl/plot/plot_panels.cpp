#include "tnl/plot/plot_panels.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "tnl/common/exit_status.h"

namespace cli {

namespace {

constexpr double comparable = 8;  // sizes of columns without a unit in one panel, greatest over least

levels levels_in(const result_table& table, int column) {
    const auto j = static_cast<std::size_t>(column);
    levels l;
    bool any = false;
    for (std::size_t i = 0; i < table.n_rows(); ++i) {
        const double v = table.at(i, j);
        if (!std::isfinite(v)) continue;
        if (!any) l.low = l.high = v, any = true;
        if (v == l.low || v == l.high) continue;
        if (l.low != l.high) return l;
        (v < l.low ? l.low : l.high) = v;
    }
    l.two = any;
    if (l.low == l.high) (l.low > 0 ? l.low : l.high) = l.low > 0 ? 0 : 1;
    return l;
}

// Greatest distance from zero of what is drawn.
double size_of(const plot_source& s, std::size_t i_column, const plot_choice& choice) {
    const auto j = static_cast<std::size_t>(s.columns[i_column]);
    double size = 0;
    for (std::size_t i = starts_apart(*s.table, j) ? 1 : 0; i < s.table->n_rows(); ++i) {
        const double x = s.x < 0 ? static_cast<double>(i + 1) : s.table->at(i, static_cast<std::size_t>(s.x));
        const double v = std::abs(s.table->at(i, j));
        if (std::isfinite(v) && x >= choice.from.value_or(x) && x <= choice.to.value_or(x)) size = std::max(size, v);
    }
    return s.times.empty() ? size : size * std::abs(s.times[i_column]);
}

// Numbers of groups of comparable sizes, the same for a name in all sources.
std::map<std::string, int> size_groups(const std::map<std::string, double>& sizes) {
    std::vector<std::pair<double, std::string>> rising;
    std::map<std::string, int> group;
    for (const auto& [name, size] : sizes) {
        group[name] = 0;  // of what is zero throughout
        if (size > 0) rising.emplace_back(size, name);
    }
    std::sort(rising.begin(), rising.end());
    int now = 0;
    double least = rising.empty() ? 0 : rising.front().first;
    for (const auto& [size, name] : rising) {
        if (size > comparable * least) ++now, least = size;
        group[name] = now;
    }
    return group;
}

struct panel_key {
    std::string what;
    panel_form form = panel_form::lines;
    bool operator==(const panel_key&) const = default;
};

bool has(const std::vector<std::string>& words, const std::string& word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

int chosen_panel(const plot_choice& choice, const std::string& name) {
    for (std::size_t i = 0; i < choice.panels.size(); ++i)
        if (has(choice.panels[i], name)) return static_cast<int>(i);
    return -1;
}

// Fixed ends of y axes; those without a column's name hold for all panels.
void set_y_ranges(panel_plan& plan, const plot_choice& choice) {
    for (const plot_y_range& range : choice.y) {
        bool any = false;
        for (std::size_t i = 0; i < plan.panels.size(); ++i) {
            plot_panel& panel = plan.panels[i];
            if (panel.form == panel_form::logic || (!range.column.empty() && !has(plan.columns[i], range.column)))
                continue;
            any = true;
            if (range.lo) panel.y_lo = *range.lo;
            if (range.hi) panel.y_hi = *range.hi;
        }
        if (!any)
            throw usage_error(range.column.empty() ? "--y: lanes of logic traces have no axis"
                                                   : "--y: " + range.column + " is drawn in no panel with an axis");
    }
}

}  // namespace

bool starts_apart(const result_table& table, std::size_t column) {
    if (!table.begins_with_guess || table.n_curves() != 1 || table.n_rows() < 3) return false;
    double lo = INFINITY, hi = -INFINITY, step = 0;
    for (std::size_t i = 1; i < table.n_rows(); ++i) {
        const double v = table.at(i, column);
        if (!std::isfinite(v)) continue;
        lo = std::min(lo, v);
        hi = std::max(hi, v);
        if (i > 1 && i < 6) step = std::max(step, std::abs(v - table.at(i - 1, column)));
    }
    const double first = table.at(0, column), room = 0.05 * (hi - lo);
    return (first < lo - room || first > hi + room) && std::abs(first - table.at(1, column)) > 4 * step;
}

panel_plan plan_panels(const std::vector<plot_source>& sources, const plot_choice& choice) {
    panel_plan plan;
    std::map<std::string, double> sizes;
    if (!choice.stack && !choice.log_y)
        for (const plot_source& s : sources)
            for (std::size_t c = 0; c < s.columns.size(); ++c) {
                const record_column& column = s.table->columns[static_cast<std::size_t>(s.columns[c])];
                if (!column.unit.empty() || chosen_panel(choice, column.name) >= 0) continue;
                double& size = sizes[column.name];
                size = std::max(size, size_of(s, c, choice));
            }
    const std::map<std::string, int> group = size_groups(sizes);

    std::vector<panel_key> keys;
    for (const plot_source& s : sources) {
        plan.panel_of.emplace_back();
        plan.levels_of.emplace_back();
        for (const int i_column : s.columns) {
            const record_column& column = s.table->columns[static_cast<std::size_t>(i_column)];
            panel_key key;
            if (s.table->kind == "fourier") key.form = panel_form::sticks;
            const int chosen = chosen_panel(choice, column.name);
            levels l;
            if (column.level && chosen < 0)
                l = {0, 1, true};
            else if (choice.logic)
                l = levels_in(*s.table, i_column);
            if (l.two) key.form = panel_form::logic;
            const auto in_group = group.find(column.name);
            if (key.form == panel_form::logic)
                key.what.clear();
            else if (chosen >= 0)
                key.what = "panel " + std::to_string(chosen);
            else if (choice.stack)
                key.what = "column " + column.name;
            else
                key.what = "unit " + column.unit +
                           (in_group == group.end() ? "" : " size " + std::to_string(in_group->second));
            const auto at = static_cast<std::size_t>(std::find(keys.begin(), keys.end(), key) - keys.begin());
            if (at == keys.size()) {
                keys.push_back(key);
                plot_panel panel;
                panel.unit = key.form == panel_form::logic ? "" : column.unit;
                panel.form = key.form;
                panel.log =
                    choice.log_y && key.form == panel_form::lines && column.unit != "deg" && column.unit != "dB";
                plan.panels.push_back(std::move(panel));
                plan.columns.emplace_back();
            }
            if (column.unit != plan.panels[at].unit) plan.panels[at].unit.clear();
            if (!has(plan.columns[at], column.name)) plan.columns[at].push_back(column.name);
            plan.panel_of.back().push_back(at);
            plan.levels_of.back().push_back(l);
        }
    }
    for (std::size_t i = 0; i < plan.panels.size(); ++i)
        if (plan.columns[i].size() == 1 && keys[i].form != panel_form::logic)
            plan.panels[i].quantity = plan.columns[i].front();
    set_y_ranges(plan, choice);
    return plan;
}

}  // namespace cli
