// basic_reader.h -- reading a library of basic elements from a text in memory.
#pragma once
#include "library/generate.h"
#include "library/library_form.h"
#include "run/text_file.h"

// The same as read_library. glue: where the model sources go; null: code sections are passed over.
void read_library_text(text_file& file, const library_form& form, glue_text* glue, basic_library& lib);
