#include "tnl/elements/planned_files.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <unordered_map>
#include <utility>

#include "base/words.h"
#include "tnl/deck/sweep_points.h"
#include "tnl/elements/element_doc.h"

namespace cli {

namespace {

// "i_of_R1": what, and of whom. Nothing behind a word without "_of_".
struct cut_item {
    std::string_view quantity, owner;
};
cut_item cut(std::string_view item) {
    const std::size_t at = item.find("_of_");
    if (at == std::string_view::npos) return {item, {}};
    return {item.substr(0, at), item.substr(at + 4)};
}

// Quantities that do not depend on an element's own words.
struct known_quantity {
    std::string_view word, unit;
};
constexpr known_quantity known_quantities[] = {
    {"time", "s"}, {"frequency", "Hz"}, {"harmonic", ""}, {"nodev", "V"},       {"nodev_ac", "V"},
    {"var", ""},   {"var_ac", ""},      {"xvar", ""},     {"xvar_ac", ""},      {"dvar", ""},
    {"glbl", ""},  {"pwr_elec", "W"},   {"phase", "deg"}, {"pwr_elec_ac", "W"},
};

// The unit that an entry's definition of an output variable shows: a current, a power, a node's voltage.
std::string unit_of_definition(std::string_view value) {
    if (value.starts_with("cur(")) return "A";
    if (value.starts_with("pwr")) return "W";
    if (value.starts_with("nodev")) return "V";
    return {};
}

// What the element's entry says of this word: its description, else the definition.
std::string unit_in_entry(const library_entry& entry, const library_form& form, std::string_view word) {
    const element_doc doc = doc_of(entry);
    if (const word_doc* w = find_word(doc, word)) return w->unit;
    const entry_lines lines = lines_of(entry, form);
    for (const std::string_view list : {"outvar:", "outvar_ac:"})
        for (const name_and_value& p : pairs_of(lines, list))
            if (p.name == word) return unit_of_definition(p.value);
    return {};
}

// Where a deck says what a word stands for; built once, as a deck may have thousands of each.
struct deck_names {
    const deck_view& deck;
    std::vector<std::pair<std::string_view, std::string_view>> outvars;  // name and definition, in deck order
    std::unordered_map<std::string_view, std::string_view> definition;
    std::unordered_map<std::string, int> statement;  // of an instance or model of this name
    std::map<std::string, deck_result, std::less<>> results;

