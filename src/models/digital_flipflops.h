// digital_flipflops.h -- flip-flops: an output and its complement that change at an edge of a clock, or by set and
// reset.
#pragma once
#include "models/digital_unit.h"

// Numbers of inputs; -1: it has none of that kind. a sets and b clears at an edge, both together turn over; without b
// the state becomes a. Without a clock set and reset are all there is.
struct flip_flop_form {
    const char* no_dc[2];  // texts; the second may be empty
    const char* both;      // set and reset are 1, or a and b where that is refused
    const char* wrong_state;
    const char* name;  // of its file
    int a, b, clk, set, reset;
    bool falling_edge = false;
    bool refuses_both = false;  // a and b of 1 at an edge
    const char* trace = nullptr;
};

// rparm[0], rparm[1]: delays to a falling and a rising q. stparm[0]: 0 at rest with q = stparm[1], 1 a rise of q is
// pending, 2 a fall. lparm[0]: the state that is planned. Outputs q and its complement.
// A data input that is not known counts as 0. Set and reset act at once, whatever the clock, and win again when the
// planned state is delivered. A first guess begins with q = stparm[1] and looks at set and reset at the first event.
void run_flip_flop(const flip_flop_form& form, const digital_unit& u);
