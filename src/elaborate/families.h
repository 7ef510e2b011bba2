// families.h -- what makes the five kinds of element statement different from one another.
#pragma once
#include <span>
#include <string_view>

#include "elaborate/circuit.h"

// One list of a composite whose words are keys of the statement and whose values are names of a domain of the deck.
struct bound_list {
    word_list library_lists::*list;
    name_table cct_class::*names;
    row_table<int> instance_core::*row;
    std::string_view what;                             // "node name", "var name": of a missing key
    std::string_view assigning;                        // routine of an unknown value
    word_list composite_library::*internal = nullptr;  // names inside the composite, numbered behind those
};

// Units that elements of the family's composites become.
struct unit_table {
    element_table composite_library::*elements;
    basic_library libraries::*templates;
    std::vector<int> instance_core::*first_unit;
    unit_core& (*units)(circuit&);
    bool with_start_values;  // stparms and igparms
};

struct family_form {
    family number;
    const library_form& lib;  // the words of its composites
    composite_library libraries::*composites;
    instance_core circuit::*instances;
    model_class circuit::*models;
    std::span<const std::string_view> placeholders;  // types that are no elements
    std::span<const std::string_view> flag_words;    // accepted yes/no words
    std::span<const bound_list> bound;               // in the order of the name pass
    int kind_rparm;                                  // ov_kind of a real parameter of an instance; ov_none
    std::span<const unit_table> units = {};          // none yet of families without units
};

extern const family_form family_forms[n_family];
const family_form* family_of_keyword(std::string_view keyword);  // null: no element statement
const family_form& family_of_library(int library);               // of the family's composites
bool is_placeholder(const family_form& form, std::string_view type);

// An element statement in words, found by a pass over the circuit block.
struct element_statement {
    const family_form* form = nullptr;
    int line = -1;  // statement number
    words w;
    int at_type = -1;  // position of the value of `type`
    int i_lib = -1;    // composite; set by the name pass
};
