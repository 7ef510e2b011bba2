// digital_counters.h -- counters: the bits of a number that goes up or down by one at each rising edge of a clock.
#pragma once
#include "models/digital_unit.h"

// Inputs clk, r (reset), up; outputs the n_bits bits, lowest first. rparm[0], rparm[1]: delays to falling and rising
// bits; where some fall and some rise, the longer one. lparm: the bits that are planned.
struct counter_form {
    const char* name;
    int n_bits;
    int first, last;  // it counts from one to the other, and begins anew there
};

// `start`: the number that a start-up and a first guess begin with; after a first guess it looks at the reset at the
// first event. The reset goes to `first`, whatever the clock, and wins again when planned bits are delivered. It counts
// down while up is not 1.
void run_counter(const counter_form& form, int start, const digital_unit& u);
// The same between bounds of the deck, with texts of its own where they or the start are out of range.
void run_bounded_counter(const counter_form& form, int start, const digital_unit& u);
