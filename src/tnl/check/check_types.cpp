#include "tnl/check/check_types.h"

#include <algorithm>

namespace cli {

namespace {

using words_member = std::vector<std::string> element_type::*;

struct word_line {
    std::string_view keyword;
    words_member list;
    int step;          // 1: words; 2: pairs, whose first words count
    int library = -1;  // of this one alone
};
constexpr word_line word_lines[] = {
    {"mainnodes:", &element_type::digital, 1, lib_dels},
    {"analog_nodes:", &element_type::ind_node, 1, lib_dels},
    {"input_nodes:", &element_type::digital, 1, lib_dbes},
    {"output_nodes:", &element_type::digital, 1, lib_dbes},
    {"analog_nodes:", &element_type::ind_node, 1, lib_dbes},
    {"mainnodes:", &element_type::node, 1, lib_eels},
    {"mainnodes_anlg:", &element_type::node, 1},
    {"auxnodes_anlg:", &element_type::inner, 1},
    {"mainnodes_dgtl:", &element_type::digital, 1},
    {"auxnodes_dgtl:", &element_type::inner_digital, 1},
    {"aux_var:", &element_type::inner_var, 1, lib_gmes},
    {"stparms_anlg:", &element_type::start, 2},
    {"igparms_anlg:", &element_type::guess, 2},
    {"stparms_dgtl:", &element_type::start, 2},
    {"igparms_dgtl:", &element_type::guess, 2},
    {"outvar_anlg:", &element_type::outvar, 2},
    {"outvar_dgtl:", &element_type::outvar, 2},
    {"ind_nodes:", &element_type::ind_node, 1},
    {"ind_branches:", &element_type::ind_branch, 1},
    {"digital_nodes:", &element_type::digital, 1},
    {"main_var:", &element_type::var, 1},
    {"mainvars:", &element_type::var, 1},
    {"auxnodes:", &element_type::inner, 1},
    {"auxvars:", &element_type::inner, 1},
    {"nodes:", &element_type::node, 1},  // of basic elements
    {"main_vars:", &element_type::var, 1, lib_gbes},
    {"main_vars:", &element_type::var, 1, lib_gbac},
    {"main_vars:", &element_type::xvar, 1, lib_xbac},
    {"main_vars:", &element_type::xvar, 1, lib_xels},
    {"input_vars:", &element_type::xvar, 1, lib_xbes},
    {"output_vars:", &element_type::xvar, 1, lib_xbes},
    {"gvars:", &element_type::var, 1},
    {"aux_var:", &element_type::inner, 1, lib_ebes},
    {"aux_var:", &element_type::inner, 1, lib_ebac},
    {"aux_vars:", &element_type::inner, 1},
    {"xvar:", &element_type::xvar, 1},
    {"xvars:", &element_type::xvar, 1},
    {"iparms:", &element_type::iprm, 2},
    {"sparms:", &element_type::sprm, 2},
    {"rparms:", &element_type::rprm, 2},
    {"stparms:", &element_type::start, 2},
    {"igparms:", &element_type::guess, 2},
    {"rparms_derived:", &element_type::derived, 2},
    {"outvar:", &element_type::outvar, 2},
    {"outvar_ac:", &element_type::outvar, 2},
};

bool is_line(const word_line& l, const words& w, int library) {
    return w[0] == l.keyword && (l.library < 0 || l.library == library);
}

constexpr int deepest_call = 20, most_bodies = 2000;  // calls that double at each level are no elements for a run

int library_of(std::string_view call) { return find_library(&library_form::call, call); }

const library_entry* entry_of(const installed_libraries& libraries, int library, std::string_view name) {
    const installed_library& l = libraries.library[library];
    const auto at = l.position.find(name);
    return at == l.position.end() ? nullptr : &l.entries[static_cast<std::size_t>(at->second)];
}

std::string pair_value(const words& w, int first, std::string_view key) {
    for (int j = first; j + 1 < w.size(); j += 2)
        if (w[j] == key) return w.str(j + 1);
    return {};
}

// What a basic element does with its variables and currents.
struct basic_sheet {
    std::vector<std::string> node, var, driven, reads;
    bool has_current = false, limits_step = false, nonlinear = false;
    type_block block;                 // of an explicit one
    std::vector<std::string> x_node;  // likewise
    bool stands_alone = false;
};

// The first that is on decides.
constexpr std::pair<std::string_view, type_block::kind> block_flags[] = {
    {"evaluate", type_block::kind::evaluate},
    {"integrate", type_block::kind::integrate},
    {"delay", type_block::kind::delay},
};

basic_sheet read_basic(const entry_lines& lines, int library) {
    basic_sheet sheet;
    for (const words& w : lines) {
        const auto take = [&](std::vector<std::string>& list) {
            for (int j = 1; j < w.size(); ++j) list.push_back(w.str(j));
        };
        if (w[0] == library_forms[library].begin) {
            sheet.limits_step = pair_value(w, 3, "limit_tstep") == "yes";
            const std::string mixed = pair_value(w, 3, "allow_xmixed");
            sheet.stands_alone = !mixed.empty() && mixed != "yes";
            for (const auto& [flag, how] : block_flags)
                if (pair_value(w, 3, flag) == "yes") {
                    sheet.block.how = how;
                    break;
                }
        }
        if (w[0] == "input_vars:") take(sheet.block.in);
        if (w[0] == "output_vars:") take(sheet.block.out), take(sheet.driven);
        if (w[0] == "cct_nodes:") take(sheet.x_node);
        if (w[0] == "Jacobian:") sheet.nonlinear = w.size() > 1 && w[1] != "constant";
        if (w[0] == "nodes:") take(sheet.node);
        if (w[0] == "main_var:" || w[0] == "main_vars:") take(sheet.var);
        if (w[0] == "output_nodes:") take(sheet.driven);
        if (w[0] == "input_nodes:" || w[0] == "digital_nodes:") take(sheet.reads);
        if (w[0] == "aux_var:") sheet.has_current = w.size() > 1;
        if (!w[0].starts_with("f_") || w.size() < 2 || has(sheet.node, w[0].substr(2))) continue;
        // An equation that begins with a variable, or its rate of change, determines it.
        std::string first = w.str(1);
        if (first.starts_with("d_dt(") && first.ends_with(")")) first = first.substr(5, first.size() - 6);
        if (has(sheet.var, first) && !has(sheet.driven, first)) sheet.driven.push_back(first);
    }
    return sheet;
}

class reader {
public:
    reader(element_types& types, element_type& type) : types_(types), type_(type) {}

