// locate.h -- from the text of a stop to the statement of the deck that it speaks of.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "tnl/deck/deck_view.h"
#include "tnl/deck/installed.h"

namespace cli {

// A word of a statement.
struct stop_place {
    int i_statement = 0, i_word = 0;
    auto operator<=>(const stop_place&) const = default;
};

// What the last lines of the simulator's text speak of, in deck order. One place is an answer, several are candidates;
// none when the text names nothing that the deck holds.
std::vector<stop_place> find_places(std::string_view text, const deck_view& deck, const deck_needs& needs);
std::vector<int> find_statements(std::string_view text, const deck_view& deck, const deck_needs& needs);

// The first element statement that connects a node; for one inside of a composite, "m of X1", that of the instance.
std::vector<stop_place> places_of_node(const deck_view& deck, std::string_view node);

// The simulator's text as lines; of a long one the last.
std::vector<std::string> split_lines(std::string_view text);
// Whether a text is of the readers of composites, which stop before the deck's statements are looked at.
bool speaks_of_composites(const std::vector<std::string>& lines);

}  // namespace cli
