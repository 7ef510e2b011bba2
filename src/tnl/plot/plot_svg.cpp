#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string_view>

#include "tnl/common/text_width.h"
#include "tnl/common/xml_text.h"
#include "tnl/plot/plot.h"
#include "tnl/plot/plot_page.h"
#include "tnl/plot/plot_thin.h"
#include "tnl/plot/svg_path.h"

namespace cli {

namespace {

constexpr double few_points = 30;           // up to so many, each point gets a dot
constexpr double thinned = 0.12;            // what a left out point may be off
constexpr std::size_t most_points = 40000;  // of a picture

struct line_style {
    std::string_view colour, dashes;
};
// Colours of Okabe and Ito, which differ in lightness too; the number of dashes has no factor with theirs in common, so
// that 35 series differ.
constexpr std::string_view colours[] = {"#0072b2", "#d55e00", "#009e73", "#cc79a7", "#56b4e9", "#000000", "#e69f00"};
constexpr std::string_view dashes[] = {"", "9 4", "2 3", "9 3 2 3", "16 5"};
line_style style_of(std::size_t series) {
    return {colours[series % std::size(colours)], dashes[series % std::size(dashes)]};
}

// Without control characters.
std::string escaped(std::string_view text) {
    std::string plain;
    for (const char c : text)
        if (static_cast<unsigned char>(c) >= ' ' && c != '\x7f') plain += c;
    return xml_escaped(plain);
}

template <class... T>
void add(std::string& out, const char* format, T... values) {
    char text[512];
    std::snprintf(text, sizeof text, format, values...);
    out += text;
}

void add_text(std::string& out, double x, double y, const char* anchor, const char* more, std::string_view text) {
    add(out, "<text x=\"%.1f\" y=\"%.1f\"", x, y);
    if (*anchor) add(out, " text-anchor=\"%s\"", anchor);
    out += more;
    out += '>' + escaped(text) + "</text>\n";
}

class drawing {
public:
    drawing(const plot& p, picture_size size) : p_(p), page_(layout_of(p, size)) {
        for (const plot_panel& panel : p.panels) n_series_ += panel.series.size();
    }
    std::string text() {
        head();
        for (std::size_t i = 0; i < p_.panels.size(); ++i) {
            const plot_panel& panel = p_.panels[i];
            frame(panel, page_.panels[i], i + 1 == p_.panels.size());
            if (panel.form == panel_form::logic) {
                lanes(panel, page_.panels[i]);
                continue;
            }
            const axis& y = page_.panels[i].y;
            legend(panel, page_.panels[i]);
            bool any = false;
            for (const std::size_t k : drawing_order(panel, y)) {
                for (std::size_t j = 0; j < panel.series[k].y.size() && !any; ++j)
                    any = std::isfinite(y.place(panel.series[k].y[j]));
                if (panel.form == panel_form::sticks)
                    sticks(panel, page_.panels[i], k);
                else
                    curve(panel.series[k], page_.panels[i].frame, y, style_of(k));
            }
            marks(page_.panels[i]);
            if (!any) {
                const box& b = page_.panels[i].frame;
                add_text(out_, b.left + b.width / 2, b.top + b.height / 2 + 4, "middle", " fill=\"#666666\"",
                         "no values to show");
            }
        }
        return std::move(out_) + "</svg>\n";
    }

private:
    double px(double v) const { return left() + page_.x.place(v) * width(); }
    double left() const { return page_.panels.empty() ? 60 : page_.panels.front().frame.left; }
    double width() const { return page_.panels.empty() ? 100 : page_.panels.front().frame.width; }

    void head() {
        add(out_,
            "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%.0f\" height=\"%.0f\" viewBox=\"0 0 %.0f %.0f\" "
            "font-family=\"DejaVu Sans, Verdana, Helvetica, Arial, sans-serif\" font-size=\"%.0f\" fill=\"#222222\">\n",
            page_.width, page_.height, page_.width, page_.height, font);
        add(out_, "<rect width=\"%.0f\" height=\"%.0f\" fill=\"#ffffff\"/>\n", page_.width, page_.height);
        double y = edge + 14;
        for (const std::string& line : page_.title) {
            add_text(out_, page_.title_x, y, "", " font-size=\"16\" font-weight=\"bold\"", line);
            y += title_line;
        }
    }

