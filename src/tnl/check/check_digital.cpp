// Digital nodes: each has one output that drives it. Clocks that the steps of an analog part cannot follow.
#include <algorithm>
#include <cmath>
#include <utility>

#include "base/words.h"
#include "tnl/check/check_solves.h"
#include "tnl/check/check_uses.h"
#include "tnl/check/check_values.h"
#include "tnl/common/halt.h"
#include "tnl/common/near_words.h"

namespace cli {

namespace {

// Nodes that a block sets at its begin: they need no output.
std::set<std::string> set_nodes(const checked_deck& d) {
    std::set<std::string> names;
    for (const solve_section& s : d.sections.solves)
        for (int i = s.range.begin; i < s.range.end; ++i)
            for (int j = 1; d.text().begins(i, "set_dgtl") && j < d.text().n_words(i); j += 2)
                names.insert(d.word(i, j));
    return names;
}

// How long a clock stays at 1 and at 0; NaN: no clock, or not known.
struct clock_times {
    double high = NAN, low = NAN;
    double shorter() const { return std::min(high, low); }
};
clock_times times_of(const checked_deck& d, const deck_element& e) {
    if (e.type == nullptr || e.type->basics.size() != 1) return {};
    const std::string& basic = e.type->basics[0];
    const auto value = [&](std::string_view name) { return value_of_parameter(d, e, name); };
    clock_times t;
    if (basic == "clock" || basic == "clock_random") t = {value("t1"), value("t2")};
    if (basic == "clock1") t = {value("duty") / value("f_hz"), (1 - value("duty")) / value("f_hz")};
    if (value("pol") != 1) std::swap(t.high, t.low);
    return t;
}

const deck_element& element(const checked_deck& d, const name_use& u) {
    return d.elements[static_cast<std::size_t>(u.element)];
}

void check_drivers(checked_deck& d, const used_names& nodes) {
    const std::set<std::string> given = set_nodes(d);
    std::vector<std::string> driven;
    for (const auto& [name, uses] : nodes.of)
        if (std::any_of(uses.begin(), uses.end(), [](const name_use& u) { return u.writes; })) driven.push_back(name);
    for (const auto& [name, uses] : nodes.of) {
        const name_use *driver = nullptr, *reader = nullptr;
        bool electrical = true;  // stands at electrical elements alone
        for (const name_use& u : uses) {
            electrical = electrical && element(d, u).library == lib_eels;
            if (u.reads && reader == nullptr) reader = &u;
            if (u.writes && driver != nullptr)
                d.report.warning("driven-twice", u.at,
                                 "digital node " + name + " is driven by " + element(d, *driver).name + " and by " +
                                     element(d, u).name,
                                 "a digital node has one output; a gate or a selector brings two together");
            else if (u.writes)
                driver = &u;
        }
        if (driver != nullptr || reader == nullptr || nodes.unsure) continue;
        const std::string what = "the digital node " + name + ", which " + element(d, *reader).name + " reads";
        if (electrical)
            d.report.error("not-driven", reader->at, "no digital element is at " + what + near_text(driven, name),
                           "delement type=dsrc y0=1 gives it a fixed level");
        else if (!given.count(name))
            d.report.warning("not-driven", reader->at,
                             "nothing drives " + what + ": it stays unknown" + near_text(driven, name),
                             "delement type=dsrc y0=1 gives it a fixed level, set_dgtl in a block its first one");
    }
}

// The element that drives a node alone; nullptr: none, or several.
const deck_element* driver_of(const checked_deck& d, const used_names& nodes, const std::string& name) {
    const auto found = nodes.of.find(name);
    const deck_element* driver = nullptr;
    if (found == nodes.of.end()) return nullptr;
    for (const name_use& u : found->second)
        if (u.writes && std::exchange(driver, &element(d, u)) != nullptr) return nullptr;
    return driver;
}

// Whether some block sets or sweeps PARAMETER_of_ELEMENT.
bool is_set_in_blocks(const checked_deck& d, const std::string& item) {
    return std::any_of(d.sections.solves.begin(), d.sections.solves.end(), [&](const solve_section& s) {
        for (int i = s.range.begin; i < s.range.end; ++i)
            for (int j = 1; j < d.text().n_words(i); ++j)
                if (d.text().word(i, j) == item) return true;
        return false;
    });
}

// Whether the node is at 1 throughout, from a source without edges.
bool is_always_1(const checked_deck& d, const used_names& nodes, const std::string& name) {
    const deck_element* source = driver_of(d, nodes, name);
    return source != nullptr && source->type->basics == std::vector<std::string>{"dsrc"} &&
           value_of_parameter(d, *source, "y0") == 1 && value_of_parameter(d, *source, "n_edges") == 0 &&
           !is_set_in_blocks(d, "y0_of_" + source->name) && !is_set_in_blocks(d, "n_edges_of_" + source->name);
}

// Set and reset inputs that stand at 1: a start-up does not look at them.
void check_held(checked_deck& d, const deck_element& e, const used_names& nodes, bool starts_up) {
    const auto is_held = [&](const std::string& input) { return is_always_1(d, nodes, d.value(e, input)); };
    int at = 0;
    for (const excluded_pair& p : e.type->doubts.excluded)
        if (is_held(p.a) && is_held(p.b)) {
            d.value(e, p.b, &at);
            d.report.warning("set-and-reset", {e.statement, at},
                             p.a + " and " + p.b + " of " + e.name +
                                 " are both 1 throughout: it stops the run as soon " + "as it looks at them",
                             "delement type=dsrc y0=0 is a level that does nothing");
            return;
        }
    for (const forced_start& f : e.type->doubts.forced) {
        if (!starts_up || !is_held(f.input) || is_set_in_blocks(d, f.start + "_of_" + e.name)) continue;
        double wanted = NAN;
        if (!is_double(f.value, wanted)) wanted = value_of_parameter(d, e, f.value);
        const double start = value_of_parameter(d, e, f.start);
        if (std::isnan(start) || std::isnan(wanted) || start == wanted) continue;
        d.value(e, f.input, &at);
        d.report.warning("start-value", {e.statement, at},
                         "a start-up leaves " + e.name + " at " + f.start + "=" + figure(start) + " although " +
                             f.input + " is 1 throughout: it follows when another of its inputs changes",
                         f.start + "=" + figure(wanted));
    }
}

// Delays beyond what a clock at an input allows. A clock at random has a phase of any length.
void check_delay(checked_deck& d, const deck_element& e, const used_names& nodes) {
    for (const lost_pulses& l : e.type->doubts.lost) {
        const deck_element* clock = driver_of(d, nodes, d.value(e, l.input));
        if (clock == nullptr || has(clock->type->basics, "clock_random")) continue;
        const clock_times t = times_of(d, *clock);
        const bool of_edges = l.what == lost_pulses::kind::edges;
        const double bound = of_edges                            ? (t.high + t.low) / 2
                             : l.what == lost_pulses::kind::high ? t.high
                             : l.what == lost_pulses::kind::low  ? t.low
                                                                 : t.shorter();
        const double delay = value_of_parameter(d, e, l.delay);
        if (!(delay >= bound * (1 - 1e-9))) continue;
        int at = 0;
        d.value(e, l.delay, &at);
        d.report.warning("long-delay", {e.statement, at},
                         l.delay + " of " + e.name + " is " + seconds(delay) +
                             (of_edges ? ", and half a period of " + clock->name + " is " + seconds(bound) +
                                             ": edges at " + l.input + " may be lost"
                                       : ", and " + clock->name + " turns over after " + seconds(bound) +
                                             ": such pulses at " + l.input + " are lost"),
                         "a shorter delay, or a slower clock");
        return;
    }
}

}  // namespace

bool is_digital_alone(const checked_deck& d) {
    if (d.is_built) return d.c.cct.flag_purely_digital;
    bool any = false;
    for (const deck_element& e : d.elements) {
        if (e.is_placeholder || e.library == lib_gels) continue;
        if (e.library != lib_dels) return false;
        any = true;
    }
    return any;
}

void check_digital(checked_deck& d) {
    const used_names nodes = names_used(d, &element_type::digital);
    check_drivers(d, nodes);
    const bool starts_up = std::any_of(d.sections.solves.begin(), d.sections.solves.end(),
                                       [](const solve_section& s) { return s.type == "startup"; });
    for (const deck_element& e : d.elements) {
        if (e.type == nullptr || e.is_placeholder || !has_limits(*e.type)) continue;
        check_held(d, e, nodes, starts_up);
        check_delay(d, e, nodes);
    }
}

void check_clocks(checked_deck& d, const solve_section& s, const solve_class& slv, deck_word at_end) {
    const bool mixed = !is_digital_alone(d);
    double n_edges = 0;
    const deck_element* most = nullptr;
    for (const deck_element& e : d.elements) {
        if (e.type == nullptr) continue;
        const double phase = times_of(d, e).shorter();
        if (!(phase > 0)) continue;
        // A clock at random is on the average twice as fast.
        const bool random = e.type->basics[0] == "clock_random";
        const double edges = (s.t_end - s.t_start) / phase * (random ? 2 : 1);
        if (edges > n_edges) n_edges = edges, most = &e;
        const deck_word at{e.statement, 0};
        if (mixed && phase < slv.method.delt_min)
            d.report.warning("fast-clock", at,
                             e.name + " turns over after " + seconds(phase) + ", and delt_min is " +
                                 seconds(slv.method.delt_min) + ": no step of the circuit lies between its edges",
                             "a smaller delt_min, or a slower clock");
        else if (mixed && 10 * phase < slv.method.delt_const)
            d.report.warning("fast-clock", at,
                             e.name + " turns over after " + seconds(phase) + ", and delt_const is " +
                                 seconds(slv.method.delt_const) + ": each edge makes a step of its own",
                             "delt_const near the half of the clock's period");
    }
    if (most != nullptr && n_edges > slv.method.itmax_trns * 1.0001) {
        char text[32];
        std::snprintf(text, sizeof text, "%.0f", n_edges);
        d.report.warning("too-many-steps", at_end,
                         most->name + " has about " + text + " edges in this run, which is cut off after itmax_trns=" +
                             std::to_string(slv.method.itmax_trns) + " events and steps",
                         "method: itmax_trns=" + std::to_string(static_cast<long long>(std::ceil(4 * n_edges))));
    }
}

}  // namespace cli
