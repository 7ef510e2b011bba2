// Nodes: the reference, single connections, parts without a path to the reference, loops of voltages, cut sets of
// currents. Found by search in the graph of the elements' branches, without numbers.
#include <algorithm>
#include <functional>
#include <numeric>

#include "tnl/check/check_deck.h"
#include "tnl/common/near_words.h"

namespace cli {

namespace {

constexpr std::size_t most_named = 6;

class union_find {
public:
    explicit union_find(int n) : parent_(static_cast<std::size_t>(n)) { std::iota(parent_.begin(), parent_.end(), 0); }
    int root(int i) {
        while (at(i) != i) i = at(i) = at(at(i));
        return i;
    }
    bool join(int a, int b) {  // false: they were one
        a = root(a);
        b = root(b);
        if (a == b) return false;
        at(a) = b;
        return true;
    }

private:
    int& at(int i) { return parent_[static_cast<std::size_t>(i)]; }
    std::vector<int> parent_;
};

struct graph_branch {
    int element, from, to;
    branch_kind kind;
};
struct graph_node {
    std::string name;    // empty: inside an element
    int n_terminal = 0;  // terminals that carry current
    int n_other = 0;     // sensed, or asked for by an output
    deck_word first;     // where the deck names it first
};

struct deck_graph {
    std::map<std::string, int> number;
    std::vector<graph_node> nodes;
    std::vector<graph_branch> branches;
    int reference = -1;

    int find(const std::string& name) const {
        const auto at = number.find(name);
        return at == number.end() ? -1 : at->second;
    }
    int add(const std::string& name, deck_word at, bool inside = false) {
        const auto [it, is_new] = number.emplace(name, static_cast<int>(nodes.size()));
        if (is_new) nodes.push_back({inside ? std::string() : name, 0, 0, at});
        return it->second;
    }
    int n() const { return static_cast<int>(nodes.size()); }
    graph_node& node(int i) { return nodes[static_cast<std::size_t>(i)]; }
};

// What the graph looks like in one kind of analysis.
struct graph_view {
    const char* solve_type;      // that asks for it; nullptr: every deck
    const char* where;           // in messages
    bool (*joins)(branch_kind);  // does the branch hold its ends together?
    bool (*is_voltage)(branch_kind);
    const char* why_open;  // what the branches do that hold nothing together
};
using k = branch_kind;
constexpr bool is_current(k b) { return b == k::current || b == k::controlled_current; }
constexpr graph_view graph_views[] = {
    {nullptr, "", [](k b) { return !is_current(b); }, [](k b) { return b == k::voltage; }, ""},
    {"dc", "in dc, ", [](k b) { return !is_current(b) && b != k::capacitor; },
     [](k b) { return b == k::voltage || b == k::inductor; }, "capacitors are open in dc"},
    {"startup", "in start-up, ", [](k b) { return !is_current(b) && b != k::inductor; },
     [](k b) { return b == k::voltage || b == k::capacitor; },
     "inductors have a given current in start-up, capacitors a given voltage"},
};

class node_checks {
public:
    explicit node_checks(checked_deck& d) : d_(d) {}

    void run() {
        build();
        find_reference();
        if (g_.n() == 0) return;
        for (const graph_view& v : graph_views) {
            if (v.solve_type != nullptr && !has_block(v.solve_type)) continue;
            voltage_loops(v);
            if (g_.reference >= 0) loose_parts(v);
        }
        single_connections();
    }

private:
    const deck_element& element(int i) const { return d_.elements[static_cast<std::size_t>(i)]; }
    std::string name_of(int i) const { return element(i).name.empty() ? "(no name)" : element(i).name; }
    bool has_block(std::string_view type) const {
        return std::any_of(d_.sections.solves.begin(), d_.sections.solves.end(),
                           [&](const solve_section& s) { return s.type == type; });
    }

