// Composites that the deck brings along: what stands in their lines, and the simulator's reader over each of them.
#include <algorithm>
#include <set>

#include "base/words.h"
#include "library/composite/composite_form.h"
#include "tnl/check/check_stops.h"
#include "tnl/common/near_words.h"

namespace cli {

namespace {

using list_member = std::vector<std::string> element_type::*;

// What a line of the body must give for each word of an element's list, and from which lists of the composite.
struct bound_words {
    list_member list;
    const char* what;
    std::vector<list_member> from;
    const char* lines;  // that hold them, for a message
};
const std::vector<bound_words>& bound_lists(int library) {
    using t = element_type;
    static const std::vector<bound_words> of_e = {
        {&t::node, "terminal", {&t::node, &t::inner}, "mainnodes: or auxnodes:"},
        {&t::digital, "digital node", {&t::digital}, "digital_nodes:"},
        {&t::var, "variable", {&t::var}, "main_var:"},
        {&t::xvar, "variable", {&t::xvar}, "xvar:"},
        {&t::ind_node, "sensed node", {&t::node, &t::inner, &t::ind_node}, "mainnodes:, auxnodes: or ind_nodes:"},
        {&t::ind_branch,
         "sensed element",
         {&t::ind_branch},
         "ind_branches:, nor the name of an ebe with two terminals"},
    };
    static const std::vector<bound_words> of_g = {
        {&t::var, "variable", {&t::var, &t::inner}, "mainvars: or auxvars:"},
        {&t::xvar, "variable", {&t::xvar}, "xvars:"},
    };
    static const std::vector<bound_words> of_d = {
        {&t::digital, "digital node", {&t::digital, &t::inner}, "mainnodes: or auxnodes:"},
        {&t::ind_node, "sensed node", {&t::ind_node}, "analog_nodes:"},
    };
    static const std::vector<bound_words> of_x = {
        {&t::xvar, "variable", {&t::xvar, &t::inner}, "main_vars: or aux_vars:"},
        {&t::var, "general variable", {&t::var}, "gvars:"},
    };
    static const std::vector<bound_words> of_gm = {
        {&t::node, "terminal", {&t::node, &t::inner}, "mainnodes_anlg: or auxnodes_anlg:"},
        {&t::digital, "digital node", {&t::digital, &t::inner_digital}, "mainnodes_dgtl: or auxnodes_dgtl:"},
        {&t::var, "variable", {&t::var, &t::inner_var}, "main_var: or aux_var:"},
        {&t::ind_node, "sensed node", {&t::node, &t::inner}, "mainnodes_anlg: or auxnodes_anlg:"},
        {&t::ind_branch, "sensed element", {}, "the names of callece lines"},
    };
    switch (library) {
        case lib_eels:
            return of_e;
        case lib_dels:
            return of_d;
        case lib_xels:
            return of_x;
        case lib_gmes:
            return of_gm;
        default:
            return of_g;
    }
}

// Output words that name a node or variable of the composite itself, with the lists that hold these.
struct own_output {
    int library;
    std::string_view line, left;
    std::vector<list_member> from;
    const char* what;
};
const std::vector<own_output>& own_outputs_of() {
    using t = element_type;
    static const std::vector<own_output> all = {
        {lib_eels, "", "nodev", {&t::node, &t::inner}, "node"},
        {lib_gels, "", "var", {&t::var, &t::inner}, "variable"},
        {lib_dels, "", "dvar", {&t::digital, &t::inner}, "node"},
        {lib_xels, "", "xvar", {&t::xvar, &t::inner}, "variable"},
        {lib_gmes, "outvar_anlg:", "nodev", {&t::node, &t::inner}, "node"},
        {lib_gmes, "outvar_anlg:", "var", {&t::var, &t::inner_var}, "variable"},
        {lib_gmes, "outvar_dgtl:", "dvar", {&t::digital, &t::inner_digital}, "digital node"},
        {lib_gmes, "outvar_ac:", "nodev", {&t::node, &t::inner}, "node"},
        {lib_gmes, "outvar_ac:", "var", {&t::var, &t::inner_var}, "variable"},
    };
    return all;
}

constexpr list_member parameters[] = {&element_type::rprm, &element_type::iprm, &element_type::sprm,
                                      &element_type::start, &element_type::guess};

class entry_check {
public:
    entry_check(checked_deck& d, const own_entry& own, const element_type& self)
        : d_(d), own_(own), self_(self), electrical_(library_forms[own.library].begin == "ece") {}

