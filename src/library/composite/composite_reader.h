// composite_reader.h -- reading a library of composites from a text in memory.
#pragma once
#include "base/text_file.h"
#include "library/composite/composite_form.h"

void read_composites(text_file& file, const composite_form& form, const basic_library& basic,
                     const basic_library& basic_ac, composite_library& lib);
