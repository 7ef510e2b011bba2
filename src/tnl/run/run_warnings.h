// run_warnings.h -- what the simulator says of results that it goes on with: doubts, with their places in the deck.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "tnl/common/run_record.h"
#include "tnl/deck/deck_view.h"

namespace cli {

// Hears the simulator's text as it comes and keeps its warnings; their number is that of the solve blocks at most.
class warning_listener {
public:
    void take(std::string_view text);
    // The place is the first element at the node that the warning names, or the instance that the node is inside of.
    std::vector<record_warning> warnings(const deck_view& deck) const;

private:
    void note_line(std::string_view line);

    std::string waiting_;  // the line that has not ended
    std::vector<record_warning> heard_;
    std::vector<std::string> node_;  // [heard_] "a", or "m of X1"
    bool advice_follows_ = false;
};

// "deck.in:4:38: warning: text", the line with a caret, and the advice; lines begin with the indent.
std::string warning_text(const deck_view& deck, const std::vector<record_warning>& warnings, const std::string& indent);

}  // namespace cli
