// progress.h -- how far a run has come, for the person who waits.
#pragma once
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tnl/deck/deck_view.h"

namespace cli {

// What is known beforehand of a solve block that runs in time.
struct time_block {
    double t_start = 0;
    std::optional<double> t_end;     // s; nothing when the deck does not give it as a number
    std::vector<std::string> files;  // its row files with the time as the first column
};
std::vector<time_block> time_blocks(const deck_view& deck);

enum class progress_form {
    none,
    bar,   // one line, drawn again and again; the simulator's own lines about it are kept from the screen
    lines  // one line per tenth of a block
};
progress_form form_for_standard_error();
int columns_of_standard_error();

// Follows the simulator's text and draws. Nothing here looks at a clock: now is s since the start.
class progress {
public:
    progress(std::vector<time_block> blocks, progress_form form, int columns, std::string deck)
        : blocks_(std::move(blocks)), form_(form), columns_(columns), deck_(std::move(deck)) {}

    // The simulator's text as it comes; gives what of it is to be shown. With a bar, a line that is not complete waits.
    std::string take(std::string_view text, double now);
    std::string rest();  // what still waits when the simulator has ended

    // The time of the last row on the disk, of a block that prints no lines.
    void note_time(double t, double now);
    const time_block* block() const;  // that runs; nullptr: none is known to

    std::string draw(double now);  // for standard error; empty when there is nothing new
    std::string wipe();            // takes the bar off the line, if it is there

private:
    void note_line(std::string_view line, double now);
    std::string bar(double now) const;
    std::string position() const;
    double fraction() const;  // of the block; below 0: unknown
    double seconds_left(double now) const;

    std::vector<time_block> blocks_;
    progress_form form_;
    int columns_;
    std::string deck_;
    std::string waiting_;   // of the text: a line that is not complete
    int n_begun_ = 0;       // blocks in time that have begun
    double t_ = 0;          // simulated time of the block
    double begun_at_ = 0;   // now when the block began
    double noted_at_ = 0;   // now when t_ was noted
    double drawn_at_ = -1;  // below 0: never
    int tenths_ = 0;        // of the block, told
    bool announced_ = false, on_line_ = false;
};

// Four digits and a scale letter, as decks have them: 3.2m, 0, 12.05k.
std::string short_number(double x);

}  // namespace cli