    void grid(const std::string& d, const char* colour) {
        if (!d.empty()) out_ += "<path d=\"" + d + "\" stroke=\"" + colour + "\" fill=\"none\"/>\n";
    }

    void frame(const plot_panel& panel, const panel_place& place, bool last) {
        const box& b = place.frame;
        const bool is_logic = panel.form == panel_form::logic;
        svg_path minor, major;
        const auto upright = [&](svg_path& d, double v) {
            if (!(page_.x.place(v) > -1e-6 && page_.x.place(v) < 1 + 1e-6)) return;
            d.move(px(v), b.top);
            d.line(px(v), b.top + b.height);
        };
        const auto level = [&](svg_path& d, double v) {
            const double y = b.top + (1 - place.y.place(v)) * b.height;
            d.move(b.left, y);
            d.line(b.left + b.width, y);
        };
        for (const double v : page_.x.minor) upright(minor, v);
        for (const double v : page_.x.ticks) upright(major, v);
        if (!is_logic) {
            for (const double v : place.y.minor) level(minor, v);
            for (const double v : place.y.ticks) level(major, v);
        }
        grid(minor.text(), "#f0f0f0");
        grid(major.text(), "#dcdcdc");
        if (!is_logic && !place.y.log && place.y.lo < 0 && place.y.hi > 0) {
            svg_path zero;
            level(zero, 0);
            grid(zero.text(), "#a0a0a0");
        }
        if (p_.equal_axes && page_.x.lo < 0 && page_.x.hi > 0) {
            svg_path zero;
            upright(zero, 0);
            grid(zero.text(), "#a0a0a0");
        }
        if (!is_logic)
            for (const double v : place.y.ticks)
                add_text(out_, b.left - 8, b.top + (1 - place.y.place(v)) * b.height + 4.5, "end", "",
                         place.y.tick_text(v));
        add(out_, "<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" fill=\"none\" stroke=\"#444444\"/>\n",
            b.left, b.top, b.width, b.height);
        if (!place.label.empty() && !is_logic) {
            char turned[80];
            const double x = edge + font - 3, y = b.top + b.height / 2;
            std::snprintf(turned, sizeof turned, " transform=\"rotate(-90 %.1f %.1f)\"", x, y);
            add_text(out_, x, y, "middle", turned, place.label);
        }
        if (!last) return;
        for (const double v : page_.x.ticks)
            add_text(out_, px(v), b.top + b.height + 18, "middle", "", page_.x.tick_text(v));
        add_text(out_, b.left + b.width / 2, b.top + b.height + 37, "middle", "",
                 shortened(valid_utf8(axis_label(p_.x_quantity, page_.x)), b.width / font));
    }

    std::string stroke(const line_style& style, double line_width, bool dashed) const {
        std::string text = "fill=\"none\" stroke=\"" + std::string(style.colour) + "\"";
        add(text, " stroke-width=\"%.3g\" stroke-linejoin=\"round\"", line_width);
        if (dashed && !style.dashes.empty()) text += " stroke-dasharray=\"" + std::string(style.dashes) + "\"";
        return text;
    }

    void legend(const plot_panel& panel, const panel_place& place) {
        if (!place.named) return;
        const double top = place.frame.top - place.legend_lines * legend_line - 1;
        flow_legend(place, place.frame.width, [&](double x, int line, int i) {
            const double at = place.frame.left + x, y = top + line * legend_line + 12.5;
            if (i < 0) return add_text(out_, at, y, "", "", place.more);
            const std::size_t k = place.shown[static_cast<std::size_t>(i)];
            const line_style style = style_of(k);
            if (panel.form == panel_form::sticks) {
                add(out_, "<path d=\"M%.1f %.1fv-12\" %s/>\n", at + sample - 8, y + 1,
                    stroke(style, 1.5, false).c_str());
                heads_of({{at + sample - 8, y - 10}}, k, 5.5);
            } else {
                add(out_, "<path d=\"M%.1f %.1fh%.0f\" %s/>\n", at, y - 4.5, sample,
                    stroke(style, 1.8, !is_dense(panel.series[k], place.y)).c_str());
            }
            add_text(out_, at + sample + 7, y, "", "", place.legend[static_cast<std::size_t>(i)]);
        });
    }

