// mixed_form.h -- composites that join those of several domains: the lines of their entries, and what differs between
// the calls of one library and another, as tables.
#pragma once
#include "library/composite/composite_form.h"

// The header of an entry, in file order; what is expected is named with its colon.
extern const std::span<const header_line> gmes_lines;

// The libraries whose composites a mixed one can call, all read before it.
struct mixed_callees {
    const composite_library* eels = nullptr;
    const composite_library* dels = nullptr;
    const composite_library* gels = nullptr;
};

// What the words of a call's connections are names of: main and internal analog nodes, digital nodes, variables of the
// mixed composite, or another call of it, whose current is sensed.
enum class mixed_place { analog, digital, variable, branch };

// A list of the callee whose words are keys of a call. Texts stand behind the name of the routine.
struct mixed_bound {
    word_list library_lists::*list;
    mixed_place place;
    row_table<int> element_table::*row;  // null for calls of mixed composites, which are copied
    const char* no_key;
    const char* no_value;
};

struct mixed_domain;

// The three lines of outputs. A word is that of a name of this composite, or one that a call offers: those of the
// analog line by calls of elements and blocks, of the digital line by digital ones, of the last by small-signal halves.
struct mixed_output_word {
    std::string_view left;  // "nodev"
    int kind;               // ov_kind of that word
    mixed_place place;
};
struct mixed_outputs {
    const char* tag;   // "ova": in messages
    const char* line;  // "analog": in messages
    bool digital, small_signal;
    std::span<const mixed_output_word> words;
};
extern const std::span<const mixed_outputs> mixed_output_lines;
// The outputs of a line: of a mixed composite itself, and of what it calls; null if such a callee has none.
output_table& own_outputs(composite_library& lib, const mixed_outputs& line);
const output_table* callee_outputs(const composite_library& lib, const mixed_outputs& line, const mixed_domain& domain);

// One domain that can be called.
struct mixed_domain {
    const library_form& lib;                           // the words of its composites
    const composite_library* mixed_callees::*callees;  // null: the mixed library itself
    std::string_view routine;                          // "gmes_ece": in messages
    std::string_view type_word;                        // "ece", "gmes2": what the type of a call is called
    std::span<const mixed_bound> bound;
    bool digital;      // its outputs are those of the digital line
    bool tells_entry;  // an unknown word is told with the entry that has it
};
extern const std::span<const mixed_domain> mixed_domains;

// The names of entry e that a place stands for: main ones, then internal ones, numbered through.
struct mixed_names {
    const word_list* main;
    const word_list* internal;
};
mixed_names names_at(const composite_library& lib, mixed_place place);

constexpr int max_mixed_models = 20;        // of each kind in an entry
constexpr int max_mixed_branches = 200;     // calls of an entry that can be sensed
constexpr int max_mixed_elements = 100000;  // of the library: guards against calls that double at each level
