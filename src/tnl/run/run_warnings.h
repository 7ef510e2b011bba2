// run_warnings.h -- what the simulator says of results that it goes on with: doubts, with their places in the deck, and
// what became of periodic blocks.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "tnl/common/run_record.h"
#include "tnl/deck/deck_view.h"

namespace cli {

// Hears the simulator's text as it comes and keeps what it tells; there are few such lines a solve block.
class run_listener {
public:
    void take(std::string_view text);
    // The place is the first element at the node that the warning names, or the instance that the node is inside of; of
    // a periodic block its type.
    std::vector<record_warning> warnings(const deck_view& deck) const;
    // Of the periodic blocks that came to their end.
    const std::vector<record_period>& periods() const { return periods_; }

private:
    void note_line(std::string_view line);
    void note_residual(std::string_view line);
    void note_period(std::string_view line);
    int this_block() const { return static_cast<int>(periods_.size()) + 1; }

    std::string waiting_;  // the line that has not ended
    std::vector<record_warning> heard_;
    bool advice_follows_ = false;
    record_period period_;  // of the present block
    std::vector<record_period> periods_;
};

// "deck.in:4:38: warning: text", the line with a caret, and the advice; lines begin with the indent.
std::string warning_text(const deck_view& deck, const std::vector<record_warning>& warnings, const std::string& indent);

}  // namespace cli
