#include "tnl/plot/plot_rows.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "tnl/common/exit_status.h"
#include "tnl/plot/plot_lanes.h"
#include "tnl/plot/plot_panels.h"
#include "tnl/plot/plot_thin.h"

namespace cli {

namespace {

constexpr std::size_t few_points = 20000;  // that a curve over no rising x keeps

// What a column says within the rows of one curve.
bool is_constant(const result_table& table, int column, std::size_t k) {
    const auto j = static_cast<std::size_t>(column);
    for (std::size_t i = table.first_row[k]; i < table.first_row[k + 1]; ++i)
        if (table.at(i, j) != table.at(table.first_row[k], j)) return false;
    return true;
}

bool varies(const result_table& table, int column) {
    for (std::size_t k = 0; k < table.n_curves(); ++k)
        if (!is_constant(table, column, k)) return true;
    return false;
}

bool is_harmonic(double x) { return std::abs(x - std::round(x)) <= 2e-5; }

// Limits of x over the sources, inside the window.
axis limits_of(const std::vector<plot_source>& sources, const plot_window& w, bool log, double& first) {
    double lo = INFINITY, hi = -INFINITY;
    bool any = false;
    for (const plot_source& s : sources)
        for (std::size_t i = 0; i < s.table->n_rows(); ++i) {
            const double x = x_at(s, i);
            if (!std::isfinite(x) || !w.holds(x) || (log && x <= 0)) continue;
            if (!any) first = x, any = true;
            lo = std::min(lo, x);
            hi = std::max(hi, x);
        }
    if (!any && std::isfinite(w.from) && std::isfinite(w.to)) lo = w.from, hi = w.to;
    return log ? make_log_axis(lo, hi, 5) : make_axis(lo, hi, 5);
}

// One column in the rows of one curve. Where a line crosses the edge of the window it gets a point there.
plot_series series_of(const plot_source& s, std::size_t i_column, std::size_t k, const plot_window& w, const axis& x,
                      int n_bins, double origin) {
    const auto j = static_cast<std::size_t>(s.columns[i_column]);
    const double factor = s.times.empty() ? 1 : s.times[i_column];
    thinner thin(x, n_bins);
    double old_x = NAN, old_y = NAN;
    for (std::size_t i = s.table->first_row[k] + (starts_apart(*s.table, j) ? 1 : 0); i < s.table->first_row[k + 1];
         ++i) {
        const double px = x_at(s, i), py = is_unknown(*s.table, i, j) ? NAN : factor * s.table->at(i, j);
        const auto at = [&](double edge) {
            const bool log = x.log && old_x > 0 && px > 0;
            const double part = log ? std::log(edge / old_x) / std::log(px / old_x) : (edge - old_x) / (px - old_x);
            return old_y + (py - old_y) * part;
        };
        const auto between = [&](double edge) { return (old_x < edge && edge < px) || (old_x > edge && edge > px); };
        const bool rising = px > old_x;
        for (const double edge : {rising ? w.from : w.to, rising ? w.to : w.from})
            if (std::isfinite(old_y) && std::isfinite(py) && between(edge) && std::isfinite(edge))
                thin.add(edge, at(edge));
        if (w.holds(px) || std::isnan(px))
            thin.add(px, py);
        else
            thin.break_line();
        old_x = px;
        old_y = py;
    }
    thin.finish();
    plot_series out{"", std::move(thin.x), std::move(thin.y)};
    if (out.x.size() > static_cast<std::size_t>(6 * n_bins)) {
        double lo = INFINITY, hi = -INFINITY;
        for (const double y : out.y)
            if (std::isfinite(y)) lo = std::min(lo, y), hi = std::max(hi, y);
        drop_retraced(x, make_axis(lo, hi, 5), few_points, out.x, out.y);
    }
    for (double& v : out.x) v -= origin;
    return out;
}

// Leaves of the lines what lies between lo and hi; NaN: no bound. They end on the bounds.
void cut_at(plot_series& series, double lo, double hi) {
    if (std::isnan(lo) && std::isnan(hi)) return;
    if (std::isnan(lo)) lo = -INFINITY;
    if (std::isnan(hi)) hi = INFINITY;
    plot_series cut;
    const auto put = [&](double x, double y) {
        cut.x.push_back(x);
        cut.y.push_back(y);
    };
    const auto inside = [&](double y) { return y >= lo && y <= hi; };
    for (std::size_t i = 0; i < series.x.size(); ++i) {
        const double x = series.x[i], y = series.y[i];
        if (i > 0 && std::isfinite(y) && std::isfinite(series.y[i - 1])) {
            const double x0 = series.x[i - 1], y0 = series.y[i - 1];
            const auto at = [&](double bound) { put(x0 + (x - x0) * ((bound - y0) / (y - y0)), bound); };
            const double first = y > y0 ? lo : hi, second = y > y0 ? hi : lo;  // in the order of the line
            const auto crosses = [&](double b) { return std::isfinite(b) && ((y0 < b && b < y) || (y < b && b < y0)); };
            if (crosses(first)) at(first);
            if (crosses(second)) at(second);
        }
        if (inside(y))
            put(x, y);
        else if (!cut.y.empty() && !std::isnan(cut.y.back()))
            put(x, NAN);
    }
    series.x = std::move(cut.x);
    series.y = std::move(cut.y);
}

// A stick stands between zero and its value: what of it lies between lo and hi; NaN: no bound. Without any it is left
// out.
double stick_within(double y, double lo, double hi) {
    if ((lo > 0 && y < lo) || (hi < 0 && y > hi)) return NAN;
    return std::fmin(std::fmax(y, lo), hi);
}

plot_series sticks_of(const plot_source& s, std::size_t i_column, std::size_t k, const plot_window& w) {
    const auto j = static_cast<std::size_t>(s.columns[i_column]);
    const double factor = s.times.empty() ? 1 : s.times[i_column];
    plot_series out;
    for (std::size_t i = s.table->first_row[k]; i < s.table->first_row[k + 1]; ++i) {
        const double px = x_at(s, i), py = factor * s.table->at(i, j);
        if (!is_harmonic(px) || !w.holds(std::round(px))) continue;
        // Behind 10^4 the rows that stand for the foot of a stick have the same number: the tallest counts.
        if (!out.x.empty() && out.x.back() == std::round(px)) {
            if (std::abs(py) > std::abs(out.y.back())) out.y.back() = py;
            continue;
        }
        out.x.push_back(std::round(px));
        out.y.push_back(py);
    }
    return out;
}

// "r_of_R1 = 2.2 kohm"
std::string swept_text(const std::string& name, double value, const std::string& unit) {
    if (unit.empty()) return name + " = " + engineering_text(value);
    const unit_scale scale = scale_for(std::abs(value), unit);
    char number[32];
    std::snprintf(number, sizeof number, "%.5g", value / scale.factor);
    return name + " = " + number + " " + scale.unit;
}

// What the record tells goes before what the columns show.
std::string curve_name(const result_table& table, int sweep, std::size_t k) {
    if (!table.sweeps.empty()) return text_of_sweeps(table.sweeps, k);
    if (sweep < 0) return "curve " + std::to_string(k + 1);
    const record_column& column = table.columns[static_cast<std::size_t>(sweep)];
    return swept_text(column.name, table.at(table.first_row[k], static_cast<std::size_t>(sweep)), column.unit);
}

}  // namespace

std::string text_of_sweeps(const std::vector<record_sweep>& sweeps, std::size_t k) {
    std::string name;
    for (const record_sweep& s : sweeps) name += (name.empty() ? "" : ", ") + swept_text(s.name, s.values[k], s.unit);
    return name;
}

int sweep_column_of(const result_table& table) {
    if (table.n_curves() < 2) return -1;
    for (int j = 0; j < static_cast<int>(table.n_columns()); ++j) {
        if (varies(table, j)) continue;
        for (std::size_t k = 1; k < table.n_curves(); ++k)
            if (table.at(table.first_row[k], static_cast<std::size_t>(j)) != table.at(0, static_cast<std::size_t>(j)))
                return j;
    }
    return -1;
}

int x_column_of(const result_table& table) {
    if (table.n_columns() >= 2 && table.steps_column >= 0) return table.steps_column;
    if (table.n_columns() < 2 || table.kind == "startup" || table.kind == "postproc") return -1;
    if (is_over_frequency(table)) return std::max(0, table.swept_column);
    if (table.kind != "dc" && table.n_curves() < 2) return 0;
    for (int j = 0; j < static_cast<int>(table.n_columns()); ++j)
        if (varies(table, j)) return j;
    return 0;
}

std::vector<int> drawn_columns(const result_table& table, int x) {
    std::vector<int> columns;
    const bool several = table.n_curves() > 1;
    for (int j = 0; j < static_cast<int>(table.n_columns()); ++j)
        if (j != x && !(several && sweep_column_of(table) == j) && !(table.swept_column >= 0 && j == 0) &&
            (table.is_swept.empty() || !table.is_swept[static_cast<std::size_t>(j)]))
            columns.push_back(j);
    return columns;
}

plot plot_of_rows(const std::vector<plot_source>& sources, const plot_choice& choice, int n_bins) {
    plot p;
    p.title = choice.title;
    p.log_x = choice.log_x;
    if (sources.empty()) return p;
    const plot_source& first = sources.front();
    if (first.x >= 0) {
        const record_column& x = first.table->columns[static_cast<std::size_t>(first.x)];
        p.x_quantity = x.name;
        p.x_unit = x.unit;
    } else {
        p.x_quantity = "row";
    }
    const plot_window w{choice.from.value_or(-INFINITY), choice.to.value_or(INFINITY)};
    double first_x = 0;
    const axis x = limits_of(sources, w, choice.log_x, first_x);
    const double origin = !choice.from_zero ? 0 : choice.from ? *choice.from : first_x;

    const panel_plan plan = plan_panels(sources, choice);
    p.panels = plan.panels;
    for (std::size_t i = 0; i < sources.size(); ++i) {
        const plot_source& s = sources[i];
        const result_table& table = *s.table;
        const int sweep = sweep_column_of(table);
        const std::vector<bit_bus> buses = buses_on_lanes(s, choice);
        for (std::size_t c = 0; c < s.columns.size(); ++c) {
            plot_panel& panel = p.panels[plan.panel_of[i][c]];
            const bit_bus* bus = panel.form == panel_form::logic ? bus_of(buses, s.columns[c]) : nullptr;
            if (bus != nullptr && bus->at != c) continue;
            for (std::size_t k = 0; k < table.n_curves(); ++k) {
                plot_series series = bus != nullptr ? bus_lane(s, *bus, k, w, x, n_bins, origin)
                                     : panel.form == panel_form::logic
                                         ? lane_of(s, c, k, w, plan.levels_of[i][c], x, n_bins, origin)
                                     : panel.form == panel_form::sticks ? sticks_of(s, c, k, w)
                                                                        : series_of(s, c, k, w, x, n_bins, origin);
                if (panel.form == panel_form::lines) {
                    for (std::size_t j = 0; j < series.x.size(); ++j)
                        if (std::isfinite(series.y[j]) && !(choice.log_x && series.x[j] <= 0)) {
                            p.x_lo = std::fmin(p.x_lo, series.x[j]);
                            p.x_hi = std::fmax(p.x_hi, series.x[j]);
                        }
                    cut_at(series, panel.y_lo, panel.y_hi);
                }
                if (panel.form == panel_form::sticks)
                    for (double& y : series.y) y = stick_within(y, panel.y_lo, panel.y_hi);
                for (const plot_stretch& stretch : series.stretches) {
                    p.x_lo = std::fmin(p.x_lo, stretch.from);
                    p.x_hi = std::fmax(p.x_hi, stretch.to);
                }
                series.name = bus != nullptr ? bus->name : table.columns[static_cast<std::size_t>(s.columns[c])].name;
                std::string detail = table.n_curves() > 1 ? curve_name(table, sweep, k) : "";
                if (!s.run.empty()) detail += (detail.empty() ? "" : ", ") + s.run;
                // Beside one quantity, the values of a sweep say all.
                const bool is_one =
                    !panel.quantity.empty() && (is_over_frequency(table) || sweep >= 0 || !table.sweeps.empty());
                if (!detail.empty()) series.name = is_one ? detail : series.name + " (" + detail + ")";
                const bool is_between = k > 0 && k + 1 < table.n_curves();
                if (table.n_curves() > most_named_curves && is_between && panel.form != panel_form::logic)
                    series.name.clear();
                panel.series.push_back(std::move(series));
            }
        }
    }
    if (choice.locus) {
        p.equal_axes = true;
        p.x_from = choice.from.value_or(NAN);
        p.x_to = choice.to.value_or(NAN);
        const plot_panel& panel = p.panels.front();
        p.x_unit = panel.unit;
        const std::string of = panel.quantity.empty() ? "" : " of " + panel.quantity;
        p.x_quantity = "real part" + of;
        p.panels.front().quantity = "imaginary part" + of;
        const bool is_free = !choice.from && !choice.to && choice.y.empty();
        const auto between = [](double v, double lo, double hi) { return !(v < lo) && !(v > hi); };
        if (is_free || (between(-1, p.x_from, p.x_to) && between(0, panel.y_lo, panel.y_hi)))
            p.marks.push_back({-1, 0, "-1"});
    }
    for (plot_panel& panel : p.panels) {  // phases beside magnitudes stay linear
        const auto shows = [](const plot_series& one) {
            return std::any_of(one.y.begin(), one.y.end(), [](double v) { return v > 0 && std::isfinite(v); });
        };
        panel.log = panel.log && std::any_of(panel.series.begin(), panel.series.end(), shows);
        for (const double end : {panel.y_lo, panel.y_hi})
            if (panel.log && end <= 0)
                throw usage_error("--y: a logarithmic axis has no end at " + engineering_text(end) +
                                  "; both are above 0, or left out as in 1m:");
    }
    return p;
}

}  // namespace cli
