#include "library/statement_keys.h"

statement_keys::statement_keys(const words& statement, int first_key_position)
    : w(statement), first_key(first_key_position), ticked(static_cast<std::size_t>(statement.size()), 0) {
    for (int i = 0; i < first_key && i < w.size(); ++i) ticked[static_cast<std::size_t>(i)] = 1;
}

int statement_keys::find(std::string_view key) {
    for (int i = first_key; i < w.size(); i += 2)
        if (w[i] == key) {
            if (i + 1 >= w.size()) pick_word_1(w, i + 1);
            at_word(i + 1);
            ticked[static_cast<std::size_t>(i)] = ticked[static_cast<std::size_t>(i) + 1] = 1;
            return i + 1;
        }
    return -1;
}

int statement_keys::first_unticked() const {
    for (int i = 0; i < w.size(); ++i)
        if (!ticked[static_cast<std::size_t>(i)]) {
            at_word(i);
            return i;
        }
    return -1;
}
