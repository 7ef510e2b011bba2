#include "tnl/plot/plot_lanes.h"

#include <algorithm>

#include "tnl/plot/plot_thin.h"

namespace cli {

double x_at(const plot_source& s, std::size_t row) {
    return s.x < 0 ? static_cast<double>(row + 1) : s.table->at(row, static_cast<std::size_t>(s.x));
}

bool is_unknown(const result_table& table, std::size_t row, std::size_t column) {
    return table.columns[column].level && table.at(row, column) == unknown_level;
}

std::vector<bit_bus> buses_on_lanes(const plot_source& s, const plot_choice& choice) {
    if (choice.bits || s.table->n_rows() < 2) return {};
    std::vector<std::size_t> columns;
    for (const int j : s.columns) {
        const std::string& name = s.table->columns[static_cast<std::size_t>(j)].name;
        for (const std::vector<std::string>& panel : choice.panels)  // those are drawn as lines
            if (std::find(panel.begin(), panel.end(), name) != panel.end()) return {};
        columns.push_back(static_cast<std::size_t>(j));
    }
    return buses_in(*s.table, columns);
}

const bit_bus* bus_of(const std::vector<bit_bus>& buses, int column) {
    for (const bit_bus& bus : buses)
        if (std::find(bus.columns.begin(), bus.columns.end(), static_cast<std::size_t>(column)) != bus.columns.end())
            return &bus;
    return nullptr;
}

namespace {

// Takes what holds from each row on, and keeps the stretches that a picture of n_bins columns can show: what is shorter
// than a column is left out, a crowd of such becomes a busy one.
class stretches_of {
public:
    stretches_of(const plot_window& w, const axis& x, int n_bins)
        : w_(w), narrow_((std::min(x.hi, w.to) - std::max(x.lo, w.from)) / n_bins) {}

    void add(double x, plot_stretch::what is, const std::string& text) {
        if (open_ && is == now_.is && text == now_.text) return;
        close(x);
        now_ = {x, x, is, text};
        open_ = true;
    }
    void close(double x) {  // at the last row, or the begin of another
        if (!open_) return;
        open_ = false;
        now_.from = std::max(now_.from, w_.from);
        now_.to = std::min(x, w_.to);
        if (!(now_.to > now_.from)) return;
        if (now_.to - now_.from > narrow_) {
            finish_crowd(now_.from);
            put(now_);
            return;
        }
        if (!crowded_) crowd_ = {now_.from, now_.to, plot_stretch::busy, ""};
        crowded_ = true;
        crowd_.to = now_.to;
    }
    std::vector<plot_stretch> finish() {
        finish_crowd(crowd_.to);
        return std::move(all_);
    }

private:
    void finish_crowd(double end) {
        if (!crowded_) return;
        crowded_ = false;
        if (crowd_.to - crowd_.from > narrow_)
            put(crowd_);
        else if (!all_.empty())
            all_.back().to = end;  // a spike that no picture shows
    }
    void put(plot_stretch s) {
        if (!all_.empty() && all_.back().is == s.is && all_.back().text == s.text && all_.back().to == s.from)
            all_.back().to = s.to;
        else
            all_.push_back(std::move(s));
    }
    plot_window w_;
    double narrow_;
    bool open_ = false, crowded_ = false;
    plot_stretch now_, crowd_;
    std::vector<plot_stretch> all_;
};

void shift(plot_series& series, double origin) {
    for (double& v : series.x) v -= origin;
    for (plot_stretch& s : series.stretches) s.from -= origin, s.to -= origin;
}

}  // namespace

plot_series lane_of(const plot_source& s, std::size_t i_column, std::size_t k, const plot_window& w, const levels& l,
                    const axis& x, int n_bins, double origin) {
    const auto j = static_cast<std::size_t>(s.columns[i_column]);
    const result_table& table = *s.table;
    const bool digital = table.columns[j].level;
    const std::size_t begin = table.first_row[k], end = table.first_row[k + 1];
    thinner thin(x, n_bins);
    stretches_of stretches(w, x, n_bins);
    double held = NAN;
    bool inside = false;
    for (std::size_t i = begin; i < end; ++i) {
        const double px = x_at(s, i), v = table.at(i, j);
        const bool known = std::isfinite(v) && !is_unknown(table, i, j);
        const double level = known ? (v == l.high ? 1.0 : 0.0) : NAN;
        if (known)
            stretches.close(px);
        else if (digital)
            stretches.add(px, plot_stretch::unknown, "");
        // Rows of other columns' events would slant the edges of a thinned trace.
        const bool holds_on = digital && inside && i + 1 < end && (level == held || (!known && std::isnan(held)));
        if (holds_on && w.holds(px)) continue;
        if (w.holds(px)) {
            if (!inside && px > w.from && std::isfinite(w.from)) thin.add(w.from, held);
            if (std::isfinite(held) && held != level) thin.add(px, held);
            thin.add(px, level);
            inside = true;
        } else if (inside || (digital && px > w.to && std::isfinite(held))) {
            if (!inside && std::isfinite(w.from)) thin.add(w.from, held);
            thin.add(w.to, held);
            stretches.close(w.to);
            break;
        }
        held = level;
    }
    if (end > begin) stretches.close(x_at(s, end - 1));
    thin.finish();
    plot_series lane{"", std::move(thin.x), std::move(thin.y), stretches.finish()};
    if (digital) lane.lane = plot_series::level;
    shift(lane, origin);
    return lane;
}

plot_series bus_lane(const plot_source& s, const bit_bus& bus, std::size_t k, const plot_window& w, const axis& x,
                     int n_bins, double origin) {
    const result_table& table = *s.table;
    stretches_of stretches(w, x, n_bins);
    const std::size_t begin = table.first_row[k], end = table.first_row[k + 1];
    std::vector<double> before;
    for (std::size_t i = begin; i < end; ++i) {
        std::vector<double> bits;
        for (const std::size_t j : bus.columns) bits.push_back(table.at(i, j));
        if (bits == before) continue;
        before = std::move(bits);
        stretches.add(x_at(s, i), is_known(table, bus, i) ? plot_stretch::value : plot_stretch::unknown,
                      bus_text(table, bus, i));
    }
    if (end > begin) stretches.close(x_at(s, end - 1));
    plot_series lane{"", {}, {}, stretches.finish()};
    lane.lane = plot_series::bus;
    for (const plot_stretch& stretch : lane.stretches) {
        if (lane.x.empty()) lane.x.push_back(stretch.from);
        lane.x.resize(2, stretch.to);
        lane.x[1] = stretch.to;
        lane.y.assign(lane.x.size(), 0);
    }
    shift(lane, origin);
    return lane;
}

}  // namespace cli
