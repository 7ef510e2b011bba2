// digital_clocks.h -- sources of edges: clocks, and a list of edge times. They have no inputs and arm themselves.
#pragma once
#include "models/digital_unit.h"

struct source_form {
    const char* no_dc;
    const char* no_schedule;
};

// A clock of two phases, s. lparm[0]: 1 in the first phase.
struct clock_phases {
    double first, second;
    double origin;  // s, where a first phase begins
    bool polarity;  // level of the first phase
};
// The clock runs before its origin as well, but a time before it, less than a period away, counts as first phase.
void run_clock(const source_form& form, const clock_phases& phases, double& period, const digital_unit& u);
// Each phase lasts a random share, from 0 to 1, of its time; the first begins where the run does. lparm[1] counts the
// shares drawn. The sequence of shares belongs to the seed.
void run_random_clock(const source_form& form, const clock_phases& phases, unsigned seed, const digital_unit& u);
// Share number n of a sequence, 0 or more and below 1: the same on every machine.
double random_share(unsigned seed, unsigned n);

// The level turns over at each of the times t [n], s, which ascend; `first` holds before. dstate: the next edge. An
// edge at the time of the start is an event of its own.
void run_edges(const source_form& form, bool first, int n, const double* t, const digital_unit& u);
