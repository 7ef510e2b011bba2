// code_section.h -- the source text inside a library entry: raw physical lines, of which only the first word is looked
// at.
#pragma once
#include <string>
#include <string_view>

#include "base/text_file.h"
#include "library/basic_form.h"

// Passes over the section and the entry's end word. Halts when the next entry begins first, or the end word does not
// stand within 5000 lines.
void skip_code(text_file& file, const basic_form& form);

// Passes over lines up to one whose word 0 is one of the two words, and that line. False if neither stands within 5000
// lines. Each line passed over goes to `take` if that is not null, less blank lines and lines that begin with "//".
bool pass_lines(text_file& file, std::string_view end, std::string_view other_end, std::string* take);
