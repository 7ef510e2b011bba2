// Digital nodes: each has one output that drives it. Clocks that the steps of an analog part cannot follow.
#include <algorithm>
#include <cmath>

#include "base/words.h"
#include "tnl/check/check_solves.h"
#include "tnl/common/halt.h"
#include "tnl/common/near_words.h"

namespace cli {

namespace {

struct use {
    int element;
    deck_word at;
};
struct digital_node {
    std::vector<use> drivers, readers;
    bool electrical = true;  // stands at electrical elements alone
};

// Nodes that a block sets at its begin: they need no output.
std::set<std::string> set_nodes(const checked_deck& d) {
    std::set<std::string> names;
    for (const solve_section& s : d.sections.solves)
        for (int i = s.range.begin; i < s.range.end; ++i)
            for (int j = 1; d.text().begins(i, "set_dgtl") && j < d.text().n_words(i); j += 2)
                names.insert(d.word(i, j));
    return names;
}

// A parameter as the statement, or else the library, gives it; NaN: not known.
double parameter(const checked_deck& d, const deck_element& e, std::string_view word) {
    std::string text = d.value(e, word);
    for (const name_and_value& p : e.type->values)
        if (text.empty() && p.name == word) text = p.value;
    double x = NAN;
    if (is_double(text, x)) return x;
    try {
        return d.globals.reals.count(text) ? d.c.gprm.gprm_double_1(text) : NAN;
    } catch (const stop&) {
        return NAN;
    }
}

std::string seconds(double x) {
    char text[32];
    std::snprintf(text, sizeof text, "%.4g s", x);
    return text;
}

// The shorter time between two edges of a clock; NaN: no clock, or not known.
double shortest_phase(const checked_deck& d, const deck_element& e) {
    if (e.type == nullptr || e.type->basics.size() != 1) return NAN;
    const std::string& basic = e.type->basics[0];
    if (basic == "clock" || basic == "clock_random") return std::min(parameter(d, e, "t1"), parameter(d, e, "t2"));
    if (basic != "clock1") return NAN;
    const double duty = parameter(d, e, "duty");
    return std::min(duty, 1 - duty) / parameter(d, e, "f_hz");
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
    std::map<std::string, digital_node> nodes;
    bool unsure = false;  // an element of unknown type may drive anything
    for (int i = 0; i < static_cast<int>(d.elements.size()); ++i) {
        const deck_element& e = d.elements[static_cast<std::size_t>(i)];
        if (e.is_placeholder) continue;
        if (e.type == nullptr) {
            unsure = true;
            continue;
        }
        for (const std::string& word : e.type->digital) {
            int at = 0;
            const std::string name = d.value(e, word, &at);
            if (name.empty()) continue;
            const use u{i, {e.statement, at}};
            if (has(e.type->driven, word)) nodes[name].drivers.push_back(u);
            if (has(e.type->reads, word)) nodes[name].readers.push_back(u);
            if (e.library != lib_eels) nodes[name].electrical = false;
        }
    }
    const auto name_of = [&](const use& u) { return d.elements[static_cast<std::size_t>(u.element)].name; };
    const std::set<std::string> given = set_nodes(d);
    std::vector<std::string> driven;
    for (const auto& [name, node] : nodes)
        if (!node.drivers.empty()) driven.push_back(name);
    for (const auto& [name, node] : nodes) {
        for (std::size_t k = 1; k < node.drivers.size(); ++k)
            d.report.warning("driven-twice", node.drivers[k].at,
                             "digital node " + name + " is driven by " + name_of(node.drivers[0]) + " and by " +
                                 name_of(node.drivers[k]),
                             "a digital node has one output; a gate or a selector brings two together");
        if (node.drivers.empty() && !node.readers.empty() && !unsure && node.electrical)
            d.report.error("not-driven", node.readers[0].at,
                           "no digital element is at the digital node " + name + ", which " + name_of(node.readers[0]) +
                               " reads" + near_text(driven, name),
                           "delement type=dsrc y0=1 gives it a fixed level");
        else if (node.drivers.empty() && !node.readers.empty() && !unsure && !given.count(name))
            d.report.warning("not-driven", node.readers[0].at,
                             "nothing drives the digital node " + name + ", which " + name_of(node.readers[0]) +
                                 " reads: it stays unknown" + near_text(driven, name),
                             "delement type=dsrc y0=1 gives it a fixed level, set_dgtl in a block its first one");
    }
}

void check_clocks(checked_deck& d, const solve_section& s, const solve_class& slv, deck_word at_end) {
    const bool mixed = !is_digital_alone(d);
    double n_edges = 0;
    const deck_element* most = nullptr;
    for (const deck_element& e : d.elements) {
        const double phase = shortest_phase(d, e);
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