    bool run() {
        bool dc = true;
        for (const own_line& l : own_.lines)
            if (l.w[0] == "begin_ac")
                dc = false;
            else if (const int library = find_library(&library_form::call, l.w[0]);
                     library >= 0 && &l != &own_.lines[0])
                collect(l, library, dc);
        check_flags();
        check_names();
        for (const body_line& b : body_) check_body(b);
        check_outputs();
        if (n_errors_ == 0) check_nodes();
        return n_errors_ == 0;
    }

private:
    struct body_line {
        const own_line* line;
        const element_type* type;
        int library;
        bool basic, dc;
        std::string name;  // of the instance
        int first_key() const { return basic ? 1 : 2; }
    };

    void error(const own_place& at, const char* code, std::string message, std::string advice = {}) {
        ++n_errors_;
        d_.report.error_at(code, place_of(d_.report.deck.source, at), std::move(message), std::move(advice));
    }
    static own_place place(const own_line& l, int j) { return l.at[static_cast<std::size_t>(j)]; }

    static int key_at(const own_line& l, int first, std::string_view key) {
        for (int j = first; j < l.w.size(); j += 2)
            if (l.w[j] == key) return j;
        return -1;
    }

    // Words behind the name of the entry.
    void check_flags() {
        const std::optional<entry_shape> shape = shape_of(own_.library);
        const std::vector<std::string> known = shape ? shape->flags : std::vector<std::string>();
        const own_line& l = own_.lines[0];
        std::set<std::string> seen;
        for (int j = 3; j < l.w.size(); j += 2) {
            const std::string word = l.w.str(j);
            if (!has(known, word))
                error(place(l, j), "unknown-word",
                      "no word " + word + " stands behind the name of a composite" + near_text(known, word));
            else if (j + 1 >= l.w.size())
                error(place(l, j), "no-value", "there is no value behind " + word, word + "=yes");
            else if (!seen.insert(word).second)
                error(place(l, j), "given-twice", word + " is given twice in this line");
        }
    }

    // Names within each list of the head, and of the lines of the body: one is as good as two.
    void check_names() {
        const std::optional<entry_shape> shape = shape_of(own_.library);
        if (!shape) return;
        std::set<std::pair<std::string, std::string>> seen;  // list and name
        bool in_ac = false;
        const auto check = [&](const std::string& list, const own_line& l, int j, const std::string& where) {
            if (!seen.emplace((in_ac ? "ac " : "") + list, l.w.str(j)).second)
                error(place(l, j), "named-twice", l.w.str(j) + " stands twice " + where);
        };
        for (const own_line& l : own_.lines) {
            if (l.w[0] == "begin_ac" || l.w[0] == "end_ac") in_ac = l.w[0] == "begin_ac";
            for (const header_line& h : in_ac ? shape->ac_lines : shape->dc_lines) {
                if (l.w[0] != h.keyword) continue;
                const bool words = std::holds_alternative<word_list library_lists::*>(h.member) ||
                                   std::holds_alternative<word_list composite_library::*>(h.member);
                for (int j = 1; j < l.w.size(); j += words ? 1 : 2) check(h.keyword, l, j, "in the list " + l.w.str(0));
            }
        }
        for (const body_line& b : body_) {
            in_ac = !b.dc;
            if (!b.name.empty())
                check("name", *b.line, key_at(*b.line, b.first_key(), "name") + 1, "as the name of a line of the body");
        }
    }

    // Finds the type of the line, which may also come from a model of the entry.
    void collect(const own_line& l, int library, bool dc) {
        body_line b{&l, nullptr, library, library_forms[library].statement.empty(), dc, {}};
        int at = b.basic ? key_at(l, 1, "type") + 1 : 1;
        std::string type = at > 0 && at < l.w.size() ? l.w.str(at) : std::string();
        if (b.basic && at == 0) {
            const int model = key_at(l, 1, "model") + 1;
            for (const own_line& m : own_.lines)
                if (model > 0 && model < l.w.size() && m.w.size() > 4 && m.w[0] == library_forms[library].submodel &&
                    m.w[2] == l.w[model])
                    type = m.w.str(4);
            at = 0;
            if (type.empty()) {
                error(l.at[0], "no-type", "this line has no type", l.w.str(0) + " type=TYPE ...");
                return;
            }
        }
        if (type.empty() || at >= l.w.size()) {
            error(l.at[0], "no-type", "this line names nobody", l.w.str(0) + " NAME node=NODE ...");
            return;
        }
        const int name = key_at(l, b.first_key(), "name") + 1;
        if (name > 0 && name < l.w.size()) b.name = l.w.str(name);
        b.type = d_.types.find(library, type);
        if (b.type == nullptr) unknown_type(l, at, library, type);
        body_.push_back(b);
    }

