#include "tnl/check/check_values.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/words.h"

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
    {"vpulse", "tr", 0, inf, false},
    {"vpulse", "tf", 0, inf, false},
    {"vpulse", "pw", 0, inf, false},
    {"ipulse", "tr", 0, inf, false},
    {"ipulse", "tf", 0, inf, false},
    {"ipulse", "pw", 0, inf, false},
    {"pulse", "tr", 0, inf, false},
    {"pulse", "tf", 0, inf, false},
    {"pulse", "pw", 0, inf, false},
    {"step", "dt1", 0, inf, false},
    {"clock", "dt1", 0, inf, false},
    {"clock", "dt2", 0, inf, false},
    {"clock", "g_high", 0, inf, false},
};
// The first must not be above the second, nor equal to it where that is told.
struct order_rule {
    std::string_view element, first, second;
    bool may_be_equal;
};
constexpr order_rule order_rules[] = {
    {"lmtr", "x_min", "x_max", true},
    {"vsrcdc", "t_ramp_1", "t_ramp_2", true},
    {"vsrcac_ramp", "t_ramp_1", "t_ramp_2", true},
    {"cmprtr_hyst_1", "g_low", "g_high", false},
    {"clock", "dt1", "t1", true},
    {"clock", "dt2", "t2", true},
    {"diode_r", "r_on", "r_off", false},
};
// Edges and the time between them must fit into the period, if there is one.
constexpr std::string_view pulses[] = {"vpulse", "ipulse", "pulse"};

// A parameter as the run sees it: the element's own word, that of its model, or the library's value.
struct parameter {
    double x = std::nan("");  // NaN: a constant of the deck, or no such parameter
    deck_word at;
    std::string text;  // "r=0" as it is written
    bool is_written = false;
};

parameter parameter_of(const checked_deck& d, const deck_element& e, std::string_view name) {
    parameter p{std::nan(""), {e.statement, 0}, {}, false};
    if (!has(e.type->rprm, name) && !has(e.type->iprm, name)) return p;
    int at = 0;
    std::string word = d.value(e, name, &at);
    p.at.word = at;
    if (const std::string model = word.empty() ? d.value(e, "model") : ""; !model.empty()) {
        const auto found = d.models.find(std::to_string(e.library) + " " + e.type_name + " " + model);
        for (int j = 5; found != d.models.end() && word.empty() && j + 1 < d.text().n_words(found->second); j += 2)
            if (d.text().word(found->second, j) == name) {
                word = d.word(found->second, j + 1);
                p.at = {found->second, j + 1};
            }
    }
    p.is_written = !word.empty();
    for (const name_and_value& v : e.type->values)
        if (!p.is_written && v.name == name) word = v.value;
    p.text = std::string(name) + "=" + word;
    if (!is_double(word, p.x)) p.x = std::nan("");
    return p;
}

// Words of a composite that stands for one basic element are that element's; those of another may mean anything.
bool stands_for_one(const element_type& type) { return type.basics.size() == 1 && type.basics[0] == type.name; }

bool refuses(const value_rule& r, double x) {
    return !std::isnan(x) && !(x >= r.low && x <= r.high && !(r.not_zero && x == 0));
}

void refuse(checked_deck& d, const element_type& type, deck_word at, const std::string& text) {
    d.report.error("bad-value", at, type.name + " does not take " + text + ": the run would stop",
                   "m is 1e-3, u is 1e-6, M is 1e6");
}

// Times of a line through points ascend, as far as n_pts counts.
void check_points(checked_deck& d, const deck_element& e) {
    const parameter n = parameter_of(d, e, "n_pts");
    for (int k = 2; k <= n.x && k <= 20; ++k) {
        const parameter before = parameter_of(d, e, "t" + std::to_string(k - 1)),
                        now = parameter_of(d, e, "t" + std::to_string(k));
        if (!(now.x < before.x) || !(before.is_written || now.is_written)) continue;
        d.report.error("bad-value", now.is_written ? now.at : before.at,
                       now.text + " is before " + before.text + ": the run would stop");
    }
}

}  // namespace

void check_model_limits(checked_deck& d, const deck_element& e) {
    if (!stands_for_one(*e.type)) return;
    const auto of = [&](std::string_view name) { return parameter_of(d, e, name); };
    // A factor beside the value may bring it back into the limits.
    const bool is_scaled = of("k_scale").is_written;
    for (const std::string& basic : e.type->basics) {
        for (const value_rule& r : value_rules) {
            if (r.element != basic || is_scaled) continue;
            const parameter p = of(r.parameter);
            if (p.is_written && refuses(r, p.x)) refuse(d, *e.type, p.at, p.text);
        }
        for (const order_rule& r : order_rules) {
            if (r.element != basic) continue;
            const parameter first = of(r.first), second = of(r.second);
            if (!first.is_written && !second.is_written) continue;
            if (!(first.x > second.x) && (r.may_be_equal || first.x != second.x)) continue;
            d.report.error("bad-value", first.is_written ? first.at : second.at,
                           first.text + (r.may_be_equal ? " is above " : " is not below ") + second.text +
                               (second.is_written ? "" : " (as not given)") + ": the run would stop");
        }
        if (basic == "pwl20") check_points(d, e);
        if (std::find(std::begin(pulses), std::end(pulses), basic) == std::end(pulses)) continue;
        const parameter tr = of("tr"), pw = of("pw"), tf = of("tf"), per = of("per");
        if (per.x > 0 && tr.x + pw.x + tf.x > per.x * (1 + 1e-9)) {
            const parameter& told = per.is_written ? per : pw.is_written ? pw : tr.is_written ? tr : tf;
            d.report.error(
                "bad-value", told.at,
                tr.text + ", " + pw.text + " and " + tf.text + " do not fit into " + per.text + ": the run would stop",
                "words that are not given have the values told here");
        }
    }
}

void check_item_value(checked_deck& d, deck_word item, deck_word value) {
    const std::string word = d.word(item.statement, item.word);
    const std::size_t of = word.find("_of_");
    double x = 0;
    if (of == std::string::npos || !is_double(d.text().word(value.statement, value.word), x)) return;
    const auto found = d.element_of.find(word.substr(of + 4));
    if (found == d.element_of.end()) return;
    const deck_element& e = d.elements[static_cast<std::size_t>(found->second)];
    if (e.type == nullptr || !stands_for_one(*e.type) || parameter_of(d, e, "k_scale").is_written) return;
    const std::string name = word.substr(0, of);
    if (!has(e.type->rprm, name) && !has(e.type->iprm, name)) return;
    for (const std::string& basic : e.type->basics)
        for (const value_rule& r : value_rules)
            if (r.element == basic && r.parameter == name && refuses(r, x))
                return refuse(d, *e.type, value, name + "=" + d.word(value.statement, value.word));
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
