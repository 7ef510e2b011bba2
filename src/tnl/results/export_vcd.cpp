// Value change dump: what changes, and when.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>

#include "tnl/common/exit_status.h"
#include "tnl/results/bit_bus.h"
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

// A wire has two levels; a real has more, or only one. A vector has wires, the lowest bit first.
struct signal {
    std::vector<std::size_t> columns;
    bool is_wire = false, is_level = false;
    double low = 0, high = 0;
    std::string id, name;
    std::string range = {};  // " [3:0]"
    std::string shown = {};  // its last change, without id
};

void find_levels(const export_choice& c, std::size_t begin, std::size_t end, signal& s) {
    if (c.table.columns[s.columns[0]].level) {
        s.is_wire = s.is_level = true;
        s.high = 1;
        return;
    }
    int n = 0;
    for (std::size_t row = begin; row < end; ++row) {
        const double x = c.table.at(row, s.columns[0]);
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

// "1", "b0110 ", "r2.5 ": the identifier stands behind it.
std::string change_of(const export_choice& c, const signal& s, std::size_t row) {
    const auto bit = [&](std::size_t column) {
        const double x = c.table.at(row, column);
        if (std::isnan(x) || (s.is_level && x != 0 && x != 1)) return 'x';
        return x == s.high ? '1' : '0';
    };
    if (s.is_wire && s.range.empty()) return std::string(1, bit(s.columns[0]));
    std::string text = s.is_wire ? "b" : "r";
    if (s.is_wire) {
        for (auto j = s.columns.rbegin(); j != s.columns.rend(); ++j) text += bit(*j);
    } else {
        char number[32];
        text.append(number, put_number(number, c.table.at(row, s.columns[0])));
    }
    return text + ' ';
}

// Bits of a number become one vector where that is wished.
std::vector<signal> signals_of(const export_choice& c, std::size_t begin, std::size_t end) {
    std::vector<signal> signals;
    const std::vector<std::size_t> columns(c.columns.begin() + 1, c.columns.end());
    const std::vector<bit_bus> buses = c.buses ? buses_in(c.table, columns) : std::vector<bit_bus>();
    std::vector<std::string> names{reference(c.table.columns[c.columns[0]].name)};
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const auto bus = std::find_if(buses.begin(), buses.end(), [&](const bit_bus& b) {
            return std::find(b.columns.begin(), b.columns.end(), columns[i]) != b.columns.end();
        });
        if (bus != buses.end() && bus->at != i) continue;
        signal s;
        s.columns = {columns[i]};
        std::string name = c.table.columns[columns[i]].name;
        if (bus != buses.end()) {
            s.columns = bus->columns;
            s.range = " [" + std::to_string(bus->high) + ":" + std::to_string(bus->low) + "]";
            name = bus->stem;
        }
        s.id = identifier(signals.size());
        find_levels(c, begin, end, s);
        names.push_back(reference(name));
        signals.push_back(std::move(s));
    }
    names = unique_names(names);
    for (std::size_t i = 0; i < signals.size(); ++i) signals[i].name = names[i + 1];
    return signals;
}

// What the name, the unit and the levels of a wire do not tell.
std::string comments_of(const export_choice& c, const signal& s) {
    const record_column& column = c.table.columns[s.columns[0]];
    const std::string unit = column.unit.empty() ? "" : " " + plain(column.unit);
    std::string text;
    char low[32], high[32];
    if (s.is_wire && !s.is_level)
        text += "$comment " + s.name + ": 0 is " + std::string(low, put_number(low, s.low)) + unit + ", 1 is " +
                std::string(high, put_number(high, s.high)) + unit + " $end\n";
    else if (!unit.empty())
        text += "$comment " + s.name + " in" + unit + " $end\n";
    if (s.range.empty() && s.name != column.name)
        text += "$comment " + s.name + " is column " + plain(column.name) + " $end\n";
    return text;
}

}  // namespace

void write_vcd(const export_choice& c, output_file& out) {
    const std::size_t begin = c.table.first_row[c.first_curve], end = c.table.first_row[c.first_curve + 1];
    const time_line time = time_of(c, begin, end);
    std::vector<signal> signals = signals_of(c, begin, end);

    std::string text;
    if (!c.date.empty()) text += "$date " + plain(c.date) + " $end\n";
    text += "$version tnl $end\n";
    if (!c.title.empty()) text += "$comment " + plain(c.title) + " $end\n";
    for (const signal& s : signals) text += comments_of(c, s);
    text += std::string("$timescale ") + timescales[time.scale] + " $end\n$scope module rows $end\n";
    for (const signal& s : signals)
        text += (s.is_wire ? "$var wire " + std::to_string(s.columns.size()) : "$var real 64") + " " + s.id + " " +
                s.name + s.range + " $end\n";
    text += "$upscope $end\n$enddefinitions $end\n";
    out.write(text);

    const std::size_t n = time.ticks.size();
    char tick[32];
    for (std::size_t i = 0; i < n; ++i) {
        if (i + 1 < n && time.ticks[i + 1] == time.ticks[i]) continue;  // the last of them counts
        const bool is_first = i == 0 || time.ticks[i] == time.ticks[0];
        text.clear();
        if (is_first) text = "$dumpvars\n";
        for (signal& s : signals) {
            const std::string change = change_of(c, s, begin + i);
            if (!is_first && change == s.shown) continue;
            text += change + s.id + '\n';
            s.shown = change;
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
