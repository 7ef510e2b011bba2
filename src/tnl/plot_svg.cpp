#include <cmath>
#include <cstdio>
#include <string_view>

#include "tnl/plot.h"

namespace cli {

namespace {

constexpr double width = 720, height = 440, left = 76, right = 24, top = 52, bottom = 64;  // px
struct line_style {
    std::string_view colour, dashes;
};
constexpr line_style styles[] = {{"#0072b2", ""},        {"#d55e00", "9 4"},  {"#009e73", "2 3"},
                                 {"#cc79a7", "9 3 2 3"}, {"#56b4e9", "14 5"}, {"#000000", "5 5"}};

std::string escaped(std::string_view text) {
    std::string out;
    for (const char c : text) {
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else if (c == '"')
            out += "&quot;";
        else if (static_cast<unsigned char>(c) >= ' ')
            out += c;
    }
    return out;
}

template <class... T>
void add(std::string& out, const char* format, T... values) {
    char text[512];
    std::snprintf(text, sizeof text, format, values...);
    out += text;
}

void add_text(std::string& out, double x, double y, const char* anchor, const char* more, std::string_view text) {
    add(out, "<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"%s\"%s>", x, y, anchor, more);
    out += escaped(text) + "</text>\n";
}

}  // namespace

std::string draw_svg(const plot& p) {
    const axis x = x_axis(p, 8), y = y_axis(p, 6);
    const double x_step = x.ticks.size() > 1 ? x.ticks[1] - x.ticks[0] : x.hi - x.lo;
    const double y_step = y.ticks.size() > 1 ? y.ticks[1] - y.ticks[0] : y.hi - y.lo;
    const double w = width - left - right, h = height - top - bottom;
    const auto px = [&](double v) { return left + (v - x.lo) / (x.hi - x.lo) * w; };
    const auto py = [&](double v) { return top + h - (v - y.lo) / (y.hi - y.lo) * h; };

    std::string out;
    add(out,
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%.0f\" height=\"%.0f\" viewBox=\"0 0 %.0f %.0f\" "
        "font-family=\"DejaVu Sans, Helvetica, Arial, sans-serif\" font-size=\"13\" fill=\"#222222\">\n",
        width, height, width, height);
    add(out, "<rect width=\"%.0f\" height=\"%.0f\" fill=\"#ffffff\"/>\n", width, height);
    add_text(out, left, 22, "start", " font-size=\"16\" font-weight=\"bold\"", p.title);
    for (const double tick : x.ticks) {
        add(out, "<path d=\"M%.1f %.1fV%.1f\" stroke=\"#dddddd\" fill=\"none\"/>\n", px(tick), top, top + h);
        add_text(out, px(tick), top + h + 19, "middle", "", tick_text(tick, x_step));
    }
    for (const double tick : y.ticks) {
        add(out, "<path d=\"M%.1f %.1fH%.1f\" stroke=\"#dddddd\" fill=\"none\"/>\n", left, py(tick), left + w);
        add_text(out, left - 8, py(tick) + 4.5, "end", "", tick_text(tick, y_step));
    }
    add(out, "<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" fill=\"none\" stroke=\"#444444\"/>\n", left,
        top, w, h);
    add_text(out, left + w / 2, height - 18, "middle", "", p.x_label);
    char turned[80];
    std::snprintf(turned, sizeof turned, " transform=\"rotate(-90 20 %.1f)\"", top + h / 2);
    add_text(out, 20, top + h / 2, "middle", turned, p.y_label);

    double legend = left;
    for (std::size_t s = 0; s < p.series.size(); ++s) {
        const line_style& style = styles[s % std::size(styles)];
        char look[120];
        std::snprintf(look, sizeof look, "fill=\"none\" stroke=\"%s\" stroke-width=\"2\" stroke-dasharray=\"%s\"",
                      style.colour.data(), style.dashes.empty() ? "none" : style.dashes.data());
        const plot_series& one = p.series[s];
        out += "<path d=\"";
        bool down = false;  // the pen
        for (std::size_t i = 0; i < one.x.size(); ++i) {
            if (!std::isfinite(one.x[i]) || !std::isfinite(one.y[i])) {
                down = false;
                continue;
            }
            add(out, "%c%.2f %.2f", down ? 'L' : 'M', px(one.x[i]), py(one.y[i]));
            down = true;
        }
        out += "\" stroke-linejoin=\"round\" ";
        out += look;
        out += "/>\n";
        add(out, "<path d=\"M%.1f 39h30\" ", legend);
        out += look;
        out += "/>\n";
        add_text(out, legend + 36, 43.5, "start", "", one.name);
        legend += 36 + 8.0 * static_cast<double>(one.name.size()) + 24;
    }
    return out + "</svg>\n";
}

}  // namespace cli
