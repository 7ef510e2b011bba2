#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string_view>

#include "tnl/common/text_width.h"
#include "tnl/plot/plot.h"
#include "tnl/plot/plot_thin.h"

namespace cli {

namespace {

// Dots of a character cell: 2 by 4 in braille, 1 by 1 in plain text.
struct canvas {
    int columns, rows;           // cells
    int nx, ny;                  // dots of a cell
    std::vector<unsigned> dots;  // [rows * columns] bit 4 * column + row of the cell's dots
    std::vector<int> owner;      // [rows * columns] the series that drew here last, -1 none
    std::vector<char> letter;    // [rows * columns] that stands above the dots; 0: none

    canvas(int c, int r, bool braille)
        : columns(c),
          rows(r),
          nx(braille ? 2 : 1),
          ny(braille ? 4 : 1),
          dots(size()),
          owner(size(), -1),
          letter(size(), 0) {}
    std::size_t size() const { return static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows); }
    std::size_t at(int r, int c) const {
        return static_cast<std::size_t>(r) * static_cast<std::size_t>(columns) + static_cast<std::size_t>(c);
    }

    void set(int x, int y, int series) {  // dots, from the lower left corner
        if (x < 0 || y < 0 || x >= columns * nx || y >= rows * ny) return;
        const int down = rows * ny - 1 - y;
        const std::size_t cell = at(down / ny, x / nx);
        dots[cell] |= 1u << (4 * (x % nx) + down % ny);
        owner[cell] = series;
    }
    void put(int row, int column, char ch) {
        if (row >= 0 && column >= 0 && row < rows && column < columns) letter[at(row, column)] = ch;
    }
    // The whole cell of a dot, which alone would hardly be seen.
    void fill_cell(double x, double y, int series) {
        const int left = static_cast<int>(std::lround(x)) / nx * nx, low = static_cast<int>(std::lround(y)) / ny * ny;
        for (int i = 0; i < nx * ny; ++i) set(left + i % nx, low + i / nx, series);
    }
    void line(double x0, double y0, double x1, double y1, int series) {
        const int n = std::max(1, static_cast<int>(std::ceil(std::max(std::abs(x1 - x0), std::abs(y1 - y0)))));
        for (int i = 0; i <= n; ++i) {
            const double t = static_cast<double>(i) / n;
            set(static_cast<int>(std::lround(x0 + t * (x1 - x0))), static_cast<int>(std::lround(y0 + t * (y1 - y0))),
                series);
        }
    }
};

std::string utf8_braille(unsigned dots) {
    // Bits of the code point: dots 1 2 3 7 down the left column, 4 5 6 8 down the right one.
    constexpr unsigned bit[8] = {0x01, 0x02, 0x04, 0x40, 0x08, 0x10, 0x20, 0x80};
    unsigned code = 0x2800;
    for (unsigned i = 0; i < 8; ++i)
        if (dots >> i & 1u) code += bit[i];
    return {static_cast<char>(0xe0 | code >> 12), static_cast<char>(0x80 | (code >> 6 & 0x3f)),
            static_cast<char>(0x80 | (code & 0x3f))};
}

constexpr std::string_view colours[] = {"\x1b[36m", "\x1b[33m", "\x1b[35m", "\x1b[32m", "\x1b[31m", "\x1b[34m"};
constexpr std::string_view marks = "*o+x#@%&";
constexpr int lane_rows = 3;  // of a logic trace; the lowest stays free

std::string blanks(int n) { return std::string(static_cast<std::size_t>(std::max(0, n)), ' '); }
std::string padded(const std::string& s, int width) { return blanks(width - n_characters(s)) + s; }  // to the right
// Bytes of names go to a terminal: no control characters.
std::string clean(std::string_view s) {
    std::string out(s);
    for (char& c : out)
        if ((static_cast<unsigned char>(c) < ' ') || c == '\x7f') c = '?';
    return out;
}
// On plain terminals only ASCII.
std::string name_of(std::string_view s, const terminal& t) {
    std::string out = clean(s);
    if (!t.utf8)
        for (char& c : out)
            if (static_cast<unsigned char>(c) >= 0x80) c = '?';
    return out;
}

// What stands at a row of a panel, left and right of the curves.
struct side_texts {
    std::vector<std::string> left, right;  // [rows]
    std::vector<int> series;               // [rows] of the name on the right, -1 none
    explicit side_texts(int rows)
        : left(static_cast<std::size_t>(rows)),
          right(static_cast<std::size_t>(rows)),
          series(static_cast<std::size_t>(rows), -1) {}
    // In the row, or the nearest that is free.
    void name(int row, const std::string& text, int i_series) {
        const int rows = static_cast<int>(right.size());
        for (int away = 0; away < rows; ++away)
            for (const int at : {row - away, row + away}) {
                if (at < 0 || at >= rows || series[static_cast<std::size_t>(at)] >= 0) continue;
                right[static_cast<std::size_t>(at)] = text;
                series[static_cast<std::size_t>(at)] = i_series;
                return;
            }
    }
};

struct frame {
    const plot& p;
    const terminal& t;
    axis x;
    int left = 0, right = 0, columns = 20;  // characters
    axis y_equal = {};                      // of a picture with equal axes

