// check_limit.h -- tests of the fixed capacities and of keywords. The pieces of a message are joined only when it is
// needed: these tests stand in every line of every entry. Storage itself grows on demand.
#pragma once
#include <string>
#include <string_view>

#include "base/halt.h"
#include "base/words.h"

[[noreturn]] void over_limit(int n, int m, const std::string& message);

// Halts when n is above m: with the message alone if it holds the word "Halting", else with the two numbers before it.
template <class... T>
void check_limit(int n, int m, const T&... message) {
    if (n > m) over_limit(n, m, line(message...));
}

// The word at this position must be the given one; halts with the framed message.
template <class... T>
void expect_word(const words& w, int position, std::string_view given, const T&... message) {
    if (position >= w.size() || w[position] != given) check_word_2(w, position, given, line(message...));
}
