// library_form.h -- what makes one family of basic elements different from the others, as tables.
#pragma once
#include <span>
#include <string_view>
#include <variant>

#include "base/text_file.h"
#include "library/basic_library.h"

// One mandatory line of an entry, in file order. The member's type says how the line is read: names, or pairs of a name
// and a default.
using list_member = std::variant<word_list library_lists::*, pair_list<int> library_lists::*,
                                 pair_list<double> library_lists::*, pair_list<std::string> library_lists::*>;
struct list_line {
    const char* keyword;  // first word of the line
    const char* tag;      // in messages: n_ttl<tag>, n_ttl<tag>chr, k_rem (<tag>)
    list_member member;
    int max_words, max_chars;  // of the whole library
};

// A flag word behind the name of an entry; only the value "yes" sets it.
struct flag_word {
    const char* word;
    std::vector<int> entry_flags::*member;
    int dflt;  // when the word is absent
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

enum class ddt_rule { no_word, refused, local_variable, any_variable };

// How the dependency words of one sort of function line are read.
struct function_words {
    std::span<const variable_list> bare;  // lists of bare words, in the order of search
    std::span<const bracket_word> brackets;
    ddt_rule ddt;
    const char* ddt_refused_in;  // "startup": the middle of the message of a refused d_dt()
    const char* wrong;           // "startup functions": the message of an unknown word; null: the "check ... " form
    const char* bracket_tail;    // behind the message of an unknown word in brackets
};

// The sorts of function line. Terminal lines come first, one for each terminal, if the family has them; which of the
// others a line is tells its word 1. A sort that a family lacks is null.
struct function_form {
    bool has_count_test;  // at least one function for each terminal
    const function_words* terminal;
    const function_words* startup;
    const function_words* local;
    const function_words* general;
};

// How the family's model functions and its dispatch routine are declared.
struct argument {
    const char* type;
    const char* name;
};
// A list whose words become constants: <prefix><word>; with a type they are declared as variables too.
struct declared_list {
    const char* type;    // "int"; null: numbered only
    const char* prefix;  // "nr_"
    list_member member;
};
struct glue_form {
    const char* file_word;     // "ebe": subebe.cpp, getebe.cpp, dummy_subebe
    const char* prefix;        // "e_": functions are e_<name>
    const char* dispatcher;    // "get_ebe"
    const char* selector;      // "i_ebes": library number
    const char* map;           // "map_global_ebe": member of flags_class
    const char* jac_header;    // "ebes1_class.h"
    const char* registration;  // type of a row of the registration table
    const char* run;           // "run_ebe": template that calls a function for rows of units; null: there is none
    const char* list_file;     // "ebe_all.lst"
    bool has_prototypes;
    std::span<const argument> arguments;
    std::span<const declared_list> declared;  // in the order of the declarations
    std::span<const declared_list> numbered;  // in the order of the constants
};

struct library_form {
    const char* class_name;     // "ebes_class"
    const char* path;           // ".tnlaux/ebes.aux"
    line_rule rule;             // how lines outside code sections are read
    const char* keyword;        // "ebe": begins an entry, "end" + keyword ends it
    const char* function_word;  // "ebe", "ebe (ac)": in "... functions: check v(xx)"
    const char* read_word;      // "ebes": in "read_ebes: check ..."
    const char* no_end;         // what a missing end word says is missing
    const char* too_many_functions;
    int max_entries;    // tested against entry index + 2
    int max_functions;  // of the library
    int max_dependencies;
    const char* jacobian_entry;  // before the entry's name when its Jacobian line is wrong; null: there is no such line
    std::span<const flag_word> flags;
    std::span<const list_line> lines;  // between the Jacobian line and the count of functions
    function_form functions;
    std::span<const variable_list> map_kinds;  // tables of the Jacobian map, in their order
    glue_form glue;
};
