// basic_form.h -- what makes one family of basic elements different from the others, as tables.
#pragma once
#include <span>
#include <string_view>
#include <variant>

#include "base/text_file.h"
#include "deck/library_forms.h"
#include "library/basic_library.h"

// One mandatory line of an entry, in file order. The member's type says how the line is read: names, or pairs of a name
// and a default.
using list_member =
    std::variant<word_list library_lists::*, pair_list<int> library_lists::*, pair_list<double> library_lists::*,
                 pair_list<std::string> library_lists::*, std::vector<int> library_lists::*>;
struct list_line {
    const char* keyword;       // first word of the line
    const char* tag;           // in messages: n_ttl<tag>, n_ttl<tag>chr, k_rem (<tag>)
    list_member member;        // a vector: the line has one number
    int max_words, max_chars;  // of the whole library
    std::vector<int> library_lists::*goes_on_behind =
        nullptr;                    // words follow those of the line before; how many it had
    const char* told_as = nullptr;  // the entry's word in the message of a missing line, where it is not the form's
};

// A flag word behind the name of an entry; only the value "yes" sets it.
struct flag_word {
    const char* word;
    std::vector<int> entry_flags::*member;
};

// A list in which names of variables are searched, and the kind of what is found.
struct variable_list {
    int kind;  // var_kind
    word_list library_lists::*list;
};
struct bracket_word {
    const char* before;  // text before "(": v, volt, cur
    variable_list in;
};

// state_variable: of what stands in d_dt() alone, and of bare words others; not_allowed: as refused, in other words.
enum class ddt_rule { no_word, refused, local_variable, any_variable, state_variable, not_allowed };

// How the dependency words of one sort of function line are read.
struct function_words {
    std::span<const variable_list> bare;  // lists of bare words, in the order of search
    std::span<const bracket_word> brackets;
    ddt_rule ddt;
    const char* ddt_refused_in;  // "startup": the middle of the message of a refused d_dt()
    const char* wrong;           // "startup functions": the message of an unknown word; null: the "check ... " form
    const char* bracket_tail;    // behind the message of an unknown word in brackets
    std::span<const variable_list> states = {};  // of d_dt(), for ddt_rule::state_variable
    bool branch_currents = false;                // "current" and "cur(xx)" are words
};

// Functions of one kind: where they are kept, and the sorts of their lines. Terminal lines come first, one for each
// terminal, if the family has them; which of the others a line is tells its word 1. A sort that a family lacks is null.
struct function_form {
    const char* count;                     // word of the line with their number
    function_table basic_library::*table;  // that they go to
    bool has_count_test;                   // at least one function for each terminal
    const function_words* terminal;
    const function_words* startup;
    const function_words* local;
    const function_words* general;
    const char* code_prefix = "ne_";  // of the constants that sources name them by
    char letter = 'f';                // lines begin with it and "_"
    int block = 2;                    // in the message of a line that does not
    std::string_view tag = "";        // behind n_ttlf in messages
    const char* too_many = nullptr;   // message of its limit; null: too_many_functions of the form
};

// A list whose words become names in the source of a model, <prefix><word>: with a type variables, else constants, the
// position of a word in its list.
struct code_list {
    const char* type;
    const char* prefix;
    list_member member;
};

// An argument of the family's model functions.
struct argument {
    const char* type;
    const char* name;
};

struct basic_form {
    const library_form& lib;                   // the words of the library
    line_rule rule = line_rule::joined_lines;  // how lines outside code sections are read
    const char* function_word;                 // "ebe", "ebe (ac)": in "... functions: check v(xx)"
    const char* no_end;                        // what a missing end word says is missing
    const char* too_many_functions;
    int max_entries;           // tested against entry index + 2
    int max_functions = 1000;  // of the library
    int max_dependencies = 5000;
    const char* jacobian_entry =
        nullptr;  // before the entry's name when its Jacobian line is wrong; null: there is no such line
    std::span<const flag_word> flags = {};
    std::span<const list_line> lines;                            // between the Jacobian line and the count of functions
    std::span<const function_form> functions = {};               // in the order of their lines
    std::span<const variable_list> map_kinds = {};               // tables of the Jacobian map, in their order
    bool has_code = true;                                        // entries end with the text of their function
    bool has_prototypes = true;                                  // such a text begins with them
    bool whole_start_values = false;                             // start-up values and first guesses are integers
    bool has_runs = true;                                        // rows of units are called as one
    std::span<const code_list> declared, numbered;               // what sources name
    void (*check_flags)(const basic_library&, int e) = nullptr;  // behind the first line of an entry,
    void (*close_lists)(basic_library&, int e) = nullptr;        // behind its lists
    std::span<const argument> arguments;
};
// Null: the library has no reader, and must be empty.
const basic_form* basic_form_of(int library);
