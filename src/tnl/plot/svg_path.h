// svg_path.h -- a path of an SVG picture as text.
#pragma once
#include <algorithm>
#include <cmath>
#include <string>

namespace cli {

// A path in tenths of a pixel, each step relative to the point before: short, and without sums of rounding.
class svg_path {
public:
    void move(double x, double y) {
        const long px = tenths(x), py = tenths(y);
        text_ += 'M';
        number(px);
        number_behind(py);
        command_ = 'M';
        x_ = px, y_ = py;
    }
    void line(double x, double y) {
        const long px = tenths(x), py = tenths(y), dx = px - x_, dy = py - y_;
        if (dx == 0 && dy == 0 && command_ != 'M') return;
        const char c = dy == 0 ? 'h' : dx == 0 ? 'v' : 'l';
        const bool again = c == command_;
        if (!again) text_ += c;
        if (c != 'v') again ? number_behind(dx) : number(dx);
        if (c == 'l') number_behind(dy);
        if (c == 'v') again ? number_behind(dy) : number(dy);
        command_ = c;
        x_ = px, y_ = py;
    }
    const std::string& text() const { return text_; }

private:
    static long tenths(double v) { return std::lround(10 * std::clamp(v, -2e4, 2e4)); }
    void number(long n) {
        if (n < 0) text_ += '-', n = -n;
        if (n >= 10 || n == 0) text_ += std::to_string(n / 10);
        if (n % 10) text_ += '.', text_ += static_cast<char>('0' + n % 10);
    }
    void number_behind(long n) {
        if (n >= 0) text_ += ' ';
        number(n);
    }
    std::string text_;
    long x_ = 0, y_ = 0;
    char command_ = 0;
};

}  // namespace cli
