#include "tnl/plot/plot.h"

#include <algorithm>
#include <cmath>

namespace cli {

namespace {

struct range {
    double lo = INFINITY, hi = -INFINITY;
    void take(const std::vector<double>& values, const std::vector<double>& partner, bool log) {
        for (std::size_t i = 0; i < values.size(); ++i)
            if (std::isfinite(values[i]) && std::isfinite(partner[i]) && !(log && values[i] <= 0)) {
                lo = std::min(lo, values[i]);
                hi = std::max(hi, values[i]);
            }
    }
};

}  // namespace

axis x_axis(const plot& p, int n_ticks) {
    range r;
    bool sticks = false;
    for (const plot_panel& panel : p.panels) {
        sticks = sticks || panel.form == panel_form::sticks;
        for (const plot_series& s : panel.series) r.take(s.x, s.y, p.log_x);
    }
    r.lo = std::fmin(r.lo, p.x_lo);
    r.hi = std::fmax(r.hi, p.x_hi);
    if (p.log_x) return make_log_axis(r.lo, r.hi, n_ticks, p.x_unit);
    if (sticks) {  // whole numbers, half a place free on both sides
        axis a = make_axis(r.lo - 0.5, r.hi + 0.5, n_ticks, p.x_unit);
        if (a.scale.factor * a.step < 1) a = make_axis(r.lo - 0.5, r.hi + 0.5, static_cast<int>(r.hi - r.lo) + 1);
        std::erase_if(a.ticks, [](double t) { return std::abs(t - std::round(t)) > 1e-6; });
        return a;
    }
    axis a = make_axis(r.lo, r.hi, n_ticks, p.x_unit);
    if (a.lo != r.lo || a.hi != r.hi) return a;
    // A run that ends a step before a round number: the axis reaches it.
    const double step = a.step * a.scale.factor, near = 0.02 * (a.hi - a.lo);
    const double down = step * std::floor(a.lo / step + 1e-9), up = step * std::ceil(a.hi / step - 1e-9);
    return make_axis(a.lo - down < near ? down : a.lo, up - a.hi < near ? up : a.hi, n_ticks, p.x_unit);
}

axis y_axis(const plot_panel& panel, int n_ticks) {
    range r;
    for (const plot_series& s : panel.series) r.take(s.y, s.x, panel.log);
    const bool fixed_lo = std::isfinite(panel.y_lo), fixed_hi = std::isfinite(panel.y_hi);
    if (fixed_lo || fixed_hi) {
        if (!(r.lo <= r.hi)) r.lo = r.hi = fixed_lo ? panel.y_lo : panel.y_hi;
        const double room = fixed_lo && fixed_hi ? 0 : 0.05 * (r.hi - r.lo);
        double lo = fixed_lo ? panel.y_lo : std::min(r.lo - room, panel.y_hi);
        double hi = fixed_hi ? panel.y_hi : std::max(r.hi + room, panel.y_lo);
        if (panel.form == panel_form::sticks) {  // that they stand where they begin
            if (!fixed_lo && hi > 0 && r.lo >= 0) lo = 0;
            if (!fixed_hi && lo < 0 && r.hi <= 0) hi = 0;
        }
        return panel.log ? make_log_axis(fixed_lo ? lo : r.lo, fixed_hi ? hi : r.hi, n_ticks, panel.unit)
                         : make_axis(lo, hi, n_ticks, panel.unit);
    }
    if (panel.log) {
        const double room = r.hi > r.lo ? std::pow(r.hi / r.lo, 0.04) : 1;
        return make_log_axis(r.lo / room, r.hi * room, n_ticks, panel.unit);
    }
    if (panel.form == panel_form::sticks) r.lo = std::min(r.lo, 0.0), r.hi = std::max(r.hi, 0.0);
    r.lo = std::max(r.lo, -1e308);  // so that the range is a number
    r.hi = std::min(r.hi, 1e308);
    // Rows have seven digits: what differs in the last one only is one value.
    const double size = std::max(std::abs(r.lo), std::abs(r.hi)), half = r.hi / 2 - r.lo / 2;
    if (half <= 1.5e-6 * size) {
        const double middle = r.lo + half;
        return make_axis(middle, middle, n_ticks, panel.unit);
    }
    const bool rests = panel.form == panel_form::sticks && r.lo >= 0;  // sticks stand on the frame
    return make_axis(rests ? 0 : r.lo - 0.1 * half, r.hi + 0.1 * half, n_ticks, panel.unit);
}

equal_axes equal_axes_in(const plot& p, double width, double height, int n_x_ticks, int n_y_ticks) {
    range x, y;
    const plot_panel& panel = p.panels.front();
    for (const plot_series& s : panel.series) {
        x.take(s.x, s.y, false);
        y.take(s.y, s.x, false);
    }
    for (const plot_mark& mark : p.marks) {
        x.take({mark.x}, {mark.y}, false);
        y.take({mark.y}, {mark.x}, false);
    }
    const auto padded = [](range& r, double lo, double hi) {
        if (!(r.lo <= r.hi)) r.lo = 0, r.hi = 1;
        const double room = 0.06 * (r.hi - r.lo);
        r.lo = std::isfinite(lo) ? lo : r.lo - room;
        r.hi = std::isfinite(hi) ? hi : r.hi + room;
        if (!(r.lo < r.hi)) r.lo -= 0.5, r.hi = r.lo + 1;
    };
    padded(x, p.x_from, p.x_to);
    padded(y, panel.y_lo, panel.y_hi);
    const double of_x = (x.hi - x.lo) / width, of_y = (y.hi - y.lo) / height;
    range& narrow = of_x < of_y ? x : y;
    const double more = of_x < of_y ? of_y * width - (x.hi - x.lo) : of_x * height - (y.hi - y.lo);
    narrow.lo -= more / 2;
    narrow.hi += more / 2;
    return {make_axis(x.lo, x.hi, n_x_ticks, p.x_unit), make_axis(y.lo, y.hi, n_y_ticks, panel.unit)};
}

bool is_dense(const plot_series& series, const axis& y) {
    double way = 0;  // up and down, in heights of the panel
    for (std::size_t i = 1; i < series.y.size(); ++i)
        if (const double step = std::abs(y.place(series.y[i]) - y.place(series.y[i - 1])); std::isfinite(step))
            way += step;
    return way > 30;
}

std::vector<std::size_t> drawing_order(const plot_panel& panel, const axis& y) {
    std::vector<std::size_t> dense, others;
    for (std::size_t k = 0; k < panel.series.size(); ++k) (is_dense(panel.series[k], y) ? dense : others).push_back(k);
    dense.insert(dense.end(), others.begin(), others.end());
    return dense;
}

std::vector<std::size_t> named_series(const plot_panel& panel, std::size_t most) {
    std::vector<std::size_t> named;
    for (std::size_t k = 0; k < panel.series.size() && named.size() < most; ++k)
        if (!panel.series[k].name.empty()) named.push_back(k);
    return named;
}

}  // namespace cli
