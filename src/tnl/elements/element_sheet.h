// element_sheet.h -- all that a person may want to know of an installed element, from its entry and the comments in it.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "tnl/deck/installed.h"
#include "tnl/elements/element_doc.h"
#include "tnl/elements/model_rules.h"

namespace cli {

struct sheet_word {
    std::string word;
    std::string
        kind;  // of a terminal: "node", "sensed node", "sensed element", "variable" ...; of a parameter its type
    std::string value;  // of parameters and start values: what holds when the deck says nothing
    std::string unit, text;
};
struct element_sheet {
    std::string family;     // "e", "g", ...
    std::string statement;  // word of the deck that places it: "eelement"
    std::string group, name;
    std::vector<std::string> description, examples, response;  // as in element_doc
    std::vector<sheet_word> terminals, parameters, start_values, first_guesses, outputs, outputs_ac;
    bool small_signal = false;  // has a small-signal form
    model_rules rules;  // of its basic elements; of limits and branches only where it stands for one of its name
    const std::string& summary() const;
};
// libraries: where its basic elements are looked for.
element_sheet sheet_of(const library_entry& entry, int library, const installed_libraries& libraries = {});

// Every installed element, and ground_dummy, which needs no library: by family in the order of library_forms, group,
// name.
std::vector<element_sheet> all_sheets(const installed_libraries& libraries);

std::string_view family_title(std::string_view family);  // "electrical elements"

// Elements of this name; "g:clock" is the one of family g. Empty if there is none.
std::vector<const element_sheet*> find_sheets(const std::vector<element_sheet>& sheets, std::string_view name);

// What the comments of an entry lack or have too much of, one line each: words without a line or out of order, lines
// about unknown words, examples that its deck statement would not take. Empty if the entry is described well.
std::vector<std::string> doc_faults(const library_entry& entry, int library);

}  // namespace cli
