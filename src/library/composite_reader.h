// composite_reader.h -- reading a library of composites from a text in memory.
#pragma once
#include "library/composite_form.h"
#include "run/text_file.h"

void read_composites(text_file& file, const composite_form& form, const basic_library& basic,
                     const basic_library& basic_ac, composite_library& lib);
