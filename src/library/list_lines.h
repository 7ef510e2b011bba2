// list_lines.h -- the lines of library entries that hold names, or pairs of a name and a default.
#pragma once
#include "library/lists.h"

// Appends the words of a line (from word 1) as one row of the list. An odd pair list halts, naming the list by its tag,
// and so does a string that is too long, or a value that is no integer in a list of whole numbers.
void add_names(const words& w, word_list& list);
template <class T>
void add_pairs(const words& w, std::string_view class_name, const char* tag, pair_list<T>& list, bool whole = false);

// The value of a word of a library.
void read_literal(std::string_view word, std::string_view class_name, int& value, bool whole = false);
void read_literal(std::string_view word, std::string_view class_name, double& value, bool whole = false);
void read_literal(std::string_view word, std::string_view class_name, std::string& value, bool whole = false);

// Start-up values and first guesses, which are whole numbers in some families.
inline bool holds_start_values(pair_list<double> library_lists::*list) {
    return list == &library_lists::sv || list == &library_lists::ig;
}

// A string parameter of a library has at most 50 characters.
void check_string(std::string_view word, std::string_view class_name);

// Halts when the words or characters of a list are too many for the library.
void check_pool(const words& pool, std::string_view class_name, const char* tag, int max_words, int max_chars);
