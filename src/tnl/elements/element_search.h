// element_search.h -- elements and parts of the trade that somebody's words speak of.
#pragma once
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "tnl/elements/element_sheet.h"

namespace cli {

// How well a text answers words, all of them in any order and any case: by the worst of them.
enum class answer { none, some, part, whole, name };
// name: the element is called so. whole: each word stands in its name, group or description, a plural too. part: as a
// part of a word there: anywhere in it if it is the one word that is looked for, else at its begin. some: at least one
// of several words does so; none: not one.
answer answer_of(const element_sheet& sheet, std::string_view words);

// Those with the best answers first; of some words alone only if nothing better is there. Elements of equal answers
// keep their order.
struct search_result {
    std::vector<element_sheet> whole, part, some;  // by name or whole words; by parts; by some of the words
};
search_result search(const std::vector<element_sheet>& sheets, std::string_view words);

// A part of the trade: a model statement in a file of its own, whose first line says what it is.
struct trade_part {
    std::filesystem::path file;
    std::string name, type, text;  // "1N4148", "diode_rs", "small-signal switching diode"
};
// All of a folder, by name; none if there is no such folder.
std::vector<trade_part> parts_in(const std::filesystem::path& folder);
answer answer_of(const trade_part& part, std::string_view words);

// What to take where no element has the name that is looked for; `elements` are those it speaks of.
struct hint {
    std::string_view words, text;  // words: names of the thing, with commas in between
    std::vector<std::string_view> elements;
};
const std::vector<hint>& hints();
const hint* find_hint(std::string_view words);  // nullptr if there is none

}  // namespace cli
