// demo.h -- `tnl demo`: the main job on two small decks, shown in the terminal and as pictures.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "tnl/plot/plot.h"
#include "tnl/run/run_deck.h"

namespace cli {

struct demo_deck {
    std::string_view name;  // of the deck and picture files
    std::string_view says;  // one line about what it computes
    std::string_view text;  // the deck; its one row file is <name>.dat
    // What the picture says of the file's columns, the first along x; and of its curves when they are several.
    std::vector<record_column> columns;
    std::vector<std::string> curves;
};
const std::vector<demo_deck>& demo_decks();

// Decks, run folders and pictures go into the folder. Gives the status of the first run that stops.
int run_demo(const std::string& folder, const installation& where, const terminal& t);

}  // namespace cli
