// event_queue.h -- pending events by their time, and sets of units that are walked in the order of their numbers.
// Memory is taken when they are sized; pushing, popping and walking take none.
#pragma once
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

// A set of the numbers 0 to n - 1, given back in ascending order. A bit of a level says that the word below it has one.
class unit_set {
public:
    void resize(int n) {
        n_levels_ = 0;
        std::size_t n_all = 0, n_words = static_cast<std::size_t>(n);
        do {
            n_words = n_words > 64 ? (n_words + 63) / 64 : 1;
            first_[n_levels_++] = n_all;
            n_all += n_words;
        } while (n_words > 1);
        words_.assign(n_all, 0);
    }
    bool empty() const { return words_.back() == 0; }
    void add(int i) {
        auto k = static_cast<std::size_t>(i);
        for (std::size_t l = 0; l < n_levels_; ++l, k /= 64) {
            std::uint64_t& word = words_[first_[l] + k / 64];
            const bool had_some = word != 0;
            word |= std::uint64_t{1} << (k % 64);
            if (had_some) return;
        }
    }
    // Takes the smallest out of a set that is not empty.
    int take() {
        std::size_t k = 0;
        for (std::size_t l = n_levels_; l-- > 0;)
            k = k * 64 + static_cast<std::size_t>(std::countr_zero(words_[first_[l] + k]));
        std::size_t at = k;
        for (std::size_t l = 0; l < n_levels_; ++l) {
            std::uint64_t& word = words_[first_[l] + at / 64];
            word &= word - 1;  // its lowest bit is that of k
            if (word != 0) break;
            at /= 64;
        }
        return static_cast<int>(k);
    }

private:
    static constexpr std::size_t max_levels = 6;  // of 64 words each, beyond the largest int
    std::vector<std::uint64_t> words_{0};
    std::size_t first_[max_levels] = {};  // of each level; the last one is one word
    std::size_t n_levels_ = 1;
};

// The event of each unit, at most one. Events of equal time share a place in a heap: a synchronous circuit has few.
class event_queue {
public:
    void resize(int n_units);
    void push(int unit, double t);
    bool empty() const { return heap_.empty(); }

    // The time at which the next event pass stands. A scan of all units in their order would do
    //     next = t_far; for each pending unit: if (t < next) next = t + epsilon
    // and this gives the same to the bit: only events within a chain of epsilons from the first can count.
    double next_time(double t_far, double epsilon);
    // Moves all units with events at or before t to the set; a single one is given back instead, else -1.
    int take_due(double t, unit_set& due);

private:
    struct moment {
        double t;
        int first;  // last pushed unit of this time
    };
    struct event {
        int unit;
        double t;
    };
    static constexpr std::size_t n_recent = 256;
    static std::size_t slot_of(double t) {
        return static_cast<std::size_t>((std::bit_cast<std::uint64_t>(t) * 0x9E3779B97F4A7C15u) >> 56);
    }
    void sift_up(std::size_t i);
    void pop();
    double scan_near_events(double t_far, double epsilon);

    struct entry {
        double t;
        int moment;
    };
    std::vector<entry> heap_;  // four children to a place, by t
    std::vector<moment> moments_;
    std::vector<int> free_;      // places of moments_ that hold nothing
    std::vector<int> next_;      // [units] the next unit of the same time; -1
    std::vector<event> near_;    // of scan_near_events
    int recent_[n_recent] = {};  // by slot_of(t): a moment that may have this time
};
