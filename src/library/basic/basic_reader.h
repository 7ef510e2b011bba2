// basic_reader.h -- reading a library of basic elements from a text in memory.
#pragma once
#include "base/text_file.h"
#include "library/basic_form.h"
#include "library/generate/generate.h"

// The same as read_library. glue: where the model sources go; null: code sections are passed over.
void read_library_text(text_file& file, const basic_form& form, glue_text* glue, basic_library& lib);
