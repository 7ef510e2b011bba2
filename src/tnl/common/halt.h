// halt.h -- stops of the simulator's readers, where they end nothing.
#pragma once
#include <stdexcept>
#include <string>
#include <vector>

namespace cli {

// What halt throws in the front end: the text of the stop.
struct stop : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A stop inside of `reading`, with the statement and the word that was in hand; word 0 where the reader told none.
struct kept_stop {
    int statement = -1, word = 0;
    std::string text;
};

// While it lives, `reading` keeps the stops of its statements here, in the order in which they came. Outside of
// `reading`, and without one, they are thrown. The last one made counts.
class kept_stops {
public:
    kept_stops();
    ~kept_stops();
    kept_stops(const kept_stops&) = delete;
    kept_stops& operator=(const kept_stops&) = delete;

    std::vector<kept_stop> list;

private:
    kept_stops* outer_;
};

}  // namespace cli
