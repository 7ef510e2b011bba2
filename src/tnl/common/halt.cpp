#include "base/halt.h"

#include <stdexcept>

// The readers that the front end shares with the simulator stop at a fault of the deck. Here that is no end: the
// simulator will meet the same fault and tell it.
void halt(std::initializer_list<std::string> lines) {
    std::string text;
    for (const std::string& l : lines) text += l + '\n';
    throw std::runtime_error(text);
}
