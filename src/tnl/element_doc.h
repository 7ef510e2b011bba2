// element_doc.h -- what a library entry says of itself to people.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "tnl/library_split.h"

namespace cli {

// Comment lines within a composite entry speak to people:
//   #: text            a line of the description; the first line is the summary
//   #. word unit text  a terminal, parameter, start value or output variable; unit "-" for none
struct word_doc {
    std::string word, unit, text;  // unit empty for none
};
struct element_doc {
    std::vector<std::string> description;
    std::vector<word_doc> words;  // in the order of the file
};
element_doc doc_of(const library_entry& entry);

const word_doc* find_word(const element_doc& doc, std::string_view word);  // nullptr if none

}  // namespace cli
