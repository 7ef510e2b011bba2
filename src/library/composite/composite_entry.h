// composite_entry.h -- one composite while it is being read: what its statements need and its finished row does not.
#pragma once
#include <string>
#include <vector>

#include "base/halt.h"
#include "library/composite/composite_form.h"
#include "library/list_lines.h"
#include "library/statement_keys.h"

// Parameter values kept under a name for the statements of one half: an ebemodel or ecemodel line.
struct model_line {
    std::string name, type;
    words key, value;
};
model_line model_line_of(const words& w);  // <keyword> name M type T p v ...
struct model_lines {
    std::vector<model_line> list;
    int n_key_chr = 0, n_value_chr = 0;

    const model_line* find(std::string_view name) const;
};

// left_of_right of an output that the body still has to find; position in the output_table.
struct open_output {
    int at;
    std::string left, right;
};

// Where the next element's share of each kind begins, over the elements of this entry's half.
struct running_offsets {
    int aux = 0, iprm = 0, rprm = 0, node = 0;
};

// A call of another composite in the DC half, so that the call in the AC half finds its elements and nodes.
struct made_call {
    std::string name;
    int i_lib;
    int first_be;        // position of its first element in this entry's DC list
    int first_internal;  // this entry's number of its first internal node
};

struct named_element {
    std::string name;
    int be;  // position in this entry's list of the half
};
const named_element* find_named(const std::vector<named_element>& list, std::string_view name);

// One half of the entry, with its tables.
struct half_in_work {
    bool ac;
    const basic_library& basic;
    element_table& be;
    call_table& call;
    output_table& ov;
    const output_kinds& kinds;
    const word_list& in;  // the composite's sensed nodes and branches in this half
    const word_list& ib;
    std::string element_routine, call_routine;  // "eels_ebe", "eels_eels_ac": in messages
    const char* half_word;                      // "DC", "AC"

    model_lines element_models{}, call_models{};
    std::vector<open_output> open_ov{}, open_bias{};
    running_offsets next{};
    std::vector<named_element> elements{};  // all with a name=, body statements only
    std::vector<named_element> branches{};  // those with two terminals
    std::vector<int> calls{};               // [calls so far] composite; the AC half pairs its calls by their order
    struct forward_branch {
        std::string name;
        std::size_t at;  // in be.ib.data
    };
    std::vector<forward_branch> forward{};  // references to branches that have not come yet
    int n_forward = 0;                      // ever made
    bool after_element = false;             // the last body statement was an element
};

struct entry_in_work {
    const composite_form& form;
    composite_library& lib;
    int e;
    std::string name;
    int n_main = 0;                            // nodes visible from outside
    int n_internal = 0;                        // internal nodes, those of called composites included
    int n_internal_named = 0;                  // the part that statements can name
    std::vector<char> node_touched{};          // by a terminal or as sensed node
    std::vector<made_call> calls{};            // of the DC half
    std::vector<named_element> dc_elements{};  // named elements of the DC half, for the AC half

    std::string library_words() const { return line("check ", form.lib.begin, " library"); }
    // Number of a node that a statement names: main nodes, then internal ones; -1.
    int find_node(std::string_view word) const;
    void touch(int node) { node_touched[static_cast<std::size_t>(node)] = 1; }
};

// ---- body statements (composite_body.cpp, composite_call.cpp) ----
void read_element(entry_in_work& entry, half_in_work& half, const words& w);
void read_call(entry_in_work& entry, half_in_work& half, const words& w);
void read_acparm_map(entry_in_work& entry, half_in_work& half, const words& w);

// ---- lines that several statements share (composite_derived.cpp, composite_outputs.cpp, composite_models.cpp) ----
// Derived parameters stand behind the plain ones in the list of entry e; each may use those before it. tells_operands:
// one that fails is shown in its parts first.
void read_derived(composite_library& lib, int e, std::string_view class_name, bool tells_operands, const words& w);
void read_model_line(const entry_in_work& entry, half_in_work& half, const words& w, bool of_element);
// The words of an output or bias line become rows of the table; what the body must find stays open.
void read_outputs(entry_in_work& entry, const words& w, const header_line& l, output_table& table,
                  const output_kinds& kinds, std::vector<open_output>& open);
