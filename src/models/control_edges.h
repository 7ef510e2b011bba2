// control_edges.h -- edges of a control signal from one accepted point to the next.
#pragma once

// Rising or falling edges through a level.
struct control_edge {
    int rising, falling;  // 1: counts
    double level;
    bool comes(double before, double now) const {
        const bool was_high = before > level, is_high = now > level;
        return was_high != is_high && (is_high ? rising : falling) == 1;
    }
};
// Halts, with the name of the element's file, unless both are 0 or 1 and just one of them is 1.
void check_edges(const char* file, int active_pos_edge, int active_neg_edge);
