#include "tnl/plot/plot_axis.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace cli {

namespace {

constexpr std::string_view prefixes = "fpnum kMGT";  // 1e-15 ... 1e12
constexpr int least_power = -15, most_power = 12;

bool takes_prefixes(std::string_view unit) {
    for (const std::string_view u : {"s",  "V",  "A", "W", "VA", "var", "Hz", "ohm", "Ohm", "F", "H",
                                     "Wb", "Vs", "T", "J", "C",  "S",   "N",  "Nm",  "Pa",  "As"})
        if (u == unit) return true;
    return false;
}

std::string prefix_of(int power) {  // a multiple of three within the range
    const char c = prefixes[static_cast<std::size_t>((power - least_power) / 3)];
    return c == ' ' ? "" : std::string(1, c);
}

std::string printed(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

std::string fixed(double value, int digits) {
    char text[400];
    std::snprintf(text, sizeof text, "%.*f", digits, value);
    return text;
}

int power_of_1000(double size) { return 3 * static_cast<int>(std::floor(std::log10(size) / 3 + 1e-9)); }

}  // namespace

unit_scale scale_for(double size, std::string_view unit) {
    if (!(size > 0) || !std::isfinite(size)) return {1, std::string(unit)};
    int power = power_of_1000(size);
    const bool known = takes_prefixes(unit);
    if (!known && size >= 1e-3 && size < 1e5) return {1, std::string(unit)};
    if (power < 0 && size / std::pow(10, power) >= 500) power += 3;  // 0.8 V, not 800 mV
    power = std::max(power, -306);
    if (power == 0) return {1, std::string(unit)};
    if (known && power >= least_power && power <= most_power)
        return {std::pow(10, power), prefix_of(power) + std::string(unit)};
    std::string text = "1e" + std::to_string(power);
    if (!unit.empty()) text += " " + std::string(unit);
    return {std::pow(10, power), text};
}

std::string engineering_text(double value) {
    if (value == 0 || !std::isfinite(value)) return printed("%g", value);
    const int power = power_of_1000(std::abs(value));
    if (power < least_power || power > most_power) return printed("%.4g", value);
    const std::string digits = printed("%.4g", value / std::pow(10, power));
    return digits == "1000" && power < most_power ? "1" + prefix_of(power + 3) : digits + prefix_of(power);
}

double axis::place(double v) const {
    if (log) return v > 0 ? std::log10(v / lo) / std::log10(hi / lo) : NAN;
    return (v / 2 - lo / 2) / (hi / 2 - lo / 2);  // halves: the range of the greatest numbers is still a number
}

std::string axis::tick_text(double tick) const {
    if (log) {
        const int power = power_of_1000(tick);
        if (prefixes && power >= least_power && power <= most_power) return engineering_text(tick);
        return tick >= 0.999e-3 && tick < 1e4 ? printed("%.4g", tick) : printed("%.3g", tick);
    }
    double shown = tick / scale.factor;
    if (std::abs(shown) < 1e-9 * step) shown = 0;
    return fixed(shown, std::clamp(static_cast<int>(std::ceil(-std::log10(step) - 1e-9)), 0, 12));
}

namespace {

// The nearest round number, by ratio. Angles go by parts of a turn, decibels by decades.
double step_for(double raw, std::string_view unit) {
    const double least = raw / 1.4, power = std::pow(10, std::floor(std::log10(raw)));
    if (unit == "deg" && least > 10 && least <= 360)
        for (const double step : {15.0, 45.0, 90.0, 180.0, 360.0})
            if (step >= least) return step;
    if (unit == "dB" && least > 20 && least <= 80) return 20 * std::ceil(least / 20);
    for (const double m : {1.0, 2.0, 5.0})
        if (m * power >= least) return m * power;
    return 10 * power;
}

}  // namespace

axis make_axis(double lo, double hi, int n_ticks, std::string_view unit) {
    if (!(std::isfinite(lo) && std::isfinite(hi)) || lo > hi) lo = 0, hi = 1;
    lo = std::max(lo, -1e308);
    hi = std::min(hi, 1e308);
    const double size = std::max(std::abs(lo), std::abs(hi));
    if (hi / 2 - lo / 2 <= 0.5e-9 * size || hi - lo < 1e-300) {  // one value: make room around it
        const double room = size > 1e-290 ? 0.12 * size : 1.2;
        lo -= room;
        hi += room;
    }
    axis a;
    a.lo = lo;
    a.hi = hi;
    a.prefixes = takes_prefixes(unit);
    a.scale = scale_for(std::max(std::abs(lo), std::abs(hi)), unit);
    const double from = lo / a.scale.factor, to = hi / a.scale.factor;
    const double raw = (to - from) / std::max(1, n_ticks);
    a.step = step_for(raw, a.scale.unit);
    for (double k = std::ceil(from / a.step - 1e-9); k * a.step <= to + 1e-9 * a.step; ++k)
        a.ticks.push_back(k * a.step * a.scale.factor);
    return a;
}

axis make_log_axis(double lo, double hi, int n_ticks, std::string_view unit) {
    if (!(lo > 0 && std::isfinite(hi)) || lo > hi) lo = 1, hi = 10;
    lo = std::max(lo, 1e-307);
    hi = std::max(hi, lo);
    if (hi / lo < 1 + 1e-9) lo /= 2, hi *= 2;
    axis a;
    a.lo = lo;
    a.hi = hi = std::min(hi, 1e308);
    a.log = true;
    a.prefixes = takes_prefixes(unit);
    a.scale.unit = unit;
    const int first = static_cast<int>(std::floor(std::log10(lo))), last = static_cast<int>(std::floor(std::log10(hi)));
    const auto inside = [&](double v) { return v >= lo * (1 - 1e-9) && v <= hi * (1 + 1e-9); };
    const int every = 1 + (last - first) / std::max(1, n_ticks);
    const bool wide = std::log10(hi / lo) >= 2 || every > 1;
    for (int power = first; power <= last; ++power)
        for (int m = 1; m < 10; ++m) {
            const double v = m * std::pow(10, power);
            if (!inside(v)) continue;
            const bool named = m == 1 ? power % every == 0 : !wide && (m == 2 || m == 5);
            if (named)
                a.ticks.push_back(v);
            else if (m == 1 || every == 1)
                a.minor.push_back(v);
        }
    if (a.ticks.size() < 2 &&
        hi / lo < 100) {  // a narrow range: ticks as on a linear axis, at their places on this one
        a.minor.clear();
        a.ticks = make_axis(lo, hi, std::max(3, n_ticks)).ticks;
        std::erase_if(a.ticks, [&](double v) { return !inside(v); });
    }
    for (int power = first; a.ticks.empty() && power <= last; ++power)
        if (const double v = std::pow(10, power); inside(v)) a.ticks.push_back(v);
    if (a.ticks.empty()) a.ticks.push_back(lo);
    return a;
}

std::string axis_label(std::string_view quantity, const axis& a) {
    std::string text(quantity);
    if (!text.empty() && !a.scale.unit.empty()) text += ", ";
    return text + a.scale.unit;
}

}  // namespace cli