    std::string coloured(const std::string& text, int series) const {
        if (!t.colour || series < 0 || text.empty()) return text;
        return std::string(colours[static_cast<std::size_t>(series) % std::size(colours)]) + text + "\x1b[0m";
    }
    char mark(int series) const { return marks[static_cast<std::size_t>(series) % marks.size()]; }
};

int rows_of(const plot_panel& panel, const plot& p, const terminal& t) {
    if (panel.form == panel_form::logic) return lane_rows * static_cast<int>(panel.series.size());
    return std::max(6, t.rows / std::max(1, static_cast<int>(p.panels.size())));
}

int tick_aim(int rows) { return std::max(3, rows / 4); }

// The curve, and the row of its last point; -1 if it has none.
int draw_curve(canvas& c, const plot_series& s, const frame& f, const axis& y, int base, int height, int series) {
    std::vector<double> px, py;
    if (std::is_sorted(s.x.begin(), s.x.end())) {
        thinner thin(make_axis(0, 1, 2), 2 * c.columns * c.nx);
        for (std::size_t i = 0; i < s.x.size(); ++i) thin.add(f.x.place(s.x[i]), y.place(s.y[i]));
        thin.finish();
        px = std::move(thin.x);
        py = std::move(thin.y);
    } else {
        for (std::size_t i = 0; i < s.x.size(); ++i) px.push_back(f.x.place(s.x[i])), py.push_back(y.place(s.y[i]));
    }
    int last = -1;
    const double wide = c.columns * c.nx - 1, high = height - 1;
    const auto drawn = [&](std::size_t i) { return std::isfinite(px[i]) && std::isfinite(py[i]); };
    for (std::size_t i = 0; i < px.size(); ++i) {
        if (!drawn(i)) continue;
        const double x1 = px[i] * wide, y1 = base + py[i] * high;
        const bool joined = i > 0 && drawn(i - 1);
        if (!joined && !(i + 1 < px.size() && drawn(i + 1))) c.fill_cell(x1, y1, series);
        c.line(joined ? px[i - 1] * wide : x1, joined ? base + py[i - 1] * high : y1, x1, y1, series);
        last = c.rows - 1 - static_cast<int>(std::lround(y1)) / c.ny;
    }
    return last;
}

// A number between two lines, or the hatching of what is unknown, in the rows of a lane.
void draw_stretch(canvas& c, const plot_stretch& s, const frame& f, int bottom, int series) {
    const double wide = c.columns * c.nx - 1;
    const int x0 = static_cast<int>(std::lround(f.x.place(s.from) * wide)),
              x1 = static_cast<int>(std::lround(f.x.place(s.to) * wide)), top = bottom + (lane_rows - 1) * c.ny - 1;
    if (s.is != plot_stretch::value) {
        for (int x = x0; x < x1; ++x)
            for (int y = bottom; y <= top; ++y)
                if (s.is == plot_stretch::busy || (x + y) % 4 == 0 || c.ny == 1) c.set(x, y, series);
        for (int cell = (x0 + c.nx - 1) / c.nx; c.ny == 1 && cell < x1; ++cell)
            for (int row = 0; row < lane_rows - 1; ++row)
                c.put(c.rows - 1 - bottom - row, cell, s.is == plot_stretch::busy ? '#' : '/');
        return;
    }
    // The lines leave a cell free at both ends, where the next number begins.
    for (int x = x0 + 1; x < x1; ++x) {
        c.set(x, bottom, series);
        if (c.ny > 1) c.set(x, top, series);
    }
    for (int y = bottom; y <= top; ++y) c.ny > 1 ? c.set(x0, y, series) : c.put(c.rows - 1 - y, x0, '|');
    const int from = x0 / c.nx + 1, room = x1 / c.nx - from, n = static_cast<int>(s.text.size());
    const int row = c.rows - 1 - bottom / c.ny - (lane_rows - 1) / 2;
    if (n > room) return;
    for (int i = 0; i < n; ++i) c.put(row, from + (room - n) / 2 + i, s.text[static_cast<std::size_t>(i)]);
}

int draw_sticks(canvas& c, const plot_series& s, const frame& f, const axis& y, int series) {
    int last = -1;
    const double wide = c.columns * c.nx - 1, high = c.rows * c.ny - 1, foot = std::clamp(y.place(0), 0.0, 1.0) * high;
    double tallest = 0;
    for (std::size_t i = 0; i < s.x.size(); ++i) {
        const double at = f.x.place(s.x[i]) * wide, top = y.place(s.y[i]) * high;
        if (!std::isfinite(at) || !std::isfinite(top)) continue;
        c.line(at, foot, at, top, series);
        if (std::abs(s.y[i]) >= tallest) {
            tallest = std::abs(s.y[i]);
            last = c.rows - 1 - static_cast<int>(std::lround(top)) / c.ny;
        }
    }
    return last;
}

// One curve whose name stands at the axis needs it nowhere else.
bool needs_names(const plot_panel& panel) { return panel.series.size() > 1 || panel.quantity.empty(); }

std::string panel_text(const plot_panel& panel, const frame& f) {
    const terminal& t = f.t;
    const int rows = rows_of(panel, f.p, t);
    canvas c(f.columns, rows, t.utf8);
    side_texts side(rows);
    std::string head;
    if (panel.form == panel_form::logic) {
        const axis level = make_axis(0, 1, 2);
        for (std::size_t k = 0; k < panel.series.size(); ++k) {
            const int n = static_cast<int>(k), bottom = (rows - lane_rows * (n + 1) + 1) * c.ny;
            const plot_series& lane = panel.series[k];
            for (const plot_stretch& stretch : lane.stretches) draw_stretch(c, stretch, f, bottom, n);
            if (lane.lane != plot_series::bus) draw_curve(c, lane, f, level, bottom, (lane_rows - 1) * c.ny, n);
            side.left[static_cast<std::size_t>(lane_rows * n)] = shortened_to(name_of(panel.series[k].name, t), f.left);
        }
    } else {
        const axis y = f.p.equal_axes ? f.y_equal : y_axis(panel, tick_aim(rows));
        std::string label = name_of(axis_label(panel.quantity, y), t);
        const auto shows = [&](const plot_series& one) {
            return std::any_of(one.y.begin(), one.y.end(), [&](double v) { return std::isfinite(y.place(v)); });
        };
        if (std::none_of(panel.series.begin(), panel.series.end(), shows))
            label += label.empty() ? "no values to show" : ": no values to show";
        if (!label.empty()) head = blanks(f.left + 2) + shortened_to(label, f.columns) + "\n";
        for (const double tick : y.ticks) {
            const int up = static_cast<int>(std::lround(y.place(tick) * (rows * c.ny - 1))) / c.ny;
            side.left[static_cast<std::size_t>(rows - 1 - up)] = y.tick_text(tick);
        }
        const std::size_t n = panel.series.size();
        const std::size_t room = std::min(most_names, static_cast<std::size_t>(rows) - 1);
        std::vector<std::size_t> shown;
        if (needs_names(panel)) shown = named_series(panel, n);
        if (shown.size() > room) shown.resize(room - 1);
        std::vector<int> last(n);
        for (const std::size_t k : drawing_order(panel, y)) {
            const int i = static_cast<int>(k);
            last[k] = panel.form == panel_form::sticks ? draw_sticks(c, panel.series[k], f, y, i)
                                                       : draw_curve(c, panel.series[k], f, y, 0, rows * c.ny, i);
        }
        for (const std::size_t k : shown)
            if (last[k] >= 0)
                side.name(std::clamp(last[k], 0, rows - 1), shortened_to(name_of(panel.series[k].name, t), f.right),
                          static_cast<int>(k));
        if (!shown.empty() && shown.size() < n)
            head +=
                blanks(f.left + 2) + std::to_string(shown.size()) + " of " + std::to_string(n) + " curves are named\n";
    }
    for (const plot_mark& mark : f.p.marks) {
        const double at_x = f.x.place(mark.x), at_y = f.y_equal.place(mark.y);
        if (!(at_x >= 0 && at_x <= 1 && at_y >= 0 && at_y <= 1)) continue;
        const int column = static_cast<int>(std::lround(at_x * (f.columns - 1)));
        const int row = static_cast<int>(std::lround((1 - at_y) * (rows - 1)));
        // Over the dots, with its name in front.
        std::string text = mark.name + "X";
        for (int k = 0; k < static_cast<int>(text.size()); ++k)
            if (const int at = column + 1 - static_cast<int>(text.size()) + k; at >= 0)
                c.letter[c.at(row, at)] = text[static_cast<std::size_t>(k)];
    }
    const std::string upright = t.utf8 ? "│" : "|", cross = t.utf8 ? "┤" : "+";
    std::string out = head;
    for (int r = 0; r < rows; ++r) {
        const auto at_row = static_cast<std::size_t>(r);
        out += padded(side.left[at_row], f.left) + " " + (side.left[at_row].empty() ? upright : cross);
        std::string rest, same;  // blanks that may be the last; cells of one colour
        int colour = -1;
        for (int k = 0; k < f.columns; ++k) {
            const std::size_t cell = c.at(r, k);
            const int owner = c.letter[cell] != 0 ? -1 : c.owner[cell];
            if (owner < 0 && c.letter[cell] == 0) {
                rest += ' ';
                continue;
            }
            if (owner != colour) {
                out += f.coloured(same, colour);
                same.clear();
                out += rest;
            } else {
                same += rest;
            }
            rest.clear();
            colour = owner;
            same += c.letter[cell] != 0 ? std::string(1, c.letter[cell])
                    : t.utf8            ? utf8_braille(c.dots[cell])
                                        : std::string(1, f.mark(owner));
        }
        out += f.coloured(same, colour);
        if (!side.right[at_row].empty()) {
            const int s = side.series[at_row];
            out += rest + " ";
            if (!t.utf8) out += std::string(1, f.mark(s)) + " ";
            out += f.coloured(side.right[at_row], s);
        }
        out += '\n';
    }
    return out;
}

std::string x_axis_text(const frame& f) {
    const std::string floor = f.t.utf8 ? "─" : "-", corner = f.t.utf8 ? "└" : "+", below = f.t.utf8 ? "┬" : "+";
    const int nx = f.t.utf8 ? 2 : 1;
    std::vector<std::string> line(static_cast<std::size_t>(f.columns), floor);
    std::string numbers = blanks(f.left + 2 + f.columns + 24);
    std::size_t free_from = 0, end = 0;
    for (const double tick : f.x.ticks) {
        const int at = static_cast<int>(std::lround(f.x.place(tick) * (f.columns * nx - 1))) / nx;
        if (at < 0 || at >= f.columns) continue;
        const std::string text = f.x.tick_text(tick);
        const int half = static_cast<int>(text.size()) / 2;
        const auto start = static_cast<std::size_t>(std::max(0, f.left + 2 + at - half));
        line[static_cast<std::size_t>(at)] = below;
        if (start < free_from || start + text.size() > numbers.size()) continue;
        numbers.replace(start, text.size(), text);
        end = start + text.size();
        free_from = end + 1;
    }
    std::string out = blanks(f.left + 1) + corner;
    for (const std::string& s : line) out += s;
    out += "\n" + numbers.substr(0, end) + "\n";
    const std::string label = shortened_to(name_of(axis_label(f.p.x_quantity, f.x), f.t), f.columns);
    if (!label.empty()) out += blanks(f.left + 2 + std::max(0, f.columns - n_characters(label)) / 2) + label + "\n";
    return out;
}

}  // namespace

