#include "tnl/check_values.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "run/words.h"

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

// Values that the model of a basic element takes; it stops the run at others.
struct value_rule {
    std::string_view element, parameter;
    double low, high;  // both allowed
    bool not_zero;
};
constexpr double tiny = 1e-9;  // ohm
constexpr value_rule value_rules[] = {
    {"r", "r", tiny * 1.0000001, inf, false},
    {"r_time", "r1", tiny * 1.0000001, inf, false},
    {"r_time", "r2", tiny * 1.0000001, inf, false},
    {"r_pot", "a", 1e-6, 1 - 1e-6, false},
    {"diode_r", "r_on", tiny, inf, false},
    {"diode_r", "r_off", tiny, inf, false},
    {"thyristor_g", "r_on", tiny, inf, false},
    {"thyristor_g", "r_off", tiny, inf, false},
    {"switch_e", "r_on", -inf, inf, true},
    {"switch_e", "v_on", 0, inf, false},
    {"switch_g1", "r_on", -inf, inf, true},
    {"switch_g1", "v_on", 0, inf, false},
    {"c1", "c", -inf, inf, true},
    {"l", "l", -inf, inf, true},
    {"xfmr", "l1", 0, inf, true},
    {"xfmr", "l2", 0, inf, true},
    {"xfmr", "k", -1 + 1e-15, 1 - 1e-15, false},
    {"sampler1", "t_smp", 0, inf, true},
    {"triangle_1", "per", 0, inf, true},
    {"lag_1", "tau", -inf, inf, true},
    {"divscl", "k", -inf, inf, true},
    {"filter_z0_p1", "b1", -inf, inf, true},
    {"filter_z1_p1", "b1", -inf, inf, true},
    {"filter_z2_p2", "b2", -inf, inf, true},
    {"pwl20", "n_pts", 1, 20, false},
};
// The first must not be above the second.
struct order_rule {
    std::string_view element, first, second;
};
constexpr order_rule order_rules[] = {
    {"lmtr", "x_min", "x_max"},
    {"vsrcdc", "t_ramp_1", "t_ramp_2"},
    {"vsrcac_ramp", "t_ramp_1", "t_ramp_2"},
    {"cmprtr_hyst_1", "g_low", "g_high"},
    {"clock", "dt1", "t1"},
    {"clock", "dt2", "t2"},
    {"diode_r", "r_on", "r_off"},
};

}  // namespace

void check_model_limits(checked_deck& d, const deck_element& e) {
    const auto value = [&](std::string_view parameter, double& x, int& at) {
        return (has(e.type->rprm, parameter) || has(e.type->iprm, parameter)) &&
               is_double(d.value(e, parameter, &at), x);
    };
    double x = 0, y = 0;
    int at = 0, at_2 = 0;
    for (const std::string& basic : e.type->basics) {
        for (const value_rule& r : value_rules) {
            // A factor beside the value may bring it back into the limits.
            if (r.element != basic || !value(r.parameter, x, at) || !d.value(e, "k_scale").empty()) continue;
            if (x >= r.low && x <= r.high && !(r.not_zero && x == 0)) continue;
            d.report.error("bad-value", {e.statement, at},
                           e.type->name + " does not take " + std::string(r.parameter) + "=" + d.word(e.statement, at) +
                               ": the run would stop",
                           "m is 1e-3, u is 1e-6, M is 1e6");
        }
        for (const order_rule& r : order_rules)
            if (r.element == basic && value(r.first, x, at) && value(r.second, y, at_2) && x > y)
                d.report.error("bad-value", {e.statement, at},
                               std::string(r.first) + "=" + d.word(e.statement, at) + " is above " +
                                   std::string(r.second) + "=" + d.word(e.statement, at_2) + ": the run would stop");
    }
}

void check_unit(checked_deck& d, const element_type& type, const std::string& parameter, deck_word at, double value) {
    const auto doc = std::find_if(type.doc.words.begin(), type.doc.words.end(),
                                  [&](const word_doc& w) { return w.word == parameter; });
    if (doc == type.doc.words.end()) return;
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
