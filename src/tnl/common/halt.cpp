#include "tnl/common/halt.h"

#include <utility>

#include "base/halt.h"

namespace {
cli::kept_stops* keeper = nullptr;
int word_in_hand = 0;
}  // namespace

// The readers that the front end shares with the simulator stop at a fault of the deck. Here that is no end.
void halt(std::initializer_list<std::string> lines) {
    flush_all();
    std::string text;
    for (const std::string& l : lines) text += l + '\n';
    throw cli::stop(text);
}

bool read_or_keep(int statement, void (*f)(void*), void* object) {
    const int outer = std::exchange(word_in_hand, 0);
    bool good = true;
    try {
        f(object);
    } catch (const cli::stop& s) {
        if (keeper == nullptr) throw;
        keeper->list.push_back({statement, word_in_hand, s.what()});
        good = false;
    }
    word_in_hand = outer;
    return good;
}

void at_word(int word) { word_in_hand = word; }

namespace cli {
kept_stops::kept_stops() : outer_(std::exchange(keeper, this)) {}
kept_stops::~kept_stops() { keeper = outer_; }
}  // namespace cli