    static std::string call_of(int library, const std::string& type) {
        const library_form& form = library_forms[library];
        return "there is " + std::string(form.begin) + " " + type + ": " + std::string(form.call) +
               (form.statement.empty() ? " type=" : " ") + type + " ...";
    }

    void unknown_type(const own_line& l, int at, int library, const std::string& type) {
        std::string near;
        for (const std::string& n : near_names(d_.types.libraries().library[library], type))
            near += (near.empty() ? "; near names: " : ", ") + n;
        const bool basic = library_forms[library].statement.empty();
        std::string advice;
        for (int other = 0; other < n_libraries; ++other)
            if (other != library && d_.types.find(other, type) != nullptr && advice.empty())
                advice = call_of(other, type);
        error(place(l, at), "unknown-type",
              "there is no " + std::string(basic ? "basic element " : "composite ") + type + near, advice);
    }

    bool is_name_of_branch(std::string_view word) const {
        return std::any_of(body_.begin(), body_.end(), [&](const body_line& b) {
            if (own_.library == lib_gmes) return b.library == lib_eels && b.name == word;
            return b.basic && b.name == word && (b.type == nullptr || b.type->node.size() == 2);
        });
    }

    void check_body(const body_line& b) {
        if (b.type == nullptr || !b.dc) return;
        const own_line& l = *b.line;
        std::vector<std::string> known = {"name", "model"}, names;
        if (b.basic) known.emplace_back("type");
        for (const bound_words& bound : bound_lists(own_.library))
            known.insert(known.end(), (b.type->*bound.list).begin(), (b.type->*bound.list).end());
        for (const list_member p : parameters) {
            known.insert(known.end(), (b.type->*p).begin(), (b.type->*p).end());
            names.insert(names.end(), (b.type->*p).begin(), (b.type->*p).end());
        }
        std::set<std::string, std::less<>> seen;
        for (int j = b.first_key(); j < l.w.size(); j += 2) {
            const std::string key = l.w.str(j);
            if (!has(known, key)) {
                std::string all;
                for (const std::string& n : names) all += " " + n;
                error(place(l, j), "unknown-word",
                      b.type->name + " has no terminal or parameter " + key + near_text(known, key),
                      all.empty() ? b.type->name + " has no parameters" : b.type->name + " knows:" + all);
                return;
            }
            if (j + 1 >= l.w.size()) {
                error(place(l, j), "no-value", "there is no value behind " + key);
                return;
            }
            if (!seen.insert(key).second) error(place(l, j), "given-twice", key + " is given twice in this line");
            check_parameter(b, key, j + 1);
        }
        for (const bound_words& bound : bound_lists(own_.library))
            for (const std::string& word : b.type->*bound.list) check_terminal(b, bound, word);
    }

    void check_terminal(const body_line& b, const bound_words& bound, const std::string& word) {
        const own_line& l = *b.line;
        const int j = key_at(l, b.first_key(), word) + 1;
        if (j <= 0) {
            error(l.at[0], "missing-terminal", b.type->name + " has no " + bound.what + " " + word,
                  "add " + word + "=NAME");
            return;
        }
        const std::string value = l.w.str(j);
        std::vector<std::string> there;
        for (const list_member from : bound.from) there.insert(there.end(), (self_.*from).begin(), (self_.*from).end());
        if (bound.list == &element_type::node || bound.list == &element_type::ind_node ||
            bound.list == &element_type::digital || (!electrical_ && bound.list == &element_type::var))
            touched_.insert(value);
        if (has(there, value) || (bound.list == &element_type::ind_branch && is_name_of_branch(value))) return;
        error(place(l, j), "unknown-node", value + " is no word of " + bound.lines + near_text(there, value),
              value == "0" ? "a composite has no reference node: bring it in as one of mainnodes:" : "");
    }

