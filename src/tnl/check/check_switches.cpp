// Inductors whose current has no way but through switches that conduct one way: there it cannot go on when they open,
// and it cannot change its direction.
#include <algorithm>
#include <map>

#include "tnl/check/check_deck.h"

namespace cli {

namespace {

// What meets at a node.
struct meeting {
    std::vector<int> coils, switches;  // elements, each once
    deck_word at;                      // the first switch's terminal
    bool has_other_way = false;
};

class switch_checks {
public:
    explicit switch_checks(checked_deck& d) : d_(d) {}

    void run() {
        if (std::none_of(d_.sections.solves.begin(), d_.sections.solves.end(),
                         [](const solve_section& s) { return s.type == "trns" || s.type == "ssw"; }))
            return;
        for (const deck_element& e : d_.elements)
            if (carries_current(e) && e.type == nullptr) return;  // it may be the other way
        join_meters();
        for (std::size_t i = 0; i < d_.elements.size(); ++i)
            if (const deck_element& e = d_.elements[i]; carries_current(e))
                for (const type_branch& b : e.type->branches) {
                    const std::string from = node(e, b.from), to = node(e, b.to);
                    if (from == to) continue;
                    if (!from.empty()) add(from, static_cast<int>(i), b, b.from);
                    if (!to.empty()) add(to, static_cast<int>(i), b, b.to);
                }
        for (const auto& [name, m] : meetings_)
            if (!m.has_other_way && !m.coils.empty() && !m.switches.empty()) tell(name, m);
    }

private:
    static bool carries_current(const deck_element& e) {
        const std::string_view word = library_forms[e.library].statement;
        return !e.is_placeholder && (word == "eelement" || word == "gmelement");
    }
    // What one winding cannot carry on goes over to another one.
    static bool is_coupled(const deck_element& e) {
        return std::count_if(e.type->branches.begin(), e.type->branches.end(),
                             [](const type_branch& b) { return b.kind == branch_kind::inductor; }) > 1;
    }
    // A meter of current is a short.
    void join_meters() {
        for (const deck_element& e : d_.elements)
            if (carries_current(e) && e.type_name.starts_with("ammeter"))
                if (const std::string p = node(e, "p"), n = node(e, "n"); !p.empty() && !n.empty() && p != n)
                    same_as_[n] = p;
    }
    // Name of the node at a terminal; empty for one inside the element, where its own parts meet.
    std::string node(const deck_element& e, const std::string& terminal) const {
        std::string name = d_.value(e, terminal);
        for (std::size_t turns = 0; turns <= same_as_.size(); ++turns) {
            const auto next = same_as_.find(name);
            if (next == same_as_.end()) break;
            name = next->second;
        }
        return name;
    }
    void add(const std::string& name, int i, const type_branch& b, const std::string& terminal) {
        meeting& m = meetings_[name];
        const auto once = [i](std::vector<int>& list) {
            if (std::find(list.begin(), list.end(), i) == list.end()) list.push_back(i);
        };
        if (b.kind == branch_kind::inductor && !is_coupled(d_.elements[static_cast<std::size_t>(i)])) {
            once(m.coils);
        } else if (b.kind == branch_kind::one_way) {
            if (m.switches.empty()) {
                const deck_element& e = d_.elements[static_cast<std::size_t>(i)];
                int at = 0;
                d_.value(e, terminal, &at);
                m.at = {e.statement, at};
            }
            once(m.switches);
        } else {
            m.has_other_way = true;
        }
    }
    std::string names(const std::vector<int>& elements) const {
        std::string all;
        for (const int i : elements) all += (all.empty() ? "" : ", ") + d_.elements[static_cast<std::size_t>(i)].name;
        return all;
    }
    void tell(const std::string& name, const meeting& m) {
        const bool many = m.switches.size() > 1;
        d_.report.warning("one-way-switch", m.at,
                          "at node " + name + " the current of " + names(m.coils) + " has no way but through " +
                              names(m.switches) + (many ? ", which conduct" : ", which conducts") +
                              " from p to n alone: it can neither go on while " + (many ? "they are" : "it is") +
                              " off, nor change its direction",
                          "a switch that conducts both ways (switch_bi), one with its diode (mosfet_switch, "
                          "igbt_switch), a leg of them (leg_mosfet, leg_igbt), or a diode_r at that node");
    }

    checked_deck& d_;
    std::map<std::string, std::string> same_as_;
    std::map<std::string, meeting> meetings_;
};

}  // namespace

void check_switches(checked_deck& d) { switch_checks(d).run(); }

}  // namespace cli
