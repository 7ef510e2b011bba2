// Value change dump: what changes, and when.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>

#include "tnl/common/exit_status.h"
#include "tnl/results/export.h"

namespace cli {

namespace {

// Units of a timescale: 10^0 s to 10^-15 s.
constexpr const char* timescales[] = {"1 s",   "100 ms", "10 ms",  "1 ms",  "100 us", "10 us",  "1 us",  "100 ns",
                                      "10 ns", "1 ns",   "100 ps", "10 ps", "1 ps",   "100 fs", "10 fs", "1 fs"};
constexpr double per_second[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
constexpr double latest = 9e18;  // in units; they are counted in 64 bits

// Times of the curve in units.
struct time_line {
    int scale = 0;  // of timescales
    std::vector<std::int64_t> ticks;
};

bool is_countable(double t, double units) { return t * units <= latest; }

// Whether whole units stay this near to all times and tell them apart.
bool is_exact(const std::vector<double>& t, double shortest, double units) {
    double before = -1;
    for (std::size_t i = 0; i < t.size(); ++i) {
        const double exact = t[i] * units, tick = std::round(exact);
        if (std::fabs(exact - tick) > 1e-3 * shortest * units) return false;
        if (i > 0 && t[i] > t[i - 1] && !(tick > before)) return false;
        before = tick;
    }
    return true;
}

time_line time_of(const export_choice& c, std::size_t begin, std::size_t end) {
    std::vector<double> t(end - begin);
    double shortest = 0;
    for (std::size_t i = 0; i < t.size(); ++i) {
        t[i] = c.table.at(begin + i, c.columns[0]);
        const std::string row = c.table.path + ", row " + std::to_string(begin + i + 1) + ": ";
        if (!std::isfinite(t[i])) throw file_error(row + "the time is no number");
        if (t[i] < 0) throw file_error(row + "a VCD file has no times below 0");
        if (i > 0 && t[i] < t[i - 1]) throw file_error(row + "the time goes back");
        if (i > 0 && t[i] > t[i - 1]) shortest = shortest > 0 ? std::min(shortest, t[i] - t[i - 1]) : t[i] - t[i - 1];
    }
    if (!is_countable(t.back(), 1)) throw file_error(c.table.path + ": times beyond what a VCD file can count");
    if (shortest == 0) shortest = t.back();  // one time only
    time_line line;
    while (line.scale + 1 < static_cast<int>(std::size(timescales)) &&
           is_countable(t.back(), per_second[line.scale + 1]) && !is_exact(t, shortest, per_second[line.scale]))
        ++line.scale;
    for (const double x : t) line.ticks.push_back(static_cast<std::int64_t>(std::round(x * per_second[line.scale])));
    return line;
}

// A wire has two levels; a real has more, or only one.
struct signal {
    std::size_t column;
    bool is_wire = false;
    double low = 0, high = 0;
    std::string id, name;
};

void find_levels(const export_choice& c, std::size_t begin, std::size_t end, signal& s) {
    int n = 0;
    for (std::size_t row = begin; row < end; ++row) {
        const double x = c.table.at(row, s.column);
        if (std::isnan(x) || (n > 0 && x == s.low) || (n > 1 && x == s.high)) continue;
        if (++n > 2) return;
        (n == 1 ? s.low : s.high) = x;
    }
    s.is_wire = n == 2;
    if (s.low > s.high) std::swap(s.low, s.high);
}

// Printable characters, the shortest first: "!", "\"", ... "~", "!!", ...
std::string identifier(std::size_t i) {
    std::string id;
    for (;; i = i / 94 - 1) {
        id += static_cast<char>('!' + i % 94);
        if (i < 94) return id;
    }
}

// A simple identifier: letters, digits, '_' and '$', which does not begin one.
std::string reference(const std::string& name) {
    std::string r = name;
    for (char& ch : r) {
        const bool is_letter = (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z');
        if (!is_letter && !(ch >= '0' && ch <= '9') && ch != '$') ch = '_';
    }
    if (r.empty() || r[0] == '$' || (r[0] >= '0' && r[0] <= '9')) r = "_" + r;
    return r;
}

// For the text of a section: no word there begins with '$', as its end does.
std::string plain(std::string text) {
    for (char& ch : text)
        if (ch == '$' || (static_cast<unsigned char>(ch) < ' ')) ch = '_';
    return text;
}

void append_change(std::string& text, const signal& s, double x) {
    char number[32];
    if (s.is_wire) {
        text += std::isnan(x) ? 'x' : x == s.high ? '1' : '0';
    } else {
        text += 'r';
        text.append(number, put_number(number, x));
        text += ' ';
    }
    text += s.id;
    text += '\n';
}

bool differs(double a, double b) { return a != b && !(std::isnan(a) && std::isnan(b)); }

}  // namespace

void write_vcd(const export_choice& c, output_file& out) {
    const std::size_t begin = c.table.first_row[c.first_curve], end = c.table.first_row[c.first_curve + 1];
    const time_line time = time_of(c, begin, end);
    std::vector<std::string> names;
    for (const std::size_t j : c.columns) names.push_back(reference(c.table.columns[j].name));
    names = unique_names(names);
    std::vector<signal> signals;
    for (std::size_t i = 1; i < c.columns.size(); ++i) {
        signals.push_back({c.columns[i], false, 0, 0, identifier(i - 1), names[i]});
        find_levels(c, begin, end, signals.back());
    }

    std::string text;
    if (!c.date.empty()) text += "$date " + plain(c.date) + " $end\n";
    text += "$version tnl $end\n";
    if (!c.title.empty()) text += "$comment " + plain(c.title) + " $end\n";
    for (const signal& s : signals) {
        const record_column& column = c.table.columns[s.column];
        const std::string unit = column.unit.empty() ? "" : " " + column.unit;
        char low[32], high[32];
        if (s.is_wire)
            text += "$comment " + s.name + ": 0 is " + std::string(low, put_number(low, s.low)) + plain(unit) +
                    ", 1 is " + std::string(high, put_number(high, s.high)) + plain(unit) + " $end\n";
        else if (!unit.empty())
            text += "$comment " + s.name + " in" + plain(unit) + " $end\n";
        if (s.name != column.name) text += "$comment " + s.name + " is column " + plain(column.name) + " $end\n";
    }
    text += std::string("$timescale ") + timescales[time.scale] + " $end\n$scope module rows $end\n";
    for (const signal& s : signals)
        text += (s.is_wire ? "$var wire 1 " : "$var real 64 ") + s.id + " " + s.name + " $end\n";
    text += "$upscope $end\n$enddefinitions $end\n";
    out.write(text);

    std::vector<double> shown(signals.size());
    const std::size_t n = time.ticks.size();
    char tick[32];
    for (std::size_t i = 0; i < n; ++i) {
        if (i + 1 < n && time.ticks[i + 1] == time.ticks[i]) continue;  // the last of them counts
        const bool is_first = i == 0 || time.ticks[i] == time.ticks[0];
        text.clear();
        if (is_first) text = "$dumpvars\n";
        for (std::size_t k = 0; k < signals.size(); ++k) {
            const double x = c.table.at(begin + i, signals[k].column);
            if (!is_first && !differs(x, shown[k])) continue;
            append_change(text, signals[k], x);
            shown[k] = x;
        }
        if (is_first) text += "$end\n";
        if (text.empty() && i + 1 < n) continue;
        tick[0] = '#';
        char* const tick_end = std::to_chars(tick + 1, tick + 30, time.ticks[i]).ptr;
        *tick_end = '\n';
        out.write({tick, static_cast<std::size_t>(tick_end + 1 - tick)});
        out.write(text);
    }
}

}  // namespace cli
