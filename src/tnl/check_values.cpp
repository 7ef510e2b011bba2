#include "tnl/check_values.h"

#include <cmath>
#include <limits>

namespace cli {

namespace {

constexpr double inf = std::numeric_limits<double>::infinity();

// Values from `low` to `high`, both included, raise no doubt. `sign`: 0 any, 1 above zero, 2 zero or above.
struct unit_range {
    std::string_view unit;
    double low, high;  // of the magnitude, where it is not 0
    int sign;
    bool mega_is_doubtful;  // a value that ends in M was likely meant as m
    const char* text;
};
constexpr unit_range unit_ranges[] = {
    {"F", 0, 1, 1, true, "a capacitance is seldom above 1 F"},
    {"H", 0, 1e3, 1, true, "an inductance is seldom above 1 kH"},
    {"s", 0, 1e6, 0, true, "a time is seldom above 1e6 s"},
    {"ohm", 1e-6, inf, 1, false, "a resistance is seldom below 1 uohm"},
    {"Hz", 0, 1e12, 2, false, "a frequency is seldom above 1 THz"},
    {"K", 0, 1e5, 2, false, "a temperature is in kelvin"},
    {"V", 0, 1e9, 0, false, "a voltage is seldom above 1 GV"},
    {"A", 0, 1e9, 0, false, "a current is seldom above 1 GA"},
};

}  // namespace

void check_unit(checked_deck& d, const element_type& type, const std::string& parameter, deck_word at, double value) {
    const word_doc* doc = find_word(type.doc, parameter);
    if (doc == nullptr) return;
    const std::string word = d.word(at.statement, at.word);
    for (const unit_range& r : unit_ranges) {
        if (r.unit != doc->unit) continue;
        const std::string what = parameter + "=" + word;
        if (r.mega_is_doubtful && word.ends_with('M'))
            d.report.warning("doubtful-value", at, what + " is mega: 1e6 " + doc->unit,
                             "M is 1e6, m is 1e-3, u is 1e-6");
        else if (r.sign == 1 && value < 0)
            d.report.warning("doubtful-value", at, what + " is negative");
        else if (r.sign == 1 && value == 0)
            d.report.warning("doubtful-value", at, what + " is zero");
        else if (r.sign == 2 && value < 0)
            d.report.warning("doubtful-value", at, what + " is negative",
                             r.unit == "K" ? "temperatures are in kelvin" : "");
        else if (value != 0 && (std::abs(value) < r.low || std::abs(value) > r.high))
            d.report.warning("doubtful-value", at, what + ": " + r.text);
        else if (!std::isfinite(value))
            d.report.warning("doubtful-value", at, what + " is no finite number");
    }
}

}  // namespace cli