    // A statement whose type is unknown may connect any of its words; nothing is to be said about them.
    void add_unknown(int i) {
        const deck_element& e = element(i);
        int first = -1;
        for (const key_value& p : e.pairs) {
            const std::string key = d_.word(e.statement, p.key);
            if (p.value < 0 || key == "name" || key == "type") continue;
            const int node = g_.add(d_.word(e.statement, p.value), {e.statement, p.value});
            g_.node(node).n_terminal += 2;
            unsure_.insert(node);
            if (first < 0) first = node;
            g_.branches.push_back({i, first, node, branch_kind::conducting});
        }
    }
    void add_known(int i) {
        const deck_element& e = element(i);
        const auto number = [&](const std::string& terminal) {
            int at = 0;
            const std::string node = d_.value(e, terminal, &at);
            if (!node.empty()) return g_.add(node, {e.statement, at});
            // Inside the element, or a terminal that is not given.
            return g_.add("\x01" + std::to_string(i) + terminal, {e.statement, 0}, true);
        };
        for (const std::string& terminal : e.type->node) ++g_.node(number(terminal)).n_terminal;
        for (const std::string& terminal : e.type->ind_node) {
            const int node = number(terminal);
            ++g_.node(node).n_other;
            sensed_.insert(node);
        }
        for (const type_branch& b : e.type->branches) {
            if (b.to == reference_end) {
                to_reference_.push_back({i, number(b.from), -1, b.kind});
                continue;
            }
            const int from = number(b.from), to = number(b.to);
            if (from == to && !g_.node(from).name.empty() && b.kind != branch_kind::controlled_current)
                same_node(i, b, from);
            g_.branches.push_back({i, from, to, b.kind});
        }
    }
    void same_node(int i, const type_branch& b, int node) {
        int at = 0;
        d_.value(element(i), b.to, &at);
        const std::string text =
            name_of(i) + " has " + b.from + " and " + b.to + " at the same node " + g_.node(node).name;
        if (b.kind == branch_kind::voltage)
            d_.report.error("voltage-loop", {element(i).statement, at}, text + ": a voltage source that is shorted");
        else
            d_.report.warning("same-node", {element(i).statement, at}, text);
    }

    void build() {
        for (int i = 0; i < static_cast<int>(d_.elements.size()); ++i) {
            const std::string_view word = library_forms[element(i).library].statement;
            if (element(i).is_placeholder) {
                if (element(i).type_name == "ground_dummy") ground_words_.insert(d_.value(element(i), "c"));
                continue;
            }
            if (element(i).type != nullptr)
                add_known(i);
            else if (word == "eelement" || word == "gmelement")
                add_unknown(i);
        }
        const file_chr& f = d_.text();
        for (int i = d_.sections.circuit.begin; i < d_.sections.circuit.end; ++i)
            if (is_outvar(f, i))
                for (int j = 2; j < f.n_words(i); j += 2)
                    for (std::string_view kind : {"nodev_of_", "nodev_ac_of_"})
                        if (f.word(i, j).starts_with(kind))
                            if (const int n = g_.find(std::string(f.word(i, j).substr(kind.size()))); n >= 0)
                                ++g_.node(n).n_other;
    }

    std::vector<std::string> node_names() const {
        std::vector<std::string> names;
        for (const graph_node& n : g_.nodes)
            if (!n.name.empty()) names.push_back(n.name);
        return names;
    }

