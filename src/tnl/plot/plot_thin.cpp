#include "tnl/plot/plot_thin.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <unordered_set>

namespace cli {

void thinner::add(double px, double py) {
    ++order_;
    const double place = std::isfinite(px) && std::isfinite(py) ? x_.place(px) : NAN;
    if (!std::isfinite(place)) {
        if (open_)
            ends_in_gap_ = true;
        else
            gap();
        return;
    }
    const int bin = static_cast<int>(std::floor(std::clamp(place, -1.0, 2.0) * n_bins_)) + 2 * n_bins_;
    const point p{px, py, order_};
    if (open_ && bin == bin_) {
        ends_in_gap_ = false;
        if (py < least_.y) least_ = p;
        if (py > most_.y) most_ = p;
        last_ = p;
        return;
    }
    flush();
    bin_ = bin;
    open_ = true;
    first_ = least_ = most_ = last_ = p;
}

void thinner::flush() {
    if (!open_) return;
    std::array<point, 4> kept{first_, least_, most_, last_};
    std::sort(kept.begin(), kept.end(), [](const point& a, const point& b) { return a.order < b.order; });
    for (std::size_t i = 0; i < kept.size(); ++i) {
        if (i > 0 && kept[i].order == kept[i - 1].order) continue;
        x.push_back(kept[i].x);
        y.push_back(kept[i].y);
    }
    open_ = false;
    if (ends_in_gap_) gap();
    ends_in_gap_ = false;
}

void thinner::gap() {
    if (y.empty() || std::isnan(y.back())) return;
    x.push_back(x.back());
    y.push_back(NAN);
}

void thinner::break_line() {
    flush();
    gap();
}

void thinner::finish() {
    flush();
    if (!y.empty() && std::isnan(y.back())) x.pop_back(), y.pop_back();
}

namespace {

// Lines that are new on the grid, with gaps between those that do not meet.
void drop_joined(const axis& x_axis, const axis& y_axis, double n_cells, std::vector<double>& x,
                 std::vector<double>& y) {
    const auto cell_of = [&](std::size_t i) {
        const double px = x_axis.place(x[i]), py = y_axis.place(y[i]);
        if (!std::isfinite(px) || !std::isfinite(py)) return UINT32_MAX;
        const auto cell = [&](double v) { return static_cast<std::uint32_t>(std::clamp(v, 0.0, 1.0) * n_cells); };
        return cell(px) << 16 | cell(py);
    };
    std::unordered_set<std::uint64_t> joined;
    std::vector<double> new_x, new_y;
    bool down = false;  // the last kept point is the one before i
    for (std::size_t i = 1; i < x.size(); ++i) {
        const std::uint64_t a = cell_of(i - 1), b = cell_of(i);
        if (a == UINT32_MAX || b == UINT32_MAX || !joined.insert(std::min(a, b) << 32 | std::max(a, b)).second) {
            down = false;
            continue;
        }
        if (!down) {
            if (!new_x.empty()) new_x.push_back(x[i - 1]), new_y.push_back(NAN);
            new_x.push_back(x[i - 1]);
            new_y.push_back(y[i - 1]);
        }
        new_x.push_back(x[i]);
        new_y.push_back(y[i]);
        down = true;
    }
    x = std::move(new_x);
    y = std::move(new_y);
}

void cover(const axis& x_axis, const axis& y_axis, std::vector<double>& x, std::vector<double>& y) {
    constexpr int n = 256;
    std::vector<char> met(n * n, 0);
    const auto mark = [&](double px, double py) {
        const auto cell = [](double v) { return static_cast<std::size_t>(std::clamp(v * n, 0.0, n - 1.0)); };
        met[cell(py) * n + cell(px)] = 1;
    };
    double old_x = NAN, old_y = NAN;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double px = x_axis.place(x[i]), py = y_axis.place(y[i]);
        if (std::isfinite(px) && std::isfinite(py) && std::isfinite(old_x) && std::isfinite(old_y)) {
            const double far = std::max(std::abs(px - old_x), std::abs(py - old_y));
            const int steps = 1 + static_cast<int>(std::clamp(far, 0.0, 2.0) * n);
            for (int k = 0; k <= steps; ++k) {
                const double t = static_cast<double>(k) / steps;
                mark(old_x + t * (px - old_x), old_y + t * (py - old_y));
            }
        }
        old_x = px;
        old_y = py;
    }
    x.clear();
    y.clear();
    const auto at = [](const axis& a, double place) { return a.lo + place / n * (a.hi - a.lo); };
    for (int row = 0; row < n; ++row)
        for (int from = 0, to; from < n; from = to + 1) {
            for (to = from; to < n && met[static_cast<std::size_t>(row * n + to)];) ++to;
            if (to == from) continue;
            const double height = at(y_axis, row + 0.5);
            x.insert(x.end(), {at(x_axis, from), at(x_axis, to), at(x_axis, to)});
            y.insert(y.end(), {height, height, NAN});
        }
}

}  // namespace

void drop_retraced(const axis& x_axis, const axis& y_axis, std::size_t n_most, std::vector<double>& x,
                   std::vector<double>& y) {
    for (const double n_cells : {2048.0, 1024.0, 512.0})
        if (x.size() > n_most) drop_joined(x_axis, y_axis, n_cells, x, y);
    if (x.size() > n_most) cover(x_axis, y_axis, x, y);
}

std::vector<bool> bends(const std::vector<double>& x, const std::vector<double>& y, std::size_t begin, std::size_t end,
                        double far) {
    std::vector<bool> kept(end - begin, false);
    if (kept.empty()) return kept;
    kept.front() = kept.back() = true;
    std::vector<std::pair<std::size_t, std::size_t>> open{{begin, end - 1}};
    while (!open.empty()) {
        const auto [a, b] = open.back();
        open.pop_back();
        const double dx = x[b] - x[a], dy = y[b] - y[a], length = std::hypot(dx, dy);
        std::size_t worst = a;
        double most = far;
        for (std::size_t i = a + 1; i < b; ++i) {
            const double ex = x[i] - x[a], ey = y[i] - y[a];
            // Beyond the ends the line is no longer there: the distance is that to the end.
            const double along = length > 0 ? (ex * dx + ey * dy) / length : 0;
            double d = length > 0 ? std::abs(ex * dy - ey * dx) / length : 0;
            if (along < 0 || length <= 0) d = std::hypot(ex, ey);
            if (along > length) d = std::hypot(x[i] - x[b], y[i] - y[b]);
            if (d > most) most = d, worst = i;
        }
        if (worst == a) continue;
        kept[worst - begin] = true;
        open.push_back({a, worst});
        open.push_back({worst, b});
    }
    return kept;
}

}  // namespace cli
