#include "tnl/check/check_diagram.h"

#include <algorithm>
#include <cmath>

#include "settings/solve_class.h"
#include "tnl/check/check_stops.h"
#include "tnl/check/check_uses.h"
#include "tnl/common/near_words.h"

namespace cli {

namespace {

constexpr int most_passes = 20;        // of the search for an order
constexpr std::size_t most_named = 8;  // blocks that a message names

const deck_element& element(const checked_deck& d, const name_use& u) {
    return d.elements[static_cast<std::size_t>(u.element)];
}

// Nodes of circuits of explicit elements: their values come of the whole.
std::set<std::string> circuit_nodes(const checked_deck& d) {
    std::set<std::string> nodes;
    for (const deck_element& e : d.elements)
        if (e.type != nullptr && !e.is_placeholder)
            for (const std::string& word : e.type->x_node) nodes.insert(d.value(e, word));
    return nodes;
}

std::set<std::string> asked_for(const checked_deck& d) {
    std::set<std::string> names;
    for (int i = d.sections.circuit.begin; i < d.sections.circuit.end; ++i)
        for (int j = 2; is_outvar(d.text(), i) && j < d.text().n_words(i); j += 2)
            for (const std::string_view quantity : {"xvar_of_", "xvar_ac_of_"})
                if (d.text().word(i, j).starts_with(quantity))
                    names.insert(std::string(d.text().word(i, j).substr(quantity.size())));
    return names;
}

void check_computed_once(checked_deck& d, const used_names& used) {
    const std::set<std::string> nodes = circuit_nodes(d), asked = asked_for(d);
    std::vector<std::string> computed;
    std::set<const deck_element*> useful;  // some output is read: of a machine not all of them need be
    for (const auto& [name, uses] : used.of) {
        const auto writes = [](const name_use& u) { return u.writes; };
        if (std::any_of(uses.begin(), uses.end(), writes)) computed.push_back(name);
        if (asked.count(name) == 0 && std::all_of(uses.begin(), uses.end(), writes)) continue;
        for (const name_use& u : uses)
            if (u.writes) useful.insert(&element(d, u));
    }
    for (const auto& [name, uses] : used.of) {
        if (nodes.count(name)) continue;
        const name_use *writer = nullptr, *reader = nullptr;
        for (const name_use& u : uses) {
            if (!u.writes) {
                if (reader == nullptr) reader = &u;
            } else if (writer != nullptr) {
                d.report.error("written-twice", u.at,
                               "variable " + name + " is computed by " + element(d, *writer).name + " and by " +
                                   element(d, u).name,
                               "a variable is the output of one block; sum_2 adds two");
            } else {
                writer = &u;
            }
        }
        if (used.unsure) continue;
        if (writer == nullptr && reader != nullptr)
            d.report.error("not-written", reader->at,
                           "no block computes the variable " + name + ", which " + element(d, *reader).name + " reads" +
                               near_text(computed, name),
                           "is the name misspelt? xelement type=const gives a variable a fixed value");
        else if (writer != nullptr && reader == nullptr && asked.count(name) == 0 &&
                 !useful.count(&element(d, *writer)) && !has_lost_outvars(d) &&
                 element(d, *writer).type->x_node.empty())  // a current of a network is seldom asked for
            d.report.warning("not-read", writer->at, "nobody reads the variable " + name);
    }
}

// A circuit of explicit elements has a node at 0 V of its own.
void check_reference(checked_deck& d, const std::set<std::string>& nodes) {
    for (int i = d.sections.circuit.begin; i < d.sections.circuit.end; ++i) {
        if (!d.text().begins(i, "x_refnode")) continue;
        if (const std::string name = d.text().n_words(i) > 1 ? d.word(i, 1) : ""; !nodes.count(name))
            d.report.error("no-reference", {i, d.text().n_words(i) > 1 ? 1 : 0},
                           "no explicit element stands at the reference node " + name +
                               near_text({nodes.begin(), nodes.end()}, name));
        return;
    }
    for (const deck_element& e : d.elements)
        if (e.type != nullptr && !e.type->x_node.empty()) {
            d.report.error("no-reference", {e.statement, 0},
                           "the circuit of explicit elements has no x_refnode statement: no node is at 0 V",
                           "add a line: x_refnode " + d.value(e, e.type->x_node.back()));
            return;
        }
}

// The evaluate blocks of the deck, those inside of composites too, and which of them each needs.
struct evaluation {
    struct block {
        int element;
        std::vector<int> needs;  // blocks that compute its inputs
        int pass = 0;            // 1 ...; 0: not yet
    };
    std::vector<block> blocks;
};

evaluation evaluation_of(const checked_deck& d) {
    evaluation all;
    std::map<std::string, int> writer;             // of a variable; blocks with a state, and sources, have none
    std::vector<std::vector<std::string>> inputs;  // of each block
    for (int i = 0; i < static_cast<int>(d.elements.size()); ++i) {
        const deck_element& e = d.elements[static_cast<std::size_t>(i)];
        if (e.type == nullptr || e.is_placeholder) continue;
        const auto name_of = [&](const std::string& word) {  // words of its own inside
            return word.starts_with('\x01') ? std::to_string(i) + word : d.value(e, word);
        };
        for (const type_block& b : e.type->blocks) {
            if (b.how != type_block::kind::evaluate || b.in.empty()) continue;
            for (const std::string& word : b.out) writer.emplace(name_of(word), static_cast<int>(all.blocks.size()));
            all.blocks.push_back({i, {}, 0});
            inputs.emplace_back();
            for (const std::string& word : b.in) inputs.back().push_back(name_of(word));
        }
    }
    for (std::size_t k = 0; k < all.blocks.size(); ++k)
        for (const std::string& name : inputs[k])
            if (const auto w = writer.find(name); w != writer.end()) all.blocks[k].needs.push_back(w->second);
    return all;
}

// Gives each block that can be evaluated its pass; the number of passes.
int number_passes(evaluation& all) {
    std::vector<int> open(all.blocks.size(), 0), now;
    std::vector<std::vector<int>> readers(all.blocks.size());
    for (int k = 0; k < static_cast<int>(all.blocks.size()); ++k) {
        for (const int w : all.blocks[static_cast<std::size_t>(k)].needs) {
            readers[static_cast<std::size_t>(w)].push_back(k);
            ++open[static_cast<std::size_t>(k)];
        }
        if (open[static_cast<std::size_t>(k)] == 0) now.push_back(k);
    }
    int pass = 0;
    while (!now.empty()) {
        ++pass;
        std::vector<int> next;
        for (const int k : now) {
            all.blocks[static_cast<std::size_t>(k)].pass = pass;
            for (const int r : readers[static_cast<std::size_t>(k)])
                if (--open[static_cast<std::size_t>(r)] == 0) next.push_back(r);
        }
        now.swap(next);
    }
    return pass;
}

// Blocks against the flow, from one on to one that it needs: one that is not evaluated, or of the pass before. Ends
// where there is none, or at a block that was there.
std::vector<int> walk_back(const evaluation& all, int from) {
    std::vector<int> path;
    std::vector<char> seen(all.blocks.size(), 0);
    for (int k = from; k >= 0;) {
        path.push_back(k);
        const evaluation::block& b = all.blocks[static_cast<std::size_t>(k)];
        if (seen[static_cast<std::size_t>(k)]++ != 0) break;
        const auto before = std::find_if(b.needs.begin(), b.needs.end(), [&](int w) {
            const int pass = all.blocks[static_cast<std::size_t>(w)].pass;
            return b.pass == 0 ? pass == 0 : pass == b.pass - 1;
        });
        k = before == b.needs.end() ? -1 : *before;
    }
    return path;
}

// Elements of blocks in the direction of the flow, those of one instance behind one another once.
std::vector<int> elements_of(const evaluation& all, const std::vector<int>& path) {
    std::vector<int> elements;
    for (auto k = path.rbegin(); k != path.rend(); ++k) {
        const int e = all.blocks[static_cast<std::size_t>(*k)].element;
        if (elements.empty() || elements.back() != e) elements.push_back(e);
    }
    return elements;
}

std::string names_with_lines(const checked_deck& d, const std::vector<int>& elements) {
    std::string text;
    for (std::size_t i = 0; i < elements.size(); ++i) {
        if (elements.size() > most_named + 1 && i == most_named / 2) {
            text += " -> ...";
            i = elements.size() - most_named / 2;
        }
        const deck_element& e = d.elements[static_cast<std::size_t>(elements[i])];
        text += (text.empty() ? "" : " -> ") + e.name + " (line " +
                std::to_string(place_in_files(d.report.deck, e.statement).line) + ")";
    }
    return text;
}

void check_order(checked_deck& d) {
    evaluation all = evaluation_of(d);
    const int n_passes = number_passes(all);
    const auto statement_of = [&](int e) { return d.elements[static_cast<std::size_t>(e)].statement; };
    const auto stuck = std::find_if(all.blocks.begin(), all.blocks.end(), [](const auto& b) { return b.pass == 0; });
    if (stuck != all.blocks.end()) {
        std::vector<int> path = walk_back(all, static_cast<int>(stuck - all.blocks.begin()));
        path.erase(path.begin(), std::find(path.begin(), path.end(), path.back()));  // what hangs behind the circle
        path.pop_back();
        std::vector<int> circle = elements_of(all, path);
        while (circle.size() > 1 && circle.front() == circle.back()) circle.pop_back();
        std::rotate(circle.begin(), std::min_element(circle.begin(), circle.end()), circle.end());
        const int first = circle.front();
        circle.push_back(first);
        d.report.error("algebraic-loop", {statement_of(first), 0},
                       "these blocks need each other at the same time: " + names_with_lines(d, circle),
                       "a state in the circle breaks it: an integrator, a filter, or delay_2");
        return;
    }
    if (n_passes <= most_passes) return;
    const auto last = std::find_if(all.blocks.begin(), all.blocks.end(),
                                   [](const evaluation::block& b) { return b.pass == most_passes + 1; });
    const std::vector<int> row = elements_of(all, walk_back(all, static_cast<int>(last - all.blocks.begin())));
    d.report.error("long-chain", {statement_of(row.back()), 0},
                   "a row of " + std::to_string(n_passes) + " blocks without a state, and the run takes " +
                       std::to_string(most_passes) + ": " + names_with_lines(d, row),
                   "one block in place of several, as sum_3 for two sum_2, or a state between: delay_2");
}

// Explicit blocks and what cannot stand beside them.
void check_company(checked_deck& d) {
    const bool alone = is_explicit_alone(d);
    for (const deck_element& e : d.elements) {
        if (e.type == nullptr || e.is_placeholder) continue;
        if (e.library == lib_dels) {
            d.report.error("kinds-together", {e.statement, 0},
                           "digital elements do not stand beside explicit blocks: " + e.name);
            return;
        }
        if (!alone && e.type->stands_alone)
            d.report.error("kinds-together", {e.statement, e.at_type},
                           e.name + " (" + e.type->name + ") goes with explicit blocks alone",
                           "leave the other elements out, or take another block");
    }
}

}  // namespace

bool has_explicit(const checked_deck& d) {
    return std::any_of(d.elements.begin(), d.elements.end(),
                       [](const deck_element& e) { return e.library == lib_xels && !e.is_placeholder; });
}

bool is_explicit_alone(const checked_deck& d) {
    return has_explicit(d) && std::all_of(d.elements.begin(), d.elements.end(), [](const deck_element& e) {
               return e.library == lib_xels || e.is_placeholder;
           });
}

void check_diagram(checked_deck& d) {
    const used_names used = names_used(d, &element_type::xvar);
    if (!used.of.empty()) check_computed_once(d, used);
    if (!has_explicit(d)) return;
    check_company(d);
    const std::set<std::string> nodes = circuit_nodes(d);
    if (!nodes.empty())
        check_reference(d, nodes);
    else if (!used.unsure)
        check_order(d);
}

void check_explicit_steps(checked_deck& d, solve_section& s, const solve_class& slv, deck_word place) {
    const method_settings& m = slv.method;
    const auto place_of = [&](const std::string& word) {
        const deck_word at = find_in_block(d, s.range.begin, word);
        return at.statement < 0 ? place : at;
    };
    struct rule {
        const char* word;
        truefalse method_settings::*on;
        bool adaptive = false;
    };
    using all = method_settings;
    constexpr rule rules[] = {{"forward_euler", &all::forward_euler},
                              {"modified_euler", &all::modified_euler},
                              {"Heun", &all::Heun},
                              {"RK4", &all::RK4},
                              {"RKF45", &all::RKF45, true},
                              {"BS23", &all::BS23, true}};
    const bool alone = is_explicit_alone(d);
    const rule* first = nullptr;
    for (const rule& r : rules) {
        if (!(m.*r.on)) continue;
        if (first != nullptr)
            d.report.error("two-rules", place_of(r.word),
                           std::string("two rules for the steps of explicit blocks: ") + first->word + " and " + r.word,
                           "a trns block has one");
        else
            first = &r;
        if (r.adaptive && !alone)
            d.report.error(
                "bad-setting", place_of(r.word),
                std::string(r.word) + " chooses its steps, which the elements beside the blocks do not allow",
                "RK4, Heun, modified_euler or forward_euler");
    }
    if (first == nullptr)
        d.report.error("missing-method-word", place, "explicit blocks need a rule for their steps",
                       alone ? "method: RK4=yes, forward_euler, modified_euler, Heun, RKF45 or BS23"
                             : "method: RK4=yes, forward_euler, modified_euler or Heun");
    if (!was_given(slv, "delt_const_x")) {
        d.report.error("missing-method-word", place, "explicit blocks need their time step",
                       "method: delt_const_x=10u");
        return;
    }
    for (const auto& [word, x] :
         {std::pair{"delt_const_x", m.delt_const_x}, {"delt_min_x", m.delt_min_x}, {"delt_max_x", m.delt_max_x}})
        if (was_given(slv, word) && !(x > 0))
            d.report.error("bad-step", place_of(word), std::string(word) + " must be above zero");
    const deck_word at = place_of("delt_const_x");
    if (was_given(slv, "delt_min_x") && m.delt_const_x < m.delt_min_x)
        d.report.error("bad-step", at, "delt_const_x is less than delt_min_x");
    if (!alone) {
        if (m.delt_max > 0 && m.delt_const_x < 4 * m.delt_max)
            d.report.error("bad-step", at, "delt_const_x is below four times delt_max, the longest step of the circuit",
                           was_given(slv, "delt_max") ? "a smaller delt_max"
                                                      : "delt_max is 10 delt_const if not given: method: delt_max=...");
        return;
    }
    if (d.is_built && !d.c.cct.flag_integrator_x && first != nullptr && !m.forward_euler)
        d.report.error("bad-setting", place_of(first->word),
                       "without a block that integrates, forward_euler is the only rule", "method: forward_euler=yes");
    s.longest_step =
        first != nullptr && first->adaptive ? (m.delt_max_x > 0 ? m.delt_max_x : 10 * m.delt_const_x) : m.delt_const_x;
}

}  // namespace cli
