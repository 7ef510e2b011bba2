// response_deck.h -- a deck that shows how a block answers to a step, to a wave or to a ramp.
#pragma once
#include <string>
#include <vector>

#include "tnl/common/run_record.h"
#include "tnl/elements/element_sheet.h"

namespace cli {

inline constexpr const char* response_rows = "wave.dat";

struct response_deck {
    std::string text;                    // of the deck; empty: the element's comments tell of no response
    std::vector<record_column> columns;  // of the rows: the time, then the variables that are shown
    int x = 0;                           // the column that they are drawn over
    bool lanes = false;                  // variables of two values are drawn as logic
    struct data_file {
        std::string name, text;
    };
    std::vector<data_file> files;  // that stand beside the deck
};

// The lines "#~" of a composite, in their order:
//   t_end=5m ...                         the first: the length of the run, s, and if need be
//       x=VARIABLE                       what the curves are drawn over in place of the time
//       show=VARIABLE,VARIABLE           what is shown in place of all variables of the block
//       delt=10u                         the step, s; else there are 2000
//       lanes=yes
//   TYPE word=value ...                  an element that drives the block's variables, or stands behind it
//   file NAME number ... ; number ...    a data file, its lines parted by semicolons
// The block itself stands there as its example shows it, unless one of the lines is of its type. Throws usage_error for
// lines of another form.
response_deck response_of(const element_sheet& sheet);

}  // namespace cli
