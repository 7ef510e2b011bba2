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

// The same of a block that is solved at one point after another: the last vary_parm steps along a curve, all else tells
// the curves apart. Without a vary_parm, the first vary_parm_sync steps along the only curve.
struct swept_curves {
    std::vector<swept_item> curves;  // [of the curves] empty for one curve, and where the words do not settle them
    swept_item steps;                // [rows of a curve] no values where the words do not settle them
};
swept_curves curves_of_sweeps(const deck_view& deck, const statement_range& block);

}  // namespace cli