    explicit deck_names(const deck_view& deck_) : deck(deck_), results(results_of(deck_)) {
        const file_chr& s = deck.statements;
        const statement_range circuit = circuit_range(deck);
        for (int i = circuit.begin; i < circuit.end; ++i) {
            if (library_of(i) >= 0) statement.try_emplace(value_of(deck, i, "name"), i);
            for (int j = 1; s.begins(i, "outvar:") && j + 1 < s.n_words(i); j += 2) {
                outvars.emplace_back(s.word(i, j), s.word(i, j + 1));
                definition.try_emplace(s.word(i, j), s.word(i, j + 1));
            }
        }
    }
    int library_of(int i_statement) const {  // -1: neither an element nor a model
        const std::string_view first = deck.statements.word(i_statement, 0);
        const int element = find_library(&library_form::statement, first);
        return element >= 0 ? element : find_library(&library_form::model, first);
    }
};

std::string unit_of_item(const deck_names& names, const installed_libraries& libraries, const cut_item& item) {
    for (const known_quantity& q : known_quantities)
        if (q.word == item.quantity) return std::string(q.unit);
    const auto found = names.statement.find(std::string(item.owner));
    if (found == names.statement.end()) return {};
    const int library = names.library_of(found->second);
    const installed_library& all = libraries.library[library];
    const auto at = all.position.find(value_of(names.deck, found->second, "type"));
    if (at == all.position.end()) return {};
    return unit_in_entry(all.entries[static_cast<std::size_t>(at->second)], library_forms[library], item.quantity);
}

// Unit of a variable of the deck that a meter gives it: voltmeter_fb has a reading k per "1/V", so V where that is 1.
std::string unit_of_reading(const deck_names& names, const installed_libraries& libraries, std::string_view variable) {
    const file_chr& s = names.deck.statements;
    const statement_range circuit = circuit_range(names.deck);
    for (int i = circuit.begin; i < circuit.end; ++i) {
        if (!s.begins(i, "eelement") || value_of(names.deck, i, "y") != variable) continue;
        double k = 1;
        if (const std::string given = value_of(names.deck, i, "k"); !given.empty() && !is_double(given, k)) k = NAN;
        const installed_library& all = libraries.library[names.library_of(i)];
        const auto at = all.position.find(value_of(names.deck, i, "type"));
        if (k != 1 || at == all.position.end()) return {};
        const element_doc doc = doc_of(all.entries[static_cast<std::size_t>(at->second)]);
        const word_doc* word = find_word(doc, "k");
        return word != nullptr && word->unit.starts_with("1/") ? word->unit.substr(2) : "";
    }
    return {};
}

// Averages and effective values have the unit of what they measure, powers those of the product; ratios have none.
std::string unit_of_result(const deck_names& names, const installed_libraries& libraries, const deck_result& result) {
    const auto unit_of = [&](const char* x) {
        return unit_of_reading(names, libraries, value_of(names.deck, result.statement, x));
    };
    if (result.word == "avg" || result.word == "rms") return unit_of("x");
    if (result.word == "rms1") return unit_of("x1");
    if (result.word == "rms2") return unit_of("x2");
    const std::string a = unit_of("x1"), b = unit_of("x2");
    if ((a == "V" && b == "A") || (a == "A" && b == "V"))
        return result.word == "pavg" || result.word == "p" ? "W" : result.word == "s" ? "VA" : "";
    return {};
}

std::string unit_of_word(const deck_names& names, const installed_libraries& libraries, std::string_view word) {
    if (const auto result = names.results.find(word); result != names.results.end())
        return unit_of_result(names, libraries, result->second);
    cut_item item = cut(word);
    auto meant = names.definition.find(word);
    if (meant == names.definition.end() && item.quantity == "mag") meant = names.definition.find(item.owner);
    if (meant != names.definition.end()) item = cut(meant->second);
    return unit_of_item(names, libraries, item);
}

// The type of an instance, also of one that has it from a model; empty: none.
std::string type_of(const deck_names& names, int i_statement) {
    std::string type = value_of(names.deck, i_statement, "type");
    if (!type.empty()) return type;
    const auto model = names.statement.find(value_of(names.deck, i_statement, "model"));
    return model == names.statement.end() ? "" : value_of(names.deck, model->second, "type");
}

// The same of an output variable of a composite. One of several domains may read those of what it calls.
data_kind kind_in_composite(const installed_libraries& libraries, int library, std::string_view type,
                            std::string_view quantity) {
    if (library != lib_dels && library != lib_gmes) return data_kind::number;
    const installed_library& all = libraries.library[library];
    const auto at = all.position.find(type);
    if (at == all.position.end()) return data_kind::number;
    const entry_lines lines = lines_of(all.entries[static_cast<std::size_t>(at->second)], library_forms[library]);
    for (const name_and_value& p : pairs_of(lines, library == lib_dels ? "outvar:" : "outvar_dgtl:")) {
        if (p.name != quantity) continue;
        const cut_item item = cut(p.value);
        if (item.quantity == "dstate") return data_kind::state;
        if (library == lib_dels || item.quantity == "dvar") return data_kind::level;
        for (const words& w : lines) {
            const int called = find_library(&library_form::call, w[0]);
            for (int i = 2; called >= 0 && i + 1 < w.size(); i += 2)  // what stands earlier in its library: this ends
                if (w[i] == "name" && w[i + 1] == item.owner && w[1] != type)
                    return kind_in_composite(libraries, called, w[1], item.quantity);
        }
        return data_kind::level;
    }
    return data_kind::number;
}

data_kind kind_of_word(const deck_names& names, const installed_libraries& libraries, std::string_view word) {
    const auto meant = names.definition.find(word);
    if (meant == names.definition.end()) return data_kind::number;
    const cut_item item = cut(meant->second);
    if (item.quantity == "dvar") return data_kind::level;
    const auto found = names.statement.find(std::string(item.owner));
    if (found == names.statement.end()) return data_kind::number;
    return kind_in_composite(libraries, names.library_of(found->second), type_of(names, found->second), item.quantity);
}

// Whether all elements of the deck are of one kind of statement.
bool has_only(const deck_view& deck, std::string_view statement) {
    const statement_range circuit = circuit_range(deck);
    bool any = false;
    for (int i = circuit.begin; i < circuit.end; ++i) {
        const std::string_view first = deck.statements.word(i, 0);
        if (!is_element_word(first) || is_placeholder(value_of(deck, i, "type"))) continue;
        if (first != statement) return false;
        any = true;
    }
    return any;
}

// The word behind solve_type of the block in which a statement stands.
std::string block_kind(const deck_view& deck, int i_statement) {
    const file_chr& s = deck.statements;
    for (const statement_range& block : solve_ranges(deck))
        for (int i = block.begin; i_statement >= block.begin && i_statement < block.end && i < block.end; ++i)
            if (s.begins(i, "solve_type") && s.n_words(i) > 1) return std::string(s.word(i, 1));
    return {};
}

// The value of `key` in the statements of the range that begin with `first`, as a number; `otherwise` where there is
// none, not a number for a word that is none.
double number_in(const deck_view& deck, statement_range range, std::string_view first, std::string_view key,
                 double otherwise) {
    double value = otherwise;
    for (int i = range.begin; i < range.end; ++i)
        if (deck.statements.begins(i, first))
            if (const std::string word = value_of(deck, i, key); !word.empty() && !is_double(word, value)) value = NAN;
    return value;
}

// Whether the file has the row before the first solution: its block starts from nothing, and the file begins with it.
bool begins_with_guess(const deck_view& deck, const written_file& file) {
    const file_chr& s = deck.statements;
    for (const statement_range& block : solve_ranges(deck)) {
        if (file.i_statement < block.begin || file.i_statement >= block.end) continue;
        for (int i = block.begin; i < block.end; ++i)
            if (s.begins(i, "initial_sol") && s.n_words(i) > 1 && s.word(i, 1) != "initialize") return false;
        statement_range output{file.i_statement, file.i_statement};
        while (output.begin > block.begin && !s.begins(output.begin, "begin_output")) --output.begin;
        while (output.end < block.end && !s.begins(output.end, "end_output")) ++output.end;
        const double start = number_in(deck, block, "method:", "t_start", 0);
        return value_of(deck, file.i_statement, "append", 2) != "yes" &&
               number_in(deck, output, "control:", "out_tstart", start) <= start;
    }
    return false;
}

statement_range block_of(const deck_view& deck, int i_statement) {
    for (const statement_range& block : solve_ranges(deck))
        if (i_statement >= block.begin && i_statement < block.end) return block;
    return {};
}

// A file of small signals: its frequency in Hz, or in rad/s where the file asks for that; of one for a Nyquist plot the
// two columns are what they hold, not what their words say.
void complete_ac(const deck_names& names, const installed_libraries& libraries, const written_file& file,
                 record_file& planned) {
    const auto option = [&](std::string_view word) { return value_of(names.deck, file.i_statement, word, 2); };
    if (option("nyquist") == "yes") planned.kind = "nyquist";
    for (record_column& c : planned.columns) {
        if (c.name == "frequency" && option("output_hz") == "no") c.unit = "rad/s";
        if (planned.kind != "nyquist") continue;
        const cut_item item = cut(c.name);
        const bool is_real = item.quantity == "phase";
        if (!is_real && item.quantity != "mag") continue;
        const std::string variable(item.owner);
        c = {(is_real ? "real_of_" : "imag_of_") + variable, unit_of_word(names, libraries, variable)};
    }
    for (const swept_item& item : swept_items(names.deck, block_of(names.deck, file.i_statement)))
        planned.sweeps.push_back({item.word, unit_of_word(names, libraries, item.word), item.values});
}

// The curves of a sweep in points. Behind rows of other blocks they are not the first.
void complete_points(const deck_names& names, const installed_libraries& libraries, const written_file& file,
                     record_file& planned) {
    if (value_of(names.deck, file.i_statement, "append", 2) == "yes") return;
    const auto recorded = [&](const swept_item& item) {
        return record_sweep{item.word, unit_of_word(names, libraries, item.word), item.values};
    };
    const swept_curves sweep = curves_of_sweeps(names.deck, block_of(names.deck, file.i_statement));
    for (const swept_item& item : sweep.curves) planned.sweeps.push_back(recorded(item));
    if (!sweep.steps.word.empty()) planned.steps = recorded(sweep.steps);
}

// All digital nodes of a deck, as the simulator numbers them: by statement, then by the words of its type.
std::vector<std::string> digital_nodes(const deck_names& names, const installed_libraries& libraries) {
    std::vector<std::string> nodes;
    std::set<std::string> known;
    const statement_range circuit = circuit_range(names.deck);
    for (int i = circuit.begin; i < circuit.end; ++i) {
        if (!names.deck.statements.begins(i, "delement")) continue;
        const installed_library& all = libraries.library[lib_dels];
        const auto at = all.position.find(value_of(names.deck, i, "type"));
        if (at == all.position.end()) continue;
        for (const words& w : lines_of(all.entries[static_cast<std::size_t>(at->second)], library_forms[lib_dels]))
            for (int j = 1; w[0] == "mainnodes:" && j < w.size(); ++j)
                if (const std::string node = value_of(names.deck, i, w[j]); known.insert(node).second)
                    nodes.push_back(node);
    }
    return nodes;
}

// offset_dgtl of the block, also as the name of a global parameter that is a number.
double offset_of(const deck_view& deck, statement_range block) {
    constexpr double usual = 2;
    double offset = number_in(deck, block, "method:", "offset_dgtl", usual);
    if (std::isfinite(offset)) return offset;
    std::string word;
    for (int i = block.begin; i < block.end; ++i)
        if (deck.statements.begins(i, "method:"))
            if (const std::string given = value_of(deck, i, "offset_dgtl"); !given.empty()) word = given;
    offset = number_in(deck, circuit_range(deck), "greal", word, usual);
    return std::isfinite(offset) ? offset : usual;
}

// A file's data are those of its first variable; one of all output variables has the numbers, where there are any.
// Columns of the other kind stop the run: they are left.
void complete_digital(const deck_names& names, const installed_libraries& libraries, const written_file& file,
                      record_file& planned) {
    if (file.columns.empty() || planned.kind == "ac" || planned.kind == "postproc") return;
    std::vector<record_column> numbers, integers;
    for (record_column& c : planned.columns) {
        const data_kind kind = kind_of_word(names, libraries, c.name);
        const bool is_axis = &c == planned.columns.data() && (c.name == "time" || c.name == "harmonic");
        c.level = kind == data_kind::level && !is_axis;
        if (is_axis || kind == data_kind::number) numbers.push_back(c);
        if (is_axis || kind != data_kind::number) integers.push_back(c);
    }
    const std::size_t n_axes = !planned.columns.empty() && planned.columns[0].name == file.columns[0] &&
                                       (file.columns[0] == "time" || file.columns[0] == "harmonic")
                                   ? 1
                                   : 0;
    const bool all_outvars = file.columns.back() == "all_outvars";
    if (all_outvars) {
        planned.digital = numbers.size() == n_axes && integers.size() > n_axes;
        if (!planned.digital) planned.columns = numbers;
    } else if (file.columns.back() == "all_nodes") {
        planned.digital = has_only(names.deck, "delement");
        if (planned.digital && planned.kind == "trns") planned.columns.push_back({"time", "s"});
        if (planned.digital)
            for (const std::string& node : digital_nodes(names, libraries)) planned.columns.push_back({node, "", true});
    } else if (planned.columns.size() > n_axes) {
        planned.digital = kind_of_word(names, libraries, planned.columns[n_axes].name) != data_kind::number;
    }
    if (!planned.digital) return;
    planned.offset = offset_of(names.deck, block_of(names.deck, file.i_statement));
    planned.begins_with_guess = false;  // levels are no solution that the guess lies apart from
}

bool has_column(const written_file& file, std::string_view word) {
    return std::find(file.columns.begin(), file.columns.end(), word) != file.columns.end();
}

}  // namespace

std::string unit_of_column(const deck_view& deck, const installed_libraries& libraries, std::string_view word) {
    return unit_of_word(deck_names(deck), libraries, word);
}

data_kind kind_of_column(const deck_view& deck, const installed_libraries& libraries, std::string_view word) {
    return kind_of_word(deck_names(deck), libraries, word);
}

std::vector<record_file> planned_files(const deck_view& deck, const installed_libraries& libraries) {
    const deck_names names(deck);
    std::vector<record_file> files;
    for (const written_file& file : written_files(deck)) {
        record_file planned;
        planned.path = file.path;
        planned.kind = block_kind(deck, file.i_statement);
        // Explicit blocks alone begin with their states.
        planned.begins_with_guess =
            planned.kind == "trns" && begins_with_guess(deck, file) && !has_only(deck, "xelement");
        if (has_column(file, "harmonic")) planned.kind = "fourier";
        if (file.results) {
            planned.kind = "postproc";
            planned.begins_with_guess = false;
        }
        if (!file.rows) planned.kind = has_column(file, "parms") ? "parms" : "solution";
        if (planned.is_table() && !has_column(file, "all_nodes"))
            for (const std::string& word : file.columns) {
                if (word != "all_outvars") {
                    planned.columns.push_back({word, unit_of_word(names, libraries, word)});
                    continue;
                }
                for (const auto& [name, value] : names.outvars)
                    if (!cut(value).quantity.ends_with("_ac") && !names.results.contains(name))
                        planned.columns.push_back({std::string(name), unit_of_word(names, libraries, name)});
            }
        complete_digital(names, libraries, file, planned);
        if (planned.kind == "ac") complete_ac(names, libraries, file, planned);
        if (planned.kind == "dc" || planned.kind == "startup") complete_points(names, libraries, file, planned);
        files.push_back(std::move(planned));
    }
    return files;
}

}  // namespace cli
