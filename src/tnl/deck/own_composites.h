// own_composites.h -- composites that a user keeps in the deck or in files that it includes, as the libraries of a run
// take them.
#pragma once
#include <optional>
#include <string>
#include <vector>

#include "base/words.h"
#include "library/composite/composite_form.h"
#include "tnl/common/run_record.h"
#include "tnl/deck/deck_source.h"
#include "tnl/deck/library_split.h"

namespace cli {

struct own_place {
    int file = 0, line = 0, column = 0;  // deck_source::files[file].lines[line], 0-based
};

// A logical line of an entry as the user wrote it, without comments.
struct own_line {
    words w;
    std::vector<own_place> at;  // [w.size()]
};

struct own_entry {
    int library = 0;              // position in library_forms
    library_entry entry;          // as the simulator reads it: every mandatory line is there, in its order
    std::vector<own_line> lines;  // the first is "ece name=..."
};

struct own_fault {
    own_place at;
    const char* code;
    std::string message, advice;
};

struct own_composites {
    std::vector<own_entry> entries;  // in the order of the text; of equal names the first counts
    std::vector<own_fault> faults;   // of their form, and calls that lead back to where they began
};

// Lines of the head may be left out and stand in any order, and so may begin_dc, end_dc and the small-signal half: they
// are completed here. What the entries say is not looked at.
own_composites own_composites_of(const deck_source& source);

// The lines that an entry of a library is made of. Mixed composites call those of several libraries.
struct entry_shape {
    std::span<const header_line> dc_lines, ac_lines;
    bool has_halves = true, has_code = true;
    std::vector<std::string> models, body, body_ac;  // first words of lines behind the head
    std::vector<std::string> flags;                  // words behind the name
};
std::optional<entry_shape> shape_of(int library);  // none: the library has no reader

record_place place_of(const deck_source& source, const own_place& at);

}  // namespace cli
