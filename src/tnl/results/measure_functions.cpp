#include "tnl/results/measure_functions.h"

#include <algorithm>
#include <cmath>

#include "tnl/deck/installed.h"
#include "tnl/results/measure.h"

namespace cli {

namespace {

using args = const call_arguments&;

const wave& w(args a) { return a.waves[0]; }
double pp(args a) { return greatest(w(a)) - least(w(a)); }
// An optional number in place i.
double number(args a, std::size_t i, double otherwise) { return a.numbers.size() > i ? a.numbers[i] : otherwise; }
// Where no level is given.
double own_level(const wave& wave) {
    const double x = middle(wave);
    if (std::isnan(x)) throw measure_error("the wave is unknown throughout, so there is no middle that it could cross");
    return x;
}
double level(args a) { return a.numbers.empty() ? own_level(w(a)) : a.numbers[0]; }
double last(args a, std::size_t i) { return number(a, i, w(a).x.back()); }

long long whole(double x, long long from, long long to, const char* what) {
    if (!(x >= static_cast<double>(from) && x <= static_cast<double>(to) && x == std::floor(x)))
        throw measure_error(std::string(what) + " must be a whole number from " + std::to_string(from) + " to " +
                            std::to_string(to));
    return static_cast<long long>(x);
}

double ripple_ratio(args a) {
    const double mean = average(w(a));
    if (mean == 0) throw measure_error("the average is 0, and nothing is a part of it");
    return pp(a) / std::fabs(mean);
}

double settling(args a) {
    const double tolerance = a.numbers[0];
    if (!(tolerance > 0 && tolerance < 1)) throw measure_error("a tolerance lies between 0 and 1: 2% or 0.02");
    return settling_time(w(a), last(a, 1), tolerance);
}

double crossing_time(args a) {
    return nth_crossing(w(a), a.numbers[0], whole(number(a, 1, 1), -1000000000, 1000000000, "n"),
                        static_cast<edge>(a.word));
}

double count(args a) {
    const auto which = static_cast<edge>(a.word);
    const std::vector<crossing> all = crossings(w(a), level(a));
    return static_cast<double>(std::count_if(all.begin(), all.end(), [&](const crossing& c) {
        return which == edge::any || c.rises == (which == edge::rise);
    }));
}

double delay(args a) {
    const double from = nth_crossing(w(a), level(a), 1, static_cast<edge>(a.word));
    for (const crossing& c : crossings(a.waves[1], a.numbers.size() > 1 ? a.numbers[1] : own_level(a.waves[1])))
        if (c.t >= from) return c.t - from;
    throw measure_error("the second wave does not cross its level after the first did");
}

double harm(args a) {
    return harmonic_amplitude(w(a), a.numbers[0], static_cast<int>(whole(a.numbers[1], 0, 1000000, "k")));
}
double thd(args a) {
    return distortion(w(a), a.numbers[0],
                      a.numbers.size() > 1 ? static_cast<int>(whole(a.numbers[1], 2, 10000, "n")) : 0);
}

const response& r(args a) { return a.responses[0]; }
double radians(double degrees) { return degrees * 3.14159265358979323846 / 180; }
double db_of(double x) { return 20 * std::log10(std::fabs(x)); }

constexpr unit_of as_is = unit_of::wave, time_like = unit_of::axis, none = unit_of::none;

// clang-format off
const measure_function functions[] = {
    {"avg", "avg(v[, from, to])", "average", "w", "wnn", as_is, [](args a) { return average(w(a)); }},
    {"rms", "rms(v[, from, to])", "effective value", "w", "wnn", as_is, [](args a) { return rms(w(a)); }},
    {"min", "min(v[, from, to])", "least value", "w", "wnn", as_is, [](args a) { return least(w(a)); }, nullptr, false, {}, false},
    {"max", "max(v[, from, to])", "greatest value", "w", "wnn", as_is, [](args a) { return greatest(w(a)); }, nullptr, false, {}, false},
    {"pp", "pp(v[, from, to])", "from peak to peak; also ripple(...)", "w", "wnn", as_is, pp, nullptr, false, {}, false},
    {"ripple", "ripple(v[, from, to])", "", "w", "wnn", as_is, pp, nullptr, false, {}, false},
    {"ripple_pct", "ripple_pct(v[, from, to])", "the same in % of the average", "w", "wnn", none, ripple_ratio, nullptr, true},
    {"integ", "integ(v[, from, to])", "integral", "w", "wnn", unit_of::wave_times_axis, [](args a) { return integral(w(a)); }},
    {"slope", "slope(v[, from, to])", "change from first to last value over the time between", "w", "wnn", unit_of::wave_per_axis, [](args a) { return slope(w(a)); }},
    {"at", "at(v, t)", "value at t; of a jump there, the later one", "wn", "", as_is, [](args a) { return value_at(w(a), a.numbers[0]); }},
    {"cross", "cross(v, level[, n][, rise|fall|any][, from, to])", "time of the n-th crossing; -1: the last", "wn wnn wne wnne", "wnnn wnnnn wnenn wnnenn", time_like, crossing_time, nullptr, false, "any rise fall"},
    {"count", "count(v[, level][, rise|fall|any][, from, to])", "number of crossings", "w wn we wne", "wnn wnnn wenn wnenn", none, count, nullptr, false, "any rise fall"},
    {"delay", "delay(a[, level_a], b[, level_b][, rise|fall|any][, from, to])", "from a's first such crossing to b's next; levels: both or none", "ww wwe wnwn wnwne", "wwnn wwenn wnwnnn wnwnenn", time_like, delay, nullptr, false, "any rise fall"},
    {"frequency", "frequency(v[, level][, from, to])", "", "w wn", "wnn wnnn", unit_of::per_axis, [](args a) { return 1 / period(w(a), level(a)); }},
    {"freq", "freq(v[, level][, from, to])", "of whole periods between rising crossings; level: the middle; also frequency(...)", "w wn", "wnn wnnn", unit_of::per_axis, [](args a) { return 1 / period(w(a), level(a)); }},
    {"period", "period(v[, level][, from, to])", "its inverse", "w wn", "wnn wnnn", time_like, [](args a) { return period(w(a), level(a)); }},
    {"duty", "duty(v[, level][, from, to])", "part of these periods above the level, 0 to 1", "w wn", "wnn wnnn", none, [](args a) { return duty(w(a), level(a)); }},
    {"rise", "rise(v[, last][, from, to])", "10 % to 90 % of the step from the first value to the last", "w wn", "wnn wnnn", time_like, [](args a) { return rise_time(w(a), last(a, 0)); }},
    {"fall", "fall(v[, last][, from, to])", "90 % to 10 % of it", "w wn", "wnn wnnn", time_like, [](args a) { return fall_time(w(a), last(a, 0)); }},
    {"overshoot", "overshoot(v[, last][, from, to])", "beyond the last value, in % of the step", "w wn", "wnn wnnn", none, [](args a) { return overshoot(w(a), last(a, 0)); }, nullptr, true},
    {"settling", "settling(v, 2%[, last][, from, to])", "until it stays near the last value; % of the farthest from that", "wn wnn", "wnnn wnnnn", time_like, settling},
    {"thd", "thd(v, f0[, n][, from, to])", "all but mean and first harmonic, in % of that; n: harmonics 2..n", "wn wnn", "wnnn wnnnn", none, thd, nullptr, true},
    {"harm", "harm(v, f0, k[, from, to])", "amplitude of harmonic k, over the last whole periods", "wnn", "wnnnn", as_is, harm},
    {"mag", "mag(x[, f])", "magnitude of a small signal, throughout or at f", "w n wn", "", as_is, nullptr, [](double x) { return std::fabs(x); }, false, {}, true, takes::both, [](double m, double) { return m; }},
    {"db", "db(x[, f])", "the same in dB; also of columns and numbers", "w n wn", "", unit_of::decibel, nullptr, db_of, false, {}, true, takes::both, [](double m, double) { return db_of(m); }},
    {"phase", "phase(x[, f])", "its phase in degrees, unwrapped", "w wn", "", unit_of::degrees, nullptr, nullptr, false, {}, true, takes::phase, [](double, double p) { return p; }},
    {"real", "real(x[, f])", "real part; also imag", "w wn", "", as_is, nullptr, nullptr, false, {}, true, takes::phase, [](double m, double p) { return m * std::cos(radians(p)); }},
    {"imag", "imag(x[, f])", "", "w wn", "", as_is, nullptr, nullptr, false, {}, true, takes::phase, [](double m, double p) { return m * std::sin(radians(p)); }},
    {"bandwidth", "bandwidth(x[, low|peak][, from, to])", "where it falls 3 dB below the lowest frequency, or around the peak", "w we", "wnn wenn", time_like, [](args a) { return bandwidth(r(a), a.word == 1); }, nullptr, false, "low peak", true, takes::magnitude},
    {"crossover", "crossover(x[, n][, from, to])", "where the magnitude falls through 1, the n-th time; -1: the last", "w wn", "wnn wnnn", time_like, [](args a) { return crossover(r(a), whole(number(a, 0, 1), -1000000000, 1000000000, "n")); }, nullptr, false, {}, true, takes::magnitude},
    {"gain_margin", "gain_margin(x[, from, to])", "of a loop gain, in dB, where the phase passes 180 degrees", "w", "wnn", unit_of::decibel, [](args a) { return gain_margin(r(a)); }, nullptr, false, {}, true, takes::phase},
    {"phase_margin", "phase_margin(x[, from, to])", "in degrees, where the magnitude passes 1", "w", "wnn", unit_of::degrees, [](args a) { return phase_margin(r(a)); }, nullptr, false, {}, true, takes::phase},
    {"peak", "peak(x[, from, to])", "greatest magnitude, of the parabola through three rows", "w", "wnn", as_is, [](args a) { return peak_of(r(a)).mag; }, nullptr, false, {}, true, takes::magnitude},
    {"peak_freq", "peak_freq(x[, from, to])", "its frequency", "w", "wnn", time_like, [](args a) { return peak_of(r(a)).t; }, nullptr, false, {}, true, takes::magnitude},
    {"q", "q(x[, from, to])", "that over the width of the peak, 3 dB below", "w", "wnn", none, [](args a) { return quality(r(a)); }, nullptr, false, {}, true, takes::magnitude},
    {"abs", "abs(v)", "of each sample or number; also sqrt exp ln log10 sin cos", "w n", "", as_is, nullptr, [](double x) { return std::fabs(x); }, false, {}, true, takes::both},
    {"sqrt", "sqrt(v)", "", "w n", "", none, nullptr, [](double x) { return std::sqrt(x); }},
    {"exp", "exp(v)", "", "w n", "", none, nullptr, [](double x) { return std::exp(x); }},
    {"ln", "ln(v)", "", "w n", "", none, nullptr, [](double x) { return std::log(x); }},
    {"log10", "log10(v)", "", "w n", "", none, nullptr, [](double x) { return std::log10(x); }},
    {"sin", "sin(v)", "", "w n", "", none, nullptr, [](double x) { return std::sin(x); }},
    {"cos", "cos(v)", "", "w n", "", none, nullptr, [](double x) { return std::cos(x); }},
};
// clang-format on

// Position in a list parted by blanks; -1: none.
int place_in(std::string_view list, std::string_view word) {
    for (int i = 0; !list.empty(); ++i) {
        const std::size_t end = std::min(list.find(' '), list.size());
        if (list.substr(0, end) == word) return i;
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return -1;
}
bool among(std::string_view list, std::string_view letters) { return place_in(list, letters) >= 0; }

}  // namespace

std::span<const measure_function> measure_functions() { return functions; }

int find_function(std::string_view name) {
    for (std::size_t i = 0; i < std::size(functions); ++i)
        if (functions[i].name == name) return static_cast<int>(i);
    return -1;
}

std::string near_functions(std::string_view name) {
    std::vector<std::string> known;
    for (const measure_function& f : functions) known.emplace_back(f.name);
    std::string text;
    if (name.size() <= 40)
        for (const std::string& near : near_names(known, name)) text += (text.empty() ? "; near names: " : " ") + near;
    return text;
}

int find_word_of(const measure_function& f, std::string_view word) { return place_in(f.words, word); }

bool has_window(const measure_function& f, std::string_view letters) { return among(f.windows, letters); }
bool has_form(const measure_function& f, std::string_view letters) {
    return among(f.forms, letters) || has_window(f, letters);
}

std::string function_list() {
    std::string text;
    for (const measure_function& f : functions) {
        if (f.text.empty()) continue;
        std::string line = "  " + std::string(f.usage);
        line.resize(std::max<std::size_t>(line.size() + 2, 40), ' ');
        if (line.size() > 40) line += "\n" + std::string(40, ' ');
        text += line + std::string(f.text) + "\n";
    }
    return text;
}

}  // namespace cli
