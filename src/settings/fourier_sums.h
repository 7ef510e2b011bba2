// fourier_sums.h -- running sums of a file whose harmonics are wanted.
#pragma once
#include <vector>

// The signal is the polygon through the points of the run. Tables are sized when the files of a block are opened;
// afterwards only values change.
struct fourier_sums {
    enum stage : int { waiting, summing, closed };  // before out_tstart, in the span, past out_tend
    stage now = waiting;
    bool has_point = false;            // the three below hold a point
    double t_old = 0.0;                // s, the last point
    std::vector<double> x_old;         // [n_var] values there
    std::vector<double> from, to;      // [n_var] values at the ends of the interval at work
    std::vector<double> cosine, sine;  // [n_fourier * n_var] harmonic by harmonic; value times s
    std::vector<double> power;         // [n_var] value squared times s; summed, reported nowhere
};