    void find_reference() {
        const file_chr& f = d_.text();
        int last = -1;
        for (int i = d_.sections.circuit.begin; i < d_.sections.circuit.end; ++i) {
            if (!f.begins(i, "refnode")) continue;
            last = i;
            if (f.n_words(i) < 2) {
                d_.report.error("no-reference", {i, 0}, "refnode needs the name of a node");
                continue;
            }
            const std::string node = d_.word(i, 1);
            const int n = g_.find(node);
            if (n < 0 && !is_ground_word(node))
                d_.report.error(
                    "no-reference", {i, 1},
                    "the reference node " + node + " is used by no element" + near_text(node_names(), node));
            if (n >= 0) g_.reference = n;
        }
        if (last < 0 && g_.n() > 0 && d_.sections.begin_circuit >= 0)
            d_.report.error("no-reference", {d_.sections.begin_circuit, 0},
                            "the circuit has no refnode statement: no node is 0 V" +
                                std::string(g_.find("0") >= 0 ? "; node 0 is one by statement only" : ""),
                            g_.find("0") >= 0 ? "add a line: refnode 0" : "add a line behind this one: refnode NODE");
        if (g_.reference >= 0) other_zeros();
        for (graph_branch b : to_reference_) {
            b.to = g_.reference;
            if (g_.reference >= 0) g_.branches.push_back(b);
        }
        // Ground words are the reference under another name.
        for (const std::string& word : ground_words_)
            if (const int n = g_.find(word); n >= 0 && g_.reference >= 0)
                g_.branches.push_back({-1, g_.reference, n, branch_kind::conducting});
    }
    // A node with a name for zero that is not the reference, as when decks are put together.
    void other_zeros() {
        const auto means_zero = [](std::string name) {
            for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
            return name == "0" || name == "gnd" || name == "ground";
        };
        const std::string& reference = g_.node(g_.reference).name;
        if (!means_zero(reference)) return;
        for (int i = 0; i < g_.n(); ++i) {
            const graph_node& n = g_.node(i);
            if (i == g_.reference || !means_zero(n.name) || is_ground_word(n.name) || unsure_.count(i)) continue;
            d_.report.warning("two-zeros", n.first,
                              "the reference node is " + reference + "; node " + n.name + " is another one, not at 0 V",
                              "one name for both, or eelement name=... type=ground_dummy c=" + n.name);
        }
    }
    bool is_ground_word(const std::string& node) const { return ground_words_.count(node) > 0; }

    static bool is_near_size(const std::string& a, const std::string& b) {
        return std::max(a.size(), b.size()) - std::min(a.size(), b.size()) <= 1;
    }

    void single_connections() {
        for (int i = 0; i < g_.n(); ++i) {
            const graph_node& n = g_.node(i);
            if (n.name.empty() || i == g_.reference || is_ground_word(n.name) || n.n_terminal + n.n_other != 1 ||
                unsure_.count(i) || told_.count(i))
                continue;
            if (n.n_terminal == 0) continue;  // sensed alone: an error of its own
            std::vector<std::string> others;
            // What is told no more is not looked for: that would take the square of many nodes.
            for (std::size_t at = 0; at < g_.nodes.size() && !d_.report.is_full("one-terminal"); ++at)
                if (const graph_node& o = g_.nodes[at]; !o.name.empty() && is_near_size(o.name, n.name) &&
                                                        edit_distance(o.name, n.name) == 1 &&
                                                        std::max(o.name.size(), n.name.size()) > 2)
                    others.push_back(o.name);
            d_.report.warning(
                "one-terminal", n.first,
                "node " + n.name + " has this one connection only" +
                    near_text(others.empty() ? near_case(n.name) : others, n.name),
                others.empty() ? "no current flows there: is an element missing?" : "is it a misspelt name?");
        }
        for (int i = 0; i < g_.n(); ++i) {
            const graph_node& n = g_.node(i);
            if (n.name.empty() || n.n_terminal > 0 || unsure_.count(i) || is_ground_word(n.name)) continue;
            d_.report.error(
                "sensed-only", n.first,
                "node " + n.name + " is sensed, and no element is connected to it" + near_text(node_names(), n.name));
        }
    }
    std::vector<std::string> near_case(const std::string& name) const {  // in capitals or not
        std::vector<std::string> same;
        for (const graph_node& o : g_.nodes)
            if (o.name.size() == name.size() && o.name != name &&
                std::equal(name.begin(), name.end(), o.name.begin(), [](char a, char b) {
                    return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
                }))
                same.push_back(o.name);
        return same;
    }

    std::string list(const std::vector<std::string>& names) const {
        std::string out;
        for (std::size_t j = 0; j < names.size() && j < most_named; ++j) out += (j > 0 ? ", " : "") + names[j];
        if (names.size() > most_named) out += " and " + std::to_string(names.size() - most_named) + " more";
        return out;
    }
    static void add_once(std::vector<std::string>& names, const std::string& name) {
        if (!has(names, name)) names.push_back(name);
    }

