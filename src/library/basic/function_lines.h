// function_lines.h -- the lines of an entry that say what each of its functions depends on.
#pragma once
#include "base/text_file.h"
#include "library/basic_form.h"

// Reads n_func lines of the entry that is being built (the last one in lib.list) into the table of their kind, and
// closes the entry there. Halts on an unknown word, or when a charge of a terminal has no defining function.
void read_functions(text_file& file, const basic_form& form, const function_form& functions, int n_func,
                    basic_library& lib);