    void check_parameter(const body_line& b, const std::string& key, int j) {
        const std::string word = b.line->w.str(j);
        const auto is_own = [&](list_member list) { return has(self_.*list, word); };
        double x = 0;
        int n = 0;
        bool good = true;
        if (has(b.type->rprm, key))
            good = is_own(&element_type::rprm) || is_own(&element_type::derived) || is_double(word, x);
        else if (has(b.type->start, key))
            good = is_own(&element_type::start) || is_double(word, x);
        else if (has(b.type->guess, key))
            good = is_own(&element_type::guess) || is_double(word, x);
        else if (has(b.type->iprm, key))
            good = is_own(&element_type::iprm) || is_integer(word, n);
        if (good) return;
        std::vector<std::string> own = self_.rprm;
        own.insert(own.end(), self_.derived.begin(), self_.derived.end());
        error(place(*b.line, j), "bad-number",
              word + " is neither a number nor a parameter of " + self_.name + near_text(own, word));
    }

    void check_outputs() {
        for (const own_line& l : own_.lines) {
            if (l.w[0] != "bias:" &&
                (!l.w[0].starts_with("outvar") || (l.w[0] == "outvar_ac:" && own_.library != lib_gmes)))
                continue;
            for (int j = 2; j < l.w.size(); j += 2) check_output(l, j);
        }
    }

    void check_output(const own_line& l, int j) {
        const std::string word = l.w.str(j);
        const auto of_line = [&](const own_output& o) {
            return o.library == own_.library && (o.line.empty() || o.line == l.w[0]);
        };
        std::string node_word;
        for (const own_output& o : own_outputs_of())
            if (node_word.empty() && of_line(o)) node_word = o.left;
        const std::size_t of = word.find("_of_");
        if (of == std::string::npos) {
            error(place(l, j), "unknown-output", "an output is QUANTITY_of_NAME, not " + word,
                  node_word + "_of_NODE, or QUANTITY_of_NAME with the name= of a line of the body");
            return;
        }
        const std::string left = word.substr(0, of), right = word.substr(of + 4);
        if (electrical_ && left.starts_with("pwr_elec")) return;
        std::vector<std::string> names;
        for (const own_output& o : own_outputs_of()) {
            if (o.left != left || !of_line(o)) continue;
            for (const list_member from : o.from) names.insert(names.end(), (self_.*from).begin(), (self_.*from).end());
            if (!has(names, right))
                error(place(l, j), "unknown-output",
                      std::string("there is no ") + o.what + " " + right + near_text(names, right));
            return;
        }
        for (const body_line& b : body_) {
            names.push_back(b.name);
            if (b.name != right || !b.dc || b.name.empty()) continue;
            if (b.type != nullptr) check_quantity(l, j, b, left);
            return;
        }
        error(place(l, j), "unknown-output", "no line of the body has name=" + right + near_text(names, right));
    }

    void check_quantity(const own_line& l, int j, const body_line& b, const std::string& left) {
        std::vector<std::string> offers = b.type->outvar;
        if (b.basic) {
            for (const list_member list : {&element_type::inner, &element_type::rprm, &element_type::iprm})
                offers.insert(offers.end(), (b.type->*list).begin(), (b.type->*list).end());
            for (const std::string& n : b.type->node) offers.push_back("cur(" + n + ")");
            if (own_.library == lib_dels) offers = {"dstate"};
        }
        if (has(offers, left)) return;
        std::string all;
        for (const std::string& o : offers) all += " " + o;
        error(place(l, j), "unknown-output",
              b.name + " (" + b.type->name + ") offers no " + left + near_text(offers, left),
              all.empty() ? "it offers nothing" : "it offers:" + all);
    }

    void check_nodes() {
        for (const own_line& l : own_.lines)
            for (const std::string_view head : {"mainnodes:", "auxnodes:", "mainvars:", "auxvars:"})
                for (int j = 1; j < l.w.size() && l.w[0] == head; ++j)
                    if (touched_.count(l.w.str(j)) == 0)
                        error(place(l, j), "unconnected", "nothing in " + self_.name + " is connected to " + l.w.str(j),
                              electrical_ ? "ebe type=ground_dummy_1 c=NODE holds a node that has no element" : "");
    }

