// read_directives.h -- statements of a solve block that change the circuit: items, sweeps, frequencies.
#pragma once
#include <span>
#include <string_view>

#include "settings/block_text.h"

// How one item statement is read: where its words are looked up.
struct item_card {
    std::string_view word;                     // first word of the statement
    std::string_view name_in_text;             // as its messages write it
    std::span<const int> families;             // in the order of the search
    std::span<const parm_item::table> tables;  // of the composite's lists, in the order of the search
    bool globals;                              // glbl_of_name is accepted
};
std::span<const item_card> item_cards();

// One item word of a statement, without its value. Halts unless it names a parameter.
parm_item read_item(const circuit& c, const item_card& card, std::string_view word);

// All item-value pairs of a statement, appended to the block's table.
void read_items(solve_class& slv, const circuit& c, const words& w);
void read_dgtl(solve_class& slv, const circuit& c, const words& w);
void read_vary(solve_class& slv, const circuit& c, const words& w);
void read_vary_sync(solve_class& slv, const circuit& c, const words& w);
void read_set_freq(solve_class& slv, const circuit& c, const words& w);
void read_vary_freq(solve_class& slv, const circuit& c, const words& w);

// Words that these statements take as keys, for lists of all keywords.
void add_directive_words(std::vector<std::string_view>& list);
