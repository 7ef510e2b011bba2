// composite_form.h -- what makes one family of composites different from the others, as tables.
#pragma once
#include <limits>
#include <span>
#include <variant>

#include "deck/library_forms.h"
#include "deck/ov_class.h"
#include "library/composite/composite_library.h"

// One mandatory line of a half, in file order. The member's type says how it is read.
enum class special_line { mark, derived, digital_starts, digital_guesses };
using header_member = std::variant<word_list library_lists::*, pair_list<int> library_lists::*,
                                   pair_list<double> library_lists::*, pair_list<std::string> library_lists::*,
                                   word_list composite_library::*, output_table composite_library::*, special_line>;
struct header_line {
    const char* keyword;
    const char* text;  // how the message of a missing line calls it
    header_member member;
    const char* tag;                // in messages: n_ttl<tag>, n_ttl<tag>chr, k_rem (<tag>)
    const char* entry_text;         // the count of one entry in its message
    int max_entry;                  // words of one entry; 0: no limit
    int max_words, max_chars;       // of the library; 0: no limit
    const char* library = nullptr;  // its word in the message of a missing line, where it is not the form's
    bool goes_on = false;           // the line may be missing; its words follow those of the line before
};

// A list of the elements whose words are keys of a body statement. Values are names of the composite's own list `in`,
// or of its internal names if it has_internal. Sensed nodes may also be plain nodes; sensed branches are element names.
enum class binding { plain, sensed_node, sensed_branch };
struct bound_line {
    binding how;
    word_list library_lists::*list;  // of the element, and of the composite
    bool has_internal;
    bool in_ac;  // elements of the AC half have such words
    row_table<int> element_table::*row;
    row_table<int> element_table::*flag;  // of sensed nodes and branches; else null
    const char* total;                    // count over the library's elements in its message
    int max_total;
    const char* no_key;       // messages, made by composite_message: an element's key is missing,
    const char* no_value;     // its value is unknown,
    const char* no_call_key;  // and the same of a call
    const char* no_call_value;
};

constexpr int no_limit = std::numeric_limits<int>::max();
struct composite_limits {
    int max_entries;   // tested against entry index + 2
    int max_internal;  // internal nodes of an entry, those of its calls included
    int max_nodes;     // nodes of an entry
    int max_node_chars;
    int max_elements, max_elements_ac;  // of the library, calls expanded
    int max_elements_entry;
    int max_models, max_model_chars;                   // model statements of an entry
    int max_branches;                                  // named branches of an entry
    int max_forward;                                   // references to elements that come later
    int max_iprm, max_sprm, max_rprm, max_sv, max_ig;  // parameters over the library's elements
};

// Kinds that the output words of a half can have; -1: the half has no such word.
struct output_kinds {
    int node, aux, current, iparm, rparm;
    int state = -1;  // the pending action of an element
};

struct composite_form {
    const library_form& lib;       // the words of the library,
    const library_form& basic;     // of the elements that its entries are made of,
    const library_form& basic_ac;  // and of those of the AC half, if there is one
    const char* model_tag;         // "em": emebe, emece in messages of model lines
    bool has_power;                // pwr_elec is an output word
    bool may_postprocess;          // entries may be postprocessors; elsewhere those are flag words like any unknown one
    bool tells_operands;           // a derived parameter that fails is shown in its parts first
    const char* node_word;         // "nodev": left word of the output of a node
    const char* node_name;         // "node": what the composite's connections are called in messages
    word_list library_lists::*main_list;              // the connections visible from outside
    bool has_code = true;                             // a section for text stands behind the DC half
    bool has_halves = true;                           // else the DC half stands alone, without words of its own
    bool whole_start_values = false;                  // start-up values and first guesses are integers
    std::span<const header_line> dc_lines, ac_lines;  // no ac_lines: entries have no AC half
    std::span<const bound_line> bound;
    composite_limits limit;
    output_kinds dc_kinds, ac_kinds;
};
extern const composite_form eels_form, gels_form, dels_form, xels_form;
const composite_form* composite_form_of(int library);  // null: the library has no reader, and must be empty
// Of the start-up values or first guesses of entry e, those from this position on are whole numbers.
int first_whole(const library_form& composites, const composite_library& lib, pair_list<double> library_lists::*list,
                int e);