    // name_of turns a word of the entry into one of the type; words inside a composite get names of their own.
    void read_body(const library_entry& entry, int library, const std::map<std::string, std::string>& name_of,
                   int depth) {
        if (n_bodies_ >= most_bodies) return;
        const std::string within = "\x01" + std::to_string(n_bodies_++) + ".";  // no deck has such a word
        for (const words& w : types_.lines(entry, library)) {
            if (w[0] == "end_dc") break;  // the small-signal half adds nothing
            const int callee = library_of(w[0]);
            if (callee < 0) continue;
            const bool is_basic = library_forms[callee].statement.empty();
            const std::string name = is_basic ? pair_value(w, 1, "type") : w.size() > 1 ? w.str(1) : std::string();
            const library_entry* used = entry_of(types_.libraries(), callee, name);
            if (used == nullptr) continue;
            const auto outside = [&](const std::string& word) {
                const std::string inner = pair_value(w, is_basic ? 1 : 2, word);
                const auto at = name_of.find(inner);
                return at != name_of.end() ? at->second : within + inner;
            };
            if (is_basic) {
                add_basic(*used, callee, name, outside);
            } else if (depth < deepest_call) {
                n_basic_ += 2;  // not a single element
                std::map<std::string, std::string> inner;
                for (const words& l : types_.lines(*used, callee))
                    for (const word_line& k : word_lines)
                        if (is_line(k, l, callee) && k.step == 1)
                            for (int j = 1; j < l.size(); ++j) inner[l.str(j)] = outside(l.str(j));
                read_body(*used, callee, inner, depth + 1);
            }
        }
        type_.can_be_sensed = n_basic_ == 1 && has_current_;
    }

private:
    template <class F>
    void add_basic(const library_entry& entry, int library, const std::string& name, F outside) {
        const basic_sheet sheet = read_basic(types_.lines(entry, library), library);
        ++n_basic_;
        type_.basics.push_back(name);
        has_current_ = sheet.has_current;
        type_.limits_step = type_.limits_step || sheet.limits_step;
        type_.nonlinear = type_.nonlinear || sheet.nonlinear;
        const model_rules& rules = types_.rules(entry, library);
        type_.refuses_dc = type_.refuses_dc || rules.refuses_dc;
        type_.jumps = type_.jumps || rules.jumps;
        type_.limits = n_basic_ == 1 ? rules.limits : std::vector<limit>{};
        type_.doubts = n_basic_ == 1 ? rules.doubts : doubt_rules{};
        for (const type_branch& b : rules.branches)
            type_.branches.push_back({outside(b.from), b.to == reference_end ? b.to : outside(b.to), b.kind});
        for (std::size_t j = 1; j < sheet.node.size() && rules.branches.empty(); ++j)
            type_.branches.push_back({outside(sheet.node[0]), outside(sheet.node[j]), branch_kind::conducting});
        for (const std::string& v : sheet.driven) type_.driven.push_back(outside(v));
        for (const std::string& v : sheet.reads) type_.reads.push_back(outside(v));
        for (const std::string& v : sheet.x_node) type_.x_node.push_back(outside(v));
        type_.stands_alone = type_.stands_alone || sheet.stands_alone;
        if (library != lib_xbes) return;
        type_block block = sheet.block;
        for (std::vector<std::string>* list : {&block.in, &block.out})
            for (std::string& v : *list) v = outside(v);
        type_.blocks.push_back(std::move(block));
    }

