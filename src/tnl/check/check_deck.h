// check_deck.h -- a deck as `tnl check` sees it, and the checks, each of which adds what it finds to the report.
//
// Nothing here stops at a fault: every reader takes what it can understand and goes on.
#pragma once
#include <cmath>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "elaborate/circuit.h"
#include "settings/method_words.h"
#include "settings/read_directives.h"
#include "tnl/check/check_report.h"
#include "tnl/check/check_types.h"
#include "tnl/common/halt.h"

struct solve_class;

namespace cli {

// Sections as statement ranges without their begin and end lines; where an end is missing, they reach as far as their
// statements seem to.
struct solve_section {
    int begin_line = -1;  // of begin_solve
    statement_range range;
    std::vector<statement_range> outputs;  // within
    std::vector<char> in_output;           // [range.end - range.begin] 1: the statement belongs to an output block
    std::string type;                      // empty: none
    int type_line = -1;
    bool is_known_type = false;
    double n_points = 1;                                  // of its sweeps; NaN: not known
    double t_start = 0, t_end = NAN, longest_step = NAN;  // s
    double t_long = -HUGE_VAL;                            // s; the longest step holds from here on
};
struct deck_sections {
    int begin_circuit = -1;  // its line; -1: none
    statement_range circuit;
    std::vector<solve_section> solves;
    int end = 0;  // statement end_cf, or the number of statements
};

// A pair of words of a statement; value -1: it has none.
struct key_value {
    int key, value;
};

struct deck_element {
    int statement;
    int library;  // position in library_forms
    std::string name, type_name;
    int at_type = 0;                     // word of the type
    const element_type* type = nullptr;  // nullptr: unknown, or a placeholder
    bool is_placeholder = false;
    std::vector<key_value> pairs;  // the first of each key
};

// Kinds of solve block, with the bit of method_words.
struct block_type {
    std::string_view word;
    unsigned bit;
};
inline constexpr block_type block_types[] = {
    {"dc", b_dc}, {"ac", b_ac}, {"trns", b_trns}, {"startup", b_startup}, {"ssw", b_ssw}};

// "an ac block", "a dc block".
inline std::string block_named(std::string_view type) {
    return (type == "ac" || type == "ssw" ? "an " : "a ") + std::string(type) + " block";
}

struct named_values {
    std::set<std::string> reals, ints, texts;  // greal, ginteger, gstring
};

// Where the rows of a run go: DECK.run if no folder is named. With force, a whole path leads where it leads.
struct check_place {
    std::filesystem::path folder = {};
    bool force = false;
};

struct checked_deck {
    check_report report;
    element_types types;
    std::filesystem::path folder;  // that file names are relative to
    check_place place;             // with its folder
    deck_sections sections;
    named_values globals;
    std::vector<deck_element> elements;                  // placeholders too
    std::map<std::string, int> models;                   // "library type name" to its statement; the first of equals
    std::map<std::string, int, std::less<>> element_of;  // instance name to position in elements; the first of equals
    std::map<std::string, double> written;               // files of the blocks so far: rows if known, else NaN
    circuit c;                                           // as the simulator's readers make it, without what they refuse
    bool is_built = false;                               // c.ebeu and its kin are there: nothing was refused
    std::vector<kept_stop> stops;                        // of these readers

    const file_chr& text() const { return report.deck.statements; }
    std::string word(int i, int j) const { return std::string(text().word(i, j)); }
    std::string value(const deck_element& e, std::string_view key, int* at = nullptr) const;  // empty: not given
};

// ---- the checks, in the order in which they run

void check_composites(checked_deck& d);  // those that the deck brings along
void check_sections(checked_deck& d);    // title, begin and end pairs, words that begin a statement
void check_globals(checked_deck& d);     // greal, ginteger, gstring
void check_elements(checked_deck& d);    // element and model statements: types, names, words, values
void check_nodes(checked_deck& d);       // reference, connections, loops of voltages, cut sets of currents
void check_switches(checked_deck& d);    // switches of one way beside inductors
void check_variables(checked_deck& d);   // block variables: who writes, who reads
void check_digital(checked_deck& d);     // digital nodes: what drives them
void check_outvars(checked_deck& d);     // outvar: statements
void check_solves(checked_deck& d);      // solve blocks
void check_outputs(checked_deck& d, const solve_section& s, const solve_class& slv);  // output blocks of one
// A word of variables: that the reader of output blocks refuses.
void check_unknown_variable(checked_deck& d, const solve_section& s, deck_word at);

// ---- what several checks share

bool is_digital_alone(const checked_deck& d);  // digital elements, and nothing that is electrical

// Words from `first` on as keys and values. A word that nobody knows in front of a known one is alone: a value or a '='
// is missing, and the pairs behind it are not to suffer.
std::vector<key_value> pairs_in(const checked_deck& d, int statement, int first, const std::vector<std::string>& known);
// Is the word a number, or the name of a constant of the deck? With a message if not.
bool check_real(checked_deck& d, deck_word at, double* value = nullptr);
bool check_int(checked_deck& d, deck_word at, int* value = nullptr);
bool is_integer(std::string_view word, int& value);

// "item" of set_parm, vary_parm ... that the reader refuses: PARAMETER_of_ELEMENT or glbl_of_NAME.
void check_item(checked_deck& d, deck_word at, const item_card& card);

// Whether the statement names output variables, or is meant to: `outvar` without its colon, or misspelt.
bool is_outvar(const file_chr& f, int statement);
// Whether one is written in a way that its names cannot be told: outvar:x=..., without the blank.
bool has_lost_outvars(const checked_deck& d);

std::filesystem::path path_of(const checked_deck& d, const std::string& name);  // of a file beside the deck
bool file_exists(const checked_deck& d, const std::string& name);

// Where a statement that begins so is passed over, the rows of the deck are there all the same.
bool asks_for_no_rows(std::string_view word);

// All checks over one deck; of a file of composites, which has no circuit, over these alone. What the deck brings along
// is put into the libraries if it is not there.
check_report check_deck(deck_view view, const installed_libraries& libraries, check_place place = {});

}  // namespace cli
