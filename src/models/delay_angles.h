// delay_angles.h -- the angles by which clocks are delayed, held from one period to the next.
#pragma once
#include <vector>

#include "base/at.h"

// Clocks whose delay is an input keep the angle of each period whose pulse is still to come. The slots belong to all
// units together.
struct delay_angles {
    struct slot {
        int unit = -1;      // running index of the unit; -1: free
        double period = 0;  // s, the begin of the period
        double angle = 0;   // as the block means it
    };
    std::vector<int> of_unit;  // [general units] running index; -1: not such a unit
    std::vector<slot> slots;   // [50] where there is such a unit, else empty

    // A free slot; -1: none is left.
    int free_slot() const {
        for (std::size_t k = 0; k < slots.size(); ++k)
            if (slots[k].unit < 0) return static_cast<int>(k);
        return -1;
    }
    // The slot of the unit's period; -1: none.
    int find(int unit, double period) const {
        for (std::size_t k = 0; k < slots.size(); ++k)
            if (slots[k].unit == unit && slots[k].period == period) return static_cast<int>(k);
        return -1;
    }
};
