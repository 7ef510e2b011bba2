// plot.h -- a picture of curves: in the terminal, and as an SVG file.
#pragma once
#include <string>
#include <vector>

namespace cli {

struct plot_series {
    std::string name;
    std::vector<double> x, y;  // equal lengths; points that are not finite break the line
};
struct plot {
    std::string title, x_label, y_label;
    std::vector<plot_series> series;
};

// An axis: limits that hold all points, and ticks at round numbers (1, 2 or 5 times a power of ten).
struct axis {
    double lo = 0, hi = 1;
    std::vector<double> ticks;
};
axis make_axis(double lo, double hi, int n_ticks);  // n_ticks is an aim
std::string tick_text(double tick, double step);
axis x_axis(const plot& p, int n_ticks);
axis y_axis(const plot& p, int n_ticks);

struct terminal {
    int columns = 80, rows = 20;
    bool utf8 = false;  // braille dots; otherwise plain characters
    bool colour = false;
};
terminal this_terminal();  // of standard output and the environment; NO_COLOR is heeded
std::string draw_in_terminal(const plot& p, const terminal& t);

// The same bytes for the same curves. Lines differ in colour and in dashes, so that grey prints can be read.
std::string draw_svg(const plot& p);

}  // namespace cli
