#include "output/postproc_columns.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

#include "base/at.h"
#include "base/halt.h"
#include "base/line_stream.h"

namespace {
constexpr std::string_view blanks = " \t\r";

// Cuts the next word off the line; empty behind the last one.
std::string_view next_word(std::string_view& rest) {
    const std::size_t begin = std::min(rest.find_first_not_of(blanks), rest.size());
    const std::size_t end = std::min(rest.find_first_of(blanks, begin), rest.size());
    const std::string_view word = rest.substr(begin, end - begin);
    rest.remove_prefix(end);
    return word;
}

// The rows of a file, for the routine whose name its stops carry.
class row_reader {
public:
    row_reader(const std::string& path, const char* who) : lines_(path, who), path_(path), who_(who) {}

    // The first number of the next row that has one; false behind the last.
    bool next(double& first) {
        for (std::string_view text; lines_.next(text);) {
            ++n_lines_;
            rest_ = text;
            if (const std::string_view word = next_word(rest_); !word.empty()) {
                first = number(word);
                return true;
            }
        }
        return false;
    }
    // Columns 1, 2, ... of that row: the value of column k goes to to[place[k]], where that is not -1.
    template <class F>
    void read(const std::vector<int>& place, F to) {
        for (std::size_t k = 1; k < place.size(); ++k) {
            const std::string_view word = next_word(rest_);
            if (word.empty()) halt({line(who_, ": file ", path_, " has < ", place.size(), " columns. Halting...")});
            if (place[k] >= 0) to(at(place[k]), number(word));
        }
    }

private:
    double number(std::string_view word) const {
        double value = 0.0;
        const std::from_chars_result end = std::from_chars(word.data(), word.data() + word.size(), value);
        if (end.ec != std::errc() || end.ptr != word.data() + word.size())
            halt({line(who_, ": file ", path_, ", line ", n_lines_, ": ", word, " is no number. Halting...")});
        return value;
    }

    line_stream lines_;
    std::string path_;
    const char* who_;
    long long n_lines_ = 0;
    std::string_view rest_;
};

// [column] which of the columns asked for it is; -1: none. Each is asked for once.
std::vector<int> places_of(const std::vector<int>& columns) {
    std::vector<int> place(columns.empty() ? 1 : at(*std::max_element(columns.begin(), columns.end())) + 1, -1);
    for (std::size_t j = 0; j < columns.size(); ++j) place[at(columns[j])] = static_cast<int>(j);
    return place;
}
}  // namespace

std::size_t file_count_lines_trns_1(const std::string& path, double t_start, double t_end) {
    row_reader rows(path, "file_count_lines_trns_1");
    std::size_t n = 0;
    for (double t; rows.next(t);) n += t >= t_start && t <= t_end;
    return n;
}

trns_columns file_trns_get_col(const std::string& path, double t_start, double t_end, const std::vector<int>& columns) {
    const std::vector<int> place = places_of(columns);
    const std::size_t n = file_count_lines_trns_1(path, t_start, t_end);
    trns_columns got;
    got.t.reserve(n);
    got.x.resize(columns.size());
    for (std::vector<double>& x : got.x) x.reserve(n);
    row_reader rows(path, "file_trns_get_col");
    for (double t; rows.next(t);) {
        if (!(t >= t_start && t <= t_end)) continue;
        got.t.push_back(t);
        rows.read(place, [&](std::size_t j, double value) { got.x[j].push_back(value); });
    }
    return got;
}

void check_trns_1(double t_start, double t_end, const std::vector<double>& t) {
    constexpr double steps_allowed = 1.01;
    double largest = 0.0;
    for (std::size_t i = 1; i < t.size(); ++i) {
        if (t[i] < t[i - 1])
            halt({line("check_trns_1: the time falls from ", t[i - 1], " to ", t[i], "."), "  Halting..."});
        largest = std::max(largest, t[i] - t[i - 1]);
    }
    if (t.size() == 1) return;
    const auto near = [&](double a, double b) { return std::abs(a - b) <= steps_allowed * largest; };
    if (t.empty() || !near(t.front(), t_start)) halt({"check_trns_1: t[0] is too far from t_start."});
    if (!near(t.back(), t_end)) halt({"check_trns_1: t[n-1] is too far from t_end."});
}

ac_columns file_ac_get_col(const std::string& path, const std::vector<int>& columns) {
    const std::vector<int> place = places_of(columns);
    row_reader rows(path, "file_ac_get_col");
    ac_columns got;
    double first = 0.0;
    if (!rows.next(first)) return got;
    got.x.resize(columns.size());
    rows.read(place, [&](std::size_t j, double value) { got.x[j] = value; });
    got.single = !rows.next(first);
    return got;
}