    void dots(const std::vector<std::pair<double, double>>& points, const line_style& style, double size) {
        if (points.empty()) return;
        svg_path d;
        for (const auto& [x, y] : points) {
            d.move(x, y);
            d.line(x, y);
        }
        out_ += "<path d=\"" + d.text();
        add(out_, "\" fill=\"none\" stroke=\"%s\" stroke-width=\"%.3g\" stroke-linecap=\"round\"/>\n",
            style.colour.data(), size);
    }

    // Points with a name, as crosses.
    void marks(const panel_place& place) {
        const box& b = place.frame;
        for (const plot_mark& mark : p_.marks) {
            const double x = px(mark.x), y = b.top + (1 - place.y.place(mark.y)) * b.height;
            add(out_,
                "<path d=\"M%.1f %.1fl10 10m0 -10l-10 10\" stroke=\"#b00020\" stroke-width=\"2\" fill=\"none\"/>\n",
                x - 5, y - 5);
            add_text(out_, x - 8, y - 8, "end", " fill=\"#b00020\"", mark.name);
        }
    }

    // Every second series has hollow heads.
    void heads_of(const std::vector<std::pair<double, double>>& points, std::size_t k, double size) {
        dots(points, style_of(k), size);
        if (k % 2 == 1 && size > 3) dots(points, {"#ffffff", ""}, size - 2.4);
    }

    void curve(const plot_series& s, const box& b, const axis& y_of, const line_style& style) {
        const auto at = [&](double v) { return b.top + (1 - y_of.place(v)) * b.height; };
        std::vector<double> x, y;
        if (std::is_sorted(s.x.begin(), s.x.end()) || std::is_sorted(s.x.rbegin(), s.x.rend())) {
            const int share = static_cast<int>(most_points / 4 / std::max<std::size_t>(1, n_series_));
            thinner thin(make_axis(b.left, b.left + b.width, 2),
                         std::clamp(static_cast<int>(b.width), 8, std::max(8, share)));
            for (std::size_t i = 0; i < s.x.size(); ++i) thin.add(px(s.x[i]), at(s.y[i]));
            thin.finish();
            x = std::move(thin.x);
            y = std::move(thin.y);
        } else {
            for (std::size_t i = 0; i < s.x.size(); ++i) {
                x.push_back(px(s.x[i]));
                y.push_back(std::isfinite(x.back()) ? at(s.y[i]) : NAN);
            }
        }
        svg_path d;
        std::vector<std::pair<double, double>> marks;  // points that no line reaches
        for (std::size_t begin = 0, end; begin < x.size(); begin = end + 1) {
            for (end = begin; end < x.size() && std::isfinite(y[end]);) ++end;
            const std::vector<bool> kept = bends(x, y, begin, end, thinned);
            for (std::size_t i = begin; i < end; ++i) {
                if (!kept[i - begin]) continue;
                i == begin ? d.move(x[i], y[i]) : d.line(x[i], y[i]);
            }
            const bool all = static_cast<double>(s.x.size()) <= few_points && s.lane == plot_series::trace;
            for (std::size_t i = begin; i < end; ++i)
                if (all || (end - begin == 1 && s.lane == plot_series::trace)) marks.push_back({x[i], y[i]});
        }
        const bool dense = is_dense(s, y_of);  // dashes and thick lines would make a stain of it
        if (!d.text().empty())
            out_ += "<path d=\"" + d.text() + "\" " +
                    stroke(style,
                           s.lane == plot_series::level ? 1.4
                           : dense                      ? 1
                                                        : 1.8,
                           !dense) +
                    "/>\n";
        dots(marks, style, 5);
    }

    void sticks(const plot_panel& panel, const panel_place& place, std::size_t k) {
        const box& b = place.frame;
        const double n = static_cast<double>(panel.series.size());
        const double room = b.width / std::max(1.0, page_.x.hi - page_.x.lo);  // of one harmonic
        const double aside = (static_cast<double>(k) - (n - 1) / 2) * std::min(7.0, 0.7 * room / n);
        const double foot = b.top + (1 - std::clamp(place.y.place(0), 0.0, 1.0)) * b.height,
                     thick = std::clamp(0.25 * room / n, 0.7, 2.0);
        svg_path d;
        std::vector<std::pair<double, double>> heads;
        const plot_series& s = panel.series[k];
        // The tallest of a pixel stands for all of them.
        double at = NAN, tallest = 0;
        const auto put = [&] {
            if (!std::isfinite(at)) return;
            const double y = b.top + (1 - place.y.place(tallest)) * b.height;
            d.move(at, foot);
            d.line(at, y);
            heads.push_back({at, y});
        };
        for (std::size_t i = 0; i < s.x.size(); ++i) {
            const double x = px(s.x[i]) + aside;
            if (!std::isfinite(x) || !std::isfinite(s.y[i])) continue;
            if (std::isfinite(at) && std::abs(x - at) < 0.5) {
                if (std::abs(s.y[i]) > std::abs(tallest)) tallest = s.y[i];
                continue;
            }
            put();
            at = x;
            tallest = s.y[i];
        }
        put();
        if (heads.empty()) return;
        out_ += "<path d=\"" + d.text() + "\" " + stroke(style_of(k), thick, false) + "/>\n";
        heads_of(heads, k, std::clamp(0.5 * room / n, 1.5, 5.5));
    }

