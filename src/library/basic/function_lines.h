// function_lines.h -- the lines of an entry that say what each of its functions depends on.
#pragma once
#include "base/text_file.h"
#include "library/library_form.h"

// Reads n_func lines of the entry that is being built (the last one in lib.list) into lib.func, and closes the entry
// there. Halts on an unknown word, or when a charge of a terminal has no defining function.
void read_functions(text_file& file, const library_form& form, int n_func, basic_library& lib);
