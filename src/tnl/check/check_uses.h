// check_uses.h -- names of one kind over a deck, block variables or digital nodes: who drives and who reads each.
#pragma once
#include "tnl/check/check_deck.h"

namespace cli {

struct name_use {
    int element;         // position in checked_deck::elements
    deck_word at;        // of the name in the element's statement
    bool writes, reads;  // digital nodes of a composite can be both
};
struct used_names {
    std::map<std::string, std::vector<name_use>> of;  // in the order of the elements
    bool unsure = false;                              // an element of unknown type may drive anything
};

// What stands at these terminals. Where the type does not tell its inputs, what it does not drive, it reads.
used_names names_used(const checked_deck& d, std::vector<std::string> element_type::*terminals);

}  // namespace cli
