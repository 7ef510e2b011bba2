// element_doc.h -- what a library entry says of itself to people.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "tnl/deck/library_split.h"

namespace cli {

// Comment lines within a composite entry speak to people:
//   #: text            a line of the description; the first line is the summary
//   #> statement       a line of a deck that shows the element in use
//   #~ text            a line about the picture of its response, response_deck.h
//   #. word unit text  a terminal, parameter, start value or output variable; unit "-" for none
//   #@ group           the folder of models that the entry comes from; the build writes it
// A word that names two things, like a terminal p and an output variable p, has a line for each, the output's last.
struct word_doc {
    std::string word, unit, text;  // unit empty for none
};
struct element_doc {
    std::string group;
    std::vector<std::string> description, examples, response;
    std::vector<word_doc> words;  // in the order of the file
};
element_doc doc_of(const library_entry& entry);

// The last line about the word; nullptr if there is none.
const word_doc* find_word(const element_doc& doc, std::string_view word);

}  // namespace cli