    // ---- loops of voltages
    void voltage_loops(const graph_view& v) {
        union_find trees(g_.n());
        std::vector<std::vector<std::pair<int, int>>> edges(g_.nodes.size());  // [node] (other end, branch)
        std::vector<char> used(g_.branches.size(), 0);
        const auto take = [&](std::size_t b) {
            const graph_branch& branch = g_.branches[b];
            used[b] = 1;
            if (branch.element < 0 || branch.from == branch.to) return;
            if (!trees.join(branch.from, branch.to)) {
                report_loop(v, b, edges);
                return;
            }
            edges[static_cast<std::size_t>(branch.from)].emplace_back(branch.to, static_cast<int>(b));
            edges[static_cast<std::size_t>(branch.to)].emplace_back(branch.from, static_cast<int>(b));
        };
        // Sources before inductors and capacitors, so that these are named as what closes the loop.
        for (std::size_t b = 0; b < g_.branches.size(); ++b)
            if (g_.branches[b].kind == branch_kind::voltage) take(b);
        for (std::size_t b = 0; b < g_.branches.size(); ++b)
            if (!used[b] && v.is_voltage(g_.branches[b].kind)) take(b);
        // A winding between nodes whose voltage is given gives the other winding a voltage.
        for (bool moved = true; moved;) {
            moved = false;
            for (std::size_t b = 0; b + 1 < g_.branches.size(); ++b) {
                const graph_branch &one = g_.branches[b], &two = g_.branches[b + 1];
                if (one.kind != branch_kind::winding || two.kind != branch_kind::winding ||
                    one.element != two.element || used[b] || used[b + 1])
                    continue;
                const bool given_1 = trees.root(one.from) == trees.root(one.to);
                const bool given_2 = trees.root(two.from) == trees.root(two.to);
                if (!given_1 && !given_2) continue;
                used[b] = 1;
                take(given_1 ? b + 1 : b);
                used[b + 1] = 1;
                moved = true;
            }
        }
    }

    void report_loop(const graph_view& v, std::size_t closing,
                     const std::vector<std::vector<std::pair<int, int>>>& edges) {
        const graph_branch& last = g_.branches[closing];
        // The path between its ends, by breadth-first search.
        std::vector<int> from_branch(g_.nodes.size(), -1), from_node(g_.nodes.size(), -1), queue = {last.from};
        from_node[static_cast<std::size_t>(last.from)] = last.from;
        for (std::size_t q = 0; q < queue.size() && from_node[static_cast<std::size_t>(last.to)] < 0; ++q)
            for (const auto& [other, branch] : edges[static_cast<std::size_t>(queue[q])])
                if (from_node[static_cast<std::size_t>(other)] < 0) {
                    from_node[static_cast<std::size_t>(other)] = queue[q];
                    from_branch[static_cast<std::size_t>(other)] = branch;
                    queue.push_back(other);
                }
        std::vector<std::string> names;
        const auto is_source = [](branch_kind b) { return b == branch_kind::voltage || b == branch_kind::winding; };
        bool sources_only = is_source(last.kind);
        for (int n = last.to; n != last.from && n >= 0; n = from_node[static_cast<std::size_t>(n)]) {
            const int b = from_branch[static_cast<std::size_t>(n)];
            if (b < 0) break;
            add_once(names, name_of(g_.branches[static_cast<std::size_t>(b)].element));
            sources_only = sources_only && is_source(g_.branches[static_cast<std::size_t>(b)].kind);
        }
        std::reverse(names.begin(), names.end());
        add_once(names, name_of(last.element));
        // Loops of sources alone are told once, not for each kind of block.
        if (sources_only && v.solve_type != nullptr) return;
        std::string what = sources_only ? "a loop of ideal voltage sources: "
                           : std::string_view(v.where).starts_with("in dc")
                               ? "in dc, where inductors are shorts, a loop of ideal voltages: "
                               : "in start-up, where capacitors have a given voltage, a loop of ideal voltages: ";
        d_.report.error("voltage-loop", {element(last.element).statement, 0}, what + list(names),
                        "a small resistance in series with one of them breaks the loop");
    }