    // Slanting lines through a box, as far as they lie in it.
    static void hatch(svg_path& d, const box& b) {
        constexpr double distance = 6;
        const double slant = b.height;  // an upright way as long as the one along
        for (double foot = distance * std::ceil((b.left - slant) / distance); foot < b.left + b.width;
             foot += distance) {
            const double from = std::max(foot, b.left), to = std::min(foot + slant, b.left + b.width);
            if (to - from < 0.5) continue;
            d.move(from, b.top + b.height - (from - foot));
            d.line(to, b.top + b.height - (to - foot));
        }
    }

    // A number between two lines that meet at its ends; hatched where it, or a level, is unknown; a grey stain where it
    // changes more often than can be shown.
    void stretch(const plot_stretch& s, const box& lane, const line_style& style) {
        constexpr double text_size = 11, slant = 3;
        const double x0 = px(s.from), x1 = px(s.to);
        if (!(x1 > x0)) return;
        const double middle = lane.top + lane.height / 2, bottom = lane.top + lane.height;
        const double by = std::min(slant, (x1 - x0) / 2);
        svg_path d;
        if (s.is == plot_stretch::value) {
            d.move(x0, middle);
            for (const auto& [x, y] : {std::pair(x0 + by, lane.top),
                                       {x1 - by, lane.top},
                                       {x1, middle},
                                       {x1 - by, bottom},
                                       {x0 + by, bottom},
                                       {x0, middle}})
                d.line(x, y);
            out_ += "<path d=\"" + d.text() + "\" " + stroke(style, 1.3, false) + "/>\n";
            if (text_size * text_width(s.text) < x1 - x0 - 2 * by)
                add_text(out_, (x0 + x1) / 2, middle + 4, "middle", " font-size=\"11\"", s.text);
            return;
        }
        const bool busy = s.is == plot_stretch::busy;
        add(out_, "<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" fill=\"%s\"", x0, lane.top, x1 - x0,
            lane.height, busy ? style.colour.data() : "#eeeeee");
        if (busy) out_ += " fill-opacity=\"0.45\"";
        out_ += "/>\n";
        if (busy) return;
        hatch(d, {x0, lane.top, x1 - x0, lane.height});
        if (!d.text().empty()) grid(d.text(), "#888888");
    }

    void lanes(const plot_panel& panel, const panel_place& place) {
        const box& b = place.frame;
        const double h = b.height / static_cast<double>(std::max<std::size_t>(1, panel.series.size()));
        axis level = make_axis(0, 1, 2);
        for (std::size_t k = 0; k < panel.series.size(); ++k) {
            const box lane{b.left, b.top + h * (static_cast<double>(k) + 0.18), b.width, 0.64 * h};
            if (k > 0) {
                svg_path d;
                d.move(b.left, b.top + h * static_cast<double>(k));
                d.line(b.left + b.width, b.top + h * static_cast<double>(k));
                grid(d.text(), "#c8c8c8");
            }
            add_text(out_, b.left - 8, lane.top + lane.height / 2 + 4.5, "end", "",
                     shortened(valid_utf8(panel.series[k].name), 0.25 * page_.width / font));
            const line_style style{colours[k % std::size(colours)], ""};
            for (const plot_stretch& stretch : panel.series[k].stretches) this->stretch(stretch, lane, style);
            if (panel.series[k].lane != plot_series::bus) curve(panel.series[k], lane, level, style);
        }
    }

    const plot& p_;
    page page_;
    std::size_t n_series_ = 0;
    std::string out_;
};

}  // namespace

std::string draw_svg(const plot& p, picture_size size) { return drawing(p, size).text(); }

}  // namespace cli