    checked_deck& d_;
    const own_entry& own_;
    const element_type& self_;
    const bool electrical_;
    std::vector<body_line> body_;
    std::set<std::string> touched_;
    int n_errors_ = 0;
};

// The word of the entry that the text of a stop speaks of; its first line if it names none.
own_place place_in_entry(const own_entry& own, const std::string& text) {
    for (const std::string_view before :
         {"word is: ", "word_given is: ", "word: ", "string: <", "this string: ", "string is ", "_name is "}) {
        const std::size_t at = text.find(before);
        if (at == std::string::npos) continue;
        const std::size_t from = at + before.size();
        const std::string value = text.substr(from, text.find_first_of(">\n", from) - from);
        for (const own_line& l : own.lines)
            for (int j = 1; j < l.w.size(); ++j)
                if (l.w[j] == value) return l.at[static_cast<std::size_t>(j)];
    }
    return own.lines[0].at[0];
}

// The simulator's reader over each composite, callees first; one that calls what is unsound is left out. It ends where
// no more faults are kept, as each composite is a reading of its own.
class library_check {
public:
    library_check(checked_deck& d, std::set<entry_name>& unsound) : d_(d), unsound_(unsound) {
        for (const own_entry& own : d.report.deck.own.entries) own_[{own.library, own.entry.name}] = &own;
    }
    void run() {
        for (const auto& [name, own] : own_) {
            if (seen_.count(name) > 0) continue;
            const deck_needs needs = needs_of(name, d_.types.libraries());
            for (int i = 0; i < n_libraries; ++i)
                for (const int e : needs.entries[i]) {
                    const auto& entries = d_.types.libraries().library[i].entries;
                    const auto callee = own_.find({i, entries[static_cast<std::size_t>(e)].name});
                    if (callee == own_.end() || !seen_.insert(callee->first).second) continue;
                    if (d_.report.is_full("refused")) {
                        leave(*callee->second);
                        return;
                    }
                    read(callee->first, *callee->second);
                }
        }
    }

private:
    void leave(const own_entry& own) {
        d_.report.warning_at("unread-composites", place_of(d_.report.deck.source, own.lines[0].at[0]),
                             "so many composites are refused that this one and further ones were not looked into",
                             "mend those that are told");
    }
    void read(const entry_name& name, const own_entry& own) {
        const deck_needs needs = needs_of(name, d_.types.libraries());
        for (int i = 0; i < n_libraries; ++i)
            for (const int e : needs.entries[i])
                if (unsound_.count({i, d_.types.libraries().library[i].entries[static_cast<std::size_t>(e)].name}) >
                    0) {
                    unsound_.insert(name);
                    return;
                }
        const std::optional<std::string> text = stop_of_libraries(d_.types.libraries(), needs);
        if (!text) return;
        unsound_.insert(name);
        d_.report.error_at("refused", place_of(d_.report.deck.source, place_in_entry(own, *text)),
                           stop_in_one_line(*text));
    }

    checked_deck& d_;
    std::set<entry_name>& unsound_;
    std::map<entry_name, const own_entry*> own_;
    std::set<entry_name> seen_;
};

}  // namespace

void check_composites(checked_deck& d) {
    const deck_view& deck = d.report.deck;
    std::set<entry_name> unsound;
    for (const own_fault& f : deck.own.faults)
        d.report.error_at(f.code, place_of(deck.source, f.at), f.message, f.advice);
    for (const own_entry& own : deck.own.entries) {
        const installed_library& library = d.types.libraries().library[own.library];
        const auto same = [&](const library_entry& e) { return e.name == own.entry.name; };
        const bool hides = std::count_if(library.entries.begin(), library.entries.end(), same) > 1;
        if (hides)
            d.report.warning_at("hides-installed", place_of(deck.source, own.lines[0].at[2]),
                                "an element " + own.entry.name + " is installed; here this composite takes its place",
                                "another name, if that is not meant");
        const element_type* self = d.types.find(own.library, own.entry.name);
        if (self != nullptr && !entry_check(d, own, *self).run()) unsound.insert({own.library, own.entry.name});
    }
    if (deck.own.faults.empty()) library_check(d, unsound).run();
}

}  // namespace cli
