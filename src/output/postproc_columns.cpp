#include "output/postproc_columns.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

#include "base/at.h"
#include "base/halt.h"
#include "base/line_stream.h"

namespace {
bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

// The rows of a file, for the routine whose name its stops carry.
class row_reader {
public:
    row_reader(const std::string& path, const char* who) : lines_(path, who), path_(path), who_(who) {}

    // The first number of the next row that has one; false behind the last.
    bool next(double& first) {
        for (std::string_view text; lines_.next(text);) {
            ++n_lines_;
            at_ = text.data();
            end_ = at_ + text.size();
            if (!to_word()) continue;
            first = number();
            return true;
        }
        return false;
    }
    // Columns 1, 2, ... of that row: the value of column k goes to to[place[k]], where that is not -1.
    template <class F>
    void read(const std::vector<int>& place, F to) {
        for (std::size_t k = 1; k < place.size(); ++k) {
            if (!to_word()) halt({line(who_, ": file ", path_, " has < ", place.size(), " columns. Halting...")});
            if (place[k] >= 0)
                to(at(place[k]), number());
            else
                at_ = word_end();
        }
    }

private:
    bool to_word() {
        while (at_ < end_ && is_blank(*at_)) ++at_;
        return at_ < end_;
    }
    const char* word_end() const { return std::find_if(at_, end_, is_blank); }
    double number() {
        double value = 0.0;
        const std::from_chars_result got = std::from_chars(at_, end_, value);
        if (got.ec != std::errc() || (got.ptr < end_ && !is_blank(*got.ptr)))
            halt({line(who_, ": file ", path_, ", line ", n_lines_, ": ", std::string_view(at_, word_end()),
                       " is no number. Halting...")});
        at_ = got.ptr;
        return value;
    }

    line_stream lines_;
    std::string path_;
    const char* who_;
    long long n_lines_ = 0;
    const char *at_ = nullptr, *end_ = nullptr;  // what is left of the row
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
