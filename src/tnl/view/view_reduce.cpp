#include "tnl/view/view_reduce.h"

#include <algorithm>
#include <cmath>

namespace cli {

namespace {

constexpr double no_number = std::numeric_limits<double>::quiet_NaN();

// The curve seen with an axis that never falls: position p is row first + p, or last - p when the axis falls.
struct axis_view {
    const view_rows& rows;
    const view_curve& curve;
    std::size_t column = 0;
    bool row_axis = true, backwards = false;

    axis_view(const view_rows& rows_, const view_window& window) : rows(rows_), curve(rows_.curves[window.curve]) {
        if (window.axis < 0 || static_cast<std::size_t>(window.axis) >= rows.columns.size()) return;
        column = static_cast<std::size_t>(window.axis);
        const view_curve::course& course = curve.columns[column];
        row_axis = !course.ascending && !course.descending;
        backwards = !row_axis && !course.ascending;
    }

    std::size_t row(std::size_t p) const { return backwards ? curve.first + curve.n - 1 - p : curve.first + p; }
    double x(std::size_t p) const { return row_axis ? static_cast<double>(p) : rows.columns[column].values[row(p)]; }
    double y(std::size_t p, std::size_t j) const { return rows.columns[j].values[row(p)]; }

    // First position of [begin, n) with x(p) >= limit, or > limit.
    template <class Before>
    std::size_t bound(std::size_t begin, Before is_before) const {
        std::size_t n = curve.n - begin;
        while (n > 0) {
            const std::size_t half = n / 2;
            if (is_before(x(begin + half))) {
                begin += half + 1;
                n -= half + 1;
            } else {
                n = half;
            }
        }
        return begin;
    }
    std::size_t first_at_least(double limit, std::size_t begin = 0) const {
        return bound(begin, [limit](double v) { return v < limit; });
    }
    std::size_t first_above(double limit) const {
        return bound(0, [limit](double v) { return v <= limit; });
    }
    min_max extremes_between(std::size_t begin, std::size_t end, std::size_t j) const {
        return backwards ? extremes(rows.columns[j], row(end - 1), row(begin) + 1)
                         : extremes(rows.columns[j], row(begin), row(end - 1) + 1);
    }
};

struct row_taker {
    const axis_view& axis;
    const view_window& window;
    reduced_rows& out;

    void take(std::size_t p) {
        out.x.push_back(axis.x(p));
        for (std::size_t j = 0; j < window.columns.size(); ++j) out.y[j].push_back(axis.y(p, window.columns[j]));
    }
    // Rows [begin, end) as four.
    void sum_up(std::size_t begin, std::size_t end) {
        take(begin);
        const double x0 = axis.x(begin), x1 = axis.x(end - 1);
        out.x.push_back(x0 + (x1 - x0) / 3);
        out.x.push_back(x1 - (x1 - x0) / 3);
        for (std::size_t j = 0; j < window.columns.size(); ++j) {
            const std::size_t column = window.columns[j];
            const min_max m = axis.extremes_between(begin, end, column);
            const double least = m.is_empty() ? no_number : m.lo, greatest = m.is_empty() ? no_number : m.hi;
            const bool falls = axis.y(end - 1, column) < axis.y(begin, column);
            out.y[j].push_back(falls ? greatest : least);
            out.y[j].push_back(falls ? least : greatest);
        }
        take(end - 1);
    }
    void take_bucket(std::size_t begin, std::size_t end) {
        if (end - begin > 4)
            sum_up(begin, end);
        else
            for (std::size_t p = begin; p < end; ++p) take(p);
    }
};

void take_buckets(row_taker& taker, std::size_t begin, std::size_t end, std::size_t points) {
    const axis_view& axis = taker.axis;
    const double x0 = axis.x(begin), x1 = axis.x(end - 1);
    const bool by_rows = taker.window.by_rows || !(std::isfinite(x1 - x0) && x1 > x0);
    std::size_t at = begin;
    for (std::size_t b = 0; b < points && at < end; ++b) {
        std::size_t next = end;
        if (b + 1 < points) {
            const double part = static_cast<double>(b + 1) / static_cast<double>(points);
            next = by_rows ? begin + static_cast<std::size_t>(part * static_cast<double>(end - begin))
                           : axis.first_at_least(x0 + part * (x1 - x0), at);
            next = std::clamp(next, at, end);
        }
        if (next > at) taker.take_bucket(at, next);
        at = next;
    }
}

}  // namespace

reduced_rows reduce(const view_rows& rows, const view_window& window) {
    reduced_rows out;
    out.y.resize(window.columns.size());
    if (window.curve >= rows.curves.size() || rows.curves[window.curve].n == 0) {
        out.whole = true;
        return out;
    }
    const axis_view axis(rows, window);
    const std::size_t n = axis.curve.n;
    out.row_axis = axis.row_axis;
    out.n_curve = n;
    out.lo = axis.x(0);
    out.hi = axis.x(n - 1);
    std::size_t begin = window.from ? axis.first_at_least(*window.from) : 0;
    std::size_t end = window.to ? axis.first_above(*window.to) : n;
    end = std::max(begin, end);
    row_taker taker{axis, window, out};
    if (begin > 0) taker.take(begin - 1);
    const std::size_t points = std::max<std::size_t>(window.points, 1);
    out.whole = (end - begin) / 4 < points;
    if (out.whole) {
        for (std::size_t p = begin; p < end; ++p) taker.take(p);
    } else {
        take_buckets(taker, begin, end, points);
    }
    if (end < n) taker.take(end);
    return out;
}

std::vector<double> values_at(const view_rows& rows, const view_window& window, double x) {
    const std::vector<std::size_t>& columns = window.columns;
    std::vector<double> values(columns.size(), no_number);
    if (window.curve >= rows.curves.size() || rows.curves[window.curve].n == 0) return values;
    const axis_view axis(rows, window);
    const std::size_t above = axis.first_above(x);
    if (above == 0 || !(x <= axis.x(axis.curve.n - 1))) return values;
    const std::size_t p = above - 1;
    const double x0 = axis.x(p), x1 = above < axis.curve.n ? axis.x(above) : x0;
    for (std::size_t j = 0; j < columns.size(); ++j) {
        const double y0 = axis.y(p, columns[j]);
        values[j] = y0;
        if (x > x0 && x1 > x0) values[j] = y0 + (axis.y(above, columns[j]) - y0) * ((x - x0) / (x1 - x0));
    }
    return values;
}

}  // namespace cli