// Assigns the open outputs whose right word is the element's name.
void find_outputs_at_element(half_in_work& half, output_table& table, std::vector<open_output>& open,
                             std::string_view name, int i_basic, int be);
// The same for a call: the callee's own outputs, shifted to this entry. node_map: callee's nodes here.
void find_outputs_at_call(half_in_work& half, output_table& table, std::vector<open_output>& open,
                          std::string_view name, const output_table& callee, int i_callee, int first_be,
                          const std::vector<int>& node_map, const std::string& not_found);

// A parameter value in a body statement: a name of the composite's own list links to it (link: its position, else -1),
// else it is a literal. whole: of an integer.
template <class T>
void link_or_literal(const pair_list<T>& own, int e, int link, std::string_view class_name, std::string_view word,
                     bool whole, T& value, int& flag) {
    flag = link;
    if (flag >= 0)
        value = own.value(e, flag);
    else
        read_literal(word, class_name, value, whole);
}

// The integer parameter by which a small-signal form names the element of the DC half whose operating point it uses.
inline constexpr std::string_view operating_point_word = "ac_parm_be";

// The groups of parameters of an element, in the order in which a statement's words are applied.
template <class T>
struct parameter_group {
    pair_list<T> library_lists::*list;
    row_table<T> element_table::*value;
    row_table<int> element_table::*flag;
    const char* total;
    int composite_limits::*max;
    bool from_model;
};
template <class F>
void for_each_group(F f) {
    using L = library_lists;
    using E = element_table;
    using M = composite_limits;
    f(parameter_group<int>{&L::iprm, &E::iprm, &E::iprm_flag, "n_be_ttliprm", &M::max_iprm, true});
    f(parameter_group<std::string>{&L::sprm, &E::sprm, &E::sprm_flag, "n_be_ttlsprm", &M::max_sprm, false});
    f(parameter_group<double>{&L::rprm, &E::rprm, &E::rprm_flag, "n_be_ttlrprm", &M::max_rprm, true});
    f(parameter_group<double>{&L::sv, &E::sv, &E::sv_flag, "n_be_ttlsv", &M::max_sv, false});
    f(parameter_group<double>{&L::ig, &E::ig, &E::ig_flag, "n_be_ttlig", &M::max_ig, false});
}

// Model pairs, then the statement's words, on top of what stands in `value` and `flag`: one of each for each name. The
// name of the operating point is no parameter word.
template <class T>
void apply_words(const entry_in_work& entry, const parameter_group<T>& g, const word_list& names, int i_names,
                 const model_line* model, statement_keys& keys, T* value, int* flag) {
    const pair_list<T>& own = entry.lib.list.*g.list;
    bool whole = false;
    if constexpr (std::is_same_v<T, double>) whole = entry.form.whole_start_values && holds_start_values(g.list);
    const auto apply = [&](std::string_view word, int j) {
        link_or_literal(own, entry.e, own.find(entry.e, word), entry.form.lib.class_name, word, whole, value[j],
                        flag[j]);
    };
    for (int j = 0; j < names.count(i_names); ++j) {
        const std::string_view name = names.word(i_names, j);
        if (name == operating_point_word) continue;
        if (model && g.from_model)
            if (const int i = find_word_1(model->key, name); i >= 0) apply(model->value[i], j);
        if (const int i = keys.find(name); i >= 0) apply(keys.w[i], j);
    }
}

// A message of a bound line behind the routine's name; one that names the class stands alone.
std::string composite_message(const std::string& routine, const char* text);
// Sizes of the expanded tables against the limits of the library, under the routine's name.
void check_element_totals(const entry_in_work& entry, const half_in_work& half, const std::string& routine);
// Closes the statement: every word must have been used.
void check_ticks(const entry_in_work& entry, const statement_keys& keys, const std::string& routine, bool tell_entry);
