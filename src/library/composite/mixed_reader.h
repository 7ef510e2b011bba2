// mixed_reader.h -- reading the library of mixed composites from a text in memory.
#pragma once
#include "base/text_file.h"
#include "library/composite/mixed_form.h"

// Fills lib with the entries of the file. A composite that is called stands earlier in the file than its callers, and
// those of other libraries have been read before.
void read_mixed_composites(text_file& file, const mixed_callees& callees, composite_library& lib);
