// period_check.h -- whether a circuit does the same a period later, without which it has no periodic solution.
#pragma once
#include <vector>

#include "analyses/run_state.h"

// Compares the functions at points of a period with those of the same unknowns a period later. They differ where a
// source or a clock has a period of which that of the search is no multiple, and where one is still to begin.
class period_check {
public:
    explicit period_check(const run_state& r);
    // At an accepted point, whose functions stand behind it.
    void look(run_state& r);
    // Tells on the console the first time of a difference, once for a search.
    void tell() const;

private:
    // Differences and terms of a row: the largest of each, and the first time, s, of a difference that was too large.
    struct row_seen {
        double difference = 0.0, terms = 0.0, first_time = 0.0;
        bool is_seen = false;
    };
    double period_;
    std::vector<double> functions_;         // of the point
    std::vector<double> lowest_, highest_;  // a period later and just before and behind that
    std::vector<row_seen> rows_;
};
