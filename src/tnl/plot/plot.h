// plot.h -- a picture of curves: panels over one another with a shared x axis; in the terminal, and as an SVG file.
#pragma once
#include <cmath>
#include <string>
#include <vector>

#include "tnl/plot/plot_axis.h"

namespace cli {

struct plot_stretch {
    double from = 0, to = 0;                        // of x
    enum what { value, unknown, busy } is = value;  // busy: more changes than a picture can show
    std::string text = {};                          // the value
};
struct plot_series {
    std::string name;          // empty: it lies among others that are named
    std::vector<double> x, y;  // equal lengths; points that are not finite break the line
    // On a lane, in order: of a number of bits all stretches, of one level of a digital file the unknown ones.
    std::vector<plot_stretch> stretches = {};
    enum lane_kind { trace, level, bus } lane = trace;  // trace: of two values that an analog column has
};
enum class panel_form {
    lines,
    sticks,  // from 0 up to each point; from the end of the axis that is nearest to 0 where it does not reach there
    logic,   // each series on a lane of its own; y is 0 or 1 and holds until the next point
};
struct plot_panel {
    std::string quantity;  // of all its series; empty when they show different ones
    std::string unit;      // empty: none
    panel_form form = panel_form::lines;
    bool log = false;
    std::vector<plot_series> series;
    double y_lo = NAN, y_hi = NAN;  // ends of its axis that are given; series keep within them
};
struct plot_mark {
    double x = 0, y = 0;
    std::string name;
};
struct plot {
    std::string title, x_quantity, x_unit;
    bool log_x = false;
    bool equal_axes = false;       // of the only panel: a length is the same number along both
    std::vector<plot_mark> marks;  // points in such a panel, which its axes show unless their ends are given
    std::vector<plot_panel> panels;
    double x_from = NAN, x_to = NAN;  // with equal_axes: ends of x that are given
    double x_lo = NAN, x_hi = NAN;    // that the x axis shows whatever of the series is left; NaN: as these need it
};

// Axes that hold all finite points (on a log axis: those above 0); n_ticks is an aim.
axis x_axis(const plot& p, int n_ticks);
axis y_axis(const plot_panel& panel, int n_ticks);

// Both axes of a picture with equal_axes, in a frame of this width and height in one measure.
struct equal_axes {
    axis x, y;
};
equal_axes equal_axes_in(const plot& p, double width, double height, int n_x_ticks, int n_y_ticks);

// Whether a curve goes up and down so often that it fills an area: it is drawn thin, without dashes, below the others.
bool is_dense(const plot_series& series, const axis& y);
std::vector<std::size_t> drawing_order(const plot_panel& panel, const axis& y);  // of the series

// At most this many series of a panel are named; the rest is counted: "... and 30 more". named_series() are their
// numbers.
inline constexpr std::size_t most_names = 12;

std::vector<std::size_t> named_series(const plot_panel& panel, std::size_t most);

struct terminal {
    int columns = 80, rows = 20;
    bool utf8 = false;  // braille dots; otherwise plain characters
    bool colour = false;
};
terminal this_terminal();  // of standard output and the environment; NO_COLOR is heeded
std::string draw_in_terminal(const plot& p, const terminal& t);

// The same bytes for the same curves. Lines differ in colour and in dashes, so that grey prints can be read.
struct picture_size {
    int width = 720, height = 0;  // px; height 0: as the panels need it
};
inline constexpr int least_picture = 200, most_picture = 10000;  // px, width and height
// Throws usage_error when the panels do not fit into the height.
std::string draw_svg(const plot& p, picture_size size = {});

}  // namespace cli