terminal this_terminal() {
    terminal t;
    const bool tty = isatty(STDOUT_FILENO) == 1;
    winsize size{};
    if (tty && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0) {
        if (size.ws_col >= 30) t.columns = std::min<int>(size.ws_col, 240);
        if (size.ws_row >= 12) t.rows = std::clamp(size.ws_row - 6, 8, 40);
    }
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"})
        if (const char* value = std::getenv(name); value && *value) {
            std::string upper(value);
            for (char& c : upper)
                if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
            t.utf8 = upper.find("UTF-8") != std::string::npos || upper.find("UTF8") != std::string::npos;
            break;
        }
    const char* no_colour = std::getenv("NO_COLOR");
    const char* kind = std::getenv("TERM");
    t.colour = tty && !(no_colour && *no_colour) && !(kind && std::string_view(kind) == "dumb");
    return t;
}

std::string draw_in_terminal(const plot& p, const terminal& t) {
    frame f{p, t, {}};
    for (const plot_panel& panel : p.panels) {
        if (panel.form == panel_form::logic) {
            for (const plot_series& s : panel.series)
                f.left = std::max(f.left, std::min(t.columns / 4, n_characters(s.name)));
            continue;
        }
        const int rows = rows_of(panel, p, t);
        const axis y = p.equal_axes ? equal_axes_in(p, t.columns - 14, 2 * rows, 2, tick_aim(rows)).y
                                    : y_axis(panel, tick_aim(rows));
        for (const double tick : y.ticks) f.left = std::max(f.left, static_cast<int>(y.tick_text(tick).size()));
        if (!needs_names(panel)) continue;
        const bool values = !panel.quantity.empty() && t.columns >= 72;  // which are longer than names
        const int most = values ? t.columns * 9 / 20 : t.columns * 3 / 10;
        for (const plot_series& s : panel.series)
            f.right = std::max(f.right, std::min(std::max(10, most), n_characters(s.name)));
    }
    f.columns = std::max(20, t.columns - f.left - f.right - (t.utf8 ? 4 : 6));
    const auto set_x = [&](int n) {
        if (!p.equal_axes) return static_cast<void>(f.x = x_axis(p, n));
        const int rows = rows_of(p.panels.front(), p, t);  // a character is twice as high as wide
        const equal_axes both = equal_axes_in(p, f.columns, 2 * rows, n, tick_aim(rows));
        f.x = both.x;
        f.y_equal = both.y;
    };
    for (int n = std::max(2, f.columns / 9); n >= 1; --n) {  // as many ticks as their numbers leave room for
        set_x(n);
        bool fits = true;
        for (std::size_t i = 1; i < f.x.ticks.size(); ++i)
            fits = fits && (f.x.place(f.x.ticks[i]) - f.x.place(f.x.ticks[i - 1])) * f.columns >
                               static_cast<double>(f.x.tick_text(f.x.ticks[i]).size() + 2);
        if (fits) break;
    }
    std::string out;
    if (!p.title.empty())
        out += blanks(f.left + 2) + shortened_to(name_of(p.title, t), std::max(20, t.columns - f.left - 2)) + "\n";
    for (const plot_panel& panel : p.panels) out += panel_text(panel, f);
    return out + x_axis_text(f);
}

}  // namespace cli
