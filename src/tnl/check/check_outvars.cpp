// outvar: statements: NAME=QUANTITY_of_SOMETHING.
#include "tnl/check/check_deck.h"
#include "tnl/common/near_words.h"

namespace cli {

namespace {

using list_member = std::vector<std::string> element_type::*;

// Quantities whose right word is a name of the deck, with the lists of a type whose values make such names.
struct deck_quantity {
    std::string_view word;
    const char* what;
    std::vector<list_member> lists;
};
const std::vector<deck_quantity>& deck_quantities() {
    static const std::vector<deck_quantity> all = {
        {"nodev", "node", {&element_type::node, &element_type::ind_node}},
        {"nodev_ac", "node", {&element_type::node, &element_type::ind_node}},
        {"var", "variable", {&element_type::var}},
        {"var_ac", "variable", {&element_type::var}},
        {"xvar", "variable", {&element_type::xvar}},
        {"xvar_ac", "variable", {&element_type::xvar}},
        {"dvar", "digital node", {&element_type::digital}},
    };
    return all;
}

std::vector<std::string> names_of(const checked_deck& d, const deck_quantity& q, bool& unsure) {
    std::vector<std::string> names;
    for (const deck_element& e : d.elements) {
        if (e.type == nullptr) {
            unsure = unsure || !e.is_placeholder;
            if (e.is_placeholder) names.push_back(d.value(e, "c"));
            continue;
        }
        for (const list_member list : q.lists)
            for (const std::string& word : e.type->*list) names.push_back(d.value(e, word));
    }
    return names;
}

// "gate is a digital node: dvar_of_gate", of the first quantity that knows the name; or empty.
std::string kind_of_name(const checked_deck& d, const std::string& name) {
    bool unsure = false;
    for (const deck_quantity& q : deck_quantities())
        if (has(names_of(d, q, unsure), name))
            return name + " is a " + q.what + ": " + std::string(q.word) + "_of_" + name;
    return {};
}

// The type behind the path of a mixed instance and a call of its composite, "X1.r2"; null if it is none. unsure: the
// instance's own type is unknown.
const element_type* type_of_part(checked_deck& d, const std::string& path, bool& unsure) {
    for (std::size_t dot = path.find('.'); dot != std::string::npos; dot = path.find('.', dot + 1)) {
        const auto owner = d.element_of.find(path.substr(0, dot));
        if (owner == d.element_of.end()) continue;
        const deck_element& e = d.elements[static_cast<std::size_t>(owner->second)];
        if (e.type == nullptr) unsure = unsure || e.library == lib_gmes;
        if (e.type == nullptr) continue;
        for (const element_type::part& p : e.type->parts)
            if (p.name == path.substr(dot + 1)) return d.types.find(p.library, p.type);
    }
    return nullptr;
}

void check_quantity(checked_deck& d, deck_word at, const std::string& left, const std::string& right) {
    for (const deck_quantity& q : deck_quantities()) {
        if (q.word != left) continue;
        bool unsure = false;
        const std::vector<std::string> names = names_of(d, q, unsure);
        if (!has(names, right) && !unsure)
            d.report.error("unknown-output", at,
                           std::string("there is no ") + q.what + " " + right + near_text(names, right),
                           kind_of_name(d, right));
        return;
    }
    const auto found = d.element_of.find(right);
    bool unsure_part = false;
    const element_type* type = found == d.element_of.end() ? type_of_part(d, right, unsure_part)
                                                           : d.elements[static_cast<std::size_t>(found->second)].type;
    if (found == d.element_of.end() && type == nullptr) {
        if (unsure_part) return;
        std::vector<std::string> names;
        for (const auto& [name, i] : d.element_of) {
            names.push_back(name);
            if (const element_type* t = d.elements[static_cast<std::size_t>(i)].type; t != nullptr)
                for (const element_type::part& p : t->parts) names.push_back(name + "." + p.name);
        }
        std::string advice;
        bool unsure = false;
        for (const deck_quantity& q : deck_quantities())
            if ((left == "v" || left == "i") && advice.empty() && has(names_of(d, q, unsure), right))
                advice = std::string(q.word) + "_of_" + right + " gives the value of the " + q.what;
        d.report.error("unknown-output", at, "there is no element named " + right + near_text(names, right), advice);
        return;
    }
    if (type == nullptr) return;
    const bool has_power = library_forms[type->library].statement == "eelement";
    if (has_power && (left == "pwr_elec" || left == "pwr_elec_ac")) return;
    std::vector<std::string> words = type->outvar;
    for (const list_member list : {&element_type::rprm, &element_type::derived})
        words.insert(words.end(), (type->*list).begin(), (type->*list).end());
    if (has(words, left)) return;
    std::string all;
    for (const std::string& w : words) all += (all.empty() ? "" : " ") + w;
    if (has_power) all += all.empty() ? "pwr_elec" : " pwr_elec";
    d.report.error("unknown-output", at, right + " (" + type->name + ") offers no " + left + near_text(words, left),
                   "it offers: " + all);
}

}  // namespace

bool is_outvar(const file_chr& f, int statement) {
    const std::string_view word = f.word(statement, 0);
    return word == "outvar:" || (word.starts_with("o") && word != "output" && edit_distance(word, "outvar:") <= 2);
}

bool has_lost_outvars(const checked_deck& d) {
    for (int i = d.sections.circuit.begin; i < d.sections.circuit.end; ++i)
        if (d.text().word(i, 0).starts_with("outvar") && !is_outvar(d.text(), i)) return true;
    return false;
}

void check_outvars(checked_deck& d) {
    const file_chr& f = d.text();
    std::map<std::string, int> names;
    for (int i = d.sections.circuit.begin; i < d.sections.circuit.end; ++i) {
        if (!is_outvar(f, i)) continue;
        if (f.n_words(i) == 1) d.report.warning("no-value", {i, 0}, "this statement names nothing");
        for (int j = 1; j < f.n_words(i); j += 2) {
            if (j + 1 >= f.n_words(i)) {
                d.report.warning("no-value", {i, j}, d.word(i, j) + " has no value and is passed over",
                                 "outvar: name=QUANTITY_of_NAME ...");
                break;
            }
            const std::string name = d.word(i, j), word = d.word(i, j + 1);
            const std::size_t of = word.find("_of_");
            if (of == std::string::npos)
                d.report.error("unknown-output", {i, j + 1}, "an output is QUANTITY_of_NAME, not " + word,
                               "nodev_of_NODE, i_of_ELEMENT, var_of_VARIABLE");
            else
                check_quantity(d, {i, j + 1}, word.substr(0, of), word.substr(of + 4));
            if (const auto [at, is_new] = names.emplace(name, i); !is_new)
                d.report.warning("named-twice", {i, j},
                                 "the output name " + name + " is given twice; the first counts");
            else if (d.globals.reals.count(name))
                d.report.warning("named-twice", {i, j}, "the output " + name + " has the name of a greal");
        }
    }
}

}  // namespace cli
