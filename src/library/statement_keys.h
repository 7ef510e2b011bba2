// statement_keys.h -- the keys and values of one body statement, and which of its words were used.
#pragma once
#include <string>
#include <vector>

#include "base/halt.h"
#include "base/words.h"

// A key stands at position `first_key` and every second one behind it, its value behind the key; what stands before is
// used by itself. The first occurrence of a key counts.
struct statement_keys {
    const words& w;
    int first_key;
    std::vector<char> ticked;  // [w.size()]

    statement_keys(const words& statement, int first_key_position);
    // Position of a key's value, key and value ticked; -1 if there is no such key. A key without a value halts.
    int find(std::string_view key);
    // The value of a key that must be there; halts with the framed message.
    template <class... T>
    std::string_view value(std::string_view key, const T&... message) {
        const int i = find(key);
        if (i < 0) word_not_found("find_word_EO_2", key, line(message...));
        return w[i];
    }
    int first_unticked() const;  // -1 if all words were used
};
