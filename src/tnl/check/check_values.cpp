#include "tnl/check/check_values.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

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

// A parameter as the run sees it: the element's own word, that of its model, or the library's value.
struct parameter {
    double x = std::nan("");  // NaN: a constant of the deck, or no such parameter
    deck_word at;
    std::string text;  // "r=0" as it is written
    bool is_written = false;
};

parameter parameter_of(const checked_deck& d, const deck_element& e, std::string_view name) {
    parameter p{std::nan(""), {e.statement, 0}, {}, false};
    if (!has(e.type->rprm, name) && !has(e.type->iprm, name) && !has(e.type->start, name)) return p;
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

void refuse(checked_deck& d, const element_type& type, const limit& l, deck_word at, const std::string& text) {
    d.report.error("bad-value", at, type.name + " does not take " + text + ": the run would stop",
                   "it needs " + l.text + "; m is 1e-3, u is 1e-6, M is 1e6");
}

// The first value of the element that breaks a limit, as text with all that the limit is about; none: nothing does.
struct broken_limit {
    deck_word at;
    std::string text;
};
std::optional<broken_limit> broken(const checked_deck& d, const deck_element& e, const limit& l) {
    std::vector<parameter> all;
    for (const std::string& name : l.names) all.push_back(parameter_of(d, e, name));
    const auto told = std::find_if(all.begin(), all.end(), [](const parameter& p) { return p.is_written; });
    if (told == all.end() || !is_broken(l, [&](const std::string& name) {
            return all[static_cast<std::size_t>(std::find(l.names.begin(), l.names.end(), name) - l.names.begin())].x;
        }))
        return {};
    std::string text = told->text;
    for (const parameter& p : all)
        if (&p != &*told && (p.is_written || !l.is_of_one))
            text += " with " + p.text + (p.is_written ? "" : " (as not given)");
    return broken_limit{told->at, text};
}

}  // namespace

bool has_limits(const element_type& type) {
    return type.has_own_limits || (type.basics.size() == 1 && type.basics[0] == type.name);
}

std::string figure(double x) {
    char text[32];
    std::snprintf(text, sizeof text, "%.4g", x);
    return text;
}
std::string seconds(double x) { return figure(x) + " s"; }

double value_of_parameter(const checked_deck& d, const deck_element& e, std::string_view name) {
    const parameter p = parameter_of(d, e, name);
    const std::string word = p.text.substr(std::min(name.size() + 1, p.text.size()));
    if (!std::isnan(p.x) || d.globals.reals.count(word) == 0) return p.x;
    try {
        return d.c.gprm.gprm_double_1(word);
    } catch (const stop&) {
        return std::nan("");
    }
}

void check_model_limits(checked_deck& d, const deck_element& e) {
    if (!has_limits(*e.type)) return;
    for (const limit& l : e.type->limits)
        if (const auto found = broken(d, e, l)) refuse(d, *e.type, l, found->at, found->text);
    int line = 0;  // of the last doubt: one of numbered parameters is enough
    for (const limit& l : e.type->doubts.expects)
        if (const auto found = broken(d, e, l); found && l.line != line) {
            line = l.line;
            d.report.warning("doubtful-value", found->at, e.type->name + " does not expect " + found->text,
                             "it expects " + l.text);
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
    if (e.type == nullptr) return;
    const std::string name = word.substr(0, of);
    check_computed(d, *e.type, name, item);
    if (!has_limits(*e.type)) return;
    for (const limit& l : e.type->limits) {
        if (!l.is_of_one || !has(l.names, name)) continue;
        // A factor beside the value may bring it back into the limits.
        if (std::any_of(l.names.begin(), l.names.end(), [&](const std::string& other) {
                return other != name && parameter_of(d, e, other).is_written;
            }))
            continue;
        if (is_broken(l, [&](const std::string& n) { return n == name ? x : parameter_of(d, e, n).x; }))
            return refuse(d, *e.type, l, value, name + "=" + d.word(value.statement, value.word));
    }
}

void check_computed(checked_deck& d, const element_type& type, const std::string& parameter, deck_word at) {
    if (has(type.computed, parameter))
        d.report.warning("computed", at, type.name + " computes " + parameter + " itself: this value is overwritten",
                         "give what it is computed from; tnl describe " + type.name + " tells it");
}

void check_unit(checked_deck& d, const element_type& type, const std::string& parameter, deck_word at, double value) {
    const auto doc = std::find_if(type.doc.words.begin(), type.doc.words.end(),
                                  [&](const word_doc& w) { return w.word == parameter; });
    if (doc == type.doc.words.end()) return;
    const std::string word = d.word(at.statement, at.word), what = parameter + "=" + word;
    for (const unit_range& r : unit_ranges) {
        if (r.unit != doc->unit) continue;
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
