// smallest_first.h -- a row of costs that tells the first smallest, kept as a tournament.
#pragma once
#include <algorithm>
#include <limits>
#include <vector>

struct smallest_first {
    static constexpr long long none = std::numeric_limits<long long>::max();
    std::size_t n_leaf = 1;
    std::vector<long long> cost;  // [2 n_leaf]  cost[1] is the winner; cost[n_leaf + i] is place i

    explicit smallest_first(int n) {
        while (n_leaf < static_cast<std::size_t>(n)) n_leaf *= 2;
        cost.assign(2 * n_leaf, none);
    }
    void set(int place, long long c) {
        std::size_t k = n_leaf + static_cast<std::size_t>(place);
        cost[k] = c;
        for (k /= 2; k > 0; k /= 2) {
            const long long winner = std::min(cost[2 * k], cost[2 * k + 1]);
            if (cost[k] == winner) return;
            cost[k] = winner;
        }
    }
    // The first place with the smallest cost, or -1 if there is none.
    int first() const {
        if (cost[1] == none) return -1;
        std::size_t k = 1;
        while (k < n_leaf) k = 2 * k + (cost[2 * k] == cost[k] ? 0 : 1);
        return static_cast<int>(k - n_leaf);
    }
};
