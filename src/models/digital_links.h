// digital_links.h -- what electrical elements make of digital nodes. A node is 0, 1, or 2 (unknown), which counts as 0.
#pragma once

// The number whose bits are the n nodes, the lowest first.
int binary_code(const int* dvar, int n);

// The voltage of an output that goes from one level to the other in a straight line, as it stands in a unit's
// parameters. It changes its course at accepted points only and never jumps there.
struct output_slope {
    double low, high;         // V
    double dt_rise, dt_fall;  // s, for the whole way; above 0
    double *u_from, *t_from;  // V, s: where the present slope began; while one is under way
    int *on, *moving;         // the level that it goes to; 1 while it is under way

    // At the time t, s; before the slope began, the value that it began with.
    double value(double t) const;
    // When the slope ends, s; if none is under way, the lowest number.
    double end() const;
    // On its level at once.
    void settle(bool level) const;
    // The level of an accepted point at the time t, s: a new one begins a slope from the value there. A time before the
    // slope began was given by a step that came to nothing; the slope then begins at t.
    void take(bool level, double t) const;
};
