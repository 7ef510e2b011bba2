// list_lines.h -- the lines of library entries that hold names, or pairs of a name and a default.
#pragma once
#include "library/lists.h"

// Appends the words of a line (from word 1) as one row of the list. An odd pair list halts, naming the list by its tag,
// and so does a string that is too long.
void add_names(const words& w, word_list& list);
template <class T>
void add_pairs(const words& w, const char* class_name, const char* tag, pair_list<T>& list);

// A string parameter of a library has at most 50 characters.
void check_string(std::string_view word, const char* class_name);

// Halts when the words or characters of a list are too many for the library.
void check_pool(const words& pool, const char* class_name, const char* tag, int max_words, int max_chars);
