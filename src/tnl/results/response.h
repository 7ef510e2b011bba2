// response.h -- what can be measured on a small signal over frequency: its magnitude and its phase.
#pragma once
#include <vector>

#include "tnl/results/waveform.h"

namespace cli {

// One small signal at the frequencies t of its rows, which rise and are above 0. Between two rows the magnitude in dB
// and the phase are straight lines over the logarithm of the frequency. What is asked for and does not exist throws
// measure_error.
struct response {
    wave mag;    // modulus
    wave phase;  // degrees, unwrapped; without samples where it is not known
};

// The same phase without jumps of more than half a turn from one value to the next; what is no number is passed over.
std::vector<double> unwrapped(std::vector<double> degrees);

// Between rows 1/|x|^2 is a cubic over the logarithm of frequency, through the greatest row and its three nearest: its
// least. Throws where a neighbour lies 3 dB below: the rows do not tell the peak of such a resonance.
struct response_peak {
    double t, mag;
    std::size_t row = 0;  // the greatest
};
response_peak peak_of(const response& r);

// Magnitudes within half the power (1/sqrt(2), 3.01 dB) of a reference. of_peak false: from 0 to the first fall behind
// the lowest frequency, whose magnitude is the reference; true: the distance of the two passages around the peak, from
// 0 where the magnitude stays above up to the lowest frequency.
double bandwidth(const response& r, bool of_peak);
// Frequency of the peak over the distance of the two passages around it. That of a resonance (s/Q)/(1 + s/Q + s^2);
// of a low pass 1/(1 + s/Q + s^2) a little less: 4.90 for 5, 9.95 for 10.
double quality(const response& r);

double crossover(const response& r, long long n);  // the n-th fall through 1; -1: the last
// A loop with the gain r, closed as 1/(1 + r), is stable up to these changes of it. Of several passages that counts
// which is nearest to the point -1.
double gain_margin(const response& r);   // dB; below 0 where the gain would have to fall
double phase_margin(const response& r);  // degrees, -180 to 180

}  // namespace cli
