// library_parts.h -- libraries of one family from one text, for the targets that read them.
#pragma once
#include <array>
#include <string_view>

#include "library/basic_form.h"
#include "library/basic_library.h"
#include "library/composite/composite_form.h"

// The text has up to three parts with a line of "====" between: elements, their small-signal forms, composites.
std::array<std::string_view, 3> cut_parts(std::string_view text);

// Elements that are left out are the installed ones. What is read is written as sources too.
void read_elements(std::string_view text, const basic_form& form, const basic_library& otherwise, basic_library& lib);
void read_composites_of(std::string_view text, const composite_form& form, const basic_library& basic,
                        const basic_library& basic_ac, composite_library& lib);
// Halts where a string parameter is a path: files must stay in the folder of the process.
void refuse_paths(const basic_library& basic, const composite_library& composites);
