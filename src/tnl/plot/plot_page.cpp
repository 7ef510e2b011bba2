#include "tnl/plot/plot_page.h"

#include <algorithm>
#include <cstdint>

#include "tnl/common/exit_status.h"
#include "tnl/common/xml_text.h"

namespace cli {

namespace {

constexpr double bold = 1.125;  // how much wider bold words are
constexpr double below_axis = 46, lane_height = 30, gap = 16;

double widest_tick(const axis& a) {
    double w = 0;
    for (const double t : a.ticks) w = std::max(w, font * text_width(a.tick_text(t)));
    return w;
}

// As many ticks as have room between their numbers.
axis spaced_x_axis(const plot& p, double width) {
    axis a;
    for (int n = std::max(2, static_cast<int>(width / 70)); n >= 1; --n) {
        a = x_axis(p, n);
        bool fits = true;
        for (std::size_t i = 1; i < a.ticks.size(); ++i) {
            const double half =
                font * (text_width(a.tick_text(a.ticks[i - 1])) + text_width(a.tick_text(a.ticks[i]))) / 2;
            fits = fits && (a.place(a.ticks[i]) - a.place(a.ticks[i - 1])) * width > half + 14;
        }
        if (fits) break;
    }
    return a;
}

int y_tick_aim(double height, bool log) { return std::clamp(static_cast<int>(height / (log ? 26 : 48)), 2, 10); }

axis spaced_y_axis(const plot_panel& panel, double height) { return y_axis(panel, y_tick_aim(height, panel.log)); }

// Both axes of a picture with equal axes in its frame.
equal_axes spaced_axes(const plot& p, double width, double height) {
    return equal_axes_in(p, width, height, std::max(2, static_cast<int>(width / 80)), y_tick_aim(height, false));
}

double wanted_height(const plot_panel& panel, std::size_t n_panels) {
    if (panel.form == panel_form::logic)
        return lane_height * static_cast<double>(std::max<std::size_t>(1, panel.series.size()));
    return n_panels == 1 ? 330 : n_panels == 2 ? 210 : n_panels <= 4 ? 150 : 110;
}
constexpr double least_height = 44;  // of a panel with lines

}  // namespace

std::string valid_utf8(std::string_view text) {
    std::string out;
    while (!text.empty()) {
        std::uint32_t c = 0;
        int n = utf8_length(text, c);
        if (c == 0xfffe || c == 0xffff) n = 0;
        if (n > 0)
            out += text.substr(0, static_cast<std::size_t>(n));
        else
            out += '?';
        text.remove_prefix(static_cast<std::size_t>(std::max(n, 1)));
    }
    return out;
}

page layout_of(const plot& p, picture_size size) {
    page out;
    out.width = size.width;
    double names = 0, numbers = 0;  // widths left of the frames: of the names of lanes, of ticks
    const std::size_t n = p.panels.size();
    for (const plot_panel& panel : p.panels) {
        panel_place place;
        double height = p.equal_axes ? 560 : wanted_height(panel, n);
        place.y = p.equal_axes ? spaced_axes(p, out.width - 100, height).y : spaced_y_axis(panel, height);
        place.frame.height = height;
        if (panel.form == panel_form::logic) {
            for (const plot_series& s : panel.series)
                names = std::max(names, font * std::min(text_width(valid_utf8(s.name)), 0.25 * out.width / font));
        } else {
            numbers = std::max(numbers, widest_tick(place.y));
        }
        out.panels.push_back(std::move(place));
    }
    const double left = edge + std::max(names + 8, numbers + 8 + (numbers > 0 ? font + 10 : 0));
    out.title_x = std::min(left, 80.0);
    out.title = wrapped(valid_utf8(p.title), (out.width - out.title_x - edge) / (bold * title_font), 2);
    double width = out.width - left - 2 * edge;
    out.x = spaced_x_axis(p, width);
    if (!out.x.ticks.empty()) {  // half of the last number may stand out on the right
        const double last = out.x.ticks.back(), half = font * text_width(out.x.tick_text(last)) / 2;
        const double over = out.x.place(last) * width + half - width - 1.5 * edge;
        if (over > 0) width -= over;
    }
    width = std::max(width, 40.0);

    double fixed_height = edge + static_cast<double>(out.title.size()) * title_line + below_axis, free_height = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const plot_panel& panel = p.panels[i];
        panel_place& place = out.panels[i];
        const bool lanes = panel.form == panel_form::logic;
        const double height = place.frame.height;
        place.label = valid_utf8(axis_label(panel.quantity, place.y));
        const bool label_fits = font * text_width(place.label) <= height - 6;
        place.named =
            !lanes && (panel.series.size() > 1 || !label_fits || (panel.quantity.empty() && !panel.series.empty()));
        if (!label_fits) place.label = shortened(place.y.scale.unit, height / font);
        if (place.named) {
            place.shown = named_series(panel, most_names);
            for (const std::size_t k : place.shown)
                place.legend.push_back(shortened(valid_utf8(panel.series[k].name), (width - sample - 30) / font));
            if (place.shown.size() < panel.series.size())
                place.more = "... and " + std::to_string(panel.series.size() - place.shown.size()) + " more";
            place.legend_lines = flow_legend(place, width, [](double, int, int) {});
        }
        fixed_height += place.legend_lines * legend_line + (i > 0 ? gap : 6) + (lanes ? height : 0);
        free_height += lanes ? 0 : height;
    }
    out.height = size.height > 0 ? size.height : fixed_height + free_height;
    const double stretch = free_height > 0 ? (out.height - fixed_height) / free_height : 1;
    double y = edge + static_cast<double>(out.title.size()) * title_line;
    for (std::size_t i = 0; i < n; ++i) {
        const plot_panel& panel = p.panels[i];
        panel_place& place = out.panels[i];
        y += place.legend_lines * legend_line + (i > 0 ? gap : 6);
        double height = place.frame.height;
        if (panel.form != panel_form::logic) height *= stretch;
        if (height < least_height && panel.form != panel_form::logic)
            throw usage_error(
                "the height of " + std::to_string(size.height) + " px is too small for " + std::to_string(n) +
                (n == 1 ? " panel" : " panels") + " and the names; about " +
                std::to_string(static_cast<int>(fixed_height + 1.5 * least_height * static_cast<double>(n))) +
                " would do");
        place.frame = {left, y, width, height};
        if (size.height > 0 && !p.equal_axes) place.y = spaced_y_axis(panel, height);
        if (p.equal_axes) {
            const equal_axes both = spaced_axes(p, width, height);
            out.x = both.x;
            place.y = both.y;
        }
        y += height;
    }
    return out;
}

}  // namespace cli
