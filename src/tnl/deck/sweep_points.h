// sweep_points.h -- the values that vary_parm and vary_parm_sync give, as the words of the deck tell them.
#pragma once
#include <string>
#include <vector>

#include "tnl/deck/deck_view.h"

namespace cli {

struct swept_item {
    std::string word;            // r_of_R1, glbl_of_x
    std::vector<double> values;  // [points of the block's sweeps] in the order in which they are solved
};
// One item for each statement of the block, in deck order; all of its vary_parm_sync step together and slowest, the
// last vary_parm fastest. Empty without a sweep; for one that the words do not settle (type auto, a value that is
// computed); and for more points than anybody draws.
std::vector<swept_item> swept_items(const deck_view& deck, const statement_range& block);

}  // namespace cli
