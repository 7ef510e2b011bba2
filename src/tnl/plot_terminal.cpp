#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string_view>

#include "tnl/plot.h"

namespace cli {

namespace {

// Dots of a character cell: 2 by 4 in braille, 1 by 1 in plain text.
struct canvas {
    int columns, rows;           // cells
    int nx, ny;                  // dots of a cell
    std::vector<unsigned> dots;  // [rows * columns] bit 4 * column + row of the cell's dots
    std::vector<int> owner;      // [rows * columns] the series that drew here last, -1 none

    canvas(int c, int r, bool braille)
        : columns(c), rows(r), nx(braille ? 2 : 1), ny(braille ? 4 : 1), dots(size()), owner(size(), -1) {}
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
constexpr std::string_view marks = "*o+x#@";

std::string padded(const std::string& s, int width) {  // to the right
    const int n = std::max(0, width - static_cast<int>(s.size()));
    return std::string(static_cast<std::size_t>(n), ' ') + s;
}

}  // namespace

terminal this_terminal() {
    terminal t;
    const bool tty = isatty(STDOUT_FILENO) == 1;
    winsize size{};
    if (tty && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col >= 40)
        t.columns = std::min<int>(size.ws_col, 100);
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"})
        if (const char* value = std::getenv(name); value && *value) {
            std::string upper(value);
            for (char& c : upper)
                if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
            t.utf8 = upper.find("UTF-8") != std::string::npos || upper.find("UTF8") != std::string::npos;
            break;
        }
    const char* no_colour = std::getenv("NO_COLOR");
    t.colour = tty && !(no_colour && *no_colour);
    return t;
}

std::string draw_in_terminal(const plot& p, const terminal& t) {
    const int rows = std::max(6, t.rows);
    const axis y = y_axis(p, std::max(2, rows / 4));
    const double y_step = y.ticks.size() > 1 ? y.ticks[1] - y.ticks[0] : y.hi - y.lo;
    int left = 0;  // width of the numbers beside the frame
    for (const double tick : y.ticks) left = std::max(left, static_cast<int>(tick_text(tick, y_step).size()));
    std::size_t right = 0;  // width of the names behind the curves
    for (const plot_series& s : p.series) right = std::max(right, s.name.size());
    const int columns = std::max(20, t.columns - left - static_cast<int>(right) - 5);
    const axis x = x_axis(p, columns / 12);
    const double x_step = x.ticks.size() > 1 ? x.ticks[1] - x.ticks[0] : x.hi - x.lo;

    canvas c(columns, rows, t.utf8);
    const auto dot_x = [&](double v) { return (v - x.lo) / (x.hi - x.lo) * (columns * c.nx - 1); };
    const auto dot_y = [&](double v) { return (v - y.lo) / (y.hi - y.lo) * (rows * c.ny - 1); };
    std::vector<std::string> name_at(static_cast<std::size_t>(rows));  // the name stands where its curve ends
    std::vector<int> named(static_cast<std::size_t>(rows), -1);
    for (std::size_t s = 0; s < p.series.size(); ++s) {
        const plot_series& one = p.series[s];
        int last_row = -1;
        for (std::size_t i = 0; i < one.x.size(); ++i) {
            if (!std::isfinite(one.x[i]) || !std::isfinite(one.y[i])) continue;
            const double x1 = dot_x(one.x[i]), y1 = dot_y(one.y[i]);
            const bool joined = i > 0 && std::isfinite(one.x[i - 1]) && std::isfinite(one.y[i - 1]);
            c.line(joined ? dot_x(one.x[i - 1]) : x1, joined ? dot_y(one.y[i - 1]) : y1, x1, y1, static_cast<int>(s));
            last_row = rows - 1 - static_cast<int>(std::lround(y1)) / c.ny;
        }
        // the nearest row that is still free
        for (int away = 0; last_row >= 0 && away < rows; ++away) {
            const int up = last_row - away, down = last_row + away;
            const int at = up >= 0 && named[static_cast<std::size_t>(up)] < 0         ? up
                           : down < rows && named[static_cast<std::size_t>(down)] < 0 ? down
                                                                                      : -1;
            if (at < 0) continue;
            name_at[static_cast<std::size_t>(at)] = one.name;
            named[static_cast<std::size_t>(at)] = static_cast<int>(s);
            break;
        }
    }
    const auto coloured = [&](const std::string& text, int series) {
        if (!t.colour || series < 0) return text;
        return std::string(colours[static_cast<std::size_t>(series) % std::size(colours)]) + text + "\x1b[0m";
    };
    const std::string side = t.utf8 ? "│" : "|", cross = t.utf8 ? "┤" : "+", floor = t.utf8 ? "─" : "-",
                      corner = t.utf8 ? "└" : "+", below = t.utf8 ? "┬" : "+";

    std::string out = std::string(static_cast<std::size_t>(left) + 2, ' ') + p.title + "\n";
    if (!p.y_label.empty()) out += padded("", left + 2) + p.y_label + "\n";
    std::vector<std::string> tick_at(static_cast<std::size_t>(rows));
    for (const double tick : y.ticks)
        tick_at[static_cast<std::size_t>(rows - 1 - static_cast<int>(std::lround(dot_y(tick))) / c.ny)] =
            tick_text(tick, y_step);
    for (int r = 0; r < rows; ++r) {
        const auto at_row = static_cast<std::size_t>(r);
        out += padded(tick_at[at_row], left) + " " + (tick_at[at_row].empty() ? side : cross);
        std::string rest;
        for (int k = 0; k < columns; ++k) {
            const std::size_t cell = c.at(r, k);
            const int owner = c.owner[cell];
            if (owner < 0) {
                rest += ' ';
                continue;
            }
            out += rest;
            rest.clear();
            out += coloured(t.utf8 ? utf8_braille(c.dots[cell])
                                   : std::string(1, marks[static_cast<std::size_t>(owner) % marks.size()]),
                            owner);
        }
        if (!name_at[at_row].empty()) {
            const int s = named[at_row];
            out += rest + " " + coloured(name_at[at_row], s);
            if (!t.utf8) out += std::string(" ") + marks[static_cast<std::size_t>(s) % marks.size()];
        }
        out += '\n';
    }
    std::vector<std::string> frame(static_cast<std::size_t>(columns), floor);
    std::string numbers(static_cast<std::size_t>(left) + 2 + static_cast<std::size_t>(columns) + 8, ' ');
    std::size_t free_from = 0;
    for (const double tick : x.ticks) {
        const int at = static_cast<int>(std::lround(dot_x(tick))) / c.nx;
        frame[static_cast<std::size_t>(std::clamp(at, 0, columns - 1))] = below;
        const std::string text = tick_text(tick, x_step);
        const int begin = std::max(0, left + 2 + at - static_cast<int>(text.size()) / 2);
        const auto from = static_cast<std::size_t>(begin);
        if (from < free_from || from + text.size() > numbers.size()) continue;
        numbers.replace(from, text.size(), text);
        free_from = from + text.size() + 1;
    }
    out += padded("", left) + " " + corner;
    for (const std::string& f : frame) out += f;
    while (!numbers.empty() && numbers.back() == ' ') numbers.pop_back();
    out += "\n" + numbers + "\n";
    const int middle = left + 2 + (columns - static_cast<int>(p.x_label.size())) / 2;
    out += padded("", std::max(0, middle)) + p.x_label + "\n";
    return out;
}

}  // namespace cli