    // ---- parts without a path to the reference
    void loose_parts(const graph_view& v) {
        union_find parts(g_.n());
        for (const graph_branch& b : g_.branches)
            if (v.joins(b.kind) || unsure_branch(b)) parts.join(b.from, b.to);
        std::map<int, std::vector<int>> members;
        const int home = parts.root(g_.reference);
        for (int i = 0; i < g_.n(); ++i)
            if (parts.root(i) != home && (g_.node(i).n_terminal > 0 || g_.node(i).name.empty()))
                members[parts.root(i)].push_back(i);
        for (const auto& [root, nodes] : members) {
            const bool told = std::all_of(nodes.begin(), nodes.end(), [&](int n) { return told_.count(n) > 0; });
            const bool open_terminal =
                std::all_of(nodes.begin(), nodes.end(), [&](int n) { return g_.node(n).name.empty(); });
            if (told || open_terminal || holds_itself(nodes, parts, root)) continue;
            told_.insert(nodes.begin(), nodes.end());
            report_part(v, nodes, parts, root);
        }
    }
    // A part that is sensed may set the controlled currents that feed it, and so its own voltage.
    bool holds_itself(const std::vector<int>& nodes, union_find& parts, int root) const {
        if (std::none_of(nodes.begin(), nodes.end(), [&](int n) { return sensed_.count(n) > 0; })) return false;
        return std::any_of(g_.branches.begin(), g_.branches.end(), [&](const graph_branch& b) {
            return b.kind == branch_kind::controlled_current &&
                   (parts.root(b.from) == root) != (parts.root(b.to) == root);
        });
    }
    bool unsure_branch(const graph_branch& b) const { return b.element >= 0 && element(b.element).type == nullptr; }
    void report_part(const graph_view& v, const std::vector<int>& nodes, union_find& parts, int root) {
        std::vector<std::string> names, across;
        bool currents_only = true;
        deck_word first{-1, 0};
        for (const int n : nodes) {
            const graph_node& node = g_.node(n);
            if (node.name.empty()) continue;
            names.push_back(node.name);
            if (first.statement < 0 ||
                std::pair(node.first.statement, node.first.word) < std::pair(first.statement, first.word))
                first = node.first;
        }
        for (const graph_branch& b : g_.branches)
            if ((parts.root(b.from) == root) != (parts.root(b.to) == root) && b.element >= 0) {
                add_once(across, name_of(b.element));
                currents_only = currents_only && is_current(b.kind);
            }
        const std::string who = (names.size() == 1 ? "node " : "nodes ") + list(names);
        const std::string reference = g_.node(g_.reference).name;
        if (across.empty())
            d_.report.error(
                "floating", first,
                who + ": no element connects " + (names.size() == 1 ? "it" : "them") + " with the reference node " +
                    reference,
                "is a name misspelt? A large resistor to the reference node gives a floating part a voltage");
        else if (currents_only)
            d_.report.error("current-cutset", first,
                            who + ": current sources alone lead there (a cut set): " + list(across),
                            "a large resistor beside one of them gives the current a way");
        else
            d_.report.error("floating", first,
                            v.where + who + (names.size() == 1 ? " has" : " have") + " no path to the reference node " +
                                reference + " but through " + list(across),
                            std::string(v.why_open) + "; a large resistor across one of them helps");
    }

    checked_deck& d_;
    deck_graph g_;
    std::set<int> unsure_, told_, sensed_;
    std::vector<graph_branch> to_reference_;  // from a node to the reference node, whatever its name
    std::set<std::string> ground_words_;      // nodes that are the reference under another name
};

}  // namespace

void check_nodes(checked_deck& d) { node_checks(d).run(); }

}  // namespace cli
