#include "tnl/plot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace cli {

axis make_axis(double lo, double hi, int n_ticks) {
    if (!(std::isfinite(lo) && std::isfinite(hi)) || lo > hi) lo = 0, hi = 1;
    const double size = std::max(std::abs(lo), std::abs(hi));
    if (hi - lo <= 1e-9 * size || hi - lo < 1e-300) {  // one value: make room around it
        const double room = size > 1e-290 ? 0.1 * size : 1;
        lo -= room;
        hi += room;
    }
    const double raw = (hi - lo) / std::max(1, n_ticks), power = std::pow(10, std::floor(std::log10(raw)));
    double step = 10 * power;
    for (const double m : {1.0, 2.0, 5.0})
        if (m * power >= raw / 1.4) {  // the nearest of them, by ratio
            step = m * power;
            break;
        }
    axis a{lo, hi, {}};
    const double first = std::ceil(lo / step - 1e-9);
    for (double k = first; k * step <= hi + 1e-9 * step; ++k) a.ticks.push_back(k * step);
    return a;
}

std::string tick_text(double tick, double step) {
    char text[40];
    if (std::abs(tick) < 1e-9 * std::abs(step)) tick = 0;
    const double size = std::max(std::abs(tick), std::abs(step));
    if (tick != 0 && (size >= 1e5 || std::abs(step) < 1e-4)) {
        std::snprintf(text, sizeof text, "%.3g", tick);
    } else {
        const int digits = std::clamp(static_cast<int>(std::ceil(-std::log10(std::abs(step)) - 1e-9)), 0, 6);
        std::snprintf(text, sizeof text, "%.*f", digits, tick);
    }
    return text;
}

namespace {

axis axis_over(const plot& p, std::vector<double> plot_series::*values, int n_ticks) {
    double lo = INFINITY, hi = -INFINITY;
    for (const plot_series& s : p.series)
        for (const double v : s.*values)
            if (std::isfinite(v)) {
                lo = std::min(lo, v);
                hi = std::max(hi, v);
            }
    return make_axis(lo, hi, n_ticks);
}

}  // namespace

axis x_axis(const plot& p, int n_ticks) { return axis_over(p, &plot_series::x, n_ticks); }

axis y_axis(const plot& p, int n_ticks) {
    axis a = axis_over(p, &plot_series::y, n_ticks);
    if (a.ticks.size() > 1) {  // up to the next tick on both sides, so that no curve runs along the frame
        const double step = a.ticks[1] - a.ticks[0];
        if (a.ticks.front() - a.lo > 1e-9 * step) a.ticks.insert(a.ticks.begin(), a.ticks.front() - step);
        if (a.hi - a.ticks.back() > 1e-9 * step) a.ticks.push_back(a.ticks.back() + step);
        a.lo = a.ticks.front();
        a.hi = a.ticks.back();
    }
    return a;
}

}  // namespace cli