    element_types& types_;
    element_type& type_;
    int n_basic_ = 0, n_bodies_ = 0;
    bool has_current_ = false;
};

// The calls of a mixed composite, without those that a nested one brings.
std::vector<element_type::part> parts_of(const entry_lines& lines) {
    std::vector<element_type::part> parts;
    int position = 0;
    for (const words& w : lines) {
        const int library = library_of(w[0]);
        if (library < 0 || library_forms[library].statement.empty() || w.size() < 2) continue;
        std::string name = pair_value(w, 2, "name");
        // A call without a name has its position in the list, which a nested one behind it would shift.
        if (name.empty() && position >= 0) name = w.str(1) + "." + std::to_string(position);
        position = library == lib_gmes || position < 0 ? -1 : position + 1;
        if (library != lib_gmes && !name.empty()) parts.push_back({name, w.str(1), library});
    }
    return parts;
}

}  // namespace

bool has(const std::vector<std::string>& list, std::string_view word) {
    return std::find(list.begin(), list.end(), word) != list.end();
}

const entry_lines& element_types::lines(const library_entry& entry, int library) {
    const auto [at, is_new] = lines_.try_emplace(&entry);
    if (is_new) at->second = lines_of(entry, library_forms[library]);
    return at->second;
}

const model_rules& element_types::rules(const library_entry& entry, int library) {
    const auto [at, is_new] = rules_.try_emplace(&entry);
    if (is_new) at->second = rules_of(entry, library_forms[library]);
    return at->second;
}

const element_type* element_types::find(int library, std::string_view name) {
    const std::pair key(library, std::string(name));
    if (const auto at = known_.find(key); at != known_.end()) return &at->second;
    const library_entry* entry = library < 0 ? nullptr : entry_of(libraries_, library, name);
    if (entry == nullptr) return nullptr;

    element_type type;
    type.library = library;
    type.name = name;
    const entry_lines& of_entry = lines(*entry, library);
    for (const words& w : of_entry)
        for (const word_line& l : word_lines)
            if (is_line(l, w, library))
                for (int j = 1; j < w.size(); j += l.step)
                    if (!has(type.*l.list, w[j])) (type.*l.list).push_back(w.str(j));
    type.text_values = pairs_of(of_entry, "sparms:");
    for (const char* keyword : {"iparms:", "rparms:", "stparms:"})
        for (name_and_value& p : pairs_of(of_entry, keyword)) type.values.push_back(std::move(p));
    type.doc = doc_of(*entry);
    if (library == lib_gmes) type.parts = parts_of(of_entry);
    std::map<std::string, std::string> own;
    for (words_member list : {&element_type::node, &element_type::var, &element_type::digital, &element_type::xvar})
        for (const std::string& w : type.*list) own[w] = w;
    reader(*this, type).read_body(*entry, library, own, 0);
    const model_rules& told = rules(*entry, library);
    type.has_own_limits = !told.limits.empty() || !told.doubts.empty();
    if (type.has_own_limits) {
        type.limits = told.limits;
        type.doubts = told.doubts;
    }
    type.computed = told.computed;
    return &known_.emplace(key, std::move(type)).first->second;
}

}  // namespace cli
