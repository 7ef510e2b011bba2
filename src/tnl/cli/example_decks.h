// example_decks.h -- the installed examples, and new decks made of them.
#pragma once
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

// share/examples/NAME/ with deck.in, story.md and the data files that the deck reads; or share/examples/NAME.in alone.
struct example_deck {
    std::string name;
    std::string title;  // first line of the story, else the title of the deck
    std::string story;  // the whole text; empty if there is none
    std::filesystem::path deck;
    std::vector<std::filesystem::path> data;  // files beside the deck but the story, by name
};
std::vector<example_deck> read_examples(const std::filesystem::path& share);  // by name

std::string_view starting_deck();  // a small one with comments, for a deck that no example is taken for

// Writes the deck of the example (nullptr: the starting deck) as NAME.in, or as NAME when that ends in ".in", or, when
// it has data files, as NAME/deck.in with them. "-" is standard output. Gives the path of the deck, "-" included.
// Throws file_error, also for what exists already: nothing is ever replaced; usage_error for a name that cannot be.
std::string write_new_deck(const std::string& name, const example_deck* example);

}  // namespace cli
