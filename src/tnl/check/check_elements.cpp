// Element and model statements: types, names, the words that a type knows, their values.
#include <algorithm>

#include "base/words.h"
#include "elaborate/families.h"
#include "tnl/check/check_deck.h"
#include "tnl/check/check_values.h"
#include "tnl/common/near_words.h"

namespace cli {

namespace {

using list_member = std::vector<std::string> element_type::*;

// What a statement must give, and how a message calls it.
struct terminal_list {
    list_member list;
    const char* what;
};
constexpr terminal_list terminal_lists[] = {
    {&element_type::node, "terminal"},
    {&element_type::ind_node, "sensed node"},
    {&element_type::ind_branch, "sensed branch"},
    {&element_type::digital, "digital node"},
    {&element_type::var, "variable"},
    {&element_type::xvar, "variable"},
};

constexpr list_member parameter_lists[] = {&element_type::rprm, &element_type::iprm, &element_type::sprm,
                                           &element_type::start, &element_type::guess};

constexpr std::size_t longest_text = 50;  // characters of a text parameter

std::vector<std::string> flag_words_of(std::string_view keyword) {
    std::vector<std::string> list;
    if (const family_form* form = family_of_keyword(keyword))
        for (std::string_view w : form->flag_words) list.emplace_back(w);
    return list;
}

std::vector<std::string> parameters_of(const element_type& type) {
    std::vector<std::string> list;
    for (const list_member l : parameter_lists) list.insert(list.end(), (type.*l).begin(), (type.*l).end());
    return list;
}

std::vector<std::string> known_words(const element_type& type, bool is_model) {
    std::vector<std::string> list = {"name", "type"};
    if (!is_model) {
        list.emplace_back("model");
        for (const terminal_list& t : terminal_lists)
            list.insert(list.end(), (type.*t.list).begin(), (type.*t.list).end());
        const std::vector<std::string> flags = flag_words_of(library_forms[type.library].statement);
        list.insert(list.end(), flags.begin(), flags.end());
    }
    const std::vector<std::string> parameters = parameters_of(type);
    list.insert(list.end(), parameters.begin(), parameters.end());
    return list;
}

std::string joined_words(const std::vector<std::string>& list) {
    std::string all;
    for (const std::string& w : list) all += (all.empty() ? "" : " ") + w;
    return all;
}

void unknown_type(checked_deck& d, deck_word at, int library, const std::string& type) {
    std::string near;
    for (const std::string& n : near_names(d.types.libraries().library[library], type))
        near += (near.empty() ? "; near names: " : ", ") + n;
    std::string advice = "tnl list shows the types that are installed";
    for (int other = 0; other < n_libraries; ++other)
        if (other != library && !library_forms[other].statement.empty() && d.types.find(other, type) != nullptr)
            advice = "there is a " + std::string(library_forms[other].statement) + " of this type";
    d.report.error(
        "unknown-type", at,
        "no element type " + type + " is installed for " + std::string(library_forms[library].statement) + near,
        advice);
}

// "vdc24": a word that begins like a key; the rest is a value whose '=' is missing.
std::string key_run_together(const std::vector<std::string>& known, const std::string& word) {
    std::string best;
    for (const std::string& k : known)
        if (word.size() > k.size() && word.starts_with(k) && k.size() > best.size()) {
            double x = 0;
            if (k.size() > 1 || is_double(word.substr(k.size()), x)) best = k;
        }
    return best;
}

void unknown_word(checked_deck& d, deck_word at, const element_type& type, const std::vector<std::string>& known,
                  bool has_value) {
    const std::string word = d.word(at.statement, at.word);
    const std::string glued = has_value ? std::string() : key_run_together(known, word);
    std::string advice = type.name + " knows: " + joined_words(parameters_of(type));
    if (parameters_of(type).empty()) advice = type.name + " has no parameters";
    if (!glued.empty()) advice = "a '=' is missing: " + glued + "=" + word.substr(glued.size());
    if (has(type.derived, word)) advice = word + " is computed from other parameters and cannot be given";
    d.report.error("unknown-word", at, type.name + " has no terminal or parameter " + word + near_text(known, word),
                   advice);
}

void check_value(checked_deck& d, const element_type& type, deck_word key, int value) {
    const std::string word = d.word(key.statement, key.word);
    const deck_word at{key.statement, value};
    if (has(type.iprm, word)) {
        check_int(d, at);
    } else if (has(type.sprm, word)) {
        if (d.word(at.statement, at.word).size() > longest_text)
            d.report.error("too-long", at, "a text parameter has at most 50 characters");
    } else if (has(type.rprm, word) || has(type.start, word) || has(type.guess, word)) {
        double x = 0;
        if (check_real(d, at, &x)) check_unit(d, type, word, at, x);
        check_computed(d, type, word, key);
    }
}

// Words of the statement behind `first`, for an element or a model of this type.
void check_words(checked_deck& d, int i, int first, const element_type& type, const std::vector<key_value>& pairs,
                 bool is_model) {
    const std::vector<std::string> known = known_words(type, is_model);
    std::vector<std::string> seen;
    bool lone = false;  // one word without value is reported; what follows it may be shifted
    for (const key_value& p : pairs) {
        if (p.key < first) continue;
        const std::string key = d.word(i, p.key);
        if (has(known, key) && p.value < 0) {
            d.report.error("no-value", {i, p.key}, "there is no value behind " + key);
        } else if (!has(known, key)) {
            if (!lone) unknown_word(d, {i, p.key}, type, known, p.value >= 0);
            lone = lone || p.value < 0;
        } else if (has(seen, key)) {
            d.report.error("given-twice", {i, p.key}, key + " is given twice in this statement");
        } else {
            check_value(d, type, {i, p.key}, p.value);
        }
        seen.push_back(key);
    }
}

void check_terminals(checked_deck& d, const deck_element& e) {
    for (const terminal_list& t : terminal_lists)
        for (const std::string& word : e.type->*t.list) {
            const bool given = std::any_of(e.pairs.begin(), e.pairs.end(), [&](const key_value& p) {
                return d.text().word(e.statement, p.key) == word;
            });
            if (given) continue;
            std::string all;
            for (const terminal_list& l : terminal_lists)
                for (const std::string& w : e.type->*l.list) all += (all.empty() ? "" : " ") + w;
            d.report.error(
                "missing-terminal", {e.statement, 0},
                (e.name.empty() ? "this element" : e.name) + " (" + e.type->name + ") has no " + t.what + " " + word,
                e.type->name + " needs: " + all);
        }
}

void check_data_files(checked_deck& d, const deck_element& e) {
    for (const name_and_value& p : e.type->text_values) {
        int at = 0;
        std::string file = d.value(e, p.name, &at);
        const bool given = !file.empty();
        if (!given) file = p.value;
        if (p.name.find("file") == std::string::npos) continue;
        if (d.globals.texts.count(file)) continue;
        if (file == "none") {
            if (p.name == "file")
                d.report.error("no-file", {e.statement, 0}, e.name + " (" + e.type->name + ") needs a file",
                               "add " + p.name + "=NAME; two columns of numbers, the first ascending");
        } else if (given && !file_exists(d, file)) {
            d.report.error("missing-file", {e.statement, at}, "the file " + file + " does not exist",
                           "paths are relative to the deck");
        } else if (std::error_code error; given && std::filesystem::is_directory(path_of(d, file), error)) {
            d.report.error("missing-file", {e.statement, at}, file + " is a folder, not a file");
        }
    }
}

bool is_placeholder_type(std::string_view keyword, std::string_view type) {
    const family_form* form = family_of_keyword(keyword);
    return form != nullptr && is_placeholder(*form, type);
}

deck_element read_element(checked_deck& d, int i, int library) {
    deck_element e{i, library, {}, {}, 0, nullptr, false, {}};
    const file_chr& f = d.text();
    // The type first, at an odd position as the simulator looks for it, or wherever it stands.
    for (int step : {2, 1})
        for (int j = 1; j + 1 < f.n_words(i) && e.at_type == 0; j += step)
            if (f.word(i, j) == "type") e.at_type = j + 1;
    if (e.at_type > 0) e.type_name = d.word(i, e.at_type);
    e.is_placeholder = is_placeholder_type(f.word(i, 0), e.type_name);
    if (!e.type_name.empty() && !e.is_placeholder) e.type = d.types.find(library, e.type_name);
    std::vector<std::string> known = {"name", "type", "model"};
    if (e.type != nullptr) known = known_words(*e.type, false);
    e.pairs = pairs_in(d, i, 1, known);
    e.name = d.value(e, "name");
    return e;
}

void check_element(checked_deck& d, const deck_element& e) {
    const int i = e.statement;
    if (e.at_type == 0) {
        d.report.error("no-type", {i, 0}, "this element has no type", "add type=NAME; tnl list shows the types");
        return;
    }
    if (e.is_placeholder) {
        if (e.type_name.find("ground_dummy") != std::string::npos && d.value(e, "c").empty())
            d.report.error("missing-terminal", {i, 0}, e.type_name + " has no terminal c");
        return;
    }
    if (e.name.empty())
        d.report.error("no-name", {i, 0}, "this element has no name", "add name=NAME, unique in the deck");
    if (e.type == nullptr) {
        unknown_type(d, {i, e.at_type}, e.library, e.type_name);
        return;
    }
    check_words(d, i, 1, *e.type, e.pairs, false);
    check_terminals(d, e);
    check_data_files(d, e);
}

// Blocks that set or read a parameter name the element and one of its real parameters or start values.
void check_linked_parameter(checked_deck& d, const deck_element& e) {
    if (!has(e.type->basics, "set_rparm") && !has(e.type->basics, "get_rparm")) return;
    int at = 0;
    const std::string name = d.value(e, "element", &at);
    if (d.globals.texts.count(name)) return;
    const auto found = d.element_of.find(name);
    if (found == d.element_of.end()) {
        std::vector<std::string> names;
        for (const deck_element& o : d.elements) names.push_back(o.name);
        d.report.error("unknown-item", {e.statement, at},
                       name.empty() ? e.name + " names no element="
                                    : "there is no element named " + name + near_text(names, name));
        return;
    }
    const element_type* type = d.elements[static_cast<std::size_t>(found->second)].type;
    if (type == nullptr) return;
    std::vector<std::string> words = type->rprm;
    for (const std::vector<std::string>* list : {&type->derived, &type->start})
        words.insert(words.end(), list->begin(), list->end());
    at = 0;
    const std::string parm = d.value(e, "parm", &at);
    if (!has(words, parm) && !d.globals.texts.count(parm))
        d.report.error("unknown-item", {e.statement, at},
                       parm.empty()
                           ? e.name + " names no parm="
                           : name + " (" + type->name + ") has no real parameter " + parm + near_text(words, parm));
}

// Sensed branches name elements that have a current of their own; models must be there.
void check_references(checked_deck& d, const deck_element& e, const std::map<std::string, std::string>& models) {
    int at = 0;
    for (const std::string& key : e.type->ind_branch) {
        const std::string name = d.value(e, key, &at);
        if (name.empty()) continue;
        const auto found = d.element_of.find(name);
        const deck_element* other =
            found == d.element_of.end() ? nullptr : &d.elements[static_cast<std::size_t>(found->second)];
        if (other == nullptr || library_forms[other->library].statement != "eelement") {
            std::vector<std::string> names;
            for (const deck_element& o : d.elements) names.push_back(o.name);
            d.report.error("unknown-branch", {e.statement, at},
                           "there is no element " + name + " whose current could be sensed" + near_text(names, name));
        } else if (other->type != nullptr && !other->type->can_be_sensed) {
            d.report.error("unknown-branch", {e.statement, at},
                           "the current of " + name + " (" + other->type->name + ") cannot be sensed",
                           "put an ammeter in series and name that");
        }
    }
    if (const std::string model = d.value(e, "model", &at); !model.empty()) {
        const auto found = models.find(model + "\n" + e.type_name);
        if (found != models.end()) return;
        std::vector<std::string> names;
        for (const auto& [key, name] : models) names.push_back(name);
        d.report.error("unknown-model", {e.statement, at},
                       "there is no " + std::string(library_forms[e.library].model) + " named " + model + " of type " +
                           e.type_name + near_text(names, model));
    }
}

// Keys are name and type, given at their places: name first, type second.
void check_model(checked_deck& d, int i, int library, std::map<std::string, std::string>& models) {
    const file_chr& f = d.text();
    const char* order = "a model is: emodel name=NAME type=TYPE parameter=value ...";
    if (f.n_words(i) < 3 || f.word(i, 1) != "name") {
        d.report.error("no-name", {i, 0}, "a model needs its name first", order);
        return;
    }
    if (f.n_words(i) < 5 || f.word(i, 3) != "type") {
        d.report.error("no-type", {i, 0}, "a model needs its type behind its name", order);
        return;
    }
    const std::string name = d.word(i, 2), type_name = d.word(i, 4);
    d.models.emplace(std::to_string(library) + " " + type_name + " " + name, i);
    if (!models.emplace(name + "\n" + type_name, name).second)
        d.report.warning("named-twice", {i, 2}, "a model " + name + " of this type stands before; the first counts");
    const element_type* type = d.types.find(library, type_name);
    if (type == nullptr) {
        unknown_type(d, {i, 4}, library, type_name);
        return;
    }
    check_words(d, i, 5, *type, pairs_in(d, i, 5, known_words(*type, true)), true);
}

// A statement whose first word nobody knows and whose type is installed: its name and nodes are there all the same.
bool looks_like_element(const checked_deck& d, int i, int& library) {
    const std::string type = value_of(d.report.deck, i, "type");
    if (type.empty() || value_of(d.report.deck, i, "name").empty()) return false;
    if (find_library(&library_form::model, d.text().word(i, 0)) >= 0) return false;
    const installed_libraries& libraries = d.types.libraries();
    for (int l = 0; l < n_libraries && library < 0; ++l)
        if (!library_forms[l].statement.empty() && libraries.library[l].position.count(type)) library = l;
    return library >= 0;
}

}  // namespace

void check_elements(checked_deck& d) {
    const file_chr& f = d.text();
    std::map<std::string, std::string> models[n_libraries];
    for (int i = d.sections.circuit.begin; i < d.sections.circuit.end; ++i) {
        if (f.n_words(i) == 0) continue;
        if (const int m = find_library(&library_form::model, f.word(i, 0)); m >= 0) check_model(d, i, m, models[m]);
        int library = find_library(&library_form::statement, f.word(i, 0));
        const bool misspelt = library < 0 && looks_like_element(d, i, library);
        if (library < 0) continue;
        d.elements.push_back(read_element(d, i, library));
        const deck_element& e = d.elements.back();
        if (!misspelt) check_element(d, e);
        if (e.name.empty() || e.is_placeholder) continue;
        const auto [first, is_new] = d.element_of.emplace(e.name, static_cast<int>(d.elements.size()) - 1);
        if (is_new) continue;
        const record_place place =
            place_in_files(d.report.deck, d.elements[static_cast<std::size_t>(first->second)].statement);
        int at = 0;
        d.value(e, "name", &at);
        d.report.error("named-twice", {i, at},
                       "the name " + e.name + " is repeated: line " + std::to_string(place.line) + " has it too");
    }
    for (const deck_element& e : d.elements)
        if (e.type != nullptr) {
            check_references(d, e, models[e.library]);
            check_linked_parameter(d, e);
            check_model_limits(d, e);
        }
}

}  // namespace cli
