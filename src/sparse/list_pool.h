// list_pool.h -- many lists that grow and shrink, each contiguous, in one array.
#pragma once
#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

// A list that outgrows its room moves to the end of the array; when the array is full it is packed or doubled, so it
// stays within a few times what the lists hold. Pointers into a list hold until a member is added to any of them.
template <class E>
struct list_pool {
    std::vector<E> data;
    std::vector<std::size_t> start;  // [n_list]
    std::vector<int> count, room;    // [n_list]  members; places kept for them

    // Empty lists with room for so many members each, and half as many more.
    void set_up(const std::vector<int>& expected) {
        start.resize(expected.size());
        count.assign(expected.size(), 0);
        room.resize(expected.size());
        std::size_t end = 0;
        for (std::size_t i = 0; i < expected.size(); ++i) {
            start[i] = end;
            room[i] = expected[i] + expected[i] / 2 + 2;
            end += static_cast<std::size_t>(room[i]);
        }
        data.reserve(2 * end);
        data.resize(end);
    }
    E* begin(int i) { return data.data() + start[static_cast<std::size_t>(i)]; }
    E* end(int i) { return begin(i) + count[static_cast<std::size_t>(i)]; }
    std::span<E> members(int i) { return {begin(i), static_cast<std::size_t>(size(i))}; }
    int size(int i) const { return count[static_cast<std::size_t>(i)]; }
    void clear(int i) { count[static_cast<std::size_t>(i)] = room[static_cast<std::size_t>(i)] = 0; }
    // The last member takes the place of this one.
    void remove(int i, E* member) { *member = *(end(i) - 1), --count[static_cast<std::size_t>(i)]; }
    void add(int i, const E& member) {
        if (size(i) == room[static_cast<std::size_t>(i)]) widen(i);
        *end(i) = member;
        ++count[static_cast<std::size_t>(i)];
    }

private:
    void widen(int i) {
        const std::size_t p = static_cast<std::size_t>(i), new_room = 2 * static_cast<std::size_t>(count[p]) + 4;
        if (data.size() + new_room > data.capacity()) pack(new_room);
        const std::size_t from = start[p];
        start[p] = data.size();
        room[p] = static_cast<int>(new_room);
        data.resize(data.size() + new_room);
        std::copy_n(data.begin() + static_cast<std::ptrdiff_t>(from), count[p],
                    data.begin() + static_cast<std::ptrdiff_t>(start[p]));
    }
    // Leaves at least as much free as the lists hold, and this.
    void pack(std::size_t more) {
        std::size_t live = 0;
        for (std::size_t i = 0; i < start.size(); ++i) live += static_cast<std::size_t>(room[i]);
        std::vector<E> packed;
        packed.reserve(2 * live + more);
        for (std::size_t i = 0; i < start.size(); ++i) {
            const auto from = data.begin() + static_cast<std::ptrdiff_t>(start[i]);
            start[i] = packed.size();
            packed.insert(packed.end(), from, from + count[i]);
            packed.resize(start[i] + static_cast<std::size_t>(room[i]));
        }
        data = std::move(packed);
    }
};
